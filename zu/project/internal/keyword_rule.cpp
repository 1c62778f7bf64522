#include "zu/project/internal/keyword_rule.h"

#include <algorithm>
#include <cstring>

namespace zu::internal {

namespace {

constexpr size_t kLongestCompared = 40;

// Letters to exchange, add or drop, and neighbours to swap, until one word is the other; case apart
// (F. J. Damerau: A technique for computer detection and correction of spelling errors, 1964).
size_t Distance(std::string_view a, std::string_view b) {
  const auto same = [](char x, char y) { return (x | 0x20) == (y | 0x20); };
  std::vector<size_t> before(b.size() + 1), last(b.size() + 1), row(b.size() + 1);
  for (size_t j = 0; j <= b.size(); ++j) last[j] = j;
  for (size_t i = 1; i <= a.size(); ++i) {
    row[0] = i;
    for (size_t j = 1; j <= b.size(); ++j) {
      const size_t uExchange = last[j - 1] + (same(a[i - 1], b[j - 1]) ? 0 : 1);
      row[j] = std::min({last[j] + 1, row[j - 1] + 1, uExchange});
      if (i > 1 && j > 1 && same(a[i - 1], b[j - 2]) && same(a[i - 2], b[j - 1])) {
        row[j] = std::min(row[j], before[j - 2] + 1);
      }
    }
    before = last;
    last = row;
  }
  return last[b.size()];
}

}  // namespace

const KeywordRule* FindRule(const KeywordRule* pRules, std::string_view keyword) {
  for (; pRules->szKeyword != nullptr; ++pRules) {
    if (keyword == pRules->szKeyword) return pRules;
  }
  return nullptr;
}

const KeywordRule* UnnamedRule(const KeywordRule* pRules, std::size_t uBefore) {
  const KeywordRule* pRule = FindRule(pRules, "");
  if (pRule == nullptr) return nullptr;
  for (; uBefore > 0 && FindRule(pRule + 1, "") == pRule + 1; --uBefore) ++pRule;
  return pRule;
}

const KeywordRule* NearestRule(const KeywordRule* pRules, const ZuKeywordBlock& block,
                               std::string_view written) {
  const KeywordRule* pNearest = nullptr;
  size_t uLeast = written.size() < 5 ? 2 : 3;
  if (written.size() > kLongestCompared) return nullptr;
  for (; pRules->szKeyword != nullptr; ++pRules) {
    const size_t uDistance = Distance(written, pRules->szKeyword);
    const size_t uLength = std::max(written.size(), std::strlen(pRules->szKeyword));
    if (uDistance >= uLeast || uDistance >= uLength) continue;
    if (pRules->szValues != nullptr && block.Has(pRules->szKeyword)) continue;
    uLeast = uDistance;
    pNearest = pRules;
  }
  return pNearest;
}

}  // namespace zu::internal
