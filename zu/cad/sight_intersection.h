// Points in the plane from measurements to known ones.
//
// Intersection: directions and distances measured from known stations to the point sought. Two give
// it outright (two lines, a line and a circle, two circles); more are adjusted by least squares.
//
// Resection: directions measured from the point sought to three or more known ones, whose zero
// direction is unknown. Three give it after G. D. Cassini, 1669: the point is the foot of the
// middle known point on the line through the points of both circles that are opposite to it; more
// are adjusted, from the three that decide it best.
//
// Directions are angles from the x axis, positive to the left (counter-clockwise) [rad]. Bearings,
// which count clockwise from the y axis, are pi/2 less them.
#pragma once

#include <vector>

#include "zu/cad/cad_fit.h"
#include "zu/export.h"
#include "zu/numerics/point2d.h"

struct ZuCadSight {
  enum eKind : int { eDirection = 0, eDistance = 1 };

  ZuPoint2d ptKnown;
  eKind kind = eDirection;
  double dValue = 0.0;  // [rad] or [unit of the coordinates]
  double dSigma = 0.0;  // its standard deviation; 0: not told
};

struct ZuCadPosition {
  ZuCadFit fit;
  ZuPoint2d pt;
  // The second solution of two measurements with a distance; the side below has decided.
  bool bOther = false;
  ZuPoint2d ptOther;
  double dZero = 0.0;    // resection: the direction of the zero of the circle [rad]
  double adCov[9] = {};  // of x, y and, of a resection, the zero, by rows; 0 where nothing tells it
  // Adjusted (computed from the result) less measured, in the unit of each measurement.
  std::vector<double> residuals;
  // Intersection: the angle, 0 to pi/2, at which the two lines of position meet that decide best.
  // Resection: the gap between the point and the circle through those three, in its radii; a circle
  // is dangerous below 1e-6.
  double dGeometry = 0.0;
};

// bLeft takes, of the two solutions for two distances, the one to the left of the line from the
// first station to the second; with a direction in front of a distance, the farther one (right: the
// nearer one). More than two measurements need no side.
//
// A sight weighs by the inverse square of its standard deviation; one without takes the mean of the
// others of its kind. Where a kind has none, a direction moves the point by as much as a distance
// does; where nothing is told, fit.dSigma0 is the standard deviation of a distance, or of a
// direction where there are directions alone.
//
// eCadTooFew; eCadCoincident (one station alone with two distances, or with two directions);
// eCadParallel, eCadCollinear (directions along the line of the stations); eCadNoIntersection:
// circles apart or inside each other, directions that meet behind a station; eCadNotFinite, also
// a distance below 0; eCadUndetermined: standard deviations are told and
// both lines of position touch.
ZU_API ZuCadPosition ZuCadIntersect(const std::vector<ZuCadSight>& sights, bool bLeft = true);

// All of `sights` are directions. eCadTooFew; eCadCoincident: known points that are one, or the
// point is one of them; eCadCollinear: the point stands in line with all known ones;
// eCadDangerousCircle; eCadNoIntersection: no point sees the known ones so.
ZU_API ZuCadPosition ZuCadResect(const std::vector<ZuCadSight>& sights);
