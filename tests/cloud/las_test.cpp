// LAS files against bytes that are put together here after the published layout, and against the
// plain formula of a coordinate.
#include <cmath>
#include <map>

#include "cloud_support.h"
#include "tests/support/temp_file.h"
#include "zu/cloud/las_file.h"
#include "zu/cloud/pts_file.h"

namespace {

template <class T>
void Put(std::string& strBytes, std::size_t uAt, T value) {
  if (strBytes.size() < uAt + sizeof(T)) strBytes.resize(uAt + sizeof(T));
  std::memcpy(strBytes.data() + uAt, &value, sizeof(T));
}
template <class T>
T Get(const std::string& strBytes, std::size_t uAt) {
  T value{};
  std::memcpy(&value, strBytes.data() + uAt, sizeof(T));
  return value;
}

// Two points; the first (12.34, -5, 7.5), intensity 40000, colour 258 65535 511 in formats that
// have one; 3 extra bytes each, and a variable length record in front.
std::string MadeLas(int iMinor, int iFormat) {
  const std::size_t auSizes[] = {20, 28, 26, 34, 57, 63, 30, 36, 38, 59, 67};
  const std::map<int, std::size_t> colors = {{2, 20}, {3, 28}, {5, 28}, {7, 30}, {8, 30}, {10, 30}};
  const std::size_t uHeader = iMinor == 4 ? 375 : iMinor == 3 ? 235 : 227;
  const std::size_t uSize = auSizes[iFormat] + 3, uOffset = uHeader + 54 + 10;
  std::string s = "LASF";
  Put<std::uint8_t>(s, 24, 1);
  Put<std::uint8_t>(s, 25, static_cast<std::uint8_t>(iMinor));
  Put<std::uint16_t>(s, 94, static_cast<std::uint16_t>(uHeader));
  Put<std::uint32_t>(s, 96, static_cast<std::uint32_t>(uOffset));
  Put<std::uint32_t>(s, 100, 1);
  Put<std::uint8_t>(s, 104, static_cast<std::uint8_t>(iFormat));
  Put<std::uint16_t>(s, 105, static_cast<std::uint16_t>(uSize));
  Put<std::uint32_t>(s, 107, iMinor == 4 ? 0 : 2);
  for (std::size_t i = 0; i < 3; ++i) Put<double>(s, 131 + 8 * i, 0.01);
  Put<double>(s, 155, 10.0);
  if (iMinor == 4) Put<std::uint64_t>(s, 247, 2);
  s.resize(uHeader + 2);
  s += "LASF_Projection";
  Put<std::uint16_t>(s, uHeader + 18, 2112);
  Put<std::uint16_t>(s, uHeader + 20, 10);
  s.resize(uOffset + 2 * uSize);
  Put<std::int32_t>(s, uOffset, 234);
  Put<std::int32_t>(s, uOffset + 4, -500);
  Put<std::int32_t>(s, uOffset + 8, 750);
  Put<std::uint16_t>(s, uOffset + 12, 40000);
  Put<std::uint8_t>(s, uOffset + (iFormat >= 6 ? 16 : 15), 6);  // a building
  if (const auto color = colors.find(iFormat); color != colors.end()) {
    std::size_t uAt = uOffset + color->second;
    for (const std::uint16_t u : {258, 65535, 511}) Put(s, std::exchange(uAt, uAt + 2), u);
  }
  return s;
}

ZuCloudReading Read(const std::string& strBytes, ZuPointCloudContainer& clouds) {
  const MemoryFile file(strBytes);
  return ZuReadLas(file.Path(), clouds);
}

std::string TextOf(const ZuCloudReading& reading) {
  std::string strText;
  for (const ZuReadFinding& finding : reading.m_Findings)
    strText += GetZuFindingLine(finding) + '\n';
  return strText;
}

}  // namespace

TEST(Las, ReadsEveryPointFormat) {
  for (int iFormat = 0; iFormat <= 10; ++iFormat) {
    for (const int iMinor : {2, 3, 4}) {
      SCOPED_TRACE(::testing::Message() << "LAS 1." << iMinor << ", format " << iFormat);
      ZuPointCloudContainer clouds;
      const ZuCloudReading reading = Read(MadeLas(iMinor, iFormat), clouds);
      ASSERT_TRUE(reading.m_pCloud && reading.m_Findings.IsWhole()) << TextOf(reading);
      ASSERT_EQ(reading.m_pCloud->GetPointCount(), 2u);
      const ZuScanPoint3d& p = reading.m_pCloud->GetPoints()[0];
      EXPECT_EQ(p.x, 12.34);
      EXPECT_EQ(p.y, -5.0);
      EXPECT_EQ(p.z, 7.5);
      EXPECT_EQ(ZuIntensityOf(p, reading.m_eIntensity), 40000);
      const bool bColor = iFormat == 2 || iFormat == 3 || iFormat == 5 || iFormat == 7 ||
                          iFormat == 8 || iFormat == 10;
      EXPECT_EQ(p.GetColor(), bColor ? 0x01FF01u : 0u);
      EXPECT_NE(TextOf(reading).find("does not keep: classes, extra bytes"), std::string::npos);
      EXPECT_NE(TextOf(reading).find("coordinate system"), std::string::npos);
    }
  }
}

// Cut at every byte, and headers that contradict themselves.
TEST(Las, SaysWhatIsWrong) {
  const std::string strWhole = MadeLas(4, 7);
  for (std::size_t n = 0; n < strWhole.size(); ++n) {
    ZuPointCloudContainer clouds;
    EXPECT_FALSE(Read(strWhole.substr(0, n), clouds).m_Findings.IsWhole()) << n;
  }
  const struct {
    std::size_t uAt;
    std::uint64_t uValue;
    std::size_t uSize;
    const char* szText;
  } cases[] = {{104, 0x87, 1, "LAZ; the LAS file of `laszip"},
               {104, 11, 1, "format 11"},
               {25, 5, 1, "version 1.5"},
               {94, 374, 2, "has 374 bytes"},
               {96, 100, 4, "begin at byte 100"},
               {96, 99999, 4, "begin at byte 99999"},
               {105, 35, 2, "points of 35 bytes"},
               {131, 0, 8, "scale or offset of x"},
               {100, 77, 4, "record 2 of 77"},
               {375 + 20, 60000, 2, "record 1 of 1"},
               {247, ~0ull, 8, "are announced, 2 are"},
               {107, 3, 4, "two numbers of points"},
               {375 + 2, 0, 0, "is packed as LAZ"}};
  for (const auto& c : cases) {
    std::string strBytes = strWhole;
    std::memcpy(strBytes.data() + c.uAt, &c.uValue, c.uSize);
    if (c.uSize == 0) strBytes.replace(c.uAt, 15, std::string("laszip encoded\0", 15));
    ZuPointCloudContainer clouds;
    EXPECT_NE(TextOf(Read(strBytes, clouds)).find(c.szText), std::string::npos)
        << TextOf(Read(strBytes, clouds)) << c.szText;
  }
}

// Extents from millimetres to the whole range of doubles, near the origin and far away.
TEST(Las, HoldsHalfTheResolution) {
  std::mt19937_64 random(23);
  for (const double dExtent : {1e-3, 40.0, 3e5, 1e12, 1e299}) {
    for (const double dFrom : {0.0, 5403200.123, -1e9}) {
      for (const double dResolution : {0.0, dExtent / 1e6}) {
        SCOPED_TRACE(::testing::Message() << dExtent << " from " << dFrom << ", " << dResolution);
        OpenContainer clouds, again;
        auto points = RandomPoints(300, 5);
        std::uniform_real_distribution<double> spread(0.0, dExtent);
        for (auto& p : points) p.x = dFrom + spread(random), p.y = spread(random), p.z = -dFrom;
        AddPoints(*clouds.AddCloud(), points);
        clouds.First()->AddPoint(ZuScanPoint3d(NAN, 0, 0, 0));
        const TempFile file, second;
        const ZuLasWriting las =
            ZuWriteLas(file.Path(), clouds, {dResolution, eZuIntensity65535, 2});
        ASSERT_TRUE(las.m_bGood) << las.m_strFault;
        EXPECT_EQ(las.m_uLeftOut, 1u);
        const std::string s = file.Read();
        ASSERT_EQ(s.size(), 227u + 26u * points.size());
        EXPECT_EQ(Get<std::uint32_t>(s, 107), points.size());
        EXPECT_EQ(Get<std::uint32_t>(s, 111), points.size());
        for (std::size_t i = 0; i < points.size(); ++i) {
          const double ad[] = {points[i].x, points[i].y, points[i].z};
          for (std::size_t k = 0; k < 3; ++k) {
            const double dScale = Get<double>(s, 131 + 8 * k);
            const double dValue =
                Get<std::int32_t>(s, 227 + 26 * i + 4 * k) * dScale + Get<double>(s, 155 + 8 * k);
            EXPECT_LE(std::fabs(dValue - ad[k]), 0.5 * dScale + 4e-16 * std::fabs(ad[k]));
            EXPECT_LE(Get<double>(s, 187 + 16 * k), dValue + 4e-16 * std::fabs(dValue));
            EXPECT_GE(Get<double>(s, 179 + 16 * k), dValue - 4e-16 * std::fabs(dValue));
            EXPECT_TRUE(dResolution == 0.0 || dScale == dResolution);
          }
          EXPECT_EQ(Get<std::uint16_t>(s, 227 + 26 * i + 12),
                    ZuIntensityOf(points[i], eZuIntensity65535));
          EXPECT_EQ(Get<std::uint16_t>(s, 227 + 26 * i + 22), points[i].GetGreen() * 256);
        }
        // What was written once is written the same again.
        const ZuCloudReading reading = ZuReadLas(file.Path(), again);
        EXPECT_TRUE(reading.m_Findings.IsEmpty()) << TextOf(reading);
        ASSERT_TRUE(
            ZuWriteLas(second.Path(), again, {las.m_adResolution[0], reading.m_eIntensity, 2})
                .m_bGood);
        EXPECT_TRUE(dResolution == 0.0 || second.Read() == s);
      }
    }
  }
}

// Decimal coordinates come back as they were, of both versions, to the bit.
TEST(Las, KeepsDecimals) {
  for (const char* szName : {"autzen.pts", "site_56_8.pts"}) {
    for (const int iMinor : {2, 4}) {
      ZuPointCloudContainer clouds, again;
      const ZuCloudReading pts = ZuReadPts(SamplePath(szName).c_str(), clouds);
      const TempFile file;
      ASSERT_TRUE(ZuWriteLas(file.Path(), clouds, {0.0, pts.m_eIntensity, iMinor}).m_bGood);
      EXPECT_EQ(file.Read()[25], iMinor);
      const ZuCloudReading las = ZuReadLas(file.Path(), again);
      ASSERT_TRUE(las.m_pCloud && las.m_Findings.IsEmpty());
      EXPECT_TRUE(SamePoints(pts.m_pCloud->GetPoints(), las.m_pCloud->GetPoints()));
      const TempFile refused;
      const auto fine = ZuWriteLas(refused.Path(), clouds, {1e-9, pts.m_eIntensity, iMinor});
      EXPECT_NE(fine.m_strFault.find("would be possible"), std::string::npos);
    }
  }
}
