// Plain 4-element and 4x4 storage, indexed from 0: the bases of the primitives and maps of space.
// No virtual functions, no checks, no initialisation by default.
#pragma once

#include "zu/export.h"

class ZU_API _MVector {
 public:
  // Leaves the elements unset.
  constexpr _MVector() {
  }  // NOLINT(modernize-use-equals-default): value initialisation must not clear

  double& operator[](int i) { return i == 0 ? x : i == 1 ? y : i == 2 ? z : w; }
  constexpr double operator[](int i) const { return i == 0 ? x : i == 1 ? y : i == 2 ? z : w; }

  double x, y, z, w;

 protected:
  // Required: the homogeneous component comes first and lands in the fourth element; the types of
  // space built on this pass it in front.
  constexpr _MVector(double dW, double dX, double dY, double dZ) : x(dX), y(dY), z(dZ), w(dW) {}
};

class ZU_API _MMatrix {
 public:
  // Leaves the elements unset.
  _MMatrix() {}  // NOLINT(modernize-use-equals-default): value initialisation must not clear

  double* operator[](int i) { return m_adElem + 4 * i; }  // m[i][j], both from 0
  const double* operator[](int i) const { return m_adElem + 4 * i; }

  // The sixteen elements row by row.
  double* asDblArray() { return m_adElem; }
  const double* asDblArray() const { return m_adElem; }

  // Required: Line means row and Row means column in these four names.
  void GetLine(int i, _MVector& v) const;  // v[k] = (i, k)
  void SetLine(int i, const _MVector& v);  // (i, k) = v[k]
  void GetRow(int j, _MVector& v) const;   // v[k] = (k, j): column j
  void SetRow(int j, const _MVector& v);   // (k, j) = v[k]: column j

  // Determinant of the first three rows without column k, k from 0 to 3.
  double Sarrus(int k) const;

 protected:
  double m_adElem[16];  // four rows of four
};
