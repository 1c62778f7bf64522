// zu camera, photo, rectify and measure on the chessboard photos and on a project of the older
// form.
#include <gtest/gtest.h>

#include <cmath>
#include <string>

#include "tests/cli/program.h"

namespace {

std::string Chessboard(const char* szName) {
  return Source(std::string("samples/chessboard/") + szName);
}

Outcome Measure(const char* szProject, const std::vector<std::string>& more) {
  std::vector<std::string> arguments = {"measure", Chessboard(szProject),
                                        "--plane", Chessboard("board.coo"),
                                        "--check", Chessboard("board.coo")};
  arguments.insert(arguments.end(), more.begin(), more.end());
  return RunZu(arguments);
}

TEST(Measure, GivesTheFiguresOfAnIndependentCalculation) {
  const struct {
    const char* szProject;
    const char* szExpected;
    bool bFlip;
  } rows[] = {{"left.prj", "expected.json", false},
              {"left_flip.prj", "expected.json", true},
              {"left_poly.prj", "expected.json", false},
              {"left_cap.prj", "expected_cap.json", false}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.szProject);
    const auto result =
        Measure(row.szProject, row.bFlip ? std::vector<std::string>{"--json", "--flip"}
                                         : std::vector<std::string>{"--json"})
            .Json();
    const auto expected = nlohmann::json::parse(ReadFile(Chessboard(row.szExpected)));
    ASSERT_EQ(result["photos"].size(), 13U);
    EXPECT_EQ(result["points"].size(), 702U);
    for (size_t i = 0; i < 13; ++i) {
      const auto& photo = result["photos"][i];
      const auto& truth = expected["photos"][i];
      EXPECT_EQ(photo["id"], truth["photo"]);
      EXPECT_NEAR(photo["rms"].get<double>(), truth["rms_mm"].get<double>(), 1e-9);
      EXPECT_EQ(photo["worst"]["id"], truth["worst_point"]);
      EXPECT_NEAR(photo["worst"]["length"].get<double>(), truth["worst_mm"].get<double>(), 1e-9);
    }
    const double dRms = row.szExpected == std::string("expected.json") ? 0.1377 : 0.1357;
    EXPECT_NEAR(result["rms"].get<double>(), dRms, 5e-5);
    EXPECT_NEAR(result["plane"]["normal"][2].get<double>(), 1.0, 1e-12);
  }
}

TEST(Measure, WritesPointsAndAReportThatStandsAlone) {
  const ScratchFolder folder;
  const std::string strReport = folder.Path("report.html"), strOut = folder.Path("points.coo");
  const Outcome outcome =
      Measure("left.prj", {"--unit", "mm", "--report", strReport, "-o", strOut});
  ASSERT_EQ(outcome.iExit, 0) << outcome.strErr;
  EXPECT_NE(outcome.strOut.find("RMS 0.1377 mm, worst 0.4233 mm (photo 7, point 46)"),
            std::string::npos);
  const std::string strHtml = ReadFile(strReport);
  EXPECT_LT(strHtml.size(), 300000U);
  for (const char* szNeeded : {"RMS 0.1377 mm", "RMS [mm]", "left14.jpg", "times as long",
                               "measure ", "CRC-32", "Lengths of the residuals"}) {
    EXPECT_NE(strHtml.find(szNeeded), std::string::npos) << szNeeded;
  }
  for (const char* szForbidden : {"<script", "src=", "href=", "@import", "url("}) {
    EXPECT_EQ(strHtml.find(szForbidden), std::string::npos) << szForbidden;
  }
  const std::string strPoints = ReadFile(strOut);
  EXPECT_EQ(std::count(strPoints.begin(), strPoints.end(), '\n'), 702);
}

TEST(Measure, RefusesWhatGivesNoMeasurement) {
  const ScratchFolder folder;
  const std::string strLine = folder.Write("line.coo", "1 0 0 0\n2 1 1 1\n3 2 2 2\n");
  ExpectFailure(RunZu({"measure", Chessboard("left.prj"), "--plane", strLine}), 4, "no plane fits");
  ExpectFailure(RunZu({"measure", folder.Path("none.prj"), "--plane", strLine}), 3, "no such file");
  const std::string strFaulty =
      folder.Write("faulty.prj", "PHOTO { PHOTOID 1 \"a\"\n ORIENTED 12abc\n STATE 0 }\n");
  ExpectFailure(RunZu({"photo", "info", strFaulty}), 3, "faulty.prj:2: not a number");
  const std::string strNoPhoto = folder.Write(
      "other.prj", "PHOTO { PHOTOID 1 \"a\" }\nMEASURE { PHOTOID 2 POINTS { 1 2 3 } }\n");
  ExpectFailure(RunZu({"photo", "info", strNoPhoto}), 3, "other.prj:2: measurements of photo 2");
  const std::string strUnoriented =
      folder.Write("un.prj", "PHOTO { PHOTOID 1 \"a\" }\nMEASURE { PHOTOID 1 POINTS { 1 2 3 } }\n");
  const Outcome outcome = RunZu({"measure", strUnoriented, "--plane", Chessboard("board.coo")});
  EXPECT_EQ(outcome.iExit, 4);
}

TEST(Photo, InfoAndUnknownKeywords) {
  const auto info = RunZu({"photo", "info", Chessboard("left.prj"), "--json"}).Json();
  ASSERT_EQ(info["photos"].size(), 13U);
  EXPECT_EQ(info["photos"][0]["measured"], 54);
  EXPECT_NEAR(info["photos"][0]["angles"]["x"].get<double>(), -0.16422457858145698, 1e-12);

  const ScratchFolder folder;
  const Outcome unknown = RunZu({"photo", "info",
                                 folder.Write("p.prj",
                                              "FUTURE { A { 1 } }\nPHOTO { PHOTOID 1 \"a\"\n"
                                              " NEWER 5 SCALE 2 }\n")});
  EXPECT_EQ(unknown.iExit, 0);
  EXPECT_NE(unknown.strErr.find("p.prj:1: unknown keyword FUTURE"), std::string::npos);
  EXPECT_NE(unknown.strErr.find("p.prj:3: unknown keyword NEWER"), std::string::npos);
}

TEST(Photo, ConvertsAlongTheChain) {
  RunOptions input;
  input.strInput = "1 244.4274 94.1646\n";
  const auto adjusted = RunZu({"photo", "convert", Chessboard("left.prj"), "--photo", "1", "--mode",
                               "digi-adjusted", "--json"},
                              input)
                            .Json();
  EXPECT_NEAR(adjusted["points"][0]["x"].get<double>(), -0.9329419598855669, 1e-12);
  // The polynomial is applied; with the other transformations y is turned first.
  for (const auto& arguments :
       {std::vector<std::string>{"photo", "convert", Chessboard("left_poly.prj"), "--photo", "1",
                                 "--mode", "digi-adjusted", "--json"},
        std::vector<std::string>{"photo", "convert", Chessboard("left_flip.prj"), "--photo", "1",
                                 "--mode", "digi-adjusted", "--flip", "--json"}}) {
    EXPECT_NEAR(RunZu(arguments, input).Json()["points"][0]["y"].get<double>(), 1.3192391629487512,
                1e-9);
  }
  input.strInput = "1 99999 99999 0\n";
  const Outcome outside = RunZu(
      {"photo", "convert", Chessboard("left.prj"), "--photo", "1", "--mode", "object-digi"}, input);
  EXPECT_EQ(outside.iExit, 1);
  ExpectFailure(
      RunZu({"photo", "convert", Chessboard("left.prj"), "--photo", "10", "--mode", "digi-biko"},
            input),
      3, "no photo 10");
}

TEST(Rectify, ThereAndBack) {
  RunOptions input;
  input.strInput = "1 -3.5 2.25\n";
  const std::vector<std::string> arguments = {
      "rectify", Source("samples/older/facade.prj"), "--photo", "1", "--zusp", "1"};
  const Outcome object = RunZu(arguments, input);
  ASSERT_EQ(object.iExit, 0) << object.strErr;
  std::vector<std::string> back = arguments;
  back.insert(back.end(), {"--inverse", "--json"});
  input.strInput = object.strOut;
  const auto image = RunZu(back, input).Json();
  EXPECT_NEAR(image["points"][0]["x"].get<double>(), -3.5, 1e-9);
  EXPECT_NEAR(image["points"][0]["y"].get<double>(), 2.25, 1e-9);
  back[5] = "9";
  ExpectFailure(RunZu(back, input), 3, "has no rectification 9");

  const ScratchFolder folder;
  const std::string strShape =
      folder.Write("shape.prj", "PHOTO { PHOTOID 1 \"a\"\n AORM { 2 2 1 0 0 1 } }\n");
  ExpectFailure(RunZu({"photo", "info", strShape}), 3, "shape.prj:2: not a number, or a matrix");
}

TEST(Camera, AdjustPlotAndRefusals) {
  RunOptions input;
  input.strInput = "7 -0.7432187400000003 1.4388204599999998\n";
  const auto there =
      RunZu({"camera", "adjust", Chessboard("cameras.cam"), "--id", "1", "--json"}, input).Json();
  EXPECT_NEAR(there["points"][0]["x"].get<double>(), -0.9329419598855669, 1e-9);
  input.strInput = "7 -0.9329419598855669 1.3192391629487512\n8 50 0\n";
  const Outcome back = RunZu(
      {"camera", "adjust", Chessboard("cameras.cam"), "--id", "1", "--inverse", "--json"}, input);
  EXPECT_EQ(back.iExit, 1);  // one point has no measured one
  EXPECT_NEAR(back.Json()["points"][0]["x"].get<double>(), -0.74321874, 1e-7);
  EXPECT_TRUE(back.Json()["points"][1]["x"].is_null());

  const ScratchFolder folder;
  const std::string strPlot = folder.Path("curve.svg");
  EXPECT_EQ(RunZu({"camera", "plot", Chessboard("cameras.cam"), "--id", "2", "-o", strPlot}).iExit,
            0);
  EXPECT_NE(ReadFile(strPlot).find("displacement [\xC2\xB5m]"), std::string::npos);
  EXPECT_EQ(RunZu({"camera", "info", Chessboard("cameras.cam"), "--json"}).Json()["cameras"].size(),
            2U);
  EXPECT_EQ(
      RunZu({"camera", "gentri", Chessboard("cameras_simple.cam")}).strOut,
      "    1     4.915686     0.227808     0.065727 -0.0096648196 -0.00019800911          2.5\n");
  ExpectFailure(RunZu({"camera", "info", Chessboard("board.coo")}), 3, "coordinate file");
  ExpectFailure(RunZu({"camera", "plot", Chessboard("cameras.cam"), "--id", "5", "-o", strPlot}), 3,
                "no camera 5");
}

}  // namespace
