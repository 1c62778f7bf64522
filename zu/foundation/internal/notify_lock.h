// Events of a list held back by whoever fills it from outside.
#pragma once

namespace zu::internal {

// Holds the events of a list back for its lifetime; they are not remembered.
template <class List>
class NotifyLock {
 public:
  explicit NotifyLock(List* pList) : m_pList(pList) { pList->SetNotify(false); }
  ~NotifyLock() { m_pList->SetNotify(true); }
  NotifyLock(const NotifyLock&) = delete;
  NotifyLock& operator=(const NotifyLock&) = delete;

 private:
  List* m_pList;
};

}  // namespace zu::internal
