#include "zu/points/point_list.h"

#include "tests/support/test.h"

namespace {

using Table = TZuFormatTable<eZuPointRWMask>;

constexpr eZuPointRWMask kPosition[] = {eZuPointRWX, eZuPointRWY, eZuPointRWEnd};

ZuPoint* AddPoint(ZuPointList& list, unsigned int uId, int iPhoto, const char* szName = "") {
  auto* p = new ZuPoint(uId, uId, 0, 0);
  p->m_iPhoto = iPhoto;
  p->SetName(szName);
  return list.Add(p);
}

}  // namespace

TEST(PointList, FindsByIdAndPhotoForwardThenBackward) {
  ZuPointList list;
  ZuPoint* const pFirst = AddPoint(list, 5, 1);
  ZuPoint* const pMiddle = AddPoint(list, 7, 1);
  ZuPoint* const pSecond = AddPoint(list, 5, 2);
  ZuPoint* const pLast = AddPoint(list, 9, 2);
  EXPECT_EQ(list.Find(5, 0, nullptr), pFirst);
  EXPECT_EQ(list.Find(5, 2, nullptr), pSecond);
  EXPECT_EQ(list.Find(5, 0, pMiddle), pSecond);  // forward comes first
  EXPECT_EQ(list.Find(5, 1, pMiddle), pFirst);
  EXPECT_EQ(list.Find(5, 0, pLast), pSecond);  // then backward, nearest first
  EXPECT_EQ(list.Find(9, 0, pLast), pLast);
  EXPECT_EQ(list.Find(7, 2, pMiddle), nullptr);
  EXPECT_EQ(list.Find(8, 0, nullptr), nullptr);
  EXPECT_EQ(list.Find(7u), pMiddle);
}

TEST(PointList, FindByNameMindsTheCase) {
  ZuPointList list;
  AddPoint(list, 1, 0, "p1");
  AddPoint(list, 2, 0, "P1");
  EXPECT_ROW("2 1", list.Find("P1")->GetId(), list.Find("P1", false)->GetId());
  EXPECT_EQ(list.Find("P"), nullptr);
}

TEST(PointList, FindInSortedListGivesUpAboveTheId) {
  ZuPointList list;
  for (unsigned int u : {2u, 5u, 9u, 4u}) AddPoint(list, u, 0);
  EXPECT_EQ(list.FindInSortedList(5)->GetId(), 5u);
  EXPECT_EQ(list.FindInSortedList(3), nullptr);
  EXPECT_EQ(list.FindInSortedList(4), nullptr);  // behind 5, where the search has ended
  EXPECT_EQ(list.FindInSortedList(10), nullptr);
}

TEST(PointList, FindNearestTakesTheFirstOfEquals) {
  ZuPointList list;
  double dDistance = -1.0;
  EXPECT_EQ(list.FindNearest(ZuPoint(), &dDistance), nullptr);
  EXPECT_EQ(dDistance, -1.0);
  for (double x : {9.0, 3.0, -3.0}) list.Add(ZuPoint(1, x, 4.0, 0.0));
  EXPECT_EQ(list.FindNearest(ZuPoint(), &dDistance), list.Get(1));
  EXPECT_EQ(dDistance, 5.0);
  EXPECT_EQ(list.FindNearest(ZuPoint(), nullptr), list.Get(1));

  const double dNan = std::numeric_limits<double>::quiet_NaN();
  list.InsertFirst(new ZuPoint(7, dNan, 0, 0));
  EXPECT_EQ(list.FindNearest(ZuPoint(), &dDistance)->m_dX, 3.0);
  EXPECT_EQ(list.FindNearest(ZuPoint(0, dNan, 0, 0), nullptr), list.First());
}

TEST(PointList, ControlInformationIsSeenAndRemoved) {
  ZuPointList list;
  EXPECT_FALSE(list.HasControlPoints());
  AddPoint(list, 1, 0);
  EXPECT_FALSE(list.HasControlPoints());
  AddPoint(list, 2, 0)->SetControlFlags(4);
  EXPECT_TRUE(list.HasControlPoints());
  list.RemoveControlInformation();
  EXPECT_FALSE(list.HasControlPoints());
}

TEST(PointList, CopiesTakePointsAndColumns) {
  ZuPointList list{Table(kPosition)};
  for (unsigned int u : {1u, 2u}) AddPoint(list, u, 0);
  ZuPointList copy(list), assigned;
  AddPoint(assigned, 9, 0);
  assigned = list;
  assigned = *&assigned;
  for (const ZuPointList* p : {&copy, &assigned}) {
    EXPECT_ROW("2 2", p->Count(), p->Last()->GetId());
    EXPECT_NE(p->First(), list.First());
    EXPECT_EQ(p->GetMask().Size(), 2);
  }
  list.SetMask(list.GetMask());
  EXPECT_EQ(list.GetMask().Size(), 2);
}

TEST(PointList, ReplaceKeepsThePlaceOfTheId) {
  ZuPointList list;
  for (unsigned int u : {3u, 1u, 2u}) AddPoint(list, u, 0);
  list.Replace(ZuPoint(1, 7.5, 0, 0));
  EXPECT_EQ(list.Get(1)->m_dX, 7.5);
  list.Sort();
  list.SortedReplace(ZuPoint(2, 8.5, 0, 0));
  list.SortedReplace(ZuPoint(0, 0, 0, 0));
  std::string strIds;
  for (const auto* p = list.First(); p != nullptr; p = p->Next()) {
    strIds += std::to_string(p->GetId());
  }
  EXPECT_ROW("0123 8.5", strIds, list.Get(2)->m_dX);
}
