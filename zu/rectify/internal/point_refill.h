// Fills a point list anew with copies, in the nodes that it holds already: a fit that an object
// makes again and again allocates nothing.
#pragma once

#include "zu/points/point_list.h"

class ZuPointRefill {
 public:
  // Empties the list with the event that Destroy sends, then holds events back for its lifetime.
  explicit ZuPointRefill(ZuPointList* pList)
      : m_pList(pList), m_pNext(TakeNodes()), m_lock(pList) {}

  // The copy, which the caller may change.
  ZuPoint* Append(const ZuPoint& point) {
    ZuPoint* pNode = m_pNext;
    if (pNode != nullptr) {
      m_pNext = pNode->Next();
      *pNode = point;
      return pNode;
    }
    pNode = new ZuPoint(point);
    m_nodes.LinkLast(pNode);
    return pNode;
  }

  // Puts the copies into the list; without it the list stays empty.
  void Finish() {
    while (m_pNext != nullptr) {
      ZuPoint* pSpare = m_pNext;
      m_pNext = pSpare->Next();
      delete m_nodes.Subtract(pSpare);
    }
    m_nodes.MoveTo(m_pList);
  }

 private:
  struct Nodes : TZuBaseListHeader<ZuPoint> {
    using TZuBaseListHeader<ZuPoint>::LinkLast;
  };

  // The first of the nodes that the list held.
  ZuPoint* TakeNodes() {
    if (m_pList->IsEmpty()) {
      m_pList->NotifyChanged(nullptr, nullptr);
    } else {
      m_pList->MoveTo(&m_nodes);
    }
    return m_nodes.First();
  }

  ZuPointList* m_pList;
  Nodes m_nodes;
  ZuPoint* m_pNext;  // the first node not yet used again
  ZuPointList::NotifyLock m_lock;
};
