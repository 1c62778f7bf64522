// The ring test of ZuPolygon. It counts the edges that meet a level segment from the point to far
// right of the box, each by the orientation test of both stretches, in the ring as it stands: every
// edge is looked at once, so that neither a copy nor a turn of the ring would change the count.
#include <cmath>
#include <utility>

#include "zu/rectify/internal/orientation.h"
#include "zu/rectify/polygon.h"

namespace {

// A stretch with its ends in the order in which the segment test takes them.
struct Stretch {
  Stretch(double dX1, double dY1, double dX2, double dY2) : x1(dX1), y1(dY1), x2(dX2), y2(dY2) {
    if (x1 > x2 || y1 > y2) {
      std::swap(x1, x2);
      std::swap(y1, y2);
    }
  }
  // The side of a point, as ZuCounterClockwise tells.
  int Side(double x, double y) const { return ZuOrientation(x1, y1, x2, y2, x, y); }

  double x1, y1, x2, y2;
};

}  // namespace

bool ZuPolygon::Overlap(const ZuPoint* pPoint) const {
  if (!IsInBox(*pPoint)) return false;
  if (m_eMode == eLPolygonXYZ || m_eMode == eLPolygonIdXYZ) return true;
  const ZuPoint* pPrevious = m_points.Last();
  if (pPrevious == nullptr) return true;

  const double dReach = std::fabs((m_ptMax.m_dX - m_ptMin.m_dX) * 2.0) + std::fabs(m_ptMax.m_dX);
  const double x = pPoint->m_dX, y = pPoint->m_dY;
  const Stretch ray(x, y, dReach, y);
  bool bInside = false;
  int iPreviousSide = ray.Side(pPrevious->m_dX, pPrevious->m_dY);
  for (const ZuPoint* p = m_points.First(); p != nullptr; p = p->Next()) {
    const int iSide = ray.Side(p->m_dX, p->m_dY);
    if (iPreviousSide * iSide < 1) {  // else the edge is wholly above or below
      const Stretch edge(pPrevious->m_dX, pPrevious->m_dY, p->m_dX, p->m_dY);
      if (edge.Side(ray.x1, ray.y1) * edge.Side(ray.x2, ray.y2) < 1) bInside = !bInside;
    }
    iPreviousSide = iSide;
    pPrevious = p;
  }
  return bInside;
}
