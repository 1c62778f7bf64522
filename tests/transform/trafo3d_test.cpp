#include "zu/transform/trafo3d.h"

#include <Eigen/Geometry>

#include "tests/support/eigen_bridge.h"
#include "tests/support/test.h"

namespace {

constexpr eZuPointRWMask kColumns[] = {eZuPointRWId, eZuPointRWX, eZuPointRWY, eZuPointRWZ,
                                       eZuPointRWEnd};

ZuPointList Sample(const std::string& strName) {
  ZuPointList list;
  list.ReadFile((ZU_SOURCE_DIR "/samples/datum/" + strName).c_str(), kColumns);
  return list;
}

// The columns of a 3 x n matrix as points 1, 2, ...
ZuPointList Points(const Eigen::Matrix3Xd& coordinates) {
  ZuPointList list;
  for (int i = 0; i < coordinates.cols(); ++i) {
    list.Add(ZuPoint(i + 1, coordinates(0, i), coordinates(1, i), coordinates(2, i)));
  }
  return list;
}

Eigen::Matrix3Xd Random(std::mt19937_64& rng, int n) {
  std::normal_distribution<double> coordinate(0.0, 10.0);
  return Eigen::Matrix3Xd::NullaryExpr(3, n, [&] { return coordinate(rng); });
}

Eigen::Matrix3Xd Map(double s, const Eigen::Matrix3d& r, const Eigen::Vector3d& v,
                     const Eigen::Matrix3Xd& a) {
  return (s * r * a).colwise() + v;
}

double ErrorAsRotation(const ZuMatrix& m) {
  const Eigen::Matrix3d r = ToEigen(m);
  return std::max(MaxDifference(r.transpose() * r, Eigen::Matrix3d::Identity()),
                  std::fabs(r.determinant() - 1.0));
}

// Scale and rotation by the singular value decomposition.
void ExpectUmeyama(const ZuTrafo3d& trafo, const Eigen::Matrix3Xd& a, const Eigen::Matrix3Xd& b,
                   double dTolerance) {
  const Eigen::Matrix4d expected = Eigen::umeyama(a, b, true);
  const Eigen::Matrix3d sr = expected.topLeftCorner<3, 3>();
  const double s = std::cbrt(sr.determinant());
  EXPECT_NEAR(trafo.m_dScale, s, dTolerance * s);
  EXPECT_LT(MaxDifference(ToEigen(trafo.m_mRot), sr / s), dTolerance);
  const Eigen::Vector3d centre = ToEigen(trafo.m_vSource);
  EXPECT_LT(MaxDifference(sr * centre + expected.topRightCorner<3, 1>(), ToEigen(trafo.m_vTarget)),
            dTolerance * (1.0 + centre.norm()));
}

bool Estimate(ZuTrafo3d& trafo, const Eigen::Matrix3Xd& a, const Eigen::Matrix3Xd& b,
              bool bUnitScale = false) {
  const ZuPointList source = Points(a), target = Points(b);
  return trafo.CalcByControlPoints(&target, &source, 3, bUnitScale);
}

}  // namespace

// The published example: seven stations, local system to WGS84.
TEST(Trafo3d, SevenStationsGiveThePublishedResult) {
  const ZuPointList source = Sample("local.coo"), target = Sample("wgs84.coo");
  ASSERT_EQ(source.Count(), 7);
  ZuTrafo3d trafo;
  ASSERT_TRUE(trafo.CalcByControlPoints(&target, &source, 3, false));
  EXPECT_EQ(trafo.GetStatus(), eTrafo3DOk);
  EXPECT_EQ(trafo.GetCommonPoints(), 7);
  EXPECT_NEAR(trafo.m_dScale, 1.00000558251985, 1e-9);
  EXPECT_LT(ErrorAsRotation(trafo.m_mRot), 1e-9);

  const double residuals[7][3] = {{0.0940, 0.1351, 0.1402},    {0.0588, -0.0497, 0.0137},
                                  {-0.0399, -0.0879, -0.0081}, {0.0202, -0.0220, -0.0874},
                                  {-0.0919, 0.0139, -0.0055},  {-0.0118, 0.0065, -0.0546},
                                  {-0.0294, 0.0041, 0.0017}};
  ZuPointList out;
  ASSERT_TRUE(trafo.Transform(out, source, &target, false));
  const ZuPoint* p = out.First();
  for (const auto& residual : residuals) {
    SCOPED_TRACE(p->GetId());
    EXPECT_NEAR(p->m_dRedu1, residual[0], 6e-5);
    EXPECT_NEAR(p->m_dRedu2, residual[1], 6e-5);
    EXPECT_NEAR(p->m_dRedu3, residual[2], 6e-5);
    p = p->Next();
  }
  EXPECT_NEAR(trafo.GetRmsX(), 0.0582376, 1e-5);
  EXPECT_NEAR(trafo.GetRmsY(), 0.0645813, 1e-5);
  EXPECT_NEAR(trafo.GetRmsZ(), 0.0660886, 1e-5);
  EXPECT_EQ(trafo.GetMaxResidualPoint(), out.First());

  EXPECT_EQ(ZuTrafo3d::CalcScale(ZuVector(1.0, 2.0, 3.0), ZuVector(1.0, 5.0, 7.0), 10.0), 2.0);
  EXPECT_STREQ(GetTrafo3DStatusText(eTrafo3DOk), "ok");
  EXPECT_STREQ(GetTrafo3DStatusText(static_cast<eTrafo3DStatus>(7)), "unknown status");
}

TEST(Trafo3d, AgreesWithUmeyamaOnNoisyPoints) {
  std::mt19937_64 rng(51);
  for (int n : {3, 4, 7, 100, 1000}) {
    for (double s : {0.01, 1.0, 2.5, 1000.0}) {
      SCOPED_TRACE(::testing::Message() << n << " points, scale " << s);
      const Eigen::Matrix3Xd a = Random(rng, n);
      const Eigen::Matrix3Xd b =
          Map(s, RandomRotation(rng), Eigen::Vector3d(100.0, -200.0, 50.0), a) +
          0.002 * s * Random(rng, n);
      ZuTrafo3d trafo;
      ASSERT_TRUE(Estimate(trafo, a, b));
      ExpectUmeyama(trafo, a, b, n == 3 ? 1e-6 : 2e-8);
    }
  }
}

// Mirrored points have a best rotation too. Where the iteration reaches it, it is that one; where
// it doesn't, the status says so.
TEST(Trafo3d, MirroredPointsGiveTheBestRotationOrNone) {
  std::mt19937_64 rng(54);
  int iSolved = 0;
  for (int iRound = 0; iRound < 200; ++iRound) {
    Eigen::Matrix3Xd a = Random(rng, 12);
    a.row(1) *= 0.6;
    a.row(2) *= 0.02 * (iRound % 40);
    Eigen::Matrix3Xd mirrored = a;
    mirrored.row(2) *= -1.0;
    const Eigen::Matrix3Xd b = Map(1.2, RandomRotation(rng), Eigen::Vector3d::Zero(), mirrored);
    ZuTrafo3d trafo;
    if (Estimate(trafo, a, b)) {
      ++iSolved;
      EXPECT_LT(ErrorAsRotation(trafo.m_mRot), 1e-6) << iRound;
      ExpectUmeyama(trafo, a, b, 1e-6);
    } else {
      EXPECT_EQ(trafo.GetStatus(), eTrafo3DNoSolution);
    }
  }
  EXPECT_GT(iSolved, 50);
  EXPECT_LT(iSolved, 200);
}

// Points on a line leave the turn about it open; the result is a rotation that fits.
TEST(Trafo3d, CollinearPointsGiveSomeRotationThatFits) {
  std::mt19937_64 rng(55);
  const Eigen::Vector3d directions[] = {
      Eigen::Vector3d::UnitX(), Eigen::Vector3d::UnitZ(), -Eigen::Vector3d::UnitX(),
      Eigen::Vector3d(1.0, 2.0, 3.0).normalized(), Eigen::Vector3d(-3.0, 1.0, 0.5).normalized()};
  for (const auto& from : directions) {
    for (const auto& to : directions) {
      SCOPED_TRACE(::testing::Message() << from.transpose() << " to " << to.transpose());
      const Eigen::RowVector3d along(0.0, 1.0, 7.0);
      const Eigen::Matrix3Xd a = from * along, b = to * (2.0 * along);
      ZuTrafo3d trafo;
      ASSERT_TRUE(Estimate(trafo, a, b));
      EXPECT_NEAR(trafo.m_dScale, 2.0, 1e-9);
      EXPECT_LT(ErrorAsRotation(trafo.m_mRot), 1e-12);
      EXPECT_LT((ToEigen(trafo.m_mRot) * from - to).norm(), 1e-9);
    }
  }
}

TEST(Trafo3d, TooFewCommonPointsTouchNoParameter) {
  ZuPointList source = Sample("local.coo"), target = Sample("wgs84.coo");
  ZuTrafo3d trafo;
  trafo.m_dScale = 42.0;
  EXPECT_FALSE(trafo.CalcByControlPoints(&target, &source, 8, false));
  EXPECT_EQ(trafo.GetStatus(), eTrafo3DTooFewPoints);
  EXPECT_ROW("7 42", trafo.GetCommonPoints(), trafo.m_dScale);
  EXPECT_EQ(trafo.m_vSource, ZuVector(3));

  // Id 0 is no point, and matches none.
  source.First()->SetId(0);
  target.First()->SetId(0);
  EXPECT_FALSE(trafo.CalcByControlPoints(&target, &source, 7, false));
  EXPECT_EQ(trafo.GetCommonPoints(), 6);
}

TEST(Trafo3d, DegenerateInputGivesNoSolution) {
  const double dNan = std::numeric_limits<double>::quiet_NaN();
  std::mt19937_64 rng(56);
  const Eigen::Matrix3Xd a = Random(rng, 5);
  const Eigen::Matrix3Xd one = Eigen::Matrix3Xd::Constant(3, 5, 3.0);
  Eigen::Matrix3Xd bad = a;
  bad(1, 2) = dNan;
  const struct {
    const char* szCase;
    const Eigen::Matrix3Xd &source, &target;
  } cases[] = {{"source points coincide", one, a},
               {"target points coincide", a, one},
               {"no number in the source", bad, a},
               {"no number in the target", a, bad}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.szCase);
    ZuTrafo3d trafo;
    EXPECT_FALSE(Estimate(trafo, c.source, c.target));
    EXPECT_EQ(trafo.GetStatus(), eTrafo3DNoSolution);
    EXPECT_EQ(trafo.GetCommonPoints(), 5);
  }
  ZuTrafo3d trafo;
  EXPECT_FALSE(trafo.CalcByControlPoints(nullptr, nullptr, 0, false));
  EXPECT_EQ(trafo.GetStatus(), eTrafo3DNoSolution);
}

// The flag acts on the rotation alone; the scale keeps its estimate.
TEST(Trafo3d, UnitScaleLeavesTheScale) {
  std::mt19937_64 rng(57);
  const Eigen::Matrix3d r = RandomRotation(rng);
  const Eigen::Matrix3Xd a = Random(rng, 9);
  ZuTrafo3d trafo;
  ASSERT_TRUE(Estimate(trafo, a, Map(1.0, r, Eigen::Vector3d::Zero(), a), true));
  EXPECT_LT(MaxDifference(ToEigen(trafo.m_mRot), r), 1e-9);
  ASSERT_TRUE(Estimate(trafo, a, Map(1.1, r, Eigen::Vector3d::Zero(), a), true));
  EXPECT_NEAR(trafo.m_dScale, 1.1, 1e-9);
  EXPECT_GT(ErrorAsRotation(trafo.m_mRot), 1e-3);
}

TEST(Trafo3d, CopiesHoldEverything) {
  const ZuPointList source = Sample("local.coo"), target = Sample("wgs84.coo");
  ZuTrafo3d trafo;
  ASSERT_TRUE(trafo.CalcByControlPoints(&target, &source, 3, false));
  ZuPointList out;
  trafo.Transform(out, source, &target, false);
  ZuTrafo3d assigned;
  assigned = trafo;
  const ZuTrafo3d copied(trafo);
  for (const ZuTrafo3d* p : std::initializer_list<const ZuTrafo3d*>{&assigned, &copied}) {
    EXPECT_EQ(ToEigen(p->GetAsMatrix()), ToEigen(trafo.GetAsMatrix()));
    EXPECT_EQ(p->GetRmsX(), trafo.GetRmsX());
    EXPECT_EQ(p->GetMaxResidualPoint(), out.First());
  }
}

TEST(Trafo3d, MatrixIsTheProductOfItsThreeParts) {
  std::mt19937_64 rng(58);
  ZuTrafo3dData data;
  ZuMatrix m(4, 4);
  data.m_vTarget = ZuVector(5.0, 6.0, 7.0);
  data.GetAsMatrix(m);
  double x = 1.0, y = 2.0, z = 3.0;
  EXPECT_TRUE(m.PTrans3D(&x, &y, &z));
  EXPECT_EQ(ZuVector(x, y, z), data.m_vTarget) << "without an estimate all points go to xt";

  const Eigen::Matrix3d r = RandomRotation(rng);
  for (int i = 1; i <= 3; ++i) {
    for (int j = 1; j <= 3; ++j) data.m_mRot[i][j] = r(i - 1, j - 1);
  }
  data.m_vSource = ZuVector(-1.0, 2.0, 0.5);
  data.m_dScale = 3.0;
  const Eigen::Vector3d p(0.3, 0.2, 0.1);
  const Eigen::Vector3d expected =
      3.0 * r * (p - ToEigen(data.m_vSource)) + ToEigen(data.m_vTarget);
  const Eigen::Vector4d image = ToEigen(data.GetAsMatrix()) * p.homogeneous();
  EXPECT_LT(MaxDifference(image, expected.homogeneous()), 1e-14);
}

TEST(Trafo3d, FrameHasItsAxesAsColumns) {
  ZuMatrix m(3, 3), same(3, 3);
  ZuVector a(1.0, 2.0, 3.0), b(4.0, 2.0, 7.0), c(-2.0, 5.0, 1.0);
  ZuTrafo3d::unvect(a, b, c, &m);
  bool bOk = false;
  same.MakeRotMatrix(a, b, c, &bOk);
  EXPECT_LT(MaxDifference(ToEigen(m), ToEigen(same)), 1e-15);
}
