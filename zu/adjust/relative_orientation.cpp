#include "zu/adjust/relative_orientation.h"

#include <Eigen/Dense>
#include <algorithm>
#include <cmath>
#include <limits>
#include <map>

#include "zu/adjust/internal/counter_random.h"
#include "zu/adjust/internal/five_point.h"
#include "zu/photo/camera.h"

namespace zu::internal {

namespace {

using Matrix3 = Eigen::Matrix<double, 3, 3, Eigen::RowMajor>;
using Vec = Eigen::Vector3d;

constexpr int kAllSamples = 8;      // most points of which all fives are tried
constexpr int kSamples = 150;       // of more
constexpr double kTuning = 2.5;     // standard deviations that agree with the consensus
constexpr double kRobust = 1.4826;  // standard deviation over the median of normal residuals
constexpr int kSteps = 30;          // of the least squares
constexpr size_t kKept = 6;         // candidates that are finished
constexpr double kNear = 4.0;       // squared median of a candidate over that of the best
constexpr double kAsWell = 1.5;     // squares of a pose that agrees as well, over the least
constexpr double kSame = 0.01;      // poses that are one [rad, 1]
constexpr double kNever = std::numeric_limits<double>::infinity();

struct CommonPoint {
  unsigned uId = 0;
  double d1[3], d2[3];  // unit vectors
  double s2;            // mean variance of the two directions [rad^2]
};

bool IsSame(const Pose& a, const Pose& b) {
  double dTurn = 0.0, dShift = 0.0;
  for (size_t i = 0; i < 9; ++i) dTurn = std::max(dTurn, std::fabs(a.R[i] - b.R[i]));
  for (size_t i = 0; i < 3; ++i) dShift = std::max(dShift, std::fabs(a.X0[i] - b.X0[i]));
  return dTurn < kSame && dShift < kSame;
}

class Pair {
 public:
  Pair(const ZuRelativeOptions& options) : m_options(options) {}

  void AddPoints(const ZuCamera& first, const std::vector<ZuImageObservation>& firstPoints,
                 const ZuCamera& second, const std::vector<ZuImageObservation>& secondPoints) {
    std::map<unsigned, std::pair<const ZuImageObservation*, const ZuImageObservation*>> byId;
    std::map<unsigned, std::pair<int, int>> counts;
    for (const ZuImageObservation& p : firstPoints) {
      byId[p.uId].first = &p;
      ++counts[p.uId].first;
    }
    for (const ZuImageObservation& p : secondPoints) {
      byId[p.uId].second = &p;
      ++counts[p.uId].second;
    }
    for (const auto& [uId, pair] : byId) {
      if (counts[uId] != std::make_pair(1, 1)) continue;
      CommonPoint point;
      point.uId = uId;
      if (!ImageDirection(first, pair.first->x, pair.first->y, point.d1) ||
          !ImageDirection(second, pair.second->x, pair.second->y, point.d2)) {
        continue;
      }
      point.s2 = 0.5 * (Variance(first, *pair.first) + Variance(second, *pair.second));
      if (std::isfinite(point.s2)) m_points.push_back(point);
    }
  }

  ZuRelativeResult Run(const ZuCamera& first) {
    m_result.iCommon = static_cast<int>(m_points.size());
    if (m_points.size() < 5) {
      Refuse(ZuAdjustStatus::TooFew,
             std::to_string(m_points.size()) + " common points: five or more would be right");
      return m_result;
    }
    const std::vector<Pose> candidates = Candidates();
    std::vector<std::pair<double, Pose>> finished;  // squares over variances
    for (const Pose& candidate : candidates) {
      Pose pose = candidate;
      const double dSquares = Finish(&pose);
      const auto same = [&](const auto& other) { return IsSame(other.second, pose); };
      if (std::isfinite(dSquares) && std::none_of(finished.begin(), finished.end(), same)) {
        finished.emplace_back(dSquares, pose);
      }
    }
    if (finished.empty()) {
      Refuse(ZuAdjustStatus::RankDefect,
             "no pose has the common points before both photos: their numbers do not belong "
             "together, or the camera constant is far off");
      return m_result;
    }
    std::stable_sort(finished.begin(), finished.end(),
                     [](const auto& a, const auto& b) { return a.first < b.first; });
    Store(finished, std::fabs(first.m_dC));
    return m_result;
  }

 private:
  double Variance(const ZuCamera& camera, const ZuImageObservation& p) const {
    const bool bTold = p.dVarianceX > 0.0 && p.dVarianceY > 0.0;
    const double s2 =
        bTold ? 0.5 * (p.dVarianceX + p.dVarianceY) : m_options.dSigma * m_options.dSigma;
    return s2 / (camera.m_dC * camera.m_dC);
  }

  void Refuse(ZuAdjustStatus status, const std::string& strWhy) {
    m_result.status = status;
    m_result.strWhy = strWhy;
  }

  // Squared distance from the epipolar planes over its variance, after P. Sampson, "Fitting conic
  // sections to very scattered data", 1982; infinite for a point that lies behind a photo.
  double Square(const Pose& pose, const CommonPoint& p) const {
    double a = 0.0, b = 0.0;
    if (RayDepths(pose, p.d1, p.d2, &a, &b) && !(a > 0.0 && b > 0.0)) return kNever;
    Vec slope1, slope2;
    const double e = Coplanarity(pose, p, &slope1, &slope2);
    const double q = slope1.squaredNorm() + slope2.squaredNorm();
    return q > 0.0 ? e * e / (q * p.s2) : 0.0;
  }

  // d1 . (t x R d2), its derivatives by the directions across them.
  static double Coplanarity(const Pose& pose, const CommonPoint& p, Vec* pSlope1, Vec* pSlope2) {
    const Eigen::Map<const Matrix3> R(pose.R.data());
    const Eigen::Map<const Vec> t(pose.X0.data()), d1(p.d1), d2(p.d2);
    const Vec u = t.cross(R * d2), v = R.transpose() * d1.cross(t);
    *pSlope1 = u - u.dot(d1) * d1;
    *pSlope2 = v - v.dot(d2) * d2;
    return d1.dot(u);
  }

  double Median(const Pose& pose) {
    m_squares.clear();
    for (const CommonPoint& p : m_points) m_squares.push_back(Square(pose, p));
    const size_t n = m_squares.size();
    const auto h = static_cast<std::ptrdiff_t>(std::min(n, n / 2 + 3)) - 1;
    std::nth_element(m_squares.begin(), m_squares.begin() + h, m_squares.end());
    return m_squares[static_cast<size_t>(h)];
  }

  std::vector<std::array<int, 5>> Fives() const {
    const int n = static_cast<int>(m_points.size());
    std::vector<std::array<int, 5>> fives;
    if (n > kAllSamples) {
      const CounterRandom random(m_options.uSeed, 5);
      fives.resize(kSamples);
      for (size_t k = 0; k < fives.size(); ++k) random.Sample(k, n, 5, fives[k].data());
      return fives;
    }
    for (unsigned u = 0; u < 1U << n; ++u) {
      std::array<int, 5> five{};
      size_t uCount = 0;
      for (int i = 0; i < n; ++i) {
        if ((u >> i & 1U) == 0) continue;
        if (uCount < 5) five[uCount] = i;
        ++uCount;
      }
      if (uCount == 5) fives.push_back(five);
    }
    return fives;
  }

  // The poses of least median, each once, the best first.
  std::vector<Pose> Candidates() {
    std::vector<std::pair<double, Pose>> found;
    for (const auto& five : Fives()) {
      double first[5][3], second[5][3];
      for (size_t i = 0; i < 5; ++i) {
        const CommonPoint& p = m_points[static_cast<size_t>(five[i])];
        std::copy(p.d1, p.d1 + 3, first[i]);
        std::copy(p.d2, p.d2 + 3, second[i]);
      }
      for (const Pose& pose : SolveFivePoints(first, second)) {
        const double d = Median(pose);
        if (std::isfinite(d)) found.emplace_back(d, pose);
      }
    }
    std::stable_sort(found.begin(), found.end(),
                     [](const auto& a, const auto& b) { return a.first < b.first; });
    std::vector<Pose> kept;
    for (const auto& [d, pose] : found) {
      if (kept.size() == kKept || d > kNear * std::max(1.0, found[0].first)) break;
      const Pose& at = pose;
      const auto close = [&](const Pose& other) {
        double dTurn = 0.0;
        for (size_t i = 0; i < 9; ++i) dTurn = std::max(dTurn, std::fabs(at.R[i] - other.R[i]));
        return dTurn < 10.0 * kSame;
      };
      if (std::none_of(kept.begin(), kept.end(), close)) kept.push_back(pose);
    }
    return kept;
  }

  std::vector<char> Agreeing(const Pose& pose) {
    const double n = static_cast<double>(m_points.size());
    const double dScale = kRobust * (1.0 + 5.0 / (n - 4.999)) * std::sqrt(Median(pose));
    const double dLimit = kTuning * std::max(1.0, dScale);
    std::vector<char> used;
    for (const CommonPoint& p : m_points) used.push_back(Square(pose, p) <= dLimit * dLimit);
    return used;
  }

  // Least squares over the points that agree; mean square over the variances, infinite where the
  // pose is lost.
  double Finish(Pose* pPose) {
    const std::vector<char> used = Agreeing(*pPose);
    double dLast = Mean(*pPose, used), dDamping = 1e-6;
    for (int n = 0; n < kSteps && std::isfinite(dLast); ++n) {
      Pose next = *pPose;
      Step(used, dDamping, &next);
      const double dNext = Mean(next, used);
      if (dNext < dLast) {
        *pPose = next;
        const bool bEnd = dNext > dLast * (1.0 - 1e-10);
        dLast = dNext;
        dDamping *= 0.1;
        if (bEnd) break;
      } else {
        dDamping *= 100.0;
        if (dDamping > 1e6) break;
      }
    }
    return dLast;
  }

  double Mean(const Pose& pose, const std::vector<char>& used) const {
    double dSum = 0.0, dCount = 0.0;
    for (size_t i = 0; i < m_points.size(); ++i) {
      if (!used[i]) continue;
      dSum += Square(pose, m_points[i]);
      dCount += 1.0;
    }
    return dCount >= 5.0 ? dSum / dCount : kNever;
  }

  // One step over the three turns R exp[w] and the two of the base across itself.
  void Step(const std::vector<char>& used, double dDamping, Pose* pPose) const {
    const Eigen::Map<const Matrix3> R(pPose->R.data());
    const Vec t = Eigen::Map<const Vec>(pPose->X0.data());
    const Vec b1 = t.unitOrthogonal(), b2 = t.cross(b1);
    Eigen::Matrix<double, 5, 5> N = Eigen::Matrix<double, 5, 5>::Zero();
    Eigen::Matrix<double, 5, 1> h = Eigen::Matrix<double, 5, 1>::Zero();
    for (size_t i = 0; i < m_points.size(); ++i) {
      if (!used[i]) continue;
      const CommonPoint& p = m_points[i];
      const Eigen::Map<const Vec> d1(p.d1), d2(p.d2);
      Vec slope1, slope2;
      const double e = Coplanarity(*pPose, p, &slope1, &slope2);
      const double q = (slope1.squaredNorm() + slope2.squaredNorm()) * p.s2;
      if (!(q > 0.0)) continue;
      Eigen::Matrix<double, 5, 1> a;
      const Vec turned = R * d2, across = turned.cross(d1);
      a.head<3>() = d2.cross(R.transpose() * d1.cross(t));
      a[3] = across.dot(b1);
      a[4] = across.dot(b2);
      N += a * a.transpose() / q;
      h += a * (e / q);
    }
    N.diagonal() *= 1.0 + dDamping;
    const Eigen::Matrix<double, 5, 1> x = -N.ldlt().solve(h);
    if (!x.allFinite()) return;
    const double step[kPose] = {x[0], x[1], x[2], 0.0, 0.0, 0.0};
    MovePose(step, pPose);
    Eigen::Map<Vec>(pPose->X0.data()) = (t + x[3] * b1 + x[4] * b2).normalized();
  }

  void Store(const std::vector<std::pair<double, Pose>>& finished, double c) {
    const Pose& best = finished[0].second;
    const std::vector<char> used = Agreeing(best);
    std::vector<double> angles;
    double dSum = 0.0;
    for (size_t i = 0; i < m_points.size(); ++i) {
      if (!used[i]) continue;
      const CommonPoint& p = m_points[i];
      m_result.agreeing.push_back(p.uId);
      dSum += Square(best, p) * p.s2;
      const auto turned = Direction(best, p.d2);
      const Eigen::Map<const Vec> a(p.d1), b(turned.data());
      angles.push_back(std::atan2(a.cross(b).norm(), a.dot(b)));
    }
    std::sort(angles.begin(), angles.end());
    m_result.dAngle = angles.empty() ? 0.0 : angles[angles.size() / 2];
    m_result.dRms = angles.empty() ? 0.0 : c * std::sqrt(dSum / static_cast<double>(angles.size()));
    m_result.pose = AsPose(best);
    if (!(m_result.dAngle >= m_options.dLeastAngle)) {
      return Refuse(ZuAdjustStatus::RankDefect,
                    "the rays of common points are nearly parallel: the photos stand at one place, "
                    "and places further apart would be right");
    }
    for (size_t i = 1; i < finished.size(); ++i) {
      if (finished[i].first <= kAsWell * std::max(1.0, finished[0].first)) {
        m_result.alternatives.push_back(AsPose(finished[i].second));
      }
    }
    m_result.status = ZuAdjustStatus::Good;
  }

  static ZuPose AsPose(const Pose& pose) {
    ZuPose result;
    for (int i = 0; i < 3; ++i) {
      for (int j = 0; j < 3; ++j) {
        result.rotation[i + 1][j + 1] = pose.R[static_cast<size_t>(3 * i + j)];
      }
      result.position[i + 1] = pose.X0[static_cast<size_t>(i)];
    }
    return result;
  }

  const ZuRelativeOptions& m_options;
  std::vector<CommonPoint> m_points;  // by id
  std::vector<double> m_squares;
  ZuRelativeResult m_result;
};

}  // namespace

}  // namespace zu::internal

ZuRelativeResult ZuOrientRelative(const ZuCamera& first,
                                  const std::vector<ZuImageObservation>& firstPoints,
                                  const ZuCamera& second,
                                  const std::vector<ZuImageObservation>& secondPoints,
                                  const ZuRelativeOptions& options) {
  zu::internal::Pair pair(options);
  pair.AddPoints(first, firstPoints, second, secondPoints);
  return pair.Run(first);
}
