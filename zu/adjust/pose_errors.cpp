#include "zu/adjust/internal/pose_errors.h"

#include <algorithm>
#include <cmath>

#include "zu/adjust/internal/camera_parameter.h"
#include "zu/adjust/internal/dense_cholesky.h"
#include "zu/photo/photo.h"

namespace zu::internal {

namespace {

constexpr size_t kUnknowns = ZuCovariance::kOrientation;

// The change of the point, 3 rows, with the unknowns of one photo.
using Change = std::vector<double>;

// -1: none of the camera.
int ParameterOf(const std::string& strName) {
  for (int k = 0; k < ZuNetworkParameters; ++k) {
    if (strName == ZuNetworkParameterName(k)) return k;
  }
  return -1;
}

double ParameterSlope(const camera_measured::Derivative& slope, int iRow, int iParameter) {
  return iParameter >= 0 ? slope.parameter[iRow][iParameter] : 0.0;
}

// Q A' P (dm/du): Q is the covariance of the point by its image points.
Change ChangeOf(const UnsureRay& ray, const std::array<double, 3>& position, const double* pQ) {
  const UnsurePhoto& photo = *ray.pPhoto;
  const size_t n = kUnknowns + photo.parameters.size();
  double m[2];
  ImageSlope slope{};
  camera_measured::Derivative camera{};
  if (!Project(*photo.pCamera, photo.pose, position.data(), m, &slope)) return {};
  const auto v = ToImage(photo.pose, position.data());
  const double s = -std::fabs(photo.pCamera->m_dC) / v[2];
  camera_measured::Measured(*photo.pCamera, s * v[0], s * v[1], &m[0], &m[1], &camera);
  Change change(3 * n);
  for (size_t k = 0; k < 3; ++k) {
    double adGain[2] = {};  // row k of Q A' P
    for (size_t i = 0; i < 2; ++i) {
      for (size_t j = 0; j < 6; ++j) {
        adGain[i] += pQ[3 * k + j % 3] * slope.point[j / 3][j % 3] * ray.adWeight[2 * (j / 3) + i];
      }
    }
    for (size_t u = 0; u < n; ++u) {
      for (size_t i = 0; i < 2; ++i) {
        const double dSlope = u < 3           ? slope.pose[i][3 + u]
                              : u < kUnknowns ? slope.pose[i][u - 3]
                                              : ParameterSlope(camera, static_cast<int>(i),
                                                               photo.parameters[u - kUnknowns]);
        change[k * n + u] -= adGain[i] * dSlope;
      }
    }
  }
  return change;
}

// Adds a C b' to the 3 x 3 pSum; C has as many rows as a has columns.
void AddProduct(const Change& a, const double* pC, const Change& b, double* pSum) {
  const size_t n = a.size() / 3, m = b.size() / 3;
  for (size_t k = 0; k < 3; ++k) {
    for (size_t j = 0; j < m; ++j) {
      double d = 0.0;
      for (size_t i = 0; i < n; ++i) d += a[k * n + i] * pC[i * m + j];
      for (size_t l = 0; l < 3; ++l) pSum[3 * k + l] += d * b[l * m + j];
    }
  }
}

// Covariances of all pairs; false where one of them is not told.
bool AddPairs(const ZuCovarianceList& list, const std::vector<UnsureRay>& rays,
              const std::vector<Change>& changes, double* pSum) {
  for (size_t i = 0; i < rays.size(); ++i) {
    for (size_t j = 0; j < rays.size(); ++j) {
      const auto c = list.Cross(rays[i].pPhoto->uPhoto, rays[j].pPhoto->uPhoto);
      if (c.size() * 9 != changes[i].size() * changes[j].size()) return false;
      AddProduct(changes[i], c.data(), changes[j], pSum);
    }
  }
  return true;
}

// Change with the parameters of the camera, the orientation following them.
Change WithCamera(const UnsurePhoto& photo, const Change& change) {
  const size_t m = photo.parameters.size(), n = kUnknowns + m;
  Change sum(3 * m);
  for (size_t k = 0; k < 3; ++k) {
    for (size_t j = 0; j < m; ++j) {
      double d = change[k * n + kUnknowns + j];
      for (size_t u = 0; u < kUnknowns; ++u) d += change[k * n + u] * photo.byCamera[u * m + j];
      sum[k * m + j] = d;
    }
  }
  return sum;
}

std::vector<double> CameraBlock(const UnsurePhoto& photo) {
  const size_t m = photo.parameters.size(), n = kUnknowns + m;
  std::vector<double> block;
  for (size_t i = kUnknowns; i < n; ++i) {
    for (size_t k = kUnknowns; k < n; ++k) block.push_back(photo.covariance[i * n + k]);
  }
  return block;
}

// Each photo for itself, and what photos of one camera have in common: with s the change by the
// camera, s_i C s_k' of each two.
void AddByCameras(const std::vector<UnsureRay>& rays, const std::vector<Change>& changes,
                  double* pSum) {
  for (size_t i = 0; i < rays.size(); ++i) {
    const UnsurePhoto& photo = *rays[i].pPhoto;
    AddProduct(changes[i], photo.covariance.data(), changes[i], pSum);
    if (photo.parameters.empty() || photo.uCamera == 0) continue;
    const Change own = WithCamera(photo, changes[i]);
    const auto block = CameraBlock(photo);
    for (size_t k = 0; k < rays.size(); ++k) {
      const UnsurePhoto& other = *rays[k].pPhoto;
      if (k == i || other.uCamera != photo.uCamera || other.parameters != photo.parameters)
        continue;
      AddProduct(own, block.data(), WithCamera(other, changes[k]), pSum);
    }
  }
}

}  // namespace

UnsurePhoto::UnsurePhoto(const ZuPhoto& photo, const ZuCovarianceList& list)
    : pCamera(&photo.GetCamera()), uPhoto(photo.GetId()) {
  for (size_t i = 0; i < 3; ++i) {
    const int iRow = static_cast<int>(i) + 1;
    for (size_t k = 0; k < 3; ++k) {
      pose.R[3 * i + k] = photo.GetRotAOR()[iRow][static_cast<int>(k) + 1];
    }
    pose.X0[i] = photo.GetPosAOR()[iRow];
  }
  const ZuCovariance* const pShared = list.OfCamera(pCamera->GetId());
  const ZuCovariance* p = list.OfPhoto(uPhoto);
  bOrientation = p != nullptr;
  if (p == nullptr) p = pShared;
  if (p == nullptr || !p->Fault()[0].empty()) {
    bOrientation = false;
    return;
  }
  if (pShared != nullptr && pShared->m_parameters == p->m_parameters) uCamera = pCamera->GetId();
  for (const std::string& strName : p->m_parameters) parameters.push_back(ParameterOf(strName));
  const size_t m = parameters.size(), n = kUnknowns + m, uMissing = bOrientation ? 0 : kUnknowns;
  covariance.assign(n * n, 0.0);
  for (size_t i = uMissing; i < n; ++i) {
    for (size_t k = uMissing; k < n; ++k) {
      covariance[i * n + k] = p->m_matrix[(i - uMissing) * (n - uMissing) + k - uMissing];
    }
  }
  byCamera.assign(kUnknowns * m, 0.0);
  if (m == 0 || uCamera == 0) return;
  DenseCholesky camera;
  camera.SetZero(static_cast<int>(m));
  for (size_t i = 0; i < m; ++i) {
    for (size_t k = 0; k <= i; ++k) {
      camera.At(static_cast<int>(i), static_cast<int>(k)) =
          covariance[(kUnknowns + i) * n + kUnknowns + k];
    }
  }
  if (!camera.Factorise()) return;
  for (size_t u = 0; u < kUnknowns; ++u) {
    std::copy_n(&covariance[u * n + kUnknowns], m, &byCamera[u * m]);
    camera.Solve(&byCamera[u * m]);
  }
}

bool AddPoseErrors(const ZuCovarianceList& list, const std::vector<UnsureRay>& rays,
                   const std::array<double, 3>& position, std::array<double, 9>* pCovariance) {
  std::vector<UnsureRay> unsure;
  std::vector<Change> changes;
  for (const UnsureRay& ray : rays) {
    if (!ray.pPhoto->IsTold()) continue;
    changes.push_back(ChangeOf(ray, position, pCovariance->data()));
    if (changes.back().empty()) return false;
    unsure.push_back(ray);
  }
  double adSum[9] = {};
  if (!AddPairs(list, unsure, changes, adSum)) {
    std::fill_n(adSum, 9, 0.0);
    AddByCameras(unsure, changes, adSum);
  }
  bool bGood = true;
  for (size_t i = 0; i < 9; ++i) {
    (*pCovariance)[i] += adSum[i];
    bGood &= std::isfinite((*pCovariance)[i]) && (i % 4 != 0 || (*pCovariance)[i] >= 0.0);
  }
  return bGood;
}

}  // namespace zu::internal
