// The ring test against the text that copies, turns and closes the ring.
#include "tests/support/count_allocations.h"
#include "tests/support/random_geometry.h"
#include "tests/support/test.h"
#include "zu/numerics/line.h"
#include "zu/rectify/polygon.h"
#include "zu/rectify/polygon_tools.h"

namespace {

// Word for word: copy the ring, turn it to its lowest point (the last of several), close it in
// front, count the edges that meet the segment to the right.
bool OverlapByCopies(const ZuPolygon& polygon, const ZuPoint& point) {
  if (!polygon.IsInBox(point)) return false;
  if (polygon.GetMode() >= eLPolygonXYZ || polygon.Count() == 0) return true;
  const double dMaxX = polygon.GetMax().m_dX;
  const double dReach = std::fabs((dMaxX - polygon.GetMin().m_dX) * 2.0) + std::fabs(dMaxX);
  const ZuLine segment(point.m_dX, point.m_dY, 0.0, dReach, point.m_dY, 0.0);

  ZuPointList ring;
  polygon.GetPoints().CopyTo(&ring);
  const ZuPoint* pLowest = ring.First();
  for (const ZuPoint* p = ring.First(); p != nullptr; p = p->Next()) {
    if (p->m_dY <= pLowest->m_dY) pLowest = p;
  }
  while (ring.First() != pLowest) ring.Add(ring.SubtractFirst());
  ring.InsertFirst(new ZuPoint(*ring.Last()));

  int iCount = 0;
  for (const ZuPoint* p = ring.First(); p->Next() != nullptr; p = p->Next()) {
    const ZuPoint* q = p->Next();
    const ZuLine edge(p->m_dX, p->m_dY, 0.0, q->m_dX, q->m_dY, 0.0);
    iCount += ZuIntersect(segment, edge);
  }
  return iCount % 2 == 1;
}

using Ring = std::vector<ZuPoint3d>;

ZuPolygon AsPolygon(const Ring& ring, ELPolygonMode eMode = eLPolygonXY) {
  ZuPolygon polygon(eMode);
  for (const ZuPoint3d& p : ring) polygon.AddPoint(ZuPoint(0, p.x, p.y, p.z));
  return polygon;
}

// Coordinates on a coarse grid bring points on edges, on vertices and on their levels, repeated
// points, spikes and crossings; the odd ones bring overflow, underflow and no numbers.
TEST(PolygonOverlap, EqualsTheCopyingTextInEveryCase) {
  const double dInf = std::numeric_limits<double>::infinity();
  const double adOdd[] = {std::nan(""), dInf, -dInf, 1e308, -1e308, 5e-324, -0.0, 1e-170};
  RandomGeometry random(113);
  int iInside = 0;
  for (int i = 0; i < 6000; ++i) {
    const int iGrid = 1 + random.Index(6), n = 1 + random.Index(9);
    const bool bOdd = i % 4 == 3, bSmooth = i % 4 == 2;
    const auto coordinate = [&] {
      if (bOdd && random.Index(6) == 0) return adOdd[random.Index(8)];
      return bSmooth ? random.Value(1.0) : random.Index(iGrid + 1) - iGrid / 2;
    };
    Ring ring;
    for (int k = 0; k < n; ++k) {
      const double x = coordinate(), y = coordinate();
      ring.push_back(ZuPoint3d(x, y, 0.0));
    }
    const ZuPolygon polygon = AsPolygon(ring, i % 2 == 0 ? eLPolygonXY : eLPolygonIdXY);
    for (int k = 0; k < 12; ++k) {
      const double x = coordinate(), y = coordinate();
      const ZuPoint point(1, x, y);
      const bool bInside = polygon.Overlap(point);
      iInside += bInside;
      ASSERT_EQ(bInside, OverlapByCopies(polygon, point)) << "ring " << i << ", " << x << " " << y;
    }
  }
  EXPECT_GT(iInside, 5000);
}

// Required: touching counts and a segment through a vertex meets both of its edges.
TEST(PolygonOverlap, LevelsOfVerticesFollowTheCount) {
  const ZuPolygon diamond = AsPolygon({{0, -2, 0}, {2, 0, 0}, {0, 2, 0}, {-2, 0, 0}});
  EXPECT_TRUE(diamond.Overlap(ZuPoint(1, 0.0, 0.5)));
  EXPECT_FALSE(diamond.Overlap(ZuPoint(1, 0.0, 0.0)));  // through (2, 0): two edges
  EXPECT_FALSE(diamond.Overlap(ZuPoint(1, 1.9, 1.9)));  // in the box, outside of the ring
}

TEST(PolygonOverlap, ModesChooseTheTest) {
  const Ring ring = {{0, 0, 0}, {4, 0, 1}, {0, 4, 2}};
  const ZuPoint corner(1, 3.5, 3.5, 1.0), above(1, 1.0, 1.0, 2.5);
  EXPECT_FALSE(AsPolygon(ring, eLPolygonXY).Overlap(corner));
  EXPECT_TRUE(AsPolygon(ring, eLPolygonXY).Overlap(above));
  EXPECT_TRUE(AsPolygon(ring, eLPolygonXYZ).Overlap(corner));  // the box alone
  EXPECT_FALSE(AsPolygon(ring, eLPolygonIdXYZ).Overlap(above));
  EXPECT_FALSE(AsPolygon(ring, static_cast<ELPolygonMode>(4)).Overlap(above));
  EXPECT_FALSE(AsPolygon(ring, static_cast<ELPolygonMode>(-1)).IsInBox(above));
  EXPECT_TRUE(ZuPolygon(eLPolygonXY).Overlap(ZuPoint()));  // an empty ring has the box (0, 0)
}

TEST(PolygonOverlap, AllocatesNothing) {
  RandomGeometry random(131);
  Ring ring;
  for (int i = 0; i < 200; ++i) ring.push_back(random.Point(5.0));
  const ZuPolygon polygon = AsPolygon(ring);
  const ZuPoint point(1, 0.1, 0.2);
  const std::size_t uBefore = CountAllocations();
  const bool bInside = polygon.Overlap(point);
  EXPECT_EQ(CountAllocations(), uBefore);
  EXPECT_EQ(bInside, OverlapByCopies(polygon, point));
  EXPECT_GT(CountAllocations(), uBefore);
}

}  // namespace
