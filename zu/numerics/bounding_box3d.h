// Axis-parallel box in space that grows with the points it is given, and counts them.
//
// An empty box has each minimum at the largest double and each maximum at its negative. A
// coordinate that is NaN widens nothing.
#pragma once

#include <limits>

#include "zu/export.h"
#include "zu/numerics/point3d.h"

class ZU_API ZuBoundingBox3d {
 public:
  ZuBoundingBox3d() = default;
  // From two opposite corners, sorted axis by axis. The count is 0.
  ZuBoundingBox3d(const ZuPoint3d& a, const ZuPoint3d& b);
  ZuBoundingBox3d(double dX1, double dY1, double dZ1, double dX2, double dY2, double dZ2);

  // Back to the empty box.
  void Reset() { *this = ZuBoundingBox3d(); }

  // Widens the box by a point and adds 1 to the count.
  void Update(const ZuPoint3d& p) { Update(p.x, p.y, p.z); }
  void Update(double dX, double dY, double dZ);

  // Widens the box by another one.
  //
  // Required: the count rises by 1, whatever the other box has counted: it counts what was put in,
  // and that was one box.
  void Union(const ZuBoundingBox3d& box);

  double Xmin() const { return m_dXmin; }
  double Ymin() const { return m_dYmin; }
  double Zmin() const { return m_dZmin; }
  double Xmax() const { return m_dXmax; }
  double Ymax() const { return m_dYmax; }
  double Zmax() const { return m_dZmax; }
  unsigned int GetCount() const { return m_uCount; }

  double GetXSize() const { return m_dXmax - m_dXmin; }
  double GetYSize() const { return m_dYmax - m_dYmin; }
  double GetZSize() const { return m_dZmax - m_dZmin; }
  double GetWidth() const { return GetXSize(); }
  double GetHeight() const { return GetYSize(); }
  double GetDepth() const { return GetZSize(); }
  double GetVol() const { return GetXSize() * GetYSize() * GetZSize(); }
  // The smallest and the largest of the three sizes.
  double GetMin() const;
  double GetMax() const;

  // Limits included.
  bool IsInX(double dX) const { return dX >= m_dXmin && dX <= m_dXmax; }
  bool IsInY(double dY) const { return dY >= m_dYmin && dY <= m_dYmax; }
  bool IsInZ(double dZ) const { return dZ >= m_dZmin && dZ <= m_dZmax; }
  bool IsInXY(double dX, double dY) const { return IsInX(dX) && IsInY(dY); }
  bool IsInXZ(double dX, double dZ) const { return IsInX(dX) && IsInZ(dZ); }
  bool IsInYZ(double dY, double dZ) const { return IsInY(dY) && IsInZ(dZ); }
  bool IsInBox(double dX, double dY, double dZ) const {
    return IsInX(dX) && IsInY(dY) && IsInZ(dZ);
  }
  bool IsInBox(const ZuPoint3d& p) const { return IsInBox(p.x, p.y, p.z); }

  // The boxes have a common stretch on both axes; with bTouch common limits are enough.
  bool OverlapXY(const ZuBoundingBox3d& box, bool bTouch = true) const;
  bool OverlapXZ(const ZuBoundingBox3d& box, bool bTouch = true) const;
  bool OverlapYZ(const ZuBoundingBox3d& box, bool bTouch = true) const;
  // OverlapXY and OverlapXZ, which name each axis once already.
  bool Overlap(const ZuBoundingBox3d& box, bool bTouch = true) const;

  // False only when this box lies strictly around the other one in all six limits.
  bool CheckMax(const ZuBoundingBox3d& box) const;

  // False while any of the six limits holds the value of an empty box.
  //
  // Required: this is judged by the values alone, so that a box whose xmax is the most negative
  // double counts as invalid.
  bool IsValid() const;

  // The middle of the box; (0, 0, 0) when it is not valid.
  ZuPoint3d Center() const;

 protected:
  static constexpr double kEmpty = std::numeric_limits<double>::max();

  double m_dXmin = kEmpty;
  double m_dYmin = kEmpty;
  double m_dZmin = kEmpty;
  double m_dXmax = -kEmpty;
  double m_dYmax = -kEmpty;
  double m_dZmax = -kEmpty;
  unsigned int m_uCount = 0;
};

inline void ZuBoundingBox3d::Update(double dX, double dY, double dZ) {
  if (dX < m_dXmin) m_dXmin = dX;
  if (dY < m_dYmin) m_dYmin = dY;
  if (dZ < m_dZmin) m_dZmin = dZ;
  if (dX > m_dXmax) m_dXmax = dX;
  if (dY > m_dYmax) m_dYmax = dY;
  if (dZ > m_dZmax) m_dZmax = dZ;
  ++m_uCount;
}
