// zu plane on the scan of samples/clouds, the board of samples/chessboard and sets made for a
// purpose.
#include <gtest/gtest.h>

#include <cmath>

#include "tests/cli/program.h"

namespace {

nlohmann::json Expected() {
  return nlohmann::json::parse(ReadFile(Source("samples/clouds/expected.json")))["plane_scan.xyz"];
}

Outcome FitScan(const std::vector<std::string>& more) {
  std::vector<std::string> arguments = {"plane", Source("samples/clouds/plane_scan.xyz"),
                                        "--columns", "x,y,z"};
  arguments.insert(arguments.end(), more.begin(), more.end());
  return RunZu(arguments);
}

Outcome FitText(const std::string& strPoints, const std::vector<std::string>& more = {}) {
  std::vector<std::string> arguments = {"plane", "-"};
  arguments.insert(arguments.end(), more.begin(), more.end());
  RunOptions options;
  options.strInput = strPoints;
  return RunZu(arguments, options);
}

const char* const kLine = "1 0 0 0\n2 1 1 1\n3 2 2 2\n4 5 5 5\n";

}  // namespace

TEST(Plane, GivesTheExpectedFiguresOfTheScan) {
  const auto result = FitScan({"--json"}).Json();
  const auto expected = Expected()["plane_as_fitted"];
  for (int i = 0; i < 3; ++i) {
    EXPECT_NEAR(result["normal"][i].get<double>(), expected["normal"][i].get<double>(), 1e-12);
  }
  const struct {
    const char* szKey;
    const char* szExpected;
  } figures[] = {{"d", "d"},
                 {"sigma0", "sigma0"},
                 {"medium_distance", "medium_point_dist"},
                 {"rms", "rms"},
                 {"largest", "max"}};
  for (const auto& f : figures) {
    EXPECT_NEAR(result[f.szKey].get<double>(), expected[f.szExpected].get<double>(), 1e-12)
        << f.szKey;
  }
  EXPECT_EQ(result["status"], 0);
  ASSERT_EQ(result["points"].size(), Expected()["points"].get<std::size_t>());
  EXPECT_EQ(result["points"][2518]["id"], 2519);  // the place in the file
  // A deviation is the point put into the plane: the first point of the file.
  double d = result["d"].get<double>();
  for (int i = 0; i < 3; ++i) {
    d += result["normal"][i].get<double>() * Expected()["first"][i].get<double>();
  }
  EXPECT_NEAR(result["points"][0]["deviation"].get<double>(), d, 1e-15);
}

TEST(Plane, PrintsTheLargestDeviationFirst) {
  const Outcome outcome = FitScan({});
  EXPECT_EQ(outcome.iExit, 0);
  EXPECT_EQ(outcome.strErr, "");
  std::size_t uLast = 0;
  for (const char* szText : {"2519 points, largest distance 0.03028", "0.555592278502 x + 0.36476",
                             "- 0.619835359499 = 0", "RMS", "0.00629", "0.03028  point 1177",
                             "0.31550", "0.00053", "deviation", " 1177   -0.03028"}) {
    const std::size_t uFound = outcome.strOut.find(szText, uLast);
    ASSERT_NE(uFound, std::string::npos) << szText << "\n" << outcome.strOut.substr(0, 1000);
    uLast = uFound;
  }
}

// The foot points lie in the plane, which is found again from them.
TEST(Plane, WritesTheFootPoints) {
  const ScratchFolder folder;
  const auto first = FitScan({"--json", "-o", folder.Path("feet.xyz")}).Json();
  const auto again =
      RunZu({"plane", folder.Path("feet.xyz"), "--columns", "x,y,z", "--json"}).Json();
  for (int i = 0; i < 3; ++i) {
    EXPECT_NEAR(again["normal"][i].get<double>(), first["normal"][i].get<double>(), 1e-12);
  }
  EXPECT_LT(again["largest"].get<double>(), 1e-12);
}

TEST(Plane, BoardIsTheCoordinatePlane) {
  const ScratchFolder folder;
  const std::string strBoard = Source("samples/chessboard/board.coo");
  const auto result = RunZu({"plane", strBoard, "--json", "-o", folder.Path("feet.coo")}).Json();
  EXPECT_EQ(result["normal"], nlohmann::json({0, 0, 1}));
  EXPECT_EQ(result["largest"], 0);
  EXPECT_EQ(result["points"].size(), 54U);
  const auto feet = RunZu({"plane", folder.Path("feet.coo"), "--json"}).Json();
  EXPECT_EQ(feet["points"][53]["id"], 54);
}

TEST(Plane, LogCollectsReports) {
  const ScratchFolder folder;
  const std::string strLog = folder.Write("plane.log", "an older report\n");
  for (int i = 0; i < 2; ++i) {
    EXPECT_EQ(RunZu({"plane", Source("samples/chessboard/board.coo"), "--log", strLog}).iExit, 0);
  }
  const std::string strText = ReadFile(strLog);
  EXPECT_EQ(strText.find("an older report\n"), 0U);
  const std::size_t uFirst = strText.find("3D PLANE DEFINITION\n\n\n");
  ASSERT_NE(uFirst, std::string::npos);
  EXPECT_NE(strText.find("3D PLANE DEFINITION", uFirst + 1), std::string::npos);
  EXPECT_NE(strText.find("\n       54 \"\"               "), std::string::npos);
  EXPECT_EQ(folder.Names(), std::vector<std::string>{"plane.log"});
}

TEST(Plane, RefusesWhatDoesNotDetermineIt) {
  ExpectFailure(FitText("1 0 0 0\n2 1 0 0\n"), 4, "standard input: holds 2 points");
  ExpectFailure(FitText("1 3 4 5\n2 3 4 5\n3 3 4 5\n"), 4, "in one place or on one line");
  ExpectFailure(FitText(kLine), 4, "in one place or on one line");
  ExpectFailure(FitText(kLine, {"--force"}), 4, "do not determine");
  ExpectFailure(FitText("1 0 0 0\n2 1 0 0\n3 0 1 0\n4 1 nan 0\n"), 3, "standard input:4: column y");
}

TEST(Plane, ForceTakesPointsCloseToALine) {
  const std::string strFlat = "1 0 0 0\n2 1 0.0005 0\n3 2 0 0\n";
  ExpectFailure(FitText(strFlat), 4, "--force");
  const auto result = FitText(strFlat, {"--force", "--json"}).Json();
  EXPECT_EQ(std::fabs(result["normal"][2].get<double>()), 1.0);
}

TEST(Plane, TakesLinesWithoutIdsByTheirPlace) {
  const auto result =
      FitText("# x y z\n0 0 1\n\n4 0 1 remark\n0 4 1\n4 4 1\n", {"--columns", "x,y,z", "--json"})
          .Json();
  ASSERT_EQ(result["points"].size(), 4U);
  EXPECT_EQ(result["points"][3]["id"], 4);
  EXPECT_EQ(result["d"], -1);
  ExpectFailure(FitText("0 0 1\n4 0\n", {"--columns", "x,y,z"}), 3,
                "standard input:2: the line has 2 fields");
  ExpectFailure(FitText("# nothing\n", {"--columns", "x,y,z"}), 3, "holds no point");
  ExpectFailure(FitText("x y z\n0 0 1\n", {"--columns", "x,y,z"}), 3,
                "standard input:1: column x: \"x\"");
}
