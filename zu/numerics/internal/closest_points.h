// Where two skew lines come closest.
#pragma once

#include "zu/numerics/vector3d.h"

// Solves s n + t d1 - u d2 = r for the parameters t, u of the closest points of two lines with the
// directions d1, d2, their common normal n = d1 x d2, and r from the first start to the second.
// False, outputs untouched, where the solver refuses the system.
bool ZuSolveClosestPoints(const ZuVector3d& n, const ZuVector3d& d1, const ZuVector3d& d2,
                          const ZuVector3d& r, double* pdT, double* pdU);
