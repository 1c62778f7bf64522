// zu measure: measured pixels of a project's photos become object points on a plane.
#include <memory>
#include <optional>

#include "commands.h"
#include "measure_report.h"
#include "measure_run.h"
#include "point_input.h"
#include "project_input.h"
#include "text_table.h"
#include "zu/foundation/crc32.h"

namespace cli {

namespace {

struct Values {
  std::string strProject, strPlane, strCheck, strOut, strReport;
  std::string strUnit = "object units";
  bool bFlip = false, bLibrary = false, bPartial = false;
};

Json Or(bool bThere, double dValue) { return bThere ? Json(dValue) : Json(); }

Json PhotoJson(const MeasuredPhoto& photo) {
  const bool bChecked = photo.iChecked > 0;
  Json json;
  json["id"] = photo.pPhoto->GetId();
  json["name"] = photo.pPhoto->GetName().chars();
  json["points"] = photo.points.size();
  json["checked"] = photo.iChecked;
  json["rms"] = Or(bChecked, photo.dRms);
  json["rms_x"] = Or(bChecked, photo.dRmsX);
  json["rms_y"] = Or(bChecked, photo.dRmsY);
  json["rms_z"] = Or(bChecked, photo.dRmsZ);
  json["rms_pixels"] = Or(bChecked, photo.dRmsPixels);
  json["worst"] = photo.pWorst != nullptr
                      ? Json{{"id", photo.pWorst->uId}, {"length", photo.pWorst->Length()}}
                      : Json();
  return json;
}

Json PointJson(unsigned uPhoto, const MeasuredPoint& p) {
  Json json{{"photo", uPhoto}, {"id", p.uId}, {"x", p.x}, {"y", p.y}, {"z", p.z}};
  json["dx"] = Or(p.bChecked, p.dx);
  json["dy"] = Or(p.bChecked, p.dy);
  json["dz"] = Or(p.bChecked, p.dz);
  json["pixel_dx"] = Or(p.bChecked, p.rx);
  json["pixel_dy"] = Or(p.bChecked, p.ry);
  return json;
}

void AddJson(const Measurement& result, Context& context) {
  Json& root = context.Root();
  const ZuPlane& plane = result.plane;
  root["plane"] = Json{{"normal", {plane.A(), plane.B(), plane.C()}},
                       {"d", plane.D()},
                       {"points", result.iPlanePoints},
                       {"sigma0", result.dSigma0}};
  root["photos"] = Json::array();
  root["rms"] = Or(result.iChecked > 0, result.dRms);
  root["rms_pixels"] = Or(result.iChecked > 0, result.dRmsPixels);
  root["checked"] = result.iChecked;
  root["not_met"] = result.refused.size();
  root["left_out"] = Json::array();
  root["refused"] = Json::array();
  root["points"] = Json::array();
  if (!context.IsJson()) return;
  for (const LeftOutPhoto& photo : result.leftOut) {
    root["left_out"].push_back(Json{
        {"photo", photo.uPhoto}, {"measurements", photo.uMeasurements}, {"reason", photo.strWhy}});
  }
  for (const RefusedPoint& point : result.refused) {
    root["refused"].push_back(
        Json{{"photo", point.uPhoto}, {"id", point.uId}, {"reason", point.strWhy}});
  }
  for (const MeasuredPhoto& photo : result.photos) {
    root["photos"].push_back(PhotoJson(photo));
    for (const MeasuredPoint& p : photo.points) {
      root["points"].push_back(PointJson(photo.pPhoto->GetId(), p));
    }
  }
}

void Print(const Measurement& result, const Values& values, std::ostream& stream) {
  stream << VerdictOf(result, values.strUnit) << "\n\n";
  TextTable table;
  table.AddColumn("photo");
  table.AddColumn("file", TextTable::eLeft);
  for (const char* szTitle : {"points", "RMS", "X", "Y", "Z", "pixels", "worst", "point"}) {
    table.AddColumn(szTitle);
  }
  for (const MeasuredPhoto& photo : result.photos) {
    std::vector<std::string> cells = {std::to_string(photo.pPhoto->GetId()),
                                      photo.pPhoto->GetName().chars(),
                                      std::to_string(photo.points.size())};
    if (photo.pWorst != nullptr) {
      for (const double d : {photo.dRms, photo.dRmsX, photo.dRmsY, photo.dRmsZ, photo.dRmsPixels,
                             photo.pWorst->Length()}) {
        cells.push_back(Fixed(d, 4));
      }
      cells.push_back(std::to_string(photo.pWorst->uId));
    }
    table.AddRow(cells);
  }
  table.Write(stream);
  const ZuPlane& plane = result.plane;
  stream << "\nplane of " << result.iPlanePoints << " points: normal (" << Fixed(plane.A(), 9)
         << ", " << Fixed(plane.B(), 9) << ", " << Fixed(plane.C(), 9) << "), D "
         << Fixed(plane.D() + 0.0, 6) << ", longest deviation " << Fixed(result.dPlaneDeviation, 6)
         << '\n';
}

void WriteObjectPoints(const Measurement& result, std::ostream& stream) {
  for (const MeasuredPhoto& photo : result.photos) {
    for (const MeasuredPoint& p : photo.points) {
      stream << photo.pPhoto->GetId() << ' ' << p.uId << ' ' << Shortest(p.x) << ' '
             << Shortest(p.y) << ' ' << Shortest(p.z) << '\n';
    }
  }
}

ReportInput::File ReportFile(const char* szWhat, const InputFile& file) {
  const std::string strText = file.Text();
  return {szWhat, file.Name(), strText.size(), ZuCalcCRC32(strText.data(), strText.size())};
}

ExitCode Run(const Values& values, Context& context) {
  const InputFile projectFile(values.strProject, kProjectFile);
  const auto pProject = OpenProject(projectFile, values.bPartial);
  const InputFile planeFile(values.strPlane, "a coordinate file");
  std::optional<InputFile> checkFile;
  ZuPointList planePoints, check;
  ReadPoints(planeFile, "id,x,y,z", context, &planePoints);
  if (!values.strCheck.empty()) {
    checkFile.emplace(values.strCheck, "a coordinate file");
    ReadPoints(*checkFile, "id,x,y,z", context, &check);
  }
  const Measurement result = MeasureProject(*pProject, planePoints, check, values.bFlip,
                                            values.bLibrary, context.IsQuiet());

  WarnOf(*pProject, projectFile, context);
  WarnOf(result, context);
  Print(result, values, context.Text());
  AddJson(result, context);
  if (!values.strOut.empty()) {
    WriteObjectPoints(result, context.NewOutput(values.strOut).Stream());
  }
  if (!values.strReport.empty()) {
    ReportInput input;
    input.files = {ReportFile("project", projectFile), ReportFile("plane", planeFile)};
    if (checkFile) input.files.push_back(ReportFile("check points", *checkFile));
    input.strUnit = values.strUnit;
    input.pCheck = &check;
    context.NewOutput(values.strReport).Stream() << MeasureReport(result, input);
  }
  return result.leftOut.empty() && result.refused.empty() ? kGood : kNotAcceptable;
}

}  // namespace

Runner DefineMeasure(Options& options) {
  auto pValues = std::make_shared<Values>();
  options.Positional("PROJECT", &pValues->strProject, "project file");
  options.Option("--plane", "POINTS", &pValues->strPlane,
                 "coordinate file of the points that the plane is fitted to");
  options.Required();
  options.Option("--check", "POINTS", &pValues->strCheck,
                 "coordinate file of points to compare with, by id");
  options.Flag("--flip", &pValues->bFlip,
               "y of the pixels counts the other way than the photos' transformations take it");
  AddLibraryOption(options, &pValues->bLibrary);
  AddPartialOption(options, &pValues->bPartial);
  options.Option("--unit", "TEXT", &pValues->strUnit,
                 "unit of the object coordinates, for headings (\"mm\")");
  options.Output("-o,--output", "FILE", &pValues->strOut, "object points: photo, id, x, y, z");
  options.Output("--report", "FILE", &pValues->strReport, "report, one HTML file");
  return [pValues](Context& context) { return Run(*pValues, context); };
}

}  // namespace cli
