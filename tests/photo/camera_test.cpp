#include "zu/photo/camera.h"

#include "tests/support/cameras.h"
#include "tests/support/full_sizes.h"
#include "tests/support/plain_camera.h"
#include "tests/support/test.h"
#include "zu/points/point_list.h"

namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

class Camera : public ::testing::Test {
 protected:
  void SetUp() override { ZuCamera::DeleteInvAdjustTables(); }
  void TearDown() override { ZuCamera::DeleteInvAdjustTables(); }
};

struct Xy {
  double x, y;
};

std::vector<Xy> Grid(double dHalf, int n) {
  std::vector<Xy> points;
  for (int i = 0; i < n; ++i) {
    for (int j = 0; j < n; ++j) {
      points.push_back({dHalf * (2.0 * i / (n - 1) - 1.0), dHalf * (2.0 * j / (n - 1) - 1.0)});
    }
  }
  return points;
}

TEST_F(Camera, CapEqualsThePlainIterationToTheBit) {
  std::mt19937 random(4711);
  std::uniform_real_distribution<double> unit(-1.0, 1.0);
  for (int n = 0; n < 2000; ++n) {
    ZuCamera camera = test_cameras::ChessboardCap();
    const double dBend = std::pow(10.0, 1.5 * unit(random));  // to beyond where it converges
    camera.m_dA1 *= dBend * unit(random);
    camera.m_dA3 *= dBend * unit(random);
    camera.m_dC1 *= 30.0 * unit(random);
    camera.m_dB1 *= 30.0 * unit(random);
    double x = 5.0 * unit(random), y = 5.0 * unit(random);
    if (n == 0) x = camera.m_dXh, y = camera.m_dYh;  // r = 0
    double xPlain = x, yPlain = y;
    ASSERT_TRUE(camera.Adjust(&x, &y));
    plain::AdjustCap(camera, xPlain, yPlain);
    ASSERT_TRUE(x == xPlain || (std::isnan(x) && std::isnan(xPlain))) << n;
    ASSERT_TRUE(y == yPlain || (std::isnan(y) && std::isnan(yPlain))) << n;
  }
}

TEST_F(Camera, TermsAtTheCentreAndAtR0) {
  const ZuCamera camera = test_cameras::ChessboardCap();
  EXPECT_ROW("0 0 0 0", camera.CalcdrA1A2(0.0), camera.CalcdrA1A2A3(0.0, 0.0),
             camera.CalcdrA1A2(camera.m_dR0), camera.CalcdrA1A2A3(0.0, -camera.m_dR0));
  // Unguarded on purpose.
  const double r02 = 2.5 * 2.5;
  EXPECT_DOUBLE_EQ(camera.Calcd(0.0, 0.0), -camera.m_dA1 * r02 - camera.m_dA2 * r02 * r02);
  EXPECT_NEAR(camera.Calcd(1.2, -0.7), camera.CalcdrA1A2(1.2, -0.7), 1e-15);
  struct Open : ZuCamera {
    using ZuCamera::CalcDistortA1A2;
  } open;
  open.Set(camera);
  double dx = 0.0, dy = 0.0;
  const double d = open.CalcDistortA1A2(dx, dy, 1.2, -0.7);
  EXPECT_TRUE(d == camera.CalcdrA1A2(1.2, -0.7) && dx == -1.2 * d && dy == 0.7 * d);
  EXPECT_DOUBLE_EQ(camera.GetXhYhRadius(), std::hypot(camera.m_dXh, camera.m_dYh));
  // The curve of the CAP model shows a length, with the sign of the radial part.
  EXPECT_GT(camera.Calc_drForGraph(0.5, 0.1), 0.0);
  EXPECT_LT(camera.Calc_drForGraph(3.5, 0.1), 0.0);
  ZuCamera unknown = camera;
  unknown.m_iMode = 9;
  EXPECT_EQ(unknown.Calc_drForGraph(1.0, 1.0), 0.0);
}

// Table and look-up against the plain bisection, bit for bit: gentle, bent and folded grids, whose
// corners lie beyond the point where the forward map turns back.
TEST_F(Camera, LookUpEqualsThePlainBisectionToTheBit) {
  ZU_NEEDS_FULL_SIZES();
  std::vector<test_cameras::NamedCamera> cameras = {
      {"radial", test_cameras::ChessboardRadial()},
      {"cap", test_cameras::ChessboardCap()},
      {"viva", test_cameras::Viva()},
      {"strongly bent", test_cameras::Make(7, 0, 4.0, 0.3, -0.2, -0.02, -0.0006, 2.5, 4.4)},
      {"folded", test_cameras::Make(8, 0, 4.0, 0.0, 0.1, 0.02, 0.001, 2.5, 4.4)},
  };
  std::mt19937 random(17);
  for (const auto& [strName, camera] : cameras) {
    SCOPED_TRACE(strName);
    const plain::InverseTable table(camera, camera.m_dRMax);
    std::uniform_real_distribution<double> image(-1.02 * camera.m_dRMax, 1.02 * camera.m_dRMax);
    int iDifferent = 0;
    for (int n = 0; n < 200000; ++n) {
      double x = image(random), y = image(random);
      double xPlain = x, yPlain = y;
      bool bPlain = table.LookUp(&xPlain, &yPlain);
      if (!std::isfinite(xPlain) || !std::isfinite(yPlain)) bPlain = false;
      const bool bFound = camera.InvAdjust(&x, &y);
      if (bFound != bPlain || (bFound && (x != xPlain || y != yPlain))) ++iDifferent;
    }
    EXPECT_EQ(iDifferent, 0);
  }
}

TEST_F(Camera, RefusalsAndTheirAsymmetry) {
  ZuCamera camera = test_cameras::ChessboardRadial();
  double x = 0.5, y = 0.25;

  camera.SetId(0);
  for (int iMode = 0; iMode <= 4; ++iMode) {
    camera.m_iMode = iMode;
    EXPECT_TRUE(!camera.Adjust(&x, &y) && !camera.InvAdjust(&x, &y));
  }
  camera.SetId(5);
  camera.SetPinholeCamera();
  EXPECT_TRUE(camera.IsPinholeCamera() && !camera.Adjust(&x, &y) && camera.InvAdjust(&x, &y));
  EXPECT_ROW("0.5 0.25", x, y);

  camera.m_iMode = eCameraModeCap;  // no domain is known
  camera.m_dRMax = 0.0;
  EXPECT_FALSE(camera.InvAdjust(&x, &y));
  camera.m_dC = kNaN;
  camera.m_dRMax = 4.4;
  EXPECT_FALSE(camera.InvAdjust(&x, &y));
  EXPECT_EQ(x, 0.5);
  EXPECT_FALSE(camera.Adjust(static_cast<ZuPointList*>(nullptr)));
  EXPECT_FALSE(camera.InvAdjust(static_cast<ZuPointList*>(nullptr)));
}

TEST_F(Camera, DomainOfTheTable) {
  ZuCamera camera(1, 35.0);  // no distortion
  for (const auto& [iMode, dRMax, dLimit] :
       Cases<int, double, double>{{0, 0.0, 30.0}, {1, 0.0, 8.0}, {0, 5.0, 5.0}}) {
    ZuCamera::DeleteInvAdjustTables();
    camera.m_iMode = iMode;
    camera.m_dRMax = dRMax;
    double x = dLimit, y = 0.0;
    EXPECT_FALSE(camera.InvAdjust(&x, &y)) << dLimit;
    x = std::nextafter(dLimit, 0.0);
    EXPECT_TRUE(camera.InvAdjust(&x, &y)) << dLimit;
    EXPECT_NEAR(x, dLimit, 1e-9);
  }
}

// The table belongs to id and constant alone.
TEST_F(Camera, AnEditedCameraKeepsItsTableUntilTheTablesAreDeleted) {
  ZuCamera camera = test_cameras::ChessboardRadial();
  double xOld = 1.5, yOld = -0.5;
  ASSERT_TRUE(camera.InvAdjust(&xOld, &yOld));

  camera.m_dA1 = 0.0;
  ZuCamera other = test_cameras::Make(1, 0, camera.m_dC, 0.0, 0.0, 0.0, 0.0, 1.0, 4.4);
  for (const ZuCamera& edited : {camera, other}) {
    double x = 1.5, y = -0.5;
    ASSERT_TRUE(edited.InvAdjust(&x, &y));
    EXPECT_EQ(x, xOld);
    EXPECT_EQ(y, yOld);
  }
  ZuCamera::DeleteInvAdjustTables();
  double x = 1.5, y = -0.5;
  ASSERT_TRUE(camera.InvAdjust(&x, &y));
  EXPECT_GT(std::hypot(x - xOld, y - yOld), 1e-3);
}

// A stray mode in a file: the two-term fixed point inverts the mode 0 map about the origin.
TEST_F(Camera, UnknownModesIterate) {
  ZuCamera radial = test_cameras::Make(1, 0, 35.0, 0.0, 0.0, -1e-4, 1e-7, 12.0, 18.0);
  ZuCamera unknown = radial;
  unknown.m_iMode = 77;
  for (const Xy& p : Grid(12.0, 7)) {
    double x = p.x, y = p.y;
    EXPECT_FALSE(unknown.Adjust(&x, &y));
    ASSERT_TRUE(radial.Adjust(&x, &y));
    ASSERT_TRUE(unknown.InvAdjust(&x, &y));
    EXPECT_NEAR(x, p.x, 1e-6);
    EXPECT_NEAR(y, p.y, 1e-6);
  }
  // Where it diverges the table answers, which for such a mode holds no distortion.
  unknown.m_dA1 = 0.5;
  double x = 9.0, y = 9.0;
  ASSERT_TRUE(unknown.InvAdjust(&x, &y));
  EXPECT_NEAR(x, 9.0, 1e-12);
  EXPECT_EQ(unknown.m_dLastInX, 9.0);
}

TEST_F(Camera, CopiesCarryParametersWithoutTheLastCall) {
  ZuCamera camera = test_cameras::ChessboardCap();
  camera.SetName("left");
  double x = 0.3, y = 0.4;
  ASSERT_TRUE(camera.InvAdjust(&x, &y));
  EXPECT_EQ(camera.m_dLastInX, 0.3);
  ZuCamera assigned;
  assigned.m_dLastOutX = 3.0;
  assigned.Set(camera);
  for (const ZuCamera& copy : {ZuCamera(camera), assigned}) {
    EXPECT_ROW("2 left -0.000285451769 2 0 0", copy.GetId(), copy.GetName(), copy.m_dC2,
               copy.m_iMode, copy.m_dLastInX, copy.m_dLastOutX);
  }
}

TEST_F(Camera, TotalStationKeepsTheFormerConstant) {
  ZuCamera camera = test_cameras::ChessboardRadial();
  camera.SetTs15(21.5, 0.1, 0.2);
  EXPECT_TRUE(camera.IsTs15());
  EXPECT_ROW("21.5 4.915686 8", camera.m_dC, camera.m_dCViva, camera.m_dRMax);
}

// Measured points come back from their corrected ones, over the whole image.
TEST_F(Camera, ExactInverseReturnsTheMeasuredPoint) {
  for (const auto& [strName, camera] : test_cameras::Calibrations()) {
    SCOPED_TRACE(strName);
    const double dValid = camera.GetValidRadius(2.0 * camera.m_dRMax);
    double dWorst = 0.0;
    int iCount = 0;
    for (const Xy& p : Grid(camera.m_dRMax, 41)) {
      if (std::hypot(p.x - camera.m_dXh, p.y - camera.m_dYh) > dValid) continue;
      ++iCount;
      double x = p.x, y = p.y;
      ASSERT_EQ(camera.AdjustExact(&x, &y), eCameraInverseOk) << p.x << " " << p.y;
      ASSERT_EQ(camera.InvAdjustExact(&x, &y), eCameraInverseOk) << p.x << " " << p.y;
      dWorst = std::max(dWorst, std::hypot(x - p.x, y - p.y));
    }
    EXPECT_GT(iCount, 41 * 41 * 3 / 4);
    EXPECT_LE(dWorst, 1e-12);
    EXPECT_EQ(ZuCamera(camera).m_dLastInX, 0.0);
  }
}

TEST_F(Camera, ExactInverseRefusesWhatHasNone) {
  // r (1 - a1 r^2) turns back at r = 1 / sqrt(3 a1), where it reaches 2 r / 3.
  const double a1 = 0.01;
  const ZuCamera camera = test_cameras::Make(1, 0, 5.0, 0.1, 0.0, a1, 0.0, 0.0, 8.0);
  const double dTurn = 1.0 / std::sqrt(3.0 * a1), dTop = 2.0 / 3.0 * dTurn;
  EXPECT_NEAR(camera.GetValidRadius(), dTurn, 1e-9);
  ZuCamera offset = test_cameras::Make(1, eCameraModeViva, 5.0, 0.1, 0.0, a1, 0.0, 0.0, 8.0);
  offset.m_dXhViva = 0.7;  // a centre beside that of the image takes from the radius
  EXPECT_LT(offset.GetValidRadius(), dTurn - 0.1);
  for (int n = 0; n < 16; ++n) {
    const double dAngle = n * 0.4;
    double x = dTop * 0.999 * std::cos(dAngle), y = dTop * 0.999 * std::sin(dAngle);
    EXPECT_EQ(camera.InvAdjustExact(&x, &y), eCameraInverseOk);
    EXPECT_LE(std::hypot(x - 0.1, y), dTurn);
    const double xOut = dTop * 1.001 * std::cos(dAngle), yOut = dTop * 1.001 * std::sin(dAngle);
    x = xOut, y = yOut;
    EXPECT_NE(camera.InvAdjustExact(&x, &y), eCameraInverseOk);
    EXPECT_EQ(x, xOut);
    EXPECT_EQ(y, yOut);
  }
  for (const auto& [strName, wide] : test_cameras::Calibrations()) {
    SCOPED_TRACE(strName);
    for (const double dFactor : {1.5, 3.0, 100.0, 1e10}) {
      double x = dFactor * 2.0 * wide.m_dRMax, y = dFactor * wide.m_dRMax;
      EXPECT_NE(wide.InvAdjustExact(&x, &y), eCameraInverseOk);
    }
  }
  ZuCamera refused = camera;
  double x = 0.1, y = 0.1;
  refused.SetPinholeCamera();
  EXPECT_EQ(refused.InvAdjustExact(&x, &y), eCameraInverseOk);
  refused.m_iMode = 77;
  EXPECT_EQ(refused.InvAdjustExact(&x, &y), eCameraInverseNoModel);
  EXPECT_EQ(refused.AdjustExact(&x, &y), eCameraInverseNoModel);
  refused.SetId(0);
  EXPECT_EQ(refused.InvAdjustExact(&x, &y), eCameraInverseNoCamera);
  EXPECT_STREQ(GetCameraInverseText(eCameraInverseOutside), "outside the valid image");
}

}  // namespace
