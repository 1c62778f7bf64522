#include "zu/rectify/polygon.h"

#include "tests/support/keyword_file.h"
#include "tests/support/random_geometry.h"
#include "tests/support/test.h"
#include "zu/numerics/line.h"
#include "zu/rectify/polygon_tools.h"
#include "zu/rectify/region.h"

namespace {

ZuPolygon Square() {
  return ZuPolygon(ZuPoint(1, 1.0, 2.0, 3.0), ZuPoint(2, 5.0, 6.0, 9.0), eLPolygonXY);
}

// The ring of coordinates as "x,y,z#id ".
std::string Text(const ZuPolygon& polygon) {
  std::string text;
  for (const ZuPoint* p = polygon.First(); p != nullptr; p = p->Next()) {
    for (const double d : {p->m_dX, p->m_dY, p->m_dZ})
      text += std::to_string(static_cast<int>(d)) + ",";
    text.back() = '#';
    text += std::to_string(p->GetId()) + " ";
  }
  return text;
}

TEST(Polygon, RectangleFromTwoCornersInAnyOrder) {
  const ZuPolygon polygon(ZuPoint(7, 5.0, 2.0, 3.0), ZuPoint(8, 1.0, 6.0, 9.0), eLPolygonIdXYZ);
  EXPECT_ROW("1,2,0#1 5,2,0#2 5,6,0#3 1,6,0#4  4 6 96", Text(polygon), polygon.Width(),
             polygon.Deep(), polygon.Boxvol());
  EXPECT_TRUE(polygon.GetRegion() == ZuRegion(1.0, 2.0, 5.0, 6.0));
  EXPECT_EQ(Text(ZuPolygon(ZuRegion(5.0, 6.0, 1.0, 2.0))), Text(polygon));
}

TEST(Polygon, BoxFollowsThePoints) {
  RandomGeometry random(137);
  ZuPointList list;
  for (unsigned int u = 1; u <= 30; ++u) {
    const ZuPoint3d p = random.Point(10.0);
    list.Add(ZuPoint(u, p.x - 100.0, p.y, p.z));
  }
  ZuPolygon polygon(&list, eLPolygonXYZ);
  EXPECT_LT(polygon.GetMax().m_dX, 0.0);  // from the first point on, not from the origin
  for (const ZuPoint* p = polygon.First(); p != nullptr; p = p->Next())
    EXPECT_TRUE(polygon.IsInBox(*p));
  const double dVolume = polygon.Boxvol();
  polygon.UpdateMinMax(ZuPoint(0, 50.0, 0.0, 0.0));
  EXPECT_GT(polygon.Boxvol(), dVolume);
  polygon.UpdateMinMax();
  EXPECT_EQ(polygon.Boxvol(), dVolume);
  EXPECT_TRUE(polygon.AddPoint(nullptr));
  EXPECT_TRUE(polygon.AddPoint(&polygon.GetPoints()));  // itself, once
  EXPECT_EQ(polygon.Count(), 60);
  ZuPolygon copy(eLPolygonXY);
  copy = polygon;
  EXPECT_EQ(copy.GetMode(), eLPolygonXYZ);
  EXPECT_EQ(Text(copy), Text(polygon));
}

TEST(Polygon, AreaIsThatOfTheClosedRing) {
  EXPECT_EQ(Square().Area(true), 16.0);
  EXPECT_EQ(Square().Area(false), 16.0);  // Required: the argument is not read
  ZuPolygon two(eLPolygonXY);
  two.AddPoint(ZuPoint(1, 0.0, 0.0));
  two.AddPoint(ZuPoint(2, 3.0, 4.0));
  EXPECT_EQ(two.Area(true), -1.0);
  // The triangles to the centre sum up to the area, signed.
  RandomGeometry random(139);
  for (int i = 0; i < 30; ++i) {
    ZuPolygon ring(eLPolygonXY);
    const int n = 3 + random.Index(10);
    for (int k = 0; k < n; ++k) {
      const ZuPoint3d p = random.Point(10.0);
      ring.AddPoint(ZuPoint(0, p.x, p.y));
    }
    const ZuPoint c = ring.Center();
    double dSum = 0.0;
    for (const ZuPoint* p = ring.First(); p != nullptr; p = p->Next()) {
      const ZuPoint* q = p->Next() != nullptr ? p->Next() : ring.First();
      dSum += (p->m_dX - c.m_dX) * (q->m_dY - c.m_dY) - (q->m_dX - c.m_dX) * (p->m_dY - c.m_dY);
    }
    EXPECT_NEAR(ring.Area(true), std::fabs(dSum) * 0.5, 1e-11);
  }
}

TEST(Polygon, LengthClosesWhereThereIsAnEdgeToClose) {
  ZuPolygon ring(eLPolygonXYZ);
  EXPECT_EQ(ring.Length(true), -1.0);
  ring.AddPoint(ZuPoint(1, 0.0, 0.0, 0.0));
  EXPECT_EQ(ring.Length(true), -1.0);
  ring.AddPoint(ZuPoint(2, 0.0, 3.0, 4.0));
  EXPECT_EQ(ring.Length(true), 5.0);  // two points: one edge
  ring.AddPoint(ZuPoint(3, 0.0, 3.0, 0.0));
  EXPECT_ROW("9 12", ring.Length(false), ring.Length(true));
  ring.AddPoint(ZuPoint(4, 0.0, 0.0, 0.0));
  EXPECT_EQ(ring.Length(true), 12.0);  // the first point repeated
}

TEST(Polygon, ReadTakesTheColumnsOfTheModeAndMakesRectangles) {
  for (const auto& [eMode, szRows, szExpected] : Cases<ELPolygonMode, const char*, const char*>{
           {eLPolygonXY, "0 0  10 0  5 8", "0,0,0#0 10,0,0#0 5,8,0#0 "},
           {eLPolygonIdXY, "7 0 0  8 10 0  9 5 8", "0,0,0#7 10,0,0#8 5,8,0#9 "},
           {eLPolygonXYZ, "0 0 1  10 0 2", "0,0,0#1 10,0,0#2 10,0,0#3 0,0,0#4 "},
           {eLPolygonIdXYZ, "7 0 0 1", "0,0,1#7 "},
           {eLPolygonXY, "1 2 5 6", "1,2,0#1 5,2,0#2 5,6,0#3 1,6,0#4 "},
           {eLPolygonXY, "1 2 5 6 7",
            "1,2,0#1 5,2,0#2 5,6,0#3 1,6,0#4 "},  // a cut row leaves no trace
           {eLPolygonXY, "", ""},
           {static_cast<ELPolygonMode>(9), "1 2 3 4", ""},
       }) {
    SCOPED_TRACE(szRows);
    ZuPolygon polygon(eMode);
    polygon.AddPoint(ZuPoint(99, 99.0, 99.0));
    int n = 0;
    KeywordFile file(std::string("REGION { ") + szRows + " }\nN 7\n");
    file.On("REGION", Link(&polygon, &ZuPolygon::Read)).On("N", &n).Run();
    EXPECT_EQ(eMode <= eLPolygonIdXYZ ? Text(polygon) : "", szExpected);
    EXPECT_EQ(n, 7);
    EXPECT_EQ(polygon.GetMax().m_dX == 99.0, polygon.Count() == 0 || eMode > eLPolygonIdXYZ);
  }
}

// A wrong token ends the reading; complete rows stay, with the work that follows them.
TEST(Polygon, RowsBeforeAFaultStay) {
  ZuPolygon polygon(eLPolygonXY);
  KeywordFile("REGION { 1 2 5 6 \"x\" 3 }\n").On("REGION", Link(&polygon, &ZuPolygon::Read)).Run();
  EXPECT_ROW("1,2,0#1 5,2,0#2 5,6,0#3 1,6,0#4  4", Text(polygon), polygon.Width());
}

TEST(PolygonTools, OrientationOfThreePoints) {
  const ZuPoint o(1, 0.0, 0.0), a(2, 2.0, 0.0);
  for (const auto& [x, y, iTurn] : Cases<double, double, int>{
           {1, 1, 1}, {1, -1, -1}, {3, 0, 1}, {1, 0, 0}, {2, 0, 0}, {-1, 0, -1}, {0, 0, 0}}) {
    EXPECT_EQ(ZuCounterClockwise(o, a, ZuPoint(3, x, y)), iTurn) << x << " " << y;
    EXPECT_EQ(CounterClockwise(ZuPoint3d(0, 0, 5), ZuPoint3d(2, 0, 6), ZuPoint3d(x, y, 7)), iTurn);
  }
}

TEST(PolygonTools, SegmentsMeetWhereTheyTouch) {
  const ZuLine base(0, 0, 0, 4, 0, 0);
  EXPECT_TRUE(ZuIntersect(base, ZuLine(2, -1, 0, 2, 1, 0)));
  EXPECT_TRUE(ZuIntersect(base, ZuLine(4, 0, 0, 6, 3, 0)));   // at an end
  EXPECT_TRUE(ZuIntersect(base, ZuLine(3, 0, 0, 9, 0, 0)));   // along
  EXPECT_FALSE(ZuIntersect(base, ZuLine(5, 0, 0, 9, 0, 0)));  // in line, apart
  EXPECT_FALSE(ZuIntersect(base, ZuLine(5, -1, 0, 5, 1, 0)));
  EXPECT_FALSE(ZuIntersect(base, ZuLine(0, 1, 0, 4, 2, 0)));
}

TEST(PolygonTools, IntervalsInAnyOrderOfTheirEnds) {
  RandomGeometry random(149);
  for (int i = 0; i < 500; ++i) {
    const double a1 = random.Value(1.0), a2 = random.Value(1.0);
    const double b1 = random.Value(1.0), b2 = random.Value(1.0);
    const double dLow = std::max(std::min(a1, a2), std::min(b1, b2));
    const double dHigh = std::min(std::max(a1, a2), std::max(b1, b2));
    double lo = -9.0, hi = -9.0;
    ZuIntervall(lo, hi, a1, a2, b1, b2);
    EXPECT_EQ(lo, dLow < dHigh ? dLow : 0.0);
    EXPECT_EQ(hi, dLow < dHigh ? dHigh : 0.0);
  }
  // Required: an interval that ends where the other starts has no common stretch with it.
  double lo = -9.0, hi = -9.0;
  ZuIntervall(lo, hi, 1.0, 5.0, 9.0, 5.0);
  EXPECT_ROW("0 0", lo, hi);
  ZuIntervall(lo, hi, 5.0, 9.0, 1.0, 5.0);  // the other order gives the point
  EXPECT_ROW("5 5", lo, hi);
}

TEST(PolygonTools, ClosedPathDoesNotCrossItself) {
  RandomGeometry random(151);
  for (int i = 0; i < 40; ++i) {
    ZuPointList in, out;
    const int n = 3 + random.Index(12);
    for (int k = 1; k <= n; ++k) {
      const ZuPoint3d p = random.Point(10.0);
      in.Add(ZuPoint(static_cast<unsigned int>(k), p.x, p.y, p.z));
    }
    out.Add(ZuPoint(99, 0.0, 0.0));
    ASSERT_EQ(ZuSimpleClosedPath(in, &out), n);
    ASSERT_EQ(out.Count(), n);
    EXPECT_EQ(in.First()->m_dRedu1, 0.0);  // the copies carry the angle
    std::vector<ZuLine> edges;
    for (const ZuPoint* p = out.First(); p != nullptr; p = p->Next()) {
      const ZuPoint* q = p->Next() != nullptr ? p->Next() : out.First();
      EXPECT_TRUE(q == out.First() || p->m_dRedu1 <= q->m_dRedu1);
      edges.emplace_back(p->m_dX, p->m_dY, 0.0, q->m_dX, q->m_dY, 0.0);
    }
    for (int a = 0; a < n; ++a) {
      for (int b = a + 2; b < n - (a == 0); ++b) {
        EXPECT_FALSE(
            ZuIntersect(edges[static_cast<std::size_t>(a)], edges[static_cast<std::size_t>(b)]));
      }
    }
  }
}

TEST(PolygonTools, ClosedPathBearsTiesAndNoNumbers) {
  ZuPointList list;
  for (unsigned int u = 1; u <= 50; ++u) list.Add(ZuPoint(u, 3.0, 4.0));
  EXPECT_TRUE(ZuCalcGravitycenter(list) == ZuPoint(0, 3.0, 4.0));
  EXPECT_TRUE(ZuCalcGravitycenter(ZuPointList()) == ZuPoint());
  EXPECT_EQ(ZuSimpleClosedPath(list, &list), 50);  // onto itself
  unsigned int uId = 0;
  for (const ZuPoint* p = list.First(); p != nullptr; p = p->Next()) EXPECT_EQ(p->GetId(), ++uId);
  list.Find(7u)->m_dY = std::nan("");
  list.Find(1u)->m_dX = std::nan("");
  EXPECT_ROW("50 0 0", ZuSimpleClosedPath(list, &list), ZuSimpleClosedPath(ZuPointList(), &list),
             list.Count());
}

TEST(PolygonTools, ProjectionKeepsDistancesInThePlane) {
  RandomGeometry random(157);
  for (int i = 0; i < 30; ++i) {
    const ZuAffinMap3d map =
        ZuAffinMap3d::Translate(random.Point(50.0).AsVector()) * random.Rotation();
    ZuPointList in, out;
    for (unsigned int u = 1; u <= 8; ++u) {
      const double x = random.Value(9.0), y = random.Value(9.0);
      const ZuPoint3d p = map * ZuPoint3d(x, y, 0.0);
      in.Add(ZuPoint(u, p.x, p.y, p.z));
    }
    ASSERT_TRUE(ZuProjectPointListTo2d(&out, in));
    ASSERT_EQ(out.Count(), 8);
    EXPECT_NEAR(out.First()->m_dX, 0.0, 1e-12);  // the origin is the first point
    EXPECT_NEAR(out.First()->m_dY, 0.0, 1e-12);
    for (const ZuPoint *p = in.First(), *q = out.First(); p != nullptr;
         p = p->Next(), q = q->Next()) {
      EXPECT_EQ(q->GetId(), p->GetId());
      EXPECT_EQ(q->m_dZ, 0.0);
      EXPECT_NEAR(q->Distance(*out.Last()), p->Distance(*in.Last()), 1e-10);
    }
    ASSERT_TRUE(ZuProjectPointListTo2d(&in, in));  // in place
    EXPECT_EQ(in.Last()->m_dX, out.Last()->m_dX);
  }
  ZuPointList line, out;
  for (unsigned int u = 1; u <= 5; ++u) line.Add(ZuPoint(u, u, u, u));
  out.Add(ZuPoint(1, 1.0, 1.0));
  EXPECT_TRUE(!ZuProjectPointListTo2d(&out, line) && !ZuProjectPointListTo2d(nullptr, line));
  EXPECT_EQ(out.Count(), 1);
}

}  // namespace
