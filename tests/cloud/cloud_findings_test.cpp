// What files of clouds are, what is missing in them, and what becomes of normals.
#include <cmath>
#include <map>

#include "cloud_support.h"
#include "tests/support/temp_file.h"
#include "zu/cloud/cloud_detect.h"
#include "zu/numerics/affin_map3d.h"

namespace {

std::string Text(const ZuReadFindings& findings) {
  std::string strText;
  for (const ZuReadFinding& f : findings) strText += std::to_string(f.m_eKind) + f.m_strText + ";";
  return strText;
}

}  // namespace

TEST(CloudFindings, KindsAreToldByContent) {
  const struct {
    std::string strHead;
    eZuCloudFile eKind;
    const char* szLooksLike;
  } cases[] = {{{"\x0D\xF0\xBE\xBA", 4}, eZuCloudFileBinary, ""},
               {"ply\nformat ascii 1.0\n", eZuCloudFilePly, ""},
               {"2\n1 2 3 4\n", eZuCloudFilePts, ""},
               {"# title\n1 2 3\n4 5 6\n", eZuCloudFilePts, ""},
               {"637012,24 849028,31 431,66\n", eZuCloudFilePts, ""},
               {"6371.24 8490.31 431.66 17\n6372.24 8491.31 432.66 18\n", eZuCloudFilePts, ""},
               {"6371 8490.5 431.66 17.5\n6371 8491.5 432.66 18.5\n", eZuCloudFilePts, ""},
               {"101 2.5 3.5 4.5\n102 6.5 7.5 8.5\n103 2.5 3.5 4", eZuCloudFileCoordinates, ""},
               {"P1 2.5 3 4\n", eZuCloudFileCoordinates, ""},
               {"id,x,y,z\n1,2.5,3,4\n", eZuCloudFileCoordinates, ""},
               {"1;2.5;3;4\n", eZuCloudFileCoordinates, ""},
               {"101 2 3 4\n102 6 7 8\n", eZuCloudFileEither, ""},
               {"LASF\x01\x02", eZuCloudFileLas, ""},
               {"ASTM-E57", eZuCloudFileE57, ""},
               {"//X Y Z\n1 2 3\n", eZuCloudFileNone, "column names"},
               {"*110001+0000000000000012 81..00+0000000000001234\n", eZuCloudFileNone, "GSI"},
               {"root:x:0:0:root:/root:/bin/bash\n", eZuCloudFileNone, "text: \"root:x"},
               {"100\n200\n0 0 0\n", eZuCloudFileNone, "PTX"},
               {{"\0\0\0", 3}, eZuCloudFileNone, "binary data"},
               {"", eZuCloudFileNone, "an empty file"}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.strHead);
    std::string strLooksLike;
    EXPECT_EQ(ZuDetectCloudFile(c.strHead.data(), c.strHead.size(), &strLooksLike), c.eKind);
    EXPECT_NE(strLooksLike.find(c.szLooksLike), std::string::npos) << strLooksLike;
    EXPECT_EQ(strLooksLike.empty(), c.eKind != eZuCloudFileNone);
  }
}

// A binary file cut at any place, damaged, or longer than it says.
TEST(CloudFindings, BinaryFilesTellWhatIsMissing) {
  ZuPointCloudContainer container;
  FillContainer(container, {3, 2});
  const TempFile file;
  ASSERT_EQ(container.Write(file.Path()), 1);
  const std::string strFile = file.Read();
  const std::size_t uSecond = strFile.size() - 2 * 58 - (4 + 60 + 4 + 472 + 4);
  for (std::size_t n = 12; n <= strFile.size(); ++n) {
    ZuPointCloudContainer part;
    part.Read(MemoryFile(strFile.substr(0, n)).Path());
    ASSERT_EQ(part.GetFindings().IsWhole(), n == strFile.size()) << n;
  }
  std::string strBadCloud = strFile, strBadPoint = strFile;
  strBadCloud[uSecond] ^= 1;
  strBadPoint[strFile.size() - 58] ^= 1;
  const std::map<std::string, std::string> cases = {
      {strFile, ""},
      {strFile + "more",
       "2"
       "4 bytes stand behind the last cloud;"},
      {strFile.substr(0, strFile.size() - 1),
       "4"
       "cloud 2 ends early; points that are announced and missing: 1;"},
      {strFile.substr(0, uSecond),
       "4"
       "2 clouds are announced, the file ends after 1;"},
      {strBadPoint,
       "4"
       "cloud 2 ends early; points that are announced and missing: 1;"
       "2"
       "54 bytes stand behind the last cloud;"}};
  for (const auto& [strBytes, strFindings] : cases) {
    ZuPointCloudContainer part;
    part.Read(MemoryFile(strBytes).Path());
    EXPECT_EQ(Text(part.GetFindings()), strFindings);
  }
  ZuPointCloudContainer part;
  EXPECT_EQ(part.Read(MemoryFile(strBadCloud).Path()), 1);
  EXPECT_EQ(Text(part.GetFindings()).substr(0, 29),
            "4cloud 2 at byte " + std::to_string(uSecond) + " is damag");
}

// A normal stays at right angles to its surface under any map, with the length 1.
TEST(CloudFindings, NormalsTurnWithTheSurface) {
  ZuAffinMap3d mirror;
  mirror.asDblArray()[0] = -1.0;
  const ZuAffinMap3d maps[] = {ZuAffinMap3d::RotXYZ(0.1, 2.0, -0.3), mirror,
                               ZuAffinMap3d::Translate(1e6, 2.0, 3.0) *
                                   ZuAffinMap3d::Scale(1e-3, 2e-3, 5e-3) *
                                   ZuAffinMap3d::RotXYZ(1.0, 0.5, 0.25)};
  for (const ZuAffinMap3d& map : maps) {
    ZuPointCloud cloud;
    for (ZuScanPoint3d p : RandomPoints(50, 3)) {
      p.m_fNX = static_cast<float>(p.x);
      p.m_fNZ = static_cast<float>(p.z);
      cloud.AddPoint(p);
    }
    cloud.AddPoint(ZuScanPoint3d());
    const auto old = cloud.GetPoints();
    ASSERT_TRUE(cloud.TransformNormals(map));
    for (std::size_t i = 0; i < 50; ++i) {
      const ZuScanPoint3d &n = cloud.GetPoints()[i], &o = old[i];
      // A direction in the surface, moved with the map.
      const double adTangent[3] = {-o.m_fNZ, 0.0, o.m_fNX};
      const double* const m = map.asDblArray();
      double adMoved[3], dDot = 0.0, dLength = 0.0;
      for (int k = 0; k < 3; ++k) {
        adMoved[k] = m[4 * k] * adTangent[0] + m[4 * k + 2] * adTangent[2];
        dLength += adMoved[k] * adMoved[k];
      }
      dDot = n.m_fNX * adMoved[0] + n.m_fNY * adMoved[1] + n.m_fNZ * adMoved[2];
      EXPECT_NEAR(dDot / std::sqrt(dLength), 0.0, 1e-6);
      EXPECT_NEAR(std::hypot(n.m_fNX, n.m_fNY, n.m_fNZ), 1.0, 1e-6);
    }
    EXPECT_FALSE(cloud.GetPoints()[50].HasNormVector());
  }
  EXPECT_FALSE(ZuPointCloud().TransformNormals(ZuAffinMap3d::Scale(1.0, 1.0, 0.0)));
}
