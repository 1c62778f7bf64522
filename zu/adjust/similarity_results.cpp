// All that is told about the common points of an adjusted similarity, point by point.
#include <algorithm>
#include <cmath>
#include <cstddef>

#include "zu/adjust/internal/similarity_model.h"

// Part of a kernel that is compiled for each width of registers.
#define ZU_IN_KERNEL [[gnu::always_inline]] inline

namespace zu::internal {

// A factor F of the covariance of the parameters for sigma0 = 1, Q = F F', its rotation in the
// target's frame: the squares of A F lose no digits where the parameters hang together. The first
// columns are a factor of the rotation's own covariance.
class CovarianceFactor {
 public:
  CovarianceFactor(const EngineResult& engine, const std::vector<int>& columns, const double* R)
      : m_u(columns.size()) {
    double L[7][7] = {};
    for (std::size_t i = 0; i < m_u; ++i) {
      for (std::size_t j = 0; j <= i; ++j) {
        double d = engine.covariance[(m_u - 1 - i) * m_u + m_u - 1 - j];
        for (std::size_t k = 0; k < j; ++k) d -= L[i][k] * L[j][k];
        // Below 0 is the rounding of a covariance that is singular but for it.
        if (i == j) {
          L[i][i] = std::sqrt(std::max(d, 0.0));
        } else if (L[j][j] > 0.0) {
          L[i][j] = d / L[j][j];
        }
      }
    }
    for (std::size_t k = 0; k < m_u; ++k) {
      double column[7] = {};
      for (std::size_t i = k; i < m_u; ++i) column[columns[m_u - 1 - i]] = L[i][k];
      std::copy_n(column, 4, m_aF[k]);
      for (int i = 0; i < 3; ++i) m_aF[k][4 + i] = Dot3(R + 3 * i, column + 4);
    }
  }

  // A Q A', by A F = -F_t - z F_s + z x F_r.
  void Carry(const double* z, double* pdAQA) const {
    double a[6] = {};
    for (std::size_t k = 0; k < m_u; ++k) {
      const double* const f = m_aF[k];
      const double x = z[1] * f[6] - z[2] * f[5] - z[0] * f[3] - f[0];
      const double y = z[2] * f[4] - z[0] * f[6] - z[1] * f[3] - f[1];
      const double w = z[0] * f[5] - z[1] * f[4] - z[2] * f[3] - f[2];
      a[0] += x * x;
      a[1] += x * y;
      a[2] += x * w;
      a[3] += y * y;
      a[4] += y * w;
      a[5] += w * w;
    }
    const int aiPlace[9] = {0, 1, 2, 1, 3, 4, 2, 4, 5};
    for (int i = 0; i < 9; ++i) pdAQA[i] = a[aiPlace[i]];
  }

  const double* Rotation(std::size_t k) const { return m_aF[k] + 4; }

 private:
  std::size_t m_u;
  double m_aF[7][7];
};

namespace {

// The diagonals of covariances bound what stands beside them.
bool IsFinite(const ZuSimilarityPoint& p) {
  const auto sum = [](const double* pd) { return pd[0] + pd[1] + pd[2]; };
  const double dCarried = p.adCarried[0] + p.adCarried[4] + p.adCarried[8];
  return std::isfinite((dCarried + p.dTest) + (sum(p.adResidual) + sum(p.adResidualSd)) +
                       sum(p.adW));
}

// Of points whose covariances are multiples of the identity. About the weighted mean of z shift,
// scale and rotation do not hang together: A Q A' = q I + f z z' + squares of z x g.
struct ScalarTester {
  ScalarTester(const EngineResult& engine, const GroupTester& tester,
               const std::vector<int>& columns, const double* R, double dWeight)
      : factor(engine, columns, R),
        dShift(1.0 / dWeight),
        dSigma0(tester.Sigma0()),
        dPerSigma(dSigma0 > 0.0 ? 1.0 / dSigma0 : 0.0),
        dLeastError(tester.LeastError()),
        dLeastNabla(dLeastError * dSigma0),
        dLeastRedundancy(tester.LeastRedundancy()),
        dLimit(tester.Limit(3)) {
    const std::size_t u = columns.size();
    for (std::size_t j = 3; j < u; ++j) {
      if (columns[j] == 3) {
        dScale = engine.covariance[j * u + j];
      } else {
        std::copy_n(factor.Rotation(uTurns), 3, g[uTurns]);
        ++uTurns;
      }
    }
  }

  CovarianceFactor factor;
  double dShift, dScale = 0.0;
  double g[3][3] = {};
  std::size_t uTurns = 0;
  double dSigma0, dPerSigma, dLeastError, dLeastNabla, dLeastRedundancy, dLimit;
};

constexpr std::size_t kLanes = 8;  // points that are reckoned side by side

using Lanes = double[kLanes];

// What the results of some points follow from. e, m, c: misclosure, its variance and the part of
// the source; w = 1 / m; a: A Q A' row by row from the diagonal on; Qee = m I - a = L d L';
// x = Qee^-1 e; root, per and share: square roots of Qee by axis, their inverse, and of a over Qee.
struct Block {
  Lanes e[3], m, w, c, z[3], a[6], d[3], x[3], root[3], per[3], share[3];

  // Every direction keeps enough of its covariance.
  bool IsWhole(std::size_t i) const {
    const double dLeast = 2.0 * kTestable * m[i] * m[i] * m[i];
    return d[0][i] > 0.0 && d[1][i] > 0.0 && d[2][i] > 0.0 && d[0][i] * d[1][i] * d[2][i] > dLeast;
  }
};

constexpr int kDiagonal[3] = {0, 3, 5};  // of a symmetric matrix row by row

ZU_IN_KERNEL void FindCovariances(const ScalarTester& t, Block* pBlock) {
  Block& b = *pBlock;
  for (std::size_t i = 0; i < kLanes; ++i) {
    const double x = b.z[0][i], y = b.z[1][i], z = b.z[2][i];
    b.a[0][i] = t.dShift + t.dScale * x * x;
    b.a[1][i] = t.dScale * x * y;
    b.a[2][i] = t.dScale * x * z;
    b.a[3][i] = t.dShift + t.dScale * y * y;
    b.a[4][i] = t.dScale * y * z;
    b.a[5][i] = t.dShift + t.dScale * z * z;
  }
  for (std::size_t k = 0; k < t.uTurns; ++k) {
    const double* const g = t.g[k];
    for (std::size_t i = 0; i < kLanes; ++i) {
      const double x = b.z[1][i] * g[2] - b.z[2][i] * g[1];
      const double y = b.z[2][i] * g[0] - b.z[0][i] * g[2];
      const double z = b.z[0][i] * g[1] - b.z[1][i] * g[0];
      b.a[0][i] += x * x;
      b.a[1][i] += x * y;
      b.a[2][i] += x * z;
      b.a[3][i] += y * y;
      b.a[4][i] += y * z;
      b.a[5][i] += z * z;
    }
  }
}

ZU_IN_KERNEL void Solve(Block* pBlock) {
  Block& b = *pBlock;
  for (std::size_t i = 0; i < kLanes; ++i) {
    const double m = b.m[i], e0 = b.e[0][i];
    const double d0 = m - b.a[0][i], f0 = 1.0 / d0, l1 = -b.a[1][i] * f0, l2 = -b.a[2][i] * f0;
    const double d1 = m - b.a[3][i] + b.a[1][i] * l1, f1 = 1.0 / d1;
    const double c = b.a[2][i] * l1 - b.a[4][i], l3 = c * f1;
    const double d2 = m - b.a[5][i] + b.a[2][i] * l2 - c * l3;
    const double y1 = b.e[1][i] - l1 * e0, y2 = b.e[2][i] - l2 * e0 - l3 * y1;
    const double x2 = y2 / d2, x1 = y1 * f1 - l3 * x2;
    b.d[0][i] = d0;
    b.d[1][i] = d1;
    b.d[2][i] = d2;
    b.x[0][i] = e0 * f0 - l1 * x1 - l2 * x2;
    b.x[1][i] = x1;
    b.x[2][i] = x2;
  }
  for (int k = 0; k < 3; ++k) {
    const Lanes& a = b.a[kDiagonal[k]];
    for (std::size_t i = 0; i < kLanes; ++i) {
      b.root[k][i] = std::sqrt(b.m[i] - a[i]);
      b.per[k][i] = 1.0 / b.root[k][i];
      b.share[k][i] = std::sqrt(a[i]) * b.per[k][i];
    }
  }
}

// One of the points.
ZU_IN_KERNEL void Store(const ScalarTester& t, const Block& b, std::size_t i,
                        const SimilarityModel& model, const CommonPoint& point,
                        ZuSimilarityPoint* p) {
  const double m = b.m[i], dWeight = b.w[i];
  p->uId = point.uId;
  p->iDimension = 3;
  p->bControlled = true;
  for (int k = 0; k < 3; ++k) {
    p->adResidual[k] = b.e[k][i];
    p->adRedundancy[k] = std::min((m - b.a[kDiagonal[k]][i]) * dWeight, 1.0);
    p->adResidualSd[k] = t.dSigma0 * b.root[k][i];
    p->adW[k] = b.e[k][i] * b.per[k][i] * t.dPerSigma;
    p->adNabla[k] = t.dLeastNabla * m * b.per[k][i];
    p->adEffect[k] = t.dLeastError * b.share[k][i];
    p->adLeaveOneOut[k] = m * b.x[k][i];
    if (p->adRedundancy[k] < t.dLeastRedundancy) p->bControlled = false;
  }
  const double dSum = b.e[0][i] * b.x[0][i] + b.e[1][i] * b.x[1][i] + b.e[2][i] * b.x[2][i];
  p->dTest = dSum * t.dPerSigma * t.dPerSigma * (1.0 / 3.0);
  p->dLimit = t.dLimit;

  const double dFactor = t.dSigma0 * t.dSigma0, dPart = dFactor * (1.0 - 2.0 * b.c[i] * dWeight);
  const double dRest = dFactor * b.c[i];
  double* const pdCarried = p->adCarried;
  pdCarried[0] = dPart * b.a[0][i] + dRest;
  pdCarried[4] = dPart * b.a[3][i] + dRest;
  pdCarried[8] = dPart * b.a[5][i] + dRest;
  pdCarried[1] = pdCarried[3] = dPart * b.a[1][i];
  pdCarried[2] = pdCarried[6] = dPart * b.a[2][i];
  pdCarried[5] = pdCarried[7] = dPart * b.a[4][i];
  const double e[3] = {b.e[0][i], b.e[1][i], b.e[2][i]};
  double back[3];
  model.TurnBack(e, back);
  const double dBack = model.Scale() * point.sx[0] * point.sx[0] * dWeight;
  const double dForth = point.sy[0] * point.sy[0] * dWeight;
  for (int k = 0; k < 3; ++k) {
    p->adSourceResidual[k] = dBack * back[k];
    p->adTargetResidual[k] = -dForth * e[k];
  }
}

}  // namespace

ZU_IN_KERNEL bool SimilarityModel::TestBlocks(const EngineResult& engine, const GroupTester& tester,
                                              std::vector<ZuSimilarityPoint>* pPoints) const {
  const ScalarTester t(engine, tester, m_columns, m_R, m_dWeight);
  const std::size_t n = m_points.size();
  bool bFinite = true;
  Block block;
  for (std::size_t uFirst = 0; uFirst < n; uFirst += kLanes) {
    const std::size_t uCount = std::min(kLanes, n - uFirst);
    for (std::size_t i = 0; i < kLanes; ++i) {
      const CommonPoint& p = m_points[uFirst + std::min(i, uCount - 1)];
      double z[3], e[3];
      Misclosure(p, z, e);
      block.c[i] = m_s * m_s * p.sx[0] * p.sx[0];
      block.m[i] = p.sy[0] * p.sy[0] + block.c[i];
      block.w[i] = 1.0 / block.m[i];
      for (int k = 0; k < 3; ++k) {
        block.e[k][i] = e[k];
        block.z[k][i] = z[k] - m_z[k] + block.c[i] * block.w[i] * e[k];
      }
    }
    FindCovariances(t, &block);
    Solve(&block);
    for (std::size_t i = 0; i < uCount; ++i) {
      ZuSimilarityPoint& point = pPoints->emplace_back();
      if (block.IsWhole(i) && m_used[uFirst + i]) {
        Store(t, block, i, *this, m_points[uFirst + i], &point);
      } else {
        TestPoint(t.factor, tester, uFirst + i, &point);
      }
      bFinite = bFinite && IsFinite(point);
    }
  }
  return bFinite;
}

#if defined(__x86_64__)
// Four numbers at a time in place of two; without fused operations every bit stays the same.
[[gnu::target("avx2")]] bool SimilarityModel::TestWide(
    const EngineResult& engine, const GroupTester& tester,
    std::vector<ZuSimilarityPoint>* pPoints) const {
  return TestBlocks(engine, tester, pPoints);
}
#endif

bool SimilarityModel::TestScalar(const EngineResult& engine, const GroupTester& tester,
                                 std::vector<ZuSimilarityPoint>* pPoints) const {
#if defined(__x86_64__)
  if (__builtin_cpu_supports("avx2")) return TestWide(engine, tester, pPoints);
#endif
  return TestBlocks(engine, tester, pPoints);
}

bool SimilarityModel::Test(const EngineResult& engine, const GroupTester& tester,
                           std::vector<ZuSimilarityPoint>* pPoints) const {
  pPoints->clear();
  pPoints->reserve(m_points.size());
  if (m_bScalar) return TestScalar(engine, tester, pPoints);
  const CovarianceFactor factor(engine, m_columns, m_R);
  bool bFinite = true;
  for (std::size_t u = 0; u < m_points.size(); ++u) {
    ZuSimilarityPoint& point = pPoints->emplace_back();
    TestPoint(factor, tester, u, &point);
    bFinite = bFinite && IsFinite(point);
  }
  return bFinite;
}

void SimilarityModel::TestPoint(const CovarianceFactor& factor, const GroupTester& tester,
                                std::size_t u, ZuSimilarityPoint* pPoint) const {
  SimilarityTerms terms;
  FindTerms(m_points[u], &terms);
  double adAQA[9];
  factor.Carry(terms.z, adAQA);
  GroupEquation equation;
  equation.m = 3;
  std::copy_n(terms.e, 3, equation.w);
  std::copy_n(terms.M, 9, equation.M);
  pPoint->uId = m_points[u].uId;
  tester.TestWith(equation, adAQA, m_used[u] != 0, pPoint);
  Complete(terms, adAQA, tester.Sigma0(), pPoint);
}

void SimilarityModel::Complete(const SimilarityTerms& t, const double* pdAQA, double dSigma0,
                               ZuSimilarityPoint* pPoint) const {
  double carried[9];
  for (int k = 0; k < 9; ++k) carried[k] = pdAQA[k] + t.C[k];
  if (pPoint->bUsed) {
    double q[3], PC[9], share[9];
    for (int i = 0; i < 3; ++i) q[i] = Dot3(t.P + 3 * i, t.e);
    for (int i = 0; i < 3; ++i) pPoint->adTargetResidual[i] = -Dot3(t.T + 3 * i, q);
    if (!t.bExactSource) {
      Multiply3(t.P, t.C, PC);
      Multiply3(pdAQA, PC, share);
      for (int i = 0; i < 3; ++i) {
        for (int j = 0; j < 3; ++j) carried[3 * i + j] -= share[3 * i + j] + share[3 * j + i];
      }
      double back[3];
      TurnBack(q, back);
      for (int i = 0; i < 3; ++i) pPoint->adSourceResidual[i] = m_s * Dot3(t.S + 3 * i, back);
    }
  }
  const double d = 0.5 * dSigma0 * dSigma0;
  for (int i = 0; i < 3; ++i) {
    for (int j = 0; j < 3; ++j) {
      pPoint->adCarried[3 * i + j] = d * (carried[3 * i + j] + carried[3 * j + i]);
    }
  }
}

}  // namespace zu::internal

#undef ZU_IN_KERNEL
