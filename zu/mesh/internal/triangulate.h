// The constrained Delaunay triangulation of places in the plane.
#pragma once

#include <array>
#include <utility>
#include <vector>

#include "zu/numerics/point2d.h"

// A place where breaklines cross between points, and the share of the way along each of them.
struct ZuBreakCrossing {
  struct Share {
    int iFrom, iTo;  // places at the ends
    double dShare;   // 0 at iFrom, 1 at iTo
  };
  ZuPoint2d place;
  std::vector<Share> shares;
};

struct ZuTriangulation {
  // Anticlockwise; indices beyond the places count crossings.
  std::vector<std::array<int, 3>> triangles;
  std::vector<ZuBreakCrossing> crossings;
};

// Places are finite and apart from each other, segments join two of them. Places are put in along
// a curve that fills the plane, so that a place is found near the one before: n log n.
ZuTriangulation ZuTriangulatePlaces(const std::vector<ZuPoint2d>& places,
                                    const std::vector<std::pair<int, int>>& segments);
