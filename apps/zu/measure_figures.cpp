#include "measure_figures.h"

#include <algorithm>
#include <cmath>
#include <map>

#include "drawing.h"
#include "residual_arrows.h"
#include "svg.h"
#include "text_table.h"

namespace cli {

namespace {

constexpr Style kResidual = Pen(Ink::kRed, 1.1);
constexpr Style kFaint = Pen(Ink::kFaint, 0.8);
constexpr Style kMean = Pen(Ink::kRed, 1.8);
constexpr double kQuantile = 0.95;
constexpr double kPhotoWidth = 340.0, kPlotWidth = 480.0;
constexpr size_t kMostPhotos = 24;
constexpr size_t kMostArrows = 16000, kMostOfPhoto = 1500, kMostOfPlan = 3000;
constexpr int kBins = 24;  // about

// An axis of object space.
struct Axis {
  const char* szName;
  double ZuPoint::*pCoordinate;
  double ZuMeasuredPoint::*pResidual;
  double dLow = 0.0, dHigh = 0.0;

  double Spread() const { return dHigh - dLow; }
};

// The two axes in which the points spread most, in the order X, Y, Z.
std::vector<Axis> PlanAxes(const ZuPointList& check) {
  std::vector<Axis> axes = {{"X", &ZuPoint::m_dX, &ZuMeasuredPoint::m_dDX},
                            {"Y", &ZuPoint::m_dY, &ZuMeasuredPoint::m_dDY},
                            {"Z", &ZuPoint::m_dZ, &ZuMeasuredPoint::m_dDZ}};
  for (Axis& axis : axes) {
    bool bFirst = true;
    for (const ZuPoint* p = check.First(); p != nullptr; p = p->Next(), bFirst = false) {
      const double d = p->*axis.pCoordinate;
      axis.dLow = bFirst ? d : std::min(axis.dLow, d);
      axis.dHigh = bFirst ? d : std::max(axis.dHigh, d);
    }
  }
  axes.erase(std::min_element(axes.begin(), axes.end(), [](const Axis& a, const Axis& b) {
    return a.Spread() < b.Spread();
  }));
  return axes;
}

// Residuals of one check point in the plan.
struct PlanSum {
  double du = 0.0, dv = 0.0;
  int n = 0;
};

template <class Function>
void ForEachChecked(const ZuPlaneMeasurement& result, Function function) {
  for (const ZuMeasuredPhoto& photo : result.m_photos) {
    for (const ZuMeasuredPoint& p : photo.m_points) {
      if (p.m_bChecked) function(p);
    }
  }
}

}  // namespace

PhotoFigures::PhotoFigures(const ZuPlaneMeasurement& result) {
  for (const ZuMeasuredPhoto& photo : result.m_photos) m_photos.push_back(&photo);
  if (m_photos.size() > kMostPhotos) {
    const auto order = [](const ZuMeasuredPhoto* a, const ZuMeasuredPhoto* b) {
      return a->m_dRmsPixels > b->m_dRmsPixels;
    };
    std::stable_sort(m_photos.begin(), m_photos.end(), order);
    m_photos.resize(kMostPhotos);
    std::sort(m_photos.begin(), m_photos.end());  // they stand in one array
  }
  m_uMost = std::min(kMostOfPhoto, kMostArrows / std::max<size_t>(m_photos.size(), 1));
  std::vector<double> lengths;
  ForEachChecked(result, [&](const ZuMeasuredPoint& p) {
    lengths.push_back(std::hypot(p.m_dResPixelX, p.m_dResPixelY));
  });
  m_dTypical = Quantile(std::move(lengths), kQuantile);
  double dWidest = 0.0;
  for (const ZuMeasuredPhoto* p : m_photos) {
    dWidest = std::max(dWidest, std::fabs(p->m_pPhoto->GetDigiRegion().Width()) + 1.0);
    m_bThinned |= p->m_points.size() > m_uMost;
  }
  m_dFactor = FactorFor(m_dTypical, kPhotoWidth / dWidest);
}

Drawing PhotoFigures::Figure(const ZuMeasuredPhoto& photo) const {
  ZuRegion region(photo.m_pPhoto->GetDigiRegion());
  region.Sort();
  const double dScale = kPhotoWidth / (region.Width() + 1.0);
  const double dHeight = (region.Height() + 1.0) * dScale;
  Drawing drawing(kPhotoWidth + 2.0, dHeight + 44.0);
  // Pixels count from the centre of the first one, y downwards.
  const auto X = [&](double x) { return 1.0 + (x - region.Left() + 0.5) * dScale; };
  const auto Y = [&](double y) { return 39.0 + (y - region.Bottom() + 0.5) * dScale; };
  const std::string strId = std::to_string(photo.m_pPhoto->GetId());
  drawing.Text(1.0, 13.0, "Photo " + strId + ", " + photo.m_pPhoto->GetName().chars(), 13.0,
               Anchor::eStart, 0.0, Bold(Ink::kHeading));
  drawing.Text(
      1.0, 31.0,
      photo.m_iChecked > 0 ? "RMS " + Fixed(photo.m_dRmsPixels, 3) + " px" : "no check points",
      12.0);
  ScaleBar(drawing, kPhotoWidth, 27.0, m_dFactor * dScale, "px");
  drawing.Rect(1.0, 39.0, kPhotoWidth, dHeight, Framed(Ink::kField, Ink::kFrame));
  std::vector<Drawn> residuals, others;
  for (const ZuMeasuredPoint& p : photo.m_points) {
    const double x = X(p.m_dPixelX), y = Y(p.m_dPixelY), d = m_dFactor * dScale;
    if (p.m_bChecked) {
      residuals.push_back({{x, y, x + d * p.m_dResPixelX, y + d * p.m_dResPixelY},
                           std::hypot(p.m_dResPixelX, p.m_dResPixelY)});
    } else {
      others.push_back({{x, y, x, y}, 0.0});
    }
  }
  for (const Drawn& p : Thinned(std::move(others), m_uMost, kPhotoWidth, dHeight)) {
    drawing.Circle(p.segment.x1, p.segment.y1, 1.5, Filled(Ink::kNote));
  }
  DrawResiduals(drawing, Thinned(std::move(residuals), m_uMost, kPhotoWidth, dHeight), kResidual,
                kPhotoWidth);
  drawing.SetTitle("Residuals of photo " + strId);
  return drawing;
}

Drawing PlanFigure(const ZuPlaneMeasurement& result, const ZuPointList& check,
                   const std::string& strUnit) {
  const std::vector<Axis> axes = PlanAxes(check);
  const Axis &u = axes[0], &v = axes[1];
  const double dMargin = 0.08 * std::max(u.Spread(), v.Spread());
  const double dAspect =
      std::clamp((v.Spread() + 2.0 * dMargin) / (u.Spread() + 2.0 * dMargin), 0.3, 1.3);
  const double dWidth = kPlotWidth - 90.0;
  const double dHeight = std::isfinite(dAspect) ? dWidth * dAspect : dWidth;
  Drawing drawing(kPlotWidth, dHeight + 130.0);
  SvgPlot plot(drawing, 76.0, 56.0, dWidth, dHeight, {u.dLow - dMargin, u.dHigh + dMargin},
               {v.dLow - dMargin, v.dHigh + dMargin});
  plot.MakeSquareScale();

  std::vector<double> lengths;
  std::map<unsigned, PlanSum> sums;
  ForEachChecked(result, [&](const ZuMeasuredPoint& p) {
    PlanSum& sum = sums[p.m_uId];
    sum.du += p.*u.pResidual;
    sum.dv += p.*v.pResidual;
    ++sum.n;
    lengths.push_back(std::hypot(p.*u.pResidual, p.*v.pResidual));
  });
  const double dFactor = FactorFor(Quantile(std::move(lengths), kQuantile), plot.PixelsPerUnit());
  drawing.Text(76.0 + 0.5 * dWidth, 18.0, "Object points with residuals", 15.0, Anchor::eMiddle,
               0.0, Bold(Ink::kHeading));
  plot.DrawFrame("", std::string(u.szName) + " [" + strUnit + "]",
                 std::string(v.szName) + " [" + strUnit + "]");
  ScaleBar(drawing, 76.0 + dWidth, 40.0, dFactor * plot.PixelsPerUnit(), strUnit);
  drawing.Text(76.0, 44.0, "residuals drawn " + SvgNumber(dFactor) + " times as long", 12.0);

  const ZuSortHelper<ZuPoint> index(&check);
  const auto drawn = [&](const ZuPoint& p, double du, double dv) {
    const double x = p.*u.pCoordinate, y = p.*v.pCoordinate;
    return Drawn{{plot.X(x), plot.Y(y), plot.X(x + dFactor * du), plot.Y(y + dFactor * dv)},
                 std::hypot(du, dv)};
  };
  std::vector<Drawn> single, mean;
  ForEachChecked(result, [&](const ZuMeasuredPoint& p) {
    const ZuPoint* pCheck = index.Find(p.m_uId);
    if (pCheck != nullptr) single.push_back(drawn(*pCheck, p.*u.pResidual, p.*v.pResidual));
  });
  for (const auto& [uId, sum] : sums) {
    const ZuPoint* pCheck = index.Find(uId);
    if (pCheck != nullptr) mean.push_back(drawn(*pCheck, sum.du / sum.n, sum.dv / sum.n));
  }
  // In one cell of a thinned plan the photos' residuals are one, too.
  single = Thinned(std::move(single), 2 * kMostOfPlan, dWidth, dHeight);
  mean = Thinned(std::move(mean), kMostOfPlan, dWidth, dHeight);
  DrawResiduals(drawing, single, kFaint, kPlotWidth);
  std::vector<Drawing::Segment> arrows;
  for (const Drawn& d : mean) {
    const double dPixels = d.Pixels(), dShare = dPixels > kCutLength ? kCutLength / dPixels : 1.0;
    const Drawing::Segment& s = d.segment;
    arrows.push_back({s.x1, s.y1, s.x1 + dShare * (s.x2 - s.x1), s.y1 + dShare * (s.y2 - s.y1)});
  }
  drawing.Arrows(arrows, kMean);
  drawing.Dots(arrows, 2.0, Ink::kText);
  drawing.Text(76.0, dHeight + 108.0, "dot: check point; blue: residual of each photo;", 12.0);
  drawing.Text(76.0, dHeight + 124.0, "red: mean of the photos; yellow: cut, with its length",
               12.0);
  drawing.SetTitle("Plan of the object points with residuals");
  return drawing;
}

Drawing HistogramFigure(const ZuPlaneMeasurement& result, const std::string& strUnit) {
  std::vector<double> lengths;
  ForEachChecked(result, [&](const ZuMeasuredPoint& p) { lengths.push_back(p.Length()); });
  const double dMost = *std::max_element(lengths.begin(), lengths.end());
  const double dEnd = std::min(dMost, 5.0 * Quantile(lengths, kQuantile));
  double dBin = SvgRoundDown(1.5 * dEnd / kBins);
  if (!(dBin > 0.0)) dBin = 1.0;
  std::vector<int> counts(static_cast<size_t>(dEnd / dBin) + 1);
  int iBeyond = 0;
  for (const double d : lengths) {
    const double dPlace = d / dBin;
    dPlace < static_cast<double>(counts.size()) ? ++counts[static_cast<size_t>(dPlace)] : ++iBeyond;
  }
  const int iHighest = *std::max_element(counts.begin(), counts.end());

  Drawing drawing(kPlotWidth, 330.0);
  const double dBins = static_cast<double>(counts.size());
  SvgPlot plot(drawing, 76.0, 40.0, kPlotWidth - 90.0, 230.0, {0.0, dBin * dBins},
               {0.0, 1.08 * std::max(iHighest, 1)});
  plot.DrawFrame("Lengths of the residuals", "length [" + strUnit + "]", "number of measurements");
  for (size_t i = 0; i < counts.size(); ++i) {
    if (counts[i] == 0) continue;
    const double x = plot.X(dBin * static_cast<double>(i));
    const double y = plot.Y(counts[i]);
    drawing.Rect(x + 1.0, y, plot.X(dBin * static_cast<double>(i + 1)) - x - 2.0, plot.Y(0.0) - y,
                 Filled(Ink::kBar));
  }
  if (result.m_dRms < dBin * dBins) {
    drawing.Line(plot.X(result.m_dRms), 40.0, plot.X(result.m_dRms), 270.0,
                 Pen(Ink::kRed, 1.5, 5.0, 3.0));
    drawing.Text(plot.X(result.m_dRms) + 5.0, 54.0, "RMS", 12.0, Anchor::eStart, 0.0,
                 Filled(Ink::kRed));
  }
  if (iBeyond > 0) {
    drawing.Text(kPlotWidth - 18.0, 70.0,
                 std::to_string(iBeyond) + " beyond, to " + Significant(dMost), 12.0, Anchor::eEnd);
  }
  drawing.SetTitle("Histogram of the residuals");
  return drawing;
}

}  // namespace cli
