#include <Eigen/Dense>

#include "tests/support/random_geometry.h"
#include "tests/support/test.h"
#include "zu/numerics/affin_map3d.h"
#include "zu/numerics/line3d.h"

namespace {

constexpr double kPi = 3.14159265358979323846;
using Matrix4 = Eigen::Matrix<double, 4, 4, Eigen::RowMajor>;

Matrix4 AsEigen(const ZuAffinMap3d& m) { return Eigen::Map<const Matrix4>(m.asDblArray()); }

void ExpectSame(const ZuAffinMap3d& a, const ZuAffinMap3d& b, double dTolerance) {
  for (int i = 0; i < 16; ++i) EXPECT_NEAR(a.asDblArray()[i], b.asDblArray()[i], dTolerance) << i;
}

// Rotation, scale, shear and translation.
ZuAffinMap3d RandomMap(RandomGeometry& random) {
  const ZuAffinMap3d turn = random.Rotation();
  ZuAffinMap3d shear;
  shear[0][1] = random.Value(0.8);
  shear[2][0] = random.Value(0.8);
  const ZuPoint3d t = random.Point(100.0);
  const double s = 1.5 + random.Value(1.0);
  return ZuAffinMap3d::Translate(t.AsVector()) * turn * shear * ZuAffinMap3d::Scale(s, -s, 0.5);
}

TEST(AffinMap3d, InverseAgreesWithAGeneralInverse) {
  RandomGeometry random(41);
  for (int i = 0; i < 100; ++i) {
    const ZuAffinMap3d m = RandomMap(random);
    const Matrix4 inverse = AsEigen(m).inverse();
    const ZuAffinMap3d own = ZuAffinMap3d::Inv(m);
    EXPECT_LT((AsEigen(own) - inverse).cwiseAbs().maxCoeff(), 1e-11);
    EXPECT_NEAR(m.Det(), AsEigen(m).determinant(), 1e-12);
    ExpectSame(own * m, ZuAffinMap3d(), 1e-12);
    ExpectSame(m * own, ZuAffinMap3d(), 1e-11);
    const ZuAffinMap3d other = RandomMap(random);
    ExpectSame(ZuAffinMap3d::Inv(m * other), ZuAffinMap3d::Inv(other) * own, 1e-9);
  }
}

TEST(AffinMap3d, SingularBlockStays) {
  ZuAffinMap3d m = ZuAffinMap3d::Scale(1.0, 0.0, 2.0);
  m[0][3] = 7.0;
  ZuAffinMap3d before = m;
  EXPECT_EQ(m.Invert(), 1);
  ExpectSame(m, before, 0.0);
  EXPECT_EQ(Det(m), 0.0);
  // The fourth row is never looked at.
  ZuAffinMap3d odd;
  odd[3][0] = odd[3][3] = 5.0;
  EXPECT_EQ(odd.Invert(), 0);
  ExpectSame(odd, ZuAffinMap3d(), 0.0);
}

TEST(AffinMap3d, ProductsActOneAfterTheOther) {
  RandomGeometry random(43);
  const ZuAffinMap3d a = RandomMap(random), b = RandomMap(random);
  const ZuPoint3d p = random.Point(10.0);
  const ZuVector3d v = random.Direction();
  EXPECT_NEAR((a * b * p).Distance(a * (b * p)), 0.0, 1e-10);
  EXPECT_NEAR((a * b * v - a * (b * v)).Norm(), 0.0, 1e-12);
  EXPECT_NEAR(((a * (p + v)) - (a * p) - a * v).Norm(), 0.0, 1e-11);
  ZuPoint3d inPlace = p;
  EXPECT_EQ(&inPlace.Transform(a), &inPlace);
  EXPECT_EQ(inPlace.Distance(a * p), 0.0);
  EXPECT_EQ((ZuAffinMap3d::Translate(1.0, 2.0, 3.0) * v - v).Norm(), 0.0);
}

// Required: the vector's own w takes part in the sums; the result has w = 0.
TEST(AffinMap3d, HomogeneousComponentsTakePart) {
  ZuVector3d v(1.0, 0.0, 0.0);
  v.w = 1.0;
  const ZuVector3d moved = ZuAffinMap3d::Translate(10.0, 0.0, 0.0) * v;
  EXPECT_ROW("11 0", moved.x, moved.w);
  ZuPoint3d p(1.0, 0.0, 0.0);
  p.w = 0.5;
  const ZuPoint3d half = ZuAffinMap3d::Translate(10.0, 0.0, 0.0) * p;
  EXPECT_ROW("6 1", half.x, half.w);
}

TEST(AffinMap3d, FramesCarryCoordinatesToTheWorld) {
  RandomGeometry random(47);
  const ZuFrame3d f(random.Point(5.0), random.Direction(), random.Direction(), random.Direction());
  const ZuFrame3d g(random.Point(5.0), random.Direction(), random.Direction(), random.Direction());
  ExpectSame(ZuAffinMap3d(f, f), ZuAffinMap3d(), 1e-12);
  const ZuPoint3d p(f, 2.0, 3.0, -1.0);
  const ZuPoint3d expected = f.Origin() + 2.0 * f.v1() + 3.0 * f.v2() - f.v3();
  EXPECT_NEAR(p.Distance(expected), 0.0, 1e-14);
  const ZuVector3d v(f, 2.0, 3.0, -1.0);
  EXPECT_NEAR((v - (expected - f.Origin())).Norm(), 0.0, 1e-14);
  // The map of two frames carries the first into the second, axes and coordinates.
  const ZuAffinMap3d map(f, g);
  EXPECT_NEAR((map * p).Distance(ZuPoint3d(g, 2.0, 3.0, -1.0)), 0.0, 1e-11);
  const ZuFrame3d mapped = map.Transform(f);
  EXPECT_NEAR(mapped.Origin().Distance(g.Origin()), 0.0, 1e-11);
  EXPECT_NEAR((mapped.v2() - g.v2()).Norm(), 0.0, 1e-11);

  ZuPoint3d o;
  ZuVector3d a, b, c;
  o.w = a.w = 0.25;
  ZuAffinMap3d(f).GetCoordSystem(o, a, b, c);
  EXPECT_ROW("0 0", o.Distance(f.Origin()), (b - f.v2()).Norm());
  EXPECT_EQ(o.w, 0.25);  // x, y, z alone are written
  EXPECT_EQ(a.w, 0.25);
}

TEST(AffinMap3d, LinesKeepTheirMappedPoints) {
  RandomGeometry random(53);
  const ZuAffinMap3d m = RandomMap(random);
  const ZuLine3d line(random.Point(3.0), random.Point(3.0));
  const ZuLine3d mapped = m.Transform(line);
  EXPECT_NEAR(mapped.getStart().Distance(m * line.getStart()), 0.0, 0.0);
  EXPECT_NEAR(mapped.getLength(), (m * line.getStart()).Distance(m * line.getEnd()), 1e-13);
  EXPECT_NEAR(mapped.getNormDistance(m * line.Evaluate(0.7)), 0.0, 1e-12);
}

TEST(AffinMap3d, RotationsAreRightHandedAndComposeInOrder) {
  const double a = 0.3, b = -0.4, c = 1.2;
  const ZuPoint3d y(0.0, 1.0, 0.0);
  EXPECT_NEAR((ZuAffinMap3d::RotX(kPi / 2.0) * y).z, 1.0, 1e-15);
  EXPECT_NEAR((ZuAffinMap3d::RotZ(kPi / 2.0) * y).x, -1.0, 1e-15);
  EXPECT_NEAR((ZuAffinMap3d::RotY(kPi / 2.0) * ZuPoint3d(0.0, 0.0, 1.0)).x, 1.0, 1e-15);
  ExpectSame(ZuAffinMap3d::RotXYZ(a, 0.0, 0.0), ZuAffinMap3d::RotX(a), 0.0);
  const Eigen::Matrix3d expected = (Eigen::AngleAxisd(c, Eigen::Vector3d::UnitZ()) *
                                    Eigen::AngleAxisd(b, Eigen::Vector3d::UnitY()) *
                                    Eigen::AngleAxisd(a, Eigen::Vector3d::UnitX()))
                                       .toRotationMatrix();
  const Matrix4 own = AsEigen(ZuAffinMap3d::RotXYZ(a, b, c));
  EXPECT_LT((own.topLeftCorner<3, 3>() - expected).cwiseAbs().maxCoeff(), 1e-15);
}

// Required: angles but the second are lost outside of the right angle, and the first is then asin
// of the first element of row 2.
TEST(AffinMap3d, RotAnglesDivideOnlyAtTheRightAngle) {
  double p1 = -1.0, p2 = -1.0, p3 = -1.0;
  ZuAffinMap3d::GetRotAngles(ZuAffinMap3d(), &p1, &p2, &p3);
  EXPECT_TRUE(p1 == 0.0 && p2 == 0.0 && p3 == 0.0);
  ZuAffinMap3d::GetRotAngles(ZuAffinMap3d::RotZ(0.1), &p1, &p2, &p3);
  EXPECT_NEAR(p1, 0.1, 1e-15);
  EXPECT_TRUE(p2 == 0.0 && p3 == 0.0);
  // Rows are scaled to length 1 and turned over for a left-handed block.
  ZuAffinMap3d::GetRotAngles(ZuAffinMap3d::Scale(-2.0, -2.0, -2.0) * ZuAffinMap3d::RotZ(0.1), &p1,
                             &p2, &p3);
  EXPECT_NEAR(p1, 0.1, 1e-15);
  const ZuAffinMap3d turn = ZuAffinMap3d::RotXYZ(0.2, -0.3, 0.4);
  ZuAffinMap3d::GetRotAngles(turn, &p1, &p2, &p3);
  EXPECT_NEAR(std::sin(p1), turn[1][0], 1e-15);
  EXPECT_NEAR(std::sin(p2), -turn[0][2], 1e-15);
  EXPECT_EQ(p3, 0.0);
  ZuAffinMap3d::GetRotAngles(ZuAffinMap3d::RotY(kPi / 2.0), &p1, &p2, &p3);
  EXPECT_NEAR(p2, 1.5 * kPi, 1e-7);
  EXPECT_EQ(p1, 0.0);  // asin(0 / c)
}

TEST(AffinMap3d, ScaleAndNormalMaps) {
  RandomGeometry random(59);
  ExpectSame(ZuAffinMap3d::GetScaleMap(random.Rotation() * ZuAffinMap3d::Scale(2.0, 3.0, 4.0)),
             ZuAffinMap3d::Scale(2.0, 3.0, 4.0), 1e-14);
  ExpectSame(ZuAffinMap3d::NormalTransformMap(ZuAffinMap3d::Scale(2.0, 2.0, 2.0)),
             ZuAffinMap3d::Scale(0.5, 0.5, 0.5), 0.0);
  // A normal stays perpendicular to the vectors of its plane under any map.
  for (int i = 0; i < 20; ++i) {
    const ZuAffinMap3d m = RandomMap(random);
    const ZuVector3d u = random.Direction(), v = random.Direction();
    const ZuVector3d n = ZuAffinMap3d::NormalTransformMap(m) * (u % v);
    EXPECT_NEAR(n * (m * u), 0.0, 1e-12);
    EXPECT_NEAR(n * (m * v), 0.0, 1e-12);
  }
}

TEST(AffinMap3d, EntitySystemAndCombination) {
  const ZuAffinMap3d map = MapEcsToWcs(ZuVector3d(0.0, 0.0, -1.0));
  EXPECT_NEAR((map * ZuPoint3d(1.0, 2.0, 3.0)).Distance(ZuPoint3d(-1.0, 2.0, -3.0)), 0.0, 1e-15);
  const ZuPoint3d p = AffinCombination(ZuPoint3d(0, 0, 0), ZuPoint3d(8, 4, 0), 3.0, 1.0);
  EXPECT_ROW("0 1", p.Distance(ZuPoint3d(2, 1, 0)), p.w);
  EXPECT_FALSE(std::isfinite(AffinCombination(p, ZuPoint3d(1, 1, 1), 1.0, -1.0).x));
}

}  // namespace
