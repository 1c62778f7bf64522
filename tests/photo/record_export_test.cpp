// Records are written as they are read: every keyword, and every number to the last bit.
#include <cstring>
#include <limits>

#include "tests/support/keyword_file.h"
#include "tests/support/test.h"
#include "zu/foundation/numbers.h"
#include "zu/photo/camera_list.h"
#include "zu/photo/ortho_photo.h"
#include "zu/photo/photo_list.h"
#include "zu/photo/reseau_file.h"
#include "zu/rectify/plane_list.h"
#include "zu/transform/lokal_system.h"

namespace {

// What the record reads from the text and writes again.
template <class Record>
std::string Again(const std::string& strText, int (Record::*pfnRead)(ZuReaderObject*),
                  std::ostream& (Record::*pfnExport)(std::ostream&) const) {
  Record record{};
  KeywordFile file("R { " + strText + " }");
  file.On("R", [&](ZuReaderObject* pObject) { return (record.*pfnRead)(pObject); });
  EXPECT_EQ(file.Run(), 0);
  std::ostringstream os;
  os << std::hex << std::showpos << std::setfill('*') << std::setprecision(2);
  (record.*pfnExport)(os);
  return os.str();
}

TEST(RecordExport, NumbersAreTheShortestThatReadBack) {
  const struct {
    double dValue;
    const char* szText;
  } cases[] = {{0.1, "0.1"},
               {-3.0, "-3"},
               {1e22, "1e+22"},
               {-0.0, "-0.0"},
               {0.1 + 0.2, "0.30000000000000004"},
               {2147483647.0, "2147483647"},
               {4157222543.0, "4157222543.0"},
               {5e-324, "5e-324"},
               {std::numeric_limits<double>::max(), "1.7976931348623157e+308"},
               {-HUGE_VAL, "-inf"},
               {std::numeric_limits<double>::quiet_NaN(), "nan"}};
  for (const auto& c : cases) {
    char szText[kZuShortestSize + 1] = {};
    *ZuFormatShortest(szText, c.dValue) = '\0';
    EXPECT_STREQ(szText, c.szText);
    double dRead = 0.0;
    KeywordFile(std::string("D ") + szText).On("D", &dRead).Run();
    EXPECT_EQ(std::memcmp(&dRead, &c.dValue, sizeof(dRead)), 0) << szText;
  }
}

// All keywords with values of their own: none is lost, none is exchanged.
constexpr const char* kRectification = R"(ZUSPID 7 "facade"
ACTIV 1
REGIONACTIV 1
KAMERA 1
DISTORTION { 4 35.2 0.05 -0.02 -0.00012 1.5e-07 12 "wide angle" }
ZUSPTRAFO {
    3 3
    0.5 0.02 2.5
    -0.01 0.30000000000000004 1.25
    0.002 0.001 1
}
TRAFO3D {
    4 4
    1 0 0 100
    0 0 -1 200
    0 1 0 4157222543.0
    0 0 0 1
}
MEASPOINTS {
    4294967295 -12 -8
    2 12 -8
    3 12 nan
}
DEFPOINTS {
    1 0 -0.0 0
    2 10 0 0
    3 10 0 7
}
VALIDREGION {
    -15 -10
    15 -10
    15 10
}
PARALLELDEF {
    DEFLINE { 1 1 2 1 0.1 }
    CONSTRAINT { 1 2 2 -0.1 }
})";

std::string Indented(std::string strText) {
  for (std::size_t u = 0; (u = strText.find('\n', u)) != std::string::npos; u += 5) {
    strText.insert(u + 1, "    ");
  }
  return strText;
}

std::string Photo() {
  return R"(PHOTOID 4294967295 "left01.jpg"
COMMENT "chessboard, left; camera"
DIGITALPAGE 3
DIGITALROT 2
DIGITAL 1
DIGITIZERID 7
CHECKACTIVE 1
STATE -2
ROTATION 1
SCALE 250.5
ORIENTED 1
DIGIREGION { 0 -0.5 639 479 }
CAMDATA {
    ID 1
    NAME "left CAP"
    MD 2
    C -4.914537
    XH 0.216378
    YH 0.058658
    R0 2.5
    RM 4.4
    A1 1
    A2 2
    A3 3
    B1 4
    B2 5
    C1 6
    C2 7
    CV 8
    XHV 9
    YHV 10
}
RESEAUFILE "OPENCV"
RESEAUSUBID 5
PRERESTRAFO { 2 0.5 1 0 479.5 0 -1 }
PRERESEAU { 4 "OPENCV" }
MAINRESTRAFO { 1 -3.168 0.0099 -2.376 0 }
MAINRESEAU { 4 "main" }
POLYRESINVTRAFO { 77 }
AORM {
    3 3
    1 0.1 0
    0 0.9999999999999999 0.2
    inf -inf 1
}
AORV { 3 101.5 198 1e+22 }
ZUSPPLANE {
    )" + Indented(kRectification) +
         R"(
}
LASTZUSPID 9
SCREENPOS { 120 80.5 }
SCREENSIZE 2
SCREENFLAGS 6
REGOI {
    1 -3 4 0.01 0.02
    2 5 -6 0.03 0.04
}
TPS_SETUP_ID "station 4")";
}

TEST(RecordExport, RecordsAreWrittenAsTheyAreRead) {
  const std::string strPhoto = Photo();
  EXPECT_EQ(Again(strPhoto, &ZuPhoto::Read, &ZuPhoto::Export), strPhoto);
  const std::string strOrtho = R"(ID 3 "facade.tif"
COMMENT "west"
RECTPIXEL 1200
TIME 2.5
SCALE 50
PLANEANGLE 8
DIGITALROT 1
MIRROR 3
PIXELSIZE { 0 0 4000 3000 }
OBJECTSIZE { 1 2 20 15 }
PLANEINFO {
    )" + Indented(kRectification) +
                               "\n}";
  EXPECT_EQ(Again(strOrtho, &ZuOrthoPhoto::Read, &ZuOrthoPhoto::Export), strOrtho);
  const std::string strLokal = "1 101 102\n4 103\n101 0.1 0.2 4e+09\n1 2 5.25\n3 4 6\n5 6 7";
  EXPECT_EQ(Again(strLokal, &ZuLokalSystem::Read, &ZuLokalSystem::Export), strLokal);
  const std::string strPlane = R"(3 "wall" 0.1 0.30000000000000004 -0.0 -12.25)";
  EXPECT_EQ(Again(strPlane, &ZuPlane::Read, &ZuPlane::Export), strPlane);
}

// An analog photo with a name in its pre-transformation had its own name moved to the comment.
TEST(RecordExport, NamesOfOlderFilesStayWhereTheyAre) {
  const std::string strOlder = R"(PHOTOID 1 "west" COMMENT "lost" PRERESEAU { 1 0 1 0 0 0 1 "r" })";
  const std::string strOnce = Again(strOlder, &ZuPhoto::Read, &ZuPhoto::Export);
  EXPECT_EQ(strOnce.substr(0, 16), "PHOTOID 1 \"west\"");
  EXPECT_NE(strOnce.find("PRERESEAU { 4 \"r\" }"), std::string::npos);
  EXPECT_EQ(Again(strOnce, &ZuPhoto::Read, &ZuPhoto::Export), strOnce);
}

TEST(RecordExport, DigitalCameraFilesAreWrittenAsTheyAreRead) {
  const TempFile file(
      "{ \"a \" 4294967295 \"\" 640 -480 0.30000000000000004 -1e-7 } { \"b\" 0 \"c\" 0 0 inf 1e300 "
      "}");
  std::string astrWritten[2];
  for (std::string& strWritten : astrWritten) {
    ZuReseaufileList formats;
    EXPECT_EQ(formats.ReadReseauFile(String(file.Path())), 2);
    std::ostringstream os;
    formats.ExportDigitalCameraFormat(os);
    file.Write(strWritten = os.str());
  }
  EXPECT_EQ(astrWritten[0], astrWritten[1]);
  EXPECT_NE(astrWritten[0].find("{ \"a \" 4294967295 \"\" 640 -480 0.30000000000000004 -1e-07 }\n"
                                "{ \"b\" 0 \"c\" 0 0 inf 1e+300 }\n"),
            std::string::npos)
      << astrWritten[0];
}

TEST(RecordExport, ReseausAndTextsOfAnyKindReadBack) {
  ZuReseauFile reseau, again;
  reseau.GenerateDummyData();
  reseau.SetComment(String(std::string(8000, 'x').c_str()));
  TempFile file("");
  {
    std::ofstream stream(file.Path());
    reseau.Export(stream);
  }
  again.ReadFile(String(file.Path()));
  EXPECT_TRUE(again.IsValid());
  EXPECT_EQ(again.GetComment(), reseau.GetComment());
  EXPECT_EQ(again.GetPhotoRegion(), reseau.GetPhotoRegion());
  EXPECT_EQ(again.GetBoxRegion(), reseau.GetBoxRegion());
  EXPECT_EQ(again.GetCrossList().Count(), 9);

  ZuPlane plane;
  plane.SetName("3\" pipe\n}");
  std::ostringstream os;
  plane.Export(os);
  EXPECT_EQ(os.str(), "0 \"3' pipe }\" 0 0 0 0");
}

}  // namespace
