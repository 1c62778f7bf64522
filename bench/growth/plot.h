// Lines over logarithmic axes as an SVG drawing.
#pragma once

#include <string>
#include <vector>

namespace growth {

struct Series {
  std::string strName;
  std::vector<double> x, y;  // above 0
  bool bDashed = false;
};

struct Panel {
  std::string strTitle, strX, strY;
  std::vector<Series> series;
};

// Panels side by side with one legend below; series of the same place share a colour.
std::string Draw(const std::vector<Panel>& panels);

}  // namespace growth
