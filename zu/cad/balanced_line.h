// Best line through points in a row, whole or by parts.
//
//        o    o
//   o  /----------\  o         parts: best lines (orthogonal distances), each through points that
//  ---/ o   o    o \----o      follow each other; breaks: where neighbouring lines meet
//   o            .   o
//
// A line lies through the mean of its points, along the larger axis of their scatter: the squares
// of the orthogonal distances become least (K. Pearson, "On lines and planes of closest fit to
// systems of points in space", 1901).
#pragma once

#include <vector>

#include "zu/cad/cad_fit.h"
#include "zu/export.h"
#include "zu/numerics/line2d.h"

struct ZuCadLinePart {
  size_t uFirst = 0, uCount = 0;  // its points
  ZuLine2d line;                  // from the foot of the first of them to the foot of the last
  // From the x axis [rad], and the offset of the line at the mean of its points. Standard
  // deviations; 0 where nothing tells them.
  double dDirection = 0.0, dDirectionSd = 0.0, dOffsetSd = 0.0;
  double dRms = 0.0;           // of the distances
  double dStraightness = 0.0;  // from the lowest to the highest of them
};

struct ZuCadLineOptions {
  // The line breaks where points would lie farther off; 0: it does not break.
  double dTolerance = 0.0;
  // Where the line breaks, instead: the first points of the second part and of those behind,
  // rising.
  std::vector<size_t> breaks = {};
  double dSigma = 0.0;  // of a coordinate; 0: not told, the distances tell it
};

// At most this many points are parted by a tolerance.
constexpr size_t kZuCadMostParted = 2000;

struct ZU_API ZuCadBalancedLine {
  // Points in the order of the line, two or more, for each part. By a tolerance: the fewest parts
  // of which no point lies farther off, and of these the least sum of squares (dynamic programming
  // after R. Bellman, "On the approximation of curves by line segments using dynamic programming",
  // 1961); cost: the square of the points as a rule, their cube at worst. The first and last points
  // of neighbouring parts are different ones.
  //
  // eCadTooFew, also for a part of a single point; eCadCoincident: the points of a part;
  // eCadUndetermined: a part without direction, as the corners of a square; eCadTooMany;
  // eCadNotFinite, also a tolerance below 0 or breaks that do not rise.
  static ZuCadBalancedLine BestFit(const std::vector<ZuPoint2d>& points,
                                   const ZuCadLineOptions& options = {});

  ZuCadFit fit;  // of the distances of all points; two unknowns a part
  std::vector<ZuCadLinePart> parts;
  // Start of the first part, the breaks, end of the last one. Where neighbours run parallel (to
  // 1e-6 rad), the middle between their ends.
  std::vector<ZuPoint2d> corners;
  std::vector<double> distances;  // of each point from the line of its part, positive to its left
};
