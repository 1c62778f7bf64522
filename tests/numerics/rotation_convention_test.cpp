#include "zu/numerics/rotation_convention.h"

#include "tests/support/eigen_bridge.h"
#include "tests/support/other_program.h"
#include "tests/support/random_geometry.h"
#include "tests/support/temp_file.h"
#include "tests/support/test.h"
#include "tests/support/trials.h"
#include "zu/numerics/matrix.h"
#include "zu/numerics/pixel_convention.h"

namespace {

constexpr double kRightAngle = std::numbers::pi / 2.0;

double OffBy(const ZuRotation& a, const ZuRotation& b) {
  double dMax = 0.0;
  for (size_t i = 0; i < 9; ++i) {
    const double d = std::fabs(a.r[i] - b.r[i]);
    if (!(d <= dMax)) dMax = d;
  }
  return dMax;
}

template <class... T>
struct Conventions {
  // The largest change of R on the way through a first and a second convention, any of them.
  static double ThroughAllPairs(const ZuRotation& R) { return std::max({Through<T>(R)...}); }

 private:
  template <class First>
  static double Through(const ZuRotation& R) {
    const First first = First::From(R);
    return std::max({OffBy(ZuRotationCast<T>(first).Rotation(), R)...});
  }
};
using All = Conventions<ZuRotation, ZuAnglesAbc, ZuAnglesOpk, ZuAnglesPok, ZuAnglesYpr,
                        ZuMatrixOpenCv, ZuVectorOpenCv, ZuQuaternionColmap>;

ZuRotation RandomRotation(RandomGeometry* pRandom) {
  return ZuQuaternionColmap{pRandom->Value(1.0), pRandom->Value(1.0), pRandom->Value(1.0),
                            pRandom->Value(1.0)}
      .Rotation();
}

Eigen::Matrix3d Turn(double dAngle, int iAxis) {
  return Eigen::AngleAxisd(dAngle, Eigen::Vector3d::Unit(iAxis)).toRotationMatrix();
}

double OffBy(const ZuRotation& a, const Eigen::Matrix3d& b) {
  return (Eigen::Map<const Eigen::Matrix<double, 3, 3, Eigen::RowMajor>>(a.r.data()) - b)
      .cwiseAbs()
      .maxCoeff();
}

}  // namespace

TEST(RotationConvention, EveryPairKeepsTheRotation) {
  RandomGeometry random(23);
  const int iRuns = AreLongTrials() ? 1000000 : Runs(100000);
  double dMax = 0.0;
  for (int i = 0; i < iRuns; ++i)
    dMax = std::max(dMax, All::ThroughAllPairs(RandomRotation(&random)));
  EXPECT_LT(dMax, 1e-14);
}

// At and near right angles of the middle angle, half turns and tiny turns.
TEST(RotationConvention, EveryPairKeepsTheGimbalCases) {
  double dMax = 0.0;
  for (const double dOff : {0.0, 1e-16, 1e-14, 1e-12, 1e-9, 1e-8, 1e-6, 1e-3}) {
    for (const double dMiddle : {-kRightAngle, kRightAngle, 0.0, 2.0 * kRightAngle}) {
      for (const double dFirst : {0.0, 0.3, -2.9, 2.0 * kRightAngle}) {
        const ZuRad first(dFirst), middle(dMiddle + dOff), third(1.1 * dFirst + dOff);
        for (const ZuRotation& R : {ZuAnglesAbc{middle, first, third}.Rotation(),
                                    ZuAnglesOpk{first, middle, third}.Rotation(),
                                    ZuAnglesYpr{first, middle, third}.Rotation(),
                                    ZuVectorOpenCv{{dMiddle + dOff, dOff, 0.0}}.Rotation()}) {
          dMax = std::max(dMax, All::ThroughAllPairs(R));
        }
      }
    }
  }
  EXPECT_LT(dMax, 1e-14);
  const auto at = ZuAnglesOpk::From(ZuAnglesOpk{ZuGon(20), ZuGon(100), ZuGon(30)}.Rotation());
  EXPECT_TRUE(at.IsGimbal());
  EXPECT_EQ(at.kappa.value, 0.0);
  EXPECT_NEAR(ZuGon(at.omega).value, 50.0, 1e-12);
  EXPECT_FALSE((ZuAnglesOpk{ZuGon(100), ZuGon(99.9), ZuGon(100)}.IsGimbal()));
}

// Each against products of elementary turns, and a camera whose axes are known.
TEST(RotationConvention, DefinitionsHold) {
  const ZuRad a(0.3), b(-0.7), c(2.1);
  EXPECT_LT(OffBy(ZuAnglesAbc{a, b, c}.Rotation(), Turn(-0.7, 1) * Turn(0.3, 0) * Turn(2.1, 2)),
            1e-15);
  EXPECT_LT(OffBy(ZuAnglesOpk{a, b, c}.Rotation(), Turn(0.3, 0) * Turn(-0.7, 1) * Turn(2.1, 2)),
            1e-15);
  EXPECT_LT(OffBy(ZuAnglesPok{b, a, c}.Rotation(), ZuAnglesAbc{a, b, c}.Rotation()), 0.0 + 1e-16);
  const Eigen::DiagonalMatrix<double, 3> camera(1.0, -1.0, -1.0);
  const Eigen::Quaterniond q(0.5, 0.1, -0.7, 0.4);
  EXPECT_LT(OffBy(ZuQuaternionColmap{q.w(), q.x(), q.y(), q.z()}.Rotation(),
                  q.normalized().toRotationMatrix().transpose() * camera),
            1e-15);
  EXPECT_LT(OffBy(ZuVectorOpenCv{{0.0, 1.3, 0.0}}.Rotation(), Turn(-1.3, 1) * camera), 1e-15);

  // Heading east, nose up by 30 degrees: the camera's y axis points east and up, x south.
  const auto R = ZuAnglesYpr{ZuDeg(90), ZuDeg(30), ZuDeg(0)}.Rotation().r;
  const double adAxes[] = {0.0, std::cos(kRightAngle / 3.0), -1.0, 0.0, 0.0, 0.5};
  for (size_t i = 0; i < 3; ++i) {
    EXPECT_NEAR(R[3 * i], adAxes[2 * i], 1e-15) << i;
    EXPECT_NEAR(R[3 * i + 1], adAxes[2 * i + 1], 1e-15) << i;
  }
  EXPECT_LT(OffBy(ZuAnglesYpr{}.Rotation(), ZuRotation()), 1e-16);

  const ZuCameraPose pose{ZuAnglesOpk{a, b, c}.Rotation(), {10.0, -20.0, 5.5}};
  const ZuCameraPose again = ZuFromOpenCv(ZuToOpenCv(pose));
  for (size_t i = 0; i < 3; ++i) EXPECT_NEAR(again.X0[i], pose.X0[i], 1e-14);
}

// scipy's Rotation makes the same matrices of the angles, vectors and quaternions.
TEST(RotationConvention, AgreesWithScipy) {
  RandomGeometry random(5);
  std::string strRows;
  for (int i = 0; i < 2000; ++i) {
    const ZuRotation R = RandomRotation(&random);
    const auto opk = ZuAnglesOpk::From(R);
    const auto abc = ZuAnglesAbc::From(R);
    const auto ypr = ZuAnglesYpr::From(R);
    const auto v = ZuVectorOpenCv::From(R).v;
    const auto q = ZuQuaternionColmap::From(R);
    for (const double d : R.r) strRows += Text(d) + ' ';
    strRows +=
        Row(opk.omega.value, opk.phi.value, opk.kappa.value, abc.b.value, abc.a.value, abc.c.value,
            ypr.yaw.value, ypr.pitch.value, ypr.roll.value, v[0], v[1], v[2], q.x, q.y, q.z, q.w)
            .str +
        '\n';
  }
  const TempFile file(strRows);
  const std::string strOut = RunPython(R"(
import sys, numpy as np
from scipy.spatial.transform import Rotation as S
a = np.loadtxt(sys.argv[1]); R = a[:, :9].reshape(-1, 3, 3); F = np.diag([1.0, -1.0, -1.0])
T = np.array([[0.0, 1, 0], [1, 0, 0], [0, 0, -1]]); C = F @ R.transpose(0, 2, 1)
d = [S.from_euler("XYZ", a[:, 9:12]).as_matrix() - R, S.from_euler("YXZ", a[:, 12:15]).as_matrix() - R,
     T @ S.from_euler("ZYX", a[:, 15:18]).as_matrix() @ T - R,
     S.from_rotvec(a[:, 18:21]).as_matrix() - C, S.from_quat(a[:, 21:25]).as_matrix() - C]
print(max(np.abs(x).max() for x in d))
)",
                                       file.Path());
  if (strOut.empty()) GTEST_SKIP() << "needs python3-scipy";
  EXPECT_LT(std::strtod(strOut.c_str(), nullptr), 1e-14);
}

TEST(PixelConvention, PlacesStayWhereTheyAre) {
  const ZuImageSize size{640.0, 480.0};
  const ZuPixel p(3.25, 7.5);
  const auto corner = ZuPixelCast<ZuPixelFromCorner>(p, size);
  const auto up = ZuPixelCast<ZuPixelUp>(corner, size);
  const auto middle = ZuPixelCast<ZuPixelFromMiddle>(up, size);
  const auto again = ZuPixelCast<ZuPixel>(middle, size);
  EXPECT_ROW("3.75 8 3.25 471.5 -316.25 232 3.25 7.5", corner.x, corner.y, up.x, up.y, middle.x,
             middle.y, again.x, again.y);
  EXPECT_NEAR(ZuGon(ZuDeg(90.0)).value, 100.0, 1e-13);
}
