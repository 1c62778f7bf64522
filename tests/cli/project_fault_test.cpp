// What is wrong in a project, a camera file or a point on standard input is refused or named with
// its place: no call ends with exit code 0 and other numbers than were meant.
#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "tests/cli/program.h"

namespace {

std::string Board() { return Source("samples/chessboard/board.coo"); }

// The first photo of the chessboard and its measurements, with a text put in place of another.
std::string OnePhoto(const std::string& strFrom = "", const std::string& strTo = "") {
  std::string strText = ReadFile(Source("samples/chessboard/left.prj"));
  strText.resize(strText.find("PHOTO {", strText.find("MEASURE")));
  const size_t uPlace = strText.find(strFrom);
  EXPECT_NE(uPlace, std::string::npos) << strFrom;
  return strText.replace(uPlace, strFrom.size(), strTo);
}

Outcome MeasureText(const std::string& strText, const std::vector<std::string>& more = {}) {
  const ScratchFolder folder;
  std::vector<std::string> arguments = {
      "measure", folder.Write("p.prj", strText), "--plane", Board(), "--check", Board()};
  arguments.insert(arguments.end(), more.begin(), more.end());
  return RunZu(arguments);
}

TEST(ProjectFaults, AreToldWithPlaceAndWhatWouldBeRight) {
  const struct {
    const char *szFrom, *szTo, *szMessage;
  } rows[] = {
      {"3 182.943688", "3 182,943688", ":28:14: \"182,943688\" is no number; 182.943688 would be"},
      {"1 244.4274", "1 244,4274", ":33:11: \"244,4274\" is no number; 244.4274 would be right"},
      {"1 244.4274", "1 nan", ":33:11: \"nan\" is no number"},
      {"1 244.4274", "1 1e400", ":33:11: \"1e400\" is no number"},
      {"1 244.4274", "1.5 244.4274",
       ":33:9: \"1.5\" is no id; a whole number from 1 to 4294967295"},
      {"1 244.4274", "-1 244.4274", ":33:9: \"-1\" is no id"},
      {"244.4274 94.1646", "244.4274", ":33:9: row of point 1 ends after 2 of 3 values; id x y"},
      {"510.3763 266.2278", "510.3763", ":86:9: row of point 54 ends after 2 of 3 values"},
      {"{ 2 0.5 1 0 479.5 0 -1 }", "{ 2 0.5 1 0 479.5 0 }",
       ":21:5: PRERESTRAFO has 5 of 6 coefficients"},
      {"{ 2 0.5", "{ 7 0.5", ":21:19: PRERESTRAFO: type 7 is no plane transformation; 1 Helmert"},
      {"3 3\n", "2 2\n", ":23:5: AORM of 2x2 elements; 3x3 elements would be right"},
      {"ORIENTED 1", "ORIENTED yes", ":12:14: \"yes\" is no whole number"},
      {"PHOTOID 1", "PHOTODI 1", ":4:1: PHOTO without PHOTOID; PHOTOID in place of PHOTODI"},
      {"MEASURE {", "MEASUER {", ":30:1: unknown keyword MEASUER skipped; MEASURE would be right"},
      {"\"left01.jpg\"", "\"left01.jpg", ":5:15: a text is not closed"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.szTo);
    ExpectFailure(MeasureText(OnePhoto(row.szFrom, row.szTo)), 3,
                  std::string("p.prj") + row.szMessage);
  }
  const std::string strOne = OnePhoto();
  const size_t uMeasure = strOne.find("MEASURE");
  ExpectFailure(MeasureText(strOne + strOne.substr(0, uMeasure)), 3,
                "p.prj:93:1: photo 1 stands twice, first in line 4");
  ExpectFailure(MeasureText(strOne + strOne.substr(uMeasure)), 3,
                "p.prj:90:1: measurements of photo 1 stand twice, first in line 30");
  ExpectFailure(MeasureText(strOne.substr(uMeasure)), 3, "which is not in the file");
  ExpectFailure(MeasureText("Dear all, these are\nthe photos 1 to 13 { of course }.\n"), 3,
                "p.prj: does not look like a project file");
  ExpectFailure(MeasureText(ReadFile(Board())), 3, "but like a coordinate file");
}

// With another photo in order the result stands, and the exit code tells that something is missing.
TEST(ProjectFaults, LeaveOutThePhotoThatLacksSomething) {
  const struct {
    const char *szFrom, *szTo, *szMessage;
  } rows[] = {
      {"AORM {", "AROM {", "photo 1 has no AORM: line 23 has AROM; AORM would be right"},
      {"AORV {", "AOVR {", "photo 1 has no AORV: line 28 has AOVR; AORV would be right"},
      {"CAMDATA {", "CAMDAT {", "photo 1 has no camera: line 14 has CAMDAT; CAMDATA would be"},
      {"C 4.915686", "CC 4.915686", "photo 1 has an unknown camera keyword: line 16 has CC; C "},
      {"A2 -0.0", "a2 -0.0", "photo 1 has an unknown camera keyword: line 17 has a2; A2 would"},
      {"C 4.915686", "", "photo 1 has a camera without constant"},
      {"PRERESTRAFO {", "PRERESTRAF {", "photo 1 has no PRERESTRAFO: line 21 has PRERESTRAF"},
      {"-3.168 0.0099 -2.376 0", "-3.168 0 -2.376 0", "photo 1 has a singular plane transform"},
      {"ORIENTED 1", "", "photo 1 is not oriented: ORIENTED 1 with AORM and AORV would be right"},
      {"0.9627788920850574", "-0.9627788920850574", "photo 1 has an AORM that is no rotation"},
  };
  std::string strOther = OnePhoto("PHOTOID 1", "PHOTOID 2");
  strOther.replace(strOther.find("PHOTOID 1"), 9, "PHOTOID 2");
  for (const auto& row : rows) {
    SCOPED_TRACE(row.szTo);
    const std::string strOne = OnePhoto(row.szFrom, row.szTo);
    const Outcome both = MeasureText(strOne + strOther, {"--json"});
    EXPECT_EQ(both.iExit, 1);
    EXPECT_NE(both.strErr.find(row.szMessage), std::string::npos) << both.strErr;
    EXPECT_EQ(both.Json()["left_out"][0]["photo"], 1);
    EXPECT_NEAR(both.Json()["rms"]["total"].get<double>(), 0.1529, 5e-5);
    ExpectFailure(MeasureText(strOne), 4, row.szMessage);
  }
}

TEST(ProjectFaults, NameTheMeasurementThatCannotBe) {
  const struct {
    const char *szFrom, *szTo, *szMessage;
    int iExit;
  } rows[] = {
      {"1 244.4274", "1 744.4274", "photo 1, point 1: it lies outside the image", 1},
      {"2 274.4154", "1 274.4154", "photo 1, point 1: it is measured twice (lines 33 and 34)", 1},
      {"374.336515", "-374.336515", "photo 1, point 1: its ray meets the plane behind the cam", 4},
  };
  for (const auto& row : rows) {
    const Outcome outcome = MeasureText(OnePhoto(row.szFrom, row.szTo), {"--json"});
    EXPECT_EQ(outcome.iExit, row.iExit) << row.szTo;
    EXPECT_NE(outcome.strErr.find(row.szMessage), std::string::npos) << outcome.strErr;
    if (row.iExit == 1) {
      EXPECT_EQ(outcome.Json()["refused"][0]["id"], 1);
      EXPECT_NEAR(outcome.Json()["rms"]["total"].get<double>(), 0.153, 1e-3);
    }
  }
}

// Cut at every place between two of its words the file is refused, and what --partial takes are
// measurements of the whole file.
TEST(ProjectFaults, OfACutFile) {
  const std::string strText = OnePhoto();
  const auto whole = MeasureText(strText, {"--json"}).Json()["points"];
  for (size_t uSize = 60; uSize + 4 < strText.size(); uSize += 61) {
    SCOPED_TRACE(uSize);
    const std::string strCut = strText.substr(0, uSize);
    if (strCut.find('{') == std::string::npos || uSize < 120) continue;
    ExpectFailure(MeasureText(strCut), 3, "the file ends inside");
    const Outcome partial = MeasureText(strCut, {"--partial", "--json"});
    if (partial.iExit != 0) {
      EXPECT_EQ(partial.iExit, 4) << partial.strErr;
      continue;
    }
    EXPECT_NE(partial.strErr.find("the file ends inside MEASURE"), std::string::npos);
    const auto points = partial.Json()["points"];
    ASSERT_LE(points.size(), whole.size());
    for (size_t i = 0; i < points.size(); ++i) EXPECT_EQ(points[i], whole[i]);
  }
}

TEST(PointFaults, OfCamerasAndChains) {
  const std::string strPhoto = Source("samples/chessboard/left.prj");
  const std::string strCameras = Source("samples/chessboard/cameras.cam");
  const auto convert = [&](const char* szMode, const char* szInput, const char* szFlag) {
    RunOptions input;
    input.strInput = szInput;
    std::vector<std::string> arguments = {"photo", "convert", strPhoto, "--photo",
                                          "1",     "--mode",  szMode};
    if (*szFlag != 0) arguments.emplace_back(szFlag);
    return RunZu(arguments, input);
  };
  const struct {
    const char *szMode, *szInput, *szFlag;
    int iExit;
    const char* szMessage;
  } rows[] = {
      {"object-digi", "1 0 0 500\n", "", 1, "photo 1, point 1: behind the camera"},
      {"object-digi", "1 -2000 0 0\n", "", 1, "photo 1, point 1: outside"},
      {"digi-adjusted", "1 640 0\n", "", 1, "photo 1, point 1: outside the image"},
      {"adjusted-biko", "1 50 0\n", "", 1, "photo 1, point 1: outside the domain of the camera"},
      {"biko-adjusted", "1 50 0\n", "", 1, "photo 1, point 1: outside the domain of the camera"},
      {"biko-adjusted", "1 0 0\n", "--flip", 2, "--flip turns y of pixels, and biko-adjusted has"},
      {"object-biko", "1 0 0 0\n", "--flip", 2, "--flip turns y of pixels, and object-biko has"},
      {"digi-biko", "1 abc def\n", "", 3, "standard input:1"},
  };
  for (const auto& row : rows) {
    const Outcome outcome = convert(row.szMode, row.szInput, row.szFlag);
    EXPECT_EQ(outcome.iExit, row.iExit) << row.szMode << row.szInput << outcome.strErr;
    EXPECT_NE(outcome.strErr.find(row.szMessage), std::string::npos) << outcome.strErr;
  }
  for (const char* szInput : {"1 50 0\n", "1 1e77 1e77\n", "1 1e50 1\n", "1 4.3 4.5\n"}) {
    RunOptions input;
    input.strInput = szInput;
    const Outcome back =
        RunZu({"camera", "adjust", strCameras, "--id", "1", "--json", "--inverse"}, input);
    EXPECT_EQ(back.iExit, szInput[2] == '4' ? 0 : 1) << back.strOut;
    const Outcome outcome = RunZu({"camera", "adjust", strCameras, "--id", "1", "--json"}, input);
    EXPECT_EQ(outcome.iExit, 1);
    EXPECT_EQ(outcome.Json()["refused"], 1);
    EXPECT_TRUE(outcome.Json()["points"][0]["x"].is_null());
  }
  const ScratchFolder folder;
  const struct {
    const char *szText, *szMessage;
  } cameras[] = {
      {"CAMERA { ID 1 C 35 A1 1,5 }", "c.cam:1:23: \"1,5\" is no number; 1.5 would be right"},
      {"CAMERA { ID 1 C 35\n AA1 1.5 }",
       "c.cam:2:2: unknown keyword AA1 skipped; A1 would be right"},
      {"CAMERA { ID 1 C 35 }\nCAMERA { ID 1 C 36 }", "camera 1 stands twice"},
      {"CAMERA { ID 1 C 35 ", "the file ends inside CAMERA"},
      {"{ 1 35 0 0 0 0 \"short\" }", "c.cam:1:16: \"short\" is no number"},
  };
  for (const auto& row : cameras) {
    ExpectFailure(RunZu({"camera", "info", folder.Write("c.cam", row.szText)}), 3, row.szMessage);
  }
}

}  // namespace
