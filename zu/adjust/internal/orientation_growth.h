// Orientation of many photos from few known points: resection and intersection in turns.
#pragma once

#include <array>
#include <map>
#include <string>
#include <vector>

#include "zu/adjust/internal/image_pixel.h"
#include "zu/adjust/intersection.h"
#include "zu/adjust/orientation_project.h"
#include "zu/adjust/relative_orientation.h"
#include "zu/adjust/resection.h"
#include "zu/photo/camera.h"

namespace zu::internal {

// A photo, on its way to an orientation.
struct Shot {
  unsigned uId = 0;
  ZuCamera camera;
  std::vector<ImagePoint> points;  // by id, each id once
  ZuPose pose;
  ZuOrientationWay eWay = ZuOrientationWay::None;  // None: not oriented
  std::vector<ZuPose> poses;                       // those that control leaves to choose from
  ZuResectionResult last;                          // of the last try
  int iKnown = 0;                                  // points known then

  bool IsFound() const { return eWay != ZuOrientationWay::None; }
};

struct KnownPoint {
  std::array<double, 3> position{};
  std::array<double, 9> covariance{};
  ZuOrientationWay eFrom = ZuOrientationWay::Control;  // Control, Points or Approximations
};

// The ray of an image point from a pose of the shot.
ZuIntersectionRay RayOf(const Shot& shot, const ZuPose& pose, const ImagePoint& point);

class OrientationGrowth {
 public:
  explicit OrientationGrowth(unsigned uSeed, bool bSigmaGiven)
      : m_uSeed(uSeed), m_bSigmaGiven(bSigmaGiven) {}

  // By id of point. Control stays; the others are replaced by what is intersected.
  std::map<unsigned, KnownPoint> known;
  std::vector<Shot> shots;  // by id

  // Orients the shots that are not, as far as the known points reach.
  void Run();

  // Orients two shots to each other, where none is oriented, and leaves the known points for those
  // that the two share: a frame of its own. False where no two can be, and why.
  bool StartFree();
  std::string strFreeWhy;
  // Origin in the centre of the known points, their mean distance from it 1, z the direction of
  // their least extent, towards the shots.
  void SetFreeFrame();
  // Carries the frame to that of three or more of the known points. False, nothing changed: fewer,
  // or points that decide no frame.
  bool TieTo(const ZuPointList& target);

 private:
  struct FreeStart;
  std::vector<FreeStart> FreeStarts();
  void Place(const FreeStart& start, const ZuPose& pose);
  double Judge(const FreeStart& start);
  bool GrowByPair();
  bool ScalePair(const Shot& other, const ZuRelativeResult& pair, Shot* pShot);
  void AdjustFree();
  void Carry(const std::array<double, 9>& R, double s, const std::array<double, 3>& from,
             const std::array<double, 3>& to);
  void ResectByControl();
  void IntersectPoints();
  bool GrowOnce();
  bool TakeAmbiguous();
  bool ChoosePair();
  bool TryShot(Shot* pShot, bool bAmbiguousToo);
  ZuResectionResult Resect(Shot* pShot, bool bControlAlone);

  unsigned m_uSeed;
  bool m_bSigmaGiven;
  bool m_bFree = false;
  std::map<unsigned, int> m_raysOf;  // of the points when they were intersected last
};

}  // namespace zu::internal
