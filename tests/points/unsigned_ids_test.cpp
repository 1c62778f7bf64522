// What a list writes it reads back: ids of all 32 bits, coordinates that are no numbers.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <sstream>
#include <string>

#include "tests/support/temp_file.h"
#include "zu/foundation/reader.h"
#include "zu/points/point_list.h"

namespace {

const eZuPointRWMask aeColumns[] = {eZuPointRWId, eZuPointRWPhoto, eZuPointRWX,
                                    eZuPointRWY,  eZuPointRWZ,     eZuPointRWEnd};

TEST(CoordinateFile, KeepsIdsApartBeyond31Bits) {
  const TempFile file("2147483648 3000000000 1 2 3\n4294967295 -1 1 2 3\n4294967296 5 1 2 3\n");
  ZuPointList list;
  ASSERT_EQ(list.ReadFile(file.Path(), aeColumns), 3);
  EXPECT_EQ(list.Get(0)->GetId(), 2147483648u);
  EXPECT_EQ(list.Find(2147483648u, 3000000000u, nullptr), list.First());
  EXPECT_EQ(list.Get(1)->GetId(), 4294967295u);
  EXPECT_EQ(list.Get(1)->m_iPhoto, -1);
  EXPECT_EQ(list.Get(2)->GetId(), 4294967295u);  // the most there is
}

TEST(Points, ComeBackFromFilesAndRowsWithEveryIdAndWhatIsNoNumber) {
  constexpr double kInf = std::numeric_limits<double>::infinity();
  ZuPointList list{TZuFormatTable<eZuPointRWMask>(aeColumns)};
  list.Add(ZuPoint(4294967295u, kInf, -kInf, std::nan("")));
  std::ostringstream rows;
  list.Write(rows);
  const TempFile file(rows.str());
  ZuPointList fromFile;
  ASSERT_EQ(fromFile.ReadFile(file.Path(), aeColumns), 1);

  const TempFile block("POINTS {" + rows.str() + " }");
  ZuPointList fromRows{TZuFormatTable<eZuPointRWMask>(aeColumns)};
  ZuReader reader(block.Path());
  ZuReaderObject object("POINTS", Link(&fromRows, &ZuPointList::Read));
  reader.RegisterObject(object);
  reader.DoProcess(false);
  ASSERT_EQ(fromRows.Count(), 1);

  for (const ZuPointList* pList : {&fromFile, &fromRows}) {
    const ZuPoint& point = *pList->First();
    EXPECT_EQ(point.GetId(), 4294967295u);
    EXPECT_EQ(point.m_dX, kInf);
    EXPECT_EQ(point.m_dY, -kInf);
    EXPECT_TRUE(std::isnan(point.m_dZ));
  }
}

}  // namespace
