// Direct solvers, frames from a normal, and projective maps of point lists. Reentrant.
#pragma once

#include "zu/export.h"

class ZuMatrix;
class ZuPointList;
class ZuVector;
class ZuVector3d;

// Solves a x = b for all columns of b by Gauss elimination; in each column the pivot is the element
// that is largest relative to the magnitude sum of its remaining row. 0: b holds the solution and a
// the reduced system, with the negated multipliers in the eliminated places. 1: singular (a row sum
// or the best relative pivot below 1e-10); a and b stay partly eliminated. a: n x n, b: n x m.
ZU_API int GaussLoeserRelMax(ZuMatrix& a, ZuMatrix& b);

// Back substitution with the upper triangle of r for all columns of b, in place. Always 0; a zero
// on the diagonal gives numbers that are not finite.
ZU_API int DreieckLoeserOben(ZuMatrix& r, ZuMatrix& b);

// Determinant by elimination; 0.0 where a row sum, a relative pivot or the last element is below
// 1e-10.
//
// Required: the pivot search never looks at the last row, so the result of ((0, 1), (1, 0)) is 0.0.
// Callers take this figure as their test for a usable system.
ZU_API double Det(const ZuMatrix& m);

// Image of the plane normal (0, 0, 1) under a 4x4 map, unit length, from the images of the origin
// and of the first two axis ends. n: 3 elements. False, n untouched, where one of the images lies
// at infinity.
ZU_API bool CalcNormVect(ZuVector* n, const ZuMatrix& m);

// Two axes u, v that make a right-handed frame with the unit normal n, by the arbitrary axis rule
// of drawing files: u is the Y axis x n where n is within 1/64 of the Z axis in x and y, else the
// Z axis x n; v = n x u. Both of unit length; a zero n is not refused. n may be u or v. Always
// true.
ZU_API bool CalcArbitaryAlg(ZuVector* u, ZuVector* v, const ZuVector& n);
ZU_API void ArbAxisAlg(const ZuVector3d& n, ZuVector3d& u, ZuVector3d& v);

// Maps every point of a list in place by a 3x3 (x, y) or 4x4 (x, y, z) matrix, as
// ZuMatrix::PTrans2D and PTrans3D do. Returns the number of points visited, 0 for a null list.
//
// Required: a point whose homogeneous component vanishes stays as it is and still counts.
ZU_API int Transform2D(ZuPointList* pList, const ZuMatrix& m);
ZU_API int Transform3D(ZuPointList* pList, const ZuMatrix& m);
