// Points that take no part, check points and tolerances, in all commands that estimate from points;
// planes as a user tells them.
#include <gtest/gtest.h>

#include <cmath>

#include "tests/cli/program.h"

namespace {

constexpr double kWrong = 0.5;  // K4 in the control list

// Twelve points, and the same shifted and turned by a quarter; K4 is wrong there.
void WriteLists(const ScratchFolder& folder) {
  std::string strSource, strControl;
  for (int i = 1; i <= 12; ++i) {
    const double x = 10.0 * std::cos(i), y = 10.0 * std::sin(2.0 * i), z = i % 3;
    const std::string strName = "K" + std::to_string(i) + " ";
    const auto row = [&](double a, double b, double c) {
      return strName + std::to_string(a) + " " + std::to_string(b) + " " + std::to_string(c) + "\n";
    };
    strSource += row(x, y, z);
    strControl += row(100.0 - y + (i == 4 ? kWrong : 0.0), 200.0 + x, 5.0 + z);
  }
  folder.Write("source.txt", "Name X Y Z\n" + strSource);
  folder.Write("control.txt", "Name X Y Z\n" + strControl);
  folder.Write("wall.txt", "Name X Y Z\nA 0 0 0\nB 4 0 0.001\nC 4 3 0\nD 0 3 0.001\nE 2 1 0.8\n");
}

double LengthOf(const nlohmann::json& deviation) {
  double dSum = 0.0;
  for (const auto& d : deviation) dSum += d.get<double>() * d.get<double>();
  return std::sqrt(dSum);
}

}  // namespace

// Two wrong points hide each other: both commands of the hint do without them.
TEST(PointChoice, TwoWrongPointsAreNamedTogether) {
  const ScratchFolder folder;
  folder.Write("a.txt",
               "A 0 0 1\nB 20 0 1.5\nC 20 15 0.8\n\"D 1\" 0 15 1.2\nE 10 7 4\nF 5 12 2\n"
               "G 17 3 3.1\n");
  folder.Write("b.txt",
               "A 100 200 51\nB 100.01 220 51.5\nC 85 220.01 50.8\n\"D 1\" 85.4 200 51.2\n"
               "E 93 210 54\nF 88.3 205 52.35\nG 97 217 53.1\n");
  for (const std::string strCall :
       {"zu transform b.txt --control a.txt", "zu trafo2d b.txt --control a.txt --type helmert"}) {
    const std::string strHint = RunLine(strCall, folder).strErr;
    const size_t uFirst = strHint.find("; without them: ") + 16;
    ASSERT_NE(strHint.find("points D 1"), std::string::npos) << strHint;
    const size_t uOther = std::min(strHint.find("; or: ", uFirst), strHint.find('\n', uFirst));
    const std::string strNext = strHint.substr(uFirst, uOther - uFirst);
    EXPECT_EQ(RunLine(strNext + " --tolerance 0.05", folder).iExit, 0) << strHint;
    if (strHint[uOther] != ';') continue;
    const std::string strMerge =
        strHint.substr(uOther + 6, strHint.find('\n', uOther) - uOther - 6);
    const auto rejected = RunLine(strMerge + " --json", folder).Json()["rejected"];
    EXPECT_EQ(rejected, (nlohmann::json{"D 1", "F"})) << strMerge;
  }
}

// The hint's command, as it was typed but for the wrong point, gives the transformation.
TEST(PointChoice, TheHintedCommandIsRight) {
  for (const std::string strCall :
       {"zu transform source.txt --control control.txt",
        "zu trafo2d source.txt --control control.txt --type helmert", "zu plane wall.txt --axis"}) {
    const ScratchFolder folder;
    WriteLists(folder);
    const Outcome first = RunLine(strCall, folder);
    const size_t uHint = first.strErr.find("without it: ");
    ASSERT_NE(uHint, std::string::npos) << strCall << first.strErr;
    const std::string strNext =
        first.strErr.substr(uHint + 12, first.strErr.find_first_of(";\n", uHint) - uHint - 12);
    EXPECT_EQ(strNext.rfind(strCall + " --without ", 0), 0U) << strNext;
    const Outcome next = RunLine(strNext + " --tolerance 0.01", folder);
    EXPECT_EQ(next.iExit, 0) << next.strErr;
    EXPECT_EQ(next.strErr.find("without it"), std::string::npos);
  }
}

TEST(PointChoice, CheckPointsAreToldApart) {
  const ScratchFolder folder;
  WriteLists(folder);
  for (const std::string strCall :
       {"zu transform source.txt --control control.txt --check-points K4,K6 --json",
        "zu trafo2d source.txt --control control.txt --type affin --check-points K4,K6 --json",
        "zu merge control.txt source.txt --tolerance 0.6 --check-points K4,K6 --json"}) {
    const Outcome outcome = RunLine(strCall, folder);
    ASSERT_EQ(outcome.iExit, 0) << strCall << outcome.strErr;
    const auto result = outcome.Json();
    EXPECT_EQ(result["common"], 10);
    const auto& checks = result["check_points"]["points"];
    ASSERT_EQ(checks.size(), 2U) << strCall;
    EXPECT_EQ(checks[0]["name"], "K4");
    EXPECT_NEAR(checks[0]["deviation"]["x"].get<double>(), -kWrong, 1e-5);  // computed minus check
    EXPECT_NEAR(LengthOf(checks[1]["deviation"]), 0.0, 1e-5);
    EXPECT_NEAR(result["check_points"]["rms"]["x"].get<double>(), kWrong * std::sqrt(0.5), 1e-5);
  }
  const auto wall = RunLine("zu plane wall.txt --check-points E --json", folder).Json();
  EXPECT_NEAR(std::fabs(wall["check_points"]["points"][0]["deviation"].get<double>()), 0.7995,
              1e-3);
  ExpectLines(
      {{"zu transform source.txt --control control.txt --check-points K4 --tolerance 0.1", 1,
        "check points", "point K4 is off by 0.5"},
       {"zu trafo2d source.txt --control control.txt --type affin --tolerance 0.01", 1, "", "K4"},
       {"zu plane wall.txt --without E --tolerance 0.01", 0, "left out by --without: E", ""},
       {"zu plane wall.txt --all --tolerance 0.1", 1, "", "beyond --tolerance"},
       {"zu merge control.txt source.txt --tolerance 0.1 --without K4", 0, "11 common", "!K4"},
       {"zu transform source.txt --control control.txt --without K44", 3, "", "no point \"K44\""},
       {"zu transform source.txt --control control.txt --without K4 --check-points K4", 2, "",
        "one of them would be right"}},
      folder);
}

// The board's plane by its points, as a record, by numbers and by three points of the project.
TEST(PlaneOption, TellsOnePlaneInFourWays) {
  const ScratchFolder folder;
  folder.Write("p.prj",
               ReadFile(Source("samples/chessboard/left.prj")) +
                   "PLANE { 3 \"board\" 0 0 2 0 }\nPOINTS { 1001 0 0 0 1002 200 0 0 1003 0 "
                   "125 0 }\n");
  const auto measured = [&](const std::string& strPlane) {
    const Outcome outcome =
        RunLine("zu measure p.prj --plane " + strPlane + " --joined j.txt --json", folder);
    EXPECT_EQ(outcome.iExit, 0) << strPlane << outcome.strErr;
    return outcome.Json();
  };
  const auto expected = measured("$S/chessboard/board.coo");
  for (const char* szPlane : {"board", "3", "0,0,1,0", "1001,1002,1003"}) {
    const auto result = measured(szPlane);
    ASSERT_EQ(result["points"].size(), expected["points"].size());
    EXPECT_NEAR(result["points"][5]["x"].get<double>(), expected["points"][5]["x"].get<double>(),
                1e-9);
    // Point 6 stands in 13 photos: their mean and its spread.
    const auto& joined = result["joined"][5];
    double dMean = 0.0, dSquares = 0.0;
    for (const auto& p : result["points"])
      dMean += p["id"] == 6 ? p["x"].get<double>() / 13.0 : 0.0;
    EXPECT_NEAR(joined["x"].get<double>(), dMean, 1e-9);
    for (const auto& p : result["points"]) {
      if (p["id"] != 6) continue;
      for (const char* szAxis : {"x", "y", "z"}) {
        dSquares += std::pow(p[szAxis].get<double>() - joined[szAxis].get<double>(), 2) / 13.0;
      }
    }
    EXPECT_NEAR(joined["spread"].get<double>(), std::sqrt(dSquares), 1e-9);
  }
  const auto rays =
      RunLine("zu measure p.prj --plane board --join rays --json", folder).Json()["joined"];
  const auto points = RunLine("zu intersect p.prj --json", folder).Json()["points"];
  EXPECT_EQ(rays[5]["way"], "rays");
  EXPECT_EQ(rays[5]["z"], points[5]["z"]);
  ExpectLines({{"zu measure p.prj --plane 1001,1002,77", 3, "", "no object point \"77\""},
               {"zu measure p.prj --plane 1001,1002,1001", 4, "", "stand in a line"},
               {"zu measure p.prj --plane 0,0,0,1", 4, "", "has no normal"},
               {"zu measure p.prj --plane 8", 3, "", "no plane 8"}},
              folder);
}
