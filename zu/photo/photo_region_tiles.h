// Divides the Biko region of a photo into a grid.
#pragma once

#include "zu/export.h"

class ZuPhoto;
class ZuPoint;

class ZU_API ZuPhotoRegionTiles {
 public:
  // nx and ny tiles. Without a photo there is no region, and all points lie in tile (0, 0).
  ZuPhotoRegionTiles(const ZuPhoto* pPhoto, int nx, int ny);
  ZuPhotoRegionTiles(const ZuPhotoRegionTiles&) = default;
  virtual ~ZuPhotoRegionTiles() = default;
  ZuPhotoRegionTiles& operator=(const ZuPhotoRegionTiles&) = default;

  // The tile of a point in Bikos, indices from 0; points outside count to the border.
  //
  // Required: the region is taken as centred on 0, whatever its corners are.
  void GetFieldIndex(int& ix, int& iy, ZuPoint* pPoint) const;

 protected:
  double m_dWidth = 0.0;
  double m_dHeight = 0.0;
  double m_dHalfWidth = 0.0;
  double m_dHalfHeight = 0.0;
  double m_dCountX = 0.0;
  double m_dCountY = 0.0;
};
