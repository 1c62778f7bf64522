// InvAdjust: the process-wide cache of inverse tables, and the iteration of unknown modes.
#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>
#include <vector>

#include "zu/foundation/debug.h"
#include "zu/photo/camera.h"
#include "zu/photo/internal/inverse_table.h"

namespace {

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

}  // namespace

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
