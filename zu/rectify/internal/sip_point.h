// The point of a plane from which its intersection with rays is formed.
#pragma once

#include <cmath>

// The point of a x + b y + c z + d = 0 on the axis closest to the normal, as
// ZuPlane::CalcPlaneVectorForSip tells.
inline void ZuSipPoint(double a, double b, double c, double d, double (&q)[3]) {
  const double fa = std::fabs(a), fb = std::fabs(b), fc = std::fabs(c);
  q[0] = q[1] = q[2] = 0.0;
  if (fa + fb + fc == 0.0) return;
  if (fa > fb && fa > fc) {
    q[0] = -d / a;
  } else if (fb > fa && fb > fc) {
    q[1] = -d / b;
  } else {
    q[2] = -d / c;
  }
}
