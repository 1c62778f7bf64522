// Bodies of the lists; included by list.h alone.
#pragma once

#include <algorithm>
#include <climits>
#include <new>
#include <vector>

#include "zu/foundation/list.h"

template <class T>
TZuBaseListHeader<T>::TZuBaseListHeader(const TZuBaseListHeader& other) {
  if (other.CopyTo(this) == other.Count()) return;
  DeleteNodes();
  throw std::bad_alloc();
}

template <class T>
inline void TZuBaseListHeader<T>::LinkLast(T* p) {
  Links(p).m_pPrev = m_pLast;
  Links(p).m_pNext = nullptr;
  if (m_pLast) {
    Links(m_pLast).m_pNext = p;
  } else {
    m_pFirst = p;
  }
  m_pLast = p;
}

template <class T>
void TZuBaseListHeader<T>::LinkBefore(T* pBefore, T* p) {
  T* pPrevious = pBefore ? PreviousOf(pBefore) : m_pLast;
  Links(p).m_pPrev = pPrevious;
  Links(p).m_pNext = pBefore;
  if (pBefore) {
    Links(pBefore).m_pPrev = p;
  } else {
    m_pLast = p;
  }
  if (pPrevious) Links(pPrevious).m_pNext = p;
  if (pBefore == m_pFirst) m_pFirst = p;
}

template <class T>
void TZuBaseListHeader<T>::Unlink(T* p) {
  T* pPrevious = PreviousOf(p);
  T* pNext = NextOf(p);
  if (pPrevious) Links(pPrevious).m_pNext = pNext;
  if (pNext) Links(pNext).m_pPrev = pPrevious;
  if (m_pFirst == p) m_pFirst = pNext;
  if (m_pLast == p) m_pLast = pPrevious;
  Links(p).m_pPrev = nullptr;
  Links(p).m_pNext = nullptr;
}

template <class T>
void TZuBaseListHeader<T>::DeleteNodes() {
  while (T* p = m_pFirst) {
    m_pFirst = NextOf(p);
    if (m_pFirst) {
      Links(m_pFirst).m_pPrev = nullptr;
    } else {
      m_pLast = nullptr;
    }
    Links(p).m_pNext = nullptr;
    delete p;
  }
}

template <class T>
void TZuBaseListHeader<T>::SetNotify(bool bNotify) {
  if (!bNotify) {
    ++m_iNotifyLock;
  } else if (m_iNotifyLock != 0) {
    --m_iNotifyLock;
  }
}

template <class T>
TZuBaseListHeader<T>& TZuBaseListHeader<T>::operator=(const TZuBaseListHeader& other) {
  if (this == &other) return *this;
  {
    NotifyLock lock(this);
    Destroy();
    if (other.CopyTo(this) != other.Count()) throw std::bad_alloc();
  }
  NotifyMultiAdd();
  return *this;
}

template <class T>
TZuBaseListHeader<T>& TZuBaseListHeader<T>::operator+=(const TZuBaseListHeader& other) {
  other.CopyTo(this);
  return *this;
}

template <class T>
T* TZuBaseListHeader<T>::CopyOf(const T& x) {
  try {
    return new (std::nothrow) T(x);
  } catch (const std::bad_alloc&) {
    return nullptr;  // of its name, or of what else the record holds
  }
}

template <class T>
T* TZuBaseListHeader<T>::Get(int i) const {
  if (i < 0) return nullptr;
  T* p = m_pFirst;
  while (p && i-- > 0) p = NextOf(p);
  return p;
}

template <class T>
T* TZuBaseListHeader<T>::Add(T* p) {
  if (!p) return nullptr;
  LinkLast(p);
  NotifyAdd(p);
  return p;
}

template <class T>
T* TZuBaseListHeader<T>::Insert(T* pBefore, T* p) {
  if (!p || !pBefore || !m_pFirst) return Add(p);
  LinkBefore(pBefore, p);
  NotifyAdd(p);
  return p;
}

template <class T>
T* TZuBaseListHeader<T>::SortedInsert(T* p) {
  if (!p) return nullptr;
  for (T* pNode = m_pFirst; pNode; pNode = NextOf(pNode)) {
    if (CompareNodes(pNode, p) > 0) return Insert(pNode, p);
  }
  return Add(p);
}

template <class T>
T* TZuBaseListHeader<T>::Subtract(T* p) {
  if (p) Unlink(p);
  NotifySubtract(p);
  return p;
}

template <class T>
int TZuBaseListHeader<T>::SortChain(ZuNodeOrder::Compare pfnCompare) {
  ZuBaseListnode* pFirst = m_pFirst;
  ZuBaseListnode* pLast = m_pLast;
  int iCount = 0;
  if (ZuNodeOrder::Sort(&pFirst, &pLast, pfnCompare, &iCount)) {
    m_pFirst = Typed(pFirst);
    m_pLast = Typed(pLast);
    return iCount;
  }
  // What stands before p is the list into which the nodes were placed so far.
  iCount = 0;
  for (T *p = m_pFirst, *pNext = nullptr; p; p = pNext, ++iCount) {
    pNext = NextOf(p);
    T* pBefore = m_pFirst;
    while (pBefore != p && pfnCompare(pBefore, p) <= 0) pBefore = NextOf(pBefore);
    if (pBefore == p) continue;
    Unlink(p);
    LinkBefore(pBefore, p);
  }
  return iCount;
}

template <class T>
int TZuBaseListHeader<T>::Sort() {
  int iCount = 0;
  {
    NotifyLock lock(this);
    iCount = SortChain(&CompareLinks);
    NotifyMultiAdd();
  }
  NotifySort();
  return iCount;
}

template <class T>
void TZuBaseListHeader<T>::MoveTo(TZuBaseListHeader* pDest) {
  if (!pDest || pDest == this || !m_pFirst) return;
  Links(m_pFirst).m_pPrev = pDest->m_pLast;
  if (pDest->m_pLast) {
    Links(pDest->m_pLast).m_pNext = m_pFirst;
  } else {
    pDest->m_pFirst = m_pFirst;
  }
  pDest->m_pLast = m_pLast;
  m_pFirst = nullptr;
  m_pLast = nullptr;
  pDest->NotifyMultiAdd();
  NotifyChanged(nullptr, nullptr);
}

template <class T>
void TZuBaseListHeader<T>::Swap(TZuBaseListHeader* pOther) {
  if (!pOther) return;
  TZuBaseListHeader<T> local;
  MoveTo(&local);
  pOther->MoveTo(this);
  local.MoveTo(pOther);
}

template <class T>
int TZuBaseListHeader<T>::CopyTo(TZuBaseListHeader* pDest) const {
  if (!pDest || !m_pFirst) return 0;
  int iCount = 0;
  {
    NotifyLock lock(pDest);
    const T* pEnd = m_pLast;
    for (const T* p = m_pFirst; p; p = p == pEnd ? nullptr : NextOf(p)) {
      if (pDest->Add(CopyOf(*p))) ++iCount;
    }
  }
  pDest->NotifyMultiAdd();
  return iCount;
}

template <class T>
void TZuBaseListHeader<T>::Destroy() {
  {
    NotifyLock lock(this);
    while (T* p = m_pFirst) delete Subtract(p);
  }
  NotifyChanged(nullptr, nullptr);
}

template <class T>
void TZuBaseListHeader<T>::SubtractAll() {
  {
    NotifyLock lock(this);
    while (m_pFirst) Subtract(m_pFirst);
  }
  NotifyChanged(nullptr, nullptr);
}

template <class T>
int TZuBaseListHeader<T>::Count() const {
  int iCount = 0;
  for (const T* p = m_pFirst; p; p = NextOf(p)) ++iCount;
  return iCount;
}

template <class T>
bool TZuBaseListHeader<T>::CountMoreThan(int iCount) const {
  if (iCount < 0) return true;
  const T* p = m_pFirst;
  while (p && iCount-- > 0) p = NextOf(p);
  return p != nullptr;
}

template <class T>
T* TZuBaseListHeader<T>::Find(const T& x) const {
  T* p = m_pFirst;
  while (p && CompareNodes(p, &x) == 0) p = NextOf(p);
  return p;
}

template <class T>
bool TZuBaseListHeader<T>::IsPtrInList(const void* pSearched) const {
  const T* p = m_pFirst;
  while (p && p != pSearched) p = NextOf(p);
  return p != nullptr;
}

template <class T>
TZuListHeader<T>::~TZuListHeader() {
  // No derived list is left that could have a Subtract of its own, as Destroy would call.
  this->DeleteNodes();
  NotifyChanged(nullptr, nullptr);
  NotifyDestroyed();
  RemoveAllObservers();
}

template <class T>
TZuListHeader<T>& TZuListHeader<T>::operator=(const TZuListHeader& other) {
  if (this == &other) return *this;
  Base::operator=(other);
  ZuStandardNotifier::operator=(other);
  return *this;
}

template <class T>
TZuListHeader<T>& TZuListHeader<T>::operator=(const Base& other) {
  const auto* pNotifier = dynamic_cast<const TZuListHeader*>(&other);
  if (pNotifier) return *this = *pNotifier;
  Base::operator=(other);
  return *this;
}

template <class T>
T* TZuListHeader<T>::Add(const T& x) {
  return Add(this->CopyOf(x));
}

template <class T>
T* TZuListHeader<T>::Move(T* p, TZuListHeader& dest) {
  if (!p) return nullptr;
  T* pNext = this->NextOf(p);
  dest.Add(Subtract(p));
  return pNext;
}

// Puts p in the place of pOld, which is deleted.
template <class T>
T* TZuListHeader<T>::ReplaceNode(T* pOld, T* p) {
  Insert(pOld, p);
  delete Subtract(pOld);
  return p;
}

template <class T>
T* TZuListHeader<T>::Replace(T* p) {
  T* pOld = p ? Find(Object(p).GetId()) : nullptr;
  if (!pOld) return Add(p);
  if (pOld == p) return p;
  {
    typename Base::NotifyLock lock(this);
    ReplaceNode(pOld, p);
  }
  NotifySubtract(nullptr);
  NotifyAdd(p);
  return p;
}

template <class T>
T* TZuListHeader<T>::SortedReplace(T* p) {
  T* pOld = p ? Find(Object(p).GetId()) : nullptr;
  if (!pOld) return this->SortedInsert(p);
  return pOld == p ? p : ReplaceNode(pOld, p);
}

template <class T>
T* TZuListHeader<T>::Replace(const T& x) {
  return Replace(this->CopyOf(x));
}

template <class T>
T* TZuListHeader<T>::SortedReplace(const T& x) {
  return SortedReplace(this->CopyOf(x));
}

template <class T>
T* TZuListHeader<T>::Find(const String& strName, bool bCaseSensitive) const {
  for (T* p = this->m_pFirst; p; p = this->NextOf(p)) {
    const String& strNode = Object(p).GetName();
    if ((bCaseSensitive ? compare(strNode, strName) : fcompare(strNode, strName)) == 0) return p;
  }
  return nullptr;
}

template <class T>
T* TZuListHeader<T>::Find(unsigned int uId) const {
  T* p = this->m_pFirst;
  while (p && Object(p).GetId() != uId) p = this->NextOf(p);
  return p;
}

template <class T>
unsigned int TZuListHeader<T>::GetFreeId(unsigned int uHint) const {
  if (uHint != 0) return Find(uHint) ? FreeIdFrom(uHint) : uHint;
  unsigned int uLargest = 0;
  for (const T* p = this->m_pFirst; p; p = this->NextOf(p)) {
    uLargest = std::max(uLargest, Object(p).GetId());
  }
  return uLargest != UINT_MAX ? uLargest + 1 : FreeIdFrom(1);
}

template <class T>
unsigned int TZuListHeader<T>::FreeIdFrom(unsigned int uFirst) const {
  // n nodes leave one of the n + 1 ids from the first on free.
  std::vector<bool> aTaken(static_cast<std::size_t>(Count()) + 1);
  for (const T* p = this->m_pFirst; p; p = this->NextOf(p)) {
    const unsigned int uId = Object(p).GetId();
    if (uId >= uFirst && uId - uFirst < aTaken.size()) aTaken[uId - uFirst] = true;
  }
  unsigned int uFree = 0;
  while (aTaken[uFree]) ++uFree;
  return uFree <= UINT_MAX - uFirst ? uFirst + uFree : FreeIdFrom(1);
}

template <class T>
int TZuListHeader<T>::Renumber(unsigned int uStart, T* pFrom, unsigned int uStep) {
  int iCount = 0;
  for (T* p = pFrom ? pFrom : this->m_pFirst; p; p = this->NextOf(p)) {
    Object(p).SetId(uStart);
    uStart += uStep;
    ++iCount;
  }
  return iCount;
}

template <class T>
void TZuListHeader<T>::Dump() {
  for (T* p = this->m_pFirst; p; p = this->NextOf(p)) Object(p).Dump();
}

template <class T>
int TZuListHeader<T>::CompareIds(const ZuBaseListnode* p, const ZuBaseListnode* pOther) {
  const unsigned int uId = Object(static_cast<const T*>(p)).GetId();
  const unsigned int uOther = Object(static_cast<const T*>(pOther)).GetId();
  return uId < uOther ? -1 : uId > uOther;
}

template <class T>
bool TZuListHeader<T>::SortById() {
  {
    typename Base::NotifyLock lock(this);
    this->SortChain(&CompareIds);
    for (T *p = this->m_pFirst, *pNext = nullptr; p; p = pNext) {
      for (pNext = this->NextOf(p); pNext && Object(pNext).GetId() == Object(p).GetId();) {
        T* pDropped = pNext;
        pNext = this->NextOf(pNext);
        this->Unlink(pDropped);
      }
    }
  }
  NotifyChanged(nullptr, nullptr);
  return true;
}

template <class T>
void TZuListHeader<T>::SendAlways(eZuNotifyType eType, T* p, ZuObserver* pExcept) {
  ZuNotifyEvent event;
  event.m_eType = eType;
  event.m_pSource = this;
  event.m_pItem = p;
  NotifyObservers(&event, pExcept);
}
