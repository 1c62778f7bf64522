// zu adjust: a sample from its measured pixels to calibrated camera and points.
#include <cmath>
#include <csignal>
#include <map>

#include "tests/cli/program.h"

namespace {

const std::string kAdjust =
    "zu adjust $S/network/camcal.prj --control $S/network/control_fixed.coo ";
const std::string kCamera = "--estimate c,xh,yh,a1,a2,a3,c1,c2 ";

}  // namespace

TEST(Adjust, WritesAProjectThatNeedsNoFurtherStep) {
  const ScratchFolder folder;
  const nlohmann::json first =
      RunLine(kAdjust + kCamera + "-o out.prj --points-out out.coo --json", folder).Json();
  EXPECT_NEAR(first["sigma0"], 1.621681476, 1e-6);
  EXPECT_EQ(first["residuals"].size(), 2074U);
  EXPECT_NEAR(first["rms_px"], 0.217361, 1e-6);
  const nlohmann::json again =
      RunLine("zu adjust out.prj --control $S/network/control_fixed.coo --approx out.coo " +
                  kCamera + "--json",
              folder)
          .Json();
  EXPECT_NEAR(again["sigma0"], first["sigma0"], 1e-9);
  EXPECT_LE(again["iterations"], 3);
  EXPECT_NEAR(again["cameras"][0]["values"]["c"], first["cameras"][0]["values"]["c"], 1e-9);
}

TEST(Adjust, LeavesNothingHalfWrittenWhenItIsStopped) {
  const ScratchFolder folder;
  const std::string strOut = folder.Write("out.prj", "old");
  RunOptions interrupt;
  interrupt.iSignalWhileBlocked = SIGINT;
  EXPECT_EQ(RunZu({"adjust", Source("samples/network/camcal.prj"), "--control",
                   Source("samples/network/control_fixed.coo"), "-o", strOut, "--points-out",
                   folder.Path("out.coo"), "--report", folder.Path("out.html"), "--json"},
                  interrupt)
                .iExit,
            130);
  EXPECT_EQ(ReadFile(strOut), "old");
  EXPECT_EQ(folder.Names(), std::vector<std::string>{"out.prj"});
}

// Each photo with its camera, the camera, and each pair of photos.
TEST(Adjust, KeepsCovariancesInTheProject) {
  const ScratchFolder folder;
  const nlohmann::json told = RunLine(kAdjust + kCamera + "-o out.prj --json", folder).Json();
  EXPECT_EQ(RunLine("zu convert out.prj -o out.json", folder).iExit, 0);
  const auto items = nlohmann::json::parse(ReadFile(folder.Path("out.json")))["items"];
  std::map<std::pair<int, int>, nlohmann::json> matrices;
  for (const nlohmann::json& item : items) {
    if (item["type"] != "covariance") continue;
    matrices[{item.value("photo", 0), item.value("with", 0)}] = item["matrix"];
  }
  EXPECT_EQ(matrices.size(), 1U + 21U + 21U * 20U / 2U);
  const nlohmann::json& photo = told["photos"][2];
  const nlohmann::json &own = matrices[{3, 0}], &camera = matrices[{0, 0}];
  ASSERT_EQ(own.size(), 6U + 8U);
  for (size_t k = 0; k < 3; ++k) {
    EXPECT_NEAR(std::sqrt(double(own[k][k])) / double(photo["sd_position"][k]), 1.0, 1e-9);
    EXPECT_NEAR(std::sqrt(double(own[3 + k][3 + k])) / double(photo["sd_rotation"][k]), 1.0, 1e-9);
  }
  EXPECT_NEAR(std::sqrt(double(camera[0][0])) / double(told["cameras"][0]["sd"]["c"]), 1.0, 1e-9);
  EXPECT_EQ(own[6 + 2][6 + 5], camera[2][5]);
}

TEST(Adjust, TakesScaleBarsAndDeviationsOfRows) {
  const ScratchFolder folder;
  folder.Write("bars.txt", "# bar\n1001 1004 1.4142 0.0001\n");
  folder.Write("rows.csv", "1,2,1428.6871,1455.9278,0.1,0.1\n");
  const nlohmann::json result =
      RunLine(
          "zu adjust $S/network/camcal.prj --approx $S/network/approx.coo --datum inner "
          "--scale-bars bars.txt --measurements rows.csv --json " +
              kCamera,
          folder)
          .Json();
  EXPECT_EQ(result["defect"], 6);
  EXPECT_NEAR(result["scale_bars"][0]["d"], 1.4142, 1e-9);
  EXPECT_EQ(result["redundancy"], 3721);
}

// Deviations of rows are kept in the project: it gives the same without the rows.
TEST(Adjust, TakesDeviationsOfTheProject) {
  const ScratchFolder folder;
  folder.Write("rows.csv", "1,2,1428.6871,1455.9278,0.02,0.03\n3,2,1400,1500,900,900\n");
  const std::string strEnd = " --control $S/network/control_fixed.coo --json";
  const std::string strOut =
      RunLine(kAdjust + "--measurements rows.csv -o out.prj --json", folder).strOut;
  const nlohmann::json rows = nlohmann::json::parse(strOut);
  const nlohmann::json kept = RunLine("zu adjust out.prj" + strEnd, folder).Json();
  EXPECT_NEAR(kept["sigma0"], rows["sigma0"], 1e-9);
  EXPECT_NEAR(kept["residuals"][0]["rx"], rows["residuals"][0]["rx"], 1e-6);
  EXPECT_LT(kept["residuals"][0]["rx"], 0.5);
}

TEST(Adjust, TellsWhatIsWrong) {
  const ScratchFolder folder;
  folder.Write("two.coo", "1001 0 1 0\n1002 1 1 0\n");
  folder.Write("short.coo", "1001 0 1\n");
  folder.Write("bars.txt", "1001 7777 1.0 0.1\n");
  const struct {
    std::string strLine;
    int iExit;
    const char* szErr;
  } cases[] = {
      {"zu adjust $S/network/camcal.prj --control two.coo", 4, "rotation about the line through"},
      {"zu adjust $S/network/camcal.prj", 4, "shift, rotation and scale"},
      {"zu adjust $S/network/camcal_unoriented.prj", 4, "shift, rotation and scale"},
      {"zu adjust $S/network/camcal.prj --control short.coo", 3, "short.coo:1: 3 fields"},
      {"zu adjust $S/network/approx.coo", 3, "project file"},
      {kAdjust + "--scale-bars bars.txt", 3, "bars.txt:1: point 7777"},
      {kAdjust + "--estimate c,q", 2, "\"q\" is no parameter"},
      {kAdjust + "--sigma 1", 2, "0.1px or 0.0005mm"},
      {kAdjust + "--datum inner:9999", 3, "point 9999"},
  };
  for (const auto& at : cases) {
    const Outcome outcome = RunLine(at.strLine, folder);
    EXPECT_EQ(outcome.iExit, at.iExit) << at.strLine << outcome.strErr;
    EXPECT_NE(outcome.strErr.find(at.szErr), std::string::npos) << at.strLine << outcome.strErr;
    EXPECT_TRUE(outcome.strOut.empty());
  }
}
