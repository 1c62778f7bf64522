#include "zu/photo/photo_region_tiles.h"

#include <cmath>

#include "zu/photo/photo.h"

namespace {

// The index of a value, limited to 0 and count - 1; 0 where there is no number.
int TileIndex(double dOffset, double dSize, double dCount) {
  const double d = std::floor(dOffset * dCount / dSize);
  if (!(d > 0.0)) return 0;
  return static_cast<int>(d < dCount - 1.0 ? d : dCount - 1.0);
}

}  // namespace

ZuPhotoRegionTiles::ZuPhotoRegionTiles(const ZuPhoto* pPhoto, int nx, int ny) {
  if (pPhoto == nullptr) return;
  m_dWidth = pPhoto->GetBikoRegion().Width();
  m_dHeight = pPhoto->GetBikoRegion().Height();
  m_dHalfWidth = m_dWidth * 0.5;
  m_dHalfHeight = m_dHeight * 0.5;
  m_dCountX = nx;
  m_dCountY = ny;
}

void ZuPhotoRegionTiles::GetFieldIndex(int& ix, int& iy, ZuPoint* pPoint) const {
  ix = TileIndex(pPoint->m_dX + m_dHalfWidth, m_dWidth, m_dCountX);
  iy = TileIndex(pPoint->m_dY + m_dHalfHeight, m_dHeight, m_dCountY);
}
