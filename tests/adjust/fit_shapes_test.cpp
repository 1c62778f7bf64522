// Lines, spheres and cylinders: found among gross errors, with standard deviations that hold, and
// refused where the points do not decide them. The plane takes part where all are alike.
#include <gtest/gtest.h>

#include <Eigen/Dense>
#include <cmath>

#include "tests/adjust/fit_support.h"
#include "tests/support/trials.h"

namespace {

using Vector = Eigen::Vector3d;

enum Shape { ePlane, eLine, eSphere, eCylinder };

struct Made {
  std::vector<ZuFitPoint> points;
  Eigen::VectorXd truth;  // of what Estimate gives
  Eigen::Matrix3d turn;
};

// Points of a shape of extent 10 at an offset; noise in all coordinates.
Made Make(Shape shape, int n, double dNoise, double dOffset, FitPoints& random) {
  Made made;
  made.turn = random.Rotation();
  const Vector shift = Vector::Constant(dOffset);
  for (int i = 0; i < n; ++i) {
    const double t = random.Uniform(-5.0, 5.0), a = random.Uniform(0.0, 4.0);
    Vector x(t, random.Uniform(-3.0, 3.0), 0.0);
    if (shape == eLine) x << 0.0, 0.0, t;
    if (shape == eSphere) x = 5.0 * random.NormalVector().normalized();
    if (shape == eCylinder) x << 2.0 * std::cos(a), 2.0 * std::sin(a), t;
    made.points.push_back(FitPoints::Point(static_cast<unsigned>(i + 1),
                                           made.turn * x + shift + dNoise * random.NormalVector()));
  }
  return made;
}

// Errors of the fit, told in the frame in which the shape was made, over their standard deviations.
struct Errors {
  ZuFitResult fit;
  std::vector<double> normalized;
};

void Add(const Eigen::VectorXd& j, const Eigen::VectorXd& error, const Eigen::MatrixXd& cov,
         Errors* pErrors) {
  pErrors->normalized.push_back(j.dot(error) / std::sqrt(j.dot(cov * j)));
}

template <int N>
Eigen::Matrix<double, N, N> Cov(const double (&ad)[N * N]) {
  return Eigen::Map<const Eigen::Matrix<double, N, N>>(ad);
}

// Along the axes e of the frame: direction and point of an axis through `through`.
template <class Axis>
void AddAxis(const Axis& direction, const double* pdPoint, const Eigen::MatrixXd& cov,
             const Made& made, const Vector& through, Errors* pErrors) {
  Vector d(direction.x, direction.y, direction.z);
  const double dSense = d.dot(made.turn.col(2)) < 0.0 ? -1.0 : 1.0;
  for (int a = 0; a < 2; ++a) {
    Eigen::VectorXd j = Eigen::VectorXd::Zero(cov.rows()), error = j;
    j.segment<3>(3) = made.turn.col(a);
    error.segment<3>(3) = d - dSense * made.turn.col(2);
    Add(j, error, cov, pErrors);
  }
  for (int a = 0; a < 2; ++a) {
    Eigen::VectorXd j = Eigen::VectorXd::Zero(cov.rows()), error = j;
    j.segment<3>(0) = made.turn.col(a);
    error.segment<3>(0) = Vector(pdPoint[0], pdPoint[1], pdPoint[2]) - through;
    Add(j, error, cov, pErrors);
  }
}

Errors Fit(Shape shape, const Made& made, double dOffset, const ZuFitOptions& options = {}) {
  Errors errors;
  const Vector through = Vector::Constant(dOffset);
  if (shape == ePlane) {
    const ZuPlaneFit fit = ZuFitPlane(made.points, options);
    errors.fit = fit.fit;
    const Vector n(fit.plane.A(), fit.plane.B(), fit.plane.C());
    const double dSense = n.dot(made.turn.col(2)) < 0.0 ? -1.0 : 1.0;
    for (int a = 0; a < 2; ++a) {
      Eigen::VectorXd j = Eigen::VectorXd::Zero(4), error = j;
      j.head<3>() = made.turn.col(a);
      error.head<3>() = n - dSense * made.turn.col(2);
      Add(j, error, Cov<4>(fit.adCov), &errors);
    }
  } else if (shape == eLine) {
    const ZuLineFit fit = ZuFitLine(made.points, options);
    errors.fit = fit.fit;
    AddAxis(fit.line.getDirection(), fit.adPoint, Cov<6>(fit.adCov), made, through, &errors);
  } else if (shape == eSphere) {
    const ZuSphereFit fit = ZuFitSphere(made.points, options);
    errors.fit = fit.fit;
    Eigen::VectorXd error(4);
    error << Eigen::Map<const Vector>(fit.adCentre) - through, fit.dRadius - 5.0;
    for (int a = 0; a < 4; ++a) {
      Add(Eigen::VectorXd::Unit(4, a), error, Cov<4>(fit.adCov), &errors);
    }
  } else {
    const ZuCylinderFit fit = ZuFitCylinder(made.points, options);
    errors.fit = fit.fit;
    AddAxis(fit.axis.getDirection(), fit.adPoint, Cov<7>(fit.adCov), made, through, &errors);
    Add(Eigen::VectorXd::Unit(7, 6), Eigen::VectorXd::Unit(7, 6) * (fit.dRadius - 2.0),
        Cov<7>(fit.adCov), &errors);
  }
  return errors;
}

}  // namespace

// Errors over their standard deviations have the variance 1, with sigma0 of the set that of t.
TEST(FitShapes, HoldTheirStandardDeviations) {
  FitPoints random(11);
  double dAlarms = 0.0, dExpectedAlarms = 0.0;
  for (const Shape shape : {ePlane, eLine, eSphere, eCylinder}) {
    const int iRuns = AreLongTrials() ? 10000 : Runs(shape == eCylinder ? 60 : 400), n = 40;
    double dSquares = 0.0, dRedundancy = 0.0;
    int iErrors = 0;
    ZuFitOptions options;
    options.tests.bSnoop = false;
    for (int k = 0; k < iRuns; ++k) {
      const double dOffset = k % 2 == 0 ? 0.0 : 1e6;
      const Made made = Make(shape, n, 0.01, dOffset, random);
      const Errors errors = Fit(shape, made, dOffset, options);
      ASSERT_EQ(errors.fit.eStatus, ZuAdjustStatus::Good) << shape << ' ' << k;
      for (const double d : errors.normalized) dSquares += d * d;
      iErrors += static_cast<int>(errors.normalized.size());
      dRedundancy = 0.0;
      for (const auto& p : errors.fit.points) {
        dRedundancy += p.test.Redundancy();
        dAlarms += p.test.IsRejected();
      }
      dExpectedAlarms += 0.001 * n;
      EXPECT_NEAR(dRedundancy, errors.fit.iRedundancy, 1e-9);
    }
    const double r = dRedundancy, dExpected = r / (r - 2.0);
    EXPECT_NEAR(dSquares / iErrors, dExpected, 4.5 * std::sqrt(2.0 / iErrors)) << shape;
  }
  EXPECT_NEAR(dAlarms / dExpectedAlarms, 1.0,
              AreLongTrials() ? 0.1 : 4.5 / std::sqrt(dExpectedAlarms));
}

// A point off the shape by the error called smallest is found in 80 of 100 runs.
TEST(FitShapes, FindErrorsOfTheSmallestSize) {
  FitPoints random(16);
  ZuFitOptions options;
  options.tests.bSnoop = false;
  options.dSigma = 0.01;
  for (const Shape shape : {ePlane, eLine, eSphere, eCylinder}) {
    const int iRuns = AreLongTrials() ? 10000 : Runs(shape == eCylinder ? 25 : 100);
    int iFound = 0;
    for (int k = 0; k < iRuns; ++k) {
      Made made = Make(shape, 40, options.dSigma, 0.0, random);
      Eigen::Map<Vector> x(made.points[3].adX);
      Vector off = x;
      if (shape == ePlane) off = made.turn.col(2);
      if (shape == eLine) off = made.turn.col(0);
      if (shape == eCylinder) off -= made.turn.col(2) * made.turn.col(2).dot(off);
      off.normalize();
      x += off * Fit(shape, made, 0.0, options).fit.points[3].test.adNabla[0];
      const ZuFittedPoint p = Fit(shape, made, 0.0, options).fit.points[3];
      // Of equal accuracies the standard deviation is that along any normal.
      const double w = off.dot(Eigen::Map<const Vector>(p.adResidual)) / p.test.adResidualSd[0];
      iFound += std::fabs(w) > ZuNormalLimit(0.001);
    }
    EXPECT_NEAR(iFound / (1.0 * iRuns), 0.8, AreLongTrials() ? 0.02 : 1.8 / std::sqrt(iRuns))
        << shape;
  }
}

TEST(FitShapes, SetGrossErrorsAside) {
  FitPoints random(12);
  for (const Shape shape : {ePlane, eLine, eSphere, eCylinder}) {
    for (int k = 0; k < 10; ++k) {
      Made made = Make(shape, 40, 0.001, 0.0, random);
      for (size_t i = 0; i < 12; ++i) made.points[i].adX[k % 3] += random.Uniform(0.5, 3.0);
      const Errors errors = Fit(shape, made, 0.0);
      ASSERT_EQ(errors.fit.eStatus, ZuAdjustStatus::Good) << shape << ' ' << k;
      EXPECT_LT(errors.fit.dSigma0, 0.0015) << shape << ' ' << k;
      for (size_t i = 12; i < 40; ++i) {
        const ZuFittedPoint& p = errors.fit.points[i];
        EXPECT_TRUE(p.bUsed || std::fabs(p.dDistance) > 0.003) << shape << ' ' << k << ' ' << i;
      }
    }
  }
}

// Points with standard deviations of 1 to 100: the exact ones decide.
TEST(FitShapes, WeighPointsByTheirAccuracy) {
  FitPoints random(13);
  for (const Shape shape : {ePlane, eLine, eSphere, eCylinder}) {
    Made made = Make(shape, 40, 0.0, 0.0, random);
    for (size_t i = 0; i < made.points.size(); ++i) {
      const double dSigma = i < 12 ? 1e-4 : 1e-2;
      const Vector noise = dSigma * random.NormalVector();
      for (int a = 0; a < 3; ++a) {
        made.points[i].adX[a] += noise[a];
        made.points[i].adCov[4 * a] = dSigma * dSigma;
      }
    }
    const Errors errors = Fit(shape, made, 0.0);
    ASSERT_EQ(errors.fit.eStatus, ZuAdjustStatus::Good) << shape;
    EXPECT_NEAR(errors.fit.dSigma0, 1.0, 0.4) << shape;
    EXPECT_EQ(errors.fit.sigmaOfTests, ZuSigmaKind::APriori);
    for (const double d : errors.normalized) EXPECT_LT(std::fabs(d), 4.0) << shape;
  }
}

// Of coordinates that hang together, far off the line: single numbers lie beyond 0 and 1, and the
// adjustment ends slowly.
TEST(FitShapes, SumRedundancyOfCorrelatedCoordinates) {
  FitPoints random(17);
  ZuFitOptions options;
  options.tests.bSnoop = false;
  int iGood = 0;
  for (int k = 0; k < 60; ++k) {
    Made made = Make(eLine, 12, k % 2 == 0 ? 0.01 : 1.0, 0.0, random);
    for (ZuFitPoint& p : made.points) {
      Eigen::Matrix3d L;
      for (int a = 0; a < 9; ++a) L(a / 3, a % 3) = random.Normal();
      Eigen::Map<Eigen::Matrix3d>(p.adCov) =
          std::pow(10.0, random.Uniform(-6.0, -2.0)) * L * L.transpose();
    }
    const ZuFitResult fit = Fit(eLine, made, 0.0, options).fit;
    if (fit.eStatus != ZuAdjustStatus::Good) continue;
    ++iGood;
    double dSum = 0.0;
    for (const ZuFittedPoint& p : fit.points) dSum += p.test.Redundancy();
    EXPECT_NEAR(dSum, 20.0, 1e-9) << k;
  }
  EXPECT_GE(iGood, 30);
}

TEST(FitShapes, RefuseWhatThePointsDoNotDecide) {
  FitPoints random(14);
  std::vector<ZuFitPoint> one(8), circle, four(4);
  for (int i = 0; i < 8; ++i) {
    circle.push_back(FitPoints::Point(static_cast<unsigned>(i + 1),
                                      {std::cos(0.7 * i), std::sin(0.7 * i), 5.0}));
  }
  EXPECT_EQ(ZuFitLine(one).fit.eStatus, ZuAdjustStatus::RankDefect);
  EXPECT_EQ(ZuFitSphere(circle).fit.eStatus, ZuAdjustStatus::RankDefect);
  EXPECT_NE(ZuFitSphere(circle).fit.strFree.find("against the radius"), std::string::npos);
  EXPECT_EQ(ZuFitCylinder(four).fit.eStatus, ZuAdjustStatus::TooFew);
  EXPECT_NE(ZuFitCylinder(circle).fit.eStatus, ZuAdjustStatus::NotFinite);
}

// Whatever the numbers are: good comes with finite ones alone.
TEST(FitShapes, AreNeverGoodWithNumbersThatAreNotFinite) {
  FitPoints random(15);
  int iGood = 0;
  const int iSets = AreLongTrials() ? 100000 : Runs(20000);
  for (int k = 0; k < iSets; ++k) {
    const Shape shape = static_cast<Shape>(k % 40 == 3 ? 3 : k % 3);
    Made made;
    made.turn.setIdentity();
    const double dPower = random.Uniform(0.0, 300.0);
    for (int i = 0, n = 1 + k % 8; i < n; ++i) {
      ZuFitPoint p;
      p.uId = 1;
      for (int a = 0; a < 3; ++a) {
        p.adX[a] = random.Normal() * std::pow(10.0, random.Uniform(-dPower, dPower));
        const double d = random.Uniform(0.0, 1.0);
        if (d < 0.003) p.adX[a] = std::nan("");
        if (d > 0.95) p.adX[a] = 0.0;
        if (k % 5 == 0) p.adCov[4 * a] = std::pow(10.0, random.Uniform(-dPower, dPower));
      }
      if (i > 0 && random.Uniform(0.0, 1.0) < 0.2) p = made.points.back();
      made.points.push_back(p);
    }
    const Errors errors = Fit(shape, made, 0.0);
    if (errors.fit.eStatus != ZuAdjustStatus::Good) continue;
    ++iGood;
    ASSERT_TRUE(std::isfinite(errors.fit.dSigma0) && std::isfinite(errors.fit.dRms)) << k;
    double dRedundancy = 0.0;
    for (const auto& p : errors.fit.points) {
      ASSERT_TRUE(std::isfinite(p.dDistance)) << k;
      dRedundancy += p.bUsed ? p.test.Redundancy() : 0.0;
    }
    EXPECT_NEAR(dRedundancy, errors.fit.iRedundancy, 1e-9) << k;
  }
  EXPECT_GT(iGood, iSets / 200);
}
