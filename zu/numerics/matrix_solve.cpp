#include <algorithm>
#include <cmath>
#include <cstddef>
#include <type_traits>

#include "zu/numerics/matrix.h"
#include "zu/numerics/solver.h"

int ZuMatrix::GaussLoeserRelMax(ZuMatrix& b) { return ::GaussLoeserRelMax(*this, b); }

int ZuMatrix::DreieckLoeserOben(ZuMatrix& b) { return ::DreieckLoeserOben(*this, b); }

double ZuMatrix::Det() const { return ::Det(*this); }

ZuMatrix& ZuMatrix::Invert(int* piError) {
  ZuMatrix copy(*this);
  SetIdent();
  const int iError = ::GaussLoeserRelMax(copy, *this);
  if (piError != nullptr) *piError = iError;
  return *this;
}

double ZuMatrix::Sarrus() const {
  const double* e = m_pdData;
  return e[0] * e[4] * e[8] + e[1] * e[5] * e[6] + e[2] * e[3] * e[7] - e[4] * e[6] * e[2] -
         e[7] * e[5] * e[0] - e[3] * e[8] * e[1];
}

ZuVector ZuMatrix::Cramer(const ZuVector& b) const {
  ZuMatrix copy(*this);
  const double dDet = copy.Sarrus();
  ZuVector result(3), column(3);
  for (int j = 1; j <= 3; ++j) {
    copy.GetRow(j, column);
    copy.SetRow(j, b);
    result[j] = copy.Sarrus() / dDet;
    copy.SetRow(j, column);
  }
  return result;
}

namespace {

// Sums over the first iRows rows of element (row, j) times element (row, k), for m columns j from
// j0 on, each in the order of the rows. The compiler keeps the sums in registers.
template <int m>
void SumProducts(const double* a, int iCols, int iRows, int k, int j0, double* pdSum) {
  double adSum[m] = {};
  for (int l = 0; l < iRows; ++l, a += iCols) {
    const double dFactor = a[k];
    for (int j = 0; j < m; ++j) adSum[j] += a[j0 + j] * dFactor;
  }
  std::copy_n(adSum, m, pdSum);
}

// Calls use(j, m, sums) for the columns iBegin to iEnd - 1 in groups of m columns from j on.
template <class Use>
void ForColumnSums(const double* a, int iCols, int iRows, int k, int iBegin, int iEnd, Use use) {
  double adSum[8];
  int j = iBegin;
  for (; j + 8 <= iEnd; j += 8) {
    SumProducts<8>(a, iCols, iRows, k, j, adSum);
    use(j, std::integral_constant<int, 8>(), adSum);
  }
  for (; j + 2 <= iEnd; j += 2) {
    SumProducts<2>(a, iCols, iRows, k, j, adSum);
    use(j, std::integral_constant<int, 2>(), adSum);
  }
  if (j < iEnd) {
    SumProducts<1>(a, iCols, iRows, k, j, adSum);
    use(j, std::integral_constant<int, 1>(), adSum);
  }
}

// Row k of the factor of a bordered system, right of the diagonal.
void FactorRow(double* a, int k, int iCols) {
  double* pdRow = a + static_cast<std::ptrdiff_t>(k) * iCols;
  const double dDiagonal = pdRow[k];
  ForColumnSums(a, iCols, k, k, k + 1, iCols, [=](int j0, auto m, const double* pdSum) {
    for (int j = 0; j < m; ++j) pdRow[j0 + j] = (pdRow[j0 + j] - pdSum[j]) / dDiagonal;
  });
}

}  // namespace

double ZuMatrix::Cholesky(ZuVector& x) {
  const int iCols = m_iSpalten;
  const int u = (iCols - 1) / 2;
  double* a = m_pdData;
  const auto Row = [a, iCols](int i) { return a + static_cast<std::ptrdiff_t>(i) * iCols; };

  for (int k = 0; k < u; ++k) {
    double dSum = 0.0;
    for (int l = 0; l < k; ++l) dSum += Row(l)[k] * Row(l)[k];
    const double d = Row(k)[k] - dSum;
    if (d < 0.0) return 0.0;
    Row(k)[k] = std::sqrt(d);
    FactorRow(a, k, iCols);
  }

  ForColumnSums(a, iCols, u, u, u + 1, 2 * u + 1, [&](int j0, auto m, const double* pdSum) {
    for (int j = 0; j < m; ++j) x[j0 - u + j] = pdSum[j];
  });

  double t = 0.0;
  for (int i = 0; i < u; ++i) t += Row(i)[u] * Row(i)[u];
  double& dCorner = Row(u)[u];
  const double w = dCorner - t;
  if (!(w > 0.0)) return 0.0;
  dCorner = t / w;
  return w;
}
