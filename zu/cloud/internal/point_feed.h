// Adds points to a cloud in bulk: what ZuPointCloud::AddPoint does for each point, with boxes and
// centre held back from the cloud until the end, so that they stay in registers.
#pragma once

#include <algorithm>
#include <cstdint>
#include <new>
#include <span>

#include "zu/cloud/internal/running_mean.h"
#include "zu/cloud/point_cloud.h"

class ZuPointFeed {
 public:
  explicit ZuPointFeed(ZuPointCloud& cloud)
      : m_cloud(cloud),
        m_uFirst(cloud.m_aPoints.size()),
        m_box(cloud.m_Box),
        m_selBox(cloud.m_SelBox),
        m_center(cloud.m_Center) {}
  ~ZuPointFeed() {
    m_cloud.m_Box = m_box;
    m_cloud.m_SelBox = m_selBox;
    m_cloud.m_Center = m_center.Center();
  }
  ZuPointFeed(const ZuPointFeed&) = delete;
  ZuPointFeed& operator=(const ZuPointFeed&) = delete;

  void Add(const ZuScanPoint3d& p) {
    m_cloud.m_aPoints.push_back(p);
    m_center.Add(p.x, p.y, p.z);
    m_box.Update(p.x, p.y, p.z);
    if (p.IsSelected()) m_selBox.Update(p.x, p.y, p.z);
  }

  // A new point of a position and a colour word, made in its place.
  void Add(double x, double y, double z, std::uint32_t uColor) {
    m_cloud.m_aPoints.emplace_back(x, y, z, static_cast<int>(uColor));
    m_center.Add(x, y, z);
    m_box.Update(x, y, z);
  }

  // The points added so far, for values that only the whole file explains. Positions and selection
  // are told already: they stay.
  std::span<ZuScanPoint3d> GetAdded() { return std::span(m_cloud.m_aPoints).subspan(m_uFirst); }

  // A file announces uCount more points, of which uRoom at most can be in what is left of it. Only
  // a hint: nothing is reserved where the array's own growth is as good, so that any number of
  // announcements costs no more than the points that come, and no memory is no failure yet.
  void Expect(std::uint64_t uCount, std::uint64_t uRoom) {
    const std::uint64_t uSize = m_cloud.m_aPoints.size();
    if (uSize >= ZuPointCloud::MaxPoints) return;
    const std::uint64_t uLimit = ZuPointCloud::MaxPoints - uSize;
    const std::uint64_t uNeed = uSize + std::min({uCount, uRoom, uLimit});
    if (uNeed < 2 * m_cloud.m_aPoints.capacity()) return;
    try {
      m_cloud.m_aPoints.reserve(uNeed);
    } catch (const std::bad_alloc&) {
    }
  }

 private:
  ZuPointCloud& m_cloud;
  std::size_t m_uFirst;  // points that were there before
  ZuBoundingBox3d m_box;
  ZuBoundingBox3d m_selBox;
  ZuRunningMean m_center;
};
