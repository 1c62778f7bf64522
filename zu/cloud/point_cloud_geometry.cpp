#include <algorithm>
#include <cmath>

#include "zu/cloud/internal/map_rows.h"
#include "zu/cloud/internal/running_mean.h"
#include "zu/cloud/point_cloud.h"
#include "zu/foundation/debug.h"
#include "zu/foundation/profiler.h"
#include "zu/points/point_list.h"
#include "zu/rectify/calc_plane.h"

namespace {

constexpr unsigned int kPlaneSamples = 35;  // points that a common normal is fitted to, about

// The determinant of a map whose largest element is 1 counts as 0 up to here [-].
constexpr double kSingular = 1e-12;

void PrintMap(const ZuAffinMap3d& map) {
  const double* pd = map.asDblArray();
  dbgprintf(
      "Transformation\n%.9g %.9g %.9g %.9g\n%.9g %.9g %.9g %.9g\n%.9g %.9g %.9g %.9g\n"
      "%.9g %.9g %.9g %.9g\n",
      pd[0], pd[1], pd[2], pd[3], pd[4], pd[5], pd[6], pd[7], pd[8], pd[9], pd[10], pd[11], pd[12],
      pd[13], pd[14], pd[15]);
}

}  // namespace

bool ZuPointCloud::Transform(const ZuAffinMap3d& map) {
  ZuProfiler profiler("ZuPointCloud::Transform");
  PrintMap(map);
  const ZuMapRows rows(map);
  ZuBoundingBox3d box;
  ZuRunningMean center;
  for (ZuScanPoint3d& p : m_aPoints) {
    rows.Transform(p);
    center.Add(p.x, p.y, p.z);
    box.Update(p.x, p.y, p.z);
  }
  m_Box = box;
  m_Center = center.Center();
  for (auto& aPoints : m_aUndo) {
    for (ZuScanPoint3d& p : aPoints) rows.Transform(p);
  }
  return true;
}

bool ZuPointCloud::TransformNormals(const ZuAffinMap3d& map) {
  // The cofactors of A are A^-T times its determinant, whose sign alone counts for a direction.
  const double* const m = map.asDblArray();
  double adCofactors[3][3], dDet = 0.0, dSize = 0.0;
  for (int i = 0; i < 3; ++i) {
    const double* const pNext = m + 4 * ((i + 1) % 3);
    const double* const pLast = m + 4 * ((i + 2) % 3);
    for (int k = 0; k < 3; ++k) {
      const int k1 = (k + 1) % 3, k2 = (k + 2) % 3;
      adCofactors[i][k] = pNext[k1] * pLast[k2] - pNext[k2] * pLast[k1];
      dDet += i == 0 ? m[k] * adCofactors[0][k] : 0.0;
      dSize = std::max(dSize, std::fabs(m[4 * i + k]));
    }
  }
  if (!(std::fabs(dDet) > kSingular * dSize * dSize * dSize)) return false;

  const double dSign = dDet > 0.0 ? 1.0 : -1.0;
  const auto turn = [&](ZuScanPoint3d& p) {
    if (!p.HasNormVector()) return;
    const double adOld[3] = {p.m_fNX, p.m_fNY, p.m_fNZ};
    double adNew[3];
    for (int i = 0; i < 3; ++i) {
      const double* const pRow = adCofactors[i];
      adNew[i] = dSign * (pRow[0] * adOld[0] + pRow[1] * adOld[1] + pRow[2] * adOld[2]);
    }
    const double dLength = std::hypot(adNew[0], adNew[1], adNew[2]);
    p.m_fNX = static_cast<float>(adNew[0] / dLength);
    p.m_fNY = static_cast<float>(adNew[1] / dLength);
    p.m_fNZ = static_cast<float>(adNew[2] / dLength);
  };
  for (ZuScanPoint3d& p : m_aPoints) turn(p);
  for (auto& aPoints : m_aUndo) {
    for (ZuScanPoint3d& p : aPoints) turn(p);
  }
  return true;
}

void ZuPointCloud::EstimateNormals(const ZuPoint3d& eye) {
  ZuProfiler profiler("EstimateNormals");
  const double dEyeX = eye.x, dEyeY = eye.y, dEyeZ = eye.z;
  m_pEye = eye;
  for (ZuScanPoint3d& p : m_aPoints) {
    const double dX = dEyeX - p.x, dY = dEyeY - p.y, dZ = dEyeZ - p.z;
    const double dLength = std::sqrt(dX * dX + dY * dY + dZ * dZ);
    p.m_fNX = static_cast<float>(dX / dLength);
    p.m_fNY = static_cast<float>(dY / dLength);
    p.m_fNZ = static_cast<float>(dZ / dLength);
  }
}

bool ZuPointCloud::CalcEstimatedNormals() {
  ZuProfiler profiler("ZuPointCloud::CalcEstimatedNormals");
  if (m_aPoints.size() <= kPlaneSamples) return false;

  const std::size_t uStep = m_aPoints.size() / kPlaneSamples;
  ZuPointList samples;
  std::size_t uCounter = 0;
  for (ZuScanPoint3d& p : m_aPoints) {
    if (++uCounter < uStep) continue;
    samples.Add(ZuPoint(0, p.x, p.y, p.z, 0));
    p.m_uColor = 0;
    uCounter = 0;
  }
  samples.Renumber(1, nullptr, 1);

  ZuCalcPlane calc;
  if (!calc.CalcPlaneFromFilteredPoints(&samples, false, true)) return false;
  const ZuPlane& plane = calc.GetPlane();
  const float fNX = static_cast<float>(plane.A());
  const float fNY = static_cast<float>(plane.B());
  const float fNZ = static_cast<float>(plane.C());
  // The fit takes collinear samples too, and finds no normal for them.
  if (!std::isfinite(fNX) || !std::isfinite(fNY) || !std::isfinite(fNZ)) return false;
  for (ZuScanPoint3d& p : m_aPoints) {
    p.m_fNX = fNX;
    p.m_fNY = fNY;
    p.m_fNZ = fNZ;
  }
  return true;
}

bool ZuPointCloud::UpdateBoundingBox(ZuBoundingBox3d& box, const ZuAffinMap3d& map,
                                     bool bOnlySelected) const {
  if (m_aPoints.empty()) return false;
  const ZuMapRows rows(map);
  ZuBoundingBox3d grown = box;
  for (const ZuScanPoint3d& p : m_aPoints) {
    if (bOnlySelected && !p.IsSelected()) continue;
    grown.Update(rows.X(p), rows.Y(p), rows.Z(p));
  }
  box = grown;
  return true;
}

bool ZuPointCloud::UpdateBoundingBoxes(ZuBoundingBox3d& all, ZuBoundingBox3d& selected,
                                       const ZuAffinMap3d& map) const {
  if (m_aPoints.empty()) return false;
  const ZuMapRows rows(map);
  ZuBoundingBox3d grown = all, grownSelected = selected;
  for (const ZuScanPoint3d& p : m_aPoints) {
    const double dX = rows.X(p), dY = rows.Y(p), dZ = rows.Z(p);
    grown.Update(dX, dY, dZ);
    if (p.IsSelected()) grownSelected.Update(dX, dY, dZ);
  }
  all = grown;
  selected = grownSelected;
  return true;
}
