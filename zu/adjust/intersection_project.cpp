#include "zu/adjust/intersection_project.h"

#include <algorithm>
#include <deque>
#include <map>

#include "zu/adjust/internal/camera_parameter.h"
#include "zu/adjust/internal/image_pixel.h"
#include "zu/adjust/internal/pose_errors.h"
#include "zu/adjust/internal/small_matrix.h"
#include "zu/adjust/intersection.h"
#include "zu/project/project.h"

namespace {

struct MeasuredRay {
  ZuIntersectionRay ray;
  const zu::internal::UnsurePhoto* pPhoto = nullptr;
  zu::internal::PixelSlope slope{};
};

class Intersector {
 public:
  Intersector(const ZuProject& project, const ZuProjectIntersectionOptions& options)
      : m_project(project), m_options(options) {}

  ZuProjectIntersection Run() {
    const ZuPhotoList& photos = m_project.PhotoList();
    for (const ZuPhoto* p = photos.First(); p != nullptr; p = p->Next()) AddPhoto(*p);
    if (!m_options.bSigmaGiven) EstimateSigma();
    IntersectAll();
    return std::move(m_result);
  }

 private:
  void AddPhoto(const ZuPhoto& photo) {
    const ZuPointList* pMeasured = m_project.FindMeasurements(photo.GetId());
    if (pMeasured == nullptr || pMeasured->IsEmpty()) return;
    std::string strLacks =
        m_project.Lacks(photo, eZuNeedPixels | eZuNeedCamera | eZuNeedOrientation);
    if (strLacks.empty() && !zu::internal::HasModel(photo.GetCamera())) {
      strLacks = "has a camera of mode 1: one of mode 0, 2 or 3 would be right";
    }
    if (!strLacks.empty()) {
      m_result.warnings.push_back("photo " + std::to_string(photo.GetId()) + " " + strLacks +
                                  "; left out");
      return;
    }
    m_photos.emplace_back(photo, m_project.Covariances());
    m_result.iUnsurePhotos += m_photos.back().bOrientation;
    MeasuredRay measured;
    measured.pPhoto = &m_photos.back();
    measured.ray.pCamera = &photo.GetCamera();
    measured.ray.pose.rotation = photo.GetRotAOR();
    measured.ray.pose.position = photo.GetPosAOR();
    for (const auto& point : zu::internal::ImagePointsOf(photo, *pMeasured, m_options.dSigma,
                                                         m_options.bSigmaInPixels)) {
      measured.ray.image = point.image;
      measured.ray.image.uId = photo.GetId();
      measured.slope = point.slope;
      m_rays[point.image.uId].push_back(measured);
    }
  }

  ZuIntersectionResult Intersect(const std::vector<MeasuredRay>& measured) const {
    std::vector<ZuIntersectionRay> rays;
    for (const MeasuredRay& m : measured) {
      rays.push_back(m.ray);
      ZuImageObservation& image = rays.back().image;
      const double s2 = m_result.dSigma0 * m_result.dSigma0;
      image.dVarianceX *= s2;
      image.dVarianceY *= s2;
      image.dCovariance *= s2;
    }
    ZuIntersectionOptions options;
    options.tests = m_options.tests;
    options.tests.sigmaKind = ZuSigmaKind::APriori;
    return ZuIntersectRays(rays, options);
  }

  // What orientations and cameras add to the covariance of a point that its image points gave.
  void AddErrorsOfPhotos(const std::vector<MeasuredRay>& measured, ZuIntersectedPoint* p) const {
    const double s2 = m_result.dSigma0 * m_result.dSigma0;
    std::vector<zu::internal::UnsureRay> rays;
    for (size_t i = 0; i < measured.size(); ++i) {
      if (!p->rays[i].test.bUsed) continue;
      const ZuImageObservation& image = measured[i].ray.image;
      const double q[4] = {s2 * image.dVarianceX, s2 * image.dCovariance, s2 * image.dCovariance,
                           s2 * image.dVarianceY};
      rays.push_back({measured[i].pPhoto, {}});
      zu::internal::InvertSpd(2, q, rays.back().adWeight);
    }
    if (AddPoseErrors(m_project.Covariances(), rays, p->position, &p->covariance)) return;
    p->status = ZuAdjustStatus::NotFinite;
    p->strWhy =
        "the covariances of its photos give no standard deviation: COVARIANCE blocks of one "
        "adjustment would be right";
  }

  // One sigma0 of the rays of all points. Snooping waits for it.
  void EstimateSigma() {
    double dSquares = 0.0;
    int iRedundancy = 0;
    for (const auto& [uId, measured] : m_rays) {
      if (measured.size() < 2) continue;
      std::vector<ZuIntersectionRay> rays;
      for (const MeasuredRay& m : measured) rays.push_back(m.ray);
      ZuIntersectionOptions options;
      options.tests.sigmaKind = ZuSigmaKind::APosteriori;
      options.tests.bSnoop = m_options.tests.bSnoop;
      const ZuIntersectionResult result = ZuIntersectRays(rays, options);
      if (result.status != ZuAdjustStatus::Good) continue;
      dSquares += result.dSigma0 * result.dSigma0 * result.iRedundancy;
      iRedundancy += result.iRedundancy;
    }
    if (iRedundancy == 0 || !(dSquares > 0.0)) return;
    m_result.dSigma0 = std::sqrt(dSquares / iRedundancy);
    m_result.sigmaKind = ZuSigmaKind::APosteriori;
  }

  void IntersectAll() {
    double dSquares = 0.0;
    int iUsed = 0;
    for (const auto& [uId, measured] : m_rays) {
      if (measured.size() < 2) continue;
      const ZuIntersectionResult result = Intersect(measured);
      ZuIntersectedPoint point;
      point.uId = uId;
      point.status = result.status;
      point.strWhy = result.strWhy;
      for (size_t k = 0; k < 3; ++k) point.position[k] = result.position[static_cast<int>(k) + 1];
      point.covariance = result.covariance;
      point.iRays = result.iRays;
      point.dAngle = result.dAngle;
      if (point.IsGood()) m_result.iRedundancy += result.iRedundancy;
      for (size_t i = 0; i < measured.size(); ++i) {
        ZuIntersectedRay ray;
        ray.uPhoto = measured[i].ray.image.uId;
        ray.test = result.tests[i];
        ray.test.uId = uId;
        ray.adResidualPixels = zu::internal::ToPixels(measured[i].slope, ray.test.adResidual[0],
                                                      ray.test.adResidual[1]);
        if (point.IsGood() && ray.test.bUsed) {
          dSquares += ray.adResidualPixels[0] * ray.adResidualPixels[0] +
                      ray.adResidualPixels[1] * ray.adResidualPixels[1];
          ++iUsed;
        }
        point.rays.push_back(ray);
      }
      if (point.IsGood()) AddErrorsOfPhotos(measured, &point);
      std::stable_sort(point.rays.begin(), point.rays.end(),
                       [](const auto& a, const auto& b) { return a.uPhoto < b.uPhoto; });
      m_result.points.push_back(std::move(point));
    }
    if (iUsed > 0) m_result.dRmsPixels = std::sqrt(dSquares / iUsed);
  }

  const ZuProject& m_project;
  const ZuProjectIntersectionOptions& m_options;
  std::deque<zu::internal::UnsurePhoto> m_photos;
  std::map<unsigned, std::vector<MeasuredRay>> m_rays;  // by point
  ZuProjectIntersection m_result;
};

}  // namespace

int ZuProjectIntersection::CountGood() const {
  return static_cast<int>(std::count_if(points.begin(), points.end(),
                                        [](const auto& point) { return point.IsGood(); }));
}

ZuProjectIntersection ZuIntersectProject(const ZuProject& project,
                                         const ZuProjectIntersectionOptions& options) {
  return Intersector(project, options).Run();
}
