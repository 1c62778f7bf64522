#include <cstdio>
#include <cstdlib>
#include <fstream>

#include "cloud_support.h"
#include "tests/support/temp_file.h"
#include "text_support.h"
#include "zu/cloud/internal/token_split.h"

namespace {

// A reader of the plainest kind: the run-time's own lines, tokens and numbers.
std::vector<ZuScanPoint3d> ReferencePts(std::string strText) {
  std::vector<ZuScanPoint3d> points;
  std::FILE* fp = fmemopen(strText.data(), strText.size(), "rb");
  char acLine[1000];
  while (std::fgets(acLine, sizeof acLine, fp)) {
    std::vector<std::string> t;
    for (char* p = std::strtok(acLine, " \t\r\n"); p; p = std::strtok(nullptr, " \t\r\n")) {
      t.push_back(p);
    }
    if (t.size() < 3) continue;
    const auto number = [&t](std::size_t i) { return std::atof(t[i].c_str()); };
    const auto byte = [&t](std::size_t i) { return SaturatedByte(t[i]); };
    ZuScanPoint3d p(number(0), number(1), number(2), 0);
    if (t.size() == 4 || t.size() == 7) {
      const double v = ((number(3) + 2000.0) * 256.0) / 4000.0;
      p.m_uColor = v != v || v < 0.0 ? 0u : v > 255.0 ? 255u : static_cast<std::uint32_t>(v);
      p.m_uColor <<= 24;
    }
    if (t.size() == 6 || t.size() == 7) {
      const std::size_t i = t.size() - 3;
      p.m_uColor |= byte(i) | byte(i + 1) << 8 | byte(i + 2) << 16;
    }
    points.push_back(p);
  }
  std::fclose(fp);
  return points;
}

std::vector<ZuScanPoint3d> PointsOf(const std::string& strText) {
  const MemoryFile file(strText);
  ZuPointCloudContainer container;
  return container.ReadPtsFile(file.Path())->GetPoints();
}

std::wstring Wide(const std::string& strText) { return {strText.begin(), strText.end()}; }

}  // namespace

// Limits of the intensity byte; all else of a line stands in the reference.
TEST(Pts, IntensitiesAreLimitedToAByte) {
  const std::pair<const char*, std::uint32_t> lines[] = {
      {"1 2 3 4\n", 128},   {"1 2 3 1e300\n", 255}, {"1 2 3 2000\n", 255},
      {"1 2 3 -9999\n", 0}, {"1 2 3 nan\n", 0},     {"1 2 3 4 5\n", 0}};
  for (const auto& [szLine, uByte] : lines) {
    const auto points = PointsOf(szLine);
    ASSERT_EQ(points.size(), 1u);
    EXPECT_EQ(points[0].m_uColor, uByte << 24) << szLine;
    EXPECT_EQ(points[0].w, 1.0);
  }
}

// Any text gives what fgets, strtok, atof and atoi give; plain lines go another way than odd ones.
TEST(Pts, EqualsTheRunTimesLinesAndTokens) {
  constexpr unsigned int kSeed = 31;
  TextMaker maker(kSeed);
  for (int i = 0; i < 400; ++i) {
    SCOPED_TRACE(::testing::Message() << "seed " << kSeed << ", round " << i);
    std::string strText;
    for (int n = 0; n < 60; ++n) strText += maker.Line(" \t\r", 8);
    if (i % 10 == 0) strText += maker.LongLine(" ", 990 + static_cast<std::size_t>(i) / 10);
    if (i % 3 == 0) strText.pop_back();  // no line end at the end
    ASSERT_TRUE(SamePoints(PointsOf(strText), ReferencePts(strText)));
  }
}

// The edge of the buffer falls into every place of a line.
TEST(Pts, BlocksJoinWithoutASeam) {
  std::string strText;
  for (int i = 0; i < 30000; ++i) {
    strText += std::to_string(i) + ".5 " + std::string(static_cast<std::size_t>(i % 37), ' ') +
               "2.25 3 " + std::to_string(i % 2000) + " 1 2 3\n";
  }
  EXPECT_TRUE(SamePoints(PointsOf(strText), ReferencePts(strText)));
}

// Of text files only the wide form of PTS and both forms of PLY name their cloud.
TEST(Pts, NamesAndUnreadableFiles) {
  using Clouds = ZuPointCloudContainer;
  const struct {
    ZuPointCloud* (*pfnRead)(Clouds&, const std::string&);
    const char* szName;
  } readers[] = {
      {[](Clouds& c, const std::string& str) { return c.ReadPtsFile(str.c_str()); }, ""},
      {[](Clouds& c, const std::string& str) { return c.ReadPtsFile(Wide(str).c_str()); }, "a"},
      {[](Clouds& c, const std::string& str) { return c.ObsolteReadPlyFile(str.c_str()); }, "a"},
      {[](Clouds& c, const std::string& str) { return c.ObsolteReadPlyFile(Wide(str).c_str()); },
       "a"}};
  const TempFile file;
  const std::string strPath = std::string(file.Path()) + "a.b";
  std::ofstream(strPath).close();
  for (const auto& reader : readers) {
    Clouds container;
    for (const char* szPath : {"/nowhere/at/all.pts", "/tmp", ""}) {
      EXPECT_EQ(reader.pfnRead(container, szPath), nullptr);
    }
    EXPECT_EQ(container.ReadPtsFile(static_cast<const char*>(nullptr)), nullptr);
    EXPECT_EQ(container.GetClouds().Count(), 0);
    const ZuPointCloud* pCloud = reader.pfnRead(container, strPath);
    ASSERT_NE(pCloud, nullptr);
    EXPECT_EQ(pCloud->GetPointCount(), 0u);
    const std::string strName = pCloud->GetName().chars();
    EXPECT_TRUE(*reader.szName ? strName.ends_with("a") : strName.empty()) << strName;
  }
  std::remove(strPath.c_str());
}

// Required: the count is followed by the letter d and no line end.
TEST(Pts, FirstLineOfTheWriterStays) {
  ZuPointCloud cloud;
  AddPoints(cloud,
            {ZuScanPoint3d(1.5, -2.25, 3.0, static_cast<int>(0x80030201u)), ZuScanPoint3d()});
  for (const bool bWithCount : {true, false}) {
    const TempFile file;
    std::FILE* fp = std::fopen(file.Path(), "wb");
    EXPECT_EQ(cloud.WritePtsFile(fp, bWithCount), 2u);
    std::fclose(fp);
    EXPECT_EQ(file.Read(),
              std::string(bWithCount ? "2d" : "") +
                  "       1.500000000       -2.250000000        3.000000000    0   1   2   3\n"
                  "       0.000000000        0.000000000        0.000000000 -2000   0   0   0\n");
  }
  EXPECT_EQ(cloud.WritePtsFile(nullptr, true), 0u);
}

TEST(Pts, ExportReadsBackToTheSamePoints) {
  auto points = RandomPoints(300, 6);
  points[0].x = 1e-300;
  points[1].y = 1e300;
  points[2].z = -0.0;
  points[3].x = 123456789.123456789;
  for (std::size_t i = 0; i < 256; ++i) points[i].SetIntensity(static_cast<unsigned char>(i));
  const std::pair<std::uint32_t, std::size_t> kinds[] = {
      {0, 3}, {0xFF000000u, 4}, {0x00FFFFFFu, 6}, {0xFFFFFFFFu, 7}};
  for (const auto& [uKeep, uTokens] : kinds) {
    ZuPointCloudContainer container;
    std::vector<ZuScanPoint3d> expected;
    for (const auto& p : points) {
      expected.emplace_back(p.x, p.y, p.z, static_cast<int>(p.m_uColor & uKeep));
    }
    AddPoints(*container.AddCloud(), expected);
    AddPoints(*container.AddCloud(), expected);
    const TempFile file;
    ASSERT_EQ(container.ExportPtsFile(file.Path()), 1);
    const std::string strText = file.Read();
    EXPECT_EQ(strText.substr(0, 4), "600\n");
    ZuTextToken t[9];
    const std::size_t uLine = strText.find('\n', 4);
    EXPECT_EQ(ZuSplitTokens(&strText[4], &strText[uLine], ZuPtsDelimiter(), t, 9), uTokens);
    expected.insert(expected.end(), expected.begin(), expected.begin() + 300);
    EXPECT_TRUE(SamePoints(PointsOf(strText), expected)) << uTokens;
  }
}
