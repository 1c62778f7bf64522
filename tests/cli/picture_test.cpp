// The commands that make pictures anew, on pictures that the tests draw.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <filesystem>

#include "tests/cli/program.h"
#include "zu/image/image_file.h"
#include "zu/image/image_writer.h"
#include "zu/project/project.h"

namespace {

constexpr double kSpot = 1.6;  // standard deviation of a spot [pixels]

std::string Chessboard(const char* szName) {
  return Source(std::string("samples/chessboard/") + szName);
}

void Write(const std::string& strPath, const ZuImage& image) {
  ZuImageWriter writer;
  ASSERT_TRUE(writer.Open(strPath, {image.GetWidth(), image.GetHeight(), image.GetChannels(),
                                    image.GetBits()}) &&
              writer.Write(image, image.GetHeight()) && writer.Close());
}

// Light spots at the measurements of a photo.
ZuImage Spots(const ZuPointList& points, int iWidth, int iHeight) {
  ZuImage image(iWidth, iHeight, 1, 16);
  for (int y = 0; y < iHeight; ++y) {
    for (int x = 0; x < iWidth; ++x) {
      double d = 0.05;
      for (const ZuPoint* p = points.First(); p != nullptr; p = p->Next()) {
        const double r = std::hypot(x - p->m_dX, y - p->m_dY) / kSpot;
        if (r < 6.0) d += 0.9 * std::exp(-0.5 * r * r);
      }
      image.GetRow<std::uint16_t>(y)[x] = static_cast<std::uint16_t>(65535.0 * std::min(d, 1.0));
    }
  }
  return image;
}

ZuImage Read(const std::string& strPath) {
  ZuImage image;
  ZuFindingList findings;
  EXPECT_TRUE(ZuReadImage(strPath, &image, nullptr, &findings)) << strPath;
  return image;
}

// Distance of the light about (x, y) from there [pixels]; infinite where there is none.
double Miss(const ZuImage& image, double x, double y) {
  constexpr int kReach = 7;
  double w = 0.0, wx = 0.0, wy = 0.0;
  const int i0 = static_cast<int>(std::lround(x)), j0 = static_cast<int>(std::lround(y));
  for (int j = j0 - kReach; j <= j0 + kReach; ++j) {
    for (int i = i0 - kReach; i <= i0 + kReach; ++i) {
      if (i < 0 || j < 0 || i >= image.GetWidth() || j >= image.GetHeight()) return INFINITY;
      const auto* p = image.GetRow<std::uint16_t>(j) + i * image.GetChannels();
      const double d = std::max(0.0, p[0] / 65535.0 - 0.08);
      w += d;
      wx += d * i;
      wy += d * j;
    }
  }
  return w > 1.0 ? std::hypot(wx / w - x, wy / w - y) : INFINITY;
}

TEST(Undistort, CarriesPictureAndMeasurementsAlike) {
  const ScratchFolder folder;
  ZuProject project;
  ASSERT_TRUE(project.Read(Chessboard("left.prj").c_str()));
  Write(folder.Path("spots.png"), Spots(project.Measurements(1), 640, 480));
  const struct {
    const char* szProject;
    std::vector<std::string> more;
    const char* szPicture;
  } rows[] = {{"left.prj", {"--whole"}, "a.png"},
              {"left.prj", {"--interpolation", "lanczos"}, "b.tif"},
              {"left_flip.prj", {"--flip", "--whole"}, "c.png"},
              {"left_poly.prj", {}, "d.png"},
              {"left_cap.prj", {"--whole"}, "e.png"}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.szPicture);
    std::vector<std::string> arguments = {"photo",
                                          "undistort",
                                          Chessboard(row.szProject),
                                          "--photo",
                                          "1",
                                          "--image",
                                          folder.Path("spots.png"),
                                          "-o",
                                          folder.Path(row.szPicture),
                                          "--project-out",
                                          folder.Path("p.prj"),
                                          "--json"};
    arguments.insert(arguments.end(), row.more.begin(), row.more.end());
    const Outcome outcome = RunZu(arguments);
    ASSERT_EQ(outcome.iExit, 0) << outcome.strErr;
    const ZuImage image = Read(folder.Path(row.szPicture));
    EXPECT_EQ(outcome.Json()["width"], image.GetWidth());
    ASSERT_TRUE(project.Read(folder.Path("p.prj").c_str()));
    const ZuPointList& points = project.Measurements(1);
    ASSERT_EQ(points.Count(), 54);
    for (const ZuPoint* p = points.First(); p != nullptr; p = p->Next()) {
      EXPECT_LT(Miss(image, p->m_dX, p->m_dY), 0.05) << p->GetId();
    }
    // The rays are those of the distorted picture.
    const auto measured = [&](const std::string& strProject) {
      std::vector<std::string> measure = {"measure", strProject,
                                          "--plane", Chessboard("board.coo"),
                                          "--check", Chessboard("board.coo"),
                                          "--json"};
      if (!row.more.empty() && row.more[0] == "--flip") measure.push_back("--flip");
      return RunZu(measure).Json()["photos"][0]["rms"]["total"].get<double>();
    };
    EXPECT_NEAR(measured(folder.Path("p.prj")), measured(Chessboard(row.szProject)), 1e-9);
  }
}

TEST(Undistort, Refuses) {
  const ScratchFolder folder;
  Write(folder.Path("small.png"), ZuImage(64, 48, 1, 8));
  folder.Write("cut.png", ReadFile(folder.Path("small.png")).substr(0, 60));
  const std::string strCall = "zu photo undistort $S/chessboard/left.prj --photo 1 ";
  const std::string aLine[] = {
      strCall + "--image small.png -o a.png", strCall + "--image cut.png -o a.png",
      strCall + "--image small.png -o a.bmp", strCall + "--image none.png -o a.png"};
  ExpectLines({{aLine[0].c_str(), 3, "", "small.png: 64 x 48 pixels, and photo 1 has 640 x 480"},
               {aLine[1].c_str(), 3, "", "cut.png"},
               {aLine[2].c_str(), 2, "", "a.bmp: a picture is written as .png, .jpg or .tif"},
               {aLine[3].c_str(), 3, "", "none.png"}},
              folder);
  EXPECT_EQ(folder.Names(), (std::vector<std::string>{"cut.png", "small.png"}));
}

// Distances of the spots in a rectified picture from where the points lie on the plane [pixels];
// the largest.
double WorstMiss(const nlohmann::json& result, const ZuImage& image, const nlohmann::json& points) {
  const double dPixel = result["pixel"], dLeft = result["region"][0], dTop = result["region"][3];
  double dWorst = 0.0;
  for (const auto& p : points) {
    dWorst = std::max(dWorst, Miss(image, (p["x"].get<double>() - dLeft) / dPixel - 0.5,
                                   (dTop - p["y"].get<double>()) / dPixel - 0.5));
  }
  EXPECT_EQ(points.size(), 54U);
  return dWorst;
}

// PHOTO 1 with rectifications that have no matrices: 3 has points, 4 the rows and columns of the
// board as lines, the first row as x axis of 200 mm.
std::string WithDefinition(ZuProject* pProject) {
  const ZuPhoto& photo = *pProject->PhotoList().Find(1);
  std::string strMeasured, strDefined;
  for (const ZuPoint* p = pProject->Measurements(1).First(); p != nullptr; p = p->Next()) {
    ZuPoint biko(*p);
    photo.ConvertBiko(&biko, eDigiToBiko);
    const unsigned k = p->GetId() - 1;
    const std::string strId = std::to_string(k + 1) + ' ';
    strMeasured += strId + std::to_string(biko.m_dX) + ' ' + std::to_string(biko.m_dY) + '\n';
    strDefined += strId + std::to_string(25 * (k % 9)) + ' ' +
                  std::to_string(25 * (5 - static_cast<int>(k / 9))) + " 0\n";
  }
  std::string strLines;
  for (int k = 1; k <= 15; ++k) {
    const bool bRow = k <= 6;
    const int iFirst = bRow ? 9 * k - 8 : k - 6, iLast = bRow ? 9 * k : k + 39;
    strLines += "DEFLINE { " + std::to_string(k) + ' ' + std::to_string(iFirst) + ' ' +
                std::to_string(iLast) + (k == 1 ? " 1 200 }\n" : " 0 0 }\n");
    const int iOther = bRow ? 1 : 7;
    if (k == iOther) continue;
    strLines += "CONSTRAINT { " + std::to_string(iOther) + ' ' + std::to_string(k) + " 1 0 }\n";
  }
  strLines += "CONSTRAINT { 1 7 2 0 }\n";
  std::string strText = ReadFile(Chessboard("left.prj"));
  const std::string strDistortion =
      " DISTORTION { 1 4.915686 0.227808 0.065727 -0.00966481955 -0.000198009113 2.5 \"left "
      "radial\" }\n";
  strText.insert(strText.find("    AORM"), "ZUSPPLANE { ZUSPID 4 \"lines\" ACTIV 1 KAMERA 1\n" +
                                               strDistortion + " MEASPOINTS {\n" + strMeasured +
                                               "}\n PARALLELDEF {\n" + strLines + "}\n}\n");
  return strText.insert(
      strText.find("    AORM"),
      "ZUSPPLANE { ZUSPID 3 \"board\" ACTIV 1 KAMERA 1\n DISTORTION { 1 4.915686 0.227808 "
      "0.065727 -0.00966481955 -0.000198009113 2.5 \"left radial\" }\n MEASPOINTS {\n" +
          strMeasured + "}\n DEFPOINTS {\n" + strDefined + "}\n}\n");
}

TEST(RectifyImage, ShowsEveryPointWhereItLies) {
  const ScratchFolder folder;
  ZuProject project;
  ASSERT_TRUE(project.Read(Chessboard("left.prj").c_str()));
  for (const unsigned uPhoto : {1U, 2U}) {
    Write(folder.Path("left0" + std::to_string(uPhoto) + ".jpg.png"),
          Spots(project.Measurements(uPhoto), 640, 480));
    std::filesystem::rename(folder.Path("left0" + std::to_string(uPhoto) + ".jpg.png"),
                            folder.Path("left0" + std::to_string(uPhoto) + ".jpg"));
  }
  const std::string strStored = folder.Write("stored.prj", WithDefinition(&project));
  const auto measured =
      RunZu({"measure", Chessboard("left.prj"), "--plane", Chessboard("board.coo"), "--json"})
          .Json();
  const auto pointsOf = [&](unsigned uPhoto) {
    nlohmann::json points = nlohmann::json::array();
    for (const auto& p : measured["points"]) {
      if (p["photo"] == uPhoto) points.push_back(p);
    }
    return points;
  };
  const auto run = [&](const std::string& strProject, const std::vector<std::string>& more) {
    std::vector<std::string> arguments = {
        "rectify",    "--image",       strProject, "--pixel", "0.5", "-o", folder.Path("r.tif"),
        "--pictures", folder.Path(""), "--json"};
    arguments.insert(arguments.end(), more.begin(), more.end());
    if (std::find(more.begin(), more.end(), "--region") == more.end()) {
      arguments.insert(arguments.end(), {"--region", "-20,-20,220,145"});
    }
    const Outcome outcome = RunZu(arguments);
    EXPECT_EQ(outcome.iExit, 0) << outcome.strErr;
    return outcome.Json();
  };
  // By an oriented photo, and by a photo whose transformations count y upwards.
  const std::string strBoard = Chessboard("board.coo");
  auto result = run(Chessboard("left.prj"), {"--photo", "1", "--plane", strBoard, "--project-out",
                                             folder.Path("ortho.prj"), "--epsg", "25832"});
  EXPECT_LT(WorstMiss(result, Read(folder.Path("r.tif")), pointsOf(1)), 0.05);
  EXPECT_EQ(ReadFile(folder.Path("r.tfw")), "0.5\n0\n0\n-0.5\n-19.75\n144.75\n");
  result = run(Chessboard("left_flip.prj"), {"--photo", "1", "--plane", strBoard, "--flip"});
  EXPECT_LT(WorstMiss(result, Read(folder.Path("r.tif")), pointsOf(1)), 0.05);

  // By control points, and by a stored rectification of the same points: they differ from the board
  // by what the program tells.
  const auto control = run(Chessboard("left.prj"), {"--photo", "1", "--control", strBoard});
  nlohmann::json places = control["control"]["points"];
  for (auto& p : places) {
    p["x"] = p["x"].get<double>() - p["dx"].get<double>();
    p["y"] = p["y"].get<double>() - p["dy"].get<double>();
  }
  EXPECT_LT(WorstMiss(control, Read(folder.Path("r.tif")), places), 0.05);
  EXPECT_NEAR(control["control"]["sigma0"].get<double>(), 0.099, 1e-3);
  const auto checked =
      run(Chessboard("left.prj"), {"--photo", "1", "--control", strBoard, "--without", "7",
                                   "--check-points", "5,30"})["control"];
  EXPECT_EQ(checked["points"].size(), 51U);
  ASSERT_EQ(checked["check_points"]["points"].size(), 2U);
  EXPECT_LT(std::fabs(checked["check_points"]["rms"]["x"].get<double>()), 0.3);
  result = run(strStored, {"--photo", "1", "--zusp", "3"});
  EXPECT_LT(WorstMiss(result, Read(folder.Path("r.tif")), places), 0.05);

  // By what is parallel and perpendicular alone, and one length: the origin is point 1.
  // Or, without the camera constant, by the ratio of the sides as well.
  for (const bool bRatio : {false, true}) {
    std::vector<std::string> more = {"--photo", "1", "--zusp", "4", "--region", "-20,-145,220,20"};
    if (bRatio) {
      more.insert(more.end(), {"--conditions", folder.Write("sides.txt", "ratio 1 9 1 46 1.6\n")});
    }
    result = run(strStored, more);
    double dSquares = 0.0;
    const ZuImage byLines = Read(folder.Path("r.tif"));
    for (unsigned k = 0; k < 54; ++k) {
      const double dMiss =
          Miss(byLines, (25.0 * (k % 9) + 20.0) / 0.5 - 0.5, (20.0 + 25.0 * (k / 9)) / 0.5 - 0.5);
      dSquares += dMiss * dMiss / 54.0;
    }
    // mm; origin and scale come from two corners, each measured to 0.15.
    EXPECT_LT(std::sqrt(dSquares) * 0.5, 0.45);
    if (!bRatio) {
      EXPECT_EQ(result["lines"]["lines"].size(), 15U);
      continue;
    }
    EXPECT_EQ(result["conditions"]["conditions"].size(), 15U);
    EXPECT_EQ(result["conditions"]["redundancy"], 11);
    EXPECT_LT(result["conditions"]["sigma0"].get<double>(), 0.002);  // mm of a pixel of 0.0092
  }

  // Two photos: each point is that of the photo that shows it better.
  result = run(Chessboard("left.prj"), {"--photo", "1,2", "--plane", strBoard});
  const ZuImage joined = Read(folder.Path("r.tif"));
  int aiSeen[2] = {};
  for (unsigned k = 0; k < 54; ++k) {
    for (const unsigned uPhoto : {1U, 2U}) {
      const nlohmann::json p = pointsOf(uPhoto)[k];
      aiSeen[uPhoto - 1] += Miss(joined, (p["x"].get<double>() + 20.0) / 0.5 - 0.5,
                                 (145.0 - p["y"].get<double>()) / 0.5 - 0.5) < 0.05;
    }
  }
  EXPECT_GE(aiSeen[0] + aiSeen[1], 48);  // the seam cuts some spots
  EXPECT_GT(std::min(aiSeen[0], aiSeen[1]), 3);

  // The core reads the result as an orthophoto.
  ASSERT_TRUE(project.Read(folder.Path("ortho.prj").c_str()));
  ASSERT_EQ(project.OrthoPhotoList().Count(), 1);
  ZuPoint pixel(1, 0.0, 0.0);
  ASSERT_TRUE(project.OrthoPhotoList().First()->Transform(&pixel));
  EXPECT_EQ(pixel.m_dX, -19.75);
  EXPECT_EQ(pixel.m_dY, 144.75);
}

// 1:2 in mm: a point 40 units right of the border stands 20 mm right of the frame's.
TEST(RectifyImage, DrawsASheetToScale) {
  const ScratchFolder folder;
  const std::string strCall =
      "zu rectify --image $S/chessboard/left.prj --photo 1 --plane $S/chessboard/board.coo --pixel "
      "1 --region -40,-40,240,165 -o a.png --sheet 1:2 --unit mm";
  for (const char* szMore : {"", " --sheet-out a.svg"}) {
    const std::string strLine = strCall + szMore;
    ExpectLines({{strLine.c_str(), 0, "", ""}}, folder);
  }
  const std::string strSvg = ReadFile(folder.Path("a.svg"));
  EXPECT_NE(strSvg.find("width='170mm' height='142.5mm'"), std::string::npos);
  EXPECT_NE(strSvg.find("<circle cx='38' cy='36' r='0.8'"), std::string::npos);     // point 1
  EXPECT_NE(strSvg.find("<circle cx='138' cy='98.5' r='0.8'"), std::string::npos);  // point 54
  EXPECT_NE(strSvg.find("<image x='18' y='16' width='140' height='102.5'"), std::string::npos);
  EXPECT_NE(strSvg.find(">100 mm<"), std::string::npos);  // the bar: 50 mm of paper
  const std::string strPdf = ReadFile(folder.Path("a.pdf"));
  EXPECT_EQ(strPdf.substr(0, 5), "%PDF-");
  EXPECT_NE(strPdf.find("[ 0 0 481.88"), std::string::npos);  // 170 mm in points
  EXPECT_EQ(folder.Names(), (std::vector<std::string>{"a.pdf", "a.pgw", "a.png", "a.svg"}));
}

TEST(RectifyImage, Refuses) {
  const ScratchFolder folder;
  folder.Write("three.coo", "1 0 125 0\n2 25 125 0\n9 200 125 0\n46 0 0 0\n");
  folder.Write("line.coo", "1 0 0 0\n2 1 0 0\n3 2 0 0\n");
  const std::string strCall = "zu rectify --image $S/chessboard/left.prj ";
  const struct {
    std::string strMore;
    int iExit;
    const char* szError;
  } rows[] = {
      {"--photo 1 --pixel 1 -o a.png", 2, "one of --plane, --zusp, --control and --conditions"},
      {"--photo 1 --pixel 1 --plane $S/chessboard/board.coo", 2, "--image needs -o"},
      {"--photo 1 --plane $S/chessboard/board.coo -o a.png", 2, "--image needs --pixel"},
      {"--photo 1 --pixel 1 --plane $S/chessboard/board.coo -o a.gif", 2, "a.gif: a picture"},
      {"--photo 1,2 --pixel 1 --control $S/chessboard/board.coo -o a.png", 2, "several photos"},
      {"--photo 1 --pixel 1e-9 --plane $S/chessboard/board.coo -o a.png", 2, "makes no picture"},
      {"--photo 1 --pixel 1 --plane $S/chessboard/board.coo -o a.png --region 1,2,3", 2,
       "--region"},
      {"--photo 1 --pixel 1 --plane $S/chessboard/board.coo -o a.png --region 9000,0,9100,100", 4,
       "show nothing of the region"},
      {"--photo 1 --pixel 1 --plane 7 -o a.png", 3, "no plane 7"},
      {"--photo 1 --pixel 1 --plane line.coo -o a.png", 4, "line.coo: "},
      {"--photo 1 --pixel 1 --zusp 7 -o a.png", 3, "photo 1 has no rectification 7"},
      {"--photo 1 --pixel 1 --control three.coo -o a.png", 4, "three of four in a line"},
      {"--photo 1 --pixel 1 --plane $S/chessboard/board.coo -o a.png --sheet 50", 2,
       "a scale as 1:50"},
      {"--photo 1 --pixel 1 --plane $S/chessboard/board.coo -o a.png --sheet 1:1", 2,
       "at most 5 m"},
      {"--photo 1 --pixel 1 --plane $S/chessboard/board.coo -o a.png --sheet-out a.pdf", 2,
       "--sheet-out needs --sheet"},
      {"--photo 1 --pixel 1 --plane $S/chessboard/board.coo -o a.png --pictures .", 3,
       "left01.jpg"},
  };
  for (const auto& row : rows) {
    const std::string strLine = strCall + row.strMore;
    ExpectLines({{strLine.c_str(), row.iExit, "", row.szError}}, folder);
  }
  EXPECT_EQ(folder.Names(), (std::vector<std::string>{"line.coo", "three.coo"}));
}

}  // namespace
