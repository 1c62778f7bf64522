#include "zu/foundation/id_table.h"

#include <gtest/gtest.h>

#include <map>
#include <random>
#include <string>
#include <vector>

#include "list_records.h"
#include "tests/support/temp_file.h"
#include "zu/foundation/reader.h"
#include "zu/foundation/sort_helper.h"

namespace {

using Numbers = std::vector<unsigned int>;

// Reads a file of the items IDS, PAIRS, GRID, OBJECT, each with a block, and LAST, a number.
struct Project : public LinkHdl {
  explicit Project(const std::string& strText) : file(strText), reader(file.Path()) {
    const struct {
      const char* szKeyword;
      Link link;
    } keywords[] = {
        {"IDS", Link(this, &Project::ReadIds)},
        {"PAIRS", Link(this, &Project::ReadPairs)},
        {"GRID", Link(this, &Project::ReadGrid)},
        {"OBJECT", Link(this, &Project::ReadObject)},
    };
    for (const auto& keyword : keywords) {
      ZuReaderObject registered(keyword.szKeyword, keyword.link);
      reader.RegisterObject(registered);
    }
    ZuReaderObject last("LAST", &iLast);
    reader.RegisterObject(last);
    reader.DoProcess(false);
  }
  int ReadIds(ZuReaderObject* pObject) { return ids.Read(pObject); }
  int ReadPairs(ZuReaderObject* pObject) { return pairs.Read(pObject); }
  int ReadGrid(ZuReaderObject* pObject) { return grid.Read(pObject); }
  int ReadObject(ZuReaderObject* pObject) { return object.Read(pObject); }

  Numbers Ids() const {
    Numbers aIds;
    for (int i = 0; i < ids.Count(); ++i) aIds.push_back(ids[i]);
    return aIds;
  }
  Numbers Grid() const {
    Numbers aIds;
    for (int y = 0; y < grid.GetSizeY(); ++y) {
      for (int x = 0; x < grid.GetSizeX(); ++x) aIds.push_back(grid(x, y));
    }
    return aIds;
  }

  TempFile file;
  ZuReader reader;
  ZuIdTable ids;
  ZuIdPairTable pairs;
  ZuIdTable2D grid;
  ZuObject object{77, "kept"};
  int iLast = 0;
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
  EXPECT_EQ(pair.OtherId(9), 4u);
  EXPECT_EQ(pair.OtherId(4), 9u);
  EXPECT_EQ(pair.OtherId(5), 9u);
  EXPECT_FALSE(pair.HasId(5));
  EXPECT_TRUE(pair.Sort());
  EXPECT_FALSE(pair.Sort());
  EXPECT_TRUE(pair == ZuIdPair(4, 9));
  pair.Clear();
  EXPECT_TRUE(pair == ZuIdPair(0, 0));
}

TEST(IdTable, ReadsTheIdsOfABlock) {
  Project project("IDS { 17 4 ; comment\n 205 -1 }\nPAIRS { 1 2 3 4 }\nIDS { } LAST 5\n");
  EXPECT_EQ(project.Ids(), (Numbers{17, 4, 205, 4294967295u}));
  ASSERT_EQ(project.pairs.Count(), 2);
  EXPECT_TRUE(project.pairs[1] == ZuIdPair(3, 4));
  EXPECT_EQ(project.iLast, 5);
  EXPECT_EQ(project.reader.GetReadErrorCount(), 0);
}

TEST(IdTable, KeepsCompleteRowsOfADamagedBlock) {
  Project cut("PAIRS { 1 2 3 } LAST 5\n");
  EXPECT_EQ(cut.pairs.Count(), 1);
  EXPECT_EQ(cut.iLast, 5);
  EXPECT_EQ(cut.reader.GetReadErrorCount(), 0);

  Project wrong("IDS { 1 2 12abc 3 } LAST 5\n");
  EXPECT_EQ(wrong.Ids(), (Numbers{1, 2}));
  EXPECT_EQ(wrong.reader.GetReadErrorCount(), 1);

  const std::string strText = "IDS { 11 22 33 } PAIRS { 11 22 33 44 } GRID { 2 2 11 22 33 44 }";
  for (std::size_t uLength = 0; uLength <= strText.size(); ++uLength) {
    Project project(strText.substr(0, uLength));
    EXPECT_LE(project.ids.Count(), 3);
    EXPECT_LE(project.pairs.Count(), 2);
    EXPECT_EQ(project.Grid().size() % 2, 0u);
    EXPECT_EQ(project.reader.GetReadErrorCount(), 0);
  }
}

TEST(IdTable, ReadsAGridRowByRow) {
  Project whole("GRID { 3 2 11 12 13 21 22 23 } LAST 5\n");
  EXPECT_EQ(whole.grid.GetSizeX(), 3);
  EXPECT_EQ(whole.Grid(), (Numbers{11, 12, 13, 21, 22, 23}));
  EXPECT_EQ(whole.iLast, 5);

  const struct {
    const char* szBlock;
    Numbers aExpected;
  } damaged[] = {
      {"{ 2 3 11 12 21 }", {11, 12}},           // the cut row leaves no trace
      {"{ 2 1 11 12 21 22 }", {11, 12}},        // more than the sizes tell
      {"{ 2000000000 2000000000 1 2 3 }", {}},  // room is made for what is there
      {"{ -2 3 11 }", {}},
      {"{ 0 5 }", {}},
      {"{ 1 2 7 \"x\" }", {7}},
  };
  for (const auto& grid : damaged) {
    SCOPED_TRACE(grid.szBlock);
    Project project(std::string("GRID ") + grid.szBlock + " LAST 5\n");
    EXPECT_EQ(project.Grid(), grid.aExpected);
  }
}

TEST(IdTable, CopiesALargeGrid) {
  ZuIdTable2D grid(700, 300);
  EXPECT_EQ(grid(699, 299), 0u);
  for (int y = 0; y < 300; ++y) {
    for (int x = 0; x < 700; ++x) grid(x, y) = static_cast<unsigned int>(1000 * y + x);
  }
  const ZuIdTable2D copy(grid);
  grid = ZuIdTable2D(2, 2);
  EXPECT_EQ(grid(1, 1), 0u);
  EXPECT_EQ(copy.GetSizeX(), 700);
  for (int y = 0; y < 300; ++y) {
    for (int x = 0; x < 700; ++x) ASSERT_EQ(copy(x, y), static_cast<unsigned int>(1000 * y + x));
  }
}

TEST(Object, ReadsWhatItWrites) {
  Project project("OBJECT { 12 \"a name\" } LAST 5\n");
  EXPECT_EQ(project.object.GetId(), 12u);
  EXPECT_EQ(project.object.GetName(), String("a name"));
  EXPECT_EQ(project.iLast, 5);

  // Without a block the reader stops in front of the next item.
  Project chained("OBJECT 13 \"b\" LAST 6\n");
  EXPECT_EQ(chained.object.GetId(), 13u);
  EXPECT_EQ(chained.iLast, 6);

  Project cut("OBJECT { 14 } LAST 7\n");
  EXPECT_EQ(cut.object.GetId(), 14u);
  EXPECT_EQ(cut.object.GetName(), String("kept"));
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
