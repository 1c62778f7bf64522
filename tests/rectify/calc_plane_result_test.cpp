// What a fit leaves behind: quality figures, deviations, foot points, log, events, memory.
#include "tests/support/random_geometry.h"
#include "tests/support/temp_file.h"
#include "tests/support/test.h"
#include "zu/foundation/logfile.h"
#include "zu/foundation/observer.h"
#include "zu/points/filter.h"
#include "zu/rectify/calc_plane.h"

namespace {

ZuPointList NoisyPoints(int n, unsigned long long uSeed) {
  RandomGeometry random(uSeed);
  ZuPointList list;
  for (int i = 1; i <= n; ++i) {
    const double x = random.Value(10.0), y = random.Value(10.0);
    list.Add(ZuPoint(static_cast<unsigned int>(i), x, y, 0.1 * x + random.Value(0.05)));
  }
  return list;
}

unsigned int IsOdd(const ZuObject* pObject) { return pObject->GetId() % 2; }
unsigned int IsFirstTwo(const ZuObject* pObject) { return pObject->GetId() <= 2 ? 4 : 0; }

// Required: sigma is that of the last residual alone, over n + 1; the medium distance is the root
// of the sum and not of a mean. Heights 2, -2, 2, -2 in a square leave the plane z = 0.
TEST(CalcPlaneResult, QualityFiguresAreThoseOfTheFormula) {
  ZuPointList list;
  const double adZ[] = {2.0, -2.0, 2.0, -2.0};
  for (int i = 0; i < 4; ++i) {
    list.Add(ZuPoint(1u + static_cast<unsigned int>(i), i == 1 || i == 2, i >= 2, adZ[i]));
  }
  // The first three points are at 45 degrees; more points in the middle flatten the approximation.
  list.InsertFirst(new ZuPoint(9, 0.5, 0.75, 0.0));
  list.InsertFirst(new ZuPoint(8, 0.75, 0.25, 0.0));
  list.InsertFirst(new ZuPoint(7, 0.25, 0.25, 0.0));
  ZuCalcPlane calc;
  ASSERT_TRUE(calc.CalcPlaneFromFilteredPoints(&list, true, false));
  EXPECT_NEAR(calc.GetPlane().C(), 1.0, 1e-15);
  double dSum = 0.0, dLast = 0.0;
  for (const ZuPoint* p = list.First(); p != nullptr; p = p->Next()) {
    dLast = calc.GetPlane().Dist(*p);
    dSum += dLast * dLast;
  }
  EXPECT_NEAR(calc.GetZuPlaneSigma0(), std::sqrt(4.0 / 8.0), 1e-12);  // seven points
  EXPECT_NEAR(dLast, -2.0, 1e-12);
  EXPECT_NEAR(calc.GetZuPlaneMediumPointDist(), 4.0, 1e-12);
  EXPECT_NEAR(dSum, 16.0, 1e-12);
}

TEST(CalcPlaneResult, DeviationsAndFootPointsBelongToThePlane) {
  ZuPointList list = NoisyPoints(25, 97);
  ZuCalcPlane calc;
  ASSERT_TRUE(calc.CalcPlaneFromFilteredPoints(&list, true, false));
  const ZuPlane& plane = calc.GetPlane();
  const ZuPoint* pFoot = calc.GetPointsInZuPlane()->First();
  double dSum = 0.0;
  for (const ZuPoint* p = list.First(); p != nullptr; p = p->Next(), pFoot = pFoot->Next()) {
    const double r = plane.Dist(*p);
    dSum += r * r;
    EXPECT_NEAR(p->m_dDX, r * plane.A(), 1e-14);
    EXPECT_NEAR(p->m_dDZ, r * plane.C(), 1e-14);
    EXPECT_EQ(p->m_dRedu1, 0.0);  // the scalar deviation stays with the copies
    EXPECT_EQ(pFoot->GetId(), p->GetId());
    EXPECT_NEAR(pFoot->m_dRedu1, r, 1e-14);
    EXPECT_NEAR(plane.Dist(*pFoot), 0.0, 1e-13);
    EXPECT_NEAR(pFoot->Distance(*p), std::fabs(r), 1e-13);
  }
  EXPECT_EQ(pFoot, nullptr);
  EXPECT_NEAR(calc.GetZuPlaneMediumPointDist(), std::sqrt(dSum), 1e-13);
}

TEST(CalcPlaneResult, RejectedPointsLoseTheirDeviations) {
  ZuPointList list = NoisyPoints(20, 101);
  for (ZuPoint* p = list.First(); p != nullptr; p = p->Next()) p->m_dDX = p->m_dDZ = 5.0;
  ZuCalcPlane calc, odd;
  calc.SetCooFilter(new ZuTestFilter(&IsOdd));
  ASSERT_TRUE(calc.CalcPlaneFromFilteredPoints(&list, true, false));
  ZuPointList half;
  for (ZuPoint* p = list.First(); p != nullptr; p = p->Next()) {
    if (IsOdd(p)) half.Add(*p);
    EXPECT_EQ(p->m_dDZ != 0.0, IsOdd(p) != 0);
  }
  ASSERT_TRUE(odd.CalcPlaneFromFilteredPoints(&half, false, false));
  EXPECT_EQ(calc.GetPlane().D(), odd.GetPlane().D());
  EXPECT_EQ(half.First()->m_dDZ, 0.0);  // not written back

  calc.SetCooFilter(new ZuTestFilter(&IsFirstTwo));
  EXPECT_FALSE(calc.CalcPlaneFromFilteredPoints(&list, true, false));
  EXPECT_EQ(calc.GetZuPlaneStatus(), ZuCalcPlane::TooLessPoints);
  for (ZuPoint* p = list.First(); p != nullptr; p = p->Next()) EXPECT_EQ(p->m_dDX, 0.0);
  calc.SetCooFilter(nullptr);
  EXPECT_TRUE(calc.CalcPlaneFromFilteredPoints(&list, true, false));
}

TEST(CalcPlaneResult, OfEqualIdsTheFirstCopyIsWrittenBack) {
  ZuPointList list = NoisyPoints(8, 103);
  list.Renumber(50, nullptr, static_cast<unsigned int>(-5));  // descending
  list.Last()->SetId(list.First()->GetId());
  ZuCalcPlane calc;
  ASSERT_TRUE(calc.CalcPlaneFromFilteredPoints(&list, true, false));
  for (const ZuPoint* p = list.First(); p != list.Last(); p = p->Next()) {
    EXPECT_NEAR(p->m_dDZ, calc.GetPlane().Dist(*p) * calc.GetPlane().C(), 1e-14);
  }
  EXPECT_EQ(list.Last()->m_dDZ, list.First()->m_dDZ);
}

struct EventLog : LinkHdl {
  std::string m_strEvents;
  ZuPointList* m_pList = nullptr;
  long OnEvent(ZuNotifyEvent* pEvent) {
    m_strEvents += std::to_string(static_cast<int>(pEvent->m_eType)) + ":" +
                   std::to_string(m_pList->Count()) + " ";
    return 0;
  }
};

TEST(CalcPlaneResult, ListsTellTheirChangesOnce) {
  ZuPointList list = NoisyPoints(6, 107);
  ZuCalcPlane calc;
  EventLog input, feet;
  input.m_pList = &list;
  feet.m_pList = calc.GetPointsInZuPlane();
  ZuObserver observer1(&list, Link(&input, &EventLog::OnEvent));
  ZuObserver observer2(calc.GetPointsInZuPlane(), Link(&feet, &EventLog::OnEvent));
  ASSERT_TRUE(calc.CalcPlaneFromFilteredPoints(&list, true, false));
  EXPECT_EQ(input.m_strEvents, "1:6 ");
  EXPECT_EQ(feet.m_strEvents, "1:0 ");  // emptied; filled without events
  ASSERT_TRUE(calc.CalcPlaneFromFilteredPoints(&list, false, false));
  EXPECT_ROW("1:6  1:0 1:0 ", input.m_strEvents, feet.m_strEvents);
  EXPECT_TRUE(calc.GetPointsInZuPlane()->IsNotifyEnabled());
}

// A second run gives the same bits as a first one, whatever the object computed before.
TEST(CalcPlaneResult, ReusedObjectsAndCopiesGiveTheSameResult) {
  ZuCalcPlane used;
  for (const int n : {50, 7, 3, 90, 12}) {
    ZuPointList list = NoisyPoints(n, 109);
    ZuCalcPlane fresh;
    ASSERT_TRUE(used.CalcPlaneFromFilteredPoints(&list, true, false));
    ASSERT_TRUE(fresh.CalcPlaneFromFilteredPoints(&list, true, false));
    const ZuCalcPlane copy(fresh);
    EXPECT_EQ(used.GetPlane().D(), fresh.GetPlane().D());
    EXPECT_EQ(copy.GetPlane().D(), fresh.GetPlane().D());
    EXPECT_EQ(copy.GetZuPlaneSigma0(), used.GetZuPlaneSigma0());
    ASSERT_EQ(used.GetPointsInZuPlane()->Count(), n);
    const ZuPoint* q = fresh.GetPointsInZuPlane()->First();
    for (const ZuPoint* p = used.GetPointsInZuPlane()->First(); p != nullptr;
         p = p->Next(), q = q->Next()) {
      EXPECT_TRUE(*p == *q);
    }
    // Its own foot points as input: they lie in the plane.
    ASSERT_TRUE(fresh.CalcPlaneFromFilteredPoints(fresh.GetPointsInZuPlane(), true, false));
    EXPECT_NEAR(fresh.GetZuPlaneMediumPointDist(), 0.0, 1e-12);
  }
}

// Counts its destruction.
class CountingFilter : public ZuTrueFilter {
 public:
  explicit CountingFilter(int* piDeleted) : m_piDeleted(piDeleted) {}
  ~CountingFilter() override { ++*m_piDeleted; }

 private:
  int* m_piDeleted;
};

TEST(CalcPlaneResult, FilterIsDeletedOnceByItsLastHolder) {
  int iFirst = 0, iSecond = 0;
  {
    ZuCalcPlane calc;
    calc.SetCooFilter(new CountingFilter(&iFirst));
    {
      const ZuCalcPlane copy(calc);
      ZuCalcPlane assigned;
      assigned = calc;
    }
    EXPECT_EQ(iFirst, 0);
    calc.SetCooFilter(new CountingFilter(&iSecond));
    EXPECT_ROW("1 0", iFirst, iSecond);
  }
  EXPECT_ROW("1 1", iFirst, iSecond);
}

TEST(CalcPlaneResult, LogHoldsTitleAndTableOfTheAcceptedPoints) {
  ZuPointList list;
  list.Add(ZuPoint(1, 0.0, 0.0, 0.5));
  list.Add(ZuPoint(2, 1.0, 0.0, 0.5));
  list.Add(ZuPoint(3, 0.0, 1.0, 0.5));
  list.First()->SetName("P1");
  ZuCalcPlane calc;
  ASSERT_TRUE(calc.CalcPlaneFromFilteredPoints(&list, true, false));
  const TempFile file;
  calc.WriteLogfile(String(file.Path()));
  const std::string text = file.Read();
  const std::size_t uTitle = text.find("3D PLANE DEFINITION\n\n\n");
  ASSERT_NE(uTitle, std::string::npos);
  const std::string table = text.substr(uTitle + 22);
  EXPECT_EQ(table.substr(0, table.find('\n')),
            "        #             Name                X                Y                Z"
            "                  dS");
  EXPECT_NE(table.find("\n        1 \"P1\"                            0                0"
                       "              0.5                   0\n"),
            std::string::npos)
      << table;
  EXPECT_EQ(text.substr(text.size() - 2), "\n\n");
}

}  // namespace
