#include "zu/image/image_file.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <memory>
#include <new>

#include "zu/image/internal/image_source.h"

namespace {

using namespace std::string_view_literals;

// No format here packs more bytes of a picture into one of the file: deflate has 1032, JPEG fewer.
constexpr std::uint64_t kMostPacked = 2000;
// Pictures up to this size are made without a look at the file [byte].
constexpr std::uint64_t kAlwaysMade = 16 << 20;

eZuImageFormat FormatOf(std::string_view bytes) {
  if (bytes.starts_with("\xFF\xD8\xFF"sv)) return eZuImageJpeg;
  if (bytes.starts_with("\x89PNG\r\n\x1A\n"sv)) return eZuImagePng;
  for (const std::string_view start : {"II*\0"sv, "MM\0*"sv, "II+\0"sv, "MM\0+"sv}) {
    if (bytes.starts_with(start)) return eZuImageTiff;
  }
  return eZuImageNone;
}

std::string SizeText(int iWidth, int iHeight) {
  return std::to_string(iWidth) + " x " + std::to_string(iHeight) + " pixels";
}

// What the EXIF data say beside what the file holds.
void TellExif(ZuImageSource* pSource) {
  const ZuImageInfo& info = *pSource->m_pInfo;
  const ZuExif& exif = info.m_Exif;
  if (exif.m_iOrientation != 1) {
    pSource->Add(eZuSeverityNote, "EXIF orientation " + std::to_string(exif.m_iOrientation) +
                                      ": pixels are taken as stored, not turned");
  }
  if (exif.m_iWidth > 0 && exif.m_iHeight > 0 &&
      (exif.m_iWidth != info.m_iWidth || exif.m_iHeight != info.m_iHeight)) {
    pSource->Add(eZuSeverityWarning, "EXIF tells " + SizeText(exif.m_iWidth, exif.m_iHeight) +
                                         ", the picture has " +
                                         SizeText(info.m_iWidth, info.m_iHeight) +
                                         ": it was cropped, turned or made smaller");
  }
}

bool ReadFormat(ZuImageSource* pSource) {
  pSource->m_pInfo->m_eFormat = FormatOf(pSource->m_Bytes);
  switch (pSource->m_pInfo->m_eFormat) {
    case eZuImageJpeg:
      return ZuReadJpeg(pSource);
    case eZuImagePng:
      return ZuReadPng(pSource);
    case eZuImageTiff:
      return ZuReadTiff(pSource);
    default:
      pSource->AddError(
          pSource->m_Bytes.empty() ? "the file is empty" : "no picture of a known form",
          "JPEG, PNG or TIFF");
      return false;
  }
}

bool ReadBytes(std::string_view bytes, const std::string& strName, ZuImage* pImage,
               ZuImageInfo* pInfo, ZuFindingList* pFindings) {
  ZuImageInfo info;
  if (pImage) *pImage = ZuImage();
  ZuImageSource source{bytes, pImage, &info, pFindings, strName};
  bool bWhole = false;
  try {
    bWhole = ReadFormat(&source);
    if (info.m_iWidth > 0) TellExif(&source);
  } catch (const std::bad_alloc&) {
    if (pImage) *pImage = ZuImage();
    source.AddError("memory has no room for " + SizeText(info.m_iWidth, info.m_iHeight));
  }
  if (pInfo) *pInfo = info;
  return bWhole;
}

bool ReadFile(const std::string& strPath, ZuFindingList* pFindings, std::string* pBytes) {
  ZuImageSource source{{}, nullptr, nullptr, pFindings, strPath};
  struct Close {
    void operator()(std::FILE* p) const { std::fclose(p); }
  };
  const auto fail = [&](const std::string& strWhy) {
    source.AddError("cannot be read: " + strWhy);
    return false;
  };
  std::error_code error;
  const std::uintmax_t uSize = std::filesystem::file_size(strPath, error);
  if (error) return fail(error.message());
  const std::unique_ptr<std::FILE, Close> pFile(std::fopen(strPath.c_str(), "rb"));
  if (!pFile) return fail(std::strerror(errno));
  try {
    pBytes->resize(uSize);
  } catch (const std::exception&) {
    return fail("memory has no room for the file");
  }
  pBytes->resize(std::fread(pBytes->data(), 1, pBytes->size(), pFile.get()));
  return std::ferror(pFile.get()) ? fail(std::strerror(errno)) : true;
}

}  // namespace

std::uint64_t ZuImageSource::Room() const {
  return std::max(kAlwaysMade, kMostPacked * m_Bytes.size());
}

bool ZuImageSource::MakeImage() {
  const ZuImageInfo& info = *m_pInfo;
  if (info.m_iWidth < 1 || info.m_iHeight < 1 || info.m_iWidth > ZuImage::kMostPixels ||
      info.m_iHeight > ZuImage::kMostPixels) {
    AddError("a size of " + SizeText(info.m_iWidth, info.m_iHeight),
             "1 to " + std::to_string(ZuImage::kMostPixels) + " each way");
    return false;
  }
  const std::uint64_t uSize = static_cast<std::uint64_t>(info.m_iWidth) *
                              static_cast<std::uint64_t>(info.m_iHeight) *
                              static_cast<std::uint64_t>(info.m_iChannels * info.m_iBits / 8);
  if (uSize > Room()) {
    AddError("the file claims " + SizeText(info.m_iWidth, info.m_iHeight) + ", which " +
             std::to_string(m_Bytes.size()) + " bytes cannot hold");
    return false;
  }
  if (m_pImage) *m_pImage = ZuImage(info.m_iWidth, info.m_iHeight, info.m_iChannels, info.m_iBits);
  return true;
}

bool ZuReadImageBytes(std::string_view bytes, const std::string& strName, ZuImage* pImage,
                      ZuImageInfo* pInfo, ZuFindingList* pFindings) {
  return ReadBytes(bytes, strName, pImage, pInfo, pFindings);
}

bool ZuReadImage(const std::string& strPath, ZuImage* pImage, ZuImageInfo* pInfo,
                 ZuFindingList* pFindings) {
  *pImage = ZuImage();
  std::string bytes;
  return ReadFile(strPath, pFindings, &bytes) &&
         ReadBytes(bytes, strPath, pImage, pInfo, pFindings);
}

bool ZuReadImageInfo(const std::string& strPath, ZuImageInfo* pInfo, ZuFindingList* pFindings) {
  std::string bytes;
  return ReadFile(strPath, pFindings, &bytes) &&
         ReadBytes(bytes, strPath, nullptr, pInfo, pFindings);
}
