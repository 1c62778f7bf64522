#include "tests/support/eigen_bridge.h"
#include "tests/support/test.h"
#include "zu/numerics/angle.h"
#include "zu/numerics/matrix.h"

namespace {

constexpr double kPi = std::numbers::pi;

Eigen::Matrix3d Turn(double dAngle, const Eigen::Vector3d& axis) {
  return Eigen::AngleAxisd(dAngle, axis).toRotationMatrix();
}

ZuMatrix Rotation(double a, double b, double c) { return ZuMatrix(3, 3).MakeRotMatrix(a, b, c); }

}  // namespace

// The first angle turns about Y, the second about X, the third about Z: R = Ry Rx Rz.
TEST(Rotation, AnglesAreComposedAsYXZ) {
  for (double a : {-2.9, -0.3, 0.0, 1.2}) {
    for (double b : {-1.5, 0.2, 2.0}) {
      for (double c : {-0.7, 0.0, 3.0}) {
        SCOPED_TRACE(::testing::Message() << a << " " << b << " " << c);
        const Eigen::Matrix3d expected = Turn(a, Eigen::Vector3d::UnitY()) *
                                         Turn(b, Eigen::Vector3d::UnitX()) *
                                         Turn(c, Eigen::Vector3d::UnitZ());
        EXPECT_LT(MaxDifference(ToEigen(Rotation(a, b, c)), expected), 1e-15);
      }
    }
  }
}

// The angles come back as X, Y, Z; in the order Y, X, Z they build the matrix again.
TEST(Rotation, AnglesComeBackInTheOrderXYZ) {
  for (double a : {-3.0, -0.3, 0.1, 1.2}) {
    for (double b : {-1.5, -0.2, 0.4, 1.57}) {
      for (double c : {-0.7, 0.5, 3.0}) {
        SCOPED_TRACE(::testing::Message() << a << " " << b << " " << c);
        double dX = 0.0, dY = 0.0, dZ = 0.0;
        Rotation(a, b, c).GetRotAngles(&dX, &dY, &dZ);
        const double dTolerance = 1e-14 / std::cos(b);
        EXPECT_NEAR(dX, b, dTolerance);
        EXPECT_NEAR(dY, a, dTolerance);
        EXPECT_NEAR(dZ, c, dTolerance);
        EXPECT_LT(MaxDifference(ToEigen(Rotation(dY, dX, dZ)), ToEigen(Rotation(a, b, c))),
                  dTolerance);
      }
    }
  }
}

TEST(Rotation, FrameOfThreePoints) {
  ZuVector a(1.0, 2.0, 3.0), b(4.0, 2.0, 7.0), c(-2.0, 5.0, 1.0);
  ZuMatrix r(3, 3);
  bool bOk = false;
  EXPECT_EQ(&r.MakeRotMatrix(a, b, c, &bOk), &r);
  EXPECT_TRUE(bOk);
  const Eigen::Matrix3d frame = ToEigen(r);
  EXPECT_LT(MaxDifference(frame.transpose() * frame, Eigen::Matrix3d::Identity()), 1e-14);
  EXPECT_NEAR(frame.determinant(), 1.0, 1e-14);
  const Eigen::Vector3d toB = frame.transpose() * ToEigen(b - a);
  const Eigen::Vector3d toC = frame.transpose() * ToEigen(c - a);
  EXPECT_NEAR(toB(0), 5.0, 1e-14);
  EXPECT_NEAR(toC(2), 0.0, 1e-14);
  EXPECT_GT(toC(1), 0.0);
  r.MakeRotMatrix(a, b, c, nullptr);
}

TEST(Rotation, AngleBetweenThirdAxes) {
  const ZuMatrix r = Rotation(0.3, -0.4, 2.0);
  EXPECT_EQ(r.CalcAngle(r), 0.0);
  EXPECT_NEAR(r.CalcAngle(r * ZuMatrix(3, 3).RotXAxis(0.7)), 0.7, 1e-14);
  EXPECT_NEAR(r.CalcAngle(r * ZuMatrix(3, 3).RotZAxis(1.9)), 0.0, 1e-7);
  for (double c = 0.0; c < 3.0; c += 0.01) {
    const ZuMatrix turned = Rotation(c, 0.5 * c, c);
    EXPECT_NEAR(turned.CalcAngle(turned * -3.0), kPi, 1e-7) << "opposed axes, never NaN";
  }
}

// The limit of the same direction is a sum longer than 1.42, a little less than a right angle.
TEST(Rotation, SameDirectionEndsBelowTheRightAngle) {
  const ZuMatrix r = Rotation(0.3, -0.4, 2.0);
  const auto TurnedBy = [&r](double dDegrees) {
    return r * ZuMatrix(3, 3).RotYAxis(dDegrees / 180.0 * kPi);
  };
  EXPECT_TRUE(r.IsLookingInSameDirection(r) && r.IsLookingInSameDirection(TurnedBy(89.5)));
  EXPECT_FALSE(r.IsLookingInSameDirection(TurnedBy(89.6)));
  EXPECT_FALSE(r.IsLookingInSameDirection(TurnedBy(90.0)));
}

TEST(Angle, UnitsConvert) {
  const eZuAngleUnit other = static_cast<eZuAngleUnit>(42);
  EXPECT_DOUBLE_EQ(ConvertAngle(180.0, eZuAngleUnitDegree, eZuAngleUnitGon), 200.0);
  EXPECT_DOUBLE_EQ(ConvertAngle(100.0, eZuAngleUnitGon, eZuAngleUnitRadian), kPi / 2.0);
  EXPECT_DOUBLE_EQ(ConvertAngle(kPi, eZuAngleUnitRadian, eZuAngleUnitDegree), 180.0);
  EXPECT_EQ(ConvertAngle(1.25, other, eZuAngleUnitRadian), 1.25);
}

TEST(Angle, NormalFormIsZeroToTwoPi) {
  for (const auto& [dAngle, dExpected] : Cases<double, double>{{0.5, 0.5},
                                                               {2.0 * kPi, 2.0 * kPi},
                                                               {2.0 * kPi + 0.5, 0.5},
                                                               {-0.5, 2.0 * kPi - 0.5},
                                                               {-2.0 * kPi, 0.0},
                                                               {100.0, 100.0 - 15 * 2.0 * kPi}})
    EXPECT_NEAR(NormAngle(dAngle), dExpected, 1e-13) << dAngle;
  EXPECT_TRUE(std::signbit(NormAngle(-0.0)));
  EXPECT_EQ(NormAngle(2.0 * kPi), 2.0 * kPi);
}

// Angles of any size end, at once, and infinities come back.
TEST(Angle, NormalFormOfExtremes) {
  for (double dAngle : {1e5, -1e5, 1e18, -1e18, 1e300, -1e300}) {
    const double dNormal = NormAngle(dAngle);
    EXPECT_GE(dNormal, 0.0) << dAngle;
    EXPECT_LE(dNormal, 2.0 * kPi) << dAngle;
    EXPECT_NEAR(std::sin(dNormal), std::sin(std::fmod(dAngle, 2.0 * kPi)), 1e-9) << dAngle;
  }
  const double dInfinity = std::numeric_limits<double>::infinity();
  EXPECT_EQ(NormAngle(dInfinity), dInfinity);
  EXPECT_EQ(NormAngle(-dInfinity), -dInfinity);
  EXPECT_TRUE(std::isnan(NormAngle(std::nan(""))));
}
