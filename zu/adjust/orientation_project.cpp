#include "zu/adjust/orientation_project.h"

#include <algorithm>
#include <cmath>
#include <set>

#include "zu/adjust/internal/camera_parameter.h"
#include "zu/adjust/internal/image_pixel.h"
#include "zu/adjust/internal/orientation_growth.h"
#include "zu/adjust/internal/rotation_angles.h"
#include "zu/project/project.h"

using zu::internal::ImagePoint;
using zu::internal::KnownPoint;
using zu::internal::OrientationGrowth;
using zu::internal::Shot;

namespace {

size_t Index(int i) { return static_cast<size_t>(i); }

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
    if (NoneFound() && m_growth.StartFree()) RunFree(control, approximations);
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
    shot.points =
        zu::internal::ImagePointsOf(photo, *pMeasured, m_options.dSigma, m_options.bSigmaInPixels);
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

  // In a frame of its own, which is carried to that of the points given, where there are any.
  void RunFree(const ZuPointList& control, const ZuPointList& approximations) {
    m_growth.Run();
    ZuPointList given;
    std::set<unsigned> ids;
    const ZuPointList* const lists[] = {&control, &approximations, &m_project.ObjectPoints()};
    for (const ZuPointList* pList : lists) {
      for (const ZuPoint* p = pList->First(); p != nullptr; p = p->Next()) {
        if (std::isfinite(p->m_dX + p->m_dY + p->m_dZ) && ids.insert(p->GetId()).second) {
          given.Add(*p);
        }
      }
    }
    if (given.IsEmpty()) {
      m_growth.SetFreeFrame();
      m_result.bFree = true;
    } else if (!m_growth.TieTo(given)) {
      for (Shot& shot : m_growth.shots) shot.eWay = ZuOrientationWay::None;
      m_growth.known.clear();
      m_growth.strFreeWhy =
          "the photos see fewer than three of the points given, which decide no "
          "frame: three that do not lie on one line would be right";
    }
  }

  bool NoneFound() const {
    const auto& shots = m_growth.shots;
    return std::none_of(shots.begin(), shots.end(), [](const Shot& s) { return s.IsFound(); });
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
    StoreAngles(pResult);
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

  static void StoreAngles(ZuPhotoOrientation* pResult) {
    std::array<double, 9> r{}, slope{};
    for (int k = 0; k < 9; ++k) r[Index(k)] = pResult->pose.rotation[k / 3 + 1][k % 3 + 1];
    pResult->angles = zu::internal::AnglesOf(r);
    const bool bSloped = zu::internal::AngleSlope(r, &slope);
    for (size_t k = 0; k < 3; ++k) {
      double q = 0.0;
      for (size_t n = 0; n < 9; ++n) {
        q += slope[3 * k + n / 3] * slope[3 * k + n % 3] *
             pResult->pose.covariance[6 * (n / 3) + n % 3];
      }
      pResult->anglesSd[k] = bSloped ? std::sqrt(q) : std::nan("");
    }
  }

  static void StoreRms(const Shot& shot, ZuPhotoOrientation* pResult) {
    double dSum = 0.0;
    for (const ZuPointTest& test : shot.last.tests) {
      if (!test.bUsed) continue;
      const ImagePoint* at = zu::internal::FindImagePoint(shot.points, test.uId);
      const auto v = zu::internal::ToPixels(at->slope, test.adResidual[0], test.adResidual[1]);
      dSum += v[0] * v[0] + v[1] * v[1];
      ++pResult->iPoints;
    }
    if (pResult->iPoints > 0) pResult->dRmsPixels = std::sqrt(dSum / pResult->iPoints);
  }

  void Refuse(const Shot& shot, ZuPhotoOrientation* pResult) const {
    int iKnown = 0;
    for (const ImagePoint& point : shot.points)
      iKnown += m_growth.known.count(point.image.uId) != 0;
    pResult->iKnown = iKnown;
    if (m_growth.known.empty() && !m_growth.strFreeWhy.empty()) {
      pResult->strWhy = m_growth.strFreeWhy;
      return;
    }
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
    case ZuOrientationWay::Relative:
      return "relative";
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
