#include <fstream>
#include <nlohmann/json.hpp>

#include "cloud_support.h"

namespace {

const char* const kSamples[] = {"autzen.pts", "site_56_8.pts", "milk_carton.ply", "plane_scan.xyz"};

}  // namespace

// Counts, limits, centres and sums of real files, as numpy gives them.
TEST(CloudSamples, FiguresComeOut) {
  std::ifstream stream(SamplePath("expected.json"));
  const auto all = nlohmann::json::parse(stream);
  for (const char* szName : kSamples) {
    SCOPED_TRACE(szName);
    const auto& expected = all.at(szName);
    ZuPointCloudContainer container;
    const std::string strPath = SamplePath(szName);
    const ZuPointCloud* pCloud = strPath.ends_with(".ply")
                                     ? container.ObsolteReadPlyFile(strPath.c_str())
                                     : container.ReadPtsFile(strPath.c_str());
    ASSERT_NE(pCloud, nullptr);
    const auto& points = pCloud->GetPoints();
    ASSERT_EQ(points.size(), expected.at("points").get<std::size_t>());

    const ZuBoundingBox3d& box = container.GetBox();
    EXPECT_EQ(nlohmann::json({box.Xmin(), box.Ymin(), box.Zmin()}), expected.at("min"));
    EXPECT_EQ(nlohmann::json({box.Xmax(), box.Ymax(), box.Zmax()}), expected.at("max"));
    const double dTolerance = std::string(szName) == "autzen.pts" ? 1e-6 : 1e-9;
    const auto& centre = expected.at("centre");
    EXPECT_NEAR(container.GetCenter().x(), centre[0].get<double>(), dTolerance);
    EXPECT_NEAR(container.GetCenter().y(), centre[1].get<double>(), dTolerance);
    EXPECT_NEAR(container.GetCenter().z(), centre[2].get<double>(), dTolerance);

    long long iRed = 0, iGreen = 0, iBlue = 0, iIntensity = 0;
    unsigned int uLeast = 255, uMost = 0;
    for (const ZuScanPoint3d& p : points) {
      iRed += p.GetRed();
      iGreen += p.GetGreen();
      iBlue += p.GetBlue();
      iIntensity += p.m_uColor >> 24;
      uLeast = std::min(uLeast, p.m_uColor >> 24);
      uMost = std::max(uMost, p.m_uColor >> 24);
    }
    EXPECT_EQ(iRed, expected.at("sum_red"));
    EXPECT_EQ(iGreen, expected.at("sum_green"));
    EXPECT_EQ(iBlue, expected.at("sum_blue"));
    EXPECT_EQ(iIntensity, expected.at("intensity_byte").at("sum"));
    EXPECT_EQ(uLeast, expected.at("intensity_byte").at("min"));
    EXPECT_EQ(uMost, expected.at("intensity_byte").at("max"));
    for (const char* szPoint : {"first", "last"}) {
      const ZuScanPoint3d& p = szPoint[0] == 'f' ? points.front() : points.back();
      EXPECT_EQ(nlohmann::json({p.x, p.y, p.z}), expected.at(szPoint));
    }
  }
}
