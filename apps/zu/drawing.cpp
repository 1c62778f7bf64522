#include "drawing.h"

#include <cmath>

namespace cli {

namespace {

constexpr double kMillimetresPerPixel = 25.4 / 96.0;

double Number(double d) { return std::isfinite(d) ? d : 0.0; }

}  // namespace

void Drawing::Line(double x1, double y1, double x2, double y2, const Style& style) {
  Polyline({{x1, y1}, {x2, y2}}, style);
}

void Drawing::Polyline(const std::vector<std::pair<double, double>>& points, const Style& style) {
  Shape shape;
  shape.paths.emplace_back();
  for (const auto& [x, y] : points) shape.paths.back().emplace_back(Number(x), Number(y));
  shape.style = style;
  m_shapes.push_back(std::move(shape));
}

void Drawing::Polygon(const std::vector<std::pair<double, double>>& points, const Style& style) {
  Polyline(points, style);
  m_shapes.back().kind = Shape::eClosed;
}

void Drawing::Rect(double x, double y, double dWidth, double dHeight, const Style& style) {
  Polygon({{x, y}, {x + dWidth, y}, {x + dWidth, y + dHeight}, {x, y + dHeight}}, style);
}

void Drawing::Picture(double x, double y, double dWidth, double dHeight, const std::string& strJpeg,
                      double dOpacity) {
  Polyline({{x, y}}, {});
  Shape& shape = m_shapes.back();
  shape.kind = Shape::ePicture;
  shape.dWidth = dWidth;
  shape.dHeight = dHeight;
  shape.dSize = dOpacity;
  shape.strText = strJpeg;
}

void Drawing::Circle(double x, double y, double dRadius, const Style& style) {
  Polyline({{x, y}}, style);
  m_shapes.back().kind = Shape::eDots;
  m_shapes.back().dSize = dRadius;
}

void Drawing::Text(double x, double y, const std::string& strText, double dSize, Anchor anchor,
                   double dTurn, const Style& style) {
  Polyline({{x, y}}, style);
  Shape& shape = m_shapes.back();
  shape.kind = Shape::eText;
  shape.strText = strText;
  shape.dSize = dSize;
  shape.anchor = anchor;
  shape.dTurn = dTurn;
}

void Drawing::Arrow(double x1, double y1, double x2, double y2, Color color) {
  Circle(x1, y1, 1.2, Filled(color));
  if (std::hypot(x2 - x1, y2 - y1) > 0.5) Arrows({{x1, y1, x2, y2}}, Pen(color, 1.2));
}

void Drawing::Arrows(const std::vector<Segment>& segments, const Style& style) {
  constexpr double kHead = 3.5;  // length of a head [px]
  Shape shape;
  shape.style = style;
  for (const Segment& s : segments) {
    const double dx = s.x2 - s.x1, dy = s.y2 - s.y1, dLength = std::hypot(dx, dy);
    if (!std::isfinite(dLength) || !std::isfinite(s.x1 + s.y1)) continue;
    shape.paths.push_back({{s.x1, s.y1}, {s.x2, s.y2}});
    if (dLength < 2.0 * kHead) continue;
    const double ux = dx / dLength * kHead, uy = dy / dLength * kHead;
    shape.paths.push_back({{s.x2 - ux + 0.5 * uy, s.y2 - uy - 0.5 * ux},
                           {s.x2, s.y2},
                           {s.x2 - ux - 0.5 * uy, s.y2 - uy + 0.5 * ux}});
  }
  m_shapes.push_back(std::move(shape));
}

void Drawing::Dots(const std::vector<Segment>& segments, double dRadius, Color color) {
  std::vector<std::pair<double, double>> centres;
  for (const Segment& s : segments) centres.emplace_back(s.x1, s.y1);
  Polyline(centres, Filled(color));
  m_shapes.back().kind = Shape::eDots;
  m_shapes.back().dSize = dRadius;
}

double Millimetres(const Drawing& drawing, double d) {
  return drawing.Unit() == Drawing::eUnit::ePixel ? d * kMillimetresPerPixel : d;
}

std::vector<std::vector<std::pair<double, double>>> Dashes(const Drawing::Shape& shape) {
  const double dDash = shape.style.dDash, dGap = shape.style.dGap;
  std::vector<std::vector<std::pair<double, double>>> paths = shape.paths;
  if (shape.kind == Drawing::Shape::eClosed) {
    for (auto& path : paths) path.push_back(path.front());
  }
  if (!(dDash > 0.0) || !(dGap > 0.0)) return paths;
  std::vector<std::vector<std::pair<double, double>>> dashes;
  for (const auto& path : paths) {
    double dLeft = dDash;  // of the dash or gap that a segment begins in
    bool bDash = true;
    if (!path.empty()) dashes.push_back({path.front()});
    for (size_t i = 1; i < path.size(); ++i) {
      auto [x, y] = path[i - 1];
      double dRest = std::hypot(path[i].first - x, path[i].second - y);
      while (dRest > dLeft) {
        x += dLeft / dRest * (path[i].first - x);
        y += dLeft / dRest * (path[i].second - y);
        dRest -= dLeft;
        if (bDash) {
          dashes.back().emplace_back(x, y);
        } else {
          dashes.push_back({{x, y}});
        }
        bDash = !bDash;
        dLeft = bDash ? dDash : dGap;
      }
      dLeft -= dRest;
      if (bDash) dashes.back().push_back(path[i]);
    }
  }
  return dashes;
}

}  // namespace cli
