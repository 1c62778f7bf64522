#include <cmath>

#include "zu/numerics/matrix.h"
#include "zu/numerics/solver.h"
#include "zu/numerics/vector3d.h"

namespace {

// Below this in x and y a unit normal counts as near the Z axis [-]; fixed by the drawing format.
constexpr double kNearZ = 1.0 / 64.0;

bool IsNearZ(double x, double y) { return std::fabs(x) < kNearZ && std::fabs(y) < kNearZ; }

}  // namespace

bool CalcNormVect(ZuVector* n, const ZuMatrix& m) {
  ZuVector p0 = m * ZuVector(0.0, 0.0, 0.0, 1.0);
  ZuVector p1 = m * ZuVector(1.0, 0.0, 0.0, 1.0);
  ZuVector p2 = m * ZuVector(0.0, 1.0, 0.0, 1.0);
  if (p0[4] == 0.0 || p1[4] == 0.0 || p2[4] == 0.0) return false;
  p0 /= p0[4];
  p1 /= p1[4];
  p2 /= p2[4];
  *n = ((p1 - p0) % (p2 - p0)).Normalize();
  return true;
}

bool CalcArbitaryAlg(ZuVector* u, ZuVector* v, const ZuVector& n) {
  const ZuVector axis = IsNearZ(n[1], n[2]) ? ZuVector(0.0, 1.0, 0.0) : ZuVector(0.0, 0.0, 1.0);
  // n may be one of the results: both are formed before either is stored.
  const ZuVector first = (axis % n).Normalize();
  const ZuVector second = (n % first).Normalize();
  *u = first;
  *v = second;
  return true;
}

void ArbAxisAlg(const ZuVector3d& n, ZuVector3d& u, ZuVector3d& v) {
  const ZuVector3d axis = IsNearZ(n.x, n.y) ? ZuVector3d(0.0, 1.0, 0.0) : ZuVector3d(0.0, 0.0, 1.0);
  const ZuVector3d first = Normalized(axis % n);
  const ZuVector3d second = Normalized(n % first);
  u = first;
  v = second;
}
