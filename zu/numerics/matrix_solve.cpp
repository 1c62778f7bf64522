#include <algorithm>
#include <cmath>
#include <cstddef>

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

// Row k of the factor over the columns k + 1 to iCols - 1 of a bordered system. The sums over the
// rows above are gathered for many columns at once, each in the order of the rows.
void FactorRow(double* a, int k, int iCols) {
  constexpr int kBlock = 32;
  double adSum[kBlock];
  double* pdRow = a + static_cast<std::ptrdiff_t>(k) * iCols;
  const double dDiagonal = pdRow[k];
  for (int j0 = k + 1; j0 < iCols; j0 += kBlock) {
    const int m = std::min(iCols - j0, kBlock);
    std::fill_n(adSum, m, 0.0);
    const double* pdAbove = a;
    for (int l = 0; l < k; ++l, pdAbove += iCols) {
      const double dFactor = pdAbove[k];
      for (int j = 0; j < m; ++j) adSum[j] += pdAbove[j0 + j] * dFactor;
    }
    for (int j = 0; j < m; ++j) pdRow[j0 + j] = (pdRow[j0 + j] - adSum[j]) / dDiagonal;
  }
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

  for (int i = 0; i < u; ++i) {
    double dSum = 0.0;
    for (int l = 0; l < u; ++l) dSum += Row(l)[u + 1 + i] * Row(l)[u];
    x[i + 1] = dSum;
  }

  double t = 0.0;
  for (int i = 0; i < u; ++i) t += Row(i)[u] * Row(i)[u];
  double& dCorner = Row(u)[u];
  const double w = dCorner - t;
  if (!(w > 0.0)) return 0.0;
  dCorner = t / w;
  return w;
}
