#include "zu/numerics/mmatrix.h"

void _MMatrix::GetLine(int i, _MVector& v) const {
  for (int k = 0; k < 4; ++k) v[k] = (*this)[i][k];
}

void _MMatrix::SetLine(int i, const _MVector& v) {
  for (int k = 0; k < 4; ++k) (*this)[i][k] = v[k];
}

void _MMatrix::GetRow(int j, _MVector& v) const {
  for (int k = 0; k < 4; ++k) v[k] = (*this)[k][j];
}

void _MMatrix::SetRow(int j, const _MVector& v) {
  for (int k = 0; k < 4; ++k) (*this)[k][j] = v[k];
}

double _MMatrix::Sarrus(int k) const {
  const int c0 = k == 0 ? 1 : 0;
  const int c1 = k <= 1 ? 2 : 1;
  const int c2 = k != 3 ? 3 : 2;
  const double* a0 = (*this)[0];
  const double* a1 = (*this)[1];
  const double* a2 = (*this)[2];
  return a0[c0] * (a1[c1] * a2[c2] - a2[c1] * a1[c2]) -
         a0[c1] * (a1[c0] * a2[c2] - a2[c0] * a1[c2]) +
         a0[c2] * (a1[c0] * a2[c1] - a2[c0] * a1[c1]);
}
