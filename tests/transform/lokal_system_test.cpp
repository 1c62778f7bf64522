// Local systems: the definition and its text form, and the transformation made of it.
#include "zu/transform/lokal_system.h"

#include "tests/support/keyword_file.h"
#include "tests/support/random_geometry.h"
#include "tests/support/test.h"

namespace {

ZuLokalSystem System(int iAxisMode = 1, int iPlaneMode = 4) {
  ZuLokalSystem system;
  system.m_iAxisMode = iAxisMode;
  system.m_iPlaneMode = iPlaneMode;
  system.m_uIdA = system.m_uIdOrigin = 1;
  system.m_uIdB = 2;
  system.m_uIdC = 3;
  return system;
}

// Points 1 to 5 where they shall lie in the local system, 1 at the offset.
ZuPointList LocalPoints(const ZuVector3d& b, const ZuVector3d& c) {
  const double offset[] = {10.0, -20.0, 30.0};
  const double points[][3] = {
      {0, 0, 0}, {b.x, b.y, b.z}, {c.x, c.y, c.z}, {7.0, -3.0, 2.5}, {-4.0, 6.0, 1.0}};
  ZuPointList list;
  for (const auto& p : points) {
    list.Add(ZuPoint(static_cast<unsigned int>(list.Count() + 1), p[0] + offset[0],
                     p[1] + offset[1], p[2] + offset[2]));
  }
  return list;
}

// The same points as measured: in another system, in which lengths are dScale times as long.
ZuPointList Measured(const ZuPointList& local, double dScale, RandomGeometry& random) {
  const ZuAffinMap3d turn = random.Rotation();
  const ZuPoint3d shift = random.Point(500.0);
  ZuPointList list;
  for (const ZuPoint* p = local.First(); p != nullptr; p = p->Next()) {
    const ZuPoint3d q = turn * ZuPoint3d(p->m_dX, p->m_dY, p->m_dZ);
    list.Add(ZuPoint(p->GetId(), dScale * q.x + shift.x, dScale * q.y + shift.y,
                     dScale * q.z + shift.z));
  }
  return list;
}

void ExpectNear(const ZuPointList& list, const ZuPointList& expected, double dTolerance) {
  const ZuPoint* q = expected.First();
  for (const ZuPoint* p = list.First(); p != nullptr; p = p->Next(), q = q->Next()) {
    EXPECT_LT(p->Distance(q), dTolerance) << p->GetId();
  }
}

void SetOffset(ZuLokalSystem* pSystem, double x, double y, double z) {
  pSystem->m_dOffsetX = x;
  pSystem->m_dOffsetY = y;
  pSystem->m_dOffsetZ = z;
}

ZuPointList Triangle() {
  ZuPointList list;
  list.Add(ZuPoint(1, 0.0, 0.0, 0.0));
  list.Add(ZuPoint(2, 2.0, 0.0, 0.0));
  list.Add(ZuPoint(3, 0.0, 1.0, 0.0));
  return list;
}

std::string Written(const ZuLokalSystem& system) {
  std::ostringstream stream;
  system.Write(stream);
  return stream.str();
}

}  // namespace

// A stands at the offset, B on the axis, C in the plane on the positive side of its other axis,
// whatever the measured system; a plane that cannot hold the axis counts as the other one.
TEST(LokalSystem, PutsPointsIntoAxisAndPlane) {
  const ZuVector3d x(8, 0, 0), y(0, 8, 0), z(0, 0, 8);
  const ZuVector3d xy(3, 5, 0), yz(0, 5, 3), xz(5, 0, 3);
  const struct {
    int iAxisMode, iPlaneMode;
    ZuVector3d b, c;
  } rows[] = {{1, 4, x, xy}, {1, 6, x, xz}, {1, 5, x, xz}, {2, 4, y, xy}, {2, 5, y, yz},
              {2, 6, y, yz}, {3, 6, z, xz}, {3, 5, z, yz}, {3, 4, z, yz}};
  RandomGeometry random(41);
  for (const auto& row : rows) {
    SCOPED_TRACE(::testing::Message() << "axis " << row.iAxisMode << " plane " << row.iPlaneMode);
    const ZuPointList local = LocalPoints(row.b, row.c);
    const ZuPointList measured = Measured(local, 4.0, random);
    ZuLokalSystem system = System(row.iAxisMode, row.iPlaneMode);
    SetOffset(&system, 10.0, -20.0, 30.0);
    system.m_uScale2IdA = 1;
    system.m_uScale2IdB = 2;
    system.m_dScale2Dist = 8.0;

    for (const double dFixedScale : {0.0, 0.25}) {
      ZuTrafo3d trafo;
      ASSERT_TRUE(trafo.CalcByLocalSystem(system, &measured, dFixedScale, 0.0));
      EXPECT_EQ(trafo.GetStatus(), eTrafo3DOk);
      EXPECT_NEAR(trafo.m_dScale, 0.25, 1e-12);
      EXPECT_NEAR(trafo.m_mRot.Sarrus(), 1.0, 1e-12);
      ZuPointList list(measured);
      trafo.InPlaceTransform(&list);
      ExpectNear(list, local, 1e-10);
      ZuVector mean(3);  // the source centre is that of all points
      for (const ZuPoint* p = measured.First(); p != nullptr; p = p->Next()) {
        mean = mean + p->GetAsVector();
      }
      EXPECT_LT((trafo.m_vSource - mean * 0.2).Abs(), 1e-10);
    }
    // Another point as origin: 5 goes to the offset, the rest along.
    system.m_uIdOrigin = 5;
    SetOffset(&system, 6.0, -14.0, 31.0);
    ZuTrafo3d trafo;
    ASSERT_TRUE(trafo.CalcByLocalSystem(system, &measured, 0.25, 0.0));
    ZuPointList list(measured);
    trafo.InPlaceTransform(&list);
    ExpectNear(list, local, 1e-10);
  }
}

// The scale is the mean over the pairs whose points are there; those off by more than the
// tolerance are told.
TEST(LokalSystem, ScaleIsTheMeanOfThePairs) {
  const ZuPointList points = Triangle();
  ZuLokalSystem system = System();
  system.m_uScale1IdA = 1;
  system.m_uScale1IdB = 2;
  system.m_dScale1Dist = 2.0;  // 1.00
  system.m_uScale2IdA = 1;
  system.m_uScale2IdB = 3;
  system.m_dScale2Dist = 1.02;  // 1.02
  system.m_uScale3IdA = 1;
  system.m_uScale3IdB = 77;  // not there
  system.m_dScale3Dist = 9.0;
  ZuTrafo3d trafo;
  ASSERT_TRUE(trafo.CalcByLocalSystem(system, &points, 0.0, 0.01));
  EXPECT_DOUBLE_EQ(trafo.m_dScale, 1.01);
  EXPECT_FALSE(trafo.CalcByLocalSystem(system, &points, 0.0, 0.009));
  EXPECT_EQ(trafo.GetStatus(), eTrafo3DScaleMismatch);
  EXPECT_TRUE(trafo.IsScale1Bad() && trafo.IsScale2Bad() && !trafo.IsScale3Bad());

  // Three pairs, one off: it alone is told. A fixed scale does not look at them.
  system.m_dScale1Dist = 2.04;
  system.m_uScale3IdA = 2;
  system.m_uScale3IdB = 3;
  system.m_dScale3Dist = 1.5 * std::sqrt(5.0);
  EXPECT_FALSE(trafo.CalcByLocalSystem(system, &points, 0.0, 0.2));
  EXPECT_TRUE(!(trafo.IsScale1Bad() || trafo.IsScale2Bad()) && trafo.IsScale3Bad());
  EXPECT_TRUE(trafo.CalcByLocalSystem(system, &points, 3.0, 0.2) && !trafo.IsScale3Bad());
  EXPECT_EQ(trafo.m_dScale, 3.0);
}

TEST(LokalSystem, RefusesWithTheStatusOfTheFault) {
  const ZuPointList points = Triangle();
  ZuPointList line = Triangle(), spot = Triangle(), far = Triangle();
  line.Get(2)->m_dX = 5.0;
  line.Get(2)->m_dY = 0.0;
  spot.Get(1)->m_dX = 0.0;
  far.Add(ZuPoint(4, INFINITY, 0.0, 0.0));
  ZuPointList zero = Triangle();
  zero.Add(ZuPoint(0, 5.0, 5.0, 5.0));
  using Edit = void (*)(ZuLokalSystem&);
  const Edit none = [](ZuLokalSystem&) {};
  const Edit pair = [](ZuLokalSystem& s) { s.m_uScale1IdA = 1, s.m_uScale1IdB = 2; };
  for (const auto& [szFault, pPoints, dFixedScale, pfnEdit, eStatus] :
       Cases<const char*, const ZuPointList*, double, Edit, eTrafo3DStatus>{
           {"no scale", &points, 0.0, none, eTrafo3DBadDefinition},
           {"scale points missing", &points, 0.0,
            [](ZuLokalSystem& s) { s.m_uScale1IdA = 1, s.m_uScale1IdB = 9, s.m_dScale1Dist = 1; },
            eTrafo3DBadDefinition},
           {"pair of one point", &points, 1.0,
            [](ZuLokalSystem& s) { s.m_uScale3IdA = s.m_uScale3IdB = 2; }, eTrafo3DBadDefinition},
           {"axis of one point", &points, 1.0, [](ZuLokalSystem& s) { s.m_uIdB = 1; },
            eTrafo3DNoSolution},
           {"point missing", &points, 1.0, [](ZuLokalSystem& s) { s.m_uIdC = 9; },
            eTrafo3DBadDefinition},
           {"origin missing", &points, 1.0, [](ZuLokalSystem& s) { s.m_uIdOrigin = 9; },
            eTrafo3DBadDefinition},
           {"id 0", &zero, 1.0, [](ZuLokalSystem& s) { s.m_uIdC = 0; }, eTrafo3DBadDefinition},
           {"no list", nullptr, 1.0, none, eTrafo3DBadDefinition},
           {"unknown axis", &points, 1.0, [](ZuLokalSystem& s) { s.m_iAxisMode = 4; },
            eTrafo3DBadDefinition},
           {"distance 0", &points, 0.0, pair, eTrafo3DScaleUndefined},
           {"negative distance", &points, 0.0,
            [](ZuLokalSystem& s) { s.m_uScale1IdA = 1, s.m_uScale1IdB = 2, s.m_dScale1Dist = -1; },
            eTrafo3DScaleUndefined},
           {"fixed scale", &points, INFINITY, none, eTrafo3DScaleUndefined},
           {"on one line", &line, 1.0, none, eTrafo3DNoSolution},
           {"in one place", &spot, 1.0, none, eTrafo3DNoSolution},
           {"no centre", &far, 1.0, none, eTrafo3DNoSolution},
       }) {
    ZuLokalSystem system = System();
    pfnEdit(system);
    ZuTrafo3d trafo;
    EXPECT_FALSE(trafo.CalcByLocalSystem(system, pPoints, dFixedScale, 0.1)) << szFault;
    EXPECT_EQ(trafo.GetStatus(), eStatus) << szFault;
  }
  // A fixed scale makes up for a pair without a distance; coincident points are no scale.
  ZuLokalSystem system = System();
  pair(system);
  ZuTrafo3d trafo;
  EXPECT_TRUE(trafo.CalcByLocalSystem(system, &points, 2.0, 0.0));
  system.m_dScale1Dist = system.m_dScale2Dist = 2.0;
  system.m_uScale2IdA = 1;
  system.m_uScale2IdB = 4;
  ZuPointList twin = Triangle();
  twin.Add(ZuPoint(4, 0.0, 0.0, 0.0));
  EXPECT_FALSE(trafo.CalcByLocalSystem(system, &twin, 0.0, 0.1));
  EXPECT_EQ(trafo.GetStatus(), eTrafo3DScaleMismatch);
}

// The tests run in a fixed order, and a good definition leaves the status alone.
TEST(LokalSystem, IsValidTellsTheFirstFault) {
  const ZuPointList points = Triangle();
  const auto status = [](const ZuLokalSystem& s, const ZuPointList* pList, bool bStrict) {
    eTrafo3DStatus eStatus = eTrafo3DTooFewPoints;
    const bool bValid = s.IsValid(eStatus, pList, bStrict);
    EXPECT_EQ(bValid, eStatus == eTrafo3DTooFewPoints);
    return static_cast<int>(eStatus);
  };
  constexpr int kValid = eTrafo3DTooFewPoints;
  ZuLokalSystem system;
  EXPECT_EQ(status(system, nullptr, false), 4);
  system.m_uScale2IdA = system.m_uScale2IdB = 5;
  EXPECT_EQ(status(system, nullptr, false), 3);
  system = System();
  EXPECT_EQ(status(system, nullptr, false), kValid);
  EXPECT_EQ(status(system, &points, false), kValid);
  EXPECT_EQ(status(system, &points, true), 6);
  system.m_uIdOrigin = 8;
  EXPECT_EQ(status(system, nullptr, false), kValid);
  EXPECT_EQ(status(system, &points, true), 2);
  system = System();
  system.m_uScale1IdA = 5;  // half a pair
  EXPECT_EQ(status(system, &points, false), kValid);
  EXPECT_EQ(status(system, nullptr, true), kValid);
  EXPECT_EQ(status(system, &points, true), 2);
  system.m_uScale1IdA = 3;
  EXPECT_EQ(status(system, &points, true), kValid);
  system.m_uScale1IdB = 1;
  EXPECT_EQ(status(system, &points, false), 6);
}

TEST(LokalSystem, PlaneIsMadeToHoldTheAxis) {
  for (int iAxis = 0; iAxis <= 4; ++iAxis) {
    for (int iPlane = 3; iPlane <= 7; ++iPlane) {
      ZuLokalSystem system = System(iAxis, iPlane);
      const bool bChanged =
          (iAxis == 1 && iPlane == 5) || (iAxis == 2 && iPlane == 6) || (iAxis == 3 && iPlane == 4);
      for (int i = 0; i < 2; ++i) {
        system.AdjustPlanebyAxisMode();
        EXPECT_EQ(system.m_iPlaneMode, !bChanged ? iPlane : iAxis == 3 ? 5 : 4);
      }
    }
  }
}

TEST(LokalSystem, SuggestsTheFirstPoints) {
  ZuPointList list;
  ZuLokalSystem system;
  EXPECT_FALSE(system.Suggest(nullptr) || system.Suggest(&list));
  for (const unsigned int uId : {11u, 12u}) list.Add(ZuPoint(uId, 0, 0));
  EXPECT_FALSE(system.Suggest(&list));
  EXPECT_ROW("11 11 12 0", system.m_uIdA, system.m_uIdOrigin, system.m_uIdB, system.m_uIdC);
  list.Add(ZuPoint(13, 0, 0));
  EXPECT_TRUE(system.Suggest(&list));
  system.m_uIdOrigin = 14;
  EXPECT_TRUE(system.IsUsedInDef(11) && system.IsUsedInDef(12) && system.IsUsedInDef(13) &&
              !system.IsUsedInDef(14));
}

TEST(LokalSystem, TextFormReadsBack) {
  ZuLokalSystem system = System(3, 6);
  SetOffset(&system, 0.1, -2.5, 12345.0);
  system.m_uScale1IdA = 2147483647u;
  system.m_uScale1IdB = 5;
  system.m_dScale1Dist = 1.0 / 3.0;
  const std::string strText = Written(system);
  EXPECT_EQ(strText,
            "3 1 2\n"
            "6 3\n"
            "1              0.1             -2.5            12345\n"
            "2147483647 5 0.3333333333333333\n"
            "0 0                0\n"
            "0 0                0");
  ZuLokalSystem back;
  int iBehind = 0;
  KeywordFile("LOKAL { " + strText + " }\nBEHIND 7\n")
      .On("LOKAL", [&](auto* p) { return back.Read(p); })
      .On("BEHIND", &iBehind)
      .Run();
  EXPECT_EQ(iBehind, 7);
  EXPECT_EQ(Written(back), strText);
  EXPECT_EQ(back.m_dScale1Dist, 0.3333333333333333);
}
