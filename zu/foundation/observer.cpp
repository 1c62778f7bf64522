#include "zu/foundation/observer.h"

#include <algorithm>
#include <iterator>

ZuStandardNotifier::ZuStandardNotifier(const ZuStandardNotifier& other)
    : TZuArray<ZuObserver*>(other) {
  EnterTables();
}

ZuStandardNotifier::~ZuStandardNotifier() { RemoveAllObservers(); }

ZuStandardNotifier& ZuStandardNotifier::operator=(const ZuStandardNotifier& other) {
  if (this == &other) return *this;
  for (int i = 0; i < m_iCount; ++i) {
    if (m_ppItems[i]) (*m_ppItems[i])->LeaveTable(this);
  }
  TZuArray<ZuObserver*>::operator=(other);
  EnterTables();
  return *this;
}

// Makes this table known to the observers that were copied into it. Those that it can't be made
// known to leave it again.
void ZuStandardNotifier::EnterTables() {
  int i = 0;
  try {
    for (; i < m_iCount; ++i) {
      if (m_ppItems[i]) (*m_ppItems[i])->m_aTables.push_back(this);
    }
  } catch (...) {
    while (m_iCount > i) Remove(m_iCount - 1);
    throw;
  }
}

bool ZuStandardNotifier::AddObserver(ZuObserver* pObserver) {
  if (!pObserver || pObserver->m_pNotifyParent) return false;
  pObserver->m_aTables.reserve(pObserver->m_aTables.size() + 1);
  if (!Add(pObserver)) {
    Remove(m_iCount - 1);
    return false;
  }
  pObserver->m_aTables.push_back(this);
  pObserver->m_pNotifyParent = this;
  return true;
}

bool ZuStandardNotifier::RemoveObserver(ZuObserver* pObserver) {
  const int i = Search(pObserver);
  if (i < 0) return false;
  pObserver->m_pNotifyParent = nullptr;
  pObserver->LeaveTable(this);
  Remove(i);
  return true;
}

void ZuStandardNotifier::RemoveAllObservers() {
  while (m_iCount > 0) {
    if (!m_ppItems[0]) {
      Remove(0);
    } else {
      RemoveObserver(*m_ppItems[0]);
    }
  }
}

int ZuStandardNotifier::NotifyObservers(ZuNotifyEvent* pEvent, ZuObserver* pExcept) {
  const int iCount = m_iCount;
  // The table may shrink under the loop: the slots behind its end hold null.
  for (int i = 0; i < iCount && i < m_iSize; ++i) {
    if (m_ppItems[i] && *m_ppItems[i] != pExcept) (*m_ppItems[i])->Notify(pEvent);
  }
  return iCount;
}

ZuObserver& ZuObserver::operator=(const ZuObserver& other) {
  m_Link = other.m_Link;
  m_pNotifyParent = other.m_pNotifyParent;
  return *this;
}

ZuObserver::~ZuObserver() {
  while (!m_aTables.empty()) {
    ZuStandardNotifier* pNotifier = m_aTables.back();
    if (!pNotifier->RemoveObserver(this)) LeaveTable(pNotifier);
  }
}

void ZuObserver::Notify(ZuNotifyEvent* pEvent) {
  if (m_Link.IsSet()) m_Link.Call(pEvent);
}

void ZuObserver::SetNotifyParent(ZuStandardNotifier* pNotifier) {
  if (pNotifier) pNotifier->AddObserver(this);
}

void ZuObserver::RemoveFromNotifyParent() {
  // A copy names a parent on whose table it does not stand, and which may be gone.
  if (StandsOn(m_pNotifyParent)) m_pNotifyParent->RemoveObserver(this);
}

void ZuObserver::ChangeNotifyParent(ZuStandardNotifier* pNotifier) {
  RemoveFromNotifyParent();
  SetNotifyParent(pNotifier);
}

bool ZuObserver::StandsOn(const ZuStandardNotifier* pNotifier) const {
  return std::find(m_aTables.begin(), m_aTables.end(), pNotifier) != m_aTables.end();
}

void ZuObserver::LeaveTable(const ZuStandardNotifier* pNotifier) {
  // The table entered last is the first to be left as a rule.
  const auto found = std::find(m_aTables.rbegin(), m_aTables.rend(), pNotifier);
  if (found != m_aTables.rend()) m_aTables.erase(std::next(found).base());
}
