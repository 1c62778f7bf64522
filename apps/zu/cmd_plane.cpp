// zu plane: the best-fit plane of a point list, by orthogonal distances or as the core fits it.
#include <algorithm>
#include <cmath>
#include <filesystem>
#include <memory>
#include <utility>

#include "commands.h"
#include "plane_cloud.h"
#include "plane_orthogonal.h"
#include "plane_values.h"
#include "point_input.h"
#include "report_output.h"
#include "text_table.h"
#include "trafo_check.h"
#include "trafo_report.h"
#include "zu/foundation/logfile.h"
#include "zu/rectify/calc_plane.h"

namespace cli {
namespace {

using Values = PlaneValues;

struct Figures {
  double dRms = 0.0;
  double dLargest = 0.0;
  std::string strLargest;  // its point
};

// The signed distances stand in m_dRedu1 of the foot points.
Figures FiguresOf(const ZuPointList& feet) {
  Figures figures;
  for (const ZuPoint* p = feet.First(); p != nullptr; p = p->Next()) {
    const double dDistance = std::fabs(p->m_dRedu1);
    figures.dRms += dDistance * dDistance;
    if (dDistance <= figures.dLargest && p != feet.First()) continue;
    figures.dLargest = dDistance;
    figures.strLargest = PointLabel(*p);
  }
  figures.dRms = std::sqrt(figures.dRms / feet.Count());
  return figures;
}

bool IsFinite(const ZuPoint& p) {
  return std::isfinite(p.m_dX) && std::isfinite(p.m_dY) && std::isfinite(p.m_dZ);
}

bool IsFinite(ZuCalcPlane& calc) {
  const ZuPlane& plane = calc.GetPlane();
  for (const double d : {plane.A(), plane.B(), plane.C(), plane.D(), calc.GetZuPlaneSigma0(),
                         calc.GetZuPlaneMediumPointDist()}) {
    if (!std::isfinite(d)) return false;
  }
  return true;
}

[[noreturn]] void FailUndetermined(const Values& values, const std::string& strWhat) {
  throw CommandError(kUndetermined, NameInMessages(values.strPoints) + ": " + strWhat);
}

// Throws CommandError (undetermined) where there is no plane to trust.
void Fit(const Values& values, ZuPointList* pPoints, ZuCalcPlane* pCalc) {
  for (const ZuPoint* p = pPoints->First(); p != nullptr; p = p->Next()) {
    if (IsFinite(*p)) continue;
    FailUndetermined(values, "the coordinates of point " + PointLabel(*p) +
                                 " are not finite; --without " + PointLabel(*p) +
                                 " does without it");
  }
  if (!pCalc->CalcPlaneFromFilteredPoints(pPoints, true, values.bForce)) {
    if (pCalc->GetZuPlaneStatus() == ZuCalcPlane::TooLessPoints) {
      FailUndetermined(values, "holds " + Counted(pPoints->Count(), "point") + ", a plane needs 3");
    }
    FailUndetermined(values,
                     "the points stand in one place or on one line\n"
                     "three that span a triangle are needed; --force takes points "
                     "close to a line all the same");
  }
  if (!IsFinite(*pCalc) || AreCollinear(*pPoints)) {
    FailUndetermined(values,
                     "the points do not determine a plane; three that span a triangle are needed");
  }
}

std::string Term(double dCoefficient, const char* szUnknown) {
  return std::string(dCoefficient < 0.0 ? "- " : "+ ") + Fixed(std::fabs(dCoefficient), 12) +
         szUnknown;
}

void WriteText(ZuCalcPlane& calc, std::ostream& stream) {
  const ZuPlane& plane = calc.GetPlane();
  const ZuPointList& feet = *calc.GetPointsInZuPlane();
  const Figures figures = FiguresOf(feet);
  const int iDecimals = DecimalsFor(figures.dLargest);
  stream << Counted(feet.Count(), "point") << ", largest distance "
         << Fixed(figures.dLargest, iDecimals) << "\n\n"
         << Fixed(plane.A(), 12) << " x " << Term(plane.B(), " y ") << Term(plane.C(), " z ")
         << Term(plane.D(), " = 0") << "\n\n"
         << "RMS              " << Fixed(figures.dRms, iDecimals) << '\n'
         << "largest          " << Fixed(figures.dLargest, iDecimals) << "  point "
         << figures.strLargest << '\n'
         << "medium distance  " << Fixed(calc.GetZuPlaneMediumPointDist(), iDecimals)
         << "  root of the sum of squares\n"
         << "sigma0           " << Fixed(calc.GetZuPlaneSigma0(), iDecimals)
         << "  of the last point alone\n\n";

  std::vector<const ZuPoint*> order;
  for (const ZuPoint* p = feet.First(); p != nullptr; p = p->Next()) order.push_back(p);
  std::stable_sort(order.begin(), order.end(), [](const ZuPoint* a, const ZuPoint* b) {
    return std::fabs(a->m_dRedu1) > std::fabs(b->m_dRedu1);
  });
  TextTable table;
  for (const char* szTitle : {"point", "deviation"}) table.AddColumn(szTitle);
  for (const ZuPoint* p : order) table.AddRow({PointLabel(*p), Fixed(p->m_dRedu1, iDecimals)});
  table.Write(stream);
}

void FillJson(ZuCalcPlane& calc, Json* pRoot) {
  const ZuPlane& plane = calc.GetPlane();
  const Figures figures = FiguresOf(*calc.GetPointsInZuPlane());
  Json& root = *pRoot;
  root["normal"] = {plane.A(), plane.B(), plane.C()};
  root["d"] = plane.D();
  root["sigma0"] = calc.GetZuPlaneSigma0();
  root["medium_distance"] = calc.GetZuPlaneMediumPointDist();
  root["rms"] = RmsJson(figures.dRms);
  root["largest"] = figures.dLargest;
  Json points = Json::array();
  for (const ZuPoint* p = calc.GetPointsInZuPlane()->First(); p != nullptr; p = p->Next()) {
    Json point = {{"id", p->GetId()}};
    if (!p->GetName().empty()) point["name"] = p->GetName().chars();
    point["deviation"] = p->m_dRedu1;
    points.push_back(std::move(point));
  }
  root["points"] = std::move(points);
}

// The library appends reports to a log; the file is replaced as a whole, its old reports in front.
void WriteLog(const std::string& strLog, ZuCalcPlane& calc, Context& context) {
  OutputFile& output = context.NewOutput(strLog);
  std::ostream& file = output.Stream();
  if (!output.IsStandardOutput() && std::filesystem::exists(strLog)) file << ReadWholeFile(strLog);
  ZuLogfile log;
  static_cast<std::ios&>(log).rdbuf(file.rdbuf());
  log.WriteSmallHeader();
  calc.WriteLogfile(log);
  if (!log) file.setstate(std::ios::badbit);
}

// The points without part, out of the list; the check points are returned.
ZuPointList TakeOut(const PointRoles& roles, ZuPointList* pPoints) {
  ZuPointList checks, rest;
  for (const ZuPoint* p = pPoints->First(); p != nullptr; p = p->Next()) {
    if (roles.TakesPart(p->GetId())) rest.Add(*p);
    if (roles.IsCheck(p->GetId())) checks.Add(*p);
  }
  *pPoints = rest;
  return checks;
}

using Lengths = std::vector<std::pair<std::string, double>>;

// Check points against the plane, and what stands out where nothing was tested.
ExitCode TellChoice(const Values& values, const PointRoles& roles, const ZuPlane& plane,
                    const ZuPointList& points, const ZuPointList& checkPoints, Lengths lengths,
                    Context& context, ExitCode eCode) {
  std::vector<Deviation> checks;
  for (const ZuPoint* p = checkPoints.First(); p != nullptr; p = p->Next()) {
    checks.push_back({p, {plane.Dist(*p), 0.0, 0.0}});
  }
  roles.Write(checks, 1, context.Text());
  roles.AddJson(checks, 1, &context.Root());
  if (values.bAxis || values.bAll) {
    std::vector<Residual> residuals;
    for (const auto& length : lengths) residuals.push_back({length.first, length.second, 0.0, 0.0});
    WarnOfWrongPoints(residuals, {points, points, nullptr}, context);
  }
  AddLengths(checks, &lengths);
  return WithinTolerance(values.choice, lengths, context, eCode);
}

ExitCode RunAxis(const Values& values, ZuPointList* pPoints, const PointRoles& roles,
                 const ZuPointList& checkPoints, Context& context) {
  ZuCalcPlane calc;
  Fit(values, pPoints, &calc);
  if (context.WantsRoot()) {
    FillJson(calc, &context.Root());
    context.SetStatus(static_cast<int>(calc.GetZuPlaneStatus()), calc.GetZuPlaneStatusAsText());
    context.Report().AddPlaces(*pPoints);
  }
  WriteText(calc, context.Text());
  if (!values.strLog.empty()) WriteLog(values.strLog, calc, context);
  if (!values.strOutput.empty()) {
    WritePoints(calc.GetPointsInZuPlane(), values.format, &context.NewOutput(values.strOutput));
  }
  Lengths lengths;
  for (const ZuPoint* p = calc.GetPointsInZuPlane()->First(); p != nullptr; p = p->Next()) {
    lengths.emplace_back(PointLabel(*p), std::fabs(p->m_dRedu1));
  }
  return TellChoice(values, roles, calc.GetPlane(), *pPoints, checkPoints, lengths, context, kGood);
}

ExitCode Run(const Values& values, Context& context) {
  if (IsPlaneCloud(values)) return RunPlaneCloud(values, context);
  ZuPointList points;
  ReadPointsOrRows(values.strPoints, values.format, context, &points);
  const PointRoles roles(values.choice, NameInMessages(values.strPoints), {&points});
  ZuPointList checkPoints;
  if (values.choice.IsAsked()) checkPoints = TakeOut(roles, &points);
  if (values.bAxis) return RunAxis(values, &points, roles, checkPoints, context);
  CheckAccuracies(NameInMessages(values.strPoints), points, values.format.strColumns);
  OrthogonalPlane plane(values, points);
  const ExitCode eCode = plane.Report(context);
  if (!values.strLog.empty()) WriteLog(values.strLog, plane.Log(), context);
  return TellChoice(values, roles, plane.Plane(), points, checkPoints, plane.Distances(), context,
                    eCode);
}

}  // namespace

Runner DefinePlane(Options& options) {
  auto pValues = std::make_shared<Values>();
  options.Positional("POINTS", &pValues->strPoints,
                     "coordinate file, or a cloud (.zpc, .ply, .las, .e57, .pts, .xyz)");
  options.Flag("--axis", &pValues->bAxis,
               "residuals along the axis closest to the normal, as the library's fit has them");
  options.Flag("--force", &pValues->bForce, "with --axis: take points that are close to a line");
  options.Flag("--all", &pValues->bAll, "set no point aside");
  options.AlsoStrict("end with exit code 1 where points were set aside");
  AddAdjustOptions(options, &pValues->adjust);
  AddPointChoice(options, &pValues->choice);
  options.Output("--log", "FILE", &pValues->strLog, "append the log of the fit to this file");
  AddPointOptions(options, &pValues->format);
  options.Output("-o,--output", "FEET", &pValues->strOutput,
                 "coordinate file of the foot points on the plane");
  return [pValues, options](Context& context) {
    for (const char* szName : {"--sigma", "--alpha", "--alpha-total", "--all"}) {
      if (!pValues->bAxis || !options.Given(szName)) continue;
      throw CommandError(kUsage, std::string("--axis tests nothing: not together with ") + szName);
    }
    if (pValues->bForce && !pValues->bAxis) {
      throw CommandError(kUsage,
                         "--force goes with --axis; the orthogonal fit takes every set of "
                         "points that determines a plane");
    }
    return Run(*pValues, context);
  };
}

}  // namespace cli
