// Equations of the common points and the sums of the normal equations. The sums are formed with the
// rotation as a vector in the target's frame (exp[w] R), where the derivatives hold no rotation:
//
//   A = [-I  -z  [z]x],   z = s R x at the adjusted point,
//
// and turned into the source's frame once a step.
#include <algorithm>
#include <cmath>
#include <cstddef>

#include "zu/adjust/internal/similarity_model.h"

namespace zu::internal {
namespace {

// Sums of N and h in the target's frame, of which N gets its upper triangle.
struct Sums {
  double N[7][7] = {};
  double h[7] = {};
  double dSquares = 0.0;
};

// Row a of P times [z]x is a row crossed with z.
void Add(const SimilarityTerms& t, Sums* pSums) {
  auto& N = pSums->N;
  double q[3], Pz[3], PZ[3][3], zq[3], zPZ[3];
  for (int i = 0; i < 3; ++i) {
    const double* const pRow = t.P + 3 * i;
    q[i] = Dot3(pRow, t.e);
    Pz[i] = Dot3(pRow, t.z);
    Cross3(pRow, t.z, PZ[i]);
    for (int j = i; j < 3; ++j) N[i][j] += pRow[j];
    N[i][3] += Pz[i];
    for (int j = 0; j < 3; ++j) N[i][4 + j] -= PZ[i][j];
    pSums->h[i] -= q[i];
  }
  N[3][3] += Dot3(t.z, Pz);
  Cross3(Pz, t.z, zPZ);
  for (int j = 0; j < 3; ++j) {
    const double column[3] = {PZ[0][j], PZ[1][j], PZ[2][j]};
    double zColumn[3];  // [z]x' times the column
    Cross3(column, t.z, zColumn);
    N[3][4 + j] -= zPZ[j];
    for (int i = 0; i <= j; ++i) N[4 + i][4 + j] += zColumn[i];
  }
  Cross3(t.z, q, zq);
  pSums->h[3] -= Dot3(t.z, q);
  for (int j = 0; j < 3; ++j) pSums->h[4 + j] -= zq[j];
  pSums->dSquares += Dot3(t.e, q);
}

// The same of points whose covariances are multiples of the identity.
struct ScalarSums {
  double p = 0.0, pz[3] = {}, pzz[6] = {}, pe[3] = {}, pze = 0.0, pzxe[3] = {}, dSquares = 0.0;

  void Add(double dWeight, const double* z, const double* e) {
    const double q[3] = {dWeight * e[0], dWeight * e[1], dWeight * e[2]};
    const double w[3] = {dWeight * z[0], dWeight * z[1], dWeight * z[2]};
    p += dWeight;
    for (int k = 0; k < 3; ++k) {
      pz[k] += w[k];
      pe[k] += q[k];
      pzz[k] += w[k] * z[k];
    }
    pzz[3] += w[0] * z[1];
    pzz[4] += w[0] * z[2];
    pzz[5] += w[1] * z[2];
    pze += Dot3(z, q);
    pzxe[0] += z[1] * q[2] - z[2] * q[1];
    pzxe[1] += z[2] * q[0] - z[0] * q[2];
    pzxe[2] += z[0] * q[1] - z[1] * q[0];
    dSquares += Dot3(e, q);
  }

  Sums Expanded() const {
    Sums sums;
    for (int k = 0; k < 3; ++k) {
      sums.N[k][k] = p;
      sums.N[k][3] = pz[k];
      sums.h[k] = -pe[k];
      sums.h[4 + k] = -pzxe[k];
    }
    sums.N[0][5] = pz[2];
    sums.N[0][6] = -pz[1];
    sums.N[1][4] = -pz[2];
    sums.N[1][6] = pz[0];
    sums.N[2][4] = pz[1];
    sums.N[2][5] = -pz[0];
    sums.N[3][3] = pzz[0] + pzz[1] + pzz[2];
    sums.N[4][4] = pzz[1] + pzz[2];
    sums.N[5][5] = pzz[0] + pzz[2];
    sums.N[6][6] = pzz[0] + pzz[1];
    sums.N[4][5] = -pzz[3];
    sums.N[4][6] = -pzz[4];
    sums.N[5][6] = -pzz[5];
    sums.h[3] = -pze;
    sums.dSquares = dSquares;
    return sums;
  }
};

// The columns kept, the rotation turned into the source's frame: B' N B with B = diag(I, 1, R).
void Store(const Sums& sums, const double* R, const std::vector<int>& columns,
           GroupNormals* pNormals) {
  double N[7][7], NB[7][7];
  for (int i = 0; i < 7; ++i) {
    for (int j = 0; j < 7; ++j) N[i][j] = i <= j ? sums.N[i][j] : sums.N[j][i];
  }
  const auto turned = [R](const double* pd, int j) {  // pd' R, column j
    return pd[0] * R[j] + pd[1] * R[3 + j] + pd[2] * R[6 + j];
  };
  for (int i = 0; i < 7; ++i) {
    for (int j = 0; j < 7; ++j) NB[i][j] = j < 4 ? N[i][j] : turned(N[i] + 4, j - 4);
  }
  const std::size_t u = columns.size();
  for (std::size_t b = 0; b < u; ++b) {
    const int j = columns[b];
    const double last[3] = {NB[4][j], NB[5][j], NB[6][j]};
    for (std::size_t a = 0; a <= b; ++a) {
      const int i = columns[a];
      const double d = i < 4 ? NB[i][j] : turned(last, i - 4);
      pNormals->N[a * u + b] = pNormals->N[b * u + a] = d;
    }
    pNormals->h[b] = j < 4 ? sums.h[j] : turned(sums.h + 4, j - 4);
  }
  pNormals->dSquares = sums.dSquares;
}

}  // namespace

bool SimilarityModel::AddNormals(GroupNormals* pNormals) {
  const std::size_t n = m_points.size();
  if (m_bScalar) {
    ScalarSums sums;
    double dM = 0.0, dWeight = 0.0, dShare = 0.0;
    for (std::size_t u = 0; u < n; ++u) {
      if (!m_used[u]) continue;
      const CommonPoint& p = m_points[u];
      double z[3], e[3];
      Misclosure(p, z, e);
      if (!m_bEqual || pNormals->iObservations == 0) {
        const double dSource = m_s * m_s * p.sx[0] * p.sx[0];
        dM = p.sy[0] * p.sy[0] + dSource;
        if (!(dM > 0.0) || !std::isfinite(dM)) return false;
        dWeight = 1.0 / dM;
        dShare = dSource * dWeight;
      }
      for (int k = 0; k < 3; ++k) z[k] += dShare * e[k];
      sums.Add(dWeight, z, e);
      pNormals->iObservations += 3;
    }
    m_dWeight = sums.p;
    for (int k = 0; k < 3; ++k) m_z[k] = sums.pz[k] / sums.p;
    Store(sums.Expanded(), m_R, m_columns, pNormals);
    return true;
  }
  Sums sums;
  SimilarityTerms terms;
  for (std::size_t u = 0; u < n; ++u) {
    if (!m_used[u]) continue;
    if (!FindTerms(m_points[u], &terms)) return false;
    Add(terms, &sums);
    pNormals->iObservations += 3;
  }
  Store(sums, m_R, m_columns, pNormals);
  return true;
}

void SimilarityModel::Misclosure(int i, double* pdE) const {
  double z[3];
  Misclosure(m_points[static_cast<std::size_t>(i)], z, pdE);
}

bool SimilarityModel::FindTerms(const CommonPoint& p, SimilarityTerms* pTerms) const {
  SimilarityTerms& t = *pTerms;
  Misclosure(p, t.z, t.e);
  CovarianceOf(p, t.S, t.T);
  std::copy_n(t.T, 9, t.M);
  std::fill_n(t.C, 9, 0.0);
  t.bExactSource = std::all_of(t.S, t.S + 9, [](double d) { return d == 0.0; });
  if (!t.bExactSource) {
    double RS[9];
    Multiply3(m_R, t.S, RS);
    const double dScale = m_s * m_s;
    for (int i = 0; i < 3; ++i) {
      for (int j = i; j < 3; ++j) {
        t.C[3 * i + j] = t.C[3 * j + i] = dScale * Dot3(RS + 3 * i, m_R + 3 * j);
      }
    }
    for (int k = 0; k < 9; ++k) t.M[k] += t.C[k];
  }
  if (!InvertSpd(3, t.M, t.P)) return false;
  if (t.bExactSource) return true;
  // The derivatives stand at the adjusted point.
  double q[3];
  for (int i = 0; i < 3; ++i) q[i] = Dot3(t.P + 3 * i, t.e);
  for (int i = 0; i < 3; ++i) t.z[i] += Dot3(t.C + 3 * i, q);
  return true;
}

void SimilarityModel::Linearize(int i, GroupEquation* pEquation) const {
  SimilarityTerms t;
  FindTerms(m_points[static_cast<std::size_t>(i)], &t);
  GroupEquation& q = *pEquation;
  q.m = 3;
  std::copy_n(t.e, 3, q.w);
  std::copy_n(t.M, 9, q.M);
  const std::size_t u = m_columns.size();
  for (std::size_t j = 0; j < u; ++j) {
    const int c = m_columns[j];
    double a[3] = {};
    if (c < 3) {
      a[c] = -1.0;
    } else if (c == 3) {
      for (int k = 0; k < 3; ++k) a[k] = -t.z[k];
    } else {
      const double column[3] = {m_R[c - 4], m_R[c - 1], m_R[c + 2]};
      Cross3(t.z, column, a);
    }
    for (std::size_t k = 0; k < 3; ++k) q.A[k * u + j] = a[k];
  }
}

}  // namespace zu::internal
