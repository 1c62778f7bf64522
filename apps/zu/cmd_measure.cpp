// zu measure: measured pixels of a project's photos become object points on a plane.
#include <cmath>
#include <memory>
#include <optional>

#include "commands.h"
#include "measure_accuracy.h"
#include "measure_joined.h"
#include "measure_report.h"
#include "measure_run.h"
#include "plane_option.h"
#include "point_input.h"
#include "project_input.h"
#include "report_output.h"
#include "table_decimals.h"
#include "text_table.h"
#include "zu/foundation/crc32.h"

namespace cli {

namespace {

struct Values {
  std::string strProject, strCheck, strOut, strColumns;
  std::string strUnit = "object units";
  MeasurePlane plane;
  AccuracyValues accuracy;
  JoinValues join;
  bool bFlip = false, bLibrary = false, bPartial = false;
};

Json Or(bool bThere, double dValue) { return bThere ? Json(dValue) : Json(); }
Json Finite(double d) { return Or(std::isfinite(d), d); }

Json PhotoJson(const ZuMeasuredPhoto& photo, const MeasureAccuracy::Photo& accuracy) {
  const bool bChecked = photo.m_iChecked > 0;
  Json json;
  json["id"] = photo.m_pPhoto->GetId();
  json["name"] = photo.m_pPhoto->GetName().chars();
  json["points"] = photo.m_points.size();
  json["checked"] = photo.m_iChecked;
  json["rms"] = bChecked ? RmsJson({photo.m_dRmsX, photo.m_dRmsY, photo.m_dRmsZ}) : Json();
  json["rms_px"] = Or(bChecked, photo.m_dRmsPixels);
  json["worst"] = photo.Worst() != nullptr
                      ? Json{{"id", photo.Worst()->m_uId}, {"length", photo.Worst()->Length()}}
                      : Json();
  json["sd"] = Finite(accuracy.dSd);
  json["least_incidence_rad"] = Finite(accuracy.LeastIncidence());
  return json;
}

Json PointJson(unsigned uPhoto, const ZuMeasuredPoint& p, const MeasureAccuracy::Point& accuracy) {
  Json json{{"photo", uPhoto}, {"id", p.m_uId}, {"x", p.m_dX}, {"y", p.m_dY}, {"z", p.m_dZ}};
  json["dx"] = Or(p.m_bChecked, p.m_dDX);
  json["dy"] = Or(p.m_bChecked, p.m_dDY);
  json["dz"] = Or(p.m_bChecked, p.m_dDZ);
  json["pixel_dx"] = Or(p.m_bChecked, p.m_dResPixelX);
  json["pixel_dy"] = Or(p.m_bChecked, p.m_dResPixelY);
  const auto& cov = accuracy.cov;
  json["sx"] = Finite(std::sqrt(cov[0]));
  json["sy"] = Finite(std::sqrt(cov[1]));
  json["sz"] = Finite(std::sqrt(cov[2]));
  json["cov"] = {Finite(cov[3]), Finite(cov[4]), Finite(cov[5])};
  json["incidence_rad"] = Finite(accuracy.dIncidence);
  return json;
}

// Of all checked points, by axis.
Json RmsOfPhotos(const ZuPlaneMeasurement& result) {
  if (result.m_iChecked == 0) return Json();
  std::vector<double> sums(3);
  for (const ZuMeasuredPhoto& photo : result.m_photos) {
    sums[0] += photo.m_iChecked * photo.m_dRmsX * photo.m_dRmsX;
    sums[1] += photo.m_iChecked * photo.m_dRmsY * photo.m_dRmsY;
    sums[2] += photo.m_iChecked * photo.m_dRmsZ * photo.m_dRmsZ;
  }
  for (double& d : sums) d = std::sqrt(d / result.m_iChecked);
  return RmsJson(sums);
}

void AddJson(const ZuPlaneMeasurement& result, const MeasureAccuracy& accuracy, Context& context) {
  Json& root = context.Root();
  const ZuPlane& plane = result.m_plane;
  root["plane"] = Json{{"normal", {plane.A(), plane.B(), plane.C()}},
                       {"d", plane.D()},
                       {"points", result.m_iPlanePoints},
                       {"sigma0", result.m_dPlaneSigma0}};
  root["photos"] = Json::array();
  root["rms"] = RmsOfPhotos(result);
  root["rms_px"] = Or(result.m_iChecked > 0, result.m_dRmsPixels);
  root["checked"] = result.m_iChecked;
  root["not_met"] = result.m_refused.size();
  root["left_out"] = Json::array();
  root["refused"] = Json::array();
  root["points"] = Json::array();
  if (!context.WantsRoot()) return;
  for (const ZuLeftOutPhoto& photo : result.m_leftOut) {
    root["left_out"].push_back(Json{{"photo", photo.m_uPhoto},
                                    {"measurements", photo.m_iMeasurements},
                                    {"reason", photo.m_strWhy}});
  }
  for (const ZuRefusedMeasurement& point : result.m_refused) {
    root["refused"].push_back(
        Json{{"photo", point.m_uPhoto}, {"id", point.m_uId}, {"reason", point.m_strWhy}});
  }
  accuracy.AddJson(&root);
  for (size_t i = 0; i < result.m_photos.size(); ++i) {
    const ZuMeasuredPhoto& photo = result.m_photos[i];
    root["photos"].push_back(PhotoJson(photo, accuracy.Photos()[i]));
    for (size_t k = 0; k < photo.m_points.size(); ++k) {
      root["points"].push_back(
          PointJson(photo.m_pPhoto->GetId(), photo.m_points[k], accuracy.Photos()[i].points[k]));
    }
  }
}

void Print(const ZuPlaneMeasurement& result, const MeasureAccuracy& accuracy, const Values& values,
           std::ostream& stream) {
  stream << VerdictOf(result, values.strUnit) << "\n\n";
  TextTable table;
  table.AddColumn("photo");
  table.AddColumn("file", TextTable::eLeft);
  for (const char* szTitle : {"points", "sd", "RMS", "X", "Y", "Z", "pixels", "worst", "point"}) {
    table.AddColumn(szTitle);
  }
  for (size_t i = 0; i < result.m_photos.size(); ++i) {
    const ZuMeasuredPhoto& photo = result.m_photos[i];
    std::vector<std::string> cells = {
        std::to_string(photo.m_pPhoto->GetId()), photo.m_pPhoto->GetName().chars(),
        std::to_string(photo.m_points.size()), FixedLength(accuracy.Photos()[i].dSd, 4)};
    if (photo.Worst() != nullptr) {
      for (const double d : {photo.m_dRms, photo.m_dRmsX, photo.m_dRmsY, photo.m_dRmsZ,
                             photo.m_dRmsPixels, photo.Worst()->Length()}) {
        cells.push_back(FixedLength(d, 4));
      }
      cells.push_back(std::to_string(photo.Worst()->m_uId));
    }
    table.AddRow(cells);
  }
  table.Write(stream);
  const ZuPlane& plane = result.m_plane;
  stream << (result.m_iPlanePoints > 0
                 ? "\nplane of " + std::to_string(result.m_iPlanePoints) + " points"
                 : std::string("\nplane as told"))
         << ": normal (" << Fixed(plane.A(), 9) << ", " << Fixed(plane.B(), 9) << ", "
         << Fixed(plane.C(), 9) << "), D " << FixedLength(plane.D() + 0.0, 6)
         << ", longest deviation " << FixedLength(result.m_dPlaneDeviation, 6) << '\n'
         << accuracy.Note() << '\n';
  accuracy.PrintChain(values.strUnit, stream);
}

// Rows photo, id, x, y, z; where anything is told of the accuracy with standard deviations behind.
void WriteObjectPoints(const ZuPlaneMeasurement& result, const MeasureAccuracy& accuracy,
                       bool bWithSd, const PointFormat& format, OutputFile* pOutput) {
  ZuPointList points;
  for (size_t i = 0; i < result.m_photos.size(); ++i) {
    const ZuMeasuredPhoto& photo = result.m_photos[i];
    for (size_t k = 0; k < photo.m_points.size(); ++k) {
      const ZuMeasuredPoint& p = photo.m_points[k];
      const auto& cov = accuracy.Photos()[i].points[k].cov;
      ZuPoint point(p.m_uId, p.m_dX, p.m_dY, p.m_dZ);
      point.m_iPhoto = static_cast<int>(photo.m_pPhoto->GetId());
      point.m_dDX = std::sqrt(cov[0]);
      point.m_dDY = std::sqrt(cov[1]);
      point.m_dDZ = std::sqrt(cov[2]);
      points.Add(point);
    }
  }
  std::vector<eZuPointRWMask> columns = {eZuPointRWPhoto, eZuPointRWId, eZuPointRWX, eZuPointRWY,
                                         eZuPointRWZ};
  if (bWithSd) columns.insert(columns.end(), {eZuPointRWDX, eZuPointRWDY, eZuPointRWDZ});
  WriteNewPoints(points, std::move(columns), format, pOutput);
}

ReportInput::File ReportFile(const char* szWhat, const InputFile& file) {
  const std::string strText = file.Text();
  return {szWhat, file.Name(), strText.size(), ZuCalcCRC32(strText.data(), strText.size())};
}

ExitCode Run(const Values& values, bool bSigma, Context& context) {
  const InputFile projectFile(values.strProject, kProjectFile);
  const auto pProject = OpenProject(projectFile, values.bPartial);
  if (values.bFlip && values.join.strJoin == "rays") {
    throw CommandError(kUsage,
                       "--join rays takes the pixels as the project counts them: not with "
                       "--flip");
  }
  ZuPlane told;
  const bool bTold = FindToldPlane(values.plane.strPoints, *pProject, projectFile.Name(), &told);
  std::optional<InputFile> planeFile, checkFile;
  ZuPointList planePoints, check;
  if (!bTold) {
    planeFile.emplace(values.plane.strPoints, "a coordinate file");
    ReadPoints(*planeFile, values.plane.format, context, &planePoints);
  }
  if (!values.strCheck.empty()) {
    checkFile.emplace(values.strCheck, "a coordinate file");
    PointFormat format = values.plane.format;
    format.strToldColumns = values.strColumns;
    ReadPoints(*checkFile, format, context, &check);
  }
  ZuPlaneMeasurement result;
  std::optional<ZuPlaneFit> plane;
  if (bTold) {
    const double dLength = std::hypot(told.A(), told.B(), told.C());
    for (double* pd : {&told.A(), &told.B(), &told.C(), &told.D()}) *pd /= dLength;
    result.SetPlane(told);
  } else {
    plane = FitPlane(values.plane, planePoints, &result);
  }
  MeasureProject(*pProject, check, values.bFlip, values.bLibrary, context.IsQuiet(), &result);
  const MeasureAccuracy accuracy(*pProject, result, plane, values.bFlip, values.accuracy);

  WarnOf(*pProject, projectFile, context);
  WarnOf(result, context);
  accuracy.Warn(result, context);
  Print(result, accuracy, values, context.Text());
  AddJson(result, accuracy, context);
  const std::vector<JoinedPoint> joined = JoinPoints(values.join, result, *pProject, context);
  if (context.WantsRoot()) context.Root()["joined"] = JoinedJson(joined);
  if (!values.join.strJoined.empty()) {
    WriteJoined(joined, context.NewOutput(values.join.strJoined).Stream());
  }
  if (!values.strOut.empty()) {
    WriteObjectPoints(result, accuracy, bSigma || accuracy.IsTold(), values.plane.format,
                      &context.NewOutput(values.strOut));
  }
  if (context.WantsReport()) {
    ReportInput input;
    input.files = {ReportFile("project", projectFile)};
    if (planeFile) input.files.push_back(ReportFile("plane", *planeFile));
    if (checkFile) input.files.push_back(ReportFile("check points", *checkFile));
    input.strUnit = values.strUnit;
    input.pCheck = &check;
    input.pAccuracy = &accuracy;
    context.Report().strPage = MeasureReport(result, input);
    if (!result.m_photos.empty()) context.Report().drawings = {MeasurePicture(result, input)};
  }
  return result.m_leftOut.empty() && result.m_refused.empty() ? kGood : kNotAcceptable;
}

}  // namespace

Runner DefineMeasure(Options& options) {
  auto pValues = std::make_shared<Values>();
  options.Positional("PROJECT", &pValues->strProject, "project file");
  AddPlaneOptions(options, &pValues->plane);
  options.Option("--check", "POINTS", &pValues->strCheck,
                 "coordinate file of points to compare with, by id");
  options.Flag("--flip", &pValues->bFlip,
               "y of the pixels counts the other way than the photos' transformations take it");
  AddLibraryOption(options, &pValues->bLibrary);
  AddPartialOption(options, &pValues->bPartial);
  options.Option("--unit", "TEXT", &pValues->strUnit,
                 "unit of the object coordinates, for headings (\"mm\")");
  options.Output(
      "-o,--output", "FILE", &pValues->strOut,
      "object points: photo, id, x, y, z; with --sigma, or where the project tells of accuracy, "
      "standard deviations dx, dy, dz behind");
  AddJoinOptions(options, &pValues->join);
  AddAccuracyOptions(options, &pValues->accuracy);
  AddPointOptions(options, &pValues->plane.format);
  return [pValues, options](Context& context) {
    pValues->plane.bAxis |= pValues->bLibrary;
    pValues->strColumns = pValues->plane.format.strToldColumns;
    if (!pValues->plane.strColumns.empty()) {
      pValues->plane.format.strToldColumns = pValues->plane.strColumns;
    }
    return Run(*pValues, options.Given("--sigma"), context);
  };
}

}  // namespace cli
