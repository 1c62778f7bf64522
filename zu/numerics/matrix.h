// Matrix of doubles of any shape, indexed from 1, with inline store for up to sixteen elements.
//
// Elements lie row by row without gaps. Values: copies are deep, distinct objects may be used from
// distinct threads. No operation checks an index, a shape or a division: callers are numeric
// kernels that know their sizes. A vanishing number is tested against 1e-10. Angles are radians.
#pragma once

#include <cstddef>
#include <iosfwd>

#include "zu/export.h"
#include "zu/numerics/vector.h"

class ZuPoint;
class ZuReaderObject;
class ZuVector3d;

class ZU_API ZuMatrix {
 public:
  // All elements 0.0. Up to 16 elements nothing is allocated.
  ZuMatrix(int iRows, int iCols);
  ZuMatrix(const ZuMatrix& src);
  // src is empty then: it can be destroyed, or take a Set or an assignment with its shape.
  ZuMatrix(ZuMatrix&& src) noexcept;
  ZuMatrix(const double* pdValues, int iRows, int iCols);  // row by row
  virtual ~ZuMatrix() { Release(); }

  // Takes a new shape and its iRows * iCols values, row by row; returns this matrix.
  //
  // Required: a matrix with fewer elements than that keeps shape and array, and takes as many of
  // the values as its array holds (16 in the inline store). Kernels hand over fitting counts; the
  // store of a matrix that others point into never grows.
  ZuMatrix& Set(const double* pdValues, int iRows, int iCols);

  // Copies elements in array order until this matrix or the source is full.
  //
  // Required: the shape never changes and nothing is allocated; the destination decides how much
  // is copied. (One that was moved from has no shape to keep.) A 2x2 matrix takes the first four
  // elements of a 3x3 one. A temporary is copied too: kernels hold pointers into the array that
  // stays.
  ZuMatrix& operator=(const ZuMatrix& src);

  void Clear();     // all elements 0.0
  void SetIdent();  // identity; for square matrices

  int GetZeilen() const { return m_iZeilen; }    // number of rows
  int GetSpalten() const { return m_iSpalten; }  // number of columns

  // m[i][j] is element (i, j), both from 1.
  double* operator[](int i) { return m_pdData + Offset(i, 0); }
  const double* operator[](int i) const { return m_pdData + Offset(i, 0); }
  double GetElem(int i, int j) const { return m_pdData[Offset(i, j)]; }
  double SetElem(int i, int j, double dValue) { return m_pdData[Offset(i, j)] = dValue; }
  double GetElemZeroIndex(int i, int j) const { return m_pdData[Offset(i + 1, j + 1)]; }

  // The elements row by row, first one at index 0.
  double* GetData() { return m_pdData; }
  const double* GetData() const { return m_pdData; }

  // Parts of the matrix. The size of v decides how many elements are moved.
  //
  // Required: Line means row and Row means column in these four names.
  void GetLine(int i, ZuVector& v) const;  // v[k] = (i, k)
  void SetLine(int i, const ZuVector& v);  // (i, k) = v[k]
  void GetRow(int j, ZuVector& v) const;   // v[k] = (k, j): column j
  void SetRow(int j, const ZuVector& v);   // (k, j) = v[k]: column j
  void SwapLines(int a, int b);            // exchanges rows a and b

  // Row dest += factor * row src, and row *= factor, over the columns first to last; last -1 is
  // the last column.
  void AddLines(int iDest, int iSrc, int iFirst, double dFactor, int iLast = -1);
  void MultLine(int iRow, int iFirst, double dFactor, int iLast = -1);

  // Products: the sums run over the columns of this matrix, in their order.
  ZuMatrix operator*(const ZuMatrix& b) const;  // this rows x b columns
  ZuVector operator*(const ZuVector& v) const;  // this rows
  ZuMatrix& operator*=(const ZuMatrix& b);      // the shape of this matrix stays

  // Division multiplies by the reciprocal, which is formed once.
  ZuMatrix operator*(double dFactor) const;
  ZuMatrix operator/(double dDivisor) const;
  ZuMatrix& operator*=(double dFactor);
  ZuMatrix& operator/=(double dDivisor);

  // Elementwise over the element count of this matrix.
  ZuMatrix operator+(const ZuMatrix& b) const;
  ZuMatrix operator-(const ZuMatrix& b) const;
  ZuMatrix& operator+=(const ZuMatrix& b);
  ZuMatrix& operator-=(const ZuMatrix& b);

  ZuMatrix Transpose() const;

  // Adds v v^T to the leading block of v's size, both triangles: one observation row (coefficients,
  // observed value, ...) into bordered normal equations, see Cholesky.
  void CalcNGLAN(const ZuVector& v);

  // Solves this * x = b, see the function of the same name in solver.h; 0 solved, 1 singular.
  int GaussLoeserRelMax(ZuMatrix& b);
  int DreieckLoeserOben(ZuMatrix& b);

  // Replaces this matrix by its inverse and returns it; *piError, where given, gets 0 or 1 as from
  // GaussLoeserRelMax. On 1 the matrix holds a partly reduced identity; the old content is gone.
  ZuMatrix& Invert(int* piError = nullptr);

  double Det() const;     // see Det in solver.h
  double Sarrus() const;  // determinant of a 3x3 matrix by the rule of Sarrus, unguarded

  // Solves this * x = b for a 3x3 matrix by Cramer's rule; not finite where singular.
  ZuVector Cramer(const ZuVector& b) const;

  // Solves normal equations held in one bordered matrix of u + 1 rows and 2u + 1 columns, u the
  // number of unknowns, by Cholesky's factorisation, and returns the sum of squared residuals:
  //
  //   columns 1..u   u+1            u+2..2u+1
  //   N              right side     identity       rows 1..u
  //   (not read)     sum of l l     (not read)     row u+1
  //
  // Only the upper triangle of N is read. x (u elements) gets the solution. Afterwards N holds R
  // with N = R^T R in its upper triangle, the right side holds R^-T b and the identity block R^-T,
  // whose columns give the cofactors (X = R^-1 R^-T). The corner becomes t / w, with w the result
  // and t = b^T N^-1 b, when w > 0.
  //
  // Required: 0.0 stands for a matrix that is not positive definite (x not written then) as well
  // as for an exact fit (x written, corner untouched).
  double Cholesky(ZuVector& x);

  // R = Ry(a) Rx(b) Rz(c), written to this 3x3 matrix, which is returned.
  //
  // Required: the first angle turns about Y, the second about X, the third about Z.
  ZuMatrix& MakeRotMatrix(double a, double b, double c);

  // Frame of three points (3 elements each) as columns of this 3x3 matrix, which is returned: the
  // first axis from a to b, the second in the plane of the points on c's side, right-handed.
  // *pbOk, where given, tells whether it was written; the matrix stays as it is where b or c is a,
  // where c is seen from a less than 1e-10 rad off the line to b, and for coordinates that are not
  // finite.
  ZuMatrix& MakeRotMatrix(const ZuVector& a, const ZuVector& b, const ZuVector& c, bool* pbOk);

  // The angles of a rotation matrix: about X, in -pi/2 to pi/2, about Y and about Z. At an X angle
  // of +-pi/2 only their sum or difference is determined: Z is 0.0 then.
  //
  // Required: the order is X, Y, Z, whereas MakeRotMatrix takes Y, X, Z: rebuild the matrix with
  // MakeRotMatrix(*pdY, *pdX, *pdZ).
  void GetRotAngles(double* pdX, double* pdY, double* pdZ) const;

  // Right-handed rotation about one axis, written to this 3x3 or larger matrix, which is returned.
  ZuMatrix& RotXAxis(double t);
  ZuMatrix& RotYAxis(double t);
  ZuMatrix& RotZAxis(double t);

  // Angle between the third axes (the images of (0, 0, 1)) of two 3x3 matrices, 0 to pi.
  double CalcAngle(const ZuMatrix& other) const;

  // Required: true when the sum of the third axes is longer than 1.42, that is below about 89.5
  // degrees between unit axes, rather than below the exact right angle.
  bool IsLookingInSameDirection(const ZuMatrix& other) const;

  // Projective map of a point in place by this 3x3 (plane; z stays) or 4x4 (space) matrix. False,
  // point untouched, where the homogeneous component is below 1e-10 in magnitude.
  bool PTrans2D(double* x, double* y) const;
  bool PTrans2D(ZuPoint* pPoint) const;
  bool PTrans2D(ZuVector3d* pVector) const;
  bool PTrans3D(double* x, double* y, double* z) const;
  bool PTrans3D(ZuPoint* pPoint) const;

  // Reads "rows cols v11 v12 ..." from the token in hand on; returns 1. Values as in
  // ZuVector::Read; sizes below 1 or more than a million elements leave the matrix alone and its
  // numbers are skipped.
  int Read(ZuReaderObject* pObject);

  // Required: writes nothing and returns the stream. Records write the numbers of their matrices
  // themselves, in their own layout.
  std::ostream& Write(std::ostream& os) const;
  // Writes "rows cols", then a line for each row, as Read takes it to the last bit; no line end at
  // the end. An empty matrix, or one of more than a million elements, is written but not read.
  std::ostream& Export(std::ostream& os) const;

  // Headline (printf format) and rows to the debug output.
  [[gnu::format(printf, 2, 3)]] void DbgPrintf(const char* szFormat, ...) const;

 protected:
  double* m_pdData;       // into m_adInline or a heap array
  double m_adInline[16];  // the elements while there are at most 16
  int m_iZeilen;          // rows
  int m_iSpalten;         // columns

 private:
  friend class ZuCalcPlane;  // a row for every point, all written

  struct Unset {};  // for results whose every element is written
  ZuMatrix(Unset, int iRows, int iCols) { Allocate(iRows, iCols); }

  std::ptrdiff_t Offset(int i, int j) const {
    return static_cast<std::ptrdiff_t>(i - 1) * m_iSpalten + (j - 1);
  }
  std::ptrdiff_t Count() const { return static_cast<std::ptrdiff_t>(m_iZeilen) * m_iSpalten; }
  void Allocate(int iRows, int iCols);
  void Release();
};

inline void ZuMatrix::Allocate(int iRows, int iCols) {
  const std::ptrdiff_t n = static_cast<std::ptrdiff_t>(iRows) * iCols;
  m_pdData = n <= 16 ? m_adInline : new double[static_cast<std::size_t>(n)];
  m_iZeilen = iRows;
  m_iSpalten = iCols;
}

inline void ZuMatrix::Release() {
  if (m_pdData != m_adInline) delete[] m_pdData;
  m_pdData = nullptr;
}
