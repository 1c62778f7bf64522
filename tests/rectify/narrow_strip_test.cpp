// Fits that lose digits, or have none: strips far from the origin, coordinates that are no numbers.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "tests/support/random_geometry.h"
#include "zu/rectify/calc_plane.h"

// A ramp on a wall in national coordinates, 100 m long: the fit misses its points by their noise,
// however narrow the ramp is.
TEST(NarrowStrip, ResidualsAreThoseOfTheNoise) {
  RandomGeometry random(81);
  constexpr double kNoise = 0.4e-3;
  for (const double dWidth : {10.0, 1.0, 0.1, 0.03}) {
    for (int iRound = 0; iRound < 20; ++iRound) {
      SCOPED_TRACE(::testing::Message() << dWidth << " m wide, round " << iRound);
      ZuPointList points;
      for (unsigned int uId = 1; uId <= 40; ++uId) {
        const double s = random.Value(50.0), w = random.Value(dWidth / 2.0);
        const double y = (s - w) * std::sqrt(0.5), z = (s + w) * std::sqrt(0.5);
        const double x = 0.3 * y + random.Value(kNoise);
        points.Add(ZuPoint(uId, 4.5e6 + x, 5.4e6 + y, 300.0 + z));
      }
      ZuCalcPlane calc;
      ASSERT_TRUE(calc.CalcPlaneFromFilteredPoints(&points, true, false));
      EXPECT_LT(calc.GetZuPlaneMediumPointDist() / std::sqrt(40.0), kNoise);
    }
  }
}

TEST(NarrowStrip, OneCoordinateThatIsNoNumberIsRefused) {
  for (const double dBad : {std::numeric_limits<double>::quiet_NaN(), HUGE_VAL}) {
    for (unsigned int uBad = 1; uBad <= 5; ++uBad) {
      for (const bool bForce : {false, true}) {
        SCOPED_TRACE(::testing::Message() << dBad << " in point " << uBad << ", force " << bForce);
        ZuPointList points;
        for (unsigned int uId = 1; uId <= 5; ++uId) {
          points.Add(ZuPoint(uId, uId, uId * uId, uId == uBad ? dBad : 1.0));
        }
        ZuCalcPlane calc;
        calc.CalcParallelPlane(ZuCalcPlane::eParallelXZ);
        EXPECT_FALSE(calc.CalcPlaneFromFilteredPoints(&points, true, bForce));
        EXPECT_EQ(calc.GetZuPlaneStatus(), ZuCalcPlane::BadPointDistrib);
        EXPECT_EQ(std::fabs(calc.GetPlane().B()), 1.0) << "the plane stays";
      }
    }
  }
}
