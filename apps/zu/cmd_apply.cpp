// zu apply: a transformation that was saved, applied to points, a cloud or a project.
#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <memory>

#include "adjust_options.h"
#include "cloud_files.h"
#include "cmd_cloud.h"
#include "commands.h"
#include "point_input.h"
#include "project_files.h"
#include "save_trafo.h"
#include "svg.h"
#include "text_table.h"
#include "trafo_report.h"
#include "zu/foundation/file_name.h"
#include "zu/photo/detect_files.h"
#include "zu/points/column_titles.h"
#include "zu/project/project_transform.h"

namespace cli {
namespace {

constexpr double kToldOff = 1e-9;  // of a matrix from a similarity, over its scale [-]

struct Values {
  std::string strTrafo, strIn, strOut;
  bool bInverse = false;
  PointFormat format;
  CloudOptions cloud;
};

enum InputKind { ePoints, eCloud, eProject };

bool EndsIn(const std::string& strPath, std::initializer_list<const char*> endings) {
  return std::find(endings.begin(), endings.end(), ZuGetFileEnding(strPath)) != endings.end();
}

// By content; rows of x y z are a cloud where the names say so. A pipe is what OUT says.
InputKind KindOf(const Values& values) {
  const bool bCloudOut = EndsIn(values.strOut, {".zpc", ".ply", ".las", ".e57", ".pts"});
  std::error_code error;
  if (!std::filesystem::is_regular_file(values.strIn, error)) {
    return bCloudOut ? eCloud : EndsIn(values.strOut, {".prj", ".json"}) ? eProject : ePoints;
  }
  char cFirst = 0;
  std::ifstream(values.strIn, std::ios::in | std::ios::binary) >> cFirst;
  if (cFirst == '{') return eProject;
  const eZuvoFile eType = ZuDetectZuvoFiles(values.strIn.c_str()).GetType();
  switch (eType) {
    case eZuvoFileProject:
      return eProject;
    case eZuvoFileCloud:
    case eZuvoFilePly:
    case eZuvoFileLas:
    case eZuvoFileE57:
      return eCloud;
    case eZuvoFileCamera:
    case eZuvoFileSimpleCamera:
    case eZuvoFileReseau:
    case eZuvoFileDigitalCamera:
      throw CommandError(kBadInput, values.strIn + ": is a " + GetZuvoFileText(eType) +
                                        "; points, a cloud or a project would be right");
    default:
      break;
  }
  const bool bCloud = bCloudOut || EndsIn(values.strIn, {".pts", ".xyz"});
  const bool bTold = !values.format.strToldColumns.empty();
  return bCloud || (!bTold && ZuIsTitledScan(values.strIn.c_str())) ? eCloud : ePoints;
}

void Scale(double dFactor, ZuPointList* pPoints) {
  for (ZuPoint* p = pPoints->First(); p != nullptr; p = p->Next()) {
    for (double* pd : {&p->m_dX, &p->m_dY, &p->m_dZ, &p->m_dDX, &p->m_dDY, &p->m_dDZ}) {
      *pd *= dFactor;
    }
  }
}

// Length of the list's unit in that of the transformation; 1 where they do not tell both.
double UnitFactor(const ZuTransformation& t, const PointFormat& format) {
  const double dOwn = GetZuUnitLength(format.form ? format.form->m_strUnit : "");
  const double dTrafo = GetZuUnitLength(t.strUnit);
  return dOwn == 0.0 || dTrafo == 0.0 ? 1.0 : dOwn / dTrafo;
}

bool IsFinite(const ZuPoint& p) {
  return std::isfinite(p.m_dX) && std::isfinite(p.m_dY) && std::isfinite(p.m_dZ);
}

// Carries the points; takes those without an image out of the list and returns their names.
std::vector<std::string> CarryPoints(const ZuTransformation& t, ZuPointList* pPoints) {
  std::vector<std::string> labels;
  std::vector<unsigned> refused = t.Carry(pPoints);
  std::sort(refused.begin(), refused.end());
  for (ZuPoint* p = pPoints->First(); p != nullptr;) {
    ZuPoint* const pNext = p->Next();
    if (std::binary_search(refused.begin(), refused.end(), p->GetId()) || !IsFinite(*p)) {
      labels.push_back(PointLabel(*p));
      delete pPoints->Subtract(p);
    }
    p = pNext;
  }
  return labels;
}

ExitCode RunPoints(Values values, const ZuTransformation& t, Context& context) {
  const bool bPlane = t.kind == ZuTransformationKind::Plane;
  if (bPlane) values.format.szCoordinates = "xy";
  ZuPointList points;
  ReadPointsOrRows(values.strIn, values.format, context, &points);
  const std::string strName = NameInMessages(values.strIn);
  CheckAccuracies(strName, points, values.format.strColumns);
  GiveCommonIds("", context, &points, nullptr);  // those that are refused are told by id
  const double dFactor = UnitFactor(t, values.format);
  if (dFactor != 1.0) Scale(dFactor, &points);
  const std::vector<std::string> left = CarryPoints(t, &points);
  if (dFactor != 1.0) {
    Scale(1.0 / dFactor, &points);
    context.WarnAlways(strName + ": lengths in " + values.format.form->m_strUnit +
                       ", the transformation in " + t.strUnit + "; the result is in " +
                       values.format.form->m_strUnit);
  }
  if (points.IsEmpty()) {
    throw CommandError(kUndetermined, values.strTrafo + ": gives no point of " + strName +
                                          " a place; points near those it was made from would be "
                                          "right");
  }
  const bool bSure = !t.covariance.empty() || HasAccuracies(values.format.strColumns);
  context.Text() << Counted(points.Count(), "point") << " carried over\n";
  context.Root()["carried"] = points.Count();
  context.Root()["left_out"] = left;
  if (context.WantsRoot()) {
    context.Root()["points"] = PointRowsJson(points, !bSure ? 0 : bPlane ? 2 : 3);
  }
  for (const std::string& strLabel : left) {
    context.Text() << "left out, it has no place there: point " << strLabel << '\n';
  }
  WritePoints(&points, values.format, &context.NewOutput(values.strOut));
  return left.empty() ? kGood : kNotAcceptable;
}

[[noreturn]] void FailForSpace(const std::string& strTrafo, const char* szWhat) {
  throw CommandError(kBadInput, strTrafo +
                                    ": is a plane transformation and carries lists of points"
                                    "\n" +
                                    szWhat +
                                    " needs one of space, from zu transform, zu merge or zu local "
                                    "with --save");
}

ExitCode RunCloud(const Values& values, const ZuTransformation& t, Context& context) {
  CheckCloudEnding(values.strOut);
  ZuAffinMap3d map;
  if (!t.AsMap(&map)) FailForSpace(values.strTrafo, "a cloud");
  CloudOptions options = values.cloud;
  options.strColumns = values.format.strToldColumns;
  options.table = TableOptions(values.format, "", false);
  options.iDecimals = values.format.iDecimals;
  ZuPointCloudContainer clouds;
  const eZuIntensityScale eIntensity = ReadClouds(values.strIn, options, context, &clouds);
  long long iPoints = 0;
  for (ZuPointCloud* p = clouds.GetClouds().First(); p != nullptr; p = p->Next()) {
    MoveCloud(map, *p);
    iPoints += p->GetPointCount();
  }
  WriteClouds(&clouds, values.strOut, options, eIntensity, context);
  context.Root()["carried"] = iPoints;
  ReportClouds(clouds, context);
  return kGood;
}

ExitCode RunProject(const Values& values, const ZuTransformation& t, Context& context) {
  CheckProjectEnding(values.strOut);
  ZuTrafo3dData similarity;
  double dOff = 0.0;
  if (t.kind == ZuTransformationKind::Plane) FailForSpace(values.strTrafo, "a project");
  if (!t.AsSimilarity(&similarity, &dOff)) {
    throw CommandError(kBadInput,
                       values.strTrafo +
                           ": is no similarity (columns not orthogonal and equally long, or "
                           "mirroring), photos would be bent\none of zu transform, zu merge or zu "
                           "local with --save would be right");
  }
  if (dOff > kToldOff) {
    context.WarnAlways(values.strTrafo + ": the matrix is a similarity but for " +
                       Significant(dOff) + " of its scale; the nearest one was taken");
  }
  ZuProject project;
  ReadProjectFile(values.strIn, context, &project);
  ZuTransformProject(&project, similarity);
  long long iOriented = 0;
  for (const ZuPhoto* p = project.PhotoList().First(); p != nullptr; p = p->Next()) {
    iOriented += p->HasAOR() ? 1 : 0;
  }
  const struct {
    const char* szKey;
    const char* szName;
    long long iCount;
  } rows[] = {{"oriented", "oriented photo", iOriented},
              {"object_points", "object point", project.ObjectPoints().Count()},
              {"planes", "plane", project.PlaneList().Count()},
              {"orthophotos", "orthophoto", project.OrthoPhotoList().Count()}};
  for (const auto& row : rows) {
    context.Root()[row.szKey] = row.iCount;
    if (row.iCount > 0) context.Text() << Counted(row.iCount, row.szName) << " carried over\n";
  }
  WriteProjectFile(values.strOut, context, project);
  return kGood;
}

ExitCode Run(const Values& values, Context& context) {
  ZuTransformation t = ReadTransformation(values.strTrafo, context);
  if (values.bInverse && !t.Invert()) {
    throw CommandError(kUndetermined, values.strTrafo +
                                          ": has no inverse, it makes everything flat; without "
                                          "--inverse it can be applied");
  }
  const InputKind eKind = KindOf(values);
  context.Root()["transformation"] = t.kind == ZuTransformationKind::Similarity ? "similarity"
                                     : t.kind == ZuTransformationKind::Affine   ? "affine"
                                                                                : "plane";
  context.Root()["inverse"] = values.bInverse;
  context.Root()["input"] = eKind == ePoints ? "points" : eKind == eCloud ? "cloud" : "project";
  return eKind == ePoints  ? RunPoints(values, t, context)
         : eKind == eCloud ? RunCloud(values, t, context)
                           : RunProject(values, t, context);
}

}  // namespace

Runner DefineApply(Options& options) {
  auto pValues = std::make_shared<Values>();
  options.Positional("T", &pValues->strTrafo, "file of --save, or a 4 x 4 matrix as text");
  options.Positional("IN", &pValues->strIn, "coordinate file, cloud or project");
  options.PositionalOutput("OUT", &pValues->strOut, "the same in the target system");
  options.Flag("--inverse", &pValues->bInverse, "from the target system to the source's");
  AddPointOptions(options, &pValues->format);
  options.Flag("--partial", &pValues->cloud.bPartial,
               "take the points of a cloud that ends too early");
  AddCloudOutput(options, &pValues->cloud);
  return [pValues](Context& context) { return Run(*pValues, context); };
}

}  // namespace cli
