// Help texts fit 80 columns, and what they and zu examples tell to type works.
#include <gtest/gtest.h>

#include <filesystem>
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

}  // namespace
