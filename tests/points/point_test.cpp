#include "zu/points/point.h"

#include "tests/support/test.h"
#include "zu/numerics/vector.h"
#include "zu/points/point_list.h"
#include "zu/points/point_tripel.h"

TEST(Point, ControlCodesAndTheirTexts) {
  for (const auto& [iCode, sz123, szXYZ, iDigits, szText] :
       Cases<int, const char*, const char*, int, const char*>{{0, "  0", " N ", 0, "n"},
                                                              {1, "  1", "X  ", 1, "x"},
                                                              {2, "  2", " Y ", 2, "Y"},
                                                              {3, " 12", "XY ", 21, "yX"},
                                                              {4, "  3", "  Z", -3, "z"},
                                                              {5, " 13", "X Z", 13, "xz"},
                                                              {6, " 23", " YZ", 4923, "2Z"},
                                                              {7, "123", "XYZ", 321, "1y3"}}) {
    ZuPoint p;
    EXPECT_EQ(p.SetAsControlFlag(iDigits), iCode) << iDigits;
    EXPECT_STREQ(p.GetControlFlagsAs123(), sz123);
    EXPECT_STREQ(p.GetControlFlagsAsXYZ(), szXYZ);
    EXPECT_EQ(p.SetAsControlFlag(szText), iCode) << szText;
    EXPECT_EQ(p.IsXControlPoint(), iCode & 1);
    EXPECT_EQ(p.IsYControlPoint(), iCode & 2);
    EXPECT_EQ(p.IsZControlPoint(), iCode & 4);
  }
  EXPECT_STREQ(ZuPoint::GetControlCodeAsXYZ(8), " N ");  // three bits count
  EXPECT_STREQ(ZuPoint::GetControlCodeAs123(-1), "123");
  ZuPoint p;
  EXPECT_EQ(p.SetAsControlFlag(INT_MIN), 7);  // -2147483648 holds 1, 2 and 3
}

// Required: lists of points ascend on photo and id together; the key wraps at 32 bits.
TEST(Point, ListsSortAscendingOnPhotoAndId) {
  ZuPointList list;
  for (const auto& [uId, iPhoto] :
       Cases<unsigned int, int>{{5, 100}, {7, 0}, {2, 100}, {3, 4}, {105, 0}}) {
    ZuPoint p(uId, 0, 0, 0);
    p.m_iPhoto = iPhoto;
    list.Add(p);
  }
  EXPECT_EQ(list.Sort(), 5);
  std::string strOrder;
  for (auto* p = list.First(); p != nullptr; p = p->Next()) {
    strOrder += std::to_string(p->GetId()) + " ";
  }
  EXPECT_EQ(strOrder, "7 3 2 5 105 ");  // 5 and 105 are equal and keep their order

  ZuPoint a(UINT_MAX, 0, 0, 0), b(1, 0, 0, 0);
  EXPECT_ROW("-2 2", a.Compare(&b), b.Compare(&a));
}

TEST(Point, OperatorsActOnTheFieldsTheyName) {
  ZuPoint a(1, 2.0, 4.0, 8.0, 3), b(2, 1.0, 1.0, 1.0);
  a.m_dDX = 0.5;
  b.m_dDX = 0.25;
  a.m_dRedu1 = b.m_dRedu1 = 9.0;
  const ZuPoint sum = a + b, difference = a - b, middle = a % b, twice = a * 2.0, half = a / 2.0;
  EXPECT_TRUE(sum == ZuPoint(0, 3.0, 5.0, 9.0));
  EXPECT_ROW("0.75 9 1", sum.m_dDX, sum.m_dRedu1, sum.GetId());
  EXPECT_TRUE(difference == ZuPoint(0, 1.0, 3.0, 7.0));
  EXPECT_EQ(difference.m_dDX, 0.25);
  EXPECT_TRUE(middle == ZuPoint(0, 1.5, 2.5, 4.5));
  EXPECT_EQ(middle.m_dDX, 0.375);
  EXPECT_TRUE(twice == ZuPoint(0, 4.0, 8.0, 16.0) && half == ZuPoint(0, 1.0, 2.0, 4.0));
  EXPECT_EQ(twice.m_dDX, 0.5);  // a product leaves the accuracies
  EXPECT_EQ(half.m_sControl, 3);
  EXPECT_EQ(a.DistanceSq(b), 1.0 + 9.0 + 49.0);
  EXPECT_EQ(a.Distance(&b), std::sqrt(59.0));

  const ZuVector vector = a.GetAsVector();
  EXPECT_ROW("3 842", vector.GetSize(), vector[1] + 10 * vector[2] + 100 * vector[3]);
}

TEST(Point, InitClearsTheFieldsAndKeepsTheIdentity) {
  ZuPoint p(7, 1, 2, 3, 4);
  p.SetName("P7");
  p.SetFlag(eZuFlagActive);
  p.m_iUser = p.m_iColor = p.m_iPhoto = p.m_iCamera = 5;
  p.m_sUser = p.m_snImo = 6;
  p.m_fVX = p.m_fVY = p.m_fVZ = 1.0F;
  p.m_pParent = &p;
  ZuPoint copy;
  copy = p;
  EXPECT_ROW("5 6", copy.m_iUser, copy.m_sUser);
  EXPECT_EQ(copy.m_pParent, &p);
  copy.init();
  EXPECT_ROW("7 P7 0 0 0 0 0 0 0 0 0 0", copy.GetId(), copy.GetName(), copy.m_iUser, copy.m_iColor,
             copy.m_iPhoto, copy.m_iCamera, copy.m_sUser, copy.m_snImo, copy.m_sControl, copy.m_fVX,
             copy.m_fVY, copy.m_fVZ);
  EXPECT_TRUE(copy.GetFlag() == eZuFlagActive && copy == ZuPoint() && copy.m_pParent == nullptr);
}

TEST(Point, WalksOverTheNodesWithAFlag) {
  ZuPointList list;
  for (unsigned int u = 1; u <= 6; ++u)
    list.Add(new ZuPoint(u, 0, 0, 0))->SetFlag(u % 3 == 0 ? 2 : 1);
  ZuPoint* const pThird = list.First()->First(2);
  ASSERT_NE(pThird, nullptr);
  EXPECT_EQ(pThird->GetId(), 3u);
  EXPECT_EQ(pThird->First(3), pThird);
  EXPECT_EQ(pThird->Next(2)->GetId(), 6u);
  EXPECT_EQ(pThird->Next(2)->Next(2), nullptr);
  EXPECT_EQ(pThird->Previous(1)->GetId(), 2u);
  EXPECT_EQ(pThird->Previous(4), nullptr);
}

TEST(Flag, ChangesReturnTheNewValue) {
  ZuFlag flag;
  EXPECT_ROW("6 4 1 1", flag.SetFlag(6), flag.ClearFlag(2), flag.ToggleFlag(5), flag.IsFlagSet(3));
  EXPECT_EQ(flag.SetFlag(INT_MIN), INT_MIN | 1);
}

TEST(PointTripel, TableFindsAndSorts) {
  ZuPointTripelTable table;
  for (unsigned int u : {3u, 1u, 2u}) table.Add(ZuPointTripel{1, u, 9});
  table.Sort();
  EXPECT_ROW("1 2 -1", table[0].m_uId2, table.BinSearchUp(ZuPointTripel{1, 3, 9}),
             table.BinSearchUp(ZuPointTripel{1, 3, 8}));
}
