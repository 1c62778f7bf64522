// What a list writes it reads back: ids of all 32 bits, coordinates that are no numbers.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <fstream>
#include <limits>
#include <string>

#include "zu/points/point_list.h"

namespace {

const eZuPointRWMask aeColumns[] = {eZuPointRWId, eZuPointRWPhoto, eZuPointRWX,
                                    eZuPointRWY,  eZuPointRWZ,     eZuPointRWEnd};
const eZuPointRWMask aeIdOrName[] = {eZuPointRWIdName, eZuPointRWX, eZuPointRWEnd};

// A file of the test, removed at its end.
class File {
 public:
  explicit File(const std::string& strText) { std::ofstream(m_strPath) << strText; }
  ~File() { std::remove(m_strPath.c_str()); }
  const char* Path() const { return m_strPath.c_str(); }

 private:
  std::string m_strPath = ::testing::TempDir() + "zu_unsigned_ids.coo";
};

TEST(CoordinateFile, KeepsIdsApartBeyond31Bits) {
  const File file("2147483648 3000000000 1 2 3\n4294967295 -1 1 2 3\n4294967296 5 1 2 3\n");
  ZuPointList list;
  ASSERT_EQ(list.ReadFile(file.Path(), aeColumns), 3);
  EXPECT_EQ(list.Get(0)->GetId(), 2147483648u);
  EXPECT_EQ(list.Find(2147483648u, 3000000000u, nullptr), list.First());
  EXPECT_EQ(list.Get(1)->GetId(), 4294967295u);
  EXPECT_EQ(list.Get(1)->m_iPhoto, -1);
  EXPECT_EQ(list.Get(2)->GetId(), 4294967295u);  // the most there is
}

TEST(CoordinateFile, TakesDigitsOfAnyIdAsIdNotAsName) {
  const File file("3000000000 1\n0 1\n3000000000a 1\n");
  ZuPointList list;
  ASSERT_EQ(list.ReadFile(file.Path(), aeIdOrName), 3);
  EXPECT_EQ(list.Get(0)->GetId(), 3000000000u);
  EXPECT_TRUE(list.Get(0)->GetName().empty());
  EXPECT_STREQ(list.Get(1)->GetName(), "0");
  EXPECT_STREQ(list.Get(2)->GetName(), "3000000000a");
}

TEST(CoordinateFile, ReadsBackWhatIsNoNumber) {
  constexpr double kInf = std::numeric_limits<double>::infinity();
  const File file("");
  ZuPointList list{TZuFormatTable<eZuPointRWMask>(aeColumns)};
  list.Add(ZuPoint(4294967295u, kInf, -kInf, std::nan("")));
  list.WriteFile(file.Path());
  ZuPointList back;
  ASSERT_EQ(back.ReadFile(file.Path(), aeColumns), 1);
  EXPECT_EQ(back.First()->GetId(), 4294967295u);
  EXPECT_EQ(back.First()->m_dX, kInf);
  EXPECT_EQ(back.First()->m_dY, -kInf);
  EXPECT_TRUE(std::isnan(back.First()->m_dZ));
}

}  // namespace
