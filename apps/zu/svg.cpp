#include "svg.h"

#include <algorithm>
#include <charconv>
#include <cmath>

namespace cli {

namespace {

constexpr double kTitleSize = 15.0;
constexpr double kAxisSize = 13.0;
constexpr double kTickSize = 12.0;
constexpr char kFrame[] = "fill='none' stroke='#555' stroke-width='1'";
constexpr char kGrid[] = "stroke='#ddd' stroke-width='1'";
constexpr char kZero[] = "stroke='#999' stroke-width='1'";

// Two decimals are enough for a drawing, one for the ends of many arrows.
std::string Pixel(double d, double dSteps = 100.0) {
  if (!std::isfinite(d)) d = 0.0;
  char buffer[64];
  const double dRounded = std::round(d * dSteps) / dSteps;
  const auto result =
      std::to_chars(buffer, buffer + sizeof buffer, dRounded == 0.0 ? 0.0 : dRounded);
  return std::string(buffer, result.ptr);
}

std::string Tenth(double d) { return Pixel(d, 10.0); }

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

constexpr double kGrouped = 1e5;      // from which a number is written in groups of digits
constexpr double kMostDigits = 1e15;  // beyond, a power of ten is shorter
constexpr double kFinestStep = 1e-9;  // of labels that are written without a power of ten
constexpr int kLongest = 6;           // digits of a label without an offset

// With thin spaces between groups of three digits before the point, from five digits on.
std::string Grouped(double d, int iDecimals) {
  char buffer[64];
  const double dRounded = d == 0.0 ? 0.0 : d;
  const auto result =
      std::to_chars(buffer, buffer + sizeof buffer, dRounded, std::chars_format::fixed, iDecimals);
  std::string strText(buffer, result.ptr);
  if (strText.find_first_of("123456789") == std::string::npos && strText[0] == '-') {
    strText.erase(0, 1);
  }
  const size_t uFirst = strText[0] == '-' ? 1 : 0;
  const size_t uPoint = std::min(strText.find('.'), strText.size());
  if (uPoint - uFirst < 5) return strText;
  for (size_t u = uPoint; u > uFirst + 3;) {
    u -= 3;
    strText.insert(u, "\u2009");
  }
  return strText;
}

// Of UTF-8.
size_t Characters(const std::string& strText) {
  return static_cast<size_t>(
      std::count_if(strText.begin(), strText.end(), [](char c) { return (c & 0xC0) != 0x80; }));
}

std::string BeforeUnit(std::string strTitle, const std::string& strText) {
  const size_t uUnit = std::min(strTitle.rfind(" ["), strTitle.size());
  return strTitle.insert(uUnit, strText);
}

std::string Attribute(const char* szName, double d) {
  return std::string(" ") + szName + "='" + Pixel(d) + "'";
}

}  // namespace

std::string XmlText(const std::string& strText) {
  std::string strResult;
  for (const char c : strText) {
    switch (c) {
      case '&':
        strResult += "&amp;";
        break;
      case '<':
        strResult += "&lt;";
        break;
      case '>':
        strResult += "&gt;";
        break;
      case '"':
        strResult += "&quot;";
        break;
      case '\'':
        strResult += "&#39;";
        break;
      default:
        if (static_cast<unsigned char>(c) >= 0x20) strResult += c;
    }
  }
  return strResult;
}

void Svg::Line(double x1, double y1, double x2, double y2, const std::string& strStyle) {
  m_strBody += "<line" + Attribute("x1", x1) + Attribute("y1", y1) + Attribute("x2", x2) +
               Attribute("y2", y2) + " " + strStyle + "/>\n";
}

void Svg::Polyline(const std::vector<std::pair<double, double>>& points,
                   const std::string& strStyle) {
  m_strBody += "<polyline points='";
  for (const auto& [x, y] : points) m_strBody += Pixel(x) + "," + Pixel(y) + " ";
  m_strBody += "' fill='none' " + strStyle + "/>\n";
}

void Svg::Rect(double x, double y, double dWidth, double dHeight, const std::string& strStyle) {
  m_strBody += "<rect" + Attribute("x", x) + Attribute("y", y) + Attribute("width", dWidth) +
               Attribute("height", dHeight) + " " + strStyle + "/>\n";
}

void Svg::Picture(double x, double y, double dWidth, double dHeight, const std::string& strJpeg,
                  double dOpacity) {
  m_strBody += "<image" + Attribute("x", x) + Attribute("y", y) + Attribute("width", dWidth) +
               Attribute("height", dHeight) + Attribute("opacity", dOpacity) +
               " preserveAspectRatio='none' href='data:image/jpeg;base64," + Base64(strJpeg) +
               "'/>\n";
}

void Svg::Circle(double x, double y, double dRadius, const std::string& strStyle) {
  m_strBody += "<circle" + Attribute("cx", x) + Attribute("cy", y) + Attribute("r", dRadius) + " " +
               strStyle + "/>\n";
}

void Svg::Text(double x, double y, const std::string& strText, double dSize,
               const std::string& strAnchor, double dTurn, const std::string& strStyle) {
  m_strBody += "<text" + Attribute("x", x) + Attribute("y", y) + Attribute("font-size", dSize) +
               " text-anchor='" + strAnchor + "' " + strStyle;
  if (dTurn != 0.0) {
    m_strBody += " transform='rotate(" + Pixel(dTurn) + " " + Pixel(x) + " " + Pixel(y) + ")'";
  }
  m_strBody += ">" + XmlText(strText) + "</text>\n";
}

void Svg::Arrow(double x1, double y1, double x2, double y2, const std::string& strColor) {
  constexpr double kHead = 4.0;  // length of the head [px]
  const double dx = x2 - x1, dy = y2 - y1;
  const double dLength = std::hypot(dx, dy);
  Circle(x1, y1, 1.2, "fill='" + strColor + "'");
  if (!(dLength > 0.5)) return;
  const std::string strStyle = "stroke='" + strColor + "' stroke-width='1.2'";
  Line(x1, y1, x2, y2, strStyle);
  if (dLength < kHead) return;
  const double ux = dx / dLength * kHead, uy = dy / dLength * kHead;
  Polyline({{x2 - ux + 0.5 * uy, y2 - uy - 0.5 * ux},
            {x2, y2},
            {x2 - ux - 0.5 * uy, y2 - uy + 0.5 * ux}},
           strStyle);
}

void Svg::Arrows(const std::vector<Segment>& segments, const std::string& strStyle) {
  constexpr double kHead = 3.5;  // length of a head [px]
  std::string strPath;
  for (const Segment& s : segments) {
    const double dx = s.x2 - s.x1, dy = s.y2 - s.y1, dLength = std::hypot(dx, dy);
    if (!std::isfinite(dLength)) continue;
    strPath += "M" + Tenth(s.x1) + " " + Tenth(s.y1) + "L" + Tenth(s.x2) + " " + Tenth(s.y2);
    if (dLength < 2.0 * kHead) continue;
    const double ux = dx / dLength * kHead, uy = dy / dLength * kHead;
    strPath += "m" + Tenth(-ux + 0.5 * uy) + " " + Tenth(-uy - 0.5 * ux) + "L" + Tenth(s.x2) + " " +
               Tenth(s.y2) + "l" + Tenth(-ux - 0.5 * uy) + " " + Tenth(-uy + 0.5 * ux);
  }
  m_strBody += "<path d='" + strPath + "' fill='none' " + strStyle + "/>\n";
}

void Svg::Dots(const std::vector<Segment>& segments, double dRadius, const std::string& strStyle) {
  std::string strPath;
  for (const Segment& s : segments) strPath += "M" + Tenth(s.x1) + " " + Tenth(s.y1) + "h0";
  m_strBody += "<path d='" + strPath + "' fill='none' stroke-linecap='round'" +
               Attribute("stroke-width", 2.0 * dRadius) + " " + strStyle + "/>\n";
}

std::string Svg::AsText(const std::string& strTitle, const std::string& strUnit) const {
  return "<svg xmlns='http://www.w3.org/2000/svg' viewBox='0 0 " + Pixel(m_dWidth) + " " +
         Pixel(m_dHeight) + "' width='" + Pixel(m_dWidth) + strUnit + "' height='" +
         Pixel(m_dHeight) + strUnit + "' font-family='sans-serif' role='img'>\n<title>" +
         XmlText(strTitle) + "</title>\n" + "<rect width='100%' height='100%' fill='white'/>\n" +
         m_strBody + "</svg>\n";
}

SvgPlot::SvgPlot(Svg& svg, double dLeft, double dTop, double dWidth, double dHeight, Range x,
                 Range y)
    : m_svg(svg),
      m_dLeft(dLeft),
      m_dTop(dTop),
      m_dWidth(dWidth),
      m_dHeight(dHeight),
      m_x(x),
      m_y(y) {
  for (Range* pRange : {&m_x, &m_y}) {  // an empty range has no scale
    if (!(pRange->dHigh > pRange->dLow)) *pRange = {pRange->dLow - 1.0, pRange->dLow + 1.0};
  }
}

void SvgPlot::MakeSquareScale() {
  const double dUnit =
      std::max((m_x.dHigh - m_x.dLow) / m_dWidth, (m_y.dHigh - m_y.dLow) / m_dHeight);
  const double cx = 0.5 * (m_x.dLow + m_x.dHigh), cy = 0.5 * (m_y.dLow + m_y.dHigh);
  m_x = {cx - 0.5 * dUnit * m_dWidth, cx + 0.5 * dUnit * m_dWidth};
  m_y = {cy - 0.5 * dUnit * m_dHeight, cy + 0.5 * dUnit * m_dHeight};
}

double SvgPlot::X(double x) const {
  return m_dLeft + (x - m_x.dLow) / (m_x.dHigh - m_x.dLow) * m_dWidth;
}

double SvgPlot::Y(double y) const {
  return m_dTop + (m_y.dHigh - y) / (m_y.dHigh - m_y.dLow) * m_dHeight;
}

double SvgPlot::PixelsPerUnit() const { return m_dWidth / (m_x.dHigh - m_x.dLow); }

void SvgPlot::DrawFrame(const std::string& strTitle, const std::string& strTitleX,
                        const std::string& strTitleY) {
  const double dBottom = m_dTop + m_dHeight, dRight = m_dLeft + m_dWidth;
  const auto ticksX = SvgTicks(m_x.dLow, m_x.dHigh, static_cast<int>(m_dWidth / 70.0));
  const SvgTickLabels labelsX(ticksX);
  for (size_t i = 0; i < ticksX.size(); ++i) {
    const double x = ticksX[i];
    m_svg.Line(X(x), m_dTop, X(x), dBottom, x == 0.0 ? kZero : kGrid);
    m_svg.Text(X(x), dBottom + 16.0, labelsX.texts[i], kTickSize, "middle");
  }
  size_t uWidest = 0;
  const auto ticksY = SvgTicks(m_y.dLow, m_y.dHigh, static_cast<int>(m_dHeight / 50.0));
  const SvgTickLabels labelsY(ticksY);
  for (size_t i = 0; i < ticksY.size(); ++i) {
    const double y = ticksY[i];
    m_svg.Line(m_dLeft, Y(y), dRight, Y(y), y == 0.0 ? kZero : kGrid);
    m_svg.Text(m_dLeft - 6.0, Y(y) + 4.0, labelsY.texts[i], kTickSize, "end");
    uWidest = std::max(uWidest, Characters(labelsY.texts[i]));
  }
  m_svg.Rect(m_dLeft, m_dTop, m_dWidth, m_dHeight, kFrame);
  m_svg.Text(m_dLeft + 0.5 * m_dWidth, m_dTop - 10.0, strTitle, kTitleSize, "middle", 0.0,
             "fill='#111' font-weight='bold'");
  m_svg.Text(m_dLeft + 0.5 * m_dWidth, dBottom + 36.0, BeforeUnit(strTitleX, labelsX.strOffset),
             kAxisSize, "middle");
  m_svg.Text(m_dLeft - 18.0 - 7.0 * static_cast<double>(uWidest), m_dTop + 0.5 * m_dHeight,
             BeforeUnit(strTitleY, labelsY.strOffset), kAxisSize, "middle", -90.0);
}

double SvgRoundDown(double d) {
  if (!(d > 0.0) || !std::isfinite(d)) return 0.0;
  const double dPower = std::pow(10.0, std::floor(std::log10(d)));
  for (const double dStep : {5.0, 2.0, 1.0}) {
    if (d >= dStep * dPower * (1.0 - 1e-12)) return dStep * dPower;
  }
  return dPower;
}

std::vector<double> SvgTicks(double dLow, double dHigh, int iCount) {
  std::vector<double> ticks;
  if (!(dHigh > dLow) || !std::isfinite(dHigh - dLow)) return ticks;
  double dStep = SvgRoundDown((dHigh - dLow) / std::max(iCount, 2));
  if (dStep == 0.0) return ticks;
  while ((dHigh - dLow) / dStep > 1.6 * std::max(iCount, 2)) dStep *= 2.0;
  const double dFirst = std::ceil(dLow / dStep - 1e-9), dLast = std::floor(dHigh / dStep + 1e-9);
  for (double n = dFirst; n <= dLast && ticks.size() < 100; n += 1.0)
    ticks.push_back(n * dStep + 0.0);
  return ticks;
}

std::string Significant(double d) {
  char buffer[32];
  const auto result = std::to_chars(buffer, buffer + sizeof buffer, std::isfinite(d) ? d : 0.0,
                                    std::chars_format::general, 3);
  return std::string(buffer, result.ptr);
}

std::string SvgNumber(double d) {
  if (!std::isfinite(d)) return "-";
  if (std::fabs(d) >= kGrouped && std::fabs(d) < kMostDigits) return Grouped(d, 0);
  char buffer[32];
  const auto result = std::to_chars(buffer, buffer + sizeof buffer, d == 0.0 ? 0.0 : d,
                                    std::chars_format::general, 6);
  return std::string(buffer, result.ptr);
}

SvgTickLabels::SvgTickLabels(const std::vector<double>& ticks) {
  const double dStep = ticks.size() > 1 ? ticks[1] - ticks[0] : 0.0;
  const double dLargest =
      ticks.empty() ? 0.0 : std::max(std::fabs(ticks.front()), std::fabs(ticks.back()));
  if (!(dStep >= kFinestStep) || !(dLargest < kMostDigits)) {
    for (const double d : ticks) texts.push_back(SvgNumber(d));
    return;
  }
  const int iDecimals = std::max(0, -static_cast<int>(std::floor(std::log10(dStep) + 1e-9)));
  double dOffset = 0.0;
  if (dLargest >= std::pow(10.0, std::max(1, kLongest - iDecimals))) {
    const double dRange = ticks.back() - ticks.front();
    const double dUnit = std::pow(10.0, std::ceil(std::log10(dRange)));
    dOffset = std::floor(ticks.front() / dUnit) * dUnit;
  }
  for (const double d : ticks) texts.push_back(Grouped(d - dOffset, iDecimals));
  if (dOffset > 0.0) strOffset = " less " + Grouped(dOffset, 0);
  if (dOffset < 0.0) strOffset = " plus " + Grouped(-dOffset, 0);
}

}  // namespace cli
