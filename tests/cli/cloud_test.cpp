// zu cloud on the clouds of samples/clouds and on files made for a purpose.
#include <gtest/gtest.h>

#include "tests/cli/program.h"

namespace {

std::string Sample(const std::string& strName) { return Source("samples/clouds/" + strName); }

nlohmann::json Info(const std::string& strPath) {
  const auto result = RunZu({"cloud", "info", strPath, "--json"}).Json();
  EXPECT_EQ(result["clouds"].size(), 1u);
  return result["clouds"][0];
}

const char* const kSamples[] = {"autzen.pts", "site_56_8.pts", "milk_carton.ply", "plane_scan.xyz"};

}  // namespace

TEST(Cloud, InfoGivesTheExpectedFigures) {
  const auto all = nlohmann::json::parse(ReadFile(Sample("expected.json")));
  for (const char* szName : kSamples) {
    SCOPED_TRACE(szName);
    const auto cloud = Info(Sample(szName));
    const auto& expected = all.at(szName);
    EXPECT_EQ(cloud["points"], expected["points"]);
    EXPECT_EQ(cloud["min"], expected["min"]);
    EXPECT_EQ(cloud["max"], expected["max"]);
    EXPECT_EQ(cloud["selected"], 0);
    EXPECT_EQ(cloud["normals"], 0);
    for (int i = 0; i < 3; ++i) {
      EXPECT_NEAR(cloud["centre"][i].get<double>(), expected["centre"][i].get<double>(), 1e-6);
    }
  }
}

// PTS to binary to PTS: the second text holds the numbers of the first, and so does a third.
TEST(Cloud, ConvertKeepsTheNumbers) {
  const ScratchFolder folder;
  for (const char* szName : kSamples) {
    SCOPED_TRACE(szName);
    const std::string strBinary = folder.Path("a.zpc"), strText = folder.Path("b.pts"),
                      strAgain = folder.Path("c.pts");
    ASSERT_EQ(RunZu({"cloud", "convert", Sample(szName), strBinary}).iExit, 0);
    ASSERT_EQ(RunZu({"cloud", "convert", strBinary, strText}).iExit, 0);
    ASSERT_EQ(RunZu({"cloud", "convert", strText, strAgain}).iExit, 0);
    EXPECT_EQ(ReadFile(strText), ReadFile(strAgain));
    auto first = Info(Sample(szName)), second = Info(strText);
    first.erase("name");
    second.erase("name");
    EXPECT_EQ(first, second);
  }
}

TEST(Cloud, KindsAreToldByContent) {
  const ScratchFolder folder;
  const struct {
    const char* szText;
    double dX;  // the first coordinate shows how the line was taken
  } files[] = {{"2\n1 2 3 4\n5 6 7 8\n", 1.0},
               {"101 2 3 4\n102 6 7 8\n", 2.0},
               {"1.5 2 3 4\n2.5 6 7 8\n", 1.5},
               {"# title\n101 2 3 4\n", 2.0},
               {"1 2 3\n4 5 6\n", 1.0}};
  for (const auto& file : files) {
    SCOPED_TRACE(file.szText);
    EXPECT_EQ(Info(folder.Write("cloud.dat", file.szText))["min"][0], file.dX);
  }
}

TEST(Cloud, TransformMovesAndNormalsLookAtTheEye) {
  const ScratchFolder folder;
  const std::string strOut = folder.Path("out.ply");
  const std::string strPoints = folder.Write("in.xyz", "1 0 0\n0 0 5\n");
  const std::string strMatrix = folder.Write("m.txt", "0 -1 0 10\n1 0 0 20\n0 0 1 30\n");
  const auto limits = [&](const std::vector<std::string>& options) {
    std::vector<std::string> arguments = {"cloud", "transform", strPoints, folder.Path("o.pts"),
                                          "--json"};
    arguments.insert(arguments.end(), options.begin(), options.end());
    const auto cloud = RunZu(arguments).Json()["clouds"][0];
    return std::vector<double>{cloud["max"][0], cloud["max"][1], cloud["max"][2]};
  };
  EXPECT_EQ(limits({"--translate=-1,2.5,3"}), (std::vector<double>{0.0, 2.5, 8.0}));
  EXPECT_EQ(limits({"--matrix", strMatrix}), (std::vector<double>{10.0, 21.0, 35.0}));
  const auto turned = limits({"--rotate=0,0,90"});
  EXPECT_NEAR(turned[1], 1.0, 1e-15);
  EXPECT_NEAR(turned[0], 0.0, 1e-15);

  const auto result = RunZu({"cloud", "normals", strPoints, strOut, "--eye", "1,0,10", "--json"});
  EXPECT_EQ(result.Json()["clouds"][0]["normals"], 2);
  EXPECT_NE(ReadFile(strOut).find("1 0 0 0 0 1 0 0 0\n"), std::string::npos);
}

TEST(Cloud, FailuresLeaveTheOldFile) {
  const ScratchFolder folder;
  const std::string strOut = folder.Write("out.zpc", "old");
  const std::string strIn = Sample("site_56_8.pts");
  ExpectFailure(RunZu({"cloud", "info", folder.Path("none.pts")}), 3, "no such file");
  ExpectFailure(RunZu({"cloud", "info", folder.Write("x.zpc", "\x0D\xF0\xBE\xBA")}), 3,
                "no point cloud");
  ExpectFailure(RunZu({"cloud", "convert", folder.Write("e.pts", "a\n"), strOut}), 3,
                "no point cloud");
  ExpectFailure(RunZu({"cloud", "transform", strIn, strOut}), 2, "--matrix");
  ExpectFailure(RunZu({"cloud", "transform", strIn, strOut, "--translate", "1,2"}), 2, "three");
  ExpectFailure(RunZu({"cloud", "transform", strIn, strOut, "--matrix", folder.Write("m", "1 2")}),
                3, "rows of four");
  RunOptions small;
  small.iFileLimit = 1000;
  ExpectFailure(RunZu({"cloud", "convert", Sample("autzen.pts"), strOut}, small), 5, "out.zpc");
  ExpectFailure(RunZu({"cloud", "convert", strIn, folder.Path("no/such/out.pts")}), 5, "no/such");
  EXPECT_EQ(ReadFile(strOut), "old");
  EXPECT_EQ(folder.Names(), (std::vector<std::string>{"e.pts", "m", "out.zpc", "x.zpc"}));
}
