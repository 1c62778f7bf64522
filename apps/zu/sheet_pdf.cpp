#include <hpdf.h>

#include <stdexcept>

#include "sheet_paper.h"

namespace cli {

namespace {

constexpr double kPoint = 72.0 / 25.4;  // points in a mm

// The letters of a PDF's own fonts.
std::string Western(const std::string& strText) {
  std::string strWestern;
  for (size_t i = 0; i < strText.size();) {
    const auto uFirst = static_cast<unsigned char>(strText[i++]);
    unsigned uCode = uFirst;
    if (uFirst >= 0xC0) {
      uCode = uFirst & (uFirst >= 0xF0 ? 0x07U : uFirst >= 0xE0 ? 0x0FU : 0x1FU);
      while (i < strText.size() && (static_cast<unsigned char>(strText[i]) & 0xC0U) == 0x80U) {
        uCode = uCode << 6 | (static_cast<unsigned char>(strText[i++]) & 0x3FU);
      }
    }
    if (uCode == 0x2009) uCode = ' ';
    const bool bThere = (uCode >= 0x20 && uCode < 0x7F) || (uCode >= 0xA0 && uCode <= 0xFF);
    strWestern += bThere ? static_cast<char>(uCode) : '?';
  }
  return strWestern;
}

class PdfPaper : public SheetPaper {
 public:
  PdfPaper(double dWidth, double dHeight, const std::string& strTitle)
      : m_pDocument(HPDF_New(nullptr, nullptr)), m_dHeight(dHeight) {
    if (m_pDocument == nullptr) throw std::bad_alloc();
    HPDF_SetCompressionMode(m_pDocument, HPDF_COMP_TEXT);
    HPDF_SetInfoAttr(m_pDocument, HPDF_INFO_TITLE, Western(strTitle).c_str());
    m_pPage = HPDF_AddPage(m_pDocument);
    HPDF_Page_SetWidth(m_pPage, Points(dWidth));
    HPDF_Page_SetHeight(m_pPage, Points(dHeight));
    m_pFont = HPDF_GetFont(m_pDocument, "Helvetica", "WinAnsiEncoding");
  }
  ~PdfPaper() override { HPDF_Free(m_pDocument); }
  PdfPaper(const PdfPaper&) = delete;
  PdfPaper& operator=(const PdfPaper&) = delete;

  void Line(double x1, double y1, double x2, double y2, double dPen, Color color) override {
    SetPen(dPen, color);
    HPDF_Page_MoveTo(m_pPage, Points(x1), Up(y1));
    HPDF_Page_LineTo(m_pPage, Points(x2), Up(y2));
    HPDF_Page_Stroke(m_pPage);
  }
  void Box(double x, double y, double dWidth, double dHeight, double dPen, bool bFill) override {
    SetPen(dPen, {0.0, 0.0, 0.0});
    HPDF_Page_SetRGBFill(m_pPage, 0.0F, 0.0F, 0.0F);
    HPDF_Page_Rectangle(m_pPage, Points(x), Up(y + dHeight), Points(dWidth), Points(dHeight));
    if (bFill) {
      HPDF_Page_FillStroke(m_pPage);
    } else {
      HPDF_Page_Stroke(m_pPage);
    }
  }
  void Ring(double x, double y, double dRadius, double dPen, Color color) override {
    SetPen(dPen, color);
    HPDF_Page_Circle(m_pPage, Points(x), Up(y), Points(dRadius));
    HPDF_Page_Stroke(m_pPage);
  }
  void Text(double x, double y, const std::string& strText, double dSize, Anchor eAnchor,
            Color color) override {
    const std::string strWestern = Western(strText);
    HPDF_Page_SetFontAndSize(m_pPage, m_pFont, Points(dSize));
    HPDF_Page_SetRGBFill(m_pPage, static_cast<float>(color.r), static_cast<float>(color.g),
                         static_cast<float>(color.b));
    const float fLength = HPDF_Page_TextWidth(m_pPage, strWestern.c_str());
    HPDF_Page_BeginText(m_pPage);
    HPDF_Page_TextOut(m_pPage, Points(x) - 0.5F * static_cast<float>(eAnchor) * fLength, Up(y),
                      strWestern.c_str());
    HPDF_Page_EndText(m_pPage);
  }
  void Picture(double x, double y, double dWidth, double dHeight,
               const std::string& strJpeg) override {
    const HPDF_Image pImage =
        HPDF_LoadJpegImageFromMem(m_pDocument, reinterpret_cast<const HPDF_BYTE*>(strJpeg.data()),
                                  static_cast<HPDF_UINT>(strJpeg.size()));
    if (pImage == nullptr) return;  // Bytes tells why
    HPDF_Page_DrawImage(m_pPage, pImage, Points(x), Up(y + dHeight), Points(dWidth),
                        Points(dHeight));
  }
  std::string Bytes() override {
    if (HPDF_GetError(m_pDocument) == HPDF_OK) HPDF_SaveToStream(m_pDocument);
    std::string strBytes(HPDF_GetStreamSize(m_pDocument), '\0');
    HPDF_UINT32 uSize = static_cast<HPDF_UINT32>(strBytes.size());
    if (HPDF_GetError(m_pDocument) == HPDF_OK) {
      HPDF_ReadFromStream(m_pDocument, reinterpret_cast<HPDF_BYTE*>(strBytes.data()), &uSize);
      HPDF_ResetError(m_pDocument);  // that of the stream's end
      if (uSize == strBytes.size() && uSize > 0) return strBytes;
    }
    throw std::runtime_error("the sheet cannot be made as PDF, error " +
                             std::to_string(HPDF_GetError(m_pDocument)));
  }

 private:
  static float Points(double dMillimetres) { return static_cast<float>(dMillimetres * kPoint); }
  float Up(double y) const { return Points(m_dHeight - y); }
  void SetPen(double dPen, Color color) {
    HPDF_Page_SetLineWidth(m_pPage, Points(dPen));
    HPDF_Page_SetRGBStroke(m_pPage, static_cast<float>(color.r), static_cast<float>(color.g),
                           static_cast<float>(color.b));
  }

  HPDF_Doc m_pDocument;
  HPDF_Page m_pPage = nullptr;
  HPDF_Font m_pFont = nullptr;
  double m_dHeight;
};

}  // namespace

std::unique_ptr<SheetPaper> MakePdfPaper(double dWidth, double dHeight,
                                         const std::string& strTitle) {
  return std::make_unique<PdfPaper>(dWidth, dHeight, strTitle);
}

}  // namespace cli
