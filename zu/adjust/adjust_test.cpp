#include "zu/adjust/adjust_test.h"

#include <algorithm>
#include <boost/math/distributions/beta.hpp>
#include <boost/math/distributions/chi_squared.hpp>
#include <boost/math/distributions/non_central_chi_squared.hpp>
#include <boost/math/distributions/normal.hpp>
#include <boost/math/special_functions/beta.hpp>
#include <cmath>
#include <limits>

namespace {

namespace bm = boost::math;

constexpr double kNever = std::numeric_limits<double>::infinity();

// Distributions answer extreme arguments with infinity, not by an exception; in double, whose
// digits are many more than a limit needs.
using Quiet = bm::policies::policy<bm::policies::domain_error<bm::policies::ignore_error>,
                                   bm::policies::overflow_error<bm::policies::ignore_error>,
                                   bm::policies::evaluation_error<bm::policies::ignore_error>,
                                   bm::policies::promote_double<false>>;

// Within what the distributions take: above 0, below 1.
double Chance(double d) { return std::clamp(d, 1e-300, 1.0 - 1e-15); }

double NormalQuantileAbove(double dAlpha) {
  return bm::quantile(bm::complement(bm::normal_distribution<double, Quiet>(), dAlpha));
}

}  // namespace

const char* ZuSigmaKindText(ZuSigmaKind kind) {
  switch (kind) {
    case ZuSigmaKind::Automatic:
      return "automatic";
    case ZuSigmaKind::APriori:
      return "a priori";
    case ZuSigmaKind::APosteriori:
      return "a posteriori";
  }
  return "unknown";
}

double ZuTestAlpha(const ZuTestOptions& options, int iTests) {
  if (!(options.dAlphaTotal > 0.0)) return Chance(options.dAlpha);
  return Chance(-std::expm1(std::log1p(-Chance(options.dAlphaTotal)) / std::max(iTests, 1)));
}

double ZuNormalLimit(double dAlpha) { return NormalQuantileAbove(Chance(dAlpha) / 2.0); }

double ZuTauLimit(double dAlpha, int iRedundancy) {
  return std::sqrt(ZuGroupLimit(dAlpha, 1, iRedundancy));
}

double ZuGroupLimit(double dAlpha, int iObservations) {
  if (iObservations < 1) return kNever;
  const bm::chi_squared_distribution<double, Quiet> chi2(iObservations);
  return bm::quantile(bm::complement(chi2, Chance(dAlpha))) / iObservations;
}

// m T / r is the share of the group in v'Pv, which follows a beta distribution of m / 2, (r - m) /
// 2.
double ZuGroupLimit(double dAlpha, int iObservations, int iRedundancy) {
  if (iObservations < 1 || iRedundancy <= iObservations) return kNever;
  const bm::beta_distribution<double, Quiet> share(0.5 * iObservations,
                                                   0.5 * (iRedundancy - iObservations));
  return bm::quantile(bm::complement(share, Chance(dAlpha))) * iRedundancy / iObservations;
}

double ZuNewGroupLimit(double dAlpha, int iObservations, int iRedundancy) {
  if (iObservations < 1 || iRedundancy < 1) return kNever;
  // m F / (m F + r) follows a beta distribution; its distance from 1 keeps its digits.
  double dRest = 0.0;
  const double dShare =
      bm::ibetac_inv(0.5 * iObservations, 0.5 * iRedundancy, Chance(dAlpha), &dRest, Quiet());
  return dShare * iRedundancy / (dRest * iObservations);
}

void ZuSigmaBounds(double dAlpha, int iRedundancy, double* pdLow, double* pdHigh) {
  *pdLow = 0.0;
  *pdHigh = kNever;
  if (iRedundancy < 1) return;
  const bm::chi_squared_distribution<double, Quiet> chi2(iRedundancy);
  *pdLow = bm::quantile(chi2, Chance(dAlpha) / 2.0) / iRedundancy;
  *pdHigh = bm::quantile(bm::complement(chi2, Chance(dAlpha) / 2.0)) / iRedundancy;
}

double ZuLeastError(double dAlpha, double dPower, int iObservations) {
  // The error on the other side is found with a chance below alpha / 2, which is left out for one
  // observation as everywhere in the literature.
  if (iObservations <= 1) return ZuNormalLimit(dAlpha) + NormalQuantileAbove(1.0 - Chance(dPower));
  const double dLimit = ZuGroupLimit(dAlpha, iObservations) * iObservations;
  using Distribution = bm::non_central_chi_squared_distribution<double, Quiet>;
  return std::sqrt(Distribution::find_non_centrality(iObservations, dLimit, 1.0 - Chance(dPower)));
}

double ZuConfidenceRadius(double dProbability, int iDimensions) {
  const bm::chi_squared_distribution<double, Quiet> chi2(std::max(iDimensions, 1));
  return std::sqrt(bm::quantile(chi2, Chance(dProbability)));
}
