// zu construct: arcs, lines and rectangles through points, in a plane.
#include <algorithm>
#include <cmath>
#include <memory>
#include <numbers>

#include "commands.h"
#include "construct_input.h"
#include "svg.h"
#include "table_decimals.h"
#include "text_table.h"
#include "zu/cad/arc.h"
#include "zu/cad/balanced_line.h"
#include "zu/cad/rectangle.h"

namespace cli {
namespace {

struct ArcValues : ConstructValues {
  double dRadius = 0.0;
  std::string strCentre;
  bool bRight = false, bLong = false, bClockwise = false;
  int iDivide = 0;
};

[[noreturn]] void FailCount(const char* szWhat, size_t uCount) {
  throw CommandError(kUsage, std::string(szWhat) + " takes two points; --points P,Q would be " +
                                 "right, not " + std::to_string(uCount));
}

ZuCadArc MakeArc(const ArcValues& values, Construction& made, PointRefs* pUsed) {
  *pUsed = made.Used();
  PointRefs inPlane = *pUsed;
  if (!values.strCentre.empty()) inPlane.push_back(&made.Find(values.strCentre));
  made.ChoosePlane(inPlane);
  const std::vector<ZuPoint2d> p = made.InPlane(*pUsed);
  if (!values.strCentre.empty()) {
    if (p.size() != 2) FailCount("--centre", p.size());
    return ZuCadArc::ByCentre(made.InPlane(*inPlane.back()), p[0], p[1], !values.bClockwise);
  }
  if (values.dRadius > 0.0) {
    if (p.size() != 2) FailCount("--radius", p.size());
    return ZuCadArc::ByRadius(p[0], p[1], values.dRadius, !values.bRight, values.bLong);
  }
  if (p.size() == 3) return ZuCadArc::ByThreePoints(p[0], p[1], p[2]);
  return ZuCadArc::BestFit(p, values.dSigma);
}

ExitCode RunArc(const ArcValues& values, Context& context) {
  Construction made(values, context);
  PointRefs used;
  const ZuCadArc arc = MakeArc(values, made, &used);
  made.Check(arc.fit.eStatus, "arc");
  made.TellLength("radius", arc.dRadius, std::sqrt(arc.adCov[8]));
  if (arc.fit.dSigma > 0.0) {
    const double adSd[] = {std::sqrt(arc.adCov[0]), std::sqrt(arc.adCov[4])};
    made.Tell("centre_sd", ShortLength(adSd[0]) + "  " + ShortLength(adSd[1]), {adSd[0], adSd[1]});
  }
  made.Tell("sweep_rad",
            Angle(arc.dSweep) + (arc.dSweep > 0.0 ? "  to the left" : "  to the right"),
            arc.dSweep);
  made.TellLength("length", arc.Length());
  made.TellLength("rise", arc.Rise());
  made.TellFit(arc.fit);
  made.TellResiduals("off the arc", used, arc.distances);
  made.AddPoint("centre", arc.ptCentre);
  made.AddPoint("start", arc.Evaluate(0.0));
  made.AddPoint("end", arc.Evaluate(1.0));
  for (int i = 1; i < values.iDivide; ++i) {
    made.AddPoint("arc" + std::to_string(i), arc.Evaluate(static_cast<double>(i) / values.iDivide));
  }
  return made.Finish("arc", arc.fit.dLargest);
}

struct LineValues : ConstructValues {
  double dTolerance = 0.0;
  std::string strBreaks;
};

ZuCadLineOptions LineOptionsOf(const LineValues& values, const Construction& made,
                               const PointRefs& used) {
  ZuCadLineOptions options;
  options.dTolerance = values.dTolerance;
  options.dSigma = values.dSigma;
  if (values.strBreaks.empty()) return options;
  for (const ZuPoint* p : made.FindAll(values.strBreaks, 0, "--breaks")) {
    const auto found = std::find(used.begin(), used.end(), p);
    const size_t u = static_cast<size_t>(found - used.begin());
    if (u == 0 || u == used.size() || (!options.breaks.empty() && u <= options.breaks.back())) {
      throw CommandError(kUsage, "--breaks \"" + values.strBreaks +
                                     "\" cannot be used; points behind the first one, in the order "
                                     "of the line, would be right");
    }
    options.breaks.push_back(u);
  }
  return options;
}

ExitCode RunLine(const LineValues& values, Context& context) {
  Construction made(values, context);
  const PointRefs used = made.Used();
  made.ChoosePlane(used);
  const ZuCadBalancedLine line =
      ZuCadBalancedLine::BestFit(made.InPlane(used), LineOptionsOf(values, made, used));
  made.Check(line.fit.eStatus, "line");
  Json parts = Json::array();
  for (const ZuCadLinePart& part : line.parts) {
    const double dBearing = Construction::Turned(part.dDirection);
    parts.push_back({{"first", JsonLabel(*used[part.uFirst])},
                     {"points", part.uCount},
                     {"bearing_rad", dBearing},
                     {"bearing_sd_rad", part.dDirectionSd},
                     {"offset_sd", part.dOffsetSd},
                     {"length", part.line.getLength()},
                     {"rms", RmsJson(part.dRms)},
                     {"straightness", part.dStraightness}});
    made.TellLine("part " + std::to_string(parts.size()),
                  Counted(static_cast<long long>(part.uCount), "point") + " from " +
                      PointLabel(*used[part.uFirst]) + ", bearing " + Angle(dBearing) +
                      ", straightness " + FixedLength(part.dStraightness, 6));
  }
  made.TellFit(line.fit);
  made.TellResiduals("left of the line", used, line.distances);
  for (size_t i = 0; i < line.corners.size(); ++i) {
    const bool bLast = i + 1 == line.corners.size();
    made.AddPoint(i == 0 ? "start" : bLast ? "end" : "break" + std::to_string(i), line.corners[i]);
  }
  context.Root()["parts"] = std::move(parts);
  return made.Finish("line", line.fit.dLargest);
}

ExitCode RunRectangle(const ConstructValues& values, Context& context) {
  Construction made(values, context);
  const PointRefs used = made.Used();
  made.ChoosePlane(used);
  const std::vector<ZuPoint2d> points = made.InPlane(used);
  const bool bCorners = points.size() < 5;
  const ZuCadRectangle r = bCorners ? ZuCadRectangle::ByCorners(points, values.dSigma)
                                    : ZuCadRectangle::ByOutline(points, values.dSigma);
  made.Check(r.fit.eStatus, "rectangle");
  made.TellLength("width", r.dWidth, r.dWidthSd);
  made.TellLength("height", r.dHeight, r.dHeightSd);
  const double dBearing = Construction::Turned(r.dDirection);
  made.Tell("bearing_rad", Angle(dBearing), dBearing);
  made.Tell(
      "bearing_sd_rad",
      r.dDirectionSd > 0.0 ? Significant(r.dDirectionSd * 200.0 / std::numbers::pi) + " gon" : "-",
      r.dDirectionSd > 0.0 ? Json(r.dDirectionSd) : Json());
  made.TellLength("area", r.Area());
  made.TellFit(r.fit);
  std::vector<double> lengths = r.residuals;
  if (bCorners) {
    lengths.clear();
    for (size_t k = 0; k + 1 < r.residuals.size(); k += 2) {
      lengths.push_back(std::hypot(r.residuals[k], r.residuals[k + 1]));
    }
  }
  made.TellResiduals(bCorners ? "off the corner" : "off the side", used, lengths);
  for (int k = 0; k < 4; ++k) {
    made.AddPoint("corner" + std::to_string(k + 1), r.corners[static_cast<size_t>(k)]);
  }
  made.AddPoint("centre", r.ptCentre);
  double dLargest = 0.0;
  for (const double d : lengths) dLargest = std::max(dLargest, std::fabs(d));
  return made.Finish("rectangle", dLargest);
}

}  // namespace

Runner DefineConstructArc(Options& options) {
  auto pValues = std::make_shared<ArcValues>();
  AddConstructOptions(options, pValues.get());
  AddUseOption(options, pValues.get(),
               "the points of the arc; all without. Three give it outright, more a best fit");
  options.Option("--radius", "R", &pValues->dRadius,
                 "arc of this radius between two points, its centre left of P to Q");
  options.Above(0.0);
  options.Flag("--right", &pValues->bRight, "with --radius: the centre to the right");
  options.Flag("--long", &pValues->bLong, "with --radius: the longer of the two arcs");
  options.Option(
      "--centre", "C", &pValues->strCentre,
      "arc about this point, from the first of two points to the direction of the other");
  options.Flag("--clockwise", &pValues->bClockwise, "with --centre: clockwise");
  options.Option("--divide", "N", &pValues->iDivide, "give the points that divide it in N parts");
  options.AtLeast(1);
  options.AtMost(100000);
  AddFitOptions(options, pValues.get());
  return [pValues](Context& context) { return RunArc(*pValues, context); };
}

Runner DefineConstructLine(Options& options) {
  auto pValues = std::make_shared<LineValues>();
  AddConstructOptions(options, pValues.get());
  AddUseOption(options, pValues.get(), "the points of the line in their order; all without");
  options.Option("--max-offset", "T", &pValues->dTolerance,
                 "break the line so that no point lies farther off, in as few parts as possible");
  options.Above(0.0);
  options.Option("--breaks", "P,Q,...", &pValues->strBreaks,
                 "break the line in front of these points");
  AddFitOptions(options, pValues.get());
  return [pValues](Context& context) { return RunLine(*pValues, context); };
}

Runner DefineConstructRectangle(Options& options) {
  auto pValues = std::make_shared<ConstructValues>();
  AddConstructOptions(options, pValues.get());
  AddUseOption(options, pValues.get(),
               "three or four corners in their order, or five and more points on the sides; all "
               "without");
  AddFitOptions(options, pValues.get());
  return [pValues](Context& context) { return RunRectangle(*pValues, context); };
}

}  // namespace cli
