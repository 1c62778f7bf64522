#include "zu/rectify/plane_list.h"

#include <memory>

#include "zu/foundation/internal/without_memory.h"
#include "zu/foundation/reader.h"

ZU_INSTANTIATE_LIST(ZuPlane);

ZuPlaneList::ZuPlaneList(const String& strFileName) { ReadFile(strFileName); }

ZuPlane* ZuPlaneList::AddPlane(ZuReaderObject* pObject) {
  auto pPlane = std::make_unique<ZuPlane>(pObject);
  return Add(pPlane.release());
}

// { 3 "facade" 0.5 0.5 0.7071067811865476 -12.25 }
int ZuPlaneList::Read50Plane(ZuReaderObject* pObject) {
  pObject->TakeBlockOpen();
  AddPlane(pObject);
  return 1;
}

int ZuPlaneList::ReadFile(const String& strFileName) {
  const auto read = [&] {
    m_ReadFaults.Begin();
    ZuReader reader(strFileName.chars());
    ZuReaderObject rows(Link(this, &ZuPlaneList::Read50Plane));
    reader.RegisterObject(rows);
    m_ReadFaults.Follow(&reader);
    return reader.DoProcess(false);
  };
  return zu::internal::OrWithoutMemory(read, 1);
}

ZuPlane* ZuPlaneList::GetActivePlane() const {
  for (ZuPlane* p = First(); p != nullptr; p = p->Next()) {
    if (p->IsActive()) return p;
  }
  return nullptr;
}

int ZuPlaneList::CountActivePlanes() const {
  int iCount = 0;
  for (ZuPlane* p = First(); p != nullptr; p = p->Next()) iCount += p->IsActive() != 0;
  return iCount;
}
