// From measured pixels to image points [mm]: a photo's two plane transformations with their
// derivative, which carries standard deviations and residuals.
#pragma once

#include <array>

#include "zu/photo/photo.h"

namespace zu::internal {

using PixelSlope = std::array<double, 4>;  // of Biko by pixels, by rows [mm/px]

// Carries a pixel to Biko in place and returns the derivative there.
PixelSlope PixelToImage(const ZuPhoto& photo, double* x, double* y);

// Covariance xx, xy, yy of the image point [mm^2] from the standard deviations of the pixel [px].
std::array<double, 3> ImageCovariance(const PixelSlope& slope, double dSdX, double dSdY);

// A difference of image points [mm] in the axes of the pixels [px].
std::array<double, 2> ToPixels(const PixelSlope& slope, double dx, double dy);

}  // namespace zu::internal
