// Statistical tests of an adjustment: what the user chooses, and the limits and sizes that follow.
//
// A test statistic beyond its limit says that an error stands behind it, unless the chance of alpha
// came true. sigma0 is known a priori (the standard deviations of the observations are to be
// believed) or estimated a posteriori from the residuals of the same adjustment; the limits differ.
//
// Sources: W. Baarda, "A testing procedure for use in geodetic networks", 1968 (w, reliability);
// A. J. Pope, "The statistics of residuals and the detection of outliers", 1976 (tau).
#pragma once

#include "zu/adjust/export.h"

// Whose sigma0 scales standard deviations and tests.
enum class ZuSigmaKind {
  Automatic,   // APriori where the standard deviations were given by the user, else APosteriori
  APriori,     // 1: the standard deviations of the observations as they are
  APosteriori  // estimated from the residuals; without redundancy APriori takes its place
};

// "a priori", "a posteriori"; static text. Automatic is "automatic".
ZU_ADJUST_API const char* ZuSigmaKindText(ZuSigmaKind kind);

struct ZuTestOptions {
  ZuSigmaKind sigmaKind = ZuSigmaKind::Automatic;
  bool bSnoop = false;       // set aside what does not fit
  double dAlpha = 0.001;     // chance of a false alarm of one test [-]
  double dAlphaTotal = 0.0;  // chance of one in all tests together; above 0 it replaces dAlpha
  double dPower = 0.8;       // chance of finding an error of the size called smallest [-]
  double dLeastRedundancy = 0.01;  // an observation with less is not controlled [-]
};

// The alpha of each of iTests tests: dAlpha, or for an alpha of all 1 - (1 - dAlphaTotal)^(1/n)
// (Z. Sidak, "Rectangular confidence regions for the means of multivariate normal distributions",
// 1967).
ZU_ADJUST_API double ZuTestAlpha(const ZuTestOptions& options, int iTests);

// Limit of |w|, two-sided: 3.29 for 0.001.
ZU_ADJUST_API double ZuNormalLimit(double dAlpha);

// Limit of |tau|, the residual over its standard deviation with the sigma0 of the same adjustment
// of redundancy r. Infinite for r < 2: every such residual is as long as the others tell.
ZU_ADJUST_API double ZuTauLimit(double dAlpha, int iRedundancy);

// Limits of T = v' Qvv^-1 v / (sigma0^2 m), of m observations at once, sigma0 a priori, and a
// posteriori of an adjustment of redundancy r that holds the group; then infinite for r <= m. For m
// = 1 they are the squares of the two above.
ZU_ADJUST_API double ZuGroupLimit(double dAlpha, int iObservations);
ZU_ADJUST_API double ZuGroupLimit(double dAlpha, int iObservations, int iRedundancy);

// Limit of T of m observations that took no part in an adjustment of redundancy r, against its
// sigma0 a posteriori: the quantile of F(m, r). Infinite for r < 1.
ZU_ADJUST_API double ZuNewGroupLimit(double dAlpha, int iObservations, int iRedundancy);

// Bounds between which sigma0^2 a posteriori over sigma0^2 a priori lies but for a chance of
// dAlpha, half of it on each side. 0 and infinity for r < 1.
ZU_ADJUST_API void ZuSigmaBounds(double dAlpha, int iRedundancy, double* pdLow, double* pdHigh);

// delta0: the size of an error, in standard deviations of its test statistic, that a test of m
// observations at dAlpha finds with dPower. 4.13 for one observation, 0.001 and 0.8.
ZU_ADJUST_API double ZuLeastError(double dAlpha, double dPower, int iObservations = 1);

// Radius, in standard deviations, of the ellipse (2) or ellipsoid (3 dimensions) that holds a
// normally distributed point with that probability: 2.45 for 0.95 in the plane.
ZU_ADJUST_API double ZuConfidenceRadius(double dProbability, int iDimensions);
