// The id index of a list: finds its nodes by id, in constant time where the ids are spread evenly
// and in logarithmic time otherwise.
//
// A plain value that points to the list and does not own it. It shows the list as it was at the
// last Set or Rebuild: nodes that were added or subtracted since are not followed, and a deleted
// node must not be looked up. Look-ups change nothing and may run in several threads.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "zu/foundation/detail/id_entries.h"
#include "zu/foundation/list.h"

template <class T>
class ZU_API ZuSortHelper {
  using Entries = std::vector<ZuIdEntry>;

 public:
  // Builds the index of a list; with null it is detached, and empty.
  explicit ZuSortHelper(const TZuListHeader<T>* pList = nullptr) { Set(pList); }

  void Set(const TZuListHeader<T>* pList) {
    m_pList = pList;
    Rebuild();
  }

  // Takes the list as it stands now. Of equal ids the first node in the list counts.
  void Rebuild() {
    m_bSorted = false;
    m_aEntries.clear();
    if (!m_pList) return;
    for (T* p = m_pList->First(); p; p = TZuListHeader<T>::NextOf(p)) {
      m_aEntries.push_back({static_cast<const ZuObject*>(p)->GetId(), p});
    }
    ZuSortIdEntries(m_aEntries);
    m_bSorted = true;
  }

  // The node of that id; null if there is none, or when detached.
  T* Find(unsigned int uId) const;

  // True when the index was built on a list.
  bool IsSorted() const { return m_bSorted; }
  const TZuListHeader<T>* GetList() const { return m_pList; }

  // The nodes in ascending order of their ids, each id once.
  //
  //   for (ZuPoint* pPoint : helper) ...
  int Count() const { return static_cast<int>(m_aEntries.size()); }
  T* Get(int i) const { return static_cast<T*>(m_aEntries[static_cast<std::size_t>(i)].pNode); }

  class Iterator {
   public:
    explicit Iterator(const ZuIdEntry* pEntry) : m_pEntry(pEntry) {}
    T* operator*() const { return static_cast<T*>(m_pEntry->pNode); }
    Iterator& operator++() { return ++m_pEntry, *this; }
    bool operator==(const Iterator&) const = default;

   private:
    const ZuIdEntry* m_pEntry;
  };
  Iterator begin() const { return Iterator(m_aEntries.data()); }
  Iterator end() const { return Iterator(m_aEntries.data() + m_aEntries.size()); }

 protected:
  const TZuListHeader<T>* m_pList = nullptr;
  Entries m_aEntries;  // the map from id to node
  bool m_bSorted = false;
};

template <class T>
T* ZuSortHelper<T>::Find(unsigned int uId) const {
  if (m_aEntries.empty()) return nullptr;
  const ZuIdEntry* pFirst = m_aEntries.data();
  const ZuIdEntry* pLast = pFirst + m_aEntries.size() - 1;
  if (uId < pFirst->uId || uId > pLast->uId) return nullptr;

  // Ids are spread evenly more often than not: the search begins where this one would then stand,
  // and widens in steps that double.
  const std::uint64_t uReach = std::max(pLast->uId - pFirst->uId, 1u);
  const std::uint64_t uOffset = uId - pFirst->uId;
  const ZuIdEntry* pFound = pFirst + uOffset * static_cast<std::uint64_t>(pLast - pFirst) / uReach;
  if (pFound->uId < uId) {
    std::ptrdiff_t iStep = 1;
    while (iStep < pLast - pFound && pFound[iStep].uId < uId) pFound += iStep, iStep *= 2;
    pLast = pFound + std::min(iStep, pLast - pFound);
    pFirst = pFound;
  } else if (pFound->uId > uId) {
    std::ptrdiff_t iStep = 1;
    while (iStep < pFound - pFirst && pFound[-iStep].uId > uId) pFound -= iStep, iStep *= 2;
    pFirst = pFound - std::min(iStep, pFound - pFirst);
    pLast = pFound;
  } else {
    return static_cast<T*>(pFound->pNode);
  }
  pFound = std::lower_bound(pFirst, pLast, uId, [](const ZuIdEntry& entry, unsigned int uSearched) {
    return entry.uId < uSearched;
  });
  return pFound->uId == uId ? static_cast<T*>(pFound->pNode) : nullptr;
}
