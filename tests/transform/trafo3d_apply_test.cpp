// Transforming lists, with control points and without.
#include "tests/support/test.h"
#include "zu/transform/trafo3d.h"

namespace {

// Moves by (10, 20, 30).
ZuTrafo3d Shift() {
  ZuTrafo3d trafo;
  trafo.m_mRot.SetIdent();
  trafo.m_vTarget = ZuVector(10.0, 20.0, 30.0);
  return trafo;
}

std::vector<unsigned int> Ids(const ZuPointList& list) {
  std::vector<unsigned int> ids;
  for (const ZuPoint* p = list.First(); p != nullptr; p = p->Next()) ids.push_back(p->GetId());
  return ids;
}

using IdRow = std::vector<unsigned int>;

}  // namespace

TEST(Trafo3dApply, ResidualsAndControlCoordinates) {
  ZuPointList in, control, out;
  in.Add(ZuPoint(5, 1.0, 2.0, 3.0));
  in.Add(ZuPoint(2, 0.0, 0.0, 0.0));  // without partner
  in.Add(ZuPoint(9, 1.0, 1.0, 1.0));
  control.Add(ZuPoint(5, 11.5, 22.0, 32.0, 1 | 4));
  control.Add(ZuPoint(9, 11.0, 19.0, 31.0, 0));
  out.Add(ZuPoint(77, 0.0, 0.0, 0.0));

  ZuTrafo3d trafo = Shift();
  EXPECT_TRUE(trafo.Transform(out, in, &control, false));
  ASSERT_EQ(Ids(out), (IdRow{5, 2, 9}));

  const ZuPoint* p = out.First();
  EXPECT_ROW("11.5 22", p->m_dX, p->m_dY);
  EXPECT_EQ(p->m_dZ, 32.0) << "the flags of X and Z are set";
  EXPECT_ROW("0.5 0 -1", p->m_dRedu1, p->m_dRedu2, p->m_dRedu3);
  EXPECT_TRUE(p->IsFlagSet(0x40));
  p = p->Next();
  EXPECT_ROW("10 0", p->m_dX, p->m_dRedu1);
  p = p->Next();
  EXPECT_EQ(p->m_dY, 21.0) << "no flag, the transformed coordinate stays";
  EXPECT_EQ(p->m_dRedu2, -2.0);
  EXPECT_EQ(trafo.GetMaxResidualPoint(), p);
  EXPECT_EQ(in.First()->m_dX, 1.0);
  EXPECT_FALSE(in.First()->IsFlagSet(0x40));
}

// A point without partner adds nothing to the sums and is counted all the same.
TEST(Trafo3dApply, MeansAreTakenOverAllPoints) {
  ZuPointList in, control, out;
  in.Add(ZuPoint(1, 0.0, 0.0, 0.0));
  for (unsigned int i = 2; i <= 4; ++i) in.Add(ZuPoint(i, 0.0, 0.0, 0.0));
  control.Add(ZuPoint(1, 13.0, 20.0, 26.0));
  ZuTrafo3d trafo = Shift();
  trafo.Transform(out, in, &control, false);
  EXPECT_ROW("4 1.5 0 2", trafo.GetResidualCount(), trafo.GetRmsX(), trafo.GetRmsY(),
             trafo.GetRmsZ());

  const ZuPointList nothing;
  trafo.Transform(out, nothing, &nothing, false);
  EXPECT_ROW("1 0", trafo.GetResidualCount(), trafo.GetRmsX());
  EXPECT_EQ(trafo.GetMaxResidualPoint(), nullptr);
  EXPECT_TRUE(out.IsEmpty());
}

TEST(Trafo3dApply, UnmatchedControlPointsFollow) {
  ZuPointList in, control, out;
  for (unsigned int uId : {8u, 3u, 0u, 3u}) in.Add(ZuPoint(uId, 0.0, 0.0, 0.0));
  for (unsigned int uId : {9u, 8u, 0u, 4u, 7u}) control.Add(ZuPoint(uId, 1.0, 2.0, 3.0));
  ZuTrafo3d trafo = Shift();

  EXPECT_TRUE(trafo.Transform(out, in, &control, false));
  EXPECT_EQ(Ids(out), (IdRow{8, 3, 0, 3, 9, 0, 4, 7})) << "in the order of their list";
  EXPECT_EQ(out.Get(2)->m_dRedu1, 0.0) << "id 0 has no partner";
  EXPECT_EQ(out.Last()->m_dX, 1.0);
  EXPECT_FALSE(out.Last()->IsFlagSet(0x40));

  EXPECT_TRUE(trafo.Transform(out, in, ZuSortHelper<ZuPoint>(&control), false));
  EXPECT_EQ(Ids(out), (IdRow{8, 3, 0, 3, 0, 4, 7, 9})) << "by id";

  EXPECT_TRUE(trafo.Transform(out, in, &control, true));
  EXPECT_EQ(Ids(out), (IdRow{0, 0, 3, 3, 4, 7, 8, 9})) << "sorted, points of one id all kept";
  EXPECT_EQ(out.First()->m_dX, 10.0);

  EXPECT_TRUE(trafo.Transform(out, in, static_cast<ZuPointList*>(nullptr), false));
  EXPECT_EQ(Ids(out), (IdRow{8, 3, 0, 3}));
}

// The result may go into one of the lists it is made from.
TEST(Trafo3dApply, ResultMayReplaceItsSource) {
  ZuPointList list;
  list.Add(ZuPoint(1, 1.0, 2.0, 3.0));
  ZuTrafo3d trafo = Shift();
  EXPECT_TRUE(trafo.Transform(list, list, &list, false));
  ASSERT_EQ(list.Count(), 1);
  EXPECT_ROW("11 -10", list.First()->m_dX, list.First()->m_dRedu1);
}

TEST(Trafo3dApply, InPlace) {
  ZuPointList list;
  list.Add(ZuPoint(1, 1.0, 2.0, 3.0));
  list.First()->SetFlag(0x40 | 0x800 | 2);
  list.First()->m_dRedu2 = 4.0;
  const ZuTrafo3d trafo = Shift();
  EXPECT_TRUE(trafo.InPlaceTransform(&list));
  EXPECT_ROW("33 0 2", list.First()->m_dZ, list.First()->m_dRedu2, list.First()->GetFlag());
  EXPECT_FALSE(trafo.InPlaceTransform(nullptr));
}

TEST(Trafo3dApply, CommonIdsFollowTheSource) {
  ZuPointList source, target;
  for (unsigned int uId : {8u, 0u, 3u, 5u}) source.Add(ZuPoint(uId, 0.0, 0.0, 0.0));
  for (unsigned int uId : {0u, 3u, 8u}) target.Add(ZuPoint(uId, 0.0, 0.0, 0.0));
  ZuIdTable ids;
  ids.Add(99);
  ZuTrafo3d::GetCommonIds(ids, &target, &source);
  ASSERT_EQ(ids.Count(), 2);
  EXPECT_ROW("8 3", ids[0], ids[1]);
}
