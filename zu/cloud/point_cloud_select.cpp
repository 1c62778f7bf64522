#include <utility>

#include "zu/cloud/point_cloud.h"
#include "zu/numerics/select_volume3d.h"

namespace {

// The pyramid of a selection volume for a loop: Zu3dSelectVolume::IsInSelectRange with the same
// sums, without a call.
class Pyramid {
 public:
  explicit Pyramid(const Zu3dSelectVolume& volume)
      : m_bRunning(volume.IsModePyramid()), m_eye(volume.GetEye()) {
    for (int i = 0; i < 4; ++i) {
      const ZuPlane& plane = volume.GetPlane(i);
      m_sides[i] = {plane.A(), plane.B(), plane.C(), plane.D()};
    }
  }

  bool Contains(const ZuScanPoint3d& p) const {
    const double dX = p.x - m_eye.x, dY = p.y - m_eye.y, dZ = p.z - m_eye.z;
    bool bInside = m_bRunning;
    for (const Side& side : m_sides) bInside &= side.Distance(dX, dY, dZ) >= 0.0;
    return bInside;
  }

 private:
  struct Side {
    double a, b, c, d;
    double Distance(double dX, double dY, double dZ) const { return a * dX + b * dY + c * dZ + d; }
  };

  bool m_bRunning;
  ZuPoint3d m_eye;
  Side m_sides[4];
};

}  // namespace

unsigned int ZuPointCloud::Select(const Zu3dSelectVolume& volume) {
  const Pyramid pyramid(volume);
  ZuBoundingBox3d box;
  for (ZuScanPoint3d& p : m_aPoints) {
    if (pyramid.Contains(p)) p.SetSelected(true);
    if (p.IsSelected()) box.Update(p.x, p.y, p.z);
  }
  m_SelBox = box;
  return m_SelBox.GetCount();
}

void ZuPointCloud::Deselect() {
  for (ZuScanPoint3d& p : m_aPoints) p.SetSelected(false);
  m_SelBox.Reset();
}

unsigned int ZuPointCloud::DeleteSelected() {
  if (m_aPoints.empty()) return 0;
  std::size_t uSelected = 0;
  for (const ZuScanPoint3d& p : m_aPoints) uSelected += p.IsSelected() ? 1 : 0;
  if (uSelected > 0) {
    std::vector<ZuScanPoint3d> removed;
    removed.reserve(uSelected);
    m_aUndo.push_back(std::move(removed));  // from here on nothing can fail
    std::vector<ZuScanPoint3d>& undo = m_aUndo.back();
    auto itKept = m_aPoints.begin();
    for (const ZuScanPoint3d& p : m_aPoints) {
      if (p.IsSelected()) {
        undo.push_back(p);
      } else {
        *itKept++ = p;
      }
    }
    m_aPoints.erase(itKept, m_aPoints.end());
  }
  m_SelBox.Reset();
  return static_cast<unsigned int>(uSelected);
}

bool ZuPointCloud::UndoDelete() {
  if (m_aUndo.empty()) return false;
  std::vector<ZuScanPoint3d>& undo = m_aUndo.back();
  const std::size_t uBefore = m_aPoints.size();
  m_aPoints.insert(m_aPoints.end(), undo.begin(), undo.end());
  for (std::size_t i = uBefore; i < m_aPoints.size(); ++i) m_aPoints[i].SetSelected(false);
  m_aUndo.pop_back();
  return true;
}
