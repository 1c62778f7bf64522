// The merge of two lists some of whose common points are wrong.
#include "tests/support/plain_robust_merge.h"
#include "tests/support/planted_lists.h"
#include "tests/support/test.h"

namespace {

constexpr double kTolerance = 0.01;

using Ids = std::vector<unsigned int>;

// A call with its outputs.
struct Merge {
  double dTolerance = kTolerance;
  bool bAbsolute = true;
  double dBlend = 0.0;
  int iMinPoints = 3, iExtraPoints = 1, iExtraSample = 0;
  bool bBadList = true, bBadControlList = true;

  ZuTrafo3d trafo;
  ZuPointList result, bad, badControl;

  eTrafo3DStatus Run(const ZuPointList& listA, const ZuPointList& listB) {
    return trafo.RobustCalcByControlPointsAndTransform(
        &result, bBadList ? &bad : nullptr, bBadControlList ? &badControl : nullptr, listA, listB,
        dTolerance, bAbsolute, dBlend, iMinPoints, false, iExtraPoints, iExtraSample);
  }
  eTrafo3DStatus Run(const PlantedLists& lists) { return Run(lists.listA, lists.listB); }
};

void ExpectSameBits(double a, double b, const char* szWhat) {
  EXPECT_EQ(std::bit_cast<std::uint64_t>(a), std::bit_cast<std::uint64_t>(b)) << szWhat;
}

void ExpectSameLists(const ZuPointList& a, const ZuPointList& b) {
  ASSERT_EQ(IdOrder(a), IdOrder(b));
  const ZuPoint* q = b.First();
  for (const ZuPoint* p = a.First(); p != nullptr; p = p->Next(), q = q->Next()) {
    SCOPED_TRACE(p->GetId());
    ExpectSameBits(p->m_dX, q->m_dX, "x");
    ExpectSameBits(p->m_dY, q->m_dY, "y");
    ExpectSameBits(p->m_dZ, q->m_dZ, "z");
    ExpectSameBits(p->m_dRedu1, q->m_dRedu1, "dx");
    ExpectSameBits(p->m_dRedu2, q->m_dRedu2, "dy");
    ExpectSameBits(p->m_dRedu3, q->m_dRedu3, "dz");
    EXPECT_EQ(p->GetFlag(), q->GetFlag());
    EXPECT_EQ(p->m_sControl, q->m_sControl);
  }
}

void ExpectSameParameters(const ZuTrafo3d& a, const ZuTrafo3d& b) {
  ExpectSameBits(a.m_dScale, b.m_dScale, "scale");
  const ZuMatrix mapA = a.GetAsMatrix(), mapB = b.GetAsMatrix();
  for (int i = 0; i < 16; ++i) ExpectSameBits(mapA.GetData()[i], mapB.GetData()[i], "map");
  ExpectSameBits(a.GetRmsX(), b.GetRmsX(), "rms x");
  ExpectSameBits(a.GetRmsY(), b.GetRmsY(), "rms y");
  ExpectSameBits(a.GetRmsZ(), b.GetRmsZ(), "rms z");
  EXPECT_EQ(a.GetResidualCount(), b.GetResidualCount());
}

// Points of one list only, control codes and flags of an earlier
// run.
void AddOddities(PlantedLists* pLists) {
  int i = 0;
  for (ZuPoint* p = pLists->listA.First(); p != nullptr; p = p->Next(), ++i) {
    p->SetControlFlags(static_cast<short int>(i % 8));
    if (i % 3 == 0) p->SetFlag(0x840 | 2);
  }
  for (ZuPoint* p = pLists->listB.First(); p != nullptr; p = p->Next()) p->SetFlag(0x841);
  pLists->listA.InsertFirst(new ZuPoint(7, 1.0, 2.0, 3.0));
  pLists->listA.Add(ZuPoint(9, 4.0, 5.0, 6.0))->SetFlag(0x840);
  pLists->listB.InsertFirst(new ZuPoint(8, 1.0, 2.0, 3.0))->SetFlag(0x840);
}

}  // namespace

// Every result is that of the plain way, to the last bit, whatever became of the search.
TEST(RobustMerge, EqualsThePlainWayOnLists) {
  int aiStatus[7] = {};
  for (unsigned int uSeed = 1; uSeed <= 400; ++uSeed) {
    SCOPED_TRACE(uSeed);
    RandomGeometry random(uSeed);
    const int n = 3 + random.Index(uSeed % 10 == 0 ? 120 : 20);
    PlantedLists lists(random, n, random.Index(n / 2 + 1), kTolerance);
    AddOddities(&lists);
    Merge merge;
    merge.bAbsolute = uSeed % 4 != 0;
    if (!merge.bAbsolute) merge.dTolerance = 0.0005;
    merge.dBlend = random.Value(0.7) + 0.5;
    merge.iMinPoints = 3 + random.Index(3);
    merge.iExtraPoints = random.Index(3);
    merge.iExtraSample = random.Index(3);
    merge.bBadList = uSeed % 3 != 0;
    merge.bBadControlList = uSeed % 5 != 0;
    merge.result.Add(ZuPoint(1, 0.5, 0.5, 0.5));

    PlainRobustMerge plain;
    ZuPointList result(merge.result), bad, badControl;
    std::srand(uSeed);
    const eTrafo3DStatus eExpected = plain.Run(
        &result, merge.bBadList ? &bad : nullptr, merge.bBadControlList ? &badControl : nullptr,
        lists.listA, lists.listB, merge.dTolerance, merge.bAbsolute, merge.dBlend, merge.iMinPoints,
        merge.iExtraPoints, merge.iExtraSample);
    std::srand(uSeed);
    ASSERT_EQ(merge.Run(lists), eExpected);
    EXPECT_EQ(merge.trafo.GetStatus(), eExpected);
    ++aiStatus[eExpected];
    ExpectSameLists(merge.result, result);
    ExpectSameLists(merge.bad, bad);
    ExpectSameLists(merge.badControl, badControl);
    if (eExpected == eTrafo3DOk) ExpectSameParameters(merge.trafo, plain.trafo);
    if (HasFailure()) return;
  }
  // All ways out were taken.
  EXPECT_GT(aiStatus[eTrafo3DOk], 100);
  EXPECT_GT(aiStatus[eTrafo3DTooFewPoints], 10);
  EXPECT_GT(aiStatus[eTrafo3DNoSolution], 10);
}

// The share of runs that reject the wrong points and no other.
TEST(RobustMerge, RejectsExactlyThePlantedPoints) {
  constexpr int kRuns = 200;
  for (const int n : {6, 10, 30, 100}) {
    for (const int iPercent : {20, 35}) {
      int iExact = 0;
      for (unsigned int uSeed = 1; uSeed <= kRuns; ++uSeed) {
        RandomGeometry random(uSeed * 1000 + static_cast<unsigned int>(n));
        const PlantedLists lists(random, n, n * iPercent / 100, kTolerance);
        std::srand(uSeed);
        Merge merge;
        iExact += merge.Run(lists) == eTrafo3DOk && IdsOf(merge.bad) == lists.wrong;
      }
      std::printf("n %3d, %2d wrong: %5.1f %% of %d runs reject exactly these\n", n,
                  n * iPercent / 100, 100.0 * iExact / kRuns, kRuns);
      if (n >= 30) {
        EXPECT_GE(iExact, kRuns * 95 / 100) << n << " points";
      }
    }
  }
}

// Statuses 1 and 4 leave the outputs and both inputs alone.
TEST(RobustMerge, FailureLeavesTheOutputsAlone) {
  RandomGeometry random(6);
  const PlantedLists good(random, 5, 0, kTolerance);
  const PlantedLists hopeless(random, 8, 7, kTolerance);
  PlantedLists coincident(random, 6, 0, kTolerance);
  for (ZuPoint* p = coincident.listB.First(); p != nullptr; p = p->Next()) p->m_dX = NAN;
  for (const auto& [lists, iMinPoints, iExtraPoints, eStatus] :
       Cases<const PlantedLists&, int, int, eTrafo3DStatus>{
           {good, 6, 0, eTrafo3DTooFewPoints},
           {hopeless, 3, 6, eTrafo3DTooFewPoints},  // 8 points, 9 for a search
           {hopeless, 5, 0, eTrafo3DNoSolution},    // samples of 4 are never enough
           {hopeless, 3, 5, eTrafo3DNoSolution},
           {coincident, 3, 1, eTrafo3DNoSolution}}) {
    std::srand(3);
    Merge merge;
    merge.iMinPoints = iMinPoints;
    merge.iExtraPoints = iExtraPoints;
    merge.result.Add(ZuPoint(1, 1.0, 1.0));
    const ZuPointList listA(lists.listA);
    EXPECT_EQ(merge.Run(lists), eStatus);
    EXPECT_EQ(merge.trafo.GetStatus(), eStatus);
    EXPECT_EQ(IdOrder(merge.result), Ids{1});
    EXPECT_TRUE(merge.bad.IsEmpty() && merge.badControl.IsEmpty());
    EXPECT_EQ(merge.trafo.GetMaxResidualPoint(), nullptr);
    ExpectSameLists(lists.listA, listA);
  }
}

// A share of the longest side of the common points' box in A: points of one list alone, however
// far off, do not count.
TEST(RobustMerge, RelativeToleranceIsAShareOfTheCommonBox) {
  ZuPointList listA, listB;
  const double corners[][3] = {{0, 0, 0}, {50, 0, 0}, {0, 30, 0}, {0, 0, 20}, {50, 30, 20}};
  unsigned int uId = 1;
  for (const auto& c : corners) {
    listB.Add(ZuPoint(uId, c[0], c[1], c[2]));
    listA.Add(ZuPoint(uId++, c[0], c[1], c[2]));
  }
  listA.Add(ZuPoint(50, 1e6, 1e6, 1e6));
  listB.Add(ZuPoint(uId, 25.0, 10.0, 5.0));
  ZuPoint* pOff = listA.Add(ZuPoint(uId, 25.0, 10.0, 5.0));
  for (double ZuPoint::*pd : {&ZuPoint::m_dX, &ZuPoint::m_dY, &ZuPoint::m_dZ}) {
    for (const double dOff : {0.05, 0.07}) {  // its residual is a little less
      const double dGood = pOff->*pd;
      pOff->*pd += dOff;
      std::srand(1);
      Merge merge;
      merge.bAbsolute = false;
      merge.dTolerance = 0.001;
      ASSERT_EQ(merge.Run(listA, listB), eTrafo3DOk);
      EXPECT_EQ(merge.bad.Count(), dOff > 0.06 ? 1 : 0) << dOff;
      if (dOff > 0.06) {
        EXPECT_LT(merge.trafo.GetRmsX(), 1e-9);  // the wrong point took no part
      }
      pOff->*pd = dGood;
    }
  }
}

// Of an id that stands twice the first counts; id 0 is no common point. Nothing gets lost.
TEST(RobustMerge, KeepsDoubleAndZeroIds) {
  RandomGeometry random(8);
  PlantedLists lists(random, 6, 0, kTolerance);
  for (ZuPointList* pList : {&lists.listA, &lists.listB}) {
    pList->Add(ZuPoint(102, 1e3, 1e3, 1e3));
    pList->Add(ZuPoint(0, 5.0, 6.0, 7.0));
  }
  Merge merge;
  EXPECT_EQ(merge.Run(lists), eTrafo3DOk);
  EXPECT_EQ(IdOrder(merge.result), (Ids{101, 102, 103, 104, 105, 106, 102, 0, 102, 0}));
}

// Exactly the demanded points, all good: no sample is drawn, so the generator stays where it was.
TEST(RobustMerge, GoodPointsNeedNoSearch) {
  RandomGeometry random(7);
  const PlantedLists lists(random, 4, 0, kTolerance);
  std::srand(11);
  const int iExpected = std::rand();
  std::srand(11);
  Merge merge;
  merge.iMinPoints = 4;
  EXPECT_EQ(merge.Run(lists), eTrafo3DOk);
  EXPECT_EQ(std::rand(), iExpected);
}
