// A sheet of paper to draw on, as SVG or as PDF: lengths in mm, the origin in its upper left
// corner, y down. What is printed at 100 per cent has these lengths.
#pragma once

#include <memory>
#include <string>

namespace cli {

class SheetPaper {
 public:
  virtual ~SheetPaper() = default;

  enum Anchor { eStart, eMiddle, eEnd };
  struct Color {
    double r, g, b;  // 0 to 1
  };

  virtual void Line(double x1, double y1, double x2, double y2, double dPen, Color color) = 0;
  // A frame, or filled.
  virtual void Box(double x, double y, double dWidth, double dHeight, double dPen, bool bFill) = 0;
  virtual void Ring(double x, double y, double dRadius, double dPen, Color color) = 0;
  // strText is UTF-8; a PDF has a question mark for what is not in Windows' code page 1252.
  virtual void Text(double x, double y, const std::string& strText, double dSize, Anchor eAnchor,
                    Color color) = 0;
  virtual void Picture(double x, double y, double dWidth, double dHeight,
                       const std::string& strJpeg) = 0;
  // The file. Throws std::runtime_error with what the library of the format says.
  virtual std::string Bytes() = 0;
};

std::unique_ptr<SheetPaper> MakeSvgPaper(double dWidth, double dHeight,
                                         const std::string& strTitle);
std::unique_ptr<SheetPaper> MakePdfPaper(double dWidth, double dHeight,
                                         const std::string& strTitle);

}  // namespace cli
