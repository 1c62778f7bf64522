#include "measure_joined.h"

#include <map>

#include "text_table.h"
#include "zu/adjust/intersection_project.h"

namespace cli {

void AddJoinOptions(Options& options, JoinValues* pValues) {
  options.Choice("--join", {"mean", "rays"}, &pValues->strJoin,
                 "what a point of several photos becomes: the mean of its places on the plane, or "
                 "the intersection of its rays");
  options.Output("--joined", "FILE", &pValues->strJoined,
                 "each point once: id, x, y, z, number of photos, spread of the photos on the "
                 "plane");
}

std::vector<JoinedPoint> JoinPoints(const JoinValues& values, const ZuPlaneMeasurement& result,
                                    const ZuProject& project, Context& context) {
  std::vector<JoinedPoint> joined;
  std::map<unsigned, size_t> places;
  for (const ZuMeanMeasuredPoint& p : result.MeanPoints()) {
    places[p.m_uId] = joined.size();
    joined.push_back(
        {p.m_uId, p.m_iPhotos, {p.m_dX, p.m_dY, p.m_dZ}, false, p.m_dScatter, {0.0, 0.0, 0.0}});
  }
  if (values.strJoin != "rays") return joined;
  const ZuProjectIntersection intersection = ZuIntersectProject(project);
  for (const ZuIntersectedPoint& p : intersection.points) {
    const auto found = places.find(p.uId);
    if (found == places.end() || joined[found->second].iPhotos < 2) continue;
    JoinedPoint& point = joined[found->second];
    if (!p.IsGood()) {
      context.Warn("point " + std::to_string(p.uId) + ": " + p.strWhy + "; its mean is taken");
      continue;
    }
    point.bRays = true;
    for (int k = 0; k < 3; ++k) {
      point.adX[k] = p.position[static_cast<size_t>(k)];
      point.adSd[k] = p.Sd(k);
    }
  }
  return joined;
}

void WriteJoined(const std::vector<JoinedPoint>& points, std::ostream& stream) {
  for (const JoinedPoint& p : points) {
    stream << p.uId << ' ' << Shortest(p.adX[0]) << ' ' << Shortest(p.adX[1]) << ' '
           << Shortest(p.adX[2]) << ' ' << p.iPhotos << ' ' << Shortest(p.dSpread) << '\n';
  }
}

Json JoinedJson(const std::vector<JoinedPoint>& points) {
  Json list = Json::array();
  for (const JoinedPoint& p : points) {
    Json point{{"id", p.uId},        {"x", p.adX[0]},       {"y", p.adX[1]},
               {"z", p.adX[2]},      {"photos", p.iPhotos}, {"way", p.bRays ? "rays" : "mean"},
               {"spread", p.dSpread}};
    point["sd"] = p.bRays ? Json{p.adSd[0], p.adSd[1], p.adSd[2]} : Json();
    list.push_back(std::move(point));
  }
  return list;
}

}  // namespace cli
