// What a pass over points keeps of them: number, box, centre, and the plane of closest fit. Sums
// are formed without rounding, so that every figure is the same to the bit in whatever order and
// parts the points come: block by block out of a file, by threads, or from machines that saw a tile
// each.
//
// Source: K. Pearson, "On lines and planes of closest fit to systems of points in space", 1901.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

#include "zu/adjust/cloud_plane.h"

// Coordinates from 1e-140 to 1e150, or 0; beyond that products lose digits. Some 10 kB. Different
// objects may be used in different threads.
class ZU_ADJUST_API ZuCloudMoments {
 public:
  ZuCloudMoments();
  ~ZuCloudMoments();
  ZuCloudMoments(const ZuCloudMoments& other);
  ZuCloudMoments& operator=(const ZuCloudMoments& other);
  ZuCloudMoments(ZuCloudMoments&& other) noexcept;
  ZuCloudMoments& operator=(ZuCloudMoments&& other) noexcept;

  // Takes points in; some 60 ns each.
  void Add(const ZuScanPoint3d* pPoints, size_t uCount);
  // The same of coordinates x y z one behind the other.
  void AddRows(const double* pdRows, size_t uCount);
  // Takes in all that the other has seen.
  void Add(const ZuCloudMoments& other);

  size_t Count() const;
  // The smallest and the largest x, y, z; points that are not finite are left out. False: none.
  bool Box(double adLow[3], double adHigh[3]) const;
  // The mean of the points, each coordinate rounded from its exact sum. False: none.
  bool Centre(double adCentre[3]) const;
  // As ZuFitCloudPlane gives it but for dLow, dHigh, uFarthest and dFarthest, which need the points
  // once more: ZuCloudDistances. One pass is enough for all else.
  ZuCloudPlane Plane() const;

  // All of it as bytes, the same on every machine, and back. Load returns false, the object as it
  // was, for bytes that Save did not make.
  std::string Save() const;
  bool Load(std::string_view bytes);

 private:
  struct Sums;
  std::unique_ptr<Sums> m_pSums;
};

// The second pass: the signed distances of the points from a plane that was fitted to them.
class ZU_ADJUST_API ZuCloudDistances {
 public:
  // Of a plane with a good status.
  explicit ZuCloudDistances(const ZuCloudPlane& plane);

  void Add(const ZuScanPoint3d* pPoints, size_t uCount);
  void AddRows(const double* pdRows, size_t uCount);
  // Takes in what the other has seen of the same plane, behind the own points.
  void Add(const ZuCloudDistances& other);

  // Fills dLow, dHigh, uFarthest, dFarthest: of several that are as far the first.
  void Store(ZuCloudPlane* pPlane) const;

  // For transport, as those of ZuCloudMoments.
  std::string Save() const;
  bool Load(std::string_view bytes);

 private:
  void Take(double x, double y, double z);

  double m_adNormal[3], m_adCentre[3];
  double m_dLow, m_dHigh, m_dFarthest = 0.0;
  size_t m_uFarthest = 0, m_uCount = 0;
};
