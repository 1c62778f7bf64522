// zu orient, intersect and calibrate: from pixels to cameras and points.
#include <algorithm>

#include "tests/cli/program.h"

TEST(Orient, LeadsFromPixelsToPoints) {
  const ScratchFolder folder;
  const nlohmann::json photos =
      RunLine(
          "zu orient $S/network/camcal_unoriented.prj --control $S/network/control_fixed.coo "
          "-o out.prj --json",
          folder)
          .Json()["photos"];
  ASSERT_EQ(photos.size(), 21U);
  const nlohmann::json expected =
      RunLine("zu orient $S/network/camcal.prj --missing --json", folder).Json()["photos"];
  for (size_t i = 0; i < photos.size(); ++i) {
    EXPECT_EQ(expected[i]["way"], "kept");
    for (const size_t k : {0U, 1U, 2U}) {  // the sample's start values are some percent off
      EXPECT_NEAR(photos[i]["position"][k], expected[i]["position"][k], 0.15);
    }
    EXPECT_GT(photos[i]["sd_position"][2], 0.0);
  }
  const nlohmann::json points =
      RunLine("zu intersect out.prj -o out.coo --json", folder).Json()["points"];
  ASSERT_EQ(points.size(), 100U);
  EXPECT_NEAR(points[0]["x"], 0.30, 0.02);
  EXPECT_GT(points[0]["angle_rad"], 1.0);
  // The records of the adjustment orient the project that has no orientations, to the last bit.
  EXPECT_EQ(RunLine("zu adjust out.prj --approx out.coo --datum inner -o adjusted.prj "
                    "--orientations adjusted.txt",
                    folder)
                .iExit,
            0);
  EXPECT_EQ(RunLine("zu orient $S/network/camcal_unoriented.prj --from adjusted.txt -o back.prj "
                    "--orientations back.txt",
                    folder)
                .iExit,
            0);
  const auto info = [&](const char* szProject) {
    return RunLine(std::string("zu photo info ") + szProject + " --json", folder).Json()["photos"];
  };
  const nlohmann::json adjusted = info("adjusted.prj"), back = info("back.prj");
  for (size_t i = 0; i < 21; ++i) EXPECT_EQ(back[i]["position"], adjusted[i]["position"]);
  const std::string strRecords = ReadFile(folder.Path("adjusted.txt"));
  EXPECT_EQ(std::count(strRecords.begin(), strRecords.end(), '{'), 21);
  EXPECT_EQ(strRecords.find(" 0 0 0 }"), std::string::npos);  // with deviations
}

TEST(Orient, CalibratesABoardForMeasuring) {
  const ScratchFolder folder;
  const nlohmann::json result =
      RunLine(
          "zu calibrate $S/chessboard/left.prj --board $S/chessboard/board.coo -o out.prj --json",
          folder)
          .Json();
  EXPECT_LT(result["rms_px"], 0.20535);
  const nlohmann::json measured =
      RunLine(
          "zu measure out.prj --plane $S/chessboard/board.coo --check $S/chessboard/board.coo "
          "--json",
          folder)
          .Json();
  EXPECT_LT(measured["rms"]["total"], 0.1380) << measured.dump().substr(0, 400);
}

TEST(Orient, TellsWhatIsWrong) {
  const ScratchFolder folder;
  folder.Write("one.coo", "7777 0 0 0\n");
  const struct {
    std::string strLine;
    int iExit;
    const char* szErr;
  } cases[] = {
      {"zu calibrate $S/network/camcal.prj --board one.coo", 4, "no photo could be oriented"},
      {"zu intersect $S/network/camcal_unoriented.prj", 4, "two or more oriented photos"},
      {"zu orient $S/network/approx.coo", 3, "project file"},
      {"zu orient $S/network/camcal.prj --from one.coo", 3, "no block of 13 numbers"},
  };
  for (const auto& at : cases) {
    const Outcome outcome = RunLine(at.strLine, folder);
    EXPECT_EQ(outcome.iExit, at.iExit) << at.strLine << outcome.strErr;
    EXPECT_NE(outcome.strErr.find(at.szErr), std::string::npos) << at.strLine << outcome.strErr;
  }
}
