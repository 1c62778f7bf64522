#include "report_output.h"

#include <algorithm>
#include <filesystem>
#include <stdexcept>

#include "context.h"
#include "options.h"
#include "result_report.h"
#include "text_table.h"
#include "zu/points/point_list.h"
#include "zu/project/project.h"

namespace cli {

namespace {

constexpr int kPlotPixels = 1600;  // width of a PNG

std::string LowEnding(const std::string& strFile) {
  std::string strEnding = std::filesystem::path(strFile).extension().string();
  for (char& c : strEnding) c = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
  return strEnding;
}

std::string PlotFile(const Drawing& drawing, const std::string& strFile) {
  const std::string strEnding = LowEnding(strFile);
  try {
    if (strEnding == ".svg") return SvgFileOf(drawing);
    return strEnding == ".pdf" ? PdfOf(drawing) : PngOf(drawing, kPlotPixels);
  } catch (const std::runtime_error& error) {
    throw CommandError(kCannotWrite, strFile + ": " + error.what());
  }
}

std::string LabelOf(const Json& row) {
  const Json& label = row.contains("name") ? row["name"] : row["id"];
  return label.is_string() ? label.get<std::string>() : label.dump();
}

// What results tell under the same keys, for the pages of commands that have their own: the root
// mean squares by axis, and the points that were only compared.
void AddShared(const Json& result, AdjustReport* pReport) {
  const auto rms = result.find("rms");
  if (rms != result.end() && rms->is_object() && rms->contains("x")) {
    std::string strText;
    for (const auto& [strAxis, value] : rms->items()) {
      if (!value.is_number()) continue;
      const auto d = value.get<double>();
      strText += (strText.empty() ? "" : "  ") + strAxis + " " + Fixed(d, DecimalsFor(d));
    }
    pReport->facts.emplace_back("RMS", strText);
  }
  const auto checks = result.find("check_points");
  if (checks == result.end() || !checks->is_object()) return;
  AdjustReport::Table table;
  table.strTitle = "Check points";
  table.strNote = "Computed minus check; these points take no part in the adjustment.";
  table.columns = {{"point", true}};
  for (const Json& row : (*checks)["points"]) {
    std::vector<std::string> cells = {LabelOf(row)};
    for (const auto& [strAxis, value] : row["deviation"].items()) {
      if (cells.size() == table.columns.size()) table.columns.push_back({"d" + strAxis});
      const double d = value.is_number() ? value.get<double>() : 0.0;
      cells.push_back(value.is_number() ? Fixed(d, DecimalsFor(d)) : "-");
    }
    table.rows.push_back(std::move(cells));
  }
  pReport->tables.push_back(std::move(table));
}

}  // namespace

void CommandReport::AddPlaces(const ZuPointList& points) {
  for (const ZuPoint* p = points.First(); p != nullptr; p = p->Next()) {
    places.emplace(p->GetId(), std::array<double, 3>{p->m_dX, p->m_dY, p->m_dZ});
  }
}

void CommandReport::AddCameras(const ZuProject& project) {
  for (const ZuPhoto* p = project.PhotoList().First(); p != nullptr; p = p->Next()) {
    if (!p->HasAOR()) continue;
    const ZuVector& at = p->GetPosAOR();
    const ZuMatrix& rotation = p->GetRotAOR();
    cameras.push_back({{at[1], at[2], at[3]},
                       {-rotation[1][3], -rotation[2][3], -rotation[3][3]},
                       std::to_string(p->GetId())});
  }
}

bool HasReport(const std::string& strCommand) {
  static constexpr const char* kOthers[] = {
      "batch",        "draw",          "camera gentri", "cloud convert", "convert",
      "examples",     "export",        "import",        "log append",    "log replay",
      "log show",     "photo convert", "photo info",    "photo rescale", "project detect",
      "project info", "project merge", "project split", "camera info",   "project renumber",
      "camera adjust"};
  return std::find(std::begin(kOthers), std::end(kOthers), strCommand) == std::end(kOthers);
}

void AddReportOptions(Options& options, ReportFiles* pFiles) {
  options.Output("--report", "FILE.html", &pFiles->strReport,
                 "report to look at and to print, one file");
  options.Output("--plot", "FILE", &pFiles->strPlot,
                 "the main picture of the report alone, as .svg, .pdf or .png");
}

void CheckReportEndings(const ReportFiles& files) {
  const std::string strReport = LowEnding(files.strReport), strPlot = LowEnding(files.strPlot);
  if (!files.strReport.empty() && files.strReport != "-" && strReport != ".html" &&
      strReport != ".htm") {
    throw CommandError(kUsage, "--report " + files.strReport + ": a report is written as .html");
  }
  if (!files.strPlot.empty() && strPlot != ".svg" && strPlot != ".pdf" && strPlot != ".png") {
    throw CommandError(kUsage,
                       "--plot " + files.strPlot + ": a picture is written as .svg, .pdf or .png");
  }
}

void WriteReports(const ReportFiles& files, const Json& result, const std::string& strSummary,
                  Context& context) {
  if (!files.IsAsked()) return;
  CommandReport& told = context.Report();
  // A page of the command's own brings its pictures.
  if (!told.report) {
    told.report =
        told.strPage.empty() ? ReportOfResult(result, strSummary, context) : AdjustReport();
  } else {
    AddShared(result, &*told.report);
  }
  told.report->drawings.insert(told.report->drawings.begin(), told.drawings.begin(),
                               told.drawings.end());
  told.report->warnings = result["warnings"].get<std::vector<std::string>>();
  if (!files.strReport.empty()) {
    context.NewOutput(files.strReport).Stream()
        << (told.strPage.empty() ? AdjustReportPage(*told.report) : told.strPage);
  }
  if (files.strPlot.empty()) return;
  const std::optional<Drawing> picture =
      told.drawings.empty() ? MainPicture(*told.report) : told.drawings.front();
  if (!picture) {
    throw CommandError(kUsage, "--plot " + files.strPlot +
                                   ": this result has no picture; --report FILE.html shows it");
  }
  context.NewOutput(files.strPlot).Stream() << PlotFile(*picture, files.strPlot);
}

}  // namespace cli
