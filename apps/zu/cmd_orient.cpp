// zu orient: orientations of photos from what is measured on them.
#include "cmd_orient.h"

#include <cmath>
#include <memory>

#include "cmd_adjust_input.h"
#include "commands.h"
#include "input_file.h"
#include "orientation_records.h"
#include "point_input.h"
#include "project_input.h"
#include "table_decimals.h"
#include "text_table.h"

namespace cli {

namespace {

constexpr double kDegree = 0.017453292519943295;

struct Values {
  std::string strProject, strControl, strApprox, strOut, strFrom, strOrientations,
      strSigma = "0.1px";
  bool bMissing = false, bPartial = false, bSigmaGiven = false;
  int iDecimals = -1;  // of tables
};

double Sd(const ZuPose& pose, int i) {
  return std::sqrt(pose.covariance[static_cast<size_t>(7 * i)]);
}

Json RowsOf(const ZuMatrix& m) {
  Json rows = Json::array();
  for (int i = 1; i <= 3; ++i) rows.push_back({m[i][1], m[i][2], m[i][3]});
  return rows;
}

Json PositionOf(const ZuPose& pose) {
  return {pose.position[1], pose.position[2], pose.position[3]};
}

Json PhotoJson(const ZuPhotoOrientation& photo) {
  Json json{{"id", photo.uId},
            {"name", photo.strName},
            {"status_text", ZuAdjustStatusText(photo.status)},
            {"way", ZuOrientationWayText(photo.eWay)},
            {"measured", photo.iMeasured},
            {"known", photo.iKnown}};
  if (!photo.IsGood()) {
    json["why"] = photo.strWhy;
    return json;
  }
  json["rotation"] = RowsOf(photo.pose.rotation);
  json["position"] = PositionOf(photo.pose);
  AddPhotoAngles("angles", photo.angles, &json);
  if (photo.eWay == ZuOrientationWay::Kept) return json;
  json["sd_position"] = {Sd(photo.pose, 3), Sd(photo.pose, 4), Sd(photo.pose, 5)};
  json["sd_rotation"] = {Sd(photo.pose, 0), Sd(photo.pose, 1), Sd(photo.pose, 2)};
  AddPhotoAngles("sd_angles", photo.anglesSd, &json);
  json["points"] = photo.iPoints;
  json["rms"] = photo.dRmsPixels;  // the key of published adjustments
  json["rms_px"] = photo.dRmsPixels;
  json["sigma0"] = photo.dSigma0;
  json["alternatives"] = Json::array();
  for (const ZuPose& pose : photo.alternatives) {
    json["alternatives"].push_back(
        Json{{"rotation", RowsOf(pose.rotation)}, {"position", PositionOf(pose)}});
  }
  return json;
}

std::string AlternativesText(const ZuPhotoOrientation& photo) {
  std::string strText =
      "photo " + std::to_string(photo.uId) + ": " +
      (photo.alternatives.size() == 1 ? "a second pose fits" : "other poses fit") + " as well, at";
  for (const ZuPose& pose : photo.alternatives) {
    strText += &pose == photo.alternatives.data() ? "" : " and";
    for (int k = 1; k <= 3; ++k) strText += " " + Fixed(pose.position[k], 3);
  }
  return strText + "; more points at other depths, or points that other photos see, would decide";
}

void Print(const ZuProjectOrientation& result, std::ostream& stream) {
  TextTable table;
  table.AddColumn("photo");
  table.AddColumn("file", TextTable::eLeft);
  table.AddColumn("by", TextTable::eLeft);
  for (const char* szTitle : {"points", "RMS px", "X", "Y", "Z", "sX", "sY", "sZ", "a deg", "b deg",
                              "c deg", "sa deg", "sb deg", "sc deg"}) {
    table.AddColumn(szTitle);
  }
  for (const ZuPhotoOrientation& photo : result.photos) {
    if (!photo.IsGood()) continue;
    const bool bKept = photo.eWay == ZuOrientationWay::Kept;
    std::vector<std::string> cells = {
        std::to_string(photo.uId), photo.strName, ZuOrientationWayText(photo.eWay),
        bKept ? "" : std::to_string(photo.iPoints), bKept ? "" : Fixed(photo.dRmsPixels, 3)};
    for (int k = 1; k <= 3; ++k) cells.push_back(FixedLength(photo.pose.position[k], 5));
    for (int k = 3; k < 6; ++k) cells.push_back(bKept ? "" : FixedLength(Sd(photo.pose, k), 6));
    for (const double d : photo.angles) cells.push_back(Fixed(d / kDegree, 4));
    for (const double d : photo.anglesSd) cells.push_back(bKept ? "" : Fixed(d / kDegree, 5));
    table.AddRow(cells);
  }
  table.Write(stream);
}

// What no photo's orientation needs to be told apart: none was found at all.
[[noreturn]] void FailWithout(const ZuProjectOrientation& result, const InputFile& file) {
  std::string strText = file.Name() + ": no photo could be oriented";
  if (result.photos.empty()) strText = file.Name() + ": no photo with measurements";
  for (size_t i = 0; i < result.photos.size() && i < 2; ++i) {
    strText += "\n" + UnorientedText(result.photos[i]);
  }
  throw CommandError(kUndetermined, strText);
}

ExitCode Run(const Values& values, Context& context) {
  ZuNetworkInput input;
  ParseSigma(values.strSigma, &input);
  const InputFile file(values.strProject, kProjectFile);
  const auto pProject = OpenProject(file, values.bPartial);
  ZuPointList control, approximations;
  if (!values.strControl.empty()) control = ReadAdjustPoints(values.strControl, context);
  if (!values.strApprox.empty()) approximations = ReadAdjustPoints(values.strApprox, context);
  ZuOrientationOptions options;
  options.dSigma = input.dSigma;
  options.bSigmaInPixels = input.bSigmaInPixels;
  options.bSigmaGiven = values.bSigmaGiven;
  options.bAll = !values.bMissing && values.strFrom.empty();
  if (!values.strFrom.empty()) ReadOrientations(values.strFrom, pProject.get(), context);
  const ZuProjectOrientation result =
      ZuOrientProject(pProject.get(), control, approximations, options);
  if (result.CountGood() == 0) FailWithout(result, file);
  WarnOf(*pProject, file, context);
  context.Root()["photos"] = Json::array();
  for (const ZuPhotoOrientation& photo : result.photos) {
    context.Root()["photos"].push_back(PhotoJson(photo));
    if (!photo.IsGood()) context.Warn(UnorientedText(photo));
    if (!photo.alternatives.empty()) context.Warn(AlternativesText(photo));
  }
  context.Root()["free"] = result.bFree;
  if (result.bFree) {
    context.Text() << "a free frame: origin in the centre of the points, their mean distance from "
                      "it 1, z their least extent\n\n";
  }
  Print(result, context.Text());
  if (!values.strOut.empty()) pProject->Export(context.NewOutput(values.strOut).Stream());
  if (!values.strOrientations.empty()) {
    WriteOrientations(*pProject, result, values.strOrientations, context);
  }
  const bool bAll = result.CountGood() == static_cast<int>(result.photos.size());
  return bAll ? kGood : kNotAcceptable;
}

}  // namespace

std::string UnorientedText(const ZuPhotoOrientation& photo) {
  return "photo " + std::to_string(photo.uId) + " could not be oriented: " + photo.strWhy;
}

ZuProjectOrientation OrientUnoriented(ZuProject* pProject, const ZuPointList& control,
                                      const ZuPointList& approximations,
                                      const ZuNetworkInput& input, Context& context) {
  bool bLacks = false;
  for (const ZuPhoto* p = pProject->PhotoList().First(); p != nullptr; p = p->Next()) {
    const ZuPointList* pMeasured = pProject->FindMeasurements(p->GetId());
    const bool bMeasured = pMeasured != nullptr && !pMeasured->IsEmpty();
    bLacks = bLacks || (bMeasured && !pProject->Lacks(*p, eZuNeedOrientation).empty());
  }
  if (!bLacks) return {};
  ZuOrientationOptions options;
  options.dSigma = input.dSigma;
  options.bSigmaInPixels = input.bSigmaInPixels;
  const ZuProjectOrientation result = ZuOrientProject(pProject, control, approximations, options);
  Json photos = Json::array();
  for (const ZuPhotoOrientation& photo : result.photos) {
    if (!photo.IsGood() || photo.eWay == ZuOrientationWay::Kept) continue;
    photos.push_back(photo.uId);
  }
  if (!photos.empty()) {
    context.Text() << Counted(static_cast<long long>(photos.size()), "photo")
                   << " oriented first\n";
  }
  context.Root()["oriented"] = photos;
  return result;
}

void TellUnoriented(const ZuProjectOrientation& orientation, ZuNetworkOfProject* pMade) {
  for (const ZuPhotoOrientation& photo : orientation.photos) {
    if (photo.IsGood()) continue;
    const std::string strBegin = "photo " + std::to_string(photo.uId) + " ";
    for (std::string& strWarning : pMade->warnings) {
      if (strWarning.rfind(strBegin, 0) == 0) strWarning = UnorientedText(photo) + "; left out";
    }
  }
}

Runner DefineOrient(Options& options) {
  auto pValues = std::make_shared<Values>();
  options.Positional("PROJECT", &pValues->strProject, "project file with measurements");
  options.Option("--control", "FILE", &pValues->strControl,
                 "control points, rows \"id x y z\" or \"id x y z dx dy dz\"");
  options.Option(
      "--approx", "FILE", &pValues->strApprox,
      "rough positions of points, rows \"id x y z\", for photos that control leaves out");
  options.Option(
      "--sigma", "SIGMA", &pValues->strSigma,
      "standard deviation of a measured coordinate, 0.1px or 0.0005mm; without it, it is "
      "estimated photo by photo");
  options.Flag("--missing", &pValues->bMissing, "keep the photos that are oriented already");
  options.Option("--from", "FILE", &pValues->strFrom,
                 "orientations as --orientations writes them; they are kept, as all that the "
                 "project has");
  options.Output("--orientations", "FILE", &pValues->strOrientations, kOrientationsHelp);
  AddPartialOption(options, &pValues->bPartial);
  AddDecimals(options, &pValues->iDecimals);
  options.Output("-o,--output", "PROJECT2", &pValues->strOut, "the project with orientations");
  return [pValues, options](Context& context) {
    pValues->bSigmaGiven = options.Given("--sigma");
    return Run(*pValues, context);
  };
}

}  // namespace cli
