// The inverse table of a camera: its nodes, and the look-up by bisection of both axes at once,
// which a proven guess spares in most cases.
#include "zu/photo/internal/inverse_table.h"

#include <omp.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>

#include "zu/photo/camera.h"
#include "zu/photo/internal/bisection_way.h"

using bisection_way::kBisections;
using bisection_way::kWays;
using bisection_way::Narrow;

namespace {

constexpr double kVanishing = 1e-10;  // of a homogeneous component [-]
constexpr double kZuvoLimit = 30.0;   // half-width of a table when the camera gives none [mm]
constexpr double kVivaLimit = 8.0;
constexpr int kWalkSteps = 60;

// (x, y, 1) through a 3 x 3 matrix; (x, y) stay where the homogeneous component vanishes.
void Map(const double* m, double* x, double* y) {
  const double w = m[6] * *x + m[7] * *y + m[8];
  if (!(std::fabs(w) >= kVanishing)) return;
  if (w == 1.0) {
    const double xNew = m[0] * *x + m[1] * *y + m[2];
    *y = m[3] * *x + m[4] * *y + m[5];
    *x = xNew;
    return;
  }
  const double xMapped = (m[0] * *x + m[1] * *y + m[2]) / w;
  const double yMapped = (m[3] * *x + m[4] * *y + m[5]) / w;
  *x = xMapped;
  *y = yMapped;
}

double NewLimit(const ZuCamera& camera, double dOld) {
  if (camera.m_dRMax != 0.0) return camera.m_dRMax;
  if (camera.m_iMode == eCameraModeZuvo) return kZuvoLimit;
  if (camera.m_iMode == eCameraModeViva) return kVivaLimit;
  return dOld;  // no domain is known: the table finds nothing
}

// Both axes at once. Comparisons give -1 for true, 0 for false.
using Doubles2 = double __attribute__((vector_size(16)));
using Longs2 = std::int64_t __attribute__((vector_size(16)));
using Ints4 = std::int32_t __attribute__((vector_size(16)));

Longs2 IsGreater(Doubles2 a, Doubles2 b) { return reinterpret_cast<Longs2>(a > b); }
// Of (i, j), each given twice: 64-bit integers are slow to compare.
Longs2 IsGreater(Ints4 a, Ints4 b) { return reinterpret_cast<Longs2>(a > b); }
Ints4 Twice(int i, int j) { return Ints4{i, i, j, j}; }

}  // namespace

bool ZuInvAdjustTable::IsFor(const ZuCamera& camera) const {
  return m_iCameraId == camera.GetId() && m_dCameraC == camera.m_dC;
}

void ZuInvAdjustTable::Build(const ZuCamera& camera) {
  if (m_dLimit != 0.0 && m_dLimit >= camera.m_dRMax) return;
  m_dLimit = NewLimit(camera, m_dLimit);
  m_iCameraId = camera.GetId();
  m_dCameraC = camera.m_dC;
  if (m_dLimit == 0.0) return;

  ZuMatrix scale(3, 3), shift(3, 3);
  scale.SetIdent();
  scale[1][1] = scale[2][2] = 2.0 * m_dLimit / static_cast<double>(kCells);
  shift.SetIdent();
  shift[1][3] = shift[2][3] = -0.5 * kCells;
  m_Matrix = scale * shift;

  m_pNodes.reset(new Node[static_cast<size_t>(kNodes) * kNodes]);  // every node is set below
  const double* pMatrix = m_Matrix.GetData();
  Node* pNodes = m_pNodes.get();
  const ZuCamera* pCamera = &camera;
  omp_set_num_threads(omp_get_num_procs());
#pragma omp parallel for schedule(static)
  for (int i = 0; i < kNodes; ++i) {
    Node* pNode = pNodes + static_cast<size_t>(i) * kNodes;
    for (int j = 0; j < kNodes; ++j, ++pNode) {
      double x = i, y = j;
      Map(pMatrix, &x, &y);
      pCamera->Adjust(&x, &y);
      pNode->x = x;
      pNode->y = y;
    }
  }
  FillGuesses();
}

bool ZuInvAdjustTable::Contains(Cell cell, double X, double Y) const {
  const Node& node = At(cell.i, cell.j);
  return !(At(cell.i - 1, cell.j).x > X) && !(X > node.x) && !(At(cell.i, cell.j - 1).y > Y) &&
         !(Y > node.y);
}

// Bisects both axes at once, from the bounds given; each axis is judged in the row or column the
// other one stands in.
ZuInvAdjustTable::Cell ZuInvAdjustTable::Bisect(const Bounds& bounds, double X, double Y) const {
  int iLower = bounds.iLower, iUpper = bounds.iUpper;
  int jLower = bounds.jLower, jUpper = bounds.jUpper;
  bool bInI = false, bInJ = false;
  Cell cell{1, 1};
  while (iLower <= iUpper && jLower <= jUpper && !(bInI && bInJ)) {
    cell.i = ClampCell((iLower + iUpper) >> 1);
    cell.j = ClampCell((jLower + jUpper) >> 1);
    const Node& node = At(cell.i, cell.j);
    bInI = bInJ = false;
    if (At(cell.i - 1, cell.j).x > X) {
      iUpper = cell.i - 1;
    } else if (X > node.x) {
      iLower = cell.i + 1;
    } else {
      bInI = true;
    }
    if (At(cell.i, cell.j - 1).y > Y) {
      jUpper = cell.j - 1;
    } else if (Y > node.y) {
      jLower = cell.j + 1;
    } else {
      bInJ = true;
    }
  }
  return cell;
}

// One step towards the cell that holds the point, along each axis.
ZuInvAdjustTable::Cell ZuInvAdjustTable::Step(Cell cell, double X, double Y) const {
  if (At(cell.i - 1, cell.j).x > X) {
    cell.i = ClampCell(cell.i - 1);
  } else if (X > At(cell.i, cell.j).x) {
    cell.i = ClampCell(cell.i + 1);
  }
  if (At(cell.i, cell.j - 1).y > Y) {
    cell.j = ClampCell(cell.j - 1);
  } else if (Y > At(cell.i, cell.j).y) {
    cell.j = ClampCell(cell.j + 1);
  }
  return cell;
}

// The corrected grid is no straight lattice, a row's x depend on j: from the bisection's cell it
// can be some steps to the one that holds the point.
ZuInvAdjustTable::Cell ZuInvAdjustTable::Walk(Cell cell, double X, double Y) const {
  for (int n = 0; n < kWalkSteps && !Contains(cell, X, Y); ++n) cell = Step(cell, X, Y);
  return cell;
}

void ZuInvAdjustTable::FillGuesses() {
  m_dGuessScale = kGuessCells / (2.0 * m_dLimit);
  const auto bounded = [](double d) {
    return d >= 0.0 ? static_cast<float>(std::min<double>(d, kCells)) : 0.0F;
  };
  for (int p = 0; p < kGuessNodes; ++p) {
    for (int q = 0; q < kGuessNodes; ++q) {
      const double X = p / m_dGuessScale - m_dLimit, Y = q / m_dGuessScale - m_dLimit;
      double fi, fj;
      Interpolate(Walk(Bisect(Bounds(), X, Y), X, Y), X, Y, &fi, &fj);
      m_aGuesses[p * kGuessNodes + q] = {bounded(fi), bounded(fj)};
    }
  }
}

ZuInvAdjustTable::Cell ZuInvAdjustTable::Guess(double X, double Y) const {
  const auto u = static_cast<float>((X + m_dLimit) * m_dGuessScale);
  const auto v = static_cast<float>((Y + m_dLimit) * m_dGuessScale);
  if (!(u >= 0.0F && u <= kGuessCells && v >= 0.0F && v <= kGuessCells)) return {1, 1};
  const int p = std::min(static_cast<int>(u), kGuessCells - 1);
  const int q = std::min(static_cast<int>(v), kGuessCells - 1);
  const float s = u - static_cast<float>(p), t = v - static_cast<float>(q);
  const Place* g = m_aGuesses + p * kGuessNodes + q;
  const Place* h = g + kGuessNodes;
  const auto cellOf = [s, t](float g0, float g1, float h0, float h1) {
    const float gt = g0 + t * (g1 - g0), ht = h0 + t * (h1 - h0);
    return ClampCell(static_cast<int>(gt + s * (ht - gt)) + 1);
  };
  return {cellOf(g[0].i, g[1].i, h[0].i, h[1].i), cellOf(g[0].j, g[1].j, h[0].j, h[1].j)};
}

// On its way straight to a cell the bisection passes nodes that follow from the cell alone: all
// its comparisons can be made at once, without waiting for one to choose the next node.
bool ZuInvAdjustTable::LeadsBisectionTo(Cell cell, double X, double Y, Bounds* pBounds) const {
  const std::uint16_t* puI = kWays.aaMiddle[cell.i];
  const std::uint16_t* puJ = kWays.aaMiddle[cell.j];
  const Doubles2 point{X, Y};
  const Ints4 goal = Twice(cell.i, cell.j);
  unsigned int uAstray = 0;  // a bit a step, the first step lowest
  for (int k = kBisections - 1; k >= 0; --k) {
    const Node* pNode = &At(puI[k], puJ[k]);
    const Ints4 middle = Twice(puI[k], puJ[k]);
    const Longs2 below = IsGreater(Doubles2{pNode[-kNodes].x, pNode[-1].y}, point);
    const Longs2 above = IsGreater(point, Doubles2{pNode->x, pNode->y});
    const Longs2 astray =
        (below ^ IsGreater(middle, goal)) | (~below & (above ^ IsGreater(goal, middle)));
    uAstray = uAstray << 1 | static_cast<unsigned int>((astray[0] | astray[1]) & 1);
  }
  if (uAstray == 0) return true;
  const int n = std::countr_zero(uAstray);
  *pBounds = Bounds();
  Narrow(puI, n, cell.i, &pBounds->iLower, &pBounds->iUpper);
  Narrow(puJ, n, cell.j, &pBounds->jLower, &pBounds->jUpper);
  return false;
}

// Required: the cell that the bisection of the whole table and the walk reach, also where the point
// lies in two cells of a bent grid or in none. The guess only spares the bisection the steps that
// lead straight to it.
ZuInvAdjustTable::Cell ZuInvAdjustTable::Find(double X, double Y) const {
  Cell cell = Guess(X, Y);
  if (!Contains(cell, X, Y)) cell = Step(cell, X, Y);
  Bounds bounds;
  if (LeadsBisectionTo(cell, X, Y, &bounds)) return cell;
  return Walk(Bisect(bounds, X, Y), X, Y);
}

// The place in the grid, each axis interpolated on its own.
void ZuInvAdjustTable::Interpolate(Cell cell, double X, double Y, double* fi, double* fj) const {
  const Node& node = At(cell.i, cell.j);
  const double xLow = At(cell.i - 1, cell.j).x, yLow = At(cell.i, cell.j - 1).y;
  *fi = (cell.i - 1) + (X - xLow) / (node.x - xLow);
  *fj = (cell.j - 1) + (Y - yLow) / (node.y - yLow);
}

bool ZuInvAdjustTable::LookUp(double* x, double* y) const {
  const double X = *x, Y = *y;
  if (m_pNodes == nullptr || std::fabs(X) >= m_dLimit || std::fabs(Y) >= m_dLimit) return false;

  // Where the walk ran out, the cell reached extrapolates: near the border of a strongly bent
  // table that is still the best answer.
  double fi, fj;
  Interpolate(Find(X, Y), X, Y, &fi, &fj);
  Map(m_Matrix.GetData(), &fi, &fj);
  if (!std::isfinite(fi) || !std::isfinite(fj)) return false;
  *x = fi;
  *y = fj;
  return true;
}
