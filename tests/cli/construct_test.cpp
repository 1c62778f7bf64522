#include "tests/cli/program.h"

namespace {

// Values as in docs/constructions.md.
TEST(Construct, EachKindGivesItsPoints) {
  const ScratchFolder folder;

  const struct {
    const char* szLine;
    const char* szPoint;
    double x, y;
  } cases[] = {
      {"arc --points 1,2,3,4,5,6", "centre", 4.7397824109060740, 2.9835326992924752},
      {"arc --points 21,22 --radius 5 --right", "centre", 3, -4},
      {"arc --points 22,14 --centre 21 --divide 2", "start", 6, 0},
      {"intersection --distance 21:5 --distance 22:5", "new", 3, 4},
      {"intersection --bearing 21:45 --bearing 22:315 --angle deg", "new", 3, 3},
      {"resection --direction 31:153.0174 --direction 32:50.0230 --direction 33:375.1739 "
       "--direction 34:302.3899 --name P",
       "P", 450.0203, 500.0231},
      {"line --points 41,42,43,44,45,46,47,48 --max-offset 0.05", "break1", 4.0150, 0},
      {"line --points 41,42,43,44,45,46,47,48 --breaks 45", "break1", 4.0150, 0},
      {"rectangle --points 11,12,13,14", "corner1", -0.033868689041896521, -0.081515560800207228},
      {"ortho --line 21,22 --points 12", "12", 10.2, 0},
      {"ortho --line 21,22 --chain 10,L5,R3", "leg3", 13, 5},
      {"match --lines 41,44,45,48 --plane xy", "match1", 4.0200, 0}};
  for (const auto& c : cases) {
    std::string strLine = c.szLine;
    strLine.insert(strLine.find(' '), strLine[2] == 's' ? " $S/constructions/known.coo --json"
                                                        : " $S/constructions/points.coo --json");
    const Outcome outcome = RunLine("zu construct " + strLine, folder);
    ASSERT_EQ(outcome.iExit, 0) << c.szLine << outcome.strErr;
    bool bFound = false;
    const auto result = outcome.Json();
    for (const auto& point : result["points"]) {
      if (point["name"] != c.szPoint) continue;
      bFound = true;
      EXPECT_NEAR(point["x"].get<double>(), c.x, 1e-4) << c.szLine;
      EXPECT_NEAR(point["y"].get<double>(), c.y, 0.02) << c.szLine;
    }
    EXPECT_TRUE(bFound) << c.szLine;
  }
}

TEST(Construct, WorksInAnyPlaneAndTellsWhatIsWrong) {
  const ScratchFolder folder;
  folder.Write("wall", "1 5 0 0\n2 5 3 0\n3 5 3 4\n4 5 0 4.1\n5 5 0 2\n");
  folder.Write("line", "1 0 0 0\n2 1 1 0\n3 2 2 0\n4 9 9 0\n");
  folder.Write("off", "a 1 2\nb 2 -1\n");
  ExpectLines(
      {{"zu construct rectangle wall --points 1,2,3,4 --plane yz -o o && cat o", 0, "corner1", ""},
       {"zu construct rectangle wall --points 1,2,3,4 --plane fit --tolerance 0.001", 1, "width",
        ""},
       {"zu construct arc wall --points 1,2,3 --plane 1,2,3", 0, "radius  2.5", ""},
       {"zu construct ortho wall --line 1,2 --plane yz --offsets off", 0, "5.000000", ""},
       {"zu construct conditions $S/constructions/askew.coo --conditions "
        "$S/constructions/window.txt",
        0, "sigma0  ", ""},
       {"printf 'right 1 2 1 5\\nparallel 1 2 1 5\\n' | zu construct conditions wall --plane yz "
        "--conditions -",
        4, "", "contradict"},
       {"echo 'right 1 2 1 3' | zu construct conditions wall --plane yz --conditions -", 4, "",
        "free is: "},
       {"echo 'right 1 2 1' | zu construct conditions wall --conditions -", 3, "",
        ":1: no condition; parallel"},
       {"zu construct arc line", 4, "", "the points stand in a line"},
       {"zu construct arc line --plane fit", 4, "", "determine no plane"},
       {"zu construct arc line --plane 1,2,3", 4, "", "stand in a line"},
       {"zu construct arc line --points 1,7,3", 3, "", "no point \"7\""},
       {"zu construct arc line --plane up", 2, "", "xy, xz, yz, fit or P,Q,R"},
       {"zu construct arc line --points 1,2,3 --radius 5", 2, "", "two points"},
       {"zu construct intersection line --bearing 1:50 --bearing 4:50", 4, "", "line"},
       {"zu construct intersection line --bearing 1", 2, "", "P:VALUE would be right"},
       {"zu construct intersection line", 2, "", "--bearing P:VALUE is missing"},
       {"zu construct resection line --direction 1:0 --direction 2:50", 4, "", "too few"},
       {"zu construct line line --breaks 1", 2, "", "behind the first one"},
       {"zu construct ortho line --line 1,2 --chain 5,X3", 2, "", "S, L, R or B"},
       {"zu construct match line --lines 1,2,3", 2, "", "4 would be right"},
       {"zu construct match line --lines 1,1,2,3", 4, "", "coincide"}},
      folder);
}

}  // namespace

TEST(Mesh, TellsWritesAndRefuses) {
  const ScratchFolder folder;
  folder.Write("p.coo", "1 0 0 0\n2 1 0 0\n3 1 1 0\n4 0 1 0\n5 0.5 0.5 1\n6 1 1 2\n");
  folder.Write("lines", "# rim\n1,2 3\n\n4 9\n");
  const auto result =
      RunLine("zu mesh p.coo --step 0.5 --contours c.csv -o m.ply --binary --json", folder).Json();
  EXPECT_NEAR(result["volume_above"].get<double>(), 1.0 / 3.0, 1e-9);
  EXPECT_EQ(result["triangles"], 4);
  EXPECT_EQ(result["doubles"][0]["dropped"], "6");
  EXPECT_EQ(result["contours"][0]["closed"], true);
  ExpectLines({{"zu cloud info m.ply", 0, "5 points", ""},
               {"zu mesh p.coo --plane xy:1 --step 0.5 --contours c.svg", 0, "volume below", ""},
               {"zu mesh p.coo --plane 1,2,4 -o m.obj", 0, "0.333333", ""},
               {"zu mesh $S/clouds/plane_scan.xyz --fit --max-edge 2", 0, "holes", ""},
               {"zu mesh p.coo --fit", 4, "", "no plane"},
               {"zu mesh p.coo --breaklines lines", 3, "", "lines:4: no point \"9\""},
               {"zu mesh p.coo --plane 1,2,2", 4, "", "in a line"},
               {"zu mesh p.coo --plane moon", 2, "", "xy:12.5"},
               {"zu mesh p.coo --step 1", 2, "", "--contours"},
               {"zu mesh p.coo -o m.stl", 2, "", ".obj"},
               {"zu mesh p.coo --max-edge 0.1", 4, "", "no triangle"}},
              folder);
}
