// Help texts fit 80 columns, and what they and zu examples tell to type works.
#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <set>
#include <sstream>

#include "tests/cli/program.h"

namespace {

// The help text of a command, and of those below it.
void CheckWidth(const std::vector<std::string>& words, int* piTexts) {
  std::vector<std::string> arguments = words;
  arguments.emplace_back("--help");
  const Outcome help = RunZu(arguments);
  EXPECT_EQ(help.iExit, 0);
  ++*piTexts;
  std::istringstream lines(help.strOut);
  for (std::string strLine; std::getline(lines, strLine);) {
    EXPECT_LE(strLine.size(), 80U) << "zu " << arguments.front() << ": " << strLine;
  }
  for (const std::string& strName : CommandsIn(help.strOut)) {
    std::vector<std::string> inner = words;
    inner.push_back(strName);
    CheckWidth(inner, piTexts);
  }
}

// What help texts say of each option, its type in front, in one line.
void CollectOptions(const std::vector<std::string>& words,
                    std::map<std::string, std::map<std::string, std::string>>* pTexts) {
  std::vector<std::string> arguments = words;
  arguments.emplace_back("--help");
  const std::string strHelp = RunZu(arguments).strOut;
  std::string* pText = nullptr;
  std::istringstream lines(strHelp);
  for (std::string strLine; std::getline(lines, strLine);) {
    std::istringstream fields(strLine);
    std::string strField;
    if (strLine.compare(0, 3, "  -") == 0) {
      fields >> strField;
      const std::string strName = strField.substr(strField.rfind(',') + 1);
      pText = &(*pTexts)[strName][words.empty() ? "zu" : words.back()];
    } else if (strLine.compare(0, 5, "     ") != 0) {
      pText = nullptr;
    }
    while (pText != nullptr && fields >> strField) *pText += strField + " ";
  }
  for (const std::string& strName : CommandsIn(strHelp)) {
    std::vector<std::string> inner = words;
    inner.push_back(strName);
    CollectOptions(inner, pTexts);
  }
}

TEST(Help, AnOptionMeansTheSameInAllCommands) {
  std::map<std::string, std::map<std::string, std::string>> texts;
  CollectOptions({}, &texts);
  const struct {
    const char* szOption;
    const char* szKernel;
    const char* szOwn = "-";  // a command with a meaning of its own
  } rows[] = {{"--columns", "NAMES columns of the coordinate files, of: id name"},
              {"--delimiter", "C what separates the fields: tab"},
              {"--decimal-comma", "numbers have decimal commas"},
              {"--skip-lines", "N=0 lines above the table"},
              {"--decimals", "N decimals of"},
              {"--without", "P,Q,... points that take no part, by name or id"},
              {"--check-points", "P,Q,... points that take no part; what the result leaves"},
              {"--sigma", "standard deviation of"},
              {"--alpha", "A chance of a false alarm of one test, 0.001"},
              {"--tolerance", "exit code 1", "merge"},
              {"--report", "FILE"},
              {"--save", "FILE"},
              {"--seed", "S=1 of the random samples; the same seed gives the same result"},
              {"--tolerant", "leave out lines that are no points"},
              {"--json", "print one JSON object instead of text"},
              {"--quiet", "leave out everything but the result"},
              {"--strict", "refuse input that a warning is given of"}};
  for (const auto& row : rows) {
    EXPECT_GT(texts[row.szOption].size(), 1U) << row.szOption;
    for (const auto& text : texts[row.szOption]) {
      if (text.first == row.szOwn) continue;
      EXPECT_NE(text.second.find(row.szKernel), std::string::npos)
          << row.szOption << " of " << text.first << ": " << text.second;
    }
  }
}

TEST(Help, FitsEightyColumns) {
  int iTexts = 0;
  CheckWidth({}, &iTexts);
  EXPECT_GT(iTexts, 50);
  EXPECT_NE(RunZu({"help", "merge"}).strOut.find("zu merge [OPTIONS] A B --tolerance T\n"),
            std::string::npos);
}

// Those that take seconds run as lines of docs/command_line.md.
const std::set<std::string> kSlow = {"adjust", "calibrate", "detect board", "detect targets",
                                     "orient"};

TEST(Help, ExamplesRun) {
  const ScratchFolder folder;
  std::istringstream lines(RunLine("zu examples", folder).strOut);
  std::string strName, strAll = "cd zu-examples\n";
  int iRun = 0;
  for (std::string strLine; std::getline(lines, strLine);) {
    if (strLine.compare(0, 5, "# zu ") == 0) {
      strName = strLine.substr(5, strLine.find(':') - 5);
    } else if (!strLine.empty() && strLine.compare(0, 3, "cd ") != 0 && kSlow.count(strName) == 0) {
      strAll += "{ " + strLine + "\n} > /dev/null 2> err; [ $? -le 1 ] || { cat err; echo '" +
                strName + "'; }\n";
      ++iRun;
    }
  }
  EXPECT_GT(iRun, 45);
  EXPECT_EQ(RunLine(strAll, folder).strOut, "");
  ExpectLines({{"zu examples cloud -o two && ls two/samples", 0, "\nclouds\n", ""},
               {"zu examples tranform", 2, "", "did you mean transform?"},
               {"touch f && zu examples plane -o f", 5, "", "-o FOLDER names"}},
              folder);
}

// What a message of a failing call tells to type gives the result.
TEST(Help, MessagesTellWhatToType) {
  const ScratchFolder folder;
  folder.Write("a.txt", "A 0 0 1\nB 20 0 1.5\nC 20 15 0.8\nD 0 15 1.2\nE 10 7 4\n");
  folder.Write("b.txt",
               "A 100 200 51\nB 100 220 51.5\nC 85 220 50.8\nD 85 200 51.2\nE 93 210 54\n");
  folder.Write("numbers.txt", "1 A 100 200 51\n2 B 100 220 51.5\n3 C 85 220 50.8\n");
  folder.Write("other.txt", "7 100 200 51\n8 100 220 51.5\n9 85 220 50.8\n");
  folder.Write("comma.txt", "1 0,5 2,5 3,5\n2 4,5 2,5 3,6\n3 4,5 7,5 3,5\n");
  folder.Write("twice.txt", "A 0 0 1\nB 20 0 1.5\nC 20 15 0.8\nA 0 0 1\n");
  folder.Write("matrix.txt", "1 0 0 5\n0 1 0 6\n0 0 1 7\n0 0 0 1\n");
  const struct {
    const char* szLine;
    int iExit;
    const char* szTold;
    const char* szNext;
  } rows[] = {
      {"zu merge a.txt b.txt", 2, "--tolerance is required",
       "zu merge a.txt b.txt --tolerance 0.1"},
      {"zu transform a.txt", 2, "--control is required", "zu transform a.txt --control b.txt"},
      {"zu transform a.txt --controll b.txt", 2, "did you mean --control?",
       "zu transform a.txt --control b.txt"},
      {"zu plan a.txt", 2, "did you mean plane?", "zu plane a.txt"},
      {"zu trafo2d a.txt --control b.txt --type helmertt", 2, "helmert",
       "zu trafo2d a.txt --control b.txt --type helmert"},
      {"zu transform a.txt --control b.tx", 3, "did you mean b.txt?",
       "zu transform a.txt --control b.txt"},
      {"zu transform a.txt --control other.txt", 4, "the first of a.txt is A, of other.txt is 7",
       "zu transform a.txt --control b.txt"},
      {"zu transform a.txt --control numbers.txt", 3, "--columns tells them, as id,name,x,y,z",
       "zu transform a.txt --control numbers.txt --control-columns id,name,x,y,z"},
      {"zu plane a.txt --columns name,east,y,z", 2, "did you mean x?",
       "zu plane a.txt --columns idname,x,y,z"},
      {"zu plane comma.txt", 3, "--decimal-comma", "zu plane comma.txt --decimal-comma"},
      {"zu plane twice.txt", 3, "--duplicates first", "zu plane twice.txt --duplicates first"},
      {"zu plane a.txt --without EE", 3, "points such as A, B, C are there",
       "zu plane a.txt --without E"},
      {"head -2 a.txt | zu plane -", 4, "a plane needs 3", "head -3 a.txt | zu plane -"},
      {"zu plane a.txt -o missing/feet.txt", 5, "mkdir -p 'missing'",
       "mkdir -p 'missing' && zu plane a.txt -o missing/feet.txt"},
      {"zu cloud convert $S/clouds/plane_scan.xyz scan", 2, ".ply",
       "zu cloud convert $S/clouds/plane_scan.xyz scan.ply"},
      {"zu plane $S/chessboard/left.prj", 3, "is a project file; a coordinate file",
       "zu plane $S/chessboard/board.coo"},
      {"zu measure $S/chessboard/left.prj --plane 9", 3, "a file of points",
       "zu measure $S/chessboard/left.prj --plane $S/chessboard/board.coo"},
      {"zu measure $S/chessboard/left.prj", 2, "--plane is required",
       "zu measure $S/chessboard/left.prj --plane $S/chessboard/board.coo"},
      {"zu construct line a.txt --points A,X", 3, "points such as A, B, C are there",
       "zu construct line a.txt --points A,B"},
      {"zu local a.txt --axis X:A,B --plane XY:Q --origin A", 3, "points such as A",
       "zu local a.txt --axis X:A,B --plane XY:C --origin A"},
      {"zu apply matrix.txt $S/chessboard/left.prj moved.txt", 2, ".prj",
       "zu apply matrix.txt $S/chessboard/left.prj moved.prj"},
      {"zu photo info $S/chessboard/left.prj --photo 99", 3, "zu project info",
       "zu project info $S/chessboard/left.prj"},
      {"zu rectify $S/chessboard/left.prj --photo 1 --zusp 1 < a.txt", 3, "--plane",
       "zu rectify --image $S/chessboard/left.prj --photo 1 --plane $S/chessboard/board.coo "
       "--pixel 2 -o plan.png"}};
  for (const auto& row : rows) {
    ExpectLines({{row.szLine, row.iExit, "", row.szTold}}, folder);
    const Outcome next = RunLine(row.szNext, folder);
    EXPECT_LE(next.iExit, 1) << row.szNext << '\n' << next.strErr;
  }
}

}  // namespace
