// Normal equations of a network: the points eliminated one by one, the rest factorised whole.
#pragma once

#include <vector>

#include "zu/adjust/internal/network_model.h"
#include "zu/adjust/internal/tile_cholesky.h"

namespace zu::internal {

// Rows of the free motions (k columns) that inner conditions have to decide.
struct NetworkFreedom {
  int k = 0;
  std::vector<double> basis;  // 7 x k by rows, combinations of the generators
};

class NetworkNormals {
 public:
  // One block of T = W V^-1, axis by axis: how a point follows reduced unknowns.
  struct Tie {
    int iOffset, n;
    double t[3][NetworkGroup::kWidest];
  };

  explicit NetworkNormals(const NetworkModel& model);

  // Linearises at a state and eliminates the points, the diagonal of the normal matrix raised by
  // the factor 1 + dDamping. False where a group has no value, or a point's block no inverse; then
  // UndecidedPoint() names it, or is -1.
  bool Build(const NetworkState& state, double dDamping);
  int UndecidedPoint() const { return m_iUndecided; }

  // Factorises what is left; the free motions are held by some photos. False where it is not
  // positive definite.
  bool Factorise(const NetworkState& state, const NetworkFreedom& freedom);

  // The step that the right sides ask for. *pdDecrement: root of the sum of squares it saves at
  // most; *pdPredicted: what the damped step saves.
  void Solve(std::vector<double>* pReduced, std::vector<Vec3>* pPoints, double* pdDecrement,
             double* pdPredicted) const;
  double Cost() const { return m_dCost; }

  // Solves N x = b for one right side given by reduced rows and rows of each point.
  void SolveFor(std::vector<double>* pReduced, std::vector<Vec3>* pPoints) const;

  // The smallest eigenvalue of the scaled matrix across the free motions and its vector in scaled
  // unknowns; by inverse iteration.
  double LeastEigenvalue(std::vector<double>* pVector) const;

  // The inverse of what is left where unknowns meet in the equations, for the next one.
  void Invert() { m_s.Invert(m_scale); }
  // Rows by columns of it, row by row; both within a photo, a tied point, a plane or a camera.
  // False, nothing written, where they don't meet; SolveFor gives any.
  bool Inverse(int iRow, int iRows, int iColumn, int iColumns, double* pBlock) const {
    return m_s.Inverse(iRow, iRows, iColumn, iColumns, pBlock);
  }
  const std::vector<Tie>& Ties(int iPoint) const { return m_ties[static_cast<size_t>(iPoint)]; }
  // 3 x 3 by rows; 0 in rows and columns of fixed axes.
  const double* PointInverse(int iPoint) const {
    return &m_inverse[9 * static_cast<size_t>(iPoint)];
  }

 private:
  bool EliminatePoint(int iPoint, const NetworkState& state);
  void AddToReduced(const NetworkGroup& group);
  bool HoldMotions(const NetworkState& state, const NetworkFreedom& freedom);
  std::vector<double> SolveReduced(const std::vector<double>& right) const;
  Vec3 SolvePoint(size_t uPoint, const Vec3& right, const std::vector<double>& reduced) const;

  const NetworkModel& m_model;
  TileCholesky m_s;  // what is left; factorised by Factorise
  double m_dDamping = 0.0, m_dCost = 0.0;
  int m_iUndecided = -1;
  std::vector<std::vector<Tie>> m_ties;
  std::vector<double> m_inverse;       // 9 a point
  std::vector<Vec3> m_rightPoints;     // right side of each point
  std::vector<double> m_rightReduced;  // after elimination
  std::vector<double> m_diagonal;      // of reduced unknowns, before elimination and damping
  std::vector<Vec3> m_pointDiagonal;
  std::vector<double> m_scale;                 // root of the diagonal after elimination
  std::vector<std::vector<double>> m_motions;  // free ones in scaled unknowns, orthonormal
  std::vector<int> m_slot;                     // by offset, of the point at work
};

}  // namespace zu::internal
