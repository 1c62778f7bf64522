// Thirteen real photos, from pixel to object point and back, against an independent calculation.
#include <map>

#include "tests/support/project_file.h"
#include "tests/support/test.h"
#include "zu/photo/photo_list.h"
#include "zu/rectify/calc_plane.h"

namespace {

std::string Sample(const char* szName) {
  return std::string(ZU_SOURCE_DIR "/samples/chessboard/") + szName;
}

// Points of an expected file by photo and point.
std::map<std::pair<int, unsigned int>, ZuPoint> Expected(const char* szName, bool bSpace) {
  constexpr eZuPointRWMask kSpace[] = {eZuPointRWPhoto, eZuPointRWId, eZuPointRWX,
                                       eZuPointRWY,     eZuPointRWZ,  eZuPointRWEnd};
  constexpr eZuPointRWMask kImage[] = {eZuPointRWPhoto, eZuPointRWId, eZuPointRWX, eZuPointRWY,
                                       eZuPointRWEnd};
  ZuPointList list;
  list.ReadFile(Sample(szName).c_str(), bSpace ? kSpace : kImage);
  std::map<std::pair<int, unsigned int>, ZuPoint> points;
  for (const ZuPoint* p = list.First(); p != nullptr; p = p->Next()) {
    points.emplace(std::make_pair(p->m_iPhoto, p->GetId()), *p);
  }
  return points;
}

ZuPointList Board() {
  constexpr eZuPointRWMask kColumns[] = {eZuPointRWId, eZuPointRWX, eZuPointRWY, eZuPointRWZ,
                                         eZuPointRWEnd};
  ZuPointList board;
  board.ReadFile(Sample("board.coo").c_str(), kColumns);
  return board;
}

struct Project {
  const char* szFile;
  const char* szSip;
  const char* szProjection;
  bool bFlip;
};
constexpr Project kProjects[] = {
    {"left.prj", "expected_sip.coo", "expected_projection.coo", false},
    {"left_flip.prj", "expected_sip.coo", "expected_projection.coo", true},
    {"left_poly.prj", "expected_sip.coo", "expected_projection.coo", false},
    {"left_cap.prj", "expected_sip_cap.coo", "expected_projection_cap.coo", false},
};

TEST(Chessboard, MeasuredPixelsMeetTheBoard) {
  ZuPointList board = Board();
  ZuCalcPlane plane;
  ASSERT_TRUE(plane.CalcPlaneFromFilteredPoints(&board, false, false));
  for (const Project& file : kProjects) {
    SCOPED_TRACE(file.szFile);
    ProjectFile project(Sample(file.szFile));
    ASSERT_EQ(project.Photos().Count(), 13);
    ASSERT_EQ(project.Faults(), 0);
    const auto expected = Expected(file.szSip, true);
    int iCount = 0;
    double dWorst = 0.0;
    for (ZuPhoto* pPhoto = project.Photos().First(); pPhoto != nullptr; pPhoto = pPhoto->Next()) {
      const ZuBikoTransform flipped(pPhoto, eDigiToAdjusted, true);
      for (ZuPoint* p = project.Pixels(pPhoto->GetId()).First(); p != nullptr; p = p->Next()) {
        file.bFlip ? flipped.Transform(p) : pPhoto->ConvertBiko(p, eDigiToAdjusted);
        ZuPoint object;
        ASSERT_TRUE(pPhoto->CalcSip(&object, plane.GetPlane(), p));
        const ZuPoint& truth = expected.at({static_cast<int>(pPhoto->GetId()), p->GetId()});
        dWorst = std::max(dWorst, object.Distance(truth));
        ++iCount;
      }
    }
    EXPECT_EQ(iCount, 702);
    EXPECT_LE(dWorst, 1e-9);
  }
}

TEST(Chessboard, BoardPointsProjectToPixels) {
  const ZuPointList board = Board();
  for (const Project& file : kProjects) {
    SCOPED_TRACE(file.szFile);
    ZuCamera::DeleteInvAdjustTables();
    ProjectFile project(Sample(file.szFile));
    const auto expected = Expected(file.szProjection, false);
    double dWorst = 0.0;
    for (ZuPhoto* pPhoto = project.Photos().First(); pPhoto != nullptr; pPhoto = pPhoto->Next()) {
      const ZuBikoTransform transform(pPhoto, eObjectToDigi, file.bFlip);
      for (const ZuPoint* p = board.First(); p != nullptr; p = p->Next()) {
        ZuPoint image(*p);
        ASSERT_TRUE(transform.Transform(&image));
        const ZuPoint& truth = expected.at({static_cast<int>(pPhoto->GetId()), p->GetId()});
        dWorst = std::max(dWorst, std::hypot(image.m_dX - truth.m_dX, image.m_dY - truth.m_dY));
      }
    }
    EXPECT_LE(dWorst, 1e-9);
  }
}

}  // namespace
