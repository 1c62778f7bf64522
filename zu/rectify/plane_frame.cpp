#include "zu/rectify/plane_frame.h"

#include <cmath>

#include "zu/rectify/plane.h"

namespace {

constexpr double kMapTilt = 0.999847695156391;  // cosine of one degree

double Length(const ZuPlane& plane) { return std::hypot(plane.A(), plane.B(), plane.C()); }

}  // namespace

bool ZuIsMapPlane(const ZuPlane& plane) { return std::fabs(plane.C()) > kMapTilt * Length(plane); }

bool ZuMakePlaneFrame(const ZuPlane& plane, ZuMatrix* pToObject) {
  const double dLength = Length(plane);
  if (!(dLength > 0.0) || !std::isfinite(dLength) || !std::isfinite(plane.D())) return false;
  if (ZuIsMapPlane(plane)) {
    const double a = plane.A() / plane.C(), b = plane.B() / plane.C(), d = plane.D() / plane.C();
    const double adMap[] = {1, 0, 0, 0, 0, 1, 0, 0, -a, -b, 1, -d, 0, 0, 0, 1};
    pToObject->Set(adMap, 4, 4);
    return true;
  }
  const double n[3] = {plane.A() / dLength, plane.B() / dLength, plane.C() / dLength};
  // v is the upward direction less its part along n, u = v x n is horizontal.
  const double dRise = std::hypot(n[0], n[1]);
  const double v[3] = {-n[0] * n[2] / dRise, -n[1] * n[2] / dRise, dRise};
  const double u[3] = {-n[1] / dRise, n[0] / dRise, 0.0};
  // The foot of the origin, moved along v to Z = 0.
  const double dFoot = -plane.D() / dLength, dUp = -dFoot * n[2] / v[2];
  double adFrame[16] = {};
  for (int i = 0; i < 3; ++i) {
    adFrame[4 * i] = u[i];
    adFrame[4 * i + 1] = v[i];
    adFrame[4 * i + 2] = n[i];
    adFrame[4 * i + 3] = dFoot * n[i] + dUp * v[i];
  }
  adFrame[11] = 0.0;  // by construction
  adFrame[15] = 1.0;
  pToObject->Set(adFrame, 4, 4);
  return true;
}
