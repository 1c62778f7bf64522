#include "zu/foundation/id_table.h"

#include <map>

#include "list_records.h"
#include "tests/support/keyword_file.h"
#include "tests/support/test.h"
#include "zu/foundation/sort_helper.h"

namespace {

using Numbers = std::vector<unsigned int>;

// A file of the items IDS, PAIRS, GRID, OBJECT, each with a block, and LAST, a number.
struct Project : public KeywordFile {
  explicit Project(const std::string& strText) : KeywordFile(strText) {
    On("IDS", [&](auto* p) { return ids.Read(p); }).On("PAIRS", [&](auto* p) {
      return pairs.Read(p);
    });
    On("GRID", [&](auto* p) { return grid.Read(p); }).On("OBJECT", [&](auto* p) {
      return object.Read(p);
    });
    iErrors = On("LAST", &iLast).Run();
    for (int i = 0; i < ids.Count(); ++i) aIds.push_back(ids[i]);
    for (int y = 0; y < grid.GetSizeY(); ++y) {
      for (int x = 0; x < grid.GetSizeX(); ++x) aGrid.push_back(grid(x, y));
    }
  }

  ZuIdTable ids;
  ZuIdPairTable pairs;
  ZuIdTable2D grid;
  ZuObject object{77, "kept"};
  int iLast = 0, iErrors = 0;
  Numbers aIds, aGrid;
};

TEST(IdPair, OrdersByFirstThenSecond) {
  const ZuIdPair pairs[] = {{1, 4000000000u}, {2, 1}, {2, 2}, {3000000000u, 0}};
  for (const auto& a : pairs) {
    for (const auto& b : pairs) {
      EXPECT_EQ(a < b, &a < &b);
      EXPECT_EQ(a <= b, &a <= &b);
      EXPECT_EQ(a == b, &a == &b);
    }
  }
}

TEST(IdPair, AnswersTheFirstIdToAStranger) {
  ZuIdPair pair(9, 4);
  EXPECT_ROW("4 9 9 0", pair.OtherId(9), pair.OtherId(4), pair.OtherId(5), pair.HasId(5));
  EXPECT_TRUE(pair.Sort() && !pair.Sort() && pair == ZuIdPair(4, 9));
  pair.Clear();
  EXPECT_TRUE(pair == ZuIdPair(0, 0));
}

TEST(IdTable, ReadsTheIdsOfABlock) {
  Project project("IDS { 17 4 ; comment\n 205 -1 }\nPAIRS { 1 2 3 4 }\nIDS { } LAST 5\n");
  EXPECT_EQ(project.aIds, (Numbers{17, 4, 205, 4294967295u}));
  EXPECT_ROW("2 5 0", project.pairs.Count(), project.iLast, project.iErrors);
  EXPECT_TRUE(project.pairs[1] == ZuIdPair(3, 4));
}

TEST(IdTable, KeepsCompleteRowsOfADamagedBlock) {
  Project cut("PAIRS { 1 2 3 } LAST 5\n"), wrong("IDS { 1 2 12abc 3 } LAST 5\n");
  EXPECT_ROW("1 5 0", cut.pairs.Count(), cut.iLast, cut.iErrors);
  EXPECT_EQ(wrong.aIds, (Numbers{1, 2}));
  EXPECT_EQ(wrong.iErrors, 1);
}

TEST(IdTable, ReadsAGridRowByRow) {
  Project whole("GRID { 3 2 11 12 13 21 22 23 } LAST 5\n");
  EXPECT_ROW("3 5", whole.grid.GetSizeX(), whole.iLast);
  for (const auto& [szBlock, aExpected] : Cases<const char*, Numbers>{
           {"{ 3 2 11 12 13 21 22 23 }", {11, 12, 13, 21, 22, 23}},
           {"{ 2 3 11 12 21 }", {11, 12}},           // the cut row leaves no trace
           {"{ 2 1 11 12 21 22 }", {11, 12}},        // more than the sizes tell
           {"{ 2000000000 2000000000 1 2 3 }", {}},  // room is made for what is there
           {"{ -2 3 11 }", {}},
           {"{ 0 5 }", {}},
           {"{ 1 2 7 \"x\" }", {7}},
       }) {
    Project project(std::string("GRID ") + szBlock + " LAST 5\n");
    EXPECT_EQ(project.aGrid, aExpected) << szBlock;
  }
}

TEST(IdTable, CopiesALargeGrid) {
  ZuIdTable2D grid(700, 300);
  EXPECT_EQ(grid(699, 299), 0u);
  for (int i = 0; i < 700 * 300; ++i) grid(i % 700, i / 700) = static_cast<unsigned int>(i);
  const ZuIdTable2D copy(grid);
  grid = ZuIdTable2D(2, 2);
  EXPECT_ROW("0 700", grid(1, 1), copy.GetSizeX());
  for (unsigned int i = 0; i < 700 * 300; ++i) ASSERT_EQ(copy(i % 700, i / 700), i);
}

TEST(Object, ReadsWhatItWrites) {
  for (const auto& [szText, szFound] : Cases<const char*, const char*>{
           {"OBJECT { 12 \"a name\" } LAST 5\n", "12 a name 5"},
           {"OBJECT 13 \"b\" LAST 6\n", "13 b 6"},  // stops in front of the next item
           {"OBJECT { 14 } LAST 7\n", "14 kept 0"}}) {
    Project project(szText);
    EXPECT_ROW(szFound, project.object.GetId(), project.object.GetName(), project.iLast);
  }
}

TEST(SortHelper, FindsWhatAMapFinds) {
  std::mt19937 random(29);
  const auto draw = [&](unsigned int uEnd) { return static_cast<unsigned int>(random() % uEnd); };
  for (unsigned int uRange : {1u, 20u, 2500u, 1000000u, 4294967295u}) {
    List<Record> list;
    std::map<unsigned int, Record*> expected;
    for (int i = 0; i < 3000; ++i) {
      list.Append({draw(uRange)});
      expected.emplace(list.Last()->GetId(), list.Last());
    }
    const ZuSortHelper<Record> helper(&list);
    EXPECT_TRUE(helper.IsSorted());
    ASSERT_EQ(helper.Count(), static_cast<int>(expected.size()));
    auto next = expected.begin();
    for (Record* p : helper) EXPECT_EQ(p, (next++)->second);
    for (int i = 0; i < 3000; ++i) {
      const unsigned int uId = i % 2 ? draw(uRange) : list.Get(i)->GetId() + draw(2);
      const auto found = expected.find(uId);
      EXPECT_EQ(helper.Find(uId), found == expected.end() ? nullptr : found->second);
    }
  }
}

TEST(SortHelper, FollowsItsListWhenRebuilt) {
  List<Record> list({3, 1});
  ZuSortHelper<Record> helper;
  EXPECT_FALSE(helper.IsSorted());
  EXPECT_EQ(helper.Find(3), nullptr);
  helper.Set(&list);
  list.Append({2});
  EXPECT_EQ(helper.Find(2), nullptr);
  const ZuSortHelper<Record> copy(helper);
  helper.Rebuild();
  EXPECT_EQ(helper.Find(2), list.Last());
  EXPECT_EQ(copy.Find(2), nullptr);
  EXPECT_EQ(helper.Get(0), list.Get(1));
  helper.Set(nullptr);
  EXPECT_EQ(helper.Find(3), nullptr);
  EXPECT_EQ(helper.Count(), 0);
}

}  // namespace
