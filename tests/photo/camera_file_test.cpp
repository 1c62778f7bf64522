#include <fstream>

#include "tests/support/temp_file.h"
#include "tests/support/test.h"
#include "zu/foundation/debug.h"
#include "zu/photo/camera_list.h"

namespace {

std::string Sample(const char* szName) {
  return std::string(ZU_SOURCE_DIR "/samples/chessboard/") + szName;
}

std::string Content(const std::string& strPath) {
  std::ifstream stream(strPath, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), {}};
}

TEST(CameraFile, ReadsBothForms) {
  const ZuCameraList cameras(Sample("cameras.cam").c_str());
  ASSERT_EQ(cameras.Count(), 2);
  const ZuCamera &radial = *cameras.First(), &cap = *cameras.Last();
  EXPECT_ROW("1 left radial 4.915686 -0.000198009113 4.4", radial.GetId(), radial.GetName(),
             radial.m_dC, radial.m_dA2, radial.m_dRMax);
  EXPECT_ROW("2 -0.000285451769 -0.000495546107", cap.m_iMode, cap.m_dC2, cap.m_dB1);
  const ZuCameraList simple(Sample("cameras_simple.cam").c_str());
  ASSERT_EQ(simple.Count(), 1);
  EXPECT_ROW("left radial 0.065727 5.25", simple.First()->GetName(), simple.First()->m_dYh,
             simple.First()->m_dRMax);
  EXPECT_ROW("0 0", ZuCameraList("/no/such/file").Count(), ZuCameraList(nullptr).Count());
  ZuCameraList ids;
  for (const unsigned int uId : {4u, 4u, 7u, 7u, 7u, 9u}) ids.Add(ZuCamera(uId, 1.0));
  EXPECT_EQ(ids.TestForMultipleCameras(), 1);  // counts ids that occur more than twice
}

TEST(CameraFile, TheFormsDifferInSignDomainAndSynonyms) {
  const TempFile simple("{ 1 -35 0.1 x \"a\" 0 5 \"first\" }\n{ 2 35 0 0 0 0 7 \"second\" 9 }");
  ZuCameraList cameras(simple.Path());
  ASSERT_EQ(cameras.Count(), 2);  // a value behind the name is dropped with its block
  EXPECT_ROW("35 0.1", cameras.First()->m_dC, cameras.First()->m_dXh);
  EXPECT_EQ(cameras.First()->m_dYh, 0.0);  // no number
  EXPECT_EQ(cameras.First()->m_dA1, 0.0);
  EXPECT_EQ(cameras.Last()->m_dRMax, 2.1 * 7.0);

  const TempFile full(
      "CAMERA { ID 1 C -35 XH 1 X0 2 Y0 3 YH 4 R0 5 }\n"
      "CAMERA { ID 2 R0 5 RM 6 MD 17 }\nCAMERA { ID 3 R0 5 RM 0 }");
  ZuCameraList fullCameras(full.Path());
  ASSERT_EQ(fullCameras.Count(), 3);
  const ZuCamera& first = *fullCameras.First();
  EXPECT_ROW("-35 2 4 10.5 6", first.m_dC, first.m_dXh, first.m_dYh, first.m_dRMax,
             first.Next()->m_dRMax);
  EXPECT_EQ(first.Next()->m_iMode, 17);  // kept as it is
  EXPECT_EQ(fullCameras.Last()->m_dRMax, 10.5);
}

TEST(CameraFile, WritesTheAdjustmentProgramsLines) {
  ZuCameraList cameras;
  cameras.Add(ZuCamera(12, -35.127, 0.0125, -0.5, -1.25e-5, 3e-9, 12.5, "a"));
  ZuCamera cap(3, 50.25, 1.0, 2.0, 3.0, 4.0, 5.0);
  cap.m_iMode = eCameraModeCap;
  cameras.Add(cap);
  std::ostringstream stream;
  cameras.WriteFile(stream, true);
  EXPECT_EQ(
      stream.str(),
      "   12       35.127       0.0125         -0.5    -1.25e-05        3e-09         12.5\n"
      "    3        50.25            0            0            0            0            0\n");
}

// Parameters leave through the lines above only: these forms carry header and empty blocks.
TEST(CameraFile, SimpleAndFullFormAreWrittenEmpty) {
  const TempFile file("");
  ZuCameraList cameras;
  EXPECT_TRUE(cameras.ContainsOnlyGentriCams());
  cameras.Add(ZuCamera(1, 35.0));
  cameras.Add(ZuCamera(2, 36.0));
  EXPECT_EQ(cameras.WriteFile(file.Path(), false), 1);
  EXPECT_EQ(Content(file.Path()),
            "; \n"
            "; ZUVOVISION 10 Version 8.205 Simple Camera File\n"
            "; \n"
            "; File Format: { Id  C  Xh  Yh  A1  A2  R0 \"Infotext\"}\n"
            "; \n"
            "\n"
            "{}\n{}\n");
  cameras.Last()->m_iMode = eCameraModeViva;
  EXPECT_FALSE(cameras.ContainsOnlyGentriCams());
  cameras.WriteFile(file.Path(), false);
  const std::string strFull = Content(file.Path());
  EXPECT_TRUE(
      strFull.starts_with("; \n; ZUVOVISION 10 Version 8.205 General Purpose Camera File\n"));
  EXPECT_NE(strFull.find("; Ident: ID         Camera Id\n;        NAME       Camera Name\n"),
            std::string::npos);
  EXPECT_TRUE(strFull.ends_with("Tangential Distortion\n; \n\nCAMERA    { }\nCAMERA    { }\n"));
  EXPECT_EQ(cameras.WriteFile("/no/such/folder/file", true), 1);
}

}  // namespace
