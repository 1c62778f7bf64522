#include "tests/support/random_geometry.h"
#include "tests/support/test.h"
#include "zu/numerics/aligned_bounding_box3d.h"
#include "zu/numerics/center_point3d.h"

namespace {

constexpr double kMax = std::numeric_limits<double>::max();

TEST(BoundingBox3d, EmptyUntilUpdated) {
  ZuBoundingBox3d box(1.0, 5.0, 3.0, 4.0, 2.0, 6.0);
  EXPECT_ROW("2 0", box.Ymin(), box.GetCount());
  EXPECT_TRUE(box.IsValid());
  box.Reset();
  EXPECT_FALSE(box.IsValid());
  EXPECT_ROW("0 1", box.Center().x, box.Center().w);
  box.Update(std::numeric_limits<double>::quiet_NaN(), 1.0, 1.0);
  EXPECT_FALSE(box.IsValid());
  box.Update(ZuPoint3d(3.0, 1.0, 2.0));
  EXPECT_TRUE(box.IsValid());
  EXPECT_EQ(box.GetCount(), 2u);
}

// Required: validity is judged by the values alone.
TEST(BoundingBox3d, MostNegativeLimitCountsAsEmpty) {
  EXPECT_FALSE(ZuBoundingBox3d(-kMax, 0.0, 0.0, -kMax, 1.0, 1.0).IsValid());
}

// Required: a union counts one, whatever the other box holds.
TEST(BoundingBox3d, UnionCountsOne) {
  ZuBoundingBox3d box, other;
  for (int i = 0; i < 5; ++i) other.Update(i, 2.0 * i, -i);
  box.Union(other);
  EXPECT_EQ(box.GetCount(), 1u);
  EXPECT_EQ(box.GetVol(), 4.0 * 8.0 * 4.0);
  EXPECT_ROW("4 8", box.GetMin(), box.GetMax());
  box.Union(ZuBoundingBox3d());
  EXPECT_ROW("128 2", box.GetVol(), box.GetCount());
}

TEST(BoundingBox3d, OverlapAgreesWithACommonPoint) {
  RandomGeometry random(23);
  int iOverlaps = 0;
  for (int i = 0; i < 300; ++i) {
    const ZuBoundingBox3d a(random.Point(1.0), random.Point(1.0));
    const ZuBoundingBox3d b(random.Point(1.0), random.Point(1.0));
    const ZuPoint3d common(std::max(a.Xmin(), b.Xmin()), std::max(a.Ymin(), b.Ymin()),
                           std::max(a.Zmin(), b.Zmin()));
    const bool bCommon = a.IsInBox(common) && b.IsInBox(common);
    iOverlaps += bCommon;
    EXPECT_EQ(a.Overlap(b, true), bCommon) << i;
    EXPECT_EQ(a.OverlapYZ(b), a.IsInYZ(common.y, common.z) && b.IsInYZ(common.y, common.z)) << i;
  }
  EXPECT_GT(iOverlaps, 50);
  const ZuBoundingBox3d left(0, 0, 0, 1, 1, 1), right(1, 0, 0, 2, 1, 1);
  EXPECT_TRUE(left.Overlap(right, true) && !left.Overlap(right, false));
  EXPECT_FALSE(left.Overlap(ZuBoundingBox3d(0, 2, 0, 1, 3, 1), true));  // apart in y only
}

TEST(BoundingBox3d, CheckMaxIsFalseOnlyStrictlyAround) {
  const ZuBoundingBox3d inner(0, 0, 0, 1, 1, 1);
  EXPECT_FALSE(ZuBoundingBox3d(-1, -1, -1, 2, 2, 2).CheckMax(inner));
  for (int i = 0; i < 6; ++i) {
    double ad[] = {-1, -1, -1, 2, 2, 2};
    ad[i] = i < 3 ? 0.0 : 1.0;
    EXPECT_TRUE(ZuBoundingBox3d(ad[0], ad[1], ad[2], ad[3], ad[4], ad[5]).CheckMax(inner)) << i;
  }
}

TEST(AlignedBoundingBox3d, CornersEncloseThePointsInTheWorld) {
  RandomGeometry random(29);
  ZuAlignedBoundingBox3d box(random.Rotation() * ZuAffinMap3d::Translate(3.0, -4.0, 5.0));
  ZuPoint3d points[40];
  for (ZuPoint3d& p : points) box.Update(p = random.Point(2.0));
  for (const ZuPoint3d& p : points) EXPECT_TRUE(box.IsInBox(p));
  EXPECT_EQ(box.Box().GetCount(), 40u);
  // Corner 0 and its neighbours 1, 2, 4 span the sizes; opposite corners share the centre.
  EXPECT_NEAR(box.GetPoint(0).Distance(box.GetPoint(1)), box.GetXSize(), 1e-12);
  EXPECT_NEAR(box.GetPoint(0).Distance(box.GetPoint(2)), box.GetYSize(), 1e-12);
  EXPECT_NEAR(box.GetPoint(0).Distance(box.GetPoint(4)), box.GetZSize(), 1e-12);
  for (int i = 0; i < 4; ++i) {
    EXPECT_NEAR(box.GetPoint(i)
                    .MiddlePoint(box.GetPoint(7 - i))
                    .Distance(box.GetPoint(0).MiddlePoint(box.GetPoint(7))),
                0.0, 1e-12);
  }
  box.InitBox();
  EXPECT_FALSE(box.IsValid());
}

TEST(CenterPoint3d, MergingAndTakingOutFollowTheSums) {
  RandomGeometry random(31);
  ZuCenterPoint3d all, first, second;
  ZuPoint3d points[30];
  for (int i = 0; i < 30; ++i) {
    points[i] = random.Point(100.0);
    all.Add(points[i]);
    (i < 12 ? first : second).Add(points[i]);
  }
  first.Add(second);
  EXPECT_EQ(first.GetCount(), 30);
  EXPECT_NEAR(first.Point().Distance(all.Point()), 0.0, 1e-12);
  for (int i = 29; i >= 1; --i) all.Subtract(points[i]);
  EXPECT_EQ(all.GetCount(), 1);
  EXPECT_NEAR(all.Point().Distance(points[0]), 0.0, 1e-9);
  all.Subtract(points[0]);
  all.Subtract(points[0]);
  EXPECT_ROW("0 0", all.GetCount(), all.x());
  ZuCenterPoint3d empty;
  empty.Add(ZuCenterPoint3d());
  EXPECT_EQ(empty.x(), 0.0);
}

}  // namespace
