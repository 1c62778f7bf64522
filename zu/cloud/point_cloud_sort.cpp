// Sorting whole records in place. Records of 64 bytes are costly to move, so each moves once or
// twice: it goes straight to its bucket of the array, by the leading bits in which the keys differ,
// and the buckets are sorted by their next bits (American flag sort: P. McIlroy, K. Bostic,
// M. D. McIlroy, Engineering radix sort, 1993). A few records are sorted by comparing.
#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <utility>

#include "zu/cloud/point_cloud.h"

namespace {

constexpr std::size_t kFew = 32;     // records sorted by comparing
constexpr std::size_t kMany = 8192;  // records from which on a step has more buckets
constexpr int kManyBits = 11;        // 2,048 buckets, whose heads stay in the cache
constexpr int kSomeBits = 8;
constexpr int kBucketBits = 3;     // a bucket is to hold some eight records
constexpr std::size_t kAhead = 2;  // records behind a bucket's head that are fetched early

// The z of a point as an unsigned number in the order wanted; what is not a number comes last.
template <bool bAscending>
std::uint64_t Key(const ZuScanPoint3d& p) {
  constexpr std::uint64_t kSign = std::uint64_t{1} << 63;
  if (std::isnan(p.z)) return std::numeric_limits<std::uint64_t>::max();
  const auto uBits = std::bit_cast<std::uint64_t>(p.z);
  const std::uint64_t uUp = (uBits & kSign) != 0 ? ~uBits : uBits | kSign;
  return bAscending ? uUp : ~uUp;
}

// Sorts up to kFew records: their keys are, by insertion, and the records follow.
template <bool bAscending>
void SortFew(ZuScanPoint3d* p, std::size_t n) {
  std::array<std::pair<std::uint64_t, std::uint32_t>, kFew> order;
  for (std::size_t i = 0; i < n; ++i) {
    const std::uint64_t uKey = Key<bAscending>(p[i]);
    std::size_t k = i;
    for (; k > 0 && order[k - 1].first > uKey; --k) order[k] = order[k - 1];
    order[k] = {uKey, static_cast<std::uint32_t>(i)};
  }
  std::array<ZuScanPoint3d, kFew> sorted;
  for (std::size_t i = 0; i < n; ++i) sorted[i] = p[order[i].second];
  std::copy_n(sorted.begin(), n, p);
}

template <bool bAscending>
void SortStretch(ZuScanPoint3d* p, std::size_t n);

// One step: the records of a stretch go to at most 2^iMostBits buckets.
template <bool bAscending, int iMostBits>
class FlagStep {
 public:
  FlagStep(ZuScanPoint3d* p, std::size_t n) : m_p(p), m_n(n) {
    m_uLeast = m_uMost = Key<bAscending>(p[0]);
    for (std::size_t i = 1; i < n; ++i) {
      const std::uint64_t uKey = Key<bAscending>(p[i]);
      m_uLeast = std::min(m_uLeast, uKey);
      m_uMost = std::max(m_uMost, uKey);
    }
    const int iBits = std::clamp(static_cast<int>(std::bit_width(n)) - kBucketBits, 1, iMostBits);
    m_iShift = std::max(static_cast<int>(std::bit_width(m_uMost - m_uLeast)) - iBits, 0);
    m_uBuckets = static_cast<std::size_t>((m_uMost - m_uLeast) >> m_iShift) + 1;
  }

  // Each step takes the leading bits in which the keys of a stretch differ: the depth is that of
  // 64 bits in steps of some, whatever the keys are.
  void Run() {
    if (m_uBuckets == 1) return;
    Count();
    Distribute();
    if (m_iShift == 0) return;  // equal keys in each bucket
    std::size_t uBegin = 0;
    for (std::size_t b = 0; b < m_uBuckets; ++b) {
      const std::size_t uEnd = m_ends[b];
      if (uEnd - uBegin > 1) SortStretch<bAscending>(m_p + uBegin, uEnd - uBegin);
      uBegin = uEnd;
    }
  }

 private:
  std::size_t Bucket(const ZuScanPoint3d& p) const {
    return static_cast<std::size_t>((Key<bAscending>(p) - m_uLeast) >> m_iShift);
  }

  void Count() {
    m_ends.fill(0);
    for (std::size_t i = 0; i < m_n; ++i) ++m_ends[Bucket(m_p[i])];
    std::uint32_t uBegin = 0;
    for (std::size_t b = 0; b < m_uBuckets; ++b) {
      m_heads[b] = uBegin;
      uBegin += m_ends[b];
      m_ends[b] = uBegin;
    }
  }

  // Takes a record out of its place, puts it at the head of its bucket and goes on with the record
  // that stood there, until one fits the first place.
  void Distribute() {
    for (std::size_t b = 0; b < m_uBuckets; ++b) {
      while (m_heads[b] < m_ends[b]) {
        ZuScanPoint3d point = m_p[m_heads[b]];
        for (std::size_t uOwn; (uOwn = Bucket(point)) != b;) {
          ZuScanPoint3d* const pHead = m_p + m_heads[uOwn]++;
          __builtin_prefetch(pHead + kAhead, 1);
          std::swap(point, *pHead);
        }
        m_p[m_heads[b]++] = point;
      }
    }
  }

  ZuScanPoint3d* m_p;
  std::size_t m_n;
  std::uint64_t m_uLeast, m_uMost;
  int m_iShift;
  std::size_t m_uBuckets;
  // Where each bucket begins, then its next free place; where it ends.
  std::array<std::uint32_t, std::size_t{1} << iMostBits> m_heads, m_ends;
};

template <bool bAscending>
void SortStretch(ZuScanPoint3d* p, std::size_t n) {
  if (n <= kFew) {
    SortFew<bAscending>(p, n);
  } else if (n < kMany) {
    FlagStep<bAscending, kSomeBits>(p, n).Run();
  } else {
    FlagStep<bAscending, kManyBits>(p, n).Run();
  }
}

}  // namespace

void ZuPointCloud::ZSort(bool bAscending) {
  if (bAscending) {
    SortStretch<true>(m_aPoints.data(), m_aPoints.size());
  } else {
    SortStretch<false>(m_aPoints.data(), m_aPoints.size());
  }
}
