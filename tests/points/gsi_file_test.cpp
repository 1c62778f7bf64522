// GSI files of total stations.
#include "tests/support/temp_file.h"
#include "tests/support/test.h"
#include "zu/foundation/alnum_id.h"
#include "zu/points/point_list.h"

namespace {

int ReadText(const std::string& text, ZuPointList* pList) {
  const TempFile file(text, ".gsi");
  return pList->ReadGsiFile(file.Path());
}

struct Expected {
  unsigned int uId;  // 0: made from the name
  const char* szName;
  double x, y, z;
};

void ExpectPoints(const ZuPointList& list, std::initializer_list<Expected> points) {
  ASSERT_EQ(list.Count(), static_cast<int>(points.size()));
  const ZuPoint* p = list.First();
  for (const Expected& e : points) {
    SCOPED_TRACE(::testing::Message() << e.uId << " " << e.szName);
    EXPECT_EQ(p->GetId(), e.uId != 0 ? e.uId : GetIdFromAlphaNumericString(e.szName));
    EXPECT_EQ(p->GetName(), String(e.szName));
    EXPECT_EQ(p->m_dX, e.x);
    EXPECT_EQ(p->m_dY, e.y);
    EXPECT_EQ(p->m_dZ, e.z);
    p = p->Next();
  }
}

const std::string kPoint = "110001+00000101 81..00+01000000 82..00+02000000 83..00+00100000";

}  // namespace

TEST(GsiFile, ReadsWordsOfEightCharacters) {
  ZuPointList list;
  EXPECT_EQ(list.ReadGsiFile(ZU_SOURCE_DIR "/samples/gsi/station8.gsi"), 5);
  ExpectPoints(list, {{101, "", 1000.0, 2000.0, 100.0},
                      {102, "", 1012.345, 1987.655, 101.234},
                      {103, "", 998.001, 2010.02, -0.5},
                      {0, "A7", 1005.5, 2001.25, 99.875},
                      {106, "", 3280.84 * 0.3048, 6561.68 * 0.3048, 328.084 * 0.3048}});
}

TEST(GsiFile, ReadsWordsOfSixteenCharacters) {
  ZuPointList list;
  EXPECT_EQ(list.ReadGsiFile(ZU_SOURCE_DIR "/samples/gsi/station16.gsi"), 4);
  ExpectPoints(list, {{101, "", 4157222.543, 664789.307, 4774952.099},
                      {0, "BASE NORTH", 4149043.336, 688836.443, 4778632.188},
                      {0, "2026000000000003", 4172803.511, -690340.078, 4758129.701},
                      {104, "", 10.5, 20.25, -0.125}});
}

TEST(GsiFile, UnitsAndSignBelongToTheWord) {
  const struct {
    const char* szWord;
    double x;
  } words[] = {{"81..00-00012345", -12.345},  {"81..01+00010000", 10.0 * 0.3048},
               {"81..06+00012345", 1.2345},   {"81..07+00100000", 10.0 * 0.3048},
               {"81..08-00012345", -0.12345}, {"81..00+99999999", 99999.999},
               {"811230+00000001", 0.001}};
  for (const auto& word : words) {
    ZuPointList list;
    ASSERT_EQ(ReadText(std::string("110001+00000005 ") + word.szWord, &list), 1) << word.szWord;
    EXPECT_EQ(list.First()->m_dX, word.x) << word.szWord;
  }
}

TEST(GsiFile, ADamagedLineCostsThatLine) {
  const std::string astrDamaged[] = {
      "110001+00000102 81..00+0100",                        // cut
      "110001+00000102 81..00+01000000 82",                 // cut in a word
      "110001 00000102 81..00+01000000",                    // no sign
      "110001+00000102 81..00+01x00000",                    // no digit
      "110001+00000102 81..00+ 1000000",                    //
      "110001+00000102 81..02+01000000",                    // an angle
      "110001+00000102 81....+01000000",                    // no unit
      "110001+00000102  81..00+01000000",                   // words out of step
      "110001+00000102x81..00+01000000",                    //
      "*110001+00000102 81..00+01000000",                   // words of the other length
      "110001+000000000000000102 81..00+0000000001000000",  //
      "11",                                                 //
      "any text of nobody's making",                        //
      "110001+         81..00+01000000",                    // no number
      "110001+00000102 xx..00+01000000 81..00+01000000",    // no index
      kPoint + " " + std::string(3000, ' ') + kPoint,       // longer than any line
  };
  for (const std::string& strLine : astrDamaged) {
    SCOPED_TRACE(strLine.substr(0, 80));
    ZuPointList list;
    EXPECT_EQ(ReadText(kPoint + "\n" + strLine + "\n" + kPoint + "\n", &list), 2);
  }
}

TEST(GsiFile, LinesWithoutPointOrCoordinateArePassedOver) {
  ZuPointList list;
  EXPECT_EQ(ReadText("410001+STATION1\n\n \n110002+00000104 21.102+11111111\n"
                     "81..00+01000000 82..00+02000000\n" +
                         kPoint,
                     &list),
            1);
  EXPECT_EQ(ReadText("110002+00000007 83..00+00001500\n", &list), 2);  // a height alone
  EXPECT_ROW("1.5 0 0 2", list.Last()->m_dZ, list.ReadGsiFile("/no/such/file"),
             list.ReadGsiFile(static_cast<const char*>(nullptr)), list.Count());
}
