#include <cmath>

#include "sheet_paper.h"
#include "svg.h"

namespace cli {

namespace {

std::string ColorText(SheetPaper::Color color) {
  std::string strText = "rgb(";
  for (const double d : {color.r, color.g, color.b}) {
    strText += std::to_string(std::lround(255.0 * d)) + (strText.size() < 4 ? "" : ",");
  }
  strText.back() = ')';
  return strText;
}

class SvgPaper : public SheetPaper {
 public:
  SvgPaper(double dWidth, double dHeight, const std::string& strTitle)
      : m_svg(dWidth, dHeight), m_strTitle(strTitle) {}

  void Line(double x1, double y1, double x2, double y2, double dPen, Color color) override {
    m_svg.Line(x1, y1, x2, y2, Stroke(dPen, color));
  }
  void Box(double x, double y, double dWidth, double dHeight, double dPen, bool bFill) override {
    m_svg.Rect(x, y, dWidth, dHeight,
               (bFill ? "fill='black' " : "fill='none' ") + Stroke(dPen, {0.0, 0.0, 0.0}));
  }
  void Ring(double x, double y, double dRadius, double dPen, Color color) override {
    m_svg.Circle(x, y, dRadius, "fill='none' " + Stroke(dPen, color));
  }
  void Text(double x, double y, const std::string& strText, double dSize, Anchor eAnchor,
            Color color) override {
    constexpr const char* kAnchors[] = {"start", "middle", "end"};
    m_svg.Text(x, y, strText, dSize, kAnchors[eAnchor], 0.0, "fill='" + ColorText(color) + "'");
  }
  void Picture(double x, double y, double dWidth, double dHeight,
               const std::string& strJpeg) override {
    m_svg.Picture(x, y, dWidth, dHeight, strJpeg, 1.0);
  }
  std::string Bytes() override { return m_svg.Sheet(m_strTitle); }

 private:
  static std::string Stroke(double dPen, Color color) {
    return "stroke='" + ColorText(color) + "' stroke-width='" + SvgNumber(dPen) + "'";
  }

  Svg m_svg;
  std::string m_strTitle;
};

}  // namespace

std::unique_ptr<SheetPaper> MakeSvgPaper(double dWidth, double dHeight,
                                         const std::string& strTitle) {
  return std::make_unique<SvgPaper>(dWidth, dHeight, strTitle);
}

}  // namespace cli
