// zu import: photos of other programs as a project.
#include <memory>

#include "commands.h"
#include "exchange_input.h"
#include "project_files.h"

namespace cli {

namespace {

struct ImportValues {
  std::string strFormat, strIn, strOut;
  ZuImportOptions options;
};

ExitCode RunImport(const ImportValues& values, Context& context) {
  const eZuExchange eFormat = ExchangeFormat(values.strFormat);
  CheckProjectEnding(values.strOut);
  std::vector<ZuExchangeFile> files;
  ZuExchangeReport report;
  ZuProject project;
  if (ZuReadExchangeFiles(eFormat, values.strIn, &files, &report.findings)) {
    ZuImportPhotos(eFormat, files, values.options, &project, &report);
  }
  TellExchange(report.findings, values.strIn, context);
  WriteProjectFile(values.strOut, context, project);
  context.Root()["output"] = values.strOut;
  ShowExchange(report, context);
  return kGood;
}

}  // namespace

Runner DefineImport(Options& options) {
  auto pValues = std::make_shared<ImportValues>();
  options.Positional("FORMAT", &pValues->strFormat, "colmap");
  options.Positional("IN", &pValues->strIn, "colmap: folder of cameras, images and points3D");
  options.Output("-o,--output", "FILE", &pValues->strOut, "the project as .prj or .json");
  options.Required();
  options.Option("--max-error", "PX", &pValues->options.dMaxError,
                 "largest error of a camera that is fitted (default: 0.05)");
  options.AtLeast(0.0);
  options.Option("--pixel-size", "MM", &pValues->options.dPixelSize,
                 "width of a pixel, the scale of camera constants (default: 1/256)");
  options.AtLeast(1e-6);
  options.AtMost(1e3);
  return [pValues](Context& context) { return RunImport(*pValues, context); };
}

}  // namespace cli
