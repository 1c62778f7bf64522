#include "zu/numerics/vector3d.h"

#include "zu/numerics/affin_map3d.h"

ZuVector3d::ZuVector3d(const ZuFrame3d& frame, double dX, double dY, double dZ)
    : ZuVector3d(ZuAffinMap3d(frame) * ZuVector3d(dX, dY, dZ)) {}

double ZuVector3d::Angle(const ZuVector3d& v) const {
  return std::acos(*this * v / (Norm() * v.Norm()));
}

bool ZuVector3d::IsDegenerate(double e) const {
  return std::fabs(x) < e && std::fabs(y) < e && std::fabs(z) < e;
}

bool ZuVector3d::IsNormalized(double e) const {
  const double dLength = Norm();
  return 1.0 - e <= dLength && dLength <= 1.0 + e;
}

bool ZuVector3d::IsPerpendicular(const ZuVector3d& v, double e) const {
  return std::fabs(*this * v) < e;
}

bool ZuVector3d::IsLinearIndependent(const ZuVector3d& v, double e) const {
  return *this * *this >= e && v * v >= e && std::fabs(Angle(v)) >= e;
}
