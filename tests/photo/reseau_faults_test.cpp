// What files of reseaus and cameras keep, drop and tell.
#include <gtest/gtest.h>

#include <string>

#include "tests/support/temp_file.h"
#include "zu/photo/camera_list.h"
#include "zu/photo/reseau_file.h"

namespace {

constexpr char kRegions[] = "\"c\"\n{ -3 -2 3 2 %s }\n{ 1 -2 3 -1 %s }\n{ 11 -3 2 2 }\n";

struct Read {
  explicit Read(const std::string& strText) {
    const TempFile file(strText);
    reseau.ReadFile(file.Path());
    list.ReadReseauFile(file.Path());
  }
  ZuReseauFile reseau;
  ZuReseaufileList list;
};

TEST(ReseauFaults, CostTheDamagedPieceAlone) {
  const struct {
    const char *szRegion, *szCross;  // what is added to both regions, further crosses
    int iCrosses, iFaults;
    unsigned int uLine;
    const char* szText;
  } cases[] = {
      {"", "{ 12 3 2 2 }", 2, 0, 0, "ParserStatusOK"},
      {"7 \"new\" { 8 } 3D", "{ 12 3 2 2 9 { 9 } 9x } { 21 -3 -2 2 }", 3, 0, 0, "ParserStatusOK"},
      {"", "{ 12 3 } { 21 -3 -2 2 }", 2, 0, 0, "ParserStatusOK"},  // a short cross
      {"", "{ 12 3 2 2 } { 21 -3", 2, 0, 0, "ParserStatusOK"},     // cut by the end
      {"", "{ 12 3 2 2 } { 21 -3 -2 2", 2, 0, 0, "ParserStatusOK"},
      {"", "{ 12 3 2 2 }\n{ 21 X -2 2 } { 22 3 -2 2 }", 2, 1, 6, "ParserErrorNotSpecifiedToken"},
      {"", "{ 12 3x 2 2 }", 1, 1, 5, "ParserErrorInvalidNumber"},
      {"", "{ 12 inf -inf 2 }", 2, 0, 0, "ParserStatusOK"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(std::string(c.szRegion) + " / " + c.szCross);
    std::string strText = kRegions;
    for (int i = 0; i < 2; ++i) strText.replace(strText.find("%s"), 2, c.szRegion);
    const Read read(strText + c.szCross);
    EXPECT_TRUE(read.reseau.IsValid());
    EXPECT_EQ(read.reseau.GetBoxRegion(), ZuRegion(1.0, -2.0, 3.0, -1.0));
    EXPECT_EQ(read.reseau.GetCrossList().Count(), c.iCrosses);
    ASSERT_EQ(read.list.Count(), 1);
    const ZuReseauFile copy(read.reseau);
    EXPECT_EQ(copy.GetReadErrorCount(), 0);
    EXPECT_EQ(read.reseau.GetReadErrorCount(), c.iFaults);
    EXPECT_EQ(read.reseau.GetReadErrorLine(), c.uLine);
    EXPECT_STREQ(read.reseau.GetReadErrorText(), c.szText);
    EXPECT_EQ(read.list.GetReadErrorCount(), c.iFaults);
    EXPECT_EQ(read.list.GetReadErrorLine(), c.uLine);
    EXPECT_STREQ(read.list.GetReadErrorText(1), "ParserStatusOK");
  }
}

TEST(ReseauFaults, FilesThatAreNoReseaus) {
  ZuReseaufileList list;
  EXPECT_EQ(list.ReadReseauFile("/nowhere/reseau.txt"), 0);
  EXPECT_EQ(list.GetReadErrorCount(), 1);
  EXPECT_STREQ(list.GetReadErrorText(), "ParserErrorStream");
  const TempFile points("1 2.5 3.5 4.5\n"), cameras("{ \"c\" 1 \"d\" 4 3 1 1 }\n{ \"e\" X }\n");
  EXPECT_EQ(list.ReadReseauFile(points.Path()), 0);
  EXPECT_EQ(list.GetReadErrorCount(), 0);
  EXPECT_EQ(list.ReadReseauFile(cameras.Path()), 1);
  EXPECT_EQ(list.GetReadErrorLine(), 2u);
}

TEST(ReseauFaults, FaultBehindASimpleCameraIsDropped) {
  const TempFile file("{ 1 35 0 0 0 0 5 \"a\" 12abc }\n{ 3000000000 36 0 0 0 0 5 \"b\" }\n");
  const ZuCameraList list(file.Path());
  EXPECT_EQ(list.Count(), 2);
  EXPECT_EQ(list.GetReadErrorCount(), 0);
  EXPECT_EQ(list.Last()->GetId(), 3000000000u);
}

}  // namespace
