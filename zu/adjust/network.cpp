#include "zu/adjust/network.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <tuple>

#include "zu/adjust/internal/camera_parameter.h"
#include "zu/adjust/internal/network_covariance.h"
#include "zu/adjust/internal/network_solver.h"
#include "zu/adjust/internal/network_statistics.h"
#include "zu/adjust/internal/rotation_angles.h"
#include "zu/adjust/internal/snooping.h"

using zu::internal::NetworkFreedom;
using zu::internal::NetworkLimits;
using zu::internal::NetworkModel;
using zu::internal::NetworkNormals;
using zu::internal::NetworkObservation;
using zu::internal::NetworkSolver;
using zu::internal::NetworkState;
using zu::internal::Vec3;

namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kHighCorrelation = 0.95;
constexpr double kSmallAngle = 0.035;  // of the rays of a point: 2 degrees [rad]

size_t Index(int i) { return static_cast<size_t>(i); }

std::string Percent(double d) {
  const int i = static_cast<int>(std::lround(std::fabs(d) * 1000.0));
  return (d < 0.0 ? "-0." : "0.") + std::to_string(1000 + std::min(i, 999)).substr(1);
}

// One network on its way from start values to the result.
class Adjustment {
 public:
  Adjustment(const ZuNetwork& network, const ZuNetworkOptions& options)
      : m_options(options), m_pCovariance(std::make_shared<ZuNetworkCovariance>(network)) {}

  ZuNetworkResult Run() {
    while (!Solve()) {
    }
    if (m_result.status == ZuAdjustStatus::Good) Finish();
    return std::move(m_result);
  }

 private:
  NetworkModel& Model() { return *m_pCovariance->m_pModel; }

  // False: a point was left out that its rays don't decide, and all starts anew.
  bool Solve() {
    m_result = {};
    m_pCovariance->m_pModel = std::make_unique<NetworkModel>(
        m_pCovariance->m_network, m_undecided, m_options.eDatum == ZuNetworkDatum::Inner);
    m_result.warnings = Model().Warnings();
    if (!Model().Fault().empty()) {
      m_result.status = ZuAdjustStatus::NotFinite;
      m_result.strText = Model().Fault();
      return true;
    }
    m_pCovariance->m_pNormals = std::make_unique<NetworkNormals>(Model());
    m_pCovariance->m_state = Model().Start();
    if (m_options.test.bSnoop && m_options.bStatistics) {
      Snoop();
    } else {
      AdjustOnce();
    }
    if (m_result.status != ZuAdjustStatus::Good && m_iUndecided >= 0 &&
        std::find(m_undecided.begin(), m_undecided.end(), m_iUndecided) == m_undecided.end()) {
      m_undecided.push_back(m_iUndecided);
      return false;
    }
    return true;
  }

  // With the flags of the observations as they are, from the last good state.
  bool AdjustOnce() {
    NetworkState state = m_pCovariance->m_state;
    NetworkSolver solver(Model(), m_options, m_pCovariance->m_pNormals.get());
    m_result.status = solver.Run(&state);
    m_result.strText = solver.Text();
    m_result.iSteps += solver.Steps();
    m_result.dLeastEigenvalue = solver.LeastEigenvalue();
    m_iUndecided = solver.UndecidedPoint();
    if (m_result.status != ZuAdjustStatus::Good) return false;
    m_pCovariance->m_state = std::move(state);
    m_freedom = solver.Freedom();
    if (!m_pCovariance->Prepare(m_freedom, m_options.bStatistics)) {
      m_result.status = ZuAdjustStatus::RankDefect;
      m_result.strText =
          "the datum points decide no frame: three or more that are not on one line are needed";
      return false;
    }
    m_result.strText.clear();
    m_result.iObservations = Model().CountObservations();
    m_result.iUnknowns = Model().CountUnknowns();
    m_result.iDefect = m_freedom.k;
    m_result.iRedundancy = m_result.iObservations - m_result.iUnknowns + m_freedom.k;
    const double dCost = Model().Cost(m_pCovariance->m_state);
    m_result.dSigma0 = m_result.iRedundancy > 0 ? std::sqrt(dCost / m_result.iRedundancy) : 1.0;
    m_result.sigmaKind =
        m_result.iRedundancy <= 0 || m_options.test.sigmaKind == ZuSigmaKind::APriori
            ? ZuSigmaKind::APriori
            : ZuSigmaKind::APosteriori;
    return true;
  }

  double Sigma() const {
    return m_result.sigmaKind == ZuSigmaKind::APriori ? 1.0 : m_result.dSigma0;
  }

  NetworkLimits Limits(size_t uTests) const {
    return {m_options.test, m_result.sigmaKind == ZuSigmaKind::APriori, static_cast<int>(uTests),
            m_result.iRedundancy};
  }

  // Groups in an order of ids, so that the files' order changes nothing.
  std::vector<int> GroupsById() {
    const ZuNetwork& network = m_pCovariance->m_network;
    std::vector<std::tuple<int, unsigned, unsigned, int>> keys;
    const auto& observations = Model().Observations();
    for (size_t i = 0; i < observations.size(); ++i) {
      const NetworkObservation& o = observations[i];
      unsigned a = 0, b = 0;
      const auto id = [&](int iPoint) { return network.points[Index(iPoint)].uId; };
      switch (o.eKind) {
        case ZuNetworkKind::Image:
          a = network.photos[Index(network.images[Index(o.iIndex)].iPhoto)].uId;
          b = id(network.images[Index(o.iIndex)].iPoint);
          break;
        case ZuNetworkKind::Control:
          a = id(o.iIndex);
          break;
        case ZuNetworkKind::Centre:
          a = network.photos[Index(o.iIndex)].uId;
          break;
        case ZuNetworkKind::Distance:
          a = id(network.distances[Index(o.iIndex)].iFrom);
          b = id(network.distances[Index(o.iIndex)].iTo);
          break;
        case ZuNetworkKind::Difference:
          a = id(network.differences[Index(o.iIndex)].iFrom);
          b = id(network.differences[Index(o.iIndex)].iTo);
          break;
        case ZuNetworkKind::Plane:
          a = static_cast<unsigned>(o.iIndex);
          b = id(network.planes[Index(o.iIndex)].points[Index(o.iSub)]);
          break;
        case ZuNetworkKind::Parameter:
          continue;  // a start value that does not fit is told by its test alone
      }
      keys.emplace_back(static_cast<int>(o.eKind), a, b, static_cast<int>(i));
    }
    std::sort(keys.begin(), keys.end());
    std::vector<int> groups;
    for (const auto& key : keys) groups.push_back(std::get<3>(key));
    return groups;
  }

  // Places in a list of observations, those of a point one after the other.
  std::vector<size_t> OrderByPoint(const std::vector<int>& groups) {
    std::vector<size_t> order(groups.size());
    std::iota(order.begin(), order.end(), size_t{0});
    const auto point = [&](size_t i) { return Model().Observations()[Index(groups[i])].iPoint; };
    std::stable_sort(order.begin(), order.end(),
                     [&](size_t a, size_t b) { return point(a) < point(b); });
    return order;
  }

  void Snoop() {
    const std::vector<int> groups = GroupsById();
    std::vector<ZuNetworkTest> tests(groups.size());
    const std::vector<size_t> byPoint = OrderByPoint(groups);
    const zu::internal::SnoopAdjust adjust = [&](const std::vector<char>& used,
                                                 std::vector<zu::internal::SnoopTest>* pTests,
                                                 int* piRedundancy) {
      for (size_t i = 0; i < groups.size(); ++i) {
        Model().Observations()[Index(groups[i])].bUsed = used[i] != 0;
      }
      if (!AdjustOnce()) return false;
      *piRedundancy = m_result.iRedundancy;
      const NetworkLimits limits = Limits(groups.size());
      ZuNetworkCovariance::Tied tied;
      for (const size_t i : byPoint) {
        const NetworkObservation& o = Model().Observations()[Index(groups[i])];
        if (TestObservation(*m_pCovariance, o, limits, Sigma(), m_options.test.dLeastRedundancy,
                            &tied, &tests[i])) {
          (*pTests)[i] = {tests[i].dTest, tests[i].dLimit};
        } else {
          (*pTests)[i] = {0.0, std::numeric_limits<double>::infinity()};
        }
      }
      return true;
    };
    const auto result = zu::internal::Snoop(static_cast<int>(groups.size()), adjust);
    if (!result.bGood) return;
    if (result.bLimited) {
      m_result.warnings.push_back(
          "an observation beyond its limit was kept, since the rest would not decide the network");
    }
    for (const zu::internal::SetAside& aside : result.setAside) {
      const NetworkObservation& o = Model().Observations()[Index(groups[Index(aside.iGroup)])];
      ZuNetworkSetAside out;
      out.eKind = o.eKind;
      out.iIndex = o.iIndex;
      out.dTest = aside.dTest;
      out.dLimit = aside.dLimit;
      const ZuNetworkTest& test = tests[Index(aside.iGroup)];
      for (int k = 0; k < test.n; ++k) out.adError[k] = -test.adV[k];
      m_result.setAside.push_back(out);
    }
  }

  void Finish() {
    const ZuNetwork& network = m_pCovariance->m_network;
    const NetworkState& state = m_pCovariance->m_state;
    const Vec3& centre = Model().Centre();
    m_result.cameras = state.cameras;
    m_result.photos = network.photos;
    for (size_t i = 0; i < network.photos.size(); ++i) {
      m_result.photos[i].adRotation = state.photos[i].r;
      for (size_t k = 0; k < 3; ++k) {
        m_result.photos[i].adPosition[k] = state.photos[i].x0[k] + centre[k];
      }
      m_result.photoUsed.push_back(Model().IsPhotoUsed(static_cast<int>(i)));
    }
    for (size_t i = 0; i < network.points.size(); ++i) {
      Vec3 p = state.points[i];
      for (size_t k = 0; k < 3; ++k) {
        const int iPoint = static_cast<int>(i), iAxis = static_cast<int>(k);
        p[k] = Model().IsFree(iPoint, iAxis) ? p[k] + centre[k] : network.points[i].adGiven[k];
      }
      m_result.points.push_back(p);
      m_result.pointUsed.push_back(Model().IsPointUsed(static_cast<int>(i)));
    }
    m_result.pointRays.assign(network.points.size(), 0);
    for (const NetworkObservation& o : Model().Observations()) {
      if (o.bUsed && o.eKind == ZuNetworkKind::Image) {
        ++m_result.pointRays[Index(network.images[Index(o.iIndex)].iPoint)];
      }
    }
    WarnOfPoints();
    Angles();
    if (m_options.bStatistics) {
      m_pCovariance->m_dVariance = Sigma() * Sigma();
      m_result.pCovariance = m_pCovariance;
      Deviations();
      Tests();
      WarnOfCameras();
    }
    CheckFinite();
  }

  void WarnOfPoints() {
    const ZuNetwork& network = m_pCovariance->m_network;
    for (const int i : m_undecided) {
      m_result.warnings.push_back("point " + std::to_string(network.points[Index(i)].uId) +
                                  ": its rays are parallel, left out");
    }
    const NetworkState& state = m_pCovariance->m_state;
    for (size_t i = 0; i < network.points.size(); ++i) {
      if (!m_result.pointUsed[i] || Model().FreeAxes(static_cast<int>(i)) < 3) continue;
      if (network.points[i].iControl == 7) continue;
      std::vector<Vec3> rays;
      for (const int k : Model().RaysOf(static_cast<int>(i))) {
        const Vec3& x0 = state.photos[Index(k)].x0;
        Vec3 d{state.points[i][0] - x0[0], state.points[i][1] - x0[1], state.points[i][2] - x0[2]};
        const double dLength = std::sqrt(d[0] * d[0] + d[1] * d[1] + d[2] * d[2]);
        for (double& c : d) c /= dLength;
        rays.push_back(d);
      }
      double dWidest = 0.0;
      for (size_t a = 0; a < rays.size() && dWidest < kSmallAngle; ++a) {
        for (size_t b = 0; b < a; ++b) {
          const double x = rays[a][1] * rays[b][2] - rays[a][2] * rays[b][1];
          const double y = rays[a][2] * rays[b][0] - rays[a][0] * rays[b][2];
          const double z = rays[a][0] * rays[b][1] - rays[a][1] * rays[b][0];
          dWidest = std::max(dWidest, std::sqrt(x * x + y * y + z * z));
        }
      }
      if (dWidest < kSmallAngle) {
        m_result.warnings.push_back("point " + std::to_string(network.points[i].uId) +
                                    ": its rays meet at less than 2 degrees");
      }
    }
  }

  void Angles() {
    for (const NetworkState::Photo& photo : m_pCovariance->m_state.photos) {
      m_result.photoAngles.push_back(zu::internal::AnglesOf(photo.r));
    }
  }

  double Sd(const ZuNetworkUnknown& unknown) const {
    ZuNetworkCovariance::Row row{};
    bool bMissing = false;
    if (!m_pCovariance->Find(unknown, &row, &bMissing)) return bMissing ? kNaN : 0.0;
    return Sigma() * std::sqrt(m_pCovariance->Cofactor(row, row));
  }

  void Deviations() {
    const ZuNetwork& network = m_pCovariance->m_network;
    const auto count = [](size_t u) { return static_cast<int>(u); };
    for (int i = 0; i < count(network.cameras.size()); ++i) {
      auto& sd = m_result.cameraSd.emplace_back();
      for (int k = 0; k < ZuNetworkParameters; ++k) {
        sd[Index(k)] = Sd({ZuNetworkUnknown::Camera, i, k});
      }
    }
    for (int i = 0; i < count(network.photos.size()); ++i) {
      auto& sd = m_result.photoSd.emplace_back();
      for (int k = 0; k < 6; ++k) sd[Index(k)] = Sd({ZuNetworkUnknown::Photo, i, k});
      m_result.photoAnglesSd.push_back(AnglesSd(i));
    }
    for (int i = 0; i < count(network.points.size()); ++i) {
      m_result.pointCovariance.push_back(PointCovariance(i));
    }
  }

  // By the derivatives of a, b, c with respect to the small rotation.
  std::array<double, 3> AnglesSd(int iPhoto) const {
    if (!m_pCovariance->m_pModel->IsPhotoUsed(iPhoto)) return {kNaN, kNaN, kNaN};
    std::array<double, 9> j{};
    const bool bSloped =
        zu::internal::AngleSlope(m_pCovariance->m_state.photos[Index(iPhoto)].r, &j);
    const int iOffset = m_pCovariance->m_pModel->PhotoOffset(iPhoto) + 3;
    std::array<double, 3> sd{};
    for (size_t k = 0; k < 3; ++k) {
      double q = 0.0;
      for (int a = 0; a < 3; ++a) {
        for (int b = 0; b < 3; ++b) {
          q += j[3 * k + Index(a)] * j[3 * k + Index(b)] *
               m_pCovariance->Cofactor({-1, iOffset + a}, {-1, iOffset + b});
        }
      }
      sd[k] = bSloped ? Sigma() * std::sqrt(q) : kNaN;
    }
    return sd;
  }

  std::array<double, 6> PointCovariance(int iPoint) const {
    const double s2 = Sigma() * Sigma();
    if (!m_pCovariance->m_pModel->IsPointUsed(iPoint)) {
      return {kNaN, kNaN, kNaN, kNaN, kNaN, kNaN};
    }
    double q[9] = {};
    if (m_pCovariance->m_pModel->IsEliminated(iPoint)) {
      m_pCovariance->PointCofactor(iPoint, q);
    } else {
      for (int a = 0; a < 3; ++a) {
        for (int b = 0; b < 3; ++b) {
          ZuNetworkCovariance::Row u{}, v{};
          bool bMissing = false;
          if (m_pCovariance->Find({ZuNetworkUnknown::Point, iPoint, a}, &u, &bMissing) &&
              m_pCovariance->Find({ZuNetworkUnknown::Point, iPoint, b}, &v, &bMissing)) {
            q[3 * a + b] = m_pCovariance->Cofactor(u, v);
          }
        }
      }
    }
    return {s2 * q[0], s2 * q[4], s2 * q[8], s2 * q[1], s2 * q[2], s2 * q[5]};
  }

  void Tests() {
    const ZuNetwork& network = m_pCovariance->m_network;
    const NetworkLimits limits = Limits(GroupsById().size());
    ZuNetworkTest none;
    none.bUsed = false;
    m_result.imageTests.assign(network.images.size(), none);
    m_result.controlTests.assign(network.points.size(), none);
    m_result.centreTests.assign(network.photos.size(), none);
    m_result.distanceTests.assign(network.distances.size(), none);
    m_result.differenceTests.assign(network.differences.size(), none);
    for (const ZuNetworkPlane& plane : network.planes) {
      m_result.planeTests.emplace_back(plane.points.size(), none);
    }
    std::vector<int> all(Model().Observations().size());
    std::iota(all.begin(), all.end(), 0);
    ZuNetworkCovariance::Tied tied;
    for (const size_t i : OrderByPoint(all)) {
      const NetworkObservation& o = Model().Observations()[i];
      ZuNetworkTest test;
      if (!TestObservation(*m_pCovariance, o, limits, Sigma(), m_options.test.dLeastRedundancy,
                           &tied, &test)) {
        continue;
      }
      switch (o.eKind) {
        case ZuNetworkKind::Image:
          m_result.imageTests[Index(o.iIndex)] = test;
          break;
        case ZuNetworkKind::Control:
          m_result.controlTests[Index(o.iIndex)] = test;
          break;
        case ZuNetworkKind::Centre:
          m_result.centreTests[Index(o.iIndex)] = test;
          break;
        case ZuNetworkKind::Distance:
          m_result.distanceTests[Index(o.iIndex)] = test;
          break;
        case ZuNetworkKind::Difference:
          m_result.differenceTests[Index(o.iIndex)] = test;
          break;
        case ZuNetworkKind::Plane:
          m_result.planeTests[Index(o.iIndex)][Index(o.iSub)] = test;
          break;
        case ZuNetworkKind::Parameter:
          break;
      }
    }
  }

  void WarnOfCameras() {
    const double dLimit = ZuNormalLimit(0.05);
    for (size_t i = 0; i < m_result.cameras.size(); ++i) {
      const std::vector<int>& parameters = Model().CameraParameters(static_cast<int>(i));
      const std::string strCamera = " of camera " + std::to_string(m_result.cameras[i].GetId());
      for (size_t a = 0; a < parameters.size(); ++a) {
        const int iOffset = Model().CameraOffset(static_cast<int>(i));
        const int u = iOffset + static_cast<int>(a);
        const double dSd = m_result.cameraSd[i][Index(parameters[a])];
        if (parameters[a] > ZuNetworkYh &&
            std::fabs(zu::internal::ParameterValue(m_result.cameras[i], parameters[a])) <
                dLimit * dSd) {
          m_result.warnings.push_back(std::string(ZuNetworkParameterName(parameters[a])) +
                                      strCamera + " is not significant: less than " +
                                      "1.96 of its standard deviations");
        }
        for (size_t b = 0; b < a; ++b) {
          const int v = iOffset + static_cast<int>(b);
          const double d = m_pCovariance->Cofactor({-1, u}, {-1, v}) /
                           std::sqrt(m_pCovariance->Cofactor({-1, u}, {-1, u}) *
                                     m_pCovariance->Cofactor({-1, v}, {-1, v}));
          if (std::fabs(d) <= kHighCorrelation) continue;
          m_result.warnings.push_back(std::string(ZuNetworkParameterName(parameters[b])) + " and " +
                                      ZuNetworkParameterName(parameters[a]) + strCamera +
                                      " are correlated by " + Percent(d));
        }
      }
    }
  }

  void CheckFinite() {
    bool bFinite = std::isfinite(m_result.dSigma0);
    for (size_t i = 0; i < m_result.points.size(); ++i) {
      if (!m_result.pointUsed[i]) continue;
      for (const double d : m_result.points[i]) bFinite = bFinite && std::isfinite(d);
      if (!m_options.bStatistics) continue;
      for (const double d : m_result.pointCovariance[i]) bFinite = bFinite && std::isfinite(d);
    }
    for (size_t i = 0; i < m_result.photos.size() && m_options.bStatistics; ++i) {
      if (!m_result.photoUsed[i]) continue;
      for (const double d : m_result.photoSd[i]) bFinite = bFinite && std::isfinite(d);
    }
    for (const auto& sd : m_result.cameraSd) {
      for (const double d : sd) bFinite = bFinite && std::isfinite(d);
    }
    if (bFinite) return;
    m_result.status = ZuAdjustStatus::NotFinite;
    m_result.strText = "a result or its standard deviation is no number";
  }

  const ZuNetworkOptions& m_options;
  std::shared_ptr<ZuNetworkCovariance> m_pCovariance;
  ZuNetworkResult m_result;
  NetworkFreedom m_freedom;
  std::vector<int> m_undecided;
  int m_iUndecided = -1;
};

}  // namespace

const char* ZuNetworkParameterName(int iParameter) {
  static const char* const names[] = {"c", "xh", "yh", "a1", "a2", "a3", "b1", "b2", "c1", "c2"};
  return iParameter >= 0 && iParameter < ZuNetworkParameters ? names[iParameter] : nullptr;
}

bool ZuNetworkHasParameter(const ZuCamera& camera, int iParameter) {
  return zu::internal::HasParameter(camera, iParameter);
}

double ZuNetworkParameterValue(const ZuCamera& camera, int iParameter) {
  return zu::internal::ParameterValue(camera, iParameter);
}

ZuNetworkResult ZuNetwork::Adjust(const ZuNetworkOptions& options) const {
  return Adjustment(*this, options).Run();
}

std::vector<double> ZuNetworkResult::Covariance(
    const std::vector<ZuNetworkUnknown>& unknowns) const {
  if (pCovariance == nullptr || status != ZuAdjustStatus::Good) return {};
  const size_t n = unknowns.size();
  std::vector<double> result(n * n, 0.0);
  std::vector<ZuNetworkCovariance::Row> rows(n);
  std::vector<char> found(n), missing(n);
  for (size_t i = 0; i < n; ++i) {
    bool bMissing = false;
    found[i] = pCovariance->Find(unknowns[i], &rows[i], &bMissing);
    missing[i] = bMissing;
  }
  for (size_t i = 0; i < n; ++i) {
    std::optional<ZuNetworkCovariance::Column> column;
    for (size_t k = 0; k <= i; ++k) {
      double d = 0.0;
      if (missing[i] || missing[k]) {
        d = kNaN;
      } else if (found[i] && found[k]) {
        d = pCovariance->m_dVariance * pCovariance->Cofactor(rows[i], rows[k], &column);
      }
      result[n * i + k] = result[n * k + i] = d;
    }
  }
  return result;
}

double ZuNetworkResult::DistanceSd(int iFrom, int iTo) const {
  std::vector<ZuNetworkUnknown> unknowns;
  for (const int i : {iFrom, iTo}) {
    for (int k = 0; k < 3; ++k) unknowns.push_back({ZuNetworkUnknown::Point, i, k});
  }
  const std::vector<double> q = Covariance(unknowns);
  if (q.empty() || iFrom == iTo) return kNaN;
  double j[6], dLength = 0.0, dSum = 0.0;
  for (size_t k = 0; k < 3; ++k) {
    j[3 + k] = points[Index(iTo)][k] - points[Index(iFrom)][k];
    j[k] = -j[3 + k];
    dLength = std::hypot(dLength, j[k]);
  }
  for (size_t a = 0; a < 6; ++a) {
    for (size_t b = 0; b < 6; ++b) dSum += j[a] * q[6 * a + b] * j[b];
  }
  return std::sqrt(std::max(0.0, dSum)) / dLength;
}
