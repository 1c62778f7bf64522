// Signs that all commands share: an error of +0.5 in x of one given point shows with its sign.
#include "tests/cli/program.h"

TEST(Conventions, ResidualsAreGivenMinusComputed) {
  const ScratchFolder folder;
  std::string strPoints, strWrong;
  for (int i = 1; i <= 12; ++i) {
    const std::string strRest =
        " " + std::to_string(7 * i % 25) + " " + std::to_string(i % 3) + "\n";
    strPoints += std::to_string(i) + " " + std::to_string(3 * i % 16) + strRest;
    strWrong +=
        std::to_string(i) + " " + std::to_string(3 * i % 16 + (i == 5 ? 0.5 : 0.0)) + strRest;
  }
  folder.Write("a", strPoints);
  folder.Write("b", strWrong);
  for (const char* szLine :
       {"transform a --control b", "transform a --control b --sigma 0.01 --test",
        "merge b a --tolerance 0.1", "trafo2d a --control b --type affin --sigma 0.01 --test",
        "compare a b --sigma 0.01"}) {
    SCOPED_TRACE(szLine);
    const auto result = RunLine("zu " + std::string(szLine) + " --json", folder).Json();
    for (const auto& point : result["points"]) {
      if (point["id"] != 5) continue;
      EXPECT_GT(point["dx"].get<double>(), 0.3);
      EXPECT_GT(point["leave_one_out"][0].get<double>(), 0.3);
      EXPECT_GT(point["w"][0].get<double>(), 0.0);
    }
    for (const auto& aside : result["set_aside"]) EXPECT_GT(aside["error"][0], 0.45);
  }
}

TEST(Conventions, DeviationsAreComputedMinusCheckAndVAdjustedMinusMeasured) {
  const ScratchFolder folder;
  const auto result =
      RunLine(
          "sed 's/^1 0 /1 0.5 /' $S/chessboard/board.coo > check; zu measure "
          "$S/chessboard/left.prj --plane $S/chessboard/board.coo --check check --json",
          folder)
          .Json();
  EXPECT_NEAR(result["points"][0]["dx"].get<double>(), -0.5, 0.3);
  EXPECT_EQ(result["points"][0]["dx"], result["points"][0]["x"].get<double>() - 0.5);
  // The measured x of one point 9 px to the right.
  const auto adjusted =
      RunLine(
          "sed 's/244.4274/253.4274/' $S/chessboard/left.prj > wrong.prj; zu adjust wrong.prj "
          "--control $S/chessboard/board.coo --test --json",
          folder)
          .Json();
  int iFound = 0;
  for (const auto& aside : adjusted["set_aside"]) {
    if (aside["photo"] != 1 || aside["id"] != 1) continue;
    EXPECT_NEAR(aside["error"][0].get<double>(), 9.0, 1.0);
    ++iFound;
  }
  EXPECT_EQ(iFound, 1);
}
