#include "bench/growth/plot.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>

namespace growth {
namespace {

// Sizes in pixels.
constexpr double kWidth = 420.0, kHeight = 380.0;  // of the axes
constexpr double kLeft = 80.0, kTop = 40.0, kGap = 100.0, kBelow = 60.0, kLegendLine = 24.0;
constexpr int kLegendColumns = 4;
constexpr double kLegendColumn = 250.0;

// Told apart also by those who see few colours: M. Okabe, K. Ito, "Color universal design", 2008;
// the yellow darkened.
constexpr std::array kColors = {"#0072b2", "#777777", "#e69f00", "#009e73",
                                "#d55e00", "#cc79a7", "#56b4e9", "#8a7a00"};

std::string Text(double x, double y, const std::string& strText, const char* szMore = "") {
  char ac[400];
  std::snprintf(ac, sizeof ac, "<text x=\"%.1f\" y=\"%.1f\" %s>%s</text>\n", x, y, szMore,
                strText.c_str());
  return ac;
}

std::string Line(double x1, double y1, double x2, double y2, const char* szStyle) {
  char ac[300];
  std::snprintf(ac, sizeof ac, "<line x1=\"%.1f\" y1=\"%.1f\" x2=\"%.1f\" y2=\"%.1f\" %s/>\n", x1,
                y1, x2, y2, szStyle);
  return ac;
}

// "1", "10", "0.1"; powers of ten with an exponent where they are long.
std::string Power(int iExponent) {
  if (iExponent >= -2 && iExponent <= 3) {
    char ac[20];
    std::snprintf(ac, sizeof ac, "%g", std::pow(10.0, iExponent));
    return ac;
  }
  return "10<tspan dy=\"-6\" font-size=\"10\">" + std::to_string(iExponent) + "</tspan>";
}

// Whole decades around the values.
struct Axis {
  explicit Axis(double dMin, double dMax)
      : iFirst(static_cast<int>(std::floor(std::log10(dMin) + 1e-9))),
        iLast(std::max(iFirst + 1, static_cast<int>(std::ceil(std::log10(dMax) - 1e-9)))) {}
  double Share(double d) const { return (std::log10(d) - iFirst) / (iLast - iFirst); }
  int iFirst, iLast;
};

class PanelDrawing {
 public:
  PanelDrawing(const Panel& panel, double dLeft)
      : m_panel(panel), m_dLeft(dLeft), m_x(Range(&Series::x)), m_y(Range(&Series::y)) {}

  std::string Draw() const {
    std::string str = Grid() + Curves();
    const double dMiddle = m_dLeft + 0.5 * kWidth;
    str +=
        Text(dMiddle, kTop - 14.0, m_panel.strTitle, "text-anchor=\"middle\" font-weight=\"bold\"");
    str += Text(dMiddle, kTop + kHeight + 42.0, m_panel.strX, "text-anchor=\"middle\"");
    char acTurned[120];
    std::snprintf(acTurned, sizeof acTurned,
                  "text-anchor=\"middle\" transform=\"rotate(-90 %.1f %.1f)\"", m_dLeft - 54.0,
                  kTop + 0.5 * kHeight);
    return str + Text(m_dLeft - 54.0, kTop + 0.5 * kHeight, m_panel.strY, acTurned);
  }

 private:
  Axis Range(std::vector<double> Series::*pValues) const {
    double dMin = 1e99, dMax = 1e-99;
    for (const Series& series : m_panel.series) {
      for (const double d : series.*pValues) {
        dMin = std::min(dMin, d);
        dMax = std::max(dMax, d);
      }
    }
    return Axis(dMin, dMax);
  }
  double X(double d) const { return m_dLeft + kWidth * m_x.Share(d); }
  double Y(double d) const { return kTop + kHeight * (1.0 - m_y.Share(d)); }

  std::string Grid() const {
    constexpr const char* kMajor = "stroke=\"#bbbbbb\"";
    constexpr const char* kMinor = "stroke=\"#ececec\"";
    std::string str;
    for (int i = m_x.iFirst; i <= m_x.iLast; ++i) {
      for (int k = 2; k < 10 && i < m_x.iLast; ++k) {
        const double x = X(k * std::pow(10.0, i));
        str += Line(x, kTop, x, kTop + kHeight, kMinor);
      }
    }
    for (int i = m_x.iFirst; i <= m_x.iLast; ++i) {
      const double x = X(std::pow(10.0, i));
      str += Line(x, kTop, x, kTop + kHeight, kMajor);
      str += Text(x, kTop + kHeight + 20.0, Power(i), "text-anchor=\"middle\"");
    }
    for (int i = m_y.iFirst; i <= m_y.iLast; ++i) {
      const double y = Y(std::pow(10.0, i));
      str += Line(m_dLeft, y, m_dLeft + kWidth, y, kMajor);
      str += Text(m_dLeft - 8.0, y + 4.0, Power(i), "text-anchor=\"end\"");
    }
    return str;
  }

  std::string Curves() const {
    std::string str;
    for (std::size_t i = 0; i < m_panel.series.size(); ++i) {
      const Series& series = m_panel.series[i];
      const std::string strColor = kColors[i % kColors.size()];
      std::string strPoints, strMarks;
      for (std::size_t k = 0; k < series.x.size(); ++k) {
        char ac[100];
        std::snprintf(ac, sizeof ac, "%.1f,%.1f ", X(series.x[k]), Y(series.y[k]));
        strPoints += ac;
        std::snprintf(ac, sizeof ac, "<circle cx=\"%.1f\" cy=\"%.1f\" r=\"3\" fill=\"%s\"/>\n",
                      X(series.x[k]), Y(series.y[k]), strColor.c_str());
        strMarks += ac;
      }
      str += "<polyline points=\"" + strPoints + "\" fill=\"none\" stroke-width=\"2\" stroke=\"" +
             strColor + (series.bDashed ? "\" stroke-dasharray=\"6 4" : "") + "\"/>\n" + strMarks;
    }
    return str;
  }

  const Panel& m_panel;
  double m_dLeft;
  Axis m_x, m_y;
};

std::string Legend(const std::vector<Series>& series) {
  std::string str;
  for (std::size_t i = 0; i < series.size(); ++i) {
    const double x = kLeft + kLegendColumn * static_cast<double>(i % kLegendColumns);
    const double y =
        kTop + kHeight + kBelow + 14.0 + kLegendLine * static_cast<double>(i / kLegendColumns);
    const std::string strStyle = "stroke-width=\"3\" stroke=\"" +
                                 std::string(kColors[i % kColors.size()]) +
                                 (series[i].bDashed ? "\" stroke-dasharray=\"6 4\"" : "\"");
    str += Line(x, y - 4.0, x + 28.0, y - 4.0, strStyle.c_str()) +
           Text(x + 36.0, y, series[i].strName);
  }
  return str;
}

}  // namespace

std::string Draw(const std::vector<Panel>& panels) {
  const std::size_t uPanels = panels.size();
  const std::size_t uLines = (panels[0].series.size() + kLegendColumns - 1) / kLegendColumns;
  const double dWidth = kLeft + static_cast<double>(uPanels) * (kWidth + kGap) - kGap + 30.0;
  const double dHeight = kTop + kHeight + kBelow + kLegendLine * static_cast<double>(uLines) + 6.0;
  char acHead[300];
  std::snprintf(acHead, sizeof acHead,
                "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"%.0f\" height=\"%.0f\" "
                "viewBox=\"0 0 %.0f %.0f\" font-family=\"sans-serif\" font-size=\"13\">\n",
                dWidth, dHeight, dWidth, dHeight);
  std::string str = acHead;
  str += "<rect width=\"100%\" height=\"100%\" fill=\"#ffffff\"/>\n";
  for (std::size_t i = 0; i < uPanels; ++i) {
    str += PanelDrawing(panels[i], kLeft + static_cast<double>(i) * (kWidth + kGap)).Draw();
  }
  return str + Legend(panels[0].series) + "</svg>\n";
}

}  // namespace growth
