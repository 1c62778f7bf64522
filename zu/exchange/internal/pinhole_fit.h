// The camera of a simpler model that comes closest to another one over the image.
#pragma once

#include <vector>

#include "zu/exchange/internal/pinhole_model.h"

namespace zu::internal {

// A direction and the pixel at which the camera sees it.
struct Sight {
  PlaneVector n;
  ZuPixel pixel;
};

// Parameters that are fitted, as bits.
enum PinholeParameter : unsigned {
  kFitFocal = 1,  // fx, fy, cx, cy
  kFitSkew = 2,
  kFitK1 = 4,  // and so on
  kFitK2 = 8,
  kFitK3 = 16,
  kFitRational = 32,  // k4, k5, k6
  kFitTangential = 64,
  kFitOneFocal = 128  // fy is fx
};

struct PinholeFit {
  PinholeModel model;
  bool bGood = false;  // false: too few sights, or no finite result
};

// Least squares of the distances in the image, by the method of Levenberg and Marquardt.
PinholeFit FitPinhole(const std::vector<Sight>& sights, unsigned uParameters);

// The largest distance of what the model makes of the directions from their pixels, and where.
struct LargestError {
  double dError = 0.0;  // [px]; not finite where the model is not
  ZuPixel pixel;
};
LargestError FindLargestError(const std::vector<Sight>& sights, const PinholeModel& model);

// Pixels of a grid over the image, its border included.
std::vector<ZuPixel> PixelGrid(const ZuImageSize& size, int iAcross);

}  // namespace zu::internal
