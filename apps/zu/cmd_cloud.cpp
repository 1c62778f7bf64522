// zu cloud: figures of point clouds, conversion, transformation, normals.
#include "cmd_cloud.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <memory>
#include <sstream>

#include "cloud_files.h"
#include "commands.h"
#include "point_input.h"
#include "save_trafo.h"
#include "table_decimals.h"
#include "text_table.h"
#include "zu/numerics/affin_map3d.h"
#include "zu/numerics/rotation_convention.h"

namespace cli {
namespace {

constexpr double kDegree = 3.14159265358979323846 / 180.0;

struct Values {
  std::vector<std::string> files;
  std::string strIn, strOut;
  CloudOptions cloud;
  std::string strMatrix, strTranslate, strRotate, strRotation = "abc", strEye;
};

unsigned int CountSelected(const ZuPointCloud& cloud) {
  unsigned int uSelected = 0;
  for (const ZuScanPoint3d& p : cloud.GetPoints()) uSelected += p.IsSelected() ? 1 : 0;
  return uSelected;
}

unsigned int CountNormals(const ZuPointCloud& cloud) {
  unsigned int uNormals = 0, uTotal = 0;
  cloud.CountNormals(uNormals, uTotal);
  return uNormals;
}

Json CloudJson(const ZuPointCloud& cloud) {
  const ZuBoundingBox3d& box = cloud.GetBox();
  const ZuCenterPoint3d& centre = cloud.GetCenter();
  Json json;
  json["id"] = cloud.GetId();
  json["name"] = cloud.GetName().chars();
  json["points"] = cloud.GetPointCount();
  json["selected"] = CountSelected(cloud);
  json["min"] = nullptr;
  json["max"] = nullptr;
  json["centre"] = nullptr;
  if (cloud.GetPointCount() > 0) {
    json["min"] = {box.Xmin(), box.Ymin(), box.Zmin()};
    json["max"] = {box.Xmax(), box.Ymax(), box.Zmax()};
    json["centre"] = {centre.x(), centre.y(), centre.z()};
  }
  json["normals"] = CountNormals(cloud);
  return json;
}

void WriteText(const ZuPointCloud& cloud, std::ostream& stream) {
  stream << cloud.GetId() << " \"" << cloud.GetName().chars() << "\": " << cloud.GetPointCount()
         << " points, " << CountSelected(cloud) << " selected, " << CountNormals(cloud)
         << " with a normal\n";
  if (cloud.GetPointCount() == 0) return;
  const ZuBoundingBox3d& box = cloud.GetBox();
  const ZuCenterPoint3d& centre = cloud.GetCenter();
  TextTable table;
  table.AddColumn("", TextTable::eLeft);
  for (const char* szTitle : {"x", "y", "z"}) table.AddColumn(szTitle);
  const auto row = [&table](const char* szName, double x, double y, double z) {
    table.AddRow({szName, FixedLength(x, 6), FixedLength(y, 6), FixedLength(z, 6)});
  };
  row("min", box.Xmin(), box.Ymin(), box.Zmin());
  row("max", box.Xmax(), box.Ymax(), box.Zmax());
  row("centre", centre.x(), centre.y(), centre.z());
  table.Write(stream);
}

// Numbers between commas or blanks. Throws CommandError where there are others than numbers.
std::vector<double> Numbers(std::string strText, ExitCode code, const std::string& strWhere) {
  std::replace(strText.begin(), strText.end(), ',', ' ');
  std::istringstream stream(strText);
  std::vector<double> numbers;
  for (std::string strField; stream >> strField;) {
    double dValue = 0.0;
    const char* const pEnd = strField.data() + strField.size();
    const auto result = std::from_chars(strField.data(), pEnd, dValue);
    if (result.ec != std::errc() || result.ptr != pEnd || !std::isfinite(dValue)) {
      throw CommandError(code, strWhere + ": " + strField +
                                   " is no finite number; numbers such as 1,2.5,-3 would be right");
    }
    numbers.push_back(dValue);
  }
  return numbers;
}

std::array<double, 3> Triple(const std::string& strText, const char* szOption) {
  const auto numbers = Numbers(strText, kUsage, szOption);
  if (numbers.size() != 3) {
    throw CommandError(kUsage,
                       std::string(szOption) + ": three numbers such as 1,2.5,-3 are needed");
  }
  return {numbers[0], numbers[1], numbers[2]};
}

ZuAffinMap3d ReadMatrix(const std::string& strPath, Context& context) {
  ZuAffinMap3d map;
  if (ReadTransformation(strPath, context).AsMap(&map)) return map;
  throw CommandError(kBadInput, strPath +
                                    ": is a plane transformation\none of space, from zu transform, "
                                    "zu merge or zu local with --save, would be right");
}

// --rotate by the convention of --rotation.
ZuAffinMap3d Turn(const Values& values) {
  const auto v = Triple(values.strRotate, "--rotate");
  const ZuRad a{v[0] * kDegree}, b{v[1] * kDegree}, c{v[2] * kDegree};
  const ZuRotation R = values.strRotation == "opk"   ? ZuAnglesOpk{a, b, c}.Rotation()
                       : values.strRotation == "pok" ? ZuAnglesPok{a, b, c}.Rotation()
                                                     : ZuAnglesAbc{a, b, c}.Rotation();
  if (values.strRotation == "xyz") return ZuAffinMap3d::RotXYZ(a.value, b.value, c.value);
  ZuAffinMap3d map;
  for (int i = 0; i < 3; ++i) std::copy_n(R.r.data() + 3 * i, 3, map.asDblArray() + 4 * i);
  return map;
}

ZuAffinMap3d MapOf(const Values& values, Context& context) {
  const int iGiven = (values.strMatrix.empty() ? 0 : 1) + (values.strTranslate.empty() ? 0 : 1) +
                     (values.strRotate.empty() ? 0 : 1);
  if (iGiven != 1) {
    throw CommandError(kUsage, "one of --matrix, --translate and --rotate is needed");
  }
  if (!values.strMatrix.empty()) return ReadMatrix(values.strMatrix, context);
  if (!values.strTranslate.empty()) {
    const auto v = Triple(values.strTranslate, "--translate");
    return ZuAffinMap3d::Translate(v[0], v[1], v[2]);
  }
  return Turn(values);
}

ExitCode RunInfo(const Values& values, Context& context) {
  ZuPointCloudContainer clouds;
  for (const std::string& strFile : values.files) {
    ReadClouds(strFile, values.cloud, context, &clouds);
  }
  ReportClouds(clouds, context);
  return kGood;
}

// Reads IN, does the work on each cloud, writes OUT.
template <class Work>
ExitCode RunOn(const Values& values, Context& context, Work work) {
  CheckCloudEnding(values.strOut);
  ZuPointCloudContainer clouds;
  const eZuIntensityScale eIntensity = ReadClouds(values.strIn, values.cloud, context, &clouds);
  for (ZuPointCloud* p = clouds.GetClouds().First(); p != nullptr; p = p->Next()) work(*p);
  WriteClouds(&clouds, values.strOut, values.cloud, eIntensity, context);
  ReportClouds(clouds, context);
  return kGood;
}

// Points on the eye have no direction to it.
unsigned int CountOn(const ZuPoint3d& eye, const ZuPointCloud& cloud) {
  unsigned int uOn = 0;
  for (const ZuScanPoint3d& p : cloud.GetPoints()) {
    uOn += p.x == eye.x && p.y == eye.y && p.z == eye.z ? 1 : 0;
  }
  return uOn;
}

ExitCode RunNormals(const Values& values, Context& context) {
  const auto v = Triple(values.strEye, "--eye");
  const ZuPoint3d eye(v[0], v[1], v[2]);
  unsigned int uOn = 0;
  const ExitCode eCode = RunOn(values, context, [&eye, &uOn](ZuPointCloud& cloud) {
    cloud.EstimateNormals(eye);
    uOn += CountOn(eye, cloud);
  });
  context.Text() << "each normal is the direction from its point to the eye, not that of a "
                    "surface\n";
  context.Root()["normals_are"] = "directions to the eye";
  if (uOn == 0) return eCode;
  context.Warn("points that stand on the eye and have no direction to it: " + std::to_string(uOn));
  return kNotAcceptable;
}

std::shared_ptr<Values> InAndOut(Options& options) {
  auto pValues = std::make_shared<Values>();
  options.Positional("IN", &pValues->strIn, "binary, PTS, PLY, LAS, E57 or coordinate file");
  options.PositionalOutput("OUT", &pValues->strOut,
                           "new file: .zpc, .ply, .las, .e57, .pts, .xyz, .csv, .coo or .txt");
  AddCloudInput(options, &pValues->cloud);
  AddCloudOutput(options, &pValues->cloud);
  return pValues;
}

}  // namespace

void ReportClouds(const ZuPointCloudContainer& clouds, Context& context) {
  Json all = Json::array();
  for (const ZuPointCloud* p = clouds.First(); p != nullptr; p = p->Next()) {
    all.push_back(CloudJson(*p));
    WriteText(*p, context.Text());
  }
  context.Root()["clouds"] = std::move(all);
}

void MoveCloud(const ZuAffinMap3d& map, ZuPointCloud& cloud) {
  if (CountNormals(cloud) > 0 && !cloud.TransformNormals(map)) {
    throw CommandError(kUndetermined,
                       "the map has no inverse: it makes the cloud flat, and its normals cannot be "
                       "turned; a matrix of full rank would be right");
  }
  cloud.Transform(map);
}

Runner DefineCloudInfo(Options& options) {
  auto pValues = std::make_shared<Values>();
  AddCloudInput(options, &pValues->cloud);
  pValues->cloud.strPly = "auto";
  options.Choice("--ply", {"auto", "library"}, &pValues->cloud.strPly,
                 "library takes nine columns of a PLY file by their places");
  options.Positionals("FILE", &pValues->files, "binary, PTS, PLY, LAS, E57 or coordinate files");
  return [pValues](Context& context) { return RunInfo(*pValues, context); };
}

Runner DefineCloudConvert(Options& options) {
  auto pValues = InAndOut(options);
  return [pValues](Context& context) { return RunOn(*pValues, context, [](ZuPointCloud&) {}); };
}

Runner DefineCloudTransform(Options& options) {
  auto pValues = InAndOut(options);
  options.Option("--matrix", "FILE", &pValues->strMatrix,
                 "4 x 4 matrix row by row, translation last in each row; or the file of a --save");
  options.Option("--translate", "X,Y,Z", &pValues->strTranslate, "shift");
  options.Option("--rotate", "A,B,C", &pValues->strRotate,
                 "turn by angles in degrees, about x, y and z: R = Ry(B) Rx(A) Rz(C)");
  options.Choice("--rotation", {"abc", "opk", "pok", "xyz"}, &pValues->strRotation,
                 "convention of --rotate: abc; omega, phi, kappa; phi, omega, kappa; or about x, "
                 "then y, then z");
  return [pValues](Context& context) {
    const ZuAffinMap3d map = MapOf(*pValues, context);
    return RunOn(*pValues, context, [&map](ZuPointCloud& cloud) { MoveCloud(map, cloud); });
  };
}

Runner DefineCloudNormals(Options& options) {
  auto pValues = InAndOut(options);
  options.Option("--eye", "X,Y,Z", &pValues->strEye, "position of the scanner");
  options.Required();
  return [pValues](Context& context) { return RunNormals(*pValues, context); };
}

}  // namespace cli
