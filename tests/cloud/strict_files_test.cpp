// The readers that hold PTS and PLY files to their format, and their writers.
#include <functional>

#include "cloud_support.h"
#include "tests/support/count_allocations.h"
#include "tests/support/temp_file.h"
#include "zu/cloud/ply_file.h"
#include "zu/cloud/pts_file.h"

namespace {

struct Read {
  ZuCloudReading reading;
  std::vector<ZuScanPoint3d> points;
  Read(ZuCloudReading (*pfnRead)(const char*, ZuPointCloudContainer&, eZuReadMode),
       const std::string& strText) {
    const MemoryFile file(strText);
    ZuPointCloudContainer container;
    reading = pfnRead(file.Path(), container, eZuReadStrict);
    if (!reading.m_pCloud) return;
    points = reading.m_pCloud->GetPoints();
    EXPECT_LE(points.capacity(), strText.size() + 1);  // no count decides an allocation
    EXPECT_EQ(BoxValues(container.GetBox()), BoxValues([&] {
                ZuBoundingBox3d box;
                box.Union(reading.m_pCloud->GetBox());
                return box;
              }()));
  }
  // "cut 1", "fault 3:7": kind and place of the heaviest finding; empty without one.
  std::string Heaviest() const {
    static const char* const kKinds[] = {"note", "assumed", "dropped", "clamped", "cut", "fault"};
    const ZuReadFinding* pMost = nullptr;
    for (const ZuReadFinding& f : reading.m_Findings) {
      if (!pMost || f.m_eKind > pMost->m_eKind) pMost = &f;
    }
    if (!pMost) return "";
    return std::string(kKinds[pMost->m_eKind]) + " " + std::to_string(pMost->m_uLine) +
           (pMost->m_uColumn > 0 ? ":" + std::to_string(pMost->m_uColumn) : "");
  }
};

Read Pts(const std::string& strText) { return Read(ZuReadPts, strText); }
Read Ply(const std::string& strText) { return Read(ZuReadPly, strText); }

using Write = std::function<bool(const char*, const ZuPointCloudContainer&)>;

std::string Written(const std::vector<ZuScanPoint3d>& points, const Write& write) {
  ZuPointCloudContainer container;
  const std::size_t uHalf = points.size() / 2;
  for (std::size_t i = 0; i < points.size(); ++i) {
    if (i == 0 || i == uHalf) container.AddCloud();
    container.GetClouds().Last()->AddPoint(points[i]);
  }
  const TempFile file;
  EXPECT_TRUE(write(file.Path(), container));
  return file.Read();
}

Write PlyWriter(eZuPlyForm eForm, eZuIntensityScale eScale) {
  return [=](const char* sz, const auto& clouds) { return ZuWritePly(sz, clouds, eForm, eScale); };
}
Write PtsWriter(eZuPtsDialect eDialect, eZuIntensityScale eScale) {
  return [=](const char* sz, const auto& clouds) {
    return ZuWritePts(sz, clouds, {eDialect, eScale, true});
  };
}

// Points as a text file can hold them: no deviations, no selection.
std::vector<ZuScanPoint3d> TextPoints(bool bNormals, std::uint32_t uColors, bool bLevels) {
  auto points = RandomPoints(300, 21);
  for (std::size_t i = 0; i < points.size(); ++i) {
    ZuScanPoint3d& p = points[i];
    p.m_fDX = p.m_fDZ = 0.0f;
    p.m_sFlags = bLevels ? p.m_sFlags & 0xFF : 0;
    p.m_uColor &= uColors;
    if (bNormals) p.m_fNX = 1e-9f * static_cast<float>(i);
    if (!bNormals) p.m_fNY = 0.0f;
  }
  points[0].x = 5403200.123;
  points[1].y = 1e-300;
  points[2].z = -0.0;
  points[3].x = std::numeric_limits<double>::infinity();
  return points;
}

const std::string kPly =
    "ply\nformat ascii 1.0\ncomment seven lines\nelement camera 2\nproperty double f\n"
    "element vertex 2\nproperty uchar blue\nproperty int q\nproperty float Z\nproperty double x\n"
    "property list uchar int ids\nproperty double y\nproperty uchar red\nproperty uchar green\n"
    "property ushort intensity\nelement face 1\nproperty list uchar int vertex_indices\n"
    "end_header\n35.5\n36.5\n3 -7 0.5 5403200.123 2 8 9 -1e-3 1 2 65535\n"
    "6 -7 1.5 1 0 -2 4 5 258\n3 0 1 0\n";

}  // namespace

TEST(StrictFiles, WhatWasWrittenComesBackBitForBit) {
  for (const bool bNormals : {false, true}) {
    for (const std::uint32_t uColors : {0u, 0xFFFFFFu, 0xFF000000u, 0xFFFFFFFFu}) {
      for (const eZuIntensityScale eScale : {eZuIntensity255, eZuIntensity65535}) {
        const bool bLevels = eScale == eZuIntensity65535 && uColors >> 24 != 0;
        const auto points = TextPoints(bNormals, uColors, bLevels);
        for (const eZuPlyForm eForm : {eZuPlyAscii, eZuPlyBinaryLittle, eZuPlyBinaryBig}) {
          const Read back = Ply(Written(points, PlyWriter(eForm, eScale)));
          EXPECT_TRUE(SamePoints(back.points, points)) << bNormals << uColors << eScale << eForm;
          EXPECT_EQ(back.Heaviest().substr(0, 7), "assumed");  // an infinite coordinate
        }
        if (bNormals) continue;
        const Read back = Pts(Written(points, PtsWriter(eZuPtsRgb, eScale)));
        EXPECT_TRUE(SamePoints(back.points, points)) << uColors << eScale;
      }
    }
  }
}

TEST(StrictFiles, PropertiesCountByTheirNames) {
  const Read read = Ply(kPly);
  ASSERT_EQ(read.points.size(), 2u);
  const ZuScanPoint3d& p = read.points[0];
  EXPECT_EQ(std::make_tuple(p.x, p.y, p.z, p.w), std::make_tuple(5403200.123, -1e-3, 0.5, 1.0));
  EXPECT_EQ(p.m_uColor, 0xFF030201u);
  EXPECT_EQ(read.reading.m_eIntensity, eZuIntensity65535);
  EXPECT_EQ(ZuIntensityOf(read.points[1], eZuIntensity65535), 258);
  EXPECT_EQ(read.Heaviest(), "dropped 0");  // q and ids, the camera and the face
}

// Each way a file leaves its format: the heaviest finding, with line and column, and what is kept.
TEST(StrictFiles, FaultsAreNamedWithTheirPlace) {
  const std::string strHead =
      "ply\nformat ascii 1.0\nelement vertex 2\nproperty float x\nproperty float y\n"
      "property float z\nproperty float red\nend_header\n";
  const struct {
    bool bPly;
    std::string strText;
    const char* szFinding;
    std::size_t uPoints;
  } cases[] = {{false, "2\n1 2 3\n4 5 6\n", "", 2},
               {false, "\xEF\xBB\xBF# scan\r\n2\r\n\r\n1 2 3\r\n4 5 6", "note 1", 2},
               {false, "3\n1 2 3\n4 5 6\n", "cut 1", 2},
               {false, "2\n1 2 3\n2\n1 2 3\n4 5 6\n", "cut 1", 3},
               {false, "1\n1 2 3\n4 5 6\n", "assumed 1", 2},
               {false, "999999999999999\n1 2 3\n", "cut 1", 1},
               {false, "2\n1 2 3\n4 5", "cut 3", 1},
               {false, "2\n1 2 3\n4 5\n", "fault 3", 1},
               {false, "2\n1 2 3\n4 5 6 7\n", "fault 3", 1},
               {false, "2\n637012.24 1 2\n637012,24 849028,31 431,66\n", "fault 3:1", 1},
               {false, "1 2 3\n4 5 6x\n", "fault 2:5", 1},
               {false, "1,2,3\n", "fault 1:1", 0},
               {false, "//X Y Z\n1 2 3\n", "fault 1:1", 0},
               {false, "1 2 0x10\n", "fault 1:5", 0},
               {false, "-3\n1 2 3\n", "fault 1:1", 0},
               {false, "1 2 3 4 5\n", "dropped 1:7", 1},
               {false, "1 2 inf\n", "assumed 1", 1},
               {false, "1 2 3 7 256 -1 0\n", "clamped 1:9", 1},
               {false, std::string(70000, '1'), "cut 1:1", 0},
               {false, std::string(700000, '1'), "fault 1", 0},
               {true, strHead + "1 2 3 0.5\n4 5 6 1\n", "", 2},
               {true, strHead + "1 2 3 4\n", "cut 9", 1},
               {true, strHead + "1 2 3 4\n5 6", "cut 10:4", 1},
               {true, strHead + "1 2 3 4\n5 6\n", "fault 10:4", 1},
               {true, strHead + "1 2 3 4\n5 6,5 7 8\n", "fault 10:3", 1},
               {true, strHead + "1 2 3 4 5\n5 6 7 8\n", "dropped 9:9", 2},
               {true, strHead + "1 2 3 4\n5 6 7 8\n9\n", "dropped 11", 2},
               {true, strHead + "1 2 3 -4\n5 6 7 256\n", "clamped 0", 2},
               {true, strHead.substr(0, 60), "cut 5", 0},
               {true, "plyx\n" + strHead, "fault 1", 0},
               {true, "ply\nformat ascii 1.0\nelement vertex 1e3\n", "fault 3", 0},
               {true, "ply\nformat text 1.0\n", "fault 2", 0},
               {true, "ply\nproperty float x\n", "fault 2", 0},
               {true, "ply\nelement vertex 1\nproperty real x\n", "fault 3", 0},
               {true, "ply\nelement vertex 1\nproperty float x\nend_header\n1\n", "fault 4", 0},
               {true, "ply\nformat ascii 1.0\nelement face 1\nend_header\n", "fault 4", 0},
               {true, "ply\nformat ascii 1.0\nelement vertex 1\nproperty float x\nend_header\n1\n",
                "fault 5", 0},
               {true, "ply\n" + std::string(3000000, 'x'), "fault 2", 0}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.strText.substr(0, 300));
    const Read read = c.bPly ? Ply(c.strText) : Pts(c.strText);
    EXPECT_EQ(read.Heaviest(), c.szFinding);
    EXPECT_EQ(read.points.size(), c.uPoints);
    for (const auto& p : read.points) EXPECT_EQ(p.w, 1.0);
  }
}

// The scale comes from all values; 0 to 255 and 0 to 65535 keep their levels.
TEST(StrictFiles, IntensitiesKeepTheirLevels) {
  const struct {
    const char* szLines;
    eZuIntensityScale eScale;
    std::vector<int> levels;
    const char* szFinding;
  } cases[] = {
      {"1 2 3 0\n1 2 3 7\n1 2 3 255\n", eZuIntensity255, {0, 7, 255}, ""},
      {"1 2 3 0\n1 2 3 256\n1 2 3 65535\n", eZuIntensity65535, {0, 256, 65535}, ""},
      {"1 2 3 -2000\n1 2 3 0\n1 2 3 1985\n", eZuIntensity2000, {-2000, 0, 1985}, ""},
      {"1 2 3 0.5\n1 2 3 1\n1 2 3 0\n", eZuIntensity65535, {32768, 65535, 0}, "assumed 0"},
      {"1 2 3 nan\n1 2 3 70000\n1 2 3 1\n", eZuIntensity65535, {0, 65535, 1}, "clamped 1:7"}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.szLines);
    const Read read = Pts(c.szLines);
    EXPECT_EQ(read.reading.m_eIntensity, c.eScale);
    EXPECT_EQ(read.Heaviest(), c.szFinding);
    std::vector<int> levels;
    for (const auto& p : read.points) levels.push_back(ZuIntensityOf(p, c.eScale));
    EXPECT_EQ(levels, c.levels);
    const Read back = Pts(Written(read.points, PtsWriter(eZuPtsIntensity, c.eScale)));
    EXPECT_TRUE(SamePoints(back.points, read.points));
  }
}

TEST(StrictFiles, DialectsAndTheirColumns) {
  const auto points = std::vector<ZuScanPoint3d>{{0.1, 2, 3, 0x07030201}};
  const struct {
    eZuPtsDialect eDialect;
    const char* szText;
  } cases[] = {{eZuPtsAuto, "1\n0.1 2 3 7 1 2 3\n"},
               {eZuPtsPlain, "1\n0.1 2 3\n"},
               {eZuPtsIntensity, "1\n0.1 2 3 7\n"},
               {eZuPtsRgb, "1\n0.1 2 3 7 1 2 3\n"}};
  for (const auto& c : cases) {
    EXPECT_EQ(Written(points, PtsWriter(c.eDialect, eZuIntensityNone)), c.szText);
  }
  EXPECT_EQ(Written({{0.5, 2, 3, 0}}, PtsWriter(eZuPtsAuto, eZuIntensityNone)), "1\n0.5 2 3\n");
  ZuScanPoint3d low(0.5, 2, 3, 0);  // of 65,536 levels one in the lower half
  ASSERT_TRUE(ZuSetIntensity(low, 66, eZuIntensity65535));
  EXPECT_EQ(Written({low}, PtsWriter(eZuPtsAuto, eZuIntensity65535)), "1\n0.5 2 3 66\n");
  low.m_fNX = 1.0f;
  const Read back = Ply(Written({low}, PlyWriter(eZuPlyAscii, eZuIntensity65535)));
  EXPECT_TRUE(SamePoints(back.points, {low}));
  EXPECT_FALSE(ZuWritePly("/dev/full", ZuPointCloudContainer(), eZuPlyAscii));
  EXPECT_FALSE(ZuWritePts("/nowhere/at/all", ZuPointCloudContainer(), {}));
}

// A file cut anywhere is never taken as whole, and keeps the points before the cut; any damage and
// any shortage of memory end in order.
TEST(StrictFiles, CutDamagedAndWithoutMemory) {
  const auto points = TextPoints(true, 0xFFFFFFFFu, false);
  const std::vector<ZuScanPoint3d> some(points.begin(), points.begin() + 4);
  std::vector<std::string> files = {kPly, Written(some, PtsWriter(eZuPtsRgb, eZuIntensity255))};
  for (const eZuPlyForm eForm : {eZuPlyAscii, eZuPlyBinaryLittle, eZuPlyBinaryBig}) {
    files.push_back(Written(some, PlyWriter(eForm, eZuIntensity255)));
  }
  files.push_back(files[3]);  // a list in the rows of a binary file
  files[5].replace(files[5].find("float nx"), 8, "list uchar uchar nx");
  constexpr unsigned int kSeed = 5;
  std::mt19937 random(kSeed);
  for (const std::string& strFile : files) {
    const auto read = strFile[0] == 'p' ? Ply : Pts;
    const std::size_t uAll = read(strFile).points.size();
    for (std::size_t n = 0; n < strFile.size() && &strFile != &files[5]; ++n) {
      const Read part = read(strFile.substr(0, n));
      if (n + 1 < strFile.size() || strFile.back() != '\n') {
        const bool bLastDigits = part.points.size() == uAll;  // nobody can see those missing
        EXPECT_TRUE(!part.reading.m_Findings.IsWhole() || bLastDigits || n == 0) << n;
      }
    }
    for (int i = 0; i < 1500; ++i) {
      std::string strDamaged = strFile;
      for (auto n = 1 + random() % 3; n > 0; --n) {
        strDamaged[random() % strDamaged.size()] = static_cast<char>(random() % 256);
      }
      EXPECT_LE(read(strDamaged).points.size(), strDamaged.size());
    }
    const TempFile file(strFile);
    for (std::size_t n = 0;; ++n) {
      ZuPointCloudContainer container;
      const AllocationFault fault(n, true);
      const auto reading =
          strFile[0] == 'p' ? ZuReadPly(file.Path(), container) : ZuReadPts(file.Path(), container);
      if (!fault.HasStruck()) break;
      EXPECT_FALSE(reading.m_Findings.IsWhole() && container.Size() < uAll) << n;
    }
  }
}
