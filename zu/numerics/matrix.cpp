#include "zu/numerics/matrix.h"

#include <algorithm>

namespace {

constexpr std::ptrdiff_t kInline = 16;  // elements of the inline store

// r = a b for n x n matrices whose size the compiler knows. The sums run as in the general loop.
template <int n>
void MultiplySquare(const double* a, const double* b, double* r) {
  for (int i = 0; i < n; ++i) {
    for (int j = 0; j < n; ++j) {
      double dSum = 0.0;
      for (int k = 0; k < n; ++k) dSum += a[i * n + k] * b[k * n + j];
      r[i * n + j] = dSum;
    }
  }
}

// r = a b for a of iRows x iInner and b of iInner x iCols.
void Multiply(const double* a, const double* b, double* r, int iRows, int iInner, int iCols) {
  for (int i = 0; i < iRows; ++i, a += iInner, r += iCols) {
    std::fill_n(r, iCols, 0.0);
    for (int k = 0; k < iInner; ++k) {
      const double dFactor = a[k];
      const double* pRow = b + static_cast<std::ptrdiff_t>(k) * iCols;
      for (int j = 0; j < iCols; ++j) r[j] += dFactor * pRow[j];
    }
  }
}

}  // namespace

ZuMatrix::ZuMatrix(int iRows, int iCols) {
  Allocate(iRows, iCols);
  Clear();
}

ZuMatrix::ZuMatrix(const ZuMatrix& src) {
  Allocate(src.m_iZeilen, src.m_iSpalten);
  std::copy_n(src.m_pdData, Count(), m_pdData);
}

ZuMatrix::ZuMatrix(ZuMatrix&& src) noexcept
    : m_pdData(src.m_pdData), m_iZeilen(src.m_iZeilen), m_iSpalten(src.m_iSpalten) {
  if (m_pdData == src.m_adInline) {
    m_pdData = m_adInline;
    std::copy_n(src.m_adInline, Count(), m_adInline);
  }
  src.m_pdData = nullptr;
  src.m_iZeilen = src.m_iSpalten = 0;
}

ZuMatrix::ZuMatrix(const double* pdValues, int iRows, int iCols)
    : m_pdData(nullptr), m_iZeilen(0), m_iSpalten(0) {
  Set(pdValues, iRows, iCols);
}

ZuMatrix& ZuMatrix::Set(const double* pdValues, int iRows, int iCols) {
  const std::ptrdiff_t n = static_cast<std::ptrdiff_t>(iRows) * iCols;
  const std::ptrdiff_t iPresent = Count();
  if (m_pdData != nullptr && iPresent < n) {
    const std::ptrdiff_t iRoom = m_pdData == m_adInline ? kInline : iPresent;
    std::copy_n(pdValues, std::min(n, iRoom), m_pdData);
    return *this;
  }
  // The values may stand in the array that is given up: it goes last.
  double* pdOld = m_pdData;
  Allocate(iRows, iCols);
  if (m_pdData != pdValues) std::copy_n(pdValues, n, m_pdData);
  if (pdOld != m_adInline) delete[] pdOld;
  return *this;
}

ZuMatrix& ZuMatrix::operator=(const ZuMatrix& src) {
  if (m_pdData == nullptr) return Set(src.m_pdData, src.m_iZeilen, src.m_iSpalten);
  if (this != &src) std::copy_n(src.m_pdData, std::min(Count(), src.Count()), m_pdData);
  return *this;
}

void ZuMatrix::Clear() { std::fill_n(m_pdData, Count(), 0.0); }

void ZuMatrix::SetIdent() {
  Clear();
  for (int i = 1; i <= m_iZeilen; ++i) m_pdData[Offset(i, i)] = 1.0;
}

void ZuMatrix::GetLine(int i, ZuVector& v) const {
  for (int k = 1; k <= v.GetSize(); ++k) v[k] = m_pdData[Offset(i, k)];
}

void ZuMatrix::SetLine(int i, const ZuVector& v) {
  for (int k = 1; k <= v.GetSize(); ++k) m_pdData[Offset(i, k)] = v[k];
}

void ZuMatrix::GetRow(int j, ZuVector& v) const {
  for (int k = 1; k <= v.GetSize(); ++k) v[k] = m_pdData[Offset(k, j)];
}

void ZuMatrix::SetRow(int j, const ZuVector& v) {
  for (int k = 1; k <= v.GetSize(); ++k) m_pdData[Offset(k, j)] = v[k];
}

void ZuMatrix::SwapLines(int a, int b) {
  if (a == b) return;
  std::swap_ranges(m_pdData + Offset(a, 1), m_pdData + Offset(a + 1, 1), m_pdData + Offset(b, 1));
}

void ZuMatrix::AddLines(int iDest, int iSrc, int iFirst, double dFactor, int iLast) {
  if (iLast == -1) iLast = m_iSpalten;
  for (int j = iFirst; j <= iLast; ++j) {
    m_pdData[Offset(iDest, j)] += m_pdData[Offset(iSrc, j)] * dFactor;
  }
}

void ZuMatrix::MultLine(int iRow, int iFirst, double dFactor, int iLast) {
  if (iLast == -1) iLast = m_iSpalten;
  for (int j = iFirst; j <= iLast; ++j) m_pdData[Offset(iRow, j)] *= dFactor;
}

ZuMatrix ZuMatrix::operator*(const ZuMatrix& b) const {
  ZuMatrix result(Unset(), m_iZeilen, b.m_iSpalten);
  const bool bSquare = m_iZeilen == m_iSpalten && m_iSpalten == b.m_iSpalten;
  if (bSquare && m_iSpalten == 3) {
    MultiplySquare<3>(m_pdData, b.m_pdData, result.m_pdData);
  } else if (bSquare && m_iSpalten == 4) {
    MultiplySquare<4>(m_pdData, b.m_pdData, result.m_pdData);
  } else {
    Multiply(m_pdData, b.m_pdData, result.m_pdData, m_iZeilen, m_iSpalten, b.m_iSpalten);
  }
  return result;
}

ZuVector ZuMatrix::operator*(const ZuVector& v) const {
  ZuVector result(m_iZeilen);
  const double* pRow = m_pdData;
  for (int i = 1; i <= m_iZeilen; ++i, pRow += m_iSpalten) {
    double dSum = 0.0;
    for (int k = 0; k < m_iSpalten; ++k) dSum += pRow[k] * v.GetData()[k];
    result[i] = dSum;
  }
  return result;
}

ZuMatrix& ZuMatrix::operator*=(const ZuMatrix& b) { return *this = *this * b; }

ZuMatrix ZuMatrix::operator*(double dFactor) const {
  ZuMatrix result(*this);
  result *= dFactor;
  return result;
}

ZuMatrix ZuMatrix::operator/(double dDivisor) const { return *this * (1.0 / dDivisor); }

ZuMatrix& ZuMatrix::operator*=(double dFactor) {
  const std::ptrdiff_t n = Count();
  for (std::ptrdiff_t i = 0; i < n; ++i) m_pdData[i] *= dFactor;
  return *this;
}

ZuMatrix& ZuMatrix::operator/=(double dDivisor) { return *this *= 1.0 / dDivisor; }

ZuMatrix ZuMatrix::operator+(const ZuMatrix& b) const {
  ZuMatrix result(*this);
  result += b;
  return result;
}

ZuMatrix ZuMatrix::operator-(const ZuMatrix& b) const {
  ZuMatrix result(*this);
  result -= b;
  return result;
}

ZuMatrix& ZuMatrix::operator+=(const ZuMatrix& b) {
  const std::ptrdiff_t n = Count();
  for (std::ptrdiff_t i = 0; i < n; ++i) m_pdData[i] += b.m_pdData[i];
  return *this;
}

ZuMatrix& ZuMatrix::operator-=(const ZuMatrix& b) {
  const std::ptrdiff_t n = Count();
  for (std::ptrdiff_t i = 0; i < n; ++i) m_pdData[i] -= b.m_pdData[i];
  return *this;
}

ZuMatrix ZuMatrix::Transpose() const {
  ZuMatrix result(Unset(), m_iSpalten, m_iZeilen);
  for (int i = 1; i <= m_iZeilen; ++i) {
    for (int j = 1; j <= m_iSpalten; ++j) {
      result.m_pdData[result.Offset(j, i)] = m_pdData[Offset(i, j)];
    }
  }
  return result;
}

void ZuMatrix::CalcNGLAN(const ZuVector& v) {
  const int n = v.GetSize();
  const double* pdRow = v.GetData();
  for (int i = 0; i < n; ++i) {
    double* pdSum = m_pdData + static_cast<std::ptrdiff_t>(i) * m_iSpalten;
    for (int j = 0; j < n; ++j) pdSum[j] += pdRow[i] * pdRow[j];
  }
}
