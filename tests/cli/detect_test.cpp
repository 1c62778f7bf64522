// zu detect: from pictures to projects that the other commands take.
#include "tests/cli/program.h"

TEST(Detect, CalibratesFromThePicturesOfABoard) {
  const ScratchFolder folder;
  const Outcome found = RunLine(
      "zu detect board --size 9x6 --square 25 $S/chessboard/left*.jpg -o out.prj --points "
      "board.coo "
      "--overlay seen --json",
      folder);
  ASSERT_EQ(found.iExit, 0) << found.strErr;
  EXPECT_EQ(found.Json()["photos"].size(), 13U);
  EXPECT_EQ(ReadFile(folder.Path("seen/1_left01.png")).substr(1, 3), "PNG");
  // As well as OpenCV's own adjustment of these corners with five parameters of distortion.
  const nlohmann::json result =
      RunLine("zu calibrate out.prj --board board.coo --json", folder).Json();
  EXPECT_NEAR(result["rms_px"], 0.1954, 0.001);
  EXPECT_NEAR(result["sigma0"], 1.0, 0.15);  // the corners tell their own standard deviations
  // The report shows residuals over the pictures.
  ASSERT_EQ(RunLine("zu adjust $S/chessboard/pixels.prj --control board.coo --estimate c,xh,yh,a1 "
                    "--report r.html --pictures $S/chessboard",
                    folder)
                .iExit,
            0);
  const std::string strReport = ReadFile(folder.Path("r.html"));
  size_t nPictures = 0, uAt = 0;
  while ((uAt = strReport.find("data:image/jpeg;base64,/9j/", uAt + 1)) != std::string::npos) {
    ++nPictures;
  }
  EXPECT_EQ(nPictures, 13U);
}

TEST(Detect, NumbersTargetsByAProject) {
  const ScratchFolder folder;
  const std::string strLine = "zu detect targets $S/network/P8250024.JPG -o out.prj --json";
  const nlohmann::json photo =
      RunLine(strLine + " --project $S/network/camcal.prj --points $S/network/approx.coo", folder)
          .Json()["photos"][0];
  EXPECT_EQ(photo["id"], 4);
  EXPECT_GE(photo["numbered"], 95);
  EXPECT_LT(photo["points"][0]["sx"], 0.07);
  EXPECT_NEAR(photo["largest_offset_px"], 0.14, 0.03);
  const Outcome alone = RunLine(strLine + " --pixel 0.00319", folder);
  EXPECT_NEAR(alone.Json()["photos"][0]["camera"]["c"], 7.3, 0.05);  // from the file
  EXPECT_NE(alone.strErr.find("numbers of its own"), std::string::npos);
}

TEST(Detect, FloorJoinsTheStandardDeviationsInQuadrature) {
  const ScratchFolder folder;
  for (const std::string strLine : {"board --size 9x6 $S/chessboard/left01.jpg",
                                    "targets $S/network/P8250024.JPG --pixel 0.00319"}) {
    const auto deviation = [&](const std::string& strFloor) {
      const Outcome outcome =
          RunLine("zu detect " + strLine + strFloor + " -o out.prj --json", folder);
      return outcome.Json()["photos"][0]["points"][0]["sx"].get<double>();
    };
    const double dNoise = deviation(" --sigma-floor 0");
    EXPECT_NEAR(deviation(" --sigma-floor 0.4"), std::hypot(dNoise, 0.4), 1e-9) << strLine;
  }
}

TEST(Detect, TellsWhatIsWrong) {
  const ScratchFolder folder;
  folder.Write("cut.jpg", ReadFile(Source("samples/chessboard/left01.jpg")).substr(0, 9000));
  ExpectLines(
      {
          {"zu detect board --size 9x6 cut.jpg -o out.prj", 3, "",
           "cut.jpg: cut: the file ends in row"},
          {"zu detect board --size 9x6 $S/chessboard/board.coo -o out.prj", 3, "",
           "JPEG, PNG or TIFF"},
          {"zu detect board --size 9 $S/chessboard/left01.jpg -o out.prj", 2, "", "such as 9x6"},
          {"zu detect targets $S/network/P8250024.JPG -o out.prj --points $S/network/approx.coo", 2,
           "", "--points needs --project"},
          {"zu detect aruco --family 4x4 $S/network/P8250024.JPG -o out.prj", 2, "", "4x4_100"},
          {"zu detect aruco --family 4x4_50 $S/chessboard/left01.jpg -o out.prj", 4, "",
           "no marker of family 4x4_50"},
          {"zu detect board --size 9x6 --family 4x4_50 $S/chessboard/left01.jpg -o out.prj", 2, "",
           "--family and --marker"},
          {"zu detect board --size 4x30 $S/chessboard/left01.jpg -o out.prj", 4, "",
           "left01.jpg: no board"},
      },
      folder);
  EXPECT_EQ(folder.Names(), std::vector<std::string>{"cut.jpg"});
}
