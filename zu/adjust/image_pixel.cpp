#include "zu/adjust/internal/image_pixel.h"

#include <algorithm>
#include <cmath>

namespace zu::internal {

namespace {

size_t Index(int i) { return static_cast<size_t>(i); }

// Derivative of a plane transformation at a point, by rows.
PixelSlope SlopeOf(const ZuTrafo2d& trafo, double x, double y) {
  if (trafo.GetType() == eZuTrafo2DPolynomial) {
    PixelSlope slope{};
    for (int i = 0; i < 2; ++i) {
      const auto a = [&](int k) { return trafo.GetCoef(10 * i + k); };
      slope[Index(2 * i)] =
          a(1) + 2.0 * a(3) * x + a(4) * y + 3.0 * a(6) * x * x + 2.0 * a(7) * x * y + a(8) * y * y;
      slope[Index(2 * i + 1)] =
          a(2) + a(4) * x + 2.0 * a(5) * y + a(7) * x * x + 2.0 * a(8) * x * y + 3.0 * a(9) * y * y;
    }
    return slope;
  }
  ZuMatrix m(3, 3);
  trafo.BuildMatrix(&m);
  const double w = m[3][1] * x + m[3][2] * y + m[3][3];
  const double u = (m[1][1] * x + m[1][2] * y + m[1][3]) / w;
  const double v = (m[2][1] * x + m[2][2] * y + m[2][3]) / w;
  return {(m[1][1] - u * m[3][1]) / w, (m[1][2] - u * m[3][2]) / w, (m[2][1] - v * m[3][1]) / w,
          (m[2][2] - v * m[3][2]) / w};
}

PixelSlope Product(const PixelSlope& a, const PixelSlope& b) {
  return {a[0] * b[0] + a[1] * b[2], a[0] * b[1] + a[1] * b[3], a[2] * b[0] + a[3] * b[2],
          a[2] * b[1] + a[3] * b[3]};
}

}  // namespace

PixelSlope PixelToImage(const ZuPhoto& photo, double* x, double* y) {
  const PixelSlope pre = SlopeOf(photo.GetReseauPreTrafo(), *x, *y);
  photo.GetReseauPreTrafo().Transform(x, y);
  const PixelSlope slope = Product(SlopeOf(photo.GetReseauMainTrafo(), *x, *y), pre);
  photo.GetReseauMainTrafo().Transform(x, y);
  return slope;
}

std::array<double, 3> ImageCovariance(const PixelSlope& slope, double dSdX, double dSdY) {
  const double x2 = dSdX * dSdX, y2 = dSdY * dSdY;
  return {slope[0] * slope[0] * x2 + slope[1] * slope[1] * y2,
          slope[0] * slope[2] * x2 + slope[1] * slope[3] * y2,
          slope[2] * slope[2] * x2 + slope[3] * slope[3] * y2};
}

std::array<double, 2> ToPixels(const PixelSlope& slope, double dx, double dy) {
  const double d = slope[0] * slope[3] - slope[1] * slope[2];
  return {(slope[3] * dx - slope[1] * dy) / d, (slope[0] * dy - slope[2] * dx) / d};
}

std::vector<ImagePoint> ImagePointsOf(const ZuPhoto& photo, const ZuPointList& pixels,
                                      double dSigma, bool bSigmaInPixels) {
  std::vector<ImagePoint> points;
  for (const ZuPoint* p = pixels.First(); p != nullptr; p = p->Next()) {
    ImagePoint point;
    ZuImageObservation& image = point.image;
    image.uId = p->GetId();
    image.x = p->m_dX;
    image.y = p->m_dY;
    point.slope = PixelToImage(photo, &image.x, &image.y);
    const bool bOwn = p->m_dDX > 0.0 && p->m_dDY > 0.0;
    std::array<double, 3> q{dSigma * dSigma, 0.0, dSigma * dSigma};
    if (bOwn || bSigmaInPixels) {
      q = ImageCovariance(point.slope, bOwn ? p->m_dDX : dSigma, bOwn ? p->m_dDY : dSigma);
    }
    image.dVarianceX = q[0];
    image.dCovariance = q[1];
    image.dVarianceY = q[2];
    points.push_back(point);
  }
  const auto id = [](const ImagePoint& point) { return point.image.uId; };
  std::stable_sort(points.begin(), points.end(),
                   [&](const ImagePoint& a, const ImagePoint& b) { return id(a) < id(b); });
  std::vector<ImagePoint> once;
  for (size_t i = 0; i < points.size(); ++i) {
    const bool bTwice = (i > 0 && id(points[i - 1]) == id(points[i])) ||
                        (i + 1 < points.size() && id(points[i + 1]) == id(points[i]));
    const ZuImageObservation& image = points[i].image;
    if (!bTwice && std::isfinite(image.x + image.y + image.dVarianceX + image.dVarianceY)) {
      once.push_back(points[i]);
    }
  }
  return once;
}

const ImagePoint* FindImagePoint(const std::vector<ImagePoint>& points, unsigned uId) {
  const auto at =
      std::lower_bound(points.begin(), points.end(), uId,
                       [](const ImagePoint& point, unsigned u) { return point.image.uId < u; });
  return at != points.end() && at->image.uId == uId ? &*at : nullptr;
}

}  // namespace zu::internal
