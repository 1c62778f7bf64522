#include "zu/image/target_numbers.h"

#include <algorithm>
#include <cmath>
#include <opencv2/calib3d.hpp>

#include "zu/image/internal/disk_offset.h"
#include "zu/photo/photo.h"

namespace {

constexpr double kNear = 0.4;  // of the distance to the next point, within which a target is one's
constexpr double kFirstNear = 0.4;  // the same of the first steps
constexpr int kSeeds = 4;           // points from which poses are grown
constexpr int kSteps = 16;          // of growing
constexpr double kGrowth = 1.5;     // of the radius with each
constexpr int kLocalSteps = 4;  // with what the neighbours tell, so that numbers reach the corners
constexpr double kNearLocal = 0.45;
constexpr std::size_t kAround = 4;
constexpr int kLeast = 6;   // points of a numbering
constexpr int kMargin = 3;  // points that another numbering must have fewer

using Ray = cv::Vec3d;  // in the system of the camera: x right, y down, z forward

// A pose as OpenCV has it: X of the camera = R P + t.
struct Pose {
  cv::Matx33d rotation;
  cv::Vec3d shift;
};

struct Numbers {
  Pose pose;
  std::vector<int> targets;  // for each point its target, -1: none
  int iCount = 0;
  double dSum = 0.0;  // of squared distances
};

// One photo: points and targets in the plane at the camera's constant, without what is known of the
// distortion.
class Search {
 public:
  Search(const ZuPhoto& photo, const ZuPointList& points, const std::vector<ZuTarget>& targets)
      : m_dScale(std::fabs(photo.GetCamera().m_dC) / photo.GetPixelSize()) {
    const ZuRegion& region = photo.GetDigiRegion();
    m_dHalfWidth = (region.Width() + 1) / 2;
    m_dHalfHeight = (region.Height() + 1) / 2;
    for (const ZuPoint* p = points.First(); p != nullptr; p = p->Next()) {
      m_points.emplace_back(p->m_dX, p->m_dY, p->m_dZ);
      m_ids.push_back(p->GetId());
    }
    for (const ZuTarget& target : targets) m_seen.push_back(Seen(photo, target));
    SetStart(photo);
  }

  std::vector<Numbers> All(double dReach) const {
    const std::vector<cv::Point2d> places = Places(m_start);
    const std::vector<double> spaces = Spaces(places);
    std::vector<int> seeds;
    for (int i = 0; i < static_cast<int>(places.size()); ++i) {
      if (IsInside(At(places, i))) seeds.push_back(i);
    }
    std::sort(seeds.begin(), seeds.end(),
              [&](int i, int j) { return cv::norm(At(places, i)) < cv::norm(At(places, j)); });
    if (seeds.size() > kSeeds) seeds.resize(kSeeds);
    std::vector<Numbers> all;
    for (const int iSeed : seeds) {
      for (std::size_t j = 0; j < m_seen.size(); ++j) {
        if (!(cv::norm(m_seen[j] - At(places, iSeed)) < dReach)) continue;
        all.push_back(Grow(Turned(At(places, iSeed), m_seen[j]), iSeed, spaces));
      }
    }
    std::sort(all.begin(), all.end(), [](const Numbers& a, const Numbers& b) {
      return a.iCount != b.iCount ? a.iCount > b.iCount : a.dSum < b.dSum;
    });
    return all;
  }

  double Diagonal() const { return 2 * std::hypot(m_dHalfWidth, m_dHalfHeight); }
  unsigned IdOf(std::size_t uPoint) const { return m_ids[uPoint]; }
  const std::vector<cv::Point3d>& Points() const { return m_points; }
  double Scale() const { return m_dScale; }

  int CountInside(const Pose& pose) const {
    const std::vector<cv::Point2d> places = Places(pose);
    return static_cast<int>(std::count_if(
        places.begin(), places.end(), [&](const cv::Point2d& place) { return IsInside(place); }));
  }

 private:
  static const cv::Point2d& At(const std::vector<cv::Point2d>& places, int i) {
    return places[static_cast<std::size_t>(i)];
  }

  // Without distortion, from the principal point; not a number where the camera has no answer.
  cv::Point2d Seen(const ZuPhoto& photo, const ZuTarget& target) const {
    ZuPoint point(1, target.m_dX, target.m_dY);
    const bool bBiko = photo.ConvertBiko(&point, eDigiToBiko);
    if (!bBiko || photo.GetCamera().AdjustExact(&point.m_dX, &point.m_dY) != eCameraInverseOk) {
      return {std::nan(""), std::nan("")};
    }
    const double dPixel = std::fabs(photo.GetCamera().m_dC) / m_dScale;
    return {point.m_dX / dPixel, -point.m_dY / dPixel};
  }

  void SetStart(const ZuPhoto& photo) {
    const ZuMatrix& rotation = photo.GetRotAOR();
    const ZuVector& position = photo.GetPosAOR();
    cv::Vec3d centre;
    for (int i = 0; i < 3; ++i) {
      centre[i] = position[i + 1];
      for (int j = 0; j < 3; ++j) {
        m_start.rotation(i, j) = (i == 0 ? 1.0 : -1.0) * rotation.GetElem(j + 1, i + 1);
      }
    }
    m_start.shift = -(m_start.rotation * centre);
  }

  bool IsInside(const cv::Point2d& place) const {
    return std::fabs(place.x) < m_dHalfWidth && std::fabs(place.y) < m_dHalfHeight;
  }

  // Where the points are seen [pixel]; not a number behind the camera.
  std::vector<cv::Point2d> Places(const Pose& pose) const {
    std::vector<cv::Point2d> places;
    for (const cv::Point3d& point : m_points) {
      const Ray ray = pose.rotation * cv::Vec3d(point.x, point.y, point.z) + pose.shift;
      const double z = ray[2] > 0.0 ? ray[2] / m_dScale : std::nan("");
      places.emplace_back(ray[0] / z, ray[1] / z);
    }
    return places;
  }

  // The distance of each place to the next one.
  static std::vector<double> Spaces(const std::vector<cv::Point2d>& places) {
    std::vector<double> spaces(places.size(), 1e9);
    for (std::size_t i = 0; i < places.size(); ++i) {
      for (std::size_t j = 0; j < places.size(); ++j) {
        const double d = i == j ? 1e9 : cv::norm(places[i] - places[j]);
        if (d < spaces[i]) spaces[i] = d;
      }
    }
    return spaces;
  }

  // The start turned about the projection centre, the shortest way from one place to the other.
  Pose Turned(const cv::Point2d& from, const cv::Point2d& to) const {
    const Ray a = cv::normalize(Ray(from.x, from.y, m_dScale));
    const Ray b = cv::normalize(Ray(to.x, to.y, m_dScale));
    const Ray axis = a.cross(b);
    const double dSine = cv::norm(axis);
    cv::Matx33d turn = cv::Matx33d::eye();
    if (dSine > 0.0) cv::Rodrigues(axis * (std::asin(std::min(dSine, 1.0)) / dSine), turn);
    return {turn * m_start.rotation, turn * m_start.shift};
  }

  // Each target goes to the point whose place is nearest, each point takes its nearest target.
  void Assign(const std::vector<cv::Point2d>& places, const std::vector<double>& spaces,
              const cv::Point2d& centre, double dRadius, double dNear, Numbers* pNumbers) const {
    pNumbers->targets.assign(m_points.size(), -1);
    pNumbers->iCount = 0;
    pNumbers->dSum = 0.0;
    std::vector<double> distances(m_points.size(), 1e18);
    for (std::size_t j = 0; j < m_seen.size(); ++j) {
      std::size_t uBest = m_points.size();
      double dBest = 1e18;
      for (std::size_t i = 0; i < places.size(); ++i) {
        const double d = cv::norm(places[i] - m_seen[j]);
        if (d < dBest) dBest = d, uBest = i;
      }
      if (uBest == m_points.size() || !(cv::norm(places[uBest] - centre) < dRadius)) continue;
      if (dBest < dNear * spaces[uBest] && dBest < distances[uBest]) {
        distances[uBest] = dBest;
        pNumbers->targets[uBest] = static_cast<int>(j);
      }
    }
    for (std::size_t i = 0; i < distances.size(); ++i) {
      if (pNumbers->targets[i] < 0) continue;
      ++pNumbers->iCount;
      pNumbers->dSum += distances[i] * distances[i];
    }
  }

  // The pose by the points that have a target, from the pose before. False: too few.
  bool Fit(Numbers* pNumbers) const {
    if (pNumbers->iCount < kLeast) return false;
    std::vector<cv::Point3d> object;
    std::vector<cv::Point2d> image;
    for (std::size_t i = 0; i < m_points.size(); ++i) {
      if (pNumbers->targets[i] < 0) continue;
      object.push_back(m_points[i]);
      image.push_back(m_seen[static_cast<std::size_t>(pNumbers->targets[i])] / m_dScale);
    }
    cv::Vec3d turn;
    cv::Rodrigues(pNumbers->pose.rotation, turn);
    cv::Vec3d shift = pNumbers->pose.shift;
    const bool bFit = cv::solvePnP(object, image, cv::Matx33d::eye(), cv::noArray(), turn, shift,
                                   true, cv::SOLVEPNP_ITERATIVE);
    if (!bFit || !std::isfinite(cv::norm(turn) + cv::norm(shift))) return false;
    cv::Rodrigues(turn, pNumbers->pose.rotation);
    pNumbers->pose.shift = shift;
    return true;
  }

  // From the neighbours of the seed outwards.
  Numbers Grow(const Pose& pose, int iSeed, const std::vector<double>& startSpaces) const {
    Numbers numbers;
    numbers.pose = pose;
    double dRadius = 2.5 * startSpaces[static_cast<std::size_t>(iSeed)];
    for (int i = 0; i < kSteps; ++i, dRadius *= kGrowth) {
      const std::vector<cv::Point2d> places = Places(numbers.pose);
      const std::vector<int> before = numbers.targets;
      Assign(places, Spaces(places), At(places, iSeed), dRadius,
             dRadius < Diagonal() ? kFirstNear : kNear, &numbers);
      if (dRadius > Diagonal() && numbers.targets == before) break;
      if (!Fit(&numbers) && dRadius > Diagonal()) break;
    }
    for (int i = 0; i < kLocalSteps; ++i) {
      const std::vector<cv::Point2d> places = LocalPlaces(numbers);
      Assign(places, Spaces(places), cv::Point2d(), 1e18, kNearLocal, &numbers);
    }
    return numbers;
  }

  // The places moved as the nearest points around them are: what the distortion that is not known
  // does.
  std::vector<cv::Point2d> LocalPlaces(const Numbers& numbers) const {
    const std::vector<cv::Point2d> places = Places(numbers.pose);
    std::vector<cv::Point2d> moved = places;
    std::vector<std::pair<double, cv::Point2d>> ways;  // squared distance, way to the target
    for (std::size_t i = 0; i < places.size(); ++i) {
      ways.clear();
      for (std::size_t j = 0; j < places.size(); ++j) {
        if (j == i || numbers.targets[j] < 0) continue;
        const cv::Point2d way = places[j] - places[i];
        ways.emplace_back(way.dot(way),
                          m_seen[static_cast<std::size_t>(numbers.targets[j])] - places[j]);
      }
      const std::size_t nUsed = std::min(ways.size(), kAround);
      std::partial_sort(ways.begin(), ways.begin() + static_cast<std::ptrdiff_t>(nUsed), ways.end(),
                        [](const auto& a, const auto& b) { return a.first < b.first; });
      for (std::size_t j = 0; j < nUsed; ++j)
        moved[i] += ways[j].second / static_cast<double>(nUsed);
    }
    return moved;
  }

  double m_dScale;  // camera constant [pixel]
  double m_dHalfWidth = 0.0, m_dHalfHeight = 0.0;
  std::vector<cv::Point3d> m_points;
  std::vector<unsigned> m_ids;
  std::vector<cv::Point2d> m_seen;
  Pose m_start;
};

// The first numbering that differs from the best in more than single points.
int CountOfNext(const std::vector<Numbers>& all) {
  for (const Numbers& numbers : all) {
    int nSame = 0;
    for (std::size_t i = 0; i < numbers.targets.size(); ++i) {
      if (numbers.targets[i] >= 0 && numbers.targets[i] == all[0].targets[i]) ++nSame;
    }
    if (2 * nSame < numbers.iCount) return numbers.iCount;
  }
  return 0;
}

std::string WhyNot(const ZuPhoto& photo) {
  if (!photo.GetCamera().IsValid()) return "the photo has no camera with a constant";
  if (!photo.HasAOR()) return "the photo has no approximate orientation";
  return {};
}

void SetPose(const Pose& pose, ZuNumbering* pNumbering) {
  const cv::Vec3d centre = -(pose.rotation.t() * pose.shift);
  for (int i = 0; i < 3; ++i) {
    pNumbering->m_Position[i + 1] = centre[i];
    for (int j = 0; j < 3; ++j) {
      pNumbering->m_Rotation[j + 1][i + 1] = (i == 0 ? 1.0 : -1.0) * pose.rotation(i, j);
    }
  }
}

}  // namespace

ZuNumbering ZuNumberTargets(const ZuPhoto& photo, const ZuPointList& points,
                            const ZuNumberingOptions& options, std::vector<ZuTarget>* pTargets) {
  ZuNumbering numbering;
  for (ZuTarget& target : *pTargets) target.m_uId = 0;
  numbering.m_strText = WhyNot(photo);
  if (!numbering.IsGood()) return numbering;
  const Search search(photo, points, *pTargets);
  const std::vector<Numbers> all = search.All(options.m_dReach * search.Diagonal());
  if (all.empty()) {
    numbering.m_strText = "no target lies near a point's place by the approximate orientation";
    return numbering;
  }
  const Numbers& best = all[0];
  numbering.m_iExpected = search.CountInside(best.pose);
  if (best.iCount < kLeast || 2 * best.iCount < numbering.m_iExpected) {
    numbering.m_strText = "only " + std::to_string(best.iCount) + " of " +
                          std::to_string(numbering.m_iExpected) +
                          " points fit targets: orientation, camera constant and points should be "
                          "good to some per cent";
    return numbering;
  }
  const int iNext = CountOfNext(all);
  if (best.iCount - iNext < kMargin) {
    numbering.m_strText = "the numbers are not certain: " + std::to_string(best.iCount) +
                          " points fit, and " + std::to_string(iNext) + " with other numbers";
    return numbering;
  }
  numbering.m_iNumbered = best.iCount;
  numbering.m_dRms = std::sqrt(best.dSum / best.iCount);
  SetPose(best.pose, &numbering);
  const ZuDiskOffset offset(best.pose.rotation, best.pose.shift, search.Scale(), search.Points());
  for (std::size_t i = 0; i < best.targets.size(); ++i) {
    if (best.targets[i] < 0) continue;
    ZuTarget& target = (*pTargets)[static_cast<std::size_t>(best.targets[i])];
    target.m_uId = search.IdOf(i);
    const cv::Point2d way = offset.Of(i, options.m_dDiameter, target.m_dA);
    numbering.m_dLargestOffset = std::max(numbering.m_dLargestOffset, cv::norm(way));
    if (options.m_dDiameter > 0.0) {
      target.m_dX -= way.x;
      target.m_dY -= way.y;
    }
  }
  return numbering;
}
