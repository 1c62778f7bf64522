// zu trafo2d: a plane transformation by the ids that two point lists have in common.
#include <algorithm>
#include <cmath>
#include <memory>
#include <utility>

#include "adjust_options.h"
#include "commands.h"
#include "point_choice.h"
#include "point_input.h"
#include "report_output.h"
#include "save_trafo.h"
#include "svg.h"
#include "text_table.h"
#include "trafo_check.h"
#include "zu/adjust/trafo2d_fit.h"
#include "zu/foundation/sort_helper.h"
#include "zu/rectify/region.h"
#include "zu/transform/calc_trafo2d.h"

namespace cli {
namespace {

struct Values {
  std::string strSource, strControl, strOutput;
  std::string strType;
  PointFormat format;
  AdjustValues adjust;
  SaveValues save;
  PointChoice choice;
};

struct Kind {
  const char* szName;
  ZuTrafo2dKind kind;
  eZuTrafo2DType eType;
  int iMinPoints;
  const char* szFormula;  // with (x, y) and (X, Y) less the centres
};

constexpr Kind kKinds[] = {
    {"congruence", ZuTrafo2dKind::Congruence, eZuTrafo2DNone, 2,
     "X = a0 + a1 x - a3 y,  Y = a2 + a3 x + a1 y,  a1^2 + a3^2 = 1"},
    {"helmert", ZuTrafo2dKind::Helmert, eZuTrafo2DHelmert, 2,
     "X = a0 + a1 x - a3 y,  Y = a2 + a3 x + a1 y"},
    {"affin", ZuTrafo2dKind::Affine, eZuTrafo2DAffin, 3,
     "X = a0 + a1 x + a2 y,  Y = a3 + a4 x + a5 y"},
    {"projektiv", ZuTrafo2dKind::Projective, eZuTrafo2DProjektiv, 4,
     "w = a6 x + a7 y + 1,  X = (a0 x + a1 y + a2) / w,  Y = (a3 x + a4 y + a5) / w"},
    {"polynom", ZuTrafo2dKind::Polynomial, eZuTrafo2DPolynomial, 10,
     "X, Y = sums of a0 to a9 and a10 to a19 times 1, x, y, x^2, xy, y^2, x^3, x^2 y, x y^2, y^3"}};

struct Lists {
  ZuPointList source, control;
  ZuPointList commonSource, commonControl;
};

std::string Files(const Values& values) {
  return NameInMessages(values.strSource) + " and " + NameInMessages(values.strControl);
}

ZuRegion BoxOf(const ZuPointList& points) {
  const ZuPoint* pFirst = points.First();
  ZuRegion box(*pFirst, *pFirst);
  for (const ZuPoint* p = pFirst; p != nullptr; p = p->Next()) {
    box.Left() = std::min(box.Left(), p->m_dX);
    box.Right() = std::max(box.Right(), p->m_dX);
    box.Bottom() = std::min(box.Bottom(), p->m_dY);
    box.Top() = std::max(box.Top(), p->m_dY);
  }
  return box;
}

void FindCommon(Lists* pLists) {
  const ZuSortHelper<ZuPoint> control(&pLists->control);
  for (const ZuPoint* p = pLists->source.First(); p != nullptr; p = p->Next()) {
    const ZuPoint* pControl = control.Find(p->GetId());
    if (pControl == nullptr) continue;
    pLists->commonSource.Add(*p);
    pLists->commonControl.Add(*pControl);
  }
}

const Kind& KindFor(const Values& values, Lists* pLists) {
  for (const Kind& kind : kKinds) {
    if (values.strType == kind.szName) return kind;
  }
  eZuTrafo2DType eType = eZuTrafo2DNone;
  if (!pLists->commonSource.IsEmpty()) {
    eType =
        ZuCalcTrafo2D().SuggestTrafoByDistrib(BoxOf(pLists->commonSource), &pLists->commonSource);
  }
  for (const Kind& kind : kKinds) {
    if (eType != eZuTrafo2DNone && eType == kind.eType) return kind;
  }
  return kKinds[1];
}

std::vector<ZuTrafo2dPair> PairsOf(const Values& values, const Lists& lists) {
  std::vector<ZuTrafo2dPair> pairs;
  const ZuPoint* pControl = lists.commonControl.First();
  for (const ZuPoint* p = lists.commonSource.First(); p != nullptr; p = p->Next()) {
    ZuTrafo2dPair pair;
    pair.uId = p->GetId();
    pair.adSource[0] = p->m_dX;
    pair.adSource[1] = p->m_dY;
    pair.adTarget[0] = pControl->m_dX;
    pair.adTarget[1] = pControl->m_dY;
    AccuracyOf(*p, values.format.strColumns, 2, pair.adSourceCov);
    AccuracyOf(*pControl, values.format.strColumns, 2, pair.adTargetCov);
    pairs.push_back(pair);
    pControl = pControl->Next();
  }
  return pairs;
}

// Throws CommandError (undetermined) where the points do not give a transformation.
ZuTrafo2dFit Estimate(const Values& values, const Kind& kind, const Lists& lists) {
  const int iCommon = lists.commonSource.Count();
  const std::string strPoints = Counted(iCommon, "point") + " in common";
  if (iCommon < kind.iMinPoints) {
    throw CommandError(kUndetermined,
                       Files(values) + " have " + strPoints + ", " + kind.szName + " needs " +
                           std::to_string(kind.iMinPoints) +
                           OwnPoints(NameInMessages(values.strSource), lists.source,
                                     NameInMessages(values.strControl), lists.control));
  }
  if (kind.iMinPoints == 2) {
    CheckMirrored(Files(values), NameInMessages(values.strSource), HelmertRms, lists.commonSource,
                  lists.commonControl);
  }
  ZuTrafo2dOptions options;
  options.dSigma = values.adjust.dSigma;
  options.tests = TestsOf(values.adjust, values.adjust.bTest);
  ZuTrafo2dFit fit = ZuFitTrafo2d(kind.kind, PairsOf(values, lists), options);
  if (fit.eStatus == ZuAdjustStatus::Good) {
    TurnResiduals(&fit.points);
    return fit;
  }
  throw CommandError(
      kUndetermined,
      Files(values) + ": the " + strPoints + " do not determine --type " + kind.szName + "\n" +
          (fit.strFree.empty()
               ? std::string(ZuAdjustStatusText(fit.eStatus)) +
                     "\ncoordinates and accuracies of one order of size would be right"
               : "free is: " + fit.strFree + "\npoints spread over the area would be right"));
}

// A common point: its place in both lists and its test.
struct Row {
  const ZuPoint* pSource;
  const ZuPointTest* pTest;

  double Length() const { return std::hypot(pTest->adResidual[0], pTest->adResidual[1]); }
};

struct Result {
  const Kind& kind;
  const Lists& lists;
  const ZuTrafo2dFit& fit;
  std::vector<Row> rows;    // in the order of the source
  std::vector<Row> sorted;  // set aside first, then the longest residual
  double dRmsX = 0.0, dRmsY = 0.0, dLargest = 0.0, dTestLimit = 0.0;
  const ZuPoint* pWorst = nullptr;

  Result(const Kind& k, const Lists& l, const ZuTrafo2dFit& f) : kind(k), lists(l), fit(f) {
    size_t i = 0;
    int iUsed = 0;
    for (const ZuPoint* p = l.commonSource.First(); p != nullptr; p = p->Next()) {
      rows.push_back({p, &f.points[i++]});
      const Row& row = rows.back();
      if (!row.pTest->bUsed) continue;
      ++iUsed;
      dRmsX += row.pTest->adResidual[0] * row.pTest->adResidual[0];
      dRmsY += row.pTest->adResidual[1] * row.pTest->adResidual[1];
      dTestLimit = row.pTest->dLimit;
      if (pWorst != nullptr && row.Length() <= dLargest) continue;
      dLargest = row.Length();
      pWorst = p;
    }
    dRmsX = std::sqrt(dRmsX / iUsed);
    dRmsY = std::sqrt(dRmsY / iUsed);
    sorted = rows;
    std::stable_sort(sorted.begin(), sorted.end(), [](const Row& a, const Row& b) {
      if (a.pTest->bUsed != b.pTest->bUsed) return !a.pTest->bUsed;
      return a.Length() > b.Length();
    });
  }

  double Sd(size_t k) const {
    return std::sqrt(std::max(0.0, fit.covariance[k * fit.coefficients.size() + k]));
  }
};

std::string Finite(double d, int iDecimals) { return std::isfinite(d) ? Fixed(d, iDecimals) : "-"; }

const char* Remark(const ZuPointTest& test) {
  if (!test.bUsed) return "set aside";
  if (test.IsRejected()) return "beyond the limit";
  return test.bControlled ? "" : "not controlled";
}

std::vector<std::string> Cells(const Row& row, int iDecimals) {
  const ZuPointTest& t = *row.pTest;
  const double dNabla = std::max(t.adNabla[0], t.adNabla[1]);
  return {PointLabel(*row.pSource),
          Fixed(t.adResidual[0], iDecimals),
          Fixed(t.adResidual[1], iDecimals),
          Fixed(row.Length(), iDecimals),
          Fixed(t.adW[0], 2),
          Fixed(t.adW[1], 2),
          t.bUsed ? Fixed(t.Redundancy(), 3) : "-",
          t.bUsed ? Finite(dNabla, iDecimals) : "-",
          Remark(t)};
}

// Scale and turn of a Helmert transformation with their standard deviations.
void WriteTurn(const Result& result, std::ostream& text) {
  const std::vector<double>& a = result.fit.coefficients;
  const std::vector<double>& cov = result.fit.covariance;
  const double s = std::hypot(a[1], a[3]), c1 = a[1] / s, c3 = a[3] / s;
  const double q11 = cov[5], q33 = cov[15], q13 = cov[7];
  text << "\nscale  " << Fixed(s, 14) << "  sd "
       << Significant(std::sqrt(std::max(0.0, c1 * c1 * q11 + 2 * c1 * c3 * q13 + c3 * c3 * q33)))
       << "\nturn   " << Angle(std::atan2(a[3], a[1])) << "  sd "
       << Significant(std::sqrt(std::max(0.0, c3 * c3 * q11 - 2 * c1 * c3 * q13 + c1 * c1 * q33)) /
                      s * 200.0 / 3.14159265358979323846)
       << " gon\n";
}

void WriteText(const Values& values, const Result& result, std::ostream& text) {
  const ZuTrafo2dFit& fit = result.fit;
  text << Counted(static_cast<long long>(result.rows.size()), "common point") << ", "
       << result.lists.source.Count() - static_cast<int>(result.rows.size()) << " only in "
       << NameInMessages(values.strSource);
  if (fit.iSetAside > 0) text << "; " << fit.iSetAside << " set aside";
  text << "\nresiduals: control minus transformed source\n\n";
  const int iDecimals = DecimalsFor(result.dLargest);
  TextTable table;
  for (const char* szTitle : {"point", "dx", "dy", "length", "wx", "wy", "r", "nabla"}) {
    table.AddColumn(szTitle);
  }
  table.AddColumn("", TextTable::eLeft);
  for (const Row& row : result.sorted) table.AddRow(Cells(row, iDecimals));
  table.AddRow({"RMS", Fixed(result.dRmsX, iDecimals), Fixed(result.dRmsY, iDecimals),
                Fixed(std::hypot(result.dRmsX, result.dRmsY), iDecimals)});
  table.Write(text);
  text << "\nsigma0  " << SigmaText(fit.dSigma0, fit.sigmaOfResults, fit.iRedundancy)
       << "\ntest    " << ZuSigmaKindText(fit.sigmaOfTests) << ", limit of T "
       << Finite(result.dTestLimit, 2) << "\n\n"
       << result.kind.szName << ", (x, y) source and (X, Y) control less their centres\n"
       << result.kind.szFormula << "\n\ncentre of the source   " << Shortest(fit.adSourceCentre[0])
       << "  " << Shortest(fit.adSourceCentre[1]) << "\ncentre of the control  "
       << Shortest(fit.adTargetCentre[0]) << "  " << Shortest(fit.adTargetCentre[1]) << "\n\n";
  TextTable parameters;
  parameters.AddColumn("", TextTable::eLeft);
  for (const char* szTitle : {"value", "sd"}) parameters.AddColumn(szTitle);
  for (size_t k = 0; k < fit.coefficients.size(); ++k) {
    parameters.AddRow(
        {"a" + std::to_string(k), Shortest(fit.coefficients[k]), Significant(result.Sd(k))});
  }
  parameters.Write(text);
  if (result.kind.iMinPoints == 2) WriteTurn(result, text);
}

// A point of the source carried over, with its standard deviations.
struct Carried {
  double x, y, adCov[4] = {};

  Carried(const ZuPoint& p, const Values& values, const ZuTrafo2dFit& fit) : x(p.m_dX), y(p.m_dY) {
    AccuracyOf(p, values.format.strColumns, 2, adCov);
    fit.Transform(&x, &y, adCov);
  }
  double Sd(int i) const { return std::sqrt(std::max(0.0, adCov[3 * i])); }
};

void AddCommon(const Row& row, Json* pPoint, Json* pAside, Json* pFree) {
  const ZuPointTest& t = *row.pTest;
  Json entry = {{"id", row.pSource->GetId()}, {"name", row.pSource->GetName().chars()}};
  if (t.bUsed && !t.bControlled) pFree->push_back(JsonLabel(*row.pSource));
  if (!t.bUsed) {
    entry["test"] = t.dTest;
    entry["error"] = {t.adResidual[0], t.adResidual[1]};
    pAside->push_back(std::move(entry));
  }
  (*pPoint)["used"] = t.bUsed;
  AddTestJson(&t, pPoint);
}

void FillJson(const Values& values, const Result& result, Json* pRoot) {
  Json& root = *pRoot;
  const ZuTrafo2dFit& fit = result.fit;
  const ZuTrafo2d uncentred = fit.Uncentred();
  root["type"] = result.kind.szName;
  root["coefficients"] = Json::array();
  std::vector<std::string> names;
  for (size_t k = 0; k < fit.coefficients.size(); ++k) {
    root["coefficients"].push_back(uncentred.GetCoef(static_cast<int>(k)));
    names.push_back("a" + std::to_string(k));
  }
  root["common"] = result.rows.size();
  root["rms"] = RmsJson({result.dRmsX, result.dRmsY});
  root["residual_x"] = result.dRmsX;
  root["residual_y"] = result.dRmsY;
  root["max_error_id"] = result.pWorst->GetId();
  root["max_error_point"] = PointLabel(*result.pWorst);
  root["source_centre"] = {fit.adSourceCentre[0], fit.adSourceCentre[1]};
  root["target_centre"] = {fit.adTargetCentre[0], fit.adTargetCentre[1]};
  root["sigma0"] = fit.dSigma0;
  root["sigma_kind"] = ZuSigmaKindText(fit.sigmaOfResults);
  root["test_kind"] = ZuSigmaKindText(fit.sigmaOfTests);
  root["redundancy"] = fit.iRedundancy;
  AddParameterJson(names, fit.coefficients, fit.covariance.data(), &root);
  Json points = Json::array(), aside = Json::array(), free = Json::array();
  size_t uCommon = 0;
  for (const ZuPoint* p = result.lists.source.First(); p != nullptr; p = p->Next()) {
    const Carried carried(*p, values, fit);
    Json point = {{"id", p->GetId()}};
    if (!p->GetName().empty()) point["name"] = p->GetName().chars();
    point["x"] = carried.x;
    point["y"] = carried.y;
    const bool bCommon =
        uCommon < result.rows.size() && result.rows[uCommon].pSource->GetId() == p->GetId();
    const double* const pd = bCommon ? result.rows[uCommon].pTest->adResidual : nullptr;
    point["dx"] = bCommon ? Json(pd[0]) : Json();
    point["dy"] = bCommon ? Json(pd[1]) : Json();
    point["sd"] = {carried.Sd(0), carried.Sd(1)};
    if (bCommon) {
      AddCommon(result.rows[uCommon++], &point, &aside, &free);
    } else {
      AddTestJson(nullptr, &point);
    }
    points.push_back(std::move(point));
  }
  root["points"] = std::move(points);
  root["set_aside"] = std::move(aside);
  root["not_controlled"] = std::move(free);
  root["free_direction"] = Json();
}

std::string Suspicious(const Result& result, const std::string& strUnit) {
  std::vector<Tested> tested;
  for (const Row& row : result.rows) tested.push_back({PointLabel(*row.pSource), row.pTest});
  return TestVerdict(tested, strUnit);
}

AdjustReport Page(const Values& values, const Result& result) {
  const ZuTrafo2dFit& fit = result.fit;
  const std::string strIn = " [" + values.adjust.strUnit + "]";
  const int iDecimals = DecimalsFor(result.dLargest);
  AdjustReport report;
  report.strTitle = "Plane transformation";
  report.strUnit = values.adjust.strUnit;
  report.strVerdict =
      std::to_string(result.rows.size() - static_cast<size_t>(fit.iSetAside)) + " of " +
      Counted(static_cast<long long>(result.rows.size()), "common point") + " agree by " +
      result.kind.szName + " with RMS " + Fixed(std::hypot(result.dRmsX, result.dRmsY), iDecimals) +
      " " + report.strUnit + ", the longest residual " + Fixed(result.dLargest, iDecimals) + " " +
      report.strUnit + " at point " + PointLabel(*result.pWorst) + "; " +
      std::to_string(fit.iSetAside) + " set aside; " + Suspicious(result, report.strUnit) + ".";
  report.facts.emplace_back("sigma0", SigmaText(fit.dSigma0, fit.sigmaOfResults, fit.iRedundancy));
  report.facts.emplace_back("test", std::string(ZuSigmaKindText(fit.sigmaOfTests)) +
                                        ", limit of T " + Finite(result.dTestLimit, 2));
  const auto centre = [](const double* pd) { return Fixed(pd[0], 6) + ", " + Fixed(pd[1], 6); };
  report.facts.emplace_back("centre of the source", centre(fit.adSourceCentre));
  report.facts.emplace_back("centre of the control", centre(fit.adTargetCentre));
  report.strParameters = std::string(result.kind.szFormula) + "; coordinates less the centres.";
  for (size_t k = 0; k < fit.coefficients.size(); ++k) {
    report.parameters.push_back(
        {"a" + std::to_string(k), Shortest(fit.coefficients[k]), Significant(result.Sd(k)), "-"});
  }
  AdjustReport::Table table;
  table.strTitle = "Common points";
  table.strNote =
      "Control less transformed source, the longest first, those set aside before the others. r: "
      "redundancy of both coordinates; nabla: smallest error that the test finds.";
  table.columns = {{"point"}, {"dx" + strIn}, {"dy" + strIn},    {"length" + strIn}, {"wx"},
                   {"wy"},    {"r"},          {"nabla" + strIn}, {"", true}};
  for (const Row& row : result.sorted) table.rows.push_back(Cells(row, iDecimals));
  report.tables.push_back(std::move(table));
  ReportView view;
  view.strTitle = "Residuals and carried points";
  view.strAxisX = "X";
  view.strAxisY = "Y";
  view.strNote =
      "Arrow: from the control point to where the source comes to lie. Ellipse: the "
      "carried point, with its own accuracy and that of the transformation.";
  size_t uCommon = 0;
  for (const ZuPoint* p = result.lists.source.First(); p != nullptr; p = p->Next()) {
    const Carried carried(*p, values, fit);
    ReportView::Item item;
    item.x = carried.x;
    item.y = carried.y;
    item.cxx = carried.adCov[0];
    item.cxy = carried.adCov[1];
    item.cyy = carried.adCov[3];
    item.strLabel = PointLabel(*p);
    item.bArrow =
        uCommon < result.rows.size() && result.rows[uCommon].pSource->GetId() == p->GetId();
    if (item.bArrow) {
      const ZuPointTest& test = *result.rows[uCommon++].pTest;
      item.dx = -test.adResidual[0];
      item.dy = -test.adResidual[1];
      item.bUsed = test.bUsed;
      if (test.bUsed) report.w.insert(report.w.end(), test.adW, test.adW + 2);
    }
    view.items.push_back(std::move(item));
  }
  report.views.push_back(std::move(view));
  report.dLimit = TestLimit(values.adjust, static_cast<int>(result.rows.size()), fit.sigmaOfTests,
                            fit.iRedundancy);
  report.strTest = std::string("w of x and y, ") + ZuSigmaKindText(fit.sigmaOfTests);
  report.inputs.emplace_back("source", NameInMessages(values.strSource));
  report.inputs.emplace_back("control", NameInMessages(values.strControl));
  return report;
}

void Save(const Values& values, const Result& result, Context& context) {
  const ZuTrafo2dFit& fit = result.fit;
  ZuTransformation t;
  t.kind = ZuTransformationKind::Plane;
  t.ePlane = fit.Uncentred().GetType();
  std::copy_n(fit.adSourceCentre, 2, t.adSourceCentre);
  std::copy_n(fit.adTargetCentre, 2, t.adTargetCentre);
  t.coefficients = fit.coefficients;
  t.covariance = fit.covariance;
  t.dSigma0 = fit.dSigma0;
  t.iRedundancy = fit.iRedundancy;
  t.strSigmaKind = ZuSigmaKindText(fit.sigmaOfResults);
  SaveValues save = values.save;
  for (const Row& row : result.rows) {
    (row.pTest->bUsed ? save.used : save.setAside).push_back(PointLabel(*row.pSource));
  }
  save.strSource = NameInMessages(values.strSource);
  save.strTarget = NameInMessages(values.strControl);
  SaveTransformation(save, std::move(t), values.format, context);
}

std::vector<Deviation> ChecksOf(const Values& values, const ZuPointList& checks,
                                const ZuPointList& source, const ZuTrafo2dFit& fit) {
  std::vector<Deviation> deviations;
  for (const ZuPoint* p = checks.First(); p != nullptr; p = p->Next()) {
    const Carried q(*source.TZuListHeader<ZuPoint>::Find(p->GetId()), values, fit);
    deviations.push_back({p, {q.x - p->m_dX, q.y - p->m_dY, 0.0}});
  }
  return deviations;
}

ExitCode Run(const Values& values, Context& context) {
  Lists lists;
  ReadPoints(values.strSource, values.format, context, &lists.source);
  ReadControlPoints(values.strControl, values.format, context, &lists.control);
  CheckAccuracies(NameInMessages(values.strSource), lists.source, values.format.strColumns);
  CheckAccuracies(NameInMessages(values.strControl), lists.control, values.format.strColumns);
  GiveCommonIds(NameInMessages(values.strControl), context, &lists.source, &lists.control);
  const PointRoles roles(values.choice, Files(values), {&lists.source, &lists.control});
  const ZuPointList checkPoints = roles.TakeOut(lists.source, &lists.control);
  FindCommon(&lists);
  const Kind& kind = KindFor(values, &lists);
  const ZuTrafo2dFit fit = Estimate(values, kind, lists);
  const Result result(kind, lists, fit);
  WriteText(values, result, context.Text());
  FillJson(values, result, &context.Root());
  if (fit.iSetAside == 0 && kind.kind != ZuTrafo2dKind::Polynomial) {
    std::vector<Residual> residuals;
    for (const Row& row : result.rows) {
      const double* const pd = row.pTest->adResidual;
      residuals.push_back({PointLabel(*row.pSource), -pd[0], -pd[1], 0.0});
    }
    WarnOfWrongPoints(residuals, {lists.commonSource, lists.commonControl, HelmertRms}, context);
  }
  const std::vector<Deviation> checks = ChecksOf(values, checkPoints, lists.source, fit);
  roles.Write(checks, 2, context.Text());
  roles.AddJson(checks, 2, &context.Root());
  if (!values.strOutput.empty()) {
    ZuPointList out(lists.source);
    for (ZuPoint* p = out.First(); p != nullptr; p = p->Next()) {
      const Carried carried(*p, values, fit);
      p->m_dX = carried.x;
      p->m_dY = carried.y;
      p->m_dDX = carried.Sd(0);
      p->m_dDY = carried.Sd(1);
    }
    WritePoints(&out, values.format, &context.NewOutput(values.strOutput));
  }
  if (!values.save.strFile.empty()) Save(values, result, context);
  if (context.WantsReport()) context.Report().report = Page(values, result);
  std::vector<std::pair<std::string, double>> lengths;
  for (const Row& row : result.rows) {
    if (row.pTest->bUsed) lengths.emplace_back(PointLabel(*row.pSource), row.Length());
  }
  AddLengths(checks, &lengths);
  return WithinTolerance(values.choice, lengths, context,
                         fit.iSetAside > 0 ? kNotAcceptable : kGood);
}

}  // namespace

Runner DefineTrafo2d(Options& options) {
  auto pValues = std::make_shared<Values>();
  pValues->format.szCoordinates = "xy";
  AddSourceOptions(options, &pValues->strSource, &pValues->strControl);
  options.Choice("--type", {"congruence", "helmert", "affin", "projektiv", "polynom", "auto"},
                 &pValues->strType,
                 "kind of transformation; auto takes what number and spread of the points allow");
  options.Required();
  AddTestFlag(options, &pValues->adjust);
  AddAdjustOptions(options, &pValues->adjust, kSigmaOfControl);
  AddPointChoice(options, &pValues->choice);
  AddPointOptions(options, &pValues->format);
  AddControlColumns(options, &pValues->format);
  options.Output("-o,--output", "OUT", &pValues->strOutput,
                 "coordinate file of SOURCE in the target system");
  AddSaveOption(options, &pValues->save);
  return [pValues](Context& context) { return Run(*pValues, context); };
}

}  // namespace cli
