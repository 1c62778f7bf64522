#include "tests/support/eigen_solvers.h"

#include <Eigen/LU>
#include <Eigen/QR>

Eigen::MatrixXd SolveByQr(const Eigen::MatrixXd& A, const Eigen::MatrixXd& B) {
  return A.colPivHouseholderQr().solve(B);
}

Eigen::MatrixXd InverseByLu(const Eigen::MatrixXd& A) { return A.partialPivLu().inverse(); }

double DeterminantByLu(const Eigen::MatrixXd& A) { return A.determinant(); }
