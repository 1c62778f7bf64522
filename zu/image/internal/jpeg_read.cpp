// The header of the library needs two others before it.
// clang-format off
#include <cstddef>
#include <cstdio>
#include <jpeglib.h>
#include <jerror.h>
// clang-format on

#include <csetjmp>
#include <vector>

#include "zu/image/internal/image_source.h"

namespace {

// A progressive picture repeats itself in so many scans at the most: each costs the time of the
// whole picture, however few bytes it has.
constexpr int kMostScans = 200;

// One file being read. Functions that may jump hold nothing that has a destructor.
struct Jpeg {
  jpeg_decompress_struct info;
  jpeg_error_mgr errors;
  jpeg_progress_mgr progress;
  std::jmp_buf jump;
  char acText[JMSG_LENGTH_MAX];  // the first warning, or the fault
  JSAMPROW pRow;                 // of four printing colours, where the file has them
  unsigned uCutRow;              // the row being read when the file ended
  bool bWarned, bDamaged, bCut, bCreated;
};

Jpeg* Of(j_common_ptr pInfo) { return static_cast<Jpeg*>(pInfo->client_data); }

[[noreturn]] void OnError(j_common_ptr pInfo) {
  Jpeg* pJpeg = Of(pInfo);
  pInfo->err->format_message(pInfo, pJpeg->acText);
  std::longjmp(pJpeg->jump, 1);
}

void OnMessage(j_common_ptr pInfo, int iLevel) {
  if (iLevel >= 0) return;
  Jpeg* pJpeg = Of(pInfo);
  switch (pInfo->err->msg_code) {
    case JWRN_JPEG_EOF:
      if (!pJpeg->bCut) pJpeg->uCutRow = pJpeg->info.output_scanline;
      pJpeg->bCut = true;
      break;
    case JWRN_HIT_MARKER:
    case JWRN_HUFF_BAD_CODE:
    case JWRN_MUST_RESYNC:
      pJpeg->bDamaged = true;
      break;
  }
  if (!pJpeg->bWarned) pInfo->err->format_message(pInfo, pJpeg->acText);
  pJpeg->bWarned = true;
}

void OnProgress(j_common_ptr pInfo) {
  Jpeg* pJpeg = Of(pInfo);
  if (pJpeg->info.input_scan_number > kMostScans) ERREXIT(pInfo, JERR_BAD_PROGRESSION);
}

void Start(Jpeg* pJpeg) {
  *pJpeg = Jpeg();
  pJpeg->info.err = jpeg_std_error(&pJpeg->errors);
  pJpeg->info.client_data = pJpeg;
  pJpeg->errors.error_exit = OnError;
  pJpeg->errors.emit_message = OnMessage;
  pJpeg->progress.progress_monitor = OnProgress;
}

bool ReadHeader(Jpeg* pJpeg, std::string_view bytes) {
  if (setjmp(pJpeg->jump) != 0) return false;
  jpeg_create_decompress(&pJpeg->info);
  pJpeg->bCreated = true;
  pJpeg->info.client_data = pJpeg;
  pJpeg->info.progress = &pJpeg->progress;
  jpeg_mem_src(&pJpeg->info, reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size());
  jpeg_save_markers(&pJpeg->info, JPEG_APP0 + 1, 0xFFFF);
  return jpeg_read_header(&pJpeg->info, TRUE) == JPEG_HEADER_OK;
}

// Printing colours, inverted where the writer tells of itself by its marker: its way.
void ToRgb(const JSAMPLE* pFrom, bool bInverted, int iWidth, JSAMPLE* pTo) {
  for (int x = 0; x < iWidth; ++x, pFrom += 4, pTo += 3) {
    const int k = bInverted ? pFrom[3] : 255 - pFrom[3];
    for (int i = 0; i < 3; ++i) {
      const int c = bInverted ? pFrom[i] : 255 - pFrom[i];
      pTo[i] = static_cast<JSAMPLE>((c * k + 127) / 255);
    }
  }
}

bool ReadRows(Jpeg* pJpeg, ZuImage* pImage) {
  if (setjmp(pJpeg->jump) != 0) return false;
  jpeg_start_decompress(&pJpeg->info);
  while (pJpeg->info.output_scanline < pJpeg->info.output_height) {
    JSAMPROW pTo = pImage->GetRow<JSAMPLE>(static_cast<int>(pJpeg->info.output_scanline));
    JSAMPROW pRow = pJpeg->pRow ? pJpeg->pRow : pTo;
    if (jpeg_read_scanlines(&pJpeg->info, &pRow, 1) != 1) return false;
    if (pJpeg->pRow) ToRgb(pRow, pJpeg->info.saw_Adobe_marker, pImage->GetWidth(), pTo);
  }
  jpeg_finish_decompress(&pJpeg->info);
  return true;
}

void FillInfo(Jpeg* pJpeg, ZuImageInfo* pInfo) {
  jpeg_decompress_struct& info = pJpeg->info;
  pInfo->m_iWidth = static_cast<int>(info.image_width);
  pInfo->m_iHeight = static_cast<int>(info.image_height);
  pInfo->m_iBits = 8;
  pInfo->m_bCmyk = info.jpeg_color_space == JCS_CMYK || info.jpeg_color_space == JCS_YCCK;
  const bool bGrey = info.jpeg_color_space == JCS_GRAYSCALE;
  pInfo->m_iChannels = bGrey ? 1 : 3;
  info.out_color_space = bGrey ? JCS_GRAYSCALE : pInfo->m_bCmyk ? JCS_CMYK : JCS_RGB;
  for (jpeg_saved_marker_ptr p = info.marker_list; p != nullptr; p = p->next) {
    if (ZuReadExif({reinterpret_cast<const char*>(p->data), p->data_length}, &pInfo->m_Exif)) break;
  }
}

bool Read(Jpeg* pJpeg, ZuImageSource* pSource) {
  const auto fail = [&](const std::string& strText) {
    pSource->AddError(strText + pJpeg->acText);
    return false;
  };
  if (!ReadHeader(pJpeg, pSource->m_Bytes)) return fail("no header of a JPEG picture: ");
  FillInfo(pJpeg, pSource->m_pInfo);
  if (!pSource->MakeImage()) return false;
  if (pSource->m_pInfo->m_bCmyk) {
    pSource->Add(eZuSeverityWarning,
                 "four printing colours (CMYK): taken as R, G, B without their profile");
  }
  if (!pSource->m_pImage) return true;
  std::vector<JSAMPLE> row(pSource->m_pInfo->m_bCmyk ? pJpeg->info.image_width * 4 : 0);
  pJpeg->pRow = row.empty() ? nullptr : row.data();
  if (!ReadRows(pJpeg, pSource->m_pImage)) return fail("damaged: ");
  if (pJpeg->bCut) {
    pSource->AddError("cut: the file ends in row " + std::to_string(pJpeg->uCutRow) + " of " +
                      std::to_string(pSource->m_pInfo->m_iHeight));
    return false;
  }
  if (pJpeg->bDamaged) return fail("damaged: ");
  if (pJpeg->bWarned) pSource->Add(eZuSeverityWarning, pJpeg->acText);
  return true;
}

}  // namespace

bool ZuReadJpeg(ZuImageSource* pSource) {
  Jpeg jpeg;
  Start(&jpeg);
  struct End {
    Jpeg* p;
    ~End() {
      if (p->bCreated) jpeg_destroy_decompress(&p->info);
    }
  } end{&jpeg};
  return Read(&jpeg, pSource);
}
