// Records, a list and an observer for the tests of lists.
#pragma once

#include <cstdlib>
#include <new>
#include <utility>
#include <vector>

#include "zu/foundation/list.h"

// Compared by ids.
class Record : public ZuListnode {
 public:
  using ZuListnode::ZuListnode;
  Record() { ++iAlive; }
  explicit Record(unsigned int uId, const String& strName = String()) : ZuListnode(uId, strName) {
    ++iAlive;
  }
  Record(const Record& other) : ZuListnode(other), iArrival(other.iArrival) { ++iAlive; }
  ~Record() override { --iAlive; }
  Record& operator=(const Record&) = default;

  Record* Next() const { return static_cast<Record*>(m_pNext); }
  Record* Previous() const { return static_cast<Record*>(m_pPrev); }

  static void* operator new(std::size_t uSize) { return std::malloc(uSize); }
  static void* operator new(std::size_t uSize, const std::nothrow_t&) noexcept {
    return bNoMemory ? nullptr : std::malloc(uSize);
  }
  static void operator delete(void* p) { std::free(p); }

  int iArrival = 0;
  static inline int iAlive = 0;
  static inline bool bNoMemory = false;
};

// Compared by the 32-bit difference of their keys, which are the ids.
class Keyed : public Record {
 public:
  using Record::Record;
  virtual int Compare(ZuListnode* pOther) const {
    return static_cast<int>(GetId() - pOther->GetId());
  }
};

template <class T>
class List : public TZuListHeader<T> {
 public:
  explicit List(const std::vector<unsigned int>& aIds = {}) { Append(aIds); }

  void Append(const std::vector<unsigned int>& aIds) {
    for (unsigned int uId : aIds) {
      T* p = new T(uId);
      p->iArrival = iArrival++;
      this->Add(p);
    }
  }
  int GetLock() const { return this->m_iNotifyLock; }
  int ObserverCount() const { return ZuStandardNotifier::Count(); }

  int iArrival = 0;
};

// The ids from the head. Empty if the chain from the tail differs from it.
template <class T>
std::vector<unsigned int> Ids(const TZuBaseListHeader<T>& list) {
  std::vector<unsigned int> aIds, aBackward;
  for (T* p = list.First(); p; p = list.NextOf(p)) aIds.push_back(p->GetId());
  for (T* p = list.Last(); p; p = list.PreviousOf(p)) {
    aBackward.insert(aBackward.begin(), p->GetId());
  }
  return aIds == aBackward ? aIds : std::vector<unsigned int>();
}

using Event = std::pair<eZuNotifyType, unsigned int>;  // with the id of the record, 0 for none

class Recorder : public ZuObserver {
 public:
  explicit Recorder(ZuStandardNotifier* pNotifier) : ZuObserver(pNotifier) {}
  void Notify(ZuNotifyEvent* pEvent) override {
    const auto* pRecord = static_cast<Record*>(pEvent->m_pItem);
    m_aEvents.emplace_back(pEvent->m_eType, pRecord ? pRecord->GetId() : 0);
  }
  std::vector<Event> Take() { return std::exchange(m_aEvents, {}); }
  ZuStandardNotifier* Parent() const { return m_pNotifyParent; }

 private:
  std::vector<Event> m_aEvents;
};
