#include "zu/adjust/internal/network_statistics.h"

#include <cmath>

#include "zu/adjust/internal/small_matrix.h"

namespace zu::internal {

namespace {

constexpr double kNoRedundancy = 1e-10;  // below it a residual tells nothing [-]

}  // namespace

NetworkLimits::NetworkLimits(const ZuTestOptions& options, bool bAPriori, int iTests,
                             int iRedundancy) {
  const double dAlpha = ZuTestAlpha(options, iTests);
  for (int m = 1; m <= 3; ++m) {
    m_dUsed[m] = bAPriori ? ZuGroupLimit(dAlpha, m) : ZuGroupLimit(dAlpha, m, iRedundancy);
    m_dSetAside[m] = bAPriori ? ZuGroupLimit(dAlpha, m) : ZuNewGroupLimit(dAlpha, m, iRedundancy);
  }
  m_dLeastError = ZuLeastError(dAlpha, options.dPower);
}

bool TestObservation(const ZuNetworkCovariance& covariance, const NetworkObservation& observation,
                     const NetworkLimits& limits, double dSigma0, double dLeastRedundancy,
                     ZuNetworkCovariance::Tied* pTied, ZuNetworkTest* pTest) {
  NetworkGroup g;
  *pTest = {};
  pTest->bUsed = observation.bUsed;
  pTest->n = covariance.m_pModel->Dimension(observation);
  if (!covariance.m_pModel->Linearise(observation, covariance.m_state, &g)) return false;
  const int m = g.m;
  double h[9];
  covariance.OfGroup(g, pTied, h);
  // Of the residuals divided by L: I - H where the group took part, I + H of a prediction.
  double q[9];
  for (int i = 0; i < m; ++i) {
    for (int k = 0; k < m; ++k) {
      q[m * i + k] = (i == k ? 1.0 : 0.0) + (observation.bUsed ? -h[m * i + k] : h[m * i + k]);
    }
  }
  // L^-1 and, by it, what belongs to the observations as they were made.
  double inverse[3][3] = {};
  for (int k = 0; k < m; ++k) {
    for (int i = k; i < m; ++i) {
      double s = i == k ? 1.0 : 0.0;
      for (int n = k; n < i; ++n) s -= g.l[i][n] * inverse[n][k];
      inverse[i][k] = s / g.l[i][i];
    }
  }
  bool bControlled = true, bTested = true;
  for (int i = 0; i < m; ++i) {
    double v = 0.0, r = 0.0, pv = 0.0, pqp = 0.0;
    for (int k = 0; k < m; ++k) {
      v += g.l[i][k] * g.e[k];
      pv += inverse[k][i] * g.e[k];
      for (int n = 0; n < m; ++n) {
        r += g.l[i][k] * q[m * k + n] * inverse[n][i];
        pqp += inverse[k][i] * q[m * k + n] * inverse[n][i];
      }
    }
    pTest->adV[i] = v;
    const bool bDecided = r > kNoRedundancy;
    bTested = bTested && bDecided;
    if (observation.bUsed) {
      pTest->adR[i] = bDecided ? r : 0.0;
      pTest->adNabla[i] =
          bDecided ? limits.LeastError() / std::sqrt(pqp) : std::numeric_limits<double>::infinity();
      bControlled = bControlled && r >= dLeastRedundancy;
    }
    pTest->adW[i] = bDecided ? pv / std::sqrt(pqp) : 0.0;
  }
  pTest->bControlled = observation.bUsed && bControlled;
  double qInverse[9];
  if (!bTested || !(dSigma0 > 0.0) || !InvertSpd(m, q, qInverse)) return true;
  double t = 0.0;
  for (int i = 0; i < m; ++i) {
    for (int k = 0; k < m; ++k) t += g.e[i] * qInverse[m * i + k] * g.e[k];
  }
  pTest->dTest = t / (dSigma0 * dSigma0 * m);
  pTest->dLimit = observation.bUsed ? limits.Used(m) : limits.SetAside(m);
  return true;
}

}  // namespace zu::internal
