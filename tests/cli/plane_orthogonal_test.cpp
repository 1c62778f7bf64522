// zu plane by orthogonal distances: errors set aside, tests, report; and the page all reports
// share.
#include <gtest/gtest.h>

#include <cmath>

#include "tests/cli/program.h"

namespace {

// Nine points of a floor, 10 units wide; three stand 1 mm apart in front, point 8 is 1.5 off.
const char kFloor[] =
    "1 0 0 0\n2 0.001 0 0.001\n3 0 0.001 0\n4 10 0 0.01\n5 0 10 0\n6 10 10 0.002\n7 5 5 0.003\n"
    "8 2 8 1.5\n9 7 2 -0.004\n";

}  // namespace

TEST(PlaneOrthogonal, NamesThePointThatIsOffAndTellsHowSureItIs) {
  const ScratchFolder folder;
  folder.Write("floor", kFloor);
  for (const char* szSigma : {"", " --sigma 0.005"}) {
    const Outcome outcome =
        RunLine(std::string("zu plane floor --strict --json") + szSigma, folder);
    EXPECT_EQ(outcome.iExit, 1) << outcome.strErr;
    const auto result = outcome.Json();
    ASSERT_EQ(result["set_aside"].size(), 1U);
    EXPECT_EQ(result["set_aside"][0]["id"], 8);
    EXPECT_NEAR(result["set_aside"][0]["error"].get<double>(), 1.5, 0.01);
    EXPECT_EQ(result["test_kind"], *szSigma == '\0' ? "a posteriori" : "a priori");
    EXPECT_EQ(result["redundancy"], 5);
    EXPECT_TRUE(result["free_direction"].is_null());
    // The covariance is that of (a, b, c, d); n . dn = 0 leaves none along the normal.
    double dAlong = 0.0;
    for (int i = 0; i < 3; ++i) {
      for (int j = 0; j < 3; ++j) {
        dAlong += result["normal"][i].get<double>() * result["covariance"][i][j].get<double>() *
                  result["normal"][j].get<double>();
      }
      EXPECT_NEAR(std::pow(result["sd"][i].get<double>(), 2),
                  result["covariance"][i][i].get<double>(), 1e-18);
    }
    EXPECT_NEAR(dAlong, 0.0, 1e-18);
    double dSum = 0.0;
    for (const auto& p : result["points"]) dSum += p["r"].get<double>();
    EXPECT_NEAR(dSum, 5.0, 1e-9);
  }
}

TEST(PlaneOrthogonal, TakesAccuraciesFromColumnsAndWritesFeet) {
  const ScratchFolder folder;
  folder.Write("three", "1 0 0 0 .1 .1 .1\n2 4 0 0 .1 .1 .1\n3 0 4 0 .1 .1 .1\n");
  folder.Write("bad", "1 0 0 0 -1\n2 4 0 0 1\n3 0 4 0 1\n");
  folder.Write("line", "1 0 0 0\n2 1 1 1\n3 2 2 2\n4 5 5 5\n");
  folder.Write("floor", kFloor);
  const std::string strColumns = "zu plane three --columns id,x,y,z,dx,dy,dz --json";
  const auto result = RunLine(strColumns, folder).Json();
  EXPECT_EQ(result["sigma_kind"], "a priori");
  // The height over (0, 0) is that of point 1; d is its negative.
  EXPECT_NEAR(result["sd"][3].get<double>(), 0.1, 1e-12);
  const auto feet = RunLine("zu plane floor -o feet && zu plane feet --json", folder);
  EXPECT_EQ(feet.iExit, 0) << feet.strErr;
  ExpectLines({{"zu plane three", 0, "a priori, 0 redundant: of coordinates exact", ""},
               {"zu plane floor", 0, "9 points, 1 of them set aside", ""},
               {"zu plane floor --all", 0, "!set aside", ""},
               {"zu plane line", 4, "", "about the line through points 1, 3 and 4"},
               {"zu plane bad --columns id,x,y,z,dz", 3, "",
                "column dz of point 1: the accuracy -1 is negative"},
               {"zu plane floor --axis --sigma 1", 2, "", "--axis tests nothing"},
               {"zu plane floor --force", 2, "", "goes with --axis"},
               {"zu plane floor --log l --quiet && grep -c '3D PLANE' l", 0, "1\n", ""}},
              folder);
}

TEST(PlaneOrthogonal, WritesAPageThatNeedsNothingElse) {
  const ScratchFolder folder;
  folder.Write("fl<oor", kFloor);
  ASSERT_EQ(RunLine("zu plane 'fl<oor' --report r.html --unit m", folder).iExit, 0);
  const std::string strPage = ReadFile(folder.Path("r.html"));
  for (const char* szText :
       {"<p class='verdict'>8 points of 9 stand within", "1 was set aside", "prefers-color-scheme",
        "@media print", "max-width:640px", "<svg", "Standardised residuals", "limit", "fl&lt;oor",
        "error, drawn", ">space<", "</html>"}) {
    EXPECT_NE(strPage.find(szText), std::string::npos) << szText;
  }
  for (const char* szText :
       {"<script", "http://www.w3.org/1999", "src=", "fl<oor", "nan", "inf<"}) {
    EXPECT_EQ(strPage.find(szText), std::string::npos) << szText;
  }
}
