#include "zu/exchange/internal/plane_map.h"

#include <cmath>
#include <limits>

namespace zu::internal {

namespace {

constexpr int kTerms = 10;
// 1, x, y, x^2, xy, y^2, x^3, x^2 y, x y^2, y^3 and the powers of each.
constexpr int kPlanePower[kTerms][2] = {{0, 0}, {1, 0}, {0, 1}, {2, 0}, {1, 1},
                                        {0, 2}, {3, 0}, {2, 1}, {1, 2}, {0, 3}};
constexpr int kMostSteps = 50;
constexpr double kConverged = 1e-14;  // step over the size of the coordinates [-]

double PlanePower(double d, int i) { return i <= 0 ? 1.0 : d * PlanePower(d, i - 1); }

// m d = r by rows. False for a matrix without inverse.
bool Solve2(const double* m, double r0, double r1, double* d0, double* d1) {
  const double dDet = m[0] * m[3] - m[1] * m[2];
  const double x = (r0 * m[3] - r1 * m[1]) / dDet, y = (m[0] * r1 - m[2] * r0) / dDet;
  if (!std::isfinite(x) || !std::isfinite(y)) return false;
  *d0 = x;
  *d1 = y;
  return true;
}

void MapPolynomial(const double* a, double x, double y, PlaneImage* p) {
  for (int k = 0; k < kTerms; ++k) {
    const int i = kPlanePower[k][0], j = kPlanePower[k][1];
    const double dTerm = PlanePower(x, i) * PlanePower(y, j);
    const double dByX = i * PlanePower(x, i - 1) * PlanePower(y, j);
    const double dByY = j * PlanePower(x, i) * PlanePower(y, j - 1);
    for (int r = 0; r < 2; ++r) {
      const double c = a[k + r * kTerms];
      p->ad[r] += c * dTerm;
      p->adBy[2 * r] += c * dByX;
      p->adBy[2 * r + 1] += c * dByY;
      p->adByCoef[r][k + r * kTerms] = dTerm;
    }
  }
}

void MapProjective(const double* a, double x, double y, PlaneImage* p) {
  const double w = a[6] * x + a[7] * y + 1.0;
  for (int r = 0; r < 2; ++r) {
    const double* const b = a + 3 * r;
    p->ad[r] = (b[0] * x + b[1] * y + b[2]) / w;
    p->adBy[2 * r] = (b[0] - p->ad[r] * a[6]) / w;
    p->adBy[2 * r + 1] = (b[1] - p->ad[r] * a[7]) / w;
    double* const pd = p->adByCoef[r];
    pd[3 * r] = x / w;
    pd[3 * r + 1] = y / w;
    pd[3 * r + 2] = 1.0 / w;
    pd[6] = -p->ad[r] * x / w;
    pd[7] = -p->ad[r] * y / w;
    if (!(w > 0.0)) p->ad[r] = std::numeric_limits<double>::quiet_NaN();
  }
}

// A start that the terms of first order give, then steps that must come to rest.
bool InvPolynomial(const double* a, double X, double Y, double* px, double* py) {
  PlaneImage image = MapPlane(eZuTrafo2DPolynomial, a, 0.0, 0.0);
  double x = 0.0, y = 0.0;
  for (int i = 0; i < kMostSteps; ++i) {
    double dx, dy;
    if (!Solve2(image.adBy, X - image.ad[0], Y - image.ad[1], &dx, &dy)) return false;
    x += dx;
    y += dy;
    image = MapPlane(eZuTrafo2DPolynomial, a, x, y);
    if (std::hypot(dx, dy) > kConverged * std::hypot(x, y)) continue;
    *px = x;
    *py = y;
    return true;
  }
  return false;
}

}  // namespace

int PlaneCoefficients(eZuTrafo2DType eType) {
  switch (eType) {
    case eZuTrafo2DHelmert:
      return 4;
    case eZuTrafo2DAffin:
      return 6;
    case eZuTrafo2DProjektiv:
      return 8;
    case eZuTrafo2DPolynomial:
      return 2 * kTerms;
    default:
      return 0;
  }
}

PlaneImage MapPlane(eZuTrafo2DType eType, const double* a, double x, double y) {
  PlaneImage p = {};
  const auto set = [](double* pd, int i, double d) { pd[i] = d; };
  switch (eType) {
    case eZuTrafo2DHelmert:
      p = {{a[0] + a[1] * x - a[3] * y, a[2] + a[3] * x + a[1] * y}, {a[1], -a[3], a[3], a[1]}, {}};
      set(p.adByCoef[0], 0, 1.0);
      set(p.adByCoef[0], 1, x);
      set(p.adByCoef[0], 3, -y);
      set(p.adByCoef[1], 2, 1.0);
      set(p.adByCoef[1], 3, x);
      set(p.adByCoef[1], 1, y);
      break;
    case eZuTrafo2DAffin:
      p = {{a[0] + a[1] * x + a[2] * y, a[3] + a[4] * x + a[5] * y}, {a[1], a[2], a[4], a[5]}, {}};
      for (int r = 0; r < 2; ++r) {
        set(p.adByCoef[r], 3 * r, 1.0);
        set(p.adByCoef[r], 3 * r + 1, x);
        set(p.adByCoef[r], 3 * r + 2, y);
      }
      break;
    case eZuTrafo2DProjektiv:
      MapProjective(a, x, y, &p);
      break;
    default:
      MapPolynomial(a, x, y, &p);
  }
  return p;
}

bool InvMapPlane(eZuTrafo2DType eType, const double* a, double X, double Y, double* x, double* y) {
  if (eType == eZuTrafo2DPolynomial) return InvPolynomial(a, X, Y, x, y);
  if (eType == eZuTrafo2DProjektiv) {
    const double m[] = {a[0] - X * a[6], a[1] - X * a[7], a[3] - Y * a[6], a[4] - Y * a[7]};
    double u, v;
    if (!Solve2(m, X - a[2], Y - a[5], &u, &v) || !(a[6] * u + a[7] * v + 1.0 > 0.0)) return false;
    *x = u;
    *y = v;
    return true;
  }
  const PlaneImage origin = MapPlane(eType, a, 0.0, 0.0);
  return Solve2(origin.adBy, X - origin.ad[0], Y - origin.ad[1], x, y);
}

}  // namespace zu::internal
