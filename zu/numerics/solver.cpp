#include "zu/numerics/solver.h"

#include <algorithm>
#include <cmath>
#include <type_traits>

#include "zu/numerics/internal/elimination.h"
#include "zu/numerics/matrix.h"

using zu::internal::kSingular;
using zu::internal::kVanishing;

namespace {

// The elimination of n x n with n right sides, in arrays that the compiler knows to be apart.
template <int n>
int SolveSquare(double* a, double* b) {
  constexpr std::integral_constant<int, n> kSize;
  double adA[n * n], adB[n * n];
  std::copy_n(a, n * n, adA);
  std::copy_n(b, n * n, adB);
  const int iResult = zu::internal::Solve(adA, adB, kSize, kSize, kSize);
  std::copy_n(adA, n * n, a);
  std::copy_n(adB, n * n, b);
  return iResult;
}

}  // namespace

int GaussLoeserRelMax(ZuMatrix& a, ZuMatrix& b) {
  const int n = a.GetZeilen();
  const int iColsA = a.GetSpalten();
  const int iColsB = b.GetSpalten();
  const bool bSquare = iColsA == n && iColsB == n;
  if (bSquare && n == 3) return SolveSquare<3>(a.GetData(), b.GetData());
  if (bSquare && n == 4) return SolveSquare<4>(a.GetData(), b.GetData());
  return zu::internal::Solve(a.GetData(), b.GetData(), n, iColsA, iColsB);
}

int DreieckLoeserOben(ZuMatrix& r, ZuMatrix& b) {
  zu::internal::SubstituteBack(r.GetData(), b.GetData(), r.GetZeilen(), r.GetSpalten(),
                               b.GetSpalten());
  return 0;
}

double Det(const ZuMatrix& m) {
  ZuMatrix copy(m);
  double* a = copy.GetData();
  const int n = copy.GetZeilen();
  const int iCols = copy.GetSpalten();
  double dSign = 1.0;
  double dProduct = 1.0;
  for (int k = 0; k < n - 1; ++k) {
    const int iPivot = zu::internal::FindPivot(a, n, iCols, k, n - 1);
    if (iPivot == kSingular) return 0.0;
    if (iPivot != k) {
      zu::internal::SwapRows(a, iCols, iPivot, k);
      dSign *= -1.0;
    }
    const double dPivot = copy.GetElemZeroIndex(k, k);
    for (int i = k + 1; i < n; ++i) {
      zu::internal::AddRow(a, iCols, i, k, k, -copy.GetElemZeroIndex(i, k) / dPivot);
    }
    dProduct *= dPivot;
  }
  const double dLast = copy.GetElemZeroIndex(n - 1, n - 1);
  if (std::fabs(dLast) < kVanishing) return 0.0;
  return dSign * (dProduct * dLast);
}
