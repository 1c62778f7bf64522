#include "zu/image/thumbnail.h"

// The header of the library needs two others before it.
// clang-format off
#include <cstddef>
#include <cstdio>
#include <jpeglib.h>
// clang-format on

#include <algorithm>
#include <csetjmp>
#include <cstdlib>
#include <opencv2/imgproc.hpp>

#include "zu/image/internal/grey.h"

namespace {

constexpr int kQuality = 70;

// Functions that may jump hold nothing that has a destructor.
struct Jpeg {
  jpeg_error_mgr errors;  // first: the library knows this address
  jpeg_compress_struct info;
  std::jmp_buf jump;
  unsigned char* pBytes;
  unsigned long uSize;
};

[[noreturn]] void OnError(j_common_ptr p) {
  std::longjmp(reinterpret_cast<Jpeg*>(p->err)->jump, 1);
}

bool Compress(Jpeg* pJpeg, const unsigned char* pRows, int iWidth, int iHeight) {
  pJpeg->info.err = jpeg_std_error(&pJpeg->errors);
  pJpeg->errors.error_exit = OnError;
  if (setjmp(pJpeg->jump) != 0) return false;
  jpeg_create_compress(&pJpeg->info);
  jpeg_mem_dest(&pJpeg->info, &pJpeg->pBytes, &pJpeg->uSize);
  pJpeg->info.image_width = static_cast<JDIMENSION>(iWidth);
  pJpeg->info.image_height = static_cast<JDIMENSION>(iHeight);
  pJpeg->info.input_components = 1;
  pJpeg->info.in_color_space = JCS_GRAYSCALE;
  jpeg_set_defaults(&pJpeg->info);
  jpeg_set_quality(&pJpeg->info, kQuality, TRUE);
  jpeg_start_compress(&pJpeg->info, TRUE);
  while (pJpeg->info.next_scanline < pJpeg->info.image_height) {
    JSAMPROW pRow =
        const_cast<JSAMPROW>(pRows + static_cast<std::size_t>(pJpeg->info.next_scanline) *
                                         static_cast<std::size_t>(iWidth));
    jpeg_write_scanlines(&pJpeg->info, &pRow, 1);
  }
  jpeg_finish_compress(&pJpeg->info);
  return true;
}

}  // namespace

std::string ZuMakeThumbnail(const ZuImage& image, int iMostWidth) {
  if (image.IsEmpty() || iMostWidth < 1) return {};
  const ZuGrey grey = ZuGreyOf(image);
  const double dScale = std::min(1.0, static_cast<double>(iMostWidth) / image.GetWidth());
  const cv::Size size(std::max(1, cvRound(dScale * image.GetWidth())),
                      std::clamp(cvRound(dScale * image.GetHeight()), 1, 65000));
  cv::Mat small;
  cv::resize(grey.m_Eight, small, size, 0, 0, cv::INTER_AREA);
  Jpeg jpeg = {};
  const bool bMade = Compress(&jpeg, small.ptr(), small.cols, small.rows);
  std::string bytes;
  if (bMade) bytes.assign(reinterpret_cast<const char*>(jpeg.pBytes), jpeg.uSize);
  jpeg_destroy_compress(&jpeg.info);
  std::free(jpeg.pBytes);
  return bytes;
}
