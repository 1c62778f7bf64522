// The commands of the README give the output that stands there, line by line.
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <sstream>
#include <string>
#include <vector>

#include "tests/cli/program.h"

namespace {

struct Shown {
  std::vector<std::string> arguments;
  std::vector<std::string> lines;
};

// Indented blocks that begin with "$ zu".
std::vector<Shown> ShownCommands() {
  std::vector<Shown> shown;
  std::istringstream stream(ReadFile(Source("README.md")));
  bool bInside = false;
  for (std::string strLine; std::getline(stream, strLine);) {
    const bool bIndented = strLine.compare(0, 4, "    ") == 0;
    if (bIndented && strLine.compare(4, 5, "$ zu ") == 0) {
      shown.emplace_back();
      std::istringstream words(strLine.substr(9));
      for (std::string strWord; words >> strWord;) shown.back().arguments.push_back(strWord);
      bInside = true;
    } else if (bInside && (bIndented || strLine.empty())) {
      shown.back().lines.push_back(strLine.empty() ? "" : strLine.substr(4));
    } else {
      bInside = false;
    }
  }
  for (Shown& command : shown) {
    while (!command.lines.empty() && command.lines.back().empty()) command.lines.pop_back();
  }
  return shown;
}

TEST(Readme, CommandsGiveWhatItShows) {
  ASSERT_EQ(chdir(Source("").c_str()), 0);
  const std::vector<Shown> shown = ShownCommands();
  ASSERT_GE(shown.size(), 2U);
  const ScratchFolder folder;
  for (const Shown& command : shown) {
    std::vector<std::string> arguments = command.arguments;
    for (std::string& strArgument : arguments) {
      if (strArgument.compare(0, 4, "out/") == 0) strArgument = folder.Path(strArgument.substr(4));
    }
    const Outcome outcome = RunZu(arguments);
    SCOPED_TRACE(command.arguments[0]);
    EXPECT_EQ(outcome.iExit, 0) << outcome.strErr;
    std::istringstream stream(outcome.strOut);
    size_t i = 0;
    for (std::string strLine; std::getline(stream, strLine); ++i) {
      ASSERT_LT(i, command.lines.size()) << strLine;
      EXPECT_EQ(strLine, command.lines[i]);
    }
    EXPECT_EQ(i, command.lines.size());
  }
}

}  // namespace
