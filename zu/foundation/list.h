// Lists of records. A list owns its nodes, finds them by id or name, sorts them and tells observers
// of its changes.
//
//   ZuPlaneList list;
//   list.Add(new ZuPlane(7));            // the list owns the node
//   ZuPlane* pPlane = list.Subtract(7u);  // the caller owns it again
//
// TZuBaseListHeader<T> is the list proper, for nodes of class ZuBaseListnode; TZuListHeader<T> adds
// ids, names and notification, for nodes of class ZuListnode. Every collection derives from the
// latter. Add(T*) takes a node from the heap; Add(const T&) copies; Subtract in all its forms hands
// the node back unlinked; Destroy, Replace and the destructor delete.
//
// A node stands in at most one list and a `before` node in this one: nothing looks. Count, Get and
// the Find forms walk the list; MoveTo and Swap take constant time. One thread at a time.
#pragma once

#include "zu/export.h"
#include "zu/foundation/detail/list_order.h"
#include "zu/foundation/listnode.h"
#include "zu/foundation/observer.h"
#include "zu/foundation/string.h"

template <class T>
class ZU_API TZuBaseListHeader {
 public:
  TZuBaseListHeader() = default;
  TZuBaseListHeader(const TZuBaseListHeader& other);
  virtual ~TZuBaseListHeader() { DeleteNodes(); }

 protected:
  // Notification; nothing at this level.
  virtual void NotifyAdd(T*) {}
  virtual void NotifyMultiAdd() {}
  virtual void NotifySubtract(T*) {}

 public:
  virtual void NotifyChanged(T*, ZuObserver*) {}

 protected:
  virtual void NotifySort() {}
  virtual void NotifyDestroyed() {}

 public:
  // Events are held back while more SetNotify(false) than SetNotify(true) were called; they are not
  // remembered. ForceNotify ends that at once. A NotifyLock calls both, also past an exception.
  virtual void SetNotify(bool bNotify);
  virtual void ForceNotify() { m_iNotifyLock = 0; }

  // Deletes the nodes and appends copies of those of the source, with one event at the end. Throws
  // std::bad_alloc, as the copy constructors of lists do, where there is no memory for all of them.
  virtual TZuBaseListHeader& operator=(const TZuBaseListHeader& other);
  virtual TZuBaseListHeader& operator+=(const TZuBaseListHeader& other);

  virtual T* First() const { return m_pFirst; }
  virtual T* Last() const { return m_pLast; }

  // The node i steps from the head; null past the end and for a negative i.
  virtual T* Get(int i) const;

  // Appends p and returns it; null gives null and no event.
  virtual T* Add(T* p);

  // Puts p in front of pBefore and returns it; into an empty list, or with pBefore null, as Add.
  virtual T* Insert(T* pBefore, T* p);

  // Puts p in front of the first node whose comparison with p is above 0, at the tail if there is
  // none: equal nodes keep their order of arrival.
  //
  // Required: nodes compared by ZuListnode::Compare descend by id, points ascend by their own.
  virtual T* SortedInsert(T* p);
  virtual T* InsertFirst(T* p) { return Insert(m_pFirst, p); }

  // The node at position i, from 0: Subtract(7) is the eighth node, Subtract(7u) of TZuListHeader
  // the one with the id 7.
  virtual T* Subtract(int i) { return Subtract(Get(i)); }

  // Unlinks p and returns it.
  //
  // Required: a null p sends its event too; callers signal a removal so.
  virtual T* Subtract(T* p);
  virtual T* SubtractFirst() { return Subtract(m_pFirst); }
  virtual T* SubtractLast() { return Subtract(m_pLast); }

  // Puts the nodes in the order that SortedInsert of one after the other gives, and returns their
  // number. About n log n comparisons, fewer in a list with sorted stretches. Where the comparison
  // is no order on these nodes (keys whose 32-bit difference wraps), or without memory for 16 bytes
  // a node, the insertion itself decides, with a quadratic number (list_order.h).
  virtual int Sort();

  // Appends the whole chain to pDest; nothing with null, this list or an empty one.
  virtual void MoveTo(TZuBaseListHeader* pDest);
  virtual void Swap(TZuBaseListHeader* pOther);

  // Appends a copy of every node to pDest and returns their number, without those for which there
  // is no memory. pDest may be this list: the nodes that were there at the start are copied.
  virtual int CopyTo(TZuBaseListHeader* pDest) const;

  // Deletes all nodes, or leaves them to their other owners.
  //
  // Required: the event goes out for an empty list too.
  virtual void Destroy();
  virtual void SubtractAll();

  virtual int Count() const;
  virtual bool CountMoreThan(int iCount) const;
  virtual bool Exist(T* p) const { return IsPtrInList(p); }

  // Required: 0 if p stands anywhere in the list, -1 if not; no position is told.
  virtual int Index(T* p) const { return IsPtrInList(p) ? 0 : -1; }
  virtual bool IsEmpty() const { return m_pFirst == nullptr; }

  // Returns the first node that compares unequal to x; null when all are equal or the list is
  // empty.
  //
  // Required: the sense is "unequal": it finds where a run of equals ends. Look for a match with
  // Find(id) or Find(name).
  virtual T* Find(const T& x) const;

  // A stack at the tail.
  virtual T* Push(T* p) { return Add(p); }
  virtual T* Pop() { return SubtractLast(); }

  bool IsNotifyEnabled() const { return m_iNotifyLock == 0; }

  // Holds the events of a list back for its lifetime:
  //
  //   const ZuPointList::NotifyLock lock(&list);
  class NotifyLock {
   public:
    explicit NotifyLock(TZuBaseListHeader* pList) : m_pList(pList) { pList->SetNotify(false); }
    NotifyLock(const NotifyLock&) = delete;
    NotifyLock& operator=(const NotifyLock&) = delete;
    ~NotifyLock() { m_pList->SetNotify(true); }

   private:
    TZuBaseListHeader* m_pList;
  };

  bool IsPtrInList(const void* p) const;
  static T* Cast(const void* p) { return static_cast<T*>(const_cast<void*>(p)); }
  void AssertInvalid() const {}
  void AssertPointNotInList(const T*) const {}

  // The neighbours of a node, for walks in code that knows no more of T.
  static T* NextOf(const T* p) { return Typed(Links(p).m_pNext); }
  static T* PreviousOf(const T* p) { return Typed(Links(p).m_pPrev); }

 protected:
  // Changes of the chain without events.
  void LinkLast(T* p);
  void LinkBefore(T* pBefore, T* p);  // null: at the tail
  void Unlink(T* p);

  // Deletes all nodes from the head on, each unlinked first; no events.
  void DeleteNodes();
  // A copy on the heap; null when there is no memory for it.
  static T* CopyOf(const T& x);

  // Sorts the chain as SortedInsert with this comparison does, without events. Returns the number
  // of nodes.
  int SortChain(ZuNodeOrder::Compare pfnCompare);

  T* m_pFirst = nullptr;
  T* m_pLast = nullptr;
  int m_iNotifyLock = 0;  // SetNotify(false) calls that wait for their SetNotify(true)

 private:
  static T* Typed(ZuBaseListnode* p) { return static_cast<T*>(p); }
  static ZuBaseListnode& Links(T* p) { return *p; }
  static const ZuBaseListnode& Links(const T* p) { return *p; }
  static int CompareNodes(const T* p, const T* pOther) {
    return p->Compare(
        const_cast<T*>(pOther));  // some records declare it for a pointer to non-const
  }
  static int CompareLinks(const ZuBaseListnode* p, const ZuBaseListnode* pOther) {
    return CompareNodes(static_cast<const T*>(p), static_cast<const T*>(pOther));
  }
};

template <class T>
class ZU_API TZuListHeader : public TZuBaseListHeader<T>, public ZuStandardNotifier {
  using Base = TZuBaseListHeader<T>;

 public:
  TZuListHeader() = default;

  // The observers stay with the source; no events.
  TZuListHeader(const TZuListHeader& other) : Base(), ZuStandardNotifier() {
    Base::operator=(other);
  }
  ~TZuListHeader() override;

  // Required: besides the nodes the observer table is taken from the source, so that both lists
  // notify the same observers, while each observer's parent stays as it was.
  TZuListHeader& operator=(const TZuListHeader& other);
  TZuListHeader& operator=(const Base& other) override;

 protected:
  // Each sends an event unless events are held back; NotifyDestroyed sends it in any case.
  void NotifyAdd(T* p) override { Send(eZuNotifyAdd, p, nullptr); }
  void NotifyMultiAdd() override { Send(eZuNotifyChanged, nullptr, nullptr); }
  void NotifySubtract(T* p) override { Send(eZuNotifySubtract, p, nullptr); }

 public:
  // Tells all observers but pExcept that p, or with null the list, has changed.
  void NotifyChanged(T* p, ZuObserver* pExcept) override { Send(eZuNotifyChanged, p, pExcept); }

 protected:
  void NotifySort() override { Send(eZuNotifyChanged, nullptr, nullptr); }
  void NotifyDestroyed() override { SendAlways(eZuNotifyDestroyed, nullptr, nullptr); }

 public:
  using Base::Add;
  using Base::Count;
  using Base::Find;
  using Base::Insert;
  using Base::Sort;
  using Base::Subtract;

  // Appends a copy; null when there is no memory for it.
  virtual T* Add(const T& x);

  // Moves p to the tail of dest and returns the node that stood behind it, so that a loop may move
  // nodes while it walks.
  virtual T* Move(T* p, TZuListHeader& dest);

  // Puts p in the place of the first node with its id, which is deleted; without one, as Add or
  // SortedInsert. Returns p.
  //
  // Required: Replace sends its events when all is done, a subtraction without node and the
  // addition; SortedReplace sends the addition, then the subtraction with the node that is deleted
  // next.
  virtual T* Replace(const T& x);
  virtual T* Replace(T* p);
  virtual T* SortedReplace(const T& x);
  virtual T* SortedReplace(T* p);

  // The first node of that name, of that id, by the list's own Subtract(T*). An id is unsigned: a
  // plain number is a position.
  virtual T* Subtract(const String& strName) { return Subtract(Find(strName, false)); }
  virtual T* Subtract(unsigned int uId) { return Subtract(Find(uId)); }

  // The first node of that name, of that id; null if there is none. Without bCaseSensitive, as in
  // Subtract, ASCII letters match in either case.
  virtual T* Find(const String& strName, bool bCaseSensitive) const;
  T* Find(const String& strName) const { return Find(strName, false); }
  virtual T* Find(unsigned int uId) const;

  // The first id at or above uHint that no node has; with 0 the largest id and 1. Behind 4294967295
  // it is the smallest one from 1 on that is free.
  virtual unsigned int GetFreeId(unsigned int uHint) const;

  // Numbers the nodes from pFrom (null: the head) to the tail with uStart, uStart + uStep, ... and
  // returns how many there were.
  virtual int Renumber(unsigned int uStart, T* pFrom, unsigned int uStep);

  // Calls Dump of every node.
  virtual void Dump();

  // Puts the nodes in ascending order of their ids. Returns true.
  //
  // Required: of equal ids the first node stays; the others leave the list and are not deleted.
  bool SortById();

 private:
  static ZuObject& Object(T* p) { return *p; }
  static const ZuObject& Object(const T* p) { return *p; }
  static int CompareIds(const ZuBaseListnode* p, const ZuBaseListnode* pOther);
  unsigned int FreeIdFrom(unsigned int uFirst) const;

  void Send(eZuNotifyType eType, T* p, ZuObserver* pExcept) {
    if (this->IsNotifyEnabled()) SendAlways(eType, p, pExcept);
  }
  void SendAlways(eZuNotifyType eType, T* p, ZuObserver* pExcept);
  T* ReplaceNode(T* pOld, T* p);
};

#include "zu/foundation/detail/list_impl.h"

// A record's header declares its lists, and one source compiles them: that keeps the library small.
#define ZU_DECLARE_LIST(T)                    \
  extern template class TZuBaseListHeader<T>; \
  extern template class TZuListHeader<T>
#define ZU_INSTANTIATE_LIST(T)         \
  template class TZuBaseListHeader<T>; \
  template class TZuListHeader<T>
