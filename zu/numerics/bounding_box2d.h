// Axis-parallel box in the plane that grows with the points it is given, and counts them.
//
// An empty box has each minimum at the largest double and each maximum at its negative. A
// coordinate that is NaN widens nothing.
#pragma once

#include <algorithm>
#include <limits>

#include "zu/export.h"
#include "zu/numerics/point2d.h"

class ZU_API ZuBoundingBox2d {
 public:
  constexpr ZuBoundingBox2d() = default;
  // From two opposite corners, sorted axis by axis. The count is 0.
  constexpr ZuBoundingBox2d(const ZuPoint2d& a, const ZuPoint2d& b)
      : ZuBoundingBox2d(a.x, a.y, b.x, b.y) {}
  constexpr ZuBoundingBox2d(double dX1, double dY1, double dX2, double dY2)
      : m_dXmin(std::min(dX1, dX2)),
        m_dYmin(std::min(dY1, dY2)),
        m_dXmax(std::max(dX1, dX2)),
        m_dYmax(std::max(dY1, dY2)) {}

  // Back to the empty box.
  constexpr void Reset() { *this = ZuBoundingBox2d(); }

  // Widens the box by a point and adds 1 to the count.
  constexpr void Update(const ZuPoint2d& p) { Update(p.x, p.y); }
  constexpr void Update(double dX, double dY) {
    if (dX < m_dXmin) m_dXmin = dX;
    if (dY < m_dYmin) m_dYmin = dY;
    if (dX > m_dXmax) m_dXmax = dX;
    if (dY > m_dYmax) m_dYmax = dY;
    ++m_uCount;
  }

  // Widens the box by another one.
  //
  // Required: the count rises by 1, whatever the other box has counted, as that of the box in space
  // does: it counts what was put in.
  constexpr void Union(const ZuBoundingBox2d& box);
  // What both have in common; the empty box where that is nothing. Touching boxes have a box of
  // width 0 in common. The count is 0.
  constexpr ZuBoundingBox2d Intersect(const ZuBoundingBox2d& box) const;

  constexpr double Xmin() const { return m_dXmin; }
  constexpr double Ymin() const { return m_dYmin; }
  constexpr double Xmax() const { return m_dXmax; }
  constexpr double Ymax() const { return m_dYmax; }
  constexpr unsigned int GetCount() const { return m_uCount; }

  constexpr double GetXSize() const { return m_dXmax - m_dXmin; }
  constexpr double GetYSize() const { return m_dYmax - m_dYmin; }
  constexpr double GetWidth() const { return GetXSize(); }
  constexpr double GetHeight() const { return GetYSize(); }
  constexpr double GetArea() const { return GetXSize() * GetYSize(); }
  // The smaller and the larger of the two sizes.
  constexpr double GetMin() const { return std::min(GetXSize(), GetYSize()); }
  constexpr double GetMax() const { return std::max(GetXSize(), GetYSize()); }

  // Limits included.
  constexpr bool IsInX(double dX) const { return dX >= m_dXmin && dX <= m_dXmax; }
  constexpr bool IsInY(double dY) const { return dY >= m_dYmin && dY <= m_dYmax; }
  constexpr bool IsInBox(double dX, double dY) const { return IsInX(dX) && IsInY(dY); }
  constexpr bool IsInBox(const ZuPoint2d& p) const { return IsInBox(p.x, p.y); }

  // The boxes have a common stretch on both axes; with bTouch common limits are enough.
  constexpr bool Overlap(const ZuBoundingBox2d& box, bool bTouch = true) const;

  // False only when this box lies strictly around the other one in all four limits.
  constexpr bool CheckMax(const ZuBoundingBox2d& box) const {
    return !(m_dXmin < box.m_dXmin && m_dYmin < box.m_dYmin && m_dXmax > box.m_dXmax &&
             m_dYmax > box.m_dYmax);
  }

  // False while any of the four limits holds the value of an empty box.
  constexpr bool IsValid() const {
    return m_dXmin != kEmpty && m_dYmin != kEmpty && m_dXmax != -kEmpty && m_dYmax != -kEmpty;
  }

  // The middle of the box; (0, 0) when it is not valid.
  constexpr ZuPoint2d Center() const {
    if (!IsValid()) return {};
    return {(m_dXmin + m_dXmax) * 0.5, (m_dYmin + m_dYmax) * 0.5};
  }

 protected:
  static constexpr double kEmpty = std::numeric_limits<double>::max();

  double m_dXmin = kEmpty;
  double m_dYmin = kEmpty;
  double m_dXmax = -kEmpty;
  double m_dYmax = -kEmpty;
  unsigned int m_uCount = 0;
};

constexpr void ZuBoundingBox2d::Union(const ZuBoundingBox2d& box) {
  m_dXmin = std::min(m_dXmin, box.m_dXmin);
  m_dYmin = std::min(m_dYmin, box.m_dYmin);
  m_dXmax = std::max(m_dXmax, box.m_dXmax);
  m_dYmax = std::max(m_dYmax, box.m_dYmax);
  ++m_uCount;
}

constexpr ZuBoundingBox2d ZuBoundingBox2d::Intersect(const ZuBoundingBox2d& box) const {
  if (!Overlap(box)) return {};
  return {std::max(m_dXmin, box.m_dXmin), std::max(m_dYmin, box.m_dYmin),
          std::min(m_dXmax, box.m_dXmax), std::min(m_dYmax, box.m_dYmax)};
}

constexpr bool ZuBoundingBox2d::Overlap(const ZuBoundingBox2d& box, bool bTouch) const {
  if (bTouch) {
    return m_dXmin <= box.m_dXmax && box.m_dXmin <= m_dXmax && m_dYmin <= box.m_dYmax &&
           box.m_dYmin <= m_dYmax;
  }
  return m_dXmin < box.m_dXmax && box.m_dXmin < m_dXmax && m_dYmin < box.m_dYmax &&
         box.m_dYmin < m_dYmax;
}
