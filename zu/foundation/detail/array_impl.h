// Bodies of TZuArray; included by array.h alone.
#pragma once

#include <algorithm>
#include <utility>

#include "zu/foundation/array.h"

template <class T>
void TZuArray<T>::Init(int iSize, bool bClear) {
  const int iSlots = std::max(iSize, 0);
  m_ppItems = bClear ? new T*[iSlots]() : new T*[iSlots];
  m_iSize = iSlots;
  m_iCount = 0;
}

template <class T>
void TZuArray<T>::Reallocate(int iSize) {
  const int iSlots = std::max(iSize, 0);
  T** ppItems = new T*[iSlots];
  m_iCount = std::min(m_iCount, iSlots);
  std::copy(m_ppItems, m_ppItems + m_iCount, ppItems);
  std::fill(ppItems + m_iCount, ppItems + iSlots, nullptr);
  delete[] m_ppItems;
  m_ppItems = ppItems;
  m_iSize = iSlots;
}

template <class T>
void TZuArray<T>::Grow() {
  if (!m_ppItems) return Reallocate(std::max(m_iSize, 1));
  if (m_iCount < m_iSize) return;
  if (m_iCount == INT_MAX) throw std::length_error("TZuArray: too many elements");
  Reallocate(m_iCount > INT_MAX / 2 ? INT_MAX : std::max(2 * m_iCount, 1));
}

template <class T>
T* TZuArray<T>::Add(const T& value) {
  return Insert(value, m_iCount);
}

template <class T>
T* TZuArray<T>::Insert(const T& value, int i) {
  Grow();
  T* pItem = new (std::nothrow) T(value);
  std::copy_backward(m_ppItems + i, m_ppItems + m_iCount, m_ppItems + m_iCount + 1);
  m_ppItems[i] = pItem;
  ++m_iCount;
  return pItem;
}

template <class T>
void TZuArray<T>::Remove(int i) {
  delete m_ppItems[i];
  std::copy(m_ppItems + i + 1, m_ppItems + m_iCount, m_ppItems + i);
  m_ppItems[--m_iCount] = nullptr;
}

template <class T>
void TZuArray<T>::FreeElements() {
  while (m_iCount > 0) {
    --m_iCount;
    delete std::exchange(m_ppItems[m_iCount], nullptr);
  }
}

template <class T>
void TZuArray<T>::AppendCopies(const TZuArray& other) {
  if (!m_ppItems && other.m_iCount > 0) Reallocate(m_iSize);
  for (int i = 0; i < other.m_iCount; ++i) {
    const T* pItem = other.m_ppItems[i];
    m_ppItems[m_iCount] = pItem ? new (std::nothrow) T(*pItem) : nullptr;
    ++m_iCount;
  }
}

template <class T>
TZuArray<T>& TZuArray<T>::operator=(const TZuArray& other) {
  if (this == &other) return *this;
  FreeElements();
  if (m_iSize != other.m_iSize) Reallocate(other.m_iSize);
  AppendCopies(other);
  return *this;
}

template <class T>
int TZuArray<T>::operator==(const TZuArray& other) const {
  if (m_iCount != other.m_iCount) return 0;
  for (int i = 0; i < m_iCount; ++i) {
    const T* pLeft = m_ppItems[i];
    const T* pRight = other.m_ppItems[i];
    if (pLeft && pRight ? !(*pLeft == *pRight) : pLeft != pRight) return 0;
  }
  return 1;
}

template <class T>
int TZuArray<T>::Search(const T& value, int iFrom, int iTo) const {
  const int iEnd = iTo == -1 ? m_iCount : std::min(iTo, m_iCount);
  for (int i = std::max(iFrom, 0); i < iEnd; ++i) {
    if (m_ppItems[i] && *m_ppItems[i] == value) return i;
  }
  return -1;
}

template <class T>
int TZuArray<T>::BinSearch(const T& value, bool bDescending) const {
  int iLow = 0;
  int iHigh = m_iCount - 1;
  while (iLow <= iHigh) {
    const int iMiddle = iLow + (iHigh - iLow) / 2;
    const T* pItem = m_ppItems[iMiddle];
    if (pItem && *pItem == value) return iMiddle;
    if (Less(pItem, &value) != bDescending) {
      iLow = iMiddle + 1;
    } else {
      iHigh = iMiddle - 1;
    }
  }
  return -1;
}

template <class T>
void TZuArray<T>::SwapItems(int i, int j) {
  std::swap(m_ppItems[i], m_ppItems[j]);
}

// A selection sort: the largest element of the range, the last one among equals, goes to its end,
// which then steps down.
template <class T>
void TZuArray<T>::InsertSort(int iLow, int iHigh) {
  for (; iHigh > iLow; --iHigh) {
    int iMax = iLow;
    for (int i = iLow + 1; i <= iHigh; ++i) {
      if (!Less(m_ppItems[i], m_ppItems[iMax])) iMax = i;
    }
    SwapItems(iMax, iHigh);
  }
}

template <class T>
void TZuArray<T>::HeapSort(int iLow, int iHigh) {
  std::make_heap(m_ppItems + iLow, m_ppItems + iHigh + 1, &Less);
  std::sort_heap(m_ppItems + iLow, m_ppItems + iHigh + 1, &Less);
}

// Splits [iLow, iHigh] about its middle element, which goes to the place that is returned. Before
// it nothing is greater; from *piUpper on nothing is less; what lies between equals it.
template <class T>
int TZuArray<T>::Partition(int iLow, int iHigh, int* piUpper) {
  SwapItems(iLow + (iHigh - iLow + 1) / 2, iLow);
  const T* pPivot = m_ppItems[iLow];
  int iUp = iLow;
  int iDown = iHigh + 1;
  for (;;) {
    do ++iUp;
    while (iUp <= iHigh && !Less(pPivot, m_ppItems[iUp]));
    do --iDown;
    while (iDown > iLow && !Less(m_ppItems[iDown], pPivot));
    if (iDown < iUp) break;
    SwapItems(iUp, iDown);
  }
  SwapItems(iLow, iDown);
  *piUpper = iUp;
  return iDown;
}

template <class T>
void TZuArray<T>::QuickSort(int iLow, int iHigh) {
  constexpr int kSelection = 8;  // ranges up to this length go to the selection sort
  constexpr int kBounds = 2 * sizeof(int) * CHAR_BIT;  // the longer part waits, so they halve
  if (iHigh - iLow < 2) return;

  // The middle element is a poor pivot in some orders (one that rises and falls again). What is
  // left when the partitions have cost far more than n log n goes to the heap sort.
  long long lBudget = 128LL * (iHigh - iLow + 1);
  int aiBounds[kBounds];
  int iTop = 0;
  for (;;) {
    while (iHigh - iLow + 1 > kSelection) {
      lBudget -= iHigh - iLow + 1;
      if (lBudget < 0) break;
      int iUpper = 0;
      const int iPivot = Partition(iLow, iHigh, &iUpper);
      const bool bLowerIsLonger = iPivot - iLow > iHigh - iUpper + 1;
      aiBounds[iTop++] = bLowerIsLonger ? iLow : iUpper;
      aiBounds[iTop++] = bLowerIsLonger ? iPivot - 1 : iHigh;
      if (bLowerIsLonger) {
        iLow = iUpper;
      } else {
        iHigh = iPivot - 1;
      }
    }
    if (iHigh - iLow + 1 > kSelection) {
      HeapSort(iLow, iHigh);
    } else {
      InsertSort(iLow, iHigh);
    }
    if (iTop == 0) return;
    iHigh = aiBounds[--iTop];
    iLow = aiBounds[--iTop];
  }
}
