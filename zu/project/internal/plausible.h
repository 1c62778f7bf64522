// Points that lie far from all others of their kind.
#pragma once

#include <string>
#include <vector>

#include "zu/points/point.h"
#include "zu/project/finding_list.h"
#include "zu/project/keyword_block.h"

namespace zu::internal {

struct PlacedPoint {
  const ZuPoint* pPoint = nullptr;
  ZuKeywordPlace place;
};

// Adds a warning for each of at least four points whose distance from their median is some hundred
// times the median distance, as where metres and millimetres are mixed.
void CheckUnits(const std::vector<PlacedPoint>& points, const std::string& strFile,
                const char* szWhat, ZuFindingList* pFindings);

}  // namespace zu::internal
