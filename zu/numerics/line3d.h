// Line in space: a start and an end point and a direction of unit length.
#pragma once

#include "zu/export.h"
#include "zu/numerics/point3d.h"

class ZU_API ZuLine3d {
 public:
  // Both points at the origin, the direction zero.
  ZuLine3d() = default;
  // The direction is v normalised; the end point is one unit of it away from the start.
  ZuLine3d(const ZuPoint3d& start, const ZuVector3d& v);
  ZuLine3d(const ZuPoint3d& start, const ZuPoint3d& end);

  const ZuPoint3d& getStart() const { return m_pStart; }
  const ZuPoint3d& getEnd() const { return m_pEnd; }
  const ZuVector3d& getDirection() const { return m_vDirection; }
  ZuPoint3d& getStart() { return m_pStart; }
  ZuPoint3d& getEnd() { return m_pEnd; }
  ZuVector3d& getDirection() { return m_vDirection; }

  // Stores v normalised.
  //
  // Required: the end point stays. Rays are built by setting start and direction alone.
  void setDirection(const ZuVector3d& v);

  // Stores the end point; the direction becomes that from the start to it.
  void setEnd(const ZuPoint3d& end);

  // start + t direction.
  ZuPoint3d Evaluate(double t) const;
  // The distance of start and end.
  double getLength() const { return m_pStart.Distance(m_pEnd); }

  // Finds where two skew lines come closest: p is the middle of the two closest points, the result
  // their distance. -1, p untouched: the cross product of the unit directions is no longer than cos
  // 89 degrees, that is the lines meet at one degree or less, or the system is singular.
  double Intersect(const ZuLine3d& line, ZuPoint3d& p) const;

  // The foot point of q on the line. True when bInfinite, else whether it lies between start and
  // end.
  bool getClosestPointTo(const ZuPoint3d& q, ZuPoint3d& foot, bool bInfinite) const;

  // The perpendicular distance of q.
  double getNormDistance(const ZuPoint3d& q) const;
  double getNormDistance(const ZuPoint3d& q, ZuPoint3d& foot) const;
  // bInside: the foot point lies in the box of start and end, limits included.
  double getNormDistance(const ZuPoint3d& q, bool& bInside) const;

  // t: signed distance of q's foot point from the start. True when q is less than 1e-10 off the
  // line.
  //
  // Required: the limit is a length in the unit of the coordinates, whatever their size: stored
  // selections were made with it. Beyond a few hundred kilometres in metres rounding alone is
  // more; compare getNormDistance with a limit of your own there.
  bool getDistAtPoint(const ZuPoint3d& q, double& t) const;

 protected:
  ZuPoint3d m_pStart;
  ZuPoint3d m_pEnd;
  ZuVector3d m_vDirection;
};
