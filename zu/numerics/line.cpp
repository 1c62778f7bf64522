#include "zu/numerics/line.h"

#include <utility>

ZuLine::ZuLine(double dX1, double dY1, double dZ1, double dX2, double dY2, double dZ2)
    : m_ptStart(0, dX1, dY1, dZ1), m_ptEnd(0, dX2, dY2, dZ2) {}

void ZuLine::Adjust() {
  if (m_ptStart.m_dX > m_ptEnd.m_dX || m_ptStart.m_dY > m_ptEnd.m_dY) {
    std::swap(m_ptStart, m_ptEnd);
  }
}
