#include "tests/support/random_geometry.h"
#include "tests/support/test.h"
#include "zu/numerics/bounding_box2d.h"
#include "zu/numerics/bounding_box3d.h"
#include "zu/numerics/line2d.h"
#include "zu/numerics/line3d.h"

namespace {

constexpr double kInfinite = std::numeric_limits<double>::infinity();

static_assert(ZuVector2d::XAxis % ZuVector2d::YAxis == 1.0);
static_assert((ZuPoint2d(3.0, 4.0) - ZuPoint2d::origin) * ZuVector2d::YAxis == 4.0);
static_assert(!ZuBoundingBox2d().IsValid());

// Lines of the plane agree with those in space that lie in z = 0, far from the origin, too.
TEST(PlanePrimitives, LinesAgreeWithThoseInSpace) {
  RandomGeometry random(29);
  for (int i = 0; i < 300; ++i) {
    const double dFar = i % 2 == 0 ? 0.0 : 5e6;
    ZuPoint2d p[5];
    ZuPoint3d q[5];
    for (int k = 0; k < 5; ++k) {
      p[k] = {dFar + random.Value(9.0), random.Value(9.0)};
      q[k] = {p[k].x, p[k].y, 0.0};
    }
    const ZuLine2d a(p[0], p[1]), b(p[2], p[3]);
    const ZuLine3d a3(q[0], q[1]), b3(q[2], q[3]);
    EXPECT_NEAR(a.getNormDistance(p[4]), a3.getNormDistance(q[4]), 1e-13 * (9.0 + dFar));
    EXPECT_EQ(a.Dist(p[4]) > 0.0, ((q[1] - q[0]) % (q[4] - q[0])).z > 0.0);
    ZuPoint3d foot3;
    ZuPoint2d foot, meet;
    EXPECT_EQ(a.getClosestPointTo(p[4], foot, false), a3.getClosestPointTo(q[4], foot3, false));
    EXPECT_NEAR(foot.Distance({foot3.x, foot3.y}), 0.0, 1e-14 * (9.0 + dFar));
    EXPECT_NEAR(foot.Distance(a.Projection(p[4])), 0.0, 0.0);
    EXPECT_GE(a.getSegmentDistance(p[4]), a.getNormDistance(p[4]));
    ZuPoint3d meet3;
    if (a3.Intersect(b3, meet3) < 0.0) continue;
    ASSERT_EQ(a.Intersect(b, meet), eLineMeetPoint);
    EXPECT_NEAR(meet.Distance({meet3.x, meet3.y}), 0.0, 1e-9 * (9.0 + meet.Distance(p[0])));
    EXPECT_EQ(a.IntersectSegment(b, meet) == eLineMeetPoint,
              (a.Dist(p[2]) > 0.0) != (a.Dist(p[3]) > 0.0) &&
                  (b.Dist(p[0]) > 0.0) != (b.Dist(p[1]) > 0.0));
  }
}

ZuLine2d Line(double dX1, double dY1, double dX2, double dY2) {
  return {ZuPoint2d(dX1, dY1), ZuPoint2d(dX2, dY2)};
}

TEST(PlanePrimitives, LinesTellHowTheyMeet) {
  const double dNan = std::nan("");
  for (const auto& [a, b, eLines, eSegments] : Cases<ZuLine2d, ZuLine2d, eLineMeet, eLineMeet>{
           {Line(0, 0, 2, 0), Line(1, -1, 1, 1), eLineMeetPoint, eLineMeetPoint},
           {Line(0, 0, 2, 0), Line(2, 0, 2, 5), eLineMeetPoint, eLineMeetPoint},  // ends touch
           {Line(0, 0, 2, 0), Line(3, -1, 3, 1), eLineMeetPoint, eLineMeetOutside},
           {Line(0, 0, 2, 0), Line(5, 1, 0, 1), eLineMeetParallel, eLineMeetParallel},
           {Line(1e6, 0.1, 3e6, 0.3), Line(7e6, 0.7, 5e6, 0.5), eLineMeetSame, eLineMeetSame},
           {Line(1, 1, 1, 1), Line(5, 1, 0, 1), eLineMeetDegenerate, eLineMeetDegenerate},
           {Line(1, 1, dNan, 1), Line(5, 1, 0, 1), eLineMeetDegenerate, eLineMeetDegenerate},
           {Line(1, 1, 2, 1), Line(0, 1, 0, kInfinite), eLineMeetDegenerate,
            eLineMeetDegenerate}}) {
    ZuPoint2d p(7.0, 8.0);
    EXPECT_EQ(a.Intersect(b, p), eLines);
    EXPECT_EQ(p.x == 7.0 && p.y == 8.0, eLines != eLineMeetPoint);
    EXPECT_EQ(b.IntersectSegment(a, p), eSegments);
  }
  EXPECT_NEAR(ZuVector2d(1.0, 1.0).Angle({-1.0, -1.0 + 1e-9}), std::numbers::pi - 5e-10, 1e-15);
  EXPECT_NEAR(ZuVector2d::FromDirection(2.5).Direction(), 2.5, 1e-15);
  EXPECT_TRUE(ZuVector2d::XAxis.IsLinearIndependent(-ZuVector2d::XAxis, 1e-6));
  EXPECT_FALSE(ZuVector2d::XAxis.IsLinearIndependent(ZuVector2d(), 1e-6));
}

// A right-angled triangle of 3, 4 and 5, computed by hand.
TEST(PlanePrimitives, ValuesByHand) {
  const ZuLine2d line = Line(2, 1, 6, 4);
  const ZuPoint2d p(10.0, 0.0), foot = line.Projection(p);
  ZuPoint2d meet;
  ASSERT_EQ(line.Intersect(Line(0, 10, 10, 5), meet), eLineMeetPoint);
  const ZuBoundingBox2d a(0, 0, 4, 3), b(1, -2, 6, 2);
  ZuBoundingBox2d both = a;
  both.Union(b);
  const std::pair<double, double> values[] = {
      {line.Dist(p), -5.6},
      {line.getParameter(p), 5.8},
      {foot.Distance({6.64, 4.48}), 0.0},
      {line.getSegmentDistance(p), std::sqrt(32.0)},
      {meet.Distance({8.4, 5.8}), 0.0},
      {ZuVector2d(1.0, 2.0).Angle({3.0, -1.0}), std::atan(7.0)},
      {a.Intersect(b).GetArea(), 6.0},
      {both.GetArea(), 30.0}};
  for (const auto& [dValue, dExpected] : values) EXPECT_NEAR(dValue, dExpected, 1e-14 * 10.0);
}

TEST(PlanePrimitives, BoxesAgreeWithThoseInSpace) {
  RandomGeometry random(31);
  int iOverlaps = 0;
  for (int i = 0; i < 200; ++i) {
    const ZuPoint3d p[] = {random.Point(1), random.Point(1), random.Point(1), random.Point(1)};
    const auto flat = [](const ZuPoint3d& q) { return ZuPoint2d(q.x, q.y); };
    ZuBoundingBox2d a(flat(p[0]), flat(p[1]));
    ZuBoundingBox3d a3(p[0], p[1]);
    const ZuBoundingBox2d b(flat(p[2]), flat(p[3])), common = a.Intersect(b);
    EXPECT_EQ(a.Overlap(b), a3.OverlapXY(ZuBoundingBox3d(p[2], p[3])));
    EXPECT_EQ(a.Overlap(b), common.IsValid());
    iOverlaps += common.IsValid();
    if (common.IsValid()) {
      EXPECT_TRUE(a.IsInBox(common.Center()) && b.IsInBox(common.Center()));
    }
    a.Union(b);
    a3.Union(ZuBoundingBox3d(p[2], p[3]));
    EXPECT_EQ((Row{a.Xmin(), a.Ymin(), a.Xmax(), a.Ymax(), a.GetCount()}.str),
              (Row{a3.Xmin(), a3.Ymin(), a3.Xmax(), a3.Ymax(), a3.GetCount()}.str));
    EXPECT_FALSE(ZuBoundingBox2d(-2, -2, 2, 2).CheckMax(a));
  }
  EXPECT_GT(iOverlaps, 50);
  const ZuBoundingBox2d left(0, 0, 1, 1), right(2, 1, 1, 0);
  EXPECT_TRUE(left.Overlap(right) && !left.Overlap(right, false));
  EXPECT_ROW("0 1 1", left.Intersect(right).GetArea(), left.Intersect(right).GetMax(),
             left.Intersect(right).Xmin());
  ZuBoundingBox2d box;
  box.Update(std::nan(""), 1.0);
  EXPECT_FALSE(box.IsValid());
  EXPECT_ROW("0 1", box.Center().x, box.GetCount());
}

}  // namespace
