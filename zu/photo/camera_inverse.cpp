// InvAdjust: the inverse table with its process-wide cache, and the iteration of unknown modes.
#include <omp.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>
#include <vector>

#include "zu/foundation/debug.h"
#include "zu/photo/camera.h"
#include "zu/photo/internal/inverse_table.h"

namespace {

constexpr double kVanishing = 1e-10;  // of a homogeneous component [-]
constexpr double kZuvoLimit = 30.0;   // half-width of a table when the camera gives none [mm]
constexpr double kVivaLimit = 8.0;
constexpr int kWalkSteps = 60;

// Iteration of unknown modes: most rounds, end of the iteration [mm^2], and up to which difference
// of squares the last answer serves as start [mm^2].
constexpr int kRounds = 25;
constexpr double kConverged = 1e-14;
constexpr double kNearLast = 0.5;

// Longest half-width that the diagnostic grid walks [mm]; no image is larger.
constexpr double kLongestTest = 1000.0;

using ZuInvAdjustTableList = std::vector<std::unique_ptr<ZuInvAdjustTable>>;

ZuInvAdjustTableList& Tables() {
  static ZuInvAdjustTableList tables;
  return tables;
}

int ClampCell(int i) { return std::clamp(i, 1, ZuInvAdjustTable::kCells); }

// (x, y, 1) through a 3 x 3 matrix; (x, y) stay where the homogeneous component vanishes.
void Map(const double* m, double* x, double* y) {
  const double w = m[6] * *x + m[7] * *y + m[8];
  if (!(std::fabs(w) >= kVanishing)) return;
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
}

bool ZuInvAdjustTable::Contains(Cell cell, double X, double Y) const {
  const Node& node = At(cell.i, cell.j);
  return !(At(cell.i - 1, cell.j).x > X) && !(X > node.x) && !(At(cell.i, cell.j - 1).y > Y) &&
         !(Y > node.y);
}

// Bisects both axes at once; each axis is judged in the row or column the other one stands in.
ZuInvAdjustTable::Cell ZuInvAdjustTable::Bisect(double X, double Y) const {
  int iLower = 1, iUpper = kCells, jLower = 1, jUpper = kCells;
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

// The corrected grid is no straight lattice, a row's x depend on j: from the bisection's cell it
// can be some steps to the one that holds the point.
ZuInvAdjustTable::Cell ZuInvAdjustTable::Walk(Cell cell, double X, double Y) const {
  for (int n = 0; n < kWalkSteps && !Contains(cell, X, Y); ++n) {
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
  }
  return cell;
}

bool ZuInvAdjustTable::LookUp(double* x, double* y) const {
  const double X = *x, Y = *y;
  if (m_pNodes == nullptr || std::fabs(X) >= m_dLimit || std::fabs(Y) >= m_dLimit) return false;

  // Where the walk ran out, the cell reached extrapolates: near the border of a strongly bent
  // table that is still the best answer.
  const Cell cell = Walk(Bisect(X, Y), X, Y);
  const Node& node = At(cell.i, cell.j);
  const double xLow = At(cell.i - 1, cell.j).x, yLow = At(cell.i, cell.j - 1).y;
  double fi = (cell.i - 1) + (X - xLow) / (node.x - xLow);
  double fj = (cell.j - 1) + (Y - yLow) / (node.y - yLow);
  Map(m_Matrix.GetData(), &fi, &fj);
  if (!std::isfinite(fi) || !std::isfinite(fj)) return false;
  *x = fi;
  *y = fj;
  return true;
}

ZuInvAdjustTable* GetInvAdjustTable(const ZuCamera& camera) {
  for (const auto& pTable : Tables()) {
    if (pTable->IsFor(camera)) return pTable.get();
  }
  if (std::isnan(camera.m_dC)) return nullptr;
  auto pTable = std::make_unique<ZuInvAdjustTable>();
  pTable->Build(camera);
  Tables().push_back(std::move(pTable));
  return Tables().back().get();
}

void ZuCamera::DeleteInvAdjustTables() { Tables().clear(); }

bool ZuCamera::InvAdjust(double* x, double* y) const {
  if (m_uId == 0) return false;
  switch (m_iMode) {
    case eCameraModeZuvo:
    case eCameraModeViva:
    case eCameraModeCap:
      return InvAdjustByTable(x, y);
    case eCameraModePinhole:
      return true;
    default:
      return InvAdjustByIteration(x, y);
  }
}

bool ZuCamera::InvAdjustByTable(double* x, double* y) const {
  const ZuInvAdjustTable* pTable = GetInvAdjustTable(*this);
  double xFound = *x, yFound = *y;
  if (pTable == nullptr || !pTable->LookUp(&xFound, &yFound)) return false;
  m_dLastInX = *x;
  m_dLastInY = *y;
  m_dLastOutX = *x = xFound;
  m_dLastOutY = *y = yFound;
  return true;
}

// Two-term fixed point about the origin, for modes that a file gives and no model is known of.
bool ZuCamera::InvAdjustByIteration(double* x, double* y) const {
  const double X = *x, Y = *y;
  double sx = X, sy = Y;
  // Required: a difference of the squares, not their sum. It decides which start is taken, and
  // results in the last digits depend on the start.
  const double dx = X - m_dLastInX, dy = Y - m_dLastInY;
  if (std::fabs(dx * dx - dy * dy) <= kNearLast) {
    sx = m_dLastOutX;
    sy = m_dLastOutY;
  }
  const double r02 = m_dR0 * m_dR0;
  const double K1 = m_dA1 * r02, K2 = m_dA2 * (r02 * r02);
  double dBest = std::numeric_limits<double>::max();
  double e = 0.0, nx = 0.0, ny = 0.0;
  bool bRose = false;
  for (int n = 0; n < kRounds; ++n) {
    const double s = sx * sx + sy * sy;
    const double d = m_dA2 * (s * s) + (m_dA1 * s - K1) - K2;
    nx = (sx - m_dXh) * d + X;
    ny = (sy - m_dYh) * d + Y;
    e = (sx - nx) * (sx - nx) + (sy - ny) * (sy - ny);
    if (e > dBest) {
      bRose = true;
      break;
    }
    dBest = e;
    sx = nx;
    sy = ny;
    if (!(e > kConverged)) break;
  }
  if (!bRose && e < kConverged) {
    m_dLastInX = X;
    m_dLastInY = Y;
    m_dLastOutX = nx;
    m_dLastOutY = ny;
    *x = m_dXh + nx;
    *y = ny + m_dYh;
    return true;
  }

  const ZuInvAdjustTable* pTable = GetInvAdjustTable(*this);
  double xFound = X, yFound = Y;
  const bool bFound = pTable != nullptr && pTable->LookUp(&xFound, &yFound);
  if (!bRose || bFound) {
    m_dLastInX = X;
    m_dLastInY = Y;
    m_dLastOutX = bFound ? xFound : 0.0;
    m_dLastOutY = bFound ? yFound : 0.0;
  }
  if (!bFound) return false;
  *x = xFound;
  *y = yFound;
  return true;
}

void ZuCamera::DbgTestInvAdjust(double dRadius) {
  double R = m_dRMax != 0.0 ? m_dRMax : dRadius;
  if (!(R <= kLongestTest)) R = kLongestTest;
  dbgprintf("Valid x1 y2 -> adjust -> invadjust -> diff");
  double dMaxX = 0.0, dMaxY = 0.0;
  for (double xStart = -R; xStart <= R; xStart += 0.5) {
    for (double yStart = -R; yStart <= R; yStart += 0.5) {
      double xa = xStart, ya = yStart;
      Adjust(&xa, &ya);
      double xi = xa, yi = ya;
      InvAdjust(&xi, &yi);
      const double dx = (xi - xStart) * 1000.0, dy = (yi - yStart) * 1000.0;  // micrometres
      dMaxX = std::max(dMaxX, std::fabs(dx));
      dMaxY = std::max(dMaxY, std::fabs(dy));
      dbgprintf("(%6.2f %6.2f) -> (%6.3f %6.3f) -> (%7.3f %7.3f) : %5.2f \u00b5m %5.2f \u00b5m",
                xStart, yStart, xa, ya, xi, yi, dx, dy);
    }
  }
  dbgprintf("Max Diff:  %8.5f %8.5f", dMaxX, dMaxY);
}
