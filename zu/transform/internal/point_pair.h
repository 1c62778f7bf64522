// Common points of two lists.
#pragma once

#include <vector>

class ZuPoint;

namespace zu::internal {

// A source point and the target point of its id.
struct PointPair {
  ZuPoint* pSource;
  const ZuPoint* pTarget;
};

using PointPairs = std::vector<PointPair>;

}  // namespace zu::internal
