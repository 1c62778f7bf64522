// Callbacks: a Link holds an object and one of its member functions.
//
//   class Counter : public LinkHdl {
//    public:
//     long OnEvent(ZuNotifyEvent* pEvent);
//   };
//   Link link(&counter, &Counter::OnEvent);
//   link.Call(&event);  // counter.OnEvent(&event)
//
// A Link is a small value: it allocates nothing, copies freely and does not own its object, which
// must outlive the calls.
#pragma once

#include <cstddef>
#include <cstring>
#include <type_traits>

#include "zu/export.h"

// Base of every class whose member functions are called through a Link.
class ZU_API LinkHdl {};

class ZU_API Link {
 public:
  Link() = default;
  Link(const Link&) = default;

  // Binds a member function with one pointer argument and an integral, pointer or void result. The
  // object's class derives from LinkHdl, by one base or several; the function may be declared in
  // the class or in a base of it. With a null object or function the link is unset.
  template <class O, class C, class R, class A>
  Link(O* pObject, R (C::*pfn)(A*)) {
    Bind<O, C, R, A>(pObject, pfn);
  }
  template <class O, class C, class R, class A>
  Link(O* pObject, R (C::*pfn)(A*) const) {
    Bind<O, const C, R, A>(pObject, pfn);
  }
  template <class O>
  Link(O*, std::nullptr_t) {}
  template <class C, class R, class A>
  Link(std::nullptr_t, R (C::*)(A*)) {}
  template <class C, class R, class A>
  Link(std::nullptr_t, R (C::*)(A*) const) {}

  virtual ~Link() = default;

  Link& operator=(const Link&) = default;

  // Calls the function with pArg, which must point to what the function takes. The result is what
  // the function returns: 0 or 1 for a pointer result (null, not null), 0 for void. An unset link
  // calls nothing and gives 0.
  long Call(void* pArg) const { return IsSet() ? m_pfnThunk(m_pHdl, m_pfnCall, pArg) : 0; }

  int IsSet() const { return m_pHdl != nullptr && m_pfnThunk != nullptr; }
  int operator!() const { return !IsSet(); }

 protected:
  // A pointer to a member function as bytes, wide enough for every class.
  struct Function {
    alignas(void*) unsigned char aBytes[2 * sizeof(void*)];
  };
  using Thunk = long (*)(void* pHdl, const Function& function, void* pArg);

  void* m_pHdl = nullptr;      // the object, as the class that declares the function sees it
  Function m_pfnCall = {};     // the member function
  Thunk m_pfnThunk = nullptr;  // knows the types of both; null: no function

 private:
  template <class O, class C, class R, class A, class F>
  void Bind(O* pObject, F pfn) {
    static_assert(std::is_base_of_v<LinkHdl, O>, "the object's class derives from LinkHdl");
    static_assert(std::is_integral_v<R> || std::is_pointer_v<R> || std::is_void_v<R>,
                  "the result is integral, a pointer or void");
    static_assert(sizeof(F) <= sizeof(Function));
    C* pHdl = pObject;
    m_pHdl = const_cast<std::remove_const_t<C>*>(pHdl);
    if (pfn == nullptr) return;
    std::memcpy(m_pfnCall.aBytes, &pfn, sizeof(F));
    m_pfnThunk = &CallMember<C, R, A, F>;
  }

  template <class C, class R, class A, class F>
  static long CallMember(void* pHdl, const Function& function, void* pArg) {
    F pfn;
    std::memcpy(&pfn, function.aBytes, sizeof(F));
    C* pObject = static_cast<C*>(pHdl);
    A* pTyped = static_cast<A*>(pArg);
    if constexpr (std::is_void_v<R>) {
      (pObject->*pfn)(pTyped);
      return 0;
    } else if constexpr (std::is_pointer_v<R>) {
      return (pObject->*pfn)(pTyped) != nullptr;
    } else {
      return static_cast<long>((pObject->*pfn)(pTyped));
    }
  }
};
