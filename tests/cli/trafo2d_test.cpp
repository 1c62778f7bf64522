// zu trafo2d with accuracies, tests and coordinates far from the origin.
#include <gtest/gtest.h>

#include <cmath>

#include "tests/cli/program.h"

// A turn of 40.97 gon at national coordinates, exact to the digits of the file; point 5 is 0.5 off.
TEST(Trafo2dFit, NamesTheWrongPointFarFromTheOrigin) {
  const ScratchFolder folder;
  std::string strSource, strControl;
  for (int i = 1; i <= 12; ++i) {
    const double x = 25.0 * (i % 4), y = 40.0 * (i / 4) + 3.0 * (i % 3);
    const auto row = [i](double a, double b) {
      return std::to_string(i) + " " + std::to_string(a) + " " + std::to_string(b) + "\n";
    };
    strSource += row(x + 4500000.0, y + 5400000.0);
    strControl += row(0.8 * x - 0.6 * y + (i == 5 ? 0.5 : 0.0), 0.6 * x + 0.8 * y);
  }
  folder.Write("s", strSource + "99 4500050 5400050\n");
  folder.Write("c", strControl);
  for (const char* szType : {"congruence", "helmert", "affin"}) {
    const Outcome outcome = RunLine(
        std::string(
            "zu trafo2d s --control c --sigma 0.001 --test --json --report r.html --type ") +
            szType,
        folder);
    EXPECT_EQ(outcome.iExit, 1) << outcome.strErr;
    const auto result = outcome.Json();
    ASSERT_EQ(result["set_aside"].size(), 1U) << szType;
    EXPECT_EQ(result["set_aside"][0]["id"], 5);
    EXPECT_NEAR(result["set_aside"][0]["error"][0].get<double>(), 0.5, 1e-5);
    const auto& last = result["points"][12];
    EXPECT_NEAR(last["x"].get<double>(), 10.0, 2e-6) << szType;
    EXPECT_NEAR(last["y"].get<double>(), 70.0, 2e-6) << szType;
    EXPECT_LT(last["sd"][0].get<double>(), 0.001);
    double dSum = 0.0;
    for (int i = 0; i < 12; ++i) {
      for (const auto& r : result["points"][i]["r"]) dSum += r.get<double>();
    }
    EXPECT_NEAR(dSum, result["redundancy"].get<double>(), 1e-8);
    const std::string strPage = ReadFile(folder.Path("r.html"));
    EXPECT_NE(strPage.find("11 of 12 common points agree"), std::string::npos);
    EXPECT_EQ(strPage.find("nan"), std::string::npos);
  }
  ExpectLines(
      {{"zu trafo2d s --control c --type helmert", 0, "centre of the source   45000", ""},
       {"sed 's/$/ 0.01 0.02/' s > s5; zu trafo2d s5 --control s5 --columns id,x,y,dx,dy --type "
        "helmert -o o && wc -w < o",
        0, "65", ""}},
      folder);
}
