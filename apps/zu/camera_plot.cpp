#include "camera_plot.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "drawing.h"
#include "svg.h"
#include "zu/photo/camera.h"
#include "zu/photo/photo.h"

namespace cli {

namespace {

constexpr double kMicrometres = 1000.0;  // in a millimetre
constexpr int kCurveSteps = 200;
constexpr int kVectors = 17;            // along the longer side
constexpr double kLongestVector = 2.2;  // in spacings
constexpr Color kColors[] = {Ink::kBlue, Ink::kRed, Ink::kGreen, Ink::kYellow};

struct Displacement {
  double dx, dy;  // corrected less measured, about the principal point [mm]
};

bool DisplacementAt(const ZuCamera& camera, double x, double y, Displacement* pResult) {
  double xAdjusted = x, yAdjusted = y;
  if (camera.AdjustExact(&xAdjusted, &yAdjusted) != eCameraInverseOk) return false;
  const bool bViva = camera.m_iMode == eCameraModeViva;
  *pResult = {xAdjusted - (x - (bViva ? camera.m_dXhViva : camera.m_dXh)),
              yAdjusted - (y - (bViva ? camera.m_dYhViva : camera.m_dYh))};
  return std::isfinite(pResult->dx) && std::isfinite(pResult->dy);
}

double FarthestCorner(const ZuCamera& camera, ImageExtent image) {
  return std::hypot(std::max(image.dRight - camera.m_dXh, camera.m_dXh - image.dLeft),
                    std::max(image.dTop - camera.m_dYh, camera.m_dYh - image.dBottom));
}

struct Direction {
  const char* szName;
  double x, y;
};

std::vector<Direction> CurveDirections(const ZuCamera& camera) {
  if (camera.m_iMode != eCameraModeCap) return {{"all directions", 1.0, 0.0}};
  return {{"+x", 1.0, 0.0}, {"-x", -1.0, 0.0}, {"+y", 0.0, 1.0}, {"-y", 0.0, -1.0}};
}

using Curve = std::vector<std::pair<double, double>>;  // r [mm], displacement [um]

Curve CurveAlong(const ZuCamera& camera, Direction direction, double dReach) {
  Curve curve;
  for (int i = 0; i <= kCurveSteps; ++i) {
    const double r = dReach * i / kCurveSteps;
    Displacement d{};
    if (!DisplacementAt(camera, camera.m_dXh + r * direction.x, camera.m_dYh + r * direction.y, &d))
      break;
    curve.emplace_back(r, (d.dx * direction.x + d.dy * direction.y) * kMicrometres);
  }
  return curve;
}

void DrawCurve(Drawing& drawing, const ZuCamera& camera, ImageExtent image, double dLeft,
               double dTop, double dWidth, double dHeight) {
  const double dReach = FarthestCorner(camera, image);
  const auto directions = CurveDirections(camera);
  std::vector<Curve> curves;
  SvgPlot::Range y{0.0, 0.0};
  for (const Direction& direction : directions) {
    curves.push_back(CurveAlong(camera, direction, dReach));
    for (const auto& [r, d] : curves.back()) y = {std::min(y.dLow, d), std::max(y.dHigh, d)};
  }
  const double dMargin = 0.06 * (y.dHigh - y.dLow);
  SvgPlot plot(drawing, dLeft, dTop, dWidth, dHeight, {0.0, dReach},
               {y.dLow - dMargin, y.dHigh + dMargin});
  plot.DrawFrame("Radial displacement, corrected less measured",
                 "distance from the principal point [mm]", "displacement [\xC2\xB5m]");
  if (camera.m_dR0 > 0.0 && camera.m_dR0 < dReach) {
    drawing.Line(plot.X(camera.m_dR0), dTop, plot.X(camera.m_dR0), dTop + dHeight,
                 Pen(Ink::kNote, 1.0, 5.0, 4.0));
    drawing.Text(plot.X(camera.m_dR0) + 5.0, dTop + 16.0, "r0 = " + SvgNumber(camera.m_dR0) + " mm",
                 12.0);
  }
  for (size_t i = 0; i < curves.size(); ++i) {
    Curve pixels;
    for (const auto& [r, d] : curves[i]) pixels.emplace_back(plot.X(r), plot.Y(d));
    const Color color = kColors[i % std::size(kColors)];
    drawing.Polyline(pixels, Pen(color, 2.0));
    if (curves.size() < 2) continue;
    const double yKey = dTop + dHeight - 12.0 - 16.0 * static_cast<double>(curves.size() - 1 - i);
    drawing.Line(dLeft + 12.0, yKey - 4.0, dLeft + 34.0, yKey - 4.0, Pen(color, 2.0));
    drawing.Text(dLeft + 40.0, yKey, std::string("along ") + directions[i].szName, 12.0);
  }
}

struct Vector {
  double x, y;
  Displacement d;
};

// A grid over the image, as square as the sides allow.
std::vector<Vector> GridVectors(const ZuCamera& camera, ImageExtent image, double* pdSpacing) {
  const double dWidth = image.dRight - image.dLeft, dHeight = image.dTop - image.dBottom;
  *pdSpacing = std::max(dWidth, dHeight) / (kVectors - 1);
  const int nx = std::max(2, static_cast<int>(std::lround(dWidth / *pdSpacing)) + 1);
  const int ny = std::max(2, static_cast<int>(std::lround(dHeight / *pdSpacing)) + 1);
  std::vector<Vector> vectors;
  for (int i = 0; i < nx; ++i) {
    for (int j = 0; j < ny; ++j) {
      Vector v{image.dLeft + dWidth * i / (nx - 1), image.dBottom + dHeight * j / (ny - 1), {}};
      if (DisplacementAt(camera, v.x, v.y, &v.d)) vectors.push_back(v);
    }
  }
  return vectors;
}

void DrawVectors(Drawing& drawing, const ZuCamera& camera, ImageExtent image, double dLeft,
                 double dTop, double dWidth, double dHeight) {
  double dSpacing = 0.0, dLongest = 0.0;
  const auto vectors = GridVectors(camera, image, &dSpacing);
  for (const Vector& v : vectors) dLongest = std::max(dLongest, std::hypot(v.d.dx, v.d.dy));
  double dFactor = dLongest > 0.0 ? kLongestVector * dSpacing / dLongest : 1.0;
  if (dLongest > 0.0) dFactor = SvgRoundDown(dFactor);

  const double dMarginX = 0.1 * (image.dRight - image.dLeft);
  const double dMarginY = 0.1 * (image.dTop - image.dBottom);
  SvgPlot plot(drawing, dLeft, dTop, dWidth, dHeight,
               {image.dLeft - dMarginX, image.dRight + dMarginX},
               {image.dBottom - dMarginY, image.dTop + dMarginY});
  plot.MakeSquareScale();
  plot.DrawFrame("Displacement over the image, drawn " +
                     (dFactor == 1.0 ? "to scale" : SvgNumber(dFactor) + " times as long"),
                 "x [mm]", "y [mm]");
  drawing.Rect(plot.X(image.dLeft), plot.Y(image.dTop),
               (image.dRight - image.dLeft) * plot.PixelsPerUnit(),
               (image.dTop - image.dBottom) * plot.PixelsPerUnit(), Pen(Ink::kOutline, 1.5));
  for (const Vector& v : vectors) {
    drawing.Arrow(plot.X(v.x), plot.Y(v.y), plot.X(v.x + dFactor * v.d.dx),
                  plot.Y(v.y + dFactor * v.d.dy), kColors[0]);
  }
  drawing.Circle(plot.X(camera.m_dXh), plot.Y(camera.m_dYh), 4.5, Pen(Ink::kRed, 2.0));
  drawing.Text(plot.X(camera.m_dXh) + 8.0, plot.Y(camera.m_dYh) - 7.0, "principal point", 12.0,
               Anchor::eStart, 0.0, Rimmed(Ink::kRed));
  drawing.Text(
      dLeft + dWidth, dTop + dHeight + 52.0,
      "longest " + SvgNumber(dLongest * kMicrometres) + " \xC2\xB5m, frame: " + image.szWhat, 12.0,
      Anchor::eEnd);
}

std::string CameraTitle(const ZuCamera& camera) {
  return "Camera " + std::to_string(camera.GetId()) + " \"" + camera.GetName().chars() + "\"";
}

}  // namespace

ImageExtent CameraExtent(const ZuCamera& camera) {
  double d =
      std::fabs(camera.m_dRMax != 0.0 ? camera.m_dRMax : ZuCamera::kTableReach * camera.m_dR0);
  if (!(d > 0.0) || !std::isfinite(d)) d = 1.0;
  return {-d, -d, d, d, "domain of the camera"};
}

ImageExtent PhotoExtent(const ZuPhoto& photo) {
  ZuRegion region(photo.GetBikoRegion());
  region.Sort();
  const double dBorderX = 0.5 * photo.GetPixelSizeX(), dBorderY = 0.5 * photo.GetPixelSizeY();
  return {region.Left() - dBorderX, region.Bottom() - dBorderY, region.Right() + dBorderX,
          region.Top() + dBorderY, "image"};
}

Drawing DistortionCurve(const ZuCamera& camera, ImageExtent image, double dWidth, double dHeight) {
  Drawing drawing(dWidth, dHeight);
  DrawCurve(drawing, camera, image, 90.0, 34.0, dWidth - 120.0, dHeight - 84.0);
  drawing.SetTitle(CameraTitle(camera) + ", distortion");
  return drawing;
}

Drawing CameraPlot(const ZuCamera& camera, ImageExtent image) {
  constexpr double kWidth = 1240.0, kHeight = 640.0;
  Drawing drawing(kWidth, kHeight);
  drawing.Text(0.5 * kWidth, 30.0, CameraTitle(camera) + ": lens distortion", 20.0, Anchor::eMiddle,
               0.0, Bold(Ink::kHeading));
  drawing.Text(0.5 * kWidth, 52.0,
               "c = " + SvgNumber(std::fabs(camera.m_dC)) + " mm, principal point (" +
                   SvgNumber(camera.m_dXh) + ", " + SvgNumber(camera.m_dYh) + ") mm",
               13.0, Anchor::eMiddle);
  DrawCurve(drawing, camera, image, 90.0, 100.0, 500.0, 470.0);
  DrawVectors(drawing, camera, image, 700.0, 100.0, 500.0, 470.0);
  drawing.SetTitle(CameraTitle(camera) + ", lens distortion");
  return drawing;
}

}  // namespace cli
