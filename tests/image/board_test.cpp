#include "zu/image/board.h"

#include "tests/support/test.h"
#include "zu/image/image_file.h"
#include "zu/image/photo_start.h"
#include "zu/project/project.h"

namespace {

const std::string kSamples = ZU_SOURCE_DIR "/samples/chessboard/";

// As the file has it, or turned by half, so that the board is seen upside down.
ZuImage Read(const std::string& strName, bool bTurned = false) {
  ZuImage image;
  ZuFindingList findings;
  EXPECT_TRUE(ZuReadImage(kSamples + strName, &image, nullptr, &findings)) << strName;
  if (bTurned) std::reverse(image.GetData(), image.GetData() + image.GetRowBytes() * 480);
  return image;
}

// The pixels of the samples were measured by the same method, by others.
TEST(Board, CornersOfThePicturesAreThoseOfTheSamples) {
  ZuProject project;
  ASSERT_TRUE(project.Read((kSamples + "left.prj").c_str()));
  int nPhotos = 0;
  double dSum = 0.0, dDeviations = 0.0;
  for (const ZuPhoto* p = project.PhotoList().First(); p != nullptr; p = p->Next(), ++nPhotos) {
    const bool bTurned = nPhotos % 2 == 1;
    const ZuImage image = Read(p->GetName().chars(), bTurned);
    const ZuBoardDetection found = ZuDetectChessboard(image, {9, 6});
    ASSERT_EQ(found.m_points.size(), 54u) << p->GetName().chars() << found.m_strText;
    EXPECT_EQ(found.m_strText, "");
    const ZuPointList* pMeasured = project.FindMeasurements(p->GetId());
    std::size_t i = 0;
    for (const ZuPoint* q = pMeasured->First(); q != nullptr; q = q->Next(), ++i) {
      const ZuDetectedPoint& point = found.m_points[i];
      EXPECT_EQ(point.m_uId, q->GetId());
      const double dX = (bTurned ? 639 - point.m_dX : point.m_dX) - q->m_dX;
      const double dY = (bTurned ? 479 - point.m_dY : point.m_dY) - q->m_dY;
      dSum += dX * dX + dY * dY;
      dDeviations += point.m_dDX + point.m_dDY;
    }
  }
  ASSERT_EQ(nPhotos, 13);
  const double n = 13 * 54;
  EXPECT_LT(std::sqrt(dSum / n), 0.01);          // [pixel]
  EXPECT_NEAR(dDeviations / 2 / n, 0.14, 0.05);  // the adjustment leaves 0.2 as a length
}

TEST(Board, WhatIsNotThereOrNotCertainIsTold) {
  const ZuImage image = Read("left01.jpg");
  const ZuBoardDetection other = ZuDetectChessboard(image, {8, 8});
  EXPECT_TRUE(other.m_points.empty() && !other.m_strText.empty());
  EXPECT_TRUE(ZuDetectChessboard(ZuImage(1, 1, 1, 8), {9, 6}).m_points.empty());
  EXPECT_TRUE(ZuDetectChessboard(ZuImage(), {9, 6}).m_points.empty());
}

// A photo set up from the picture has the way from pixels to mm that the samples have.
TEST(PhotoStart, PixelsBecomeMillimetres) {
  ZuImageInfo info;
  info.m_iWidth = 640, info.m_iHeight = 480;
  ZuPhoto photo(1, "a.jpg");
  ZuStartPhoto(info, 0.0099, 5.0).SetUp(&photo);
  ZuPoint point(1, 639.5, -0.5);  // the upper right corner of the image
  ASSERT_TRUE(photo.ConvertBiko(&point, eDigiToBiko));
  EXPECT_NEAR(point.m_dX, 3.168, 1e-12);
  EXPECT_NEAR(point.m_dY, 2.376, 1e-12);
  EXPECT_EQ(photo.GetCamera().m_dC, 5.0);
  const ZuPhotoStart unknown = ZuStartPhoto(info);
  EXPECT_EQ(unknown.m_dPixelSize, 36.0 / 640);
  EXPECT_NE(unknown.m_strNote, "");
}

}  // namespace
