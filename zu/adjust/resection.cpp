#include "zu/adjust/resection.h"

#include <Eigen/Core>
#include <Eigen/Geometry>
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <limits>
#include <numeric>
#include <tuple>
#include <utility>

#include "zu/adjust/internal/counter_random.h"
#include "zu/adjust/internal/dense_cholesky.h"
#include "zu/adjust/internal/resection_fit.h"
#include "zu/adjust/internal/snooping.h"
#include "zu/adjust/internal/three_point.h"

namespace zu::internal {

namespace {

constexpr double kNearPose = 1e-2;   // tolerance of what is nearly a solution of three points [-]
constexpr int kRounds = 10;          // of taking points in that agree
constexpr int kAllTriples = 13;      // most points of which all triples are tried
constexpr int kSamples = 200;        // of more
constexpr int kJudges = 200;         // points of more that judge all poses at first
constexpr int kJudgesPlace = 80;     // of their squared residuals, by size
constexpr size_t kJudgedByAll = 20;  // poses
constexpr double kTuning = 2.5;      // standard deviations that agree with the consensus
constexpr double kRobust = 1.4826;   // standard deviation over the median of normal residuals
constexpr double kAmbiguous = 0.05;  // alpha of the test of a second solution
constexpr double kWeak = 0.1;        // relative standard deviation that is no position [-]
constexpr double kSeen = 0.5;        // change of the residuals over that foretold [-]
constexpr double kReach = 3.0;       // standard deviations that a pose is moved to look [-]
constexpr double kNever = std::numeric_limits<double>::infinity();

using Six = Eigen::Matrix<double, 6, 1>;

// Eigenvalues of a symmetric matrix, ascending, and the eigenvectors as columns.
template <int n>
struct Spectrum {
  explicit Spectrum(const Eigen::Matrix<double, n, n>& m) {
    SymmetricEigen(n, m.data(), values.data(), vectors.data());
  }
  Eigen::Matrix<double, n, 1> values;
  Eigen::Matrix<double, n, n, Eigen::RowMajor> vectors;
};

// The triples that are tried of n points.
std::vector<std::array<int, 3>> Triples(int n, unsigned uSeed) {
  std::vector<std::array<int, 3>> triples;
  if (n <= kAllTriples) {
    for (int i = 0; i < n; ++i) {
      for (int j = i + 1; j < n; ++j) {
        for (int k = j + 1; k < n; ++k) triples.push_back({i, j, k});
      }
    }
    return triples;
  }
  const CounterRandom random(uSeed, 0);
  triples.resize(kSamples);
  for (size_t k = 0; k < triples.size(); ++k) random.Sample(k, n, 3, triples[k].data());
  return triples;
}

std::vector<Pose> PosesOf(const ResectionFit& fit, const std::array<int, 3>& triple,
                          double dTolerance = kExactPose) {
  double directions[3][3], points[3][3];
  for (int i = 0; i < 3; ++i) {
    const FitPoint& p = fit.points[static_cast<size_t>(triple[static_cast<size_t>(i)])];
    std::copy(p.direction, p.direction + 3, directions[i]);
    std::copy(p.P, p.P + 3, points[i]);
  }
  return SolveThreePoints(directions, points, dTolerance);
}

// The (iPlace + 1)-th of the squared residuals of the points listed, by size.
double SquareAt(const ResectionFit& fit, const Pose& pose, const std::vector<int>& points,
                int iPlace, std::vector<double>* pSquares) {
  pSquares->clear();
  for (const int i : points) pSquares->push_back(fit.Square(pose, static_cast<size_t>(i)));
  std::nth_element(pSquares->begin(), pSquares->begin() + iPlace, pSquares->end());
  return (*pSquares)[static_cast<size_t>(iPlace)];
}

// Of many points some judge the poses of all triples, and the best of these are judged by all. The
// judges look at a place before their middle: by chance more of them than of all may be wrong.
std::vector<Pose> Candidates(const ResectionFit& fit, unsigned uSeed) {
  const int n = static_cast<int>(fit.points.size());
  std::vector<int> judges(kJudges);
  CounterRandom(uSeed, 1).Sample(0, n, kJudges, judges.data());
  std::vector<std::pair<double, Pose>> best;
  std::vector<double> squares;
  for (const auto& triple : Triples(n, uSeed)) {
    for (const Pose& pose : PosesOf(fit, triple)) {
      const double d = SquareAt(fit, pose, judges, kJudgesPlace, &squares);
      const auto worse = [d](const auto& other) { return d < other.first; };
      const auto at = std::find_if(best.begin(), best.end(), worse);
      if (!std::isfinite(d) || (at == best.end() && best.size() == kJudgedByAll)) continue;
      best.insert(at, {d, pose});
      if (best.size() > kJudgedByAll) best.pop_back();
    }
  }
  std::vector<Pose> poses;
  for (const auto& [d, pose] : best) poses.push_back(pose);
  return poses;
}

// The pose of least h-th squared residual, h = [n / 2] + 2; kNever without one.
double Consensus(const ResectionFit& fit, unsigned uSeed, Pose* pBest) {
  const int n = static_cast<int>(fit.points.size());
  const int iPlace = std::min(n, n / 2 + 2) - 1;
  double dBest = kNever;
  std::vector<double> squares;
  std::vector<int> all(fit.points.size());
  std::iota(all.begin(), all.end(), 0);
  const auto judge = [&](const std::vector<Pose>& poses) {
    for (const Pose& pose : poses) {
      const double dSquare = SquareAt(fit, pose, all, iPlace, &squares);
      if (dSquare < dBest) {
        dBest = dSquare;
        *pBest = pose;
      }
    }
  };
  if (n > kJudges) {
    judge(Candidates(fit, uSeed));
  } else {
    for (const auto& triple : Triples(n, uSeed)) judge(PosesOf(fit, triple));
  }
  return dBest;
}

// Turns the object about the line of sight to its centre, so that a plane tilts the other way.
Pose TiltedOther(const ResectionFit& fit, const Pose& pose) {
  Eigen::Vector3d centre = Eigen::Vector3d::Zero();
  for (const FitPoint& p : fit.points) centre += Eigen::Map<const Eigen::Vector3d>(p.P);
  centre /= static_cast<double>(fit.points.size());
  Eigen::Matrix3d spread = Eigen::Matrix3d::Zero();
  for (const FitPoint& p : fit.points) {
    const Eigen::Vector3d d = Eigen::Map<const Eigen::Vector3d>(p.P) - centre;
    spread += d * d.transpose();
  }
  const Spectrum<3> spectrum(spread);
  const Eigen::Matrix<double, 3, 3, Eigen::RowMajor> R =
      Eigen::Map<const Eigen::Matrix<double, 3, 3, Eigen::RowMajor>>(pose.R.data());
  const Eigen::Vector3d X0 = Eigen::Map<const Eigen::Vector3d>(pose.X0.data());
  const Eigen::Vector3d t = R.transpose() * (centre - X0), sight = t.normalized();
  const Eigen::Vector3d normal = R.transpose() * spectrum.vectors.col(0);
  const Eigen::Vector3d tilted = 2.0 * sight.dot(normal) * sight - normal;
  // The least turn of one normal into the other; half a turn about the sight where they are
  // opposed.
  Eigen::Quaterniond turn;
  turn.w() = 1.0 + normal.dot(tilted);
  turn.vec() = normal.cross(tilted);
  if (turn.norm() < 1e-6) {
    turn.w() = 0.0;
    turn.vec() = sight;
  }
  const Eigen::Matrix3d Q = turn.normalized().toRotationMatrix();
  const Eigen::Matrix<double, 3, 3, Eigen::RowMajor> other = R * Q.transpose();
  Pose result;
  Eigen::Map<Eigen::Matrix<double, 3, 3, Eigen::RowMajor>>(result.R.data()) = other;
  Eigen::Map<Eigen::Vector3d>(result.X0.data()) = centre - other * t;
  return result;
}

bool IsSame(const Pose& a, const Pose& b, double dDistance) {
  double dTurn = 0.0, dShift = 0.0;
  for (size_t i = 0; i < 9; ++i) dTurn = std::max(dTurn, std::fabs(a.R[i] - b.R[i]));
  for (size_t i = 0; i < 3; ++i) dShift = std::max(dShift, std::fabs(a.X0[i] - b.X0[i]));
  return dTurn < 1e-5 && dShift < 1e-5 * dDistance;
}

Eigen::Matrix<double, 6, 6> Covariance(const EngineResult& result, double dSigma0) {
  return dSigma0 * dSigma0 *
         Eigen::Map<const Eigen::Matrix<double, 6, 6>>(result.covariance.data());
}

// The squares change less than they should when the pose moves by some standard deviations along
// its weakest direction.
bool IsBlind(const ResectionFit& fit, const Eigen::Matrix<double, 6, 6>& covariance,
             double dSigma0) {
  Six unit = Six::Ones();
  unit.tail<3>().setConstant(fit.Distance(fit.pose));
  const Eigen::Matrix<double, 6, 6> scaled =
      unit.cwiseInverse().asDiagonal() * covariance * unit.cwiseInverse().asDiagonal();
  const Spectrum<6> spectrum(scaled);
  const Six step = kReach * std::sqrt(std::max(spectrum.values[5], 0.0)) *
                   unit.cwiseProduct(spectrum.vectors.col(5));
  for (const double dSign : {-1.0, 1.0}) {
    const Six signedStep = dSign * step;
    const double dChange = fit.Change(signedStep.data()) / dSigma0;
    if (!(std::fabs(dChange - kReach) <= kSeen * kReach)) return true;
  }
  return false;
}

std::string WeakText(const Eigen::Matrix<double, 6, 6>& covariance) {
  const Spectrum<3> spectrum(covariance.bottomRightCorner<3, 3>());
  const Eigen::Vector3d d = spectrum.vectors.col(2);
  char text[320];
  std::snprintf(text, sizeof text,
                "the points do not decide the position: it can move along (%.2f, %.2f, %.2f) while "
                "the photo turns, as near the cylinder through the points on which three points "
                "decide nothing; points at other depths or directions would be right",
                d[0], d[1], d[2]);
  return text;
}

class Resection {
 public:
  Resection(const ZuCamera& camera, const std::vector<ZuResectionPoint>& points,
            const ZuResectionOptions& options)
      : m_options(options), m_fit(camera) {
    m_order.resize(points.size());
    std::iota(m_order.begin(), m_order.end(), size_t{0});
    const auto key = [&](size_t i) {
      const ZuResectionPoint& p = points[i];
      return std::make_tuple(p.image.uId, p.image.x, p.image.y, p.X, p.Y, p.Z);
    };
    m_result.tests.resize(points.size());
    for (size_t i = 0; i < points.size(); ++i) {
      m_result.tests[i].uId = points[i].image.uId;
      m_result.tests[i].iDimension = 2;
      m_result.tests[i].bUsed = false;
      m_result.tests[i].dTest = kNever;
    }
    std::erase_if(m_order, [&](size_t i) { return !FitPoint::IsUsable(camera, points[i]); });
    std::sort(m_order.begin(), m_order.end(), [&](size_t i, size_t j) { return key(i) < key(j); });
    for (const size_t i : m_order) m_fit.points.emplace_back(camera, points[i], options.dSigma);
  }

  ZuResectionResult Run() {
    const size_t n = m_fit.points.size();
    if (n < 3) {
      Refuse(ZuAdjustStatus::TooFew, std::to_string(n) + (n == 1 ? " point" : " points") +
                                         " in the domain of the camera and of known position: "
                                         "three or more would be right");
    } else if (n == 3) {
      OfThree();
    } else {
      OfMore();
    }
    return m_result;
  }

 private:
  void Refuse(ZuAdjustStatus status, const std::string& strWhy) {
    m_result.status = status;
    m_result.strWhy = strWhy;
  }

  void RefuseNoPose() {
    Refuse(ZuAdjustStatus::RankDefect,
           "no three of the points give a pose: they lie on one line, about which the photo can "
           "turn, or the measurements do not belong to them");
  }

  void OfThree() {
    m_fit.used.assign(3, 1);
    // What is nearly a solution descends to one, or to where the solutions run together.
    std::vector<Pose> found;
    for (const Pose& pose : PosesOf(m_fit, {0, 1, 2}, kNearPose)) {
      m_fit.pose = pose;
      m_fit.Descend();
      const EngineResult result = Adjust(m_fit);
      const Pose at = m_fit.pose;
      const auto same = [&](const Pose& other) { return IsSame(at, other, m_fit.Distance(at)); };
      if (std::any_of(found.begin(), found.end(), same)) continue;
      found.push_back(at);
      if (found.size() > 1 && result.status == ZuAdjustStatus::Good && !IsWeak(result, 1.0)) {
        m_result.alternatives.push_back(AsPose(at, Covariance(result, 1.0)));
        continue;
      }
      Store(result);
      if (m_result.status != ZuAdjustStatus::Good) {
        m_result.alternatives.clear();
        return;
      }
    }
    if (found.empty()) RefuseNoPose();
  }

  void OfMore() {
    Pose pose;
    const double dMedian = Consensus(m_fit, m_options.uSeed, &pose);
    if (!std::isfinite(dMedian)) return RefuseNoPose();
    const double n = static_cast<double>(m_fit.points.size());
    const double dScale = kRobust * (1.0 + 5.0 / (n - 3.0 + 1e-9)) * std::sqrt(dMedian);
    const double dLimit = kTuning * std::max(1.0, dScale);
    m_fit.used.assign(m_fit.points.size(), 0);
    for (size_t i = 0; i < m_fit.points.size(); ++i) {
      m_fit.used[i] = m_fit.Square(pose, i) <= dLimit * dLimit;
    }
    m_fit.pose = pose;
    m_fit.Descend();
    EngineResult result = Adjust(m_fit);
    for (int k = 0; k < kRounds && TakeIn(result); ++k) result = Adjust(m_fit);
    if (m_options.tests.bSnoop && result.status == ZuAdjustStatus::Good) result = Snooped();
    const Pose first = m_fit.pose;
    m_fit.pose = TiltedOther(m_fit, first);
    m_fit.Descend();
    EngineResult second = Adjust(m_fit);
    Pose other = m_fit.pose;
    const bool bSecond =
        second.status == ZuAdjustStatus::Good && !IsSame(first, other, m_fit.Distance(first));
    m_fit.pose = first;
    if (bSecond && (result.status != ZuAdjustStatus::Good || second.dSquares < result.dSquares)) {
      std::swap(result, second);
      m_fit.pose = other;
      other = first;
    }
    Store(result);
    if (bSecond && m_result.status == ZuAdjustStatus::Good && FitsAsWell(result, second)) {
      m_result.alternatives.push_back(AsPose(other, Covariance(second, m_result.dSigma0)));
    }
  }

  // Uses the points that fit the result after all; false where there is none.
  bool TakeIn(const EngineResult& result) {
    if (result.status != ZuAdjustStatus::Good) return false;
    const auto tests = TestGroups(m_fit, TesterOf(result));
    bool bMore = false;
    for (size_t i = 0; i < tests.size(); ++i) {
      if (m_fit.used[i] || !(tests[i].dTest <= tests[i].dLimit)) continue;
      m_fit.used[i] = 1;
      bMore = true;
    }
    return bMore;
  }

  // The covariance tells no position, or the equations are blind to moves of its size.
  bool IsWeak(const EngineResult& result, double dSigma0) {
    const auto covariance = Covariance(result, dSigma0);
    const Spectrum<3> spectrum(covariance.bottomRightCorner<3, 3>());
    m_result.dRelativeSd =
        std::sqrt(std::max(spectrum.values[2], 0.0)) / m_fit.Distance(m_fit.pose);
    // Errors as small as those of the measurements count, however well the points happen to fit.
    const double dSigma = std::max(dSigma0, 1e-3);
    return !(m_result.dRelativeSd <= kWeak) || IsBlind(m_fit, Covariance(result, dSigma), dSigma);
  }

  bool FitsAsWell(const EngineResult& first, const EngineResult& second) const {
    const int r = first.iRedundancy;
    if (second.status != ZuAdjustStatus::Good || r < 1) return false;
    if (m_result.sigmaKind == ZuSigmaKind::APriori) {
      return second.dSquares <= std::max(first.dSquares, r * ZuGroupLimit(kAmbiguous, r));
    }
    return second.dSquares <= first.dSquares * ZuNewGroupLimit(kAmbiguous, r, r);
  }

  // Snooping over the points of the consensus.
  EngineResult Snooped() {
    const std::vector<char> agreed = m_fit.used;
    const Pose start = m_fit.pose;
    std::vector<size_t> groups;
    for (size_t i = 0; i < agreed.size(); ++i) {
      if (agreed[i]) groups.push_back(i);
    }
    EngineResult result;
    Snoop(static_cast<int>(groups.size()),
          [&](const std::vector<char>& used, std::vector<SnoopTest>* pTests, int* piRedundancy) {
            for (size_t i = 0; i < groups.size(); ++i) m_fit.used[groups[i]] = used[i];
            m_fit.pose = start;
            result = Adjust(m_fit);
            *piRedundancy = result.iRedundancy;
            if (result.status != ZuAdjustStatus::Good) return false;
            const auto tests = TestGroups(m_fit, TesterOf(result));
            pTests->resize(groups.size());
            for (size_t i = 0; i < groups.size(); ++i) {
              (*pTests)[i] = {tests[groups[i]].dTest, tests[groups[i]].dLimit};
            }
            return true;
          });
    return result;
  }

  GroupTester TesterOf(const EngineResult& result) const {
    return GroupTester(result,
                       ChooseSigma(result, m_options.tests.sigmaKind, m_options.bSigmaGiven),
                       m_options.tests, static_cast<int>(m_fit.points.size()));
  }

  ZuPose AsPose(const Pose& pose, const Eigen::Matrix<double, 6, 6>& covariance) const {
    ZuPose result;
    for (int i = 0; i < 3; ++i) {
      for (int j = 0; j < 3; ++j) {
        result.rotation[i + 1][j + 1] = pose.R[static_cast<size_t>(3 * i + j)];
      }
      result.position[i + 1] = pose.X0[static_cast<size_t>(i)];
    }
    Eigen::Map<Eigen::Matrix<double, 6, 6>>(result.covariance.data()) = covariance;
    return result;
  }

  void Store(const EngineResult& result) {
    m_result.iRedundancy = result.iRedundancy;
    if (result.status == ZuAdjustStatus::RankDefect) {
      return Refuse(result.status,
                    "the points do not decide the pose: they lie on one line, or on a cylinder "
                    "with the photo (the danger cylinder)");
    }
    if (result.status != ZuAdjustStatus::Good) {
      return Refuse(result.status, std::string("the adjustment of the pose ended with ") +
                                       ZuAdjustStatusText(result.status));
    }
    const Sigma sigma = ChooseSigma(result, m_options.tests.sigmaKind, m_options.bSigmaGiven);
    m_result.dSigma0 = sigma.dSigma0;
    m_result.sigmaKind = sigma.kind;
    const auto covariance = Covariance(result, sigma.dSigma0);
    m_result.pose = AsPose(m_fit.pose, covariance);
    if (IsWeak(result, sigma.dSigma0)) {
      return Refuse(ZuAdjustStatus::RankDefect, WeakText(covariance));
    }
    m_result.status = ZuAdjustStatus::Good;
    StoreTests(result);
  }

  void StoreTests(const EngineResult& result) {
    const auto tests = TestGroups(m_fit, TesterOf(result));
    double dSquares = 0.0;
    int iUsed = 0;
    for (size_t i = 0; i < m_order.size(); ++i) {
      ZuPointTest& test = m_result.tests[m_order[i]];
      const unsigned uId = test.uId;
      test = tests[i];
      test.uId = uId;
      if (!test.bUsed) continue;
      ++iUsed;
      dSquares += test.adResidual[0] * test.adResidual[0] + test.adResidual[1] * test.adResidual[1];
    }
    m_result.dRms = iUsed > 0 ? std::sqrt(dSquares / iUsed) : 0.0;
  }

  const ZuResectionOptions& m_options;
  ResectionFit m_fit;
  std::vector<size_t> m_order;  // of the points of the fit, in the caller's list
  ZuResectionResult m_result;
};

}  // namespace

}  // namespace zu::internal

ZuResectionResult ZuResect(const ZuCamera& camera, const std::vector<ZuResectionPoint>& points,
                           const ZuResectionOptions& options) {
  return zu::internal::Resection(camera, points, options).Run();
}
