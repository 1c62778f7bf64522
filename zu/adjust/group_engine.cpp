#include "zu/adjust/internal/group_engine.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <numeric>

#include "zu/adjust/internal/dense_cholesky.h"

namespace zu::internal {
namespace {

constexpr double kNever = std::numeric_limits<double>::infinity();
constexpr double kNone = std::numeric_limits<double>::quiet_NaN();

// Largest change of a parameter over its standard deviation that ends the iteration [-].
constexpr double kConverged = 1e-6;

// Change over the former one from which on a step below kConverged (a priori) is rounding [-].
constexpr double kStalled = 0.25;

// N, h and the squares of one group; only the lower triangle of N. K = M^-1 A is scratch.
bool AddGroup(const GroupEquation& q, int u, std::vector<double>* pScratch,
              GroupNormals* pNormals) {
  double inverse[kMaxGroup * kMaxGroup];
  if (!InvertSpd(q.m, q.M, inverse)) return false;
  double* const K = pScratch->data();
  const double* const A = q.A.data();
  for (int i = 0; i < q.m; ++i) {
    for (int j = 0; j < u; ++j) K[i * u + j] = 0.0;
    double dWeighted = 0.0;
    for (int k = 0; k < q.m; ++k) {
      const double dWeight = inverse[i * q.m + k];
      for (int j = 0; j < u; ++j) K[i * u + j] += dWeight * A[k * u + j];
      dWeighted += dWeight * q.w[k];
    }
    pNormals->dSquares += q.w[i] * dWeighted;
  }
  double* const h = pNormals->h.data();
  for (int i = 0; i < q.m; ++i) {
    const double* const pA = A + i * u;
    const double* const pK = K + i * u;
    for (int j = 0; j < u; ++j) {
      double* const pColumn = pNormals->N.data() + static_cast<std::ptrdiff_t>(j) * u;
      const double a = pA[j];
      for (int k = j; k < u; ++k) pColumn[k] += a * pK[k];
      h[j] += q.w[i] * pK[j];
    }
  }
  pNormals->iObservations += q.m;
  return true;
}

bool IsFinite(const GroupNormals& normals) {
  const auto isFinite = [](double d) { return std::isfinite(d); };
  return std::all_of(normals.N.begin(), normals.N.end(), isFinite) &&
         std::all_of(normals.h.begin(), normals.h.end(), isFinite) &&
         std::isfinite(normals.dSquares);
}

// Decomposes the normal matrix with the parameters in their units. False for a defect, told in the
// result, and for a matrix that is not finite then.
class ScaledNormals {
 public:
  ScaledNormals(const GroupModel& model, const GroupNormals& normals, EngineResult* pResult)
      : m_u(normals.h.size()), m_unit(m_u), m_inverse(m_u * m_u) {
    std::vector<double> scaled(m_u * m_u), values(m_u), vectors(m_u * m_u);
    for (std::size_t j = 0; j < m_u; ++j) {
      const double dN = normals.N[j * m_u + j];
      m_unit[j] = model.Unit(static_cast<int>(j));
      if (m_unit[j] == 0.0 && dN > 0.0) m_unit[j] = 1.0 / std::sqrt(dN);
      if (m_unit[j] == 0.0) m_unit[j] = 1.0;
    }
    m_factors.SetZero(static_cast<int>(m_u));
    for (std::size_t i = 0; i < m_u; ++i) {
      for (std::size_t j = 0; j < m_u; ++j) {
        const double d = m_unit[i] * normals.N[i * m_u + j] * m_unit[j];
        if (!std::isfinite(d)) return;
        scaled[i * m_u + j] = m_factors.At(static_cast<int>(i), static_cast<int>(j)) = d;
      }
    }
    SymmetricEigen(static_cast<int>(m_u), scaled.data(), values.data(), vectors.data());
    const double dLargest = values[m_u - 1];
    pResult->dCondition = dLargest > 0.0 ? std::max(values[0], 0.0) / dLargest : 0.0;
    pResult->iDefect = 0;
    for (const double d : values) pResult->iDefect += !(d > model.Singular() * dLargest);
    if (pResult->iDefect > 0) {
      pResult->status = ZuAdjustStatus::RankDefect;
      for (std::size_t i = 0; i < m_u; ++i) pResult->freeDirection.push_back(vectors[i * m_u]);
      return;
    }
    m_bGood = m_factors.Factorise();
    for (std::size_t i = 0; i < m_u; ++i) {
      for (std::size_t j = 0; j <= i; ++j) {
        double d = 0.0;
        for (std::size_t k = 0; k < m_u; ++k) {
          d += vectors[i * m_u + k] * vectors[j * m_u + k] / values[k];
        }
        m_inverse[i * m_u + j] = m_inverse[j * m_u + i] = m_unit[i] * d * m_unit[j];
        m_bGood = m_bGood && std::isfinite(m_inverse[i * m_u + j]);
      }
    }
  }

  bool IsGood() const { return m_bGood; }
  const std::vector<double>& Inverse() const { return m_inverse; }
  std::vector<double> Correction(const std::vector<double>& h) const {
    std::vector<double> dx(m_u);
    for (std::size_t j = 0; j < m_u; ++j) dx[j] = -m_unit[j] * h[j];
    m_factors.Solve(dx.data());
    for (std::size_t j = 0; j < m_u; ++j) dx[j] *= m_unit[j];
    return dx;
  }

 private:
  std::size_t m_u;
  std::vector<double> m_unit, m_inverse;
  DenseCholesky m_factors;
  bool m_bGood = false;
};

// Largest change over its standard deviation for sigma0 = 1.
double RelativeChange(const std::vector<double>& dx, const std::vector<double>& covariance) {
  double dLargest = 0.0;
  for (std::size_t j = 0; j < dx.size(); ++j) {
    dLargest = std::max(dLargest, std::fabs(dx[j]) / std::sqrt(covariance[j * (dx.size() + 1)]));
  }
  return dLargest;
}

}  // namespace

GroupEquation EquationFor(int iParameters) {
  GroupEquation equation;
  equation.A.assign(static_cast<std::size_t>(kMaxGroup) * static_cast<std::size_t>(iParameters),
                    0.0);
  return equation;
}

double EngineResult::SigmaPosteriori() const {
  return iRedundancy > 0 ? std::sqrt(std::max(dSquares, 0.0) / iRedundancy) : 1.0;
}

bool GroupModel::AddNormals(GroupNormals* pNormals) {
  const int u = Parameters();
  GroupEquation equation = EquationFor(u);
  std::vector<double> scratch(equation.A.size());
  for (int i = 0, n = Groups(); i < n; ++i) {
    if (!IsUsed(i)) continue;
    Linearize(i, &equation);
    if (!AddGroup(equation, u, &scratch, pNormals)) return false;
  }
  for (int i = 0; i < u; ++i) {
    for (int j = 0; j < i; ++j) {
      pNormals->N[static_cast<std::size_t>(i * u + j)] =
          pNormals->N[static_cast<std::size_t>(j * u + i)];
    }
  }
  return true;
}

EngineResult Adjust(GroupModel& model, int iMaxSteps) {
  const int u = model.Parameters();
  EngineResult result;
  double dPrevious = kNever;
  for (result.iSteps = 0; result.iSteps < iMaxSteps;) {
    GroupNormals normals(u);
    const bool bFormed = model.AddNormals(&normals);
    ++result.iSteps;
    result.iObservations = normals.iObservations;
    result.iRedundancy = normals.iObservations - u;
    result.status = ZuAdjustStatus::NotFinite;
    if (!bFormed || !IsFinite(normals)) return result;
    if (result.iRedundancy < 0) {
      result.status = ZuAdjustStatus::TooFew;
      return result;
    }
    const ScaledNormals scaled(model, normals, &result);
    if (!scaled.IsGood()) return result;
    const std::vector<double> dx = scaled.Correction(normals.h);
    if (!std::all_of(dx.begin(), dx.end(), [](double d) { return std::isfinite(d); }))
      return result;
    model.Step(dx.data());

    const double dLess = std::inner_product(dx.begin(), dx.end(), normals.h.begin(), 0.0);
    result.dSquares = std::max(normals.dSquares + dLess, 0.0);
    const double dChange = RelativeChange(dx, scaled.Inverse());
    const double dSigma0 = result.iRedundancy > 0 ? result.SigmaPosteriori() : 1.0;
    const bool bSmall = dChange < kConverged;
    if ((bSmall && dChange < kConverged * dSigma0) || (bSmall && dChange >= kStalled * dPrevious) ||
        dChange == 0.0) {
      result.covariance = scaled.Inverse();
      result.status = ZuAdjustStatus::Good;
      return result;
    }
    dPrevious = dChange;
  }
  result.status = ZuAdjustStatus::NotConverged;
  return result;
}

namespace {

// Puts the derivatives by the parameters along the axes in place of those by the parameters.
void TurnColumns(int m, const std::vector<double>& axes, std::vector<double>* pA) {
  const std::size_t u = pA->size() / kMaxGroup;
  std::vector<double> row(u);
  for (std::size_t i = 0; i < static_cast<std::size_t>(m); ++i) {
    double* const pd = pA->data() + i * u;
    std::copy_n(pd, u, row.begin());
    for (std::size_t j = 0; j < u; ++j) {
      pd[j] = 0.0;
      for (std::size_t k = 0; k < u; ++k) pd[j] += row[k] * axes[k * u + j];
    }
  }
}

// A model with parameters along the axes, each in its own unit; its equations are all it gives.
class TurnedModel final : public GroupModel {
 public:
  TurnedModel(const GroupModel& model, const std::vector<double>& axes)
      : m_model(model), m_axes(axes) {}
  int Parameters() const override { return m_model.Parameters(); }
  int Groups() const override { return m_model.Groups(); }
  bool IsUsed(int i) const override { return m_model.IsUsed(i); }
  void Step(const double*) override {}
  void Linearize(int i, GroupEquation* pEquation) const override {
    m_model.Linearize(i, pEquation);
    TurnColumns(pEquation->m, m_axes, &pEquation->A);
  }

 private:
  const GroupModel& m_model;
  const std::vector<double>& m_axes;
};

}  // namespace

void Refresh(GroupModel& model, EngineResult* pResult) {
  const int n = model.Parameters();
  const auto u = static_cast<std::size_t>(n);
  GroupNormals normals(n), turned(n);
  pResult->status = ZuAdjustStatus::NotFinite;
  if (!model.AddNormals(&normals) || !IsFinite(normals)) return;
  std::vector<double> values(u);
  pResult->axes.resize(u * u);
  SymmetricEigen(n, normals.N.data(), values.data(), pResult->axes.data());
  TurnedModel along(model, pResult->axes);
  if (!along.AddNormals(&turned) || !IsFinite(turned)) return;
  EngineResult ofAxes;
  const ScaledNormals scaled(along, turned, &ofAxes);
  if (!scaled.IsGood()) return;
  pResult->principal = scaled.Inverse();
  for (std::size_t i = 0; i < u; ++i) {
    for (std::size_t j = 0; j <= i; ++j) {
      double d = 0.0;
      for (std::size_t k = 0; k < u; ++k) {
        for (std::size_t l = 0; l < u; ++l) {
          d += pResult->axes[i * u + k] * pResult->principal[k * u + l] * pResult->axes[j * u + l];
        }
      }
      if (!std::isfinite(d)) return;
      pResult->covariance[i * u + j] = pResult->covariance[j * u + i] = d;
    }
  }
  pResult->dSquares = turned.dSquares;
  pResult->status = ZuAdjustStatus::Good;
}

Sigma ChooseSigma(const EngineResult& result, ZuSigmaKind kind, bool bGivenByUser) {
  if (kind == ZuSigmaKind::Automatic) {
    kind = bGivenByUser ? ZuSigmaKind::APriori : ZuSigmaKind::APosteriori;
  }
  if (kind == ZuSigmaKind::APriori || result.iRedundancy < 1) return {};
  return {result.SigmaPosteriori(), ZuSigmaKind::APosteriori};
}

GroupTester::GroupTester(const EngineResult& result, const Sigma& sigma,
                         const ZuTestOptions& options, int iTests)
    : m_result(result),
      m_bPriori(sigma.kind == ZuSigmaKind::APriori),
      m_dAlpha(ZuTestAlpha(options, iTests)),
      m_dSigma0(sigma.dSigma0),
      m_dLeastError(ZuLeastError(m_dAlpha, options.dPower)),
      m_dLeastRedundancy(options.dLeastRedundancy) {}

double GroupTester::Limit(int m) const {
  double& d = m_adLimit[m];
  if (d == 0.0) {
    d = m_bPriori ? ZuGroupLimit(m_dAlpha, m) : ZuGroupLimit(m_dAlpha, m, m_result.iRedundancy);
  }
  return d;
}

double GroupTester::NewLimit(int m) const {
  double& d = m_adNewLimit[m];
  if (d == 0.0) {
    d = m_bPriori ? ZuGroupLimit(m_dAlpha, m) : ZuNewGroupLimit(m_dAlpha, m, m_result.iRedundancy);
  }
  return d;
}

namespace {

void Multiply(int m, const double* a, const double* b, double* pdProduct) {
  for (int i = 0; i < m; ++i) {
    for (int j = 0; j < m; ++j) {
      double d = 0.0;
      for (int k = 0; k < m; ++k) d += a[i * m + k] * b[k * m + j];
      pdProduct[i * m + j] = d;
    }
  }
}

// Of a symmetric matrix.
double Determinant(int m, const double* a) {
  if (m == 1) return a[0];
  if (m == 2) return a[0] * a[3] - a[1] * a[2];
  return a[0] * (a[4] * a[8] - a[5] * a[7]) - a[1] * (a[3] * a[8] - a[5] * a[6]) +
         a[2] * (a[3] * a[7] - a[4] * a[6]);
}

// 0 where both vanish, as residuals of observations without error do.
double Quotient(double dValue, double dBy) { return dBy > 0.0 ? dValue / dBy : 0.0; }

}  // namespace

void GroupTester::Test(const GroupEquation& equation, bool bUsed, ZuPointTest* pTest,
                       double* pdAQA) const {
  const int u = static_cast<int>(std::lround(std::sqrt(m_result.covariance.size())));
  const int m = equation.m;
  const bool bTurned = !m_result.axes.empty();
  std::vector<double> turned;
  if (bTurned) {
    turned = equation.A;
    TurnColumns(m, m_result.axes, &turned);
  }
  const double* const A = bTurned ? turned.data() : equation.A.data();
  const double* const Q = (bTurned ? m_result.principal : m_result.covariance).data();
  double adAQA[kMaxGroup * kMaxGroup] = {};
  for (int k = 0; k < u; ++k) {
    for (int i = 0; i < m; ++i) {
      double dAQ = 0.0;
      for (int j = 0; j < u; ++j) dAQ += A[i * u + j] * Q[k * u + j];
      for (int l = 0; l <= i; ++l) adAQA[i * m + l] += dAQ * A[l * u + k];
    }
  }
  for (int i = 0; i < m; ++i) {
    for (int l = i + 1; l < m; ++l) adAQA[i * m + l] = adAQA[l * m + i];
  }
  if (pdAQA != nullptr) std::copy_n(adAQA, m * m, pdAQA);
  TestWith(equation, adAQA, bUsed, pTest);
}

void GroupTester::TestWith(const GroupEquation& equation, const double* pdAQA, bool bUsed,
                           ZuPointTest* pTest) const {
  const int m = equation.m;
  const unsigned uId = pTest->uId;
  *pTest = ZuPointTest();
  pTest->uId = uId;
  pTest->iDimension = m;
  pTest->bUsed = bUsed;
  std::copy_n(equation.w, m, pTest->adResidual);
  if (bUsed) {
    TestUsed(equation, pdAQA, pTest);
  } else {
    TestOther(equation, pdAQA, pTest);
  }
}

void GroupTester::TestUsed(const GroupEquation& equation, const double* pdAQA,
                           ZuPointTest* pTest) const {
  const int m = equation.m;
  double Q[kMaxGroup * kMaxGroup], P[kMaxGroup * kMaxGroup], R[kMaxGroup * kMaxGroup];
  for (int i = 0; i < m * m; ++i) Q[i] = equation.M[i] - pdAQA[i];  // Qee
  if (!InvertSpd(m, equation.M, P)) return;
  Multiply(m, Q, P, R);

  pTest->bControlled = true;
  for (int i = 0; i < m; ++i) {
    double dPe = 0.0, dSeen = 0.0;  // M^-1 e and M^-1 Qee M^-1: what an error by axis leaves
    for (int k = 0; k < m; ++k) {
      dPe += P[i * m + k] * equation.w[k];
      dSeen += P[i * m + k] * R[k * m + i];
    }
    const double dWeight = P[i * m + i];
    const double r = R[i * m + i];
    if (!(dSeen > kSeen * dWeight)) dSeen = 0.0;
    const double dRoot = std::sqrt(dSeen);
    pTest->adRedundancy[i] = std::fabs(r) > kSeen ? r : 0.0;
    pTest->adResidualSd[i] = m_dSigma0 * std::sqrt(std::max(Q[i * m + i], 0.0));
    pTest->adW[i] = Quotient(dPe, m_dSigma0 * dRoot);
    pTest->adNabla[i] = dSeen > 0.0 ? m_dLeastError * m_dSigma0 / dRoot : kNever;
    pTest->adEffect[i] =
        dSeen > 0.0 ? m_dLeastError * std::sqrt(std::max(dWeight - dSeen, 0.0)) / dRoot : kNever;
    if (dSeen < m_dLeastRedundancy * dWeight) pTest->bControlled = false;
  }
  if (!TestWhole(equation, Q, pTest)) TestByDirections(equation, Q, pTest);
}

// All directions at once where each keeps enough: the shares, each at most 1, multiply to the
// quotient of the determinants.
bool GroupTester::TestWhole(const GroupEquation& equation, const double* pdQ,
                            ZuPointTest* pTest) const {
  const int m = equation.m;
  double inverse[kMaxGroup * kMaxGroup], weighted[kMaxGroup];
  if (!(Determinant(m, pdQ) > 2.0 * kTestable * Determinant(m, equation.M))) return false;
  if (!InvertSpd(m, pdQ, inverse)) return false;
  double dSum = 0.0;
  for (int i = 0; i < m; ++i) {
    weighted[i] = 0.0;
    for (int k = 0; k < m; ++k) weighted[i] += inverse[i * m + k] * equation.w[k];
    dSum += equation.w[i] * weighted[i];
  }
  for (int i = 0; i < m; ++i) {
    for (int k = 0; k < m; ++k) pTest->adLeaveOneOut[i] += equation.M[i * m + k] * weighted[k];
  }
  pTest->dTest = Quotient(dSum, m_dSigma0 * m_dSigma0 * m);
  pTest->dLimit = Limit(m);
  return true;
}

// In the directions in which the group has redundancy; M = L L', directions of L^-1 Qee L^-T.
void GroupTester::TestByDirections(const GroupEquation& equation, const double* pdQ,
                                   ZuPointTest* pTest) const {
  const int m = equation.m;
  double L[kMaxGroup * kMaxGroup] = {}, inverse[kMaxGroup * kMaxGroup] = {};
  for (int i = 0; i < m; ++i) {
    for (int j = 0; j <= i; ++j) {
      double d = equation.M[i * m + j];
      for (int k = 0; k < j; ++k) d -= L[i * m + k] * L[j * m + k];
      L[i * m + j] = i == j ? std::sqrt(d) : d / L[j * m + j];
    }
    for (int j = 0; j <= i; ++j) {
      double d = i == j ? 1.0 : 0.0;
      for (int k = j; k < i; ++k) d -= L[i * m + k] * inverse[k * m + j];
      inverse[i * m + j] = d / L[i * m + i];
    }
  }
  double unit[kMaxGroup] = {}, half[kMaxGroup * kMaxGroup] = {}, share[kMaxGroup * kMaxGroup] = {};
  Multiply(m, inverse, pdQ, half);
  for (int i = 0; i < m; ++i) {
    for (int k = 0; k <= i; ++k) unit[i] += inverse[i * m + k] * equation.w[k];
    for (int j = 0; j < m; ++j) {
      for (int k = 0; k < m; ++k) share[i * m + j] += half[i * m + k] * inverse[j * m + k];
    }
  }
  double values[kMaxGroup] = {}, vectors[kMaxGroup * kMaxGroup] = {}, predicted[kMaxGroup] = {};
  SymmetricEigen(m, share, values, vectors);
  int iRank = 0;
  double dSum = 0.0;
  for (int k = 0; k < m; ++k) {
    if (!(values[k] > kTestable)) continue;
    double d = 0.0;
    for (int i = 0; i < m; ++i) d += vectors[i * m + k] * unit[i];
    dSum += d * d / values[k];
    for (int i = 0; i < m; ++i) predicted[i] += vectors[i * m + k] * d / values[k];
    ++iRank;
  }
  pTest->dTest = iRank > 0 ? Quotient(dSum, m_dSigma0 * m_dSigma0 * iRank) : 0.0;
  pTest->dLimit = Limit(iRank);
  for (int i = 0; i < m; ++i) {
    double d = 0.0;
    for (int k = 0; k <= i; ++k) d += L[i * m + k] * predicted[k];
    pTest->adLeaveOneOut[i] = iRank == m ? d : kNone;
  }
}

void GroupTester::TestOther(const GroupEquation& equation, const double* pdAQA,
                            ZuPointTest* pTest) const {
  const int m = equation.m;
  double Q[kMaxGroup * kMaxGroup] = {}, P[kMaxGroup * kMaxGroup] = {}, dSum = 0.0;
  for (int i = 0; i < m * m; ++i) Q[i] = equation.M[i] + pdAQA[i];
  if (!InvertSpd(m, Q, P)) std::fill_n(P, m * m, kNone);
  for (int i = 0; i < m; ++i) {
    double dPe = 0.0;
    for (int k = 0; k < m; ++k) dPe += P[i * m + k] * equation.w[k];
    const double dRoot = std::sqrt(P[i * m + i]);
    pTest->adResidualSd[i] = m_dSigma0 * std::sqrt(Q[i * m + i]);
    pTest->adW[i] = Quotient(dPe, m_dSigma0 * dRoot);
    pTest->adNabla[i] = m_dLeastError * m_dSigma0 / dRoot;
    pTest->adLeaveOneOut[i] = equation.w[i];
    dSum += equation.w[i] * dPe;
  }
  pTest->dTest = Quotient(dSum, m_dSigma0 * m_dSigma0 * m);
  pTest->dLimit = NewLimit(m);
}

std::vector<ZuPointTest> TestGroups(const GroupModel& model, const GroupTester& tester) {
  std::vector<ZuPointTest> tests(static_cast<std::size_t>(model.Groups()));
  GroupEquation equation = EquationFor(model.Parameters());
  for (int i = 0; i < model.Groups(); ++i) {
    model.Linearize(i, &equation);
    tester.Test(equation, model.IsUsed(i), &tests[static_cast<std::size_t>(i)]);
  }
  return tests;
}

}  // namespace zu::internal
