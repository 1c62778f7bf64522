#include "zu/adjust/trafo2d_fit.h"

#include <Eigen/Dense>
#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>

#include "zu/adjust/internal/group_engine.h"
#include "zu/adjust/internal/snooping.h"

namespace {

using namespace zu::internal;
using Eigen::Matrix2d;
using Eigen::Vector2d;
using Kind = ZuTrafo2dKind;

constexpr int kTerms = 10;

int Coefficients(Kind kind) {
  switch (kind) {
    case Kind::Affine:
      return 6;
    case Kind::Projective:
      return 8;
    case Kind::Polynomial:
      return 20;
    default:
      return 4;
  }
}

int Parameters(Kind kind) { return kind == Kind::Congruence ? 3 : Coefficients(kind); }

// 1, x, y, x^2, xy, y^2, x^3, x^2 y, x y^2, y^3 and the powers of each.
constexpr int kPower[kTerms][2] = {{0, 0}, {1, 0}, {0, 1}, {2, 0}, {1, 1},
                                   {0, 2}, {3, 0}, {2, 1}, {1, 2}, {0, 3}};

double Power(double d, int i) { return i <= 0 ? 1.0 : d * Power(d, i - 1); }

// The point that the coefficients give, derivatives by them (2 x u) and by the point (2 x 2).
struct Mapped {
  Vector2d X;
  Eigen::Matrix<double, 2, Eigen::Dynamic, 0, 2, 2 * kTerms> A;
  Matrix2d F;
};

Mapped Map(Kind kind, const double* a, const Vector2d& p) {
  const double x = p[0], y = p[1];
  Mapped m;
  m.A.setZero(2, Coefficients(kind));
  switch (kind) {
    case Kind::Affine:
      m.X << a[0] + a[1] * x + a[2] * y, a[3] + a[4] * x + a[5] * y;
      m.A << 1, x, y, 0, 0, 0, 0, 0, 0, 1, x, y;
      m.F << a[1], a[2], a[4], a[5];
      break;
    case Kind::Projective: {
      const double w = a[6] * x + a[7] * y + 1.0;
      m.X << (a[0] * x + a[1] * y + a[2]) / w, (a[3] * x + a[4] * y + a[5]) / w;
      m.A << x / w, y / w, 1 / w, 0, 0, 0, -m.X[0] * x / w, -m.X[0] * y / w,  //
          0, 0, 0, x / w, y / w, 1 / w, -m.X[1] * x / w, -m.X[1] * y / w;
      m.F << (a[0] - m.X[0] * a[6]) / w, (a[1] - m.X[0] * a[7]) / w,  //
          (a[3] - m.X[1] * a[6]) / w, (a[4] - m.X[1] * a[7]) / w;
      if (!(w > 0.0)) m.X.setConstant(std::nan(""));  // behind the horizon
      break;
    }
    case Kind::Polynomial:
      m.X.setZero();
      m.F.setZero();
      for (int k = 0; k < kTerms; ++k) {
        const int i = kPower[k][0], j = kPower[k][1];
        const double dTerm = Power(x, i) * Power(y, j);
        const Vector2d c(a[k], a[k + kTerms]);
        m.X += c * dTerm;
        m.A(0, k) = m.A(1, k + kTerms) = dTerm;
        m.F.col(0) += c * (i * Power(x, i - 1) * Power(y, j));
        m.F.col(1) += c * (j * Power(x, i) * Power(y, j - 1));
      }
      break;
    default:
      m.X << a[0] + a[1] * x - a[3] * y, a[2] + a[3] * x + a[1] * y;
      m.A << 1, x, 0, -y, 0, y, 1, x;
      m.F << a[1], -a[3], a[3], a[1];
  }
  return m;
}

// Of the coefficients of a congruence by its parameters, the shift and the angle. Those of the
// other kinds are their coefficients.
Eigen::Matrix<double, 4, 3> ByAngle(const std::vector<double>& a) {
  Eigen::Matrix<double, 4, 3> J = Eigen::Matrix<double, 4, 3>::Zero();
  J(0, 0) = J(2, 1) = 1.0;
  J(1, 2) = -a[3];
  J(3, 2) = a[1];
  return J;
}

class Model : public GroupModel {
 public:
  explicit Model(Kind kind) : m_kind(kind) {}

  int Parameters() const override { return ::Parameters(m_kind); }
  int Groups() const override { return static_cast<int>(m_source.size()); }
  bool IsUsed(int i) const override { return m_used[static_cast<size_t>(i)] != 0; }
  double Unit(int) const override { return 1.0; }

  void Step(const double* pd) override {
    if (m_kind != Kind::Congruence) {
      for (size_t j = 0; j < m_a.size(); ++j) m_a[j] += pd[j];
      return;
    }
    const double dAngle = std::atan2(m_a[3], m_a[1]) + pd[2];
    m_a = {m_a[0] + pd[0], std::cos(dAngle), m_a[2] + pd[1], std::sin(dAngle)};
  }

  void Linearize(int iGroup, GroupEquation* p) const override {
    const size_t i = static_cast<size_t>(iGroup);
    Vector2d v = Vector2d::Zero();
    const bool bExact = m_sourceCov[i].isZero(0.0);
    for (int k = 0;; ++k) {
      Mapped m = Map(m_kind, m_a.data(), m_source[i] + v);
      const Vector2d e = m.X - m.F * v - m_target[i];
      const Matrix2d M = m.F * m_sourceCov[i] * m.F.transpose() + m_targetCov[i];
      if (bExact || k == 4) {
        if (m_kind == Kind::Congruence) m.A = (m.A.leftCols<4>() * ByAngle(m_a)).eval();
        p->m = 2;
        for (int a = 0; a < 2; ++a) {
          p->w[a] = e[a];
          for (int b = 0; b < 2; ++b) p->M[2 * a + b] = M(a, b);
          for (int j = 0; j < Parameters(); ++j) {
            p->A[static_cast<size_t>(a * Parameters() + j)] = m.A(a, j);
          }
        }
        return;
      }
      v = -m_sourceCov[i] * m.F.transpose() * (M.inverse() * e);
    }
  }

  // The linear form of all kinds, unweighted: K. Kraus, "Photogrammetry", 2007, on rectification.
  void Start() {
    const Kind kind = m_kind == Kind::Congruence ? Kind::Helmert : m_kind;
    const Eigen::Index u = Coefficients(kind), n = Groups();
    Eigen::MatrixXd A(2 * n, u);
    Eigen::VectorXd l(2 * n);
    const std::vector<double> zeros(static_cast<size_t>(u), 0.0);
    for (Eigen::Index i = 0; i < n; ++i) {
      const Vector2d &p = m_source[static_cast<size_t>(i)], &X = m_target[static_cast<size_t>(i)];
      const Mapped m = Map(kind, zeros.data(), p);
      A.middleRows<2>(2 * i) = m.A;
      if (kind == Kind::Projective) A.block<2, 2>(2 * i, 6) = -X * p.transpose();
      l.segment<2>(2 * i) = X;
    }
    const Eigen::VectorXd s = A.colPivHouseholderQr().solve(l);
    m_a.assign(s.data(), s.data() + u);
    if (m_kind != Kind::Congruence) return;
    const double dLength = std::hypot(m_a[1], m_a[3]);
    m_a[1] = dLength > 0.0 ? m_a[1] / dLength : 1.0;
    m_a[3] = dLength > 0.0 ? m_a[3] / dLength : 0.0;
  }

  Kind m_kind;
  std::vector<double> m_a;
  std::vector<Vector2d> m_source, m_target;  // over their extents
  std::vector<Matrix2d> m_sourceCov, m_targetCov;
  std::vector<char> m_used;
};

struct Frame {
  Vector2d centre = Vector2d::Zero();
  double dScale = 1.0;

  // Of the coordinates [extents].
  double Rounding() const {
    return 4.0 * std::numeric_limits<double>::epsilon() *
           (1.0 + centre.lpNorm<Eigen::Infinity>() / dScale);
  }

  // False where the points stand in one place.
  bool Set(const std::vector<ZuTrafo2dPair>& pairs, double const (ZuTrafo2dPair::*pad)[2]) {
    double dHalf = 0.0;
    for (int a = 0; a < 2; ++a) {
      double dLow = std::numeric_limits<double>::infinity(), dHigh = -dLow;
      for (const ZuTrafo2dPair& pair : pairs) {
        dLow = std::min(dLow, (pair.*pad)[a]);
        dHigh = std::max(dHigh, (pair.*pad)[a]);
      }
      centre[a] = 0.5 * dLow + 0.5 * dHigh;
      dHalf = std::max(dHalf, 0.5 * dHigh - 0.5 * dLow);
    }
    if (!(dHalf > 0.0)) return false;
    dScale = std::ldexp(1.0, std::ilogb(dHalf));
    return true;
  }
};

class Fitter {
 public:
  Fitter(Kind kind, const std::vector<ZuTrafo2dPair>& pairs, const ZuTrafo2dOptions& options)
      : m_pairs(pairs), m_options(options), m_model(kind) {
    m_fit.kind = kind;
  }

  ZuTrafo2dFit Run() {
    m_fit.eStatus = Adjust();
    if (m_fit.eStatus == ZuAdjustStatus::RankDefect) m_fit.strFree = Free();
    if (m_fit.eStatus == ZuAdjustStatus::Good) Report();
    return std::move(m_fit);
  }

 private:
  ZuAdjustStatus Adjust() {
    const auto isFinite = [](double d) { return std::isfinite(d); };
    for (const ZuTrafo2dPair& p : m_pairs) {
      if (!std::all_of(p.adSource, p.adSource + 2, isFinite) ||
          !std::all_of(p.adTarget, p.adTarget + 2, isFinite) ||
          !std::all_of(p.adSourceCov, p.adSourceCov + 4, isFinite) ||
          !std::all_of(p.adTargetCov, p.adTargetCov + 4, isFinite)) {
        return ZuAdjustStatus::NotFinite;
      }
    }
    if (2 * m_pairs.size() < static_cast<size_t>(m_model.Parameters())) {
      return ZuAdjustStatus::TooFew;
    }
    if (!m_source.Set(m_pairs, &ZuTrafo2dPair::adSource)) return ZuAdjustStatus::RankDefect;
    // A target in one place is a transformation to a point, which no congruence is.
    if (!m_target.Set(m_pairs, &ZuTrafo2dPair::adTarget)) return ZuAdjustStatus::RankDefect;
    if (m_fit.kind == Kind::Congruence) m_target.dScale = m_source.dScale;
    Fill();
    m_model.Start();
    const std::vector<double> start = m_model.m_a;
    const auto solve = [this, &start](const std::vector<char>& used) {
      m_model.m_used = used;
      m_model.m_a = start;
      m_engine = zu::internal::Adjust(m_model);
      // Once more, so that covariance and tests belong to the last coefficients to all digits.
      if (m_engine.status == ZuAdjustStatus::Good) m_engine = zu::internal::Adjust(m_model);
      if (m_engine.status != ZuAdjustStatus::Good) return false;
      m_sigma = ChooseSigma(m_engine, m_options.tests.sigmaKind, m_fit.bSigmaTold);
      if (m_sigma.kind == ZuSigmaKind::APriori) {
        m_sigma.dSigma0 = m_dApriori;
      } else {
        // Points that agree to their last digits must not be tested against less than these.
        m_sigma.dSigma0 = std::max({m_sigma.dSigma0, m_source.Rounding(), m_target.Rounding()});
      }
      m_tests =
          TestGroups(m_model, GroupTester(m_engine, m_sigma, m_options.tests, m_model.Groups()));
      return true;
    };
    const std::vector<char> all(m_pairs.size(), 1);
    if (!m_options.tests.bSnoop) {
      solve(all);
      return m_engine.status;
    }
    Snoop(m_model.Groups(),
          [&](const std::vector<char>& used, std::vector<SnoopTest>* pTests, int* piRedundancy) {
            if (!solve(used)) return false;
            *piRedundancy = m_engine.iRedundancy;
            for (size_t i = 0; i < m_tests.size(); ++i) {
              (*pTests)[i] = {m_tests[i].dTest, m_tests[i].dLimit};
            }
            return true;
          });
    return m_engine.status;
  }

  // Pairs by id and place, so that the order given changes no bit.
  void Fill() {
    m_order.resize(m_pairs.size());
    std::iota(m_order.begin(), m_order.end(), size_t{0});
    std::sort(m_order.begin(), m_order.end(), [this](size_t a, size_t b) {
      const ZuTrafo2dPair &p = m_pairs[a], &q = m_pairs[b];
      if (p.uId != q.uId) return p.uId < q.uId;
      return std::lexicographical_compare(p.adSource, p.adSource + 2, q.adSource, q.adSource + 2);
    });
    const auto cov = [](const double* pd, double dScale) {
      Matrix2d m;
      m << pd[0], 0.5 * (pd[1] + pd[2]), 0.5 * (pd[1] + pd[2]), pd[3];
      return Matrix2d(m / dScale / dScale);
    };
    double dTold = 0.0;
    int iTold = 0;
    for (const size_t u : m_order) {
      const ZuTrafo2dPair& p = m_pairs[u];
      m_model.m_source.push_back((Vector2d(p.adSource[0], p.adSource[1]) - m_source.centre) /
                                 m_source.dScale);
      m_model.m_target.push_back((Vector2d(p.adTarget[0], p.adTarget[1]) - m_target.centre) /
                                 m_target.dScale);
      m_model.m_sourceCov.push_back(cov(p.adSourceCov, m_source.dScale));
      m_model.m_targetCov.push_back(cov(p.adTargetCov, m_target.dScale));
      const Matrix2d& t = m_model.m_targetCov.back();
      const Matrix2d& s = m_model.m_sourceCov.back();
      if (!(t.trace() > 0.0 || s.trace() > 0.0)) continue;
      dTold += 0.5 * (t.trace() + s.trace());
      ++iTold;
    }
    m_fit.bSigmaTold = iTold > 0 || m_options.dSigma > 0.0;
    m_dApriori = m_fit.bSigmaTold ? 1.0 : 1.0 / m_target.dScale;
    const double dOption = m_options.dSigma / m_target.dScale;
    const double dUntold = m_options.dSigma > 0.0 ? dOption * dOption
                           : iTold > 0            ? dTold / iTold
                                                  : 1.0;
    for (size_t i = 0; i < m_order.size(); ++i) {
      Matrix2d& t = m_model.m_targetCov[i];
      const bool bTold = t.trace() > 0.0 || m_model.m_sourceCov[i].trace() > 0.0;
      if (!bTold) t = Matrix2d::Identity() * dUntold;
    }
  }

  std::string Free() const {
    switch (m_fit.kind) {
      case Kind::Congruence:
        return "rotation about the place in which all points stand";
      case Kind::Helmert:
        return "rotation and scale about the place in which all points stand";
      case Kind::Affine:
        return "scale and shear across the line on which the points stand";
      case Kind::Projective:
        return "what is off the line on which all points but one stand";
      case Kind::Polynomial:
        return "terms that vanish in all points, as where these stand on one curve of third order";
    }
    return "";
  }

  // Powers of the extents by which a coefficient grows: of the target, and of the source downwards.
  double Growth(size_t k) const {
    const double t = m_target.dScale, s = m_source.dScale;
    switch (m_fit.kind) {
      case Kind::Affine:
        return k % 3 == 0 ? t : t / s;
      case Kind::Projective:
        return k > 5 ? 1.0 / s : (k % 3 == 2 ? t : t / s);
      case Kind::Polynomial:
        return t / Power(s, kPower[k % kTerms][0] + kPower[k % kTerms][1]);
      default:
        return k % 2 == 0 ? t : t / s;
    }
  }

  void Report() {
    m_fit.iRedundancy = m_engine.iRedundancy;
    m_fit.dCondition = m_engine.dCondition;
    m_fit.sigmaOfTests = m_sigma.kind;
    const bool bPosteriori =
        m_engine.iRedundancy > 0 && m_options.tests.sigmaKind != ZuSigmaKind::APriori;
    m_fit.sigmaOfResults = bPosteriori ? ZuSigmaKind::APosteriori : ZuSigmaKind::APriori;
    const double dSigma = m_engine.SigmaPosteriori();
    if (m_engine.iRedundancy > 0) m_fit.dSigma0 = dSigma / m_dApriori;
    for (int a = 0; a < 2; ++a) {
      m_fit.adSourceCentre[a] = m_source.centre[a];
      m_fit.adTargetCentre[a] = m_target.centre[a];
    }
    const Eigen::Index u = m_model.Parameters();
    Eigen::MatrixXd cov = Eigen::Map<const Eigen::MatrixXd>(m_engine.covariance.data(), u, u);
    if (m_fit.kind == Kind::Congruence) {
      const Eigen::Matrix<double, 4, 3> J = ByAngle(m_model.m_a);
      cov = (J * cov.topLeftCorner<3, 3>() * J.transpose()).eval();
    }
    cov *= std::pow(bPosteriori ? dSigma : m_dApriori, 2);
    const size_t c = m_model.m_a.size();
    bool bFinite = std::isfinite(m_fit.dSigma0);
    for (size_t i = 0; i < c; ++i) {
      m_fit.coefficients.push_back(m_model.m_a[i] * Growth(i));
      bFinite &= std::isfinite(m_fit.coefficients.back());
      for (size_t j = 0; j < c; ++j) {
        const double d =
            cov(static_cast<Eigen::Index>(i), static_cast<Eigen::Index>(j)) * Growth(i) * Growth(j);
        m_fit.covariance.push_back(d);
        bFinite &= std::isfinite(d);
      }
    }
    m_fit.points.resize(m_pairs.size());
    for (size_t i = 0; i < m_order.size(); ++i) {
      ZuPointTest test = m_tests[i];
      test.uId = m_pairs[m_order[i]].uId;
      for (int a = 0; a < 2; ++a) {
        for (double* pd : {&test.adResidual[a], &test.adResidualSd[a], &test.adNabla[a],
                           &test.adLeaveOneOut[a]}) {
          *pd *= m_target.dScale;
        }
        bFinite &= std::isfinite(test.adResidual[a]) && std::isfinite(test.adResidualSd[a]);
      }
      m_fit.iSetAside += !test.bUsed;
      m_fit.points[m_order[i]] = test;
    }
    if (!bFinite) m_fit.eStatus = ZuAdjustStatus::NotFinite;
  }

  const std::vector<ZuTrafo2dPair>& m_pairs;
  const ZuTrafo2dOptions& m_options;
  Model m_model;
  ZuTrafo2dFit m_fit;
  Frame m_source, m_target;
  std::vector<size_t> m_order;
  double m_dApriori = 1.0;  // standard deviation of weight 1
  EngineResult m_engine;
  Sigma m_sigma;
  std::vector<ZuPointTest> m_tests;
};

// Coefficients from outside the class.
class Plain : public ZuTrafo2d {
 public:
  Plain(eZuTrafo2DType eType, const std::vector<double>& coefficients) {
    m_eType = eType;
    std::copy(coefficients.begin(), coefficients.end(), m_adCoef);
  }
};

double Binomial(int n, int k) { return k == 0 ? 1.0 : Binomial(n - 1, k - 1) * n / k; }

}  // namespace

void ZuTrafo2dFit::Transform(double* x, double* y, double* pdCov) const {
  const Mapped m =
      Map(kind, coefficients.data(), Vector2d(*x - adSourceCentre[0], *y - adSourceCentre[1]));
  *x = m.X[0] + adTargetCentre[0];
  *y = m.X[1] + adTargetCentre[1];
  if (pdCov == nullptr) return;
  const Eigen::Index c = static_cast<Eigen::Index>(coefficients.size());
  Matrix2d cov;
  cov << pdCov[0], pdCov[1], pdCov[2], pdCov[3];
  const Eigen::Matrix<double, 2, Eigen::Dynamic, 0, 2, 2 * kTerms> AC =
      m.A.lazyProduct(Eigen::Map<const Eigen::MatrixXd>(covariance.data(), c, c));
  cov = (m.F * cov * m.F.transpose() + AC.lazyProduct(m.A.transpose())).eval();
  for (int i = 0; i < 4; ++i) pdCov[i] = cov(i / 2, i % 2);
}

ZuTrafo2d ZuTrafo2dFit::Uncentred() const {
  const double sx = adSourceCentre[0], sy = adSourceCentre[1];
  const double tx = adTargetCentre[0], ty = adTargetCentre[1];
  std::vector<double> a = coefficients;
  switch (kind) {
    case ZuTrafo2dKind::Affine:
      a[0] += tx - a[1] * sx - a[2] * sy;
      a[3] += ty - a[4] * sx - a[5] * sy;
      return Plain(eZuTrafo2DAffin, a);
    case ZuTrafo2dKind::Projective: {
      Eigen::Matrix3d H, S, T;
      H << a[0], a[1], a[2], a[3], a[4], a[5], a[6], a[7], 1.0;
      S << 1, 0, -sx, 0, 1, -sy, 0, 0, 1;
      T << 1, 0, tx, 0, 1, ty, 0, 0, 1;
      const Eigen::Matrix3d K = T * H * S;
      for (int k = 0; k < 8; ++k) a[static_cast<size_t>(k)] = K(k / 3, k % 3) / K(2, 2);
      return Plain(eZuTrafo2DProjektiv, a);
    }
    case ZuTrafo2dKind::Polynomial: {
      std::vector<double> b(20, 0.0);
      b[0] = tx;
      b[10] = ty;
      for (int k = 0; k < kTerms; ++k) {
        for (int l = 0; l < kTerms; ++l) {  // the part of x^i y^j in term k
          const int i = kPower[l][0], j = kPower[l][1], p = kPower[k][0], q = kPower[k][1];
          if (i > p || j > q) continue;
          const double d = Binomial(p, i) * Binomial(q, j) * Power(-sx, p - i) * Power(-sy, q - j);
          b[static_cast<size_t>(l)] += d * a[static_cast<size_t>(k)];
          b[static_cast<size_t>(l + kTerms)] += d * a[static_cast<size_t>(k + kTerms)];
        }
      }
      return Plain(eZuTrafo2DPolynomial, b);
    }
    default:
      a[0] += tx - a[1] * sx + a[3] * sy;
      a[2] += ty - a[3] * sx - a[1] * sy;
      return Plain(eZuTrafo2DHelmert, a);
  }
}

ZuTrafo2dFit ZuFitTrafo2d(ZuTrafo2dKind kind, const std::vector<ZuTrafo2dPair>& pairs,
                          const ZuTrafo2dOptions& options) {
  return Fitter(kind, pairs, options).Run();
}
