// Cameras of computer vision in the records of a photo, and back.
//
// A camera of mode 2 with r0 = 0 and an affine way from pixels to mm hold k1, k2, k3, p1, p2, focal
// lengths, skew and principal point exactly; what has other terms is fitted over the image.
#pragma once

#include <string>
#include <tuple>

#include "zu/exchange/internal/pinhole_fit.h"
#include "zu/photo/camera.h"
#include "zu/photo/reseau_trafo.h"

class ZuPhoto;

namespace zu::internal {

// What of a photo makes its camera.
struct HeldCamera {
  ZuCamera camera{};
  ZuReseauTrafo pre, main;
  ZuImageSize size;

  void StoreIn(ZuPhoto* pPhoto) const;
};

// How well a camera is told in another form.
struct CameraFit {
  bool bFitted = false;  // false: exact
  LargestError largest;  // of a fit
  std::string strWhy;    // why there is no camera; empty where there is one
};

// The camera that holds the model, with pixels of that width in mm. ThroughFile is the model as the
// file tells it, read again: what a file makes of the camera comes back to the bit.
HeldCamera HoldCamera(const PinholeModel& model, const ZuImageSize& size, double dPixelSize,
                      PinholeModel (*ThroughFile)(const PinholeModel&), CameraFit* pFit);

// A photo's camera as a model. Where the axes of its pixels are turned against those of its camera,
// the model is that of a camera turned by dTurn about its axis [rad, from x to y of the pixels].
struct ToldCamera {
  PinholeModel model;
  ZuImageSize size;
  double dTurn = 0.0;
  double dPixelSize = 0.0;  // width of a pixel [mm]
  bool bPixelsUp = false;   // y of the photo's pixels counts up: measurements are to be turned
};

// Models with these parameters can be told; the first set that is exact, or good to a thousandth of
// a pixel, else the best of them.
ToldCamera TellCamera(const ZuPhoto& photo, const std::vector<unsigned>& parameters,
                      CameraFit* pFit);

}  // namespace zu::internal
