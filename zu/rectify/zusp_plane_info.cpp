#include "zu/rectify/zusp_plane_info.h"

ZU_INSTANTIATE_LIST(ZuZuspPlaneInfo);

bool ZuZuspPlaneInfo::Holds(const ZuPoint& pixel) const {
  return !m_Trafo.HasRegion() || m_Trafo.GetRegion().Overlap(pixel);
}

int ZuZuspPlaneInfo::Read(ZuReaderObject* pObject) {
  m_Trafo.Read(pObject);
  SetId(m_Trafo.GetId());
  SetName(m_Trafo.GetName());
  return 1;
}

ZuZuspPlaneInfo* ZuZuspPlaneInfoList::AddPlane(ZuReaderObject* pObject) {
  return Add(new ZuZuspPlaneInfo(pObject));
}

bool ZuZuspPlaneInfoList::Transform(ZuPoint* pPoint) const {
  for (const ZuZuspPlaneInfo* p = First(); p != nullptr; p = p->Next()) {
    if (p->Holds(*pPoint)) return p->Transform(pPoint);
  }
  return false;
}
