// Rotations and orientations under the conventions of photogrammetry and computer vision, each a
// type of its own: a function takes or gives one by name, and two cannot be mixed by accident.
//
//   ZuRotation            R, image vectors (x right, y up, z away from the object) to object space
//   ZuAnglesAbc           this library's: R = Ry(b) Rx(a) Rz(c)
//   ZuAnglesOpk           omega, phi, kappa: R = Rx(omega) Ry(phi) Rz(kappa)
//   ZuAnglesPok           phi, omega, kappa: R = Ry(phi) Rx(omega) Rz(kappa)
//   ZuAnglesYpr           yaw, pitch, roll of a camera in an aircraft, which looks down with its y
//                         axis ahead; object space has x east, y north, z up. Yaw turns clockwise
//                         from north, positive pitch lifts the nose, positive roll the left wing
//   ZuMatrixOpenCv        object space to the camera (x right, y down, z ahead), as OpenCV's R
//   ZuVectorOpenCv        the same as axis times angle [rad], OpenCV's rvec
//   ZuQuaternionColmap    the same as unit quaternion w x y z, COLMAP's
//
//   const auto q = ZuRotationCast<ZuQuaternionColmap>(ZuAnglesOpk{ZuGon(1), ZuGon(2), ZuGon(99)});
//
// Every way keeps the rotation to 1e-14, also where the three angles are not determined: at the
// gimbal (IsGimbal) only the sum or difference of the first and the third is, and the third angle
// is given as 0 once no digit of it is left. Rotations of half a turn have two axes and two signs
// of the quaternion; the first component that is not 0 is given as positive, w above all.
//
// Source: K. Kraus, "Photogrammetry", 2007 (angles); S. W. Shepperd, "Quaternion from rotation
// matrix", 1978.
#pragma once

#include <array>

#include "zu/export.h"
#include "zu/numerics/angle_value.h"

class ZuMatrix;

// By rows. From<...> below expects a rotation: of another matrix the result has no meaning.
struct ZU_API ZuRotation {
  ZuRotation() = default;
  explicit ZuRotation(const std::array<double, 9>& rows) : r(rows) {}
  explicit ZuRotation(const ZuMatrix& matrix);  // 3 x 3

  ZuMatrix Matrix() const;
  ZuRotation Rotation() const { return *this; }
  static ZuRotation From(const ZuRotation& rotation) { return rotation; }

  std::array<double, 9> r{1, 0, 0, 0, 1, 0, 0, 0, 1};
};

struct ZU_API ZuAnglesAbc {
  ZuRotation Rotation() const;
  static ZuAnglesAbc From(const ZuRotation& rotation);
  bool IsGimbal() const;  // a within 1e-8 rad of a right angle

  ZuRad a, b, c;
};

struct ZU_API ZuAnglesOpk {
  ZuRotation Rotation() const;
  static ZuAnglesOpk From(const ZuRotation& rotation);
  bool IsGimbal() const;  // phi within 1e-8 rad of a right angle

  ZuRad omega, phi, kappa;
};

struct ZU_API ZuAnglesPok {
  ZuRotation Rotation() const;
  static ZuAnglesPok From(const ZuRotation& rotation);
  bool IsGimbal() const;  // omega within 1e-8 rad of a right angle

  ZuRad phi, omega, kappa;
};

struct ZU_API ZuAnglesYpr {
  ZuRotation Rotation() const;
  static ZuAnglesYpr From(const ZuRotation& rotation);
  bool IsGimbal() const;  // pitch within 1e-8 rad of a right angle: the camera looks level

  ZuRad yaw, pitch, roll;
};

struct ZU_API ZuMatrixOpenCv {
  ZuRotation Rotation() const;  // exact
  static ZuMatrixOpenCv From(const ZuRotation& rotation);

  std::array<double, 9> r{1, 0, 0, 0, 1, 0, 0, 0, 1};  // by rows
};

struct ZU_API ZuVectorOpenCv {
  ZuRotation Rotation() const;
  static ZuVectorOpenCv From(const ZuRotation& rotation);  // of a length of at most pi

  std::array<double, 3> v{};
};

struct ZU_API ZuQuaternionColmap {
  // Of any length above 0; not finite otherwise.
  ZuRotation Rotation() const;
  static ZuQuaternionColmap From(const ZuRotation& rotation);

  double w = 1.0, x = 0.0, y = 0.0, z = 0.0;
};

template <class To, class From>
To ZuRotationCast(const From& from) {
  return To::From(from.Rotation());
}

// Where a photo stands: object point = X0 + R v of an image vector v.
struct ZuCameraPose {
  ZuRotation R;
  std::array<double, 3> X0{};
};

// The same as OpenCV and COLMAP tell it: v = R P + t of an object point P, y down, z ahead.
struct ZuPoseOpenCv {
  ZuMatrixOpenCv R;
  std::array<double, 3> t{};
};

// Both ways with one rounding of each coordinate.
ZU_API ZuPoseOpenCv ZuToOpenCv(const ZuCameraPose& pose);
ZU_API ZuCameraPose ZuFromOpenCv(const ZuPoseOpenCv& pose);
