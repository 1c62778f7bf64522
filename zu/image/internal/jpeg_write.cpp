#include <cerrno>
#include <csetjmp>
#include <cstdio>
#include <cstring>
#include <new>
#include <vector>
// Needs the standard headers before it.
#include <jpeglib.h>

#include "zu/image/internal/image_format.h"

namespace {

// Functions that may jump hold nothing that has a destructor.
struct Jpeg {
  jpeg_error_mgr errors;  // first: the library knows this address
  jpeg_compress_struct c;
  std::jmp_buf jump;
  std::FILE* pFile;
  char acText[JMSG_LENGTH_MAX];  // the fault
};

void OnError(j_common_ptr p) {
  Jpeg* pJpeg = reinterpret_cast<Jpeg*>(p->err);
  p->err->format_message(p, pJpeg->acText);
  if (errno != 0 && std::ferror(pJpeg->pFile) != 0) {
    std::snprintf(pJpeg->acText, sizeof(pJpeg->acText), "%s", std::strerror(errno));
  }
  std::longjmp(pJpeg->jump, 1);
}

bool Start(Jpeg* pJpeg, const ZuImageWriteOptions& options) {
  if (setjmp(pJpeg->jump) != 0) return false;
  jpeg_stdio_dest(&pJpeg->c, pJpeg->pFile);
  const bool bGrey = options.m_iChannels < 3;
  pJpeg->c.image_width = static_cast<JDIMENSION>(options.m_iWidth);
  pJpeg->c.image_height = static_cast<JDIMENSION>(options.m_iHeight);
  pJpeg->c.input_components = bGrey ? 1 : 3;
  pJpeg->c.in_color_space = bGrey ? JCS_GRAYSCALE : JCS_RGB;
  jpeg_set_defaults(&pJpeg->c);
  jpeg_set_quality(&pJpeg->c, options.m_iQuality, TRUE);
  // Every colour for every pixel: edges are measured in these pictures.
  pJpeg->c.comp_info[0].h_samp_factor = pJpeg->c.comp_info[0].v_samp_factor = 1;
  if (options.m_dPerInch > 0.0) {
    pJpeg->c.density_unit = 1;
    pJpeg->c.X_density = pJpeg->c.Y_density = static_cast<UINT16>(options.m_dPerInch + 0.5);
  }
  jpeg_start_compress(&pJpeg->c, TRUE);
  return true;
}

bool WriteRow(Jpeg* pJpeg, JSAMPROW pRow) {
  if (setjmp(pJpeg->jump) != 0) return false;
  return jpeg_write_scanlines(&pJpeg->c, &pRow, 1) == 1;
}

bool End(Jpeg* pJpeg) {
  if (setjmp(pJpeg->jump) != 0) return false;
  jpeg_finish_compress(&pJpeg->c);
  return true;
}

class JpegFormat : public ZuImageWriter::Format {
 public:
  explicit JpegFormat(const ZuImageWriteOptions& options)
      : m_iWidth(options.m_iWidth), m_iChannels(options.m_iChannels) {
    m_row.resize(static_cast<size_t>(m_iWidth) * (m_iChannels < 3 ? 1 : 3));
    m_jpeg.c.err = jpeg_std_error(&m_jpeg.errors);
    m_jpeg.errors.error_exit = OnError;
    m_jpeg.errors.output_message = [](j_common_ptr) {};
    if (setjmp(m_jpeg.jump) != 0) throw std::bad_alloc();
    jpeg_create_compress(&m_jpeg.c);
  }
  ~JpegFormat() override {
    jpeg_destroy_compress(&m_jpeg.c);
    if (m_jpeg.pFile != nullptr) std::fclose(m_jpeg.pFile);
  }
  bool Open(const std::string& strPath, const ZuImageWriteOptions& options) {
    errno = 0;
    m_jpeg.pFile = std::fopen(strPath.c_str(), "wb");
    if (m_jpeg.pFile == nullptr) {
      m_strError = std::string("cannot be created: ") + std::strerror(errno);
      return false;
    }
    return Start(&m_jpeg, options) || Fail();
  }
  bool WriteRow(const void* pRow) override {
    const auto* p = static_cast<const std::uint8_t*>(pRow);
    const bool bAlpha = m_iChannels % 2 == 0;
    const int iColors = m_iChannels < 3 ? 1 : 3;
    for (int i = 0; i < m_iWidth; ++i, p += m_iChannels) {
      for (int c = 0; c < iColors; ++c) {
        const int iAlpha = bAlpha ? p[iColors] : 255;
        m_row[static_cast<size_t>(i * iColors + c)] =
            static_cast<std::uint8_t>((p[c] * iAlpha + 255 * (255 - iAlpha) + 127) / 255);
      }
    }
    return ::WriteRow(&m_jpeg, m_row.data()) || Fail();
  }
  bool Close() override {
    if (!End(&m_jpeg)) return Fail();
    errno = 0;
    const int iResult = std::fclose(m_jpeg.pFile);
    m_jpeg.pFile = nullptr;
    if (iResult == 0) return true;
    m_strError = std::string("cannot write: ") + std::strerror(errno);
    return false;
  }

 private:
  bool Fail() {
    m_strError = std::string("cannot write: ") + m_jpeg.acText;
    return false;
  }

  int m_iWidth, m_iChannels;
  std::vector<std::uint8_t> m_row;
  Jpeg m_jpeg = {};
};

}  // namespace

std::unique_ptr<ZuImageWriter::Format> ZuWriteJpeg(const std::string& strPath,
                                                   const ZuImageWriteOptions& options,
                                                   std::string* pError) {
  auto pFormat = std::make_unique<JpegFormat>(options);
  if (pFormat->Open(strPath, options)) return pFormat;
  *pError = pFormat->m_strError;
  return nullptr;
}
