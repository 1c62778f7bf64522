// E57 files: through both halves, against bytes that are put together here after the published
// structure, and damaged.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <random>

#include "tests/support/temp_file.h"
#include "zu/cloud/point_cloud_container.h"
#include "zu/exchange/e57_file.h"

namespace {

std::string TextOf(const ZuE57Reading& reading) {
  std::string strText;
  for (const ZuReadFinding& finding : reading.m_Findings) {
    strText += GetZuFindingLine(finding) + '\n';
  }
  return strText;
}

// Two clouds of real coordinates, of which one has colours and normals.
void Fill(ZuPointCloudContainer* pClouds) {
  std::mt19937_64 random(11);
  std::uniform_real_distribution<double> spread(-50.0, 50.0);
  for (const char* szName : {"north & <south>", "two"}) {
    ZuPointCloud* const pCloud = pClouds->AddCloud();
    pCloud->SetName(szName);
    for (int i = 0; i < 3001; ++i) {
      ZuScanPoint3d p(5403200.0 + spread(random), spread(random), i == 7 ? 0.1 : spread(random), 0);
      p.SetIntensity(static_cast<unsigned char>(i));
      if (szName[0] == 't') {
        p.SetColor(random());
        p.m_fNX = 0.6f, p.m_fNZ = -0.8f;
      }
      pCloud->AddPoint(p);
    }
  }
}

// The same after the published description, bit by bit and without tables.
std::string Checksum(const std::string& strPage) {
  std::uint32_t u = ~0u;
  for (const char c : strPage) {
    for (int iBit = 0; iBit < 8; ++iBit) {
      const bool bOne = ((u ^ static_cast<unsigned char>(c) >> iBit) & 1) != 0;
      u = u >> 1 ^ (bOne ? 0x82F63B78u : 0u);
    }
  }
  u = ~u;
  std::string strBytes;
  for (const int iShift : {24, 16, 8, 0}) strBytes += static_cast<char>(u >> iShift);
  return strBytes;
}

std::string Little(std::uint64_t u, int iSize) {
  std::string strBytes;
  for (; iSize > 0; --iSize, u >>= 8) strBytes += static_cast<char>(u);
  return strBytes;
}

// A file of one section of packets and of an XML whose PLACE is 48; less than a page.
std::string MadeE57(const std::string& strPackets, const std::string& strXml) {
  const std::string strSection = std::string("\1\0\0\0\0\0\0\0", 8) +
                                 Little(32 + strPackets.size(), 8) + Little(80, 8) + Little(0, 8);
  std::string s = "ASTM-E57" + Little(1, 4) + Little(0, 4);
  std::string strData = strSection + strPackets + strXml;
  const std::size_t uPages = (48 + strData.size() + 1019) / 1020;
  const std::size_t uXml = 48 + strSection.size() + strPackets.size();
  s += Little(uPages * 1024, 8) + Little(uXml, 8) + Little(strXml.size(), 8) + Little(1024, 8);
  s += strData;
  s.resize(uPages * 1020);
  std::string strFile;
  for (std::size_t i = 0; i < uPages; ++i) {
    const std::string strPage = s.substr(1020 * i, 1020);
    strFile += strPage + Checksum(strPage);
  }
  return strFile;
}

// x of 5 bits from 10 in steps of 0.5, y and z single; red, green, blue of 0 to 15; three points in
// two data packets whose bits go on, with an index packet and an empty one between them; turned by
// a quarter about z and moved.
const std::string kXml =
    "<e57Root><data3D><vectorChild><name><![CDATA[hand]]></name><pose><rotation>"
    "<w>0.70710678118654757</w><z>0.70710678118654757</z></rotation><translation><x>100</x>"
    "</translation></pose><points fileOffset=\"48\" recordCount=\"3\"><prototype>"
    "<cartesianX type=\"ScaledInteger\" minimum=\"20\" maximum=\"51\" scale=\"0.5\"/>"
    "<cartesianY type=\"Float\" precision=\"single\"/><cartesianZ type=\"Integer\" minimum=\"4\" "
    "maximum=\"4\"/><colorRed type=\"Integer\" minimum=\"0\" maximum=\"15\"/><colorGreen "
    "type=\"Integer\" minimum=\"0\" maximum=\"15\"/><colorBlue type=\"Integer\" minimum=\"0\" "
    "maximum=\"15\"/><rowIndex type=\"Integer\" minimum=\"0\" maximum=\"0\"/></prototype>"
    "</points></vectorChild></data3D></e57Root>";

std::string MadePackets() {
  const auto packet = [](const std::vector<std::string>& streams) {
    std::string strLengths = Little(streams.size(), 2), strBytes;
    for (const std::string& s : streams) strLengths += Little(s.size(), 2), strBytes += s;
    std::string s = strLengths + strBytes;
    s.resize((s.size() + 7) / 4 * 4);
    s.resize(s.size() - 4 + 4);
    return std::string("\1\0", 2) + Little(s.size() + 3, 2) + s;
  };
  const auto single = [](float f) {
    std::uint32_t u;
    std::memcpy(&u, &f, 4);
    return Little(u, 4);
  };
  // x: 20 + 1, 20 + 31, 20 + 2 as bits 00001 11111 00010, lowest first, over two packets.
  const std::uint64_t uX = 1 | 31 << 5 | 2 << 10;
  return packet(
             {Little(uX & 0xFF, 1), single(1.5f) + single(2.5f), "", "\xF0", "\x21", "\x43", ""}) +
         std::string("\2\0\7\0....", 8) + std::string("\0\0\x0F\0............", 16) +
         packet({Little(uX >> 8, 1), single(-1.0f), "", "\x0F", "\x05", "\x06", ""});
}

ZuE57Reading Read(const std::string& strBytes, ZuPointCloudContainer* pClouds) {
  const TempFile file(strBytes, ".e57");
  return ZuReadE57(file.Path(), *pClouds);
}

}  // namespace

TEST(E57, ReadsWhatIsPublished) {
  ZuPointCloudContainer clouds;
  const ZuE57Reading reading = Read(MadeE57(MadePackets(), kXml), &clouds);
  ASSERT_TRUE(reading.m_pCloud && reading.m_Findings.IsWhole()) << TextOf(reading);
  ASSERT_EQ(reading.m_pCloud->GetPointCount(), 3u) << TextOf(reading);
  EXPECT_STREQ(reading.m_pCloud->GetName().chars(), "hand");
  // A quarter turn carries (x, y) to (-y, x).
  const double aad[3][3] = {{98.5, 10.5, 4}, {97.5, 25.5, 4}, {101, 11, 4}};
  const int aaiRgb[3][3] = {{0, 17, 51}, {255, 34, 68}, {255, 85, 102}};
  for (std::size_t i = 0; i < 3; ++i) {
    const ZuScanPoint3d& p = reading.m_pCloud->GetPoints()[i];
    EXPECT_NEAR(p.x, aad[i][0], 1e-13);
    EXPECT_NEAR(p.y, aad[i][1], 1e-13);
    EXPECT_EQ(p.z, aad[i][2]);
    EXPECT_EQ(p.GetRed(), aaiRgb[i][0]);
    EXPECT_EQ(p.GetGreen(), aaiRgb[i][1]);
    EXPECT_EQ(p.GetBlue(), aaiRgb[i][2]);
  }
  EXPECT_NE(TextOf(reading).find("does not keep: rowIndex"), std::string::npos);
}

// Without a resolution every bit of every point comes back; with one, half of it is kept; and what
// is written has the pages, sizes and checksums that are published.
TEST(E57, ThereAndBack) {
  ZuPointCloudContainer clouds;
  Fill(&clouds);
  const ZuE57Pose pose = {{0.5, 0.5, -0.5, 0.5}, {5403000.0, 1.0, 2.0}};
  for (const ZuE57Options& options :
       {ZuE57Options{}, ZuE57Options{0.0, eZuIntensity65535, {}},
        ZuE57Options{0.001, eZuIntensity255, {}}, ZuE57Options{0.0, eZuIntensity255, {pose}}}) {
    const TempFile file("", ".e57"), second("", ".e57");
    ASSERT_TRUE(ZuWriteE57(file.Path(), clouds, options).m_bGood);
    const std::string s = file.Read();
    ASSERT_EQ(s.size() % 1024, 0u);
    EXPECT_EQ(s.substr(16, 8), Little(s.size(), 8));
    for (std::size_t u = 0; u < s.size(); u += 1024) {
      ASSERT_EQ(s.substr(u + 1020, 4), Checksum(s.substr(u, 1020)));
    }
    ZuPointCloudContainer again;
    const ZuE57Reading reading = ZuReadE57(file.Path(), again);
    ASSERT_TRUE(reading.m_Findings.IsEmpty()) << TextOf(reading);
    EXPECT_EQ(reading.m_eIntensity, options.m_eIntensity);
    EXPECT_EQ(reading.m_aPoses.size(), 2u);
    const ZuPointCloud* q = again.First();
    const double dNear = options.m_aPoses.empty() ? 0.5000001 * options.m_dResolution : 4e-9;
    for (const ZuPointCloud* p = clouds.First(); p != nullptr; p = p->Next(), q = q->Next()) {
      ASSERT_TRUE(q != nullptr && q->GetPointCount() == p->GetPointCount());
      EXPECT_STREQ(p->GetName().chars(), q->GetName().chars());
      for (std::size_t i = 0; i < p->GetPoints().size(); ++i) {
        const ZuScanPoint3d &a = p->GetPoints()[i], &b = q->GetPoints()[i];
        EXPECT_LE(std::fabs(a.x - b.x), dNear);
        EXPECT_LE(std::fabs(a.z - b.z), dNear);
        EXPECT_EQ(a.m_uColor, b.m_uColor);
        EXPECT_NEAR(a.m_fNX, b.m_fNX, options.m_aPoses.empty() ? 0.0 : 1e-6);
      }
    }
    if (dNear != 0.0) continue;
    ASSERT_TRUE(ZuWriteE57(second.Path(), again, options).m_bGood);
    EXPECT_TRUE(second.Read() == s);
  }
}

TEST(E57, SaysWhatIsWrong) {
  const std::string strWhole = MadeE57(MadePackets(), kXml);
  for (std::size_t n = 0; n < strWhole.size(); n += 13) {
    ZuPointCloudContainer clouds;
    EXPECT_FALSE(Read(strWhole.substr(0, n), &clouds).m_Findings.IsWhole()) << n;
    std::string strFlipped = strWhole;  // each bit is under a checksum
    strFlipped[n] = static_cast<char>(strFlipped[n] ^ 4);
    EXPECT_NE(TextOf(Read(strFlipped, &clouds)).find("does not match its checksum"),
              std::string::npos);
  }
  const struct {
    const char *szFrom, *szTo, *szText;
  } cases[] = {{"recordCount=\"3\"", "recordCount=\"9000000000000\"", "announced, 3 are"},
               {"fileOffset=\"48\"", "fileOffset=\"49\"", "do not begin"},
               {"minimum=\"20\"", "minimum=\"52\"", "above the maximum"},
               {"maximum=\"51\"", "maximum=\"9\x31\x30\x65\x39\"", "no number in range"},
               {"<cartesianX", "<cartesianQ", "no coordinates"},
               {"type=\"Float\"", "type=\"String\"", "that is no number"},
               {"<w>0.70710678118654757</w><z>0.70710678118654757", "<w>0</w><z>0", "no length"},
               {"<e57Root>", "<!DOCTYPE e [<!ENTITY x \"y\">]><e57Root>", "document type"},
               {"hand", "&x;", ""},
               {"</points>", "", "is no XML"}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.szTo);
    std::string strXml = kXml;
    if (std::string(c.szTo) == "&x;")
      strXml.replace(strXml.find("<![CDATA[hand]]>"), 16, "&x;");
    else
      strXml.replace(strXml.find(c.szFrom), std::strlen(c.szFrom), c.szTo);
    ZuPointCloudContainer clouds;
    const std::string strText = TextOf(Read(MadeE57(MadePackets(), strXml), &clouds));
    EXPECT_NE(strText.find(*c.szText ? c.szText : "entity of its own"), std::string::npos)
        << strText;
  }
  std::string strXml = kXml;
  for (const char* szAxis : {"X", "Y", "Z"}) {
    const std::string strFrom = std::string("cartesian") + szAxis;
    strXml.replace(strXml.find(strFrom), strFrom.size(), *szAxis == 'X' ? "sphericalRange" : "a");
  }
  ZuPointCloudContainer clouds;
  EXPECT_NE(
      TextOf(Read(MadeE57(MadePackets(), strXml), &clouds)).find("spherical coordinates alone"),
      std::string::npos);
}
