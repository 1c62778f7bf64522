#include "zu/adjust/fit_primitives.h"

#include <Eigen/Dense>
#include <algorithm>
#include <cmath>
#include <limits>

#include "zu/adjust/internal/fit_adjust.h"

namespace {

using zu::internal::AdjustShape;
using zu::internal::FitKind;
using zu::internal::FitMatrix;
using zu::internal::FitOutcome;
using zu::internal::Vector3;

bool IsGood(const FitOutcome& outcome) { return outcome.result.eStatus == ZuAdjustStatus::Good; }

// Covariance of what the derivatives J carry the parameters to; by rows into pd. False where it is
// not finite.
bool Carry(const FitMatrix& J, const FitOutcome& outcome, double* pd) {
  const FitMatrix cov = J * outcome.cov * J.transpose();
  bool bFinite = true;
  for (Eigen::Index i = 0; i < cov.rows(); ++i) {
    for (Eigen::Index j = 0; j < cov.cols(); ++j) {
      *pd = 0.5 * cov(i, j) + 0.5 * cov(j, i);
      bFinite = std::isfinite(*pd++) && bFinite;
    }
  }
  return bFinite;
}

void Copy(const Vector3& v, double* pd) { std::copy(v.data(), v.data() + 3, pd); }

Vector3 World(const FitOutcome& outcome, const Vector3& x) {
  return outcome.centre + outcome.dScale * x;
}

ZuPoint3d PointOf(const Vector3& v) { return ZuPoint3d(v[0], v[1], v[2]); }

// Line or axis, from the first to the last foot of the points used.
ZuLine3d LineOf(const FitOutcome& outcome, const std::vector<ZuFitPoint>& points) {
  double dLow = std::numeric_limits<double>::infinity(), dHigh = -dLow;
  for (size_t i = 0; i < points.size(); ++i) {
    if (!outcome.result.points[i].bUsed) continue;
    Vector3 x;
    for (int a = 0; a < 3; ++a) x[a] = (points[i].adX[a] - outcome.centre[a]) / outcome.dScale;
    const double t = outcome.shape.Direction().dot(x);
    dLow = std::min(dLow, t);
    dHigh = std::max(dHigh, t);
  }
  const Vector3 p = outcome.shape.Point(), n = outcome.shape.Direction();
  ZuLine3d line(PointOf(World(outcome, p + dLow * n)), ZuVector3d(n[0], n[1], n[2]));
  line.getEnd() = PointOf(World(outcome, p + dHigh * n));
  return line;
}

// Derivatives of point, direction and, with a fifth parameter, radius.
FitMatrix AxisDerivatives(const FitOutcome& outcome) {
  const Eigen::Index u = outcome.cov.rows();
  FitMatrix J = FitMatrix::Zero(u + 2, u);
  J.block<3, 1>(0, 2) = outcome.dScale * outcome.shape.E1();
  J.block<3, 1>(0, 3) = outcome.dScale * outcome.shape.E2();
  J.block<3, 1>(3, 0) = outcome.shape.E1();
  J.block<3, 1>(3, 1) = outcome.shape.E2();
  if (u == 5) J(6, 4) = outcome.dScale;
  return J;
}

void SetFinite(bool bFinite, FitOutcome* pOutcome) {
  if (!bFinite) pOutcome->result.eStatus = ZuAdjustStatus::NotFinite;
}

template <size_t N>
bool AllFinite(const double (&ad)[N]) {
  return std::all_of(ad, ad + N, [](double d) { return std::isfinite(d); });
}

}  // namespace

ZuPlaneFit ZuFitPlane(const std::vector<ZuFitPoint>& points, const ZuFitOptions& options) {
  FitOutcome outcome = AdjustShape(FitKind::kPlane, points, options);
  ZuPlaneFit plane;
  if (IsGood(outcome)) {
    const Vector3 n = outcome.shape.Direction();
    const double dScale = outcome.dScale;
    Copy(outcome.centre, plane.adCentre);
    plane.dHeight = outcome.shape.Height() * dScale;
    plane.dHeightSd = std::sqrt(outcome.cov(2, 2)) * dScale;
    plane.plane.A() = n[0];
    plane.plane.B() = n[1];
    plane.plane.C() = n[2];
    plane.plane.D() = -n.dot(outcome.centre) - plane.dHeight;
    FitMatrix J = FitMatrix::Zero(4, 3);
    J.block<3, 1>(0, 0) = outcome.shape.E1();
    J.block<3, 1>(0, 1) = outcome.shape.E2();
    J.row(3) << -outcome.centre.dot(outcome.shape.E1()), -outcome.centre.dot(outcome.shape.E2()),
        -dScale;
    const bool bFinite = Carry(J, outcome, plane.adCov);
    for (int i = 0; i < 4; ++i) plane.adSd[i] = std::sqrt(std::max(0.0, plane.adCov[5 * i]));
    SetFinite(bFinite && std::isfinite(plane.plane.D()) && std::isfinite(plane.dHeightSd),
              &outcome);
  }
  plane.fit = std::move(outcome.result);
  return plane;
}

ZuLineFit ZuFitLine(const std::vector<ZuFitPoint>& points, const ZuFitOptions& options) {
  FitOutcome outcome = AdjustShape(FitKind::kLine, points, options);
  ZuLineFit line;
  if (IsGood(outcome)) {
    line.line = LineOf(outcome, points);
    Copy(World(outcome, outcome.shape.Point()), line.adPoint);
    SetFinite(Carry(AxisDerivatives(outcome), outcome, line.adCov) && AllFinite(line.adPoint),
              &outcome);
  }
  line.fit = std::move(outcome.result);
  return line;
}

ZuSphereFit ZuFitSphere(const std::vector<ZuFitPoint>& points, const ZuFitOptions& options) {
  FitOutcome outcome = AdjustShape(FitKind::kSphere, points, options);
  ZuSphereFit sphere;
  if (IsGood(outcome)) {
    Copy(World(outcome, outcome.shape.Point()), sphere.adCentre);
    sphere.dRadius = outcome.shape.Radius() * outcome.dScale;
    const FitMatrix J = FitMatrix::Identity(4, 4) * outcome.dScale;
    SetFinite(Carry(J, outcome, sphere.adCov) && AllFinite(sphere.adCentre) &&
                  std::isfinite(sphere.dRadius),
              &outcome);
  }
  sphere.fit = std::move(outcome.result);
  return sphere;
}

ZuCylinderFit ZuFitCylinder(const std::vector<ZuFitPoint>& points, const ZuFitOptions& options) {
  FitOutcome outcome = AdjustShape(FitKind::kCylinder, points, options);
  ZuCylinderFit cylinder;
  if (IsGood(outcome)) {
    cylinder.axis = LineOf(outcome, points);
    cylinder.dRadius = outcome.shape.Radius() * outcome.dScale;
    Copy(World(outcome, outcome.shape.Point()), cylinder.adPoint);
    SetFinite(Carry(AxisDerivatives(outcome), outcome, cylinder.adCov) &&
                  AllFinite(cylinder.adPoint) && std::isfinite(cylinder.dRadius),
              &outcome);
  }
  cylinder.fit = std::move(outcome.result);
  return cylinder;
}
