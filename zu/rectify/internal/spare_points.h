// Nodes of fits that are over, for the next fits of the same thread: who makes a ZuCalcPlane for
// each fit would spend half of the time on the memory of its copies.
#pragma once

#include "zu/points/point_list.h"

// Holds the spare nodes of the thread for its lifetime.
class ZuSparePoints {
 public:
  ZuSparePoints() = default;
  ZuSparePoints(const ZuSparePoints&) = delete;
  ZuSparePoints& operator=(const ZuSparePoints&) = delete;
  ~ZuSparePoints();  // gives back what is left

  // A node out of any list, its content left from before; null if there is none.
  ZuPoint* Take() {
    if (m_nodes.IsEmpty() && !Fetch()) return nullptr;
    --m_iCount;
    return m_nodes.TakeFirst();
  }

  // Empties the list without events. Keeps its first nodes up to a bound, deletes the others.
  static void Keep(ZuPointList* pList);

 private:
  struct Nodes : TZuBaseListHeader<ZuPoint> {
    using TZuBaseListHeader<ZuPoint>::LinkLast;
    bool IsEmpty() const override { return m_pFirst == nullptr; }
    ZuPoint* TakeFirst() {
      ZuPoint* p = m_pFirst;
      Unlink(p);
      return p;
    }
  };
  struct Store;

  bool Fetch();

  Nodes m_nodes;
  int m_iCount = 0;
  bool m_bFetched = false;
};
