// Nodes of the doubly linked lists (list.h). A record is a ZuListnode: links, an id and a name.
#pragma once

#include "zu/export.h"
#include "zu/foundation/object.h"

template <class T>
class TZuBaseListHeader;

// The links alone.
class ZU_API ZuBaseListnode {
 public:
  ZuBaseListnode() = default;

  // Required: copies hold the neighbours of their source until a list sets their links.
  ZuBaseListnode(const ZuBaseListnode&) = default;
  virtual ~ZuBaseListnode() = default;
  ZuBaseListnode& operator=(const ZuBaseListnode&) = default;

  // Required: 1, whatever is given. A sorted list of such nodes takes each new one at its head.
  virtual int Compare(const ZuBaseListnode* pOther) const;

 protected:
  template <class T>
  friend class TZuBaseListHeader;
  friend class ZuNodeOrder;

  ZuBaseListnode* m_pPrev = nullptr;  // null at the head
  ZuBaseListnode* m_pNext = nullptr;  // null at the tail
};

// A record of a list. Derived records offer the links as Next() and Previous() with their own type:
//
//   ZuPlane* Next() const { return static_cast<ZuPlane*>(m_pNext); }
class ZU_API ZuListnode : public ZuBaseListnode, public ZuObject {
 public:
  ZuListnode() = default;
  explicit ZuListnode(unsigned int uId) : ZuObject(uId) {}
  explicit ZuListnode(const String& strName) : ZuObject(strName) {}
  ZuListnode(unsigned int uId, const String& strName) : ZuObject(uId, strName) {}
  ZuListnode(const ZuListnode&) = default;

  // Required: takes id and name and leaves the links alone, so that a node may be assigned to while
  // it stands in a list.
  ZuListnode& operator=(const ZuListnode& other);

  using ZuBaseListnode::Compare;
  using ZuObject::Compare;

  // -1 if the other id is less than this one, 1 if it is greater, 0 if they are equal.
  //
  // Required: the sign is that of the other id minus this id; sorted lists descend by id.
  virtual int Compare(const ZuListnode* pOther) const;
};
