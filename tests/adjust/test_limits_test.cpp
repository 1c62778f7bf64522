#include "tests/support/test.h"

#include "zu/adjust/adjust_test.h"
#include "zu/adjust/epochs.h"

// Values of printed tables: normal, chi squared, F, Student (tau = t sqrt(r / (r - 1 + t^2)), t of
// r
// - 1 degrees), Baarda's delta0, radii of the ellipse and the ellipsoid of 95 %.
TEST(TestLimits, AreThoseOfTheTables) {
  ZuTestOptions total;
  total.dAlphaTotal = 0.05;
  double dLow = 0.0, dHigh = 0.0;
  ZuSigmaBounds(0.05, 10, &dLow, &dHigh);
  const double t = 2.262157;  // 0.975, 9 degrees
  for (const auto& [szWhat, dValue, dExpected] : Cases<const char*, double, double>{
           {"w", ZuNormalLimit(0.001), 3.2905},
           {"chi2", 3.0 * ZuGroupLimit(0.001, 3), 16.2662},
           {"F", ZuNewGroupLimit(0.001, 3, 20), 8.0984},
           {"tau", ZuTauLimit(0.05, 10), t * std::sqrt(10.0 / (9.0 + t * t))},
           {"tau of two", ZuTauLimit(0.001, 2), std::sqrt(2.0)},
           {"delta0", ZuLeastError(0.001, 0.8), 4.1321},
           {"delta0 of two", ZuLeastError(0.05, 0.8, 2), std::sqrt(9.6347)},
           {"Sidak", ZuTestAlpha(total, 50), 0.0010253},
           {"sigma0 low", dLow * 10.0, 3.24697},
           {"sigma0 high", dHigh * 10.0, 20.4832},
           {"ellipse", ZuConfidenceRadius(0.95, 2), 2.44775},
           {"ellipsoid", ZuConfidenceRadius(0.95, 3), 2.79548},
       }) {
    EXPECT_NEAR(dValue, dExpected, 6e-5 * dExpected) << szWhat;
  }
  for (double d : {ZuTauLimit(0.001, 1), ZuGroupLimit(0.001, 3, 3), ZuNewGroupLimit(0.001, 3, 0)}) {
    EXPECT_EQ(d, std::numeric_limits<double>::infinity());
  }
}

// One alpha for all tests of two epochs is spread over the points they share.
TEST(TestLimits, OfEpochsAreSpreadOverTheCommonPoints) {
  ZuEpochOptions options;
  options.tests.dAlphaTotal = 0.05;
  options.tests.sigmaKind = ZuSigmaKind::APriori;
  options.dSigmaFirst = options.dSigmaSecond = 0.001;
  ZuPointList first, second;
  for (unsigned u = 1; u <= 500; ++u) {
    const ZuPoint point(u, u % 7, u % 5, u % 3);
    if (u <= 12) first.Add(point);
    second.Add(point);
  }
  const ZuEpochResult result = ZuCompareEpochs(first, second, options);
  ASSERT_TRUE(result.IsGood());
  ASSERT_EQ(result.points.size(), 12U);
  EXPECT_NEAR(result.points[0].dLimit, ZuGroupLimit(ZuTestAlpha(options.tests, 12), 3), 1e-9);
}
