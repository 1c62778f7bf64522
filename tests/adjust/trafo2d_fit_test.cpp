// Plane transformations with the accuracies of both lists: against the core's closed forms, with
// standard deviations that hold, far from the origin, and told what is free.
#include "zu/adjust/trafo2d_fit.h"

#include <gtest/gtest.h>

#include <cmath>

#include "tests/adjust/fit_support.h"
#include "tests/support/trials.h"
#include "zu/transform/calc_trafo2d.h"

namespace {

using Kind = ZuTrafo2dKind;
constexpr Kind kKinds[] = {Kind::Congruence, Kind::Helmert, Kind::Affine, Kind::Projective,
                           Kind::Polynomial};

// What all kinds are made of: a turn of 0.5, and a scale of 2 but for the congruence.
void True(Kind kind, double x, double y, double* X, double* Y) {
  const double s = kind == Kind::Congruence ? 1.0 : 2.0;
  *X = s * (std::cos(0.5) * x - std::sin(0.5) * y);
  *Y = s * (std::sin(0.5) * x + std::cos(0.5) * y);
}

struct Set {
  double dLength = 10.0, dWidth = 10.0, dOffset = 0.0;
  int n = 14;
  bool bWeights = false;  // standard deviations of 1 to 100
  bool bSource = false;   // errors on the source, too
};

std::vector<ZuTrafo2dPair> Make(Kind kind, const Set& set, FitPoints& places, FitPoints& noise) {
  std::vector<ZuTrafo2dPair> pairs;
  for (int i = 0; i < set.n; ++i) {
    ZuTrafo2dPair p;
    p.uId = static_cast<unsigned>(i + 1);
    const double x = places.Uniform(-0.5, 0.5) * set.dLength;
    const double y = places.Uniform(-0.5, 0.5) * set.dWidth;
    const double dSigma = 1e-3 * (set.bWeights ? std::pow(100.0, i / (set.n - 1.0)) : 1.0);
    double X, Y;
    True(kind, x, y, &X, &Y);
    p.adSource[0] = x + set.dOffset + (set.bSource ? dSigma * noise.Normal() : 0.0);
    p.adSource[1] = y + set.dOffset + (set.bSource ? dSigma * noise.Normal() : 0.0);
    p.adTarget[0] = X + set.dOffset + dSigma * noise.Normal();
    p.adTarget[1] = Y + set.dOffset + dSigma * noise.Normal();
    p.adTargetCov[0] = p.adTargetCov[3] = dSigma * dSigma;
    if (set.bSource) p.adSourceCov[0] = p.adSourceCov[3] = dSigma * dSigma;
    pairs.push_back(p);
  }
  return pairs;
}

}  // namespace

TEST(Trafo2dFit, EqualsTheClosedFormsOfTheCore) {
  const struct {
    Kind kind;
    bool (ZuCalcTrafo2D::*pfnCalc)(ZuPointList*);
  } kinds[] = {{Kind::Helmert, &ZuCalcTrafo2D::CalcTrafoHelmert},
               {Kind::Affine, &ZuCalcTrafo2D::CalcTrafoAffin},
               {Kind::Polynomial, &ZuCalcTrafo2D::CalcTrafoPolynom}};
  FitPoints random(21);
  for (const auto& k : kinds) {
    auto pairs = Make(k.kind, {.dOffset = 3.0}, random, random);
    ZuPointList source, target;
    for (auto& p : pairs) {
      source.Add(ZuPoint(p.uId, p.adSource[0], p.adSource[1], 0.0, 0));
      target.Add(ZuPoint(p.uId, p.adTarget[0], p.adTarget[1], 0.0, 0));
    }
    ZuCalcTrafo2D core(&target);
    ASSERT_TRUE((core.*k.pfnCalc)(&source));
    const ZuTrafo2dFit fit = ZuFitTrafo2d(k.kind, pairs);
    ASSERT_EQ(fit.eStatus, ZuAdjustStatus::Good);
    const ZuTrafo2d uncentred = fit.Uncentred();
    for (const auto& p : pairs) {
      double x = p.adSource[0], y = p.adSource[1], u = x, v = y, a = x, b = y;
      core.Transform(&x, &y);
      fit.Transform(&u, &v);
      uncentred.Transform(&a, &b);
      EXPECT_NEAR(std::hypot(x - u, y - v), 0.0, 1e-8);
      EXPECT_NEAR(std::hypot(a - u, b - v), 0.0, 1e-9);
    }
  }
}

// Predicted and empirical covariance of the carried point, sum of the redundancy numbers, false
// alarms, and the share of points within their 95 % ellipse. ZU_LONG_TRIALS runs 10,000 of each.
TEST(Trafo2dFit, HoldsItsStandardDeviations) {
  const int iRuns = AreLongTrials() ? 10000 : Runs(400);
  const Set sets[] = {{},
                      {.dLength = 100.0, .dWidth = 1.0},
                      {.n = 3},
                      {.dOffset = 4.5e6},
                      {.bWeights = true},
                      {.bSource = true}};
  FitPoints noise(22);
  for (const Kind kind : kKinds) {
    for (const Set& set : sets) {
      const int iFewest = kind == Kind::Projective ? 5 : kind == Kind::Polynomial ? 14 : 3;
      if (set.n < iFewest || (kind == Kind::Polynomial && set.dWidth < 10.0)) continue;
      double dSquares = 0.0, dScale = 0.0;
      int iWithin = 0, iAlarms = 0, iTests = 0;
      for (int k = 0; k < iRuns; ++k) {
        FitPoints places(23);
        const auto pairs = Make(kind, set, places, noise);
        ZuTrafo2dOptions options;
        options.tests.dAlpha = 0.05;
        options.tests.sigmaKind = ZuSigmaKind::APriori;
        const ZuTrafo2dFit fit = ZuFitTrafo2d(kind, pairs, options);
        ASSERT_EQ(fit.eStatus, ZuAdjustStatus::Good) << int(kind) << ' ' << &set - sets;
        double x = 0.3 * set.dLength, y = -0.2 * set.dWidth, X, Y, cov[4] = {}, dSum = 0.0;
        True(kind, x, y, &X, &Y);
        x += set.dOffset;
        y += set.dOffset;
        fit.Transform(&x, &y, cov);
        const double dx = x - X - set.dOffset, dy = y - Y - set.dOffset;
        const double dDet = cov[0] * cov[3] - cov[1] * cov[2];
        const double d = (cov[3] * dx * dx - 2 * cov[1] * dx * dy + cov[0] * dy * dy) / dDet;
        dSquares += d;
        iWithin += d < 5.991;
        dScale = fit.dSigma0;
        for (const auto& p : fit.points) {
          dSum += p.Redundancy();
          iAlarms += p.IsRejected();
          iTests += std::isfinite(p.dLimit);
        }
        ASSERT_NEAR(dSum, fit.iRedundancy, 1e-8);
      }
      const double dRuns = iRuns;
      const std::string strSet = std::to_string(int(kind)) + " " + std::to_string(&set - sets);
      EXPECT_NEAR(dSquares / dRuns / 2.0, 1.0, 4.5 / std::sqrt(dRuns)) << strSet;
      EXPECT_NEAR(iWithin / dRuns, 0.95, 4.5 * std::sqrt(0.0475 / dRuns)) << strSet;
      const double dTests = std::max(iTests, 1);
      EXPECT_NEAR(iAlarms / dTests, iTests > 0 ? 0.05 : 0.0, 4.5 * std::sqrt(0.0475 * 3.0 / dTests))
          << strSet;
      EXPECT_GT(dScale, 0.0);
    }
  }
}

// An error of the size called smallest is found in 80 of 100 runs.
TEST(Trafo2dFit, FindsErrorsOfTheSmallestSize) {
  const int iRuns = AreLongTrials() ? 10000 : Runs(200);
  FitPoints noise(28);
  for (const Kind kind : kKinds) {
    int iFound = 0;
    for (int k = 0; k < iRuns; ++k) {
      FitPoints places(29);
      auto pairs = Make(kind, {}, places, noise);
      const double dNabla = ZuFitTrafo2d(kind, pairs).points[3].adNabla[0];
      pairs[3].adTarget[0] += std::isfinite(dNabla) ? dNabla : 0.0;
      const ZuTrafo2dFit fit = ZuFitTrafo2d(kind, pairs);
      iFound += std::fabs(fit.points[3].adW[0]) > ZuNormalLimit(0.001);
    }
    EXPECT_NEAR(iFound / (1.0 * iRuns), 0.8, AreLongTrials() ? 0.02 : 1.8 / std::sqrt(iRuns))
        << int(kind);
  }
}

TEST(Trafo2dFit, SetsErrorsAsideAndStaysRigid) {
  FitPoints random(24);
  for (const Kind kind : kKinds) {
    auto pairs = Make(kind, {.n = 25}, random, random);
    pairs[4].adTarget[0] += 0.1;
    pairs[9].adTarget[1] -= 0.2;
    ZuTrafo2dOptions options;
    options.tests.bSnoop = true;
    const ZuTrafo2dFit fit = ZuFitTrafo2d(kind, pairs, options);
    ASSERT_EQ(fit.eStatus, ZuAdjustStatus::Good);
    EXPECT_EQ(fit.iSetAside, 2) << int(kind);
    EXPECT_FALSE(fit.points[4].bUsed || fit.points[9].bUsed) << int(kind);
    EXPECT_NEAR(fit.points[9].adResidual[1], 0.2, 0.02) << int(kind);
    if (kind != Kind::Congruence) continue;
    EXPECT_NEAR(std::hypot(fit.coefficients[1], fit.coefficients[3]), 1.0, 1e-15);
  }
}

TEST(Trafo2dFit, TellsWhatIsFreeAndIsNeverGoodWithoutNumbers) {
  FitPoints random(25);
  for (const Kind kind : kKinds) {
    std::vector<ZuTrafo2dPair> one(20), line(20), few(1);
    for (int i = 0; i < 20; ++i) {
      line[static_cast<size_t>(i)].adSource[0] = line[static_cast<size_t>(i)].adTarget[0] = i;
    }
    const bool bLine = kind == Kind::Congruence || kind == Kind::Helmert;
    EXPECT_EQ(ZuFitTrafo2d(kind, one).eStatus, ZuAdjustStatus::RankDefect);
    EXPECT_FALSE(ZuFitTrafo2d(kind, one).strFree.empty());
    EXPECT_EQ(ZuFitTrafo2d(kind, line).eStatus == ZuAdjustStatus::Good, bLine) << int(kind);
    EXPECT_EQ(ZuFitTrafo2d(kind, few).eStatus, ZuAdjustStatus::TooFew);
  }
  for (int k = 0; k < (AreLongTrials() ? 100000 : Runs(20000)); ++k) {
    std::vector<ZuTrafo2dPair> pairs(static_cast<size_t>(1 + k % 12));
    const double dPower = random.Uniform(0.0, 300.0);
    for (auto& p : pairs) {
      for (double* pd : {p.adSource, p.adSource + 1, p.adTarget, p.adTarget + 1}) {
        *pd = random.Normal() * std::pow(10.0, random.Uniform(-dPower, dPower));
        if (random.Uniform(0.0, 1.0) < 0.002) *pd = std::nan("");
      }
      if (k % 3 == 0) p.adTargetCov[0] = p.adTargetCov[3] = std::pow(10.0, -dPower);
      if (k % 4 == 0) p = pairs[0];
    }
    const ZuTrafo2dFit fit = ZuFitTrafo2d(kKinds[k % 5], pairs);
    if (fit.eStatus != ZuAdjustStatus::Good) continue;
    for (const double d : fit.coefficients) ASSERT_TRUE(std::isfinite(d)) << k;
    for (const double d : fit.covariance) ASSERT_TRUE(std::isfinite(d)) << k;
  }
}
