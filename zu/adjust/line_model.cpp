#include "zu/adjust/internal/line_model.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "zu/adjust/internal/dense_cholesky.h"
#include "zu/adjust/internal/image_ray.h"

namespace zu::internal {

namespace {

constexpr double kHalfPi = 1.5707963267948966;
constexpr double kDependent = 1e-3;  // share of a condition that others leave to it [-]
constexpr int kSteps = 40;
constexpr int kHalvings = 20;
constexpr double kEnd = 1e-11;  // change of the unknowns that ends the steps [rad, -]

double AngleOf(const LineState& state, const LineModel::Line& line) {
  return state.angles[static_cast<size_t>(line.iGroup)] + (line.bAcross ? kHalfPi : 0.0);
}

}  // namespace

void LineModel::MakeUnknowns() {
  m_unknowns = {eTurnX, eTurnY};
  if (iGroups > 0) m_unknowns.push_back(eTurnZ);  // else nothing tells the X axis
  if (bEstimateC) m_unknowns.push_back(eC);
  for (int i = 1; i < iGroups; ++i) m_unknowns.push_back(eAngle);
  const auto told = [](const Line& line) { return line.dLength > 0.0; };
  if (std::any_of(lines.begin(), lines.end(), told)) m_unknowns.push_back(eScale);
}

void LineModel::Prepare(const LineState& state) {
  MakeUnknowns();
  m_conditions.clear();
  std::vector<Condition> all;
  for (const Line& line : lines) {
    if (line.iGroup >= 0) all.push_back({&line, false});
    if (line.dLength > 0.0) all.push_back({&line, true});
  }
  std::vector<Row> rows;
  for (const Condition& condition : all) rows.push_back(RowOf(state, condition));
  m_conditions = all;
  const std::vector<double> M = Product(rows);
  m_conditions.clear();
  // Cholesky's factor, row by row of those that are kept.
  const size_t n = all.size();
  std::vector<std::vector<double>> factor;
  std::vector<size_t> kept;
  for (size_t i = 0; i < n; ++i) {
    std::vector<double> l;
    double dRest = M[i * n + i];
    for (size_t k = 0; k < kept.size(); ++k) {
      double s = M[i * n + kept[k]];
      for (size_t j = 0; j < k; ++j) s -= l[j] * factor[k][j];
      l.push_back(s / factor[k][k]);
      dRest -= l[k] * l[k];
    }
    if (!(dRest > kDependent * M[i * n + i])) continue;
    l.push_back(std::sqrt(dRest));
    factor.push_back(std::move(l));
    kept.push_back(i);
    m_conditions.push_back(all[i]);
  }
}

LineModel::PlanePoint LineModel::At(const LineState& state, size_t uPoint, bool bMoved) const {
  const auto& R = state.R;
  const double x = points[uPoint][0] + (bMoved ? state.moves[2 * uPoint] : 0.0);
  const double y = points[uPoint][1] + (bMoved ? state.moves[2 * uPoint + 1] : 0.0);
  double u[3];
  for (size_t i = 0; i < 3; ++i) u[i] = R[3 * i] * x + R[3 * i + 1] * y - R[3 * i + 2] * state.c;
  PlanePoint at{};
  for (size_t i = 0; i < 2; ++i) at.p[i] = -u[i] / u[2];
  // Of a change d of u: -(d_i + p_i d_3) / u3.
  const auto change = [&](size_t i, double di, double d3) { return -(di + at.p[i] * d3) / u[2]; };
  for (size_t i = 0; i < 2; ++i) {
    at.move[i][0] = change(i, R[3 * i], R[6]);
    at.move[i][1] = change(i, R[3 * i + 1], R[7]);
    at.c[i] = change(i, -R[3 * i + 2], -R[8]);
    at.turn[i][0] = change(i, i == 0 ? 0.0 : -u[2], u[1]);
    at.turn[i][1] = change(i, i == 0 ? u[2] : 0.0, -u[0]);
    at.turn[i][2] = change(i, i == 0 ? -u[1] : u[0], 0.0);
  }
  return at;
}

LineModel::Row LineModel::RowOf(const LineState& state, const Condition& condition) const {
  const Line& line = *condition.pLine;
  const PlanePoint p = At(state, line.uFirst, true), q = At(state, line.uSecond, true);
  const double d[2] = {q.p[0] - p.p[0], q.p[1] - p.p[1]};
  Row row;
  double g[2];  // slope by d
  double dSlopeAngle = 0.0;
  if (condition.bLength) {
    const double dSquares = d[0] * d[0] + d[1] * d[1];
    row.w = 0.5 * std::log(dSquares) + state.dLogScale - std::log(line.dLength);
    g[0] = d[0] / dSquares;
    g[1] = d[1] / dSquares;
  } else {
    const double a = AngleOf(state, line), c = std::cos(a), s = std::sin(a);
    row.w = c * d[1] - s * d[0];
    g[0] = -s;
    g[1] = c;
    dSlopeAngle = -s * d[1] - c * d[0];
  }
  const auto along = [&](const double* from, const double* to) {
    return g[0] * (to[0] - from[0]) + g[1] * (to[1] - from[1]);
  };
  int iAngle = 0;
  for (const Unknown eKind : m_unknowns) {
    double dSlope = 0.0;
    if (eKind <= eTurnZ) {
      const double from[2] = {p.turn[0][eKind], p.turn[1][eKind]};
      const double to[2] = {q.turn[0][eKind], q.turn[1][eKind]};
      dSlope = along(from, to);
    } else if (eKind == eC) {
      dSlope = along(p.c, q.c);
    } else if (eKind == eAngle) {
      dSlope = !condition.bLength && line.iGroup == ++iAngle ? dSlopeAngle : 0.0;
    } else {
      dSlope = condition.bLength ? 1.0 : 0.0;
    }
    row.a.push_back(dSlope);
  }
  for (size_t k = 0; k < 2; ++k) {
    row.b[k] = -(g[0] * p.move[0][k] + g[1] * p.move[1][k]);
    row.b[2 + k] = g[0] * q.move[0][k] + g[1] * q.move[1][k];
  }
  return row;
}

std::vector<double> LineModel::Product(const std::vector<Row>& rows) const {
  const size_t n = rows.size();
  std::vector<double> product(n * n);
  for (size_t i = 0; i < n; ++i) {
    const size_t ends[2] = {m_conditions[i].pLine->uFirst, m_conditions[i].pLine->uSecond};
    for (size_t j = 0; j <= i; ++j) {
      const size_t others[2] = {m_conditions[j].pLine->uFirst, m_conditions[j].pLine->uSecond};
      double s = 0.0;
      for (size_t a = 0; a < 2; ++a) {
        for (size_t b = 0; b < 2; ++b) {
          if (ends[a] != others[b]) continue;
          for (size_t k = 0; k < 2; ++k) s += rows[i].b[2 * a + k] * rows[j].b[2 * b + k];
        }
      }
      product[i * n + j] = product[j * n + i] = s;
    }
  }
  return product;
}

bool LineModel::IsBefore(const LineState& state) const {
  const auto& R = state.R;
  for (size_t i = 0; i < points.size(); ++i) {
    const double x = points[i][0] + state.moves[2 * i], y = points[i][1] + state.moves[2 * i + 1];
    const double dLength = std::hypot(x, y, state.c);
    if (!(R[6] * x + R[7] * y - R[8] * state.c < -1e-3 * dLength)) return false;
  }
  return state.c > 0.0;
}

std::array<double, 2> LineModel::InPlane(const LineState& state, const Line& line,
                                         bool bMoved) const {
  const PlanePoint p = At(state, line.uFirst, bMoved), q = At(state, line.uSecond, bMoved);
  return {q.p[0] - p.p[0], q.p[1] - p.p[1]};
}

std::array<double, 2> LineModel::PointInPlane(const LineState& state, size_t uPoint) const {
  const PlanePoint p = At(state, uPoint, true);
  return {p.p[0], p.p[1]};
}

bool LineModel::Complete(LineState* p) const {
  p->moves.assign(2 * points.size(), 0.0);
  if (!IsBefore(*p)) return false;
  // Mean of the directions by their doubled angles, those across turned by half a circle.
  std::vector<std::array<double, 2>> sums(static_cast<size_t>(iGroups));
  double dLogs = 0.0, dCount = 0.0;
  for (const Line& line : lines) {
    const auto d = InPlane(*p, line, false);
    const double dLength = std::hypot(d[0], d[1]);
    if (!(dLength > 0.0)) return false;
    if (line.dLength > 0.0) {
      dLogs += std::log(line.dLength / dLength);
      dCount += 1.0;
    }
    if (line.iGroup < 0) continue;
    const double dSign = line.bAcross ? -1.0 : 1.0;
    auto& sum = sums[static_cast<size_t>(line.iGroup)];
    sum[0] += dSign * (d[0] * d[0] - d[1] * d[1]) / dLength;
    sum[1] += dSign * 2.0 * d[0] * d[1] / dLength;
  }
  p->angles.clear();
  for (const auto& sum : sums) p->angles.push_back(0.5 * std::atan2(sum[1], sum[0]));
  const double a = iGroups > 0 ? p->angles[0] : 0.0, c = std::cos(a), s = std::sin(a);
  for (double& d : p->angles) d -= a;
  const auto R = p->R;
  for (size_t k = 0; k < 3; ++k) {
    p->R[k] = c * R[k] + s * R[3 + k];
    p->R[3 + k] = -s * R[k] + c * R[3 + k];
  }
  p->dLogScale = dCount > 0.0 ? dLogs / dCount : 0.0;
  return true;
}

double LineModel::Cost(const LineState& state) const {
  double dSum = 0.0;
  for (const Line& line : lines) {
    for (const bool bLength : {false, true}) {
      if (bLength ? !(line.dLength > 0.0) : line.iGroup < 0) continue;
      const Row row = RowOf(state, {&line, bLength});
      double dSquares = 0.0;
      for (const double b : row.b) dSquares += b * b;
      dSum += row.w * row.w / dSquares;
    }
  }
  return std::isfinite(dSum) ? dSum : std::numeric_limits<double>::infinity();
}

void LineModel::Move(const std::vector<double>& step, LineState* p) const {
  double adTurn[3] = {};
  size_t uAngle = 0;
  for (size_t i = 0; i < m_unknowns.size(); ++i) {
    if (m_unknowns[i] <= eTurnZ) adTurn[m_unknowns[i]] = step[i];
    if (m_unknowns[i] == eC) p->c += step[i];
    if (m_unknowns[i] == eAngle) p->angles[++uAngle] += step[i];
    if (m_unknowns[i] == eScale) p->dLogScale += step[i];
  }
  // exp[w] R, by the transpose R' exp[-w].
  Pose turned;
  for (size_t i = 0; i < 9; ++i) turned.R[i] = p->R[3 * (i % 3) + i / 3];
  const double adStep[kPose] = {-adTurn[0], -adTurn[1], -adTurn[2], 0.0, 0.0, 0.0};
  MovePose(adStep, &turned);
  for (size_t i = 0; i < 9; ++i) p->R[i] = turned.R[3 * (i % 3) + i / 3];
}

LineFitResult LineModel::Adjust(LineState* p) const {
  LineFitResult result;
  const size_t n = m_conditions.size(), u = m_unknowns.size();
  for (int iStep = 0; iStep < kSteps; ++iStep) {
    std::vector<Row> rows;
    for (const Condition& condition : m_conditions) rows.push_back(RowOf(*p, condition));
    const std::vector<double> M = Product(rows);
    DenseCholesky weights;
    weights.SetZero(static_cast<int>(n));
    std::vector<double> w(n);
    for (size_t i = 0; i < n; ++i) {
      for (size_t k = 0; k <= i; ++k) {
        weights.At(static_cast<int>(i), static_cast<int>(k)) = M[i * n + k];
      }
      const Line& line = *m_conditions[i].pLine;
      w[i] = rows[i].w;  // as it would be without the moves
      for (size_t k = 0; k < 2; ++k) {
        w[i] -= rows[i].b[k] * p->moves[2 * line.uFirst + k] +
                rows[i].b[2 + k] * p->moves[2 * line.uSecond + k];
      }
    }
    if (!weights.Factorise()) return result;
    std::vector<std::vector<double>> columns(u, std::vector<double>(n));  // M^-1 A
    for (size_t k = 0; k < u; ++k) {
      for (size_t i = 0; i < n; ++i) columns[k][i] = rows[i].a[k];
      weights.Solve(columns[k].data());
    }
    std::vector<double> N(u * u), scaled(u * u), values(u), vectors(u * u), step(u);
    for (size_t i = 0; i < u; ++i) {
      for (size_t k = 0; k < u; ++k) {
        for (size_t j = 0; j < n; ++j) N[i * u + k] += rows[j].a[i] * columns[k][j];
      }
    }
    for (size_t i = 0; i < u; ++i) {
      if (!std::isfinite(N[i * u + i])) return result;
      if (!(N[i * u + i] > 0.0)) {  // in no condition
        result.dLeastEigenvalue = 0.0;
        result.direction.assign(u, 0.0);
        result.direction[i] = 1.0;
        return result;
      }
      for (size_t k = 0; k < u; ++k) {
        scaled[i * u + k] = N[i * u + k] / std::sqrt(N[i * u + i] * N[k * u + k]);
      }
    }
    SymmetricEigen(static_cast<int>(u), scaled.data(), values.data(), vectors.data());
    result.dLeastEigenvalue = values[0];
    result.direction.resize(u);
    for (size_t i = 0; i < u; ++i) result.direction[i] = vectors[i * u];
    // Solved by the eigenvectors, those that are not decided left out.
    result.cofactors.assign(u * u, 0.0);
    for (size_t e = 0; e < u; ++e) {
      if (!(values[e] > 1e-12)) continue;
      for (size_t i = 0; i < u; ++i) {
        for (size_t k = 0; k < u; ++k) {
          result.cofactors[i * u + k] += vectors[i * u + e] * vectors[k * u + e] / values[e] /
                                         std::sqrt(N[i * u + i] * N[k * u + k]);
        }
      }
    }
    for (size_t i = 0; i < u; ++i) {
      for (size_t k = 0; k < u; ++k) {
        double h = 0.0;
        for (size_t j = 0; j < n; ++j) h += columns[k][j] * w[j];
        step[i] -= result.cofactors[i * u + k] * h;
      }
    }
    std::vector<double> correlates(n);
    for (size_t i = 0; i < n; ++i) {
      correlates[i] = -w[i];
      for (size_t k = 0; k < u; ++k) correlates[i] -= rows[i].a[k] * step[k];
    }
    weights.Solve(correlates.data());
    std::vector<double> moves(p->moves.size());
    for (size_t i = 0; i < n; ++i) {
      const Line& line = *m_conditions[i].pLine;
      for (size_t k = 0; k < 2; ++k) {
        moves[2 * line.uFirst + k] += rows[i].b[k] * correlates[i];
        moves[2 * line.uSecond + k] += rows[i].b[2 + k] * correlates[i];
      }
    }
    const LineState last = *p;
    double dShare = 1.0, dLargest = 0.0;
    for (int k = 0;; ++k, dShare *= 0.5) {
      if (k == kHalvings) return result;
      std::vector<double> part = step;
      for (double& d : part) d *= dShare;
      *p = last;
      Move(part, p);
      for (size_t i = 0; i < moves.size(); ++i) p->moves[i] += dShare * (moves[i] - p->moves[i]);
      if (IsBefore(*p)) break;
    }
    for (size_t i = 0; i < u; ++i) {
      dLargest = std::max(dLargest, std::fabs(step[i]) / (m_unknowns[i] == eC ? p->c : 1.0));
    }
    if (!std::isfinite(dLargest)) return result;
    if (dShare == 1.0 && dLargest < kEnd) {
      result.bGood = true;
      result.dSquares = 0.0;
      for (const double d : p->moves) result.dSquares += d * d;
      return result;
    }
  }
  return result;
}

}  // namespace zu::internal
