#include "adjust_report.h"

#include <algorithm>
#include <cmath>

#include "html_page.h"
#include "residual_arrows.h"
#include "svg.h"

namespace cli {
namespace {

constexpr size_t kMostRows = 300;
constexpr size_t kMostArrows = 3000, kMostEllipses = 300, kMostLabels = 40;
constexpr double kPlotWidth = 480.0, kLeft = 76.0;
constexpr double kEllipse = 2.4477;  // radius of 95 % in standard deviations, sqrt(chi2(2)) [-]
constexpr double kWidest = 6.0;      // end of the histogram, beyond in one bar [-]
constexpr char kUsed[] = "stroke='#1f5fa8' stroke-width='1.3'";
constexpr char kAside[] = "stroke='#c1272d' stroke-width='1.6'";
constexpr char kLineStyle[] = "stroke='#777' stroke-width='0.8'";
constexpr char kEllipseStyle[] = "stroke='#2b8a3e' stroke-width='1'";

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
void DrawEllipse(Svg& svg, double x, double y, const ReportView::Item& item, double dScale) {
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
  svg.Polyline(points, kEllipseStyle);
}

class ViewFigure {
 public:
  ViewFigure(const ReportView& view, const std::string& strUnit)
      : m_view(view), m_strUnit(strUnit) {}

  std::string Figure() {
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
    const double dWidth = kPlotWidth - 90.0;
    const double dAspect = (y.dHigh - y.dLow + 2.0 * dMargin) / (x.dHigh - x.dLow + 2.0 * dMargin);
    const double dHeight = dWidth * (std::isfinite(dAspect) ? std::clamp(dAspect, 0.3, 1.3) : 1.0);
    Svg svg(kPlotWidth, dHeight + 138.0);
    SvgPlot plot(svg, kLeft, 56.0, dWidth, dHeight, {x.dLow - dMargin, x.dHigh + dMargin},
                 {y.dLow - dMargin, y.dHigh + dMargin});
    plot.MakeSquareScale();
    const double dFactor = Factor(plot);
    svg.Text(kLeft + 0.5 * dWidth, 18.0, m_view.strTitle, 15.0, "middle", 0.0,
             "fill='#111' font-weight='bold'");
    plot.DrawFrame("", m_view.strAxisX + " [" + m_strUnit + "]",
                   m_view.strAxisY + " [" + m_strUnit + "]");
    const double dUnit = dFactor * plot.PixelsPerUnit();
    svg.Text(kLeft, 44.0, "error, drawn " + SvgNumber(dFactor) + " times as long", 12.0);
    ScaleBar(svg, kLeft + dWidth, 40.0, dUnit, m_strUnit);
    DrawLines(svg, plot);
    Draw(svg, plot, dFactor, dWidth, dHeight);
    const double dFoot = dHeight + 116.0;
    svg.Text(kLeft, dFoot + 4.0, "space", 12.0);
    ScaleBar(svg, kLeft + dWidth, dFoot, plot.PixelsPerUnit(), m_strUnit);
    return "<figure>" + svg.Document(m_view.strTitle) + "<figcaption>" + XmlText(m_view.strNote) +
           "</figcaption></figure>\n";
  }

 private:
  double Factor(const SvgPlot& plot) const {
    std::vector<double> lengths;
    for (const auto& item : m_view.items) {
      const double d = item.bArrow ? std::hypot(item.dx, item.dy) : 0.0;
      const double dAxis = kEllipse * std::sqrt(std::max(0.0, std::max(item.cxx, item.cyy)));
      if (item.bUsed && std::isfinite(d + dAxis)) lengths.push_back(std::max(d, dAxis));
    }
    return FactorFor(Quantile(std::move(lengths), 0.95), plot.PixelsPerUnit());
  }

  void DrawLines(Svg& svg, const SvgPlot& plot) const {
    for (const auto& line : m_view.lines) {
      if (line.points.empty()) continue;
      std::vector<std::pair<double, double>> points;
      for (const auto& [x, y] : line.points) points.emplace_back(plot.X(x), plot.Y(y));
      svg.Polyline(points, kLineStyle);
      if (m_view.lines.size() > kMostLabels) continue;
      svg.Text(points[0].first + 4.0, points[0].second - 5.0, line.strLabel, 11.0);
    }
  }

  void Draw(Svg& svg, const SvgPlot& plot, double dFactor, double dWidth, double dHeight) const {
    std::vector<Drawn> used, aside;
    std::vector<Svg::Segment> dots;
    size_t uEllipses = 0, uLabels = 0;
    for (const auto& item : m_view.items) {
      const double x = plot.X(item.x), y = plot.Y(item.y);
      const Drawn drawn = {
          {x, y, plot.X(item.x + dFactor * item.dx), plot.Y(item.y + dFactor * item.dy)},
          std::hypot(item.dx, item.dy)};
      dots.push_back({x, y, x, y});
      if (item.cxx + item.cyy > 0.0 && ++uEllipses <= kMostEllipses) {
        DrawEllipse(svg, x, y, item, dFactor * plot.PixelsPerUnit());
      }
      if (item.bArrow) (item.bUsed ? used : aside).push_back(drawn);
      const bool bFew = m_view.items.size() <= kMostLabels;
      if (!item.strLabel.empty() && (bFew || !item.bUsed) && ++uLabels <= kMostLabels) {
        svg.Text(x + 4.0, y - 5.0, item.strLabel, 11.0);
      }
    }
    DrawResiduals(svg, Thinned(std::move(used), kMostArrows, dWidth, dHeight), kUsed, kPlotWidth);
    DrawResiduals(svg, Thinned(std::move(aside), kMostArrows, dWidth, dHeight), kAside, kPlotWidth);
    if (dots.size() <= kMostArrows) svg.Dots(dots, 1.6, "stroke='#222'");
  }

  const ReportView& m_view;
  const std::string& m_strUnit;
};

std::string Views(const AdjustReport& report) {
  std::string strFigures;
  for (const ReportView& view : report.views) {
    if (!view.items.empty()) strFigures += ViewFigure(view, report.strUnit).Figure();
  }
  if (strFigures.empty()) return "";
  return Section(report.strViews,
                 "<p class='note'>Blue: points used; red: set aside; green: 95 % "
                 "ellipses in the scale of the errors; yellow: cut, with the length."
                 "</p>\n<div class='row'>\n" +
                     strFigures + "</div>\n");
}

// Counts of w in steps of 0.5 with the normal distribution and the limit of the test.
std::string Histogram(const AdjustReport& report) {
  constexpr double kBin = 0.5;
  constexpr int kBins = 24;
  std::vector<int> counts(kBins);
  int iCount = 0;
  for (const double w : report.w) {
    if (!std::isfinite(w)) continue;
    const double dPlace = std::clamp(std::floor((w + kWidest) / kBin), 0.0, kBins - 1.0);
    ++counts[static_cast<size_t>(dPlace)];
    ++iCount;
  }
  if (iCount == 0) return "";
  const double dPeak = iCount * kBin / std::sqrt(2.0 * 3.14159265358979323846);
  const double dMost = std::max(dPeak, double(*std::max_element(counts.begin(), counts.end())));
  Svg svg(kPlotWidth, 330.0);
  SvgPlot plot(svg, kLeft, 40.0, kPlotWidth - 90.0, 230.0, {-kWidest, kWidest},
               {0.0, 1.15 * std::max(dMost, 1.0)});
  plot.DrawFrame("Standardised residuals", report.strTest, "number");
  for (size_t i = 0; i < counts.size(); ++i) {
    if (counts[i] == 0) continue;
    const double x = -kWidest + kBin * static_cast<double>(i);
    svg.Rect(plot.X(x) + 1.0, plot.Y(counts[i]), plot.X(x + kBin) - plot.X(x) - 2.0,
             plot.Y(0.0) - plot.Y(counts[i]), "fill='#5b84b1'");
  }
  std::vector<std::pair<double, double>> curve;
  for (int i = 0; i <= 120; ++i) {
    const double w = -kWidest + 0.1 * i;
    curve.emplace_back(plot.X(w), plot.Y(dPeak * std::exp(-0.5 * w * w)));
  }
  svg.Polyline(curve, "stroke='#222' stroke-width='1.2'");
  if (report.dLimit < kWidest) {
    for (const double w : {-report.dLimit, report.dLimit}) {
      svg.Line(plot.X(w), 40.0, plot.X(w), 270.0,
               "stroke='#c1272d' stroke-width='1.5' stroke-dasharray='5 3'");
    }
    svg.Text(plot.X(report.dLimit) + 4.0, 54.0, "limit " + Significant(report.dLimit), 12.0,
             "start", 0.0, "fill='#c1272d'");
  }
  return Section(
      "Test", "<figure>" + svg.Document("Histogram of the standardised residuals") +
                  "<figcaption>Bars: the residuals, those beyond 6 in the outer ones; "
                  "line: the normal distribution of as many." +
                  XmlText(std::isfinite(report.dLimit)
                              ? " Red: the limit of the test, " + Significant(report.dLimit) + "."
                              : "") +
                  "</figcaption></figure>\n");
}

std::string Facts(const AdjustReport& report) {
  if (report.facts.empty()) return "";
  HtmlTable table("facts", {{"figure", true}, {"value", true}});
  for (const auto& [strName, strText] : report.facts) table.AddRow({strName, strText});
  return Section("Adjustment", table.Html());
}

std::string Parameters(const AdjustReport& report) {
  if (report.parameters.empty()) return "";
  HtmlTable table("parameters", {{"name", true}, {"value"}, {"standard deviation"}, {"unit"}});
  for (const auto& p : report.parameters) {
    table.AddRow({p.strName, p.strValue, p.strSd, p.strUnit});
  }
  return LongSection("Parameters", report.strParameters, table.Html());
}

std::string Tables(const AdjustReport& report) {
  std::string strTables;
  for (const AdjustReport::Table& data : report.tables) {
    if (data.rows.empty()) continue;
    const std::string strId = "table" + std::to_string(&data - report.tables.data());
    HtmlTable table(strId.c_str(), data.columns);
    for (size_t i = 0; i < std::min(kMostRows, data.rows.size()); ++i) table.AddRow(data.rows[i]);
    std::string strNote = data.strNote;
    if (data.rows.size() > kMostRows) {
      strNote += std::string(strNote.empty() ? "" : " ") + "The first " +
                 std::to_string(kMostRows) + " of " + std::to_string(data.rows.size()) + ".";
    }
    strTables += LongSection(data.strTitle, strNote, table.Html());
  }
  return strTables;
}

std::string Inputs(const AdjustReport& report) {
  HtmlTable table("inputs", {{"input", true}, {"file", true}});
  for (const auto& [strWhat, strFile] : report.inputs) table.AddRow({strWhat, strFile});
  return Section("Inputs",
                 table.Html() + "<p>Command: <code>" + XmlText(CommandLine()) + "</code></p>\n");
}

}  // namespace

std::string AdjustReportPage(const AdjustReport& report) {
  return HtmlPage(report.strTitle, report.strTitle, report.strVerdict,
                  Facts(report) + Parameters(report) + Views(report) + report.strSections +
                      Histogram(report) + Tables(report) + Inputs(report));
}

}  // namespace cli
