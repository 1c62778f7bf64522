// The columns of a table of points: which there are, in which order, and in which units they are
// kept and shown. One such table drives coordinate files and the rows of points in keyword files.
#pragma once

#include <iosfwd>
#include <new>

#include "zu/export.h"
#include "zu/foundation/array.h"
#include "zu/points/units.h"

// Column ids. The values stand in the tables of applications: append, never renumber. An array of
// them ends with 0. docs/files/coordinate_file.md tells what each column reads and writes.
enum eZuPointRWMask : int {
  eZuPointRWEnd = 0,
  eZuPointRWId = 1,
  eZuPointRWName = 2,
  eZuPointRWIdName = 3,  // Id, or a name from which an Id is made
  eZuPointRWFlag = 4,
  eZuPointRWCode = 5,     // control code by its digits, as 12 for X and Y
  eZuPointRWCodeNum = 6,  // control code as a number
  eZuPointRWPP = 7,
  eZuPointRWPhoto = 8,
  eZuPointRWCamera = 9,
  eZuPointRWX = 10,
  eZuPointRWY = 11,
  eZuPointRWZ = 12,
  eZuPointRWDX = 13,  // accuracies
  eZuPointRWDY = 14,
  eZuPointRWDZ = 15,
  eZuPointRWDS = 16,  // root of the sum of the squared accuracies; written only
  eZuPointRWRedu1 = 17,
  eZuPointRWRedu2 = 18,
  eZuPointRWRedu3 = 19,
  eZuPointRWColor = 20,
  eZuPointRWNImo = 24,  // number of image measurements
  eZuPointRWVX = 25,    // direction
  eZuPointRWVY = 26,
  eZuPointRWVZ = 27,
  eZuPointRWBlank = 28,
  eZuPointRWResidualX = 29,  // the fields of Redu1 to Redu3 under another title
  eZuPointRWResidualY = 30,
  eZuPointRWResidualZ = 31,
  eZuPointRWSkip = 32,
  eZuPointRWSX = 105,  // the fields of DX to DZ under another title
  eZuPointRWSY = 106,
  eZuPointRWSZ = 107,
};

// The unit a column is kept in and the unit it is shown in.
struct ZuUnitPair {
  eZuUnit m_eFrom = eZuUnitNone;
  eZuUnit m_eTo = eZuUnitNone;

  ZuUnitPair() = default;
  ZuUnitPair(eZuUnit eFrom, eZuUnit eTo) : m_eFrom(eFrom), m_eTo(eTo) {}
  bool operator==(const ZuUnitPair& o) const { return m_eFrom == o.m_eFrom && m_eTo == o.m_eTo; }
  bool operator<(const ZuUnitPair& o) const {
    return m_eFrom != o.m_eFrom ? m_eFrom < o.m_eFrom : m_eTo < o.m_eTo;
  }
  bool operator<=(const ZuUnitPair& o) const { return !(o < *this); }
};

// Columns of type T (eZuPointRWMask), indices from 0. Where there is no memory for all columns of a
// table, it is left empty and std::bad_alloc thrown: with fewer ones a file would be misread.
template <class T>
class TZuFormatTable {
 public:
  TZuFormatTable() = default;
  // Null makes an empty table.
  TZuFormatTable(const T* peTable) { SetTable(peTable); }
  TZuFormatTable(const TZuFormatTable& other) : m_Table(other.m_Table), m_Units(other.m_Units) {
    CheckMemory();
  }
  virtual ~TZuFormatTable() = default;

  TZuFormatTable& operator=(const TZuFormatTable& other);
  TZuFormatTable& operator=(const T* peTable) {
    SetTable(peTable);
    return *this;
  }

  // Replaces the table by the entries of peTable up to its first 0, all without units.
  void SetTable(const T* peTable);
  // Leaves the table empty.
  void DelTable();

  int Size() const { return m_Table.Count(); }
  // The column at index i; 0, which ends a table, outside of it.
  T operator[](int i) const { return IsIndex(i) ? m_Table[i] : static_cast<T>(0); }
  bool HasEntry(T eEntry) const { return Index(eEntry) >= 0; }

  // Appends the unit entry of a column that follows. SetTable does so for each of its columns;
  // entries beyond the columns have no effect.
  void AddUnitEntry(eZuUnit eFrom, eZuUnit eTo) {
    if (m_Units.Add(ZuUnitPair(eFrom, eTo)) == nullptr) CheckMemory();
  }

  // Sets the units of a column; nothing happens for one that isn't in the table. The form by index
  // sets the unit shown.
  void SetUnit(T eEntry, eZuUnit eFrom, eZuUnit eTo);
  void SetUnit(int i, eZuUnit eTo);
  // The unit in which a column is shown; 0 for one that isn't in the table.
  eZuUnit GetUnit(int i) const { return HasUnit(i) ? m_Units[i].m_eTo : eZuUnitNone; }
  eZuUnit GetUnit(T eEntry) const { return GetUnit(Index(eEntry)); }

  // The value in the unit shown; unchanged for a column that isn't in the table.
  double GetDisplayValue(int i, double dValue) const;
  double GetDisplayValue(T eEntry, double dValue) const {
    return GetDisplayValue(Index(eEntry), dValue);
  }

 protected:
  // The first index of a column, -1 if there is none.
  int Index(T eEntry) const { return m_Table.Search(eEntry, 0, -1); }
  bool IsIndex(int i) const { return i >= 0 && i < m_Table.Count(); }
  bool HasUnit(int i) const { return IsIndex(i) && i < m_Units.Count(); }
  void CheckMemory();

  TZuArray<T> m_Table{16, nullptr};
  TZuArray<ZuUnitPair> m_Units{16, nullptr};
};

// Writes the titles of the columns on one line, without a line end.
ZU_API std::ostream& operator<<(std::ostream& os, const TZuFormatTable<eZuPointRWMask>& table);

template <class T>
void TZuFormatTable<T>::SetTable(const T* peTable) {
  DelTable();
  for (; peTable != nullptr && *peTable != static_cast<T>(0); ++peTable) {
    m_Table.Add(*peTable);
    AddUnitEntry(eZuUnitNone, eZuUnitNone);
  }
  CheckMemory();
}

template <class T>
TZuFormatTable<T>& TZuFormatTable<T>::operator=(const TZuFormatTable& other) {
  m_Table = other.m_Table;
  m_Units = other.m_Units;
  CheckMemory();
  return *this;
}

// Arrays keep an element without memory as null.
template <class T>
void TZuFormatTable<T>::CheckMemory() {
  bool bWhole = true;
  for (int i = 0; i < m_Table.Count(); ++i) bWhole = bWhole && m_Table.Item(i) != nullptr;
  for (int i = 0; i < m_Units.Count(); ++i) bWhole = bWhole && m_Units.Item(i) != nullptr;
  if (bWhole) return;
  DelTable();
  throw std::bad_alloc();
}

template <class T>
void TZuFormatTable<T>::DelTable() {
  m_Table.Clear();
  m_Units.Clear();
}

template <class T>
void TZuFormatTable<T>::SetUnit(T eEntry, eZuUnit eFrom, eZuUnit eTo) {
  const int i = Index(eEntry);
  if (HasUnit(i)) m_Units[i] = ZuUnitPair(eFrom, eTo);
}

template <class T>
void TZuFormatTable<T>::SetUnit(int i, eZuUnit eTo) {
  if (HasUnit(i)) m_Units[i].m_eTo = eTo;
}

template <class T>
double TZuFormatTable<T>::GetDisplayValue(int i, double dValue) const {
  if (HasUnit(i)) ConvertUnit(&dValue, m_Units[i].m_eFrom, m_Units[i].m_eTo);
  return dValue;
}
