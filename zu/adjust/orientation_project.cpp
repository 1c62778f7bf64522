#include "zu/adjust/orientation_project.h"

#include <algorithm>
#include <cmath>

#include "zu/adjust/internal/camera_parameter.h"
#include "zu/adjust/internal/image_pixel.h"
#include "zu/adjust/internal/orientation_growth.h"
#include "zu/project/project.h"

using zu::internal::KnownPoint;
using zu::internal::OrientationGrowth;
using zu::internal::Shot;
using zu::internal::ShotPoint;

namespace {

size_t Index(int i) { return static_cast<size_t>(i); }

// The points that can be used, by id; those measured twice are left out.
std::vector<ShotPoint> PointsOf(const ZuPhoto& photo, const ZuPointList& measured,
                                const ZuOrientationOptions& options) {
  std::vector<ShotPoint> points;
  for (const ZuPoint* p = measured.First(); p != nullptr; p = p->Next()) {
    ShotPoint point;
    point.image.uId = p->GetId();
    point.image.x = p->m_dX;
    point.image.y = p->m_dY;
    point.adSlope = zu::internal::PixelToImage(photo, &point.image.x, &point.image.y);
    const double s = options.dSigma;
    const auto q = options.bSigmaInPixels ? zu::internal::ImageCovariance(point.adSlope, s, s)
                                          : std::array<double, 3>{s * s, 0.0, s * s};
    point.image.dVarianceX = q[0];
    point.image.dCovariance = q[1];
    point.image.dVarianceY = q[2];
    points.push_back(point);
  }
  const auto id = [](const ShotPoint& point) { return point.image.uId; };
  std::stable_sort(points.begin(), points.end(),
                   [&](const ShotPoint& a, const ShotPoint& b) { return id(a) < id(b); });
  std::vector<ShotPoint> once;
  for (size_t i = 0; i < points.size(); ++i) {
    const bool bTwice = (i > 0 && id(points[i - 1]) == id(points[i])) ||
                        (i + 1 < points.size() && id(points[i + 1]) == id(points[i]));
    const ZuImageObservation& image = points[i].image;
    if (!bTwice && std::isfinite(image.x + image.y + image.dVarianceX + image.dVarianceY)) {
      once.push_back(points[i]);
    }
  }
  return once;
}

ZuPose PoseOf(const ZuPhoto& photo) {
  ZuPose pose;
  pose.rotation = photo.GetRotAOR();
  pose.position = photo.GetPosAOR();
  return pose;
}

class Orientation {
 public:
  Orientation(ZuProject* pProject, const ZuOrientationOptions& options)
      : m_project(*pProject), m_options(options), m_growth(options.uSeed, options.bSigmaGiven) {}

  ZuProjectOrientation Run(const ZuPointList& control, const ZuPointList& approximations) {
    for (const ZuPhoto* p = m_project.PhotoList().First(); p != nullptr; p = p->Next()) {
      AddPhoto(*p);
    }
    std::sort(m_growth.shots.begin(), m_growth.shots.end(),
              [](const Shot& a, const Shot& b) { return a.uId < b.uId; });
    AddControl(control);
    m_growth.Run();
    if (!AllFound()) {
      AddApproximations(approximations);
      AddApproximations(m_project.ObjectPoints());
      m_growth.Run();
    }
    for (ZuPhotoOrientation& photo : m_result.photos) Store(&photo);
    return std::move(m_result);
  }

 private:
  void AddPhoto(const ZuPhoto& photo) {
    const ZuPointList* pMeasured = m_project.FindMeasurements(photo.GetId());
    if (pMeasured == nullptr || pMeasured->IsEmpty()) return;
    ZuPhotoOrientation result;
    result.uId = photo.GetId();
    result.strName = photo.GetName().chars();
    result.strWhy = m_project.Lacks(photo, eZuNeedPixels | eZuNeedCamera);
    if (result.strWhy.empty() && !zu::internal::HasModel(photo.GetCamera())) {
      result.strWhy = "has a camera of mode " + std::to_string(photo.GetCamera().m_iMode) +
                      ": one of mode 0, 2 or 3 would be right";
    }
    m_result.photos.push_back(result);
    if (!result.strWhy.empty() || Find(result.uId) != nullptr) return;
    Shot shot;
    shot.uId = photo.GetId();
    shot.camera = photo.GetCamera();
    shot.points = PointsOf(photo, *pMeasured, m_options);
    if (!m_options.bAll && m_project.Lacks(photo, eZuNeedOrientation).empty()) {
      shot.pose = PoseOf(photo);
      shot.eWay = ZuOrientationWay::Kept;
    }
    m_growth.shots.push_back(std::move(shot));
  }

  Shot* Find(unsigned uId) {
    auto& shots = m_growth.shots;
    const auto at =
        std::find_if(shots.begin(), shots.end(), [&](const Shot& shot) { return shot.uId == uId; });
    return at != shots.end() ? &*at : nullptr;
  }

  bool AllFound() const {
    const auto& shots = m_growth.shots;
    return std::all_of(shots.begin(), shots.end(), [](const Shot& s) { return s.IsFound(); });
  }

  void AddControl(const ZuPointList& control) {
    for (const ZuPoint* p = control.First(); p != nullptr; p = p->Next()) {
      const int iCode = p->m_sControl & 7;
      if (iCode != 0 && iCode != 7) continue;
      KnownPoint point;
      point.position = {p->m_dX, p->m_dY, p->m_dZ};
      const double sd[3] = {p->m_dDX, p->m_dDY, p->m_dDZ};
      for (int k = 0; k < 3; ++k) point.covariance[Index(4 * k)] = sd[k] * sd[k];
      m_growth.known.emplace(p->GetId(), point);
    }
  }

  void AddApproximations(const ZuPointList& points) {
    for (const ZuPoint* p = points.First(); p != nullptr; p = p->Next()) {
      KnownPoint point;
      point.position = {p->m_dX, p->m_dY, p->m_dZ};
      point.eFrom = ZuOrientationWay::Approximations;
      m_growth.known.emplace(p->GetId(), point);
    }
  }

  // The result of a photo, and its orientation into the project.
  void Store(ZuPhotoOrientation* pResult) {
    const Shot* pShot = Find(pResult->uId);
    if (pShot == nullptr || !pResult->strWhy.empty()) return;
    pResult->eWay = pShot->eWay;
    pResult->iMeasured = static_cast<int>(pShot->points.size());
    if (!pShot->IsFound()) return Refuse(*pShot, pResult);
    pResult->status = ZuAdjustStatus::Good;
    pResult->pose = pShot->pose;
    if (pShot->eWay == ZuOrientationWay::Kept) return;
    pResult->iKnown = pShot->iKnown;
    pResult->dSigma0 = pShot->last.dSigma0;
    pResult->alternatives = pShot->last.alternatives;
    StoreRms(*pShot, pResult);
    ZuPhoto* pPhoto = m_project.PhotoList().Find(pResult->uId);
    pPhoto->SetRotAOR(pShot->pose.rotation);
    pPhoto->SetPosAOR(pShot->pose.position);
    pPhoto->SetHasAOR(true);
  }

  static void StoreRms(const Shot& shot, ZuPhotoOrientation* pResult) {
    double dSum = 0.0;
    for (const ZuPointTest& test : shot.last.tests) {
      if (!test.bUsed) continue;
      const auto at = std::lower_bound(
          shot.points.begin(), shot.points.end(), test.uId,
          [](const ShotPoint& point, unsigned uId) { return point.image.uId < uId; });
      const auto v = zu::internal::ToPixels(at->adSlope, test.adResidual[0], test.adResidual[1]);
      dSum += v[0] * v[0] + v[1] * v[1];
      ++pResult->iPoints;
    }
    if (pResult->iPoints > 0) pResult->dRmsPixels = std::sqrt(dSum / pResult->iPoints);
  }

  void Refuse(const Shot& shot, ZuPhotoOrientation* pResult) const {
    int iKnown = 0;
    for (const ShotPoint& point : shot.points) iKnown += m_growth.known.count(point.image.uId) != 0;
    pResult->iKnown = iKnown;
    if (iKnown < 3 || shot.last.status == ZuAdjustStatus::Good) {
      pResult->status = ZuAdjustStatus::TooFew;
      pResult->strWhy = std::to_string(iKnown) + " of its " + std::to_string(shot.points.size()) +
                        " points have a known position: three control points, or four points that "
                        "two oriented photos see, would be right";
      return;
    }
    pResult->status = shot.last.status;
    pResult->strWhy = shot.last.strWhy;
  }

  ZuProject& m_project;
  const ZuOrientationOptions& m_options;
  OrientationGrowth m_growth;
  ZuProjectOrientation m_result;
};

}  // namespace

const char* ZuOrientationWayText(ZuOrientationWay eWay) {
  switch (eWay) {
    case ZuOrientationWay::None:
      return "none";
    case ZuOrientationWay::Kept:
      return "kept";
    case ZuOrientationWay::Control:
      return "control";
    case ZuOrientationWay::Points:
      return "points";
    case ZuOrientationWay::Approximations:
      return "approximations";
  }
  return "unknown";
}

int ZuProjectOrientation::CountGood() const {
  return static_cast<int>(std::count_if(photos.begin(), photos.end(),
                                        [](const ZuPhotoOrientation& p) { return p.IsGood(); }));
}

ZuProjectOrientation ZuOrientProject(ZuProject* pProject, const ZuPointList& control,
                                     const ZuPointList& approximations,
                                     const ZuOrientationOptions& options) {
  return Orientation(pProject, options).Run(control, approximations);
}
