#include "tests/support/random_geometry.h"
#include "tests/support/test.h"
#include "zu/numerics/line.h"
#include "zu/numerics/line3d.h"
#include "zu/numerics/plane3d.h"
#include "zu/numerics/select_volume3d.h"
#include "zu/numerics/triangle3d.h"

namespace {

constexpr double kPi = 3.14159265358979323846;

void ExpectNear(const _MVector& v, double x, double y, double z, double w, double dTolerance) {
  EXPECT_NEAR(v.x, x, dTolerance);
  EXPECT_NEAR(v.y, y, dTolerance);
  EXPECT_NEAR(v.z, z, dTolerance);
  EXPECT_EQ(v.w, w);
}

TEST(Vector3d, ArithmeticKeepsTheHomogeneousComponents) {
  const ZuVector3d a(1.0, 2.0, 3.0), b(-4.0, 5.0, 0.5);
  ExpectNear(a + b, -3.0, 7.0, 3.5, 0.0, 0.0);
  ExpectNear(-(a - b), -5.0, 3.0, -2.5, 0.0, 0.0);
  ExpectNear(a % b, 2.0 * 0.5 - 3.0 * 5.0, 3.0 * -4.0 - 0.5, 5.0 + 8.0, 0.0, 0.0);
  EXPECT_EQ(a * b, 7.5);
  ExpectNear(ZuPoint3d(1.0, 1.0, 1.0) + a, 2.0, 3.0, 4.0, 1.0, 0.0);
  ExpectNear(ZuPoint3d(1.0, 1.0, 1.0) - ZuPoint3d(0.0, 3.0, 0.0), 1.0, -2.0, 1.0, 0.0, 0.0);
  ExpectNear(a.AsPoint(), 1.0, 2.0, 3.0, 1.0, 0.0);
  EXPECT_TRUE(ZuVector3d::XAxis % ZuVector3d::YAxis * ZuVector3d::ZAxis == 1.0);
}

TEST(Vector3d, TestsOfAVectorUseTheirOwnBounds) {
  EXPECT_TRUE(ZuVector3d(1e-7, -1e-7, 0.0).IsDegenerate(1e-6));
  EXPECT_FALSE(ZuVector3d(0.0, 0.0, -1e-6).IsDegenerate(1e-6));
  EXPECT_TRUE(ZuVector3d(0.0, 1.5, 0.0).IsNormalized(0.5));
  EXPECT_TRUE(ZuVector3d(2.0, 1e-7, 0.0).IsPerpendicular(ZuVector3d(0.0, 5.0, 0.0), 1e-6));
  EXPECT_FALSE(ZuVector3d::XAxis.IsLinearIndependent(ZuVector3d::XAxis, 1e-6));
  EXPECT_TRUE(ZuVector3d::XAxis.IsLinearIndependent(-ZuVector3d::XAxis, 1e-6));
  EXPECT_FALSE(ZuVector3d::XAxis.IsLinearIndependent(ZuVector3d(), 1e-6));
}

// Required: Angle is not clamped. One of many parallel pairs rounds above 1.
TEST(Vector3d, AngleOfParallelVectorsMayBeNoNumber) {
  RandomGeometry random(7);
  bool bSeen = false;
  for (int i = 0; i < 200 && !bSeen; ++i) {
    const ZuVector3d v = random.Direction();
    bSeen = std::isnan(Angle(v, v * 3.0));
  }
  EXPECT_TRUE(bSeen);
  EXPECT_NEAR(Angle(ZuVector3d::XAxis, ZuVector3d(1.0, 1.0, 0.0)), kPi / 4.0, 1e-15);
}

TEST(Line3d, EndPointFollowsTheConstructorAndNotTheDirection) {
  ZuLine3d line(ZuPoint3d(1.0, 0.0, 0.0), ZuVector3d(0.0, 3.0, 4.0));
  ExpectNear(line.getEnd(), 1.0, 0.6, 0.8, 1.0, 1e-15);
  EXPECT_NEAR(line.getLength(), 1.0, 1e-15);
  line.setDirection(ZuVector3d(0.0, 0.0, 2.0));
  ExpectNear(line.getEnd(), 1.0, 0.6, 0.8, 1.0, 1e-15);  // Required: stays
  ExpectNear(line.Evaluate(2.5), 1.0, 0.0, 2.5, 1.0, 0.0);
}

// The gap of two skew lines is |n . (q - p)| / |n|, and p + t d with t = ((q - p) x e) . n / n^2
// the closest point on the first.
TEST(Line3d, MeetingOfSkewLinesFollowsTheDirectFormula) {
  RandomGeometry random(11);
  int iMet = 0;
  for (int i = 0; i < 500; ++i) {
    const ZuLine3d l1(random.Point(10.0), random.Direction());
    const ZuLine3d l2(random.Point(10.0), random.Direction());
    const ZuVector3d n = l1.getDirection() % l2.getDirection();
    ZuPoint3d p(99.0, 99.0, 99.0);
    const double dGap = l1.Intersect(l2, p);
    SCOPED_TRACE(i);
    if (n.Norm() <= std::sin(kPi / 180.0)) {
      EXPECT_EQ(dGap, -1.0);
      continue;
    }
    ++iMet;
    const ZuVector3d r = l2.getStart() - l1.getStart();
    const double nn = n * n;
    const ZuPoint3d p1 = l1.Evaluate((r % l2.getDirection()) * n / nn);
    const ZuPoint3d p2 = l2.Evaluate((r % l1.getDirection()) * n / nn);
    const double dTolerance = 1e-11 / nn;
    EXPECT_NEAR(dGap, std::fabs(r * n) / n.Norm(), dTolerance);
    const ZuPoint3d middle = p1.MiddlePoint(p2);
    ExpectNear(p, middle.x, middle.y, middle.z, 1.0, dTolerance);
  }
  EXPECT_GT(iMet, 450);
}

TEST(Line3d, LinesWithinADegreeHaveNoMeetingPoint) {
  const ZuLine3d base(ZuPoint3d(), ZuVector3d::XAxis);
  for (const double dDegrees : {0.0, 0.5, 179.5, 180.0}) {
    const double a = dDegrees / 180.0 * kPi;
    ZuPoint3d p(7.0, 8.0, 9.0);
    const ZuLine3d line(ZuPoint3d(0.0, 1.0, 0.0), ZuVector3d(std::cos(a), std::sin(a), 0.0));
    EXPECT_EQ(base.Intersect(line, p), -1.0) << dDegrees;
    ExpectNear(p, 7.0, 8.0, 9.0, 1.0, 0.0);
  }
  ZuPoint3d p;
  const ZuLine3d broken(ZuPoint3d{}, ZuVector3d{});  // direction 0 / 0
  EXPECT_EQ(base.Intersect(broken, p), -1.0);
}

TEST(Line3d, FootPointAndDistances) {
  const ZuLine3d line(ZuPoint3d(0.0, 0.0, 0.0), ZuPoint3d(4.0, 0.0, 0.0));
  ZuPoint3d foot;
  bool bInside = false;
  double t = 0.0;
  EXPECT_TRUE(line.getClosestPointTo(ZuPoint3d(3.0, 2.0, 0.0), foot, false));
  ExpectNear(foot, 3.0, 0.0, 0.0, 1.0, 0.0);
  EXPECT_FALSE(line.getClosestPointTo(ZuPoint3d(5.0, 2.0, 0.0), foot, false));
  EXPECT_TRUE(line.getClosestPointTo(ZuPoint3d(5.0, 2.0, 0.0), foot, true));
  EXPECT_EQ(line.getNormDistance(ZuPoint3d(9.0, 3.0, 4.0), foot), 5.0);
  EXPECT_EQ(line.getNormDistance(ZuPoint3d(4.0, 3.0, 4.0), bInside), 5.0);
  EXPECT_TRUE(bInside);
  line.getNormDistance(ZuPoint3d(4.5, 0.0, 0.0), bInside);
  EXPECT_TRUE(!bInside && line.getDistAtPoint(ZuPoint3d(2.5, 9e-11, 0.0), t));
  EXPECT_EQ(t, 2.5);
  EXPECT_FALSE(line.getDistAtPoint(ZuPoint3d(2.5, 2e-10, 0.0), t));
}

// Required: either coordinate alone exchanges the ends.
TEST(Line, AdjustExchangesByEitherCoordinate) {
  for (const auto& [x1, y1, x2, y2, bExchanged] : Cases<double, double, double, double, bool>{
           {0, 0, 1, 1, false}, {1, 0, 0, 1, true}, {0, 1, 1, 0, true}, {2, 3, 2, 3, false}}) {
    ZuLine line(x1, y1, 0.0, x2, y2, 0.0);
    line.Adjust();
    EXPECT_EQ(line.Start().m_dX, bExchanged ? x2 : x1);
    EXPECT_EQ(line.End().m_dY, bExchanged ? y1 : y2);
    EXPECT_ROW("0 0", line.Start().GetId(), line.End().GetId());
  }
}

TEST(Plane3d, NormalFacesTheOriginAndTheDistanceIsThatOfThePoint) {
  const ZuPlane3d away(ZuPoint3d(0.0, 0.0, 5.0), ZuVector3d(0.0, 0.0, 2.0));
  ExpectNear(away.GetNorm(), 0.0, 0.0, -1.0, 0.0, 0.0);
  EXPECT_ROW("5 2", away.GetDist(), away.Dist(ZuPoint3d(1.0, 1.0, 3.0)));
  // Required: |p| is stored, here not the distance of the plane z = 4.
  EXPECT_EQ(ZuPlane3d(ZuPoint3d(3.0, 0.0, 4.0), ZuVector3d::ZAxis).GetDist(), 5.0);
  // The second vector is crossed with the first.
  const ZuPlane3d spanned(ZuPoint3d(0.0, 0.0, -5.0), ZuVector3d::YAxis, ZuVector3d::XAxis);
  ExpectNear(spanned.GetNorm(), 0.0, 0.0, 1.0, 0.0, 0.0);
  const ZuPlane3d free(ZuVector3d(0.0, 0.0, 4.0), 8.0);
  ExpectNear(free.GetNorm(), 0.0, 0.0, 1.0, 0.0, 0.0);
  EXPECT_EQ(free.GetDist(), 8.0);
}

TEST(Plane3d, ThreePointsLieOnTheirPlane) {
  RandomGeometry random(3);
  for (int i = 0; i < 50; ++i) {
    const ZuPoint3d p1 = random.Point(5.0), p2 = random.Point(5.0), p3 = random.Point(5.0);
    const ZuPlane3d plane(p1, p2, p3);
    for (const ZuPoint3d& p : {p1, p2, p3}) EXPECT_NEAR(plane.Dist(p), 0.0, 1e-11);
    EXPECT_GT(plane.GetNorm() * ((p2 - p1) % (p3 - p1)), 0.0);
    const ZuPoint3d q = random.Point(20.0);
    EXPECT_NEAR(plane.Dist(plane.Projection(q)), 0.0, 1e-11);
    EXPECT_NEAR(q.Distance(plane.Projection(q)), std::fabs(plane.Dist(q)), 1e-11);
  }
  const ZuPoint3d p(1.0, 2.0, 3.0);
  ExpectNear(ZuPlane3d(p, p, p).GetNorm(), 0.0, 0.0, 0.0, 0.0, 0.0);
}

TEST(Plane3d, LinesMeetUnlessParallel) {
  const ZuPlane3d plane(ZuVector3d(0.0, 0.0, 1.0), -2.0);
  ZuPoint3d p(9.0, 9.0, 9.0);
  EXPECT_EQ(plane.Intersect(ZuLine3d(ZuPoint3d(1.0, 0.0, 0.0), ZuVector3d(3.0, 0.0, 4.0)), p), 0);
  ExpectNear(p, 2.5, 0.0, 2.0, 1.0, 1e-15);
  EXPECT_EQ(plane.Intersect(ZuLine3d(ZuPoint3d(), ZuVector3d(1.0, 0.0, 9e-7)), p), 1);
  EXPECT_EQ(plane.Intersect(ZuLine3d(ZuPoint3d(), ZuVector3d()), p), 1);  // no direction
  ExpectNear(p, 2.5, 0.0, 2.0, 1.0, 1e-15);
}

// Required: the direction is that of the line, the start follows the formula with the
// constant 21.0.
TEST(Plane3d, PlanesMeetInADirectionAndAStartByTheirFormula) {
  RandomGeometry random(5);
  for (int i = 0; i < 50; ++i) {
    const ZuPlane3d one(random.Direction(), random.Value(9.0));
    const ZuPlane3d other(random.Direction(), random.Value(9.0));
    ZuLine3d line;
    ASSERT_EQ(one.Intersect(other, line), 0);
    EXPECT_NEAR(line.getDirection() * one.GetNorm(), 0.0, 1e-14);
    EXPECT_NEAR(line.getDirection() * other.GetNorm(), 0.0, 1e-14);
    EXPECT_GT(one.GetNorm() % other.GetNorm() * line.getDirection(), 0.0);
    EXPECT_ROW("0 1", line.getStart().z, line.getStart().w);
  }
  // Worked by hand: the determinant is 0.8 * 0 - 0.6 * 21 = -12.6.
  ZuLine3d line;
  ASSERT_EQ(ZuPlane3d(ZuVector3d(0.6, 0.8, 0.0), 2.0)
                .Intersect(ZuPlane3d(ZuVector3d(0.0, 0.6, 0.8), 3.0), line),
            0);
  ExpectNear(line.getStart(), (-3.0 * 0.8 - 0.6 * 21.0) / -12.6, 3.0 * 21.0 / -12.6, 0.0, 1.0,
             1e-14);
  // x = 5 and y = 3 meet in (5, 3): y comes out another.
  const ZuPlane3d y3(ZuVector3d::YAxis, -3.0), x5(ZuVector3d::XAxis, -5.0);
  ASSERT_EQ(y3.Intersect(x5, line), 0);
  ExpectNear(line.getStart(), 5.0, 3.0 - 5.0 * 21.0, 0.0, 1.0, 1e-13);
}

TEST(Plane3d, WithoutAStartPlanesHaveADirection) {
  ZuLine3d line;  // b1 a2 - a1 21.0 is 0
  EXPECT_EQ(ZuPlane3d(ZuVector3d::ZAxis, 0.0).Intersect(ZuPlane3d(ZuVector3d::XAxis, 0.0), line),
            -1);
  ExpectNear(line.getDirection(), 0.0, 1.0, 0.0, 0.0, 0.0);
}

TEST(Triangle3d, RayHitsByBarycentricCoordinates) {
  RandomGeometry random(17);
  int iHits = 0;
  for (int i = 0; i < 400; ++i) {
    const ZuTrinagle3d triangle(random.Point(2.0), random.Point(2.0), random.Point(2.0));
    // A target a + s u + q v, in or out of the triangle as s and q say.
    const double s = 0.5 + random.Value(0.8), q = 0.5 + random.Value(0.8);
    const ZuPoint3d target =
        triangle.A() + s * (triangle.B() - triangle.A()) + q * (triangle.C() - triangle.A());
    const double dMargin = std::min(std::min(s, q), 1.0 - s - q);
    if (std::fabs(dMargin) < 1e-6) continue;
    const ZuVector3d direction = random.Direction();
    const double dDistance = 3.0 + random.Value(2.0);
    const ZuLine3d ray(target - dDistance * direction, direction);
    const ZuTrinagle3d_uvn prepared(triangle);
    if (prepared.IsDegenerate() || std::fabs(prepared.N() * direction) < 1e-3) continue;

    ZuPoint3d p, p2;
    double t = -1.0;
    SCOPED_TRACE(i);
    EXPECT_EQ(triangle.Intersect(ray, p, &t), dMargin > 0.0 ? 1 : 0);
    EXPECT_EQ(prepared.Intersect(ray, p2, nullptr), dMargin > 0.0 ? 1 : 0);
    ExpectNear(p, target.x, target.y, target.z, 1.0, 1e-9);
    ExpectNear(p2, p.x, p.y, p.z, 1.0, 0.0);
    if (dMargin > 0.0) {
      ++iHits;
      EXPECT_NEAR(t, dDistance, 1e-9);
    }
    // The same triangle behind the start: no hit, the point untouched.
    ZuPoint3d behind(1.0, 1.0, 1.0);
    EXPECT_EQ(triangle.Intersect(ZuLine3d(target + direction, direction), behind, nullptr), 0);
    ExpectNear(behind, 1.0, 1.0, 1.0, 1.0, 0.0);
  }
  EXPECT_GT(iHits, 40);
}

TEST(Triangle3d, SpecialPositionsHaveTheirOwnResult) {
  const ZuTrinagle3d triangle(ZuPoint3d(0, 0, 0), ZuPoint3d(1, 0, 0), ZuPoint3d(0, 1, 0));
  const double dNaN = std::numeric_limits<double>::quiet_NaN();
  const struct {
    ZuLine3d line;
    int iResult;
  } rays[] = {
      {{ZuPoint3d(0.5, 0.0, 1.0), -ZuVector3d::ZAxis}, 1},  // exactly on an edge
      {{ZuPoint3d(0.0, 1.0, 1.0), -ZuVector3d::ZAxis}, 1},  // on a corner
      {{ZuPoint3d(0.1, 0.1, 0.0), ZuVector3d::XAxis}, 2},   // in the plane
      {{ZuPoint3d(0.1, 0.1, 0.1), ZuVector3d::XAxis}, 0},   // parallel
      {{ZuPoint3d(dNaN, 0.1, 0.1), ZuVector3d::ZAxis}, 0},
  };
  ZuPoint3d p;
  for (const auto& ray : rays) EXPECT_EQ(triangle.Intersect(ray.line, p, nullptr), ray.iResult);
  EXPECT_EQ(ZuTrinagle3d().Intersect(rays[0].line, p, nullptr), -1);
}

TEST(SelectVolume3d, SelectsInsideTheSidePlanesWhileRunning) {
  Zu3dSelectVolume volume;
  const double adNormals[4][3] = {{1, 0, 1}, {-1, 0, 1}, {0, 1, 1}, {0, -1, 1}};
  for (int i = 0; i < 4; ++i) {
    volume.GetPlane(i).A() = adNormals[i][0];
    volume.GetPlane(i).B() = adNormals[i][1];
    volume.GetPlane(i).C() = adNormals[i][2];
  }
  volume.SetEye(ZuPoint3d(10.0, 0.0, 0.0));
  EXPECT_FALSE(volume.IsInSelectRange(10.0, 0.0, 5.0));
  volume.StartPyramid();
  EXPECT_TRUE(volume.IsModePyramid() && volume.IsRunning());
  EXPECT_TRUE(volume.IsInSelectRange(ZuPoint3d(15.0, 0.0, 5.0)));  // on a side
  EXPECT_FALSE(volume.IsInSelectRange(15.1, 0.0, 5.0));
  EXPECT_FALSE(volume.IsInSelectRange(std::nan(""), 0.0, 5.0));
  volume.Stop();
  EXPECT_FALSE(volume.IsInSelectRange(10.0, 0.0, 5.0));
}

}  // namespace
