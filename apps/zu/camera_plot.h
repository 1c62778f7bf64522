// Drawings of a camera's distortion.
#pragma once

#include <string>

class ZuCamera;

namespace cli {

// Half-width and half-height of an image around (0, 0) [mm].
struct ImageSize {
  double dHalfWidth, dHalfHeight;
};

// The image that the camera is meant for: its table's half-width, or 2.1 r0.
ImageSize DefaultImageSize(const ZuCamera& camera);

// Radial displacement [um] over the distance from the principal point [mm], outwards to the
// farthest corner of the image; in the models with tangential terms along +x, +y and -x, -y.
std::string DistortionCurve(const ZuCamera& camera, ImageSize image, double dWidth, double dHeight);

// Curve and displacement vectors of the image side by side: a document of its own.
std::string CameraPlot(const ZuCamera& camera, ImageSize image);

}  // namespace cli
