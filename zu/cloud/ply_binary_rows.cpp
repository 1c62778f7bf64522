// Rows of binary files.
#include <algorithm>
#include <cstring>

#include "zu/cloud/internal/little_endian.h"
#include "zu/cloud/internal/ply_rows.h"

namespace {

// The value whose bytes stand at p.
template <class T>
double Load(const unsigned char* p, bool bBig) {
  unsigned char aBytes[sizeof(T)];
  if (bBig) {
    std::reverse_copy(p, p + sizeof(T), aBytes);
    p = aBytes;
  }
  return static_cast<double>(ZuLoadLittle<T>(p));
}

double LoadValue(const unsigned char* p, eZuPlyType eType, bool bBig) {
  switch (eType) {
    case eZuPlyInt8:
      return Load<std::int8_t>(p, false);
    case eZuPlyUint8:
      return Load<std::uint8_t>(p, false);
    case eZuPlyInt16:
      return Load<std::int16_t>(p, bBig);
    case eZuPlyUint16:
      return Load<std::uint16_t>(p, bBig);
    case eZuPlyInt32:
      return Load<std::int32_t>(p, bBig);
    case eZuPlyUint32:
      return Load<std::uint32_t>(p, bBig);
    case eZuPlyFloat32:
      return Load<float>(p, bBig);
    case eZuPlyFloat64:
      return Load<double>(p, bBig);
    default:
      return 0.0;
  }
}

}  // namespace

// Brings so many bytes in hand; false where the file ends before.
bool ZuPlyRows::Need(std::uint64_t uBytes) {
  while (InHand() < uBytes) {
    if (m_source.IsComplete() || !m_source.Refill(m_progress)) return false;
  }
  return true;
}

bool ZuPlyRows::SkipBytes(std::uint64_t uBytes) {
  while (uBytes > InHand()) {
    uBytes -= InHand();
    m_source.SetBegin(m_source.End());
    if (m_source.IsComplete() || !m_source.Refill(m_progress)) return false;
  }
  m_source.SetBegin(m_source.Begin() + uBytes);
  return true;
}

bool ZuPlyRows::SkipList(const ZuPlyProperty& list) {
  const unsigned int uSize = ZuPlySize(list.eCountType);
  if (!Need(uSize)) return false;
  const double dCount =
      LoadValue(reinterpret_cast<const unsigned char*>(m_source.Begin()), list.eCountType, IsBig());
  m_bListFault = dCount < 0.0;
  return !m_bListFault &&
         SkipBytes(uSize + static_cast<std::uint64_t>(dCount) * ZuPlySize(list.eType));
}

// Moves over a row with lists, value by value; keeps what a point needs where there are values to
// fill.
bool ZuPlyRows::WalkRow(const ZuPlyElement& element, Values* pValues) {
  for (std::size_t i = 0; i < element.properties.size(); ++i) {
    const ZuPlyProperty& property = element.properties[i];
    if (property.IsList()) {
      if (!SkipList(property)) return false;
      continue;
    }
    const unsigned int uSize = ZuPlySize(property.eType);
    if (!Need(uSize)) return false;
    if (pValues && m_layout.fields[i] != eZuPlyNoField) {
      (*pValues)[m_layout.fields[i]] = LoadValue(
          reinterpret_cast<const unsigned char*>(m_source.Begin()), property.eType, IsBig());
    }
    m_source.SetBegin(m_source.Begin() + uSize);
  }
  return true;
}

bool ZuPlyRows::ReadBinaryRows(const ZuPlyElement& vertex, ZuPointFeed& feed) {
  Values v{};
  const std::uint64_t uRow = vertex.RowSize();
  const bool bLists = vertex.HasLists();
  for (std::uint64_t i = 0; i < vertex.uRows; ++i) {
    if (bLists ? !WalkRow(vertex, &v) : !Need(uRow)) {
      return m_bListFault
                 ? Fault("a list of vertex " + std::to_string(i) + " has less than no values")
                 : Cut(vertex, i);
    }
    if (!bLists) {
      const auto* const pRow = reinterpret_cast<const unsigned char*>(m_source.Begin());
      for (int f = 0; f < eZuPlyFields; ++f) {
        if (!m_layout.Has(static_cast<eZuPlyField>(f))) continue;
        v[f] = LoadValue(pRow + m_layout.offsets[f], m_layout.types[f], IsBig());
      }
      m_source.SetBegin(m_source.Begin() + uRow);
    }
    AddPoint(v, Columns{}, feed);
  }
  return true;
}
