// Measurements of real photos met with a plane, against results of another implementation.
#include "zu/project/plane_measurement.h"

#include <fstream>
#include <map>
#include <sstream>

#include "tests/support/test.h"
#include "zu/project/project.h"

namespace {

const std::string kFolder = ZU_SOURCE_DIR "/samples/chessboard/";

TEST(PlaneMeasurement, MeetsTheExpectedPointsAndFigures) {
  const struct {
    const char *szProject, *szPoints;
    bool bFlip;
    double dRms, dWorst;
  } cases[] = {
      {"left.prj", "expected_sip.coo", false, 0.13768061203448057, 0.42327403721039314},
      {"left_flip.prj", "expected_sip.coo", true, 0.13768061203448057, 0.42327403721039314},
      {"left_cap.prj", "expected_sip_cap.coo", false, 0.13567301950455066, 0.37940185260692605}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.szProject);
    ZuProject project;
    ASSERT_TRUE(project.Read((kFolder + c.szProject).c_str()));
    constexpr eZuPointRWMask kColumns[] = {eZuPointRWId, eZuPointRWX, eZuPointRWY, eZuPointRWZ,
                                           eZuPointRWEnd};
    ZuPointList board;
    board.ReadFile((kFolder + "board.coo").c_str(), kColumns);
    ZuPlaneMeasurement result;
    ASSERT_TRUE(result.FitPlane(board) && result.Measure(project, board, c.bFlip, false));

    std::map<std::pair<unsigned, unsigned>, const ZuMeasuredPoint*> met;
    for (const ZuMeasuredPhoto& photo : result.m_photos) {
      for (const ZuMeasuredPoint& p : photo.m_points) met[{photo.m_pPhoto->GetId(), p.m_uId}] = &p;
    }
    std::ifstream expected(kFolder + c.szPoints);
    unsigned uPhoto, uId;
    double x, y, z;
    size_t uCompared = 0;
    for (; expected >> uPhoto >> uId >> x >> y >> z; ++uCompared) {
      const auto found = met.find({uPhoto, uId});
      ASSERT_NE(found, met.end());
      const ZuMeasuredPoint& p = *found->second;
      EXPECT_LT(std::hypot(p.m_dX - x, p.m_dY - y, p.m_dZ - z), 1e-6) << uPhoto << ' ' << uId;
    }
    EXPECT_EQ(uCompared, met.size());
    EXPECT_NEAR(result.m_dRms, c.dRms, 1e-6);
    EXPECT_NEAR(result.WorstPhoto()->Worst()->Length(), c.dWorst, 1e-6);
    EXPECT_EQ(result.CountLonger(result.WorstPhoto()->Worst()->Length()), 0);
    EXPECT_EQ(result.MeanPoints().size(), 54u);
  }
}

// What is left out says why: photos, and single measurements. A photo that looks along X from (0,
// 0, 5): the ray of the centre is parallel to Z = 0, that of a pixel below meets it.
TEST(PlaneMeasurement, TellsWhatItLeavesOut) {
  const std::string strChain =
      " DIGITAL 1 DIGIREGION { 0 0 100 100 } CAMDATA { ID 1 C 50 R0 20 }"
      " MAINRESTRAFO { 2 -50 1 0 50 0 -1 } AORV { 3 0 0 5 } AORM { 3 3 0 0 -1 -1 0 0 0 1 0 }";
  std::istringstream stream("PHOTO { PHOTOID 1 \"a\" ORIENTED 1" + strChain +
                            " }\nPHOTO { PHOTOID 2 \"b\"" + strChain +
                            " }\n"
                            "MEASURE { PHOTOID 1 POINTS {\n1 50 60\n2 50 50\n3 50 40\n"
                            "4 500 50\n5 1 2\n5 1 2\n6 60 70 } }\n"
                            "MEASURE { PHOTOID 2 POINTS { 9 1 2 } }");
  ZuProject project;
  ASSERT_TRUE(project.Read(stream));
  ZuPlaneMeasurement result;
  ZuPlane floor;
  floor.C() = 1.0;
  result.SetPlane(floor);
  ASSERT_TRUE(result.Measure(project, ZuPointList(), false));
  EXPECT_EQ(result.m_leftOut.at(0).m_strWhy.find("is not oriented"), 0u);
  std::string strRefused;
  for (const ZuRefusedMeasurement& p : result.m_refused) {
    strRefused += std::to_string(p.m_uId) + " " + p.m_strWhy + "\n";
  }
  EXPECT_EQ(strRefused,
            "2 its ray is parallel to the plane\n3 its ray meets the plane behind the camera\n"
            "4 it lies outside the image\n5 it is measured twice (lines 8 and 9)\n");
  // 10 mm below the axis at 50 mm: 5 units down at 25 units ahead.
  EXPECT_ROW("2 25 0 0", result.m_iPoints, result.m_photos.at(0).m_points.at(0).m_dX,
             result.m_photos[0].m_points[0].m_dY, result.m_photos[0].m_points[0].m_dZ);
}

}  // namespace
