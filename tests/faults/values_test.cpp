// Values of a file at the edge of what their fields hold.
#include "tests/support/project_file.h"
#include "tests/support/temp_file.h"
#include "tests/support/test.h"
#include "zu/cloud/point_cloud_container.h"
#include "zu/photo/reseau_file.h"

namespace {

TEST(Values, UserDataOfAnyNumberOfParts) {
  for (const auto& [szText, iPage, iRotation] :
       Cases<const char*, int, int>{{"", 1, 0},
                                    {"text", 1, 0},
                                    {"text;4", 5, 0},
                                    {"a;4;2;b", 5, 2},
                                    {"a;4;2;b;c;d;e", 5, 2},
                                    {"a;2147483647;3;b", INT_MAX, 0},
                                    {";;;", 1, 0},
                                    {"a;99999999999;-1;b", INT_MAX, -1}}) {
    const TempFile file("PHOTO { USERDATA \"" + std::string(szText) + "\" LASTZUSPID 7 }\n");
    ProjectFile project(file.Path());
    const ZuPhoto& photo = *project.Photos().First();
    EXPECT_EQ(photo.GetDigPictPage(), iPage) << szText;
    EXPECT_EQ(photo.GetDigPictRot(), iRotation) << szText;
    EXPECT_EQ(photo.GetLastZuspId(), 7u) << szText;
  }
}

TEST(Values, ReseauSizesThatDoNotFitAnInt) {
  for (const double dSize : {1e300, -1e300}) {
    ZuReseauFile reseau;
    reseau.CreateDigitalFormat(ZuRegion(0.0, 0.0, 1e12, dSize), ZuRegion(0.0, 0.0, 36.0, 24.0));
    EXPECT_EQ(reseau.GetExifPixelWidth(), INT_MAX);
    EXPECT_TRUE(reseau.IsValid());
  }
}

TEST(Values, HeaderTextsOfACloudWithoutATerminator) {
  ZuPointCloudContainer container;
  container.AddCloud()->AddPoint(ZuScanPoint3d(1.0, 2.0, 3.0, 4));
  const TempFile file;
  ASSERT_EQ(container.Write(file.Path()), 1);
  constexpr std::size_t kHeader = 12 + 4 + 60 + 4;  // behind the heads of file and cloud
  std::string strFile = file.Read();
  strFile.replace(kHeader + 4, 468, 468, 'x');
  file.Write(strFile);
  ZuPointCloudContainer back;
  ASSERT_EQ(back.Read(file.Path()), 1);
  const ZuScanHeader& header = back.First()->GetHeader();
  EXPECT_EQ(std::strlen(header.m_szText), 30u);
  for (const char* szText : header.m_aszTexts) EXPECT_EQ(std::strlen(szText), 30u);
  EXPECT_EQ(back.First()->GetPointCount(), 1u);
}

}  // namespace
