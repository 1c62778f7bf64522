// zu construct conditions: straightens points of a plane by what is known of the lines between
// them.
#include <algorithm>
#include <cmath>
#include <memory>

#include "commands.h"
#include "condition_file.h"
#include "construct_input.h"
#include "svg.h"
#include "text_table.h"
#include "zu/transform/plane_conditions.h"

namespace cli {
namespace {

struct ConditionValues : ConstructValues {
  std::string strConditions, strType = "affin";
};

constexpr const char* kKinds[] = {"parallel", "right", "ratio"};

void AddConditions(const ConditionValues& values, const Construction& made, const PointRefs& points,
                   ZuPlaneConditions* pSolver) {
  for (const ConditionOfFile& line : ReadConditions(values.strConditions)) {
    if (!line.condition.IsOfLines()) {
      throw CommandError(kBadInput, line.strPlace +
                                        ": lengths and axes are for zu rectify; parallel, right or "
                                        "equal A B C D, or ratio A B C D R would be right");
    }
    std::array<size_t, 4> numbers = {};
    for (size_t k = 0; k < 4; ++k) {
      const auto found =
          std::find(points.begin(), points.end(), &made.Find(line.condition.points[k]));
      numbers[k] = static_cast<size_t>(found - points.begin());
    }
    pSolver->Add(line.condition.Condition(numbers));
  }
}

void TellConditions(const ZuPlaneConditions& solver, const PointRefs& points, Construction& made,
                    Context& context) {
  Json list = Json::array();
  for (const ZuPlaneCondition& c : solver.GetConditions()) {
    std::string strTitle = kKinds[c.kind];
    Json names = Json::array();
    for (const size_t u : c.auPoint) {
      strTitle += " " + PointLabel(*points[u]);
      names.push_back(JsonLabel(*points[u]));
    }
    const bool bRatio = c.kind == ZuPlaneCondition::eLengthRatio;
    made.TellLine(strTitle, (bRatio ? Fixed(100.0 * c.dResidual, 6) + " % off"
                                    : "off by " + Angle(c.dResidual)) +
                                (c.bUsed ? "" : "  (others hold it)"));
    list.push_back({{"kind", kKinds[c.kind]},
                    {"points", std::move(names)},
                    {"ratio", bRatio ? Json(c.dRatio) : Json()},
                    {bRatio ? "residual" : "residual_rad", c.dResidual},
                    {"used", c.bUsed}});
  }
  context.Root()["conditions"] = std::move(list);
}

ExitCode RunConditions(const ConditionValues& values, Context& context) {
  Construction made(values, context);
  PointRefs points;
  for (const ZuPoint* p = made.Points().First(); p != nullptr; p = p->Next()) points.push_back(p);
  made.ChoosePlane(points);
  ZuPlaneConditions solver(values.strType == "affin" ? eZuTrafo2DAffin : eZuTrafo2DProjektiv);
  const std::vector<ZuPoint2d> flat = made.InPlane(points);
  for (const ZuPoint2d& p : flat) solver.AddPoint(p);
  AddConditions(values, made, points, &solver);
  const eConditionsStatus eStatus = solver.Calc();
  if (eStatus != eConditionsOk) {
    const std::string strFree = solver.GetFree();
    throw CommandError(kUndetermined, NameInMessages(values.strConditions) + ": " +
                                          ZuConditionsStatusText(eStatus) +
                                          (strFree.empty() ? "" : "\nfree is: " + strFree));
  }
  double adMap[9];
  solver.GetMap(adMap);
  Json map = Json::array();
  for (int i = 0; i < 3; ++i) {
    const double* r = adMap + 3 * i;
    map.push_back({r[0], r[1], r[2]});
    made.TellLine(i == 0 ? "map" : "",
                  Shortest(r[0]) + "  " + Shortest(r[1]) + "  " + Shortest(r[2]));
  }
  context.Root()["type"] = values.strType;
  context.Root()["map"] = std::move(map);
  TellConditions(solver, points, made, context);
  ZuCadFit fit;
  fit.iRedundancy = solver.GetRedundancy();
  fit.dSigma0 = solver.GetSigma0();
  std::vector<double> moves;
  for (const ZuVector2d& v : solver.GetMoves()) {
    moves.push_back(v.Norm());
    fit.dLargest = std::max(fit.dLargest, moves.back());
    fit.dRms += v * v / static_cast<double>(points.size());
  }
  fit.dRms = std::sqrt(fit.dRms);
  made.TellFit(fit);
  made.TellResiduals("moved", points, moves);
  for (size_t i = 0; i < points.size(); ++i) {
    made.AddPoint(PointLabel(*points[i]), solver.Transform(flat[i]));
  }
  return made.Finish("conditions", fit.dLargest);
}

}  // namespace

Runner DefineConstructConditions(Options& options) {
  auto pValues = std::make_shared<ConditionValues>();
  AddConstructOptions(options, pValues.get());
  options.Option("--conditions", "FILE", &pValues->strConditions,
                 "conditions, one a line: parallel, right or equal A B C D, or ratio A B C D R; of "
                 "the lines A to B and C to D");
  options.Required();
  options.Choice("--type", {"affin", "projektiv"}, &pValues->strType,
                 "map to be found: affin, where parallels are parallel already, or projektiv");
  options.Option("--tolerance", "T", &pValues->dLimit,
                 "exit code 1 where a point moves by more than T to fulfil the conditions");
  options.Above(0.0);
  return [pValues](Context& context) { return RunConditions(*pValues, context); };
}

}  // namespace cli
