// Planes through points: against a singular value decomposition, in any position, with errors in
// the points, and with standard deviations that hold.
#include <gtest/gtest.h>

#include <Eigen/Dense>
#include <cmath>

#include "tests/adjust/fit_support.h"
#include "tests/support/trials.h"
#include "zu/adjust/cloud_moments.h"

namespace {

using Vector = Eigen::Vector3d;
using Long = Eigen::Matrix<long double, Eigen::Dynamic, Eigen::Dynamic>;

// Mean and normal by a singular value decomposition in extended precision.
void PlaneBySvd(const std::vector<ZuFitPoint>& points, Vector* pMean, Vector* pNormal) {
  Long x(static_cast<Eigen::Index>(points.size()), 3);
  for (Eigen::Index i = 0; i < x.rows(); ++i) {
    for (int a = 0; a < 3; ++a) x(i, a) = points[static_cast<size_t>(i)].adX[a];
  }
  const Eigen::Matrix<long double, 1, Eigen::Dynamic> mean = x.colwise().mean();
  x.rowwise() -= mean;
  const Eigen::JacobiSVD<Long> svd(x, Eigen::ComputeThinV);
  *pMean = mean.transpose().cast<double>();
  *pNormal = svd.matrixV().col(2).cast<double>();
}

}  // namespace

TEST(FitPlane, EqualsTheSingularValueDecomposition) {
  FitPoints random(1);
  for (int k = 0; k < Runs(1000); ++k) {
    const double dExtent = std::pow(10.0, random.Uniform(-3.0, 3.0));
    const double dOffset = k % 2 == 0 ? 0.0 : 1e7 * std::min(1.0, dExtent);
    const int n = 4 + k % 60;
    const auto points = random.Wall(n, dExtent, 0.3 * dExtent, 0.002 * dExtent, dOffset);
    ZuFitOptions options;
    options.tests.bSnoop = false;
    const ZuPlaneFit fit = ZuFitPlane(points, options);
    ASSERT_EQ(fit.fit.eStatus, ZuAdjustStatus::Good) << k;
    Vector mean, normal;
    PlaneBySvd(points, &mean, &normal);
    const Vector n1(fit.plane.A(), fit.plane.B(), fit.plane.C());
    if (normal.dot(n1) < 0.0) normal = -normal;
    ASSERT_LT((normal - n1).norm(), 1e-12) << k << " of " << n;
    double dSum = 0.0;  // the plane holds the centre of the points
    for (const auto& p : fit.fit.points) dSum += p.dDistance;
    ASSERT_LT(std::fabs(dSum) / n, 1e-12 * dExtent) << k;
    // And as a cloud, in two parts.
    std::vector<ZuScanPoint3d> parts[2];
    for (const auto& p : points) {
      parts[parts[0].size() < 3 ? 0 : 1].emplace_back(p.adX[0], p.adX[1], p.adX[2], 0);
    }
    const ZuCloudPlane cloud = ZuFitCloudPlane({&parts[0], &parts[1]});
    ASSERT_EQ(cloud.eStatus, ZuAdjustStatus::Good) << k;
    Vector n2(cloud.plane.A(), cloud.plane.B(), cloud.plane.C());
    if (n2.dot(n1) < 0.0) n2 = -n2;
    ASSERT_LT((n2 - n1).norm(), 1e-12) << k;
    ASSERT_NEAR(cloud.dRms / fit.fit.dRms, 1.0, 1e-6) << k;
    // To first order in the noise over the extent.
    ASSERT_NEAR(std::sqrt(cloud.adCov[15]) / fit.adSd[3], 1.0, 0.05) << k;
    ASSERT_NEAR(cloud.dHigh - cloud.dLow, fit.fit.dFlatness, 1e-6 * fit.fit.dFlatness) << k;
  }
}

// Whatever the order and the parts, and however far from the origin: the same bits, and the digits
// of a wall of a kilometre that is flat to a micrometre.
TEST(CloudMoments, AreTheSameInAnyOrderAndParts) {
  FitPoints random(11);
  for (int k = 0; k < 40; ++k) {
    const auto wall = random.Wall(200 + k, 1000.0, 300.0, 1e-6, k % 2 == 0 ? 0.0 : 5.4e6);
    std::vector<ZuScanPoint3d> points;
    for (const auto& p : wall) points.emplace_back(p.adX[0], p.adX[1], p.adX[2], 0);
    const ZuCloudPlane all = ZuFitCloudPlane({&points});
    ASSERT_EQ(all.eStatus, ZuAdjustStatus::Good);
    long double dSquares = 0.0L;
    for (const ZuScanPoint3d& p : points) {
      const long double d = (static_cast<long double>(p.x) - all.adCentre[0]) * all.plane.A() +
                            (static_cast<long double>(p.y) - all.adCentre[1]) * all.plane.B() +
                            (static_cast<long double>(p.z) - all.adCentre[2]) * all.plane.C();
      dSquares += d * d;
    }
    ASSERT_NEAR(all.dRms / std::sqrt(static_cast<double>(dSquares) / all.uPoints), 1.0, 1e-12);

    std::vector<ZuScanPoint3d> turned(points.rbegin(), points.rend());
    std::vector<ZuCloudMoments> parts(1 + static_cast<size_t>(k % 7));
    for (size_t u = 0; u < turned.size(); ++u) parts[u * u % parts.size()].Add(&turned[u], 1);
    ZuCloudMoments joined;
    for (const ZuCloudMoments& part : parts) {
      ZuCloudMoments arrived;
      ASSERT_TRUE(arrived.Load(part.Save()));
      joined.Add(arrived);
    }
    const ZuCloudPlane plane = joined.Plane();
    ASSERT_EQ(plane.uPoints, points.size());
    ASSERT_EQ(plane.plane.D(), all.plane.D());
    ASSERT_EQ(plane.dRms, all.dRms);
    for (int i = 0; i < 3; ++i) ASSERT_EQ(plane.adCentre[i], all.adCentre[i]);
    for (int i = 0; i < 16; ++i) ASSERT_EQ(plane.adCov[i], all.adCov[i]);
  }
}

TEST(CloudMoments, LoseNothingBetweenLargeAndSmall) {
  const double aadRows[][3] = {{1e140, 5e-324, 1.0},    {3.0, 5e-324, 0x1p-53},
                               {-1e140, 0.0, 0x1p-105}, {1e-9, -5e-324, -1.0},
                               {-0.0, 0.0, -0.0},       {0.0, 0.0, 0.0}};
  ZuCloudMoments moments;
  moments.AddRows(aadRows[0], 6);
  double adCentre[3] = {};
  ASSERT_TRUE(moments.Centre(adCentre));
  EXPECT_EQ(adCentre[0], (3.0 + 1e-9) / 6.0);
  EXPECT_EQ(6.0 * adCentre[2], 0x1p-53 + 0x1p-105);
  double adLow[3], adHigh[3];
  ASSERT_TRUE(moments.Box(adLow, adHigh));
  EXPECT_EQ(adLow[0], -1e140);
  EXPECT_EQ(adHigh[2], 1.0);
  // Halves go to the even one, and a bit far behind decides.
  const double aadTies[][3] = {
      {1.0, 1.0, -1.0}, {0x1p-53, 0x1p-53, -0x1p-53}, {0.0, 0x1p-300, 0.0}, {0, 0, 0}};
  ZuCloudMoments ties;
  ties.AddRows(aadTies[0], 4);
  ASSERT_TRUE(ties.Centre(adCentre));
  EXPECT_EQ(4.0 * adCentre[0], 1.0);
  EXPECT_EQ(4.0 * adCentre[1], 1.0 + 0x1p-52);
  EXPECT_EQ(4.0 * adCentre[2], -1.0);

  std::string bytes = moments.Save();
  for (const size_t uSize : {size_t{0}, bytes.size() - 1, bytes.size() + 8}) {
    EXPECT_FALSE(moments.Load(std::string(uSize, '\0')));
  }
  bytes[61] = '\x7f';  // a chunk above 32 bits
  EXPECT_FALSE(moments.Load(bytes));
  EXPECT_EQ(moments.Count(), 6u);
  const double adBad[] = {1.0, NAN, 2.0};
  ties.AddRows(adBad, 1);
  EXPECT_EQ(ties.Plane().eStatus, ZuAdjustStatus::NotFinite);
}

// A wall scanned at a distance of 1 mm, neighbours first, as a scanner gives it.
TEST(FitPlane, HoldsItsStandardDeviationsOnScannedWalls) {
  FitPoints random(2);
  int iWithin = 0;
  for (int k = 0; k < Runs(300); ++k) {
    const double dNoise = random.Uniform(0.0005, 0.004);
    Eigen::Matrix3d turn = random.Rotation();
    std::vector<ZuFitPoint> points;
    for (int i = 0; i < 600; ++i) {
      const Vector x(0.001 * (i % 30), 0.001 * (i / 30), dNoise * random.Normal());
      points.push_back(FitPoints::Point(static_cast<unsigned>(i + 1), turn * x));
    }
    const ZuPlaneFit fit = ZuFitPlane(points);
    ASSERT_EQ(fit.fit.eStatus, ZuAdjustStatus::Good) << k;
    const Vector normal = turn.col(2), n(fit.plane.A(), fit.plane.B(), fit.plane.C());
    const Vector d = n * (normal.dot(n) < 0.0 ? -1.0 : 1.0) - normal;
    // The error against the covariance, in the two directions that there are.
    const Eigen::Map<const Eigen::Matrix4d> cov(fit.adCov);
    const Eigen::Matrix3d nn = cov.topLeftCorner<3, 3>();
    bool bWithin = true;
    for (const Vector& e : {Vector(turn.col(0)), Vector(turn.col(1))}) {
      bWithin &= std::fabs(e.dot(d)) < 3.0 * std::sqrt(e.dot(nn * e));
    }
    iWithin += bWithin;
    EXPECT_NEAR(fit.fit.dSigma0, dNoise, 0.15 * dNoise);
  }
  EXPECT_GE(iWithin, 0.99 * Runs(300));
}

TEST(FitPlane, TurnsWithThePointsAndTakesThemInAnyOrder) {
  FitPoints random(3);
  auto points = random.Wall(40, 10.0, 3.0, 0.01, 0.0);
  points[7].adX[2] += 2.0;
  const ZuPlaneFit fit = ZuFitPlane(points);
  std::vector<ZuFitPoint> reversed(points.rbegin(), points.rend());
  const ZuPlaneFit again = ZuFitPlane(reversed);
  EXPECT_EQ(fit.plane.A(), again.plane.A());
  EXPECT_EQ(fit.fit.dSigma0, again.fit.dSigma0);
  for (int k = 0; k < 50; ++k) {
    const Eigen::Matrix3d turn = random.Rotation();
    auto turned = points;
    for (auto& p : turned) {
      Eigen::Map<Vector> x(p.adX);
      x = (turn * x).eval();
    }
    const ZuPlaneFit other = ZuFitPlane(turned);
    ASSERT_EQ(other.fit.eStatus, ZuAdjustStatus::Good);
    EXPECT_NEAR(other.fit.dSigma0, fit.fit.dSigma0, 1e-13);
    for (size_t i = 0; i < points.size(); ++i) {
      EXPECT_EQ(other.fit.points[i].bUsed, fit.fit.points[i].bUsed);
      EXPECT_NEAR(std::fabs(other.fit.points[i].dDistance), std::fabs(fit.fit.points[i].dDistance),
                  1e-12);
    }
  }
}

// Neither the first three points, a millimetre apart, nor up to a third of gross errors decide.
TEST(FitPlane, IsNotDecidedByFewPoints) {
  FitPoints random(4);
  for (int k = 0; k < 100; ++k) {
    auto points = random.Wall(12 + k, 10.0, 6.0, 0.001, 0.0);
    points.push_back(points[0]);
    const int iErrors = static_cast<int>(points.size()) / 3;
    for (int i = 0; i < iErrors; ++i) {
      points[static_cast<size_t>(3 * i)].adX[k % 3] += random.Uniform(1.0, 5.0);
    }
    const ZuPlaneFit fit = ZuFitPlane(points);
    ASSERT_EQ(fit.fit.eStatus, ZuAdjustStatus::Good) << k;
    EXPECT_LT(fit.fit.dSigma0, 0.003) << k;
  }
}

TEST(FitPlane, TellsWhatIsFree) {
  const double dNan = std::nan("");
  const struct {
    std::vector<Vector> points;
    ZuAdjustStatus eStatus;
    const char* szFree;
  } cases[] = {
      {{{0, 0, 0}, {1, 0, 0}}, ZuAdjustStatus::TooFew, ""},
      {{{1, 2, 3}, {1, 2, 3}, {1, 2, 3}}, ZuAdjustStatus::RankDefect, "one place"},
      {{{0, 0, 0}, {1, 1, 1}, {2, 2, 2}, {5, 5, 5}},
       ZuAdjustStatus::RankDefect,
       "about the line through points 1, 3 and 4"},
      {{{0, 0, 0}, {1, 1e-9, 0}, {2, 0, 0}}, ZuAdjustStatus::RankDefect, "1, 2 and 3"},
      {{{0, 0, 0}, {1, 1e-3, 0}, {2, 0, 0}}, ZuAdjustStatus::Good, ""},
      {{{0, 0, 0}, {1, dNan, 0}, {2, 0, 5}}, ZuAdjustStatus::NotFinite, ""},
      {{{0, 0, 0}, {1e300, 0, 0}, {0, 1e300, 0}, {1e300, 1e300, 1e290}},
       ZuAdjustStatus::NotFinite,
       ""},
      // Noise of the size of the width: the tilt about the long axis means nothing.
      {{{0, 0, .1}, {1, 0, -.1}, {2, .1, 0}, {3, -.1, .05}, {50, 0, 0}},
       ZuAdjustStatus::RankDefect,
       "about the line"},
  };
  for (const auto& c : cases) {
    std::vector<ZuFitPoint> points;
    for (const Vector& x : c.points) {
      points.push_back(FitPoints::Point(static_cast<unsigned>(points.size() + 1), x));
    }
    const ZuFitResult fit = ZuFitPlane(points).fit;
    EXPECT_EQ(fit.eStatus, c.eStatus) << fit.strFree << &c - cases;
    EXPECT_NE(fit.strFree.find(c.szFree), std::string::npos) << fit.strFree;
  }
}
