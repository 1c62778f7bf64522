// A ring and points to ask it about, for the benchmarks of polygons.
#pragma once

#include <cmath>
#include <random>
#include <vector>

#include "zu/rectify/polygon.h"

namespace ring_sample {

struct Ring {
  std::vector<double> x, y;
};

// A star around (0, 0).
inline Ring Star(std::int64_t n) {
  std::mt19937 random(9);
  Ring ring;
  for (std::int64_t i = 0; i < n; ++i) {
    const double a = 6.283185307179586 * static_cast<double>(i) / static_cast<double>(n);
    const double r = 70.0 + random() / 4294967295.0 * 30.0;
    ring.x.push_back(r * std::cos(a));
    ring.y.push_back(r * std::sin(a));
  }
  return ring;
}

inline ZuPolygon AsPolygon(const Ring& ring) {
  ZuPolygon polygon(eLPolygonXY);
  for (std::size_t i = 0; i < ring.x.size(); ++i)
    polygon.AddPoint(ZuPoint(0, ring.x[i], ring.y[i]));
  return polygon;
}

// In the square around the star, about half of them inside.
inline std::vector<ZuPoint> Queries() {
  std::mt19937 random(10);
  const auto value = [&random] { return random() / 4294967295.0 * 200.0 - 100.0; };
  std::vector<ZuPoint> points;
  for (unsigned int u = 1; u <= 64; ++u) {
    const double x = value(), y = value();
    points.emplace_back(u, x, y);
  }
  return points;
}

}  // namespace ring_sample
