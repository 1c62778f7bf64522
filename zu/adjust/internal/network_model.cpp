#include "zu/adjust/internal/network_model.h"

#include <algorithm>
#include <cmath>

#include "zu/adjust/internal/camera_parameter.h"
#include "zu/photo/internal/camera_measured.h"

namespace zu::internal {

namespace {

Vec3 Minus(const Vec3& a, const Vec3& b) { return {a[0] - b[0], a[1] - b[1], a[2] - b[2]}; }
double Dot(const Vec3& a, const Vec3& b) { return a[0] * b[0] + a[1] * b[1] + a[2] * b[2]; }
Vec3 Cross(const Vec3& a, const Vec3& b) {
  return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}
double Length(const Vec3& a) { return std::sqrt(Dot(a, a)); }
Vec3 Unit(const Vec3& a) {
  const double d = 1.0 / Length(a);
  return {a[0] * d, a[1] * d, a[2] * d};
}
// R' v.
Vec3 Back(const std::array<double, 9>& r, const Vec3& v) {
  return {r[0] * v[0] + r[3] * v[1] + r[6] * v[2], r[1] * v[0] + r[4] * v[1] + r[7] * v[2],
          r[2] * v[0] + r[5] * v[1] + r[8] * v[2]};
}

// Two directions in a plane of unit normal n.
void Tangents(const Vec3& n, Vec3* pU, Vec3* pV) {
  Vec3 axis{0.0, 0.0, 0.0};
  size_t k = 0;
  for (size_t i = 1; i < 3; ++i) {
    if (std::fabs(n[i]) < std::fabs(n[k])) k = i;
  }
  axis[k] = 1.0;
  *pU = Unit(Cross(n, axis));
  *pV = Cross(n, *pU);
}

// Divides a group's rows by L, lower triangular.
void Whiten(NetworkGroup* g) {
  for (int i = 0; i < g->m; ++i) {
    for (int k = 0; k <= i; ++k) {
      // The rows before are done; then the own one.
      const double f = k < i ? -g->l[i][k] : 1.0 / g->l[i][i];
      if (f == 0.0) continue;
      const auto take = [&](double own, double other) { return k < i ? own + f * other : own * f; };
      g->e[i] = take(g->e[i], g->e[k]);
      for (int n = 0; n < g->iParts; ++n) {
        NetworkGroup::Part& part = g->parts[n];
        for (int c = 0; c < part.n; ++c) part.j[i][c] = take(part.j[i][c], part.j[k][c]);
      }
      for (int c = 0; c < 3 && g->iPoint >= 0; ++c) g->p[i][c] = take(g->p[i][c], g->p[k][c]);
    }
  }
}

// L of a covariance that is positive definite; false where it is none.
bool SetCovariance(NetworkGroup* g, const double (*pQ)[3]) {
  for (int i = 0; i < g->m; ++i) {
    for (int k = 0; k <= i; ++k) {
      double s = pQ[i][k];
      for (int n = 0; n < k; ++n) s -= g->l[i][n] * g->l[k][n];
      if (i == k && !(s > 1e-14 * pQ[i][i])) return false;
      g->l[i][k] = i == k ? std::sqrt(s) : s / g->l[k][k];
    }
    for (int k = i + 1; k < 3; ++k) g->l[i][k] = 0.0;
  }
  return true;
}

void SetDeviations(NetworkGroup* g, const double* pSd) {
  for (int i = 0; i < 3; ++i) {
    for (int k = 0; k < 3; ++k) g->l[i][k] = 0.0;
    g->l[i][i] = i < g->m ? pSd[i] : 1.0;
  }
}

}  // namespace

std::array<double, 9> RotateBy(const std::array<double, 9>& r, const Vec3& w) {
  const double t = Length(w);
  // Rodrigues' formula; its factors by their series where the angle is small.
  const double a = t < 1e-4 ? 1.0 - t * t / 6.0 : std::sin(t) / t;
  const double b = t < 1e-4 ? 0.5 - t * t / 24.0 : (1.0 - std::cos(t)) / (t * t);
  const double k[9] = {0.0, -w[2], w[1], w[2], 0.0, -w[0], -w[1], w[0], 0.0};
  double e[9];
  for (int i = 0; i < 3; ++i) {
    for (int j = 0; j < 3; ++j) {
      double s = 0.0;
      for (int n = 0; n < 3; ++n) s += k[3 * i + n] * k[3 * n + j];
      e[3 * i + j] = (i == j ? 1.0 : 0.0) + a * k[3 * i + j] + b * s;
    }
  }
  std::array<double, 9> result{};
  for (size_t i = 0; i < 3; ++i) {
    for (size_t j = 0; j < 3; ++j) {
      for (size_t n = 0; n < 3; ++n) result[3 * i + j] += r[3 * i + n] * e[3 * n + j];
    }
  }
  // Rounding of many updates: rows made orthonormal again.
  Vec3 x = Unit({result[0], result[1], result[2]});
  Vec3 y{result[3], result[4], result[5]};
  const double d = Dot(x, y);
  y = Unit({y[0] - d * x[0], y[1] - d * x[1], y[2] - d * x[2]});
  const Vec3 z = Cross(x, y);
  return {x[0], x[1], x[2], y[0], y[1], y[2], z[0], z[1], z[2]};
}

bool NetworkModel::IsFree(int iPoint, int iAxis) const {
  const ZuNetworkPoint& point = m_network.points[Index(iPoint)];
  return (point.iControl >> iAxis & 1) == 0 || point.adGivenSd[Index(iAxis)] > 0.0;
}

int NetworkModel::FreeAxes(int iPoint) const {
  return IsFree(iPoint, 0) + IsFree(iPoint, 1) + IsFree(iPoint, 2);
}

int NetworkModel::Dimension(const NetworkObservation& observation) const {
  switch (observation.eKind) {
    case ZuNetworkKind::Image:
      return 2;
    case ZuNetworkKind::Control: {
      const ZuNetworkPoint& point = m_network.points[Index(observation.iIndex)];
      int n = 0;
      for (int k = 0; k < 3; ++k) n += (point.iControl >> k & 1) && IsFree(observation.iIndex, k);
      return n;
    }
    case ZuNetworkKind::Centre: {
      int n = 0;
      for (const double d : m_network.photos[Index(observation.iIndex)].adMeasuredSd) n += d > 0.0;
      return n;
    }
    default:
      return 1;
  }
}

void NetworkModel::AddPoint(int iPoint, int iRows, const double (*pJ)[3], NetworkGroup* g) const {
  if (m_bEliminated[Index(iPoint)]) {
    g->iPoint = iPoint;
    for (int i = 0; i < iRows; ++i) {
      for (int k = 0; k < 3; ++k) g->p[i][k] = IsFree(iPoint, k) ? pJ[i][k] : 0.0;
    }
    return;
  }
  NetworkGroup::Part& part = g->parts[g->iParts];
  part.iOffset = m_pointOffset[Index(iPoint)];
  part.n = 0;
  for (int k = 0; k < 3; ++k) {
    if (!IsFree(iPoint, k)) continue;
    for (int i = 0; i < iRows; ++i) part.j[i][part.n] = pJ[i][k];
    ++part.n;
  }
  if (part.n > 0) ++g->iParts;
}

bool NetworkModel::LineariseImage(int iIndex, const NetworkState& state, NetworkGroup* g) const {
  const ZuNetworkImagePoint& image = m_network.images[Index(iIndex)];
  const int iCamera = m_network.photos[Index(image.iPhoto)].iCamera;
  const ZuCamera& camera = state.cameras[Index(iCamera)];
  const NetworkState::Photo& photo = state.photos[Index(image.iPhoto)];
  const Vec3 v = Back(photo.r, Minus(state.points[Index(image.iPoint)], photo.x0));
  const double q = 1.0 / v[2], c = camera.m_dC;
  const double x = -c * v[0] * q, y = -c * v[1] * q;
  double mx, my;
  camera_measured::Derivative by;
  if (!std::isfinite(x) || !std::isfinite(y) ||
      !camera_measured::Measured(camera, x, y, &mx, &my, &by)) {
    return false;
  }

  g->m = 2;
  g->e[0] = mx - image.x;
  g->e[1] = my - image.y;
  const double l11 = std::sqrt(image.sxx), l21 = image.sxy / l11;
  g->l[0][0] = l11;
  g->l[0][1] = 0.0;
  g->l[1][0] = l21;
  g->l[1][1] = std::sqrt(image.syy - l21 * l21);

  double b[2][3];  // by the image vector
  for (int i = 0; i < 2; ++i) {
    b[i][0] = -c * q * by.point[i][0];
    b[i][1] = -c * q * by.point[i][1];
    b[i][2] = -(x * by.point[i][0] + y * by.point[i][1]) * q;
  }
  const std::vector<int>& parameters = m_parameters[Index(iCamera)];
  if (!parameters.empty()) {
    NetworkGroup::Part& part = g->parts[g->iParts++];
    part.iOffset = m_cameraOffset[Index(iCamera)];
    part.n = static_cast<int>(parameters.size());
    for (int i = 0; i < 2; ++i) {
      for (int k = 0; k < part.n; ++k) {
        part.j[i][k] = by.parameter[i][parameters[Index(k)]];
      }
    }
  }
  double byPoint[2][3];
  NetworkGroup::Part& part = g->parts[g->iParts++];
  part.iOffset = m_photoOffset[Index(image.iPhoto)];
  part.n = 6;
  for (int i = 0; i < 2; ++i) {
    for (size_t k = 0; k < 3; ++k) {
      byPoint[i][k] =
          b[i][0] * photo.r[3 * k] + b[i][1] * photo.r[3 * k + 1] + b[i][2] * photo.r[3 * k + 2];
      part.j[i][k] = -byPoint[i][k];
    }
    part.j[i][3] = b[i][1] * v[2] - b[i][2] * v[1];
    part.j[i][4] = b[i][2] * v[0] - b[i][0] * v[2];
    part.j[i][5] = b[i][0] * v[1] - b[i][1] * v[0];
  }
  AddPoint(image.iPoint, 2, byPoint, g);
  return true;
}

bool NetworkModel::Linearise(const NetworkObservation& observation, const NetworkState& state,
                             NetworkGroup* g) const {
  g->iParts = 0;
  g->iPoint = -1;
  const int i = observation.iIndex;
  switch (observation.eKind) {
    case ZuNetworkKind::Image:
      if (!LineariseImage(i, state, g)) return false;
      break;
    case ZuNetworkKind::Control: {
      const ZuNetworkPoint& point = m_network.points[Index(i)];
      double j[3][3] = {}, q[3][3] = {};
      int axes[3];
      g->m = 0;
      for (int k = 0; k < 3; ++k) {
        if (!(point.iControl >> k & 1) || !IsFree(i, k)) continue;
        const size_t u = Index(k);
        g->e[g->m] = state.points[Index(i)][u] - (point.adGiven[u] - m_centre[u]);
        for (int n = 0; n < g->m; ++n) q[g->m][n] = point.adGivenCovariance[Index(axes[n] + k - 1)];
        q[g->m][g->m] = point.adGivenSd[u] * point.adGivenSd[u];
        axes[g->m] = k;
        j[g->m++][k] = 1.0;
      }
      if (!SetCovariance(g, q)) return false;
      AddPoint(i, g->m, j, g);
      break;
    }
    case ZuNetworkKind::Centre: {
      const ZuNetworkPhoto& photo = m_network.photos[Index(i)];
      NetworkGroup::Part& part = g->parts[g->iParts++];
      part = {m_photoOffset[Index(i)], 6, {}};
      double sd[3];
      g->m = 0;
      for (size_t k = 0; k < 3; ++k) {
        if (!(photo.adMeasuredSd[k] > 0.0)) continue;
        g->e[g->m] = state.photos[Index(i)].x0[k] - (photo.adMeasured[k] - m_centre[k]);
        sd[g->m] = photo.adMeasuredSd[k];
        part.j[g->m++][k] = 1.0;
      }
      SetDeviations(g, sd);
      break;
    }
    case ZuNetworkKind::Distance: {
      const ZuNetworkDistance& distance = m_network.distances[Index(i)];
      const Vec3 d = Minus(state.points[Index(distance.iTo)], state.points[Index(distance.iFrom)]);
      const double dLength = Length(d);
      if (!(dLength > 0.0)) return false;
      g->m = 1;
      g->e[0] = dLength - distance.dDistance;
      SetDeviations(g, &distance.dSd);
      const double to[1][3] = {{d[0] / dLength, d[1] / dLength, d[2] / dLength}};
      const double from[1][3] = {{-to[0][0], -to[0][1], -to[0][2]}};
      AddPoint(distance.iFrom, 1, from, g);
      AddPoint(distance.iTo, 1, to, g);
      break;
    }
    case ZuNetworkKind::Difference: {
      const ZuNetworkDifference& difference = m_network.differences[Index(i)];
      const size_t k = Index(difference.iAxis);
      g->m = 1;
      g->e[0] = state.points[Index(difference.iTo)][k] - state.points[Index(difference.iFrom)][k] -
                difference.dDifference;
      SetDeviations(g, &difference.dSd);
      double to[1][3] = {}, from[1][3] = {};
      to[0][k] = 1.0;
      from[0][k] = -1.0;
      AddPoint(difference.iFrom, 1, from, g);
      AddPoint(difference.iTo, 1, to, g);
      break;
    }
    case ZuNetworkKind::Plane: {
      const NetworkState::Plane& plane = state.planes[Index(i)];
      const int iPoint = m_network.planes[Index(i)].points[Index(observation.iSub)];
      const Vec3& p = state.points[Index(iPoint)];
      Vec3 u, v;
      Tangents(plane.n, &u, &v);
      g->m = 1;
      g->e[0] = Dot(plane.n, p) - plane.d;
      SetDeviations(g, &m_network.planes[Index(i)].dSd);
      NetworkGroup::Part& part = g->parts[g->iParts++];
      part = {m_planeOffset[Index(i)], 3, {{Dot(u, p), Dot(v, p), -1.0}}};
      const double j[1][3] = {{plane.n[0], plane.n[1], plane.n[2]}};
      AddPoint(iPoint, 1, j, g);
      break;
    }
    case ZuNetworkKind::Parameter: {
      const ZuNetworkCamera& camera = m_network.cameras[Index(i)];
      g->m = 1;
      g->e[0] = ParameterValue(state.cameras[Index(i)], observation.iSub) -
                ParameterValue(camera.camera, observation.iSub);
      SetDeviations(g, &camera.adSd[Index(observation.iSub)]);
      NetworkGroup::Part& part = g->parts[g->iParts++];
      const std::vector<int>& parameters = m_parameters[Index(i)];
      part = {m_cameraOffset[Index(i)], static_cast<int>(parameters.size()), {}};
      for (int k = 0; k < part.n; ++k) {
        part.j[0][k] = parameters[Index(k)] == observation.iSub ? 1.0 : 0.0;
      }
      break;
    }
  }
  Whiten(g);
  return true;
}

double NetworkModel::Cost(const NetworkState& state) const {
  double dSum = 0.0;
  NetworkGroup group;
  for (const NetworkObservation& observation : m_observations) {
    if (!observation.bUsed) continue;
    if (!Linearise(observation, state, &group)) return std::numeric_limits<double>::infinity();
    for (int i = 0; i < group.m; ++i) dSum += group.e[i] * group.e[i];
  }
  return std::isfinite(dSum) ? dSum : std::numeric_limits<double>::infinity();
}

std::vector<int> NetworkModel::RaysOf(int iPoint) const {
  std::vector<int> photos;
  const auto add = [&](const NetworkObservation& o) {
    if (!o.bUsed || o.eKind != ZuNetworkKind::Image) return;
    const ZuNetworkImagePoint& image = m_network.images[Index(o.iIndex)];
    if (image.iPoint == iPoint) photos.push_back(image.iPhoto);
  };
  const bool bEliminated = IsEliminated(iPoint);
  for (const int i : bEliminated ? OfPoint(iPoint) : m_others) add(m_observations[Index(i)]);
  return photos;
}

int NetworkModel::CountObservations() const {
  int n = 0;
  for (const NetworkObservation& observation : m_observations) {
    if (observation.bUsed) n += Dimension(observation);
  }
  return n;
}

int NetworkModel::CountUnknowns() const {
  int n = m_iReduced;
  for (size_t i = 0; i < m_bEliminated.size(); ++i) {
    if (m_bEliminated[i]) n += FreeAxes(static_cast<int>(i));
  }
  return n;
}

// --- Motions of the whole network ---------------------------------------------------------------

void NetworkModel::PointMotion(const NetworkState& state, int iPoint,
                               double (*pRows)[kGenerators]) const {
  const Vec3& p = state.points[Index(iPoint)];
  const double rows[3][kGenerators] = {{m_dSize, 0.0, 0.0, 0.0, p[2], -p[1], p[0]},
                                       {0.0, m_dSize, 0.0, -p[2], 0.0, p[0], p[1]},
                                       {0.0, 0.0, m_dSize, p[1], -p[0], 0.0, p[2]}};
  for (int i = 0; i < 3; ++i) {
    for (int k = 0; k < kGenerators; ++k) pRows[i][k] = IsFree(iPoint, i) ? rows[i][k] : 0.0;
  }
}

std::vector<std::array<double, NetworkModel::kGenerators>> NetworkModel::ReducedMotion(
    const NetworkState& state) const {
  std::vector<std::array<double, kGenerators>> rows(Index(m_iReduced));
  for (size_t i = 0; i < state.photos.size(); ++i) {
    if (m_photoOffset[i] < 0) continue;
    auto* pRows = &rows[Index(m_photoOffset[i])];
    const Vec3& x = state.photos[i].x0;
    const auto& r = state.photos[i].r;
    pRows[0] = {m_dSize, 0.0, 0.0, 0.0, x[2], -x[1], x[0]};
    pRows[1] = {0.0, m_dSize, 0.0, -x[2], 0.0, x[0], x[1]};
    pRows[2] = {0.0, 0.0, m_dSize, x[1], -x[0], 0.0, x[2]};
    for (size_t k = 0; k < 3; ++k) pRows[3 + k] = {0.0, 0.0, 0.0, r[k], r[3 + k], r[6 + k], 0.0};
  }
  for (size_t i = 0; i < state.planes.size(); ++i) {
    if (m_planeOffset[i] < 0) continue;
    auto* pRows = &rows[Index(m_planeOffset[i])];
    const Vec3& n = state.planes[i].n;
    Vec3 u, v;
    Tangents(n, &u, &v);
    // The normal turns by omega x n.
    const Vec3 a = Cross(n, u), b = Cross(n, v);
    pRows[0] = {0.0, 0.0, 0.0, a[0], a[1], a[2], 0.0};
    pRows[1] = {0.0, 0.0, 0.0, b[0], b[1], b[2], 0.0};
    pRows[2] = {m_dSize * n[0], m_dSize * n[1], m_dSize * n[2], 0.0, 0.0, 0.0, state.planes[i].d};
  }
  for (size_t i = 0; i < state.points.size(); ++i) {
    if (m_pointOffset[i] < 0) continue;
    double point[3][kGenerators];
    PointMotion(state, static_cast<int>(i), point);
    int iRow = m_pointOffset[i];
    for (int k = 0; k < 3; ++k) {
      if (IsFree(static_cast<int>(i), k)) {
        std::copy(point[k], point[k] + kGenerators, rows[Index(iRow++)].begin());
      }
    }
  }
  return rows;
}

namespace {

using Resisting = std::array<double, NetworkModel::kGenerators * NetworkModel::kGenerators>;

void AddResistance(const double* pRow, double dSize, Resisting* pSum) {
  constexpr size_t n = NetworkModel::kGenerators;
  for (size_t i = 0; i < n; ++i) {
    for (size_t k = 0; k < n; ++k) (*pSum)[n * i + k] += pRow[i] * pRow[k] / (dSize * dSize);
  }
}

}  // namespace

Resisting NetworkModel::FixedResistance(const NetworkState& state) const {
  Resisting sum{};
  for (size_t i = 0; i < state.points.size(); ++i) {
    if (!m_bPointUsed[i]) continue;
    const Vec3& p = state.points[i];
    const double rows[3][kGenerators] = {{m_dSize, 0.0, 0.0, 0.0, p[2], -p[1], p[0]},
                                         {0.0, m_dSize, 0.0, -p[2], 0.0, p[0], p[1]},
                                         {0.0, 0.0, m_dSize, p[1], -p[0], 0.0, p[2]}};
    for (int k = 0; k < 3; ++k) {
      if (!IsFree(static_cast<int>(i), k)) AddResistance(rows[k], m_dSize, &sum);
    }
  }
  return sum;
}

Resisting NetworkModel::Resistance(const NetworkState& state) const {
  Resisting sum = FixedResistance(state);
  const auto motion = ReducedMotion(state);
  NetworkGroup g;
  for (const NetworkObservation& observation : m_observations) {
    if (!observation.bUsed || observation.eKind == ZuNetworkKind::Image ||
        observation.eKind == ZuNetworkKind::Plane ||
        observation.eKind == ZuNetworkKind::Parameter || !Linearise(observation, state, &g)) {
      continue;
    }
    for (int i = 0; i < g.m; ++i) {
      double row[kGenerators] = {};
      for (int n = 0; n < g.iParts; ++n) {
        for (int c = 0; c < g.parts[n].n; ++c) {
          for (int k = 0; k < kGenerators; ++k) {
            row[k] += g.parts[n].j[i][c] * motion[Index(g.parts[n].iOffset + c)][Index(k)];
          }
        }
      }
      if (g.iPoint >= 0) {
        double point[3][kGenerators];
        PointMotion(state, g.iPoint, point);
        for (int c = 0; c < 3; ++c) {
          for (int k = 0; k < kGenerators; ++k) row[k] += g.p[i][c] * point[c][k];
        }
      }
      for (double& d : row) d *= g.l[i][i];  // in lengths again
      AddResistance(row, m_dSize, &sum);
    }
  }
  return sum;
}

void NetworkModel::Move(const double* t, NetworkState* pState) const {
  const Vec3 w{t[3], t[4], t[5]};
  const auto turn = RotateBy({1, 0, 0, 0, 1, 0, 0, 0, 1}, w);
  const double dScale = 1.0 + t[6];
  const auto moved = [&](const Vec3& p) {
    Vec3 q{};
    for (size_t i = 0; i < 3; ++i) {
      q[i] = dScale * (turn[3 * i] * p[0] + turn[3 * i + 1] * p[1] + turn[3 * i + 2] * p[2]) +
             m_dSize * t[i];
    }
    return q;
  };
  for (NetworkState::Photo& photo : pState->photos) {
    photo.x0 = moved(photo.x0);
    photo.r = RotateBy(photo.r, Back(photo.r, w));  // exp[w] R = R exp[R' w]
  }
  for (NetworkState::Plane& plane : pState->planes) {
    Vec3 foot = moved({plane.n[0] * plane.d, plane.n[1] * plane.d, plane.n[2] * plane.d});
    Vec3 n{};
    for (size_t i = 0; i < 3; ++i) {
      n[i] = turn[3 * i] * plane.n[0] + turn[3 * i + 1] * plane.n[1] + turn[3 * i + 2] * plane.n[2];
    }
    plane.n = Unit(n);
    plane.d = Dot(plane.n, foot);
  }
  for (size_t i = 0; i < pState->points.size(); ++i) {
    const Vec3 p = moved(pState->points[i]);
    for (int k = 0; k < 3; ++k) {
      if (IsFree(static_cast<int>(i), k)) pState->points[i][Index(k)] = p[Index(k)];
    }
  }
}

void NetworkModel::Add(const std::vector<double>& reduced, const std::vector<Vec3>& points,
                       NetworkState* pState) const {
  for (size_t i = 0; i < pState->cameras.size(); ++i) {
    for (size_t k = 0; k < m_parameters[i].size(); ++k) {
      ParameterValue(pState->cameras[i], m_parameters[i][k]) +=
          reduced[Index(m_cameraOffset[i]) + k];
    }
  }
  for (size_t i = 0; i < pState->photos.size(); ++i) {
    if (m_photoOffset[i] < 0) continue;
    const double* p = &reduced[Index(m_photoOffset[i])];
    for (size_t k = 0; k < 3; ++k) pState->photos[i].x0[k] += p[k];
    pState->photos[i].r = RotateBy(pState->photos[i].r, {p[3], p[4], p[5]});
  }
  for (size_t i = 0; i < pState->planes.size(); ++i) {
    if (m_planeOffset[i] < 0) continue;
    const double* p = &reduced[Index(m_planeOffset[i])];
    NetworkState::Plane& plane = pState->planes[i];
    Vec3 u, v;
    Tangents(plane.n, &u, &v);
    for (size_t k = 0; k < 3; ++k) plane.n[k] += p[0] * u[k] + p[1] * v[k];
    plane.n = Unit(plane.n);
    plane.d += p[2];
  }
  for (size_t i = 0; i < pState->points.size(); ++i) {
    int iRow = m_pointOffset[i];
    for (int k = 0; k < 3; ++k) {
      if (!IsFree(static_cast<int>(i), k)) continue;
      if (m_bEliminated[i]) {
        pState->points[i][Index(k)] += points[i][Index(k)];
      } else if (iRow >= 0) {
        pState->points[i][Index(k)] += reduced[Index(iRow++)];
      }
    }
  }
}

std::string NetworkModel::Name(const NetworkObservation& observation) const {
  const auto id = [this](int i) { return std::to_string(m_network.points[Index(i)].uId); };
  const int i = observation.iIndex;
  switch (observation.eKind) {
    case ZuNetworkKind::Image: {
      const ZuNetworkImagePoint& image = m_network.images[Index(i)];
      return "photo " + std::to_string(m_network.photos[Index(image.iPhoto)].uId) + ", point " +
             id(image.iPoint);
    }
    case ZuNetworkKind::Control:
      return "control point " + id(i);
    case ZuNetworkKind::Centre:
      return "the measured centre of photo " + std::to_string(m_network.photos[Index(i)].uId);
    case ZuNetworkKind::Distance:
      return "the distance of points " + id(m_network.distances[Index(i)].iFrom) + " and " +
             id(m_network.distances[Index(i)].iTo);
    case ZuNetworkKind::Difference:
      return "the difference of points " + id(m_network.differences[Index(i)].iFrom) + " and " +
             id(m_network.differences[Index(i)].iTo);
    case ZuNetworkKind::Plane:
      return "point " + id(m_network.planes[Index(i)].points[Index(observation.iSub)]) +
             " of plane " + std::to_string(i + 1);
    case ZuNetworkKind::Parameter:
      return std::string("parameter ") + ZuNetworkParameterName(observation.iSub) + " of camera " +
             std::to_string(m_network.cameras[Index(i)].camera.GetId());
  }
  return {};
}

}  // namespace zu::internal
