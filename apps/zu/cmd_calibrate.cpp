// zu calibrate: a camera from photos of a flat board.
#include <memory>

#include "adjust_options.h"
#include "cmd_adjust_input.h"
#include "cmd_adjust_output.h"
#include "cmd_orient.h"
#include "commands.h"
#include "input_file.h"
#include "network_page.h"
#include "point_input.h"
#include "progress_line.h"
#include "project_input.h"
#include "report_output.h"
#include "zu/adjust/calibration_project.h"

namespace cli {

namespace {

struct Values {
  std::string strProject, strBoard, strOut, strSigma = "0.1px", strEstimate, strMode;
  double dAlpha = 0.001, dAlphaTotal = 0.0;
  bool bTest = false, bPartial = false;
  int iDecimals = -1;  // of tables
};

ExitCode Run(const Values& values, Context& context) {
  ZuNetworkInput input;
  ParseSigma(values.strSigma, &input);
  ZuCalibrationOptions options;
  options.dSigma = input.dSigma;
  options.bSigmaInPixels = input.bSigmaInPixels;
  if (!values.strEstimate.empty()) options.uEstimate = ParseEstimate(values.strEstimate);
  if (!values.strMode.empty()) options.iMode = values.strMode[0] - '0';
  options.test.bSnoop = values.bTest;
  options.test.dAlpha = values.dAlpha;
  options.test.dAlphaTotal = values.dAlphaTotal;
  const InputFile file(values.strProject, kProjectFile);
  const auto pProject = OpenProject(file, values.bPartial);
  const ZuPointList board = ReadAdjustPoints(values.strBoard, context);
  ZuProjectCalibration found;
  {
    WorkLine work("calibrating", context.IsQuiet());
    found = ZuCalibrateProject(pProject.get(), board, options);
  }
  if (found.result.status != ZuAdjustStatus::Good) {
    std::string strText =
        std::string(ZuAdjustStatusText(found.result.status)) + ": " + found.result.strText;
    for (const ZuPhotoOrientation& photo : found.orientation.photos) {
      if (photo.IsGood()) continue;
      strText += "\n" + UnorientedText(photo);
      break;
    }
    throw CommandError(kUndetermined, strText);
  }
  WarnOf(*pProject, file, context);
  TellUnoriented(found.orientation, &found.made);
  for (const auto* pTexts : {&found.notes, &found.made.warnings, &found.result.warnings}) {
    for (const std::string& strText : *pTexts) context.Warn(strText);
  }
  PrintAdjustment(found.made, found.result, context.Text());
  if (context.WantsRoot()) AddAdjustmentJson(found.made, found.result, &context.Root());
  if (context.WantsReport()) {
    const NetworkPage page{"units",
                           values.strSigma,
                           values.dAlpha,
                           {{"project", NameInMessages(values.strProject)},
                            {"board", NameInMessages(values.strBoard)}}};
    context.Report().report = NetworkReport(page, found.made, found.result, *pProject);
  }
  if (!values.strOut.empty()) {
    ZuStoreNetwork(found.made.network, found.result, pProject.get());
    pProject->Export(context.NewOutput(values.strOut).Stream());
  }
  const bool bAll = found.made.warnings.empty() && found.result.setAside.empty();
  return bAll ? kGood : kNotAcceptable;
}

}  // namespace

Runner DefineCalibrate(Options& options) {
  auto pValues = std::make_shared<Values>();
  options.Positional("PROJECT", &pValues->strProject, "project file with measured photos");
  options.Option("--board", "FILE", &pValues->strBoard,
                 "points of the board, rows \"id x y z\" or \"id x y z dx dy dz\"");
  options.Required();
  options.Choice("--mode", {"0", "2", "3"}, &pValues->strMode,
                 "mode of the cameras; else as they have it");
  options.Option("--sigma", "SIGMA", &pValues->strSigma,
                 "standard deviation of a measured coordinate, 0.1px or 0.0005mm");
  options.Option("--estimate", "NAMES", &pValues->strEstimate,
                 "parameters that are estimated: c,xh,yh,a1,a2,a3,b1,b2,c1,c2; else as many as the "
                 "photos decide");
  options.Flag("--test", &pValues->bTest, "set aside image points that do not fit");
  AddTestLimits(options, &pValues->dAlpha, &pValues->dAlphaTotal);
  AddPartialOption(options, &pValues->bPartial);
  AddDecimals(options, &pValues->iDecimals);
  options.Output("-o,--output", "PROJECT2", &pValues->strOut,
                 "the project with calibrated cameras and orientations");
  return [pValues](Context& context) { return Run(*pValues, context); };
}

}  // namespace cli
