// Scale and rotation of a similarity transformation from the moments of two centred point sets.
#pragma once

#include "zu/numerics/matrix.h"

namespace zu::internal {

// m: 3x3, the sum of b a^T over the point pairs divided by the sum of a^T a, for b = s R a + v.
//
// *pdScale gets the least-squares s, R goes to *pRotation (3x3), formed for s or, with bUnitScale,
// for a scale of 1. False where the iteration for s has no real start or no end, or a result is not
// finite; the outputs are then partly worked.
bool CalcSimilarity(const ZuMatrix& m, bool bUnitScale, double* pdScale, ZuMatrix* pRotation);

}  // namespace zu::internal
