// zu cloud on the clouds of samples/clouds and on files made for a purpose.
#include <gtest/gtest.h>
#include <sys/resource.h>

#include <cmath>

#include "tests/cli/program.h"
#include "tests/support/trials.h"

namespace {

using Arguments = std::vector<std::string>;

std::string Sample(const std::string& strName) { return Source("samples/clouds/" + strName); }

nlohmann::json Info(const std::string& strPath, const Arguments& options = {}) {
  Arguments arguments = {"cloud", "info", strPath, "--json"};
  arguments.insert(arguments.end(), options.begin(), options.end());
  const auto result = RunZu(arguments).Json();
  EXPECT_EQ(result["clouds"].size(), 1u);
  return result["clouds"][0];
}

// Converts and returns what was written.
std::string Converted(const std::string& strIn, const std::string& strOut,
                      const Arguments& options = {}) {
  Arguments arguments = {"cloud", "convert", strIn, strOut};
  arguments.insert(arguments.end(), options.begin(), options.end());
  const auto outcome = RunZu(arguments);
  EXPECT_EQ(outcome.iExit, 0) << outcome.strErr;
  return ReadFile(strOut);
}

const char* const kSamples[] = {"autzen.pts", "site_56_8.pts", "milk_carton.ply", "plane_scan.xyz"};

const std::string kPly =
    "ply\nformat ascii 1.0\nelement vertex 2\nproperty double z\nproperty double x\n"
    "property double y\nproperty float nx\nproperty float ny\nproperty float nz\n"
    "property uchar intensity\nend_header\n"
    "3 5403200.123 2 0 0 1 0\n6 4 5 1 0 0 255\n";

}  // namespace

TEST(Cloud, InfoGivesTheExpectedFigures) {
  const auto all = nlohmann::json::parse(ReadFile(Sample("expected.json")));
  for (const char* szName : {"autzen.pts", "site_56_8.pts", "plane_scan.xyz"}) {
    const auto cloud = Info(Sample(szName));
    for (const char* szFigure : {"points", "min", "max"}) {
      EXPECT_EQ(cloud[szFigure], all[szName][szFigure]) << szName;
    }
    for (int i = 0; i < 3; ++i) {
      EXPECT_NEAR(cloud["centre"][i].get<double>(), all[szName]["centre"][i].get<double>(), 1e-6);
    }
  }
  const auto carton = Info(Sample("milk_carton.ply"));
  EXPECT_EQ(carton["normals"], 13704);
  EXPECT_EQ(carton["min"][0], -0.140082896);  // all digits of the file
}

// Through every format and back: the numbers stay.
TEST(Cloud, ConvertKeepsTheNumbers) {
  const ScratchFolder folder;
  const std::string strPts = folder.Path("a.pts");
  for (const char* szName : kSamples) {
    SCOPED_TRACE(szName);
    const std::string strText = Converted(Sample(szName), strPts);
    const struct {
      const char* szName;
      Arguments options;
    } ways[] = {{"a.zpc", {}},
                {"a.ply", {}},
                {"a.ply", {"--ply", "binary"}},
                {"a.ply", {"--ply", "binary-big"}},
                {"a.e57", {}}};
    for (const auto& way : ways) {
      const std::string strThrough = folder.Path(way.szName);
      Converted(strPts, strThrough, way.options);
      // A binary or PLY file does not tell that intensities were of -2000 to 2000.
      EXPECT_EQ(
          Converted(strThrough, folder.Path("b.pts"),
                    {"--pts-intensity", szName[0] == 'a' || szName[0] == 's' ? "2000" : "auto"}),
          strText);
    }
    // Decimal coordinates stay, too; floats have more digits than 32 bits.
    if (szName[0] == 'a' || szName[0] == 's') {
      const std::string strThrough = folder.Path("a.las");
      Converted(strPts, strThrough, {"--pts-intensity", "65535"});
      Converted(strThrough, folder.Path("b.xyz"));
      EXPECT_EQ(ReadFile(folder.Path("b.xyz")), Converted(strPts, folder.Path("a.xyz")));
    }
    const std::string strCsv = Converted(strPts, folder.Path("a.csv"));
    const std::string strXyz = Converted(strPts, folder.Path("a.xyz"));
    EXPECT_EQ(strCsv.substr(0, 11), "id,x,y,z\n1,");
    EXPECT_EQ(Converted(folder.Path("a.csv"), folder.Path("b.xyz")), strXyz);
    EXPECT_EQ(Converted(folder.Path("a.xyz"), folder.Path("b.csv")), strCsv);
    EXPECT_EQ(Info(folder.Path("a.csv"))["max"], Info(strPts)["max"]);
  }
}

TEST(Cloud, PlyByNamesAndPtsByDialects) {
  const ScratchFolder folder;
  const std::string strPly = folder.Write("in.ply", kPly), strOut = folder.Path("out.ply");
  EXPECT_NE(Converted(strPly, strOut).find("5403200.123 2 3 0 0 1 0\n"), std::string::npos);
  EXPECT_NE(Converted(strPly, strOut, {"--ply", "binary-big"}).find("binary_big_endian"),
            std::string::npos);
  EXPECT_EQ(Info(strOut)["max"][0], 5403200.123);
  EXPECT_EQ(Info(strOut)["normals"], 2);
  EXPECT_NE(Converted(strPly, strOut, {"--ply", "ascii"}).find("property double x"),
            std::string::npos);
  // The library's reader takes columns by their places, and no normals.
  EXPECT_EQ(Info(Sample("milk_carton.ply"), {"--ply", "library"})["normals"], 0);
  EXPECT_NE(Converted(folder.Write("l.pts", "1\n1 2 3 4\n"), strOut, {"--ply", "library"})
                .find("double nz\nproperty uchar red\n"),
            std::string::npos);

  const std::string strPts =
      folder.Write("in.pts", "3\n1 2 3 0 9 8 7\n1 2 3 7 6 5 4\n1 2 3 255 3 2 1\n");
  EXPECT_EQ(Converted(strPts, folder.Path("o.pts")), ReadFile(strPts));
  EXPECT_EQ(Converted(strPts, folder.Path("o.pts"), {"--pts-dialect", "plain"}),
            "3\n1 2 3\n1 2 3\n1 2 3\n");
  const std::string strLevels = "2\n1 2 3 1\n1 2 3 65535\n";
  EXPECT_EQ(Converted(folder.Write("l.pts", strLevels), folder.Path("o.pts")), strLevels);
}

// Colours, intensities and normals beneath titles, as programs for scans write them.
TEST(Cloud, TitledTextKeepsWhatItsTitlesTell) {
  const ScratchFolder folder;
  folder.Write("a.txt",
               "//X Y Z R G B Intensity Nx Ny Nz\n1 2 0.5 10 20 30 100 0 0 1\n"
               "4 2 0.6 10 20 300 300 0 1 0\n4 7 0.7 11 20 30 5 0 0 1\n");
  folder.Write("b.csv", "X,Y,Z,Rf,Gf,Bf\n1,2,3,0.0,1.0,0.2\n");
  folder.Write("matrix.txt", "1 0 0 5\n0 1 0 6\n0 0 1 7\n0 0 0 1\n");
  ExpectLines(
      {{"zu cloud convert a.txt a.ply && grep 300 a.ply", 0, "4 2 0.6 0 1 0 10 20 255 300",
        "taken as x,y,z,red,green,blue,intensity,nx,ny,nz"},
       {"zu cloud convert b.csv b.pts && cat b.pts", 0, "1 2 3 0 0 255 51", ""},
       {"zu apply matrix.txt a.txt c.ply && tail -1 c.ply", 0, "9 13 7.7 0 0 1 11 20 30 5", ""},
       {"printf 'Pkt;Ost;Nord;H\xc3\xb6he\\nA;1;2;3\\nB;2;2;3\\nC;2;4;3\\n' | zu plane -", 0,
        "sigma0", "Ost,Nord"}},
      folder);
}

// Text beyond 8 MB is fitted in the memory of a cloud: a list of its points alone takes more.
TEST(Cloud, PlanesOfLargeTextsTakeTheMemoryOfAScan) {
  const ScratchFolder folder;
  std::string strRows;
  for (int i = 0; i < 300000; ++i) {
    strRows += std::to_string(i % 640) + ".250 " + std::to_string(i / 640) + ".750 " +
               std::to_string(i % 3) + ".125 10 20 30 40\n";
  }
  const std::string strTable = folder.Write("a.txt", "//X Y Z R G B Intensity\n" + strRows);
  strRows = std::string();
  struct rusage before = {}, after = {};
  getrusage(RUSAGE_CHILDREN, &before);
  EXPECT_EQ(RunZu({"plane", strTable, "--json"}).Json()["count"], 300000);
  getrusage(RUSAGE_CHILDREN, &after);
  if (ZU_SANITIZED == 0 && after.ru_maxrss > before.ru_maxrss) {
    EXPECT_LT(after.ru_maxrss, 150000);  // [kB]
  }
}

// --decimals holds for what is printed and what is written.
TEST(Cloud, DecimalsAreThoseThatAreTold) {
  const ScratchFolder folder;
  folder.Write("a.xyz", "0.12345 7.125 1e-9\n4.5 2.00049 3\n");
  folder.Write("a.txt", "A 0 0 1\nB 20 0 1.0000001\nC 20 15 1\nD 0 15 1.0000001\n");
  ExpectLines({{"zu cloud convert a.xyz a.pts --decimals 3 && cat a.pts", 0,
                "0.123 7.125 0\n4.5 2 3\n", ""},
               {"zu cloud info a.xyz --decimals 2", 0, "max     4.50  7.12  3.00", ""},
               {"zu plane a.txt --decimals 3", 0, "largest distance 0.000\n", ""},
               {"zu plane a.txt", 0, "!e-", ""},
               {"zu local a.txt --axis X:A,B --plane XY:C --origin A --decimals 1", 0, "20.0", ""}},
              folder);
}

TEST(Cloud, KindsAreToldByEndingColumnsAndContent) {
  const ScratchFolder folder;
  const struct {
    const char* szName;
    const char* szText;
    Arguments options;
    double dX;  // the first coordinate shows how the line was taken
  } files[] = {{"c.dat", "2\n1 2 3 4\n5 6 7 8\n", {}, 1.0},
               {"c.pts", "101 2 3 4\n102 6 7 8\n", {}, 101.0},
               {"c.xyz", "101 2 3\n102 6 7\n", {}, 101.0},
               {"c.coo", "101 2 3 4\n102 6 7 8\n", {}, 2.0},
               {"c.dat", "101 2 3 4\n102 6 7 8\n", {"--columns", "id,x,y,z"}, 2.0},
               {"c.pts", "101 2 3 4\n102 6 7 8\n", {"--columns", "skip,x,y,z"}, 2.0},
               {"c.dat", "101 2.5 3 4.5\n102 6 7 8\n", {}, 2.5},
               {"c.dat", "P1 2.5 3 4\nP2 6 7 8\n", {}, 2.5},
               {"c.dat", "1.5 2 3 4\n2.5 6 7 8\n", {}, 1.5},
               {"c.csv", "x,y,z,i\n1.5,2,3,4\n2,3,4,5\n", {}, 1.5},
               {"c.csv", "1;2.5;3;4\n2;3;4;5\n", {}, 2.5},
               {"c.dat", "# title\n1 2 3\n4 5 6\n", {}, 1.0}};
  for (const auto& file : files) {
    SCOPED_TRACE(file.szText);
    EXPECT_EQ(Info(folder.Write(file.szName, file.szText), file.options)["min"][0], file.dX);
  }
}

// What is no cloud, or not all of one, is told with its place and changes nothing.
TEST(Cloud, NothingWrongPasses) {
  const ScratchFolder folder;
  folder.Write("out.zpc", "old");
  Converted(Sample("site_56_8.pts"), folder.Path("s.zpc"));
  folder.Write("gsi", "*110001+0000000000000012 81..00+0000000000001234\n");
  folder.Write("cut.pts", "3\n1 2 3\n4 5 6\n");
  folder.Write("a.ply", kPly);
  folder.Write("x.zpc", "1 2 3\n");
  folder.Write("x.ply", "1 2 3\n");
  ExpectLines(
      {{"zu cloud info none.pts", 3, "", "no such file"},
       {"zu cloud info /dev/zero", 3, "", "device"},
       {"zu cloud info /tmp", 3, "", "folder"},
       {"zu cloud info /etc/passwd", 3, "", "text: \"root:"},
       {"zu cloud info <(printf '//X Y Z R\n1 2 3 9\n')", 0, "1 point", "X,Y,Z taken as x,y,z"},
       {"printf 'LASF\\1\\2\\0\\0' > c.las; zu cloud info c.las", 3, "", "ends within its header"},
       {"zu cloud convert s.zpc x.las --resolution 1e-9", 2, "", "0.0000001 would be possible"},
       {"zu cloud convert s.zpc s.las && zu check s.las && zu plane s.las", 0, "8 points", ""},
       {"zu cloud transform s.las t.las --translate 1,2,3", 0, "resolution 0.000001 0.000001", ""},
       {"printf '\\200' | dd of=s.las bs=1 seek=104 conv=notrunc status=none; zu cloud info s.las",
        3, "", "s.las: is packed as LAZ; the LAS file of `laszip"},
       {"zu cloud convert s.zpc s.e57 && zu check s.e57 && zu plane s.e57", 0, "8 points", ""},
       {"printf '?' | dd of=s.e57 bs=1 seek=600 conv=notrunc status=none; zu cloud info s.e57", 3,
        "", "page 1 does not match its checksum"},
       {"zu cloud info gsi", 0, "1 point", ""},
       {"zu cloud info <(printf '1 2 3 4\n5 6 7 8\n')", 3, "", "--columns"},
       {"printf '1 2 3\n4 5,5 6\n' > c.pts; zu cloud info c.pts", 3, "",
        "c.pts:2:3: \"5,5\" has a decimal comma"},
       {"zu cloud info cut.pts", 3, "",
        "cut.pts:1: 3 points are announced, 2 are there\n--partial"},
       {"zu cloud info cut.pts --partial", 0, " 2 points", "announced"},
       {"head -c -20 a.ply > c.ply; zu cloud info c.ply", 3, "", ": the file ends within a line"},
       {"head -c -16 a.ply > c.ply; zu cloud info c.ply", 3, "", "1 are there\n--partial"},
       {"head -c 30 a.ply > c.ply; zu cloud info c.ply", 3, "", "header"},
       {"head -c -1 s.zpc > c.zpc; zu cloud info c.zpc", 3, "", "missing: 1\n--partial"},
       {"zu cloud info c.zpc --partial", 0, " 8 points", "announced"},
       {"head -c 4 s.zpc > c.zpc; zu cloud info c.zpc", 3, "", "no point cloud"},
       {"zu cloud info x.zpc", 3, "", "binary cloud"},
       {"zu cloud info x.ply", 3, "", "ply"},
       {"zu cloud info <(echo a)", 3, "", "text: \"a\""},
       {"zu cloud convert s.zpc x.laz", 2, "", ".zpc, .pts"},
       {"zu cloud convert s.zpc x", 2, "", ".zpc, .pts"},
       {"zu cloud convert s.zpc no/such/out.pts", 5, "", "no/such"},
       {"zu cloud transform s.zpc out.zpc", 2, "", "--matrix"},
       {"zu cloud transform s.zpc out.zpc --translate 1,2", 2, "", "three"},
       {"zu cloud transform s.zpc out.zpc --matrix <(echo 1 2)", 3, "", "rows of four"},
       {"ulimit -f 1; zu cloud convert $S/clouds/autzen.pts out.zpc", 5, "", "out.zpc"},
       {"cat out.zpc", 0, "old", ""}},
      folder);
}

TEST(Cloud, PipesGiveWhatTheFileGives) {
  const ScratchFolder folder;
  Converted(Sample("autzen.pts"), folder.Path("a.zpc"));
  Converted(Sample("autzen.pts"), folder.Path("a.csv"));
  for (const std::string strPath :
       {"$S/clouds/autzen.pts", "$S/clouds/milk_carton.ply", "a.zpc", "a.csv"}) {
    for (const char* szPipe : {"-", "/dev/stdin"}) {
      const std::string strLine = "cat " + strPath + " | zu cloud info " + szPipe +
                                  " --json | grep -v '\"name\"' | cmp - <(zu cloud info " +
                                  strPath + " --json | grep -v '\"name\"')";
      ExpectLines({{strLine.c_str(), 0, "", ""}}, folder);
    }
  }
}

TEST(Cloud, TransformTurnsNormalsAndTheEyeGivesDirections) {
  const ScratchFolder folder;
  const std::string strOut = folder.Path("out.ply");
  const std::string strPoints = folder.Write("in.xyz", "1 0 0\n0 0 5\n");
  const std::string strMatrix = folder.Write("m.txt", "0 -1 0 10\n1 0 0 20\n0 0 1 30\n");
  const auto limits = [&](const Arguments& options) {
    Arguments arguments = {"cloud", "transform", strPoints, folder.Path("o.pts"), "--json"};
    arguments.insert(arguments.end(), options.begin(), options.end());
    const auto cloud = RunZu(arguments).Json()["clouds"][0];
    return std::vector<double>{cloud["max"][0], cloud["max"][1], cloud["max"][2]};
  };
  EXPECT_EQ(limits({"--translate=-1,2.5,3"}), (std::vector<double>{0.0, 2.5, 8.0}));
  EXPECT_EQ(limits({"--matrix", strMatrix}), (std::vector<double>{10.0, 21.0, 35.0}));
  EXPECT_NEAR(limits({"--rotate=0,0,90"})[1], 1.0, 1e-15);
  EXPECT_NEAR(limits({"--rotate=90,0,90"})[2], 1.0, 1e-15);  // R = Ry Rx Rz: about z first
  EXPECT_NEAR(limits({"--rotate=90,0,90", "--rotation=xyz"})[1], 1.0, 1e-15);

  const std::string strPly = folder.Write("n.ply", kPly);
  ASSERT_EQ(RunZu({"cloud", "transform", strPly, strOut, "--matrix", strMatrix}).iExit, 0);
  EXPECT_NE(ReadFile(strOut).find(" 36 0 1 0 255\n"), std::string::npos) << ReadFile(strOut);

  const auto result = RunZu({"cloud", "normals", strPoints, strOut, "--eye", "1,0,10"});
  EXPECT_EQ(result.iExit, 0);
  EXPECT_NE(result.strOut.find("direction from its point to the eye"), std::string::npos);
  EXPECT_NE(ReadFile(strOut).find("1 0 0 0 0 1\n"), std::string::npos);
  EXPECT_EQ(RunZu({"cloud", "normals", strPoints, strOut, "--eye", "1,0,0"}).iExit, 1);
}
