#include "zu/foundation/detail/id_entries.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace {

using Entries = std::vector<ZuIdEntry>;

// Digits of 11 bits, the least first: three of them hold an id.
constexpr int kBits = 11;
constexpr int kDigits = 3;
constexpr std::size_t kValues = std::size_t{1} << kBits;
constexpr std::size_t kShort = 1024;  // below, the counters cost more than comparisons

std::size_t Digit(unsigned int uId, int iDigit) { return uId >> (iDigit * kBits) & (kValues - 1); }

void SortByDigits(Entries& entries) {
  std::array<std::array<std::size_t, kValues>, kDigits> counts{};
  for (const ZuIdEntry& entry : entries) {
    for (int i = 0; i < kDigits; ++i) ++counts[static_cast<std::size_t>(i)][Digit(entry.uId, i)];
  }
  Entries sorted(entries.size());
  for (int i = 0; i < kDigits; ++i) {
    auto& places = counts[static_cast<std::size_t>(i)];
    if (places[Digit(entries[0].uId, i)] == entries.size()) continue;  // the same in all ids
    std::size_t uPlace = 0;
    for (std::size_t& uCount : places) {
      const std::size_t uNext = uPlace + uCount;
      uCount = uPlace;
      uPlace = uNext;
    }
    for (const ZuIdEntry& entry : entries) sorted[places[Digit(entry.uId, i)]++] = entry;
    entries.swap(sorted);
  }
}

}  // namespace

void ZuSortIdEntries(Entries& entries) {
  const auto less = [](const ZuIdEntry& a, const ZuIdEntry& b) { return a.uId < b.uId; };
  const auto equal = [](const ZuIdEntry& a, const ZuIdEntry& b) { return a.uId == b.uId; };
  if (std::is_sorted(entries.begin(), entries.end(), less)) {
    // nothing to do, as in most lists
  } else if (entries.size() < kShort) {
    std::stable_sort(entries.begin(), entries.end(), less);
  } else {
    SortByDigits(entries);
  }
  entries.erase(std::unique(entries.begin(), entries.end(), equal), entries.end());
}
