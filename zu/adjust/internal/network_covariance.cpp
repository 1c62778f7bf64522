#include "zu/adjust/internal/network_covariance.h"

#include <algorithm>
#include <cmath>

#include "zu/adjust/internal/dense_cholesky.h"

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

bool ZuNetworkCovariance::TiedRows(int iPoint, int iRow, int iRows, double (*pU)[3]) const {
  double z[NetworkGroup::kWidest * NetworkGroup::kWidest];
  for (int r = 0; r < iRows; ++r) pU[r][0] = pU[r][1] = pU[r][2] = 0.0;
  for (const NetworkNormals::Tie& tie : m_pNormals->Ties(iPoint)) {
    if (!m_pNormals->Inverse(iRow, iRows, tie.iOffset, tie.n, z)) return false;
    for (int r = 0; r < iRows; ++r) {
      for (int c = 0; c < tie.n; ++c) {
        for (int k = 0; k < 3; ++k) pU[r][k] += z[r * tie.n + c] * tie.t[k][c];
      }
    }
  }
  return true;
}

bool ZuNetworkCovariance::Raw(Row a, Row b, double* pQ) const {
  if (a.iPoint < 0 && b.iPoint < 0) return m_pNormals->Inverse(a.iRow, 1, b.iRow, 1, pQ);
  if (a.iPoint < 0) return Raw(b, a, pQ);
  double u[NetworkGroup::kWidest][3];
  if (b.iPoint < 0) {
    if (!TiedRows(a.iPoint, b.iRow, 1, u)) return false;
    *pQ = -u[0][a.iRow];
    return true;
  }
  *pQ = a.iPoint == b.iPoint ? m_pNormals->PointInverse(a.iPoint)[3 * a.iRow + b.iRow] : 0.0;
  for (const NetworkNormals::Tie& tie : m_pNormals->Ties(a.iPoint)) {
    if (!TiedRows(b.iPoint, tie.iOffset, tie.n, u)) return false;
    for (int r = 0; r < tie.n; ++r) *pQ += tie.t[a.iRow][r] * u[r][b.iRow];
  }
  return true;
}

ZuNetworkCovariance::Column ZuNetworkCovariance::SolveColumn(Row a) const {
  Column column;
  column.reduced.assign(Index(m_pModel->Reduced()), 0.0);
  column.points.assign(m_state.points.size(), Vec3{});
  (a.iPoint < 0 ? column.reduced[Index(a.iRow)] : column.points[Index(a.iPoint)][Index(a.iRow)]) =
      1.0;
  m_pNormals->SolveFor(&column.reduced, &column.points);
  return column;
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

double ZuNetworkCovariance::Cofactor(Row a, Row b, std::optional<Column>* pColumn) const {
  double q;
  if (!Raw(a, b, &q)) {
    if (!pColumn->has_value()) *pColumn = SolveColumn(a);
    q = b.iPoint < 0 ? (*pColumn)->reduced[Index(b.iRow)]
                     : (*pColumn)->points[Index(b.iPoint)][Index(b.iRow)];
  }
  return ToDatum(a, b, q);
}

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

void ZuNetworkCovariance::SetTied(int iPoint, Tied* pTied) const {
  const std::vector<NetworkNormals::Tie>& ties = m_pNormals->Ties(iPoint);
  double z[NetworkGroup::kWidest * NetworkGroup::kWidest];
  pTied->iPoint = iPoint;
  pTied->blocks.assign(ties.size(), {});
  for (size_t a = 0; a < ties.size(); ++a) {
    for (size_t b = 0; b <= a; ++b) {
      const NetworkNormals::Tie &ta = ties[a], &tb = ties[b];
      m_pNormals->Inverse(ta.iOffset, ta.n, tb.iOffset, tb.n, z);
      Tied::Block &ua = pTied->blocks[a], &ub = pTied->blocks[b];
      for (int r = 0; r < ta.n; ++r) {
        for (int c = 0; c < tb.n; ++c) {
          const double d = z[r * tb.n + c];
          for (int k = 0; k < 3; ++k) ua.u[r][k] += d * tb.t[k][c];
          for (int k = 0; k < 3 && a != b; ++k) ub.u[c][k] += d * ta.t[k][r];
        }
      }
    }
  }
}

// V^-1 + T' S^-1 T of every eliminated point.
void ZuNetworkCovariance::SetPointCofactors() {
  m_raw.assign(9 * m_state.points.size(), 0.0);
  Tied tied;
  for (int iPoint = 0; iPoint < static_cast<int>(m_state.points.size()); ++iPoint) {
    if (!m_pModel->IsEliminated(iPoint)) continue;
    SetTied(iPoint, &tied);
    double* q = &m_raw[Index(9 * iPoint)];
    const double* v = m_pNormals->PointInverse(iPoint);
    for (int k = 0; k < 9; ++k) q[k] = v[k];
    const std::vector<NetworkNormals::Tie>& ties = m_pNormals->Ties(iPoint);
    for (size_t n = 0; n < ties.size(); ++n) {
      for (int r = 0; r < ties[n].n; ++r) {
        for (int a = 0; a < 3; ++a) {
          for (int b = 0; b < 3; ++b) q[3 * a + b] += ties[n].t[a][r] * tied.blocks[n].u[r][b];
        }
      }
    }
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

// Of a part whose photo has no used ray to the point the block is formed anew.
void ZuNetworkCovariance::TiedPart(const NetworkGroup::Part& part, const Tied& tied,
                                   double (*pU)[3]) const {
  const std::vector<NetworkNormals::Tie>& ties = m_pNormals->Ties(tied.iPoint);
  for (size_t n = 0; n < ties.size(); ++n) {
    if (ties[n].iOffset != part.iOffset) continue;
    std::copy_n(&tied.blocks[n].u[0][0], 3 * part.n, &pU[0][0]);
    return;
  }
  TiedRows(tied.iPoint, part.iOffset, part.n, pU);
}

void ZuNetworkCovariance::OfGroup(const NetworkGroup& g, Tied* pTied, double* pH) const {
  constexpr int kRows = 3 * NetworkGroup::kWidest;
  if (g.iPoint >= 0 && pTied->iPoint != g.iPoint) SetTied(g.iPoint, pTied);
  // A Q: columns of the group's parts, then of its point.
  double aq[3][kRows] = {}, ap[3][3] = {}, z[NetworkGroup::kWidest * NetworkGroup::kWidest];
  const int m = g.m;
  int iFirst = 0;
  for (int p = 0; p < g.iParts; iFirst += g.parts[p++].n) {
    const NetworkGroup::Part& part = g.parts[p];
    for (int q = 0; q < g.iParts; ++q) {
      const NetworkGroup::Part& other = g.parts[q];
      m_pNormals->Inverse(other.iOffset, other.n, part.iOffset, part.n, z);
      for (int i = 0; i < m; ++i) {
        for (int r = 0; r < other.n; ++r) {
          const double d = other.j[i][r];
          for (int c = 0; c < part.n; ++c) aq[i][iFirst + c] += d * z[r * part.n + c];
        }
      }
    }
    if (g.iPoint < 0) continue;
    double u[NetworkGroup::kWidest][3];
    TiedPart(part, *pTied, u);
    for (int i = 0; i < m; ++i) {
      for (int r = 0; r < part.n; ++r) {
        for (int k = 0; k < 3; ++k) {
          aq[i][iFirst + r] -= g.p[i][k] * u[r][k];
          ap[i][k] -= part.j[i][r] * u[r][k];
        }
      }
    }
  }
  for (int i = 0; i < m && g.iPoint >= 0; ++i) {
    const double* v = &m_raw[Index(9 * g.iPoint)];
    for (int k = 0; k < 9; ++k) ap[i][k % 3] += g.p[i][k / 3] * v[k];
  }
  for (int a = 0; a < m; ++a) {
    for (int b = 0; b < m; ++b) {
      double d = 0.0;
      iFirst = 0;
      for (int p = 0; p < g.iParts; iFirst += g.parts[p++].n) {
        for (int c = 0; c < g.parts[p].n; ++c) d += aq[a][iFirst + c] * g.parts[p].j[b][c];
      }
      for (int k = 0; k < 3 && g.iPoint >= 0; ++k) d += ap[a][k] * g.p[b][k];
      pH[m * a + b] = d;
    }
  }
}
