#include "zu/foundation/listnode.h"

int ZuBaseListnode::Compare(const ZuBaseListnode*) const { return 1; }

ZuListnode& ZuListnode::operator=(const ZuListnode& other) {
  ZuObject::operator=(other);
  return *this;
}

int ZuListnode::Compare(const ZuListnode* pOther) const {
  return ZuObject::Compare(pOther->GetId());
}
