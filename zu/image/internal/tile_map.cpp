#include "zu/image/internal/tile_map.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace zu::internal {

namespace {

// Accepted error of the interpolation between nodes [pixels].
constexpr double kError = 0.002;
// Third derivatives between nodes, in units of the largest third difference of the nodes.
constexpr double kSafety = 2.0;
// Largest error of a parabola through three nodes, in units of the third difference: 1 / (9
// sqrt(3)).
constexpr double kParabola = 0.0641500299099584;
constexpr double kNone = std::numeric_limits<double>::quiet_NaN();

// Largest third difference along a line of n values, iStride apart.
double Bend(const double* p, int n, int iStride) {
  double dLargest = 0.0;
  for (int i = 0; i + 3 < n; ++i) {
    const double* q = p + i * iStride;
    dLargest =
        std::max(dLargest, std::fabs(q[3 * iStride] - q[0] + 3.0 * (q[iStride] - q[2 * iStride])));
  }
  return dLargest;
}

// Values of the parabolas through iNodes nodes of a line, kStep pixels apart, at iWidth pixels and
// those behind them to the next node.
template <int kStep>
void FillRow(const double* pdNode, int iNodes, int iWidth, double dx, double* pd) {
  for (int iLeft = 0; iLeft < iWidth; iLeft += kStep) {
    const int c = std::min(iLeft / kStep, iNodes - 3);
    const double* q = pdNode + c;
    const double dCurve = 0.5 * (q[0] - 2.0 * q[1] + q[2]) / (kStep * kStep);
    const double dSlope = (q[1] - q[0]) / kStep - dCurve * kStep;
    const double dFirst = iLeft - c * kStep + dx;  // pixels behind the first node
    const double a = q[0] + dFirst * (dSlope + dFirst * dCurve);
    const double b = dSlope + 2.0 * dFirst * dCurve;
    for (int i = 0; i < kStep; ++i) pd[iLeft + i] = a + i * (b + i * dCurve);
  }
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

// Parabolas in both directions err by at most (|fxxx| + |fyyy|) H^3 / (9 sqrt(3)).
bool TileMap::Sample(int iStep) {
  m_iStep = iStep;
  // Four nodes at least tell how the map differs from a parabola.
  m_iNodesX = std::max(4, (m_iWidth + iStep - 1) / iStep + 1);
  m_iNodesY = std::max(4, (m_iHeight + iStep - 1) / iStep + 1);
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
  return kSafety * kParabola * (dAcross + dDown) <= kError;
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
  // The parabola through the three nodes from iBase on, at t nodes behind the first.
  const int iBase = std::min(iRow / m_iStep, m_iNodesY - 3);
  const double t = (iRow + dy) / m_iStep - iBase;
  const double w0 = 0.5 * (t - 1.0) * (t - 2.0), w1 = t * (2.0 - t), w2 = 0.5 * t * (t - 1.0);
  const auto fill = [&](const Nodes& nodes, double* pd) {
    double adLine[kMostNodes];
    const double* p = nodes.data() + iBase * m_iNodesX;
    for (int c = 0; c < m_iNodesX; ++c) {
      adLine[c] = w0 * p[c] + w1 * p[c + m_iNodesX] + w2 * p[c + 2 * m_iNodesX];
    }
    switch (m_iStep) {
      case 16:
        return FillRow<16>(adLine, m_iNodesX, m_iWidth, dx, pd);
      case 8:
        return FillRow<8>(adLine, m_iNodesX, m_iWidth, dx, pd);
      default:
        return FillRow<4>(adLine, m_iNodesX, m_iWidth, dx, pd);
    }
  };
  fill(m_x, pdX);
  fill(m_y, pdY);
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
