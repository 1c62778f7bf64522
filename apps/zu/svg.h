// What drawings and pages have in common: text of XML, numbers as labels, and a frame with ticks,
// titles and units around a plot.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "drawing.h"

namespace cli {

// Text with the characters that mean something in XML replaced, and without control characters.
std::string XmlText(const std::string& strText);

// A plot area inside a drawing: user units to pixels, with frame, ticks, grid and titles.
class SvgPlot {
 public:
  struct Range {
    double dLow, dHigh;
  };

  // The area's corner and size in pixels. y of the user grows upwards.
  SvgPlot(Drawing& drawing, double dLeft, double dTop, double dWidth, double dHeight, Range x,
          Range y);

  // The same scale on both axes: the ranges grow around their centres.
  void MakeSquareScale();

  // Titles stand below and left of the axes; an offset of the labels comes before their unit in
  // brackets.
  void DrawFrame(const std::string& strTitle, const std::string& strTitleX,
                 const std::string& strTitleY);

  double X(double x) const;
  double Y(double y) const;
  double PixelsPerUnit() const;  // of the x axis
  Range RangeX() const { return m_x; }
  Range RangeY() const { return m_y; }

 private:
  Drawing& m_drawing;
  double m_dLeft, m_dTop, m_dWidth, m_dHeight;
  Range m_x, m_y;
};

// Round values (1, 2, 5 times a power of ten) within [dLow, dHigh], about iCount of them.
std::vector<double> SvgTicks(double dLow, double dHigh, int iCount);
// The round value at or below d, for scale bars and exaggerations; 0 for d not above 0.
double SvgRoundDown(double d);
// A length as text with three digits that count.
std::string Significant(double d);
// A number as short text for a drawing, long ones in groups of three digits.
std::string SvgNumber(double d);

// The labels of an axis: all with the same decimals, and less a round offset where they would be
// long otherwise.
struct SvgTickLabels {
  std::vector<std::string> texts;
  std::string strOffset;  // " less 4 140 000", behind the name of the axis; empty without one

  explicit SvgTickLabels(const std::vector<double>& ticks);
};

}  // namespace cli
