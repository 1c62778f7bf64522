#include <algorithm>
#include <cmath>
#include <stdexcept>

#include "drawing.h"
#include "zu/image/canvas.h"

namespace cli {

namespace {

ZuCanvas::Color CanvasColor(Color color) { return {color.iRed, color.iGreen, color.iBlue}; }

class CanvasPainter {
 public:
  CanvasPainter(ZuCanvas* pCanvas, double dScale) : m_canvas(*pCanvas), m_dScale(dScale) {}

  void Draw(const Drawing::Shape& shape) {
    const Style& style = shape.style;
    const auto [x, y] = shape.paths.empty() || shape.paths[0].empty() ? std::pair(0.0, 0.0)
                                                                      : Scaled(shape.paths[0][0]);
    switch (shape.kind) {
      case Drawing::Shape::eDots:
        for (const auto& centre : shape.paths[0]) DrawDot(Scaled(centre), shape);
        return;
      case Drawing::Shape::eText: {
        ZuCanvas::Letters letters;
        letters.m_dAnchor = 0.5 * static_cast<int>(shape.anchor);
        letters.m_dTurn = shape.dTurn;
        letters.m_dRim = style.bRim ? 0.125 * shape.dSize * m_dScale : 0.0;
        letters.m_bBold = style.bBold;
        m_canvas.Text(x, y, shape.strText, shape.dSize * m_dScale, letters,
                      CanvasColor(style.filling));
        return;
      }
      case Drawing::Shape::ePicture:
        if (!m_canvas.Picture(x, y, shape.dWidth * m_dScale, shape.dHeight * m_dScale,
                              shape.strText, shape.dSize)) {
          throw std::runtime_error("the picture in the drawing cannot be read");
        }
        return;
      default:
        if (style.bFilled) {
          for (const auto& path : shape.paths) {
            m_canvas.Polygon(Scaled(path), CanvasColor(style.filling));
          }
        }
        if (!(style.dWidth > 0.0)) return;
        for (const auto& path : Dashes(shape)) {
          m_canvas.Lines(Scaled(path), style.dWidth * m_dScale, CanvasColor(style.line));
        }
    }
  }

 private:
  std::pair<double, double> Scaled(const std::pair<double, double>& place) const {
    return {place.first * m_dScale, place.second * m_dScale};
  }
  ZuCanvas::Points Scaled(const std::vector<std::pair<double, double>>& path) const {
    ZuCanvas::Points points;
    for (const auto& place : path) points.push_back(Scaled(place));
    return points;
  }
  void DrawDot(const std::pair<double, double>& centre, const Drawing::Shape& shape) {
    const Style& style = shape.style;
    const double dRadius = shape.dSize * m_dScale;
    if (style.bFilled) {
      m_canvas.Circle(centre.first, centre.second, dRadius, 0.0, CanvasColor(style.filling));
    }
    if (style.dWidth > 0.0) {
      m_canvas.Circle(centre.first, centre.second, dRadius, style.dWidth * m_dScale,
                      CanvasColor(style.line));
    }
  }

  ZuCanvas& m_canvas;
  double m_dScale;
};

}  // namespace

std::string PngOf(const Drawing& drawing, int iWidth) {
  const double dLongest = std::max(drawing.Width(), drawing.Height());
  if (!(drawing.Width() > 0.0) || !(drawing.Height() > 0.0)) {
    throw std::runtime_error("the drawing has no size");
  }
  const double dScale = std::min(iWidth / drawing.Width(), ZuCanvas::kMostSide / dLongest);
  ZuCanvas canvas(std::max(1, static_cast<int>(std::lround(drawing.Width() * dScale))),
                  std::max(1, static_cast<int>(std::lround(drawing.Height() * dScale))));
  CanvasPainter painter(&canvas, dScale);
  for (const Drawing::Shape& shape : drawing.Shapes()) painter.Draw(shape);
  std::string strFile = canvas.Png();
  if (strFile.empty()) throw std::runtime_error("the drawing cannot be made as PNG");
  return strFile;
}

}  // namespace cli
