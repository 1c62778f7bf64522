// Drawings of a camera's distortion.
#pragma once

#include <string>

#include "drawing.h"

class ZuCamera;
class ZuPhoto;

namespace cli {

// The image in the image system [mm], and what it is ("image", "domain of the camera").
struct ImageExtent {
  double dLeft, dBottom, dRight, dTop;
  const char* szWhat;
};

// What a camera without photo is meant for: the square of its inverse table (RM, or 2.1 r0), which
// reaches beyond the image.
ImageExtent CameraExtent(const ZuCamera& camera);
// The image of a photo, to the borders of its outer pixels.
ImageExtent PhotoExtent(const ZuPhoto& photo);

// Radial displacement [um] over the distance from the principal point [mm], outwards to the
// farthest corner of the image; in the models with tangential terms along +x, +y and -x, -y.
Drawing DistortionCurve(const ZuCamera& camera, ImageExtent image, double dWidth, double dHeight);

// Curve and displacement vectors of the image side by side: a document of its own.
Drawing CameraPlot(const ZuCamera& camera, ImageExtent image);

}  // namespace cli
