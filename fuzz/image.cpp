// Pictures: JPEG, PNG and TIFF with their EXIF data, whatever their bytes are.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string_view>

#include "zu/image/image_file.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t uSize) {
  const std::string_view bytes(reinterpret_cast<const char*>(pData), uSize);
  ZuImage image;
  ZuImageInfo info;
  ZuFindingList findings;
  const bool bWhole = ZuReadImageBytes(bytes, "picture", &image, &info, &findings);
  if (bWhole == (findings.GetErrorCount() > 0)) std::abort();
  if (bWhole && (image.GetWidth() != info.m_iWidth || image.GetHeight() != info.m_iHeight ||
                 image.GetChannels() != info.m_iChannels || image.GetBits() != info.m_iBits)) {
    std::abort();
  }
  double dSize = 1.0;
  bool bNominal = false;
  if (info.m_Exif.GetPixelSize(info.m_iWidth, info.m_iHeight, &dSize, &bNominal) &&
      !(dSize > 0.0)) {
    std::abort();
  }
  return 0;
}
