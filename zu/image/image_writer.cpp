#include "zu/image/image_writer.h"

#include <algorithm>
#include <cctype>
#include <cstdio>

#include "zu/foundation/numbers.h"
#include "zu/image/internal/image_format.h"

namespace {

std::string EndingOf(const std::string& strPath) {
  const size_t uDot = strPath.find_last_of('.');
  if (uDot == std::string::npos || strPath.find('/', uDot) != std::string::npos) return {};
  std::string strEnding = strPath.substr(uDot + 1);
  for (char& c : strEnding) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return strEnding;
}

}  // namespace

eZuImageFormat ZuImageFormatOf(const std::string& strPath) {
  const std::string strEnding = EndingOf(strPath);
  if (strEnding == "jpg" || strEnding == "jpeg") return eZuImageJpeg;
  if (strEnding == "png") return eZuImagePng;
  if (strEnding == "tif" || strEnding == "tiff") return eZuImageTiff;
  return eZuImageNone;
}

std::string ZuWorldFileName(const std::string& strPath) {
  const std::string strStem = strPath.substr(0, strPath.size() - EndingOf(strPath).size());
  switch (ZuImageFormatOf(strPath)) {
    case eZuImageJpeg:
      return strStem + "jgw";
    case eZuImagePng:
      return strStem + "pgw";
    default:
      return strStem + "tfw";
  }
}

std::string ZuWorldFileText(const ZuImageGrid& grid) {
  std::string strText;
  for (const double d : {grid.m_dPixel, 0.0, 0.0, -grid.m_dPixel, grid.m_dX0, grid.m_dY0}) {
    char ac[32];
    strText.append(ac, ZuFormatShortest(ac, d));
    strText += '\n';
  }
  return strText;
}

ZuImageWriter::ZuImageWriter() = default;

ZuImageWriter::~ZuImageWriter() {
  if (m_pFormat == nullptr) return;
  m_pFormat.reset();
  std::remove(m_strPath.c_str());
}

bool ZuImageWriter::Fail(const std::string& strError) {
  m_strError = strError;
  if (m_pFormat != nullptr) {
    m_pFormat.reset();
    std::remove(m_strPath.c_str());
  }
  return false;
}

bool ZuImageWriter::Open(const std::string& strPath, const ZuImageWriteOptions& options) {
  if (m_pFormat != nullptr) Fail("");
  m_strError.clear();
  m_strPath = strPath;
  m_options = options;
  m_iRows = 0;
  const eZuImageFormat eFormat = ZuImageFormatOf(strPath);
  if (eFormat == eZuImageNone) {
    return Fail("the ending tells no picture format; .png, .jpg or .tif would be right");
  }
  const int iMost = eFormat == eZuImageJpeg ? 65500 : ZuImage::kMostPixels;
  if (options.m_iWidth < 1 || options.m_iHeight < 1 ||
      std::max(options.m_iWidth, options.m_iHeight) > iMost) {
    return Fail("no picture of this format has " + std::to_string(options.m_iWidth) + " x " +
                std::to_string(options.m_iHeight) + " pixels; 1 to " + std::to_string(iMost) +
                " would be right");
  }
  if (options.m_iChannels < 1 || options.m_iChannels > 4 ||
      (options.m_iBits != 8 && (options.m_iBits != 16 || eFormat == eZuImageJpeg))) {
    return Fail(eFormat == eZuImageJpeg ? "a JPEG picture has 8 bits; PNG or TIFF have 16"
                                        : "1 to 4 channels of 8 or 16 bits would be right");
  }
  std::string strError;
  m_pFormat = eFormat == eZuImageJpeg  ? ZuWriteJpeg(strPath, options, &strError)
              : eFormat == eZuImagePng ? ZuWritePng(strPath, options, &strError)
                                       : ZuWriteTiff(strPath, options, &strError);
  return m_pFormat != nullptr || Fail(strError);
}

bool ZuImageWriter::Write(const ZuImage& rows, int iRows) {
  if (m_pFormat == nullptr) return false;
  if (rows.GetWidth() != m_options.m_iWidth || rows.GetChannels() != m_options.m_iChannels ||
      rows.GetBits() != m_options.m_iBits || iRows > rows.GetHeight() ||
      iRows > m_options.m_iHeight - m_iRows) {
    return Fail("these rows are not those of the picture");
  }
  for (int y = 0; y < iRows; ++y, ++m_iRows) {
    if (!m_pFormat->WriteRow(rows.GetRow<std::uint8_t>(y))) return Fail(m_pFormat->m_strError);
  }
  return true;
}

bool ZuImageWriter::Close() {
  if (m_pFormat == nullptr) return false;
  if (m_iRows != m_options.m_iHeight) return Fail("rows are missing");
  if (!m_pFormat->Close()) return Fail(m_pFormat->m_strError);
  m_pFormat.reset();
  return true;
}
