#include "zu/foundation/detail/list_order.h"

#include <algorithm>
#include <cstddef>
#include <new>
#include <vector>

#include "zu/foundation/listnode.h"

namespace {

// Chains up to this length are left to the insertion itself, which is as fast there.
constexpr std::size_t kShort = 32;

using Nodes = std::vector<ZuBaseListnode*>;

// A stable merge sort. Where the comparison is an order, it gives what the insertion gives: a node
// stands behind another exactly if it is greater, or equal and came later. Any comparison is borne,
// since no step trusts an earlier one.
class MergeSort {
 public:
  MergeSort(Nodes& nodes, ZuNodeOrder::Compare pfnCompare)
      : m_Nodes(nodes), m_Left(nodes.size() / 2 + 1), m_pfnCompare(pfnCompare) {
    SortRange(0, nodes.size());
  }

 private:
  void SortRange(std::size_t uBegin, std::size_t uEnd) {
    constexpr std::size_t kInsertion = 12;
    if (uEnd - uBegin <= kInsertion) return InsertRange(uBegin, uEnd);
    const std::size_t uMiddle = uBegin + (uEnd - uBegin) / 2;
    SortRange(uBegin, uMiddle);
    SortRange(uMiddle, uEnd);
    if (m_pfnCompare(m_Nodes[uMiddle - 1], m_Nodes[uMiddle]) > 0) Merge(uBegin, uMiddle, uEnd);
  }

  void InsertRange(std::size_t uBegin, std::size_t uEnd) {
    for (std::size_t i = uBegin + 1; i < uEnd; ++i) {
      ZuBaseListnode* p = m_Nodes[i];
      std::size_t j = i;
      for (; j > uBegin && m_pfnCompare(m_Nodes[j - 1], p) > 0; --j) m_Nodes[j] = m_Nodes[j - 1];
      m_Nodes[j] = p;
    }
  }

  void Merge(std::size_t uBegin, std::size_t uMiddle, std::size_t uEnd) {
    ZuBaseListnode** ppLeft = m_Left.data();
    ZuBaseListnode** ppLeftEnd =
        std::copy(m_Nodes.data() + uBegin, m_Nodes.data() + uMiddle, ppLeft);
    ZuBaseListnode** ppRight = m_Nodes.data() + uMiddle;
    ZuBaseListnode** ppRightEnd = m_Nodes.data() + uEnd;
    ZuBaseListnode** ppOut = m_Nodes.data() + uBegin;
    while (ppLeft != ppLeftEnd && ppRight != ppRightEnd) {
      *ppOut++ = m_pfnCompare(*ppLeft, *ppRight) > 0 ? *ppRight++ : *ppLeft++;
    }
    std::copy(ppLeft, ppLeftEnd, ppOut);  // what is left on the right stands in its place
  }

  Nodes& m_Nodes;
  Nodes m_Left;  // the left one of two parts that are merged
  ZuNodeOrder::Compare m_pfnCompare;
};

// Whether p may stand before pOther, as both see it.
bool IsBefore(ZuNodeOrder::Compare pfnCompare, const ZuBaseListnode* p,
              const ZuBaseListnode* pOther) {
  const int iForward = pfnCompare(p, pOther);
  const int iBackward = pfnCompare(pOther, p);
  return iForward < 0 ? iBackward > 0 : iForward == 0 && iBackward == 0;
}

// Tells whether the comparison is an order on the sorted nodes, by 3 n comparisons.
//
// Records compare by their ids, which always is an order, or by the difference of 32-bit keys,
// which is one as long as no difference wraps. For those the answer is exact: let o(x) be key(x)
// minus the key of the first node, modulo 2^32. First and x see each other in this order only if
// o(x) < 2^31: beyond, the signs are the wrong way round, and at 2^31 both differences are
// negative. So all o lie in [0, 2^31), the difference of any two of them does not wrap, and it is
// what the comparison gives. Conversely, where the comparison is an order, the sorted nodes pass.
//
// An application's comparison of another kind may be no order in a way that shows only between
// nodes far apart; the neighbours are looked at for its sake.
bool IsOrder(const Nodes& nodes, ZuNodeOrder::Compare pfnCompare) {
  for (std::size_t i = 1; i < nodes.size(); ++i) {
    if (!IsBefore(pfnCompare, nodes[0], nodes[i])) return false;
    if (pfnCompare(nodes[i - 1], nodes[i]) > 0) return false;
  }
  return true;
}

}  // namespace

bool ZuNodeOrder::Sort(ZuBaseListnode** ppFirst, ZuBaseListnode** ppLast, Compare pfnCompare,
                       int* piCount) try {
  Nodes nodes;
  for (ZuBaseListnode* p = *ppFirst; p; p = p->m_pNext) nodes.push_back(p);
  if (nodes.size() <= kShort) return false;
  MergeSort(nodes, pfnCompare);
  if (!IsOrder(nodes, pfnCompare)) return false;

  const std::size_t uLast = nodes.size() - 1;
  for (std::size_t i = 0; i <= uLast; ++i) {
    nodes[i]->m_pPrev = i == 0 ? nullptr : nodes[i - 1];
    nodes[i]->m_pNext = i == uLast ? nullptr : nodes[i + 1];
  }
  *ppFirst = nodes.front();
  *ppLast = nodes.back();
  *piCount = static_cast<int>(nodes.size());
  return true;
} catch (const std::bad_alloc&) {
  return false;
}
