// zu trafo2d: a plane transformation by the ids that two point lists have in common.
#include <algorithm>
#include <cmath>
#include <memory>
#include <utility>

#include "commands.h"
#include "point_input.h"
#include "text_table.h"
#include "trafo_check.h"
#include "zu/foundation/sort_helper.h"
#include "zu/rectify/region.h"
#include "zu/transform/calc_trafo2d.h"

namespace cli {
namespace {

// Two ways to the same transformation may differ by this share of the extent; more, and rounding
// decides the result [-].
constexpr double kSame = 1e-4;

struct Values {
  std::string strSource, strControl, strOutput;
  std::string strType;
  PointFormat format = {"id,x,y", "error", "xy"};
};

struct Kind {
  const char* szName;
  eZuTrafo2DType eType;
  bool (ZuCalcTrafo2D::*pfnCalc)(ZuPointList*);
  int iMinPoints;
  int iCoefficients;
  const char* szFormula;
};

constexpr Kind kKinds[] = {
    {"helmert", eZuTrafo2DHelmert, &ZuCalcTrafo2D::CalcTrafoHelmert, 2, 4,
     "X = a0 + a1 x - a3 y,  Y = a2 + a3 x + a1 y"},
    {"affin", eZuTrafo2DAffin, &ZuCalcTrafo2D::CalcTrafoAffin, 3, 6,
     "X = a0 + a1 x + a2 y,  Y = a3 + a4 x + a5 y"},
    {"projektiv", eZuTrafo2DProjektiv, &ZuCalcTrafo2D::CalcTrafoProjectiv, 4, 8,
     "w = a6 x + a7 y + 1,  X = (a0 x + a1 y + a2) / w,  Y = (a3 x + a4 y + a5) / w"},
    {"polynom", eZuTrafo2DPolynomial, &ZuCalcTrafo2D::CalcTrafoPolynom, 10, 20,
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
    if (eType == kind.eType) return kind;
  }
  return kKinds[0];
}

// Puts the points into the square from -1 to 1 around (0, 0).
void Normalize(const ZuRegion& box, ZuPointList* pPoints) {
  const double dHalf = 0.5 * std::max(box.Width(), box.Height());
  const ZuPoint centre = box.GetCenter();
  for (ZuPoint* p = pPoints->First(); p != nullptr; p = p->Next()) {
    p->m_dX = (p->m_dX - centre.m_dX) / dHalf;
    p->m_dY = (p->m_dY - centre.m_dY) / dHalf;
  }
}

// Whether the same estimate from normalized coordinates carries the points and the corners of their
// box to the same places. Where points on one line, in one place or far from the origin leave the
// result to rounding, it does not.
bool IsDetermined(const Kind& kind, const ZuCalcTrafo2D& trafo, const Lists& lists) {
  const ZuRegion sourceBox = BoxOf(lists.commonSource), controlBox = BoxOf(lists.commonControl);
  ZuPointList probes(lists.commonSource);
  for (const ZuPoint& corner :
       {sourceBox.GetLL(), sourceBox.GetLR(), sourceBox.GetUL(), sourceBox.GetUR()}) {
    probes.Add(corner);
  }
  ZuPointList source(lists.commonSource), control(lists.commonControl), expected(probes);
  for (ZuPointList* pList : {&source, &expected}) Normalize(sourceBox, pList);
  Normalize(controlBox, &control);
  ZuCalcTrafo2D second(&control);
  if (!(second.*kind.pfnCalc)(&source)) return false;

  for (ZuPoint* p = probes.First(); p != nullptr; p = p->Next()) trafo.Transform(p);
  Normalize(controlBox, &probes);
  const ZuPoint* q = expected.First();
  for (const ZuPoint* p = probes.First(); p != nullptr; p = p->Next(), q = q->Next()) {
    double x = q->m_dX, y = q->m_dY;
    second.Transform(&x, &y);
    // The corners may lie far out: their share counts.
    const double dReach = std::max({1.0, std::fabs(x), std::fabs(y)});
    if (!(std::hypot(p->m_dX - x, p->m_dY - y) < kSame * dReach)) return false;
  }
  return true;
}

// Throws CommandError (undetermined) where the points do not give a transformation.
void Estimate(const Values& values, const Kind& kind, Lists* pLists, ZuCalcTrafo2D* pTrafo) {
  const int iCommon = pLists->commonSource.Count();
  const std::string strPoints = Counted(iCommon, "point") + " in common";
  if (iCommon < kind.iMinPoints) {
    throw CommandError(kUndetermined, Files(values) + " have " + strPoints + ", " + kind.szName +
                                          " needs " + std::to_string(kind.iMinPoints));
  }
  if (kind.eType == eZuTrafo2DHelmert) {
    CheckMirrored(Files(values), NameInMessages(values.strSource), HelmertRms, pLists->commonSource,
                  pLists->commonControl);
  }
  const bool bGood = (pTrafo->*kind.pfnCalc)(&pLists->commonSource);
  if (!bGood || !IsDetermined(kind, *pTrafo, *pLists)) {
    throw CommandError(kUndetermined, Files(values) + ": the " + strPoints +
                                          " do not determine --type " + kind.szName +
                                          "\npoints spread over the area, and coordinates whose "
                                          "origin is not far off, would be right");
  }
  pTrafo->CalcResiduals(&pLists->commonSource);
}

void WriteText(const Values& values, const Kind& kind, const Lists& lists,
               const ZuCalcTrafo2D& trafo, std::ostream& text) {
  std::vector<const ZuPoint*> points;
  double dLargest = 0.0;
  const auto length = [](const ZuPoint* p) { return std::hypot(p->m_dRedu1, p->m_dRedu2); };
  for (const ZuPoint* p = lists.commonSource.First(); p != nullptr; p = p->Next()) {
    points.push_back(p);
    dLargest = std::max(dLargest, length(p));
  }
  std::stable_sort(points.begin(), points.end(),
                   [&length](const ZuPoint* a, const ZuPoint* b) { return length(a) > length(b); });
  text << Counted(static_cast<long long>(points.size()), "common point") << ", "
       << lists.source.Count() - static_cast<int>(points.size()) << " only in "
       << NameInMessages(values.strSource) << "\nresiduals: transformed source minus control\n\n";
  const int iDecimals = DecimalsFor(dLargest);
  TextTable table;
  for (const char* szTitle : {"point", "dx", "dy", "length"}) table.AddColumn(szTitle);
  const auto addRow = [&](const std::string& strLabel, double dx, double dy) {
    table.AddRow({strLabel, Fixed(dx, iDecimals), Fixed(dy, iDecimals),
                  Fixed(std::hypot(dx, dy), iDecimals)});
  };
  for (const ZuPoint* p : points) addRow(PointLabel(*p), p->m_dRedu1, p->m_dRedu2);
  addRow("RMS", trafo.GetResidualX(), trafo.GetResidualY());
  table.Write(text);

  text << '\n'
       << trafo.GetTrafoName() << ", (x, y) source to (X, Y) control\n"
       << kind.szFormula << "\n\n";
  for (int i = 0; i < kind.iCoefficients; ++i) {
    text << 'a' << i << (i < 10 ? "   " : "  ") << Shortest(trafo.GetCoef(i)) << '\n';
  }
  if (kind.eType == eZuTrafo2DHelmert) {
    text << "\nscale  " << Fixed(1.0 / trafo.GetScale(), 14) << "\nturn   "
         << Angle(std::atan2(trafo.GetCoef(3), trafo.GetCoef(1))) << '\n';
  }
}

void FillJson(const Kind& kind, const Lists& lists, const ZuCalcTrafo2D& trafo, Json* pRoot) {
  Json& root = *pRoot;
  root["type"] = kind.szName;
  root["coefficients"] = Json::array();
  for (int i = 0; i < kind.iCoefficients; ++i) root["coefficients"].push_back(trafo.GetCoef(i));
  root["common"] = lists.commonSource.Count();
  root["residual_x"] = trafo.GetResidualX();
  root["residual_y"] = trafo.GetResidualY();
  root["max_error_id"] = trafo.GetMaxError();
  root["max_error_point"] = LabelOf(trafo.GetMaxError(), lists.commonSource);
  const ZuSortHelper<ZuPoint> common(&lists.commonSource);
  Json points = Json::array();
  for (const ZuPoint* p = lists.source.First(); p != nullptr; p = p->Next()) {
    const ZuPoint* pCommon = common.Find(p->GetId());
    double x = p->m_dX, y = p->m_dY;
    trafo.Transform(&x, &y);
    Json point = {{"id", p->GetId()}};
    if (!p->GetName().empty()) point["name"] = p->GetName().chars();
    point["x"] = x;
    point["y"] = y;
    point["dx"] = pCommon != nullptr ? Json(pCommon->m_dRedu1) : Json();
    point["dy"] = pCommon != nullptr ? Json(pCommon->m_dRedu2) : Json();
    points.push_back(std::move(point));
  }
  root["points"] = std::move(points);
}

ExitCode Run(const Values& values, Context& context) {
  Lists lists;
  ReadPoints(values.strSource, values.format, context, &lists.source);
  ReadPoints(values.strControl, values.format, context, &lists.control);
  GiveCommonIds(NameInMessages(values.strControl), context, &lists.source, &lists.control);
  FindCommon(&lists);
  const Kind& kind = KindFor(values, &lists);
  ZuCalcTrafo2D trafo(&lists.control);
  Estimate(values, kind, &lists, &trafo);
  WriteText(values, kind, lists, trafo, context.Text());
  FillJson(kind, lists, trafo, &context.Root());
  if (!values.strOutput.empty()) {
    ZuPointList out(lists.source);
    for (ZuPoint* p = out.First(); p != nullptr; p = p->Next()) trafo.Transform(p);
    WritePoints(&out, values.format.strColumns, &context.NewOutput(values.strOutput));
  }
  return kGood;
}

}  // namespace

Runner DefineTrafo2d(Options& options) {
  auto pValues = std::make_shared<Values>();
  options.Positional("SOURCE", &pValues->strSource, "coordinate file to be carried over");
  options.Option("--control", "CONTROL", &pValues->strControl,
                 "coordinate file with points of the target system");
  options.Required();
  options.Choice("--type", {"helmert", "affin", "projektiv", "polynom", "auto"}, &pValues->strType,
                 "kind of transformation; auto takes what number and spread of the points allow");
  options.Required();
  AddPointOptions(options, &pValues->format);
  options.Output("-o,--output", "OUT", &pValues->strOutput,
                 "coordinate file of SOURCE in the target system");
  return [pValues](Context& context) { return Run(*pValues, context); };
}

}  // namespace cli
