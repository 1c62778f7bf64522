#include "zu/image/target.h"

#include "tests/support/test.h"
#include "zu/image/image_file.h"
#include "zu/image/photo_start.h"
#include "zu/image/target_numbers.h"
#include "zu/photo/photo.h"
#include "zu/points/point_list.h"
#include "zu/project/project.h"

namespace {

const std::string kSamples = ZU_SOURCE_DIR "/samples/network/";

struct Ellipse {
  double x, y, a, b, dAngle;
};

// Disks of one grey on a ground with a gradient, each pixel the mean of 36 places in it.
ZuImage Render(const std::vector<Ellipse>& ellipses, bool bBright, int iBits) {
  ZuImage image(200, 160, 1, iBits);
  const int iUnit = iBits == 16 ? 257 : 1;
  for (int y = 0; y < 160; ++y) {
    for (int x = 0; x < 200; ++x) {
      int nInside = 0;
      for (const Ellipse& e : ellipses) {
        const double c = std::cos(e.dAngle), s = std::sin(e.dAngle);
        for (int k = 0; k < 36; ++k) {
          const double u = x + (k % 6 - 2.5) / 6 - e.x, v = y + (k / 6 - 2.5) / 6 - e.y;
          nInside += std::pow((u * c + v * s) / e.a, 2) + std::pow((v * c - u * s) / e.b, 2) < 1.0;
        }
      }
      const double dGround = bBright ? 40 + 0.1 * x : 200 - 0.1 * x, dDisk = bBright ? 220 : 30;
      const double dGrey = dGround + (dDisk - dGround) * nInside / 36.0;
      if (iBits == 16)
        image.GetRow<std::uint16_t>(y)[x] = static_cast<std::uint16_t>(dGrey * iUnit);
      if (iBits == 8) image.GetRow<std::uint8_t>(y)[x] = static_cast<std::uint8_t>(dGrey + 0.5);
    }
  }
  return image;
}

TEST(Target, CentresAndAxesAreThoseOfTheEllipses) {
  const std::vector<Ellipse> ellipses = {{30.3, 25.8, 9.0, 9.0, 0.0},
                                         {101.27, 40.61, 20.0, 8.0, 0.5},
                                         {60.0, 110.4, 12.5, 11.0, -1.2}};
  for (const bool bBright : {false, true}) {
    for (const int iBits : {8, 16}) {
      ZuTargetOptions options;
      options.m_bBright = bBright;
      const ZuImage image = Render(ellipses, bBright, iBits);
      const std::vector<ZuTarget> found = ZuDetectTargets(image, options);
      ASSERT_EQ(found.size(), ellipses.size());
      for (std::size_t i = 0; i < found.size(); ++i) {
        EXPECT_NEAR(found[i].m_dX, ellipses[i].x, 0.03);
        EXPECT_NEAR(found[i].m_dY, ellipses[i].y, 0.03);
        EXPECT_NEAR(found[i].m_dA, ellipses[i].a, 0.1);
        EXPECT_NEAR(found[i].m_dB, ellipses[i].b, 0.1);
        EXPECT_TRUE(found[i].m_dDX > kZuSigmaFloor && found[i].m_dDX < kZuSigmaFloor + 0.03);
      }
      options.m_bBright = !bBright;
      EXPECT_TRUE(ZuDetectTargets(image, options).empty());
    }
  }
}

// Dots of the sheet as others measured them with another program, by orientations some degrees off
// and points good to a centimetre.
TEST(Target, DotsOfTheSheetAreFoundAndNumbered) {
  ZuProject project;
  ASSERT_TRUE(project.Read((kSamples + "camcal.prj").c_str()));
  ZuPointList points;
  eZuPointRWMask columns[] = {eZuPointRWId, eZuPointRWX, eZuPointRWY, eZuPointRWZ, eZuPointRWEnd};
  ASSERT_TRUE(
      points.ReadFile((kSamples + "approx.coo").c_str(), TZuFormatTable<eZuPointRWMask>(columns)));
  double dSum = 0.0;
  int nMeasured = 0, nFound = 0;
  for (const unsigned uPhoto : {4U, 11U}) {  // at the border, with reflections
    const ZuPhoto& photo = *project.PhotoList().Find(uPhoto);
    ZuImage image;
    ZuFindingList findings;
    ASSERT_TRUE(ZuReadImage(kSamples + photo.GetName().chars(), &image, nullptr, &findings));
    std::vector<ZuTarget> targets = ZuDetectTargets(image);
    const ZuNumbering numbering = ZuNumberTargets(photo, points, {}, &targets);
    EXPECT_EQ(numbering.m_strText, "");
    const ZuSortHelper<ZuPoint> measured(project.FindMeasurements(uPhoto));
    nMeasured += static_cast<int>(project.FindMeasurements(uPhoto)->Count());
    for (const ZuTarget& target : targets) {
      if (target.m_uId == 0) continue;
      const ZuPoint* p = measured.Find(target.m_uId);
      ASSERT_NE(p, nullptr) << target.m_uId;
      const double d = std::hypot(target.m_dX - p->m_dX, target.m_dY - p->m_dY);
      EXPECT_LT(d, 1.0) << "photo " << uPhoto << ", point " << target.m_uId;
      dSum += d * d;
      ++nFound;
    }
  }
  EXPECT_GE(nFound, 0.97 * nMeasured);
  EXPECT_LT(std::sqrt(dSum / nFound), 0.11);  // [pixel]; of all 21 pictures 0.089
}

// A photo straight above a grid, 10 apart, and disks of diameter 4 in it, seen from the side.
class NumberTargets : public testing::Test {
 protected:
  NumberTargets() : m_photo(1, "a.jpg") {
    ZuPhotoStart start;
    start.m_iWidth = 2000, start.m_iHeight = 1500;
    start.m_dPixelSize = 0.01, start.m_dConstant = 20.0;
    start.SetUp(&m_photo);
    m_photo.SetRotAOR(0.6, 0.0, 0.0), m_photo.SetPosAOR(30.0, -40.0, 100.0);
    m_photo.SetHasAOR(true);
    for (unsigned u = 0; u < 56; ++u) m_points.Add(ZuPoint(u + 1, 10.0 * (u % 8), 10.0 * (u / 8)));
  }

  // Pixel of a place on the plane.
  std::array<double, 2> Pixel(double x, double y) const {
    ZuVector way(3);
    way[1] = x - 30.0, way[2] = y + 40.0, way[3] = -100.0;
    double ad[3] = {};
    for (int i = 0; i < 3; ++i) {
      for (int j = 0; j < 3; ++j) ad[i] += m_photo.GetRotAOR().GetElem(j + 1, i + 1) * way[j + 1];
    }
    return {999.5 - 2000 * ad[0] / ad[2], 749.5 + 2000 * ad[1] / ad[2]};
  }

  // The centre of the ellipse: half way between the edges along any direction through it, found as
  // the mean of the picture of the disk's edge, weighted by its area.
  ZuTarget Disk(double x, double y) const {
    ZuTarget target;
    double dArea = 0.0;
    const int n = 2000;
    for (int k = 0; k < n; ++k) {
      const double t = 2 * std::numbers::pi * k / n, t1 = 2 * std::numbers::pi * (k + 1) / n;
      const auto p = Pixel(x + 2 * std::cos(t), y + 2 * std::sin(t));
      const auto q = Pixel(x + 2 * std::cos(t1), y + 2 * std::sin(t1));
      const double d = p[0] * q[1] - q[0] * p[1];
      dArea += d;
      target.m_dX += d * (p[0] + q[0]) / 3, target.m_dY += d * (p[1] + q[1]) / 3;
    }
    target.m_dX /= dArea, target.m_dY /= dArea;
    target.m_dA = 40.0;
    return target;
  }

  ZuPhoto m_photo;
  ZuPointList m_points;
};

TEST_F(NumberTargets, CentresOfEllipsesBecomeThoseOfTheDisks) {
  std::vector<ZuTarget> targets;
  for (const ZuPoint* p = m_points.First(); p != nullptr; p = p->Next()) {
    targets.push_back(Disk(p->m_dX, p->m_dY));
  }
  ZuNumberingOptions options;
  options.m_dDiameter = 4.0;
  m_photo.SetPosAOR(32.0, -38.0, 102.0);  // roughly
  const ZuNumbering numbering = ZuNumberTargets(m_photo, m_points, options, &targets);
  ASSERT_EQ(numbering.m_strText, "");
  EXPECT_EQ(numbering.m_iNumbered, 56);
  EXPECT_NEAR(numbering.m_Position[2], -40.0, 0.1);
  EXPECT_GT(numbering.m_dLargestOffset, 0.2);
  for (std::size_t i = 0; i < targets.size(); ++i) {
    EXPECT_EQ(targets[i].m_uId, i + 1);
    const auto pixel = Pixel(10.0 * static_cast<double>(i % 8), 10.0 * static_cast<double>(i / 8));
    EXPECT_NEAR(targets[i].m_dX, pixel[0], 0.005);
    EXPECT_NEAR(targets[i].m_dY, pixel[1], 0.005);
  }
}

TEST_F(NumberTargets, WhatIsNotCertainIsNotNumbered) {
  // A piece of a grid that goes on to all sides fits with many numbers.
  std::vector<ZuTarget> targets;
  for (int i = 0; i < 30; ++i) targets.push_back(Disk(10.0 * (i % 6 + 1), 10.0 * (i / 6 + 1)));
  ZuNumbering numbering = ZuNumberTargets(m_photo, m_points, {}, &targets);
  EXPECT_NE(numbering.m_strText.find("not certain"), std::string::npos) << numbering.m_strText;
  EXPECT_EQ(targets[7].m_uId, 0u);
  m_photo.SetHasAOR(false);
  numbering = ZuNumberTargets(m_photo, m_points, {}, &targets);
  EXPECT_NE(numbering.m_strText.find("orientation"), std::string::npos);
}

}  // namespace
