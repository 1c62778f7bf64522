#include "zu/numerics/aligned_bounding_box3d.h"

void ZuAlignedBoundingBox3d::SetMap(const ZuAffinMap3d& mapWorldToBox) {
  m_MapWorldToBox = mapWorldToBox;
  m_MapBoxToWorld = ZuAffinMap3d::Inv(mapWorldToBox);
}

void ZuAlignedBoundingBox3d::Update(const ZuPoint3d& p) {
  m_Box.Update(m_MapWorldToBox.Transform(p));
}

bool ZuAlignedBoundingBox3d::IsInBox(const ZuPoint3d& p) const {
  return m_Box.IsInBox(m_MapWorldToBox.Transform(p));
}

ZuPoint3d ZuAlignedBoundingBox3d::GetPoint(int i) const {
  const ZuPoint3d corner(i & 1 ? m_Box.Xmax() : m_Box.Xmin(), i & 2 ? m_Box.Ymax() : m_Box.Ymin(),
                         i & 4 ? m_Box.Zmax() : m_Box.Zmin());
  return m_MapBoxToWorld.Transform(corner);
}
