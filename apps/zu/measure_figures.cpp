#include "measure_figures.h"

#include <algorithm>
#include <cmath>
#include <map>

#include "svg.h"

namespace cli {

namespace {

constexpr char kResidual[] = "stroke='#c1272d' stroke-width='1.1'";
constexpr char kFaint[] = "stroke='#8aa4c4' stroke-width='0.8'";
constexpr char kMean[] = "stroke='#c1272d' stroke-width='2'";
constexpr double kLongest = 0.09;  // of the frame's width, for the longest residual
constexpr int kBins = 24;          // about

std::string Times(double dFactor) { return SvgNumber(dFactor) + " times as long"; }

// An axis of object space.
struct Axis {
  const char* szName;
  double ZuPoint::*pCoordinate;
  double MeasuredPoint::*pResidual;
  double dLow = 0.0, dHigh = 0.0;
};

// The two axes in which the points spread most, in the order X, Y, Z.
std::vector<Axis> PlanAxes(const ZuPointList& check) {
  std::vector<Axis> axes = {{"X", &ZuPoint::m_dX, &MeasuredPoint::dx},
                            {"Y", &ZuPoint::m_dY, &MeasuredPoint::dy},
                            {"Z", &ZuPoint::m_dZ, &MeasuredPoint::dz}};
  for (Axis& axis : axes) {
    bool bFirst = true;
    for (const ZuPoint* p = check.First(); p != nullptr; p = p->Next(), bFirst = false) {
      const double d = p->*axis.pCoordinate;
      axis.dLow = bFirst ? d : std::min(axis.dLow, d);
      axis.dHigh = bFirst ? d : std::max(axis.dHigh, d);
    }
  }
  const auto narrowest = std::min_element(
      axes.begin(), axes.end(),
      [](const Axis& a, const Axis& b) { return a.dHigh - a.dLow < b.dHigh - b.dLow; });
  axes.erase(narrowest);
  return axes;
}

}  // namespace

double PhotoFactor(const Measurement& result) {
  double dFactor = 0.0;
  for (const MeasuredPhoto& photo : result.photos) {
    double dLongest = 0.0;
    for (const MeasuredPoint& p : photo.points) {
      if (p.bChecked) dLongest = std::max(dLongest, std::hypot(p.rx, p.ry));
    }
    if (!(dLongest > 0.0)) continue;
    const double d = kLongest * (photo.pPhoto->GetDigiRegion().Width() + 1.0) / dLongest;
    dFactor = dFactor == 0.0 ? d : std::min(dFactor, d);
  }
  return dFactor > 0.0 ? SvgRoundDown(dFactor) : 1.0;
}

std::string PhotoFigure(const MeasuredPhoto& photo, double dFactor) {
  const ZuRegion& region = photo.pPhoto->GetDigiRegion();
  const double dScale = 330.0 / (std::fabs(region.Width()) + 1.0);
  const double dWidth = 330.0, dHeight = (std::fabs(region.Height()) + 1.0) * dScale;
  Svg svg(dWidth + 2.0, dHeight + 24.0);
  // Pixels count from the centre of the first one, y downwards.
  const auto X = [&](double x) { return 1.0 + (x - region.Left() + 0.5) * dScale; };
  const auto Y = [&](double y) { return 19.0 + (y - region.Bottom() + 0.5) * dScale; };
  svg.Text(
      1.0, 13.0,
      "Photo " + std::to_string(photo.pPhoto->GetId()) + ", " + photo.pPhoto->GetName().chars(),
      12.0);
  svg.Rect(1.0, 19.0, dWidth, dHeight, "fill='#fcfcfc' stroke='#555'");
  std::vector<Svg::Segment> segments;
  for (const MeasuredPoint& p : photo.points) {
    if (!p.bChecked) {
      svg.Circle(X(p.px), Y(p.py), 1.5, "fill='#777'");
      continue;
    }
    segments.push_back({X(p.px - dFactor * p.rx), Y(p.py - dFactor * p.ry), X(p.px), Y(p.py)});
  }
  // From the check point's place to the measured one.
  for (Svg::Segment& s : segments) {
    const double dx = s.x2 - s.x1, dy = s.y2 - s.y1;
    s = {s.x2, s.y2, s.x2 + dx, s.y2 + dy};
  }
  svg.Arrows(segments, kResidual);
  return svg.Document("Residuals of photo " + std::to_string(photo.pPhoto->GetId()));
}

std::string PlanFigure(const Measurement& result, const ZuPointList& check,
                       const std::string& strUnit) {
  const std::vector<Axis> axes = PlanAxes(check);
  const Axis &u = axes[0], &v = axes[1];
  const double dMargin = 0.08 * std::max(u.dHigh - u.dLow, v.dHigh - v.dLow);
  const double dAspect =
      std::clamp((v.dHigh - v.dLow + 2.0 * dMargin) / (u.dHigh - u.dLow + 2.0 * dMargin), 0.3, 1.2);
  const double dPlotWidth = 640.0, dPlotHeight = std::isfinite(dAspect) ? 640.0 * dAspect : 400.0;
  Svg svg(dPlotWidth + 120.0, dPlotHeight + 110.0);
  SvgPlot plot(svg, 90.0, 40.0, dPlotWidth, dPlotHeight, {u.dLow - dMargin, u.dHigh + dMargin},
               {v.dLow - dMargin, v.dHigh + dMargin});
  plot.MakeSquareScale();

  struct Sum {
    double du = 0.0, dv = 0.0;
    int n = 0;
  };
  std::map<unsigned, Sum> sums;
  double dLongest = 0.0;
  for (const MeasuredPhoto& photo : result.photos) {
    for (const MeasuredPoint& p : photo.points) {
      if (!p.bChecked) continue;
      Sum& sum = sums[p.uId];
      sum.du += p.*u.pResidual;
      sum.dv += p.*v.pResidual;
      ++sum.n;
      dLongest = std::max(dLongest, std::hypot(p.*u.pResidual, p.*v.pResidual));
    }
  }
  const double dPixels = 70.0;  // of the longest residual
  const double dFactor =
      dLongest > 0.0 ? std::max(SvgRoundDown(dPixels / (dLongest * plot.PixelsPerUnit())), 1e-12)
                     : 1.0;
  plot.DrawFrame("Object points with residuals, drawn " + Times(dFactor),
                 std::string(u.szName) + " [" + strUnit + "]",
                 std::string(v.szName) + " [" + strUnit + "]");

  const ZuSortHelper<ZuPoint> index(&check);
  std::vector<Svg::Segment> single, mean;
  const auto add = [&](std::vector<Svg::Segment>& segments, const ZuPoint& p, double du,
                       double dv) {
    const double x = p.*u.pCoordinate, y = p.*v.pCoordinate;
    segments.push_back({plot.X(x), plot.Y(y), plot.X(x + dFactor * du), plot.Y(y + dFactor * dv)});
  };
  for (const MeasuredPhoto& photo : result.photos) {
    for (const MeasuredPoint& p : photo.points) {
      const ZuPoint* pCheck = p.bChecked ? index.Find(p.uId) : nullptr;
      if (pCheck != nullptr) add(single, *pCheck, p.*u.pResidual, p.*v.pResidual);
    }
  }
  for (const auto& [uId, sum] : sums) {
    const ZuPoint* pCheck = index.Find(uId);
    if (pCheck != nullptr) add(mean, *pCheck, sum.du / sum.n, sum.dv / sum.n);
  }
  svg.Arrows(single, kFaint);
  svg.Arrows(mean, kMean);
  for (const Svg::Segment& s : mean) svg.Circle(s.x1, s.y1, 2.2, "fill='#222'");
  svg.Text(90.0, dPlotHeight + 100.0,
           "black: check point; blue: residual of each photo; red: mean of the photos", 12.0);
  return svg.Document("Plan of the object points with residuals");
}

std::string HistogramFigure(const Measurement& result, const std::string& strUnit) {
  std::vector<double> lengths;
  for (const MeasuredPhoto& photo : result.photos) {
    for (const MeasuredPoint& p : photo.points) {
      if (p.bChecked) lengths.push_back(p.Length());
    }
  }
  const double dLongest = lengths.empty() ? 0.0 : *std::max_element(lengths.begin(), lengths.end());
  double dBin = SvgRoundDown(1.5 * dLongest / kBins);
  if (!(dBin > 0.0)) dBin = 1.0;
  std::vector<int> counts(static_cast<size_t>(dLongest / dBin) + 1);
  for (const double d : lengths) ++counts[static_cast<size_t>(d / dBin)];
  const int iMost = *std::max_element(counts.begin(), counts.end());

  Svg svg(560.0, 330.0);
  SvgPlot plot(svg, 80.0, 40.0, 450.0, 220.0, {0.0, dBin * static_cast<double>(counts.size())},
               {0.0, 1.08 * std::max(iMost, 1)});
  plot.DrawFrame("Lengths of the residuals", "length [" + strUnit + "]", "number of measurements");
  for (size_t i = 0; i < counts.size(); ++i) {
    const double x = plot.X(dBin * static_cast<double>(i));
    const double y = plot.Y(counts[i]);
    svg.Rect(x + 1.0, y, plot.X(dBin * static_cast<double>(i + 1)) - x - 2.0, plot.Y(0.0) - y,
             "fill='#5b84b1'");
  }
  svg.Line(plot.X(result.dRms), 40.0, plot.X(result.dRms), 260.0,
           "stroke='#c1272d' stroke-width='1.5' stroke-dasharray='5 3'");
  svg.Text(plot.X(result.dRms) + 5.0, 54.0, "RMS", 12.0, "start", 0.0, "fill='#c1272d'");
  return svg.Document("Histogram of the residuals");
}

}  // namespace cli
