// Pose of a photo and the projection of object points into it, with derivatives: the collinearity
// equations and the camera's own model behind them.
#pragma once

#include <array>

#include "zu/photo/camera.h"

namespace zu::internal {

// Image vectors v = R' (P - X0); a point in front has v3 < 0.
struct Pose {
  std::array<double, 9> R{1, 0, 0, 0, 1, 0, 0, 0, 1};  // row by row, image to object
  std::array<double, 3> X0{};
};

// Six parameters of a pose: small rotations w about the image axes, R exp[w], then X0.
inline constexpr int kPose = 6;

struct ImageSlope {
  double pose[2][kPose];
  double point[2][3];
};

// The measured image point [mm] of an object point, with its derivatives where pSlope is given.
// False, outputs undefined: the point is not before the camera, the camera's model does not reach
// there or is none of modes 0, 2 and 3, or the numbers are not finite.
bool Project(const ZuCamera& camera, const Pose& pose, const double P[3], double m[2],
             ImageSlope* pSlope);

// Unit vector of the ray of a measured image point, image system. False where the camera refuses
// the point.
bool ImageDirection(const ZuCamera& camera, double x, double y, double v[3]);

// R exp[w], orthonormal to rounding; X0 + step.
void MovePose(const double adStep[kPose], Pose* pPose);

std::array<double, 3> ToImage(const Pose& pose, const double P[3]);    // R' (P - X0)
std::array<double, 3> ToObject(const Pose& pose, const double v[3]);   // X0 + R v
std::array<double, 3> Direction(const Pose& pose, const double v[3]);  // R v

}  // namespace zu::internal
