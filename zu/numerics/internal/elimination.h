// Gauss elimination on plain arrays, rows one behind the other, indices from 0.
//
// Sizes are ints or std::integral_constant: with a constant the compiler unrolls the loops, and
// the operations and their order are the same.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <utility>

namespace zu::internal {

// Below this a row sum, a relative pivot or a last element counts as zero [-].
inline constexpr double kVanishing = 1e-10;

inline constexpr int kSingular = -1;

// Row of the best pivot for column k among the rows k to iEnd - 1: the one whose element is largest
// relative to the magnitude sum of its columns k to n - 1. kSingular where a sum or the best
// quotient vanishes.
template <class Size, class Stride>
int FindPivot(const double* a, Size n, Stride iStride, int k, int iEnd) {
  double dBest = 0.0;
  int iBest = k;
  for (int i = k; i < iEnd; ++i) {
    const double* pdRow = a + static_cast<std::ptrdiff_t>(i) * iStride;
    double dSum = 0.0;
    for (int j = k; j < n; ++j) dSum += std::fabs(pdRow[j]);
    if (dSum < kVanishing) return kSingular;
    const double dQuotient = std::fabs(pdRow[k]) / dSum;
    if (dQuotient > dBest) {
      dBest = dQuotient;
      iBest = i;
    }
  }
  return dBest < kVanishing ? kSingular : iBest;
}

template <class Stride>
void SwapRows(double* a, Stride iStride, int i, int k) {
  double* pdA = a + static_cast<std::ptrdiff_t>(i) * iStride;
  double* pdB = a + static_cast<std::ptrdiff_t>(k) * iStride;
  for (int j = 0; j < iStride; ++j) std::swap(pdA[j], pdB[j]);
}

// Row i += factor * row k over the columns iFirst to iStride - 1.
template <class Stride>
void AddRow(double* a, Stride iStride, int i, int k, int iFirst, double dFactor) {
  double* pdDest = a + static_cast<std::ptrdiff_t>(i) * iStride;
  const double* pdSrc = a + static_cast<std::ptrdiff_t>(k) * iStride;
  for (int j = iFirst; j < iStride; ++j) pdDest[j] += pdSrc[j] * dFactor;
}

// b = r^-1 b with the upper triangle of r, from the last row up.
template <class Size, class StrideR, class StrideB>
void SubstituteBack(const double* r, double* b, Size n, StrideR iStrideR, StrideB iStrideB) {
  constexpr int kBlock = 16;  // columns of b whose sums are gathered together
  double adSum[kBlock];
  for (int i = n - 1; i >= 0; --i) {
    const double* pdR = r + static_cast<std::ptrdiff_t>(i) * iStrideR;
    double* pdB = b + static_cast<std::ptrdiff_t>(i) * iStrideB;
    for (int c0 = 0; c0 < iStrideB; c0 += kBlock) {
      const int m = std::min<int>(iStrideB - c0, kBlock);
      for (int c = 0; c < m; ++c) adSum[c] = 0.0;
      for (int j = i + 1; j < n; ++j) {
        const double* pdSolved = b + static_cast<std::ptrdiff_t>(j) * iStrideB + c0;
        for (int c = 0; c < m; ++c) adSum[c] += pdR[j] * pdSolved[c];
      }
      for (int c = 0; c < m; ++c) pdB[c0 + c] = (pdB[c0 + c] - adSum[c]) / pdR[i];
    }
  }
}

// Solves a x = b; 0 and b is the solution, or 1 for a singular a. See GaussLoeserRelMax.
template <class Size, class StrideA, class StrideB>
int Solve(double* a, double* b, Size n, StrideA iStrideA, StrideB iStrideB) {
  for (int k = 0; k < n; ++k) {
    const int iPivot = FindPivot(a, n, iStrideA, k, n);
    if (iPivot == kSingular) return 1;
    if (iPivot != k) {
      SwapRows(a, iStrideA, iPivot, k);
      SwapRows(b, iStrideB, iPivot, k);
    }
    const double dPivot = a[static_cast<std::ptrdiff_t>(k) * iStrideA + k];
    for (int i = k + 1; i < n; ++i) {
      double* pdPlace = a + static_cast<std::ptrdiff_t>(i) * iStrideA + k;
      const double dFactor = -*pdPlace / dPivot;
      AddRow(a, iStrideA, i, k, k + 1, dFactor);
      AddRow(b, iStrideB, i, k, 0, dFactor);
      *pdPlace = -dFactor;  // the multiplier stays where the element was
    }
  }
  if (std::fabs(a[static_cast<std::ptrdiff_t>(n - 1) * iStrideA + n - 1]) < kVanishing) return 1;
  SubstituteBack(a, b, n, iStrideA, iStrideB);
  return 0;
}

}  // namespace zu::internal
