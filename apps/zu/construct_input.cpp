#include "construct_input.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "adjust_options.h"
#include "point_choice.h"
#include "report_output.h"
#include "svg.h"
#include "table_decimals.h"
#include "text_table.h"
#include "zu/adjust/fit_primitives.h"
#include "zu/foundation/strict_number.h"

namespace cli {
namespace {

constexpr char kOutputColumns[] = "idname,x,y,z";
constexpr int kFullDigits = 15;  // behind which numbers are noise

Json Numbers(const _MVector& v) { return {v.x, v.y, v.z}; }

std::string Coordinates(const _MVector& v) {
  return Shortest(v.x) + "  " + Shortest(v.y) + "  " + Shortest(v.z);
}

}  // namespace

void AddConstructOptions(Options& options, ConstructValues* pValues) {
  options.Positional("POINTS", &pValues->strPoints, "coordinate file");
  options.Option(
      "--plane", "PLANE", &pValues->strPlane,
      "plane to construct in: xy, xz or yz at the mean height of the points, fit to them, "
      "or a local system P,Q,R: origin P, x axis to Q, R at a positive y");
  AddPointOptions(options, &pValues->format);
  options.Output("-o,--output", "OUT", &pValues->strOutput,
                 "coordinate file of the points constructed, columns idname,x,y,z");
}

void AddUseOption(Options& options, ConstructValues* pValues, const char* szHelp) {
  options.Option("--points", "P,Q,...", &pValues->strUse, szHelp);
}

void AddFitOptions(Options& options, ConstructValues* pValues) {
  options.Option("--sigma", "S", &pValues->dSigma,
                 "standard deviation of a coordinate in the plane; the residuals tell it without");
  options.Above(0.0);
  options.Option("--tolerance", "T", &pValues->dLimit,
                 "exit code 1 where a residual is longer than T");
  options.Above(0.0);
}

std::vector<std::string> PartsOf(const std::string& strText, char cSeparator) {
  std::vector<std::string> parts;
  size_t uStart = 0;
  for (size_t uEnd = 0; uEnd != std::string::npos; uStart = uEnd + 1) {
    uEnd = strText.find(cSeparator, uStart);
    parts.push_back(strText.substr(uStart, uEnd - uStart));
  }
  return parts;
}

Construction::Construction(const ConstructValues& values, Context& context)
    : m_values(values), m_context(context) {
  ReadPoints(values.strPoints, values.format, context, &m_points);
  GiveCommonIds("", context, &m_points, nullptr);
  if (!context.WantsReport()) return;
  context.Report().AddPlaces(m_points);
  context.Report().bAllPlaces = true;
}

const ZuPoint& Construction::Find(const std::string& strName) const {
  const ZuPoint* p = strName.empty() ? nullptr : m_points.Find(String(strName.c_str()));
  unsigned uId = 0;
  if (p == nullptr && ZuParseId(strName, &uId)) p = m_points.TZuListHeader<ZuPoint>::Find(uId);
  if (p != nullptr) return *p;
  throw CommandError(kBadInput, NameInMessages(m_values.strPoints) + ": no point \"" + strName +
                                    "\"" + PointHint(strName, {&m_points}));
}

PointRefs Construction::FindAll(const std::string& strNames, int iCount,
                                const char* szOption) const {
  PointRefs points;
  for (const std::string& strName : PartsOf(strNames, ',')) points.push_back(&Find(strName));
  if (iCount > 0 && points.size() != static_cast<size_t>(iCount)) {
    throw CommandError(kUsage, std::string(szOption) + " names " +
                                   Counted(static_cast<long long>(points.size()), "point") + "; " +
                                   std::to_string(iCount) + " would be right");
  }
  return points;
}

PointRefs Construction::Used() const {
  if (!m_values.strUse.empty()) return FindAll(m_values.strUse, 0, "--points");
  PointRefs points;
  for (const ZuPoint* p = m_points.First(); p != nullptr; p = p->Next()) points.push_back(p);
  return points;
}

void Construction::FitPlane(const PointRefs& points) {
  ZuPointList list;
  for (const ZuPoint* p : points) list.Add(*p);
  ZuFitOptions options;
  options.tests.bSnoop = false;
  const ZuPlaneFit fit = ZuFitPlane(FitPointsOf(list, m_values.format.strColumns), options);
  if (fit.fit.eStatus == ZuAdjustStatus::Good && ZuCadPlane::Of(fit.plane, &m_plane)) return;
  throw CommandError(kUndetermined, NameInMessages(m_values.strPoints) +
                                        ": the points determine no plane (" +
                                        ZuAdjustStatusText(fit.fit.eStatus) +
                                        ")\n--plane xy, or three points that span one, would be "
                                        "right");
}

void Construction::ChoosePlane(const PointRefs& points) {
  m_bPlane = true;
  ZuPoint3d mean;
  const ZuPoint3d first(*points.front());
  for (const ZuPoint* p : points) {
    mean += (ZuPoint3d(*p) - first) / static_cast<double>(points.size());
  }
  mean += first.AsVector();
  const std::string& strPlane = m_values.strPlane;
  if (strPlane == "xy") {
    m_plane = ZuCadPlane::XY(mean.z);
  } else if (strPlane == "xz") {
    m_plane = ZuCadPlane::XZ(mean.y);
  } else if (strPlane == "yz") {
    m_plane = ZuCadPlane::YZ(mean.x);
  } else if (strPlane == "fit") {
    FitPlane(points);
  } else if (strPlane.find(',') != std::string::npos) {
    const PointRefs p = FindAll(strPlane, 3, "--plane");
    if (!ZuCadPlane::Through(ZuPoint3d(*p[0]), ZuPoint3d(*p[1]), ZuPoint3d(*p[2]), &m_plane)) {
      throw CommandError(kUndetermined, NameInMessages(m_values.strPoints) +
                                            ": the points of --plane " + strPlane +
                                            " stand in a line");
    }
  } else {
    throw CommandError(kUsage, "--plane \"" + strPlane +
                                   "\" cannot be understood; xy, xz, yz, fit or P,Q,R would be "
                                   "right");
  }
  for (const ZuPoint* p : points) {
    double dHeight = 0.0;
    m_plane.ToPlane(ZuPoint3d(*p), &dHeight);
    m_dOff = std::max(m_dOff, std::fabs(dHeight));
  }
}

ZuPoint2d Construction::InPlane(const ZuPoint& point) const {
  return m_plane.ToPlane(ZuPoint3d(point));
}

std::vector<ZuPoint2d> Construction::InPlane(const PointRefs& points) const {
  std::vector<ZuPoint2d> flat;
  for (const ZuPoint* p : points) flat.push_back(InPlane(*p));
  return flat;
}

double Construction::Turned(double dAngle) {
  const double d = std::remainder(0.5 * std::numbers::pi - dAngle, 2.0 * std::numbers::pi);
  return d < 0.0 ? d + 2.0 * std::numbers::pi : d;
}

void Construction::Check(eCadStatus eStatus, const char* szWhat) const {
  if (eStatus == eCadOk) return;
  throw CommandError(kUndetermined, NameInMessages(m_values.strPoints) + ": no " + szWhat + ": " +
                                        ZuCadStatusText(eStatus));
}

void Construction::AddPoint(const std::string& strName, const ZuPoint3d& p) {
  ZuPoint point(static_cast<unsigned>(m_made.Count()) + 1, p.x, p.y, p.z);
  point.SetName(strName.c_str());
  m_made.Add(point);
}

void Construction::Tell(const char* szKey, const std::string& strText, Json value) {
  std::string strTitle = szKey;
  if (strTitle.ends_with("_rad")) strTitle.erase(strTitle.size() - 4);
  std::replace(strTitle.begin(), strTitle.end(), '_', ' ');
  TellLine(strTitle, strText);
  m_facts[szKey] = std::move(value);
}

void Construction::TellLength(const char* szKey, double d, double dSd) {
  Tell(szKey, FixedLength(d, 6) + (dSd > 0.0 ? "  sd " + ShortLength(dSd) : ""), d);
  m_facts[std::string(szKey) + "_sd"] = dSd > 0.0 ? Json(dSd) : Json();
}

void Construction::TellFit(const ZuCadFit& fit) {
  const std::string strRedundancy = Counted(fit.iRedundancy, "redundant", "redundant");
  Tell("sigma0", fit.iRedundancy > 0 ? ShortLength(fit.dSigma0) + "  " + strRedundancy : "-",
       fit.iRedundancy > 0 ? Json(fit.dSigma0) : Json());
  m_facts["redundancy"] = fit.iRedundancy;
  m_facts["rms"] = RmsJson(fit.dRms);
  m_facts["largest"] = fit.dLargest;
}

void Construction::TellResiduals(const char* szTitle, const PointRefs& points,
                                 const std::vector<double>& residuals) {
  m_strResiduals = szTitle;
  Json& list = m_facts["residuals"] = Json::array();
  for (size_t i = 0; i < points.size() && i < residuals.size(); ++i) {
    m_residuals.emplace_back(PointLabel(*points[i]), residuals[i]);
    list.push_back({{"point", JsonLabel(*points[i])}, {"residual", residuals[i]}});
  }
}

void Construction::WritePlane(std::ostream& text) const {
  const ZuFrame3d& f = m_plane.GetFrame();
  text << "\nplane " << m_values.strPlane << "\n  origin  " << Coordinates(f.Origin())
       << "\n  x axis  " << Coordinates(f.v1()) << "\n  y axis  " << Coordinates(f.v2())
       << "\n  points are up to " << Fixed(m_dOff, 6) << " off it\n";
}

Json Construction::PlaneJson() const {
  const ZuFrame3d& f = m_plane.GetFrame();
  return {{"name", m_values.strPlane}, {"origin", Numbers(f.Origin())}, {"x_axis", Numbers(f.v1())},
          {"y_axis", Numbers(f.v2())}, {"normal", Numbers(f.v3())},     {"largest_height", m_dOff}};
}

ExitCode Construction::Finish(const char* szKind, double dLargest) {
  std::ostream& text = m_context.Text();
  Json& root = m_context.Root();
  root["kind"] = szKind;
  root.update(m_facts);
  text << szKind << "\n\n";
  size_t uWidth = 0;
  for (const auto& [strTitle, strValue] : m_lines) uWidth = std::max(uWidth, strTitle.size());
  for (const auto& [strTitle, strValue] : m_lines) {
    text << strTitle << std::string(uWidth + 2 - strTitle.size(), ' ') << strValue << '\n';
  }
  if (!m_residuals.empty()) {
    text << "\n";
    double dMost = 0.0;
    for (const auto& [strPoint, d] : m_residuals) dMost = std::max(dMost, std::fabs(d));
    TextTable table;
    table.AddColumn("point");
    table.AddColumn(m_strResiduals);
    for (const auto& [strPoint, d] : m_residuals) {
      table.AddRow({strPoint, Fixed(d, DecimalsFor(dMost))});
    }
    table.Write(text);
  }
  text << "\n";
  TextTable table;
  for (const char* szTitle : {"point", "x", "y", "z"}) table.AddColumn(szTitle);
  root["points"] = Json::array();
  for (const ZuPoint* p = m_made.First(); p != nullptr; p = p->Next()) {
    table.AddRow({PointLabel(*p), Fixed(p->m_dX, 6), Fixed(p->m_dY, 6), Fixed(p->m_dZ, 6)});
    Json point = {{"name", p->GetName().chars()}, {"x", p->m_dX}, {"y", p->m_dY}, {"z", p->m_dZ}};
    if (m_bPlane) {
      const ZuPoint2d flat = InPlane(*p);
      point["plane_x"] = flat.x;
      point["plane_y"] = flat.y;
    }
    root["points"].push_back(std::move(point));
  }
  table.Write(text);
  if (m_bPlane) {
    WritePlane(text);
    root["plane"] = PlaneJson();
  }
  if (!m_values.strOutput.empty()) {
    PointFormat format;
    format.strColumns = kOutputColumns;
    format.iDecimals = m_values.format.iDecimals;
    format.form.emplace().m_aColumns = {eZuPointRWIdName, eZuPointRWX, eZuPointRWY, eZuPointRWZ};
    format.form->m_iDecimals = kFullDigits;
    WritePoints(&m_made, format, &m_context.NewOutput(m_values.strOutput));
  }
  return m_values.dLimit > 0.0 && dLargest > m_values.dLimit ? kNotAcceptable : kGood;
}

}  // namespace cli
