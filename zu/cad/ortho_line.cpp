#include "zu/cad/ortho_line.h"

#include <cmath>

ZuCadOrthoLine::ZuCadOrthoLine(const ZuPoint2d& start, const ZuPoint2d& end, double dMeasured)
    : m_line(start, end) {
  const double dLength = start.Distance(end);
  if (!std::isfinite(dLength) || !(dMeasured >= 0.0) || !std::isfinite(dMeasured)) {
    m_eStatus = eCadNotFinite;
  } else if (!(dLength > 0.0)) {
    m_eStatus = eCadCoincident;
  } else if (dMeasured > 0.0) {
    m_dScale = dLength / dMeasured;
  }
}

ZuCadOffset ZuCadOrthoLine::Offset(const ZuPoint2d& p, ZuPoint2d* pFoot) const {
  const double dStation = m_line.getParameter(p);
  if (pFoot != nullptr) *pFoot = m_line.Evaluate(dStation);
  return {dStation / m_dScale, m_line.Dist(p) / m_dScale};
}

ZuPoint2d ZuCadOrthoLine::Point(const ZuCadOffset& offset) const {
  const ZuVector2d& u = m_line.getDirection();
  return m_line.getStart() + m_dScale * (offset.dStation * u + offset.dOffset * u.Normal());
}

ZuCadChain ZuCadOrthoLine::Chain(const std::vector<ZuCadLeg>& legs, const ZuPoint2d* pEnd) const {
  ZuCadChain chain;
  chain.eStatus = m_eStatus;
  if (!IsValid()) return chain;
  if (legs.empty()) {
    chain.eStatus = eCadTooFew;
    return chain;
  }
  ZuVector2d way;  // from the start, along the line and to its left
  ZuVector2d direction = ZuVector2d::XAxis;
  std::vector<ZuVector2d> ways;
  for (const ZuCadLeg& leg : legs) {
    for (int i = 0; i < (leg.iTurn % 4 + 4) % 4; ++i) direction = direction.Normal();
    way += leg.dLength * direction;
    ways.push_back(way);
  }
  ZuVector2d turn = ZuVector2d::XAxis * m_dScale;  // times this, as complex numbers
  if (pEnd != nullptr) {
    const ZuVector2d& u = m_line.getDirection();
    const ZuVector2d d = *pEnd - m_line.getStart(), end(d * u, u % d);
    const double dSquare = way * way;
    chain.dAlong = way.x * m_dScale - end.x;
    chain.dAcross = way.y * m_dScale - end.y;
    if (!(dSquare > 0.0) || !(end * end > 0.0)) {
      chain.eStatus = std::isfinite(dSquare) ? eCadCoincident : eCadNotFinite;
      return chain;
    }
    turn = ZuVector2d(end * way, way % end) / dSquare;
    chain.dScale = turn.Norm();
    chain.dTurn = turn.Direction();
  } else {
    chain.dScale = m_dScale;
  }
  for (const ZuVector2d& w : ways) {
    const ZuVector2d v(turn.x * w.x - turn.y * w.y, turn.x * w.y + turn.y * w.x);
    const ZuVector2d& u = m_line.getDirection();
    chain.points.push_back(m_line.getStart() + v.x * u + v.y * u.Normal());
    if (!chain.points.back().IsFinite()) chain.eStatus = eCadNotFinite;
  }
  return chain;
}
