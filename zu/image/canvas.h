// A picture to draw lines, fillings and letters on, with smooth edges, and its PNG file.
//
//   ZuCanvas canvas(800, 600);
//   canvas.Lines({{10.0, 10.0}, {790.0, 590.0}}, 1.5, {200, 0, 0});
//   canvas.Text(20.0, 30.0, "P17", 14.0, {}, {0, 0, 0});
//   file << canvas.Png();
//
// Coordinates are pixels, the origin in the upper left corner of the first one, y down; what lies
// outside is cut. The same calls give the same bytes, whatever the threads and the locale.
#pragma once

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "zu/image/export.h"

class ZU_IMAGE_API ZuCanvas {
 public:
  struct Color {
    int m_iRed = 0, m_iGreen = 0, m_iBlue = 0;  // 0 to 255
  };
  struct Letters {
    double m_dAnchor = 0.0;  // part of the text's length in front of the place: 0, 0.5, 1
    double m_dTurn = 0.0;    // about the place [degrees], clockwise
    double m_dRim = 0.0;     // of white around the letters, so that they are read on lines
    bool m_bBold = false;
  };
  using Points = std::vector<std::pair<double, double>>;

  // White. Throws std::length_error for a side below 1 or above kMostSide, and std::bad_alloc:
  // while it is drawn on, a canvas takes 12 bytes a pixel.
  static constexpr int kMostSide = 8000;
  ZuCanvas(int iWidth, int iHeight);
  ~ZuCanvas();
  ZuCanvas(const ZuCanvas&) = delete;
  ZuCanvas& operator=(const ZuCanvas&) = delete;

  // Through the points; points that are not finite end a line and begin another one.
  void Lines(const Points& points, double dWidth, Color color);
  void Polygon(const Points& points, Color color);
  // Of width 0: filled.
  void Circle(double x, double y, double dRadius, double dWidth, Color color);
  // UTF-8; dSize is the height from one line to the next. The letters are strokes of their own, so
  // no font of the system takes part: ASCII, Latin letters without their accents (ä is ae), the
  // micro sign u; "?" for others.
  void Text(double x, double y, const std::string& strText, double dSize, const Letters& letters,
            Color color);
  // A picture file in memory over the place; false where it cannot be read. dOpacity is 0 to 1.
  bool Picture(double x, double y, double dWidth, double dHeight, const std::string& strFile,
               double dOpacity);

  // The file. Empty where it cannot be made.
  std::string Png() const;

 private:
  struct Pixels;
  std::unique_ptr<Pixels> m_pPixels;
};
