#include <tiffio.h>

#include <algorithm>
#include <cstdarg>
#include <cstring>
#include <new>
#include <vector>

#include "zu/image/internal/image_format.h"

namespace {

constexpr int kStripBytes = 1 << 18;

// Tags and keys of GeoTIFF (OGC 19-008r4).
constexpr ttag_t kPixelScale = 33550, kTiepoint = 33922, kGeoKeys = 34735;
constexpr std::uint16_t kModelType = 1024, kRasterType = 1025, kProjectedSystem = 3072;
constexpr std::uint16_t kProjected = 1, kUserDefined = 32767, kPixelIsArea = 1;

const TIFFFieldInfo kGeoFields[] = {
    {kPixelScale, -1, -1, TIFF_DOUBLE, FIELD_CUSTOM, 1, 1, const_cast<char*>("GeoPixelScale")},
    {kTiepoint, -1, -1, TIFF_DOUBLE, FIELD_CUSTOM, 1, 1, const_cast<char*>("GeoTiePoints")},
    {kGeoKeys, -1, -1, TIFF_SHORT, FIELD_CUSTOM, 1, 1, const_cast<char*>("GeoKeyDirectory")},
};

class TiffFormat : public ZuImageWriter::Format {
 public:
  ~TiffFormat() override {
    if (m_pTiff != nullptr) TIFFClose(m_pTiff);
  }

  bool Open(const std::string& strPath, const ZuImageWriteOptions& options, double dMostClassic) {
    const double dBytes =
        1.0 * options.m_iWidth * options.m_iHeight * options.m_iChannels * options.m_iBits / 8.0;
    TIFFOpenOptions* pOptions = TIFFOpenOptionsAlloc();
    if (pOptions == nullptr) throw std::bad_alloc();
    TIFFOpenOptionsSetErrorHandlerExtR(pOptions, OnError, this);
    TIFFOpenOptionsSetWarningHandlerExtR(
        pOptions, [](TIFF*, void*, const char*, const char*, va_list) { return 1; }, nullptr);
    m_pTiff = TIFFOpenExt(strPath.c_str(), dBytes > dMostClassic ? "w8" : "w", pOptions);
    TIFFOpenOptionsFree(pOptions);
    if (m_pTiff == nullptr) return Fail("cannot be created");
    m_row.resize(static_cast<size_t>(options.m_iWidth) *
                 static_cast<size_t>(options.m_iChannels * options.m_iBits / 8));
    SetTags(options);
    return m_strText.empty() || Fail("cannot write");
  }

  bool WriteRow(const void* pRow) override {
    std::memcpy(m_row.data(), pRow, m_row.size());  // the library's predictor changes it
    if (TIFFWriteScanline(m_pTiff, m_row.data(), m_uRow++, 0) == 1) return true;
    return Fail("cannot write");
  }

  bool Close() override {
    const bool bWritten = TIFFFlush(m_pTiff) == 1 && m_strText.empty();
    TIFFClose(m_pTiff);
    m_pTiff = nullptr;
    return (bWritten && m_strText.empty()) || Fail("cannot write");
  }

 private:
  static int OnError(TIFF*, void* pThis, const char*, const char* szFormat, va_list args) {
    char acText[256];
    std::vsnprintf(acText, sizeof(acText), szFormat, args);
    static_cast<TiffFormat*>(pThis)->m_strText = acText;
    return 1;
  }

  bool Fail(const char* szWhat) {
    m_strError = szWhat + (m_strText.empty() ? "" : ": " + m_strText);
    return false;
  }

  void SetTags(const ZuImageWriteOptions& options) {
    const bool bAlpha = options.m_iChannels % 2 == 0;
    TIFFSetField(m_pTiff, TIFFTAG_IMAGEWIDTH, static_cast<std::uint32_t>(options.m_iWidth));
    TIFFSetField(m_pTiff, TIFFTAG_IMAGELENGTH, static_cast<std::uint32_t>(options.m_iHeight));
    TIFFSetField(m_pTiff, TIFFTAG_BITSPERSAMPLE, options.m_iBits);
    TIFFSetField(m_pTiff, TIFFTAG_SAMPLESPERPIXEL, options.m_iChannels);
    TIFFSetField(m_pTiff, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
    TIFFSetField(m_pTiff, TIFFTAG_PHOTOMETRIC,
                 options.m_iChannels < 3 ? PHOTOMETRIC_MINISBLACK : PHOTOMETRIC_RGB);
    if (bAlpha) {
      const std::uint16_t uKind = EXTRASAMPLE_UNASSALPHA;
      TIFFSetField(m_pTiff, TIFFTAG_EXTRASAMPLES, 1, &uKind);
    }
    TIFFSetField(m_pTiff, TIFFTAG_COMPRESSION, COMPRESSION_LZW);
    TIFFSetField(m_pTiff, TIFFTAG_PREDICTOR, PREDICTOR_HORIZONTAL);
    const auto iRowBytes = static_cast<int>(m_row.size());
    TIFFSetField(m_pTiff, TIFFTAG_ROWSPERSTRIP,
                 static_cast<std::uint32_t>(std::max(1, kStripBytes / iRowBytes)));
    if (options.m_dPerInch > 0.0) {
      TIFFSetField(m_pTiff, TIFFTAG_RESOLUTIONUNIT, RESUNIT_INCH);
      TIFFSetField(m_pTiff, TIFFTAG_XRESOLUTION, options.m_dPerInch);
      TIFFSetField(m_pTiff, TIFFTAG_YRESOLUTION, options.m_dPerInch);
    }
    if (options.m_map) SetGeoTags(*options.m_map, options.m_iEpsg);
  }

  void SetGeoTags(const ZuImageGrid& grid, int iEpsg) {
    TIFFMergeFieldInfo(m_pTiff, kGeoFields, std::size(kGeoFields));
    const double adScale[] = {grid.m_dPixel, grid.m_dPixel, 0.0};
    // The outer corner of the first pixel.
    const double adTie[] = {
        0.0, 0.0, 0.0, grid.m_dX0 - 0.5 * grid.m_dPixel, grid.m_dY0 + 0.5 * grid.m_dPixel, 0.0};
    std::vector<std::uint16_t> keys = {1,           1, 0, 2,  // version, revision, number of keys
                                       kModelType,  0, 1, iEpsg > 0 ? kProjected : kUserDefined,
                                       kRasterType, 0, 1, kPixelIsArea};
    if (iEpsg > 0) {
      keys[3] = 3;
      keys.insert(keys.end(), {kProjectedSystem, 0, 1, static_cast<std::uint16_t>(iEpsg)});
    }
    TIFFSetField(m_pTiff, kPixelScale, static_cast<int>(std::size(adScale)), adScale);
    TIFFSetField(m_pTiff, kTiepoint, static_cast<int>(std::size(adTie)), adTie);
    TIFFSetField(m_pTiff, kGeoKeys, static_cast<int>(keys.size()), keys.data());
  }

  TIFF* m_pTiff = nullptr;
  std::uint32_t m_uRow = 0;
  std::vector<std::uint8_t> m_row;
  std::string m_strText;  // of the library's error
};

}  // namespace

std::unique_ptr<ZuImageWriter::Format> ZuWriteTiff(const std::string& strPath,
                                                   const ZuImageWriteOptions& options,
                                                   std::string* pError, double dMostClassic) {
  auto pFormat = std::make_unique<TiffFormat>();
  if (pFormat->Open(strPath, options, dMostClassic)) return pFormat;
  *pError = pFormat->m_strError;
  return nullptr;
}
