// Predicates and orders of plane geometry in the manner of Robert Sedgewick, Algorithms (1988):
// orientation, meeting of segments, closed path by pseudo-angle. X and Y only where not told
// otherwise.
#pragma once

#include "zu/export.h"
#include "zu/points/point.h"

class ZuLine;
class ZuPoint3d;
class ZuPointList;

// Turn from p0 - p1 to p0 - p2: 1 counter-clockwise, -1 clockwise. In a line: 1 when p2 lies beyond
// p1, 0 when p2 lies between p0 and p1 or on p1, -1 when p0 lies between.
//
// Required: a point p0 that coincides with p1 counts by the same comparison of lengths.
ZU_API int ZuCounterClockwise(const ZuPoint& p0, const ZuPoint& p1, const ZuPoint& p2);
ZU_API int CounterClockwise(const ZuPoint3d& p0, const ZuPoint3d& p1, const ZuPoint3d& p2);

// The stretches meet: the ends of each lie on different sides of the other or on it. Touching
// counts.
ZU_API bool ZuIntersect(const ZuLine& l1, const ZuLine& l2);

// Common stretch [lo, hi] of the intervals a1, a2 and b1, b2, whose ends may come in any order; 0,
// 0 when they have none.
//
// Required: where the first interval ends exactly at the start of the second they have none, for
// regions that touch have no common area. The other way round the common point comes back twice.
ZU_API void ZuIntervall(double& lo, double& hi, double a1, double a2, double b1, double b2);

// Running mean of X, Y, Z of all points, id 0.
ZU_API ZuPoint ZuCalcGravitycenter(const ZuPointList& list);

// Fits a plane to at least three points and gives copies of them in its axes: origin in the first
// point, axes by the arbitrary axis rule, Z = 0. False: out is null, too few points, or no plane
// (out as it was).
ZU_API bool ZuProjectPointListTo2d(ZuPointList* out, const ZuPointList& in);

// Copies the points to out in the order of their angle around the lowest one (the first of
// several), so that the ring does not cross itself. m_dRedu1 of the copies is the pseudo-angle, 0
// to 360. Equal angles keep the order of the list; an angle that is not a number goes last. n log
// n. Returns the count.
ZU_API int ZuSimpleClosedPath(const ZuPointList& in, ZuPointList* out);
