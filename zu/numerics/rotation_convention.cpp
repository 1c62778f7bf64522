#include "zu/numerics/rotation_convention.h"

#include <cmath>
#include <numbers>

#include "zu/numerics/matrix.h"

namespace {

using Rows = std::array<double, 9>;

// Below this the cosine of the middle angle is rounding of the matrix alone [-].
constexpr double kNoCosine = 1e-14;
// Nearer than this to a right angle the two other angles are hardly told apart [rad].
constexpr double kGimbal = 1e-8;

bool IsRight(double dAngle) { return std::fabs(std::cos(dAngle)) < kGimbal; }

size_t At(int iRow, int iColumn) { return static_cast<size_t>(3 * iRow + iColumn); }

Rows Product(const Rows& a, const Rows& b) {
  Rows c{};
  for (int i = 0; i < 3; ++i) {
    for (int j = 0; j < 3; ++j) {
      for (int k = 0; k < 3; ++k) c[At(i, j)] += a[At(i, k)] * b[At(k, j)];
    }
  }
  return c;
}

Rows Transposed(const Rows& a) { return {a[0], a[3], a[6], a[1], a[4], a[7], a[2], a[5], a[8]}; }

// The turn about an axis, 0 to 2.
Rows Turn(int iAxis, double dAngle) {
  const int j = (iAxis + 1) % 3, k = (iAxis + 2) % 3;
  const double s = std::sin(dAngle), c = std::cos(dAngle);
  Rows r{};
  r[At(iAxis, iAxis)] = 1.0;
  r[At(j, j)] = r[At(k, k)] = c;
  r[At(j, k)] = -s;
  r[At(k, j)] = s;
  return r;
}

// Axes of R = R_i(first) R_j(second) R_k(third), each of them once.
struct Axes {
  int i, j, k;

  double Sign() const { return (j - i + 3) % 3 == 1 ? 1.0 : -1.0; }
};

constexpr Axes kYxz{1, 0, 2}, kXyz{0, 1, 2}, kZyx{2, 1, 0};

struct Angles {
  double dFirst, dSecond, dThird;
};

Rows FromAngles(const Axes& axes, const Angles& angles) {
  return Product(Product(Turn(axes.i, angles.dFirst), Turn(axes.j, angles.dSecond)),
                 Turn(axes.k, angles.dThird));
}

// The first angle is taken back from the matrix before the others are read from it: what the
// gimbal leaves undecided in the first one goes to the third, and the product stays.
Angles ToAngles(const Axes& axes, const Rows& r) {
  const double s = axes.Sign();
  Angles angles{};
  const bool bGimbal = std::hypot(r[At(axes.j, axes.k)], r[At(axes.k, axes.k)]) < kNoCosine;
  angles.dFirst = bGimbal ? std::atan2(s * r[At(axes.k, axes.j)], r[At(axes.j, axes.j)])
                          : std::atan2(-s * r[At(axes.j, axes.k)], r[At(axes.k, axes.k)]);
  const Rows rest = Product(Turn(axes.i, -angles.dFirst), r);
  angles.dSecond = std::atan2(s * rest[At(axes.i, axes.k)], rest[At(axes.k, axes.k)]);
  angles.dThird =
      bGimbal ? 0.0 : std::atan2(s * rest[At(axes.j, axes.i)], rest[At(axes.j, axes.j)]);
  return angles;
}

// North, east, down of an aircraft's axes from x, y, z of object space and of the image, and back.
Rows AircraftAxes(const Rows& r) {
  return {r[4], r[3], -r[5], r[1], r[0], -r[2], -r[7], -r[6], r[8]};
}

// R of this library from that of OpenCV, and back: y and z of the camera change their signs.
Rows TurnedCamera(const Rows& r) {
  return {r[0], -r[3], -r[6], r[1], -r[4], -r[7], r[2], -r[5], -r[8]};
}
Rows TurnedBack(const Rows& r) {
  return {r[0], r[3], r[6], -r[1], -r[4], -r[7], -r[2], -r[5], -r[8]};
}

// c plus a row of r times v, with twofold precision (T. Ogita, S. M. Rump, S. Oishi, "Accurate sum
// and dot product", 2005).
double RowTimes(const Rows& r, int iRow, const std::array<double, 3>& v, double c) {
  double dSum = c, dRest = 0.0;
  for (int k = 0; k < 3; ++k) {
    const double a = r[At(iRow, k)], b = v[static_cast<size_t>(k)];
    const double p = a * b, e = std::fma(a, b, -p);
    const double t = dSum + p, z = t - dSum;
    dRest += (dSum - (t - z)) + (p - z) + e;
    dSum = t;
  }
  return dSum + dRest;
}

// r v + c.
std::array<double, 3> Times(const Rows& r, const std::array<double, 3>& v,
                            const std::array<double, 3>& c = {}) {
  return {RowTimes(r, 0, v, c[0]), RowTimes(r, 1, v, c[1]), RowTimes(r, 2, v, c[2])};
}

std::array<double, 3> Opposed(const std::array<double, 3>& v) { return {-v[0], -v[1], -v[2]}; }

Rows RowsOf(const ZuQuaternionColmap& q) {
  const double n = q.w * q.w + q.x * q.x + q.y * q.y + q.z * q.z, s = 2.0 / n;
  const double xx = q.x * q.x, yy = q.y * q.y, zz = q.z * q.z;
  return {1.0 - s * (yy + zz),         s * (q.x * q.y - q.w * q.z), s * (q.x * q.z + q.w * q.y),
          s * (q.x * q.y + q.w * q.z), 1.0 - s * (xx + zz),         s * (q.y * q.z - q.w * q.x),
          s * (q.x * q.z - q.w * q.y), s * (q.y * q.z + q.w * q.x), 1.0 - s * (xx + yy)};
}

// By the largest component; its sign such that the first component that is not 0 is positive.
ZuQuaternionColmap QuaternionOf(const Rows& r) {
  const double adSquare[] = {1.0 + r[0] + r[4] + r[8], 1.0 + r[0] - r[4] - r[8],
                             1.0 - r[0] + r[4] - r[8], 1.0 - r[0] - r[4] + r[8]};
  int iLargest = 0;
  for (int i = 1; i < 4; ++i) {
    if (adSquare[i] > adSquare[iLargest]) iLargest = i;
  }
  // Sums and differences of opposed elements: 4 times the products of two components.
  const double wx = r[7] - r[5], wy = r[2] - r[6], wz = r[3] - r[1];
  const double xy = r[1] + r[3], xz = r[2] + r[6], yz = r[5] + r[7];
  const double d = adSquare[iLargest];
  const double adRows[4][4] = {{d, wx, wy, wz}, {wx, d, xy, xz}, {wy, xy, d, yz}, {wz, xz, yz, d}};
  const double* q = adRows[iLargest];
  double dLength = std::sqrt(q[0] * q[0] + q[1] * q[1] + q[2] * q[2] + q[3] * q[3]);
  for (int i = 3; i >= 0; --i) {
    if (q[i] != 0.0) dLength = std::copysign(dLength, q[i]);
  }
  return {q[0] / dLength, q[1] / dLength, q[2] / dLength, q[3] / dLength};
}

}  // namespace

ZuRotation::ZuRotation(const ZuMatrix& matrix) {
  for (int i = 0; i < 3; ++i) {
    for (int j = 0; j < 3; ++j) r[At(i, j)] = matrix[i + 1][j + 1];
  }
}

ZuMatrix ZuRotation::Matrix() const {
  ZuMatrix matrix(3, 3);
  for (int i = 0; i < 3; ++i) {
    for (int j = 0; j < 3; ++j) matrix[i + 1][j + 1] = r[At(i, j)];
  }
  return matrix;
}

ZuRotation ZuAnglesAbc::Rotation() const {
  return ZuRotation(FromAngles(kYxz, {b.value, a.value, c.value}));
}

ZuAnglesAbc ZuAnglesAbc::From(const ZuRotation& rotation) {
  const Angles angles = ToAngles(kYxz, rotation.r);
  return {ZuRad(angles.dSecond), ZuRad(angles.dFirst), ZuRad(angles.dThird)};
}

bool ZuAnglesAbc::IsGimbal() const { return IsRight(a.value); }

ZuRotation ZuAnglesOpk::Rotation() const {
  return ZuRotation(FromAngles(kXyz, {omega.value, phi.value, kappa.value}));
}

ZuAnglesOpk ZuAnglesOpk::From(const ZuRotation& rotation) {
  const Angles angles = ToAngles(kXyz, rotation.r);
  return {ZuRad(angles.dFirst), ZuRad(angles.dSecond), ZuRad(angles.dThird)};
}

bool ZuAnglesOpk::IsGimbal() const { return IsRight(phi.value); }

ZuRotation ZuAnglesPok::Rotation() const {
  return ZuRotation(FromAngles(kYxz, {phi.value, omega.value, kappa.value}));
}

ZuAnglesPok ZuAnglesPok::From(const ZuRotation& rotation) {
  const Angles angles = ToAngles(kYxz, rotation.r);
  return {ZuRad(angles.dFirst), ZuRad(angles.dSecond), ZuRad(angles.dThird)};
}

bool ZuAnglesPok::IsGimbal() const { return IsRight(omega.value); }

ZuRotation ZuAnglesYpr::Rotation() const {
  return ZuRotation(AircraftAxes(FromAngles(kZyx, {yaw.value, pitch.value, roll.value})));
}

ZuAnglesYpr ZuAnglesYpr::From(const ZuRotation& rotation) {
  const Angles angles = ToAngles(kZyx, AircraftAxes(rotation.r));
  return {ZuRad(angles.dFirst), ZuRad(angles.dSecond), ZuRad(angles.dThird)};
}

bool ZuAnglesYpr::IsGimbal() const { return IsRight(pitch.value); }

ZuRotation ZuMatrixOpenCv::Rotation() const { return ZuRotation(TurnedCamera(r)); }

ZuMatrixOpenCv ZuMatrixOpenCv::From(const ZuRotation& rotation) { return {TurnedBack(rotation.r)}; }

ZuRotation ZuVectorOpenCv::Rotation() const {
  const double dAngle = std::hypot(v[0], v[1], v[2]);
  const double f = dAngle > 0.0 ? std::sin(0.5 * dAngle) / dAngle : 0.5;
  return ZuQuaternionColmap{std::cos(0.5 * dAngle), f * v[0], f * v[1], f * v[2]}.Rotation();
}

ZuVectorOpenCv ZuVectorOpenCv::From(const ZuRotation& rotation) {
  const auto q = ZuQuaternionColmap::From(rotation);
  const double dSine = std::hypot(q.x, q.y, q.z);
  const double f = dSine > 0.0 ? 2.0 * std::atan2(dSine, q.w) / dSine : 2.0;
  return {{f * q.x, f * q.y, f * q.z}};
}

ZuRotation ZuQuaternionColmap::Rotation() const { return ZuRotation(TurnedCamera(RowsOf(*this))); }

ZuQuaternionColmap ZuQuaternionColmap::From(const ZuRotation& rotation) {
  return QuaternionOf(TurnedBack(rotation.r));
}

ZuPoseOpenCv ZuToOpenCv(const ZuCameraPose& pose) {
  const auto R = ZuMatrixOpenCv::From(pose.R);
  return {R, Opposed(Times(R.r, pose.X0))};
}

ZuCameraPose ZuFromOpenCv(const ZuPoseOpenCv& pose) {
  // The transposed matrix is the inverse to rounding alone: what it leaves of R X0 + t is taken
  // off, so that the way back gives t.
  const Rows inverse = Transposed(pose.R.r);
  std::array<double, 3> X0 = Opposed(Times(inverse, pose.t));
  X0 = Opposed(Times(inverse, Times(pose.R.r, X0, pose.t), Opposed(X0)));
  return {pose.R.Rotation(), X0};
}
