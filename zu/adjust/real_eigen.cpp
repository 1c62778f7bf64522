#include "zu/adjust/internal/real_eigen.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>

namespace zu::internal {

namespace {

constexpr double kEpsilon = std::numeric_limits<double>::epsilon();
constexpr double kNearlyReal = 1e-8;
constexpr int kMostSteps = 60;  // for one eigenvalue

class Hessenberg {
 public:
  Hessenberg(int n, const double* pMatrix) : m_n(n) {
    for (int i = 0; i < n; ++i) {
      for (int k = 0; k < n; ++k) m_a[i][k] = pMatrix[i * n + k];
    }
    Reduce();
  }

  int Values(double* pReal, double* pImaginary) {
    int iLast = m_n - 1, iSteps = 0;
    while (iLast >= 0) {
      const int iFirst = FirstOfBlock(iLast);
      if (iFirst == iLast) {
        pReal[iLast] = m_a[iLast][iLast];
        pImaginary[iLast] = 0.0;
        --iLast;
        iSteps = 0;
      } else if (iFirst == iLast - 1) {
        ValuesOfTwo(iFirst, pReal + iFirst, pImaginary + iFirst);
        iLast -= 2;
        iSteps = 0;
      } else {
        if (++iSteps > kMostSteps) return 0;
        Step(iFirst, iLast, iSteps % 10 == 0);
      }
    }
    return m_n;
  }

 private:
  // v is a reflection 1 - 2 v v' on m rows and columns from iRow on.
  struct Reflection {
    int iRow, m;
    double v[kMostRows];
  };

  // Sends the m values to a multiple of the first unit vector; false where they are all 0.
  static bool Make(const double* px, int iRow, int m, Reflection* p) {
    double s = 0.0;
    for (int i = 0; i < m; ++i) s += px[i] * px[i];
    if (!(s > 0.0)) return false;
    p->iRow = iRow;
    p->m = m;
    std::copy_n(px, m, p->v);
    p->v[0] += px[0] < 0.0 ? -std::sqrt(s) : std::sqrt(s);
    double dSquares = 0.0;
    for (int i = 0; i < m; ++i) dSquares += p->v[i] * p->v[i];
    for (int i = 0; i < m; ++i) p->v[i] /= std::sqrt(dSquares);
    return true;
  }

  // H A H.
  void Apply(const Reflection& h) {
    for (int k = 0; k < m_n; ++k) {
      double s = 0.0;
      for (int i = 0; i < h.m; ++i) s += h.v[i] * m_a[h.iRow + i][k];
      for (int i = 0; i < h.m; ++i) m_a[h.iRow + i][k] -= 2.0 * s * h.v[i];
    }
    for (int i = 0; i < m_n; ++i) {
      double s = 0.0;
      for (int k = 0; k < h.m; ++k) s += m_a[i][h.iRow + k] * h.v[k];
      for (int k = 0; k < h.m; ++k) m_a[i][h.iRow + k] -= 2.0 * s * h.v[k];
    }
  }

  void Reduce() {
    for (int k = 0; k + 2 < m_n; ++k) {
      double x[kMostRows];
      const int m = m_n - k - 1;
      for (int i = 0; i < m; ++i) x[i] = m_a[k + 1 + i][k];
      Reflection h;
      if (Make(x, k + 1, m, &h)) Apply(h);
      for (int i = k + 2; i < m_n; ++i) m_a[i][k] = 0.0;
    }
  }

  // Row where the block that ends in iLast begins: what vanishes under the diagonal parts blocks.
  int FirstOfBlock(int iLast) {
    for (int i = iLast; i > 0; --i) {
      const double dNear = std::fabs(m_a[i][i]) + std::fabs(m_a[i - 1][i - 1]);
      if (std::fabs(m_a[i][i - 1]) > kEpsilon * dNear) continue;
      m_a[i][i - 1] = 0.0;
      return i;
    }
    return 0;
  }

  void ValuesOfTwo(int i, double* pReal, double* pImaginary) const {
    const double a = m_a[i][i], b = m_a[i][i + 1], c = m_a[i + 1][i], d = m_a[i + 1][i + 1];
    const double dMean = 0.5 * (a + d), p = 0.5 * (a - d), q = p * p + b * c;
    pImaginary[0] = q < 0.0 ? std::sqrt(-q) : 0.0;
    pImaginary[1] = -pImaginary[0];
    const double dRoot = q > 0.0 ? std::sqrt(q) : 0.0;
    // The farther one behind; the other by the product, which keeps its digits.
    pReal[1] = dMean + (dMean < 0.0 ? -dRoot : dRoot);
    pReal[0] = q > 0.0 && pReal[1] != 0.0 ? (a * d - b * c) / pReal[1]
                                          : dMean - (dMean < 0.0 ? -dRoot : dRoot);
  }

  // A double step with the eigenvalues of the last two rows as shifts, or with others that break a
  // circle.
  void Step(int iFirst, int iLast, bool bOther) {
    double dSum = m_a[iLast - 1][iLast - 1] + m_a[iLast][iLast];
    double dProduct = m_a[iLast - 1][iLast - 1] * m_a[iLast][iLast] -
                      m_a[iLast - 1][iLast] * m_a[iLast][iLast - 1];
    if (bOther) {
      const double s = std::fabs(m_a[iLast][iLast - 1]) + std::fabs(m_a[iLast - 1][iLast - 2]);
      dSum = 1.5 * s;
      dProduct = s * s;
    }
    // First column of (A - s1) (A - s2).
    const int f = iFirst;
    double x[3] = {
        m_a[f][f] * m_a[f][f] + m_a[f][f + 1] * m_a[f + 1][f] - dSum * m_a[f][f] + dProduct,
        m_a[f + 1][f] * (m_a[f][f] + m_a[f + 1][f + 1] - dSum), m_a[f + 1][f] * m_a[f + 2][f + 1]};
    for (int k = iFirst; k < iLast; ++k) {
      const int m = std::min(3, iLast - k + 1);
      Reflection h;
      if (Make(x, k, m, &h)) Apply(h);
      if (k > iFirst) {
        for (int i = k + 1; i < k + m; ++i) m_a[i][k - 1] = 0.0;
      }
      for (int i = 0; i < 3 && k + 1 + i <= iLast; ++i) x[i] = m_a[k + 1 + i][k];
    }
  }

  int m_n;
  double m_a[kMostRows][kMostRows] = {};
};

}  // namespace

int Eigenvalues(int n, const double* pMatrix, double* pReal, double* pImaginary) {
  return Hessenberg(n, pMatrix).Values(pReal, pImaginary);
}

int RealEigenvalues(int n, const double* pMatrix, double* pValues) {
  double real[kMostRows], imaginary[kMostRows];
  int iCount = 0;
  const int iAll = Eigenvalues(n, pMatrix, real, imaginary);
  for (int i = iAll - 1; i >= 0; --i) {
    if (std::fabs(imaginary[i]) <= kNearlyReal) pValues[iCount++] = real[i];
  }
  return iCount;
}

// Gauss with the largest element of all as pivot; the last one, which vanishes, is left over.
void Eigenvector(int n, const double* pMatrix, double dValue, double* pVector) {
  double a[kMostRows][kMostRows];
  int order[kMostRows];
  std::iota(order, order + n, 0);
  for (int i = 0; i < n; ++i) {
    for (int k = 0; k < n; ++k) a[i][k] = pMatrix[i * n + k] - (i == k ? dValue : 0.0);
  }
  for (int p = 0; p + 1 < n; ++p) {
    int iRow = p, iColumn = p;
    for (int i = p; i < n; ++i) {
      for (int k = p; k < n; ++k) {
        if (!(std::fabs(a[i][k]) > std::fabs(a[iRow][iColumn]))) continue;
        iRow = i;
        iColumn = k;
      }
    }
    std::swap(a[p], a[iRow]);
    for (int i = 0; i < n; ++i) std::swap(a[i][p], a[i][iColumn]);
    std::swap(order[p], order[iColumn]);
    for (int i = p + 1; i < n && a[p][p] != 0.0; ++i) {
      const double d = a[i][p] / a[p][p];
      for (int k = p; k < n; ++k) a[i][k] -= d * a[p][k];
    }
  }
  double v[kMostRows] = {}, dLargest = 1.0;
  v[n - 1] = 1.0;
  for (int i = n - 2; i >= 0; --i) {
    double s = 0.0;
    for (int k = i + 1; k < n; ++k) s -= a[i][k] * v[k];
    v[i] = a[i][i] != 0.0 ? s / a[i][i] : 0.0;
    dLargest = std::max(dLargest, std::fabs(v[i]));
  }
  for (int i = 0; i < n; ++i) pVector[order[i]] = v[i] / dLargest;
}

}  // namespace zu::internal
