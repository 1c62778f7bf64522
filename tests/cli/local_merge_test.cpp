// zu local, zu merge and zu trafo2d on the samples and on small sets made for a purpose.
#include <gtest/gtest.h>

#include <cmath>

#include "tests/cli/program.h"

namespace {

Outcome MergeSamples(const std::vector<std::string>& more) {
  std::vector<std::string> arguments = {"merge", Source("samples/merge/first.coo"),
                                        Source("samples/merge/second.coo"), "--tolerance=1"};
  arguments.insert(arguments.end(), more.begin(), more.end());
  return RunZu(arguments);
}

// A command on files of these texts: points, or source and control.
Outcome RunTexts(const std::string& strCommand, const std::vector<std::string>& texts,
                 const std::vector<std::string>& more) {
  const ScratchFolder folder;
  std::vector<std::string> arguments = {strCommand};
  for (const std::string& strText : texts) {
    const bool bControl = strCommand == "trafo2d" && arguments.size() == 2;
    if (bControl) arguments.push_back("--control");
    arguments.push_back(folder.Write("list" + std::to_string(arguments.size()) + ".coo", strText));
  }
  arguments.insert(arguments.end(), more.begin(), more.end());
  return RunZu(arguments);
}

void ExpectPoint(const nlohmann::json& point, int iId, double x, double y, double z) {
  EXPECT_EQ(point["id"], iId);
  EXPECT_NEAR(point["x"].get<double>(), x, 1e-9) << iId;
  EXPECT_NEAR(point["y"].get<double>(), y, 1e-9) << iId;
  EXPECT_NEAR(point["z"].get<double>(), z, 1e-9) << iId;
}

const char kHouse[] = "1 10 10 5\n2 10 14 5\n3 7 10 5\n4 10 10 7\n";

}  // namespace

// Whatever the seed, the planted errors and no others.
TEST(Merge, NamesThePlantedPoints) {
  for (const char* szSeed : {"1", "2", "3", "77", "4000000000"}) {
    const auto result = MergeSamples({"--json", "--seed", szSeed}).Json();
    auto rejected = result["rejected"];
    std::sort(rejected.begin(), rejected.end());
    EXPECT_EQ(rejected, nlohmann::json({4, 123, 140})) << szSeed;
    EXPECT_EQ(result["status"], 0);
    EXPECT_EQ(result["common"], 57);
    EXPECT_EQ(result["only_a"], nlohmann::json({101, 102}));
    EXPECT_EQ(result["only_b"], nlohmann::json({153, 154}));
    EXPECT_EQ(result["points"].size(), 61U);
    EXPECT_NEAR(result["scale"].get<double>(), 1.0000055825, 1e-6);
    EXPECT_LT(result["rms"]["x"].get<double>(), 0.1);
  }
}

TEST(Merge, SameSeedGivesTheSameBytes) {
  EXPECT_EQ(MergeSamples({"--json", "--seed=5"}).strOut,
            MergeSamples({"--json", "--seed=5"}).strOut);
}

TEST(Merge, RefusesWhatItCannotDecide) {
  const ScratchFolder folder;
  folder.Write("a", "1 0 0 0\n2 1 0 0\n3 0 1 0\n");
  folder.Write("b", "1 0 0 0\n2 5 0 0\n3 0 1 0\n");
  folder.Write("line", "1 0 0 0\n2 1 1 1\n3 2 2 2\n");
  folder.Write("five", "1 0 0 0\n2 1 0 0\n3 0 1 0\n4 0 0 9\n5 7 7 7\n");
  folder.Write("other", "1 0 0 0\n2 5 0 0\n3 0 1 8\n4 3 0 1\n5 1 2 3\n");
  ExpectLines(
      {{"zu merge a <(echo 1 0 0 0; echo 9 1 1 1) --tolerance 1", 4, "",
        "1 point in common, 3 are"},
       {"zu merge a b --tolerance 0.1", 4, "", "do not agree"},
       {"zu merge line line --tolerance 0.1", 4, "", "do not determine"},
       {"zu merge five other --tolerance 0.1", 4, "", "no sample of which agrees"},
       {"zu merge a a --tolerance 1 --min-points 5 --search library", 2, "", "--extra-sample 1"}},
      folder);
}

TEST(Local, PutsPointsIntoTheSystem) {
  // x runs from 1 to 2, that is along +y; 3 lies on the side of +y, that is of -x.
  const auto result =
      RunTexts("local", {kHouse},
               {"--axis=X:1,2", "--plane=XY:3", "--origin=1:100,200,-3", "--scale=1,2:8", "--json"})
          .Json();
  EXPECT_EQ(result["status"], 0);
  EXPECT_EQ(result["scale"], 2);
  ExpectPoint(result["points"][0], 1, 100, 200, -3);
  ExpectPoint(result["points"][1], 2, 108, 200, -3);
  ExpectPoint(result["points"][2], 3, 100, 206, -3);
  ExpectPoint(result["points"][3], 4, 100, 200, 1);
}

// The definition that is printed is one that --definition reads; options replace parts of it.
TEST(Local, DefinitionReadsBack) {
  const ScratchFolder folder;
  const Outcome first =
      RunTexts("local", {kHouse}, {"--axis=Z:1,4", "--plane=XZ:2", "--origin=3:1,2,3"});
  EXPECT_EQ(first.iExit, 0);
  const size_t uBlock = first.strOut.find("LOKAL {");
  ASSERT_NE(uBlock, std::string::npos) << first.strOut;
  const std::string strFile =
      folder.Write("system.prj", "OTHER { 1 2 }\n" + first.strOut.substr(uBlock));
  const Outcome second = RunTexts("local", {kHouse}, {"--definition", strFile});
  EXPECT_EQ(second.strOut, first.strOut);
  const auto moved =
      RunTexts("local", {kHouse}, {"--definition", strFile, "--origin=1:7,7,7", "--json"}).Json();
  ExpectPoint(moved["points"][0], 1, 7, 7, 7);
}

TEST(Local, TellsScalesThatDisagree) {
  const Outcome outcome =
      RunTexts("local", {kHouse},
               {"--axis=X:1,2", "--plane=XY:3", "--scale=1,2:4", "--scale=1,3:3.3", "--json"});
  EXPECT_EQ(outcome.iExit, 1);
  const auto result = outcome.Json();
  EXPECT_EQ(result["status"], 5);
  EXPECT_NEAR(result["scale"].get<double>(), 1.05, 1e-12);
  EXPECT_EQ(result["scales"][0]["bad"], true);
  EXPECT_EQ(RunTexts("local", {kHouse},
                     {"--axis=X:1,2", "--plane=XY:3", "--scale=1,2:4", "--scale=1,3:3.3",
                      "--scale-tolerance=0.1"})
                .iExit,
            0);
}

// Point 4 stands 2 above the origin: its own error and that of the origin count; scales of 1 and
// 1.1 that are known to 0.01 / 4 and 0.01 / 3.
TEST(Local, TellsHowSureItIs) {
  const ScratchFolder folder;
  folder.Write("house", kHouse);
  const auto result =
      RunLine(
          "zu local house --axis X:1,2 --plane XY:3 --scale 1,2:4 --scale 1,3:3.3 --sigma 1e-9 "
          "--sigma-distance 0.01 --json",
          folder)
          .Json();
  EXPECT_NEAR(result["scales"][0]["sd"].get<double>(), 0.0025, 1e-6);
  EXPECT_NEAR(result["scales"][1]["sd"].get<double>(), 0.01 / 3.0, 1e-6);
  const double dMean = std::hypot(0.0025, 0.01 / 3.0) / 2.0;
  EXPECT_NEAR(result["parameters"]["scale"]["sd"].get<double>(), dMean, 1e-6);
  EXPECT_NEAR(result["scales"][0]["w"].get<double>(), -0.05 / dMean, 1e-3);
  EXPECT_EQ(result["sigma_kind"], "a priori");
  folder.Write("sure",
               "1 10 10 5 .3 .3 .3\n2 10 14 5 .1 .1 .1\n3 7 10 5 .1 .1 .1\n"
               "4 10 10 7 .4 .4 .4\n");
  const auto sure = RunLine(
                        "zu local sure --axis X:1,2 --plane XY:3 --columns id,x,y,z,dx,dy,dz "
                        "--json -o out",
                        folder)
                        .Json();
  EXPECT_NEAR(sure["points"][3]["sd"][2].get<double>(), 0.5, 1e-12);
  EXPECT_EQ(sure["points"][0]["sd"], nlohmann::json({0, 0, 0}));
  EXPECT_NE(ReadFile(folder.Path("out")).find("0.5\n"), std::string::npos);
  EXPECT_TRUE(RunTexts("local", {kHouse}, {"--axis=X:1,2", "--plane=XY:3", "--json"})
                  .Json()["sigma0"]
                  .is_null());
}

TEST(Local, RefusesWhatIsNoDefinition) {
  const ScratchFolder folder;
  folder.Write("a", kHouse);
  folder.Write("line", "1 0 0 0\n2 1 0 0\n3 2 0 0\n");
  folder.Write("cut.prj", "LOKAL { 1 1 }\n");
  folder.Write("comma.prj", "LOKAL { 1 1 2 4 3  1 0 1,5 0  0 0 0  0 0 0  0 0 0 }\n");
  folder.Write("far.prj", "LOKAL { 1 1 2 4 9 1 0 0 0  0 0 0  0 0 0  0 0 0 }\n");
  ExpectLines(
      {{"zu local a --axis X:1,2", 2, "", "--plane XY:3"},
       {"zu local a --axis X:1 --plane XY:3", 2, "", "\"X:1\" cannot be understood"},
       {"zu local a --axis X:1,2 --plane YZ:3", 2, "", "does not hold the axis"},
       {"zu local a --axis X:1,1 --plane XY:3", 2, "", "one point twice"},
       {"zu local a --axis X:1,2 --plane XY:9", 3, "", "no point 9"},
       {"zu local a --axis X:1,2 --plane XY:2", 4, "", "three different points"},
       {"zu local a --axis X:1,2 --plane XY:3 --scale 1,2:-4", 2, "", "cannot be understood"},
       {"zu local a --axis X:1,2 --plane XY:3 --origin 1:2,3", 2, "", "cannot be understood"},
       {"zu local a --definition none.prj", 3, "", "no such file"},
       {"zu local a --definition comma.prj", 3, "",
        "comma.prj:1:24: \"1,5\" is no number; 1.5 would"},
       {"zu local a --definition cut.prj", 3, "", "no whole definition"},
       {"zu local a --definition far.prj", 3, "", "missing"},
       {"zu local line --axis X:1,2 --plane XY:3", 4, "", "on one line"}},
      folder);
}

// A quarter turn, twice as large, and a shift; point 5 is 0.1 off in y.
TEST(Trafo2d, FitsEachType) {
  std::string strSource, strControl;
  for (int i = 0; i < 25; ++i) {
    const int x = i % 5, y = i / 5;
    const std::string strId = std::to_string(i + 1);
    strSource += strId + " " + std::to_string(x) + " " + std::to_string(y) + "\n";
    strControl += strId + " " + std::to_string(10 - 2 * y) + " " +
                  std::to_string(20 + 2 * x + (i == 4 ? 0.1 : 0.0)) + "\n";
  }
  strSource += "77 2 2\n";
  for (const char* szType : {"helmert", "affin", "projektiv", "polynom", "auto"}) {
    const Outcome outcome =
        RunTexts("trafo2d", {strSource, strControl}, {"--type", szType, "--json"});
    EXPECT_EQ(outcome.iExit, 0) << outcome.strErr;
    const auto result = outcome.Json();
    EXPECT_EQ(result["type"], std::string(szType) == "auto" ? "polynom" : szType);
    EXPECT_EQ(result["max_error_id"], 5);
    EXPECT_LT(result["residual_y"].get<double>(), 0.02);
    const auto& last = result["points"][25];
    EXPECT_EQ(last["id"], 77);
    EXPECT_TRUE(last["dx"].is_null());
    EXPECT_NEAR(last["x"].get<double>(), 6.0, 0.02);
    EXPECT_NEAR(last["y"].get<double>(), 24.0, 0.02);
  }
  const auto helmert =
      RunTexts("trafo2d", {strSource, strControl}, {"--type=helmert", "--json"}).Json();
  EXPECT_EQ(helmert["coefficients"].size(), 4U);
  EXPECT_NEAR(helmert["coefficients"][3].get<double>(), 2.0, 0.01);
}

TEST(Trafo2d, RefusesWhatDoesNotDetermineIt) {
  const ScratchFolder folder;
  folder.Write("a", "1 0 0\n2 1 0\n3 1 1\n4 0 1\n");
  folder.Write("b", "1 0 0\n2 2 0\n3 0 1\n4 3 5\n");
  folder.Write("line", "1 0 0\n2 1 1\n3 2 2\n4 3 3\n");
  folder.Write("far", "1 4e9 4e9\n2 4000000001 4e9\n3 4e9 4000000001\n4 4000000001 4000000001\n");
  ExpectLines(
      {{"zu trafo2d <(echo 1 0 0) --control a --type helmert", 4, "", "1 point in common, helmert"},
       {"zu trafo2d <(echo 9 0 0) --control a --type auto", 4, "", "0 points in common"},
       {"zu trafo2d a --control a --type polynom", 4, "", "polynom needs 10"},
       {"zu trafo2d line --control a --type affin", 4, "", "do not determine"},
       {"zu trafo2d line --control a --type projektiv", 4, "", "do not determine"},
       {"zu trafo2d <(echo 1 5 5; echo 2 5 5) --control a --type helmert", 4, "", "do not determ"},
       {"zu trafo2d far --control b --type projektiv", 0, "4000000000.5  4000000000.5", ""},
       {"zu trafo2d a --control a --type cubic", 2, "", "cubic"}},
      folder);
}
