#include "svg.h"

#include <algorithm>
#include <charconv>
#include <cmath>

namespace cli {

namespace {

constexpr double kTitleSize = 15.0;
constexpr double kAxisSize = 13.0;
constexpr double kTickSize = 12.0;
constexpr Style kFrame = Pen(Ink::kFrame, 1.0);
constexpr Style kGrid = Pen(Ink::kGrid, 1.0);
constexpr Style kZero = Pen(Ink::kZero, 1.0);

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

// Bytes of the letter of UTF-8 that begins at i; 0 where there is none, or one that XML refuses.
size_t SequenceLength(const std::string& strText, size_t i) {
  const auto byte = [&](size_t k) {
    return k < strText.size() ? static_cast<unsigned char>(strText[k]) : 0U;
  };
  const unsigned uFirst = byte(i);
  const size_t uLength = uFirst >= 0xF0 ? 4 : uFirst >= 0xE0 ? 3 : 2;
  if (uFirst < 0xC2 || uFirst > 0xF4) return 0;
  unsigned uCode = uFirst & (0x7FU >> uLength);
  for (size_t k = 1; k < uLength; ++k) {
    if ((byte(i + k) & 0xC0U) != 0x80U) return 0;
    uCode = uCode << 6 | (byte(i + k) & 0x3FU);
  }
  constexpr unsigned kLeast[] = {0, 0, 0x80, 0x800, 0x10000};
  const bool bRefused = uCode < kLeast[uLength] || uCode > 0x10FFFF ||
                        (uCode >= 0xD800 && uCode < 0xE000) || uCode == 0xFFFE || uCode == 0xFFFF;
  return bRefused ? 0 : uLength;
}

}  // namespace

// Bytes that are no UTF-8 become U+FFFD: a drawing is well-formed XML whatever a name holds.
std::string XmlText(const std::string& strText) {
  std::string strResult;
  for (size_t i = 0; i < strText.size(); ++i) {
    const char c = strText[i];
    if (static_cast<unsigned char>(c) >= 0x80) {
      const size_t uLength = SequenceLength(strText, i);
      strResult += uLength == 0 ? "\uFFFD" : strText.substr(i, uLength);
      i += uLength == 0 ? 0 : uLength - 1;
      continue;
    }
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

SvgPlot::SvgPlot(Drawing& drawing, double dLeft, double dTop, double dWidth, double dHeight,
                 Range x, Range y)
    : m_drawing(drawing),
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
    m_drawing.Line(X(x), m_dTop, X(x), dBottom, x == 0.0 ? kZero : kGrid);
    m_drawing.Text(X(x), dBottom + 16.0, labelsX.texts[i], kTickSize, Anchor::eMiddle);
  }
  size_t uWidest = 0;
  const auto ticksY = SvgTicks(m_y.dLow, m_y.dHigh, static_cast<int>(m_dHeight / 50.0));
  const SvgTickLabels labelsY(ticksY);
  for (size_t i = 0; i < ticksY.size(); ++i) {
    const double y = ticksY[i];
    m_drawing.Line(m_dLeft, Y(y), dRight, Y(y), y == 0.0 ? kZero : kGrid);
    m_drawing.Text(m_dLeft - 6.0, Y(y) + 4.0, labelsY.texts[i], kTickSize, Anchor::eEnd);
    uWidest = std::max(uWidest, Characters(labelsY.texts[i]));
  }
  m_drawing.Rect(m_dLeft, m_dTop, m_dWidth, m_dHeight, kFrame);
  m_drawing.Text(m_dLeft + 0.5 * m_dWidth, m_dTop - 10.0, strTitle, kTitleSize, Anchor::eMiddle,
                 0.0, Bold(Ink::kHeading));
  m_drawing.Text(m_dLeft + 0.5 * m_dWidth, dBottom + 36.0, BeforeUnit(strTitleX, labelsX.strOffset),
                 kAxisSize, Anchor::eMiddle);
  m_drawing.Text(m_dLeft - 18.0 - 7.0 * static_cast<double>(uWidest), m_dTop + 0.5 * m_dHeight,
                 BeforeUnit(strTitleY, labelsY.strOffset), kAxisSize, Anchor::eMiddle, -90.0);
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
