// zu mesh: triangles over a plane from points or a cloud, with areas, volumes and contours.
#include <algorithm>
#include <cmath>
#include <filesystem>
#include <map>
#include <memory>
#include <utility>

#include "adjust_options.h"
#include "cloud_files.h"
#include "commands.h"
#include "construct_input.h"
#include "drawing.h"
#include "point_input.h"
#include "report_output.h"
#include "svg.h"
#include "text_table.h"
#include "zu/adjust/fit_primitives.h"
#include "zu/foundation/strict_number.h"
#include "zu/mesh/mesh_contours.h"
#include "zu/mesh/mesh_file.h"
#include "zu/points/name_line.h"

namespace cli {
namespace {

constexpr double kDrawingSize = 900.0;  // longer side of the contours [pixels]

struct MeshValues {
  std::string strFile, strPlane = "xy", strOutput, strBreaklines, strContours;
  bool bFit = false, bBinary = false;
  double dMaxEdge = 0.0, dStep = 0.0;
  PointFormat format;
};

std::string MeshEnding(const std::string& strPath) {
  std::string strEnding = std::filesystem::path(strPath).extension().string();
  for (char& c : strEnding) c = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
  return strEnding;
}

void CheckMeshEnding(const char* szOption, const std::string& strPath, const char* szA,
                     const char* szB) {
  const std::string strEnding = MeshEnding(strPath);
  if (strPath.empty() || strEnding == szA || strEnding == szB) return;
  throw CommandError(kUsage, std::string(szOption) + " " + strPath + ": the ending " + szA +
                                 " or " + szB + " would be right");
}

// The points of the file with what they are called by: of clouds by their number, from 1.
class MeshInput {
 public:
  MeshInput(const MeshValues& values, Context& context) : m_values(values) {
    const std::string strEnding = MeshEnding(values.strFile);
    for (const char* szCloud : {".zpc", ".pts", ".ply", ".las", ".e57", ".xyz"}) {
      m_bCloud = m_bCloud || strEnding == szCloud;
    }
    if (!m_bCloud) {
      ReadPointsOrRows(values.strFile, values.format, context, &m_list);
      GiveCommonIds("", context, &m_list, nullptr);
      for (const ZuPoint* p = m_list.First(); p != nullptr; p = p->Next()) {
        m_index.emplace(p, points.size());
        m_points.push_back(p);
        points.emplace_back(*p);
      }
      return;
    }
    ZuPointCloudContainer clouds;
    ReadClouds(values.strFile, CloudOptions(), context, &clouds);
    for (const ZuPointCloud* p = clouds.First(); p != nullptr; p = p->Next()) {
      for (const ZuScanPoint3d& point : p->GetPoints())
        points.emplace_back(point.x, point.y, point.z);
    }
  }

  // False: there is no such point.
  bool Find(const std::string& strName, size_t* puIndex) const {
    unsigned uId = 0;
    const bool bId = ZuParseId(strName, &uId);
    if (m_bCloud) {
      *puIndex = static_cast<size_t>(uId) - 1;
      return bId && uId > 0 && uId <= points.size();
    }
    const ZuPoint* p = strName.empty() ? nullptr : m_list.Find(String(strName.c_str()));
    if (p == nullptr && bId) p = m_list.TZuListHeader<ZuPoint>::Find(uId);
    if (p == nullptr) return false;
    *puIndex = m_index.at(p);
    return true;
  }

  std::string Label(int iIndex) const {
    if (m_bCloud) return std::to_string(iIndex + 1);
    return PointLabel(*m_points[static_cast<size_t>(iIndex)]);
  }

  ZuCadPlane Plane() const {
    ZuCadPlane plane;
    const std::string strPlane = m_values.bFit ? "fit" : m_values.strPlane;
    const std::string strAxes = strPlane.substr(0, 2);
    double dHeight = 0.0;
    const bool bLevel = strPlane.size() == 2 || (strPlane.size() > 3 && strPlane[2] == ':' &&
                                                 ZuParseNumber(strPlane.substr(3), &dHeight));
    if (strPlane == "fit") return FittedPlane();
    if (bLevel && std::isfinite(dHeight) && strAxes == "xy") return ZuCadPlane::XY(dHeight);
    if (bLevel && std::isfinite(dHeight) && strAxes == "xz") return ZuCadPlane::XZ(dHeight);
    if (bLevel && std::isfinite(dHeight) && strAxes == "yz") return ZuCadPlane::YZ(dHeight);
    const std::vector<std::string> names = PartsOf(strPlane, ',');
    if (names.size() != 3) {
      throw CommandError(kUsage, "--plane \"" + strPlane +
                                     "\" cannot be understood; xy, xz, yz, xy:12.5 at that height, "
                                     "fit or P,Q,R would be right");
    }
    ZuPoint3d corners[3];
    for (size_t k = 0; k < 3; ++k) {
      size_t uIndex = 0;
      if (!Find(names[k], &uIndex)) Fail(kBadInput, "no point \"" + names[k] + "\"");
      corners[k] = points[uIndex];
    }
    if (!ZuCadPlane::Through(corners[0], corners[1], corners[2], &plane)) {
      Fail(kUndetermined, "the points of --plane " + strPlane + " stand in a line");
    }
    return plane;
  }

  // A breakline a line (zu/points/name_line.h).
  std::vector<std::vector<size_t>> Breaklines() const {
    std::vector<std::vector<size_t>> lines;
    if (m_values.strBreaklines.empty()) return lines;
    const std::string strName = NameInMessages(m_values.strBreaklines);
    int iLine = 0;
    for (const std::string& strLine : PartsOf(ReadWholeFile(m_values.strBreaklines), '\n')) {
      ++iLine;
      std::vector<size_t> line;
      std::vector<std::string> names;
      if (!ZuParseNameLine(strLine, &names)) {
        throw CommandError(kBadInput,
                           strName + ":" + std::to_string(iLine) +
                               ": a quote is not closed; \"north corner\" would be right");
      }
      for (const std::string& strPoint : names) {
        line.push_back(0);
        if (!Find(strPoint, &line.back())) {
          throw CommandError(kBadInput, strName + ":" + std::to_string(iLine) + ": no point \"" +
                                            strPoint + "\" in " + NameInMessages(m_values.strFile));
        }
      }
      if (line.size() == 1) {
        throw CommandError(kBadInput, strName + ":" + std::to_string(iLine) +
                                          ": one point; two or more would be right");
      }
      if (!line.empty()) lines.push_back(std::move(line));
    }
    return lines;
  }

  [[noreturn]] void Fail(ExitCode code, const std::string& strWhat) const {
    throw CommandError(code, NameInMessages(m_values.strFile) + ": " + strWhat);
  }

  std::vector<ZuPoint3d> points;

 private:
  ZuCadPlane FittedPlane() const {
    std::vector<ZuFitPoint> observed;
    for (const ZuPoint3d& p : points) {
      observed.push_back({static_cast<unsigned>(observed.size()) + 1, {p.x, p.y, p.z}, {}});
    }
    ZuFitOptions options;
    options.tests.bSnoop = false;
    const ZuPlaneFit fit = ZuFitPlane(observed, options);
    ZuCadPlane plane;
    if (fit.fit.eStatus != ZuAdjustStatus::Good || !ZuCadPlane::Of(fit.plane, &plane)) {
      Fail(kUndetermined, std::string("the points determine no plane (") +
                              ZuAdjustStatusText(fit.fit.eStatus) +
                              "); --plane xy, xz, yz or P,Q,R tells one");
    }
    return plane;
  }

  const MeshValues& m_values;
  bool m_bCloud = false;
  ZuPointList m_list;
  std::map<const ZuPoint*, size_t> m_index;
  std::vector<const ZuPoint*> m_points;
};

Drawing ContourDrawing(const ZuPlaneMesh& mesh, const std::vector<ZuMeshContour>& contours) {
  ZuPoint2d low = mesh.Vertices().front().place, high = low;
  for (const ZuMeshVertex& v : mesh.Vertices()) {
    low = ZuPoint2d(std::min(low.x, v.place.x), std::min(low.y, v.place.y));
    high = ZuPoint2d(std::max(high.x, v.place.x), std::max(high.y, v.place.y));
  }
  const double dScale = kDrawingSize / std::max(high.x - low.x, high.y - low.y);
  const double dMargin = 10.0;
  Drawing drawing((high.x - low.x) * dScale + 2.0 * dMargin,
                  (high.y - low.y) * dScale + 2.0 * dMargin);
  const auto draw = [&](const std::vector<ZuPoint2d>& line, bool bClosed, const Style& style) {
    std::vector<std::pair<double, double>> pixels;
    for (const ZuPoint2d& p : line) {
      pixels.emplace_back(dMargin + (p.x - low.x) * dScale, dMargin + (high.y - p.y) * dScale);
    }
    if (bClosed) pixels.push_back(pixels.front());
    drawing.Polyline(pixels, style);
  };
  for (const ZuMeshRim& rim : mesh.Rims()) {
    std::vector<ZuPoint2d> line;
    for (const int i : rim.vertices) line.push_back(mesh.Vertices()[static_cast<size_t>(i)].place);
    draw(line, true, Pen(Ink::kZero, 1.0));
  }
  for (const ZuMeshContour& contour : contours) {
    draw(contour.line, contour.bClosed, Pen(Ink::kBrown, 1.0));
    const ZuPoint2d& p = contour.line[contour.line.size() / 2];
    drawing.Text(dMargin + (p.x - low.x) * dScale, dMargin + (high.y - p.y) * dScale,
                 SvgNumber(contour.dLevel), 9.0);
  }
  drawing.SetTitle("Contours");
  return drawing;
}

void WriteContours(const MeshValues& values, const ZuPlaneMesh& mesh,
                   const std::vector<ZuMeshContour>& contours, Context& context) {
  std::ostream& stream = context.NewOutput(values.strContours).Stream();
  if (MeshEnding(values.strContours) == ".svg") {
    stream << SvgFileOf(ContourDrawing(mesh, contours));
    return;
  }
  stream << "line,level,closed,x,y,z\n";
  int iLine = 0;
  for (const ZuMeshContour& contour : contours) {
    ++iLine;
    for (const ZuPoint2d& place : contour.line) {
      const ZuPoint3d p = mesh.Plane().ToSpace(place, contour.dLevel);
      stream << iLine << ',' << Shortest(contour.dLevel) << ',' << (contour.bClosed ? 1 : 0) << ','
             << Shortest(p.x) << ',' << Shortest(p.y) << ',' << Shortest(p.z) << '\n';
    }
  }
}

void TellDoubles(const MeshInput& input, const ZuPlaneMesh& mesh, Context& context) {
  Json& doubles = context.Root()["doubles"] = Json::array();
  if (mesh.Doubles().empty()) return;
  for (const ZuMeshDouble& d : mesh.Doubles()) {
    if (!context.WantsRoot()) break;
    doubles.push_back({{"dropped", input.Label(d.iDropped)},
                       {"kept", input.Label(d.iKept)},
                       {"height", d.dHeight}});
  }
  const ZuMeshDouble& first = mesh.Doubles().front();
  context.Warn(Counted(static_cast<long long>(mesh.Doubles().size()), "point") +
               " left out, at the place of another; the first one: " + input.Label(first.iDropped) +
               ", kept " + input.Label(first.iKept));
}

void TellMesh(const ZuPlaneMesh& mesh, Context& context) {
  const ZuMeshFigures figures = mesh.Figures();
  int iHoles = 0, iOutlines = 0;
  double dHoles = 0.0;
  for (const ZuMeshRim& rim : mesh.Rims()) {
    ++(rim.IsHole() ? iHoles : iOutlines);
    if (rim.IsHole()) dHoles -= rim.dArea;
  }
  Json& root = context.Root();
  std::ostream& text = context.Text();
  const auto tell = [&](const char* szKey, Json value, const std::string& strText) {
    std::string strTitle = szKey;
    std::replace(strTitle.begin(), strTitle.end(), '_', ' ');
    strTitle.resize(16, ' ');
    root[szKey] = std::move(value);
    text << strTitle << strText << '\n';
  };
  const auto count = [&](const char* szKey, long long i) { tell(szKey, i, std::to_string(i)); };
  const auto number = [&](const char* szKey, double d) { tell(szKey, d, Fixed(d, 6)); };
  count("vertices", static_cast<long long>(mesh.Vertices().size()));
  count("triangles", static_cast<long long>(mesh.Triangles().size()));
  count("long_triangles", mesh.LongTriangles());
  count("crossings", mesh.Crossings());
  number("crossing_gap", mesh.CrossingGap());
  count("outlines", iOutlines);
  count("holes", iHoles);
  number("hole_area", dHoles);
  number("area", figures.dArea);
  number("surface", figures.dSurface);
  number("volume_above", figures.dVolumeAbove);
  number("volume_below", figures.dVolumeBelow);
  number("longest_edge", figures.dLongestEdge);
  const ZuFrame3d& f = mesh.Plane().GetFrame();
  const auto numbers = [](const _MVector& v) { return Json{v.x, v.y, v.z}; };
  root["plane"] = {{"origin", numbers(f.Origin())},
                   {"x_axis", numbers(f.v1())},
                   {"y_axis", numbers(f.v2())},
                   {"normal", numbers(f.v3())}};
}

void TellContours(const std::vector<ZuMeshContour>& contours, Context& context) {
  Json& list = context.Root()["contours"] = Json::array();
  if (contours.empty()) return;
  TextTable table;
  for (const char* szTitle : {"level", "points", "length"}) table.AddColumn(szTitle);
  table.AddColumn("", TextTable::eLeft);
  for (const ZuMeshContour& c : contours) {
    table.AddRow({Shortest(c.dLevel), std::to_string(c.line.size()), Fixed(c.Length(), 6),
                  c.bClosed ? "closed" : "open"});
    list.push_back({{"level", c.dLevel},
                    {"closed", c.bClosed},
                    {"points", c.line.size()},
                    {"length", c.Length()}});
  }
  context.Text() << '\n';
  table.Write(context.Text());
}

ExitCode RunMesh(const MeshValues& values, Context& context) {
  CheckMeshEnding("-o", values.strOutput, ".ply", ".obj");
  CheckMeshEnding("--contours", values.strContours, ".svg", ".csv");
  if (values.strContours.empty() != (values.dStep == 0.0)) {
    throw CommandError(kUsage, "--step and --contours need each other: --step 0.5 --contours FILE");
  }
  const MeshInput input(values, context);
  ZuMeshOptions options;
  options.dMaxEdge = values.dMaxEdge;
  ZuPlaneMesh mesh;
  const eZuMeshStatus eStatus =
      ZuMakePlaneMesh(input.points, input.Plane(), input.Breaklines(), options, &mesh);
  if (eStatus != eZuMeshOk) input.Fail(kUndetermined, ZuMeshStatusText(eStatus));
  if (mesh.Triangles().empty()) {
    input.Fail(kUndetermined, "no triangle has all edges up to " + Shortest(values.dMaxEdge) +
                                  "; a longer --max-edge would be right");
  }
  std::vector<ZuMeshContour> contours;
  if (values.dStep > 0.0) {
    const eZuMeshStatus eContours = ZuCalcContours(mesh, values.dStep, &contours);
    if (eContours != eZuMeshOk) input.Fail(kUndetermined, ZuMeshStatusText(eContours));
  }
  TellMesh(mesh, context);
  TellDoubles(input, mesh, context);
  TellContours(contours, context);
  if (context.WantsReport()) context.Report().drawings = {ContourDrawing(mesh, contours)};
  if (!values.strContours.empty()) WriteContours(values, mesh, contours, context);
  if (values.strOutput.empty()) return kGood;
  std::ostream& stream = context.NewOutput(values.strOutput).Stream();
  if (MeshEnding(values.strOutput) == ".obj") {
    ZuExportMeshObj(stream, mesh);
  } else {
    ZuExportMeshPly(stream, mesh, values.bBinary);
  }
  return kGood;
}

}  // namespace

Runner DefineMesh(Options& options) {
  auto pValues = std::make_shared<MeshValues>();
  options.Positional(
      "FILE", &pValues->strFile,
      "coordinate file, or a cloud where its name ends in .zpc, .pts, .ply, .las, .e57 or .xyz");
  options.Option("--plane", "PLANE", &pValues->strPlane,
                 "plane under the mesh: xy, xz or yz, xy:12.5 at that height, fit to the points, "
                 "or P,Q,R: origin P, x axis to Q, R at a positive y");
  options.Flag("--fit", &pValues->bFit, "the same as --plane fit");
  options.Option("--breaklines", "FILE", &pValues->strBreaklines,
                 "lines of point names that are edges of the mesh; of a cloud the numbers of its "
                 "points, from 1");
  options.Option("--max-edge", "L", &pValues->dMaxEdge,
                 "drop triangles with an edge that is longer than L in the plane");
  options.Above(0.0);
  options.Option("--step", "S", &pValues->dStep, "contours every S along the normal");
  options.Above(0.0);
  options.Output("--contours", "FILE", &pValues->strContours, "contours as .svg or .csv");
  options.Flag("--binary", &pValues->bBinary, "write binary PLY");
  AddPointOptions(options, &pValues->format);
  options.Output("-o,--output", "OUT", &pValues->strOutput, "mesh as .ply or .obj");
  return [pValues](Context& context) { return RunMesh(*pValues, context); };
}

}  // namespace cli
