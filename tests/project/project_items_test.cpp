// The order of a file, and what stands in it that no record holds.
#include <sstream>

#include "tests/support/test.h"
#include "zu/project/project.h"

namespace {

constexpr char kFile[] =
    "\xEF\xBB\xBF"
    "WEATHER \"fair\" ; of the day\r\n"
    "PLANE { 3 \"floor\" 0 0 1 -2.5 }\r\n"
    "PHOTO { PHOTOID 1 \"a.jpg\" DRONE { HEIGHT 30 { 1 2 } \"}\" }\n"
    "  CAMDATA { ID 7 C 35 GLASS 2} STATE 0}\n"
    "LOKAL { 1 1 2 4 3 1 0 0 0 0 0 0 0 0 0 0 0 0 }\n"
    "CAMERA { ID 7 C 35 }\n"
    "SOUND { }\n"
    "MEASURE { PHOTOID 1 POINTS { 4 10.5 20 } }\n"
    "POINTS { 4 1 2 3\n 5 4 5 6 }";

// Everything in its order, each with its record, and the texts cut out byte for byte.
TEST(ProjectItems, TellTheFileInItsOrder) {
  std::istringstream stream(kFile);
  ZuProject project;
  ASSERT_TRUE(project.Read(stream, "a.prj"));
  std::string strOrder;
  for (const ZuProjectItem& item : project.GetItems()) {
    strOrder += item.m_pBlock != nullptr ? item.m_pBlock->m_strKeyword : item.m_pUnknown->m_strText;
    strOrder += item.m_pRecord != nullptr ? " " + std::to_string(item.m_pRecord->GetId()) : "";
    strOrder += item.m_iLocalSystem == 0 ? " 0|" : "|";
  }
  EXPECT_EQ(strOrder,
            "WEATHER \"fair\"|PLANE 3|PHOTO 1|LOKAL 0|CAMERA 7|SOUND { }|MEASURE|POINTS|");
  const ZuKeywordBlock& photo = *project.FindPhotoBlock(1);
  ASSERT_EQ(photo.m_unknown.size(), 1u);
  EXPECT_EQ(photo.m_unknown[0].m_strText, "DRONE { HEIGHT 30 { 1 2 } \"}\" }");
  EXPECT_EQ(photo.m_unknown[0].m_strAfter, "PHOTOID");
  EXPECT_EQ(photo.Find("CAMDATA")->m_unknown.at(0).m_strText, "GLASS 2");
  std::string strFindings;
  for (const ZuFinding& finding : project.GetFindings()) {
    strFindings += GetZuFindingLine(finding) + "\n";
  }
  EXPECT_EQ(strFindings,
            "a.prj:1:1: warning: unknown keyword WEATHER skipped\n"
            "a.prj:3:27: warning: unknown keyword DRONE skipped\n"
            "a.prj:4:23: warning: unknown keyword GLASS skipped\n"
            "a.prj:7:1: warning: unknown keyword SOUND skipped\n");
  EXPECT_ROW("1 1 1 1 2 6 20", project.PhotoList().Count(), project.CameraList().Count(),
             project.PlaneList().Count(), project.LocalSystems().size(),
             project.ObjectPoints().Count(), project.ObjectPoints().Last()->m_dZ,
             project.FindMeasurements(1)->First()->m_dY);
}

// A word that is none ends its record, also on the line of an unknown block: what is read as good
// is good when it was written.
TEST(ProjectItems, TellAWordThatIsNoneBesideAnUnknownBlock) {
  for (const char* szWord : {"1(0A",
                             "\xFF"
                             "0A 1",
                             "FUTURE 3D"}) {
    std::istringstream stream(std::string("PHOTO { PHOTOID 1 \"x\" NEW { 1 } ") + szWord + " }");
    ZuProject project;
    EXPECT_FALSE(project.Read(stream)) << szWord;
    ASSERT_EQ(project.GetFindings().GetErrorCount(), 1) << szWord;
  }
}

// Each known top-level record that is read is the one of its own block, also beside damaged ones.
TEST(ProjectItems, KeepTheirRecordsBesideDamage) {
  std::istringstream stream(
      "PHOTO 5 PHOTO { PHOTOID 1 \"a\" 12abc } PLANE 1 \"x\" 0 0 1 } PHOTO { PHOTOID 2 \"b\" }\n"
      "CAMERA { ID \"x\" } CAMERA { ID 3 } PLANE { 4 \"p\" 1 0 0 } PHOTO { PHOTOID 3 \"c");
  ZuProject project;
  EXPECT_FALSE(project.Read(stream));
  for (const ZuProjectItem& item : project.GetItems()) {
    if (item.m_pRecord == nullptr || item.m_pBlock->m_uId == 0) continue;
    EXPECT_EQ(item.m_pRecord->GetId(), item.m_pBlock->m_uId) << item.m_pBlock->m_strKeyword;
  }
  EXPECT_NE(project.PhotoList().Find(2u), nullptr);
  EXPECT_EQ(project.PhotoList().Find(3u), nullptr);  // cut
}

TEST(ProjectItems, DeviationsAndCovariancesAreHeldAgainstTheirRecords) {
  const std::string strPhoto = "PHOTO { PHOTOID 1 \"a\" }\nMEASURE { PHOTOID 1 POINTS { 4 10 20 } ";
  const struct {
    std::string strText;
    const char* szFinding;
    double dSigma;
  } cases[] = {
      {strPhoto + "SIGMA { 4 0.1 0.2 } }", "", 0.2},
      {strPhoto + "SIGMA { 4 0.1 0.2", "the file ends inside", 0.0},
      {strPhoto + "SIGMA { 9 0.1 0.2 } }", ":2:40: error: SIGMA of point 9, which is not", 0.0},
      {strPhoto + "SIGMA { 4 0.1 -1 } }", "SIGMA of point 4 is not above 0", 0.0},
      {strPhoto + "} COVARIANCE { PHOTOID 1 PARAMETERS \"c\" MATRIX { 2 2 1 0 0 1 } }",
       "COVARIANCE with 2 x 2 elements; 7 x 7 would be right", 0.0},
      {strPhoto + "} COVARIANCE { CAMERAID 1 PARAMETERS \"c\" MATRIX { 1 1 -1 } }",
       "COVARIANCE with a negative variance", 0.0},
      {strPhoto + "} COVARIANCE { CAMERAID 1 PARAMETERS \"c\" MATRIX { 1 1 nan } }", "error", 0.0},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.strText);
    std::istringstream stream(c.strText);
    ZuProject project;
    EXPECT_EQ(project.Read(stream, "a.prj"), c.szFinding[0] == 0);
    std::string strFindings;
    for (const ZuFinding& finding : project.GetFindings()) {
      strFindings += GetZuFindingLine(finding);
    }
    EXPECT_NE(strFindings.find(c.szFinding), std::string::npos) << strFindings;
    EXPECT_EQ(project.Measurements(1).First()->m_dDY, c.dSigma);
    EXPECT_TRUE(project.Covariances().IsEmpty());
  }
}

}  // namespace
