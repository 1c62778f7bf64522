// Random coordinates from a fixed seed, and maps as matrices of the second method.
#pragma once

#include <random>

#include "zu/numerics/affin_map3d.h"
#include "zu/points/point_list.h"

// The same numbers on every machine: std::mt19937_64 is defined to the bit, its distributions are
// not.
class RandomGeometry {
 public:
  explicit RandomGeometry(unsigned long long uSeed) : m_engine(uSeed) {}

  // From -dRange to dRange.
  double Value(double dRange) {
    return (static_cast<double>(m_engine() >> 11) / 9007199254740992.0 * 2.0 - 1.0) * dRange;
  }
  int Index(int n) { return static_cast<int>(m_engine() % static_cast<unsigned long long>(n)); }
  ZuPoint3d Point(double dRange) {
    const double x = Value(dRange), y = Value(dRange), z = Value(dRange);
    return ZuPoint3d(x, y, z);
  }
  ZuVector3d Direction() {
    ZuVector3d v;
    do {
      v = Point(1.0).AsVector();
    } while (v.Norm() < 0.1);
    return Normalized(v);
  }
  ZuAffinMap3d Rotation() {
    const double a = Value(3.0), b = Value(1.5), c = Value(3.0);
    return ZuAffinMap3d::RotXYZ(a, b, c);
  }

 private:
  std::mt19937_64 m_engine;
};
