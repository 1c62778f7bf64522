// The adjustment behind the fits of primitives: conditions between observed coordinates and small
// changes of the shape (general case of least squares), tests, points set aside.
#pragma once

#include "zu/adjust/fit_result.h"
#include "zu/adjust/internal/fit_shape.h"

namespace zu::internal {

// As large as the parameters and what follows from them: products of matrices so small are plain
// loops on the stack, where those without a bound bring the kernels for large ones with them.
using FitMatrix = Eigen::Matrix<double, Eigen::Dynamic, Eigen::Dynamic, 0,
                                FitShape::kMostParameters + 2, FitShape::kMostParameters + 2>;

struct FitOutcome {
  explicit FitOutcome(FitKind kind) : shape(kind) {}

  ZuFitResult result;
  // x = centre + scale * (x of the shape).
  FitShape shape;
  Vector3 centre = Vector3::Zero();
  double dScale = 1.0;
  // Covariance of the parameters in the coordinates of the shape.
  FitMatrix cov;
};

FitOutcome AdjustShape(FitKind kind, const std::vector<ZuFitPoint>& points,
                       const ZuFitOptions& options);

}  // namespace zu::internal
