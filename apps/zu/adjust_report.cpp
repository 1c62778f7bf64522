#include "adjust_report.h"

#include <algorithm>
#include <cmath>

#include "drawing.h"
#include "html_page.h"
#include "residual_arrows.h"
#include "svg.h"

namespace cli {
namespace {

constexpr size_t kMostRows = 300;
constexpr char kViewKey[] =
    "<p class='note'>Blue: points used; red: set aside; green: 95 % ellipses in the scale of the "
    "errors; yellow: cut, with the length.</p>\n";
constexpr double kPlotWidth = 480.0, kLeft = 76.0;
constexpr double kWidest = 6.0;  // end of the histogram, beyond in one bar [-]

std::string CaptionedFigure(const Drawing& drawing, const std::string& strNote) {
  return "<figure>" + SvgOf(drawing) +
         (strNote.empty() ? "" : "<figcaption>" + XmlText(strNote) + "</figcaption>") +
         "</figure>\n";
}

std::string Views(const AdjustReport& report) {
  std::string strFigures;
  for (const ReportView& view : report.views) {
    if (view.items.empty() && view.lines.empty()) continue;
    strFigures += CaptionedFigure(ViewDrawing(view, report.strUnit), view.strNote);
  }
  const bool bKey = !strFigures.empty();
  for (const Drawing& drawing : report.drawings) strFigures += CaptionedFigure(drawing, "");
  if (strFigures.empty()) return "";
  return Section(report.strViews, std::string(bKey ? kViewKey : "") + "<div class='row'>\n" +
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
  Drawing drawing(kPlotWidth, 330.0);
  drawing.SetTitle("Histogram of the standardised residuals");
  SvgPlot plot(drawing, kLeft, 40.0, kPlotWidth - 90.0, 230.0, {-kWidest, kWidest},
               {0.0, 1.15 * std::max(dMost, 1.0)});
  plot.DrawFrame("Standardised residuals", report.strTest, "number");
  for (size_t i = 0; i < counts.size(); ++i) {
    if (counts[i] == 0) continue;
    const double x = -kWidest + kBin * static_cast<double>(i);
    drawing.Rect(plot.X(x) + 1.0, plot.Y(counts[i]), plot.X(x + kBin) - plot.X(x) - 2.0,
                 plot.Y(0.0) - plot.Y(counts[i]), Filled(Ink::kBar));
  }
  std::vector<std::pair<double, double>> curve;
  for (int i = 0; i <= 120; ++i) {
    const double w = -kWidest + 0.1 * i;
    curve.emplace_back(plot.X(w), plot.Y(dPeak * std::exp(-0.5 * w * w)));
  }
  drawing.Polyline(curve, Pen(Ink::kText, 1.2));
  if (report.dLimit < kWidest) {
    for (const double w : {-report.dLimit, report.dLimit}) {
      drawing.Line(plot.X(w), 40.0, plot.X(w), 270.0, Pen(Ink::kRed, 1.5, 5.0, 3.0));
    }
    drawing.Text(plot.X(report.dLimit) + 4.0, 54.0, "limit " + Significant(report.dLimit), 12.0,
                 Anchor::eStart, 0.0, Filled(Ink::kRed));
  }
  return Section(
      "Test", "<figure>" + SvgOf(drawing) +
                  "<figcaption>Bars: the residuals, those beyond 6 in the outer ones; "
                  "line: the normal distribution of as many." +
                  XmlText(std::isfinite(report.dLimit)
                              ? " Red: the limit of the test, " + Significant(report.dLimit) + "."
                              : "") +
                  "</figcaption></figure>\n");
}

std::string Warnings(const AdjustReport& report) {
  std::string strItems;
  for (const std::string& strText : report.warnings)
    strItems += "<li>" + XmlText(strText) + "</li>\n";
  return strItems.empty() ? "" : Section("Warnings", "<ul>\n" + strItems + "</ul>\n");
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
    const size_t uAll = data.rows.size() + data.uMore;
    if (uAll > kMostRows) {
      strNote += std::string(strNote.empty() ? "" : " ") + "The first " +
                 std::to_string(kMostRows) + " of " + std::to_string(uAll) + ".";
    }
    strTables += LongSection(data.strTitle, strNote, table.Html());
  }
  return strTables;
}

std::string Inputs(const AdjustReport& report) {
  HtmlTable table("inputs", {{"input", true}, {"file", true}});
  for (const auto& [strWhat, strFile] : report.inputs) table.AddRow({strWhat, strFile});
  return Section("Inputs", (report.inputs.empty() ? "" : table.Html()) + "<p>Command: <code>" +
                               XmlText(CommandLine()) + "</code></p>\n");
}

}  // namespace

std::string AdjustReportPage(const AdjustReport& report) {
  return HtmlPage(report.strTitle, report.strTitle, report.strVerdict,
                  Warnings(report) + Facts(report) + Views(report) + Parameters(report) +
                      report.strSections + Histogram(report) + Tables(report) + Inputs(report));
}

std::optional<Drawing> MainPicture(const AdjustReport& report) {
  for (const ReportView& view : report.views) {
    if (!view.items.empty() || !view.lines.empty()) return ViewDrawing(view, report.strUnit);
  }
  if (report.drawings.empty()) return std::nullopt;
  return report.drawings.front();
}

}  // namespace cli
