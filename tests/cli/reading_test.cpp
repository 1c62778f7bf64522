// What the program tells of files that are not as they should be, and when it refuses them.
#include "tests/cli/program.h"

TEST(Reading, WarnsRefusesOrLeavesOut) {
  const ScratchFolder folder;
  folder.Write("few.pts", "1\n1 2 3 7 300 0 0\n4 5 6 7 0 0 0\n");
  folder.Write("bad.pts", "3\n1 2 3\n4 five 6\n7 8 9\n");
  folder.Write("title.coo", "1 0 0 0\n2 1 0 0\nsecond part\n3 0 1 0\n");
  folder.Write("comma.coo", "1;0;0;0\n2;1,5;0;0\n3;0;1,5;0\n");
  ExpectLines(
      {{"zu cloud info few.pts", 0, "2 points", "few.pts:2:9: colours limited to 0 to 255: 1"},
       {"zu cloud info few.pts", 0, "", "few.pts:1: 1 points are announced, 2 are there"},
       {"zu cloud info few.pts --strict", 3, "", "without --strict this is a warning"},
       {"zu cloud info few.pts --json", 0, "line ends LF, header \\\"1\\\"", "few.pts:2:9: "},
       {"zu cloud info bad.pts", 3, "", "bad.pts:3:3: \"five\" is no number; one such as 12.345"},
       {"zu cloud info bad.pts --tolerant", 0, "2 points", "bad.pts:3:3: \"five\" is no number"},
       {"zu plane title.coo", 0, "", "title.coo:3: the line is no point, but a title; # in front"},
       {"zu plane title.coo --strict", 3, "", "title.coo:3: the line is no point"},
       {"zu plane comma.coo", 3, "", "comma.coo:2:3: \"1,5\" has a decimal comma; 1.5 would"},
       {"zu plane comma.coo --tolerant --json", 0, "decimal comma", "comma.coo:2:3: decimal comm"},
       {"zu plane comma.coo --tolerant --strict", 3, "", "decimal commas are taken as decimal"}},
      folder);
  const auto json = RunZu({"plane", folder.Path("title.coo"), "--json", "--quiet"}).Json();
  EXPECT_EQ(json["warnings"].size(), 1u);
}

// Keys that stand around the result of every command.
TEST(Reading, HeadsEveryResult) {
  const ScratchFolder folder;
  folder.Write("p.csv", "id;x [mm];y [mm];z [mm]\n1;0;0;0\n2;9;0;0\n3;0;9;0\n4;9;9;0\n5;4;4;40\n");
  const auto head = [&folder](const char* szLine) {
    const auto json = RunLine(szLine, folder).Json();
    EXPECT_EQ("zu " + json["zu_version"].get<std::string>() + "\n", RunZu({"--version"}).strOut);
    return json["command"].dump() + json["status"].dump() + json["status_text"].dump() +
           json["unit"].dump();
  };
  EXPECT_EQ(head("zu plane p.csv --json"), R"("plane"0"good""mm")");
  EXPECT_EQ(head("zu plane p.csv --json --unit m"), R"("plane"0"good""m")");
  EXPECT_EQ(head("zu cloud info $S/clouds/autzen.pts --json"), R"("cloud info"0"good"null)");
  EXPECT_EQ(head("zu check nowhere --json").substr(0, 8), R"("check"3)");
  EXPECT_EQ(head("zu local p.csv --axis X:1,2 --plane XY:3 --scale 1,2:9 --scale 1,3:8 --json"),
            R"("local"5"scales disagree""mm")");
}
