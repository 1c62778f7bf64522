// What holds for every command: help, exit codes, messages, and files that are whole or untouched.
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <charconv>
#include <sstream>

#include "tests/cli/program.h"
#include "zu/version.h"

namespace {

// The command names of a help text, below "Subcommands:".
std::vector<std::string> CommandsIn(const std::string& strHelp) {
  std::vector<std::string> names;
  std::istringstream stream(strHelp);
  std::string strLine;
  bool bList = false;
  while (std::getline(stream, strLine)) {
    if (bList && strLine.empty()) break;
    if (bList) names.push_back(strLine.substr(2, strLine.find(' ', 2) - 2));
    if (strLine == "Subcommands:") bList = true;
  }
  return names;
}

void ExpectHelpWithExample(std::vector<std::string> command) {
  command.push_back("--help");
  const Outcome help = RunZu(command);
  command.pop_back();
  std::string strName = "zu";
  for (const auto& strWord : command) strName += " " + strWord;
  EXPECT_EQ(help.iExit, 0) << strName;
  const auto subcommands = CommandsIn(help.strOut);
  if (subcommands.empty()) {
    const size_t uExample = help.strOut.find("Example:\n  ");
    ASSERT_NE(uExample, std::string::npos) << strName;
    EXPECT_NE(help.strOut.find(strName + " ", uExample), std::string::npos) << strName;
    EXPECT_NE(help.strOut.find("--json"), std::string::npos) << strName;
  }
  for (const auto& strSubcommand : subcommands) {
    command.push_back(strSubcommand);
    ExpectHelpWithExample(command);
    command.pop_back();
  }
}

std::vector<std::string> Join(const std::string& strOutput) {
  std::vector<std::string> arguments = {"transform", Source("samples/datum/local.coo"), "--control",
                                        Source("samples/datum/wgs84.coo")};
  if (!strOutput.empty()) arguments.insert(arguments.end(), {"-o", strOutput});
  return arguments;
}

// Two files of a size that no pipe takes in one go.
std::vector<std::string> JoinMany(const ScratchFolder& folder, const std::string& strOutput) {
  std::ostringstream points;
  for (int i = 1; i <= 5000; ++i) points << i << ' ' << i % 71 << ' ' << i % 73 << " 1.5\n";
  const std::string strPath = folder.Write("many.coo", points.str());
  return {"transform", strPath, "--control", strPath, "--json", "-o", strOutput};
}

}  // namespace

TEST(Program, EveryCommandShowsAWorkedExample) {
  ASSERT_FALSE(CommandsIn(RunZu({"--help"}).strOut).empty());
  ExpectHelpWithExample({});
}

TEST(Program, TellsItsVersion) {
  EXPECT_EQ(RunZu({"--version"}).strOut, std::string("zu ") + ZuVersion() + "\n");
}

TEST(Program, RefusesAWrongCommandLine) {
  ExpectFailure(RunZu({}), 2, "zu: a command is missing");
  ExpectFailure(RunZu({"transfrom"}), 2, "\"transfrom\" is no command");
  ExpectFailure(RunZu({"transform"}), 2, "zu transform: SOURCE is required");
  ExpectFailure(RunZu({"transform", "a.coo"}), 2, "--control is required");
  auto arguments = Join("");
  arguments.push_back("--min-points=x");
  ExpectFailure(RunZu(arguments), 2, "--min-points");
  arguments.back() = "--columns=id,x,q";
  ExpectFailure(RunZu(arguments), 2, "\"q\" is no column");
  arguments.back() = "--columns=x,y,z";
  ExpectFailure(RunZu(arguments), 2, "no column for the id");
}

// Every number of the JSON text is the shortest that reads back to its double.
TEST(Program, PrintsJsonNumbersInTheirShortestForm) {
  auto arguments = Join("");
  arguments.push_back("--json");
  const std::string strText = RunZu(arguments).strOut;
  int iNumbers = 0;
  for (const char* p = strText.c_str(); *p != '\0';) {
    if (*p == '"') {
      p = std::strchr(p + 1, '"') + 1;
      continue;
    }
    double dValue = 0.0;
    const auto read = std::from_chars(p, strText.c_str() + strText.size(), dValue);
    if (read.ec != std::errc() || !(std::isdigit(static_cast<unsigned char>(*p)) || *p == '-')) {
      ++p;
      continue;
    }
    char szShortest[32] = "";
    *std::to_chars(szShortest, szShortest + sizeof(szShortest), dValue).ptr = '\0';
    EXPECT_EQ(std::string(p, read.ptr), szShortest);
    ++iNumbers;
    p = read.ptr;
  }
  EXPECT_GT(iNumbers, 60);
}

TEST(ResultFile, ReplacesTheOldFileAndKeepsItsMode) {
  const ScratchFolder folder;
  const std::string strOut = folder.Write("out.coo", "old");
  ASSERT_EQ(chmod(strOut.c_str(), 0640), 0);
  EXPECT_EQ(RunZu(Join(strOut)).iExit, 0);
  EXPECT_NE(ReadFile(strOut).find("4157870."), std::string::npos);
  struct stat status = {};
  ASSERT_EQ(stat(strOut.c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777, 0640U);
  EXPECT_EQ(folder.Names(), std::vector<std::string>({"out.coo"}));
}

TEST(ResultFile, IsWrittenBehindASymbolicLink) {
  const ScratchFolder folder;
  const std::string strReal = folder.Write("real.coo", "old");
  ASSERT_EQ(symlink(strReal.c_str(), folder.Path("link.coo").c_str()), 0);
  EXPECT_EQ(RunZu(Join(folder.Path("link.coo"))).iExit, 0);
  EXPECT_NE(ReadFile(strReal), "old");
  struct stat status = {};
  ASSERT_EQ(lstat(folder.Path("link.coo").c_str(), &status), 0);
  EXPECT_TRUE(S_ISLNK(status.st_mode));
}

TEST(ResultFile, CannotBeAFolderADeviceOrInAMissingFolder) {
  const ScratchFolder folder;
  ExpectFailure(RunZu(Join(folder.Path("missing/out.coo"))), 5, "cannot be written");
  ExpectFailure(RunZu(Join(folder.Path("."))), 5, "is a folder");
  ExpectFailure(RunZu(Join("/dev/full")), 5, "is no regular file");
}

// Whatever stops the run, the old file stays byte for byte and nothing else is left.
TEST(ResultFile, StaysAsItWasWhenTheRunFails) {
  const ScratchFolder folder;
  const std::string strOut = folder.Write("out.coo", "old");
  const std::vector<std::string> arguments = JoinMany(folder, strOut);

  RunOptions fullDisk;
  fullDisk.iFileLimit = 4096;
  ExpectFailure(RunZu(arguments, fullDisk), 5, "out.coo: cannot be written");

  RunOptions closedPipe;
  closedPipe.bClosedPipe = true;
  ExpectFailure(RunZu(arguments, closedPipe), 5, "standard output cannot be written");

  RunOptions fullStdout;
  fullStdout.strStdout = "/dev/full";
  ExpectFailure(RunZu(arguments, fullStdout), 5, "standard output cannot be written");

  RunOptions interrupt;
  interrupt.iSignalWhileBlocked = SIGINT;
  EXPECT_EQ(RunZu(arguments, interrupt).iExit, 130);

  auto tooMany = arguments;
  tooMany.push_back("--min-points=6000");
  ExpectFailure(RunZu(tooMany), 4, "5000 points in common");

  EXPECT_EQ(ReadFile(strOut), "old");
  EXPECT_EQ(folder.Names(), std::vector<std::string>({"many.coo", "out.coo"}));
}
