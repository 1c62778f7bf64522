#include "zu/adjust/internal/fit_adjust.h"

#include <Eigen/Dense>
#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>

#include "zu/adjust/internal/dense_cholesky.h"
#include "zu/adjust/internal/fit_start.h"
#include "zu/adjust/internal/group_engine.h"
#include "zu/adjust/internal/snooping.h"

namespace zu::internal {
namespace {

constexpr double kInfinite = std::numeric_limits<double>::infinity();
constexpr double kEps = std::numeric_limits<double>::epsilon();
constexpr double kMostTurn = 0.3;      // standard deviation of an angle that is determined [rad]
constexpr double kMostRelative = 0.5;  // standard deviation of a radius over the radius [-]
constexpr double kSigmaJump = 3.0;     // sigma0 over that of the start: errors, not noise [-]
constexpr int kMostRounds = 50;
constexpr size_t kSingly = 300;  // points up to which one at a time is set aside

using Matrix3 = Eigen::Matrix3d;

using Conditions = Eigen::Matrix<double, Eigen::Dynamic, 1, 0, 2, 1>;
using OfConditions = Eigen::Matrix<double, Eigen::Dynamic, Eigen::Dynamic, 0, 2, 2>;

// M^-1 e of one or two conditions.
Conditions SolveSmall(const OfConditions& M, const Conditions& e) {
  if (e.size() == 1) return e / M(0, 0);
  return M.topLeftCorner<2, 2>().inverse() * e;
}

// Points in the frame of the fit, and the shape that is moved onto them.
class ShapeModel : public GroupModel {
 public:
  explicit ShapeModel(FitKind kind) : m_shape(kind) {}

  int Parameters() const override { return m_shape.ParameterCount(); }
  int Groups() const override { return static_cast<int>(m_x.size()); }
  bool IsUsed(int i) const override { return m_used[static_cast<size_t>(i)] != 0; }
  double Unit(int) const override { return 1.0; }
  void Step(const double* pd) override {
    m_shape.Update(Eigen::Map<const FitShape::Parameters>(pd, Parameters()));
  }
  void Linearize(int i, GroupEquation* p) const override { Move(static_cast<size_t>(i), p); }

  // The equation of a point, linearized where the point meets the shape; the way there. Coordinates
  // of equal accuracy move along the normal, so that one repetition finds the place.
  Vector3 Move(size_t i, GroupEquation* p) const {
    const int u = Parameters(), c = m_shape.ConditionCount();
    Vector3 v = Vector3::Zero();
    FitShape::Row row;
    const int iRepetitions = m_cov.empty() ? 1 : 5;
    for (int k = 0;; ++k) {
      if (!m_shape.Linearize(m_x[i] + v, &row)) row.w[0] = std::nan("");
      const auto B = row.B.topRows(c);
      const Conditions e = row.w.head(c) - B * v;
      OfConditions M;
      M.setIdentity(c, c);  // B has orthonormal rows
      Eigen::Matrix<double, 3, Eigen::Dynamic, 0, 3, 2> QB = B.transpose();
      if (!m_cov.empty()) {
        QB = m_cov[i] * B.transpose();
        M = B * QB;
        M.diagonal().array() += m_dRounding * m_dRounding;
      }
      if (k == iRepetitions) {
        p->m = c;
        for (int a = 0; a < c; ++a) {
          p->w[a] = e[a];
          for (int b = 0; b < c; ++b) p->M[a * c + b] = M(a, b);
          for (int j = 0; j < u; ++j) p->A[static_cast<size_t>(a * u + j)] = row.A(a, j);
        }
        return v;
      }
      v = -QB * SolveSmall(M, e);
    }
  }

  FitShape m_shape;
  std::vector<Vector3> m_x;
  std::vector<Matrix3> m_cov;  // empty: all the identity
  std::vector<char> m_used;
  double m_dRounding = 0.0;  // of the coordinates
};

class Adjustment {
 public:
  Adjustment(FitKind kind, const std::vector<ZuFitPoint>& points, const ZuFitOptions& options)
      : m_points(points), m_options(options), m_out(kind), m_result(m_out.result), m_model(kind) {}

  FitOutcome Run() {
    m_result.eStatus = Prepare();
    if (m_result.eStatus == ZuAdjustStatus::Good) m_result.eStatus = AdjustAndTest();
    if (m_result.eStatus == ZuAdjustStatus::Good) Report();
    return std::move(m_out);
  }

 private:
  // --- input ---

  bool AllFinite() const {
    for (const ZuFitPoint& p : m_points) {
      const auto isFinite = [](double d) { return std::isfinite(d); };
      if (!std::all_of(p.adX, p.adX + 3, isFinite)) return false;
      if (!std::all_of(p.adCov, p.adCov + 9, isFinite)) return false;
      for (const int i : {0, 4, 8}) {
        if (p.adCov[i] < 0.0) return false;
      }
    }
    return std::isfinite(m_options.dSigma);
  }

  ZuAdjustStatus Prepare() {
    if (!AllFinite()) return ZuAdjustStatus::NotFinite;
    const FitShape& shape = m_model.m_shape;
    const int iFewest = shape.Kind() == FitKind::kCylinder ? 5 : shape.SampleSize();
    if (m_points.size() < static_cast<size_t>(iFewest)) return ZuAdjustStatus::TooFew;
    if (!Reduce()) {
      m_result.strFree = "every direction: the points stand in one place";
      return ZuAdjustStatus::RankDefect;
    }
    Weigh();
    return ZuAdjustStatus::Good;
  }

  // Centre and scale of the coordinates; false where the points stand in one place. The points are
  // taken in the order of their coordinates and covariances, so that the order given changes no
  // bit.
  bool Reduce() {
    double dHalf = 0.0, dLargest = 0.0;
    for (int a = 0; a < 3; ++a) {
      double dLow = kInfinite, dHigh = -kInfinite;
      for (const ZuFitPoint& p : m_points) {
        dLow = std::min(dLow, p.adX[a]);
        dHigh = std::max(dHigh, p.adX[a]);
      }
      m_out.centre[a] = 0.5 * dLow + 0.5 * dHigh;
      dHalf = std::max(dHalf, 0.5 * dHigh - 0.5 * dLow);
      dLargest = std::max({dLargest, std::fabs(dLow), std::fabs(dHigh)});
    }
    if (!(dHalf > 0.0)) return false;
    m_out.dScale = std::ldexp(1.0, std::ilogb(dHalf));
    m_model.m_dRounding = 4.0 * kEps * (dLargest / m_out.dScale);
    m_order.resize(m_points.size());
    std::iota(m_order.begin(), m_order.end(), size_t{0});
    std::sort(m_order.begin(), m_order.end(), [this](size_t a, size_t b) {
      const ZuFitPoint &p = m_points[a], &q = m_points[b];
      if (!std::equal(p.adX, p.adX + 3, q.adX)) {
        return std::lexicographical_compare(p.adX, p.adX + 3, q.adX, q.adX + 3);
      }
      if (!std::equal(p.adCov, p.adCov + 9, q.adCov)) {
        return std::lexicographical_compare(p.adCov, p.adCov + 9, q.adCov, q.adCov + 9);
      }
      return p.uId != q.uId ? p.uId < q.uId : a < b;
    });
    for (const size_t u : m_order) {
      Vector3 x;
      for (int a = 0; a < 3; ++a) x[a] = (m_points[u].adX[a] - m_out.centre[a]) / m_out.dScale;
      m_model.m_x.push_back(x);
    }
    m_model.m_used.assign(m_order.size(), 1);
    return true;
  }

  static bool IsTold(const ZuFitPoint& p) {
    return p.adCov[0] > 0.0 || p.adCov[4] > 0.0 || p.adCov[8] > 0.0;
  }

  // Covariances in the scale of the shape, the mean variance 1; m_dApriori is its root.
  void Weigh() {
    const double dScale = m_out.dScale;
    const double dOption = std::max(0.0, m_options.dSigma / dScale);
    const size_t n = m_order.size();
    double dSum = 0.0;
    size_t uTold = 0;
    std::vector<Matrix3> covs(n, Matrix3::Zero());
    for (size_t i = 0; i < n; ++i) {
      const ZuFitPoint& p = m_points[m_order[i]];
      if (!IsTold(p)) continue;
      for (int a = 0; a < 9; ++a) covs[i](a / 3, a % 3) = p.adCov[a] / dScale / dScale;
      covs[i] = (0.5 * (covs[i] + covs[i].transpose())).eval();
      FillUntold(&covs[i]);
      dSum += covs[i].trace() / 3.0;
      ++uTold;
    }
    m_result.bSigmaTold = uTold > 0 || dOption > 0.0;
    if (!m_result.bSigmaTold) {
      m_dApriori = 1.0 / dScale;
      return;  // equal weights
    }
    const double dUntold = dOption > 0.0 ? dOption * dOption : dSum / static_cast<double>(uTold);
    dSum += dUntold * static_cast<double>(n - uTold);
    const double dMean = dSum / static_cast<double>(n);
    m_dApriori = std::sqrt(dMean);
    if (uTold == 0) return;
    for (size_t i = 0; i < n; ++i) {
      const bool bTold = IsTold(m_points[m_order[i]]);
      m_model.m_cov.push_back(bTold ? Matrix3(covs[i] / dMean)
                                    : Matrix3(Matrix3::Identity() * (dUntold / dMean)));
    }
  }

  static void FillUntold(Matrix3* pCov) {
    double dSum = 0.0;
    int iTold = 0;
    for (int a = 0; a < 3; ++a) {
      dSum += (*pCov)(a, a);
      iTold += (*pCov)(a, a) > 0.0;
    }
    for (int a = 0; a < 3; ++a) {
      if (!((*pCov)(a, a) > 0.0)) (*pCov)(a, a) = dSum / iTold;
    }
  }

  // --- solution ---

  // Adjusts the points used from the shape of the start on, and tests all.
  bool Solve(const std::vector<char>& used) {
    m_model.m_used = used;
    m_model.m_shape = m_start;
    const FitKind kind = m_start.Kind();
    if (m_model.m_cov.empty() && (kind == FitKind::kPlane || kind == FitKind::kLine)) {
      std::vector<Vector3> points;  // closed: what is left is rounding
      for (size_t i = 0; i < used.size(); ++i) {
        if (used[i]) points.push_back(m_model.m_x[i]);
      }
      m_model.m_shape.FromPoints(points, Vector3::Zero());
    }
    m_engine = zu::internal::Adjust(m_model);
    // Once more, and covariance and tests at the last parameters.
    if (m_engine.status == ZuAdjustStatus::Good) m_engine = zu::internal::Adjust(m_model);
    if (m_engine.status == ZuAdjustStatus::Good) Refresh(m_model, &m_engine);
    if (m_engine.status != ZuAdjustStatus::Good) return false;
    m_sigma = ChooseSigma(m_engine, m_options.tests.sigmaKind, m_result.bSigmaTold);
    const bool bApriori = m_sigma.kind == ZuSigmaKind::APriori;
    m_sigma.dSigma0 = std::max(bApriori ? m_dApriori : m_sigma.dSigma0, m_model.m_dRounding);
    const GroupTester tester(m_engine, m_sigma, m_options.tests, m_model.Groups());
    m_tests = TestGroups(m_model, tester);
    return true;
  }

  double Posteriori() const { return std::max(m_engine.SigmaPosteriori(), m_model.m_dRounding); }

  ZuAdjustStatus AdjustAndTest() {
    std::vector<double> sigmas;
    if (m_result.bSigmaTold) {
      for (size_t i = 0; i < m_order.size(); ++i) {
        const auto& cov = m_model.m_cov;
        sigmas.push_back(m_dApriori * (cov.empty() ? 1.0 : std::sqrt(cov[i].trace() / 3.0)));
      }
    }
    const FitStart start = FindShape(m_model.m_shape.Kind(), m_model.m_x, sigmas,
                                     m_model.m_dRounding, m_options.uSeed);
    if (!start.bFound) return Defect();
    m_start = start.shape;
    const std::vector<char> all(m_order.size(), 1);
    if (!m_options.tests.bSnoop || !MayUse(start.agrees)) {
      Solve(all);
    } else if (m_order.size() > kSingly || !SnoopSingly(start)) {
      UseWhatFits(start.agrees);
    }
    if (m_engine.status == ZuAdjustStatus::RankDefect) return Defect();
    if (m_engine.status != ZuAdjustStatus::Good) return m_engine.status;
    m_out.cov = Covariance();
    if (!IsDetermined()) return Defect();
    return m_engine.status;
  }

  // A redundant condition at least, and no more than half of all set aside.
  bool MayUse(const std::vector<char>& used) const {
    const size_t uUsed = static_cast<size_t>(std::count(used.begin(), used.end(), 1));
    const int iConditions = static_cast<int>(uUsed) * m_model.m_shape.ConditionCount();
    return 2 * uUsed >= used.size() && iConditions > m_model.Parameters();
  }

  // False where the points of the start fit each other so much better that errors must be among
  // those that are left.
  bool SnoopSingly(const FitStart& start) {
    const double dStart = Solve(start.agrees) ? Posteriori() : 0.0;
    const SnoopResult snoop = Snoop(
        m_model.Groups(),
        [this](const std::vector<char>& used, std::vector<SnoopTest>* pTests, int* piRedundancy) {
          if (!Solve(used)) return false;
          *piRedundancy = m_engine.iRedundancy;
          for (size_t i = 0; i < m_tests.size(); ++i) {
            (*pTests)[i] = {m_tests[i].dTest, m_tests[i].dLimit};
          }
          return true;
        });
    return snoop.bGood && !snoop.bLimited && (dStart == 0.0 || Posteriori() <= kSigmaJump * dStart);
  }

  // From the points of the start: those that fit are used, until they stay the same.
  void UseWhatFits(const std::vector<char>& agrees) {
    std::vector<char> used = agrees;
    for (int iRound = 0; iRound < kMostRounds; ++iRound) {
      if (!Solve(used)) return;
      std::vector<char> fitting(used.size());
      for (size_t i = 0; i < used.size(); ++i) fitting[i] = !m_tests[i].IsRejected();
      if (fitting == used || !MayUse(fitting)) return;
      used = fitting;
    }
  }

  // Covariance of the parameters for sigma0 = 1. The inverse of the normal matrix N is that of
  // points whose noise is small against their spread. Beyond that the tilt answers to H, the second
  // derivatives of the sum of squares, in which the noise is taken off the spread: H^-1 N H^-1.
  FitMatrix Covariance() const {
    const Eigen::Index u = m_model.Parameters();
    const FitMatrix Q = Eigen::Map<const FitMatrix>(m_engine.covariance.data(), u, u);
    const FitShape& shape = m_model.m_shape;
    if (shape.Kind() != FitKind::kPlane && shape.Kind() != FitKind::kLine) return Q;
    FitMatrix noise = FitMatrix::Zero(u, u);
    GroupEquation equation;
    equation.A.resize(static_cast<size_t>(kMaxGroup * u));
    Eigen::Matrix<double, 3, 2> E;
    E << shape.E1(), shape.E2();
    for (size_t i = 0; i < m_order.size(); ++i) {
      if (!m_model.m_used[i]) continue;
      m_model.Move(i, &equation);
      const Matrix3 cov = m_model.m_cov.empty() ? Matrix3(Matrix3::Identity()) : m_model.m_cov[i];
      if (shape.Kind() == FitKind::kPlane) {
        const double d = equation.w[0] / equation.M[0];
        noise.topLeftCorner<2, 2>() += d * d * E.transpose() * cov * E;
      } else {
        const Eigen::Vector2d d = SolveSmall(Eigen::Map<const Eigen::Matrix2d>(equation.M),
                                             Eigen::Map<const Eigen::Vector2d>(equation.w));
        noise.topLeftCorner<2, 2>() +=
            shape.Direction().dot(cov * shape.Direction()) * d * d.transpose();
      }
    }
    const FitMatrix right = FitMatrix::Identity(u, u) - Q * noise;
    FitMatrix left(u, u);
    if (!InvertSquare(static_cast<int>(u), right.data(), left.data()))
      return FitMatrix::Constant(u, u, kInfinite);
    const FitMatrix result = left * Q * left.transpose();
    return 0.5 * (result + result.transpose());
  }

  // Standard deviations of angles and of a radius are such that the result means something.
  bool IsDetermined() const {
    const FitKind kind = m_model.m_shape.Kind();
    const Eigen::Index u = m_model.Parameters();
    if (!m_result.bSigmaTold && m_engine.iRedundancy == 0) return true;
    const double dSigma = m_engine.iRedundancy > 0 ? m_engine.SigmaPosteriori() : m_dApriori;
    const auto sd = [&](Eigen::Index j) { return std::sqrt(m_out.cov(j, j)) * dSigma; };
    if (kind != FitKind::kSphere && !(std::hypot(sd(0), sd(1)) < kMostTurn)) return false;
    if (kind == FitKind::kPlane || kind == FitKind::kLine) return true;
    const double dRadius = m_model.m_shape.Radius();
    return dRadius > 0.0 && sd(u - 1) < kMostRelative * dRadius;
  }

  // --- what is free ---

  std::string NamesAlong(const Vector3& direction) {
    const auto& x = m_model.m_x;
    size_t uLow = 0, uHigh = 0;
    for (size_t i = 0; i < x.size(); ++i) {
      if (direction.dot(x[i]) < direction.dot(x[uLow])) uLow = i;
      if (direction.dot(x[i]) > direction.dot(x[uHigh])) uHigh = i;
    }
    const Vector3 middle = 0.5 * (x[uLow] + x[uHigh]);
    size_t uMiddle = uLow;
    double dBest = kInfinite;
    for (size_t i = 0; i < x.size(); ++i) {
      const double d = (x[i] - middle).norm();
      if (i == uLow || i == uHigh || !(d < dBest)) continue;
      dBest = d;
      uMiddle = i;
    }
    std::vector<unsigned> ids = {Id(uLow), Id(uHigh)};
    if (uMiddle != uLow) ids.push_back(Id(uMiddle));
    std::sort(ids.begin(), ids.end());
    m_result.freePoints = ids;
    const std::string strLast = " and " + std::to_string(ids.back());
    return std::to_string(ids[0]) + (ids.size() > 2 ? ", " + std::to_string(ids[1]) : "") + strLast;
  }

  unsigned Id(size_t i) const { return m_points[m_order[i]].uId; }

  ZuAdjustStatus Defect() {
    FitShape line(FitKind::kLine);
    const bool bLine = line.FromPoints(m_model.m_x, Vector3::Zero());
    switch (m_model.m_shape.Kind()) {
      case FitKind::kPlane:
        m_result.strFree = "rotation about the line through points " +
                           NamesAlong(bLine ? line.Direction() : Vector3(Vector3::UnitX()));
        break;
      case FitKind::kLine:
        m_result.strFree = "direction of the line: the points are no farther apart than exact";
        break;
      case FitKind::kSphere:
        m_result.strFree = "centre along the normal of the plane of the points, against the radius";
        break;
      case FitKind::kCylinder:
        m_result.strFree = "direction and position of the axis, against the radius";
    }
    return ZuAdjustStatus::RankDefect;
  }

  // --- result ---

  void Report() {
    m_result.iRedundancy = m_engine.iRedundancy;
    m_result.dCondition = m_engine.dCondition;
    m_result.sigmaOfTests = m_sigma.kind;
    const bool bPosteriori =
        m_engine.iRedundancy > 0 && m_options.tests.sigmaKind != ZuSigmaKind::APriori;
    m_result.sigmaOfResults = bPosteriori ? ZuSigmaKind::APosteriori : ZuSigmaKind::APriori;
    const double dSigma = m_engine.SigmaPosteriori();
    if (m_engine.iRedundancy > 0) m_result.dSigma0 = dSigma / m_dApriori;
    m_out.shape = m_model.m_shape;
    m_out.cov *= std::pow(bPosteriori ? dSigma : m_dApriori, 2);
    FixSense();
    ReportPoints();
    if (!std::isfinite(m_result.dRms) || !std::isfinite(m_result.dFlatness) ||
        !std::isfinite(m_result.dSigma0) || !m_out.cov.allFinite()) {
      m_result.eStatus = ZuAdjustStatus::NotFinite;
    }
  }

  void ReportPoints() {
    const double dScale = m_out.dScale;
    const bool bLine = m_out.shape.Kind() == FitKind::kLine;
    double dLow = kInfinite, dHigh = -kInfinite, dSum = 0.0;
    int iUsed = 0;
    GroupEquation scratch;
    scratch.A.resize(static_cast<size_t>(kMaxGroup * m_model.Parameters()));
    m_result.points.resize(m_points.size());
    for (size_t i = 0; i < m_order.size(); ++i) {
      ZuFittedPoint& p = m_result.points[m_order[i]];
      p.bUsed = m_model.m_used[i] != 0;
      p.test = m_tests[i];
      p.test.uId = Id(i);
      if (m_bFlipped) {  // of the line the condition along e2
        const int a = bLine ? 1 : 0;
        for (double* pd : {&p.test.adResidual[a], &p.test.adW[a], &p.test.adLeaveOneOut[a]}) {
          *pd = -*pd;
        }
      }
      for (int a = 0; a < p.test.iDimension; ++a) {
        for (double* pd : {&p.test.adResidual[a], &p.test.adResidualSd[a], &p.test.adNabla[a],
                           &p.test.adLeaveOneOut[a]}) {
          *pd *= dScale;
        }
      }
      const Vector3 v = m_model.Move(i, &scratch);
      for (int a = 0; a < 3; ++a) p.adResidual[a] = v[a] * dScale;
      const double d = m_out.shape.Distance(m_model.m_x[i]);
      p.dDistance = d * dScale;
      m_result.iSetAside += !p.bUsed;
      if (!p.bUsed) continue;
      ++iUsed;
      dLow = std::min(dLow, p.dDistance);
      dHigh = std::max(dHigh, p.dDistance);
      dSum += d * d;
    }
    m_result.dRms = std::sqrt(dSum / iUsed) * dScale;
    m_result.dFlatness = dHigh - dLow;
  }

  // The largest component of the direction is positive, of equal ones the last. With the direction
  // e2 turns, and with them the tilt along e1, the shift along e2 and the height.
  void FixSense() {
    const FitKind kind = m_out.shape.Kind();
    if (kind == FitKind::kSphere) return;
    const Vector3& n = m_out.shape.Direction();
    int iLargest = 2;
    for (const int a : {1, 0}) {
      if (std::fabs(n[a]) > std::fabs(n[iLargest])) iLargest = a;
    }
    if (n[iLargest] >= 0.0) return;
    m_out.shape.Flip();
    m_bFlipped = kind == FitKind::kPlane || kind == FitKind::kLine;
    FitShape::Parameters sign = FitShape::Parameters::Ones(m_out.cov.rows());
    sign[0] = -1.0;
    sign[kind == FitKind::kPlane ? 2 : 3] = -1.0;
    m_out.cov = (sign.asDiagonal() * m_out.cov * sign.asDiagonal()).eval();
  }

  const std::vector<ZuFitPoint>& m_points;
  const ZuFitOptions& m_options;
  FitOutcome m_out;
  ZuFitResult& m_result;
  std::vector<size_t> m_order;  // by coordinates, as the points of the model
  ShapeModel m_model;
  FitShape m_start{FitKind::kPlane};
  double m_dApriori = 1.0;  // standard deviation of weight 1
  EngineResult m_engine;
  Sigma m_sigma;
  std::vector<ZuPointTest> m_tests;
  bool m_bFlipped = false;  // the sense of the conditions
};

}  // namespace

FitOutcome AdjustShape(FitKind kind, const std::vector<ZuFitPoint>& points,
                       const ZuFitOptions& options) {
  return Adjustment(kind, points, options).Run();
}

}  // namespace zu::internal
