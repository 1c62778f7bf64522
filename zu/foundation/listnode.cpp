#include "zu/foundation/listnode.h"

int ZuBaseListnode::Compare(const ZuBaseListnode*) const { return 1; }

ZuListnode& ZuListnode::operator=(const ZuListnode& other) {
  ZuObject::operator=(other);
  return *this;
}

int ZuListnode::Compare(const ZuListnode* pOther) const {
  const unsigned int uOther = pOther->GetId();
  return int{m_uId < uOther} - int{uOther < m_uId};  // a sort foresees no branch here
}
