// Growable array of small values: ids, id pairs, observer pointers, format columns.
//
// Every element has an allocation of its own, so that its address stays while the array grows.
// Capacity starts at 256 unless told otherwise and doubles; memory is given back by the destructor.
// Indices count from 0 and are not checked unless said so.
#pragma once

#include <climits>
#include <cstddef>
#include <new>
#include <stdexcept>

#include "zu/export.h"

template <class T>
class ZU_API TZuArray {
 public:
  static constexpr int kDefaultSize = 256;

  TZuArray() : TZuArray(kDefaultSize) {}
  explicit TZuArray(int iSize) { Init(iSize, true); }
  // The slots are made at the first element: for an array that mostly stays empty.
  TZuArray(int iSize, std::nullptr_t) : m_iSize(iSize) {}
  TZuArray(const TZuArray& other) : m_iSize(other.m_iSize) {
    if (other.m_ppItems) Init(m_iSize, true);
    AppendCopies(other);
  }
  virtual ~TZuArray() {
    FreeElements();
    delete[] m_ppItems;
  }

  // Takes the elements and the capacity of the source.
  TZuArray& operator=(const TZuArray& other);

  // 1: equal counts and equal elements in order; otherwise 0.
  int operator==(const TZuArray& other) const;
  int operator!=(const TZuArray& other) const { return !(*this == other); }

  int Count() const { return m_iCount; }
  int Size() const { return m_iSize; }  // capacity
  T& operator[](int i) { return *m_ppItems[i]; }
  const T& operator[](int i) const { return *m_ppItems[i]; }

  // The element's place, also null: index outside [0, Count()), or no memory when it was added.
  T* Item(int i) { return i >= 0 && i < m_iCount ? m_ppItems[i] : nullptr; }
  const T* Item(int i) const { return i >= 0 && i < m_iCount ? m_ppItems[i] : nullptr; }

  // Appends a copy, or inserts it at i in [0, Count()], and returns it.
  //
  // Required: an element for which there is no memory is stored as null and counted, so that
  // parallel arrays stay in step. Item tells; such elements take no part in searches.
  T* Add(const T& value);
  T* Insert(const T& value, int i);

  // Deletes the element at i; those behind it move up. The vacated last slot holds null.
  void Remove(int i);

  // Deletes all elements; the capacity stays.
  void Clear() { FreeElements(); }

  // Index of the first element equal to value in [iFrom, iTo), or -1; iTo of -1 means the count.
  int Search(const T& value, int iFrom = 0, int iTo = -1) const;

  // Index of an element equal to value in an array that ascends or descends, or -1. Of several
  // equal elements any may be found.
  int BinSearchUp(const T& value) const { return BinSearch(value, false); }
  int BinSearchDown(const T& value) const { return BinSearch(value, true); }

  // Puts the elements in ascending order.
  //
  // Required: an array of exactly two elements stays as it is: callers count on the order in which
  // they entered the two.
  void Sort() { QuickSort(0, m_iCount - 1); }

 protected:
  // Starts with no elements and iSize slots, null if bClear. Nothing is freed.
  void Init(int iSize, bool bClear);

  // Changes the number of slots. Elements beyond it leave the array undeleted: they are the
  // caller's.
  void Reallocate(int iSize);

  void QuickSort(int iLow, int iHigh);
  void InsertSort(int iLow, int iHigh);

  T** m_ppItems = nullptr;  // slots; null from m_iCount on. None at all: not made yet
  int m_iCount = 0;         // elements in use
  int m_iSize = 0;          // number of slots

 private:
  void Grow();
  void FreeElements();
  void AppendCopies(const TZuArray& other);
  int BinSearch(const T& value, bool bDescending) const;
  int Partition(int iLow, int iHigh, int* piUpper);
  void HeapSort(int iLow, int iHigh);
  void SwapItems(int i, int j);

  // Null, an element without memory, stands before all others.
  static bool Less(const T* a, const T* b) { return b && (!a || *a < *b); }
};

#include "zu/foundation/detail/array_impl.h"

extern template class TZuArray<unsigned int>;
