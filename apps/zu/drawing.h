// A drawing: shapes recorded once, written as SVG, PDF or PNG.
//
//   Drawing drawing(480.0, 330.0);
//   drawing.Line(10.0, 10.0, 90.0, 90.0, Pen(Ink::kRed, 1.5));
//   drawing.Text(12.0, 40.0, "P17", 12.0);
//   file << PdfOf(drawing);
//
// Coordinates are pixels of a page, 96 to an inch, or millimetres of paper; the origin is the upper
// left corner, y down. Numbers that are not finite are drawn at 0.
#pragma once

#include <string>
#include <utility>
#include <vector>

namespace cli {

struct Color {
  int iRed = 0, iGreen = 0, iBlue = 0;  // 0 to 255

  bool operator==(const Color&) const = default;
};

// The colours there are. A page turns each into its partner on a dark screen.
struct Ink {
  static constexpr Color kPaper{255, 255, 255}, kField{252, 252, 252};
  static constexpr Color kHeading{17, 17, 17}, kText{34, 34, 34}, kOutline{51, 51, 51};
  static constexpr Color kFrame{85, 85, 85}, kNote{119, 119, 119}, kZero{153, 153, 153};
  static constexpr Color kGrid{221, 221, 221};
  static constexpr Color kRed{193, 39, 45}, kBlue{31, 95, 168}, kGreen{43, 138, 62};
  static constexpr Color kBrown{138, 90, 43}, kYellow{184, 134, 11}, kBar{91, 132, 177},
      kFaint{138, 164, 196};
};

// How a shape is drawn: its line, of width 0 none, and its filling.
struct Style {
  Color line;
  double dWidth = 0.0;
  Color filling;
  bool bFilled = false;
  double dDash = 0.0, dGap = 0.0;  // of a broken line
  bool bBold = false;              // letters
  bool bRim = false;               // of the paper around letters, so that they are read on lines
};
constexpr Style Pen(Color line, double dWidth, double dDash = 0.0, double dGap = 0.0) {
  return {line, dWidth, {}, false, dDash, dGap, false, false};
}
constexpr Style Framed(Color filling, Color line, double dWidth = 1.0) {
  return {line, dWidth, filling, true, 0.0, 0.0, false, false};
}
constexpr Style Filled(Color filling) { return Framed(filling, {}, 0.0); }
// Letters: Filled, and these two.
constexpr Style Bold(Color letters) { return {{}, 0.0, letters, true, 0.0, 0.0, true, false}; }
constexpr Style Rimmed(Color letters) { return {{}, 0.0, letters, true, 0.0, 0.0, false, true}; }

enum class Anchor { eStart, eMiddle, eEnd };

class Drawing {
 public:
  enum class eUnit { ePixel, eMillimetre };

  Drawing(double dWidth, double dHeight, eUnit unit = eUnit::ePixel)
      : m_dWidth(dWidth), m_dHeight(dHeight), m_unit(unit) {}

  void Line(double x1, double y1, double x2, double y2, const Style& style);
  void Polyline(const std::vector<std::pair<double, double>>& points, const Style& style);
  void Polygon(const std::vector<std::pair<double, double>>& points, const Style& style);
  void Rect(double x, double y, double dWidth, double dHeight, const Style& style);
  // A picture in the drawing itself: the bytes of a JPEG file. Pale by default, so that what is
  // drawn over it is seen.
  void Picture(double x, double y, double dWidth, double dHeight, const std::string& strJpeg,
               double dOpacity = 0.35);
  void Circle(double x, double y, double dRadius, const Style& style);
  // strText is UTF-8; (x, y) is on its base line. dTurn in degrees, clockwise.
  void Text(double x, double y, const std::string& strText, double dSize,
            Anchor anchor = Anchor::eStart, double dTurn = 0.0,
            const Style& style = Filled(Ink::kText));
  // Arrows from (x1, y1) to (x2, y2), with heads where long enough: one shape.
  struct Segment {
    double x1, y1, x2, y2;
  };
  void Arrows(const std::vector<Segment>& segments, const Style& style);
  // A dot at the start of each, in one shape too.
  void Dots(const std::vector<Segment>& segments, double dRadius, Color color);
  // A line with a head at its end; nothing but a dot where both ends meet.
  void Arrow(double x1, double y1, double x2, double y2, Color color);

  // Read by screen readers, and shown as a tool tip.
  void SetTitle(const std::string& strTitle) { m_strTitle = strTitle; }

  // What was drawn, in this order.
  struct Shape {
    enum eKind { ePaths, eClosed, eDots, eText, ePicture };

    eKind kind = ePaths;
    // Lines, or the border of a filling; the centres of dots; the place of text, or of a picture's
    // corner.
    std::vector<std::vector<std::pair<double, double>>> paths;
    Style style;
    double dSize = 0.0;                  // radius of dots, size of letters, opacity of a picture
    double dWidth = 0.0, dHeight = 0.0;  // of a picture
    Anchor anchor = Anchor::eStart;
    double dTurn = 0.0;
    std::string strText;  // the text, or the bytes of the picture
  };
  const std::vector<Shape>& Shapes() const { return m_shapes; }
  const std::string& Title() const { return m_strTitle; }
  double Width() const { return m_dWidth; }
  double Height() const { return m_dHeight; }
  eUnit Unit() const { return m_unit; }

 private:
  double m_dWidth, m_dHeight;
  eUnit m_unit;
  std::string m_strTitle;
  std::vector<Shape> m_shapes;
};

// Width of the drawing's lengths on paper [mm].
double Millimetres(const Drawing& drawing, double d);
// The lines of a shape, broken into the dashes of its style.
std::vector<std::vector<std::pair<double, double>>> Dashes(const Drawing::Shape& shape);

// The drawing as a part of a page, scaled to its place by the viewer, and as a file of its own. No
// script, no font file, no network.
std::string SvgOf(const Drawing& drawing);
std::string SvgFileOf(const Drawing& drawing);
// A page of the drawing's size. A question mark stands for letters that are not in Windows' code
// page 1252. Throws std::runtime_error with what the library of the format says.
std::string PdfOf(const Drawing& drawing);
// iWidth pixels wide. Throws std::runtime_error for a drawing of a shape that has no picture.
std::string PngOf(const Drawing& drawing, int iWidth);

}  // namespace cli
