// Vector of doubles of any size, indexed from 1, with inline store for up to four elements.
//
// Values: copies are deep, distinct objects may be used from distinct threads. No operation checks
// an index, a size or a division: callers are numeric kernels that know their sizes.
#pragma once

#include <cstddef>
#include <iosfwd>

#include "zu/export.h"

class ZuPoint;
class ZuReaderObject;

// How a vector is made from a point and what ChangeType makes of it. Any other value acts like
// eZuVectorHomogen, with the fourth element left as it is.
enum eZuVectorType : int {
  eZuVectorDirection2d = 0,  // 3 elements: x, y, 0
  eZuVectorPoint2d = 1,      // 3 elements: x, y, 1
  eZuVector3d = 2,           // 3 elements: x, y, z
  eZuVectorHomogen = 3,      // 4 elements: x, y, z and a fourth
};

class ZU_API ZuVector {
 public:
  // n elements, all 0.0. Up to 4 elements nothing is allocated.
  explicit ZuVector(int n) { init(n); }
  ZuVector(double x, double y, double z);
  ZuVector(double x, double y, double z, double w);
  ZuVector(const ZuVector& src);
  ZuVector(ZuVector&& src) noexcept;  // src is empty then; an assignment gives it a size again

  // The coordinates of a point in the form of `type`.
  //
  // Required: the fourth element of eZuVectorHomogen is 0.0 here and 1.0 after ChangeType: a
  // point's coordinates are taken as a direction, an extended vector as a position.
  ZuVector(const ZuPoint& point, eZuVectorType type);

  // Reads itself, see Read; empty where the size is refused.
  explicit ZuVector(ZuReaderObject* pObject);

  virtual ~ZuVector() { Release(); }

  // Copies elements until this vector or the source is full.
  //
  // Required: the size never changes and nothing is allocated; the destination decides how much is
  // copied. Kernels assign into blocks of fixed size and hold pointers into them, so that a
  // temporary is copied too.
  ZuVector& operator=(const ZuVector& src);

  int GetSize() const { return m_iSize; }
  double& operator[](int i) { return m_pdData[i - 1]; }
  const double& operator[](int i) const { return m_pdData[i - 1]; }
  double GetElem(int i) const { return m_pdData[i - 1]; }
  double SetElem(int i, double dValue) { return m_pdData[i - 1] = dValue; }  // gives dValue

  // The elements in a row, first one at index 0.
  double* GetData() { return m_pdData; }
  const double* GetData() const { return m_pdData; }

  // Elementwise over the size of this vector, which is the size of the result.
  ZuVector operator+(const ZuVector& b) const;
  ZuVector operator-(const ZuVector& b) const;
  ZuVector& operator+=(const ZuVector& b);
  ZuVector& operator-=(const ZuVector& b);

  // Division multiplies by the reciprocal, which is formed once.
  ZuVector operator*(double dFactor) const;
  ZuVector operator/(double dDivisor) const;
  ZuVector& operator*=(double dFactor);
  ZuVector& operator/=(double dDivisor);

  // Scalar product.
  //
  // Required: the sum runs over the size of b, so that the first three elements of a homogeneous
  // vector can be multiplied with a direction of size 3. This vector must not be shorter than b.
  double operator*(const ZuVector& b) const;

  // Cross product of the first three elements of both; the result has size 3.
  ZuVector operator%(const ZuVector& b) const;

  // Exact, without a tolerance; vectors of different sizes are unequal.
  bool operator==(const ZuVector& b) const;
  bool operator!=(const ZuVector& b) const { return !(*this == b); }

  double Abs() const;  // Euclidean length
  void Clear();        // all elements 0.0

  // Scales this vector to length 1 and returns it. The zero vector becomes NaN.
  ZuVector& Normalize();
  bool IsNormalized(double eps) const;  // 1 - eps <= length <= 1 + eps

  // From 3 elements to 4 (eZuVectorHomogen, fourth element 1.0) and from 4 to 3 (any other type;
  // the third becomes 0.0 for a plane direction, 1.0 for a plane point, else stays). No other
  // size or pair of size and type is changed.
  void ChangeType(eZuVectorType type);

  // Reads "n v1 ... vn" from the token in hand on; returns 1. A value that is no number counts as
  // 0.0; at a brace or the end of the file the missing values are 0.0 and that token stays in
  // hand. A size below 1 or above a million leaves the vector alone and its numbers are skipped.
  int Read(ZuReaderObject* pObject);

  // Required: writes nothing and returns the stream. Records write the numbers of their vectors
  // themselves, in their own layout.
  std::ostream& Write(std::ostream& os) const;
  // Writes "n v1 ... vn" in one line, as Read takes it to the last bit.
  std::ostream& Export(std::ostream& os) const;

  // Headline (printf format), elements and length to the debug output.
  [[gnu::format(printf, 2, 3)]] void DbgPrintf(const char* szFormat, ...) const;

 protected:
  double* m_pdData;      // into m_adInline or a heap array
  double m_adInline[4];  // the elements while there are at most 4
  int m_iSize;

 private:
  void Allocate(int n);
  void Release();
  void init(int n);
};

inline void ZuVector::Allocate(int n) {
  m_pdData = n <= 4 ? m_adInline : new double[static_cast<std::size_t>(n)];
  m_iSize = n;
}

inline void ZuVector::init(int n) {
  Allocate(n);
  for (int i = 0; i < n; ++i) m_pdData[i] = 0.0;
}

inline void ZuVector::Release() {
  if (m_pdData != m_adInline) delete[] m_pdData;
  m_pdData = nullptr;
}
