// Arc in the plane, from points.
//
//              middle
//        start  ---   end        the arc runs from its start by the sweep, positive to the left
//            \   |   /           (counter-clockwise); a full circle sweeps 2 pi
//              centre
//
// The best fit moves each point the least way onto the circle: the squares of the distances from it
// become least (geometric fit). It starts at the algebraic circle of G. Taubin, "Estimation of
// planar curves, surfaces and nonplanar space curves", 1991, as N. Chernov, "Circular and linear
// regression", 2010, computes it.
#pragma once

#include <vector>

#include "zu/cad/cad_fit.h"
#include "zu/export.h"
#include "zu/numerics/point2d.h"

class ZU_API ZuCadArc {
 public:
  // From a over b to c. eCadCoincident, eCadCollinear.
  static ZuCadArc ByThreePoints(const ZuPoint2d& a, const ZuPoint2d& b, const ZuPoint2d& c);
  // From a to b. Of the two centres bLeft takes the one to the left of a to b, whose shorter arc
  // runs counter-clockwise; bLong takes the longer of the two arcs about it. eCadCoincident;
  // eCadNoIntersection where the radius is shorter than half the chord (to 1e-12 of it).
  static ZuCadArc ByRadius(const ZuPoint2d& a, const ZuPoint2d& b, double dRadius, bool bLeft,
                           bool bLong);
  // From a, which tells the radius, to the direction of b, whose distance from the circle is the
  // residual. A full circle where a and b have one direction. eCadCoincident: the centre is a or b.
  static ZuCadArc ByCentre(const ZuPoint2d& centre, const ZuPoint2d& a, const ZuPoint2d& b,
                           bool bCounterClockwise);
  // The best fit, in any order of the points, three or more. The arc covers all of them: it leaves
  // out the widest gap between neighbours, and runs so that the first point is closer to its start.
  // dSigma: the standard deviation of a coordinate; 0: not told, the residuals tell it.
  // eCadTooFew, eCadCoincident, eCadCollinear: also points whose circle has a radius above 1e8 of
  // their extent.
  static ZuCadArc BestFit(const std::vector<ZuPoint2d>& points, double dSigma = 0.0);

  // At dPart of the arc: 0 its start, 1 its end.
  ZuPoint2d Evaluate(double dPart) const;
  double Length() const;
  // Of the middle of the arc over the chord (rise).
  double Rise() const;
  // Distance from the circle, positive outside.
  double Dist(const ZuPoint2d& p) const { return p.Distance(ptCentre) - dRadius; }

  ZuCadFit fit;
  ZuPoint2d ptCentre;
  double dRadius = 0.0;
  double dStart = 0.0;            // direction of the start from the centre, from the x axis [rad]
  double dSweep = 0.0;            // [rad]
  double adCov[9] = {};           // of centre and radius, by rows; 0 where nothing tells it
  std::vector<double> distances;  // of the points given, from the circle, positive outside
};
