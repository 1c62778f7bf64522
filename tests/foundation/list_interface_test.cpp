// What lists offer, and what they keep to themselves.
#include <gtest/gtest.h>

#include <climits>

#include "zu/zu.h"

namespace {

template <class A>
concept Comparable = requires(A a) {
  a == a;
};
template <class A>
concept Searchable = requires(A a, ZuObserver* p) {
  a.Search(p);
};
template <class A>
concept BinarySearchable = requires(A a, ZuObserver* p) {
  a.BinSearchUp(p), a.BinSearchDown(p);
};

template <class A>
class Lists : public ::testing::Test {};
using AllLists =
    ::testing::Types<ZuPointList, ZuSpheronList, ZuAttributeList, ZuPhotoList, ZuVivaPanoList,
                     ZuOrthoPhotoList, ZuBundleAOBList, ZuCameraList, ZuReseaufileList, ZuPlaneList,
                     ZuZuspDefLineList, ZuZuspDefLineConstraintList, ZuZuspPlaneInfoList,
                     ZuZuspTrafoList, ZuLogItemList, ZuReaderErrorList, ZuPointCloudList>;
TYPED_TEST_SUITE(Lists, AllLists);

template <class T>
TZuListHeader<T>& HeaderOf(TZuListHeader<T>& list) {
  return list;
}

TYPED_TEST(Lists, TakeTheNodesOfTheirHeaderAndHideTheirTableOfObservers) {
  static_assert(!Comparable<TypeParam> && !Searchable<TypeParam> && !BinarySearchable<TypeParam>);
  TypeParam list, other;
  list = HeaderOf(other);
  EXPECT_TRUE(list.IsEmpty());
}

TEST(PointList, AnswersForItsColumns) {
  const eZuPointRWMask aeColumns[] = {eZuPointRWId, eZuPointRWX, eZuPointRWEnd};
  const ZuPointList list{TZuFormatTable<eZuPointRWMask>(aeColumns)};
  EXPECT_EQ(list.Size(), 2);
  EXPECT_EQ(list[1], eZuPointRWX);
}

// Required: the operations by id and name end in the list's own Subtract.
TEST(AttributeList, TellsAnAttributeThatItLeavesHoweverItWasNamed) {
  struct Told : ZuAttribute {
    using ZuAttribute::ZuAttribute;
    int OnSubtract() override { return ++iTold; }
    int iTold = 0;
  };
  ZuObject owner;
  ZuAttributeList list;
  const auto check = [&](auto key) {
    Told attribute(7, "seven");
    list.Add(&attribute, &owner);
    EXPECT_EQ(list.Subtract(key), &attribute);
    EXPECT_EQ(attribute.iTold, 1);
    EXPECT_EQ(attribute.GetParent(), nullptr);
  };
  check(7u);
  check(String("Seven"));
  check(0);  // a position
}

TEST(List, GivesTheSmallestFreeIdBehindTheLargest) {
  ZuAttributeList list;
  for (const unsigned int uId : {0u, 1u, UINT_MAX - 1, UINT_MAX}) list.Add(ZuAttribute(uId));
  for (const unsigned int uHint : {0u, UINT_MAX - 1, UINT_MAX})
    EXPECT_EQ(list.GetFreeId(uHint), 2u);
  EXPECT_EQ(list.GetFreeId(UINT_MAX - 2), UINT_MAX - 2);
}

TEST(String, IsEmptyWhenItsTextWasMoved) {
  String strFrom("a text too long for nothing"), strTo("old");
  const char* const szText = strFrom.chars();
  strTo = std::move(strFrom);
  EXPECT_EQ(strTo.chars(), szText);
  EXPECT_EQ(strFrom.chars(), String().chars());
  String& strSame = strTo;
  strTo = std::move(strSame);
  EXPECT_STREQ(strTo, "a text too long for nothing");
}

TEST(String, TakesAnIndexOfAnyIntegerType) {
  String str("abc");
  str[1L] = 'x';
  EXPECT_EQ(str[std::size_t{1}], 'x');
  const String& strConst = str;
  EXPECT_EQ(strConst[2u], 'c');
  EXPECT_EQ(strConst[(1LL << 32) + 1], '\0');  // not cut to 1
}

}  // namespace
