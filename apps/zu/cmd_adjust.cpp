// zu adjust: the photos of a project, their cameras and points from all measurements at once.
#include <filesystem>
#include <memory>

#include "adjust_options.h"
#include "cmd_adjust_input.h"
#include "cmd_adjust_output.h"
#include "cmd_orient.h"
#include "commands.h"
#include "input_file.h"
#include "network_page.h"
#include "orientation_records.h"
#include "picture_files.h"
#include "point_input.h"
#include "progress_line.h"
#include "project_input.h"
#include "report_output.h"
#include "text_table.h"
#include "zu/image/thumbnail.h"
#include "zu/project/project.h"

namespace cli {

namespace {

namespace fs = std::filesystem;

constexpr int kPictureWidth = 680;  // twice that of the figure, for fine screens [pixel]

struct Values {
  std::string strProject, strControl, strApprox, strBars, strMeasurements, strOut, strPoints,
      strOrientations;
  std::string strPictures, strUnit = "object units";
  std::string strSigma = "0.1px", strEstimate = "none", strDatum = "control";
  double dAlpha = 0.001, dAlphaTotal = 0.0;
  int iDecimals = -1;
  bool bTest = false, bPartial = false, bCameraPerPhoto = false;
};

// Photos without orientation can't take part, and a network without any can't be adjusted.
void CheckPhotos(const ZuNetworkOfProject& made) {
  if (!made.network.photos.empty()) return;
  throw CommandError(kUndetermined,
                     "no oriented photo with measurements; zu orient finds orientations" +
                         (made.warnings.empty() ? std::string() : "\n" + made.warnings[0]));
}

void WarnOf(const ZuNetworkResult& result, const ZuNetworkOfProject& made, Context& context) {
  for (const std::string& strText : made.warnings) context.Warn(strText);
  for (const std::string& strText : result.warnings) context.Warn(strText);
}

// What was read, for the report.
std::vector<std::pair<std::string, std::string>> Inputs(const Values& values) {
  std::vector<std::pair<std::string, std::string>> inputs;
  for (const auto& [szWhat, strFile] :
       {std::pair<const char*, const std::string&>{"project", values.strProject},
        {"control", values.strControl},
        {"start positions", values.strApprox},
        {"scale bars", values.strBars},
        {"measurements", values.strMeasurements}}) {
    if (!strFile.empty()) inputs.emplace_back(szWhat, strFile);
  }
  return inputs;
}

ExitCode Run(const Values& values, Context& context) {
  ZuNetworkInput input;
  ParseSigma(values.strSigma, &input);
  input.uEstimate = ParseEstimate(values.strEstimate);
  input.bCameraPerPhoto = values.bCameraPerPhoto;
  const InputFile file(values.strProject, kProjectFile);
  const auto pProject = OpenProject(file, values.bPartial);
  ZuProject& project = *pProject;
  ZuPointList control, approximations;
  if (!values.strControl.empty()) control = ReadAdjustPoints(values.strControl, context);
  if (!values.strApprox.empty()) approximations = ReadAdjustPoints(values.strApprox, context);
  if (!values.strMeasurements.empty()) ReadMeasurements(values.strMeasurements, &project);
  const ZuProjectOrientation orientation =
      OrientUnoriented(&project, control, approximations, input, context);
  ZuNetworkOfProject made = ZuMakeNetwork(project, control, approximations, input);
  TellUnoriented(orientation, &made);
  CheckPhotos(made);
  if (!values.strBars.empty()) ReadScaleBars(values.strBars, &made.network);
  ZuNetworkOptions options;
  options.eDatum = ParseDatum(values.strDatum, &made.network);
  options.test.bSnoop = values.bTest;
  options.test.dAlpha = values.dAlpha;
  options.test.dAlphaTotal = values.dAlphaTotal;

  ZuNetworkResult result;
  {
    WorkLine work("adjusting", context.IsQuiet());
    result = made.network.Adjust(options);
  }
  if (result.status != ZuAdjustStatus::Good) {
    const bool bSaid = result.status == ZuAdjustStatus::RankDefect;  // the sentence begins so
    throw CommandError(
        kUndetermined,
        (bSaid ? "" : std::string(ZuAdjustStatusText(result.status)) + ": ") + result.strText);
  }
  WarnOf(project, file, context);
  WarnOf(result, made, context);
  PrintAdjustment(made, result, context.Text());
  if (context.WantsRoot()) AddAdjustmentJson(made, result, &context.Root());
  if (!values.strPoints.empty()) {
    WriteAdjustedPoints(made, result, values.iDecimals, &context.NewOutput(values.strPoints));
  }
  if (context.WantsReport()) {
    NetworkPage page{values.strUnit, values.strSigma, values.dAlpha, Inputs(values)};
    if (!values.strPictures.empty()) {
      page.picture = [&](const ZuPhoto& photo) {
        const fs::path name = fs::path(photo.GetName().chars()).filename();
        const std::string strPath = (fs::path(values.strPictures) / name).string();
        return ZuMakeThumbnail(ReadPicture(strPath, photo, context), kPictureWidth);
      };
    }
    context.Report().report = NetworkReport(page, made, result, project);
  }
  if (!values.strOut.empty() || !values.strOrientations.empty()) {
    ZuStoreNetwork(made.network, result, &project);
  }
  if (!values.strOut.empty()) project.Export(context.NewOutput(values.strOut).Stream());
  if (!values.strOrientations.empty()) WriteOrientations(project, values.strOrientations, context);
  return made.warnings.empty() && result.setAside.empty() ? kGood : kNotAcceptable;
}

}  // namespace

Runner DefineAdjust(Options& options) {
  auto pValues = std::make_shared<Values>();
  options.Positional("PROJECT", &pValues->strProject,
                     "project file; photos that are not oriented are oriented first");
  options.Option("--control", "FILE", &pValues->strControl,
                 "control points, rows \"id x y z\" (fixed) or \"id x y z dx dy dz\" (weighted; 0 "
                 "is fixed)");
  options.Option("--approx", "FILE", &pValues->strApprox,
                 "start positions of points, rows \"id x y z\"; else their rays are intersected");
  options.Option("--scale-bars", "FILE", &pValues->strBars,
                 "known distances, rows \"id_a id_b distance sigma\"");
  options.Option("--measurements", "FILE", &pValues->strMeasurements,
                 "image points with standard deviations of their own, rows \"photo id x y dx dy\" "
                 "in pixels; they take the place of the project's");
  options.Option("--sigma", "SIGMA", &pValues->strSigma,
                 "standard deviation of a measured coordinate, 0.1px or 0.0005mm");
  options.Option("--estimate", "NAMES", &pValues->strEstimate,
                 "parameters of the cameras that are estimated: c,xh,yh,a1,a2,a3,b1,b2,c1,c2");
  options.Flag("--camera-per-photo", &pValues->bCameraPerPhoto,
               "a camera of its own for every photo; else one for each camera id");
  options.Option("--datum", "DATUM", &pValues->strDatum,
                 "what decides the frame: control, inner (conditions over all points) or "
                 "inner:1,2,3 (over these)");
  options.Flag("--test", &pValues->bTest, "set aside observations that do not fit");
  AddTestLimits(options, &pValues->dAlpha, &pValues->dAlphaTotal);
  AddPartialOption(options, &pValues->bPartial);
  options.Output("-o,--output", "PROJECT2", &pValues->strOut,
                 "the project with adjusted orientations and cameras");
  options.Output("--points-out", "FILE", &pValues->strPoints,
                 "the points with standard deviations: id x y z dx dy dz");
  options.Output("--orientations", "FILE", &pValues->strOrientations, kOrientationsHelp);
  AddDecimals(options, &pValues->iDecimals);
  options.Option("--pictures", "FOLDER", &pValues->strPictures,
                 "the report shows residuals over the pictures of the photos, which lie there");
  options.Option("--unit", "TEXT", &pValues->strUnit,
                 "unit of the object coordinates, for the report (\"mm\")");
  return [pValues](Context& context) { return Run(*pValues, context); };
}

}  // namespace cli
