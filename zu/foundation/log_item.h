// Messages kept in a list: an id, a level and a text (the name of the record).
#pragma once

#include "zu/export.h"
#include "zu/foundation/list.h"

class ZU_API ZuLogItem : public ZuListnode {
 public:
  ZuLogItem() = default;
  ZuLogItem(unsigned int uId, int iLevel, String const& strText)
      : ZuListnode(uId, strText), m_iLevel(iLevel) {}
  ZuLogItem* Next() const { return static_cast<ZuLogItem*>(m_pNext); }
  ZuLogItem* Previous() const { return static_cast<ZuLogItem*>(m_pPrev); }

 public:
  int m_iLevel = 3;  // as ZuLogger's
};

ZU_DECLARE_LIST(ZuLogItem);

class ZU_API ZuLogItemList : public TZuListHeader<ZuLogItem> {
 public:
  using TZuListHeader<ZuLogItem>::operator=;
};
