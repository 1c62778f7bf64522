// Orientation of many photos from few known points: resection and intersection in turns.
#pragma once

#include <array>
#include <map>
#include <string>
#include <vector>

#include "zu/adjust/orientation_project.h"
#include "zu/adjust/resection.h"
#include "zu/photo/camera.h"

namespace zu::internal {

struct ShotPoint {
  ZuImageObservation image;         // with its variances
  std::array<double, 4> adSlope{};  // of mm by pixels
};

// A photo, on its way to an orientation.
struct Shot {
  unsigned uId = 0;
  ZuCamera camera;
  std::vector<ShotPoint> points;  // by id, each id once
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

class OrientationGrowth {
 public:
  explicit OrientationGrowth(unsigned uSeed, bool bSigmaGiven)
      : m_uSeed(uSeed), m_bSigmaGiven(bSigmaGiven) {}

  // By id of point. Control stays; the others are replaced by what is intersected.
  std::map<unsigned, KnownPoint> known;
  std::vector<Shot> shots;  // by id

  // Orients the shots that are not, as far as the known points reach.
  void Run();

 private:
  void ResectByControl();
  void IntersectPoints();
  bool GrowOnce();
  bool TakeAmbiguous();
  bool ChoosePair();
  bool TryShot(Shot* pShot, bool bAmbiguousToo);
  ZuResectionResult Resect(Shot* pShot, bool bControlAlone);

  unsigned m_uSeed;
  bool m_bSigmaGiven;
  std::map<unsigned, int> m_raysOf;  // of the points when they were intersected last
};

}  // namespace zu::internal
