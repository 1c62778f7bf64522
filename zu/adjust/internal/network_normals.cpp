#include "zu/adjust/internal/network_normals.h"

#include <algorithm>
#include <cmath>

#include "zu/adjust/internal/small_matrix.h"

namespace zu::internal {

namespace {

using WideRow = double[NetworkGroup::kWidest];

// Adds rows of n elements, each times its factor; the shapes that come often are known to the
// compiler.
template <int kRows, int kLength>
inline void AddRows(const WideRow* pRows, const double* pFactors, double* pSum) {
  for (int r = 0; r < kLength; ++r) {
    double d = pRows[0][r] * pFactors[0];
    for (int i = 1; i < kRows; ++i) d += pRows[i][r] * pFactors[i];
    pSum[r] += d;
  }
}
inline void AddRows(int iRows, int n, const WideRow* pRows, const double* pFactors, double* pSum) {
  if (n == 6 && iRows == 2) {
    AddRows<2, 6>(pRows, pFactors, pSum);
  } else if (n == 6 && iRows == 3) {
    AddRows<3, 6>(pRows, pFactors, pSum);
  } else {
    for (int i = 0; i < iRows; ++i) {
      for (int r = 0; r < n; ++r) pSum[r] += pRows[i][r] * pFactors[i];
    }
  }
}

constexpr double kCollapsed = 1e-9;  // of a motion's length, left by those before it

// Gram and Schmidt. False where one is a combination of those before it.
bool Orthonormalise(std::vector<std::vector<double>>* pVectors) {
  std::vector<std::vector<double>>& e = *pVectors;
  const auto product = [](const std::vector<double>& a, const std::vector<double>& b) {
    double d = 0.0;
    for (size_t i = 0; i < a.size(); ++i) d += a[i] * b[i];
    return d;
  };
  for (size_t k = 0; k < e.size(); ++k) {
    const double dFormer = std::sqrt(product(e[k], e[k]));
    for (int iTwice = 0; iTwice < 2; ++iTwice) {  // the second removes rounding
      for (size_t l = 0; l < k; ++l) {
        const double d = product(e[k], e[l]);
        for (size_t i = 0; i < e[k].size(); ++i) e[k][i] -= d * e[l][i];
      }
      const double dLength = std::sqrt(product(e[k], e[k]));
      if (iTwice == 0 && !(dLength > kCollapsed * dFormer)) return false;
      for (double& d : e[k]) d /= dLength;
    }
  }
  return true;
}

// Takes off what lies along orthonormal vectors.
void Project(const std::vector<std::vector<double>>& vectors, std::vector<double>* pX) {
  for (const std::vector<double>& e : vectors) {
    double d = 0.0;
    for (size_t i = 0; i < e.size(); ++i) d += e[i] * (*pX)[i];
    for (size_t i = 0; i < e.size(); ++i) (*pX)[i] -= d * e[i];
  }
}

}  // namespace

NetworkNormals::NetworkNormals(const NetworkModel& model) : m_model(model) {
  const size_t uPoints = model.Start().points.size();
  m_ties.resize(uPoints);
  m_inverse.assign(9 * uPoints, 0.0);
  m_slot.assign(static_cast<size_t>(model.Reduced()), -1);
  m_s.SetStructure(model.TileStarts(), model.Coupled());
}

void NetworkNormals::AddToReduced(const NetworkGroup& g) {
  for (int a = 0; a < g.iParts; ++a) {
    const NetworkGroup::Part& pa = g.parts[a];
    for (int r = 0; r < pa.n; ++r) {
      double dRight = 0.0, dDiagonal = 0.0;
      for (int i = 0; i < g.m; ++i) {
        dRight -= pa.j[i][r] * g.e[i];
        dDiagonal += pa.j[i][r] * pa.j[i][r];
      }
      m_rightReduced[static_cast<size_t>(pa.iOffset + r)] += dRight;
      m_diagonal[static_cast<size_t>(pa.iOffset + r)] += dDiagonal;
    }
    for (int b = 0; b < g.iParts; ++b) {
      const NetworkGroup::Part& pb = g.parts[b];
      if (pb.iOffset > pa.iOffset) continue;
      size_t uStride;
      double* pColumn = m_s.At(pa.iOffset, pb.iOffset, &uStride);
      for (int c = 0; c < pb.n; ++c, pColumn += uStride) {
        double factors[3] = {};
        for (int i = 0; i < g.m; ++i) factors[i] = pb.j[i][c];
        AddRows(g.m, pa.n, pa.j, factors, pColumn);
      }
    }
  }
}

bool NetworkNormals::EliminatePoint(int iPoint, const NetworkState& state) {
  const size_t uPoint = static_cast<size_t>(iPoint);
  double v[9] = {};
  Vec3 right{};
  std::vector<Tie>& ties = m_ties[uPoint];
  ties.clear();
  NetworkGroup g;
  for (const int iObservation : m_model.OfPoint(iPoint)) {
    const NetworkObservation& o = m_model.Observations()[static_cast<size_t>(iObservation)];
    if (!o.bUsed) continue;
    if (!m_model.Linearise(o, state, &g)) return false;
    for (int i = 0; i < g.m; ++i) {
      m_dCost += g.e[i] * g.e[i];
      for (int r = 0; r < 3; ++r) {
        right[static_cast<size_t>(r)] -= g.p[i][r] * g.e[i];
        for (int c = 0; c < 3; ++c) v[3 * r + c] += g.p[i][r] * g.p[i][c];
      }
    }
    AddToReduced(g);
    for (int n = 0; n < g.iParts; ++n) {
      const NetworkGroup::Part& part = g.parts[n];
      int& iSlot = m_slot[static_cast<size_t>(part.iOffset)];
      if (iSlot < 0) {
        iSlot = static_cast<int>(ties.size());
        ties.push_back({part.iOffset, part.n, {}});
      }
      Tie& tie = ties[static_cast<size_t>(iSlot)];
      for (int i = 0; i < g.m; ++i) {
        for (int c = 0; c < 3; ++c) {
          for (int r = 0; r < part.n; ++r) tie.t[c][r] += part.j[i][r] * g.p[i][c];
        }
      }
    }
  }
  for (const Tie& tie : ties) m_slot[static_cast<size_t>(tie.iOffset)] = -1;
  m_rightPoints[uPoint] = right;
  for (int k = 0; k < 3; ++k) {
    m_pointDiagonal[uPoint][static_cast<size_t>(k)] = v[4 * k];
    v[4 * k] *= 1.0 + m_dDamping;
    if (!m_model.IsFree(iPoint, k)) v[4 * k] = 1.0;  // its rows and columns are 0
  }
  double* pInverse = &m_inverse[9 * uPoint];
  if (!InvertSpd(3, v, pInverse)) {
    m_iUndecided = iPoint;
    return false;
  }
  for (int k = 0; k < 3; ++k) {
    if (!m_model.IsFree(iPoint, k)) pInverse[4 * k] = 0.0;
  }
  std::sort(ties.begin(), ties.end(),
            [](const Tie& a, const Tie& b) { return a.iOffset < b.iOffset; });
  for (size_t a = 0; a < ties.size(); ++a) {
    Tie& ta = ties[a];
    const Tie w = ta;
    for (int c = 0; c < 3; ++c) {
      for (int r = 0; r < ta.n; ++r) {
        ta.t[c][r] =
            w.t[0][r] * pInverse[c] + w.t[1][r] * pInverse[3 + c] + w.t[2][r] * pInverse[6 + c];
      }
    }
    for (int r = 0; r < ta.n; ++r) {
      m_rightReduced[static_cast<size_t>(ta.iOffset + r)] -=
          ta.t[0][r] * right[0] + ta.t[1][r] * right[1] + ta.t[2][r] * right[2];
    }
    // The blocks behind hold W still: the lower triangle is theirs by this one.
    for (size_t b = a; b < ties.size(); ++b) {
      const Tie& tb = b == a ? w : ties[b];
      size_t uStride;
      double* pColumn = m_s.At(tb.iOffset, ta.iOffset, &uStride);
      for (int c = 0; c < ta.n; ++c, pColumn += uStride) {
        const double factors[3] = {-ta.t[0][c], -ta.t[1][c], -ta.t[2][c]};
        AddRows(3, tb.n, tb.t, factors, pColumn);
      }
    }
  }
  return true;
}

bool NetworkNormals::Build(const NetworkState& state, double dDamping) {
  const size_t uReduced = static_cast<size_t>(m_model.Reduced());
  m_dDamping = dDamping;
  m_dCost = 0.0;
  m_iUndecided = -1;
  m_rightReduced.assign(uReduced, 0.0);
  m_diagonal.assign(uReduced, 0.0);
  m_rightPoints.assign(state.points.size(), Vec3{});
  m_pointDiagonal.assign(state.points.size(), Vec3{});
  m_s.SetZero();
  NetworkGroup g;
  for (const int i : m_model.Others()) {
    const NetworkObservation& o = m_model.Observations()[static_cast<size_t>(i)];
    if (!o.bUsed) continue;
    if (!m_model.Linearise(o, state, &g)) return false;
    for (int k = 0; k < g.m; ++k) m_dCost += g.e[k] * g.e[k];
    AddToReduced(g);
  }
  for (int i = 0; i < static_cast<int>(state.points.size()); ++i) {
    if (m_model.IsEliminated(i) && !EliminatePoint(i, state)) return false;
  }
  for (size_t i = 0; i < uReduced; ++i) {
    *m_s.At(static_cast<int>(i), static_cast<int>(i)) += dDamping * m_diagonal[i];
  }
  return std::isfinite(m_dCost);
}

bool NetworkNormals::Factorise(const NetworkState& state, const NetworkFreedom& freedom) {
  const int n = m_model.Reduced();
  m_scale.resize(static_cast<size_t>(n));
  for (int i = 0; i < n; ++i) {
    if (!(m_s.Diagonal(i) > 0.0)) return false;
    m_scale[static_cast<size_t>(i)] = std::sqrt(m_s.Diagonal(i));
  }
  m_s.Divide(m_scale);
  m_motions.clear();
  if (freedom.k > 0 && !HoldMotions(state, freedom)) return false;
  return m_s.Factorise();
}

// Adds the free motions of the last unknowns, made orthonormal, so that the matrix is regular and
// its inverse differs from any other by motions alone. False where those unknowns stand still under
// one.
bool NetworkNormals::HoldMotions(const NetworkState& state, const NetworkFreedom& freedom) {
  const size_t n = m_scale.size(), uFree = static_cast<size_t>(freedom.k);
  const size_t uFirst = static_cast<size_t>(m_model.HeldFrom());
  const auto motion = m_model.ReducedMotion(state);
  m_motions.assign(uFree, std::vector<double>(n, 0.0));
  for (size_t k = 0; k < uFree; ++k) {
    for (size_t i = 0; i < n; ++i) {
      for (size_t g = 0; g < NetworkModel::kGenerators; ++g) {
        m_motions[k][i] += m_scale[i] * motion[i][g] * freedom.basis[g * uFree + k];
      }
    }
  }
  std::vector<std::vector<double>> held = m_motions;
  for (std::vector<double>& e : held)
    e.erase(e.begin(), e.begin() + static_cast<std::ptrdiff_t>(uFirst));
  if (!Orthonormalise(&held) || !Orthonormalise(&m_motions)) return false;
  for (size_t c = uFirst; c < n; ++c) {
    for (size_t r = c; r < n; ++r) {
      double d = 0.0;
      for (const std::vector<double>& e : held) d += e[r - uFirst] * e[c - uFirst];
      *m_s.At(static_cast<int>(r), static_cast<int>(c)) += d;
    }
  }
  return true;
}

std::vector<double> NetworkNormals::SolveReduced(const std::vector<double>& right) const {
  std::vector<double> x = right;
  for (size_t i = 0; i < x.size(); ++i) x[i] /= m_scale[i];
  m_s.Solve(x.data());
  for (size_t i = 0; i < x.size(); ++i) x[i] /= m_scale[i];
  return x;
}

Vec3 NetworkNormals::SolvePoint(size_t uPoint, const Vec3& b, const std::vector<double>& x) const {
  const double* v = &m_inverse[9 * uPoint];
  Vec3 q{};
  for (size_t k = 0; k < 3; ++k) q[k] = v[3 * k] * b[0] + v[3 * k + 1] * b[1] + v[3 * k + 2] * b[2];
  for (const Tie& tie : m_ties[uPoint]) {
    for (int r = 0; r < tie.n; ++r) {
      for (size_t k = 0; k < 3; ++k) q[k] -= tie.t[k][r] * x[static_cast<size_t>(tie.iOffset + r)];
    }
  }
  return q;
}

void NetworkNormals::SolveFor(std::vector<double>* pReduced, std::vector<Vec3>* pPoints) const {
  for (size_t i = 0; i < pPoints->size(); ++i) {
    if (!m_model.IsEliminated(static_cast<int>(i))) continue;
    const Vec3& b = (*pPoints)[i];
    for (const Tie& tie : m_ties[i]) {
      for (int r = 0; r < tie.n; ++r) {
        (*pReduced)[static_cast<size_t>(tie.iOffset + r)] -=
            tie.t[0][r] * b[0] + tie.t[1][r] * b[1] + tie.t[2][r] * b[2];
      }
    }
  }
  *pReduced = SolveReduced(*pReduced);
  for (size_t i = 0; i < pPoints->size(); ++i) {
    const bool bEliminated = m_model.IsEliminated(static_cast<int>(i));
    (*pPoints)[i] = bEliminated ? SolvePoint(i, (*pPoints)[i], *pReduced) : Vec3{};
  }
}

void NetworkNormals::Solve(std::vector<double>* pReduced, std::vector<Vec3>* pPoints,
                           double* pdDecrement, double* pdPredicted) const {
  *pReduced = SolveReduced(m_rightReduced);
  pPoints->assign(m_rightPoints.size(), Vec3{});
  // The sum of squares saved is x'b of the whole system; by elimination that is x'b of what is left
  // and, of each point, b' V^-1 b.
  double dSaved = 0.0, dDamped = 0.0;
  for (size_t i = 0; i < pReduced->size(); ++i) {
    dSaved += (*pReduced)[i] * m_rightReduced[i];
    dDamped += m_diagonal[i] * (*pReduced)[i] * (*pReduced)[i];
  }
  for (size_t i = 0; i < m_rightPoints.size(); ++i) {
    if (!m_model.IsEliminated(static_cast<int>(i))) continue;
    const Vec3& b = m_rightPoints[i];
    const double* v = &m_inverse[9 * i];
    const Vec3 q = SolvePoint(i, b, *pReduced);
    (*pPoints)[i] = q;
    for (size_t k = 0; k < 3; ++k) {
      dSaved += b[k] * (v[3 * k] * b[0] + v[3 * k + 1] * b[1] + v[3 * k + 2] * b[2]);
      dDamped += m_pointDiagonal[i][k] * q[k] * q[k];
    }
  }
  *pdDecrement = std::sqrt(std::max(0.0, dSaved));
  // cost - cost' = 2 x'b - x'N x with (N + damping) x = b.
  *pdPredicted = dSaved + m_dDamping * dDamped;
}

double NetworkNormals::LeastEigenvalue(std::vector<double>* pVector) const {
  const size_t n = m_scale.size();
  std::vector<double>& x = *pVector;
  x.resize(n);
  for (size_t i = 0; i < n; ++i) {  // in no eigenspace
    x[i] = (1.0 + 0.37 * static_cast<double>(i * 7919 % 101) / 101.0) / std::sqrt(n);
  }
  double dValue = 1.0;
  for (int k = 0; k < 30; ++k) {
    Project(m_motions, &x);
    m_s.Solve(x.data());
    Project(m_motions, &x);
    double dLength = 0.0;
    for (const double d : x) dLength += d * d;
    dLength = std::sqrt(dLength);
    if (!std::isfinite(dLength) || dLength == 0.0) return 0.0;
    for (double& d : x) d /= dLength;
    const double dFormer = dValue;
    dValue = 1.0 / dLength;
    if (k > 2 && std::fabs(dValue - dFormer) <= 1e-3 * dValue) break;
  }
  return dValue;
}

}  // namespace zu::internal
