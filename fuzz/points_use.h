// What is done with points read from a file, and the tables of columns to read by.
#pragma once

#include <cmath>
#include <string_view>
#include <vector>

#include "fuzz/input.h"
#include "zu/points/point_list.h"

using Columns = TZuFormatTable<eZuPointRWMask>;

// Equal up to the digits that a file keeps; both not a number counts as equal.
inline bool IsClose(double a, double b) {
  if (std::isnan(a) || std::isnan(b)) return std::isnan(a) && std::isnan(b);
  return a == b || std::fabs(a - b) <= 1e-15 * std::fmax(std::fabs(a), std::fabs(b)) + 5e-324;
}

// What a keyword file gives back: a number without point and exponent is read as an integer of 32
// bits, an id too, and the words of infinities and of what is no number are keywords.
inline bool IsKept(double d) {
  return std::isfinite(d) && (std::fabs(d) <= 2147483647.0 || std::fabs(d) >= 1e16);
}
inline bool IsKept(unsigned int uId) { return uId <= 2147483647U; }

// Tables of applications, and for other bytes up to twelve columns out of the input's last ones, to
// the first 0 or line end: every id that has a meaning, and some that have none.
inline Columns TakeColumns(const Input& input) {
  static constexpr eZuPointRWMask kTables[][6] = {
      {eZuPointRWIdName, eZuPointRWX, eZuPointRWY, eZuPointRWZ, eZuPointRWEnd},
      {eZuPointRWId, eZuPointRWX, eZuPointRWY, eZuPointRWZ, eZuPointRWCode, eZuPointRWEnd},
      {eZuPointRWId, eZuPointRWName, eZuPointRWX, eZuPointRWDX, eZuPointRWColor, eZuPointRWEnd},
      {eZuPointRWIdName, eZuPointRWSkip, eZuPointRWX, eZuPointRWDS, eZuPointRWFlag, eZuPointRWEnd},
  };
  const unsigned uOption = input.Option() ^ '\n';
  if (uOption < std::size(kTables)) return Columns(kTables[uOption]);
  std::vector<eZuPointRWMask> columns;
  for (std::size_t i = input.Text().size(); i-- > 0 && columns.size() < 12;) {
    const auto uByte = static_cast<unsigned char>(input.Text()[i]);
    if (uByte == 0 || (uByte == '\n' && !columns.empty())) break;
    columns.push_back(static_cast<eZuPointRWMask>(uByte));
  }
  columns.push_back(eZuPointRWEnd);
  return Columns(columns.data());
}

// The same points in the same order: id, name and coordinates.
inline void RequireSamePoints(const ZuPointList& a, const ZuPointList& b) {
  Require(a.Count() == b.Count());
  const ZuPoint* q = b.First();
  for (const ZuPoint* p = a.First(); p != nullptr; p = p->Next(), q = q->Next()) {
    Require(p->GetId() == q->GetId() && p->GetName() == q->GetName());
    Require(IsClose(p->m_dX, q->m_dX) && IsClose(p->m_dY, q->m_dY) && IsClose(p->m_dZ, q->m_dZ));
  }
}

// Searches and orders of a list.
inline void UsePoints(ZuPointList& list) {
  const ZuPoint* pLast = list.Last();
  if (pLast == nullptr) return;
  Require(list.Find(pLast->GetId(), 0, nullptr) != nullptr);
  Require(list.Find(pLast->GetName()) != nullptr);
  double dDistance = 0.0;
  list.FindNearest(*pLast, &dDistance);
  list.HasControlPoints();
  const int iCount = list.Count();
  ZuPointList copy(list);
  if (iCount <= 1000) copy.Sort();  // ids more than 2^31 apart leave it to the plain insertion
  Require(copy.Count() == iCount);
  copy.Renumber(1, nullptr, 1);
  copy.RemoveControlInformation();
}
