#include "zu/image/marker.h"

#include <opencv2/aruco/charuco.hpp>
#include <opencv2/imgproc.hpp>

#include "tests/support/test.h"
#include "zu/image/image.h"

namespace {

// What a camera in front of it sees of a drawing.
const cv::Matx33d kView(0.55, 0.10, 60.0, -0.06, 0.50, 70.0, 1e-4, -5e-5, 1.0);

ZuImage View(const cv::Mat& drawing) {
  ZuImage image(640, 480, 1, 8);
  cv::Mat seen(480, 640, CV_8U, image.GetData()), large;
  // Four times as large and made smaller, as a sensor does.
  const cv::Matx33d scale(4.0, 0.0, 1.5, 0.0, 4.0, 1.5, 0.0, 0.0, 1.0);
  cv::warpPerspective(drawing, large, scale * kView, cv::Size(2560, 1920), cv::INTER_LINEAR,
                      cv::BORDER_CONSTANT, cv::Scalar(255));
  cv::resize(large, seen, seen.size(), 0, 0, cv::INTER_AREA);
  return image;
}

void ExpectAt(const ZuDetectedPoint& point, double x, double y) {
  const cv::Vec3d seen = kView * cv::Vec3d(x, y, 1.0);
  EXPECT_NEAR(point.m_dX, seen[0] / seen[2], 0.06) << point.m_uId;
  EXPECT_NEAR(point.m_dY, seen[1] / seen[2], 0.06) << point.m_uId;
  EXPECT_TRUE(point.m_dDX > kZuSigmaFloor && point.m_dDX < 0.3) << point.m_dDX;
}

TEST(Marker, CornersStandClockwiseFromTheUpperLeft) {
  for (const auto& [szFamily, iDictionary] :
       Cases<const char*, int>{{"4x4_50", cv::aruco::DICT_4X4_50},
                               {"apriltag_36h11", cv::aruco::DICT_APRILTAG_36h11}}) {
    cv::Mat drawing(700, 800, CV_8U, cv::Scalar(255)), marker;
    const auto pDictionary = cv::aruco::getPredefinedDictionary(iDictionary);
    for (const int i : {0, 7}) {
      cv::aruco::drawMarker(pDictionary, i, 240, marker);
      marker.copyTo(drawing(cv::Rect(100 + 50 * i, 200, 240, 240)));
    }
    std::vector<ZuMarker> found;
    ASSERT_TRUE(ZuDetectMarkers(View(drawing), szFamily, &found));
    ASSERT_EQ(found.size(), 2u);
    for (const ZuMarker& at : found) {
      const double x = 100.0 + 50 * at.m_uNumber - 0.5, y = 199.5;
      for (unsigned k = 0; k < 4; ++k) {
        EXPECT_EQ(at.m_corners[k].m_uId, 10 * at.m_uNumber + k + 1);
        ExpectAt(at.m_corners[k], x + (k == 1 || k == 2 ? 240 : 0), y + (k >= 2 ? 240 : 0));
      }
    }
    std::vector<ZuMarker> noise;  // without a floor: what the picture alone tells
    ASSERT_TRUE(ZuDetectMarkers(View(drawing), szFamily, &noise, nullptr, 0.0));
    EXPECT_DOUBLE_EQ(found[1].m_corners[2].m_dDX,
                     std::hypot(noise[1].m_corners[2].m_dDX, kZuSigmaFloor));
    // One number twice says nothing.
    marker.copyTo(drawing(cv::Rect(20, 450, 240, 240)));
    std::string strText;
    ASSERT_TRUE(ZuDetectMarkers(View(drawing), szFamily, &found, &strText));
    EXPECT_EQ(found.size(), 1u);
    EXPECT_NE(strText.find("marker 7"), std::string::npos);
  }
  std::vector<ZuMarker> none;
  EXPECT_FALSE(ZuDetectMarkers(ZuImage(9, 9, 1, 8), "9x9_9", &none));
  EXPECT_TRUE(ZuDetectMarkers(ZuImage(1, 1, 1, 8), "4x4_50", &none) && none.empty());
}

TEST(Marker, CornersBetweenMarkersAreNumberedAsTheBoard) {
  const auto pDictionary = cv::aruco::getPredefinedDictionary(cv::aruco::DICT_5X5_100);
  const auto pBoard = cv::aruco::CharucoBoard::create(6, 5, 1.0F, 0.7F, pDictionary);
  cv::Mat drawing;
  pBoard->draw(cv::Size(900, 750), drawing);
  drawing(cv::Rect(0, 600, 300, 150)).setTo(255);  // a part is hidden
  const ZuBoardDetection found = ZuDetectCharuco(View(drawing), {5, 4}, "5x5_100", 0.7);
  ASSERT_GE(found.m_points.size(), 16u) << found.m_strText;
  for (const ZuDetectedPoint& point : found.m_points) {
    const unsigned u = point.m_uId - 1;
    ExpectAt(point, 150.0 * (u % 5 + 1) - 0.5, 150.0 * (u / 5 + 1) - 0.5);
  }
  const ZuBoardDetection noise = ZuDetectCharuco(View(drawing), {5, 4}, "5x5_100", 0.7, 0.0);
  EXPECT_DOUBLE_EQ(found.m_points[0].m_dDY, std::hypot(noise.m_points[0].m_dDY, kZuSigmaFloor));
  EXPECT_TRUE(ZuDetectCharuco(ZuImage(1, 1, 1, 8), {5, 4}, "5x5_100", 0.7).m_points.empty());
  EXPECT_TRUE(ZuDetectCharuco(View(drawing), {50, 40}, "5x5_100", 0.7).m_points.empty());
}

}  // namespace
