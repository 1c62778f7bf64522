#include "zu/foundation/id_table.h"

#include <algorithm>
#include <new>
#include <utility>
#include <vector>

#include "zu/foundation/reader_object.h"

namespace {

// Adds a value read. One without memory is no value of the file.
template <class Table, class Value>
void AddRead(Table& table, const Value& value) {
  if (table.Add(value) != nullptr) return;
  table.Remove(table.Count() - 1);
  throw std::bad_alloc();
}

}  // namespace

bool ZuIdPair::Sort() {
  if (m_uFirst <= m_uSecond) return false;
  std::swap(m_uFirst, m_uSecond);
  return true;
}

int ZuIdTable::Read(ZuReaderObject* pObject) {
  pObject->ReadRows([&] { AddRead(*this, pObject->TakeId()); });
  return 1;
}

int ZuIdPairTable::Read(ZuReaderObject* pObject) {
  pObject->ReadRows([&] {
    const unsigned int uFirst = pObject->TakeId();
    AddRead(*this, ZuIdPair(uFirst, pObject->TakeId()));
  });
  return 1;
}

int ZuIdTable2D::Read(ZuReaderObject* pObject) {
  const int iSizeX = std::max(pObject->TakeInt(), 0);
  const int iSizeY = std::max(pObject->TakeInt(), 0);

  // The sizes are claims of the file: room is made for the ids that are there.
  std::vector<unsigned int> aIds;
  const auto takeComplete = [&] {
    const std::size_t uRows = iSizeX == 0 ? 0 : aIds.size() / static_cast<std::size_t>(iSizeX);
    m_aIds = ValArray2DXY<unsigned int>(uRows == 0 ? 0 : iSizeX, static_cast<int>(uRows));
    std::copy_n(aIds.begin(), m_aIds.Count(), m_aIds.Data());
  };
  const auto uAll = static_cast<unsigned long long>(iSizeX) * static_cast<unsigned int>(iSizeY);
  try {
    pObject->ReadRows([&] {
      if (aIds.size() < uAll) aIds.push_back(pObject->TakeId());
    });
  } catch (...) {
    takeComplete();
    throw;
  }
  takeComplete();
  return 1;
}
