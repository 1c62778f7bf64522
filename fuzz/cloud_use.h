// What is done with the clouds of a container read from a file.
#pragma once

#include <cmath>
#include <cstring>

#include "fuzz/input.h"
#include "zu/cloud/cloud_reading.h"
#include "zu/cloud/point_cloud_container.h"
#include "zu/numerics/affin_map3d.h"
#include "zu/numerics/select_volume3d.h"

inline Zu3dSelectVolume HalfSpace() {
  Zu3dSelectVolume volume;
  volume.StartPyramid();
  for (int i = 0; i < 4; ++i) volume.GetPlane(i).C() = 1.0;
  return volume;
}

// NaN last, as the order of the library has it.
inline void CheckSorted(const ZuPointCloud& cloud) {
  const auto& points = cloud.GetPoints();
  for (std::size_t i = 1; i < points.size(); ++i) {
    if (std::isnan(points[i - 1].z)) Require(std::isnan(points[i].z));
    Require(!(points[i].z < points[i - 1].z));
  }
}

inline void UseCloud(ZuPointCloud& cloud) {
  const unsigned int uCount = cloud.GetPointCount();
  cloud.Select(HalfSpace());
  const unsigned int uDeleted = cloud.DeleteSelected();
  Require(uDeleted + cloud.GetPointCount() == uCount);
  if (cloud.UndoDelete()) Require(cloud.GetPointCount() == uCount);
  cloud.ZSort(true);
  Require(cloud.GetPointCount() == uCount);
  CheckSorted(cloud);
  cloud.Transform(ZuAffinMap3d());
  cloud.EstimateNormals(ZuPoint3d(1.0, 2.0, 3.0));
  cloud.CalcEstimatedNormals();
  unsigned int uNormals = 0, uTotal = 0;
  cloud.CountNormals(uNormals, uTotal);
  Require(uTotal == uCount && uNormals <= uTotal);
  ZuBoundingBox3d all, selected;
  cloud.UpdateBoundingBoxes(all, selected, ZuAffinMap3d());
}

inline void UseClouds(ZuPointCloudContainer& clouds) {
  ZuPointCloud* pSum = clouds.AddCloud();
  int iLeft = 4;
  for (ZuPointCloud* p = clouds.First(); p != nullptr && iLeft-- > 0; p = p->Next()) {
    if (p != pSum) pSum->Insert(p);
    UseCloud(*p);
    clouds.UpdateCenterAndBox(p);
  }
  Require(clouds.Delete(clouds.First()));
}

// Position, colour and intensity as they were.
inline void RequireSamePoints(const ZuPointCloud& a, const ZuPointCloud& b) {
  Require(a.GetPointCount() == b.GetPointCount());
  for (std::size_t i = 0; i < a.GetPoints().size(); ++i) {
    const ZuScanPoint3d &p = a.GetPoints()[i], &q = b.GetPoints()[i];
    Require(IsSame(p.x, q.x) && IsSame(p.y, q.y) && IsSame(p.z, q.z));
    Require(p.GetColor() == q.GetColor() && p.GetIntensity() == q.GetIntensity());
  }
}

// The positions of the first cloud at the start of the second.
inline void RequireStart(const ZuPointCloud& start, const ZuPointCloud& all) {
  Require(start.GetPointCount() <= all.GetPointCount());
  for (std::size_t i = 0; i < start.GetPoints().size(); ++i) {
    const ZuScanPoint3d &p = start.GetPoints()[i], &q = all.GetPoints()[i];
    Require(IsSame(p.x, q.x) && IsSame(p.y, q.y) && IsSame(p.z, q.z));
  }
}
inline void RequireSamePositions(const ZuPointCloud& a, const ZuPointCloud& b) {
  Require(a.GetPointCount() == b.GetPointCount());
  RequireStart(a, b);
}

// A tolerant reading takes what the strict one took and goes on behind it.
inline void RequireTolerantGoesOn(ZuCloudReading (*pfnRead)(const char*, ZuPointCloudContainer&,
                                                            eZuReadMode),
                                  const Input& input, const ZuCloudReading& strict) {
  ZuPointCloudContainer clouds;
  const ZuCloudReading tolerant = pfnRead(input.Path(), clouds, eZuReadTolerant);
  Require(tolerant.m_pCloud != nullptr);
  RequireStart(*strict.m_pCloud, *tolerant.m_pCloud);
  Require(!strict.m_Findings.IsWhole() || tolerant.m_Findings.m_uDroppedLines == 0);
  for (const ZuReadFinding& finding : tolerant.m_Findings) Require(!finding.m_strText.empty());
}
