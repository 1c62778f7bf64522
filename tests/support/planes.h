// Planes for tests.
#pragma once

#include "zu/rectify/plane.h"

// The plane a x + b y + c z + d = 0; (a, b, c) has unit length.
inline ZuPlane MakePlane(double a, double b, double c, double d) {
  ZuPlane plane;
  plane.A() = a;
  plane.B() = b;
  plane.C() = c;
  plane.D() = d;
  return plane;
}
