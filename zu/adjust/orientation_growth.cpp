#include "zu/adjust/internal/orientation_growth.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "zu/adjust/internal/image_ray.h"
#include "zu/adjust/intersection.h"

namespace zu::internal {

namespace {

constexpr int kLeast = 4;  // known points of a photo that is oriented by intersected ones
constexpr double kLeastAngle = 0.02;  // between the rays of a point that orients others [rad]
constexpr size_t kPairs = 12;         // photos whose pairs are looked at for the poses that agree
constexpr size_t kPairPoints = 40;    // and points of each pair

// Mean square of the residuals of points intersected from two poses [mm^2]; infinite where a point
// lies behind a photo, negative without a common point.
double PairSquare(const Shot& a, const ZuPose& poseA, const Shot& b, const ZuPose& poseB,
                  const std::map<unsigned, KnownPoint>& known) {
  ZuIntersectionOptions options;
  double dSum = 0.0;
  size_t uCount = 0;
  for (size_t i = 0, k = 0; i < a.points.size() && k < b.points.size() && uCount < kPairPoints;) {
    const unsigned uA = a.points[i].image.uId, uB = b.points[k].image.uId;
    if (uA == uB && known.count(uA) == 0) {
      const auto result =
          ZuIntersectRays({RayOf(a, poseA, a.points[i]), RayOf(b, poseB, b.points[k])}, options);
      if (result.status != ZuAdjustStatus::Good) return std::numeric_limits<double>::infinity();
      for (const ZuPointTest& test : result.tests) {
        dSum += test.adResidual[0] * test.adResidual[0] + test.adResidual[1] * test.adResidual[1];
      }
      ++uCount;
    }
    i += uA <= uB;
    k += uB <= uA;
  }
  return uCount > 0 ? dSum / static_cast<double>(uCount) : -1.0;
}

std::vector<ZuPose> PosesOf(const ZuResectionResult& result) {
  std::vector<ZuPose> poses = {result.pose};
  poses.insert(poses.end(), result.alternatives.begin(), result.alternatives.end());
  return poses;
}

}  // namespace

ZuIntersectionRay RayOf(const Shot& shot, const ZuPose& pose, const ImagePoint& point) {
  ZuIntersectionRay ray;
  ray.pCamera = &shot.camera;
  ray.pose = pose;
  ray.image = point.image;
  ray.image.uId = shot.uId;
  return ray;
}

void OrientationGrowth::Run() {
  if (!m_bFree) ResectByControl();
  for (;;) {
    IntersectPoints();
    if (m_bFree) AdjustFree();
    if (!GrowOnce() && !ChoosePair() && !TakeAmbiguous() && !GrowByPair()) break;
  }
  for (Shot& shot : shots) {  // their figures
    const bool bRelative = shot.IsFound() && (m_bFree || shot.eWay == ZuOrientationWay::Relative);
    if (bRelative && TryShot(&shot, true)) shot.eWay = ZuOrientationWay::Relative;
  }
}

ZuResectionResult OrientationGrowth::Resect(Shot* pShot, bool bControlAlone) {
  std::vector<ZuResectionPoint> points;
  for (const ImagePoint& measured : pShot->points) {
    const auto at = known.find(measured.image.uId);
    if (at == known.end()) continue;
    if (bControlAlone && at->second.eFrom != ZuOrientationWay::Control) continue;
    ZuResectionPoint point;
    point.image = measured.image;
    point.X = at->second.position[0];
    point.Y = at->second.position[1];
    point.Z = at->second.position[2];
    point.objectCovariance = at->second.covariance;
    points.push_back(point);
  }
  pShot->iKnown = static_cast<int>(points.size());
  ZuResectionOptions options;
  options.uSeed = m_uSeed;
  options.bSigmaGiven = m_bSigmaGiven;
  return pShot->last = ZuResect(pShot->camera, points, options);
}

void OrientationGrowth::ResectByControl() {
  for (Shot& shot : shots) {
    if (shot.IsFound()) continue;
    const ZuResectionResult result = Resect(&shot, true);
    if (result.status != ZuAdjustStatus::Good) continue;
    if (result.alternatives.empty()) {
      shot.pose = result.pose;
      shot.eWay = ZuOrientationWay::Control;
    } else {
      shot.poses = PosesOf(result);
    }
  }
}

// Intersects the points of two or more oriented shots anew where a ray has come.
void OrientationGrowth::IntersectPoints() {
  std::map<unsigned, std::vector<ZuIntersectionRay>> rays;
  for (const Shot& shot : shots) {
    if (!shot.IsFound()) continue;
    for (const ImagePoint& point : shot.points) {
      const auto at = known.find(point.image.uId);
      if (at != known.end() && at->second.eFrom == ZuOrientationWay::Control) continue;
      rays[point.image.uId].push_back(RayOf(shot, shot.pose, point));
    }
  }
  ZuIntersectionOptions options;
  options.tests.bSnoop = true;
  options.dLeastAngle = kLeastAngle;
  for (const auto& [uId, raysOfPoint] : rays) {
    const int n = static_cast<int>(raysOfPoint.size());
    if (n < 2 || m_raysOf[uId] == n) continue;
    m_raysOf[uId] = n;
    const ZuIntersectionResult result = ZuIntersectRays(raysOfPoint, options);
    if (result.status != ZuAdjustStatus::Good) continue;
    KnownPoint& point = known[uId];
    point.eFrom = ZuOrientationWay::Points;
    for (size_t k = 0; k < 3; ++k) point.position[k] = result.position[static_cast<int>(k) + 1];
    point.covariance = result.covariance;
  }
}

bool OrientationGrowth::TryShot(Shot* pShot, bool bAmbiguousToo) {
  const ZuResectionResult result = Resect(pShot, false);
  if (result.status != ZuAdjustStatus::Good) return false;
  if (!result.alternatives.empty() && !bAmbiguousToo) {
    pShot->poses = PosesOf(result);
    return false;
  }
  pShot->pose = result.pose;
  pShot->eWay = ZuOrientationWay::Control;
  for (const ImagePoint& point : pShot->points) {
    const auto at = known.find(point.image.uId);
    if (at == known.end() || at->second.eFrom == ZuOrientationWay::Control) continue;
    pShot->eWay = std::max(pShot->eWay, at->second.eFrom);
  }
  return true;
}

// Orients the shots that see the most known points, at least half as many as the best of them.
bool OrientationGrowth::GrowOnce() {
  std::vector<std::pair<int, Shot*>> next;  // known points
  for (Shot& shot : shots) {
    if (shot.IsFound()) continue;
    int iCount = 0;
    for (const ImagePoint& point : shot.points) iCount += known.count(point.image.uId) != 0;
    if (iCount >= kLeast && iCount > shot.iKnown) next.emplace_back(iCount, &shot);
  }
  std::stable_sort(next.begin(), next.end(),
                   [](const auto& a, const auto& b) { return a.first > b.first; });
  bool bGrown = false;
  for (const auto& [iCount, pShot] : next) {
    if (bGrown && 2 * iCount < next.front().first) break;
    bGrown = TryShot(pShot, false) || bGrown;
  }
  return bGrown;
}

// Of the shots that control leaves several poses: takes the poses of the two whose other points fit
// best, where the next best fit is much worse.
bool OrientationGrowth::ChoosePair() {
  std::vector<Shot*> candidates;
  size_t uFound = 0;
  for (Shot& shot : shots) {
    if (shot.IsFound()) shot.poses = {shot.pose};
    uFound += shot.IsFound();
    if (!shot.poses.empty() && candidates.size() < kPairs) candidates.push_back(&shot);
  }
  if (uFound > 1) return false;
  struct Choice {
    double dContrast = 1.0;
    Shot *pA = nullptr, *pB = nullptr;
    size_t uA = 0, uB = 0;
  } best;
  for (size_t i = 0; i < candidates.size(); ++i) {
    for (size_t k = 0; k < i; ++k) {
      Choice choice{1.0, candidates[k], candidates[i], 0, 0};
      double dLeast = std::numeric_limits<double>::infinity(), dNext = dLeast;
      for (size_t a = 0; a < choice.pA->poses.size(); ++a) {
        for (size_t b = 0; b < choice.pB->poses.size(); ++b) {
          const double d =
              PairSquare(*choice.pA, choice.pA->poses[a], *choice.pB, choice.pB->poses[b], known);
          if (d < 0.0) continue;
          if (d < dLeast) {
            dNext = dLeast;
            dLeast = d;
            choice.uA = a;
            choice.uB = b;
          } else {
            dNext = std::min(dNext, d);
          }
        }
      }
      if (!std::isfinite(dLeast)) continue;
      constexpr double kMost = std::numeric_limits<double>::max();
      choice.dContrast = std::isfinite(dNext) ? dNext / dLeast : kMost;
      if (choice.dContrast > best.dContrast) best = choice;
    }
  }
  if (best.pA == nullptr) return false;
  const bool bFound[2] = {best.pA->IsFound(), best.pB->IsFound()};
  best.pA->pose = best.pA->poses[best.uA];
  best.pB->pose = best.pB->poses[best.uB];
  best.pA->eWay = best.pB->eWay = ZuOrientationWay::Points;
  IntersectPoints();
  if (!TryShot(best.pA, true)) best.pA->last = {};
  if (!TryShot(best.pB, true)) best.pB->last = {};
  return !bFound[0] || !bFound[1];
}

// Takes the best pose of the shot with the most known points, its alternatives told.
bool OrientationGrowth::TakeAmbiguous() {
  Shot* pBest = nullptr;
  for (Shot& shot : shots) {
    if (shot.IsFound() || shot.poses.size() < 2) continue;
    if (pBest == nullptr || shot.iKnown > pBest->iKnown) pBest = &shot;
  }
  if (pBest == nullptr) return false;
  if (!TryShot(pBest, true)) pBest->poses.clear();
  return true;
}

}  // namespace zu::internal
