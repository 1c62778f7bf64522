// Orientation without approximations: two photos, a sample without control, a board, bad input.
#include <random>

#include "tests/support/cameras.h"
#include "tests/support/test.h"
#include "zu/adjust/calibration_project.h"
#include "zu/adjust/intersection_project.h"
#include "zu/adjust/relative_orientation.h"
#include "zu/project/project.h"

namespace {

std::string Sample(const std::string& strName) { return ZU_SOURCE_DIR "/samples/" + strName; }

void ReadProject(const std::string& strName, ZuProject* pProject) {
  ASSERT_TRUE(pProject->Read(Sample(strName).c_str()));
  for (ZuPhoto* p = pProject->PhotoList().First(); p != nullptr; p = p->Next()) {
    p->SetHasAOR(false);
    p->SetRotAOR(0.0, 0.0, 0.0);
    p->SetPosAOR(0.0, 0.0, 0.0);
  }
}

ZuPointList ReadPoints(const std::string& strName) {
  static eZuPointRWMask columns[] = {eZuPointRWId, eZuPointRWX, eZuPointRWY, eZuPointRWZ,
                                     eZuPointRWEnd};
  ZuPointList points;
  points.ReadFile(Sample(strName).c_str(), TZuFormatTable<eZuPointRWMask>(columns));
  return points;
}

}  // namespace

// 30 points of a relief or a plane, nine of them wrong in the second photo.
TEST(RelativeOrientation, FindsAPlantedPairAmongWrongPoints) {
  std::mt19937 random(7);
  std::uniform_real_distribution<double> place(-1.0, 1.0);
  const ZuCamera camera(1, 10.0);
  for (const double dDepth : {0.8, 0.0}) {
    for (const int iWrong : {0, 9}) {
      const double a = 0.6, c = std::cos(a), s = std::sin(a);  // the second turned about y
      std::vector<ZuImageObservation> first, second;
      for (unsigned u = 1; u <= 30; ++u) {
        const double x = place(random), y = place(random),
                     z = -4.0 + dDepth * place(random) + 0.3 * x;
        const double d[3] = {x - 2.0, y - 0.1, z - 0.3};
        const double v[3] = {c * d[0] - s * d[2], d[1], s * d[0] + c * d[2]};
        first.push_back({u, -10.0 * x / z, -10.0 * y / z});
        second.push_back({u, -10.0 * v[0] / v[2], -10.0 * v[1] / v[2]});
        // Across the rays of the other photo: along them no error shows.
        if (static_cast<int>(u) <= iWrong) second.back().y += place(random);
      }
      const ZuRelativeResult pair = ZuOrientRelative(camera, first, camera, second);
      ASSERT_EQ(pair.status, ZuAdjustStatus::Good) << pair.strWhy;
      std::vector<ZuPose> poses = pair.alternatives;
      poses.push_back(pair.pose);
      double dNearest = 1.0;
      for (const ZuPose& pose : poses) {
        const double n = std::hypot(2.0, 0.1, 0.3);
        const double e = std::hypot(pose.position[1] - 2.0 / n, pose.position[2] - 0.1 / n,
                                    pose.position[3] - 0.3 / n) +
                         std::fabs(pose.rotation[1][1] - c) + std::fabs(pose.rotation[1][3] - s);
        dNearest = std::min(dNearest, e);
      }
      EXPECT_LT(dNearest, 1e-6) << dDepth << " " << iWrong;
    }
  }
}

// Pixels alone lead to the free network of the sample.
TEST(Orientation, NeedsNoControl) {
  ZuProject project;
  ReadProject("network/camcal_unoriented.prj", &project);
  const ZuProjectOrientation found = ZuOrientProject(&project, {}, {});
  ASSERT_EQ(found.CountGood(), 21);
  EXPECT_TRUE(found.bFree);
  ZuNetworkInput input;
  for (const int k : {ZuNetworkC, ZuNetworkXh, ZuNetworkYh, ZuNetworkA1, ZuNetworkA2, ZuNetworkA3,
                      ZuNetworkC1, ZuNetworkC2}) {
    input.uEstimate |= 1U << k;
  }
  const ZuNetworkOfProject made = ZuMakeNetwork(project, {}, {}, input);
  ZuNetworkOptions options;
  options.eDatum = ZuNetworkDatum::Inner;
  options.bStatistics = false;
  const ZuNetworkResult result = made.network.Adjust(options);
  ASSERT_EQ(result.status, ZuAdjustStatus::Good) << result.strText;
  EXPECT_NEAR(result.dSigma0, 1.44934240, 1e-6);
}

// The board of the sample, whose README tells the residuals of another adjustment.
TEST(Calibration, OfABoardNeedsNoOrientationAndNoConstant) {
  const struct {
    int iMode;
    double dRms;
  } cases[] = {{0, 0.2053}, {2, 0.1954}};
  const ZuPointList board = ReadPoints("chessboard/board.coo");
  for (const auto& at : cases) {
    for (const bool bConstant : {true, false}) {
      ZuProject project;
      ReadProject("chessboard/left.prj", &project);
      for (ZuPhoto* p = project.PhotoList().First(); p != nullptr; p = p->Next()) {
        ZuCamera camera(1, bConstant ? 5.5 : 0.0);
        camera.m_iMode = at.iMode;
        camera.m_dR0 = 2.5;
        p->SetCamera(camera);
      }
      const ZuProjectCalibration found = ZuCalibrateProject(&project, board);
      ASSERT_EQ(found.result.status, ZuAdjustStatus::Good) << found.result.strText;
      double dSum = 0.0;
      for (size_t i = 0; i < found.result.imageTests.size(); ++i) {
        const auto v = ZuToPixels(found.made.pixels[i], found.result.imageTests[i].adV);
        dSum += (v[0] * v[0] + v[1] * v[1]) / static_cast<double>(found.result.imageTests.size());
      }
      EXPECT_EQ(found.result.imageTests.size(), 702U);
      EXPECT_LT(std::sqrt(dSum), at.dRms + 5e-5) << at.iMode;
    }
  }
}

TEST(Orientation, NamesThePhotosThatCannotBeFound) {
  const auto photo = [](int iId, const std::string& strPoints) {
    const std::string strId = std::to_string(iId);
    return "PHOTO { PHOTOID " + strId +
           " \"p\" DIGITAL 1 STATE 0 ORIENTED 0 "
           "DIGIREGION { 0 0 999 999 } CAMDATA { ID 1 MD 0 C 10 XH 0 YH 0 A1 0 A2 0 R0 0 RM 9 } "
           "PRERESTRAFO { 2 0 1 0 999 0 -1 } MAINRESTRAFO { 1 -5 0.01 -5 0 } }\n"
           "MEASURE { PHOTOID " +
           strId + " POINTS { " + strPoints + " } }\n";
  };
  std::istringstream file(photo(1, "") + photo(2, "1 10 10\n2 900 20\n1 11 10\n") +
                          photo(3, "1 nan 10\n2 inf 20\n3 1e300 5\n4 7 7\n5 8 8\n6 9 9\n") +
                          photo(4, "1 5 5\n2 5 5\n3 5 5\n4 5 5\n5 5 5\n6 5 5\n"));
  ZuPointList control;
  for (unsigned u = 1; u <= 6; ++u) control.Add(ZuPoint(u, 1.0 * u, 2.0 * u, std::nan(""), 0));
  for (const bool bControl : {true, false}) {
    ZuProject project;
    project.Read(file, "made");
    file.clear();
    file.seekg(0);
    const ZuProjectOrientation found =
        ZuOrientProject(&project, bControl ? control : ZuPointList(), {});
    EXPECT_EQ(found.CountGood(), 0);
    for (const ZuPhotoOrientation& p : found.photos) EXPECT_FALSE(p.strWhy.empty()) << p.uId;
    EXPECT_EQ(ZuIntersectProject(project).CountGood(), 0);
  }
}
