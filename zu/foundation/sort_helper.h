// The id index of a list: finds its nodes by id in logarithmic time, in constant time where the ids
// run without gaps.
//
// A plain value that points to the list and does not own it. It shows the list as it was at the
// last Set or Rebuild: nodes that were added or subtracted since are not followed, and a deleted
// node must not be looked up. Look-ups change nothing and may run in several threads.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <tuple>
#include <utility>
#include <vector>

#include "zu/foundation/list.h"

template <class T>
class ZuSortHelper {
 public:
  // Builds the index of a list; with null it is detached, and empty.
  explicit ZuSortHelper(const TZuListHeader<T>* pList = nullptr) { Set(pList); }

  void Set(const TZuListHeader<T>* pList) {
    m_pList = pList;
    Rebuild();
  }

  // Takes the list as it stands now. Of equal ids the first node in the list counts.
  void Rebuild();

  // The node of that id; null if there is none, or when detached.
  T* Find(unsigned int uId) const;

  // True when the index was built on a list.
  bool IsSorted() const { return m_bSorted; }
  const TZuListHeader<T>* GetList() const { return m_pList; }

  // The nodes in ascending order of their ids, each id once.
  //
  //   for (ZuPoint* pPoint : helper) ...
  int Count() const { return static_cast<int>(m_aNodes.size()); }
  T* Get(int i) const { return m_aNodes[static_cast<std::size_t>(i)]; }
  auto begin() const { return m_aNodes.begin(); }
  auto end() const { return m_aNodes.end(); }

 protected:
  const TZuListHeader<T>* m_pList = nullptr;
  std::vector<unsigned int> m_aIds;  // ascending
  std::vector<T*> m_aNodes;          // the node of each id
  bool m_bSorted = false;

 private:
  void SortEntries();
};

template <class T>
void ZuSortHelper<T>::Rebuild() {
  m_bSorted = false;
  m_aIds.clear();
  m_aNodes.clear();
  if (!m_pList) return;
  bool bAscending = true;
  for (T* p = m_pList->First(); p; p = TZuListHeader<T>::NextOf(p)) {
    const unsigned int uId = static_cast<const ZuObject*>(p)->GetId();
    bAscending = bAscending && (m_aIds.empty() || m_aIds.back() < uId);
    m_aIds.push_back(uId);
    m_aNodes.push_back(p);
  }
  if (!bAscending) SortEntries();
  m_bSorted = true;
}

template <class T>
void ZuSortHelper<T>::SortEntries() {
  std::vector<std::pair<unsigned int, T*>> aEntries(m_aIds.size());
  for (std::size_t i = 0; i < aEntries.size(); ++i) aEntries[i] = {m_aIds[i], m_aNodes[i]};
  std::stable_sort(aEntries.begin(), aEntries.end(),
                   [](const auto& a, const auto& b) { return a.first < b.first; });
  aEntries.erase(std::unique(aEntries.begin(), aEntries.end(),
                             [](const auto& a, const auto& b) { return a.first == b.first; }),
                 aEntries.end());
  m_aIds.resize(aEntries.size());
  m_aNodes.resize(aEntries.size());
  for (std::size_t i = 0; i < aEntries.size(); ++i) {
    std::tie(m_aIds[i], m_aNodes[i]) = aEntries[i];
  }
}

template <class T>
T* ZuSortHelper<T>::Find(unsigned int uId) const {
  if (m_aIds.empty() || uId < m_aIds.front() || uId > m_aIds.back()) return nullptr;

  // Ids are spread evenly more often than not: look first where this one would then stand.
  const std::uint64_t uReach = m_aIds.back() - m_aIds.front();
  const std::uint64_t uLast = m_aIds.size() - 1;
  const std::size_t uGuess = uReach == 0 ? 0 : (uId - m_aIds.front()) * uLast / uReach;
  if (m_aIds[uGuess] == uId) return m_aNodes[uGuess];

  const auto middle = m_aIds.begin() + static_cast<std::ptrdiff_t>(uGuess);
  const auto found = *middle < uId ? std::lower_bound(middle, m_aIds.end(), uId)
                                   : std::lower_bound(m_aIds.begin(), middle, uId);
  if (found == m_aIds.end() || *found != uId) return nullptr;
  return m_aNodes[static_cast<std::size_t>(found - m_aIds.begin())];
}
