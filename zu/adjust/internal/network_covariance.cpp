#include "zu/adjust/internal/network_covariance.h"

#include <cmath>

using zu::internal::NetworkFreedom;
using zu::internal::NetworkGroup;
using zu::internal::NetworkModel;
using zu::internal::NetworkNormals;
using zu::internal::Vec3;

namespace {

size_t Index(int i) { return static_cast<size_t>(i); }

}  // namespace

bool ZuNetworkCovariance::Prepare(const NetworkFreedom& freedom, bool bStatistics) {
  if (bStatistics) {
    m_pNormals->Invert();
    SetPointCofactors();
  }
  m_iFree = freedom.k;
  if (m_iFree == 0) return true;
  const size_t uFree = Index(m_iFree), uPoints = m_state.points.size();
  const auto combine = [&](const double* pMotion, double* pRow) {
    for (size_t k = 0; k < uFree; ++k) {
      pRow[k] = 0.0;
      for (size_t g = 0; g < kMost; ++g) pRow[k] += pMotion[g] * freedom.basis[g * uFree + k];
    }
  };
  // E, the free motions, and B, those of the datum points alone.
  const auto motion = m_pModel->ReducedMotion(m_state);
  m_reduced.assign(motion.size(), {});
  m_points.assign(3 * uPoints, {});
  for (size_t i = 0; i < motion.size(); ++i) combine(motion[i].data(), m_reduced[i].f);
  std::vector<std::vector<double>> reduced(uFree, std::vector<double>(motion.size(), 0.0));
  std::vector<std::vector<Vec3>> points(uFree, std::vector<Vec3>(uPoints, Vec3{}));
  std::vector<double> normal(uFree * uFree, 0.0), inverse(uFree * uFree);
  for (size_t i = 0; i < uPoints; ++i) {
    const int iPoint = static_cast<int>(i);
    if (!m_pModel->IsPointUsed(iPoint)) continue;
    double rows[3][kMost], e[kMost];
    m_pModel->PointMotion(m_state, iPoint, rows);
    int iRow = m_pModel->PointOffset(iPoint);
    for (size_t axis = 0; axis < 3; ++axis) {
      if (!m_pModel->IsFree(iPoint, static_cast<int>(axis))) continue;
      combine(rows[axis], e);
      for (size_t k = 0; k < uFree; ++k) m_points[3 * i + axis].f[k] = e[k];
      if (m_network.points[i].bDatum) {
        for (size_t k = 0; k < uFree; ++k) {
          if (iRow >= 0) {
            reduced[k][Index(iRow)] = e[k];
          } else {
            points[k][i][axis] = e[k];
          }
          for (size_t l = 0; l < uFree; ++l) normal[uFree * k + l] += e[k] * e[l];
        }
      }
      if (iRow >= 0) ++iRow;
    }
  }
  if (!zu::internal::InvertSquare(m_iFree, normal.data(), inverse.data())) return false;
  const auto turn = [&](DatumRow& row) {  // f = e M
    double f[kMost] = {};
    for (size_t k = 0; k < uFree; ++k) {
      for (size_t l = 0; l < uFree; ++l) f[k] += row.f[l] * inverse[uFree * l + k];
    }
    for (size_t k = 0; k < uFree; ++k) row.f[k] = f[k];
  };
  for (DatumRow& row : m_reduced) turn(row);
  for (DatumRow& row : m_points) turn(row);
  m_k.assign(uFree * uFree, 0.0);
  for (size_t k = 0; k < uFree; ++k) {
    std::vector<double> h = reduced[k];
    std::vector<Vec3> p = points[k];
    m_pNormals->SolveFor(&h, &p);
    for (size_t i = 0; i < h.size(); ++i) m_reduced[i].h[k] = h[i];
    for (size_t i = 0; i < uPoints; ++i) {
      for (size_t axis = 0; axis < 3; ++axis) m_points[3 * i + axis].h[k] = p[i][axis];
    }
    for (size_t l = 0; l < uFree; ++l) {
      for (size_t i = 0; i < h.size(); ++i) m_k[uFree * l + k] += reduced[l][i] * h[i];
      for (size_t i = 0; i < uPoints; ++i) {
        for (size_t axis = 0; axis < 3; ++axis) {
          m_k[uFree * l + k] += points[l][i][axis] * p[i][axis];
        }
      }
    }
  }
  return true;
}

const ZuNetworkCovariance::DatumRow* ZuNetworkCovariance::Datum(Row row) const {
  return row.iPoint < 0 ? &m_reduced[Index(row.iRow)] : &m_points[Index(3 * row.iPoint + row.iRow)];
}

double ZuNetworkCovariance::TiedRow(int iPoint, int iReduced, int iAxis) const {
  double dSum = 0.0;
  for (const NetworkNormals::Tie& tie : m_pNormals->Ties(iPoint)) {
    for (int r = 0; r < tie.n; ++r) {
      dSum += m_pNormals->Inverse(tie.iOffset + r, iReduced) * tie.t[r][iAxis];
    }
  }
  return dSum;
}

double ZuNetworkCovariance::Raw(Row a, Row b) const {
  if (a.iPoint < 0 && b.iPoint < 0) return m_pNormals->Inverse(a.iRow, b.iRow);
  if (a.iPoint < 0) return -TiedRow(b.iPoint, a.iRow, b.iRow);
  if (b.iPoint < 0) return -TiedRow(a.iPoint, b.iRow, a.iRow);
  double dSum =
      a.iPoint == b.iPoint ? m_pNormals->PointInverse(a.iPoint)[3 * a.iRow + b.iRow] : 0.0;
  for (const NetworkNormals::Tie& tie : m_pNormals->Ties(a.iPoint)) {
    for (int r = 0; r < tie.n; ++r) {
      if (tie.t[r][a.iRow] == 0.0) continue;
      dSum += tie.t[r][a.iRow] * TiedRow(b.iPoint, tie.iOffset + r, b.iRow);
    }
  }
  return dSum;
}

// Carries a cofactor over to the datum (W. Baarda, "S-transformations and criterion matrices",
// 1973).
double ZuNetworkCovariance::ToDatum(Row a, Row b, double q) const {
  if (m_iFree == 0) return q;
  const DatumRow &da = *Datum(a), &db = *Datum(b);
  for (int k = 0; k < m_iFree; ++k) {
    q -= da.f[k] * db.h[k] + da.h[k] * db.f[k];
    for (int l = 0; l < m_iFree; ++l) q += da.f[k] * m_k[Index(m_iFree * k + l)] * db.f[l];
  }
  return q;
}

double ZuNetworkCovariance::Cofactor(Row a, Row b) const { return ToDatum(a, b, Raw(a, b)); }

bool ZuNetworkCovariance::Find(const ZuNetworkUnknown& unknown, Row* pRow, bool* pbMissing) const {
  const int i = unknown.iIndex;
  *pbMissing = true;
  if (i < 0 || unknown.iAxis < 0) return false;
  switch (unknown.eKind) {
    case ZuNetworkUnknown::Camera: {
      if (Index(i) >= m_network.cameras.size()) return false;
      *pbMissing = false;
      const std::vector<int>& parameters = m_pModel->CameraParameters(i);
      for (size_t k = 0; k < parameters.size(); ++k) {
        if (parameters[k] != unknown.iAxis) continue;
        *pRow = {-1, m_pModel->CameraOffset(i) + static_cast<int>(k)};
        return true;
      }
      return false;
    }
    case ZuNetworkUnknown::Photo:
      if (Index(i) >= m_network.photos.size() || m_pModel->PhotoOffset(i) < 0 ||
          unknown.iAxis > 5) {
        return false;
      }
      *pbMissing = false;
      *pRow = {-1, m_pModel->PhotoOffset(i) + unknown.iAxis};
      return true;
    case ZuNetworkUnknown::Point: {
      if (Index(i) >= m_network.points.size() || !m_pModel->IsPointUsed(i) || unknown.iAxis > 2) {
        return false;
      }
      *pbMissing = false;
      if (!m_pModel->IsFree(i, unknown.iAxis)) return false;
      if (m_pModel->IsEliminated(i)) {
        *pRow = {i, unknown.iAxis};
        return true;
      }
      int iRow = m_pModel->PointOffset(i);
      for (int k = 0; k < unknown.iAxis; ++k) iRow += m_pModel->IsFree(i, k);
      *pRow = {-1, iRow};
      return true;
    }
  }
  return false;
}

// V^-1 + T' S^-1 T of every eliminated point.
void ZuNetworkCovariance::SetPointCofactors() {
  m_raw.assign(9 * m_state.points.size(), 0.0);
  for (int iPoint = 0; iPoint < static_cast<int>(m_state.points.size()); ++iPoint) {
    if (!m_pModel->IsEliminated(iPoint)) continue;
    const std::vector<NetworkNormals::Tie>& ties = m_pNormals->Ties(iPoint);
    double* q = &m_raw[Index(9 * iPoint)];
    for (const NetworkNormals::Tie& ta : ties) {
      for (int r = 0; r < ta.n; ++r) {
        double s[3] = {};
        const double* pColumn = m_pNormals->InverseColumn(ta.iOffset + r);
        for (const NetworkNormals::Tie& tb : ties) {
          for (int c = 0; c < tb.n; ++c) {
            const double d = pColumn[tb.iOffset + c];
            for (int k = 0; k < 3; ++k) s[k] += d * tb.t[c][k];
          }
        }
        for (int a = 0; a < 3; ++a) {
          for (int b = 0; b < 3; ++b) q[3 * a + b] += ta.t[r][a] * s[b];
        }
      }
    }
    const double* v = m_pNormals->PointInverse(iPoint);
    for (int k = 0; k < 9; ++k) q[k] += v[k];
  }
}

void ZuNetworkCovariance::PointCofactor(int iPoint, double* pQ) const {
  const double* q = &m_raw[Index(9 * iPoint)];
  for (int a = 0; a < 3; ++a) {
    for (int b = 0; b < 3; ++b) {
      pQ[3 * a + b] = ToDatum({iPoint, a}, {iPoint, b}, 0.5 * (q[3 * a + b] + q[3 * b + a]));
    }
  }
}

void ZuNetworkCovariance::OfGroup(const NetworkGroup& g, double* pH) const {
  // Reduced rows of the group, then the three of its point.
  double j[3][3 * NetworkGroup::kWidest];
  int rows[3 * NetworkGroup::kWidest], n = 0;
  for (int p = 0; p < g.iParts; ++p) {
    for (int c = 0; c < g.parts[p].n; ++c, ++n) {
      rows[n] = g.parts[p].iOffset + c;
      for (int i = 0; i < g.m; ++i) j[i][n] = g.parts[p].j[i][c];
    }
  }
  double tied[3 * NetworkGroup::kWidest][3] = {}, point[9] = {};
  if (g.iPoint >= 0) {
    for (int r = 0; r < n; ++r) {
      const double* pColumn = m_pNormals->InverseColumn(rows[r]);
      for (const NetworkNormals::Tie& tie : m_pNormals->Ties(g.iPoint)) {
        for (int c = 0; c < tie.n; ++c) {
          const double d = pColumn[tie.iOffset + c];
          for (int k = 0; k < 3; ++k) tied[r][k] += d * tie.t[c][k];
        }
      }
    }
  }
  const double* v = g.iPoint >= 0 ? &m_raw[Index(9 * g.iPoint)] : point;
  for (int a = 0; a < g.m; ++a) {
    for (int b = 0; b < g.m; ++b) {
      double d = 0.0;
      for (int r = 0; r < n; ++r) {
        double s = 0.0;
        for (int c = 0; c < n; ++c) s += m_pNormals->Inverse(rows[c], rows[r]) * j[b][c];
        d += j[a][r] * s;
        if (g.iPoint < 0) continue;
        for (int k = 0; k < 3; ++k) {
          d -= tied[r][k] * (j[a][r] * g.p[b][k] + j[b][r] * g.p[a][k]);
        }
      }
      if (g.iPoint >= 0) {
        for (int k = 0; k < 3; ++k) {
          for (int l = 0; l < 3; ++l) d += g.p[a][k] * v[3 * k + l] * g.p[b][l];
        }
      }
      pH[g.m * a + b] = d;
    }
  }
}
