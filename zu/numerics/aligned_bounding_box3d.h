// Box whose axes are turned against the world: points pass a map into the axes of the box first.
#pragma once

#include "zu/export.h"
#include "zu/numerics/affin_map3d.h"
#include "zu/numerics/bounding_box3d.h"

class ZU_API ZuAlignedBoundingBox3d {
 public:
  // Axes of the world, empty.
  ZuAlignedBoundingBox3d() = default;
  explicit ZuAlignedBoundingBox3d(const ZuAffinMap3d& mapWorldToBox) { SetMap(mapWorldToBox); }

  // Sets the map from the world to the axes of the box, and its inverse. The box stays as it is.
  void SetMap(const ZuAffinMap3d& mapWorldToBox);
  // Empties the box.
  void InitBox() { m_Box.Reset(); }

  // The inner box, in its own axes.
  const ZuBoundingBox3d& Box() const { return m_Box; }
  ZuBoundingBox3d& Box() { return m_Box; }

  // Points of the world. Limits included.
  void Update(const ZuPoint3d& p);
  bool IsInBox(const ZuPoint3d& p) const;

  // Corner i of 0 to 7 in the world: bit 0 of i takes the upper limit in x, bit 1 in y, bit 2 in z.
  ZuPoint3d GetPoint(int i) const;

  double GetXSize() const { return m_Box.GetXSize(); }
  double GetYSize() const { return m_Box.GetYSize(); }
  double GetZSize() const { return m_Box.GetZSize(); }
  double GetWidth() const { return m_Box.GetWidth(); }
  double GetHeight() const { return m_Box.GetHeight(); }
  double GetDepth() const { return m_Box.GetDepth(); }
  double GetMin() const { return m_Box.GetMin(); }
  double GetMax() const { return m_Box.GetMax(); }
  double GetVol() const { return m_Box.GetVol(); }
  bool IsValid() const { return m_Box.IsValid(); }

 protected:
  ZuBoundingBox3d m_Box;
  ZuAffinMap3d m_MapWorldToBox;
  ZuAffinMap3d m_MapBoxToWorld;
};
