#include "zu/numerics/vector.h"

#include <algorithm>
#include <cmath>

#include "zu/points/point.h"

ZuVector::ZuVector(double x, double y, double z) {
  Allocate(3);
  m_pdData[0] = x;
  m_pdData[1] = y;
  m_pdData[2] = z;
}

ZuVector::ZuVector(double x, double y, double z, double w) {
  Allocate(4);
  m_pdData[0] = x;
  m_pdData[1] = y;
  m_pdData[2] = z;
  m_pdData[3] = w;
}

ZuVector::ZuVector(const ZuVector& src) {
  Allocate(src.m_iSize);
  std::copy_n(src.m_pdData, m_iSize, m_pdData);
}

ZuVector::ZuVector(ZuVector&& src) noexcept : m_pdData(src.m_pdData), m_iSize(src.m_iSize) {
  if (m_pdData == src.m_adInline) {
    m_pdData = m_adInline;
    std::copy_n(src.m_adInline, m_iSize, m_adInline);
  }
  src.m_pdData = nullptr;
  src.m_iSize = 0;
}

ZuVector::ZuVector(const ZuPoint& point, eZuVectorType type) {
  const bool b3Elements =
      type == eZuVectorDirection2d || type == eZuVectorPoint2d || type == eZuVector3d;
  init(b3Elements ? 3 : 4);
  m_pdData[0] = point.m_dX;
  m_pdData[1] = point.m_dY;
  m_pdData[2] = point.m_dZ;
  if (type == eZuVectorDirection2d) m_pdData[2] = 0.0;
  if (type == eZuVectorPoint2d) m_pdData[2] = 1.0;
}

ZuVector& ZuVector::operator=(const ZuVector& src) {
  if (m_pdData == nullptr) Allocate(src.m_iSize);
  const int n = std::min(m_iSize, src.m_iSize);
  if (this != &src) std::copy_n(src.m_pdData, n, m_pdData);
  return *this;
}

ZuVector ZuVector::operator+(const ZuVector& b) const {
  ZuVector result(*this);
  result += b;
  return result;
}

ZuVector ZuVector::operator-(const ZuVector& b) const {
  ZuVector result(*this);
  result -= b;
  return result;
}

ZuVector& ZuVector::operator+=(const ZuVector& b) {
  for (int i = 0; i < m_iSize; ++i) m_pdData[i] += b.m_pdData[i];
  return *this;
}

ZuVector& ZuVector::operator-=(const ZuVector& b) {
  for (int i = 0; i < m_iSize; ++i) m_pdData[i] -= b.m_pdData[i];
  return *this;
}

ZuVector ZuVector::operator*(double dFactor) const {
  ZuVector result(*this);
  result *= dFactor;
  return result;
}

ZuVector ZuVector::operator/(double dDivisor) const { return *this * (1.0 / dDivisor); }

ZuVector& ZuVector::operator*=(double dFactor) {
  for (int i = 0; i < m_iSize; ++i) m_pdData[i] *= dFactor;
  return *this;
}

ZuVector& ZuVector::operator/=(double dDivisor) { return *this *= 1.0 / dDivisor; }

double ZuVector::operator*(const ZuVector& b) const {
  double dSum = 0.0;
  for (int i = 0; i < b.m_iSize; ++i) dSum += m_pdData[i] * b.m_pdData[i];
  return dSum;
}

ZuVector ZuVector::operator%(const ZuVector& b) const {
  const double* p = m_pdData;
  const double* q = b.m_pdData;
  return ZuVector(p[1] * q[2] - p[2] * q[1], p[2] * q[0] - p[0] * q[2], p[0] * q[1] - p[1] * q[0]);
}

bool ZuVector::operator==(const ZuVector& b) const {
  if (m_iSize != b.m_iSize) return false;
  return std::equal(m_pdData, m_pdData + m_iSize, b.m_pdData);
}

double ZuVector::Abs() const { return std::sqrt(*this * *this); }

void ZuVector::Clear() { std::fill_n(m_pdData, m_iSize, 0.0); }

ZuVector& ZuVector::Normalize() { return *this *= 1.0 / Abs(); }

bool ZuVector::IsNormalized(double eps) const {
  const double dLength = Abs();
  return 1.0 - eps <= dLength && dLength <= 1.0 + eps;
}

void ZuVector::ChangeType(eZuVectorType type) {
  if (m_iSize == 3 && type == eZuVectorHomogen) {
    m_iSize = 4;
    m_pdData[3] = 1.0;
  } else if (m_iSize == 4 && type != eZuVectorHomogen) {
    m_iSize = 3;
    if (type == eZuVectorDirection2d) m_pdData[2] = 0.0;
    if (type == eZuVectorPoint2d) m_pdData[2] = 1.0;
  }
}
