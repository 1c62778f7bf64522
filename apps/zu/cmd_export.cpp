// zu export: the photos of a project for other programs.
#include <cmath>
#include <filesystem>
#include <memory>

#include "commands.h"
#include "exchange_input.h"
#include "exit_code.h"
#include "point_input.h"
#include "project_input.h"
#include "zu/foundation/path.h"

namespace cli {

namespace {

struct ExportValues {
  std::string strFormat, strProject, strOut, strPoints;
  bool bPartial = false;
  ZuExportOptions options;
  PointFormat format;
};

// The folder that takes the files. The binary form of a model hides the text form beside it.
void MakeFolder(const ExportValues& values) {
  for (const char* szName : {"cameras", "images", "points3D"}) {
    const std::string strOther =
        ZuJoinPath(values.strOut, std::string(szName) + (values.options.bBinary ? ".txt" : ".bin"));
    if (!std::filesystem::exists(strOther)) continue;
    throw CommandError(kUsage, strOther +
                                   " is there, too, the other form of a model; another "
                                   "folder would be right");
  }
  std::error_code error;
  std::filesystem::create_directory(values.strOut, error);
  if (!ZuExistFolder(values.strOut)) {
    throw CommandError(kCannotWrite,
                       values.strOut + ": a folder cannot be made: " + error.message());
  }
}

ExitCode RunExport(const ExportValues& values, Context& context) {
  const eZuExchange eFormat = ExchangeFormat(values.strFormat);
  const InputFile file(values.strProject, kProjectFile);
  const auto pProject = OpenProject(file, values.bPartial);
  WarnOf(*pProject, file, context);
  ZuPointList points;
  if (!values.strPoints.empty()) ReadPoints(values.strPoints, values.format, context, &points);
  std::vector<ZuExchangeFile> files;
  ZuExchangeReport report;
  ZuExportOptions exportOptions = values.options;
  const bool bFolder = ZuIsFolderExchange(eFormat);
  if (!bFolder) {
    exportOptions.strName = values.strOut;
    OutputFile::Check(values.strOut);
  }
  ZuExportPhotos(eFormat, *pProject, points, exportOptions, &files, &report);
  TellExchange(report.findings, file.Name(), context);
  if (bFolder) MakeFolder(values);
  Json& outputs = context.Root()["outputs"] = Json::array();
  for (const ZuExchangeFile& each : files) {
    const std::string strPath = bFolder ? ZuJoinPath(values.strOut, each.strName) : each.strName;
    context.NewOutput(strPath).Stream() << each.strText;
    outputs.push_back(strPath);
  }
  ShowExchange(report, context);
  context.Root()["rms_px"] = report.dRms;
  context.Root()["mean_reprojection_error_px"] = report.dMeanError;
  if (std::isfinite(report.dMeanError)) {
    context.Text() << "mean reprojection error of the points " << Fixed(report.dMeanError, 6)
                   << " px, rms " << Fixed(report.dRms, 6) << " px\n";
  }
  return kGood;
}

}  // namespace

Runner DefineExport(Options& options) {
  auto pValues = std::make_shared<ExportValues>();
  options.Positional("FORMAT", &pValues->strFormat, kExchangeWords);
  options.Positional("PROJECT", &pValues->strProject, "project file");
  options.Positional("OUT", &pValues->strOut, kExchangeFiles);
  options.Option("--points", "FILE", &pValues->strPoints,
                 "coordinates of points; else the project's object points");
  options.Flag("--binary", &pValues->options.bBinary, "the binary form");
  options.Option("--max-error", "PX", &pValues->options.dMaxError,
                 "largest error of a camera that is fitted (default: 0.05)");
  options.AtLeast(0.0);
  AddPointOptions(options, &pValues->format);
  AddPartialOption(options, &pValues->bPartial);
  return [pValues](Context& context) { return RunExport(*pValues, context); };
}

}  // namespace cli
