// zu plane --axis on the scan of samples/clouds, the board of samples/chessboard and sets made for
// a purpose.
#include <gtest/gtest.h>

#include <cmath>

#include "tests/cli/program.h"

namespace {

const char kScan[] = "zu plane --axis $S/clouds/plane_scan.xyz --columns x,y,z ";

nlohmann::json Json(const std::string& strLine, const ScratchFolder& folder) {
  const Outcome outcome = RunLine(strLine + " --json", folder);
  EXPECT_EQ(outcome.iExit, 0) << outcome.strErr;
  return outcome.Json();
}

}  // namespace

TEST(Plane, GivesTheExpectedFiguresOfTheScan) {
  const ScratchFolder folder;
  const auto file = nlohmann::json::parse(ReadFile(Source("samples/clouds/expected.json")));
  const auto scan = file["plane_scan.xyz"], expected = scan["plane_as_fitted"];
  const auto result = Json(kScan, folder);
  EXPECT_EQ(result["status"], 0);
  const char* const figures[][2] = {{"d", "d"},
                                    {"sigma0", "sigma0"},
                                    {"medium_distance", "medium_point_dist"},
                                    {"largest", "max"}};
  for (const auto& [szKey, szExpected] : figures) {
    EXPECT_NEAR(result[szKey].get<double>(), expected[szExpected].get<double>(), 1e-12) << szKey;
  }
  EXPECT_NEAR(result["rms"]["total"].get<double>(), expected["rms"].get<double>(), 1e-12);
  ASSERT_EQ(result["points"].size(), scan["points"].get<std::size_t>());
  EXPECT_EQ(result["points"][2518]["id"], 2519);  // the place in the file
  // A deviation is the point put into the plane: the first point of the file.
  double d = result["d"].get<double>();
  for (int i = 0; i < 3; ++i) {
    const double n = result["normal"][i].get<double>();
    EXPECT_NEAR(n, expected["normal"][i].get<double>(), 1e-12);
    d += n * scan["first"][i].get<double>();
  }
  EXPECT_NEAR(result["points"][0]["deviation"].get<double>(), d, 1e-15);
}

// The foot points lie in the plane, which is found again from them; logs collect.
TEST(Plane, WritesFootPointsAndLog) {
  const ScratchFolder folder;
  const auto first = Json(std::string(kScan) + "-o feet.xyz", folder);
  const auto again = Json("zu plane --axis feet.xyz --columns x,y,z", folder);
  for (int i = 0; i < 3; ++i) {
    EXPECT_NEAR(again["normal"][i].get<double>(), first["normal"][i].get<double>(), 1e-12);
  }
  EXPECT_LT(again["largest"].get<double>(), 1e-12);

  const std::string strLog = folder.Write("plane.log", "an older report\n");
  for (int i = 0; i < 2; ++i) {
    const auto board = Json("zu plane --axis $S/chessboard/board.coo --log plane.log", folder);
    EXPECT_EQ(board["normal"], nlohmann::json({0, 0, 1}));
    EXPECT_EQ(board["points"].size(), 54U);
  }
  ExpectLines({{"head -1 plane.log", 0, "an older report", ""},
               {"grep -c '3D PLANE DEFINITION' plane.log", 0, "2\n", ""},
               {"grep '^       54 \"\"               ' plane.log", 0, "54", ""},
               {"ls", 0, "feet.xyz\nplane.log\n", ""}},
              folder);
}

TEST(Plane, PrintsTheLargestDeviationFirstOrRefuses) {
  const ScratchFolder folder;
  folder.Write("line", "1 0 0 0\n2 1 1 1\n3 2 2 2\n4 5 5 5\n");
  folder.Write("near", "1 0 0 0\n2 1 0.0005 0\n3 2 0 0\n");
  folder.Write("body", "1 1 1 1\n2 1 -1 -1\n3 -1 1 -1\n4 -1 -1 1\n");
  folder.Write("rows", "# x y z\n0 0 1\n\n4 0 1 remark\n0 4 1\n4 4 1\n");
  const std::string strScan = kScan;
  ExpectLines(
      {{strScan.c_str(), 0, "2519 points, largest distance 0.03028\n\n", ""},
       {strScan.c_str(), 0, "!ZuCalcPlane", ""},
       {strScan.c_str(), 0, "- 0.619835359499 = 0\n\nRMS              0.00629", ""},
       {strScan.c_str(), 0, "0.03028  point 1177\n", ""},
       {strScan.c_str(), 0, "point  deviation\n 1177   -0.03028\n", ""},
       {"zu plane <(echo 1 0 0 0; echo 2 1 0 0)", 4, "", "holds 2 points, a plane needs 3"},
       {"yes 3 4 5 | head -5 | zu plane --axis - --columns x,y,z", 4, "",
        "in one place or on one line"},
       {"zu plane --axis line", 4, "", "in one place or on one line"},
       {"zu plane $S/clouds/milk_carton.ply", 0, " of the file\n", ""},
       {"zu plane $S/clouds/milk_carton.ply --tolerance 1e-9", 1, "", "beyond --tolerance"},
       {"zu plane $S/clouds/milk_carton.ply --axis", 2, "", "fitted as a cloud"},
       {"zu plane body", 4, "", "spread as far across one as along it"},
       {"zu plane --axis line --force", 4, "", "do not determine"},
       {"zu plane --axis near", 4, "", "--force"},
       {"zu plane --axis near --force --json", 0, "\"deviation\": ", ""},
       {"zu plane --axis rows --columns x,y,z --json", 0, "\"d\": -1,", ""},
       {"zu plane --axis rows --columns x,y,z --json", 0, "{\"id\": 4, \"deviation\": 0}\n ]", ""},
       {"echo 4 0 | zu plane - --columns x,y,z", 3, "",
        "standard input:1:4: the line has 2 fields"},
       {"zu plane --axis near --columns id,x,y", 2, "", "has no column z"}},
      folder);
}
