// Pixel coordinates that carry their origin and the direction of y in their type. x runs to the
// right in all of them.
//
//   ZuPixel                0 at the centre of the first pixel, y down: this library, OpenCV
//   ZuPixelFromCorner      0 at the outer corner of the first pixel, y down: COLMAP
//   ZuPixelFromMiddle      0 at the middle of the image, y up: Bundle Adjustment in the Large
//
//   const auto p = ZuPixelCast<ZuPixel>(ZuPixelFromCorner(0.5, 0.5), size);  // (0, 0)
#pragma once

enum class ZuPixelOrigin { FirstCentre, FirstCorner, Middle };
enum class ZuPixelY { Down, Up };  // with Up the origin lies in the last row

struct ZuImageSize {
  double dWidth = 0.0, dHeight = 0.0;  // whole pixels
};

template <ZuPixelOrigin eOrigin, ZuPixelY eY>
struct ZuPixelIn {
  static constexpr ZuPixelOrigin kOrigin = eOrigin;
  static constexpr ZuPixelY kY = eY;

  constexpr ZuPixelIn() = default;
  explicit constexpr ZuPixelIn(double dX, double dY) : x(dX), y(dY) {}

  double x = 0.0, y = 0.0;
};

using ZuPixel = ZuPixelIn<ZuPixelOrigin::FirstCentre, ZuPixelY::Down>;
using ZuPixelUp = ZuPixelIn<ZuPixelOrigin::FirstCentre, ZuPixelY::Up>;
using ZuPixelFromCorner = ZuPixelIn<ZuPixelOrigin::FirstCorner, ZuPixelY::Down>;
using ZuPixelFromMiddle = ZuPixelIn<ZuPixelOrigin::Middle, ZuPixelY::Up>;

// The outer corner of the first pixel, counted from an origin, along an axis of dLength pixels.
constexpr double ZuCornerFrom(ZuPixelOrigin eOrigin, double dLength) {
  return eOrigin == ZuPixelOrigin::FirstCentre   ? -0.5
         : eOrigin == ZuPixelOrigin::FirstCorner ? 0.0
                                                 : -0.5 * dLength;
}

// The same place of an image of that size in another convention; one subtraction an axis.
template <class To, ZuPixelOrigin eOrigin, ZuPixelY eY>
constexpr To ZuPixelCast(const ZuPixelIn<eOrigin, eY>& p, const ZuImageSize& size) {
  const double dX = ZuCornerFrom(eOrigin, size.dWidth),
               dToX = ZuCornerFrom(To::kOrigin, size.dWidth);
  const double dY = ZuCornerFrom(eOrigin, size.dHeight);
  const double dToY = ZuCornerFrom(To::kOrigin, size.dHeight);
  if constexpr (To::kY == eY) return To(p.x - (dX - dToX), p.y - (dY - dToY));
  return To(p.x - (dX - dToX), (size.dHeight + dY + dToY) - p.y);
}
