// Eigenvalues and eigenvectors of small square matrices that are not symmetric.
#pragma once

namespace zu::internal {

inline constexpr int kMostRows = 16;

// The real eigenvalues of an n x n matrix by rows, n at most kMostRows, and how many there are: by
// Hessenberg's form and double QR steps (J. G. F. Francis, "The QR transformation", 1961). Of a
// pair so close to each other that they come out complex by at most 1e-8 both count, with their
// real part. 0 where the steps do not end.
int RealEigenvalues(int n, const double* pMatrix, double* pValues);

// All n of them, complex ones in pairs, real and imaginary parts; n, or 0 where the steps do not
// end.
int Eigenvalues(int n, const double* pMatrix, double* pReal, double* pImaginary);

// A vector v with (A - lambda) v = 0 to rounding, its largest component 1.
void Eigenvector(int n, const double* pMatrix, double dValue, double* pVector);

}  // namespace zu::internal
