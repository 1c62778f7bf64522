// A small named record hung on an owning object, and the list an owner keeps.
#pragma once

#include "zu/export.h"
#include "zu/foundation/list.h"
#include "zu/foundation/listnode.h"

class ZU_API ZuAttribute : public ZuListnode {
 public:
  using ZuListnode::ZuListnode;
  ZuAttribute() = default;
  ZuAttribute(const ZuAttribute& other) = default;
  ~ZuAttribute() override = default;

  // Takes Id, name and parent; the place in a list stays.
  virtual ZuAttribute& operator=(const ZuAttribute& other);

  // Called by ZuAttributeList around its changes; all return 1. Here only OnMove does something:
  // it stores the new parent.
  virtual int OnAdd();
  virtual int OnSubtract();
  virtual int OnPreMove();
  virtual int OnMove(ZuObject* pParent);

  ZuObject* GetParent() const { return m_pParent; }
  void SetParent(ZuObject* pParent) { m_pParent = pParent; }

  ZuAttribute* Next() const { return static_cast<ZuAttribute*>(m_pNext); }
  ZuAttribute* Previous() const { return static_cast<ZuAttribute*>(m_pPrev); }

 protected:
  ZuObject* m_pParent = nullptr;  // not owned
};

ZU_DECLARE_LIST(ZuAttribute);

class ZU_API ZuAttributeList : public TZuListHeader<ZuAttribute> {
 public:
  using TZuListHeader<ZuAttribute>::operator=;
  using TZuListHeader<ZuAttribute>::Add;
  using TZuListHeader<ZuAttribute>::Subtract;

  // Sets the parent, adds at the tail and calls OnAdd. Returns p, null for null.
  ZuAttribute* Add(ZuAttribute* p, ZuObject* pParent);
  // Adds at the tail and leaves the parent alone.
  ZuAttribute* Add2(ZuAttribute* p);
  // Calls OnSubtract and clears the parent before p leaves the list.
  ZuAttribute* Subtract(ZuAttribute* p) override;
  // Moves all attributes, in order, to the tail of pDest: OnPreMove before a node is there, OnMove
  // with the new parent after. This list sends nothing, pDest one add for each. Null does nothing.
  void MoveAttributes(ZuAttributeList* pDest, ZuObject* pParent);
};
