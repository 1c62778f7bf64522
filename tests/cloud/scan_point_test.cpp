#include <cmath>
#include <cstdio>
#include <limits>
#include <locale>

#include "cloud_support.h"
#include "tests/support/temp_file.h"
#include "zu/numerics/point3d.h"

namespace {

// What a writer on a stream wrote.
template <class Write>
std::string Written(Write write) {
  const TempFile file;
  std::FILE* fp = std::fopen(file.Path(), "wb");
  write(fp);
  std::fclose(fp);
  return file.Read();
}

}  // namespace

TEST(ScanPoint, SelectionAndColourKeepTheirNeighbours) {
  ZuScanPoint3d p(1.0, 2.0, 3.0, static_cast<int>(0x80FF4020u));
  p.m_sFlags = 0x12AB;
  EXPECT_FALSE(p.IsSelected());
  p.SetSelected(true);
  EXPECT_EQ(p.m_sFlags, 0x01AB);
  EXPECT_EQ(p.SetFlags(0xFE), 0xFE);
  EXPECT_FALSE(p.IsSelected());
  EXPECT_EQ(p.GetFlags(), 0xFE);
  p.SetSelected(false);
  EXPECT_EQ(p.m_sFlags, 0x00AB);

  EXPECT_EQ(p.GetRed(), 0x20);
  EXPECT_EQ(p.GetBlue(), 0xFF);
  p.SetColor(0xAA010203ul);
  EXPECT_EQ(p.m_uColor, 0x80010203u);
  EXPECT_EQ(p.GetColor(), 0x010203ul);
  p.SetIntensity(0);
  p.SetColor(100 | 50 << 8 | 200 << 16);
  EXPECT_EQ(p.GetIntensity(), 71);  // the luminance: 21 + 36 + 14
  p.SetIntensity(3);
  EXPECT_EQ(p.m_uColor, 0x03C83264u);
  EXPECT_EQ(p.GetIntensity(), 3);

  ZuPoint3d position(4.0, 5.0, 6.0);
  position.w = 2.0;
  EXPECT_EQ(ZuScanPoint3d(position).w, 2.0);
  EXPECT_EQ(ZuScanPoint3d().w, 1.0);
}

TEST(ScanPoint, WritePtsIsWhatPrintfGives) {
  std::mt19937_64 random(5);
  std::vector<ZuScanPoint3d> points = RandomPoints(300, 5);
  for (int i = 0; i < 256; ++i)
    points[static_cast<std::size_t>(i)].SetIntensity(static_cast<unsigned char>(i));
  for (int i = 0; i < 500; ++i) {  // any bits: tiny, huge, not finite
    const auto bits = [&random] { return std::bit_cast<double>(random()); };
    points.emplace_back(bits(), std::ldexp(static_cast<double>(random() >> 20), -30), bits(),
                        static_cast<int>(random()));
  }
  points.emplace_back(0.5e-9, -0.5e-9, 1.5e-9, 0);
  points.emplace_back(9999998.9999999996, -9999998.9999999996, -0.0, 0);
  const std::string strOurs = Written([&](std::FILE* fp) {
    for (const auto& p : points) EXPECT_EQ(p.WritePTS(fp), 1);
  });
  const std::string strPrintf = Written([&](std::FILE* fp) {
    for (const auto& p : points) {
      std::fprintf(fp, "%18.9f %18.9f %18.9f %4d %3d %3d %3d\n", p.x, p.y, p.z,
                   static_cast<int>((p.GetIntensity() - 128) * 0.0078125 * 2000.0), p.GetRed(),
                   p.GetGreen(), p.GetBlue());
    }
  });
  EXPECT_EQ(strOurs, strPrintf);
  EXPECT_EQ(ZuScanPoint3d().WritePTS(nullptr), 0);
}

TEST(ScanPoint, FileFormHas58BytesAndComesBackWithoutW) {
  ZuScanPoint3d p = RandomPoints(1, 3).front();
  p.w = 5.0;
  const TempFile file(Written([&](std::FILE* fp) { EXPECT_EQ(p.Write(fp), 1); }));
  EXPECT_EQ(file.Read().size(), 58u);
  ZuFileBuff buff(file.Path());
  ZuScanPoint3d back;
  ASSERT_EQ(back.Read(buff), 1);
  p.w = 1.0;
  EXPECT_EQ(PointBits(back), PointBits(p));
  EXPECT_EQ(back.Read(buff), 0);  // the end: no magic word
  EXPECT_EQ(PointBits(back), PointBits(p));
}
