// Residuals drawn as arrows: exaggerated, so that the 95 % quantile of their lengths fills its
// place and one blunder leaves the others readable; thinned out where more fall together than can
// be seen.
#pragma once

#include <cmath>
#include <string>
#include <vector>

#include "drawing.h"
#include "svg.h"

namespace cli {

constexpr double kCutLength = 60.0;  // beyond which an arrow is cut [px]

// A residual in the drawing [px], and what its label says.
struct Drawn {
  Drawing::Segment segment;
  double dLength;  // as it is, in the unit of the label

  double Pixels() const { return std::hypot(segment.x2 - segment.x1, segment.y2 - segment.y1); }
};

// The value below which that share lies; 0 without values.
double Quantile(std::vector<double> values, double dShare);

// The factor that draws a typical length, [user units] with dScale px each, in its place.
double FactorFor(double dTypical, double dScale);

// The longest of each cell of a grid, where there are more than uMost.
std::vector<Drawn> Thinned(std::vector<Drawn> all, size_t uMost, double dWidth, double dHeight);

// Arrows; the long ones cut, in another colour, the longest of them with their length. dRight is
// the width of the drawing.
void DrawResiduals(Drawing& drawing, const std::vector<Drawn>& residuals, const Style& style,
                   double dRight);

// A bar that tells how long a residual is: dUnit px for one unit of length.
void ScaleBar(Drawing& drawing, double dRight, double y, double dUnit, const std::string& strUnit);

}  // namespace cli
