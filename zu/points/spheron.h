// A measured sphere: its point is the centre.
#pragma once

#include "zu/export.h"
#include "zu/foundation/list.h"
#include "zu/points/point.h"

class ZU_API ZuSpheron : public ZuPoint {
 public:
  using ZuPoint::ZuPoint;

  ZuSpheron* Next() const { return static_cast<ZuSpheron*>(m_pNext); }
  ZuSpheron* Previous() const { return static_cast<ZuSpheron*>(m_pPrev); }
};

ZU_DECLARE_LIST(ZuSpheron);

class ZU_API ZuSpheronList : public TZuListHeader<ZuSpheron> {
 public:
  using TZuListHeader<ZuSpheron>::operator=;
};
