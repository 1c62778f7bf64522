// Plane transformations of coordinates less the centres, with derivatives, and their inverse.
#pragma once

#include "zu/transform/trafo2d.h"

namespace zu::internal {

// The number of coefficients; 0 for no type.
int PlaneCoefficients(eZuTrafo2DType eType);

struct PlaneImage {
  double ad[2];            // not a number beyond the horizon of a projective transformation
  double adBy[4];          // derivatives by x, y; by rows
  double adByCoef[2][20];  // by the coefficients
};

PlaneImage MapPlane(eZuTrafo2DType eType, const double* a, double x, double y);

// The point (x, y) whose image is (X, Y). False, outputs untouched, where none is found: Newton's
// iterations for a polynomial start from its linear part.
bool InvMapPlane(eZuTrafo2DType eType, const double* a, double X, double Y, double* x, double* y);

}  // namespace zu::internal
