// Cameras as programs of computer vision describe them: from a direction to a pixel.
//
//   n = (x / z, y / z) of an object point in the camera's system, x right, y down, z ahead
//   distortion   n (1 + k1 r^2 + k2 r^4 + k3 r^6 + k7 r^8) / (1 + k4 r^2 + k5 r^4 + k6 r^6)
//                + (2 p1 x y + p2 (r^2 + 2 x^2), 2 p2 x y + p1 (r^2 + 2 y^2)) (1 + q1 r^2 + q2 r^4)
//                + (s1 r^2 + s2 r^4, s3 r^2 + s4 r^4)
//   tilt         the image plane turned by tau_x, tau_y about its axes
//   pixel        (fx x + skew y + cx, fy y + cy), counted from the centre of the first pixel
//
// Other lenses than a perspective one carry n to their own radius first: the angle from the axis
// for an equidistant one, atan(2 r tan(w / 2)) / w for a field of view w.
#pragma once

#include <array>

#include "zu/numerics/pixel_convention.h"

namespace zu::internal {

enum class Lens { Perspective, Equidistant, FieldOfView };

struct PlaneVector {
  double x = 0.0, y = 0.0;
};

struct PinholeModel {
  Lens eLens = Lens::Perspective;
  double fx = 0.0, fy = 0.0, skew = 0.0, cx = 0.0, cy = 0.0;  // [px]
  std::array<double, 7> k{};                                  // k1 to k7
  std::array<double, 2> p{}, q{};
  std::array<double, 4> s{};
  std::array<double, 2> tau{};  // [rad]
  double dFieldOfView = 0.0;    // [rad]

  ZuPixel Project(PlaneVector n) const;
  // The direction of a pixel by Newton's method; false where there is none, such as 90 degrees from
  // the axis and beyond.
  bool Unproject(ZuPixel pixel, PlaneVector* pN) const;

  // Nothing but fx, fy, skew, cx, cy, k1, k2, k3, p1 and p2.
  bool IsBrown() const;
  bool IsFinite() const;

  bool operator==(const PinholeModel&) const = default;
};

}  // namespace zu::internal
