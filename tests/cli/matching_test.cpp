// Which points two files have in common, and what is said where these do not go together.
#include <gtest/gtest.h>

#include "tests/cli/program.h"

namespace {

const char* const kNames[] = {"--columns", "idname,x,y,z", "--json"};

constexpr char kCube[] = "1 0 0 0\n2 9 0 0\n3 9 7 0\n4 0 7 0\n5 0 0 5\n6 9 0 5\n7 9 7 5\n8 0 7 5\n";

}  // namespace

// "M82" and "TP6266" have one id in the library.
TEST(Matching, TellsNamesOfOneIdApart) {
  const ScratchFolder folder;
  const auto run = [&](const std::string& strCommand, const std::string& strA,
                       const std::string& strB, std::vector<std::string> more) {
    std::vector<std::string> arguments = {strCommand, folder.Write("a.coo", strA)};
    if (strCommand != "merge") arguments.push_back("--control");
    arguments.push_back(folder.Write("b.coo", strB));
    arguments.insert(arguments.end(), more.begin(), more.end());
    arguments.insert(arguments.end(), std::begin(kNames), std::end(kNames));
    const Outcome outcome = RunZu(arguments);
    EXPECT_EQ(outcome.iExit, 0) << outcome.strErr;
    return outcome.Json();
  };
  const std::string strFour = "A 0 0 0\nB 1 0 0\nC 0 1 0\n17 0 0 1\n";
  auto result = run("transform", strFour + "M82 1 1 0\n", strFour + "TP6266 5 5 9\n", {});
  EXPECT_EQ(result["common"], 4);
  EXPECT_EQ(result["only_source"], nlohmann::json({"M82"}));
  EXPECT_EQ(result["only_control"], nlohmann::json({"TP6266"}));
  result = run("transform", "M82 1 1 0\nTP6266 5 5 9\n" + strFour,
               "TP6266 5 5 9\n" + strFour + "M82 1 1 0\n", {});
  EXPECT_EQ(result["common"], 6);
  EXPECT_LT(result["rms"]["z"].get<double>(), 1e-12);
  result = run("merge", strFour + "M82 1 1 0\nP 3 3 3\n", strFour + "M82 1 8 0\nTP6266 5 5 9\n",
               {"--tolerance=0.1"});
  EXPECT_EQ(result["rejected"], nlohmann::json({"M82"}));
  EXPECT_EQ(result["only_a"], nlohmann::json({"P"}));
  EXPECT_EQ(result["only_b"], nlohmann::json({"TP6266"}));
}

// Beside ids of their own, names count between files; ids give way to each other then, and the
// joined file has each once.
TEST(Matching, NamesCountMoreThanIds) {
  const ScratchFolder folder;
  folder.Write("a.coo", "1 A 0 0 0\n2 B 1 0 0\n3 C 0 1 0\n4 \"\" 0 0 1\n");
  folder.Write("b.coo", "3 A 0 0 0\n2 B 1 0 0\n9 C 0 1 0\n4 \"\" 0 0 1\n1 D 5 5 5\n");
  ExpectLines(
      {{"zu transform a.coo --control b.coo --columns id,name,x,y,z --json -o out.coo", 0,
        "\"common\": 4", "b.coo: points are matched by name; 3 ids changed, the first of point A"},
       {"zu plane --axis out.coo --columns id,name,x,y,z", 0, "5 points", ""}},
      folder);
}

TEST(Matching, APointThatStandsTwiceIsAFaultOrCountsAsTold) {
  const ScratchFolder folder;
  folder.Write("a.coo", "1 0 0 0\n2 4 0 0\n3 0 4 0\n4 4 4 0\n2 6 0 0\n\n2 5 0 0\n");
  folder.Write("names.coo", "A 0 0 0\nB 1 0 0\nA 0 1 0\n");
  folder.Write("photos.coo", "1 1 0 0 0\n1 2 1 0 0\n1 3 1 5 0\n");
  ExpectLines(
      {{"zu plane a.coo", 3, "", "a.coo:5: point 2 stands in lines 2 and 5; once would be right"},
       {"zu plane names.coo --columns idname,x,y,z", 3, "", "point A stands in lines 1 and 3"},
       {"zu plane a.coo --duplicates first -o -", 0, "2                4 ", "the first counts"},
       {"zu plane a.coo --duplicates last -o - --quiet", 0, "2                5 ",
        "a.coo: 1 point more than once, the first 2 in lines 2 and 5; the last counts"},
       {"zu plane a.coo --duplicates mean -o -", 0, "2                5 ", "the mean counts"},
       {"zu plane a.coo --duplicates mean --json", 0, "\"warnings\": [\"a.coo: 1 point more", ""},
       {"zu plane photos.coo --columns id,photo,x,y", 2, "", "has no column z, which the command"},
       {"zu plane photos.coo --columns id,photo,x,y,z", 0, "3 points", ""}},
      folder);
}

TEST(Matching, TellsExchangedAxesAndWrongPoints) {
  const ScratchFolder folder;
  folder.Write("cube.coo", kCube);
  ExpectLines(
      {{"awk '{print $1,$3,$2,$4+0.01*(NR%2)}' cube.coo > swapped.coo", 0, "", ""},
       {"awk '{print $1,$2+(NR==3)*4,$3,$4}' cube.coo > wrong.coo", 0, "", ""},
       {"awk '{print $1,2*$2,2*$2,2*$2}' cube.coo > line.coo", 0, "", ""},
       {"zu transform swapped.coo --control cube.coo", 4, "",
        "swapped.coo and cube.coo: mirrored; RMS 0.0050"},
       {"zu transform swapped.coo --control cube.coo", 4, "", "x and y of swapped.coo are exch"},
       {"zu trafo2d swapped.coo --control cube.coo --type helmert", 4, "", "mirrored; RMS 0.0000"},
       {"zu transform wrong.coo --control cube.coo", 0, "8 common points", "point 3 is off by 2."},
       {"zu transform line.coo --control cube.coo", 4, "", "not on one straight line"}},
      folder);
}
