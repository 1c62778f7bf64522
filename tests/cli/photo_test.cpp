// zu camera, photo, rectify and measure on the chessboard photos and on a project of the older
// form.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <string>

#include "tests/cli/program.h"
#include "tests/support/full_sizes.h"

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
        Measure(row.szProject, row.bFlip ? std::vector<std::string>{"--json", "--library", "--flip"}
                                         : std::vector<std::string>{"--json", "--library"})
            .Json();
    const auto expected = nlohmann::json::parse(ReadFile(Chessboard(row.szExpected)));
    ASSERT_EQ(result["photos"].size(), 13U);
    EXPECT_EQ(result["points"].size(), 702U);
    for (size_t i = 0; i < 13; ++i) {
      const auto& photo = result["photos"][i];
      const auto& truth = expected["photos"][i];
      EXPECT_EQ(photo["id"], truth["photo"]);
      EXPECT_NEAR(photo["rms"]["total"].get<double>(), truth["rms_mm"].get<double>(), 1e-9);
      EXPECT_EQ(photo["worst"]["id"], truth["worst_point"]);
      EXPECT_NEAR(photo["worst"]["length"].get<double>(), truth["worst_mm"].get<double>(), 1e-9);
    }
    const double dRms = row.szExpected == std::string("expected.json") ? 0.1377 : 0.1357;
    EXPECT_NEAR(result["rms"]["total"].get<double>(), dRms, 5e-5);
    if (dRms == 0.1377) {  // that of the adjustment the orientations come from
      EXPECT_NEAR(result["rms_px"].get<double>(), 0.2053, 5e-5);
    }
    EXPECT_NEAR(result["plane"]["normal"][2].get<double>(), 1.0, 1e-12);
  }
}

// What an adjustment knew of camera and orientations goes on into the points of a measurement.
TEST(Measure, TellsStandardDeviationsAndTheirParts) {
  ScratchFolder folder;
  const std::string strBoard = Chessboard("board.coo"), strOut = folder.Path("adjusted.prj");
  const Outcome adjusted = RunZu({"adjust", Chessboard("pixels.prj"), "--control", strBoard,
                                  "--estimate", "c,xh,yh,a1,a2", "-o", strOut});
  ASSERT_EQ(adjusted.iExit, 0) << adjusted.strErr;
  const Outcome measured =
      RunZu({"measure", strOut, "--plane", strBoard, "--check", strBoard, "--sigma", "0.15px",
             "--incidence", "50", "--explain", "7,46", "-o", folder.Path("p.coo"), "--json"});
  ASSERT_EQ(measured.iExit, 0) << measured.strErr;
  EXPECT_NE(measured.strErr.find("the plane at less than 50.0 degrees"), std::string::npos);
  const auto json = measured.Json();
  EXPECT_NEAR(json["rms"]["total"].get<double>(), 0.1377, 5e-5);  // as with the orientations given
  double dSum = 0.0;
  for (const auto& p : json["points"]) {
    const double sx = p["sx"], sy = p["sy"];
    dSum += sx * sx + sy * sy;
    EXPECT_NEAR(p["sz"].get<double>(), 0.0, 1e-12);  // of an exact board
  }
  // Predicted and met: the pixels' noise is the greater part of both.
  EXPECT_NEAR(std::sqrt(dSum / 702), 0.1377, 0.02);
  const auto &explain = json["explain"], &parts = explain["parts"];
  EXPECT_NEAR(explain["image"][0].get<double>(),
              explain["pixel"][0].get<double>() * 0.0099 - 3.1631, 1e-3);
  const double dBoth = parts["camera_and_orientation"], dPixel = parts["pixel"];
  const double sx = explain["sd_point"][0], sy = explain["sd_point"][1];
  EXPECT_NEAR(std::hypot(sx, sy), std::hypot(dBoth, dPixel), 1e-12);
  EXPECT_LT(dBoth, parts["orientation"]);  // they are correlated
  const std::string strRow = ReadFile(folder.Path("p.coo"));
  EXPECT_EQ(std::count(strRow.begin(), strRow.begin() + strRow.find('\n'), ' '), 7);
}

// The plane is that of zu plane, the library's own on request.
TEST(Measure, FitsThePlaneByAllItsPoints) {
  const ScratchFolder folder;
  std::string strText;
  for (int i = 0; i < 12; ++i) {
    strText += std::to_string(i + 1) + ' ' + std::to_string(20 * (i % 4)) + ' ' +
               std::to_string(20 * (i / 4)) + " 0." + std::to_string(7 * i % 5) + '\n';
  }
  const std::string strPoints = folder.Write("wall.coo", strText);
  const auto normal = [](const nlohmann::json& json) {
    return json["normal"].get<std::vector<double>>();
  };
  const auto measured = [&](std::vector<std::string> more) {
    more.insert(more.begin(), {"measure", Chessboard("left.prj"), "--plane", strPoints, "--json"});
    return normal(RunZu(more).Json()["plane"]);
  };
  const auto plane = normal(RunZu({"plane", strPoints, "--all", "--json"}).Json());
  const auto axis = normal(RunZu({"plane", strPoints, "--axis", "--json"}).Json());
  EXPECT_EQ(measured({}), plane);
  EXPECT_EQ(measured({"--axis"}), axis);
  EXPECT_EQ(measured({"--library"}), axis);
  EXPECT_NE(plane, axis);
}

TEST(Photo, InfoAndUnknownKeywords) {
  const auto info = RunZu({"photo", "info", Chessboard("left.prj"), "--json"}).Json();
  ASSERT_EQ(info["photos"].size(), 13U);
  EXPECT_EQ(info["photos"][0]["measured"], 54);
  EXPECT_NEAR(info["photos"][0]["angles_rad"]["x"].get<double>(), -0.16422457858145698, 1e-12);
  const auto pok = RunZu({"photo", "info", Chessboard("left.prj"), "--rotation", "pok", "--angle",
                          "gon", "--json"})
                       .Json()["photos"][0];
  EXPECT_NEAR(pok["rotation_as"]["omega_gon"].get<double>(),
              -0.16422457858145698 * 200.0 / 3.14159265358979, 1e-9);
  EXPECT_EQ(pok["rotation_as"]["gimbal"], false);

  const ScratchFolder folder;
  const std::string strNewer = folder.Write(
      "p.prj", "FUTURE { A { 1,5 3D } }\nPHOTO { PHOTOID 1 \"a\"\n NEWER 5 SCALE 2 }\n");
  const Outcome unknown = RunZu({"photo", "info", strNewer});
  EXPECT_EQ(unknown.iExit, 0) << unknown.strErr;
  EXPECT_NE(unknown.strErr.find("p.prj:1:1: unknown keyword FUTURE skipped"), std::string::npos);
  EXPECT_NE(unknown.strErr.find("p.prj:3:2: unknown keyword NEWER skipped"), std::string::npos);
}

// One pixel there and one adjusted point back, along the whole chain and in two steps.
TEST(Photo, ConvertsAlongTheChain) {
  ZU_NEEDS_FULL_SIZES();
  constexpr double kX = -0.9329419598855669, kY = 1.3192391629487512;
  const auto convert = [](const char* szProject, const char* szMode, const std::string& strInput) {
    RunOptions input;
    input.strInput = strInput;
    std::vector<std::string> arguments = {
        "photo", "convert", Chessboard(szProject), "--photo", "1", "--mode", szMode};
    if (szProject == std::string("left_flip.prj")) arguments.emplace_back("--flip");
    if (szMode == std::string("object-digi")) arguments.emplace_back("--library");
    return RunZu(arguments, input);
  };
  for (const char* szProject : {"left.prj", "left_flip.prj", "left_poly.prj"}) {
    SCOPED_TRACE(szProject);
    const Outcome there = convert(szProject, "digi-adjusted", "1 244.4274 94.1646\n");
    double x = 0.0, y = 0.0;
    ASSERT_EQ(std::sscanf(there.strOut.c_str(), "1 %lf %lf", &x, &y), 2) << there.strErr;
    EXPECT_NEAR(x, kX, 1e-9);
    EXPECT_NEAR(y, kY, 1e-9);
    const Outcome back = convert(szProject, "adjusted-digi", there.strOut);
    ASSERT_EQ(std::sscanf(back.strOut.c_str(), "1 %lf %lf", &x, &y), 2) << back.strErr;
    EXPECT_NEAR(x, 244.4274, 1e-9);
    EXPECT_NEAR(y, 94.1646, 1e-9);
  }
  const Outcome object = convert("left.prj", "object-digi", "1 0 125 0\n");
  double x = 0.0, y = 0.0;
  ASSERT_EQ(std::sscanf(object.strOut.c_str(), "1 %lf %lf", &x, &y), 2) << object.strErr;
  EXPECT_NEAR(x, 244.53106823364223, 1e-3);
  EXPECT_NEAR(y, 93.956819323968034, 1e-3);
}

TEST(Rectify, ThereAndBack) {
  RunOptions input;
  input.strInput = "1 -3.5 2.25\n";
  std::vector<std::string> arguments = {
      "rectify", Source("samples/older/facade.prj"), "--photo", "1", "--zusp", "1"};
  const Outcome object = RunZu(arguments, input);
  ASSERT_EQ(object.iExit, 0) << object.strErr;
  arguments.insert(arguments.end(), {"--inverse", "--json"});
  input.strInput = object.strOut;
  const auto image = RunZu(arguments, input).Json();
  EXPECT_NEAR(image["points"][0]["x"].get<double>(), -3.5, 1e-9);
  EXPECT_NEAR(image["points"][0]["y"].get<double>(), 2.25, 1e-9);
}

// Exact where the distortion is taken off, unless the library's table is asked for.
TEST(Rectify, InvertsDistortionExactly) {
  ZU_NEEDS_FULL_SIZES();
  ScratchFolder folder;
  std::string strText = ReadFile(Source("samples/older/facade.prj"));
  strText.insert(
      strText.find("    LASTZUSPID"),
      "ZUSPPLANE { ZUSPID 2 \"z\" KAMERA 1 DISTORTION { 4 -35.2 0.05 -0.02 -0.00012 1.5e-7 "
      "12 \"c\" } ZUSPTRAFO { 3 3 2 0 1 0 2 3 0 0 1 } TRAFO3D { 4 4 1 0 0 0 0 1 0 0 0 0 1 "
      "0 0 0 0 1 } }\n");
  std::vector<std::string> arguments = {
      "rectify", folder.Write("p.prj", strText), "--photo", "1", "--zusp", "2"};
  RunOptions input;
  input.strInput = "1 -9.5 8.25\n";
  const Outcome object = RunZu(arguments, input);
  ASSERT_EQ(object.iExit, 0) << object.strErr;
  input.strInput = object.strOut;
  arguments.insert(arguments.end(), {"--inverse", "--json"});
  const double x = RunZu(arguments, input).Json()["points"][0]["x"];
  EXPECT_NEAR(x, -9.5, 1e-12);
  arguments.push_back("--library");
  const double dQuick = RunZu(arguments, input).Json()["points"][0]["x"];
  EXPECT_NEAR(dQuick, -9.5, 1e-3);
  EXPECT_GT(std::fabs(dQuick + 9.5), 1e-12);
  input.strInput = "1 1e6 1e6 0\n";  // beyond the image
  arguments.pop_back();
  EXPECT_EQ(RunZu(arguments, input).Json()["refused"], 1);
}

TEST(Camera, AdjustsThereAndBackAndWrites) {
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
  EXPECT_EQ(RunZu({"camera", "info", Chessboard("cameras.cam"), "--json"}).Json()["cameras"].size(),
            2U);
  EXPECT_EQ(
      RunZu({"camera", "gentri", Chessboard("cameras_simple.cam")}).strOut,
      "    1     4.915686     0.227808     0.065727 -0.0096648196 -0.00019800911          2.5\n");
}

// The image of 640 x 480 pixels of 9.9 um, to the borders of its outer pixels.
TEST(Camera, PlotOfAPhotoShowsItsImage) {
  const ScratchFolder folder;
  const std::string strPlot = folder.Path("curve.svg");
  const auto plot =
      RunZu({"camera", "plot", Chessboard("left.prj"), "--photo", "1", "-o", strPlot, "--json"})
          .Json();
  EXPECT_NEAR(plot["image"][0].get<double>(), 6.336, 1e-9);
  EXPECT_NEAR(plot["image"][1].get<double>(), 4.752, 1e-9);
  EXPECT_NE(ReadFile(strPlot).find("frame: image"), std::string::npos);
  EXPECT_EQ(RunZu({"camera", "plot", Chessboard("cameras.cam"), "--id", "2", "-o", strPlot}).iExit,
            0);
  EXPECT_NE(ReadFile(strPlot).find("frame: domain of the camera"), std::string::npos);
}

TEST(Projects, RefuseWhatIsNotThere) {
  const ScratchFolder folder;
  const std::string strLeft = Chessboard("left.prj"), strCameras = Chessboard("cameras.cam");
  const std::string strLine = folder.Write("line.coo", "1 0 0 0\n2 1 1 1\n3 2 2 2\n");
  const std::string strFacade = Source("samples/older/facade.prj");
  const struct {
    std::vector<std::string> arguments;
    int iExit;
    const char* szMessage;
  } rows[] = {
      {{"measure", strLeft, "--plane", strLine}, 4, "no plane fits"},
      {{"measure", folder.Path("none.prj"), "--plane", strLine}, 3, "no such file"},
      {{"photo", "convert", strLeft, "--photo", "10", "--mode", "digi-biko"}, 3, "no photo 10"},
      {{"rectify", strFacade, "--photo", "1", "--zusp", "9"}, 3, "has no rectification 9"},
      {{"camera", "info", Chessboard("board.coo")}, 3, "coordinate file"},
      {{"camera", "plot", strCameras, "--id", "5", "-o", "x.svg"}, 3, "no camera 5"},
      {{"camera", "plot", strCameras, "-o", "x.svg"}, 2, "--id N"},
  };
  for (const auto& row : rows) {
    RunOptions input;
    input.strInput = "1 1 1\n";
    ExpectFailure(RunZu(row.arguments, input), row.iExit, row.szMessage);
  }
}

}  // namespace

TEST(Photo, FindsItsFirstTransformation) {
  const ScratchFolder folder;
  folder.Write("c", "11 -0.5 -0.5\n12 639.5 -0.5\n21 -0.5 479.5\n22 639.5 479.5\n");
  const std::string strCall =
      "zu photo inner $S/chessboard/pixels.prj --photo 1 --reseau $S/chessboard/reseau.txt ";
  const auto result =
      RunLine(strCall + "--crosses c --type helmert -o i.prj --json", folder).Json();
  // What the project had.
  EXPECT_NEAR(result["coefficients"][0].get<double>(), -3.168, 1e-12);
  EXPECT_NEAR(result["coefficients"][1].get<double>(), 0.0099, 1e-14);
  EXPECT_LT(result["rms"]["total"].get<double>(), 1e-12);
  EXPECT_EQ(result["redundancy"], 4);
  folder.Write("few", "11 0 0\n12 639 0\n77 5 5\n");
  ExpectLines(
      {{"zu photo info i.prj", 0, "reseau \"reseau.txt\"", ""},
       {(strCall + "--crosses few").c_str(), 4, "", "affin needs 3"},
       {(strCall + "--crosses c --type polynom").c_str(), 4, "", "polynom needs 10"},
       {"zu photo inner $S/chessboard/pixels.prj --photo 99 --crosses c", 3, "", "no photo 99"},
       {"zu photo inner $S/chessboard/pixels.prj --photo 1 --crosses c", 3, "", "--reseau"},
       {"zu photo inner i.prj --photo 1 --crosses c --reseau c", 3, "", "no reseau"}},
      folder);
}

TEST(Photo, IsNotOrientedByAMatrixThatIsNoRotation) {
  const ScratchFolder folder;
  std::string strText = ReadFile(Source("samples/chessboard/left.prj"));
  const size_t uMatrix = strText.find("AORM");
  strText.replace(uMatrix, strText.find('}', uMatrix) + 1 - uMatrix,
                  "AORM { 3 3 2 0 0 0 2 0 0 0 2 }");
  folder.Write("p.prj", strText);
  const Outcome outcome = RunLine("zu photo info p.prj", folder);
  EXPECT_NE(outcome.strOut.find("not oriented"), std::string::npos) << outcome.strOut;
  EXPECT_NE(outcome.strOut.find("AORM that is no rotation"), std::string::npos);
  const auto photos = RunLine("zu photo info p.prj --json", folder).Json()["photos"];
  EXPECT_EQ(photos[0]["oriented"], false);
  EXPECT_EQ(photos[1]["oriented"], true);
}

TEST(Project, TellsWhatAFolderHolds) {
  const ScratchFolder folder;
  folder.Write("a.prj", "PHOTO { PHOTOID 1 \"gone.jpg\" }\n");
  folder.Write("a.coo", "1 2.5 3 4\n");
  const auto result = RunLine("zu project detect . --json", folder).Json();
  EXPECT_EQ(result["missing"], 1);
  EXPECT_EQ(result["projects"][0]["same_name"][0], "a.coo");
  ExpectLines({{"zu project detect .", 1, "gone.jpg of photo 1: missing", ""},
               {"zu project detect nowhere", 3, "", "no folder"}},
              folder);
}
