// Orientation without any known point: two photos to each other, the rest to these.
#include <algorithm>
#include <cmath>
#include <limits>

#include "zu/adjust/internal/dense_cholesky.h"
#include "zu/adjust/internal/image_ray.h"
#include "zu/adjust/internal/orientation_growth.h"
#include "zu/adjust/network.h"
#include "zu/adjust/relative_orientation.h"
#include "zu/transform/trafo3d.h"

namespace zu::internal {

namespace {

constexpr size_t kPairsTried = 16;  // relative orientations
constexpr size_t kStartsTried = 4;  // pairs whose points are shown to other photos
constexpr size_t kJudges = 6;       // those photos
constexpr int kLeastCommon = 6;     // points of a pair
constexpr double kWide = 0.5;       // angle of the rays beyond which wider is no better [rad]
constexpr double kGross = 10.0;     // residual that takes no part, over the median

std::vector<ZuImageObservation> ImagesOf(const Shot& shot) {
  std::vector<ZuImageObservation> images;
  for (const ImagePoint& point : shot.points) images.push_back(point.image);
  return images;
}

int CountCommon(const Shot& a, const Shot& b) {
  int iCount = 0;
  for (size_t i = 0, k = 0; i < a.points.size() && k < b.points.size();) {
    const unsigned uA = a.points[i].image.uId, uB = b.points[k].image.uId;
    iCount += uA == uB;
    i += uA <= uB;
    k += uB <= uA;
  }
  return iCount;
}

Pose PlainPose(const ZuPose& pose) {
  Pose plain;
  for (int k = 0; k < 9; ++k) plain.R[static_cast<size_t>(k)] = pose.rotation[k / 3 + 1][k % 3 + 1];
  for (int k = 0; k < 3; ++k) plain.X0[static_cast<size_t>(k)] = pose.position[k + 1];
  return plain;
}

ZuPose UnitPose() {
  ZuPose pose;
  for (int i = 1; i <= 3; ++i) {
    for (int k = 1; k <= 3; ++k) pose.rotation[i][k] = i == k ? 1.0 : 0.0;
    pose.position[i] = 0.0;
  }
  return pose;
}

}  // namespace

// A pair with its pose, and how well other photos fit its points.
struct OrientationGrowth::FreeStart {
  Shot *pA = nullptr, *pB = nullptr;
  ZuRelativeResult pair;
  double dScore = 0.0;
};

std::vector<OrientationGrowth::FreeStart> OrientationGrowth::FreeStarts() {
  std::vector<std::pair<int, std::pair<Shot*, Shot*>>> pairs;
  for (size_t i = 0; i < shots.size(); ++i) {
    for (size_t k = 0; k < i; ++k) {
      const int iCommon = CountCommon(shots[k], shots[i]);
      if (iCommon >= kLeastCommon) pairs.push_back({iCommon, {&shots[k], &shots[i]}});
    }
  }
  std::stable_sort(pairs.begin(), pairs.end(),
                   [](const auto& a, const auto& b) { return a.first > b.first; });
  // Of the pairs with many points some from all over the list: neighbours have the most and the
  // smallest angles.
  std::erase_if(pairs, [&](const auto& p) { return 2 * p.first < pairs.front().first; });
  std::vector<FreeStart> starts;
  const size_t uStep = std::max<size_t>(1, pairs.size() / kPairsTried);
  for (size_t i = 0; i < pairs.size(); i += uStep) {
    FreeStart start{pairs[i].second.first, pairs[i].second.second, {}, 0.0};
    ZuRelativeOptions options;
    options.uSeed = m_uSeed;
    start.pair = ZuOrientRelative(start.pA->camera, ImagesOf(*start.pA), start.pB->camera,
                                  ImagesOf(*start.pB), options);
    if (start.pair.status != ZuAdjustStatus::Good) {
      if (strFreeWhy.empty()) strFreeWhy = start.pair.strWhy;
      continue;
    }
    start.dScore =
        static_cast<double>(start.pair.agreeing.size()) * std::min(start.pair.dAngle, kWide);
    starts.push_back(std::move(start));
  }
  if (pairs.empty()) strFreeWhy = "no two photos share six points";
  std::stable_sort(starts.begin(), starts.end(),
                   [](const FreeStart& a, const FreeStart& b) { return a.dScore > b.dScore; });
  if (starts.size() > kStartsTried) starts.resize(kStartsTried);
  return starts;
}

void OrientationGrowth::Place(const FreeStart& start, const ZuPose& pose) {
  known.clear();
  m_raysOf.clear();
  start.pA->pose = UnitPose();
  start.pB->pose = pose;
  start.pA->eWay = start.pB->eWay = ZuOrientationWay::Relative;
  IntersectPoints();
}

// Mean residual of other photos on the points of the start [mm]; infinite where none is found.
double OrientationGrowth::Judge(const FreeStart& start) {
  std::vector<std::pair<int, Shot*>> judges;
  for (Shot& shot : shots) {
    if (shot.IsFound()) continue;
    const int iCommon = std::min(CountCommon(shot, *start.pA), CountCommon(shot, *start.pB));
    if (iCommon >= kLeastCommon) judges.emplace_back(iCommon, &shot);
  }
  std::stable_sort(judges.begin(), judges.end(),
                   [](const auto& a, const auto& b) { return a.first > b.first; });
  if (judges.size() > kJudges) judges.resize(kJudges);
  if (judges.empty()) return start.pair.dRms;
  std::vector<double> rms;
  for (const auto& [iCommon, pShot] : judges) {
    const ZuResectionResult result = Resect(pShot, false);
    const bool bGood = result.status == ZuAdjustStatus::Good;
    rms.push_back(bGood ? result.dRms : std::numeric_limits<double>::infinity());
    pShot->iKnown = 0;
  }
  std::sort(rms.begin(), rms.end());
  return rms[rms.size() / 2];
}

bool OrientationGrowth::StartFree() {
  const std::vector<FreeStart> starts = FreeStarts();
  double dLeast = std::numeric_limits<double>::infinity();
  const FreeStart* pBest = nullptr;
  ZuPose best;
  for (const FreeStart& start : starts) {
    std::vector<ZuPose> poses = {start.pair.pose};
    poses.insert(poses.end(), start.pair.alternatives.begin(), start.pair.alternatives.end());
    for (const ZuPose& pose : poses) {
      Place(start, pose);
      const double d = Judge(start);
      start.pA->eWay = start.pB->eWay = ZuOrientationWay::None;
      if (!(d < dLeast)) continue;
      dLeast = d;
      pBest = &start;
      best = pose;
    }
  }
  known.clear();
  m_raysOf.clear();
  for (Shot& shot : shots) shot.iKnown = 0;
  if (pBest == nullptr) return false;
  Place(*pBest, best);
  m_bFree = true;
  return true;
}

// Where growth by known points stands still: a shot that shares six points with an oriented one,
// one of them known, which gives the scale.
bool OrientationGrowth::GrowByPair() {
  for (Shot& shot : shots) {
    if (shot.IsFound()) continue;
    for (const Shot& other : shots) {
      if (!other.IsFound() || CountCommon(shot, other) < kLeastCommon) continue;
      ZuRelativeOptions options;
      options.uSeed = m_uSeed;
      const ZuRelativeResult pair =
          ZuOrientRelative(other.camera, ImagesOf(other), shot.camera, ImagesOf(shot), options);
      if (pair.status != ZuAdjustStatus::Good || !pair.alternatives.empty()) continue;
      if (ScalePair(other, pair, &shot)) return true;
    }
  }
  return false;
}

// Scales the pair by the distances of its known points from the oriented shot.
bool OrientationGrowth::ScalePair(const Shot& other, const ZuRelativeResult& pair, Shot* pShot) {
  const Pose base = PlainPose(other.pose), relative = PlainPose(pair.pose);
  std::vector<double> scales;
  for (const unsigned uId : pair.agreeing) {
    const auto at = known.find(uId);
    if (at == known.end()) continue;
    const ImagePoint *a = FindImagePoint(other.points, uId),
                     *b = FindImagePoint(pShot->points, uId);
    const ZuIntersectionResult result =
        ZuIntersectRays({RayOf(other, UnitPose(), *a), RayOf(*pShot, pair.pose, *b)});
    if (result.status != ZuAdjustStatus::Good) continue;
    const auto v = ToImage(base, at->second.position.data());
    const ZuVector& p = result.position;
    scales.push_back(std::hypot(v[0], v[1], v[2]) / std::hypot(p[1], p[2], p[3]));
  }
  if (scales.empty()) return false;
  std::sort(scales.begin(), scales.end());
  const double dScale = scales[scales.size() / 2];
  for (int i = 0; i < 3; ++i) {
    const size_t uRow = static_cast<size_t>(3 * i);
    pShot->pose.position[i + 1] = base.X0[static_cast<size_t>(i)];
    for (size_t k = 0; k < 3; ++k) {
      const int iColumn = static_cast<int>(k) + 1;
      pShot->pose.position[i + 1] += dScale * base.R[uRow + k] * relative.X0[k];
      pShot->pose.rotation[i + 1][iColumn] = base.R[uRow] * relative.R[k] +
                                             base.R[uRow + 1] * relative.R[3 + k] +
                                             base.R[uRow + 2] * relative.R[6 + k];
    }
  }
  pShot->eWay = ZuOrientationWay::Relative;
  return true;
}

// Adjusts all that was found so far, the cameras kept, so that errors do not add up along a chain.
void OrientationGrowth::AdjustFree() {
  ZuNetwork network;
  std::map<unsigned, int> indexOf;
  for (const auto& [uId, point] : known) {
    indexOf[uId] = static_cast<int>(network.points.size());
    network.points.emplace_back();
    network.points.back().uId = uId;
    network.points.back().adPosition = point.position;
  }
  std::vector<Shot*> found;
  std::vector<double> lengths;
  for (Shot& shot : shots) {
    if (!shot.IsFound()) continue;
    const Pose pose = PlainPose(shot.pose);
    const int iPhoto = static_cast<int>(found.size());
    found.push_back(&shot);
    network.cameras.emplace_back();
    network.cameras.back().camera = shot.camera;
    ZuNetworkPhoto photo;
    photo.uId = shot.uId;
    photo.iCamera = iPhoto;
    photo.adRotation = pose.R;
    photo.adPosition = pose.X0;
    network.photos.push_back(photo);
    for (const ImagePoint& p : shot.points) {
      const auto at = known.find(p.image.uId);
      double m[2] = {};
      if (at == known.end() ||
          !Project(shot.camera, pose, at->second.position.data(), m, nullptr)) {
        continue;
      }
      network.images.push_back({iPhoto, indexOf[p.image.uId], p.image.x, p.image.y,
                                p.image.dVarianceX, p.image.dCovariance, p.image.dVarianceY});
      lengths.push_back(std::hypot(m[0] - p.image.x, m[1] - p.image.y));
    }
  }
  if (lengths.empty()) return;
  std::vector<double> sorted = lengths;
  std::nth_element(sorted.begin(), sorted.begin() + static_cast<std::ptrdiff_t>(sorted.size() / 2),
                   sorted.end());
  const double dLimit = kGross * sorted[sorted.size() / 2];
  size_t uKept = 0;
  for (size_t i = 0; i < lengths.size(); ++i) {
    if (lengths[i] <= dLimit) network.images[uKept++] = network.images[i];
  }
  network.images.resize(uKept);
  ZuNetworkOptions options;
  options.eDatum = ZuNetworkDatum::Inner;
  options.bStatistics = false;
  const ZuNetworkResult result = network.Adjust(options);
  if (result.status != ZuAdjustStatus::Good) return;
  for (size_t i = 0; i < found.size(); ++i) {
    if (!result.photoUsed[i]) continue;
    for (int k = 0; k < 9; ++k) {
      found[i]->pose.rotation[k / 3 + 1][k % 3 + 1] =
          result.photos[i].adRotation[static_cast<size_t>(k)];
    }
    for (int k = 0; k < 3; ++k) {
      found[i]->pose.position[k + 1] = result.photos[i].adPosition[static_cast<size_t>(k)];
    }
  }
  m_raysOf.clear();
  IntersectPoints();
}

void OrientationGrowth::SetFreeFrame() {
  std::array<double, 3> centre{};
  double n = 0.0, dMean = 0.0;
  for (const auto& [uId, point] : known) {
    n += 1.0;
    for (size_t k = 0; k < 3; ++k) centre[k] += (point.position[k] - centre[k]) / n;
  }
  std::vector<double> spread(9, 0.0), values(3), vectors(9);
  for (const auto& [uId, point] : known) {
    double d[3];
    for (size_t k = 0; k < 3; ++k) d[k] = point.position[k] - centre[k];
    for (size_t k = 0; k < 9; ++k) spread[k] += d[k / 3] * d[k % 3];
    dMean += std::hypot(d[0], d[1], d[2]) / n;
  }
  if (!(dMean > 0.0)) return;
  SymmetricEigen(3, spread.data(), values.data(), vectors.data());
  // Rows: the axes of the frame. x the largest extent.
  std::array<double, 9> axes{};
  double dSide = 0.0;
  for (const Shot& shot : shots) {
    for (size_t k = 0; shot.IsFound() && k < 3; ++k) {
      dSide += vectors[3 * k] * (shot.pose.position[static_cast<int>(k) + 1] - centre[k]);
    }
  }
  for (size_t k = 0; k < 3; ++k) {
    axes[k] = vectors[3 * k + 2];
    axes[6 + k] = dSide < 0.0 ? -vectors[3 * k] : vectors[3 * k];
  }
  for (size_t k = 0; k < 3; ++k) {  // y = z x x
    const size_t u = (k + 1) % 3, v = (k + 2) % 3;
    axes[3 + k] = axes[6 + u] * axes[v] - axes[6 + v] * axes[u];
  }
  Carry(axes, 1.0 / dMean, centre, {});
}

bool OrientationGrowth::TieTo(const ZuPointList& target) {
  ZuPointList source;
  for (const auto& [uId, p] : known) {
    source.Add(ZuPoint(uId, p.position[0], p.position[1], p.position[2], 0));
  }
  ZuTrafo3d trafo;
  if (!trafo.CalcByControlPoints(&target, &source, 3, false)) return false;
  std::array<double, 9> R{};
  std::array<double, 3> from{}, to{};
  for (int i = 0; i < 3; ++i) {
    for (int k = 0; k < 3; ++k) R[static_cast<size_t>(3 * i + k)] = trafo.m_mRot[i + 1][k + 1];
    from[static_cast<size_t>(i)] = trafo.m_vSource[i + 1];
    to[static_cast<size_t>(i)] = trafo.m_vTarget[i + 1];
  }
  Carry(R, trafo.m_dScale, from, to);
  return true;
}

// Carries points and shots by y = s R (x - from) + to, R row by row.
void OrientationGrowth::Carry(const std::array<double, 9>& R, double s,
                              const std::array<double, 3>& from, const std::array<double, 3>& to) {
  const auto moved = [&](const std::array<double, 3>& x) {
    std::array<double, 3> y = to;
    for (size_t i = 0; i < 9; ++i) y[i / 3] += s * R[i] * (x[i % 3] - from[i % 3]);
    return y;
  };
  for (auto& [uId, point] : known) point.position = moved(point.position);
  for (Shot& shot : shots) {
    if (!shot.IsFound()) continue;
    const Pose pose = PlainPose(shot.pose);
    const auto x0 = moved(pose.X0);
    for (size_t i = 0; i < 9; ++i) {
      const double* a = &R[i - i % 3];
      shot.pose.rotation[static_cast<int>(i / 3) + 1][static_cast<int>(i % 3) + 1] =
          a[0] * pose.R[i % 3] + a[1] * pose.R[3 + i % 3] + a[2] * pose.R[6 + i % 3];
    }
    for (size_t i = 0; i < 3; ++i) shot.pose.position[static_cast<int>(i) + 1] = x0[i];
    // Rotations turn about the image axes and stay.
    const auto row = [&](size_t i, size_t k) {
      if (i < 3 || k < 3) return i == k ? 1.0 : 0.0;
      return s * R[3 * (i - 3) + k - 3];
    };
    const std::array<double, 36> q = shot.pose.covariance;
    for (size_t i = 0; i < 36; ++i) {
      double d = 0.0;
      for (size_t k = 0; k < 36; ++k) d += row(i / 6, k / 6) * q[k] * row(i % 6, k % 6);
      shot.pose.covariance[i] = d;
    }
  }
}

}  // namespace zu::internal
