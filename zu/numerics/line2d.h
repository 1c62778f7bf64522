// Line in the plane: a start and an end point and a direction of unit length. The same object is
// the line without end and the segment from start to end; each operation tells which it takes.
#pragma once

#include "zu/export.h"
#include "zu/numerics/point2d.h"

// How two lines, or two segments, of the plane meet.
enum eLineMeet : int {
  eLineMeetPoint = 0,       // in one point
  eLineMeetParallel = 1,    // nowhere: at less than 1e-6 rad, and apart
  eLineMeetSame = 2,        // one line
  eLineMeetOutside = 3,     // of segments: the lines meet, beyond an end
  eLineMeetDegenerate = 4,  // a line has no direction, or is not finite
};

class ZU_API ZuLine2d {
 public:
  // Both points at the origin, the direction zero.
  constexpr ZuLine2d() = default;
  // The direction is v normalised; the end point is one unit of it away from the start.
  ZuLine2d(const ZuPoint2d& start, const ZuVector2d& v);
  ZuLine2d(const ZuPoint2d& start, const ZuPoint2d& end);

  const ZuPoint2d& getStart() const { return m_ptStart; }
  const ZuPoint2d& getEnd() const { return m_ptEnd; }
  const ZuVector2d& getDirection() const { return m_vDirection; }
  // Stores the end point; the direction becomes that from the start to it.
  void setEnd(const ZuPoint2d& end);

  // start + t direction.
  ZuPoint2d Evaluate(double t) const { return m_ptStart + t * m_vDirection; }
  // The distance of start and end.
  double getLength() const { return m_ptStart.Distance(m_ptEnd); }

  // Meets another line; p is written where they meet in a point.
  eLineMeet Intersect(const ZuLine2d& line, ZuPoint2d& p) const;
  // The same between the ends of both, ends included to 1e-12 of the lengths. Segments of one line
  // are eLineMeetSame also where they do not touch.
  eLineMeet IntersectSegment(const ZuLine2d& line, ZuPoint2d& p) const;

  // The foot point of q on the line.
  ZuPoint2d Projection(const ZuPoint2d& q) const { return Evaluate(getParameter(q)); }
  // Distance of q's foot point from the start, positive towards the end.
  double getParameter(const ZuPoint2d& q) const { return (q - m_ptStart) * m_vDirection; }
  // The foot point of q on the line. True when bInfinite, else whether it lies between start and
  // end.
  bool getClosestPointTo(const ZuPoint2d& q, ZuPoint2d& foot, bool bInfinite) const;

  // Distance of q, positive to the left.
  double Dist(const ZuPoint2d& q) const { return m_vDirection % (q - m_ptStart); }
  // The perpendicular distance of q.
  double getNormDistance(const ZuPoint2d& q) const { return std::fabs(Dist(q)); }
  double getNormDistance(const ZuPoint2d& q, ZuPoint2d& foot) const;
  // bInside: the foot point lies between start and end.
  double getNormDistance(const ZuPoint2d& q, bool& bInside) const;
  // Of q from the segment: from its nearest point.
  double getSegmentDistance(const ZuPoint2d& q) const;

 protected:
  // Parameters of the meeting point on both lines.
  eLineMeet Meet(const ZuLine2d& line, double* pdT, double* pdU) const;

  ZuPoint2d m_ptStart;
  ZuPoint2d m_ptEnd;
  ZuVector2d m_vDirection;
};
