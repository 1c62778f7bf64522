#include "zu/points/attribute.h"

ZuAttribute& ZuAttribute::operator=(const ZuAttribute& other) {
  ZuListnode::operator=(other);
  m_pParent = other.m_pParent;
  return *this;
}

int ZuAttribute::OnAdd() { return 1; }

int ZuAttribute::OnSubtract() { return 1; }

int ZuAttribute::OnPreMove() { return 1; }

int ZuAttribute::OnMove(ZuObject* pParent) {
  m_pParent = pParent;
  return 1;
}

ZuAttribute* ZuAttributeList::Add(ZuAttribute* p, ZuObject* pParent) {
  if (p == nullptr) return nullptr;
  p->SetParent(pParent);
  Add(p);
  p->OnAdd();
  return p;
}

ZuAttribute* ZuAttributeList::Add2(ZuAttribute* p) { return Add(p); }

ZuAttribute* ZuAttributeList::Subtract(ZuAttribute* p) {
  if (p != nullptr) {
    p->OnSubtract();
    p->SetParent(nullptr);
  }
  return TZuListHeader<ZuAttribute>::Subtract(p);
}

void ZuAttributeList::MoveAttributes(ZuAttributeList* pDest, ZuObject* pParent) {
  if (pDest == nullptr) return;
  // The last node there is now ends the loop, so that a list can be moved onto itself.
  const ZuAttribute* const pEnd = Last();
  bool bMore = pEnd != nullptr;
  while (bMore && First() != nullptr) {
    ZuAttribute* const p = First();
    bMore = p != pEnd;
    Unlink(p);
    p->OnPreMove();
    pDest->LinkLast(p);
    pDest->NotifyAdd(p);
    p->OnMove(pParent);
  }
}

ZU_INSTANTIATE_LIST(ZuAttribute);
