#include <png.h>

#include <csetjmp>
#include <cstring>

#include "zu/image/internal/image_source.h"

namespace {

// One file being read. Functions that may jump hold nothing that has a destructor.
struct Png {
  std::string_view rest;
  png_structp p;
  png_infop pInfo;
  char acText[160];  // the fault
  int iRow;          // rows that are complete
  bool bCut;
};

void OnError(png_structp p, png_const_charp szText) {
  Png* pPng = static_cast<Png*>(png_get_error_ptr(p));
  std::strncpy(pPng->acText, szText, sizeof(pPng->acText) - 1);
  png_longjmp(p, 1);
}

void OnRead(png_structp p, png_bytep pTo, std::size_t uSize) {
  Png* pPng = static_cast<Png*>(png_get_io_ptr(p));
  if (uSize > pPng->rest.size()) {
    pPng->bCut = true;
    png_error(p, "the file ends");
  }
  std::memcpy(pTo, pPng->rest.data(), uSize);
  pPng->rest.remove_prefix(uSize);
}

// Asks for 8 or 16 bits, no palette, transparency as alpha.
void SetForm(Png* pPng) {
  png_set_expand(pPng->p);
  const std::uint16_t uOne = 1;
  std::uint8_t uFirst;
  std::memcpy(&uFirst, &uOne, 1);
  if (uFirst == 1 && png_get_bit_depth(pPng->p, pPng->pInfo) == 16) png_set_swap(pPng->p);
  png_set_interlace_handling(pPng->p);
  png_read_update_info(pPng->p, pPng->pInfo);
}

bool ReadHeader(Png* pPng) {
  pPng->p = png_create_read_struct(PNG_LIBPNG_VER_STRING, pPng, OnError,
                                   [](png_structp, png_const_charp) {});
  if (pPng->p != nullptr) pPng->pInfo = png_create_info_struct(pPng->p);
  if (pPng->pInfo == nullptr) return false;
  if (setjmp(png_jmpbuf(pPng->p)) != 0) return false;
  png_set_read_fn(pPng->p, pPng, OnRead);
  png_set_user_limits(pPng->p, ZuImage::kMostPixels, ZuImage::kMostPixels);
  png_read_info(pPng->p, pPng->pInfo);
  SetForm(pPng);
  return true;
}

bool ReadRows(Png* pPng, ZuImage* pImage) {
  if (setjmp(png_jmpbuf(pPng->p)) != 0) return false;
  const int nPasses = png_set_interlace_handling(pPng->p);
  for (int iPass = 0; iPass < nPasses; ++iPass) {
    pPng->iRow = 0;
    for (int y = 0; y < pImage->GetHeight(); ++y) {
      png_read_row(pPng->p, pImage->GetRow<png_byte>(y), nullptr);
      pPng->iRow = y + 1;
    }
  }
  png_read_end(pPng->p, pPng->pInfo);
  return true;
}

void ReadExif(Png* pPng, ZuExif* pExif) {
  png_bytep pBytes = nullptr;
  png_uint_32 uSize = 0;
  if (png_get_eXIf_1(pPng->p, pPng->pInfo, &uSize, &pBytes) == 0) return;
  ZuReadExif({reinterpret_cast<const char*>(pBytes), uSize}, pExif);
}

bool Read(Png* pPng, ZuImageSource* pSource) {
  const bool bHeader = ReadHeader(pPng);
  if (!bHeader) {
    pSource->AddError(std::string("no header of a PNG picture: ") + pPng->acText);
    return false;
  }
  ZuImageInfo* pInfo = pSource->m_pInfo;
  pInfo->m_iWidth = static_cast<int>(png_get_image_width(pPng->p, pPng->pInfo));
  pInfo->m_iHeight = static_cast<int>(png_get_image_height(pPng->p, pPng->pInfo));
  pInfo->m_iChannels = png_get_channels(pPng->p, pPng->pInfo);
  pInfo->m_iBits = png_get_bit_depth(pPng->p, pPng->pInfo);
  ReadExif(pPng, &pInfo->m_Exif);
  if (!pSource->MakeImage()) return false;
  if (!pSource->m_pImage) return true;
  const bool bRead = ReadRows(pPng, pSource->m_pImage);
  ReadExif(pPng, &pInfo->m_Exif);  // may stand behind the rows, too
  if (bRead) return true;
  const std::string strRow =
      " in row " + std::to_string(pPng->iRow) + " of " + std::to_string(pInfo->m_iHeight);
  pSource->AddError(pPng->bCut ? "cut: the file ends" + strRow
                               : "damaged" + strRow + ": " + pPng->acText);
  return false;
}

}  // namespace

bool ZuReadPng(ZuImageSource* pSource) {
  Png png = {};
  png.rest = pSource->m_Bytes;
  struct End {
    Png* p;
    ~End() { png_destroy_read_struct(&p->p, &p->pInfo, nullptr); }
  } end{&png};
  return Read(&png, pSource);
}
