// The first three rows of a map, applied to points in a loop: the sums of ZuPoint3d::Transform in
// the same order, without a call.
#pragma once

#include <algorithm>

#include "zu/cloud/scan_point3d.h"
#include "zu/numerics/affin_map3d.h"

class ZuMapRows {
 public:
  explicit ZuMapRows(const ZuAffinMap3d& map) { std::copy_n(map.asDblArray(), 12, m_ad); }

  double X(const ZuScanPoint3d& p) const { return Row(m_ad, p); }
  double Y(const ZuScanPoint3d& p) const { return Row(m_ad + 4, p); }
  double Z(const ZuScanPoint3d& p) const { return Row(m_ad + 8, p); }

  void Transform(ZuScanPoint3d& p) const {
    const double dX = X(p), dY = Y(p), dZ = Z(p);
    p.x = dX;
    p.y = dY;
    p.z = dZ;
    p.w = 1.0;
  }

 private:
  static double Row(const double* ad, const ZuScanPoint3d& p) {
    return ad[0] * p.x + ad[1] * p.y + ad[2] * p.z + ad[3] * p.w;
  }

  double m_ad[12];
};
