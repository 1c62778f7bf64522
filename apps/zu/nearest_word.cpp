#include "nearest_word.h"

#include <algorithm>
#include <cstdlib>

namespace cli {
namespace {

constexpr size_t kMostChanges = 2;

// Optimal string alignment (F. J. Damerau: A technique for computer detection and correction of
// spelling errors, 1964).
size_t Changes(const std::string& a, const std::string& b) {
  std::vector<std::vector<size_t>> rows(a.size() + 1, std::vector<size_t>(b.size() + 1));
  for (size_t i = 0; i <= a.size(); ++i) {
    for (size_t k = 0; k <= b.size(); ++k) {
      if (i == 0 || k == 0) {
        rows[i][k] = i + k;
        continue;
      }
      const size_t uSame = rows[i - 1][k - 1] + (a[i - 1] == b[k - 1] ? 0 : 1);
      rows[i][k] = std::min({rows[i - 1][k] + 1, rows[i][k - 1] + 1, uSame});
      if (i > 1 && k > 1 && a[i - 1] == b[k - 2] && a[i - 2] == b[k - 1]) {
        rows[i][k] = std::min(rows[i][k], rows[i - 2][k - 2] + 1);
      }
    }
  }
  return rows[a.size()][b.size()];
}

}  // namespace

std::string NearestWord(const std::string& strText, const std::vector<std::string>& words) {
  constexpr size_t kLongest = 60;  // of a text that is looked at
  size_t uFewest = kMostChanges + 1;
  std::string strNearest;
  for (const std::string& strWord : words) {
    if (strText.size() > kLongest || strWord.size() > kLongest) continue;
    const size_t uChanges = Changes(strText, strWord);
    if (uChanges > uFewest || 2 * uChanges >= strWord.size()) continue;
    strNearest = uChanges < uFewest ? strWord : "";
    uFewest = uChanges;
  }
  return uFewest <= kMostChanges ? strNearest : "";
}

}  // namespace cli
