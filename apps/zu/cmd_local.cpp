// zu local: points into a local system that named points define.
#include <cmath>
#include <limits>
#include <memory>
#include <sstream>
#include <utility>

#include "commands.h"
#include "lokal_input.h"
#include "point_input.h"
#include "text_table.h"
#include "trafo_report.h"
#include "zu/transform/trafo3d.h"

namespace cli {
namespace {

struct Values {
  std::string strPoints, strOutput;
  PointFormat format;
  LokalOptions lokal;
  double dScaleTolerance = 0.01;
};

// A scale pair as it is reported.
struct Scale {
  unsigned int uIdA, uIdB;
  double dDistance;
  double dScale;  // of this pair alone
  bool bBad;
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
    throw CommandError(kUndetermined, strWhere + ": axis and plane need three different points");
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

void WriteText(const ZuLokalSystem& system, const ZuPointList& points,
               const std::vector<Scale>& scales, const ZuTrafo3d& trafo, std::ostream& text) {
  text << Counted(points.Count(), "point") << " in the local system\n\n";
  TextTable table;
  for (const char* szTitle : {"point", "x", "y", "z"}) table.AddColumn(szTitle);
  for (const ZuPoint* p = points.First(); p != nullptr; p = p->Next()) {
    table.AddRow({PointLabel(*p), Fixed(p->m_dX, 6), Fixed(p->m_dY, 6), Fixed(p->m_dZ, 6)});
  }
  table.Write(text);
  if (!scales.empty()) {
    text << "\nscales, and what each differs from their mean\n";
    TextTable scaleTable;
    for (const char* szTitle : {"points", "distance", "scale", "difference", ""}) {
      scaleTable.AddColumn(szTitle);
    }
    for (const Scale& s : scales) {
      scaleTable.AddRow({LabelOf(s.uIdA, points) + "," + LabelOf(s.uIdB, points),
                         Shortest(s.dDistance), Fixed(s.dScale, 9),
                         Fixed((s.dScale - trafo.m_dScale) / trafo.m_dScale * 100.0, 4) + " %",
                         s.bBad ? "beyond tolerance" : ""});
    }
    scaleTable.Write(text);
  }
  text << '\n';
  WriteParameters(trafo, text);
  std::ostringstream definition;
  definition.imbue(std::locale::classic());
  system.Write(definition);
  text << "\nLOKAL {\n" << definition.str() << " }\n";
}

void FillJson(const ZuPointList& points, const std::vector<Scale>& scales, bool bScales,
              const ZuTrafo3d& trafo, Json* pRoot) {
  Json& root = *pRoot;
  const eTrafo3DStatus eStatus = bScales ? trafo.GetStatus() : eTrafo3DScaleMismatch;
  root["status"] = static_cast<int>(eStatus);
  root["status_text"] = GetTrafo3DStatusText(eStatus);
  AddParameters(trafo, &root);
  root["scales"] = Json::array();
  for (const Scale& s : scales) {
    root["scales"].push_back({{"ids", {s.uIdA, s.uIdB}},
                              {"points", {LabelOf(s.uIdA, points), LabelOf(s.uIdB, points)}},
                              {"distance", s.dDistance},
                              {"scale", s.dScale},
                              {"bad", s.bBad}});
  }
  root["points"] = Json::array();
  for (const ZuPoint* p = points.First(); p != nullptr; p = p->Next()) {
    Json point = {{"id", p->GetId()}};
    if (!p->GetName().empty()) point["name"] = p->GetName().chars();
    point["x"] = p->m_dX;
    point["y"] = p->m_dY;
    point["z"] = p->m_dZ;
    root["points"].push_back(std::move(point));
  }
}

ExitCode Run(const Values& values, Context& context) {
  ZuPointList points;
  ReadPoints(values.strPoints, values.format, context, &points);
  GiveCommonIds("", context, &points, nullptr);
  const ZuLokalSystem system =
      ReadLokalSystem(values.lokal, NameInMessages(values.strPoints), points);
  CheckPoints(values, system, points);
  ZuTrafo3d trafo;
  std::vector<Scale> scales;
  const bool bScales = Calc(values, system, points, &trafo, &scales);
  trafo.InPlaceTransform(&points);
  WriteText(system, points, scales, trafo, context.Text());
  FillJson(points, scales, bScales, trafo, &context.Root());
  if (!bScales) {
    context.Warn("the scales disagree by more than --scale-tolerance; their mean was taken");
  }
  if (!values.strOutput.empty()) {
    WritePoints(&points, values.format.strColumns, &context.NewOutput(values.strOutput));
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
  AddPointOptions(options, &pValues->format);
  options.Output("-o,--output", "OUT", &pValues->strOutput,
                 "coordinate file of all points in the local system");
  return [pValues](Context& context) { return Run(*pValues, context); };
}

}  // namespace cli
