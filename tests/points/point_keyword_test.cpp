// Points as rows of keyword files.
#include "tests/support/keyword_file.h"
#include "tests/support/test.h"
#include "zu/points/point_list.h"

namespace {

using Table = TZuFormatTable<eZuPointRWMask>;

constexpr eZuPointRWMask kRow[] = {eZuPointRWId, eZuPointRWX, eZuPointRWY, eZuPointRWEnd};

// What was read of a file with the keywords POINTS { rows } and AFTER.
struct Found {
  ZuPointList list;
  int iAfter = 0, iErrors = 0;

  Found(const std::string& text, const Table& table) : list(table) {
    iErrors = KeywordFile(text)
                  .On("POINTS", [&](auto* p) { return list.Read(p); })
                  .On("AFTER", &iAfter)
                  .Run();
  }

  std::string Ids() const {
    std::string strIds;
    for (const auto* p = list.First(); p != nullptr; p = p->Next())
      strIds += ::Text(p->GetId()) + " ";
    return strIds;
  }
};

Table TableOf(std::initializer_list<int> columns) {
  std::vector<eZuPointRWMask> aeColumns;
  for (int i : columns) aeColumns.push_back(static_cast<eZuPointRWMask>(i));
  aeColumns.push_back(eZuPointRWEnd);
  return Table(aeColumns.data());
}

}  // namespace

TEST(PointRows, EndAtTheirBraceAndLeaveTheRestOfTheFile) {
  for (const auto& [szText, szIds, iAfter] : Cases<const char*, const char*, int>{
           {"POINTS { 1 10 20\n 2 30.5 -4e1 } AFTER 7", "1 2 ", 7},
           {"POINTS { 1 10 20 2 30 40 3 } AFTER 7", "1 2 ", 7},  // a row cut short leaves no trace
           {"POINTS { 1 10 20 2 30 } AFTER 7", "1 ", 7},
           {"POINTS { } AFTER 7", "", 7},
           {"POINTS { 1 10 20} AFTER 7", "1 ", 7},
           {"POINTS { 1 10 20 2 30", "1 ", 0},
           {"POINTS { 1 10 20 ; comment }\n 2 30 40 }\nAFTER 7", "1 2 ", 7},
       }) {
    SCOPED_TRACE(szText);
    const Found found(szText, Table(kRow));
    EXPECT_EQ(found.Ids(), szIds);
    EXPECT_EQ(found.iAfter, iAfter);
    EXPECT_EQ(found.iErrors, 0);
  }
}

TEST(PointRows, AWrongTokenEndsTheListAndKeepsCompleteRows) {
  for (const char* szText : {"POINTS { 1 10 20 2 x 40 3 50 60 }", "POINTS { 1 10 20 2.5 30 40 }",
                             "POINTS { 1 10 20 2 { 30 } 40 }", "POINTS { 1 10 20 2 12abc 40 }"}) {
    SCOPED_TRACE(szText);
    EXPECT_EQ(Found(szText, Table(kRow)).Ids(), "1 ");
  }
}

// Tables that take no token end at once, instead of adding points for ever.
TEST(PointRows, ARowThatTakesNoTokenEndsTheList) {
  for (const Table& table : {TableOf({}), TableOf({999}), TableOf({28, 21})}) {
    const Found found("POINTS { 1 10 20 } AFTER 7", table);
    EXPECT_TRUE(found.list.IsEmpty());
    EXPECT_EQ(found.iAfter, 7);
  }
}

TEST(PointRows, ColumnsTakeTheirKindOfToken) {
  const Found found("POINTS { \"P 1\" 3 13 2 1.5 5 6 skipped 7 8e0 1e2 9 0.5 2.5 }",
                    TableOf({2, 4, 5, 7, 16, 8, 9, 32, 20, 12, 105, 24, 25, 31}));
  ASSERT_EQ(found.list.Count(), 1);
  const ZuPoint& p = *found.list.First();
  EXPECT_ROW("P 1 3 5 5 6 7 8 100 9", p.GetName(), p.GetFlag(), p.GetControlFlags(), p.m_iPhoto,
             p.m_iCamera, p.m_iColor, p.m_dZ, p.m_dDX, p.m_snImo);
  EXPECT_EQ(p.m_fVX, 0.5F);
  EXPECT_EQ(p.m_dRedu3, 2.5);
}

TEST(PointRows, TheSkipColumnLeavesBracesAlone) {
  const Found found("POINTS { 1 x 2 \"y\" 3 } AFTER 7", TableOf({1, 32}));
  EXPECT_ROW("1 2  7", found.Ids(), found.iAfter);
}

TEST(PointRows, IdOrNameTakesAnyWord) {
  const Found found("POINTS { 12 1 P12 2 \"P 13\" 3 0 4 -5 5 P14} AFTER 7", TableOf({3, 10}));
  std::string strNames;
  for (const auto* p = found.list.First(); p != nullptr; p = p->Next()) {
    strNames += std::string(p->GetName().chars()) + "|";
  }
  EXPECT_ROW("|P12|P 13||-5| 12", strNames, found.list.First()->GetId());
  EXPECT_EQ(found.list.Get(3)->GetId(), 0u);  // digits are the Id here, a zero too
  EXPECT_EQ(found.iAfter, 7);

  const Found tail("POINTS { 1 P14} AFTER 7", TableOf({10, 3}));
  ASSERT_EQ(tail.list.Count(), 1);
  EXPECT_EQ(tail.list.First()->GetName(), String("P14"));
}

// Values of a keyword without a block: the token behind them belongs to the next item.
TEST(PointRows, APointReadsItsValuesAndNoMore) {
  ZuPoint point;
  int iAfter = 0;
  KeywordFile("POINT 4 1.5 2.5 AFTER 7")
      .On("POINT", [&](auto* p) { return point.Read(p, Table(kRow)); })
      .On("AFTER", &iAfter)
      .Run();
  EXPECT_ROW("4 2.5 7", point.GetId(), point.m_dY, iAfter);
}
