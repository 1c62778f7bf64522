// The commands that make pictures anew, on pictures that the tests draw.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

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
      return RunZu(measure).Json()["photos"][0]["rms"].get<double>();
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

}  // namespace
