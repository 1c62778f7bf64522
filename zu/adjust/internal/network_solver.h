// From start values to the least sum of squares.
#pragma once

#include <string>

#include "zu/adjust/internal/network_model.h"
#include "zu/adjust/internal/network_normals.h"

namespace zu::internal {

class NetworkSolver {
 public:
  NetworkSolver(const NetworkModel& model, const ZuNetworkOptions& options,
                NetworkNormals* pNormals);

  // From a state to the solution; normal equations and freedom are then those of the solution,
  // undamped and factorised. Where the status is not good, Text() tells why; where a point's rays
  // decide nothing, UndecidedPoint() names it.
  ZuAdjustStatus Run(NetworkState* pState);

  const std::string& Text() const { return m_strText; }
  int Steps() const { return m_iSteps; }
  const NetworkFreedom& Freedom() const { return m_freedom; }
  double LeastEigenvalue() const { return m_dLeast; }
  int UndecidedPoint() const { return m_iUndecided; }

 private:
  ZuAdjustStatus End(ZuAdjustStatus status, const std::string& strText);
  bool Descend(NetworkState* pState);
  bool MoveToDatum(NetworkState* pState) const;
  ZuAdjustStatus CheckStart(const NetworkState& state);
  ZuAdjustStatus CheckCondition(const NetworkState& state);
  ZuAdjustStatus CheckEnd(const NetworkState& state);
  ZuAdjustStatus FindFreedom(const NetworkState& state);
  double Tolerance(double dCost) const;

  const NetworkModel& m_model;
  const ZuNetworkOptions& m_options;
  NetworkNormals& m_normals;
  NetworkFreedom m_freedom;
  std::string m_strText;
  int m_iSteps = 0, m_iUndecided = -1;
  double m_dLeast = 0.0;
  bool m_bStopped = false;
};

// What stays free, in words: "shift, rotation and scale", "rotation about the line through points 3
// and 7".
std::string FreedomText(const NetworkModel& model, const NetworkState& state,
                        const NetworkFreedom& freedom);
// The weakest combination of unknowns in words, and what would help.
std::string WeaknessText(const NetworkModel& model, const std::vector<double>& vector);

}  // namespace zu::internal
