// zu import: photos of other programs as a project.
#include <algorithm>
#include <memory>

#include "commands.h"
#include "exchange_input.h"
#include "exit_code.h"
#include "project_files.h"
#include "zu/foundation/strict_number.h"

namespace cli {

namespace {

struct ImportValues {
  std::string strFormat, strIn, strOut, strSize;
  bool bNoTransform = false;
  ZuImportOptions options;
};

ZuImageSize ImageSizeOf(const std::string& strText) {
  ZuImageSize size;
  if (strText.empty()) return size;
  const size_t uComma = std::min(strText.find(','), strText.size());
  if (!ZuParseNumber(strText.substr(0, uComma), &size.dWidth) || uComma == strText.size() ||
      !ZuParseNumber(strText.substr(uComma + 1), &size.dHeight) || !(size.dWidth >= 1.0) ||
      !(size.dHeight >= 1.0)) {
    throw CommandError(kUsage, "--image-size " + strText + " is no size; 640,480 would be right");
  }
  return size;
}

ExitCode RunImport(ImportValues& values, Context& context) {
  const eZuExchange eFormat = ExchangeFormat(values.strFormat);
  values.options.bTransform = !values.bNoTransform;
  values.options.imageSize = ImageSizeOf(values.strSize);
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
  options.Positional("FORMAT", &pValues->strFormat, kExchangeWords);
  options.Positional("IN", &pValues->strIn, kExchangeFiles);
  options.Output("-o,--output", "FILE", &pValues->strOut, "the project as .prj or .json");
  options.Required();
  options.Option("--max-error", "PX", &pValues->options.dMaxError,
                 "largest error of a camera that is fitted (default: 0.05)");
  options.AtLeast(0.0);
  options.Option("--pixel-size", "MM", &pValues->options.dPixelSize,
                 "width of a pixel, the scale of camera constants (default: that of the file, "
                 "or 1/256)");
  options.AtLeast(1e-6);
  options.AtMost(1e3);
  options.Option("--image-size", "W,H", &pValues->strSize,
                 "pixels of the images, where the file tells none (bal)");
  options.Flag("--no-transform", &pValues->bNoTransform,
               "stay in the system of the chunk (metashape)");
  return [pValues](Context& context) { return RunImport(*pValues, context); };
}

}  // namespace cli
