#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <sstream>
#include <string>

#include "tests/support/cameras.h"
#include "tests/support/temp_file.h"
#include "zu/foundation/writer.h"
#include "zu/photo/camera_list.h"

namespace {

// Cameras look the same whatever was being written, and that goes on at its level.
TEST(CameraMargin, CamerasAreWrittenFromTheMarginOn) {
  ZuCameraList list;
  list.Add(test_cameras::ChessboardRadial());
  list.Add(test_cameras::ChessboardRadial());
  for (const int iMode : {0, 2}) {
    list.Last()->m_iMode = iMode;
    std::string astrText[2];
    for (const int iLevels : {0, 1}) {
      ZuWriterReset();
      std::ostringstream outer, stream;
      if (iLevels > 0) outer << ZuTabPlus << ZuTabPlus;
      const TempFile file("");
      list.WriteFile(file.Path(), false);
      list.WriteFile(stream, false);
      outer << Zuendl;
      EXPECT_EQ(outer.str(), iLevels > 0 ? "\n        " : "\n");
      std::ifstream written(file.Path());
      astrText[iLevels] = stream.str() + std::string(std::istreambuf_iterator<char>(written), {});
    }
    EXPECT_EQ(astrText[0], astrText[1]);
    EXPECT_NE(astrText[0].find("}\n"), std::string::npos);
  }
  ZuWriterReset();
}

// Beyond the corrected border of the image the table extrapolates and answers true.
TEST(CameraMargin, InverseBeyondTheTableIsExtrapolated) {
  const ZuCamera camera(7, 35.0, 0.0, 0.0, 2e-4, 0.0, 0.0, "");
  double xBorder = 29.9, yBorder = 0.0;
  ASSERT_TRUE(camera.Adjust(&xBorder, &yBorder));
  ASSERT_LT(xBorder, 25.0);
  double x = xBorder + 3.0, y = 0.0;
  EXPECT_TRUE(camera.InvAdjust(&x, &y));
  EXPECT_GT(x, 29.9);
  double xExact = xBorder + 3.0, yExact = 0.0;
  EXPECT_NE(camera.InvAdjustExact(&xExact, &yExact), eCameraInverseOk);
  ZuCamera::DeleteInvAdjustTables();
}

}  // namespace
