// Values that come back to the bit on a way through another form.
#pragma once

#include <algorithm>
#include <vector>

namespace zu::internal {

// Rounding makes a value that goes into another form and back move by some units in the last
// place, until it stays or goes in a small circle. This is where the way from the value ends: a
// member of that circle that is the same for all its members. So Settled(Return(Settled(x))) is
// Settled(x).
template <class Value, class Return>
Value Settled(const Value& value, const Return& ThereAndBack) {
  constexpr std::size_t kMostTurns = 100;
  std::vector<Value> way{value};
  while (way.size() < kMostTurns) {
    const Value next = ThereAndBack(way.back());
    const auto seen = std::find(way.begin(), way.end(), next);
    if (seen != way.end()) return *std::min_element(seen, way.end());
    way.push_back(next);
  }
  return way.back();
}

}  // namespace zu::internal
