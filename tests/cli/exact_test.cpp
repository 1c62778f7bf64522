// Image points are converted exactly unless --library asks for the quick way.
#include <gtest/gtest.h>

#include <cmath>
#include <string>

#include "tests/cli/program.h"

namespace {

// Corrected to the end of model 2 the points lie closer to the board.
TEST(Exact, MeasuresAndConvertsUnlessToldOtherwise) {
  const std::string strFolder = Source("samples/chessboard/");
  const auto measured =
      RunZu({"measure", strFolder + "left_cap.prj", "--plane", strFolder + "board.coo", "--check",
             strFolder + "board.coo", "--json"});
  EXPECT_NEAR(measured.Json()["rms"]["total"].get<double>(), 0.1320, 5e-5);
  RunOptions input;
  input.strInput = "7 1.5 -1.25\n";
  std::vector<std::string> arguments = {
      "photo", "convert", strFolder + "left_cap.prj", "--photo", "1", "--mode", "adjusted-digi"};
  const Outcome digi = RunZu(arguments, input);
  arguments.back() = "digi-adjusted";
  arguments.push_back("--json");
  input.strInput = digi.strOut;
  EXPECT_NEAR(RunZu(arguments, input).Json()["points"][0]["y"].get<double>(), -1.25, 2e-12);
  arguments.push_back("--library");
  EXPECT_GT(std::fabs(RunZu(arguments, input).Json()["points"][0]["y"].get<double>() + 1.25), 1e-5);
}

}  // namespace
