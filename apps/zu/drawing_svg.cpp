#include <charconv>
#include <cmath>

#include "drawing.h"
#include "svg.h"

namespace cli {

namespace {

// Two decimals are enough for a drawing, one for the ends of many arrows.
std::string Decimal(double d, double dSteps = 100.0) {
  char buffer[64];
  const double dRounded = std::round(d * dSteps) / dSteps;
  const auto result =
      std::to_chars(buffer, buffer + sizeof buffer, dRounded == 0.0 ? 0.0 : dRounded);
  return std::string(buffer, result.ptr);
}

std::string Attribute(const char* szName, double d) {
  return std::string(" ") + szName + "='" + Decimal(d) + "'";
}

std::string ColorText(Color color) {
  constexpr char kDigits[] = "0123456789abcdef";
  std::string strText = "#";
  for (const int i : {color.iRed, color.iGreen, color.iBlue}) {
    strText += kDigits[i >> 4 & 15];
    strText += kDigits[i & 15];
  }
  return strText;
}

std::string Painting(const Style& style) {
  std::string strText =
      style.bFilled ? " fill='" + ColorText(style.filling) + "'" : std::string(" fill='none'");
  if (!(style.dWidth > 0.0)) return strText;
  strText += " stroke='" + ColorText(style.line) + "'" + Attribute("stroke-width", style.dWidth);
  if (style.dDash > 0.0) {
    strText += " stroke-dasharray='" + Decimal(style.dDash) + " " + Decimal(style.dGap) + "'";
  }
  return strText;
}

// S. Josefsson: The Base16, Base32, and Base64 data encodings, 2006.
std::string Base64(const std::string& bytes) {
  constexpr char kDigits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string text;
  for (size_t i = 0; i < bytes.size(); i += 3) {
    unsigned u = 0;
    for (size_t k = 0; k < 3; ++k) {
      u = u << 8 | (i + k < bytes.size() ? static_cast<unsigned char>(bytes[i + k]) : 0U);
    }
    for (size_t k = 0; k < 4; ++k) {
      text += i + k <= bytes.size() ? kDigits[u >> (18 - 6 * k) & 63U] : '=';
    }
  }
  return text;
}

std::string PathText(const Drawing::Shape& shape) {
  // Many short lines: tenths, each point from the one before it.
  const bool bMany = shape.paths.size() > 1;
  const double dSteps = bMany ? 10.0 : 100.0;
  std::string strPath;
  for (const auto& path : shape.paths) {
    double xLast = 0.0, yLast = 0.0;
    for (size_t i = 0; i < path.size(); ++i) {
      const double x = std::round(path[i].first * dSteps) / dSteps;
      const double y = std::round(path[i].second * dSteps) / dSteps;
      const bool bFrom = bMany && i > 0;
      strPath += i == 0 ? "M" : i > 1 ? " " : bMany ? "l" : "L";
      strPath +=
          Decimal(bFrom ? x - xLast : x, dSteps) + " " + Decimal(bFrom ? y - yLast : y, dSteps);
      xLast = x;
      yLast = y;
    }
    if (shape.kind == Drawing::Shape::eClosed) strPath += "Z";
  }
  return strPath;
}

std::string DotsText(const Drawing::Shape& shape) {
  const auto& centres = shape.paths[0];
  if (centres.size() == 1) {
    return "<circle" + Attribute("cx", centres[0].first) + Attribute("cy", centres[0].second) +
           Attribute("r", shape.dSize) + Painting(shape.style) + "/>\n";
  }
  std::string strPath;
  for (const auto& [x, y] : centres) {
    strPath += "M" + Decimal(x, 10.0) + " " + Decimal(y, 10.0) + "h0";
  }
  return "<path d='" + strPath + "' fill='none' stroke-linecap='round'" +
         Attribute("stroke-width", 2.0 * shape.dSize) + " stroke='" +
         ColorText(shape.style.filling) + "'/>\n";
}

std::string TextText(const Drawing::Shape& shape) {
  constexpr const char* kAnchors[] = {"start", "middle", "end"};
  const auto [x, y] = shape.paths[0][0];
  std::string strText = "<text" + Attribute("x", x) + Attribute("y", y) +
                        Attribute("font-size", shape.dSize) + " text-anchor='" +
                        kAnchors[static_cast<int>(shape.anchor)] + "'" + Painting(shape.style);
  if (shape.style.bBold) strText += " font-weight='bold'";
  if (shape.style.bRim) {
    strText += " stroke='" + ColorText(Ink::kPaper) + "'" +
               Attribute("stroke-width", 0.25 * shape.dSize) + " paint-order='stroke'";
  }
  if (shape.dTurn != 0.0) {
    strText +=
        " transform='rotate(" + Decimal(shape.dTurn) + " " + Decimal(x) + " " + Decimal(y) + ")'";
  }
  return strText + ">" + XmlText(shape.strText) + "</text>\n";
}

std::string ShapeText(const Drawing::Shape& shape) {
  switch (shape.kind) {
    case Drawing::Shape::eDots:
      return DotsText(shape);
    case Drawing::Shape::eText:
      return TextText(shape);
    case Drawing::Shape::ePicture:
      return "<image" + Attribute("x", shape.paths[0][0].first) +
             Attribute("y", shape.paths[0][0].second) + Attribute("width", shape.dWidth) +
             Attribute("height", shape.dHeight) + Attribute("opacity", shape.dSize) +
             " preserveAspectRatio='none' href='data:image/jpeg;base64," + Base64(shape.strText) +
             "'/>\n";
    default:
      return "<path d='" + PathText(shape) + "'" + Painting(shape.style) + "/>\n";
  }
}

std::string Document(const Drawing& drawing, const std::string& strUnit, double dUnit) {
  std::string strText =
      "<svg xmlns='http://www.w3.org/2000/svg' viewBox='0 0 " + Decimal(drawing.Width()) + " " +
      Decimal(drawing.Height()) + "' width='" + Decimal(dUnit * drawing.Width()) + strUnit +
      "' height='" + Decimal(dUnit * drawing.Height()) + strUnit +
      "' font-family='sans-serif' role='img'>\n<title>" + XmlText(drawing.Title()) + "</title>\n" +
      "<rect width='100%' height='100%' fill='" + ColorText(Ink::kPaper) + "'/>\n";
  for (const Drawing::Shape& shape : drawing.Shapes()) strText += ShapeText(shape);
  return strText + "</svg>\n";
}

}  // namespace

std::string SvgOf(const Drawing& drawing) {
  return Document(drawing, drawing.Unit() == Drawing::eUnit::ePixel ? "" : "mm", 1.0);
}

std::string SvgFileOf(const Drawing& drawing) {
  return "<?xml version='1.0' encoding='UTF-8'?>\n" +
         Document(drawing, "mm", Millimetres(drawing, 1.0));
}

}  // namespace cli
