#include "zu/numerics/bounding_box3d.h"

#include <algorithm>

namespace {

bool OverlapInterval(double dMin1, double dMax1, double dMin2, double dMax2, bool bTouch) {
  return bTouch ? dMin1 <= dMax2 && dMin2 <= dMax1 : dMin1 < dMax2 && dMin2 < dMax1;
}

}  // namespace

ZuBoundingBox3d::ZuBoundingBox3d(const ZuPoint3d& a, const ZuPoint3d& b)
    : ZuBoundingBox3d(a.x, a.y, a.z, b.x, b.y, b.z) {}

ZuBoundingBox3d::ZuBoundingBox3d(double dX1, double dY1, double dZ1, double dX2, double dY2,
                                 double dZ2)
    : m_dXmin(std::min(dX1, dX2)),
      m_dYmin(std::min(dY1, dY2)),
      m_dZmin(std::min(dZ1, dZ2)),
      m_dXmax(std::max(dX1, dX2)),
      m_dYmax(std::max(dY1, dY2)),
      m_dZmax(std::max(dZ1, dZ2)) {}

void ZuBoundingBox3d::Union(const ZuBoundingBox3d& box) {
  m_dXmin = std::min(m_dXmin, box.m_dXmin);
  m_dYmin = std::min(m_dYmin, box.m_dYmin);
  m_dZmin = std::min(m_dZmin, box.m_dZmin);
  m_dXmax = std::max(m_dXmax, box.m_dXmax);
  m_dYmax = std::max(m_dYmax, box.m_dYmax);
  m_dZmax = std::max(m_dZmax, box.m_dZmax);
  ++m_uCount;
}

double ZuBoundingBox3d::GetMin() const { return std::min({GetXSize(), GetYSize(), GetZSize()}); }

double ZuBoundingBox3d::GetMax() const { return std::max({GetXSize(), GetYSize(), GetZSize()}); }

bool ZuBoundingBox3d::OverlapXY(const ZuBoundingBox3d& box, bool bTouch) const {
  return OverlapInterval(m_dXmin, m_dXmax, box.m_dXmin, box.m_dXmax, bTouch) &&
         OverlapInterval(m_dYmin, m_dYmax, box.m_dYmin, box.m_dYmax, bTouch);
}

bool ZuBoundingBox3d::OverlapXZ(const ZuBoundingBox3d& box, bool bTouch) const {
  return OverlapInterval(m_dXmin, m_dXmax, box.m_dXmin, box.m_dXmax, bTouch) &&
         OverlapInterval(m_dZmin, m_dZmax, box.m_dZmin, box.m_dZmax, bTouch);
}

bool ZuBoundingBox3d::OverlapYZ(const ZuBoundingBox3d& box, bool bTouch) const {
  return OverlapInterval(m_dYmin, m_dYmax, box.m_dYmin, box.m_dYmax, bTouch) &&
         OverlapInterval(m_dZmin, m_dZmax, box.m_dZmin, box.m_dZmax, bTouch);
}

bool ZuBoundingBox3d::Overlap(const ZuBoundingBox3d& box, bool bTouch) const {
  return OverlapXY(box, bTouch) && OverlapXZ(box, bTouch);
}

bool ZuBoundingBox3d::CheckMax(const ZuBoundingBox3d& box) const {
  const bool bAround = m_dXmin < box.m_dXmin && m_dYmin < box.m_dYmin && m_dZmin < box.m_dZmin &&
                       m_dXmax > box.m_dXmax && m_dYmax > box.m_dYmax && m_dZmax > box.m_dZmax;
  return !bAround;
}

bool ZuBoundingBox3d::IsValid() const {
  return m_dXmin != kEmpty && m_dYmin != kEmpty && m_dZmin != kEmpty && m_dXmax != -kEmpty &&
         m_dYmax != -kEmpty && m_dZmax != -kEmpty;
}

ZuPoint3d ZuBoundingBox3d::Center() const {
  if (!IsValid()) return ZuPoint3d();
  return ZuPoint3d((m_dXmin + m_dXmax) * 0.5, (m_dYmin + m_dYmax) * 0.5, (m_dZmin + m_dZmax) * 0.5);
}
