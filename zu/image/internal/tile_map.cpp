#include "zu/image/internal/tile_map.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace zu::internal {

namespace {

// Accepted error of bilinear interpolation between nodes [pixels].
constexpr double kError = 0.002;
// Second derivatives between nodes, in units of the largest second difference of the nodes.
constexpr double kSafety = 2.0;
constexpr double kNone = std::numeric_limits<double>::quiet_NaN();

// Largest second difference along a line of n values, iStride apart.
double Bend(const double* p, int n, int iStride) {
  double dLargest = 0.0;
  for (int i = 1; i + 1 < n; ++i) {
    const double* q = p + i * iStride;
    dLargest = std::max(dLargest, std::fabs(q[-iStride] - 2.0 * q[0] + q[iStride]));
  }
  return dLargest;
}

// Lengths of the half axes of the ellipse into which the matrix (a b; c d) carries the unit circle.
struct Axes {
  Axes(double a, double b, double c, double d) {
    const double dSum = std::hypot(a + d, c - b), dDifference = std::hypot(a - d, c + b);
    dLong = 0.5 * (dSum + dDifference);
    dShort = 0.5 * std::fabs(dSum - dDifference);
  }
  double dLong, dShort;
};

}  // namespace

TileMap::TileMap(const ZuPixelMap& map, int iLeft, int iTop, int iWidth, int iHeight)
    : m_pMap(&map), m_iLeft(iLeft), m_iTop(iTop), m_iWidth(iWidth), m_iHeight(iHeight) {
  for (int iStep = kWidestStep; iStep >= kNarrowestStep; iStep /= 2) {
    if (Sample(iStep)) return;
    if (m_iStep == 0) return;  // a node has no source
  }
  m_iStep = 0;
}

bool TileMap::Ask(double x, double y, double* pdX, double* pdY) const {
  *pdX = m_iLeft + x;
  *pdY = m_iTop + y;
  if (m_pMap->Map(pdX, pdY) && std::isfinite(*pdX) && std::isfinite(*pdY)) return true;
  *pdX = *pdY = kNone;
  return false;
}

// A cell of side H errs by at most (|fxx| + |fyy|) H^2 / 8.
bool TileMap::Sample(int iStep) {
  m_iStep = iStep;
  // Three nodes at least tell how the map bends.
  m_iNodesX = std::max(3, (m_iWidth + iStep - 1) / iStep + 1);
  m_iNodesY = std::max(3, (m_iHeight + iStep - 1) / iStep + 1);
  for (int j = 0; j < m_iNodesY; ++j) {
    for (int i = 0; i < m_iNodesX; ++i) {
      const size_t k = static_cast<size_t>(j * m_iNodesX + i);
      if (Ask(i * iStep, j * iStep, &m_x[k], &m_y[k])) continue;
      m_iStep = 0;
      return false;
    }
  }
  double dAcross = 0.0, dDown = 0.0;
  for (const Nodes* p : {&m_x, &m_y}) {
    for (int j = 0; j < m_iNodesY; ++j) {
      dAcross = std::max(dAcross, Bend(p->data() + j * m_iNodesX, m_iNodesX, 1));
    }
    for (int i = 0; i < m_iNodesX; ++i) {
      dDown = std::max(dDown, Bend(p->data() + i, m_iNodesY, m_iNodesX));
    }
  }
  return kSafety * (dAcross + dDown) / 8.0 <= kError;
}

// The first node of the cell of a pixel.
const double* TileMap::Cell(const Nodes& nodes, int i, int iRow) const {
  return nodes.data() + (iRow / m_iStep) * m_iNodesX + i / m_iStep;
}

void TileMap::Row(int iRow, double dx, double dy, double* pdX, double* pdY) const {
  if (m_iStep == 0) {
    for (int i = 0; i < m_iWidth; ++i) Ask(i + dx, iRow + dy, pdX + i, pdY + i);
    return;
  }
  const double g = (iRow % m_iStep + dy) / m_iStep;
  for (int iLeft = 0; iLeft < m_iWidth; iLeft += m_iStep) {
    const int iCount = std::min(m_iStep, m_iWidth - iLeft);
    const auto fill = [&](const Nodes& nodes, double* pd) {
      const double* p = Cell(nodes, iLeft, iRow);
      const double a = p[0] + g * (p[m_iNodesX] - p[0]);
      const double b = p[1] + g * (p[m_iNodesX + 1] - p[1]);
      const double dSlope = (b - a) / m_iStep, dStart = a + dSlope * dx;
      for (int i = 0; i < iCount; ++i) pd[i] = dStart + dSlope * i;
    };
    fill(m_x, pdX + iLeft);
    fill(m_y, pdY + iLeft);
  }
}

double TileMap::Resolution(int i, int iRow) const {
  if (m_iStep == 0) {
    double x[4], y[4];
    const bool bThere = Ask(i - 0.5, iRow, x, y) && Ask(i + 0.5, iRow, x + 1, y + 1) &&
                        Ask(i, iRow - 0.5, x + 2, y + 2) && Ask(i, iRow + 0.5, x + 3, y + 3);
    return bThere ? Axes(x[1] - x[0], x[3] - x[2], y[1] - y[0], y[3] - y[2]).dShort : 0.0;
  }
  const double f = static_cast<double>(i % m_iStep) / m_iStep;
  const double g = static_cast<double>(iRow % m_iStep) / m_iStep;
  const auto slope = [&](const Nodes& nodes, double* pdAcross, double* pdDown) {
    const double* p = Cell(nodes, i, iRow);
    const double* q = p + m_iNodesX;
    *pdAcross = ((p[1] - p[0]) * (1.0 - g) + (q[1] - q[0]) * g) / m_iStep;
    *pdDown = ((q[0] - p[0]) * (1.0 - f) + (q[1] - p[1]) * f) / m_iStep;
  };
  double a, b, c, d;
  slope(m_x, &a, &b);
  slope(m_y, &c, &d);
  return Axes(a, b, c, d).dShort;
}

double TileMap::Reduction() const {
  double dMost = m_iStep == 0 ? 1.0 : 0.0;
  for (int j = 0; m_iStep != 0 && j + 1 < m_iNodesY; ++j) {
    for (int i = 0; i + 1 < m_iNodesX; ++i) {
      const double* x = m_x.data() + j * m_iNodesX + i;
      const double* y = m_y.data() + j * m_iNodesX + i;
      dMost = std::max(
          dMost,
          Axes(x[1] - x[0], x[m_iNodesX] - x[0], y[1] - y[0], y[m_iNodesX] - y[0]).dLong / m_iStep);
    }
  }
  return dMost;
}

}  // namespace zu::internal
