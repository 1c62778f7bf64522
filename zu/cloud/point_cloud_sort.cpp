#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <memory>
#include <new>

#include "zu/cloud/point_cloud.h"

// Records of 64 bytes are costly to move about. So the order is found on pairs of 16 bytes, by a
// radix sort with the least significant digit first (Knuth, The Art of Computer Programming,
// vol. 3, 1998, 5.2.5), and every record moves once, into a second array.

namespace {

constexpr std::size_t kSmallCloud = 512;  // points; below, sorting the records is faster
constexpr int kDigitBits = 11;
constexpr int kDigits = (64 + kDigitBits - 1) / kDigitBits;
constexpr std::size_t kDigitSize = std::size_t{1} << kDigitBits;

struct KeyedIndex {
  std::uint64_t uKey;
  std::uint32_t uIndex;
};

// An unsigned key in the order wanted; what is not a number comes last either way.
std::uint64_t SortKey(double z, bool bAscending) {
  if (std::isnan(z)) return std::numeric_limits<std::uint64_t>::max();
  constexpr std::uint64_t kSign = std::uint64_t{1} << 63;
  const auto uBits = std::bit_cast<std::uint64_t>(z);
  const std::uint64_t uUp = (uBits & kSign) ? ~uBits : uBits | kSign;
  return bAscending ? uUp : ~uUp;
}

std::size_t Digit(std::uint64_t uKey, int iDigit) {
  return (uKey >> (iDigit * kDigitBits)) & (kDigitSize - 1);
}

// Sorts n pairs with the help of a second array of n, and returns the array that is sorted then.
KeyedIndex* RadixSort(KeyedIndex* pFrom, KeyedIndex* pTo, std::size_t n) {
  std::vector<std::array<std::uint32_t, kDigitSize>> histograms(kDigits);
  for (std::size_t i = 0; i < n; ++i) {
    for (int d = 0; d < kDigits; ++d) ++histograms[d][Digit(pFrom[i].uKey, d)];
  }
  for (int d = 0; d < kDigits; ++d) {
    auto& starts = histograms[d];
    if (starts[Digit(pFrom[0].uKey, d)] == n) continue;  // one digit throughout
    std::uint32_t uStart = 0;
    for (std::uint32_t& u : starts) uStart += std::exchange(u, uStart);
    for (std::size_t i = 0; i < n; ++i) pTo[starts[Digit(pFrom[i].uKey, d)]++] = pFrom[i];
    std::swap(pFrom, pTo);
  }
  return pFrom;
}

// The points in order, in an array of the same capacity.
std::vector<ZuScanPoint3d> Sorted(const std::vector<ZuScanPoint3d>& points, bool bAscending) {
  const std::size_t n = points.size();
  std::unique_ptr<KeyedIndex[]> spKeys(new KeyedIndex[n]), spOther(new KeyedIndex[n]);
  for (std::size_t i = 0; i < n; ++i) {
    spKeys[i] = {SortKey(points[i].z, bAscending), static_cast<std::uint32_t>(i)};
  }
  const KeyedIndex* pSorted = RadixSort(spKeys.get(), spOther.get(), n);
  if (pSorted == spKeys.get()) {
    spOther.reset();
  } else {
    spKeys.reset();
  }
  std::vector<ZuScanPoint3d> sorted;
  sorted.reserve(points.capacity());
  for (std::size_t i = 0; i < n; ++i) sorted.push_back(points[pSorted[i].uIndex]);
  return sorted;
}

}  // namespace

void ZuPointCloud::ZSort(bool bAscending) {
  if (m_aPoints.size() >= kSmallCloud &&
      m_aPoints.size() <= std::numeric_limits<std::uint32_t>::max()) {
    try {
      m_aPoints = Sorted(m_aPoints, bAscending);
      return;
    } catch (const std::bad_alloc&) {
      // No room for a second array: sort in place.
    }
  }
  std::sort(m_aPoints.begin(), m_aPoints.end(),
            [bAscending](const ZuScanPoint3d& a, const ZuScanPoint3d& b) {
              return SortKey(a.z, bAscending) < SortKey(b.z, bAscending);
            });
}
