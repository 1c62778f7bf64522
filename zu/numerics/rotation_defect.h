// How far a matrix is from a rotation.
#pragma once

#include "zu/export.h"
#include "zu/numerics/matrix.h"

// The largest element of |R' R - 1| of a 3x3 matrix: 0 for a rotation, about twice the error of an
// element for a rounded one. Infinite for any other shape, an element that is not finite, and a
// determinant that is not above 0 (a mirrored or flattened system).
ZU_API double ZuRotationDefect(const ZuMatrix& R);
