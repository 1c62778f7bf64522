#include "zu/adjust/internal/three_point.h"

#include <Eigen/Dense>
#include <cmath>

#include "zu/adjust/internal/real_eigen.h"

namespace zu::internal {

namespace {

using Vec = Eigen::Vector3d;

constexpr double kCollinear = 1e-9;  // sine of the angle of a triangle's sides
constexpr double kRealRoot = 1e-3;   // imaginary over real part of a root that may be a double one
constexpr double kNearRoot = 0.2;    // the same of what is nearly a solution
constexpr double kSame = 1e-7;       // of two solutions, relative
constexpr int kNewtonRounds = 60;

// Distances s1, s2, s3 along the directions: s_i^2 + s_j^2 - 2 s_i s_j cos_ij = side_ij^2.
struct Triangle {
  double c12, c13, c23;  // cosines between the directions
  double d12, d13, d23;  // squared sides
};

Vec Residual(const Triangle& t, const Vec& s) {
  return {s[0] * s[0] + s[1] * s[1] - 2.0 * s[0] * s[1] * t.c12 - t.d12,
          s[0] * s[0] + s[2] * s[2] - 2.0 * s[0] * s[2] * t.c13 - t.d13,
          s[1] * s[1] + s[2] * s[2] - 2.0 * s[1] * s[2] * t.c23 - t.d23};
}

// Newton from s on; false where it does not end at three positive distances.
bool Polish(const Triangle& t, double dTolerance, Vec* s) {
  Vec e = Residual(t, *s), best = *s;
  double dBest = e.norm();
  for (int n = 0; n < kNewtonRounds && dBest > 0.0; ++n) {
    Eigen::Matrix3d J;
    J << (*s)[0] - (*s)[1] * t.c12, (*s)[1] - (*s)[0] * t.c12, 0.0,  //
        (*s)[0] - (*s)[2] * t.c13, 0.0, (*s)[2] - (*s)[0] * t.c13,   //
        0.0, (*s)[1] - (*s)[2] * t.c23, (*s)[2] - (*s)[1] * t.c23;
    *s -= 0.5 * J.fullPivLu().solve(e);
    e = Residual(t, *s);
    if (!(e.norm() < dBest)) break;
    dBest = e.norm();
    best = *s;
  }
  *s = best;
  const double dScale = std::max({t.d12, t.d13, t.d23});
  return dBest <= dTolerance * dScale && best.minCoeff() > 0.0 && best.allFinite();
}

// Coefficients of v^4 to 1 of Grunert's equation, v = s3 / s1.
void GrunertEquation(const Triangle& t, double A[5]) {
  const double a2 = t.d23, b2 = t.d13, c2 = t.d12;  // opposite to points 1, 2, 3
  const double ca = t.c23, cb = t.c13, cg = t.c12;
  const double p = (a2 - c2) / b2, q = (a2 + c2) / b2;
  A[4] = (p - 1.0) * (p - 1.0) - 4.0 * c2 / b2 * ca * ca;
  A[3] = 4.0 * (p * (1.0 - p) * cb - (1.0 - q) * ca * cg + 2.0 * c2 / b2 * ca * ca * cb);
  A[2] = 2.0 * (p * p - 1.0 + 2.0 * p * p * cb * cb + 2.0 * (b2 - c2) / b2 * ca * ca -
                4.0 * q * ca * cb * cg + 2.0 * (b2 - a2) / b2 * cg * cg);
  A[1] = 4.0 * (-p * (1.0 + p) * cb + 2.0 * a2 / b2 * cg * cg * cb - (1.0 - q) * ca * cg);
  A[0] = (1.0 + p) * (1.0 + p) - 4.0 * a2 / b2 * cg * cg;
}

// Positive roots, double ones also where rounding made them complex.
std::vector<double> PositiveRoots(const double A[5], double dComplex) {
  int n = 4;
  double dLargest = 0.0;
  for (int i = 0; i <= 4; ++i) dLargest = std::max(dLargest, std::fabs(A[i]));
  while (n > 0 && std::fabs(A[n]) <= 1e-14 * dLargest) --n;
  std::vector<double> roots;
  if (n == 0 || !std::isfinite(dLargest)) return roots;
  double companion[4 * 4] = {}, real[4], imaginary[4];
  for (int i = 0; i < n; ++i) {
    companion[i * n + n - 1] = -A[i] / A[n];
    if (i > 0) companion[i * n + i - 1] = 1.0;
  }
  const int iCount = Eigenvalues(n, companion, real, imaginary);
  for (int i = 0; i < iCount; ++i) {
    if (real[i] > 0.0 && std::fabs(imaginary[i]) <= dComplex * real[i]) roots.push_back(real[i]);
  }
  return roots;
}

Eigen::Matrix3d Frame(const Vec& p1, const Vec& p2, const Vec& p3) {
  Eigen::Matrix3d frame;
  frame.col(0) = (p2 - p1).normalized();
  frame.col(2) = frame.col(0).cross(p3 - p1).normalized();
  frame.col(1) = frame.col(2).cross(frame.col(0));
  return frame;
}

bool IsFlat(const Vec& a, const Vec& b) {
  return !(a.cross(b).norm() > kCollinear * a.norm() * b.norm());
}

// Distances of the two poses in parallel projection (T. Alter, "3D pose from 3 points using weak
// perspective", 1994): the roots of the quartic run together where the field of view is narrow,
// and these are close there.
void AddParallel(const Triangle& t, const Vec& j1, const Vec& j2, const Vec& j3,
                 std::vector<Vec>* pStarts) {
  const Vec sight = (j1 + j2 + j3).normalized();
  const Vec depth(j1.dot(sight), j2.dot(sight), j3.dot(sight));
  const Vec p1 = j1 / depth[0], p2 = j2 / depth[1], p3 = j3 / depth[2];
  const double e12 = (p1 - p2).squaredNorm(), e13 = (p1 - p3).squaredNorm(),
               e23 = (p2 - p3).squaredNorm();
  const auto area = [](double x, double y, double z) {  // 16 times the square of a triangle's
    return 2.0 * (x * y + y * z + z * x) - x * x - y * y - z * z;
  };
  const double a = area(t.d12, t.d13, t.d23), c = area(e12, e13, e23);
  const double b = e12 * (-t.d12 + t.d13 + t.d23) + e13 * (t.d12 - t.d13 + t.d23) +
                   e23 * (t.d12 + t.d13 - t.d23);
  const double dSquare = (b + std::sqrt(std::max(b * b - a * c, 0.0))) / a, s = std::sqrt(dSquare);
  const double h2 = std::sqrt(std::max(dSquare * t.d12 - e12, 0.0));
  double h3 = std::sqrt(std::max(dSquare * t.d13 - e13, 0.0));
  if (e12 + e13 - e23 > dSquare * (t.d12 + t.d13 - t.d23)) h3 = -h3;
  for (const double dSign : {-1.0, 1.0}) {
    pStarts->push_back(Vec(1.0, 1.0 + dSign * h2, 1.0 + dSign * h3).cwiseQuotient(depth) / s);
  }
}

// Where Newton's method starts.
std::vector<Vec> Starts(const Triangle& t, const Vec& j1, const Vec& j2, const Vec& j3,
                        double dComplex) {
  std::vector<Vec> starts;
  double A[5];
  GrunertEquation(t, A);
  for (const double v : PositiveRoots(A, dComplex)) {
    const double s1 = std::sqrt(t.d13 / (1.0 + v * v - 2.0 * v * t.c13));
    // Both roots of the equation of the first side: Grunert's own quotient fails where its
    // denominator vanishes, and the wrong one does not fit the third side.
    const double dRoot = std::sqrt(std::max(t.d12 - s1 * s1 * (1.0 - t.c12 * t.c12), 0.0));
    for (const double dSign : {-1.0, 1.0}) {
      starts.emplace_back(s1, s1 * t.c12 + dSign * dRoot, v * s1);
    }
  }
  AddParallel(t, j1, j2, j3, &starts);
  return starts;
}

}  // namespace

std::vector<Pose> SolveThreePoints(const double directions[3][3], const double points[3][3],
                                   double dTolerance) {
  std::vector<Pose> poses;
  const Eigen::Map<const Vec> j1(directions[0]), j2(directions[1]), j3(directions[2]);
  const Eigen::Map<const Vec> P1(points[0]), P2(points[1]), P3(points[2]);
  if (IsFlat(P2 - P1, P3 - P1) || IsFlat(j1, j2) || IsFlat(j1, j3) || IsFlat(j2, j3)) return poses;
  const Triangle t{j1.dot(j2),
                   j1.dot(j3),
                   j2.dot(j3),
                   (P1 - P2).squaredNorm(),
                   (P1 - P3).squaredNorm(),
                   (P2 - P3).squaredNorm()};
  std::vector<Vec> found;
  const double dScale = std::max({t.d12, t.d13, t.d23});
  for (Vec s : Starts(t, j1, j2, j3, dTolerance > kExactPose ? kNearRoot : kRealRoot)) {
    if (!(Residual(t, s).norm() <= 0.3 * dScale) || !Polish(t, dTolerance, &s)) continue;
    bool bNew = true;
    for (const Vec& other : found) bNew = bNew && (s - other).norm() > kSame * s.norm();
    if (bNew) found.push_back(s);
  }
  for (const Vec& s : found) {
    const Eigen::Matrix3d R =
        Frame(P1, P2, P3) * Frame(s[0] * j1, s[1] * j2, s[2] * j3).transpose();
    const Vec X0 = P1 - R * (s[0] * j1);
    if (!R.allFinite() || !X0.allFinite()) continue;
    Pose pose;
    Eigen::Map<Eigen::Matrix<double, 3, 3, Eigen::RowMajor>>(pose.R.data()) = R;
    Eigen::Map<Vec>(pose.X0.data()) = X0;
    poses.push_back(pose);
  }
  return poses;
}

}  // namespace zu::internal
