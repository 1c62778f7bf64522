// What --save keeps, zu apply repeats: the same digits, the same standard deviations, and back.
#include <gtest/gtest.h>

#include <cmath>

#include "tests/cli/program.h"

namespace {

// Turned by the triangle 3-4-5 about z, twice as large, shifted.
const char kMatrix[] =
    "[[1.6, -1.2, 0, 100],\n [1.2, 1.6, 0, 200],\n [0, 0, 2, 50],\n [0,0,0,1]]\n";

const char kPlane[] = "1 0 0\n2 10 0\n3 10 8\n4 0 8\n5 5 3\n6 2 6\n";
const char kAskew[] = "1 100 50\n2 120.1 51\n3 119 66.2\n4 101.2 65\n5 110.3 56.4\n";

TEST(SaveApply, RepeatsTheResultToTheLastDigit) {
  const ScratchFolder folder;
  folder.Write("p", kPlane);
  folder.Write("q", kAskew);
  ExpectLines(
      {{"zu transform $S/datum/local.coo --control $S/datum/wgs84.coo --save T.json -o a.coo", 0,
        "common", ""},
       {"zu apply T.json $S/datum/local.coo b.coo && cmp a.coo b.coo", 0, "7 points carried", ""},
       {"zu merge $S/merge/first.coo $S/merge/second.coo --tolerance 1 --save T.json -o a.coo && "
        "zu apply T.json $S/merge/second.coo b.coo && comm -13 <(sort b.coo) <(sort a.coo) | wc -l",
        0, "\n2\n", ""},
       {"zu local $S/datum/local.coo --axis X:2,1 --plane XY:3 --save T.json -o a.coo && "
        "zu apply T.json $S/datum/local.coo b.coo && cmp a.coo b.coo",
        0, "7 points carried", ""},
       {"for t in helmert affin projektiv; do zu trafo2d p --control q --type $t --columns id,x,y "
        "--save T.json -o a.coo && zu apply T.json p b.coo --columns id,x,y && cmp a.coo b.coo || "
        "exit 9; done",
        0, "6 points carried", ""},
       {"zu cloud transform $S/clouds/milk_carton.ply a.ply --matrix T3 || "
        "{ zu transform $S/datum/local.coo --control $S/datum/wgs84.coo --save T3; "
        "zu cloud transform $S/clouds/milk_carton.ply a.ply --matrix T3; } && "
        "zu apply T3 $S/clouds/milk_carton.ply b.ply && cmp a.ply b.ply",
        0, "milk_carton", "no such file"}},
      folder);
}

double Largest(const nlohmann::json& a, const nlohmann::json& b, const char* szKey) {
  double dLargest = 0.0;
  EXPECT_EQ(a.size(), b.size());
  for (size_t i = 0; i < std::min(a.size(), b.size()); ++i) {
    for (size_t k = 0; k < a[i].at(szKey).size(); ++k) {
      const double dA = a[i][szKey][k], dB = b[i][szKey][k];
      dLargest = std::max(dLargest, std::fabs(dA - dB) / dA);
    }
  }
  return dLargest;
}

// Against the adjustments' own propagation, for points that took no part; and by the way back.
TEST(SaveApply, CarriesStandardDeviations) {
  const ScratchFolder folder;
  folder.Write("s", "1 0 0 0\n2 10 0 1\n3 10 8 0\n4 0 8 2\n11 5 3 1\n12 20 -6 4\n");
  folder.Write("t", "1 7 0.01 0\n2 7 10 1.02\n3 -1 10 0\n4 -1 0.02 2\n");
  folder.Write("p", kPlane);
  folder.Write("q", kAskew);
  const auto points = [&folder](const std::string& strLine) {
    return RunLine(strLine + " --json", folder).Json()["points"];
  };
  const auto pick = [](const nlohmann::json& all) {
    nlohmann::json some;
    for (const auto& p : all) {
      if (p["id"] > 4) some.push_back(p);
    }
    return some;
  };
  for (const char* szFit :
       {"transform s --control t --sigma 0.02 --save T", "transform s --control t --save T"}) {
    const auto direct = points(std::string("zu ") + szFit);
    EXPECT_LT(Largest(pick(direct), pick(points("zu apply T s out")), "sd"), 1e-9) << szFit;
  }
  for (const char* szType : {"helmert", "affin", "projektiv"}) {
    const auto direct = points(std::string("zu trafo2d p --control q --columns id,x,y --save T "
                                           "--type ") +
                               szType);
    EXPECT_LT(Largest(direct, points("zu apply T p out --columns id,x,y"), "sd"), 1e-9);
    // The way back from exact points: variances through the inverse derivative, by differences.
    const auto back = points("zu apply T out back --columns id,x,y --inverse")[4];
    EXPECT_NEAR(back["x"].get<double>(), 5.0, 1e-9);
    EXPECT_NEAR(back["y"].get<double>(), 3.0, 1e-9);
    EXPECT_GT(back["sd"][0].get<double>(), 0.0);
  }
}

// Rays, planes and object points stay with each other: what is measured is the same, as large.
TEST(SaveApply, CarriesProjects) {
  const ScratchFolder folder;
  folder.Write("M", kMatrix);
  const auto rms = [&folder](const char* szFiles) {
    const std::string strLine = std::string("zu measure ") + szFiles + " --json";
    return RunLine(strLine, folder).Json();
  };
  ExpectLines({{"zu apply M $S/chessboard/left.prj moved.prj", 0, "13 oriented photos", ""},
               {"zu apply M $S/chessboard/board.coo moved.coo", 0, "54 points", ""},
               {"p=\"--photo 1 --zusp 1\"; zu apply M $S/older/facade.prj f.prj; echo 1 -1.0 0.5 | "
                "zu rectify $S/older/facade.prj $p > f; echo 1 -1.0 0.5 | zu rectify f.prj $p > g; "
                "zu apply M f h; cat g h | grep -c '23.220831246870.* 642.41562343515.* 153.024'",
                0, "\n2\n", ""}},
              folder);
  const auto before =
      rms("$S/chessboard/left.prj --plane $S/chessboard/board.coo --check "
          "$S/chessboard/board.coo");
  const auto after = rms("moved.prj --plane moved.coo --check moved.coo");
  EXPECT_NEAR(before["rms_px"].get<double>(), after["rms_px"].get<double>(), 1e-8);
  EXPECT_EQ(after["points"].size(), before["points"].size());
  for (size_t i = 0; i < before["points"].size(); i += 50) {
    const auto &p = before["points"][i], &q = after["points"][i];
    const double x = p["x"], y = p["y"], z = p["z"];
    EXPECT_NEAR(q["x"].get<double>(), 1.6 * x - 1.2 * y + 100, 1e-6);
    EXPECT_NEAR(q["y"].get<double>(), 1.2 * x + 1.6 * y + 200, 1e-6);
    EXPECT_NEAR(q["z"].get<double>(), 2 * z + 50, 1e-6);
  }
}

TEST(SaveApply, TellsWhatWouldDo) {
  const ScratchFolder folder;
  folder.Write("M", kMatrix);
  folder.Write("columns", "1.6 1.2 0 0\n-1.2 1.6 0 0\n0 0 2 0\n100 200 50 1\n");
  folder.Write("shear", "1 0.5 0 0\n0 1 0 0\n0 0 1 0\n");
  folder.Write("flat", "1 0 0 0\n0 1 0 0\n0 0 0 0\n");
  folder.Write("l", "1 10 20 30\n");
  folder.Write("mm.csv", "Name;X [mm];Y [mm];Z [mm]\nA;1000;2000;3000\n");
  folder.Write("m.csv", "Name;X [m];Y [m];Z [m]\nA;1;2;3\nB;1;3;3\nC;4;2;1\n");
  ExpectLines({{"zu apply M l -", 0, "92", ""},
               {"zu apply columns l -", 0, "92", "column by column"},
               {"zu apply M l a && zu apply M a - --inverse --decimals 9", 0,
                "1 10.000000000 20.000000000 30", ""},
               {"zu apply shear $S/chessboard/left.prj out.prj", 3, "", "is no similarity"},
               {"zu apply flat l out --inverse", 4, "", "without --inverse it can"},
               {"zu apply l l out", 3, "", "has 4 numbers and is no matrix; four rows"},
               {"zu transform m.csv --control m.csv --save T -o out && zu apply T mm.csv -", 0,
                "A;1000.0", "lengths in mm"},
               {"sed 's/\"scale\": [0-9.]*/\"scale\": 2/' T > W; zu apply W l out", 3, "",
                "does not agree with scale"},
               {"sed 's/\"version\": 1/\"version\": 7/' T > W; zu apply W l out", 3, "", "version"},
               {"zu trafo2d l --control l --type helmert --save T", 4, "", "helmert needs 2"},
               {"zu transform l --from utm:32 --to geocentric --save T", 2, "", "--save keeps"}},
              folder);
}

}  // namespace
