// Notification: a ZuStandardNotifier keeps a table of observers and sends them events; every list
// is a notifier. An observer stands on at most one notifier, its parent, and calls a Link.
//
// One thread at a time. A notifier's end clears the parents of its observers, and an observer's end
// takes it off every table, so either may go first. An observer may leave during a notification;
// the one behind it then misses that event.
#pragma once

#include <vector>

#include "zu/export.h"
#include "zu/foundation/array.h"
#include "zu/foundation/link.h"

class ZuObserver;
class ZuStandardNotifier;

enum eZuNotifyType : int {
  eZuNotifyChanged = 1,
  eZuNotifyAdd = 2,
  eZuNotifySubtract = 3,
  eZuNotifyDestroyed = 4
};

// Lives on the sender's stack while the observers are called.
struct ZU_API ZuNotifyEvent {
  eZuNotifyType m_eType = eZuNotifyChanged;
  ZuStandardNotifier* m_pSource = nullptr;
  void* m_pItem = nullptr;  // the node concerned, as the list's own node type, or null
};

class ZU_API ZuStandardNotifier : public TZuArray<ZuObserver*> {
 public:
  // Room for 256 observers, which takes memory when the first one comes: every list is a notifier.
  ZuStandardNotifier() : TZuArray<ZuObserver*>(kDefaultSize, nullptr) {}
  ZuStandardNotifier(const ZuStandardNotifier& other);
  ~ZuStandardNotifier() override;

  // Required: takes the observers of the other table while each observer's parent stays as it was.
  // Observers that stood here before leave the table and keep their parent too.
  ZuStandardNotifier& operator=(const ZuStandardNotifier& other);

  // False: no observer given, or it has a parent already, with which it stays.
  bool AddObserver(ZuObserver* pObserver);

  // Takes the observer off the table and clears its parent; the others keep their order. False: it
  // does not stand here.
  bool RemoveObserver(ZuObserver* pObserver);
  void RemoveAllObservers();

  // Calls Notify of each observer but pExcept in the order of the table. Returns the number of
  // observers at the start, the one left out included.
  int NotifyObservers(ZuNotifyEvent* pEvent, ZuObserver* pExcept);

 protected:
  // The table changes by the operations above alone: each observer knows the tables it stands on.
  // Nor is it searched or compared: a list would answer for its observers.
  using TZuArray<ZuObserver*>::Add;
  using TZuArray<ZuObserver*>::Insert;
  using TZuArray<ZuObserver*>::Remove;
  using TZuArray<ZuObserver*>::Clear;
  using TZuArray<ZuObserver*>::Sort;
  using TZuArray<ZuObserver*>::Size;
  using TZuArray<ZuObserver*>::Item;
  using TZuArray<ZuObserver*>::Search;
  using TZuArray<ZuObserver*>::BinSearchUp;
  using TZuArray<ZuObserver*>::BinSearchDown;
  using TZuArray<ZuObserver*>::operator[];
  using TZuArray<ZuObserver*>::operator==;
  using TZuArray<ZuObserver*>::operator!=;

 private:
  friend class ZuObserver;
  void EnterTables();
};

class ZU_API ZuObserver {
 public:
  ZuObserver() = default;
  explicit ZuObserver(const Link& link) : m_Link(link) {}
  explicit ZuObserver(ZuStandardNotifier* pNotifier) { SetNotifyParent(pNotifier); }
  ZuObserver(ZuStandardNotifier* pNotifier, const Link& link) : m_Link(link) {
    SetNotifyParent(pNotifier);
  }

  // Required: link and parent are copied without entering the copy in the parent's table: the copy
  // receives nothing, and may not be added elsewhere while it names a parent.
  ZuObserver(const ZuObserver& other)
      : m_Link(other.m_Link), m_pNotifyParent(other.m_pNotifyParent) {}
  ZuObserver& operator=(const ZuObserver& other);

  // Receives an event; here it goes to the link, whose result is dropped.
  virtual void Notify(ZuNotifyEvent* pEvent);

  virtual ~ZuObserver();

  void SetLink(const Link& link) { m_Link = link; }

  // Enters the table of pNotifier; nothing with null or with a parent already set.
  void SetNotifyParent(ZuStandardNotifier* pNotifier);
  void RemoveFromNotifyParent();
  void ChangeNotifyParent(ZuStandardNotifier* pNotifier);

 protected:
  Link m_Link;
  ZuStandardNotifier* m_pNotifyParent = nullptr;

 private:
  friend class ZuStandardNotifier;
  bool StandsOn(const ZuStandardNotifier* pNotifier) const;
  void LeaveTable(const ZuStandardNotifier* pNotifier);

  // The tables that hold this observer, once for each entry: the parent's, and those that were
  // assigned from it. The end of either side clears the other's entry.
  std::vector<ZuStandardNotifier*> m_aTables;
};
