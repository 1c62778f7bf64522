// Angles that carry their unit in their type, so that gon cannot be taken for degrees:
//
//   ZuRad phi = ZuGon(12.5);          // converted
//   const double d = ZuDeg(phi).value;
//
// A bare number becomes an angle only where its unit is named.
#pragma once

#include "zu/numerics/angle.h"

template <eZuAngleUnit eUnit>
struct ZuAngleIn {
  constexpr ZuAngleIn() = default;
  explicit constexpr ZuAngleIn(double d) : value(d) {}
  // The same angle in another unit.
  template <eZuAngleUnit eOther>
  ZuAngleIn(const ZuAngleIn<eOther>& other)  // NOLINT(google-explicit-constructor)
      : value(ConvertAngle(other.value, eOther, eUnit)) {}

  double value = 0.0;
};

using ZuRad = ZuAngleIn<eZuAngleUnitRadian>;
using ZuDeg = ZuAngleIn<eZuAngleUnitDegree>;
using ZuGon = ZuAngleIn<eZuAngleUnitGon>;
