// zu construct: positions from directions and distances, offsets from a line, corners of two lines.
#include <algorithm>
#include <cmath>
#include <memory>
#include <numbers>

#include "commands.h"
#include "construct_input.h"
#include "svg.h"
#include "table_decimals.h"
#include "text_table.h"
#include "zu/cad/lines_match.h"
#include "zu/cad/ortho_line.h"
#include "zu/cad/sight_intersection.h"
#include "zu/foundation/strict_number.h"

namespace cli {
namespace {

struct SightValues : ConstructValues {
  std::vector<std::string> directions, distances;
  std::string strUnit = "gon", strName = "new";
  double dSigmaAngle = 0.0, dSigmaDistance = 0.0;
  bool bRight = false;
};

double UnitOf(const std::string& strUnit) {
  if (strUnit == "rad") return 1.0;
  return std::numbers::pi / (strUnit == "deg" ? 180.0 : 200.0);
}

// "P:54.2"
ZuCadSight SightOf(const std::string& strText, const char* szOption, ZuCadSight::eKind kind,
                   PointRefs* pKnown, const Construction& made) {
  const size_t uColon = strText.rfind(':');
  ZuCadSight sight;
  sight.kind = kind;
  if (uColon == std::string::npos ||
      !ZuParseNumber(std::string_view(strText).substr(uColon + 1), &sight.dValue) ||
      (kind == ZuCadSight::eDistance && sight.dValue < 0.0)) {
    throw CommandError(kUsage, std::string(szOption) + " \"" + strText +
                                   "\" cannot be understood; P:VALUE would be right");
  }
  pKnown->push_back(&made.Find(strText.substr(0, uColon)));
  return sight;
}

std::vector<ZuCadSight> SightsOf(const SightValues& values, const char* szDirection,
                                 Construction& made, PointRefs* pKnown) {
  const double dUnit = UnitOf(values.strUnit);
  std::vector<ZuCadSight> sights;
  for (const std::string& strText : values.directions) {
    sights.push_back(SightOf(strText, szDirection, ZuCadSight::eDirection, pKnown, made));
    sights.back().dValue *= -dUnit;
    sights.back().dSigma = values.dSigmaAngle * dUnit;
  }
  for (const std::string& strText : values.distances) {
    sights.push_back(SightOf(strText, "--distance", ZuCadSight::eDistance, pKnown, made));
    sights.back().dSigma = values.dSigmaDistance;
  }
  if (sights.empty()) {
    throw CommandError(kUsage, std::string(szDirection) + " P:VALUE is missing");
  }
  made.ChoosePlane(*pKnown);
  for (size_t i = 0; i < sights.size(); ++i) sights[i].ptKnown = made.InPlane(*(*pKnown)[i]);
  return sights;
}

ExitCode Report(const SightValues& values, const char* szKind, const ZuCadPosition& position,
                const std::vector<ZuCadSight>& sights, const PointRefs& known, Construction& made,
                Context& context) {
  const double adSd[] = {std::sqrt(position.adCov[0]), std::sqrt(position.adCov[4])};
  if (position.fit.dSigma > 0.0) {
    made.Tell("sd", ShortLength(adSd[0]) + "  " + ShortLength(adSd[1]), {adSd[0], adSd[1]});
  }
  made.TellFit(position.fit);
  const double dUnit = UnitOf(values.strUnit);
  Json residuals = Json::array();
  for (size_t i = 0; i < sights.size(); ++i) {
    const bool bDirection = sights[i].kind == ZuCadSight::eDirection;
    // Directions of the library count the other way round.
    const double d = bDirection ? -position.residuals[i] / dUnit : position.residuals[i];
    residuals.push_back({{"point", JsonLabel(*known[i])},
                         {"kind", bDirection ? "direction" : "distance"},
                         {bDirection ? "residual_" + values.strUnit : "residual", d}});
    made.TellLine("residual of " + PointLabel(*known[i]),
                  Fixed(d, 6) + (bDirection ? " " + values.strUnit : ""));
  }
  context.Root()["measurements"] = std::move(residuals);
  made.AddPoint(values.strName, position.pt);
  if (position.bOther) made.AddPoint("other", position.ptOther);
  return made.Finish(szKind);
}

ExitCode RunIntersection(const SightValues& values, Context& context) {
  Construction made(values, context);
  PointRefs known;
  std::vector<ZuCadSight> sights = SightsOf(values, "--bearing", made, &known);
  for (ZuCadSight& s : sights) {
    if (s.kind == ZuCadSight::eDirection) s.dValue += 0.5 * std::numbers::pi;
  }
  const ZuCadPosition position = ZuCadIntersect(sights, !values.bRight);
  made.Check(position.fit.eStatus, "intersection");
  made.Tell("angle_of_intersection_rad", Angle(position.dGeometry), position.dGeometry);
  return Report(values, "intersection", position, sights, known, made, context);
}

ExitCode RunResection(const SightValues& values, Context& context) {
  Construction made(values, context);
  PointRefs known;
  const std::vector<ZuCadSight> sights = SightsOf(values, "--direction", made, &known);
  const ZuCadPosition position = ZuCadResect(sights);
  made.Check(position.fit.eStatus, "resection");
  const double dZero = Construction::Turned(position.dZero);
  made.Tell("bearing_of_zero_rad", Angle(dZero), dZero);
  made.Tell("gap_to_the_dangerous_circle", Fixed(position.dGeometry, 6) + " of its radius",
            position.dGeometry);
  return Report(values, "resection", position, sights, known, made, context);
}

void AddSightOptions(Options& options, const std::shared_ptr<SightValues>& pValues,
                     const char* szDirection, const char* szHelp) {
  AddConstructOptions(options, pValues.get());
  options.Option(szDirection, "P:ANGLE", &pValues->directions, szHelp);
  options.Choice("--angle", {"gon", "deg", "rad"}, &pValues->strUnit, "unit of the angles, gon");
  options.Option("--sigma-angle", "S", &pValues->dSigmaAngle,
                 "standard deviation of an angle, in its unit");
  options.Above(0.0);
  options.Option("--name", "NAME", &pValues->strName, "name of the point found, \"new\"");
}

struct OrthoValues : ConstructValues {
  std::string strLine, strOffsets, strChain, strClose;
  double dLength = 0.0;
};

// "10,L5,R3.5,B2": straight on, to the left, to the right, back.
std::vector<ZuCadLeg> LegsOf(const std::string& strChain) {
  std::vector<ZuCadLeg> legs;
  for (const std::string& strLeg : PartsOf(strChain, ',')) {
    ZuCadLeg leg;
    const size_t uTurn = strLeg.empty() ? std::string::npos : std::string("SLBR").find(strLeg[0]);
    if (uTurn != std::string::npos) leg.iTurn = static_cast<int>(uTurn);
    if (!ZuParseNumber(std::string_view(strLeg).substr(uTurn == std::string::npos ? 0 : 1),
                       &leg.dLength)) {
      throw CommandError(kUsage, "--chain \"" + strChain +
                                     "\" cannot be understood; lengths behind S, L, R or B, as "
                                     "10,L5.2,R3, would be right");
    }
    legs.push_back(leg);
  }
  return legs;
}

void AddChain(const OrthoValues& values, const ZuCadOrthoLine& line, Construction& made) {
  ZuPoint2d end;
  if (!values.strClose.empty()) end = made.InPlane(made.Find(values.strClose));
  const ZuCadChain chain =
      line.Chain(LegsOf(values.strChain), values.strClose.empty() ? nullptr : &end);
  made.Check(chain.eStatus, "chain");
  if (!values.strClose.empty()) {
    made.TellLength("misclosure_along", chain.dAlong);
    made.TellLength("misclosure_across", chain.dAcross);
    made.Tell("scale_of_the_chain", Fixed(chain.dScale, 9), chain.dScale);
    made.Tell("turn_of_the_chain_rad", Angle(chain.dTurn), chain.dTurn);
  }
  for (size_t i = 0; i < chain.points.size(); ++i) {
    made.AddPoint("leg" + std::to_string(i + 1), chain.points[i]);
  }
}

ExitCode RunOrtho(const OrthoValues& values, Context& context) {
  Construction made(values, context);
  const PointRefs ends = made.FindAll(values.strLine, 2, "--line");
  made.ChoosePlane(ends);
  const ZuCadOrthoLine line(made.InPlane(*ends[0]), made.InPlane(*ends[1]), values.dLength);
  made.Check(line.GetStatus(), "base line");
  made.TellLength("length", line.GetLine().getLength());
  made.Tell("scale", Fixed(line.GetScale(), 9), line.GetScale());
  Json feet = Json::array();
  if (!values.strChain.empty()) {
    AddChain(values, line, made);
  } else if (!values.strOffsets.empty()) {
    ZuPointList offsets;
    PointFormat format;
    format.strToldColumns = "idname,x,y";
    format.szCoordinates = "xy";
    ReadPoints(values.strOffsets, format, context, &offsets);
    for (const ZuPoint* p = offsets.First(); p != nullptr; p = p->Next()) {
      made.AddPoint(PointLabel(*p), line.Point({p->m_dX, p->m_dY}));
    }
  } else {
    for (const ZuPoint* p : made.Used()) {
      if (p == ends[0] || p == ends[1]) continue;
      ZuPoint2d foot;
      const ZuCadOffset offset = line.Offset(made.InPlane(*p), &foot);
      feet.push_back(
          {{"point", JsonLabel(*p)}, {"station", offset.dStation}, {"offset", offset.dOffset}});
      made.TellLine(PointLabel(*p), "station " + FixedLength(offset.dStation, 6) + "  offset " +
                                        FixedLength(offset.dOffset, 6) +
                                        (offset.dOffset < 0.0 ? "  right" : "  left"));
      made.AddPoint(PointLabel(*p), foot);
    }
  }
  context.Root()["feet"] = std::move(feet);
  return made.Finish("ortho");
}

struct MatchValues : ConstructValues {
  std::string strLines;
  double dExtend1 = 0.0, dExtend2 = 0.0, dAngle = 1.0;
};

ExitCode RunMatch(const MatchValues& values, Context& context) {
  const struct {
    const char* szName;
    eMatchMode eMode;
  } modes[] = {
      {"3d", eMatchMode3d}, {"xy", eMatchModeXY}, {"xz", eMatchModeXZ}, {"yz", eMatchModeYZ}};
  const auto* pMode = std::find_if(std::begin(modes), std::end(modes),
                                   [&](const auto& m) { return values.strPlane == m.szName; });
  if (pMode == std::end(modes)) {
    throw CommandError(kUsage, "--plane \"" + values.strPlane +
                                   "\" cannot be used here; 3d, xy, xz or yz would be right");
  }
  Construction made(values, context);
  const PointRefs p = made.FindAll(values.strLines, 4, "--lines");
  std::vector<ZuPoint3d> ends;
  for (const ZuPoint* pPoint : p) ends.emplace_back(*pPoint);
  const ZuCad2LinesMatch match(ends[0], ends[1], ends[2], ends[3], values.dExtend1, values.dExtend2,
                               values.dAngle, pMode->eMode);
  made.Check(match.IsValid() ? eCadOk : eCadCoincident, "corner");
  made.Tell("parallel", match.IsParallel() ? "yes" : "no", match.IsParallel());
  made.TellLength("gap", match.Distance());
  made.Tell("rating", std::to_string(match.ValueDistance()), match.ValueDistance());
  made.AddPoint("keep1", match.Keep1());
  made.AddPoint("match1", match.Match1());
  made.AddPoint("match2", match.Match2());
  made.AddPoint("keep2", match.Keep2());
  return made.Finish("match", match.Distance());
}

}  // namespace

Runner DefineConstructIntersection(Options& options) {
  auto pValues = std::make_shared<SightValues>();
  AddSightOptions(options, pValues, "--bearing",
                  "a bearing from a known point, clockwise from the y axis of the plane");
  options.Option("--distance", "P:D", &pValues->distances, "a distance from a known point");
  options.Option("--sigma-distance", "S", &pValues->dSigmaDistance,
                 "standard deviation of a distance");
  options.Above(0.0);
  options.Flag("--right", &pValues->bRight,
               "of two solutions the one to the right of the first two points, or the nearer one");
  return [pValues](Context& context) { return RunIntersection(*pValues, context); };
}

Runner DefineConstructResection(Options& options) {
  auto pValues = std::make_shared<SightValues>();
  AddSightOptions(options, pValues, "--direction",
                  "a direction to a known point, clockwise from any zero");
  return [pValues](Context& context) { return RunResection(*pValues, context); };
}

Runner DefineConstructOrtho(Options& options) {
  auto pValues = std::make_shared<OrthoValues>();
  AddConstructOptions(options, pValues.get());
  options.Option("--line", "P,Q", &pValues->strLine, "the base line");
  options.Required();
  AddUseOption(options, pValues.get(), "points whose feet and offsets are told; all without");
  options.Option("--length", "L", &pValues->dLength,
                 "length of the line by tape, which stations and offsets are put to");
  options.Above(0.0);
  options.Option("--offsets", "FILE", &pValues->strOffsets,
                 "points from stations and offsets, columns idname, station, offset; positive to "
                 "the left");
  options.Option("--chain", "LEGS", &pValues->strChain,
                 "points of a chain of right angles from P: 10,L5,R3 runs 10 along the line, 5 to "
                 "the left, 3 to the right of that");
  options.Option("--close", "R", &pValues->strClose, "known point at which the chain ends");
  return [pValues](Context& context) { return RunOrtho(*pValues, context); };
}

Runner DefineConstructMatch(Options& options) {
  auto pValues = std::make_shared<MatchValues>();
  pValues->strPlane = "3d";
  AddConstructOptions(options, pValues.get());
  options.Option("--lines", "A,B,C,D", &pValues->strLines, "line A B and line C D");
  options.Required();
  options.Option("--extend1", "E", &pValues->dExtend1, "how far line A B runs on past the corner");
  options.Option("--extend2", "E", &pValues->dExtend2, "how far line C D runs on past the corner");
  options.Option("--parallel", "DEG", &pValues->dAngle,
                 "lines at no more than this angle are parallel, 1 [deg]");
  options.AtLeast(0.0);
  options.AtMost(90.0);
  options.Option("--tolerance", "T", &pValues->dLimit,
                 "exit code 1 where the gap is longer than T");
  options.Above(0.0);
  return [pValues](Context& context) { return RunMatch(*pValues, context); };
}

}  // namespace cli
