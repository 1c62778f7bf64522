#include <boost/tokenizer.hpp>
#include <cstdlib>
#include <sstream>

#include "cloud_support.h"
#include "tests/support/temp_file.h"
#include "text_support.h"
#include "zu/cloud/ply_file.h"

namespace {

using Tokenizer = boost::tokenizer<boost::char_separator<char>>;

bool Holds(std::string strText, const char* szWord) {
  for (char& c : strText) c = static_cast<char>(c >= 'A' && c <= 'Z' ? c + 32 : c);
  return strText.find(szWord) != strText.npos;
}

// A reader of the plainest kind: std::getline and boost::tokenizer throughout.
std::vector<ZuScanPoint3d> ReferencePly(const std::string& strText) {
  std::istringstream stream(strText);
  std::vector<ZuScanPoint3d> points;
  std::string strLine;
  std::size_t uProperties = 0;
  bool bData = false;
  while (std::getline(stream, strLine)) {
    if (!strLine.empty() && strLine.back() == '\r') strLine.pop_back();
    const Tokenizer tokenizer(strLine, boost::char_separator<char>(" \t"));
    const std::vector<std::string> t(tokenizer.begin(), tokenizer.end());
    if (t.empty()) continue;
    if (bData) {
      if (t.size() < uProperties || uProperties < 9) continue;
      const auto number = [&t](std::size_t i) {
        return static_cast<double>(static_cast<float>(std::atof(t[i].c_str())));
      };
      const auto byte = [&t](std::size_t i) { return SaturatedByte(t[i]); };
      points.emplace_back(number(0), number(1), number(2),
                          static_cast<int>(byte(6) | byte(7) << 8 | byte(8) << 16));
    } else if (Holds(t[0], "ply") || Holds(t[0], "format") || Holds(t[0], "element") ||
               Holds(t[0], "faces")) {
    } else if (Holds(t[0], "property")) {
      ++uProperties;
    } else if (Holds(t[0], "end_header")) {
      bData = true;
    }
  }
  return points;
}

std::vector<ZuScanPoint3d> PointsOf(const std::string& strText) {
  std::istringstream stream(strText);
  OpenContainer container;
  return container.ObsolteReadPlyFile(stream)->GetPoints();
}

std::string Header(int iProperties, const std::string& strEnd = "\n") {
  std::string strText = "ply" + strEnd + "format ascii 1.0" + strEnd + "element vertex 5" + strEnd;
  for (int i = 0; i < iProperties; ++i) strText += "property float x" + strEnd;
  return strText + "end_header" + strEnd;
}

}  // namespace

// What the reference shares with the reader: nine properties at least, coordinates as float.
TEST(Ply, NinePropertiesAreNeeded) {
  const std::string strLine = "0.1 2 3 nx ny nz 10 300 -1 more\n";
  EXPECT_TRUE(PointsOf(Header(8) + strLine).empty());
  EXPECT_TRUE(PointsOf(Header(11) + strLine).empty());
  const auto points = PointsOf(Header(9) + "1 2 3 4 5 6 7 8\n" + strLine);
  ASSERT_EQ(points.size(), 1u);
  EXPECT_EQ(points[0].x, static_cast<double>(0.1f));
  EXPECT_EQ(points[0].m_uColor, 0x00FF2C0Au);
  EXPECT_FALSE(points[0].HasNormVector());
}

TEST(Ply, EqualsGetlineAndTokenizer) {
  constexpr unsigned int kSeed = 47;
  TextMaker maker(kSeed);
  static const char* const kWords[] = {
      "ply",     "comment x", "element vertex 10", "property float x", "MyPROPERTYx",
      "faces 3", "format",    "plyend_header",     "the end_header",   " \t"};
  for (int i = 0; i < 400; ++i) {
    SCOPED_TRACE(::testing::Message() << "seed " << kSeed << ", round " << i);
    std::string strText = i % 4 ? Header(9 + i % 2, i % 3 ? "\n" : "\r\n") : "";
    if (i % 4 == 0) {
      for (int n = 0; n < 40; ++n) strText += std::string(kWords[(n * n * n + i) % 10]) + "\n";
      strText += i % 8 ? "end_header\r\n" : "END_HEADER!\n";
    }
    for (int n = 0; n < 60; ++n) strText += maker.Line(" \t", 11);
    for (int n = 0; n < 20; ++n) strText += maker.Line(" ", 9);
    if (i % 50 == 0) strText += maker.LongLine(" ", 600000);  // longer than a block
    if (i % 3 == 0) strText.pop_back();
    ASSERT_TRUE(SamePoints(PointsOf(strText), ReferencePly(strText)));
  }
}

// Every number of an exported file is the one that was written.
TEST(Ply, ExportHoldsAllDigits) {
  OpenContainer container, back;
  auto points = RandomPoints(70, 12);
  AddPoints(*container.AddCloud(), {points.begin(), points.begin() + 50});
  AddPoints(*container.AddCloud(), {points.begin() + 50, points.end()});
  const TempFile file;
  ASSERT_EQ(container.ExportPlyFile(file.Path()), 1);
  EXPECT_EQ(file.Read().substr(0, 39), "ply\nformat ascii 1.0\nelement vertex 70\n");
  for (auto& p : points) {
    p.m_fDX = p.m_fDZ = 0.0f;
    p.m_sFlags = 0;
    p.SetIntensity(0);
  }
  const ZuCloudReading reading = ZuReadPly(file.Path(), back);
  EXPECT_TRUE(reading.m_Findings.IsEmpty());
  EXPECT_TRUE(SamePoints(reading.m_pCloud->GetPoints(), points));
}
