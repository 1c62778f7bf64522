// Coordinate files on the command line: what is read, what is refused, and how it is said.
#include <gtest/gtest.h>

#include "tests/cli/program.h"

namespace {

Outcome TransformText(const std::string& strText, const std::string& strColumns = "id,x,y,z") {
  const ScratchFolder folder;
  const std::string strPath = folder.Write("points.coo", strText);
  return RunZu({"transform", strPath, "--control", strPath, "--columns", strColumns, "--json"});
}

}  // namespace

TEST(PointFile, ThatCannotBeReadIsNamed) {
  const std::string strGood = Source("samples/datum/local.coo");
  const ScratchFolder folder;
  ExpectFailure(RunZu({"transform", folder.Path("none.coo"), "--control", strGood}), 3,
                "none.coo: cannot be read (No such file");
  ExpectFailure(RunZu({"transform", strGood, "--control", folder.Path(".")}), 3,
                "cannot be read (Is a directory)");
}

TEST(PointFile, WithoutAPointIsRefused) {
  std::string strNoise;
  for (unsigned u = 1, i = 0; i < 20000; ++i) {
    u = u * 1664525U + 1013904223U;
    const char c = static_cast<char>(u >> 24);
    strNoise += c >= '0' && c <= '9' ? '?' : c;  // digits might make a point
  }
  for (const std::string& strText :
       {std::string(), std::string("\n\n"), std::string("# title\nname x y z\n"),
        std::string("\0\0\0\0", 4), std::string("A 1 2 3\n")}) {
    ExpectFailure(TransformText(strText), 3, "holds no point");
  }
  EXPECT_EQ(TransformText(strNoise).iExit, 3);
}

TEST(PointFile, ALineWhosePointWouldBeInventedIsNamed) {
  const std::string strGood = "1 0 0 0\n2 1 0 0\n";
  ExpectFailure(TransformText(strGood + "3 0 1\n"), 3,
                "points.coo:3: the line has 3 fields, the columns id,x,y,z need 4");
  ExpectFailure(TransformText(strGood + "\n3 0 1m 0\n"), 3,
                "points.coo:4: \"1m\" in column y is no number");
  ExpectFailure(TransformText(strGood + "3 0,5 1,25 0,75\n"), 3,
                "points.coo:3: the line has decimal commas");
  ExpectFailure(TransformText("1 0 0 0\n2 1 0 " + std::string(2000, '0') + "\n"), 3,
                "points.coo:2: the line has 2006 bytes");
}

TEST(PointFile, TakesEveryUsualForm) {
  const std::string aTexts[] = {
      "1 0 0 0\n2 1 0 0\n3 0 1 0",  // no line end at the end
      "\xEF\xBB\xBF"
      "1 0 0 0\r\n2 1 0 0\r\n3 0 1 0\r\n",     // byte order mark, carriage returns
      "1,0,0,0\n2,1.5,0,0\n3,0,1.5,0\n",       // commas without blanks
      "1; 0; 0; 0\n2; 1; 0; 0\n3; 0; 1; 0\n",  // semicolons
      "# a b c\n1\t0\t0\t0 edge\n\n2 1 0 0 corner\n3 0 +1 0e0\n",  // comment, remarks
  };
  for (const auto& strText : aTexts) {
    const Outcome outcome = TransformText(strText);
    ASSERT_EQ(outcome.iExit, 0) << strText << outcome.strErr;
    EXPECT_EQ(outcome.Json()["common"], 3) << strText;
    EXPECT_EQ(outcome.strErr, "");
  }
}

TEST(PointFile, WarnsOfWhatItPassesOver) {
  const std::string strText = "A 0 0 9\n1 0 0 0\n2 1 0 0\n3 0 1 0\n3 0 1 0\n";
  const Outcome outcome = TransformText(strText);
  EXPECT_EQ(outcome.iExit, 0);
  EXPECT_NE(outcome.strErr.find("points.coo:1: no id"), std::string::npos) << outcome.strErr;
  EXPECT_NE(outcome.strErr.find("point 3 stands more than once"), std::string::npos);

  const ScratchFolder folder;
  const std::string strPath = folder.Write("points.coo", strText);
  EXPECT_EQ(RunZu({"transform", strPath, "--control", strPath, "--quiet"}).strErr, "");
}

// Names as ids, a control code and a column to pass over: the result file reads back with them.
TEST(PointFile, IsWrittenWithTheColumnsItWasReadWith) {
  const ScratchFolder folder;
  const std::string strSource = folder.Write(
      "source.coo", "A1 - 12 0 0 0\nA2 - 0 1 0 0\n\"A 3\" - 0 0 1 0\n17 - 0 0 0 1\nB - 0 1 1 1\n");
  const std::string strControl = folder.Write(
      "control.coo", "A1 - 12 5 5 5\nA2 - 0 6 5 5\n\"A 3\" - 0 5 6 5\n17 - 0 5 5 6.1\n");
  const std::string strColumns = "idname,skip,code,x,y,z";
  const std::string strOut = folder.Path("out.coo");
  const Outcome outcome = RunZu({"transform", strSource, "--control", strControl, "--columns",
                                 strColumns, "--json", "-o", strOut});
  ASSERT_EQ(outcome.iExit, 0) << outcome.strErr;
  const auto points = outcome.Json()["points"];
  ASSERT_EQ(points.size(), 5U);
  EXPECT_EQ(points[0]["name"], "A1");
  EXPECT_EQ(points[0]["x"], 5.0);  // the code of A1 is 12: X and Y are those of the control point
  EXPECT_EQ(points[0]["y"], 5.0);
  EXPECT_TRUE(points[4]["dx"].is_null());

  const Outcome again =
      RunZu({"transform", strOut, "--control", strOut, "--columns", "idname,code,x,y,z", "--json"});
  ASSERT_EQ(again.iExit, 0) << again.strErr << ReadFile(strOut);
  const auto copies = again.Json()["points"];
  ASSERT_EQ(copies.size(), points.size());
  for (size_t i = 0; i < copies.size(); ++i) {
    EXPECT_EQ(copies[i]["id"], points[i]["id"]);
    EXPECT_NEAR(copies[i]["z"].get<double>(), points[i]["z"].get<double>(), 1e-12);
  }
}
