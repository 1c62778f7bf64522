#include "zu/rectify/region.h"

#include "tests/support/random_geometry.h"
#include "tests/support/temp_file.h"
#include "tests/support/test.h"
#include "zu/foundation/reader.h"

namespace {

void ExpectRegion(const ZuRegion& r, double dLeft, double dBottom, double dRight, double dTop) {
  EXPECT_EQ(r.Left(), dLeft);
  EXPECT_EQ(r.Bottom(), dBottom);
  EXPECT_EQ(r.Right(), dRight);
  EXPECT_EQ(r.Top(), dTop);
}

TEST(Region, ConstructorsSortAndCopiesDoNot) {
  ExpectRegion(ZuRegion(5.0, 6.0, 1.0, 2.0), 1.0, 2.0, 5.0, 6.0);
  ExpectRegion(ZuRegion(ZuPoint(1, 5.0, 2.0), ZuPoint(2, 1.0, 6.0)), 1.0, 2.0, 5.0, 6.0);
  ZuRegion unsorted;
  unsorted.Set(5.0, 2.0, 1.0, 6.0);
  ExpectRegion(ZuRegion(unsorted), 5.0, 2.0, 1.0, 6.0);
  EXPECT_EQ(unsorted.Area(), -16.0);
  unsorted.Sort();
  ExpectRegion(unsorted, 1.0, 2.0, 5.0, 6.0);
  EXPECT_TRUE(unsorted.GetUL() == ZuPoint(0, 1.0, 6.0) && unsorted.GetLR() == ZuPoint(0, 5.0, 2.0));
  EXPECT_TRUE(unsorted.GetCenter() == ZuPoint(0, 3.0, 4.0) && unsorted.GetCenter().GetId() == 0);
}

TEST(Region, IntersectionAgreesWithACommonPoint) {
  RandomGeometry random(163);
  int iCommon = 0;
  for (int i = 0; i < 300; ++i) {
    const ZuPoint3d p[] = {random.Point(1.0), random.Point(1.0), random.Point(1.0),
                           random.Point(1.0)};
    const ZuRegion a(p[0].x, p[0].y, p[1].x, p[1].y), b(p[2].x, p[2].y, p[3].x, p[3].y);
    const ZuPoint corner(0, std::max(a.Left(), b.Left()), std::max(a.Bottom(), b.Bottom()));
    const bool bCommon = a.Overlap(corner) && b.Overlap(corner);
    EXPECT_EQ(a.Overlap(b), bCommon);
    EXPECT_EQ(b.Overlap(a), bCommon);
    const ZuRegion common = a.Intersect(b);
    if (bCommon) {
      ++iCommon;
      ExpectRegion(common, corner.m_dX, corner.m_dY, std::min(a.Right(), b.Right()),
                   std::min(a.Top(), b.Top()));
    } else {
      EXPECT_EQ(common.Area(), 0.0);
    }
    ExpectRegion(a, std::min(p[0].x, p[1].x), std::min(p[0].y, p[1].y), std::max(p[0].x, p[1].x),
                 std::max(p[0].y, p[1].y));  // left alone
  }
  EXPECT_GT(iCommon, 50);
}

// Required: an axis without a common stretch is 0 to 0, also where the regions touch.
TEST(Region, TouchingRegionsOverlapAndHaveNoIntersection) {
  const ZuRegion left(1.0, 1.0, 2.0, 3.0), right(2.0, 1.0, 4.0, 2.0);
  EXPECT_TRUE(left.Overlap(right));
  ExpectRegion(left.Intersect(right), 0.0, 1.0, 0.0, 2.0);
}

// Required: maxima first, unsorted.
TEST(Region, UnionStandsInReverse) {
  const ZuRegion a(0.0, 0.0, 1.0, 1.0), b(5.0, -5.0, 6.0, 0.5);
  ZuRegion both = a.Union(b);
  ExpectRegion(both, 6.0, 1.0, 0.0, -5.0);
  EXPECT_TRUE(both.Overlap(ZuPoint(1, 3.0, 0.75)));  // a point test bears it
  EXPECT_TRUE(both.Overlap(ZuPoint(1, 6.0, -5.0)) && !both.Overlap(ZuPoint(1, 6.1, 0.0)));
  both.Sort();
  ExpectRegion(both, 0.0, -5.0, 6.0, 1.0);
}

TEST(Region, ArithmeticActsOnTheCorners) {
  ZuRegion r(1.0, 2.0, 5.0, 6.0);
  ExpectRegion(r + ZuRegion(1.0, 1.0, 2.0, 3.0), 2.0, 3.0, 7.0, 9.0);
  ExpectRegion(r - ZuRegion(0.0, 0.0, 9.0, 9.0), 1.0, 2.0, -4.0, -3.0);  // not sorted
  r += 0.5;
  ExpectRegion(r, 0.5, 1.5, 5.5, 6.5);
  r -= 3.0;
  ExpectRegion(r, 3.5, 4.5, 2.5, 3.5);
  ConvertUnit(&r, eZuUnitMeter, eZuUnitCentimeter);
  ExpectRegion(r, 350.0, 450.0, 250.0, 350.0);
  ConvertUnit(static_cast<ZuRegion*>(nullptr), eZuUnitMeter, eZuUnitFoot);
}

TEST(Region, ReadsFourNumbersAndWritesNothing) {
  const TempFile file("A { 5 6 1 2.5 }\nB 1 2 3 4\nA { 7 8 }\n");
  ZuReader reader(file.Path());
  ZuRegion a, b;
  ZuReaderObject objectA("A", Link(&a, &ZuRegion::Read)), objectB("B", Link(&b, &ZuRegion::Read));
  reader.RegisterObject(objectA);
  reader.RegisterObject(objectB);
  reader.DoProcess(false);
  ExpectRegion(b, 1.0, 2.0, 3.0, 4.0);
  ExpectRegion(a, 7.0, 8.0, 1.0, 2.5);  // the cut record keeps what it had
  std::ostringstream os;
  EXPECT_EQ(&a.Write(os), &os);
  EXPECT_EQ(os.str(), "");
}

}  // namespace
