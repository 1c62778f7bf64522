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

}  // namespace
