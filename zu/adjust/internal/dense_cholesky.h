// Dense symmetric matrices: Cholesky of large ones, eigenvectors and inverses of small ones.
#pragma once

#include <cstddef>
#include <vector>

namespace zu::internal {

// A symmetric n x n matrix by columns, of which the lower triangle counts.
class DenseCholesky {
 public:
  void SetZero(int n);
  int Size() const { return m_n; }
  double& At(int iRow, int iColumn) { return m_a[Index(iRow, iColumn)]; }
  double* Column(int iColumn) { return &m_a[Index(0, iColumn)]; }

  // A = L L' in place. False where it is not positive definite.
  bool Factorise();
  // x becomes A^-1 x.
  void Solve(double* px) const;
  // A^-1, both triangles, by columns.
  std::vector<double> Inverse() const;

 private:
  std::size_t Index(int r, int c) const {
    return static_cast<std::size_t>(c) * static_cast<std::size_t>(m_n) +
           static_cast<std::size_t>(r);
  }
  int m_n = 0;
  std::vector<double> m_a;
};

// Eigenvalues (ascending) and eigenvectors (columns, n x n by rows) of a small symmetric matrix by
// rows: Jacobi's method.
void SymmetricEigen(int n, const double* pMatrix, double* pValues, double* pVectors);
// The inverse of a small square matrix by rows, Gauss and Jordan with pivots; false where it is
// singular to rounding.
bool InvertSquare(int n, const double* pMatrix, double* pInverse);

}  // namespace zu::internal
