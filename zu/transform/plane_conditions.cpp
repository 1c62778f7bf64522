#include "zu/transform/plane_conditions.h"

#include <algorithm>
#include <array>
#include <map>
#include <numbers>
#include <utility>

#include "zu/numerics/matrix.h"
#include "zu/numerics/solver.h"

namespace {

constexpr int kMostUnknowns = 4;
constexpr int kMostRounds = 50;
constexpr size_t kMostConditions = 300;
constexpr double kEnd = 1e-13;         // change of unknowns and points that ends the search
constexpr double kRoundingEnd = 1e-9;  // the same where rounding keeps it from shrinking
constexpr double kOpen = 1e-10;        // eigenvalue of the normal matrix, of the largest [-]
constexpr double kLost = 1e-5;         // the same where the search has no end [-]
constexpr double kAlike = 1e-12;       // an extent below which the ends of a line are one [-]

// Eigenvalues of a symmetric n x n matrix, rising, with their vectors in columns (C. G. J. Jacobi,
// 1846). a is destroyed.
template <int N>
void SymmetricEigen(int n, double (&a)[N][N], double* pdValues, double (&v)[N][N]) {
  for (int i = 0; i < n; ++i) {
    for (int k = 0; k < n; ++k) v[i][k] = i == k ? 1.0 : 0.0;
  }
  for (int iSweep = 0; iSweep < 60; ++iSweep) {
    double dOff = 0.0, dAll = 0.0;
    for (int i = 0; i < n; ++i) {
      for (int k = 0; k < n; ++k) {
        dAll += a[i][k] * a[i][k];
        if (i != k) dOff += a[i][k] * a[i][k];
      }
    }
    if (!(dOff > 1e-40 * dAll)) break;
    for (int p = 0; p < n; ++p) {
      for (int q = p + 1; q < n; ++q) {
        if (a[p][q] == 0.0) continue;
        const double t = 0.5 * std::atan2(2.0 * a[p][q], a[q][q] - a[p][p]);
        const double c = std::cos(t), s = std::sin(t);
        const auto turn = [c, s](double* x, double* y) {
          const double d = *x;
          *x = c * d - s * *y;
          *y = s * d + c * *y;
        };
        for (int k = 0; k < n; ++k) turn(&a[k][p], &a[k][q]);
        for (int k = 0; k < n; ++k) turn(&a[p][k], &a[q][k]);
        for (int k = 0; k < n; ++k) turn(&v[k][p], &v[k][q]);
      }
    }
  }
  for (int i = 0; i < n; ++i) pdValues[i] = a[i][i];
  for (int i = 0; i < n; ++i) {
    for (int k = i + 1; k < n; ++k) {
      if (!(pdValues[k] < pdValues[i])) continue;
      std::swap(pdValues[i], pdValues[k]);
      for (int r = 0; r < n; ++r) std::swap(v[r][i], v[r][k]);
    }
  }
}

// The unit vector x of least x' m x, and by how much the next one is worse, of the largest.
double LeastVector(double (&m)[3][3], double* x) {
  double adValues[3] = {}, v[3][3] = {};
  SymmetricEigen<3>(3, m, adValues, v);
  for (int i = 0; i < 3; ++i) x[i] = v[i][0];
  return adValues[2] > 0.0 ? adValues[1] / adValues[2] : 0.0;
}

void AddSquare(const std::array<double, 3>& r, double (&m)[3][3]) {
  const double d = r[0] * r[0] + r[1] * r[1] + r[2] * r[2];
  if (!(d > 0.0)) return;
  for (size_t i = 0; i < 3; ++i) {
    for (size_t k = 0; k < 3; ++k) m[i][k] += r[i] * r[k] / d;
  }
}

// What lines have to do with each other already: values on a graph that is connected step by step.
class Relations {
 public:
  // Says that x(a) = x(b) + d. 1: new; 0: known already; -1: x(a) - x(b) is known to be another.
  int Join(const std::pair<size_t, size_t>& a, const std::pair<size_t, size_t>& b, double d,
           double dPeriod) {
    const auto [uRootA, dA] = Find(Number(a));
    const auto [uRootB, dB] = Find(Number(b));
    const double dNew = dB + d - dA;  // x(root of a) - x(root of b)
    if (uRootA != uRootB) {
      m_nodes[uRootA] = {uRootB, dNew};
      return 1;
    }
    return std::fabs(dPeriod > 0.0 ? std::remainder(dNew, dPeriod) : dNew) < 1e-9 ? 0 : -1;
  }

 private:
  size_t Number(std::pair<size_t, size_t> line) {
    if (line.first > line.second) std::swap(line.first, line.second);
    const auto [found, bNew] = m_numbers.emplace(line, m_nodes.size());
    if (bNew) m_nodes.emplace_back(m_nodes.size(), 0.0);
    return found->second;
  }
  std::pair<size_t, double> Find(size_t u) const {
    double d = 0.0;
    while (m_nodes[u].first != u) {
      d += m_nodes[u].second;
      u = m_nodes[u].first;
    }
    return {u, d};
  }

  std::map<std::pair<size_t, size_t>, size_t> m_numbers;
  std::vector<std::pair<size_t, double>> m_nodes;  // parent, and what the node has more than it
};

}  // namespace

// Unknowns, of reduced coordinates: shear s and logarithm t of the ratio of the axes; with a
// horizon l1 and l2.
//
//   w = 1 + l1 x + l2 y,  q = (x + s y, exp(t) y) / w
class ZuPlaneConditions::Adjustment {
 public:
  explicit Adjustment(ZuPlaneConditions* pOwner)
      : m_owner(*pOwner), m_iUnknowns(pOwner->m_bHorizon ? 4 : 2) {}

  eConditionsStatus Run() {
    eConditionsStatus eStatus = Reduce();
    if (eStatus == eConditionsOk) eStatus = ChooseConditions();
    if (eStatus != eConditionsOk) return eStatus;
    Start();
    eStatus = Iterate();
    if (eStatus == eConditionsNotConverged && m_szWeakest[0] != '\0') {
      m_owner.m_iDefect = 1;
      m_owner.m_szFree = m_szWeakest;
      return eConditionsOpen;
    }
    return eStatus == eConditionsOk ? Store() : eStatus;
  }

 private:
  struct Image {
    ZuVector2d q, dx, dy, unknown[kMostUnknowns];  // and what it moves by each coordinate, unknown
  };

  Image ImageOf(const ZuVector2d& p) const {
    const double* x = m_x;
    const double k = std::exp(x[1]), w = 1.0 + x[2] * p.x + x[3] * p.y;
    Image image;
    image.q = ZuVector2d(p.x + x[0] * p.y, k * p.y) / w;
    image.dx = (ZuVector2d(1.0, 0.0) - x[2] * image.q) / w;
    image.dy = (ZuVector2d(x[0], k) - x[3] * image.q) / w;
    image.unknown[0] = ZuVector2d(p.y, 0.0) / w;
    image.unknown[1] = ZuVector2d(0.0, k * p.y) / w;
    image.unknown[2] = -p.x / w * image.q;
    image.unknown[3] = -p.y / w * image.q;
    return image;
  }
  bool IsBeforeHorizon(const ZuVector2d& p) const {
    return 1.0 + m_x[2] * p.x + m_x[3] * p.y > 1e-6;
  }

  // The two directions in which the ends of a condition's lines move its value, which is returned.
  static double Value(const ZuPlaneCondition& c, const ZuVector2d& d1, const ZuVector2d& d2,
                      ZuVector2d* pBy1, ZuVector2d* pBy2) {
    const double r1 = d1.Norm(), r2 = d2.Norm();
    const ZuVector2d e1 = d1 / r1, e2 = d2 / r2;
    const double dSin = e1 % e2, dCos = e1 * e2;
    if (c.kind == ZuPlaneCondition::eLengthRatio) {
      *pBy1 = e1 / r1;
      *pBy2 = -e2 / r2;
      return std::log(r1 / (r2 * c.dRatio));
    }
    const bool bParallel = c.kind == ZuPlaneCondition::eParallel;
    const double dFactor = bParallel ? dCos : -dSin;
    *pBy1 = -dFactor / r1 * e1.Normal();
    *pBy2 = dFactor / r2 * e2.Normal();
    return bParallel ? dSin : dCos;
  }

  eConditionsStatus Reduce() {
    const std::vector<ZuPoint2d>& points = m_owner.m_points;
    const auto& conditions = m_owner.m_conditions;
    if (conditions.empty()) return eConditionsTooFew;
    if (conditions.size() > kMostConditions) return eConditionsTooMany;
    ZuVector2d sum;
    for (const ZuPoint2d& p : points) {
      if (!p.IsFinite()) return eConditionsNotFinite;
      sum += (p - points[0]) / static_cast<double>(points.size());
    }
    for (const ZuPlaneCondition& c : conditions) {
      for (const size_t u : c.auPoint) {
        if (u >= points.size()) return eConditionsTooFew;
      }
      if (!(c.dRatio > 0.0) || !std::isfinite(c.dRatio)) return eConditionsNotFinite;
    }
    m_owner.m_centre = points[0] + sum;
    m_owner.m_dExtent = 0.0;
    for (const ZuPoint2d& p : points) {
      m_owner.m_dExtent = std::max(m_owner.m_dExtent, p.Distance(m_owner.m_centre));
    }
    if (!(m_owner.m_dExtent > 0.0)) return eConditionsCoincident;
    if (!std::isfinite(m_owner.m_dExtent)) return eConditionsNotFinite;
    for (const ZuPoint2d& p : points) {
      m_measured.push_back((p - m_owner.m_centre) / m_owner.m_dExtent);
    }
    for (const ZuPlaneCondition& c : conditions) {
      for (const size_t u : {0, 2}) {
        const ZuVector2d d = m_measured[c.auPoint[u + 1]] - m_measured[c.auPoint[u]];
        if (!(d.Norm() > kAlike)) return eConditionsCoincident;
      }
    }
    m_adjusted = m_measured;
    return eConditionsOk;
  }

  // Those that others do not hold already.
  eConditionsStatus ChooseConditions() {
    Relations directions, lengths;
    for (ZuPlaneCondition& c : m_owner.m_conditions) {
      const std::pair<size_t, size_t> a(c.auPoint[0], c.auPoint[1]), b(c.auPoint[2], c.auPoint[3]);
      const bool bRatio = c.kind == ZuPlaneCondition::eLengthRatio;
      const double dTurn = c.kind == ZuPlaneCondition::eRightAngle ? 1.0 : 0.0;
      const int iNew =
          bRatio ? lengths.Join(a, b, std::log(c.dRatio), 0.0) : directions.Join(a, b, dTurn, 2.0);
      if (iNew < 0) return eConditionsContradict;
      c.bUsed = iNew > 0;
      if (c.bUsed) m_used.push_back(&c);
    }
    return m_used.empty() ? eConditionsTooFew : eConditionsOk;
  }

  ZuVector2d Difference(const ZuPlaneCondition& c, size_t u) const {
    return ImageOf(m_adjusted[c.auPoint[u + 1]]).q - ImageOf(m_adjusted[c.auPoint[u]]).q;
  }

  void Start() {
    if (m_owner.m_bHorizon) StartHorizon();
    // d1' M d2 = 0, d1' M d1 = r^2 d2' M d2 with M = (a, b; b, c) up to scale.
    double m[3][3] = {}, x[3];
    for (const ZuPlaneCondition* p : m_used) {
      const ZuVector2d d = Difference(*p, 0), e = Difference(*p, 2);
      if (p->kind == ZuPlaneCondition::eRightAngle) {
        AddSquare({d.x * e.x, d.x * e.y + d.y * e.x, d.y * e.y}, m);
      } else if (p->kind == ZuPlaneCondition::eLengthRatio) {
        const double r = p->dRatio * p->dRatio;
        AddSquare({d.x * d.x - r * e.x * e.x, 2.0 * (d.x * d.y - r * e.x * e.y),
                   d.y * d.y - r * e.y * e.y},
                  m);
      }
    }
    if (!(LeastVector(m, x) > kOpen)) return;
    // M = A' A with A = (1, s; 0, k): b / a = s, c / a = s^2 + k^2.
    const double s = x[1] / x[0], dSquare = x[2] / x[0] - s * s;
    if (!(dSquare > 1e-8) || !std::isfinite(dSquare)) return;
    m_x[0] = s;
    m_x[1] = 0.5 * std::log(dSquare);
  }

  // The line through the points where parallels meet in the picture.
  void StartHorizon() {
    double m[3][3] = {}, x[3];
    const auto line = [this](size_t a, size_t b) {
      const ZuVector2d &p = m_measured[a], &q = m_measured[b];
      return std::array<double, 3>{p.y - q.y, q.x - p.x, p % q};
    };
    for (const ZuPlaneCondition* p : m_used) {
      if (p->kind != ZuPlaneCondition::eParallel) continue;
      const auto a = line(p->auPoint[0], p->auPoint[1]), b = line(p->auPoint[2], p->auPoint[3]);
      AddSquare({a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]},
                m);
    }
    if (!(LeastVector(m, x) > kOpen) || !(std::fabs(x[2]) > 1e-6)) return;
    m_x[2] = x[0] / x[2];
    m_x[3] = x[1] / x[2];
    for (const ZuVector2d& p : m_measured) {
      if (!IsBeforeHorizon(p)) m_x[2] = m_x[3] = 0.0;
    }
  }

  // One condition into row i: its change by the unknowns and the misclosure, and by coordinates.
  void SetRow(size_t i, ZuMatrix* pRight) {
    const ZuPlaneCondition& c = *m_used[i];
    Image images[4];
    for (size_t k = 0; k < 4; ++k) images[k] = ImageOf(m_adjusted[c.auPoint[k]]);
    ZuVector2d by[2];
    double dClosure =
        Value(c, images[1].q - images[0].q, images[3].q - images[2].q, &by[0], &by[1]);
    const int iRow = static_cast<int>(i) + 1;
    for (int u = 0; u < m_iUnknowns; ++u) {
      (*pRight)[iRow][u + 1] = by[0] * (images[1].unknown[u] - images[0].unknown[u]) +
                               by[1] * (images[3].unknown[u] - images[2].unknown[u]);
    }
    for (size_t k = 0; k < 4; ++k) {
      const ZuVector2d d = (k % 2 == 1 ? 1.0 : -1.0) * by[k / 2];
      m_rows[i][k] = ZuVector2d(d * images[k].dx, d * images[k].dy);
      const size_t uPoint = c.auPoint[k];
      dClosure -= m_rows[i][k] * (m_adjusted[uPoint] - m_measured[uPoint]);
    }
    (*pRight)[iRow][m_iUnknowns + 1] = dClosure;
  }

  // B B' of two conditions: over the points that both have.
  double Common(size_t i, size_t j) const {
    double d = 0.0;
    for (size_t k = 0; k < 4; ++k) {
      for (size_t l = 0; l < 4; ++l) {
        if (m_used[i]->auPoint[k] == m_used[j]->auPoint[l]) d += m_rows[i][k] * m_rows[j][l];
      }
    }
    return d;
  }

  // Solves the normal equations of the unknowns. False: something stays open.
  bool SolveUnknowns(const ZuMatrix& design, const ZuMatrix& solved, double* pdStep) {
    const int n = m_iUnknowns, m = static_cast<int>(m_used.size());
    double a[kMostUnknowns][kMostUnknowns] = {}, h[kMostUnknowns] = {};
    for (int u = 0; u < n; ++u) {
      for (int i = 1; i <= m; ++i) {
        for (int v = 0; v < n; ++v) {
          a[u][v] += design.GetElem(i, u + 1) * solved.GetElem(i, v + 1);
        }
        h[u] -= design.GetElem(i, u + 1) * solved.GetElem(i, n + 1);
      }
    }
    double adValues[kMostUnknowns] = {}, v[kMostUnknowns][kMostUnknowns] = {};
    SymmetricEigen<kMostUnknowns>(n, a, adValues, v);
    int iDefect = 0;
    for (int k = 0; k < n; ++k) {
      if (!(adValues[k] > kOpen * std::max(adValues[n - 1], kOpen))) iDefect = k + 1;
    }
    for (int u = 0; u < n; ++u) {
      pdStep[u] = 0.0;
      for (int k = iDefect; k < n; ++k) {
        double d = 0.0;
        for (int r = 0; r < n; ++r) d += v[r][k] * h[r];
        pdStep[u] += v[u][k] * d / adValues[k];
      }
    }
    m_szWeakest = adValues[0] < kLost * adValues[n - 1] ? FreeText(1, v) : "";
    m_owner.m_iDefect = iDefect;
    if (iDefect > 0) m_owner.m_szFree = FreeText(iDefect, v);
    return iDefect == 0;
  }

  static const char* FreeText(int iDefect, const double (&v)[kMostUnknowns][kMostUnknowns]) {
    double adShare[kMostUnknowns] = {};
    for (int u = 0; u < kMostUnknowns; ++u) {
      for (int k = 0; k < iDefect; ++k) adShare[u] += v[u][k] * v[u][k];
    }
    const bool bShear = adShare[0] > 1e-3, bRatio = adShare[1] > 1e-3;
    const bool bHorizon = adShare[2] + adShare[3] > 1e-3;
    if (bHorizon)
      return bShear || bRatio ? "the horizon, shear and ratio of the axes" : "the horizon";
    if (bShear && bRatio) {
      return iDefect > 1 ? "shear and ratio of the axes" : "shear against the ratio of the axes";
    }
    return bShear ? "shear" : "ratio of the axes";
  }

  eConditionsStatus Iterate() {
    const int m = static_cast<int>(m_used.size()), n = m_iUnknowns;
    ZuMatrix common(m, m), design(m, n + 1), solved(m, n + 1);
    m_rows.resize(m_used.size());
    std::vector<ZuVector2d> next;
    next.reserve(m_measured.size());
    double dLast = std::numeric_limits<double>::infinity();
    for (int iRound = 0; iRound < kMostRounds; ++iRound) {
      for (size_t i = 0; i < m_used.size(); ++i) SetRow(i, &design);
      for (int i = 0; i < m; ++i) {
        for (int j = 0; j < m; ++j) {
          common[i + 1][j + 1] = Common(static_cast<size_t>(i), static_cast<size_t>(j));
        }
        for (int u = 1; u <= n + 1; ++u) solved[i + 1][u] = design[i + 1][u];
      }
      if (GaussLoeserRelMax(common, solved) != 0) return eConditionsDependent;
      double adStep[kMostUnknowns] = {};
      if (!SolveUnknowns(design, solved, adStep)) return eConditionsOpen;
      next = m_measured;
      for (int i = 0; i < m; ++i) {
        double k = -solved[i + 1][n + 1];
        for (int u = 0; u < n; ++u) k -= solved[i + 1][u + 1] * adStep[u];
        const size_t uRow = static_cast<size_t>(i);
        for (size_t c = 0; c < 4; ++c) next[m_used[uRow]->auPoint[c]] += k * m_rows[uRow][c];
      }
      double dChange = 0.0;
      for (int u = 0; u < n; ++u) {
        m_x[u] += adStep[u];
        dChange = std::max(dChange, std::fabs(adStep[u]));
      }
      for (size_t i = 0; i < next.size(); ++i) {
        dChange = std::max(dChange, (next[i] - m_adjusted[i]).Norm());
        if (!IsBeforeHorizon(next[i])) return eConditionsNotConverged;
      }
      m_adjusted.swap(next);
      if (!std::isfinite(dChange)) return eConditionsNotFinite;
      if (dChange <= kEnd || (dChange <= kRoundingEnd && dChange >= 0.5 * dLast)) {
        return eConditionsOk;
      }
      dLast = dChange;
    }
    return eConditionsNotConverged;
  }

  eConditionsStatus Store() {
    double dSquares = 0.0;
    m_owner.m_moves.clear();
    for (size_t i = 0; i < m_measured.size(); ++i) {
      m_owner.m_moves.push_back(m_owner.m_dExtent * (m_adjusted[i] - m_measured[i]));
      dSquares += m_owner.m_moves.back() * m_owner.m_moves.back();
    }
    m_owner.m_iRedundancy = static_cast<int>(m_used.size()) - m_iUnknowns;
    m_owner.m_dSigma0 =
        m_owner.m_iRedundancy > 0 ? std::sqrt(dSquares / m_owner.m_iRedundancy) : 0.0;
    m_adjusted = m_measured;
    for (ZuPlaneCondition& c : m_owner.m_conditions) {
      ZuVector2d a, b;
      const double d = Value(c, Difference(c, 0), Difference(c, 2), &a, &b);
      c.dResidual = c.kind == ZuPlaneCondition::eLengthRatio ? std::expm1(d)
                                                             : std::asin(std::clamp(d, -1.0, 1.0));
    }
    // No turn: the matrix of the affine part at the centre made symmetric; area 1.
    const double s = m_x[0], k = std::exp(m_x[1]), dSize = 1.0 / std::sqrt(k);
    const double dTurn = std::atan2(s, 1.0 + k);
    const double c = dSize * std::cos(dTurn), e = dSize * std::sin(dTurn);
    const double adMap[] = {c, c * s - e * k, 0.0, e, e * s + c * k, 0.0, m_x[2], m_x[3], 1.0};
    std::copy_n(adMap, 9, m_owner.m_adMap);
    double dSum = dSquares;
    for (const double d : adMap) dSum += d;
    return std::isfinite(dSum) ? eConditionsOk : eConditionsNotFinite;
  }

  ZuPlaneConditions& m_owner;
  int m_iUnknowns;
  double m_x[kMostUnknowns] = {};
  const char* m_szWeakest = "";  // unknown, where the last step hardly decided one
  std::vector<ZuVector2d> m_measured, m_adjusted;  // reduced
  std::vector<ZuPlaneCondition*> m_used;
  std::vector<std::array<ZuVector2d, 4>> m_rows;  // by the coordinates of the four points
};

size_t ZuPlaneConditions::AddPoint(const ZuPoint2d& p) {
  m_points.push_back(p);
  return m_points.size() - 1;
}

void ZuPlaneConditions::AddParallel(size_t a, size_t b, size_t c, size_t d) {
  ZuPlaneCondition condition = ZuLenghtRatioConstraint(a, b, c, d);
  condition.kind = ZuPlaneCondition::eParallel;
  Add(condition);
}

void ZuPlaneConditions::AddRightAngle(size_t a, size_t b, size_t c, size_t d) {
  ZuPlaneCondition condition = ZuLenghtRatioConstraint(a, b, c, d);
  condition.kind = ZuPlaneCondition::eRightAngle;
  Add(condition);
}

eConditionsStatus ZuPlaneConditions::Calc() {
  m_iDefect = 0;
  m_szFree = "";
  m_eStatus = Adjustment(this).Run();
  return m_eStatus;
}

ZuPoint2d ZuPlaneConditions::Transform(const ZuPoint2d& p) const {
  const ZuVector2d d = (p - m_centre) / m_dExtent;
  const double* m = m_adMap;
  const double w = m[6] * d.x + m[7] * d.y + m[8];
  return m_centre +
         m_dExtent / w * ZuVector2d(m[0] * d.x + m[1] * d.y + m[2], m[3] * d.x + m[4] * d.y + m[5]);
}

void ZuPlaneConditions::GetMap(double* pdMap) const {
  const double x = m_centre.x, y = m_centre.y;
  double* const r = pdMap;
  // Behind the reduction: the map of coordinates less the centre, in their own unit.
  for (int i = 0; i < 3; ++i) {
    const double f = i < 2 ? 1.0 : 1.0 / m_dExtent;
    r[3 * i] = f * m_adMap[3 * i];
    r[3 * i + 1] = f * m_adMap[3 * i + 1];
    r[3 * i + 2] = m_adMap[3 * i + 2] - r[3 * i] * x - r[3 * i + 1] * y;
  }
  for (int k = 0; k < 3; ++k) {
    r[k] += x * r[6 + k];
    r[3 + k] += y * r[6 + k];
  }
}

const char* ZuConditionsStatusText(eConditionsStatus eStatus) {
  switch (eStatus) {
    case eConditionsOk:
      return "ok";
    case eConditionsTooFew:
      return "there are no conditions, or they name no points";
    case eConditionsOpen:
      return "the conditions leave the map open";
    case eConditionsCoincident:
      return "both ends of a line are one point";
    case eConditionsContradict:
      return "the conditions contradict each other";
    case eConditionsDependent:
      return "the conditions depend on each other";
    case eConditionsNotFinite:
      return "a number is not finite, or a ratio not above 0";
    case eConditionsNotConverged:
      return "not converged";
    case eConditionsTooMany:
      return "too many conditions";
  }
  return "unknown";
}
