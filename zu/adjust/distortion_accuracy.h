// The distortion of a camera at a place of the image, with what an adjustment knows of it.
#pragma once

#include <vector>

#include "zu/adjust/export.h"
#include "zu/photo/camera.h"

struct ZuDistortion {
  double dx = 0.0, dy = 0.0;  // corrected less measured, about the principal point [mm]
  double dXX = 0.0, dXY = 0.0, dYY = 0.0;  // covariance [mm^2]
};

// At the corrected point (x, y) [mm]. `parameters` are ZuNetworkParameter values, `cov` their
// covariance, row by row. It counts the coefficients alone: the camera constant and the principal
// point move the image, they do not bend it. False, output undefined: a mode other than 0, 2 and 3,
// or a place that the model does not reach.
ZU_ADJUST_API bool ZuDistortionAt(const ZuCamera& camera, double x, double y,
                                  const std::vector<int>& parameters,
                                  const std::vector<double>& cov, ZuDistortion* pResult);
