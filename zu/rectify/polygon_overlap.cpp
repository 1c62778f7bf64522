// The ring test of ZuPolygon. It counts the edges that meet a level segment from the point to far
// right of the box, each by the orientation test of both stretches, in the ring as it stands: every
// edge is looked at once, so that neither a copy nor a turn of the ring would change the count.
#include <cmath>
#include <cstdint>
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

// Asks for the node that stands kAhead steps behind pNext, if nodes lie at equal distances as they
// do in a ring that was made in one go. A wrong guess costs nothing but the asking.
void Prefetch([[maybe_unused]] const ZuPoint* pVertex, [[maybe_unused]] const ZuPoint* pNext) {
#if defined(__GNUC__)
  constexpr std::uintptr_t kAhead = 6;
  const auto address = [](const void* p) { return reinterpret_cast<std::uintptr_t>(p); };
  const std::uintptr_t uOffset = kAhead * (address(pNext) - address(pVertex));
  __builtin_prefetch(reinterpret_cast<const void*>(address(pNext) + uOffset));  // the links
  __builtin_prefetch(reinterpret_cast<const void*>(address(&pNext->m_dX) + uOffset));
#endif
}

// A walk along the ring, vertex by vertex, that counts the edges which meet a segment.
class Walk {
 public:
  Walk(const Stretch& segment, const ZuPoint* pVertex) : m_segment(segment), m_pVertex(pVertex) {
    SetSide(segment.Side(pVertex->m_dX, pVertex->m_dY));
  }

  const ZuPoint* Vertex() const { return m_pVertex; }
  bool IsOdd() const { return m_bOdd; }

  // Goes along the edge to the next vertex; forward tells in which direction of the ring.
  void MoveTo(const ZuPoint* pNext, bool bForward) {
    Prefetch(m_pVertex, pNext);
    // The rule for most edges: both ends strictly on one side of the segment, which is then not
    // met.
    const double dx = pNext->m_dX - m_segment.x1, dy = pNext->m_dY - m_segment.y1;
    if (!(dy * m_dSignedX > dx * m_dSignedY)) Cross(pNext, bForward);
    m_pVertex = pNext;
  }

 private:
  void SetSide(int iSide) {
    m_iSide = iSide;
    m_dSignedX = (m_segment.x2 - m_segment.x1) * iSide;
    m_dSignedY = (m_segment.y2 - m_segment.y1) * iSide;
  }

  void Cross(const ZuPoint* pNext, bool bForward) {
    const int iFormer = m_iSide;
    SetSide(m_segment.Side(pNext->m_dX, pNext->m_dY));
    if (iFormer * m_iSide >= 1) return;
    const ZuPoint& p = bForward ? *m_pVertex : *pNext;
    const ZuPoint& q = bForward ? *pNext : *m_pVertex;
    const Stretch edge(p.m_dX, p.m_dY, q.m_dX, q.m_dY);
    if (edge.Side(m_segment.x1, m_segment.y1) * edge.Side(m_segment.x2, m_segment.y2) < 1) {
      m_bOdd = !m_bOdd;
    }
  }

  const Stretch m_segment;
  const ZuPoint* m_pVertex;
  int m_iSide = 0;                            // of the vertex
  double m_dSignedX = 0.0, m_dSignedY = 0.0;  // extent of the segment, times the side
  bool m_bOdd = false;
};

}  // namespace

bool ZuPolygon::Overlap(const ZuPoint* pPoint) const {
  if (!IsInBox(*pPoint)) return false;
  if (m_eMode == eLPolygonXYZ || m_eMode == eLPolygonIdXYZ) return true;
  if (m_points.IsEmpty()) return true;

  const double dReach = std::fabs((m_ptMax.m_dX - m_ptMin.m_dX) * 2.0) + std::fabs(m_ptMax.m_dX);
  const Stretch segment(pPoint->m_dX, pPoint->m_dY, dReach, pPoint->m_dY);
  // From both ends of the list to the middle: memory brings two nodes in the time of one.
  Walk front(segment, m_points.Last());
  front.MoveTo(m_points.First(), true);
  Walk back(segment, m_points.Last());
  while (front.Vertex() != back.Vertex()) {
    front.MoveTo(front.Vertex()->Next(), true);
    if (front.Vertex() == back.Vertex()) break;
    back.MoveTo(back.Vertex()->Previous(), false);
  }
  return front.IsOdd() != back.IsOdd();
}
