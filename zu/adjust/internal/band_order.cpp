#include "zu/adjust/internal/band_order.h"

#include <algorithm>
#include <cmath>

namespace zu::internal {

namespace {

constexpr double kDense = 10.0;  // neighbours over the root of the number of nodes
constexpr std::size_t kFew = 16;

std::size_t Index(int i) { return static_cast<std::size_t>(i); }

// Nodes reached from one, level by level, those of few neighbours first; they get the mark.
std::vector<int> Reach(const std::vector<std::vector<int>>& neighbours, int iFirst, int iMark,
                       std::vector<int>* pMarks) {
  std::vector<int> reached{iFirst};
  (*pMarks)[Index(iFirst)] = iMark;
  for (std::size_t u = 0; u < reached.size(); ++u) {
    const std::size_t uNew = reached.size();
    for (const int k : neighbours[Index(reached[u])]) {
      int& mark = (*pMarks)[Index(k)];
      if (mark < 0 || mark == iMark) continue;
      mark = iMark;
      reached.push_back(k);
    }
    std::stable_sort(
        reached.begin() + static_cast<std::ptrdiff_t>(uNew), reached.end(),
        [&](int a, int b) { return neighbours[Index(a)].size() < neighbours[Index(b)].size(); });
  }
  return reached;
}

}  // namespace

std::vector<int> BandOrder(const std::vector<std::vector<int>>& neighbours,
                           const std::vector<char>& last) {
  const std::size_t n = neighbours.size();
  const double dMost = kDense * std::sqrt(static_cast<double>(n));
  std::vector<int> marks(n, 0), order, many, end;
  for (std::size_t i = 0; i < n; ++i) {
    const bool bMany =
        neighbours[i].size() > kFew && static_cast<double>(neighbours[i].size()) > dMost;
    if (!last[i] && !bMany) continue;
    marks[i] = -1;  // not walked through
    (last[i] ? end : many).push_back(static_cast<int>(i));
  }
  int iMark = 0;
  for (std::size_t i = 0; i < n; ++i) {
    if (marks[i] != 0) continue;
    // The last node reached lies at the rim; twice is enough.
    int iFirst = static_cast<int>(i);
    std::vector<int> reached;
    for (int iRound = 0; iRound < 3; ++iRound) {
      reached = Reach(neighbours, iFirst, ++iMark, &marks);
      iFirst = reached.back();
    }
    order.insert(order.end(), reached.begin(), reached.end());
  }
  std::reverse(order.begin(), order.end());
  order.insert(order.end(), many.begin(), many.end());
  order.insert(order.end(), end.begin(), end.end());
  return order;
}

}  // namespace zu::internal
