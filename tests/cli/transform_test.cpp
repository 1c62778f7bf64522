// zu transform on the stations of samples/datum and on small sets made for a purpose.
#include <gtest/gtest.h>

#include <cmath>

#include "tests/cli/program.h"

namespace {

const char* const kAxes[] = {"x", "y", "z"};
const char kJoin[] = "zu transform $S/datum/local.coo --control $S/datum/wgs84.coo --json ";

nlohmann::json Json(const std::string& strLine, const ScratchFolder& folder) {
  const Outcome outcome = RunLine(strLine, folder);
  EXPECT_EQ(outcome.iExit, 0) << outcome.strErr;
  return outcome.Json();
}

void ExpectNear(const nlohmann::json& values, const nlohmann::json& expected, double dTolerance) {
  for (size_t i = 0; i < 3; ++i) {
    EXPECT_NEAR(values[i].get<double>(), expected[i].get<double>(), dTolerance);
  }
}

}  // namespace

TEST(Transform, GivesThePublishedFigures) {
  const ScratchFolder folder;
  const auto file = nlohmann::json::parse(ReadFile(Source("samples/datum/expected.json")));
  const auto expected = file["local_to_wgs84"];
  const auto result = Json(kJoin, folder);
  EXPECT_EQ(result["status"], 0);
  EXPECT_EQ(result["common"], 7);
  EXPECT_NEAR(result["scale"].get<double>(), 1.00000558252, 1e-9);
  ExpectNear(result["source_centre"], expected["source_centre"], 1e-6);
  ExpectNear(result["target_centre"], expected["target_centre"], 1e-6);
  for (int i = 0; i < 3; ++i) {
    EXPECT_NEAR(result["rms"][kAxes[i]].get<double>(), expected["rms_xyz"][i].get<double>(), 1e-5);
    ExpectNear(result["rotation"][i], expected["rotation"][i], 1e-9);
  }
}

TEST(Transform, WithUnitScaleMovesWithoutStretching) {
  const ScratchFolder folder;
  const auto free = Json(kJoin, folder), rigid = Json(std::string(kJoin) + "--unit-scale", folder);
  EXPECT_EQ(rigid["scale"], 1);
  EXPECT_EQ(rigid["rotation"], free["rotation"]);
  const auto distance = [](const nlohmann::json& points) {
    double d2 = 0.0;
    for (const char* szAxis : kAxes) {
      d2 += std::pow(points[0][szAxis].get<double>() - points[6][szAxis].get<double>(), 2);
    }
    return std::sqrt(d2);
  };
  EXPECT_NEAR(distance(free["points"]) / distance(rigid["points"]), free["scale"].get<double>(),
              1e-10);
}

// Points that one list alone holds are in the result, without residuals, and not in the RMS.
TEST(Transform, KeepsPointsOfOneListOnly) {
  const ScratchFolder folder;
  folder.Write("a", "1 0 0 0\n2 1 0 0\n8 5 5 5\n3 0 1 0.1\n");
  folder.Write("b", "3 0 1 0\n2 1 0 0\n1 0 0 0\n9 7 7 7\n");
  const auto result = Json("zu transform a --control b --json", folder);
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
  const ScratchFolder folder;
  folder.Write("a", "1 0 0 0\n2 1 0 0\n3 0 1 0\n");
  folder.Write("two", "1 0 0 0\n2 1 0 0\n9 0 1 0\n");
  folder.Write("place", "1 5 5 5\n2 5 5 5\n3 5 5 5\n");
  folder.Write("line", "1 0 0 0\n2 1 2 3\n3 2 4 6\n");
  ExpectLines({{"zu transform a --control two", 4, "", "have 2 points in common, 3 are needed"},
               {"zu transform a --control a --min-points=4", 4, "", "4 are needed"},
               {"zu transform a --control place", 4, "", "do not determine"},
               {"zu transform place --control a", 4, "", "do not determine"},
               {"zu transform a --control line", 4, "", "on one straight line"},
               {"zu transform line --control a", 4, "", "on one straight line"}},
              folder);
}

TEST(Transform, CarriesPositionsOnTheEarthAsGeoDoes) {
  const ScratchFolder folder;
  folder.Write("p", "1 48 9 100\n2 89 9 100\n3 48 9.5 0\n");
  const char szTo[] = " --from geographic --to utm:32 --json";
  const auto result = RunLine(std::string("zu geo p") + szTo, folder).Json();
  auto same = RunLine(std::string("zu transform p") + szTo, folder).Json();
  same["command"] = "geo";
  EXPECT_EQ(result, same);
  EXPECT_EQ(result["refused"], 1);
  ASSERT_EQ(result["points"].size(), 2U);
  EXPECT_EQ(result["points"][1]["id"], 3);
  EXPECT_NEAR(result["points"][0]["x"].get<double>(), 500000.0, 1e-8);
  ExpectLines({{"zu transform p", 2, "", "--from and --to"},
               {"zu transform p --control p --to utm", 2, "", "need no --control"},
               {"zu geo p --from geographic", 2, "", "--to is needed"},
               {"zu geo p --from moon --to utm", 2, "", "geocentric, utm[:ZONE[n|s]]"},
               {"zu geo p --from utm --to geocentric", 2, "", "utm:32 would be right"},
               {"zu geo p --from gk:3 --to geocentric", 2, "", "--ellipsoid"},
               {"zu geo p --from gk:3 --to geographic --ellipsoid x", 2, "", "bessel1841"},
               {"zu geo p --from geocentric --to geographic", 4, "", "no point can be told"},
               {"zu geo p --from geographic --to geocentric --columns id,x,y,z,dx", 2, "", "skip"},
               {"zu geo p --from geographic --to utm -o o", 1, "utm:32n", "point 2 is left out"},
               {"zu geo o --from utm:32 --to geographic:gon", 0, "53.333333333", ""}},
              folder);
}
