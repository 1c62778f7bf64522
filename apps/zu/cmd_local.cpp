// zu local: points into a local system that named points define.
#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>
#include <sstream>
#include <utility>

#include "adjust_options.h"
#include "commands.h"
#include "lokal_input.h"
#include "point_input.h"
#include "save_trafo.h"
#include "similarity_report.h"
#include "svg.h"
#include "table_decimals.h"
#include "text_table.h"
#include "trafo_report.h"
#include "zu/adjust/lokal_deviation.h"
#include "zu/transform/trafo3d.h"

namespace cli {
namespace {

struct Values {
  std::string strPoints, strOutput;
  PointFormat format;
  LokalOptions lokal;
  ZuLokalAccuracy accuracy;
  double dScaleTolerance = 0.01;
  SaveValues save;
};

// A scale pair as it is reported.
struct Scale {
  unsigned int uIdA, uIdB;
  double dDistance;
  double dScale;  // of this pair alone
  bool bBad;
  double dSd = 0.0;            // of dScale
  double dDifferenceSd = 0.0;  // of its difference from the mean
};

// How sure the result is; not good where no accuracy is told.
struct Sureness {
  ZuLokalDeviation deviation;
  ZuSimilarityResult parameters;
};

std::vector<Scale> ScalesOf(const ZuLokalSystem& s, const ZuPointList& points,
                            const ZuTrafo3d& trafo) {
  const Scale pairs[] = {
      {s.m_uScale1IdA, s.m_uScale1IdB, s.m_dScale1Dist, 0.0, trafo.IsScale1Bad()},
      {s.m_uScale2IdA, s.m_uScale2IdB, s.m_dScale2Dist, 0.0, trafo.IsScale2Bad()},
      {s.m_uScale3IdA, s.m_uScale3IdB, s.m_dScale3Dist, 0.0, trafo.IsScale3Bad()}};
  std::vector<Scale> scales;
  for (Scale scale : pairs) {
    const ZuPoint *pA = points.Find(scale.uIdA), *pB = points.Find(scale.uIdB);
    if (scale.uIdA == 0 || scale.uIdB == 0 || pA == nullptr || pB == nullptr) continue;
    scale.dScale = ZuTrafo3d::CalcScale(pA->GetAsVector(), pB->GetAsVector(), scale.dDistance);
    scales.push_back(scale);
  }
  return scales;
}

bool HasScalePair(const ZuLokalSystem& s) {
  return (s.m_uScale1IdA != 0 && s.m_uScale1IdB != 0) ||
         (s.m_uScale2IdA != 0 && s.m_uScale2IdB != 0) ||
         (s.m_uScale3IdA != 0 && s.m_uScale3IdB != 0);
}

// A definition from a file may name points that the list does not have.
void CheckPoints(const Values& values, const ZuLokalSystem& system, const ZuPointList& points) {
  eTrafo3DStatus eStatus = eTrafo3DOk;
  if (system.IsValid(eStatus, &points, HasScalePair(system))) return;
  const std::string strWhere = values.lokal.strDefinition.empty()
                                   ? std::string("the definition")
                                   : NameInMessages(values.lokal.strDefinition);
  if (eStatus == eTrafo3DNoSolution) {
    throw CommandError(
        kUndetermined,
        strWhere + ": axis and plane need three different points, as --axis X:1,2 --plane XY:3");
  }
  throw CommandError(kBadInput, strWhere + ": " + GetTrafo3DStatusText(eStatus) + " (points in " +
                                    NameInMessages(values.strPoints) + ")");
}

// Throws CommandError (undetermined). False when the scales disagree; their mean is taken then.
bool Calc(const Values& values, const ZuLokalSystem& system, const ZuPointList& points,
          ZuTrafo3d* pTrafo, std::vector<Scale>* pScales) {
  ZuPointList frame;
  for (const unsigned int uId : {system.m_uIdA, system.m_uIdB, system.m_uIdC}) {
    frame.Add(*points.Find(uId));
  }
  if (AreCollinear(frame)) {
    throw CommandError(kUndetermined,
                       NameInMessages(values.strPoints) +
                           ": the three points of axis and plane stand on one line\na point of the "
                           "plane aside of the axis is needed");
  }
  const double dFixedScale = HasScalePair(system) ? 0.0 : 1.0;
  bool bGood = pTrafo->CalcByLocalSystem(system, &points, dFixedScale, values.dScaleTolerance);
  *pScales = ScalesOf(system, points, *pTrafo);
  bool bScales = true;
  if (!bGood && pTrafo->GetStatus() == eTrafo3DScaleMismatch) {
    bScales = false;
    bGood = pTrafo->CalcByLocalSystem(system, &points, pTrafo->m_dScale, 0.0);
  }
  if (!bGood) {
    throw CommandError(kUndetermined, NameInMessages(values.strPoints) + ": " +
                                          GetTrafo3DStatusText(pTrafo->GetStatus()) +
                                          "; finite coordinates and distances between different "
                                          "points are needed");
  }
  return bScales;
}

// Accuracies that nevertheless give no standard deviations. Throws CommandError (undetermined).
void CheckNothingTold(const Values& values, const ZuPointList& points) {
  bool bTold = values.accuracy.dSigma > 0.0;
  for (const ZuPoint* p = points.First(); p != nullptr; p = p->Next()) {
    bTold |= p->m_dDX != 0.0 || p->m_dDY != 0.0 || p->m_dDZ != 0.0;
  }
  if (!bTold) return;
  throw CommandError(kUndetermined, NameInMessages(values.strPoints) +
                                        ": the accuracies are too large to reckon with");
}

// Puts their standard deviations into the points, which are those of the file.
Sureness SurenessOf(const Values& values, const ZuLokalSystem& system, const ZuTrafo3d& trafo,
                    Context& context, std::vector<Scale>* pScales, ZuPointList* pPoints) {
  Sureness sure;
  double adCovariance[9];
  if (!sure.deviation.Calc(system, *pPoints, trafo, values.accuracy)) {
    CheckNothingTold(values, *pPoints);
    return sure;
  }
  ZuSimilarityResult& result = sure.parameters;
  result.status = ZuAdjustStatus::Good;
  result.trafo = trafo;
  std::copy_n(sure.deviation.Covariance(), 49, result.adCovariance);
  const std::vector<ZuLokalScale>& scales = sure.deviation.Scales();
  result.iRedundancy = std::max(0, static_cast<int>(scales.size()) - 1);
  result.dTestLimit = ZuNormalLimit(ZuTestOptions().dAlpha);
  for (size_t i = 0; i < scales.size() && i < pScales->size(); ++i) {
    (*pScales)[i].dSd = scales[i].dSd;
    (*pScales)[i].dDifferenceSd = scales[i].dDifferenceSd;
  }
  if (sure.deviation.FilledIn() > 0) {
    context.Warn(Counted(sure.deviation.FilledIn(), "coordinate") +
                 " without a standard deviation took the root mean square of the others; --sigma "
                 "tells another");
  }
  for (ZuPoint* p = pPoints->First(); p != nullptr; p = p->Next()) {
    sure.deviation.PointCovariance(*p, adCovariance);
    if (!std::isfinite(adCovariance[0] + adCovariance[4] + adCovariance[8])) {
      CheckNothingTold(values, *pPoints);
    }
    p->m_dDX = std::sqrt(adCovariance[0]);
    p->m_dDY = std::sqrt(adCovariance[4]);
    p->m_dDZ = std::sqrt(adCovariance[8]);
  }
  return sure;
}

void WritePointTable(const ZuPointList& points, bool bSure, std::ostream& text) {
  double dLargest = 0.0;
  for (const ZuPoint* p = points.First(); p != nullptr; p = p->Next()) {
    dLargest = std::max({dLargest, p->m_dDX, p->m_dDY, p->m_dDZ});
  }
  const int iDecimals = DecimalsFor(dLargest);
  TextTable table;
  for (const char* szTitle : {"point", "x", "y", "z"}) table.AddColumn(szTitle);
  for (const char* szTitle : {"sd x", "sd y", "sd z"}) {
    if (bSure) table.AddColumn(szTitle);
  }
  for (const ZuPoint* p = points.First(); p != nullptr; p = p->Next()) {
    table.AddRow({PointLabel(*p), FixedLength(p->m_dX, 6), FixedLength(p->m_dY, 6),
                  FixedLength(p->m_dZ, 6), Fixed(p->m_dDX, iDecimals), Fixed(p->m_dDY, iDecimals),
                  Fixed(p->m_dDZ, iDecimals)});
  }
  table.Write(text);
}

// Of a difference in standard deviations; 0 where it can have none.
double Standardised(const Scale& s, const ZuTrafo3d& trafo) {
  return s.dDifferenceSd > 0.0 ? (s.dScale - trafo.m_dScale) / s.dDifferenceSd : 0.0;
}

void WriteText(const ZuLokalSystem& system, const ZuPointList& points,
               const std::vector<Scale>& scales, const ZuTrafo3d& trafo, const Sureness& sure,
               std::ostream& text) {
  text << Counted(points.Count(), "point") << " in the local system\n\n";
  const bool bSure = sure.parameters.IsGood();
  WritePointTable(points, bSure, text);
  if (!scales.empty()) {
    text << "\nscales, and what each differs from their mean\n";
    TextTable scaleTable;
    for (const char* szTitle : {"points", "distance", "scale", "difference"}) {
      scaleTable.AddColumn(szTitle);
    }
    for (const char* szTitle : {"sd", "w"}) {
      if (bSure) scaleTable.AddColumn(szTitle);
    }
    scaleTable.AddColumn("", TextTable::eLeft);
    for (const Scale& s : scales) {
      std::vector<std::string> row = {
          LabelOf(s.uIdA, points) + "," + LabelOf(s.uIdB, points), Shortest(s.dDistance),
          Fixed(s.dScale, 9),
          Fixed((s.dScale - trafo.m_dScale) / trafo.m_dScale * 100.0, 4) + " %"};
      if (bSure) row.push_back(ShortLength(s.dSd));
      if (bSure) row.push_back(Fixed(Standardised(s, trafo), 2));
      row.push_back(s.bBad ? "beyond tolerance" : "");
      scaleTable.AddRow(std::move(row));
    }
    scaleTable.Write(text);
  }
  text << '\n';
  WriteParameters(trafo, text);
  if (bSure) {
    text << "\nstandard deviations a priori: of the points that define the system\n";
    WriteSds(sure.parameters, text);
  }
  std::ostringstream definition;
  definition.imbue(std::locale::classic());
  system.Write(definition);
  text << "\nLOKAL {\n" << definition.str() << " }\n";
}

void FillJson(const ZuPointList& points, const std::vector<Scale>& scales, const ZuTrafo3d& trafo,
              const Sureness& sure, Json* pRoot) {
  Json& root = *pRoot;
  const bool bSure = sure.parameters.IsGood();
  AddParameters(trafo, &root);
  root["scales"] = Json::array();
  for (const Scale& s : scales) {
    root["scales"].push_back({{"ids", {s.uIdA, s.uIdB}},
                              {"points", {LabelOf(s.uIdA, points), LabelOf(s.uIdB, points)}},
                              {"distance", s.dDistance},
                              {"scale", s.dScale},
                              {"sd", bSure ? Json(s.dSd) : Json()},
                              {"w", bSure ? Json(Standardised(s, trafo)) : Json()},
                              {"bad", s.bBad}});
  }
  AddSimilarity(sure.parameters, ZuSortHelper<ZuPoint>(&points), &root);
  root["points"] = PointRowsJson(points, bSure ? 3 : 0);
}

ExitCode Run(const Values& values, Context& context) {
  ZuPointList points;
  ReadPoints(values.strPoints, values.format, context, &points);
  CheckAccuracies(NameInMessages(values.strPoints), points, values.format.strColumns);
  GiveCommonIds("", context, &points, nullptr);
  const ZuLokalSystem system =
      ReadLokalSystem(values.lokal, NameInMessages(values.strPoints), points);
  CheckPoints(values, system, points);
  ZuTrafo3d trafo;
  std::vector<Scale> scales;
  const bool bScales = Calc(values, system, points, &trafo, &scales);
  const Sureness sure = SurenessOf(values, system, trafo, context, &scales, &points);
  trafo.InPlaceTransform(&points);
  WriteText(system, points, scales, trafo, sure, context.Text());
  FillJson(points, scales, trafo, sure, &context.Root());
  if (!bScales) {
    context.SetStatus(eTrafo3DScaleMismatch, GetTrafo3DStatusText(eTrafo3DScaleMismatch));
    context.Warn("the scales disagree by more than --scale-tolerance; their mean was taken");
  }
  if (!values.save.strFile.empty()) {
    SaveValues save = values.save;
    save.strSource = NameInMessages(values.strPoints);
    save.strTarget = NameInMessages(values.lokal.strDefinition);
    for (const unsigned uId : {system.m_uIdA, system.m_uIdB, system.m_uIdC}) {
      save.used.push_back(LabelOf(uId, points));
    }
    SaveSimilarity(save, trafo, &sure.parameters, values.format, context);
  }
  if (!values.strOutput.empty()) {
    WritePoints(&points, values.format, &context.NewOutput(values.strOutput));
  }
  return bScales ? kGood : kNotAcceptable;
}

}  // namespace

Runner DefineLocal(Options& options) {
  auto pValues = std::make_shared<Values>();
  LokalOptions& lokal = pValues->lokal;
  options.Positional("POINTS", &pValues->strPoints, "coordinate file");
  options.Option("--axis", "X:A,B", &lokal.strAxis, "axis that runs from point A to point B");
  options.Option("--plane", "XY:C", &lokal.strPlane,
                 "plane through these and point C, on the positive side of its other axis");
  options.Option("--origin", "P[:x,y,z]", &lokal.strOrigin,
                 "point with its local coordinates, (0, 0, 0) if none are given; A by default");
  options.Option("--scale", "P,Q:D", &lokal.strScales,
                 "distance D of two points in the local system, up to three times; scale 1 "
                 "without");
  options.Option("--scale-tolerance", "T", &pValues->dScaleTolerance,
                 "relative difference of a scale from their mean at most, 0.01");
  options.AtLeast(0.0);
  options.Option("--definition", "FILE", &lokal.strDefinition,
                 "file with the definition as a LOKAL { ... } block; the options above replace "
                 "its parts");
  options.Option("--sigma", "S", &pValues->accuracy.dSigma, kSigmaOfAll);
  options.Above(0.0);
  options.Option("--sigma-distance", "S", &pValues->accuracy.dSigmaDistance,
                 "standard deviation of the distances of --scale; exact without");
  options.AtLeast(0.0);
  AddPointOptions(options, &pValues->format);
  options.Output("-o,--output", "OUT", &pValues->strOutput,
                 "coordinate file of all points in the local system");
  AddSaveOption(options, &pValues->save);
  return [pValues](Context& context) { return Run(*pValues, context); };
}

}  // namespace cli
