#include "zu/transform/random_index.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

#include "zu/foundation/crc32.h"

namespace {

constexpr int kRandBits = 0x7FFF;     // of each number of the generator
constexpr double kRandSum = 98301.0;  // three times the largest of them
constexpr int kRedraws = 40;          // of a subset that came before
constexpr double kAlmostAll = 0.8;    // of the possible subsets

// n over k.
double Combinations(int n, int k) {
  if (k > n || k < 0) return 0.0;
  double dValue = 1.0;
  const int iSmaller = std::min(k, n - k);
  for (int i = 1; i <= iSmaller; ++i) dValue = dValue * (n - iSmaller + i) / i;
  return std::ceil(dValue + 0.5);
}

int DrawIndex(int n) {
  double dSum = 0.0;
  for (int i = 0; i < 3; ++i) dSum += std::rand() & kRandBits;
  return std::min(static_cast<int>(dSum / kRandSum * n), n - 1);
}

}  // namespace

void ZuGenerateRandomIndex::DrawOnce(int n, int k) {
  m_sDraw.clear();
  if (k >= n) {  // all of them, in whatever order they would come
    for (int i = 0; i < n; ++i) m_sDraw.insert(m_sDraw.end(), static_cast<unsigned int>(i));
    return;
  }
  while (static_cast<int>(m_sDraw.size()) < k) {
    m_sDraw.insert(static_cast<unsigned int>(DrawIndex(n)));
  }
}

bool ZuGenerateRandomIndex::IsNew(const ZuIdTable& ids) {
  std::vector<unsigned int> drawn;
  drawn.reserve(m_sDraw.size());
  for (const unsigned int i : m_sDraw) drawn.push_back(ids[static_cast<int>(i)]);
  std::sort(drawn.begin(), drawn.end());
  return m_sSeen.insert(ZuCalcCRC32(drawn.data(), drawn.size() * sizeof(unsigned int))).second;
}

const std::vector<unsigned int>& ZuGenerateRandomIndex::Draw(const ZuIdTable& ids, int k) {
  const int n = ids.Count();
  if (m_dCombinations == 0.0) m_dCombinations = Combinations(n, k);
  DrawOnce(n, k);
  for (int i = 0; !IsNew(ids) && i < kRedraws; ++i) {
    const bool bAlmostAll = m_dCombinations != 0.0 &&
                            static_cast<double>(m_sSeen.size()) > kAlmostAll * m_dCombinations;
    if (bAlmostAll) break;
    DrawOnce(n, k);
  }
  m_vIndices.assign(m_sDraw.begin(), m_sDraw.end());
  return m_vIndices;
}
