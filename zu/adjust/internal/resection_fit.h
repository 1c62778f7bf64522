// The pose of one photo as a model of least squares.
#pragma once

#include <vector>

#include "zu/adjust/internal/group_engine.h"
#include "zu/adjust/internal/image_ray.h"
#include "zu/adjust/resection.h"

namespace zu::internal {

// A point of the fit.
struct FitPoint {
  double m[2];          // measured [mm]
  double Q[3];          // variances xx, xy, yy [mm^2]
  double P[3];          // object space
  double C[9];          // its covariance
  double direction[3];  // of the ray, image system

  // The numbers are finite and the camera knows the point.
  static bool IsUsable(const ZuCamera& camera, const ZuResectionPoint& point);
  FitPoint(const ZuCamera& camera, const ZuResectionPoint& point, double dSigma);
};

class ResectionFit : public GroupModel {
 public:
  explicit ResectionFit(const ZuCamera& fitCamera) : camera(fitCamera) {}

  int Parameters() const override { return kPose; }
  int Groups() const override { return static_cast<int>(points.size()); }
  bool IsUsed(int iGroup) const override { return used[static_cast<size_t>(iGroup)] != 0; }
  void Linearize(int iGroup, GroupEquation* pEquation) const override;
  void Step(const double* pdCorrection) override { MovePose(pdCorrection, &pose); }

  // Mean square of the two residuals over their variances; infinite where the point cannot be seen.
  double Square(const Pose& at, size_t i) const;
  // Mean distance of the points used.
  double Distance(const Pose& at) const;
  // Length of the change of the residuals over their standard deviations, from the pose to the pose
  // moved by a step; infinite where a point leaves the view.
  double Change(const double adStep[kPose]) const;
  // Steps after Levenberg from the present pose until the squares fall no more.
  void Descend();

  const ZuCamera& camera;
  std::vector<FitPoint> points;
  std::vector<char> used;
  Pose pose;

 private:
  Pose Orbited(const double adStep[kPose]) const;
  double Squares(const Pose& at) const;  // of the points used, infinite where one is not seen
};

}  // namespace zu::internal
