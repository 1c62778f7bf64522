// The result of a network, put into its project.
#include <algorithm>
#include <set>

#include "zu/adjust/internal/camera_parameter.h"
#include "zu/adjust/network_project.h"
#include "zu/project/project.h"

namespace {

size_t Index(int i) { return static_cast<size_t>(i); }

void Take(const ZuCamera& from, ZuCamera* pTo) {
  for (int k = 0; k < ZuNetworkParameters; ++k) {
    zu::internal::ParameterValue(*pTo, k) = ZuNetworkParameterValue(from, k);
  }
}

// Covariances of photos, cameras and pairs of photos, for the project.
class CovarianceMaker {
 public:
  CovarianceMaker(const ZuNetwork& network, const ZuNetworkResult& result, ZuCovarianceList* pList)
      : m_network(network), m_result(result), m_list(*pList) {}

  void Make() {
    const int iPhotos = static_cast<int>(m_result.photos.size());
    for (int i = 0; i < static_cast<int>(m_result.cameras.size()); ++i) AddCamera(i);
    for (int i = 0; i < iPhotos; ++i) {
      if (m_result.photoUsed[Index(i)]) AddPhotos(i, i);
    }
    if (iPhotos > kZuMostPairedPhotos) return;
    for (const auto& [i, k] : PairsInSight()) AddPhotos(i, k);
  }

 private:
  using Unknowns = std::vector<ZuNetworkUnknown>;

  void AppendCamera(int iCamera, Unknowns* pUnknowns, std::vector<std::string>* pNames) const {
    for (int k = 0; k < ZuNetworkParameters; ++k) {
      if (!(m_network.cameras[Index(iCamera)].adSd[Index(k)] > 0.0)) continue;
      pUnknowns->push_back({ZuNetworkUnknown::Camera, iCamera, k});
      if (pNames != nullptr) pNames->push_back(ZuNetworkParameterName(k));
    }
  }

  static void AppendPhoto(int iPhoto, Unknowns* pUnknowns) {
    for (int k = 0; k < ZuCovariance::kOrientation; ++k) {
      pUnknowns->push_back({ZuNetworkUnknown::Photo, iPhoto, k});
    }
  }

  int CameraOf(int iPhoto) const { return m_result.photos[Index(iPhoto)].iCamera; }

  // A camera that every photo has for itself stands with its photo alone.
  void AddCamera(int iCamera) {
    const auto& cameras = m_result.cameras;
    ZuCovariance covariance;
    covariance.m_uCamera = cameras[Index(iCamera)].GetId();
    const auto same = [&](const ZuCamera& other) { return other.GetId() == covariance.m_uCamera; };
    if (std::count_if(cameras.begin(), cameras.end(), same) > 1) return;
    Unknowns unknowns;
    AppendCamera(iCamera, &unknowns, &covariance.m_parameters);
    if (!unknowns.empty()) Add(unknowns, unknowns.size(), &covariance);
  }

  // Of a photo, or of one with another.
  void AddPhotos(int i, int k) {
    const bool bCameras = i == k || CameraOf(i) != CameraOf(k);
    ZuCovariance covariance;
    covariance.m_uPhoto = m_result.photos[Index(i)].uId;
    Unknowns unknowns;
    AppendPhoto(i, &unknowns);
    if (bCameras) {
      AppendCamera(CameraOf(i), &unknowns, i == k ? &covariance.m_parameters : nullptr);
    }
    const size_t uRows = unknowns.size();
    if (i != k) {
      covariance.m_uWith = m_result.photos[Index(k)].uId;
      AppendPhoto(k, &unknowns);
      if (bCameras) AppendCamera(CameraOf(k), &unknowns, nullptr);
    }
    Add(unknowns, uRows, &covariance);
  }

  // The rows of the first unknowns with the columns of the others; of one photo or camera both.
  void Add(const Unknowns& unknowns, size_t uRows, ZuCovariance* pCovariance) {
    const std::vector<double> q = m_result.Covariance(unknowns);
    if (q.empty()) return;
    const size_t n = unknowns.size(), uFirst = uRows < n ? uRows : 0;
    pCovariance->m_iRows = static_cast<int>(uRows);
    pCovariance->m_iColumns = static_cast<int>(n - uFirst);
    for (size_t i = 0; i < uRows; ++i) {
      for (size_t k = uFirst; k < n; ++k) pCovariance->m_matrix.push_back(q[n * i + k]);
    }
    m_list.Set(*pCovariance);
  }

  // Photos that have a point in common.
  std::set<std::pair<int, int>> PairsInSight() const {
    std::vector<std::vector<int>> photos(m_network.points.size());
    for (size_t i = 0; i < m_network.images.size(); ++i) {
      const ZuNetworkImagePoint& image = m_network.images[i];
      if (m_result.photoUsed[Index(image.iPhoto)] && m_result.imageTests[i].bUsed) {
        photos[Index(image.iPoint)].push_back(image.iPhoto);
      }
    }
    std::set<std::pair<int, int>> pairs;
    for (const std::vector<int>& sight : photos) {
      for (const int i : sight) {
        for (const int k : sight) {
          if (i < k) pairs.emplace(i, k);
        }
      }
    }
    return pairs;
  }

  const ZuNetwork& m_network;
  const ZuNetworkResult& m_result;
  ZuCovarianceList& m_list;
};

}  // namespace

void ZuStoreNetwork(const ZuNetwork& network, const ZuNetworkResult& result, ZuProject* pProject) {
  for (size_t i = 0; i < result.photos.size(); ++i) {
    const ZuNetworkPhoto& adjusted = result.photos[i];
    ZuPhoto* pPhoto = pProject->PhotoList().Find(adjusted.uId);
    if (pPhoto == nullptr || !result.photoUsed[i]) continue;
    pPhoto->SetRotAOR(ZuMatrix(3, 3).Set(adjusted.adRotation.data(), 3, 3));
    pPhoto->SetPosAOR(adjusted.adPosition[0], adjusted.adPosition[1], adjusted.adPosition[2]);
    pPhoto->SetHasAOR(true);
    const ZuCamera& camera = result.cameras[Index(adjusted.iCamera)];
    ZuCamera own = pPhoto->GetCamera();
    Take(camera, &own);
    pPhoto->SetCamera(own);
    ZuCamera* pListed = pProject->CameraList().Find(camera.GetId());
    if (pListed != nullptr && pListed->m_iMode == camera.m_iMode) Take(camera, pListed);
  }
  ZuCamera::DeleteInvAdjustTables();  // they belong to the cameras as they were
  pProject->Covariances().Clear();
  if (result.pCovariance != nullptr) {
    CovarianceMaker(network, result, &pProject->Covariances()).Make();
  }
}
