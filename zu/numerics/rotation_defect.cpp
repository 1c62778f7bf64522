#include "zu/numerics/rotation_defect.h"

#include <algorithm>
#include <cmath>
#include <limits>

double ZuRotationDefect(const ZuMatrix& R) {
  constexpr double kNone = std::numeric_limits<double>::infinity();
  if (R.GetZeilen() != 3 || R.GetSpalten() != 3) return kNone;
  const double* r = R.GetData();
  const double dDet = r[0] * (r[4] * r[8] - r[5] * r[7]) - r[1] * (r[3] * r[8] - r[5] * r[6]) +
                      r[2] * (r[3] * r[7] - r[4] * r[6]);
  if (!(dDet > 0.0) || !std::isfinite(dDet)) return kNone;
  double dDefect = 0.0;
  for (int i = 0; i < 3; ++i) {
    for (int j = i; j < 3; ++j) {
      const double d = r[i] * r[j] + r[3 + i] * r[3 + j] + r[6 + i] * r[6 + j];
      dDefect = std::max(dDefect, std::fabs(d - (i == j ? 1.0 : 0.0)));
    }
  }
  return dDefect;
}
