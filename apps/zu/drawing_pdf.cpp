#include <hpdf.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <new>
#include <numbers>
#include <stdexcept>

#include "drawing.h"

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

class PdfPage {
 public:
  explicit PdfPage(const Drawing& drawing)
      : m_pDocument(HPDF_New(nullptr, nullptr)),
        m_dScale(Millimetres(drawing, 1.0) * kPoint),
        m_dHeight(drawing.Height()) {
    if (m_pDocument == nullptr) throw std::bad_alloc();
    HPDF_SetCompressionMode(m_pDocument, HPDF_COMP_TEXT);
    HPDF_SetInfoAttr(m_pDocument, HPDF_INFO_TITLE, Western(drawing.Title()).c_str());
    m_pPage = HPDF_AddPage(m_pDocument);
    HPDF_Page_SetWidth(m_pPage, Points(drawing.Width()));
    HPDF_Page_SetHeight(m_pPage, Points(drawing.Height()));
    m_pFont = HPDF_GetFont(m_pDocument, "Helvetica", "WinAnsiEncoding");
    m_pBold = HPDF_GetFont(m_pDocument, "Helvetica-Bold", "WinAnsiEncoding");
  }
  ~PdfPage() { HPDF_Free(m_pDocument); }
  PdfPage(const PdfPage&) = delete;
  PdfPage& operator=(const PdfPage&) = delete;

  void Draw(const Drawing::Shape& shape) {
    switch (shape.kind) {
      case Drawing::Shape::eDots:
        return DrawDots(shape);
      case Drawing::Shape::eText:
        return DrawText(shape);
      case Drawing::Shape::ePicture:
        return DrawPicture(shape);
      default:
        return DrawPaths(shape);
    }
  }

  std::string Bytes() {
    if (HPDF_GetError(m_pDocument) == HPDF_OK) HPDF_SaveToStream(m_pDocument);
    std::string strBytes(HPDF_GetStreamSize(m_pDocument), '\0');
    HPDF_UINT32 uSize = static_cast<HPDF_UINT32>(strBytes.size());
    if (HPDF_GetError(m_pDocument) == HPDF_OK) {
      HPDF_ReadFromStream(m_pDocument, reinterpret_cast<HPDF_BYTE*>(strBytes.data()), &uSize);
      HPDF_ResetError(m_pDocument);  // that of the stream's end
      if (uSize == strBytes.size() && uSize > 0) return strBytes;
    }
    throw std::runtime_error("the drawing cannot be made as PDF, error " +
                             std::to_string(HPDF_GetError(m_pDocument)));
  }

 private:
  float Points(double d) const { return static_cast<float>(d * m_dScale); }
  float Up(double y) const { return Points(m_dHeight - y); }
  void SetLine(double dWidth, Color color) {
    HPDF_Page_SetLineWidth(m_pPage, Points(dWidth));
    HPDF_Page_SetRGBStroke(m_pPage, Part(color.iRed), Part(color.iGreen), Part(color.iBlue));
  }
  void SetFilling(Color color) {
    HPDF_Page_SetRGBFill(m_pPage, Part(color.iRed), Part(color.iGreen), Part(color.iBlue));
  }
  static float Part(int i) { return static_cast<float>(i) / 255.0F; }

  void Trace(const std::vector<std::pair<double, double>>& path) {
    HPDF_Page_MoveTo(m_pPage, Points(path[0].first), Up(path[0].second));
    for (size_t i = 1; i < path.size(); ++i) {
      HPDF_Page_LineTo(m_pPage, Points(path[i].first), Up(path[i].second));
    }
  }
  void DrawPaths(const Drawing::Shape& shape) {
    if (shape.style.bFilled) {
      SetFilling(shape.style.filling);
      for (const auto& path : shape.paths) {
        if (path.size() < 3) continue;
        Trace(path);
        HPDF_Page_Fill(m_pPage);
      }
    }
    if (!(shape.style.dWidth > 0.0)) return;
    SetLine(shape.style.dWidth, shape.style.line);
    for (const auto& path : Dashes(shape)) {
      if (path.size() < 2) continue;
      Trace(path);
      HPDF_Page_Stroke(m_pPage);
    }
  }
  void DrawDots(const Drawing::Shape& shape) {
    const bool bLine = shape.style.dWidth > 0.0;
    if (bLine) SetLine(shape.style.dWidth, shape.style.line);
    if (shape.style.bFilled) SetFilling(shape.style.filling);
    for (const auto& [x, y] : shape.paths[0]) {
      if (!(shape.dSize > 0.0)) continue;
      HPDF_Page_Circle(m_pPage, Points(x), Up(y), Points(shape.dSize));
      if (shape.style.bFilled && bLine) {
        HPDF_Page_FillStroke(m_pPage);
      } else if (shape.style.bFilled) {
        HPDF_Page_Fill(m_pPage);
      } else {
        HPDF_Page_Stroke(m_pPage);
      }
    }
  }
  void DrawText(const Drawing::Shape& shape) {
    const std::string strWestern = Western(shape.strText);
    const auto& at = shape.paths[0][0];
    HPDF_Page_SetFontAndSize(m_pPage, shape.style.bBold ? m_pBold : m_pFont, Points(shape.dSize));
    const float fBack =
        -0.5F * static_cast<float>(shape.anchor) * HPDF_Page_TextWidth(m_pPage, strWestern.c_str());
    const double dTurn = shape.dTurn * std::numbers::pi / 180.0;
    const auto fCos = static_cast<float>(std::cos(dTurn)),
               fSin = static_cast<float>(std::sin(dTurn));
    const auto write = [&](HPDF_TextRenderingMode mode) {
      HPDF_Page_BeginText(m_pPage);
      HPDF_Page_SetTextRenderingMode(m_pPage, mode);
      HPDF_Page_SetTextMatrix(m_pPage, fCos, -fSin, fSin, fCos, Points(at.first) + fBack * fCos,
                              Up(at.second) - fBack * fSin);
      HPDF_Page_ShowText(m_pPage, strWestern.c_str());
      HPDF_Page_EndText(m_pPage);
    };
    if (shape.style.bRim) {
      SetLine(0.25 * shape.dSize, Ink::kPaper);
      write(HPDF_STROKE);
    }
    SetFilling(shape.style.filling);
    write(HPDF_FILL);
  }
  void DrawPicture(const Drawing::Shape& shape) {
    const HPDF_Image pImage = HPDF_LoadJpegImageFromMem(
        m_pDocument, reinterpret_cast<const HPDF_BYTE*>(shape.strText.data()),
        static_cast<HPDF_UINT>(shape.strText.size()));
    if (pImage == nullptr) return;  // Bytes tells why
    const auto [x, y] = shape.paths[0][0];
    const bool bPale = shape.dSize < 1.0;
    if (bPale) {
      HPDF_Page_GSave(m_pPage);
      const HPDF_ExtGState pState = HPDF_CreateExtGState(m_pDocument);
      HPDF_ExtGState_SetAlphaFill(pState, static_cast<float>(shape.dSize));
      HPDF_Page_SetExtGState(m_pPage, pState);
    }
    HPDF_Page_DrawImage(m_pPage, pImage, Points(x), Up(y + shape.dHeight), Points(shape.dWidth),
                        Points(shape.dHeight));
    if (bPale) HPDF_Page_GRestore(m_pPage);
  }

  HPDF_Doc m_pDocument;
  HPDF_Page m_pPage = nullptr;
  HPDF_Font m_pFont = nullptr, m_pBold = nullptr;
  double m_dScale;  // points in a unit of the drawing
  double m_dHeight;
};

}  // namespace

std::string PdfOf(const Drawing& drawing) {
  PdfPage page(drawing);
  for (const Drawing::Shape& shape : drawing.Shapes()) page.Draw(shape);
  return page.Bytes();
}

}  // namespace cli
