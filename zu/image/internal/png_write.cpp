#include <png.h>

#include <cerrno>
#include <csetjmp>
#include <cstring>

#include "zu/image/internal/image_format.h"

namespace {

constexpr int kLevel = 4;  // of compression: the higher ones take three times as long for 3 %
constexpr double kInch = 0.0254;

// Functions that may jump hold nothing that has a destructor.
struct Png {
  std::FILE* pFile = nullptr;
  png_structp p = nullptr;
  png_infop pInfo = nullptr;
  char acText[160] = {};  // the fault
};

void OnError(png_structp p, png_const_charp szText) {
  Png* pPng = static_cast<Png*>(png_get_error_ptr(p));
  std::strncpy(pPng->acText, szText, sizeof(pPng->acText) - 1);
  png_longjmp(p, 1);
}

void OnWrite(png_structp p, png_bytep pFrom, std::size_t uSize) {
  Png* pPng = static_cast<Png*>(png_get_io_ptr(p));
  errno = 0;
  if (std::fwrite(pFrom, 1, uSize, pPng->pFile) != uSize) png_error(p, std::strerror(errno));
}

bool WriteHeader(Png* pPng, const ZuImageWriteOptions& options) {
  constexpr int kTypes[] = {PNG_COLOR_TYPE_GRAY, PNG_COLOR_TYPE_GRAY_ALPHA, PNG_COLOR_TYPE_RGB,
                            PNG_COLOR_TYPE_RGB_ALPHA};
  if (setjmp(png_jmpbuf(pPng->p)) != 0) return false;
  png_set_write_fn(pPng->p, pPng, OnWrite, [](png_structp) {});
  png_set_user_limits(pPng->p, ZuImage::kMostPixels, ZuImage::kMostPixels);
  png_set_compression_level(pPng->p, kLevel);
  png_set_filter(pPng->p, 0, PNG_FILTER_SUB | PNG_FILTER_UP);
  png_set_IHDR(pPng->p, pPng->pInfo, static_cast<png_uint_32>(options.m_iWidth),
               static_cast<png_uint_32>(options.m_iHeight), options.m_iBits,
               kTypes[options.m_iChannels - 1], PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT,
               PNG_FILTER_TYPE_DEFAULT);
  if (options.m_dPerInch > 0.0) {
    const auto uPerMetre = static_cast<png_uint_32>(options.m_dPerInch / kInch + 0.5);
    png_set_pHYs(pPng->p, pPng->pInfo, uPerMetre, uPerMetre, PNG_RESOLUTION_METER);
  }
  png_write_info(pPng->p, pPng->pInfo);
  const std::uint16_t uOne = 1;
  std::uint8_t uFirst;
  std::memcpy(&uFirst, &uOne, 1);
  if (uFirst == 1 && options.m_iBits == 16) png_set_swap(pPng->p);
  return true;
}

bool WriteRow(Png* pPng, png_const_bytep pRow) {
  if (setjmp(png_jmpbuf(pPng->p)) != 0) return false;
  png_write_row(pPng->p, pRow);
  return true;
}

bool WriteEnd(Png* pPng) {
  if (setjmp(png_jmpbuf(pPng->p)) != 0) return false;
  png_write_end(pPng->p, pPng->pInfo);
  return true;
}

class PngFormat : public ZuImageWriter::Format {
 public:
  ~PngFormat() override {
    png_destroy_write_struct(&m_png.p, &m_png.pInfo);
    if (m_png.pFile != nullptr) std::fclose(m_png.pFile);
  }
  bool Open(const std::string& strPath, const ZuImageWriteOptions& options) {
    errno = 0;
    m_png.pFile = std::fopen(strPath.c_str(), "wb");
    if (m_png.pFile == nullptr) {
      m_strError = std::string("cannot be created: ") + std::strerror(errno);
      return false;
    }
    m_png.p = png_create_write_struct(PNG_LIBPNG_VER_STRING, &m_png, OnError,
                                      [](png_structp, png_const_charp) {});
    if (m_png.p != nullptr) m_png.pInfo = png_create_info_struct(m_png.p);
    if (m_png.pInfo == nullptr) throw std::bad_alloc();
    return WriteHeader(&m_png, options) || Fail();
  }
  bool WriteRow(const void* pRow) override {
    return ::WriteRow(&m_png, static_cast<png_const_bytep>(pRow)) || Fail();
  }
  bool Close() override {
    if (!WriteEnd(&m_png)) return Fail();
    errno = 0;
    const int iResult = std::fclose(m_png.pFile);
    m_png.pFile = nullptr;
    if (iResult == 0) return true;
    m_strError = std::string("cannot write: ") + std::strerror(errno);
    return false;
  }

 private:
  bool Fail() {
    m_strError = std::string("cannot write: ") + m_png.acText;
    return false;
  }

  Png m_png;
};

}  // namespace

std::unique_ptr<ZuImageWriter::Format> ZuWritePng(const std::string& strPath,
                                                  const ZuImageWriteOptions& options,
                                                  std::string* pError) {
  auto pFormat = std::make_unique<PngFormat>();
  if (pFormat->Open(strPath, options)) return pFormat;
  *pError = pFormat->m_strError;
  return nullptr;
}
