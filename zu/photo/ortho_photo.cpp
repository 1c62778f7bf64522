#include "zu/photo/ortho_photo.h"

#include <cmath>
#include <ostream>
#include <utility>

#include "zu/foundation/internal/item_writer.h"
#include "zu/foundation/internal/without_memory.h"
#include "zu/foundation/reader.h"

ZU_INSTANTIATE_LIST(ZuOrthoPhoto);

ZuOrthoPhoto::ZuOrthoPhoto(unsigned int uId) : ZuPhoto(uId) { m_ePhototype = eZuPhototypeDigital; }

ZuOrthoPhoto::ZuOrthoPhoto(ZuReaderObject* pObject) : ZuOrthoPhoto(0u) {
  ZuOrthoPhoto::Read(pObject);
}

ZuOrthoPhoto::ZuOrthoPhoto(const ZuOrthoPhoto& other) : ZuPhoto() { *this = other; }

ZuOrthoPhoto::~ZuOrthoPhoto() = default;

ZuOrthoPhoto& ZuOrthoPhoto::operator=(const ZuOrthoPhoto& other) {
  if (this == &other) return *this;
  ZuPhoto::operator=(other);
  {
    const ZuZuspPlaneInfoList::NotifyLock lock(&m_PlaneList);
    m_PlaneList.Destroy();
    zu::internal::CopyAll(other.m_PlaneList, &m_PlaneList);
  }
  m_aPlaneIds = other.m_aPlaneIds;
  m_iStatPixel = other.m_iStatPixel;
  m_dStatTime = other.m_dStatTime;
  m_ObjectRegion = other.m_ObjectRegion;
  m_dMaxAngle = other.m_dMaxAngle;
  m_iMirror = other.m_iMirror;
  return *this;
}

// ORTHOPHOTO { ID 1 "facade.tif" PIXELSIZE { 0 0 4000 3000 } OBJECTSIZE { 0 0 20 15 } PLANEINFO {
// ... } }
int ZuOrthoPhoto::Read(ZuReaderObject* pObject) {
  ZuReaderObject keywords[] = {
      {"ID", Link(this, &ZuObject::Read)},
      {"COMMENT", &m_sComment},
      {"RECTPIXEL", &m_iStatPixel},
      {"TIME", &m_dStatTime},
      {"SCALE", &m_dScale},
      {"PLANEANGLE", &m_dMaxAngle},
      {"DIGITALROT", &m_iDigPictRot},
      {"MIRROR", &m_iMirror},
      {"PIXELSIZE", Link(&m_DigiRegion, &ZuRegion::Read)},
      {"OBJECTSIZE", Link(&m_ObjectRegion, &ZuRegion::Read)},
      {"PLANEINFO", Link(&m_PlaneList, &ZuZuspPlaneInfoList::AddPlane)},
  };
  for (ZuReaderObject& keyword : keywords) pObject->RegisterObject(keyword);
  pObject->DoProcess();
  return 1;
}

std::ostream& ZuOrthoPhoto::Write(std::ostream& stream) { return stream; }

std::ostream& ZuOrthoPhoto::Export(std::ostream& stream) const {
  zu::internal::ItemWriter items(stream);
  items.Item("ID", GetId(), GetName());
  items.ItemUnless(String(), "COMMENT", m_sComment);
  items.Item("RECTPIXEL", m_iStatPixel);
  items.Item("TIME", m_dStatTime);
  items.Item("SCALE", m_dScale);
  items.Item("PLANEANGLE", m_dMaxAngle);
  items.Item("DIGITALROT", m_iDigPictRot);
  items.Item("MIRROR", m_iMirror);
  items.Block("PIXELSIZE", [this](std::ostream& os) { m_DigiRegion.Export(os); });
  items.Block("OBJECTSIZE", [this](std::ostream& os) { m_ObjectRegion.Export(os); });
  for (const ZuZuspPlaneInfo* p = m_PlaneList.First(); p != nullptr; p = p->Next()) {
    items.Lines("PLANEINFO", [p](std::ostream& os) { p->Export(os); });
  }
  return stream;
}

double ZuOrthoPhoto::GetPixelSize() const {
  const double dWidth = GetDigiRegion().Width();
  return std::fabs(m_ObjectRegion.Width() / (dWidth == 0.0 ? 1.0 : dWidth));
}

void ZuOrthoPhoto::Mirror(ZuPoint* p) const {
  if ((m_iMirror & eZuMirrorX) != 0) p->m_dX = GetDigiRegion().Width() - p->m_dX;
  if ((m_iMirror & eZuMirrorY) != 0) p->m_dY = GetDigiRegion().Height() - p->m_dY;
}

void ZuOrthoPhoto::AdjustPixelRotation(ZuPoint* p) const {
  const double W = GetDigiRegion().Width(), H = GetDigiRegion().Height();
  switch (m_iDigPictRot) {
    case 1:
      p->m_dY = H - p->m_dY + 1.0;
      std::swap(p->m_dX, p->m_dY);
      break;
    case 2:
      p->m_dX = W - p->m_dX + 1.0;
      p->m_dY = H - p->m_dY + 1.0;
      break;
    case 3:
      p->m_dX = W - p->m_dX + 1.0;
      std::swap(p->m_dX, p->m_dY);
      break;
    default:
      break;
  }
  Mirror(p);
}

void ZuOrthoPhoto::AdjustPixelRotation(ZuPointList* pList) const {
  if (pList == nullptr) return;
  for (ZuPoint* p = pList->First(); p != nullptr; p = p->Next()) AdjustPixelRotation(p);
}

void ZuOrthoPhoto::InvAdjustPixelRotation(ZuPoint* p) const {
  Mirror(p);
  const double W = GetDigiRegion().Width(), H = GetDigiRegion().Height();
  const double x = p->m_dX, y = p->m_dY;
  switch (m_iDigPictRot) {
    case 1:
      p->m_dX = y;
      p->m_dY = H - x;
      break;
    case 2:
      p->m_dX = W - x;
      p->m_dY = H - y;
      break;
    case 3:
      p->m_dX = W - y;
      p->m_dY = x;
      break;
    default:
      break;
  }
}

bool ZuOrthoPhoto::Transform(ZuPoint* pPoint) const {
  if (pPoint == nullptr) return false;
  InvAdjustPixelRotation(pPoint);
  const ZuZuspPlaneInfo* pPlane = m_PlaneList.First();
  if (pPlane != nullptr && pPlane->Next() == nullptr) return pPlane->Transform(pPoint);
  return m_PlaneList.Transform(pPoint);
}

bool ZuOrthoPhoto::GetImageCorners(ZuPoint* a, ZuPoint* b, ZuPoint* c, ZuPoint* d) const {
  const ZuZuspPlaneInfo* pPlane = m_PlaneList.First();
  if (pPlane == nullptr) return false;
  const ZuRegion& region = GetDigiRegion();
  *a = region.GetLL();
  *c = region.GetUR();
  *b = *a;
  b->m_dX = c->m_dX;
  *d = *c;
  d->m_dX = a->m_dX;
  for (ZuPoint* p : {a, b, c, d}) pPlane->Transform(p);
  return true;
}

ZuOrthoPhoto* ZuOrthoPhotoList::AddPhoto(ZuReaderObject* pObject) {
  return Add(new ZuOrthoPhoto(pObject));
}
