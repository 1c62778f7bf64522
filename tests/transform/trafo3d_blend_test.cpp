// The transformation that consumes its points, sorts them by residual and blends them.
#include "tests/support/test.h"
#include "zu/transform/trafo3d.h"

namespace {

// y = 2 x + (10, 20, 30).
ZuTrafo3d Doubling() {
  ZuTrafo3d trafo;
  trafo.m_mRot.SetIdent();
  trafo.m_dScale = 2.0;
  trafo.m_vTarget = ZuVector(10.0, 20.0, 30.0);
  return trafo;
}

// 1 agrees but for 0.3 in x, 2 is off by (3, 4, 0), 3 has no partner.
ZuPointList Points() {
  ZuPointList list;
  list.Add(ZuPoint(1, 1.0, 2.0, 3.0))->SetFlag(2);
  list.Add(ZuPoint(2, 4.0, 5.0, 6.0));
  list.Add(ZuPoint(3, 7.0, 8.0, 9.0));
  return list;
}

ZuPointList Control() {
  ZuPointList list;
  list.Add(ZuPoint(2, 21.0, 34.0, 42.0, 0));
  list.Add(ZuPoint(1, 12.3, 24.0, 36.0, 0));
  return list;
}

struct Outputs {
  ZuPointList good, bad, badControl;
};

}  // namespace

TEST(Trafo3dBlend, SortsByTheTolerance) {
  for (const double dTolerance : {1.0, 5.0}) {  // 5.0 is the residual of point 2 itself
    ZuTrafo3d trafo = Doubling();
    ZuPointList in = Points();
    const ZuPointList control = Control();
    Outputs out;
    out.good.Add(ZuPoint(50, 0.0, 0.0));
    ASSERT_TRUE(trafo.Transform(&out.good, &out.bad, &out.badControl, &in, dTolerance,
                                ZuSortHelper<ZuPoint>(&control), 0.0));
    EXPECT_TRUE(in.IsEmpty());
    const bool bRejected = dTolerance < 5.0;
    EXPECT_EQ(out.good.Count(), bRejected ? 3 : 4);
    EXPECT_EQ(out.bad.Count(), bRejected);
    EXPECT_EQ(out.badControl.Count(), bRejected);
    const ZuPoint* pOff = (bRejected ? out.bad : out.good).Find(2u);
    ASSERT_NE(pOff, nullptr);
    EXPECT_EQ(pOff->IsFlagSet(0x840), bRejected ? 0x840 : 0x40);
    EXPECT_EQ(out.good.Find(1u)->GetFlag(), 0x42);
    EXPECT_EQ(trafo.GetMaxResidualPoint(), pOff);  // good or bad
    EXPECT_ROW("3 4", pOff->m_dRedu1, pOff->m_dRedu2);
    // Over the good points, those without a partner included.
    EXPECT_EQ(trafo.GetResidualCount(), bRejected ? 2 : 3);
    EXPECT_EQ(trafo.GetRmsY(), bRejected ? 0.0 : std::sqrt(16.0 / 3.0));
    if (bRejected) {
      EXPECT_EQ(*out.badControl.First(), *control.Find(2u));
      EXPECT_NEAR(trafo.GetRmsX(), 0.3 / std::sqrt(2.0), 1e-14);
    }
  }
}

// 0 keeps the transformed coordinate, 1 takes the control point's, beyond is limited; a control
// coordinate is always taken, and the code with it.
TEST(Trafo3dBlend, BlendsTowardsTheControlPoint) {
  for (const auto& [dBlend, dShare] : Cases<double, double>{
           {0.0, 0.0}, {0.25, 0.25}, {1.0, 1.0}, {-3.0, 0.0}, {7.0, 1.0}, {NAN, 0.0}}) {
    SCOPED_TRACE(dBlend);
    ZuTrafo3d trafo = Doubling();
    ZuPointList in = Points();
    ZuPointList control = Control();
    control.First()->SetControlFlags(2);  // Y of point 2
    Outputs out;
    trafo.Transform(&out.good, &out.bad, &out.badControl, &in, 100.0,
                    ZuSortHelper<ZuPoint>(&control), dBlend);
    const ZuPoint* p = out.good.Find(2u);
    EXPECT_DOUBLE_EQ(p->m_dX, 18.0 + 3.0 * dShare);
    EXPECT_EQ(p->m_dY, 34.0);
    EXPECT_DOUBLE_EQ(p->m_dZ, 42.0);
    EXPECT_ROW("2 3 4", p->m_sControl, p->m_dRedu1, p->m_dRedu2);
    EXPECT_EQ(out.good.Last()->m_dX, 24.0);  // without partner
  }
}

// Lists that are not given: rejected points stay with the good ones, partners are not copied.
TEST(Trafo3dBlend, BearsMissingLists) {
  const ZuPointList control = Control();
  const ZuSortHelper<ZuPoint> index(&control);
  ZuTrafo3d trafo = Doubling();
  ZuPointList in = Points();
  Outputs out;
  EXPECT_FALSE(trafo.Transform(nullptr, &out.bad, &out.badControl, &in, 1.0, index, 0.0));
  EXPECT_FALSE(trafo.Transform(&out.good, &out.bad, &out.badControl, nullptr, 1.0, index, 0.0));
  EXPECT_EQ(in.Count(), 3);
  EXPECT_TRUE(trafo.Transform(&out.good, nullptr, nullptr, &in, 1.0, index, 0.0));
  EXPECT_EQ(out.good.Count(), 3);
  EXPECT_EQ(out.good.Find(2u)->IsFlagSet(0x800), 0x800);

  ZuPointList nothing;
  EXPECT_TRUE(trafo.Transform(&out.good, &out.bad, nullptr, &nothing, 1.0, index, 0.0));
  EXPECT_ROW("1 0", trafo.GetResidualCount(), trafo.GetRmsX());
  EXPECT_EQ(trafo.GetMaxResidualPoint(), nullptr);
}
