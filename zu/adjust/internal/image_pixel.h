// From measured pixels to image points [mm]: a photo's two plane transformations with their
// derivative, which carries standard deviations and residuals.
#pragma once

#include <array>
#include <vector>

#include "zu/adjust/image_observation.h"
#include "zu/photo/photo.h"

namespace zu::internal {

using PixelSlope = std::array<double, 4>;  // of Biko by pixels, by rows [mm/px]

// Carries a pixel to Biko in place and returns the derivative there.
PixelSlope PixelToImage(const ZuPhoto& photo, double* x, double* y);

// Covariance xx, xy, yy of the image point [mm^2] from the standard deviations of the pixel [px].
std::array<double, 3> ImageCovariance(const PixelSlope& slope, double dSdX, double dSdY);

// A difference of image points [mm] in the axes of the pixels [px].
std::array<double, 2> ToPixels(const PixelSlope& slope, double dx, double dy);

// A measured point of a photo as an image point.
struct ImagePoint {
  ZuImageObservation image;  // with its variances
  PixelSlope slope{};
};

// The points of a list of pixels by id. Those that are measured twice or are not finite are left
// out. Their standard deviations are m_dDX and m_dDY [px], else dSigma, in pixels or in mm.
std::vector<ImagePoint> ImagePointsOf(const ZuPhoto& photo, const ZuPointList& pixels,
                                      double dSigma, bool bSigmaInPixels);

// The point of that id; null without.
const ImagePoint* FindImagePoint(const std::vector<ImagePoint>& points, unsigned uId);

}  // namespace zu::internal
