// Tests of the observations of a solved network, and snooping over them.
#pragma once

#include <map>
#include <vector>

#include "zu/adjust/internal/network_covariance.h"

namespace zu::internal {

// Limits of the tests of one adjustment, each quantile computed once.
class NetworkLimits {
 public:
  NetworkLimits(const ZuTestOptions& options, bool bAPriori, int iTests, int iRedundancy);

  double Used(int iDimension) const { return m_dUsed[iDimension]; }
  double SetAside(int iDimension) const { return m_dSetAside[iDimension]; }
  double LeastError() const { return m_dLeastError; }

 private:
  double m_dUsed[4] = {}, m_dSetAside[4] = {};
  double m_dLeastError;
};

// The test of one observation at the solution; dSigma0 scales T. False where it has no value there.
// *pTied: kept from one observation to the next, which is quick where they are of one point.
bool TestObservation(const ZuNetworkCovariance& covariance, const NetworkObservation& observation,
                     const NetworkLimits& limits, double dSigma0, double dLeastRedundancy,
                     ZuNetworkCovariance::Tied* pTied, ZuNetworkTest* pTest);

}  // namespace zu::internal
