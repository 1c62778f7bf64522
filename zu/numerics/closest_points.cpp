#include "zu/numerics/internal/closest_points.h"

#include "zu/numerics/matrix.h"
#include "zu/numerics/solver.h"

bool ZuSolveClosestPoints(const ZuVector3d& n, const ZuVector3d& d1, const ZuVector3d& d2,
                          const ZuVector3d& r, double* pdT, double* pdU) {
  ZuMatrix system(3, 3);
  ZuMatrix solution(3, 1);
  for (int i = 0; i < 3; ++i) {
    system.SetElem(i + 1, 1, n[i]);
    system.SetElem(i + 1, 2, d1[i]);
    system.SetElem(i + 1, 3, -d2[i]);
    solution.SetElem(i + 1, 1, r[i]);
  }
  if (GaussLoeserRelMax(system, solution) != 0) return false;
  *pdT = solution.GetElem(2, 1);
  *pdU = solution.GetElem(3, 1);
  return true;
}
