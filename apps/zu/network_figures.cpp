#include "network_figures.h"

#include <algorithm>
#include <cmath>

#include "drawing.h"
#include "residual_arrows.h"
#include "svg.h"
#include "text_table.h"
#include "zu/adjust/distortion_accuracy.h"

namespace cli {

namespace {

constexpr double kPhotoWidth = 340.0, kCellWidth = 480.0;
constexpr double kQuantile = 0.95;
constexpr double kBound = 1.96;  // of 95 %, in standard deviations
constexpr double kMicrometres = 1000.0;
constexpr size_t kMostArrows = 1500;
constexpr int kColumns = 12, kLeast = 3;  // cells of a row; residuals of a cell that count
constexpr int kSteps = 100;
constexpr Style kUsed = Pen(Ink::kBlue, 1.1);
constexpr Style kAside = Pen(Ink::kRed, 1.4);
constexpr Style kFrame = Framed(Ink::kField, Ink::kFrame);
constexpr Color kColors[] = {Ink::kBlue, Ink::kRed, Ink::kGreen, Ink::kYellow};

// A frame of pixels in a drawing: pixels count from the centre of the first one, y downwards.
class PixelFrame {
 public:
  PixelFrame(const ZuRegion& region, double dWidth, double dTop)
      : m_region(region), m_dTop(dTop), m_dScale(dWidth / (region.Width() + 1.0)) {}

  double X(double x) const { return 1.0 + (x - m_region.Left() + 0.5) * m_dScale; }
  double Y(double y) const { return m_dTop + (y - m_region.Bottom() + 0.5) * m_dScale; }
  double Scale() const { return m_dScale; }
  double Height() const { return (m_region.Height() + 1.0) * m_dScale; }

 private:
  const ZuRegion& m_region;
  double m_dTop, m_dScale;
};

double Length(const ImageResidual& r) { return std::hypot(r.vx, r.vy); }

// Sums over one cell of the image.
struct Cell {
  double x = 0.0, y = 0.0, xx = 0.0, yy = 0.0;
  int n = 0;

  void Add(const ImageResidual& r) {
    x += r.vx;
    y += r.vy;
    xx += r.vx * r.vx;
    yy += r.vy * r.vy;
    ++n;
  }
  // Mean over its own standard deviation.
  static double Test(double dSum, double dSquares, int n) {
    const double dMean = dSum / n;
    const double dVariance = (dSquares - dSum * dMean) / (n - 1.0) / n;
    return dVariance > 0.0 ? std::fabs(dMean) / std::sqrt(dVariance) : 0.0;
  }
  bool IsLeft() const { return std::max(Test(x, xx, n), Test(y, yy, n)) > 3.0; }
};

struct Curve {
  std::string strName;
  std::vector<std::pair<double, double>> line, low, high;  // r [mm], displacement [um]
};

Curve CurveAlong(const ZuCamera& camera, const char* szName, double ux, double uy, double dReach,
                 const std::vector<int>& parameters, const std::vector<double>& cov) {
  Curve curve{szName, {}, {}, {}};
  for (int i = 0; i <= kSteps; ++i) {
    const double r = dReach * i / kSteps;
    ZuDistortion d;
    if (!ZuDistortionAt(camera, r * ux, r * uy, parameters, cov, &d)) break;
    const double dRadial = (d.dx * ux + d.dy * uy) * kMicrometres;
    const double dVariance = ux * ux * d.dXX + 2.0 * ux * uy * d.dXY + uy * uy * d.dYY;
    const double dBound = kBound * std::sqrt(std::max(dVariance, 0.0)) * kMicrometres;
    curve.line.emplace_back(r, dRadial);
    curve.low.emplace_back(r, dRadial - dBound);
    curve.high.emplace_back(r, dRadial + dBound);
  }
  return curve;
}

}  // namespace

ZuRegion ImageFrame(const ZuRegion& region, const std::vector<ImageResidual>& residuals) {
  ZuRegion frame(region);
  frame.Sort();
  if (frame.Width() > 0.0 && frame.Height() > 0.0) return frame;
  for (size_t i = 0; i < residuals.size(); ++i) {
    const ImageResidual& r = residuals[i];
    const ZuRegion place(r.x, r.y, r.x, r.y);
    if (i == 0) frame = place;
    frame.Left() = std::min(frame.Left(), r.x);
    frame.Right() = std::max(frame.Right(), r.x);
    frame.Bottom() = std::min(frame.Bottom(), r.y);
    frame.Top() = std::max(frame.Top(), r.y);
  }
  return frame;
}

double ResidualFactor(const std::vector<ImageResidual>& residuals, double dWidest) {
  std::vector<double> lengths;
  for (const ImageResidual& r : residuals) {
    if (r.bUsed) lengths.push_back(Length(r));
  }
  return FactorFor(Quantile(std::move(lengths), kQuantile), kPhotoWidth / (dWidest + 1.0));
}

Drawing ResidualFigure(const std::string& strTitle, const std::string& strNote,
                       const ZuRegion& frame, const std::vector<ImageResidual>& residuals,
                       double dFactor, const std::string& strPicture) {
  const PixelFrame pixels(frame, kPhotoWidth, 39.0);
  Drawing drawing(kPhotoWidth + 2.0, pixels.Height() + 44.0);
  drawing.Text(1.0, 13.0, strTitle, 13.0, Anchor::eStart, 0.0, Bold(Ink::kHeading));
  drawing.Text(1.0, 31.0, strNote, 12.0);
  ScaleBar(drawing, kPhotoWidth, 27.0, dFactor * pixels.Scale(), "px");
  drawing.Rect(1.0, 39.0, kPhotoWidth, pixels.Height(), kFrame);
  if (!strPicture.empty()) drawing.Picture(1.0, 39.0, kPhotoWidth, pixels.Height(), strPicture);
  std::vector<Drawn> used, aside;
  for (const ImageResidual& r : residuals) {
    const double x = pixels.X(r.x), y = pixels.Y(r.y), d = dFactor * pixels.Scale();
    (r.bUsed ? used : aside).push_back({{x, y, x + d * r.vx, y + d * r.vy}, Length(r)});
  }
  for (auto* p : {&used, &aside}) {
    *p = Thinned(std::move(*p), kMostArrows, kPhotoWidth, pixels.Height());
    DrawResiduals(drawing, *p, p == &used ? kUsed : kAside, kPhotoWidth);
  }
  drawing.SetTitle("Residuals of " + strTitle);
  return drawing;
}

std::optional<Drawing> MeanResidualFigure(const std::string& strTitle, const ZuRegion& frame,
                                          const std::vector<ImageResidual>& residuals) {
  const PixelFrame pixels(frame, kCellWidth, 44.0);
  const double dCell = (frame.Width() + 1.0) / kColumns;
  const int iRows = std::clamp(static_cast<int>(std::ceil((frame.Height() + 1.0) / dCell)), 1, 60);
  std::vector<Cell> cells(static_cast<size_t>(kColumns * iRows));
  for (const ImageResidual& r : residuals) {
    if (!r.bUsed) continue;
    const int i = static_cast<int>(std::floor((r.x - frame.Left() + 0.5) / dCell));
    const int k = static_cast<int>(std::floor((r.y - frame.Bottom() + 0.5) / dCell));
    if (i < 0 || i >= kColumns || k < 0 || k >= iRows) continue;
    cells[static_cast<size_t>(k * kColumns + i)].Add(r);
  }
  std::vector<double> lengths;
  for (const Cell& cell : cells) {
    if (cell.n >= kLeast) lengths.push_back(std::hypot(cell.x, cell.y) / cell.n);
  }
  if (lengths.empty()) return std::nullopt;
  const double dFactor = FactorFor(Quantile(std::move(lengths), kQuantile), pixels.Scale());
  std::vector<Drawing::Segment> left, none;
  for (int i = 0; i < kColumns * iRows; ++i) {
    const Cell& cell = cells[static_cast<size_t>(i)];
    if (cell.n < kLeast) continue;
    const double x = pixels.X(frame.Left() - 0.5 + (i % kColumns + 0.5) * dCell);
    const double y = pixels.Y(frame.Bottom() - 0.5 + (i / kColumns + 0.5) * dCell);
    const double d = dFactor * pixels.Scale() / cell.n;
    (cell.IsLeft() ? left : none).push_back({x, y, x + d * cell.x, y + d * cell.y});
  }
  Drawing drawing(kCellWidth + 2.0, pixels.Height() + 50.0);
  drawing.Text(1.0, 14.0, strTitle, 14.0, Anchor::eStart, 0.0, Bold(Ink::kHeading));
  drawing.Text(1.0, 34.0, "drawn " + SvgNumber(dFactor) + " times as long", 12.0);
  ScaleBar(drawing, kCellWidth, 30.0, dFactor * pixels.Scale(), "px");
  drawing.Rect(1.0, 44.0, kCellWidth, pixels.Height(), kFrame);
  drawing.Arrows(none, kUsed);
  drawing.Arrows(left, kAside);
  drawing.SetTitle(strTitle);
  return drawing;
}

std::optional<Drawing> DistortionBandFigure(const ZuCamera& camera, ImageExtent image,
                                            const std::vector<int>& parameters,
                                            const std::vector<double>& cov) {
  const double dReach =
      std::hypot(std::max(image.dRight - camera.m_dXh, camera.m_dXh - image.dLeft),
                 std::max(image.dTop - camera.m_dYh, camera.m_dYh - image.dBottom));
  std::vector<Curve> curves;
  const auto add = [&](const char* szName, double ux, double uy) {
    curves.push_back(CurveAlong(camera, szName, ux, uy, dReach, parameters, cov));
  };
  if (camera.m_iMode == eCameraModeCap) {
    add("+x", 1.0, 0.0);
    add("-x", -1.0, 0.0);
    add("+y", 0.0, 1.0);
    add("-y", 0.0, -1.0);
  } else {
    add("all directions", 1.0, 0.0);
  }
  SvgPlot::Range x{0.0, 0.0}, y{0.0, 0.0};
  for (const Curve& curve : curves) {
    for (size_t i = 0; i < curve.line.size(); ++i) {
      x.dHigh = std::max(x.dHigh, curve.line[i].first);
      y.dLow = std::min(y.dLow, curve.low[i].second);
      y.dHigh = std::max(y.dHigh, curve.high[i].second);
    }
  }
  if (!(x.dHigh > 0.0) || !(y.dHigh > y.dLow)) return std::nullopt;
  Drawing drawing(kCellWidth, 330.0);
  SvgPlot plot(drawing, 90.0, 34.0, kCellWidth - 110.0, 236.0, x, y);
  plot.DrawFrame("Distortion of camera " + std::to_string(camera.GetId()),
                 "distance from the principal point [mm]", "radial [\xC2\xB5m]");
  const auto draw = [&](std::vector<std::pair<double, double>> points, const Style& style) {
    for (auto& point : points) point = {plot.X(point.first), plot.Y(point.second)};
    drawing.Polyline(points, style);
  };
  for (size_t i = 0; i < curves.size(); ++i) {
    draw(curves[i].line, Pen(kColors[i], 1.8));
    for (const auto& bound : {curves[i].low, curves[i].high}) {
      draw(bound, Pen(kColors[i], 1.0, 4.0, 3.0));
    }
    drawing.Text(100.0 + 90.0 * static_cast<double>(i), 52.0, curves[i].strName, 12.0,
                 Anchor::eStart, 0.0, Filled(kColors[i]));
  }
  drawing.SetTitle("Distortion with its uncertainty");
  return drawing;
}

}  // namespace cli
