#include "zu/image/image_file.h"

#include <jpeglib.h>
#include <png.h>
#include <tiffio.h>

#include <cmath>
#include <stdexcept>

#include "tests/support/temp_file.h"
#include "tests/support/test.h"
#include "zu/image/canvas.h"
#include "zu/image/image_writer.h"
#include "zu/image/internal/image_format.h"

namespace {

using namespace std::string_literals;

struct Result {
  bool bWhole;
  ZuImage image;
  ZuImageInfo info;
  std::string strText;  // of the findings, a line each
};

Result Read(std::string_view bytes) {
  Result result;
  ZuFindingList findings;
  result.bWhole = ZuReadImageBytes(bytes, "a.jpg", &result.image, &result.info, &findings);
  for (const ZuFinding& finding : findings) result.strText += GetZuFindingLine(finding) + '\n';
  return result;
}

// 0.25 x + y, cut at 8 bits.
int Ramp(int x, int y) { return (x / 4 + y) & 255; }

std::string Jpeg(int iWidth, int iHeight, J_COLOR_SPACE space, const std::string& strExif = {}) {
  jpeg_compress_struct info;
  jpeg_error_mgr errors;
  info.err = jpeg_std_error(&errors);
  jpeg_create_compress(&info);
  unsigned char* pBytes = nullptr;
  unsigned long uSize = 0;
  jpeg_mem_dest(&info, &pBytes, &uSize);
  info.image_width = static_cast<JDIMENSION>(iWidth);
  info.image_height = static_cast<JDIMENSION>(iHeight);
  info.input_components = space == JCS_GRAYSCALE ? 1 : space == JCS_CMYK ? 4 : 3;
  info.in_color_space = space;
  jpeg_set_defaults(&info);
  jpeg_set_quality(&info, 100, TRUE);
  jpeg_start_compress(&info, TRUE);
  if (!strExif.empty()) {
    jpeg_write_marker(&info, JPEG_APP0 + 1, reinterpret_cast<const JOCTET*>(strExif.data()),
                      static_cast<unsigned>(strExif.size()));
  }
  std::vector<JSAMPLE> row(static_cast<std::size_t>(iWidth * info.input_components));
  for (int y = 0; y < iHeight; ++y) {
    for (std::size_t i = 0; i < row.size(); ++i) {
      row[i] = static_cast<JSAMPLE>(Ramp(static_cast<int>(i) / info.input_components, y));
    }
    JSAMPROW pRow = row.data();
    jpeg_write_scanlines(&info, &pRow, 1);
  }
  jpeg_finish_compress(&info);
  std::string bytes(reinterpret_cast<const char*>(pBytes), uSize);
  jpeg_destroy_compress(&info);
  std::free(pBytes);
  return bytes;
}

std::string Png16(int iWidth, int iHeight) {
  std::vector<png_uint_16> samples;
  for (int i = 0; i < iWidth * iHeight; ++i) samples.push_back(static_cast<png_uint_16>(i * 257));
  png_image image = {};
  image.version = PNG_IMAGE_VERSION;
  image.width = static_cast<png_uint_32>(iWidth);
  image.height = static_cast<png_uint_32>(iHeight);
  image.format = PNG_FORMAT_LINEAR_Y;
  std::string bytes(100'000, '\0');
  png_alloc_size_t uSize = bytes.size();
  EXPECT_TRUE(
      png_image_write_to_memory(&image, bytes.data(), &uSize, 0, samples.data(), 0, nullptr));
  bytes.resize(uSize);
  return bytes;
}

std::string Tiff(std::uint16_t uBits, std::uint16_t uSamples, bool bTiles) {
  const TempFile file;
  TIFF* p = TIFFOpen(file.Path(), "w");
  TIFFSetField(p, TIFFTAG_IMAGEWIDTH, 20);
  TIFFSetField(p, TIFFTAG_IMAGELENGTH, 18);
  TIFFSetField(p, TIFFTAG_BITSPERSAMPLE, uBits);
  TIFFSetField(p, TIFFTAG_SAMPLESPERPIXEL, uSamples);
  TIFFSetField(p, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
  TIFFSetField(p, TIFFTAG_COMPRESSION, COMPRESSION_LZW);
  TIFFSetField(p, TIFFTAG_PHOTOMETRIC, uSamples == 1 ? PHOTOMETRIC_MINISBLACK : PHOTOMETRIC_RGB);
  if (bTiles) TIFFSetField(p, TIFFTAG_TILEWIDTH, 16), TIFFSetField(p, TIFFTAG_TILELENGTH, 16);
  const auto sample = [&](std::uint32_t x, std::uint32_t y) { return x + 20 * y; };
  const std::uint32_t uStep = bTiles ? 16 : 1, uWidth = bTiles ? 16 : 20;
  for (std::uint32_t y = 0; y < 18; y += uStep) {
    for (std::uint32_t x = 0; x < 20; x += uWidth) {
      std::vector<std::uint8_t> bytes;
      for (std::uint32_t i = 0; i < uStep * uWidth * uSamples; ++i) {
        const std::uint32_t u = sample(x + i / uSamples % uWidth, y + i / uSamples / uWidth);
        bytes.push_back(static_cast<std::uint8_t>(u));
        if (uBits == 16) bytes.push_back(static_cast<std::uint8_t>(u >> 8));
      }
      bTiles ? TIFFWriteTile(p, bytes.data(), x, y, 0, 0)
             : TIFFWriteScanline(p, bytes.data(), y, 0);
    }
  }
  TIFFClose(p);
  return file.Read();
}

// EXIF data: an orientation, and a directory of its own of rows of tag, type (3 short, 5 ratio),
// value.
std::string Exif(int iOrientation, const std::vector<std::array<int, 4>>& rows) {
  std::string bytes = "Exif\0\0II*\0\x08\0\0\0\x02\0"s, ratios;
  const auto put = [](std::string* pTo, std::size_t u, int nBytes) {
    for (int i = 0; i < nBytes; ++i) *pTo += static_cast<char>(u >> (8 * i));
  };
  const auto entry = [&](int iTag, int iType, std::size_t uValue) {
    put(&bytes, static_cast<std::size_t>(iTag), 2);
    put(&bytes, static_cast<std::size_t>(iType), 2);
    put(&bytes, 1, 4), put(&bytes, uValue, 4);
  };
  entry(0x112, 3, static_cast<std::size_t>(iOrientation)), entry(0x8769, 4, 38);
  put(&bytes, 0, 4), put(&bytes, rows.size(), 2);
  const std::size_t uRatios = 38 + 2 + 12 * rows.size() + 4;
  for (const auto& [iTag, iType, iOver, iUnder] : rows) {
    const std::size_t uValue = static_cast<std::size_t>(iOver);
    entry(iTag, iType, iType == 3 ? uValue : uRatios + ratios.size());
    if (iType == 5) put(&ratios, uValue, 4), put(&ratios, static_cast<std::size_t>(iUnder), 4);
  }
  put(&bytes, 0, 4);
  return bytes + ratios;
}

TEST(ReadImage, SamplesAreThoseOfTheFile) {
  const Result grey = Read(Jpeg(40, 30, JCS_GRAYSCALE));
  ASSERT_TRUE(grey.bWhole) << grey.strText;
  EXPECT_EQ(grey.image.GetChannels(), 1);
  for (int y = 0; y < 30; ++y) {
    for (int x = 0; x < 40; ++x) EXPECT_NEAR(grey.image.GetRow<std::uint8_t>(y)[x], Ramp(x, y), 2);
  }
  const Result deep = Read(Png16(16, 15));
  ASSERT_TRUE(deep.bWhole && deep.image.GetBits() == 16) << deep.strText;
  for (int i = 0; i < 16 * 15; ++i) {
    EXPECT_EQ(deep.image.GetRow<std::uint16_t>(i / 16)[i % 16], i * 257);
  }
  for (const auto& [uBits, uSamples, bTiles] : Cases<std::uint16_t, std::uint16_t, bool>{
           {8, 1, false}, {16, 3, false}, {16, 1, true}, {8, 3, true}}) {
    const Result tiff = Read(Tiff(uBits, uSamples, bTiles));
    ASSERT_TRUE(tiff.bWhole && tiff.image.GetBits() == uBits) << tiff.strText;
    ASSERT_EQ(tiff.image.GetChannels(), uSamples);
    for (int y = 0; y < 18; ++y) {
      for (int i = 0; i < 20 * uSamples; ++i) {
        const int iIs = uBits == 16 ? tiff.image.GetRow<std::uint16_t>(y)[i]
                                    : tiff.image.GetRow<std::uint8_t>(y)[i];
        EXPECT_EQ(iIs, (i / uSamples + 20 * y) & (uBits == 16 ? 65535 : 255));
      }
    }
  }
  const Result one = Read(Jpeg(1, 1, JCS_RGB));
  EXPECT_TRUE(one.bWhole && one.image.GetWidth() == 1 && one.image.GetChannels() == 3);
}

TEST(ReadImage, PrintingColoursBecomeRgbAndAreTold) {
  const Result result = Read(Jpeg(16, 16, JCS_CMYK));
  ASSERT_TRUE(result.bWhole && result.info.m_bCmyk) << result.strText;
  EXPECT_NE(result.strText.find("CMYK"), std::string::npos);
  const int i = Ramp(8, 8);  // all four colours are the same, in the inverted way
  EXPECT_NEAR(result.image.GetRow<std::uint8_t>(8)[8 * 3], i * i / 255, 2);
}

TEST(ReadImage, BrokenFilesAreToldByName) {
  std::string claim = Jpeg(8, 8, JCS_RGB);
  const std::size_t uSize = claim.find("\xFF\xC0"s) + 5;
  claim.replace(uSize, 4, "\x68\x00\x68\x00"s);  // 26624 x 26624, 2.1 GB
  std::string png = Png16(16, 15);
  std::string huge = png;
  huge.replace(16, 8, "\x00\x00\x60\x00\x00\x00\x60\x00"s);
  for (const auto& [bytes, szText] :
       Cases<std::string, const char*>{{"", "the file is empty"},
                                       {"no picture", "JPEG, PNG or TIFF would be right"},
                                       {"\xFF\xD8\xFF", "no header of a JPEG picture"},
                                       {claim, "the file claims 26624 x 26624 pixels"},
                                       {huge, "PNG"},
                                       {Tiff(8, 1, false).substr(0, 60), "TIFF"}}) {
    const Result result = Read(bytes);
    EXPECT_TRUE(!result.bWhole && result.image.IsEmpty());
    EXPECT_EQ(result.strText.find("a.jpg: error: "), 0u) << result.strText;
    EXPECT_NE(result.strText.find(szText), std::string::npos) << result.strText;
  }
  // What stands before the cut is there.
  const std::string whole = Jpeg(64, 64, JCS_GRAYSCALE);
  const Result cut = Read(std::string_view(whole).substr(0, whole.size() * 3 / 4));
  EXPECT_FALSE(cut.bWhole);
  EXPECT_NE(cut.strText.find("cut: the file ends in row"), std::string::npos) << cut.strText;
  EXPECT_NEAR(cut.image.GetRow<std::uint8_t>(5)[20], Ramp(20, 5), 2);
  for (const std::string& bytes : {whole, png, Tiff(16, 3, true), Jpeg(16, 16, JCS_CMYK)}) {
    for (std::size_t u = 0; u < bytes.size(); u += 7) {
      EXPECT_FALSE(Read(std::string_view(bytes).substr(0, u)).bWhole && u + 16 < bytes.size());
      std::string flipped = bytes;
      flipped[u] = static_cast<char>(~flipped[u]);
      Read(flipped);  // whatever comes out, nothing is touched that should not be
    }
  }
}

TEST(ReadImage, ExifStartsTheCameraAndTurnsNothing) {
  constexpr int kFocal = 0x920A, kUnit = 0xA210, kPlaneX = 0xA20E, kWidth = 0xA002;
  const Result held =
      Read(Jpeg(40, 20, JCS_GRAYSCALE,
                Exif(6, {{kFocal, 5, 73, 10}, {kPlaneX, 5, 22720, 1}, {kUnit, 3, 2, 0}})));
  ASSERT_TRUE(held.bWhole);
  EXPECT_EQ(held.image.GetWidth(), 40);
  EXPECT_NE(held.strText.find("orientation 6"), std::string::npos);
  EXPECT_DOUBLE_EQ(held.info.m_Exif.m_dFocalLength, 7.3);
  double dSize = 0.0;
  bool bNominal = true;
  ASSERT_TRUE(held.info.m_Exif.GetPixelSize(40, 20, &dSize, &bNominal));
  EXPECT_DOUBLE_EQ(dSize, 25.4 / 22720);
  EXPECT_FALSE(bNominal);
  // What cannot be counts as not told.
  const Result lie =
      Read(Jpeg(40, 20, JCS_GRAYSCALE,
                Exif(99, {{kFocal, 5, 5, 0}, {kWidth, 3, 80, 0}, {kWidth + 1, 3, 40, 0}})));
  EXPECT_EQ(lie.info.m_Exif.m_iOrientation, 1);
  EXPECT_EQ(lie.info.m_Exif.m_dFocalLength, 0.0);
  EXPECT_FALSE(lie.info.m_Exif.GetPixelSize(40, 20, &dSize, &bNominal));
  EXPECT_NE(lie.strText.find("EXIF tells 80 x 40 pixels, the picture has 40 x 20"),
            std::string::npos);
}

// 6 x 5 pixels of 16 bits.
ZuImage Small() {
  ZuImage image(6, 5, 1, 16);
  for (int i = 0; i < 30; ++i) {
    image.GetRow<std::uint16_t>(i / 6)[i % 6] = static_cast<std::uint16_t>(i * 2000);
  }
  return image;
}

template <typename T>
std::vector<T> Field(TIFF* p, ttag_t uTag) {
  std::uint32_t uCount = 0;
  const T* pValues = nullptr;
  if (TIFFGetField(p, uTag, &uCount, &pValues) != 1) return {};
  return {pValues, pValues + uCount};
}

// Tags and keys by their numbers in the standard, read by the TIFF library alone.
TEST(WriteImage, MapsHaveTheTagsOfGeoTiff) {
  using Keys = std::vector<std::uint16_t>;
  for (const auto& [iEpsg, keys] :
       Cases<int, Keys>{{25832, {1, 1, 0, 3, 1024, 0, 1, 1, 1025, 0, 1, 1, 3072, 0, 1, 25832}},
                        {0, {1, 1, 0, 2, 1024, 0, 1, 32767, 1025, 0, 1, 1}}}) {
    const TempFile file("", ".tif");
    ZuImageWriteOptions options{6, 5, 1, 16};
    options.m_map = ZuImageGrid{500000.125, 5699999.875, 0.25};
    options.m_iEpsg = iEpsg;
    ZuImageWriter writer;
    ASSERT_TRUE(writer.Open(file.Path(), options) && writer.Write(Small(), 5) && writer.Close())
        << writer.GetError();
    const TIFFErrorHandler pWarnings = TIFFSetWarningHandler(nullptr);  // of tags it does not know
    TIFF* p = TIFFOpen(file.Path(), "r");
    ASSERT_NE(p, nullptr);
    EXPECT_EQ(Field<double>(p, 33550), (std::vector<double>{0.25, 0.25, 0.0}));
    // The outer corner of the first pixel.
    EXPECT_EQ(Field<double>(p, 33922),
              (std::vector<double>{0.0, 0.0, 0.0, 500000.0, 5700000.0, 0.0}));
    EXPECT_EQ(Field<std::uint16_t>(p, 34735), keys);
    TIFFClose(p);
    TIFFSetWarningHandler(pWarnings);
  }
}

TEST(WriteImage, TiffBeyondTheLimitHasLongOffsets) {
  const ZuImage image = Small();
  for (const auto& [dLimit, iVersion] : Cases<double, int>{{59.0, 43}, {60.0, 42}}) {
    const TempFile file("", ".tif");
    std::string strError;
    const auto pFormat = ZuWriteTiff(file.Path(), {6, 5, 1, 16}, &strError, dLimit);
    ASSERT_NE(pFormat, nullptr) << strError;
    for (int y = 0; y < 5; ++y) {
      ASSERT_TRUE(pFormat->WriteRow(image.GetRow<std::uint16_t>(y))) << pFormat->m_strError;
    }
    ASSERT_TRUE(pFormat->Close()) << pFormat->m_strError;
    const std::string bytes = file.Read();
    EXPECT_EQ(bytes[2] + bytes[3], iVersion);
    const Result result = Read(bytes);
    ASSERT_TRUE(result.bWhole && result.image.GetRowBytes() == image.GetRowBytes())
        << result.strText;
    EXPECT_TRUE(std::equal(image.GetData(), image.GetData() + 5 * image.GetRowBytes(),
                           result.image.GetData()));
  }
}

// The PNG is read by another library: ink is where it was put, the rest is paper.
TEST(Canvas, DrawsWhereItIsTold) {
  ZuCanvas canvas(60, 40);
  canvas.Lines({{10.0, 20.5}, {50.0, 20.5}, {std::nan(""), 0.0}, {-1e300, 5.0}, {2.0, 5.0}}, 3.0,
               {200, 0, 0});
  canvas.Polygon({{30.0, 30.0}, {40.0, 30.0}, {40.0, 38.0}, {30.0, 38.0}}, {0, 0, 255});
  canvas.Circle(10.0, 32.0, 4.0, 0.0, {0, 128, 0});
  canvas.Text(45.0, 15.0, "\xC3\xA4\xE2\x82\xAC", 12.0, {0.5, 0.0, 1.0, true}, {0, 0, 0});
  EXPECT_FALSE(canvas.Picture(0.0, 0.0, 9.0, 9.0, "no picture", 1.0));
  const std::string bytes = canvas.Png();
  EXPECT_EQ(bytes, canvas.Png());
  const Result result = Read(bytes);
  ASSERT_TRUE(result.bWhole) << result.strText;
  const auto pixel = [&](int x, int y) {
    const std::uint8_t* p = result.image.GetRow<std::uint8_t>(y) + 3 * x;
    return std::vector<int>(p, p + 3);
  };
  EXPECT_EQ(pixel(30, 20), (std::vector<int>{200, 0, 0}));
  EXPECT_EQ(pixel(0, 5), (std::vector<int>{200, 0, 0}));  // cut at the border
  EXPECT_EQ(pixel(35, 34), (std::vector<int>{0, 0, 255}));
  EXPECT_EQ(pixel(10, 32), (std::vector<int>{0, 128, 0}));
  EXPECT_EQ(pixel(30, 25), (std::vector<int>{255, 255, 255}));
  int iDark = 0;
  for (int x = 33; x < 57; ++x) iDark += pixel(x, 12)[0] < 128;
  EXPECT_GT(iDark, 3);
  EXPECT_THROW(ZuCanvas(0, 5), std::length_error);
}

}  // namespace
