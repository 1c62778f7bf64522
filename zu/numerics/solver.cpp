#include "zu/numerics/solver.h"

#include <cmath>
#include <type_traits>

#include "zu/numerics/internal/elimination.h"
#include "zu/numerics/matrix.h"

using zu::internal::kSingular;
using zu::internal::kVanishing;

namespace {

template <int n>
using Constant = std::integral_constant<int, n>;

}  // namespace

int GaussLoeserRelMax(ZuMatrix& a, ZuMatrix& b) {
  const int n = a.GetZeilen();
  const int iColsA = a.GetSpalten();
  const int iColsB = b.GetSpalten();
  if (n == 3 && iColsA == 3 && iColsB == 3) {
    return zu::internal::Solve(a.GetData(), b.GetData(), Constant<3>(), Constant<3>(),
                               Constant<3>());
  }
  if (n == 4 && iColsA == 4 && iColsB == 4) {
    return zu::internal::Solve(a.GetData(), b.GetData(), Constant<4>(), Constant<4>(),
                               Constant<4>());
  }
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
