// zu transform on the stations of samples/datum and on small sets made for a purpose.
#include <gtest/gtest.h>

#include <cmath>

#include "tests/cli/program.h"

namespace {

const char* const kAxes[] = {"x", "y", "z"};
const char* const kResiduals[] = {"dx", "dy", "dz"};

nlohmann::json Expected() {
  return nlohmann::json::parse(ReadFile(Source("samples/datum/expected.json")));
}

Outcome JoinStations(const std::vector<std::string>& more) {
  std::vector<std::string> arguments = {"transform", Source("samples/datum/local.coo"), "--control",
                                        Source("samples/datum/wgs84.coo")};
  arguments.insert(arguments.end(), more.begin(), more.end());
  return RunZu(arguments);
}

Outcome JoinTexts(const std::string& strSource, const std::string& strControl,
                  const std::vector<std::string>& more = {}) {
  const ScratchFolder folder;
  std::vector<std::string> arguments = {"transform", folder.Write("source.coo", strSource),
                                        "--control", folder.Write("control.coo", strControl),
                                        "--json"};
  arguments.insert(arguments.end(), more.begin(), more.end());
  return RunZu(arguments);
}

double Determinant(const nlohmann::json& r) {
  const auto e = [&r](int i, int j) { return r[i][j].get<double>(); };
  return e(0, 0) * (e(1, 1) * e(2, 2) - e(1, 2) * e(2, 1)) -
         e(0, 1) * (e(1, 0) * e(2, 2) - e(1, 2) * e(2, 0)) +
         e(0, 2) * (e(1, 0) * e(2, 1) - e(1, 1) * e(2, 0));
}

}  // namespace

TEST(Transform, GivesThePublishedFigures) {
  const auto result = JoinStations({"--json"}).Json();
  const auto expected = Expected()["local_to_wgs84"];
  const auto published = Expected()["published"];
  EXPECT_EQ(result["status"], 0);
  EXPECT_EQ(result["common"], 7);
  EXPECT_NEAR(result["scale"].get<double>(), 1.00000558252, 1e-9);
  ASSERT_EQ(result["points"].size(), 7U);
  for (const auto& point : result["points"]) {
    const auto& residual = published["residuals"][std::to_string(point["id"].get<int>())];
    for (int i = 0; i < 3; ++i) {
      EXPECT_EQ(std::round(point[kResiduals[i]].get<double>() * 1e4),
                std::round(residual[i].get<double>() * 1e4))
          << point;
    }
  }
  for (int i = 0; i < 3; ++i) {
    EXPECT_NEAR(result["rms"][kAxes[i]].get<double>(), expected["rms_xyz"][i].get<double>(), 1e-5);
    EXPECT_NEAR(result["source_centre"][i].get<double>(),
                expected["source_centre"][i].get<double>(), 1e-6);
    EXPECT_NEAR(result["target_centre"][i].get<double>(),
                expected["target_centre"][i].get<double>(), 1e-6);
    for (int j = 0; j < 3; ++j) {
      EXPECT_NEAR(result["rotation"][i][j].get<double>(), expected["rotation"][i][j].get<double>(),
                  1e-9);
    }
  }
}

TEST(Transform, PrintsTheLargestResidualFirst) {
  const Outcome outcome = JoinStations({});
  EXPECT_EQ(outcome.iExit, 0);
  EXPECT_EQ(outcome.strErr, "");
  size_t uLast = 0;
  for (const char* szText :
       {"7 common points", "0.0940   0.1351   0.1402", "-0.0399  -0.0879  -0.0081",
        "-0.0919   0.0139  -0.0055", "0.0202  -0.0220  -0.0874", "0.0588  -0.0497   0.0137",
        "-0.0118   0.0065  -0.0546", "-0.0294   0.0041   0.0017", "0.0582   0.0646   0.0661",
        "target = s R (source - xs) + xt", "1.0000055825", "gon"}) {
    const size_t uFound = outcome.strOut.find(szText, uLast);
    ASSERT_NE(uFound, std::string::npos) << szText << "\n" << outcome.strOut;
    uLast = uFound;
  }
}

// The written stations are those of the JSON result and lie in the control system.
TEST(Transform, WritesTheJoinedStations) {
  const ScratchFolder folder;
  const auto first = JoinStations({"--json", "-o", folder.Path("joined.coo")}).Json();
  const auto again = RunZu({"transform", folder.Path("joined.coo"), "--control",
                            Source("samples/datum/wgs84.coo"), "--json"})
                         .Json();
  EXPECT_NEAR(again["scale"].get<double>(), 1.0, 1e-9);
  for (size_t i = 0; i < 7; ++i) {
    for (const char* szResidual : kResiduals) {
      EXPECT_NEAR(again["points"][i][szResidual].get<double>(),
                  first["points"][i][szResidual].get<double>(), 1e-4);
    }
  }
}

// All points in one plane, carried by a quarter turn about z and a scale of 2: a rotation, no
// mirror.
TEST(Transform, GivesAProperRotationForFlatControl) {
  const auto result = JoinTexts("1 0 0 5\n2 4 0 5\n3 4 3 5\n4 0 3 5\n",
                                "1 10 20 30\n2 10 28 30\n3 4 28 30\n4 4 20 30\n")
                          .Json();
  EXPECT_NEAR(result["scale"].get<double>(), 2.0, 1e-9);
  EXPECT_NEAR(Determinant(result["rotation"]), 1.0, 1e-9);
  EXPECT_NEAR(result["rotation"][2][2].get<double>(), 1.0, 1e-9);
  EXPECT_NEAR(result["angles"]["z"]["gon"].get<double>(), 100.0, 1e-7);
  EXPECT_NEAR(result["rms"]["x"].get<double>(), 0.0, 1e-9);
}

TEST(Transform, WithUnitScaleMovesWithoutStretching) {
  const auto free = JoinStations({"--json"}).Json();
  const auto rigid = JoinStations({"--json", "--unit-scale"}).Json();
  EXPECT_EQ(rigid["scale"], 1);
  EXPECT_EQ(rigid["rotation"], free["rotation"]);
  const auto distance = [](const nlohmann::json& points) {
    double d2 = 0.0;
    for (const char* szAxis : kAxes) {
      const double d = points[0][szAxis].get<double>() - points[6][szAxis].get<double>();
      d2 += d * d;
    }
    return std::sqrt(d2);
  };
  EXPECT_NEAR(distance(free["points"]) / distance(rigid["points"]), free["scale"].get<double>(),
              1e-10);
}

// Points that one list alone holds are in the result, without residuals, and not in the RMS.
TEST(Transform, KeepsPointsOfOneListOnly) {
  const auto result =
      JoinTexts("1 0 0 0\n2 1 0 0\n8 5 5 5\n3 0 1 0.1\n", "3 0 1 0\n2 1 0 0\n1 0 0 0\n9 7 7 7\n")
          .Json();
  EXPECT_EQ(result["common"], 3);
  EXPECT_EQ(result["only_source"], nlohmann::json({8}));
  EXPECT_EQ(result["only_control"], nlohmann::json({9}));
  ASSERT_EQ(result["points"].size(), 5U);
  EXPECT_TRUE(result["points"][2]["dz"].is_null());
  EXPECT_EQ(result["points"][4]["x"], 7);
  double dSum = 0.0;
  for (int i : {0, 1, 3}) dSum += std::pow(result["points"][i]["dz"].get<double>(), 2);
  EXPECT_NEAR(result["rms"]["z"].get<double>(), std::sqrt(dSum / 3.0), 1e-12);
}

TEST(Transform, RefusesWhatDoesNotDetermineIt) {
  const std::string strTriangle = "1 0 0 0\n2 1 0 0\n3 0 1 0\n";
  ExpectFailure(JoinTexts(strTriangle, "1 0 0 0\n2 1 0 0\n9 0 1 0\n"), 4,
                "have 2 points in common, 3 are needed");
  ExpectFailure(JoinTexts(strTriangle, strTriangle, {"--min-points=4"}), 4, "4 are needed");
  const std::string aSources[] = {"1 5 5 5\n2 5 5 5\n3 5 5 5\n",   // one place
                                  "1 0 0 0\n2 1 2 3\n3 2 4 6\n"};  // one line
  for (const auto& strSource : aSources) {
    ExpectFailure(JoinTexts(strSource, strTriangle), 4, "do not determine");
    ExpectFailure(JoinTexts(strTriangle, strSource), 4, "do not determine");
  }
}
