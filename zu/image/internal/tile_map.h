// The positions of a tile's pixels in a source, from a pixel map that is asked as seldom as its
// curvature allows.
#pragma once

#include <array>
#include <cstddef>

#include "zu/image/pixel_map.h"

namespace zu::internal {

constexpr int kTile = 64;  // pixels of a tile's side

class TileMap {
 public:
  // Looks at the map over the tile with the upper left pixel (iLeft, iTop), iWidth x iHeight
  // pixels, kTile at most.
  TileMap(const ZuPixelMap& map, int iLeft, int iTop, int iWidth, int iHeight);

  // Positions of the tile's row iRow, shifted by (dx, dy), |dx| and |dy| below 0.5: iWidth values
  // each, NaN where there is none, in arrays of kTile.
  void Row(int iRow, double dx, double dy, double* pdX, double* pdY) const;

  // Source pixels to a pixel of the result: at column i of row iRow in the direction that has the
  // fewest; over the tile in the direction that has the most, 1 where the map is asked for each
  // pixel.
  double Resolution(int i, int iRow) const;
  double Reduction() const;

 private:
  static constexpr int kNarrowestStep = 4, kWidestStep = 16;  // powers of two
  static constexpr int kMostNodes = kTile / kNarrowestStep + 1;
  using Nodes = std::array<double, static_cast<std::size_t>(kMostNodes) * kMostNodes>;

  bool Sample(int iStep);
  bool Ask(double x, double y, double* pdX, double* pdY) const;
  const double* Cell(const Nodes& nodes, int i, int iRow) const;

  const ZuPixelMap* m_pMap;
  int m_iLeft, m_iTop, m_iWidth, m_iHeight;
  int m_iStep = 0;  // between nodes [pixels]; 0: none, each pixel is asked for
  int m_iNodesX = 0, m_iNodesY = 0;
  Nodes m_x, m_y;  // row by row
};

}  // namespace zu::internal
