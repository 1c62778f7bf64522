// Systems of equations by a second method: Eigen's QR and LU, compiled once for all test programs.
#pragma once

#include <Eigen/Core>

// The least squares solution of A X = B by QR with pivots.
Eigen::MatrixXd SolveByQr(const Eigen::MatrixXd& A, const Eigen::MatrixXd& B);
Eigen::MatrixXd InverseByLu(const Eigen::MatrixXd& A);
double DeterminantByLu(const Eigen::MatrixXd& A);
