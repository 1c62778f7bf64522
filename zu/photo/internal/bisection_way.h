// The way of a bisection of 1 to 780 to each cell.
#pragma once

#include <cstdint>

#include "zu/photo/internal/inverse_table.h"

namespace bisection_way {

// The middles that a bisection of 1 to kCells takes on its way straight to each cell, where it then
// stays.
inline constexpr int kBisections = 10;
struct Ways {
  std::uint16_t aaMiddle[ZuInvAdjustTable::kNodes][kBisections] = {};
};

constexpr Ways MakeWays() {
  Ways ways;
  for (int i = 1; i <= ZuInvAdjustTable::kCells; ++i) {
    int iLower = 1, iUpper = ZuInvAdjustTable::kCells;
    for (std::uint16_t& uMiddle : ways.aaMiddle[i]) {
      const int iMiddle = (iLower + iUpper) >> 1;
      uMiddle = static_cast<std::uint16_t>(iMiddle);
      if (iMiddle > i) iUpper = iMiddle - 1;
      if (iMiddle < i) iLower = iMiddle + 1;
    }
  }
  return ways;
}
inline constexpr Ways kWays = MakeWays();

constexpr bool EndAtTheirCells(const Ways& ways) {
  for (int i = 1; i <= ZuInvAdjustTable::kCells; ++i) {
    if (ways.aaMiddle[i][kBisections - 1] != i) return false;
  }
  return true;
}
static_assert(EndAtTheirCells(kWays));

// The bounds after the first n steps of a way.
inline void Narrow(const std::uint16_t* puMiddle, int n, int i, int* piLower, int* piUpper) {
  for (int k = 0; k < n; ++k) {
    if (puMiddle[k] > i) *piUpper = puMiddle[k] - 1;
    if (puMiddle[k] < i) *piLower = puMiddle[k] + 1;
  }
}

}  // namespace bisection_way
