#include "plane_orthogonal.h"

#include <algorithm>
#include <cmath>

#include "adjust_report.h"
#include "report_output.h"
#include "svg.h"
#include "table_decimals.h"
#include "text_table.h"
#include "trafo_report.h"

namespace cli {
namespace {

constexpr char kTitle[] = "Plane through points";

double Distance(const ZuFittedPoint& p) { return std::fabs(p.dDistance); }

std::string Term(double dCoefficient, const char* szUnknown) {
  return std::string(dCoefficient < 0.0 ? "- " : "+ ") + Fixed(std::fabs(dCoefficient), 12) +
         szUnknown;
}

constexpr double kBody = 0.1;  // spread across a line of points that stand about none [-]

std::string Test(const ZuPointTest& test) {
  return std::isfinite(test.dLimit) ? Fixed(test.adW[0], 2) : "-";
}

std::string Finite(double d, int iDecimals) { return std::isfinite(d) ? Fixed(d, iDecimals) : "-"; }

}  // namespace

std::string EquationOf(const ZuPlane& plane) {
  return Fixed(plane.A(), 12) + " x " + Term(plane.B(), " y ") + Term(plane.C(), " z ") +
         Term(plane.D(), " = 0");
}

OrthogonalPlane::OrthogonalPlane(const PlaneValues& values, const ZuPointList& points)
    : m_values(values), m_points(points) {
  Fit();
  ZuPointList log(points);
  size_t i = 0;
  for (ZuPoint* p = log.First(); p != nullptr; p = p->Next(), ++i) {
    const double* const pd = m_plane.fit.points[i].adResidual;
    p->m_dDX = -pd[0];
    p->m_dDY = -pd[1];
    p->m_dDZ = -pd[2];
  }
  m_log.Take(log);
}

void OrthogonalPlane::Fit() {
  const auto points = FitPointsOf(m_points, m_values.format.strColumns);
  ZuFitOptions options;
  options.dSigma = m_values.adjust.dSigma;
  options.tests = TestsOf(m_values.adjust, !m_values.bAll);
  m_plane = ZuFitPlane(points, options);
  if (m_plane.fit.eStatus != ZuAdjustStatus::Good) Fail();
  size_t i = 0;
  for (const ZuPoint* p = m_points.First(); p != nullptr; p = p->Next(), ++i) {
    m_rows.push_back({p, &m_plane.fit.points[i]});
  }
  m_sorted = m_rows;
  std::stable_sort(m_sorted.begin(), m_sorted.end(), [](const Row& a, const Row& b) {
    if (a.pFitted->bUsed != b.pFitted->bUsed) return !a.pFitted->bUsed;
    return Distance(*a.pFitted) > Distance(*b.pFitted);
  });
}

namespace {

// What no point decides, with the names of points in place of their ids.
std::string FreeByNames(const ZuFitResult& fit, const ZuPointList& points) {
  const size_t uPoints = fit.strFree.rfind("points ");
  if (fit.freePoints.empty() || uPoints == std::string::npos) return fit.strFree;
  std::string strNames;
  for (size_t i = 0; i < fit.freePoints.size(); ++i) {
    strNames += i == 0 ? "" : i + 1 == fit.freePoints.size() ? " and " : ", ";
    strNames += LabelOf(fit.freePoints[i], points);
  }
  return fit.strFree.substr(0, uPoints + 7) + strNames;
}

}  // namespace

void OrthogonalPlane::Fail() const {
  const std::string strFile = NameInMessages(m_values.strPoints) + ": ";
  switch (m_plane.fit.eStatus) {
    case ZuAdjustStatus::TooFew:
      throw CommandError(kUndetermined, strFile + "holds " + Counted(m_points.Count(), "point") +
                                            ", a plane needs 3");
    case ZuAdjustStatus::RankDefect: {
      const bool bBody = SpreadAcrossLine(m_points) > kBody;
      throw CommandError(
          kUndetermined,
          strFile + "the points do not determine a plane: " +
              (bBody ? "they spread as far across one as along it"
                     : "in one place or on one line as far as they are exact") +
              "\nfree is: " + FreeByNames(m_plane.fit, m_points) +
              (bBody ? "\npoints that are farther apart in the plane than off it are needed"
                     : "\npoints that span a triangle are needed"));
    }
    default:
      throw CommandError(kUndetermined,
                         strFile + ZuAdjustStatusText(m_plane.fit.eStatus) +
                             "; coordinates of finite size that stand about a plane are needed");
  }
}

std::vector<std::pair<std::string, double>> OrthogonalPlane::Distances() const {
  std::vector<std::pair<std::string, double>> distances;
  for (const Row& row : m_rows) {
    if (row.pFitted->bUsed) distances.emplace_back(PointLabel(*row.pPoint), Distance(*row.pFitted));
  }
  return distances;
}

double OrthogonalPlane::TestLimit() const {
  for (const Row& row : m_rows) {
    if (row.pFitted->bUsed) return std::sqrt(row.pFitted->test.dLimit);
  }
  return std::sqrt(m_rows.front().pFitted->test.dLimit);
}

std::string OrthogonalPlane::Verdict() const {
  const ZuFitResult& fit = m_plane.fit;
  const int iUsed = static_cast<int>(m_rows.size()) - fit.iSetAside;
  std::vector<Tested> tested;
  for (const Row& row : m_rows) tested.push_back({PointLabel(*row.pPoint), &row.pFitted->test});
  return Counted(iUsed, "point") + " of " + std::to_string(m_rows.size()) +
         (iUsed == 1 ? " stands" : " stand") + " within " +
         Fixed(fit.dFlatness, DecimalsFor(fit.dFlatness)) + " " + m_values.adjust.strUnit +
         " about the plane, RMS " + Fixed(fit.dRms, DecimalsFor(fit.dRms)) + " " +
         m_values.adjust.strUnit + "; " +
         (fit.iSetAside == 0 ? std::string("none") : std::to_string(fit.iSetAside)) +
         (fit.iSetAside == 1 ? " was" : " were") + " set aside" +
         (m_values.bAll ? ", as all count" : "") + "; " +
         TestVerdict(tested, m_values.adjust.strUnit) + ".";
}

void OrthogonalPlane::WriteText(std::ostream& stream) const {
  const ZuFitResult& fit = m_plane.fit;
  double dLargest = 0.0;
  const Row* pLargest = &m_rows.front();
  for (const Row& row : m_rows) {
    if (!row.pFitted->bUsed || Distance(*row.pFitted) <= dLargest) continue;
    dLargest = Distance(*row.pFitted);
    pLargest = &row;
  }
  const int iDecimals = DecimalsFor(dLargest);
  stream << Counted(static_cast<long long>(m_rows.size()), "point");
  if (fit.iSetAside > 0) stream << ", " << fit.iSetAside << " of them set aside";
  stream << ", largest distance " << Fixed(dLargest, iDecimals) << "\n\n"
         << EquationOf(m_plane.plane) << "\nsd of A, B, C, D";
  for (const double d : m_plane.adSd) stream << "  " << ShortLength(d);
  stream << "\n\nsigma0     " << SigmaText(fit.dSigma0, fit.sigmaOfResults, fit.iRedundancy)
         << "\nRMS        " << Fixed(fit.dRms, iDecimals) << "\nflatness   "
         << Fixed(fit.dFlatness, iDecimals) << "  from the lowest to the highest point\nlargest    "
         << Fixed(dLargest, iDecimals) << "  point " << PointLabel(*pLargest->pPoint)
         << "\ntest       " << ZuSigmaKindText(fit.sigmaOfTests) << ", limit of w "
         << Finite(TestLimit(), 2) << "\n\n";
  TextTable table;
  for (const char* szTitle : {"point", "deviation", "w", "r", "nabla"}) table.AddColumn(szTitle);
  table.AddColumn("", TextTable::eLeft);
  for (const Row& row : m_sorted) {
    const ZuFittedPoint& p = *row.pFitted;
    table.AddRow({PointLabel(*row.pPoint), Fixed(p.dDistance, iDecimals), Test(p.test),
                  p.bUsed ? Fixed(p.test.Redundancy(), 3) : "-",
                  p.bUsed ? Finite(p.test.adNabla[0], iDecimals) : "-",
                  !p.bUsed              ? "set aside"
                  : p.test.IsRejected() ? "beyond the limit"
                  : !p.test.bControlled ? "not controlled"
                                        : ""});
  }
  table.Write(stream);
}

void OrthogonalPlane::FillJson(Json* pRoot) const {
  Json& root = *pRoot;
  const ZuFitResult& fit = m_plane.fit;
  const ZuPlane& plane = m_plane.plane;
  root["normal"] = {plane.A(), plane.B(), plane.C()};
  root["d"] = plane.D();
  root["sd"] = std::vector<double>(m_plane.adSd, m_plane.adSd + 4);
  root["sigma0"] = fit.dSigma0;
  root["sigma_kind"] = ZuSigmaKindText(fit.sigmaOfResults);
  root["test_kind"] = ZuSigmaKindText(fit.sigmaOfTests);
  root["redundancy"] = fit.iRedundancy;
  AddParameterJson({"a", "b", "c", "d"}, {plane.A(), plane.B(), plane.C(), plane.D()},
                   m_plane.adCov, &root);
  root["centre"] = std::vector<double>(m_plane.adCentre, m_plane.adCentre + 3);
  root["height"] = {{"value", m_plane.dHeight}, {"sd", m_plane.dHeightSd}};
  root["flatness"] = fit.dFlatness;
  root["rms"] = RmsJson(fit.dRms);
  double dSum = 0.0, dLargest = 0.0;
  Json points = Json::array(), aside = Json::array(), free = Json::array();
  for (const Row& row : m_rows) {
    const ZuFittedPoint& p = *row.pFitted;
    Json point = {{"id", row.pPoint->GetId()}};
    if (!row.pPoint->GetName().empty()) point["name"] = row.pPoint->GetName().chars();
    if (!p.bUsed) {
      Json entry = {{"id", row.pPoint->GetId()}, {"name", row.pPoint->GetName().chars()}};
      entry["test"] = p.test.dTest;
      entry["error"] = p.dDistance;
      aside.push_back(std::move(entry));
    } else {
      dSum += p.dDistance * p.dDistance;
      dLargest = std::max(dLargest, Distance(p));
      if (!p.test.bControlled) free.push_back(JsonLabel(*row.pPoint));
    }
    point["deviation"] = p.dDistance;
    point["used"] = p.bUsed;
    AddTestJson(&p.test, &point);
    points.push_back(std::move(point));
  }
  root["medium_distance"] = std::sqrt(dSum);
  root["largest"] = dLargest;
  root["points"] = std::move(points);
  root["set_aside"] = std::move(aside);
  root["not_controlled"] = std::move(free);
  root["free_direction"] = Json();
}

void OrthogonalPlane::WriteFeet(Context& context) const {
  ZuPointList feet;
  for (const Row& row : m_rows) {
    ZuPoint foot(*row.pPoint);
    foot.m_dX += row.pFitted->adResidual[0];
    foot.m_dY += row.pFitted->adResidual[1];
    foot.m_dZ += row.pFitted->adResidual[2];
    foot.m_dRedu1 = row.pFitted->dDistance;
    feet.Add(foot);
  }
  WritePoints(&feet, m_values.format, &context.NewOutput(m_values.strOutput));
}

AdjustReport OrthogonalPlane::Page() const {
  const ZuFitResult& fit = m_plane.fit;
  const ZuPlane& plane = m_plane.plane;
  AdjustReport report;
  report.strTitle = kTitle;
  report.strVerdict = Verdict();
  report.strUnit = m_values.adjust.strUnit;
  report.facts = {{"sigma0", SigmaText(fit.dSigma0, fit.sigmaOfResults, fit.iRedundancy)},
                  {"RMS of the distances", Significant(fit.dRms)},
                  {"flatness, lowest to highest point", Significant(fit.dFlatness)},
                  {"test", std::string(ZuSigmaKindText(fit.sigmaOfTests)) + ", limit of w " +
                               Finite(TestLimit(), 2)}};
  report.strParameters = "A x + B y + C z + D = 0, normal of length 1.";
  const char* const names[] = {"A", "B", "C", "D"};
  const double values[] = {plane.A(), plane.B(), plane.C(), plane.D()};
  for (int i = 0; i < 4; ++i) {
    report.parameters.push_back({names[i], Fixed(values[i], i < 3 ? 12 : 6),
                                 Significant(m_plane.adSd[i]), i < 3 ? "-" : report.strUnit});
  }
  const std::string strIn = " [" + report.strUnit + "]";
  AdjustReport::Table table = {
      "Points",
      "The longest distance first, those set aside before the others. r: redundancy number; nabla: "
      "smallest error that the test finds; without it: distance from the plane of the others.",
      {{"point"},
       {"distance" + strIn},
       {"w"},
       {"r"},
       {"nabla" + strIn},
       {"without it" + strIn},
       {"", true}},
      {}};
  const int iDecimals = DecimalsFor(std::max(fit.dFlatness, 1e-300));
  for (const Row& row : m_sorted) {
    const ZuFittedPoint& p = *row.pFitted;
    table.rows.push_back({PointLabel(*row.pPoint), Fixed(p.dDistance, iDecimals), Test(p.test),
                          p.bUsed ? Fixed(p.test.Redundancy(), 3) : "-",
                          p.bUsed ? Finite(p.test.adNabla[0], iDecimals) : "-",
                          Finite(p.test.adLeaveOneOut[0], iDecimals), p.bUsed ? "" : "set aside"});
  }
  report.tables.push_back(std::move(table));

  // In the plane: u is horizontal as far as there is a horizontal direction, v normal to it.
  double u[3] = {-plane.B(), plane.A(), 0.0};
  const double dLength = std::hypot(u[0], u[1]);
  const bool bLevel = !(dLength > 1e-6);
  for (double& d : u) d = bLevel ? 0.0 : d / dLength;
  if (bLevel) u[0] = 1.0;
  const double n[3] = {plane.A(), plane.B(), plane.C()};
  const double v[3] = {n[1] * u[2] - n[2] * u[1], n[2] * u[0] - n[0] * u[2],
                       n[0] * u[1] - n[1] * u[0]};
  ReportView view = {"Distances over the plane",
                     "u, in the plane",
                     "v, in the plane",
                     "Arrows up: points on the side of the normal; as long as their distance from "
                     "the plane. Origin in the centre of the points.",
                     {}};
  for (const Row& row : m_rows) {
    const double x = row.pPoint->m_dX - m_plane.adCentre[0];
    const double y = row.pPoint->m_dY - m_plane.adCentre[1];
    const double z = row.pPoint->m_dZ - m_plane.adCentre[2];
    ReportView::Item item;
    item.x = x * u[0] + y * u[1] + z * u[2];
    item.y = x * v[0] + y * v[1] + z * v[2];
    item.dy = row.pFitted->dDistance;
    item.bUsed = row.pFitted->bUsed;
    item.strLabel = PointLabel(*row.pPoint);
    view.items.push_back(std::move(item));
    if (row.pFitted->bUsed) report.w.push_back(row.pFitted->test.adW[0]);
  }
  report.views.push_back(std::move(view));
  report.dLimit = TestLimit();
  report.strTest = std::string("w, ") + ZuSigmaKindText(fit.sigmaOfTests);
  report.inputs = {{"points", NameInMessages(m_values.strPoints)}};
  return report;
}

ExitCode OrthogonalPlane::Report(Context& context) {
  const ZuFitResult& fit = m_plane.fit;
  if (context.WantsRoot()) FillJson(&context.Root());
  WriteText(context.Text());
  if (!m_values.strOutput.empty()) WriteFeet(context);
  if (context.WantsReport()) context.Report().report = Page();
  return context.IsStrict() && fit.iSetAside > 0 ? kNotAcceptable : kGood;
}

}  // namespace cli
