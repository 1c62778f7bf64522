// What can be adjusted of a network: checks, what is left out, and the order of the unknowns.
#include <algorithm>
#include <cmath>
#include <map>
#include <numeric>
#include <set>

#include "zu/adjust/internal/camera_parameter.h"
#include "zu/adjust/internal/dense_cholesky.h"
#include "zu/adjust/internal/network_model.h"
#include "zu/adjust/internal/small_matrix.h"

namespace zu::internal {

namespace {

bool AllFinite(std::initializer_list<double> values) {
  return std::all_of(values.begin(), values.end(), [](double d) { return std::isfinite(d); });
}
template <size_t N>
bool AllFinite(const std::array<double, N>& values) {
  return std::all_of(values.begin(), values.end(), [](double d) { return std::isfinite(d); });
}

bool IsIndex(int i, size_t uSize) { return i >= 0 && static_cast<size_t>(i) < uSize; }

std::string IdOf(unsigned uId) { return std::to_string(uId); }

// Of the coordinates that are given and not fixed, with those covariances.
bool IsCovariance(const ZuNetworkPoint& point) {
  double q[9] = {1.0, 0.0, 0.0, 0.0, 1.0, 0.0, 0.0, 0.0, 1.0}, inverse[9];
  const auto weighted = [&](size_t k) {
    return (point.iControl >> k & 1) != 0 && point.adGivenSd[k] > 0.0;
  };
  for (size_t i = 0; i < 3; ++i) {
    for (size_t k = 0; k < i; ++k) {
      if (!weighted(i) || !weighted(k)) continue;
      q[3 * i + k] = q[3 * k + i] =
          point.adGivenCovariance[i + k - 1] / point.adGivenSd[i] / point.adGivenSd[k];
    }
  }
  return AllFinite(point.adGivenCovariance) && InvertSpd(3, q, inverse);
}

}  // namespace

bool NetworkModel::Fail(const std::string& strText) {
  m_strFault = strText;
  return false;
}

NetworkModel::NetworkModel(const ZuNetwork& network, const std::vector<int>& undecided, bool bHold)
    : m_network(network) {
  if (!CheckCameras() || !CheckPhotos() || !CheckPoints() || !CheckImages() || !CheckLengths()) {
    return;
  }
  DropUndecided(undecided);
  SetCentre();
  OrderUnknowns();
  StartPlanes();
  ListObservations();
  OrderForSolution(bHold);
}

bool NetworkModel::CheckCameras() {
  for (const ZuNetworkCamera& camera : m_network.cameras) {
    const std::string strName = "camera " + IdOf(camera.camera.GetId());
    if (!HasModel(camera.camera)) {
      return Fail(strName + " has mode " + std::to_string(camera.camera.m_iMode) +
                  "; the modes 0, 2 and 3 can be adjusted");
    }
    if (!std::isfinite(camera.camera.m_dC) || camera.camera.m_dC == 0.0) {
      return Fail(strName + " has no camera constant; a start value in mm is needed");
    }
    for (int k = 0; k < ZuNetworkParameters; ++k) {
      const double dSd = camera.adSd[Index(k)];
      const std::string strParameter = std::string("parameter ") + ZuNetworkParameterName(k);
      if (!std::isfinite(ParameterValue(camera.camera, k)) || !(dSd >= 0.0)) {
        return Fail(strName + ": " + strParameter + " or its standard deviation is no number");
      }
      if (dSd > 0.0 && !HasParameter(camera.camera, k)) {
        return Fail(strName + " of mode " + std::to_string(camera.camera.m_iMode) + " has no " +
                    strParameter + " to estimate");
      }
    }
    if (!std::isfinite(camera.camera.m_dR0)) return Fail(strName + ": r0 is no number");
  }
  return true;
}

bool NetworkModel::CheckPhotos() {
  for (const ZuNetworkPhoto& photo : m_network.photos) {
    const std::string strName = "photo " + IdOf(photo.uId);
    if (!IsIndex(photo.iCamera, m_network.cameras.size())) return Fail(strName + " has no camera");
    if (!AllFinite(photo.adRotation) || !AllFinite(photo.adPosition)) {
      return Fail(strName + ": its start orientation is no number");
    }
    double dMost = 0.0;
    for (size_t i = 0; i < 3; ++i) {
      for (size_t j = 0; j < 3; ++j) {
        double s = i == j ? -1.0 : 0.0;
        for (size_t k = 0; k < 3; ++k) {
          s += photo.adRotation[3 * i + k] * photo.adRotation[3 * j + k];
        }
        dMost = std::max(dMost, std::fabs(s));
      }
    }
    if (dMost > 1e-3) return Fail(strName + ": its start rotation is no rotation matrix");
    for (size_t k = 0; k < 3; ++k) {
      if (!(photo.adMeasuredSd[k] >= 0.0) || !std::isfinite(photo.adMeasuredSd[k]) ||
          (photo.adMeasuredSd[k] > 0.0 && !std::isfinite(photo.adMeasured[k]))) {
        return Fail(strName + ": its measured centre or its standard deviation is no number");
      }
    }
  }
  return true;
}

bool NetworkModel::CheckPoints() {
  for (const ZuNetworkPoint& point : m_network.points) {
    const std::string strName = "point " + IdOf(point.uId);
    if (!AllFinite(point.adPosition)) return Fail(strName + ": its start position is no number");
    for (size_t k = 0; k < 3; ++k) {
      if (!(point.iControl >> k & 1)) continue;
      if (!std::isfinite(point.adGiven[k]) || !(point.adGivenSd[k] >= 0.0) ||
          !std::isfinite(point.adGivenSd[k])) {
        return Fail(strName + ": its control coordinate or its standard deviation is no number");
      }
    }
    if (!IsCovariance(point)) {
      return Fail(strName + ": the covariance of its coordinates is not positive definite");
    }
  }
  return true;
}

bool NetworkModel::CheckImages() {
  m_bImageUsed.assign(m_network.images.size(), 1);
  std::map<std::pair<int, int>, size_t> seen;
  std::set<std::pair<int, int>> told;
  for (size_t i = 0; i < m_network.images.size(); ++i) {
    const ZuNetworkImagePoint& image = m_network.images[i];
    if (!IsIndex(image.iPhoto, m_network.photos.size()) ||
        !IsIndex(image.iPoint, m_network.points.size())) {
      return Fail("an image point belongs to no photo or point of the network");
    }
    const std::string strName = "photo " + IdOf(m_network.photos[Index(image.iPhoto)].uId) +
                                ", point " + IdOf(m_network.points[Index(image.iPoint)].uId);
    if (!AllFinite({image.x, image.y})) return Fail(strName + ": its measurement is no number");
    if (!AllFinite({image.sxx, image.sxy, image.syy}) || !(image.sxx > 0.0) ||
        !(image.sxx * image.syy > image.sxy * image.sxy)) {
      return Fail(strName + ": its covariance is not positive definite");
    }
    const auto [at, bNew] = seen.try_emplace({image.iPhoto, image.iPoint}, i);
    if (bNew) continue;
    m_bImageUsed[i] = m_bImageUsed[at->second] = 0;
    if (told.insert(at->first).second) {
      m_warnings.push_back(strName + ": measured twice, both left out");
    }
  }
  return true;
}

bool NetworkModel::CheckLengths() {
  const size_t uPoints = m_network.points.size();
  const auto pair = [&](int a, int b) {
    return IsIndex(a, uPoints) && IsIndex(b, uPoints) && a != b;
  };
  const auto sd = [](double d) { return std::isfinite(d) && d > 0.0; };
  for (const ZuNetworkDistance& d : m_network.distances) {
    if (!pair(d.iFrom, d.iTo)) return Fail("a distance lacks one of its two points");
    if (!std::isfinite(d.dDistance) || !(d.dDistance > 0.0) || !sd(d.dSd)) {
      return Fail("the distance of points " + IdOf(m_network.points[Index(d.iFrom)].uId) + " and " +
                  IdOf(m_network.points[Index(d.iTo)].uId) +
                  " or its standard deviation is no positive number");
    }
  }
  for (const ZuNetworkDifference& d : m_network.differences) {
    if (!pair(d.iFrom, d.iTo)) return Fail("a difference lacks one of its two points");
    if (!std::isfinite(d.dDifference) || !sd(d.dSd) || d.iAxis < 0 || d.iAxis > 2) {
      return Fail("the difference of points " + IdOf(m_network.points[Index(d.iFrom)].uId) +
                  " and " + IdOf(m_network.points[Index(d.iTo)].uId) +
                  " or its standard deviation is no number");
    }
  }
  for (const ZuNetworkPlane& plane : m_network.planes) {
    if (!sd(plane.dSd)) return Fail("the standard deviation of a plane is no positive number");
    for (const int i : plane.points) {
      if (!IsIndex(i, uPoints)) return Fail("a plane holds a point that the network has not");
    }
  }
  return true;
}

// Points and photos that too few observations decide leave, until none does.
void NetworkModel::DropUndecided(const std::vector<int>& undecided) {
  const size_t uPhotos = m_network.photos.size(), uPoints = m_network.points.size();
  m_bPhotoUsed.assign(uPhotos, 1);
  m_bPointUsed.assign(uPoints, 1);
  for (const int i : undecided) m_bPointUsed[Index(i)] = 0;
  std::vector<int> given(uPoints, 0);  // control, and lengths that may decide a coordinate
  for (size_t i = 0; i < uPoints; ++i) {
    for (int k = 0; k < 3; ++k) {
      const int iPoint = static_cast<int>(i);
      given[i] += (m_network.points[i].iControl >> k & 1) && IsFree(iPoint, k);
    }
  }
  for (const ZuNetworkPlane& plane : m_network.planes) {
    for (const int i : plane.points) given[Index(i)] += plane.points.size() > 3;
  }
  std::vector<int> pointsOf;
  for (bool bChanged = true; bChanged;) {
    bChanged = false;
    m_rays.assign(uPoints, 0);
    pointsOf.assign(uPhotos, 0);
    for (size_t i = 0; i < m_network.images.size(); ++i) {
      const ZuNetworkImagePoint& image = m_network.images[i];
      if (!m_bImageUsed[i] || !m_bPhotoUsed[Index(image.iPhoto)] ||
          !m_bPointUsed[Index(image.iPoint)]) {
        continue;
      }
      ++m_rays[Index(image.iPoint)];
      ++pointsOf[Index(image.iPhoto)];
    }
    for (size_t i = 0; i < uPoints; ++i) {
      if (m_bPointUsed[i] && 2 * m_rays[i] + given[i] < FreeAxes(static_cast<int>(i))) {
        m_bPointUsed[i] = 0;
        bChanged = true;
      }
    }
    for (size_t i = 0; i < uPhotos; ++i) {
      if (m_bPhotoUsed[i] && pointsOf[i] < 3) {
        m_bPhotoUsed[i] = 0;
        bChanged = true;
      }
    }
  }
  for (size_t i = 0; i < uPhotos; ++i) {
    if (m_bPhotoUsed[i]) continue;
    m_warnings.push_back("photo " + IdOf(m_network.photos[i].uId) + ": " +
                         (pointsOf[i] == 0 ? "no point that can be used"
                                           : "fewer than three points that can be used") +
                         ", left out");
  }
  for (size_t i = 0; i < uPoints; ++i) {
    if (m_bPointUsed[i] ||
        std::find(undecided.begin(), undecided.end(), static_cast<int>(i)) != undecided.end()) {
      continue;  // those are told at the end
    }
    m_warnings.push_back(
        "point " + IdOf(m_network.points[i].uId) + ": " +
        (m_rays[i] == 0 ? "measured in no photo that can be used" : "measured in one photo alone") +
        ", left out");
  }
  for (size_t i = 0; i < m_network.images.size(); ++i) {
    const ZuNetworkImagePoint& image = m_network.images[i];
    if (!m_bPhotoUsed[Index(image.iPhoto)] || !m_bPointUsed[Index(image.iPoint)]) {
      m_bImageUsed[i] = 0;
    }
  }
}

void NetworkModel::SetCentre() {
  int n = 0;
  m_centre = {};
  for (size_t i = 0; i < m_network.points.size(); ++i) {
    if (!m_bPointUsed[i]) continue;
    ++n;
    for (size_t k = 0; k < 3; ++k) {
      m_centre[k] += (m_network.points[i].adPosition[k] - m_centre[k]) / n;
    }
  }
  double dSum = 0.0;
  for (const ZuNetworkCamera& camera : m_network.cameras) m_start.cameras.push_back(camera.camera);
  for (const ZuNetworkPhoto& photo : m_network.photos) {
    NetworkState::Photo start{RotateBy(photo.adRotation, {}), photo.adPosition};
    for (size_t k = 0; k < 3; ++k) start.x0[k] -= m_centre[k];
    m_start.photos.push_back(start);
  }
  for (size_t i = 0; i < m_network.points.size(); ++i) {
    const ZuNetworkPoint& point = m_network.points[i];
    Vec3 p{};
    for (size_t k = 0; k < 3; ++k) {
      const bool bFixed = !IsFree(static_cast<int>(i), static_cast<int>(k));
      p[k] = (bFixed ? point.adGiven[k] : point.adPosition[k]) - m_centre[k];
      if (m_bPointUsed[i]) dSum += p[k] * p[k];
    }
    m_start.points.push_back(p);
  }
  if (n > 0 && dSum > 0.0) m_dSize = std::sqrt(dSum / n);
}

void NetworkModel::OrderUnknowns() {
  const size_t uPoints = m_network.points.size();
  m_bEliminated = m_bPointUsed;
  for (const ZuNetworkDistance& d : m_network.distances) {
    if (!m_bPointUsed[Index(d.iFrom)] || !m_bPointUsed[Index(d.iTo)]) continue;
    m_bEliminated[Index(d.iFrom)] = m_bEliminated[Index(d.iTo)] = 0;
  }
  for (const ZuNetworkDifference& d : m_network.differences) {
    if (!m_bPointUsed[Index(d.iFrom)] || !m_bPointUsed[Index(d.iTo)]) continue;
    m_bEliminated[Index(d.iFrom)] = m_bEliminated[Index(d.iTo)] = 0;
  }
  std::vector<char> bCameraUsed(m_network.cameras.size(), 0);
  for (size_t i = 0; i < m_network.photos.size(); ++i) {
    if (m_bPhotoUsed[i]) bCameraUsed[Index(m_network.photos[i].iCamera)] = 1;
  }
  m_iReduced = 0;
  const auto take = [this](int n) {
    const int iOffset = m_iReduced;
    m_iReduced += n;
    return iOffset;
  };
  for (const char bUsed : m_bPhotoUsed) m_photoOffset.push_back(bUsed ? take(6) : -1);
  m_pointOffset.assign(uPoints, -1);
  for (size_t i = 0; i < uPoints; ++i) {
    if (!m_bPointUsed[i] || m_bEliminated[i]) continue;
    m_pointOffset[i] = take(FreeAxes(static_cast<int>(i)));
  }
  for (const ZuNetworkPlane& plane : m_network.planes) {
    const auto nUsed = std::count_if(plane.points.begin(), plane.points.end(),
                                     [this](int i) { return m_bPointUsed[Index(i)]; });
    m_planeOffset.push_back(nUsed > 3 ? take(3) : -1);
    if (nUsed <= 3) {
      m_warnings.push_back("a plane of fewer than four points says nothing, left out");
    }
  }
  for (size_t i = 0; i < m_network.cameras.size(); ++i) {
    std::vector<int> parameters;
    for (int k = 0; k < ZuNetworkParameters; ++k) {
      if (m_network.cameras[i].adSd[Index(k)] > 0.0 && bCameraUsed[i]) parameters.push_back(k);
    }
    m_cameraOffset.push_back(take(static_cast<int>(parameters.size())));
    m_parameters.push_back(std::move(parameters));
  }
}

// A plane starts at the least spread of its points.
void NetworkModel::StartPlanes() {
  for (const ZuNetworkPlane& plane : m_network.planes) {
    Vec3 mean{};
    int n = 0;
    for (const int i : plane.points) {
      if (!m_bPointUsed[Index(i)]) continue;
      ++n;
      for (size_t k = 0; k < 3; ++k) mean[k] += (m_start.points[Index(i)][k] - mean[k]) / n;
    }
    std::vector<double> spread(9, 0.0), values(3), vectors(9);
    for (const int i : plane.points) {
      if (!m_bPointUsed[Index(i)]) continue;
      for (size_t r = 0; r < 3; ++r) {
        for (size_t c = 0; c < 3; ++c) {
          spread[3 * r + c] +=
              (m_start.points[Index(i)][r] - mean[r]) * (m_start.points[Index(i)][c] - mean[c]);
        }
      }
    }
    SymmetricEigen(3, spread.data(), values.data(), vectors.data());
    const Vec3 normal{vectors[0], vectors[3], vectors[6]};
    m_start.planes.push_back(
        {normal, normal[0] * mean[0] + normal[1] * mean[1] + normal[2] * mean[2]});
  }
}

void NetworkModel::AddObservation(ZuNetworkKind eKind, int iIndex, int iSub, int iPoint) {
  const int iNumber = static_cast<int>(m_observations.size());
  const bool bOfPoint = iPoint >= 0 && m_bEliminated[Index(iPoint)];
  m_observations.push_back({eKind, iIndex, iSub, bOfPoint ? iPoint : -1, true});
  (bOfPoint ? m_ofPoint[Index(iPoint)] : m_others).push_back(iNumber);
}

void NetworkModel::ListObservations() {
  m_ofPoint.assign(m_network.points.size(), {});
  const auto count = [](size_t u) { return static_cast<int>(u); };
  for (int i = 0; i < count(m_network.images.size()); ++i) {
    if (m_bImageUsed[Index(i)]) {
      AddObservation(ZuNetworkKind::Image, i, 0, m_network.images[Index(i)].iPoint);
    }
  }
  for (int i = 0; i < count(m_network.points.size()); ++i) {
    const NetworkObservation control{ZuNetworkKind::Control, i, 0, -1, true};
    if (m_bPointUsed[Index(i)] && Dimension(control) > 0) {
      AddObservation(ZuNetworkKind::Control, i, 0, i);
    }
  }
  for (int i = 0; i < count(m_network.photos.size()); ++i) {
    const NetworkObservation centre{ZuNetworkKind::Centre, i, 0, -1, true};
    if (m_bPhotoUsed[Index(i)] && Dimension(centre) > 0) {
      AddObservation(ZuNetworkKind::Centre, i, 0, -1);
    }
  }
  for (int i = 0; i < count(m_network.distances.size()); ++i) {
    const ZuNetworkDistance& d = m_network.distances[Index(i)];
    if (m_bPointUsed[Index(d.iFrom)] && m_bPointUsed[Index(d.iTo)]) {
      AddObservation(ZuNetworkKind::Distance, i, 0, -1);
      continue;
    }
    m_warnings.push_back("the distance of points " + IdOf(m_network.points[Index(d.iFrom)].uId) +
                         " and " + IdOf(m_network.points[Index(d.iTo)].uId) +
                         ": not both of them could be used, left out");
  }
  for (int i = 0; i < count(m_network.differences.size()); ++i) {
    const ZuNetworkDifference& d = m_network.differences[Index(i)];
    if (m_bPointUsed[Index(d.iFrom)] && m_bPointUsed[Index(d.iTo)]) {
      AddObservation(ZuNetworkKind::Difference, i, 0, -1);
    }
  }
  for (int i = 0; i < count(m_network.planes.size()); ++i) {
    if (m_planeOffset[Index(i)] < 0) continue;
    const std::vector<int>& points = m_network.planes[Index(i)].points;
    for (int k = 0; k < count(points.size()); ++k) {
      if (m_bPointUsed[Index(points[Index(k)])]) {
        AddObservation(ZuNetworkKind::Plane, i, k, points[Index(k)]);
      }
    }
  }
  for (int i = 0; i < count(m_network.cameras.size()); ++i) {
    for (const int k : m_parameters[Index(i)]) {
      if (std::isfinite(m_network.cameras[Index(i)].adSd[Index(k)])) {
        AddObservation(ZuNetworkKind::Parameter, i, k, -1);
      }
    }
  }
}

}  // namespace zu::internal
