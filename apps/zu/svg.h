// Drawings as SVG text: plain shapes, and a frame with ticks, titles and units around a plot.
// Coordinates of the drawing are pixels, y down. No script, no font file, no network.
#pragma once

#include <string>
#include <utility>
#include <vector>

namespace cli {

// Text with the characters that mean something in XML replaced, and without control characters.
std::string XmlText(const std::string& strText);

class Svg {
 public:
  Svg(double dWidth, double dHeight) : m_dWidth(dWidth), m_dHeight(dHeight) {}

  // strStyle is a list of attributes, for example "stroke='#c22' stroke-width='1.5'".
  void Line(double x1, double y1, double x2, double y2, const std::string& strStyle);
  void Polyline(const std::vector<std::pair<double, double>>& points, const std::string& strStyle);
  void Rect(double x, double y, double dWidth, double dHeight, const std::string& strStyle);
  // A picture in the page itself: the bytes of a JPEG file. Pale by default, so that what is drawn
  // over it is seen.
  void Picture(double x, double y, double dWidth, double dHeight, const std::string& strJpeg,
               double dOpacity = 0.35);
  void Circle(double x, double y, double dRadius, const std::string& strStyle);
  // strAnchor is "start", "middle" or "end"; dTurn in degrees, clockwise.
  void Text(double x, double y, const std::string& strText, double dSize,
            const std::string& strAnchor = "start", double dTurn = 0.0,
            const std::string& strStyle = "fill='#222'");
  // Many lines in one element: arrows from (x1, y1) to (x2, y2), with heads where long enough.
  struct Segment {
    double x1, y1, x2, y2;
  };
  void Arrows(const std::vector<Segment>& segments, const std::string& strStyle);
  // A dot at the start of each, in one element too; strStyle tells the stroke's colour.
  void Dots(const std::vector<Segment>& segments, double dRadius, const std::string& strStyle);
  // A line with a head at its end; nothing but a dot where both ends meet.
  void Arrow(double x1, double y1, double x2, double y2, const std::string& strColor);

  // The whole drawing, scaled to its place by the viewer. strTitle is read by screen readers and
  // shown as a tool tip.
  std::string Document(const std::string& strTitle) const { return AsText(strTitle, ""); }
  // The same for paper: its units are mm.
  std::string Sheet(const std::string& strTitle) const { return AsText(strTitle, "mm"); }

 private:
  std::string AsText(const std::string& strTitle, const std::string& strUnit) const;

  double m_dWidth, m_dHeight;
  std::string m_strBody;
};

// A plot area inside a drawing: user units to pixels, with frame, ticks, grid and titles.
class SvgPlot {
 public:
  struct Range {
    double dLow, dHigh;
  };

  // The area's corner and size in pixels. y of the user grows upwards.
  SvgPlot(Svg& svg, double dLeft, double dTop, double dWidth, double dHeight, Range x, Range y);

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
  Svg& m_svg;
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
