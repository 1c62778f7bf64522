// What holds for every command: help, exit codes, messages, and files that are whole or untouched.
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <charconv>
#include <regex>
#include <sstream>

#include "tests/cli/program.h"

namespace {

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

TEST(Program, RefusesAWrongCommandLine) {
  const ScratchFolder folder;
  ExpectLines(
      {{"zu", 2, "", "zu: a command is missing"},
       {"zu transfrom", 2, "", "\"transfrom\" is no command or option; did you mean transform?"},
       {"zu cloud inof", 2, "", "did you mean info?"},
       {"zu qqq", 2, "", "zu --help lists them"},
       {"zu plane a --column id,x,y,z", 2, "", "; did you mean --columns?"},
       {"zu plane a --columns idnmae,x,y,z", 2, "", "; did you mean idname?"},
       {"zu plane a --columns id,Easting,y,z", 2, "", "; did you mean x?"},
       {"zu help cloud info | cmp - <(zu cloud info --help)", 0, "", ""},
       {"zu help | cmp - <(zu --help)", 0, "", ""},
       {"zu transform", 2, "", "zu transform: SOURCE is required"},
       {"zu transform a.coo", 2, "", "--control is required"},
       {"zu transform a --control b --min-points=x", 2, "", "--min-points"},
       {"zu transform a --control b --columns=id,x,q", 2, "", "\"q\" is no column"},
       {"zu transform a --control b --columns=x,y,z", 2, "", "no column for the id"}},
      folder);
}

// Every number of the JSON text is the shortest that reads back to its double.
TEST(Program, PrintsJsonNumbersInTheirShortestForm) {
  auto arguments = Join("");
  arguments.push_back("--json");
  const std::string strText = RunZu(arguments).strOut;
  static const std::regex kNumber("[:,[] ?(-?[0-9][-+.e0-9]*)");
  int iNumbers = 0;
  for (std::sregex_iterator i(strText.begin(), strText.end(), kNumber), end; i != end; ++i) {
    const std::string strNumber = (*i)[1];
    char szShortest[32] = "";
    std::to_chars(szShortest, std::end(szShortest), std::strtod(strNumber.c_str(), nullptr));
    EXPECT_EQ(strNumber, szShortest);
    ++iNumbers;
  }
  EXPECT_GT(iNumbers, 60);
}

// Names are looked at before anything is computed: a wrong one leaves no other file, and old ones
// alone.
TEST(ResultFile, GoesWhereItsNameSaysOrIsRefused) {
  const ScratchFolder folder;
  folder.Write("a.coo", "1 0 0 0\n2 1 0 0\n3 0 1 0\n");
  folder.Write("real.coo", "old");
  ExpectLines(
      {
          {"chmod 640 real.coo; zu plane a.coo -o real.coo; stat -c %a real.coo", 0, "640\n", ""},
          {"ln -s real.coo link; zu plane a.coo -o link && test -L link && wc -w < real.coo", 0,
           "12", ""},
          {"mkdir d; ln -s d/new.coo to; zu plane a.coo -o to && test -L to && wc -w < d/new.coo",
           0, "12", ""},
          {"rm d/new.coo; zu plane a.coo -o feet --log d/../feet", 2, "",
           "--log and -o both write feet; two names"},
          {"zu plane a.coo -o d/new.coo --log to", 2, "", "--log and -o both write d/new.coo"},
          {"zu plane a.coo --json -o -", 2, "", "--json and -o both write standard output"},
          {"zu plane a.coo -o ''", 2, "", "-o: the name of the file is empty"},
          {"zu plane a.coo --log b -o no/such/feet", 5, "", "mkdir -p 'no/such' makes it"},
          {"zu plane a.coo -o .", 5, "", ".: is a folder"},
          {"zu plane a.coo -o /dev/full", 5, "", "is no regular file"},
          {"zu plane none.coo -o no/feet", 5, "", "no/feet: cannot be written"},
          {"ls", 0, "a.coo\nd\nlink\nreal.coo\nto\n", ""},
          {"zu plane a.coo -o - | zu plane - --quiet", 0, "3 points", ""},
          {"zu plane a.coo -o /dev/stdout > out && wc -w < out", 0, "12", ""},
          {"zu plane a.coo -o - > /dev/full", 5, "", "standard output cannot be written"},
          {"seq 9999 | awk '{print $1,$1%71,$1%73,1}' | zu plane - | head -1 > first", 5, "",
           "!zu"},
      },
      folder);
}

TEST(Program, ChecksTheNumbersOfItsOptions) {
  const ScratchFolder folder;
  folder.Write("a.coo", "1 0 0 0\n2 1 0 0\n3 0 1 0\n");
  ExpectLines(
      {{"zu transform a.coo --control a.coo --min-points -7", 2, "", "-7 is not at least 3"},
       {"zu camera adjust $S/chessboard/cameras.cam --id 1.5", 2, "",
        "--id: 1.5 is not a whole number from 0 to 4294967295"},
       {"zu merge a.coo a.coo --tolerance nan", 2, "", "nan is not a number"},
       {"zu merge a.coo a.coo --tolerance 0", 2, "", "0 is not above 0"},
       {"zu merge a.coo a.coo --tolerance 1 --blend 2", 2, "", "2 is not at most 1"},
       {"zu local a.coo --scale-tolerance -1", 2, "", "-1 is not at least 0"},
       {"zu camera plot $S/chessboard/cameras.cam --id 1 -o x --width inf", 2, "", "inf is"},
       {"zu camera plot $S/chessboard/cameras.cam --id 1 -o x --height -5", 2, "",
        "--height: -5 is not above 0"}},
      folder);
}

// On a terminal the program tells that it works, also where nobody knows how long; the line is gone
// at the end. The input comes when the line was seen.
TEST(Program, TellsThatItWorks) {
  const ScratchFolder folder;
  folder.Write("a.coo", "1 0 0 0\n2 1 0 0\n3 0 1 0\n");
  if (RunLine("script --version", folder).iExit != 0) GTEST_SKIP() << "no terminal can be had";
  folder.Write("run",
               "(for i in {1..900}; do grep -q works seen && break; sleep 0.1; done; cat a.coo) |"
               "'" ZU_PROGRAM "' plane - -o feet");
  ExpectLines(
      {{"script -qfec 'bash run' seen > /dev/null; cat seen", 0, "\rzu plane works, 0 s\033[K", ""},
       {"tail -n 20 seen", 0, "\r\033[K3 points", ""}},
      folder);
}

// What rounds to 0 has no sign, one thing no plural.
TEST(Program, WritesNumbersAsPeopleDo) {
  const ScratchFolder folder;
  folder.Write("a.coo", "1 0 0 0\n2 1 0 0\n3 0 1 -1e-9\n4 1 1 -1e-9\n");
  ExpectLines({{"zu local a.coo --axis X:1,2 --plane XY:3 -o -", 0, "!-0 ", ""},
               {"zu local a.coo --axis X:1,2 --plane XY:3", 0, "!-0.0000000 ", ""},
               {"zu plane a.coo", 0, "!-0.000000000000 ", ""},
               {"zu trafo2d a.coo --control <(head -1 a.coo) --type helmert", 4, "", "1 point in"}},
              folder);
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
  ExpectFailure(RunZu(arguments, closedPipe), 5, "out.coo is not written");

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
