#include "zu/adjust/cloud_plane.h"

#include "zu/adjust/cloud_moments.h"

ZuCloudPlane ZuFitCloudPlane(const std::vector<const std::vector<ZuScanPoint3d>*>& clouds) {
  ZuCloudMoments moments;
  for (const std::vector<ZuScanPoint3d>* pCloud : clouds) {
    moments.Add(pCloud->data(), pCloud->size());
  }
  ZuCloudPlane plane = moments.Plane();
  if (plane.eStatus != ZuAdjustStatus::Good) return plane;
  ZuCloudDistances distances(plane);
  for (const std::vector<ZuScanPoint3d>* pCloud : clouds) {
    distances.Add(pCloud->data(), pCloud->size());
  }
  distances.Store(&plane);
  return plane;
}
