#include <fstream>

#include "tests/support/temp_file.h"
#include "tests/support/test.h"
#include "zu/photo/detect_files.h"
#include "zu/photo/reseau_data_desc.h"
#include "zu/photo/reseau_file.h"

namespace {

String Sample(const char* szName) {
  return String((std::string(ZU_SOURCE_DIR "/samples/chessboard/") + szName).c_str());
}

TEST(Reseau, ReadsAReseauFile) {
  const ZuReseauFile reseau(Sample("reseau.txt"));
  ASSERT_TRUE(reseau.IsValid());
  EXPECT_STREQ(reseau.GetName(), "reseau.txt");
  EXPECT_STREQ(reseau.GetComment(), "left camera");
  EXPECT_EQ(reseau.GetPhotoRegion(), ZuRegion(-3.3264, -2.4948, 3.3264, 2.4948));
  EXPECT_EQ(reseau.GetBoxRegion(), ZuRegion(0.5544, -2.4948, 3.3264, -2.079));
  ASSERT_EQ(reseau.GetCrossList().Count(), 4);
  EXPECT_ROW("11 -2.376 2", reseau.GetCrossList().First()->GetId(),
             reseau.GetCrossList().Last()->m_dY, reseau.GetCrossList().Last()->m_sControl);
  EXPECT_DOUBLE_EQ(reseau.GetReseauWidth(), 6.336);
  EXPECT_DOUBLE_EQ(reseau.GetReseauHeight(), 4.752);
}

// The digital form derives the same frame.
TEST(Reseau, ReadsADigitalCameraFileIntoAList) {
  ZuReseaufileList list;
  EXPECT_EQ(list.ReadReseauFile(Sample("digital_cameras.txt")), 2);
  EXPECT_EQ(list.ReadReseauFile(Sample("reseau.txt")), 1);
  EXPECT_EQ(list.ReadReseauFile(Sample("reseau.txt")), 1);  // in place of the first
  EXPECT_EQ(list.ReadReseauFile(Sample("cameras.cam")), 0);
  ASSERT_EQ(list.Count(), 3);

  ZuReseauFile* pRight = list.FindReseauFile(ZuReseauDataDesc("opencv-stereo", 2));
  ASSERT_NE(pRight, nullptr);
  EXPECT_STREQ(pRight->GetComment(), "right camera");
  EXPECT_STREQ(pRight->GetDescName(), "OPENCV-STEREO (2) 640 * 480 Pixel");
  EXPECT_NEAR(pRight->GetCCDPixelSize(), 0.0099, 1e-15);
  EXPECT_EQ(pRight->GetCCDMPixel(), 307200.0);
  EXPECT_NEAR(pRight->GetPhotoRegion().Right(), 3.3264, 1e-14);
  EXPECT_NEAR(pRight->GetBoxRegion().Top(), -2.079, 1e-14);
  const ZuReseauFile& fromReseau = *list.Last();
  for (const ZuPoint *p = pRight->GetCrossList().First(), *q = fromReseau.GetCrossList().First();
       p != nullptr; p = p->Next(), q = q->Next()) {
    EXPECT_EQ(p->GetId(), q->GetId());
    EXPECT_DOUBLE_EQ(p->m_dX, q->m_dX);
    EXPECT_DOUBLE_EQ(p->m_dY, q->m_dY);
  }
  EXPECT_EQ(list.FindReseauFile(ZuReseauDataDesc("OPENCV-STEREO", 0)), nullptr);
}

TEST(Reseau, KeysMatchByNameAndSubId) {
  const ZuReseauDataDesc left("Frame", 1), right("FRAME", 2), any("frame", 0), other("Frames", 1);
  EXPECT_TRUE(left.Match(right) && !left.ExactMatch(right) && left == any && !(any == left));
  EXPECT_FALSE(left.Match(other));
  ZuReseauFile format;
  format.SetComment("text");
  ZuReseauDataDesc desc;
  desc.Set(&format);
  desc.Set("other", 5);
  EXPECT_STREQ(desc.GetComment(), "text");
}

TEST(Reseau, PlaceholderNamesAndSelection) {
  ZuReseauFile format;
  format.GenerateDummyData();
  EXPECT_FALSE(format.IsValid());
  EXPECT_EQ(format.GetCrossList().Count(), 9);
  format.SetSubId(3);
  EXPECT_STREQ(format.GetDescName(), ">>DUMMY DATA<<");  // no pixel counts: no sub id

  unsigned int uFirst = 0, uSecond = 0;
  EXPECT_NE(format.FindCrossId(uFirst, uSecond), 0);
  EXPECT_ROW("11 57", uFirst, uSecond);

  unsigned int ids[] = {34, 99, 14}, found[9] = {};
  EXPECT_ROW("2 0 2 14 1", format.SelectCross(ids, 3), format.SelectCross(nullptr, 3),
             format.FindUserSelectedCrosses(found, 9), found[0],
             format.FindUserSelectedCrosses(found, 1));
  EXPECT_ROW("-20000 1e-06", ZuReseauFile().GetReseauWidth(), ZuReseauFile().GetCCDPixelSize());

  ZuReseauFile made;
  made.CreateDigitalFormat(ZuRegion(0, 0, 639, 479), ZuRegion(-18, -12, 18, 12));
  EXPECT_ROW("639 12", made.GetExifPixelWidth(), made.GetCrossList().First()->m_dY);
  made.GenerateDummyData();
  EXPECT_EQ(made.GetCrossList().Count(), 4);
}

TEST(Reseau, WritersByteForByte) {
  ZuReseauFile format;
  format.SetName("DIGI");
  format.SetSubId(7);
  format.SetComment("a camera");
  format.CreateDigitalFormat(4000, 3000, 36.0, 24.0);
  std::ostringstream reseau, digital;
  format.Write(reseau);
  EXPECT_EQ(reseau.str(),
            "\"a camera\"\n{}\n{}\n"
            "{       11              -18               12    2}\n"
            "{       12               18               12    2}\n"
            "{       21              -18              -12    2}\n"
            "{       22               18              -12    2}\n");
  format.WriteDigitalCameraFormat(digital);
  EXPECT_EQ(digital.str(),
            "{ \"DIGI\"            7 \"a camera\"       4000   3000     36     24  }\n");

  // What the digital writer gives is read back.
  ZuReseaufileList list, back;
  list.Add(format);
  ZuReseauFile nine;
  nine.GenerateDummyData();
  list.Add(nine);  // has no line: not four crosses
  const TempFile file("");
  ASSERT_TRUE(list.WriteDigitalCameraFormat(file.Path()));
  EXPECT_EQ(back.ReadReseauFile(file.Path()), 1);
  EXPECT_STREQ(back.First()->GetDescName(), "DIGI (7) 4000 * 3000 Pixel");
  EXPECT_FALSE(list.WriteDigitalCameraFormat("/no/such/folder/file"));
  std::ostringstream header;
  format.WriteHeaderComment(header);
  EXPECT_NE(header.str().find("; ZUVOVISION 10 Version 8.205 Reseau File\n"), std::string::npos);
  EXPECT_NE(header.str().find(";              2 .. Not really a cross, a Corner of the Picture\n"),
            std::string::npos);
}

TEST(DetectFiles, TellsKindsByContent) {
  for (const auto& [szText, eType] : Cases<const char*, eZuvoFile>{
           {"; comment\n\"frame\" { 0 0 1 1 } { 0 0 1 1 }", eZuvoFileReseau},
           {"! c\n{ \"A\" 1 \"c\" 640 480 36 24 }", eZuvoFileDigitalCamera},
           {"{ 1 35 0 0 0 0 5 \"a\" }", eZuvoFileSimpleCamera},
           {"CAMERA { ID 1 }", eZuvoFileCamera},
           {"CAMERA { ID 1 }\nPHOTO { PHOTOID 1 \"a\" }", eZuvoFileProject},
           {"PLANE { 1 \"a\" 0 0 1 0 }", eZuvoFileProject},
           {"1 10.0 20.0 30.0\n2 11 21 31\n", eZuvoFileCoordinate},
           {"# points\nP12 10.0 20.0 30.0\n", eZuvoFileCoordinate},
           {"north wall 10.0 20.0\n", eZuvoFileUnknown},
           {"2\n1.0 2.0 3.0 4\n", eZuvoFilePts},
           {"1.5 2.0 3.0\n", eZuvoFilePts},
           {"ply\nformat ascii 1.0\n", eZuvoFilePly},
           {"*110001+0000000000000012 81..10+0000000000001000\n", eZuvoFileGsi},
           {"", eZuvoFileUnknown},
           {"hello world", eZuvoFileUnknown},
           {"{", eZuvoFileUnknown},
           {"\"", eZuvoFileUnknown},
       }) {
    const TempFile file(szText);
    EXPECT_EQ(ZuDetectZuvoFiles(file.Path()).GetType(), eType) << szText;
  }
  const TempFile cloud(std::string("\x0D\xF0\xBE\xBA\x02\0\0\0", 8));
  EXPECT_EQ(ZuDetectZuvoFiles(cloud.Path()).GetType(), eZuvoFileCloud);
  EXPECT_EQ(ZuDetectZuvoFiles("/no/such/file").GetType(), eZuvoFileUnknown);
  EXPECT_EQ(ZuDetectZuvoFiles(Sample("reseau.txt")).GetType(), eZuvoFileReseau);
  EXPECT_STREQ(GetZuvoFileText(eZuvoFileDigitalCamera), "digital camera file");
  EXPECT_STREQ(GetZuvoFileText(static_cast<eZuvoFile>(99)), "unknown file");
}

}  // namespace
