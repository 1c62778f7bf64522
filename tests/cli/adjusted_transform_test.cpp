// zu transform, zu merge and zu compare: what the adjustment adds to their results.
#include <gtest/gtest.h>

#include <cmath>

#include "tests/cli/program.h"

namespace {

// Eight corners of a box, each off by some millimetres, the points named moved besides.
std::string Corners(double dMoved, bool bAccuracies) {
  std::string strText;
  for (int i = 0; i < 8; ++i) {
    const double ad[] = {10.0 * (i & 1) + 0.001 * std::sin(9.0 * i),
                         10.0 * (i / 2 & 1) + 0.001 * std::cos(7.0 * i),
                         4.0 * (i / 4) + 0.001 * std::sin(5.0 * i + 1.0) + (i == 5 ? dMoved : 0.0)};
    strText += std::to_string(i + 1);
    for (double d : ad) strText += " " + std::to_string(d);
    strText += bAccuracies ? " 0.002 0.002 0.002\n" : "\n";
  }
  return strText;
}

}  // namespace

TEST(AdjustedTransform, TellsHowSureItIs) {
  const ScratchFolder folder;
  const auto result =
      RunLine("zu transform $S/datum/local.coo --control $S/datum/wgs84.coo --json", folder).Json();
  EXPECT_EQ(result["redundancy"], 14);
  EXPECT_EQ(result["sigma_kind"], "a posteriori");
  EXPECT_TRUE(result["free_direction"].is_null());
  ASSERT_EQ(result["covariance"].size(), 7U);
  const double dScaleSd = result["parameters"]["scale"]["sd"];
  EXPECT_NEAR(result["covariance"][3][3].get<double>(), dScaleSd * dScaleSd, 1e-20);
  double dRedundancy = 0.0;
  for (const auto& point : result["points"]) {
    for (double r : point["r"]) dRedundancy += r;
    EXPECT_GT(point["sd"][0].get<double>(), 0.0);
    EXPECT_EQ(point["w"].size(), 3U);
  }
  EXPECT_NEAR(dRedundancy, 14.0, 1e-9);
}

TEST(AdjustedTransform, SetsWrongPointsAside) {
  const ScratchFolder folder;
  folder.Write("a", Corners(0.0, true));
  folder.Write("b", Corners(0.06, true) + "99 1 1 1 0.002 0.002 0.002\n");
  const std::string strColumns = " --columns id,x,y,z,dx,dy,dz";
  const Outcome outcome =
      RunLine("zu transform b --control a --test --json -o out" + strColumns, folder);
  EXPECT_EQ(outcome.iExit, 1) << outcome.strErr;
  const auto result = outcome.Json();
  ASSERT_EQ(result["set_aside"].size(), 1U);
  EXPECT_EQ(result["set_aside"][0]["id"], 6);
  EXPECT_NEAR(result["set_aside"][0]["error"][2].get<double>(), -0.06, 0.005);
  EXPECT_EQ(result["sigma_kind"], "a priori");
  const std::string strOut = ReadFile(folder.Path("out"));
  // Of the new point and the transformation together; a common point of equal accuracy keeps its
  // own.
  EXPECT_NE(strOut.find("0.00243"), std::string::npos) << strOut;
}

// What is fixed has no standard deviation, and takes fewer points.
TEST(AdjustedTransform, FixesScaleAndTilt) {
  const ScratchFolder folder;
  folder.Write("a", "1 0 0 0\n2 10 0 0.01\n");
  folder.Write("b", "1 5 5 5\n2 5 15 5\n");
  ExpectLines({{"zu transform a --control b --fixed levelled", 0, "", ""},
               {"zu transform a --control b --fixed scale", 4, "", "2 points in common"},
               {"zu transform a --control b --fixed tilt", 2, "", "levelled"},
               {"zu transform a --control b --sigma 0", 2, "", "above 0"}},
              folder);
  const auto result = RunLine("zu transform a --control b --fixed levelled --json", folder).Json();
  EXPECT_EQ(result["scale"], 1);
  EXPECT_EQ(result["parameters"]["scale"]["sd"], 0);
  EXPECT_EQ(result["redundancy"], 2);
  EXPECT_NEAR(result["angles_deg"]["z"].get<double>(), 90.0, 1e-9);
}

// Lists that agree to the last digit of their files: nothing but rounding is left.
TEST(AdjustedTransform, TakesRoundingForNoError) {
  const ScratchFolder folder;
  std::string strSource, strControl;
  for (int i = 1; i <= 14; ++i) {
    const long long ai[] = {4140000000 + i * 7919 % 900 * 997, 675000000 + i * 104729 % 600 * 991,
                            300000 + i * 31 % 20 * 983};
    const auto row = [&](long long iX, long long iY) {
      const auto field = [](long long n) {
        return " " + std::to_string(n / 1000) + "." + std::to_string(n % 1000 + 1000).substr(1);
      };
      return std::to_string(i) + field(ai[0] + iX) + field(ai[1] + iY) + field(ai[2]) + "\n";
    };
    strSource += row(0, 0);
    strControl += row(1000000, 2000000);
  }
  folder.Write("s", strSource);
  folder.Write("c", strControl);
  ExpectLines({{"zu transform s --control c --test --alpha 0.5", 0, "no point is beyond", ""},
               {"zu merge s c --tolerance 1e-6 --test --alpha 0.5", 0, "no point is beyond", ""},
               {"zu compare s c --alpha 0.5", 0, "0 of 14 common points moved", ""},
               {"zu trafo2d s --control c --type helmert --test --alpha 0.5", 0, "!beyond", ""}},
              folder);
}

TEST(AdjustedTransform, RefusesAccuraciesThatAreNone) {
  const ScratchFolder folder;
  folder.Write("a", "1 0 0 0 1 1 1\n2 9 0 0 1 1 1\n3 0 9 0 1 -2 1\n4 1 1 9 1 1 1\n");
  for (const char* szLine : {"zu transform a --control a", "zu merge a a --tolerance 1",
                             "zu compare a a", "zu local a --axis X:1,2 --plane XY:3",
                             "zu trafo2d a --control a --type helmert", "zu plane a"}) {
    ExpectFailure(RunLine(szLine + std::string(" --columns id,x,y,z,dx,dy,dz"), folder), 3,
                  "a: column dy of point 3: the accuracy -2 is negative");
  }
  folder.Write("s", "1 0 0 0\n2 9 0 0\n3 0 9 1\n4 1 1 9\n");
  ExpectLines({{"zu transform s --control <(awk '{print $1,-$2,$3,$4}' s) --fixed levelled", 4, "",
                "mirrored"},
               {"zu local s --axis X:1,2 --plane XY:3 --sigma 1e300", 4, "", "too large"}},
              folder);
}

TEST(Compare, NamesThePointsThatMoved) {
  const ScratchFolder folder;
  folder.Write("a", Corners(0.0, false));
  folder.Write("b", Corners(0.03, false));
  ExpectLines({{"zu compare a a --sigma 0.002", 0, "0 of 8 common points moved", ""},
               {"zu compare a b --sigma 0.002", 1, "1 of 8 common points moved", ""},
               {"zu compare a <(echo 1 0 0 0) --sigma 1", 4, "", "1 common point"}},
              folder);
  const Outcome outcome =
      RunLine("zu compare a b --sigma 0.002 --unit m --report moved.html --json", folder);
  EXPECT_NE(ReadFile(folder.Path("moved.html"))
                .find("1 of 8 common points moved, point 6 the farthest, by 0.0"),
            std::string::npos);
  const auto result = outcome.Json();
  EXPECT_EQ(result["moved"], nlohmann::json({6}));
  EXPECT_NEAR(result["points"][5]["dz"].get<double>(), 0.03, 0.004);
}

TEST(AdjustedMerge, FindsTwoOfSixWrongByEverySearch) {
  const ScratchFolder folder;
  folder.Write("a", "1 0 0 0\n2 9 0 1\n3 0 8 0\n4 7 7 5\n5 1 2 6\n6 4 1 3\n");
  folder.Write("b", "1 0 0 0\n2 9 0 1\n3 0 8 0\n4 7 7 5\n5 1 3 6\n6 4 1 9\n");
  for (const char* szSearch : {"", " --search exhaustive", " --search random"}) {
    const Outcome outcome =
        RunLine("zu merge a b --tolerance 0.1 --json" + std::string(szSearch), folder);
    EXPECT_EQ(outcome.Json()["rejected"], nlohmann::json({5, 6})) << szSearch;
  }
}

// Points within the tolerance that their accuracies do not explain; joined points of both lists.
TEST(AdjustedMerge, TestsWhatAgreesAndTellsHowSureItIs) {
  const ScratchFolder folder;
  folder.Write("a", Corners(0.0, false) + "50 1 2 3\n");
  folder.Write("b", Corners(0.06, false) + "99 1 1 1\n");
  ExpectLines({{"zu merge a b --tolerance 0.2 --sigma 0.002", 0, "point 6 is suspicious", ""},
               {"zu merge a b --tolerance 0.03 --strict", 1, "set aside: point 6", ""},
               {"zu merge a b --tolerance 1 --search library --test", 2, "", "tests nothing"}},
              folder);
  const Outcome outcome = RunLine(
      "zu merge a b --tolerance 0.2 --sigma 0.002 --test --blend 1 --json --report m.html", folder);
  EXPECT_EQ(outcome.iExit, 1) << outcome.strErr;
  const auto result = outcome.Json();
  EXPECT_EQ(result["rejected"], nlohmann::json({6}));
  EXPECT_EQ(result["set_aside"][0]["id"], 6);
  EXPECT_NEAR(result["set_aside"][0]["error"][2].get<double>(), -0.06, 0.005);
  for (const auto& point : result["points"]) {  // moved all the way to A, or of A alone
    const bool bOfA = point["id"] != 6 && point["id"] != 99;
    EXPECT_EQ(bOfA, std::fabs(point["sd"][0].get<double>() - 0.002) < 1e-12) << point;
  }
  EXPECT_NE(ReadFile(folder.Path("m.html")).find("7 of 8 common points agree; 1 set aside; no "),
            std::string::npos);
}

// The chance of one false alarm in n tests: each at 1 - (1 - alpha)^(1/n).
TEST(AdjustOptions, SpreadOneAlphaOverAllTests) {
  const ScratchFolder folder;
  folder.Write("a", Corners(0.0, false));
  folder.Write("b", Corners(0.01, false));
  const double dEach = 1.0 - std::pow(0.95, 1.0 / 8.0);
  for (const char* szCommand :
       {"zu transform a --control b", "zu compare a b", "zu merge a b --tolerance 1", "zu plane a",
        "zu trafo2d a --control b --type helmert"}) {
    const std::string strCommand = szCommand + std::string(" --sigma 0.002 --json ");
    const auto total = RunLine(strCommand + "--alpha-total 0.05", folder).Json();
    const auto each = RunLine(strCommand + "--alpha " + std::to_string(dEach), folder).Json();
    EXPECT_NEAR(total["points"][0]["limit"].get<double>(), each["points"][0]["limit"].get<double>(),
                1e-4)
        << szCommand;
  }
}

// What scripts may rely on, whether or not anything was set aside.
TEST(AdjustJson, HasTheKeysInEachCommand) {
  const ScratchFolder folder;
  folder.Write("a", Corners(0.0, false) + "50 1 2 3\n");
  folder.Write("b", Corners(0.06, false) + "99 1 1 1\n");
  const std::vector<std::string> root = {"sigma0",     "redundancy",      "sigma_kind",
                                         "parameters", "parameter_names", "covariance",
                                         "set_aside",  "not_controlled",  "free_direction",
                                         "warnings",   "points"};
  const std::vector<std::string> point = {"id",           "r", "w", "test", "limit", "nabla",
                                          "leave_one_out"};
  const struct {
    const char* szLine;
    std::vector<std::string> root, point;  // beside those of all
  } commands[] = {
      {"zu transform a --control b --test", {"scale", "test_limit"}, {"sd", "x", "dx"}},
      {"zu merge a b --tolerance 0.03", {"rejected", "only_a", "only_b", "rms"}, {"sd", "x", "dx"}},
      {"zu compare a b", {"moved", "stable", "common"}, {"sd", "dx", "moved"}},
      {"zu trafo2d a --control b --type affin --test", {"type", "coefficients"}, {"sd", "x", "dx"}},
      {"zu plane a", {"normal", "d", "sd", "flatness", "rms"}, {"deviation"}},
      {"zu plane a --sigma 9", {"normal", "d", "sd", "flatness", "rms"}, {"deviation"}}};
  for (const auto& command : commands) {
    SCOPED_TRACE(command.szLine);
    const auto result = RunLine(command.szLine + std::string(" --json"), folder).Json();
    for (const auto* pKeys : {&root, &command.root}) {
      for (const std::string& strKey : *pKeys) EXPECT_TRUE(result.contains(strKey)) << strKey;
    }
    const size_t u = result["parameter_names"].size();
    EXPECT_EQ(result["covariance"].size(), u);
    for (const auto& entry : result["parameters"]) EXPECT_TRUE(entry["sd"].is_number());
    for (const auto& entry : result["points"]) {
      for (const auto* pKeys : {&point, &command.point}) {
        for (const std::string& strKey : *pKeys) EXPECT_TRUE(entry.contains(strKey)) << strKey;
      }
    }
    for (const auto& entry : result["set_aside"]) {
      for (const char* szKey : {"id", "name", "test", "error"}) {
        EXPECT_TRUE(entry.contains(szKey)) << szKey;
      }
    }
  }
}
