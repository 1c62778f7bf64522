#include "view_figure.h"

#include <algorithm>
#include <cmath>

#include "residual_arrows.h"
#include "svg.h"

namespace cli {
namespace {

constexpr size_t kMostArrows = 3000, kMostEllipses = 300, kMostLabels = 40;
constexpr double kPlotWidth = 480.0, kLeft = 88.0, kRight = 16.0;
constexpr double kEllipse = 2.4477;  // radius of 95 % in standard deviations, sqrt(chi2(2)) [-]
constexpr Style kUsed = Pen(Ink::kBlue, 1.3), kAside = Pen(Ink::kRed, 1.6);
constexpr Style kLineStyle = Pen(Ink::kNote, 0.8), kEllipseStyle = Pen(Ink::kGreen, 1.0);

struct Extent {
  double dLow = 0.0, dHigh = 0.0;
  bool bFirst = true;

  void Add(double d) {
    dLow = bFirst ? d : std::min(dLow, d);
    dHigh = bFirst ? d : std::max(dHigh, d);
    bFirst = false;
  }
};

// Half axes and direction of the 95 % ellipse, drawn dScale px for a unit.
void DrawEllipse(Drawing& drawing, double x, double y, const ReportView::Item& item,
                 double dScale) {
  const double dMean = 0.5 * (item.cxx + item.cyy);
  const double dHalf = std::hypot(0.5 * (item.cxx - item.cyy), item.cxy);
  const double a = kEllipse * dScale * std::sqrt(std::max(0.0, dMean + dHalf));
  const double b = kEllipse * dScale * std::sqrt(std::max(0.0, dMean - dHalf));
  const double dTurn = 0.5 * std::atan2(2.0 * item.cxy, item.cxx - item.cyy);
  if (!(a > 0.3) || !(a < 10.0 * kPlotWidth)) return;
  std::vector<std::pair<double, double>> points;
  for (int i = 0; i <= 36; ++i) {
    const double t = i * 3.14159265358979323846 / 18.0;
    const double u = a * std::cos(t), v = b * std::sin(t);
    points.emplace_back(x + u * std::cos(dTurn) - v * std::sin(dTurn),
                        y - u * std::sin(dTurn) - v * std::cos(dTurn));
  }
  drawing.Polyline(points, kEllipseStyle);
}

class ViewFigure {
 public:
  ViewFigure(const ReportView& view, const std::string& strUnit)
      : m_view(view), m_strUnit(strUnit) {}

  Drawing Figure() const {
    Extent x, y;
    for (const auto& item : m_view.items) {
      x.Add(item.x);
      y.Add(item.y);
    }
    for (const auto& line : m_view.lines) {
      for (const auto& [u, v] : line.points) {
        x.Add(u);
        y.Add(v);
      }
    }
    const double dMargin = 0.08 * std::max(x.dHigh - x.dLow, y.dHigh - y.dLow);
    const double dWidth = kPlotWidth - kLeft - kRight;
    const double dAspect = (y.dHigh - y.dLow + 2.0 * dMargin) / (x.dHigh - x.dLow + 2.0 * dMargin);
    const double dHeight = dWidth * (std::isfinite(dAspect) ? std::clamp(dAspect, 0.3, 1.3) : 1.0);
    Drawing drawing(kPlotWidth, dHeight + 138.0);
    SvgPlot plot(drawing, kLeft, 56.0, dWidth, dHeight, {x.dLow - dMargin, x.dHigh + dMargin},
                 {y.dLow - dMargin, y.dHigh + dMargin});
    plot.MakeSquareScale();
    const double dFactor = Factor(plot);
    drawing.Text(kLeft + 0.5 * dWidth, 18.0, m_view.strTitle, 15.0, Anchor::eMiddle, 0.0,
                 Bold(Ink::kHeading));
    plot.DrawFrame("", m_view.strAxisX + " [" + m_strUnit + "]",
                   m_view.strAxisY + " [" + m_strUnit + "]");
    if (HasErrors()) {
      const double dUnit = dFactor * plot.PixelsPerUnit();
      drawing.Text(kLeft, 44.0, "error, drawn " + SvgNumber(dFactor) + " times as long", 12.0);
      ScaleBar(drawing, kLeft + dWidth, 40.0, dUnit, m_strUnit);
    }
    DrawLines(drawing, plot);
    Draw(drawing, plot, dFactor, dWidth, dHeight);
    const double dFoot = dHeight + 116.0;
    drawing.Text(kLeft, dFoot + 4.0, "space", 12.0);
    ScaleBar(drawing, kLeft + dWidth, dFoot, plot.PixelsPerUnit(), m_strUnit);
    drawing.SetTitle(m_view.strTitle);
    return drawing;
  }

 private:
  bool HasErrors() const {
    return std::any_of(m_view.items.begin(), m_view.items.end(), [](const ReportView::Item& item) {
      return item.bArrow || item.cxx + item.cyy > 0.0;
    });
  }

  double Factor(const SvgPlot& plot) const {
    std::vector<double> lengths;
    for (const auto& item : m_view.items) {
      const double d = item.bArrow ? std::hypot(item.dx, item.dy) : 0.0;
      const double dAxis = kEllipse * std::sqrt(std::max(0.0, std::max(item.cxx, item.cyy)));
      if (item.bUsed && std::isfinite(d + dAxis)) lengths.push_back(std::max(d, dAxis));
    }
    return FactorFor(Quantile(std::move(lengths), 0.95), plot.PixelsPerUnit());
  }

  void DrawLines(Drawing& drawing, const SvgPlot& plot) const {
    for (const auto& line : m_view.lines) {
      if (line.points.empty()) continue;
      std::vector<std::pair<double, double>> points;
      for (const auto& [x, y] : line.points) points.emplace_back(plot.X(x), plot.Y(y));
      drawing.Polyline(points, kLineStyle);
      if (m_view.lines.size() > kMostLabels) continue;
      drawing.Text(points[0].first + 4.0, points[0].second - 5.0, line.strLabel, 11.0);
    }
  }

  void Draw(Drawing& drawing, const SvgPlot& plot, double dFactor, double dWidth,
            double dHeight) const {
    std::vector<Drawn> used, aside, dots;
    std::vector<const ReportView::Item*> labelled;
    size_t uEllipses = 0;
    for (const auto& item : m_view.items) {
      const double x = plot.X(item.x), y = plot.Y(item.y);
      const Drawn drawn = {
          {x, y, plot.X(item.x + dFactor * item.dx), plot.Y(item.y + dFactor * item.dy)},
          std::hypot(item.dx, item.dy)};
      dots.push_back({{x, y, x, y}, 0.0});
      if (item.cxx + item.cyy > 0.0 && ++uEllipses <= kMostEllipses) {
        DrawEllipse(drawing, x, y, item, dFactor * plot.PixelsPerUnit());
      }
      if (item.bArrow) (item.bUsed ? used : aside).push_back(drawn);
      const bool bFew = m_view.items.size() <= kMostLabels;
      if (!item.strLabel.empty() && (bFew || !item.bUsed) && labelled.size() < kMostLabels) {
        labelled.push_back(&item);
      }
    }
    DrawResiduals(drawing, Thinned(std::move(used), kMostArrows, dWidth, dHeight), kUsed,
                  kPlotWidth);
    DrawResiduals(drawing, Thinned(std::move(aside), kMostArrows, dWidth, dHeight), kAside,
                  kPlotWidth);
    std::vector<Drawing::Segment> shown;
    for (const Drawn& dot : Thinned(std::move(dots), kMostArrows, dWidth, dHeight)) {
      shown.push_back(dot.segment);
    }
    if (!shown.empty()) drawing.Dots(shown, 1.6, Ink::kText);
    for (const ReportView::Item* pItem : labelled) {
      const double x = plot.X(pItem->x), y = plot.Y(pItem->y);
      const bool bLeft = x > kLeft + dWidth - 40.0;
      drawing.Text(bLeft ? x - 4.0 : x + 4.0, y - 5.0, pItem->strLabel, 11.0,
                   bLeft ? Anchor::eEnd : Anchor::eStart, 0.0,
                   Rimmed(pItem->bUsed ? Ink::kText : Ink::kRed));
    }
  }

  const ReportView& m_view;
  const std::string& m_strUnit;
};

}  // namespace

Drawing ViewDrawing(const ReportView& view, const std::string& strUnit) {
  return ViewFigure(view, strUnit).Figure();
}

}  // namespace cli
