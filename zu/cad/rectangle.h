// Best rectangle through points in the plane: its right angles are kept.
//
//     4 ----------- 3        corners counted as the points given are, or to the left
//     |   centre    |        (counter-clockwise) from the lower left one
//     1 ----------- 2
//
// Each side has a line of its own, all four one direction and its right angle: the squares of the
// orthogonal distances of the points from their sides become least. A corner counts for both of its
// sides, so that its distance in the plane counts. The direction is an eigenvector of a 2 x 2
// matrix, the scatter of all sides turned upon one another: no start, no iteration.
#pragma once

#include <vector>

#include "zu/cad/cad_fit.h"
#include "zu/export.h"
#include "zu/numerics/point2d.h"

struct ZU_API ZuCadRectangle {
  // Three or four corners in their order around it, either way. Residuals are two a corner, x and y
  // in the plane.
  //
  // dSigma: the standard deviation of a coordinate; 0: not told, the residuals tell it. eCadTooFew,
  // eCadTooMany; eCadCoincident: two corners that follow each other; eCadCollinear: a side without
  // length; eCadUndetermined: the points prefer no direction.
  static ZuCadRectangle ByCorners(const std::vector<ZuPoint2d>& corners, double dSigma = 0.0);
  // Five or more points on its sides, in any order, some on each. Each counts for the side closest
  // to it. Residuals are one a point. eCadUndetermined, also where a side has no point. Looks in 1
  // degree steps for the direction: cost 90 times some passes over the points.
  static ZuCadRectangle ByOutline(const std::vector<ZuPoint2d>& points, double dSigma = 0.0);

  double Area() const { return dWidth * dHeight; }

  ZuCadFit fit;
  std::vector<ZuPoint2d> corners;  // four
  ZuPoint2d ptCentre;
  double dDirection = 0.0;  // of the side from corner 1 to corner 2, from the x axis [rad]
  double dWidth = 0.0;      // of that side
  double dHeight = 0.0;     // of the one from 2 to 3
  // Standard deviations; 0 where nothing tells them.
  double dDirectionSd = 0.0, dWidthSd = 0.0, dHeightSd = 0.0;
  // Of the corners x, y in turn: rectangle less given; of an outline the distance of each point
  // from its side, positive outside.
  std::vector<double> residuals;
  std::vector<int> sides;  // of an outline: the side of each point, 0 from corner 1 to 2 and so on
};
