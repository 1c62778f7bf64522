#include "zu/rectify/internal/spare_points.h"

#include <typeinfo>
#include <utility>

namespace {

#if defined(__has_feature)
#define ZU_HAS_FEATURE(x) __has_feature(x)
#else
#define ZU_HAS_FEATURE(x) 0
#endif
// The address sanitizer sees the use of a deleted point only if nothing is kept.
#if defined(__SANITIZE_ADDRESS__) || ZU_HAS_FEATURE(address_sanitizer)
constexpr int kMostSpares = 0;
#else
constexpr int kMostSpares = 1024;  // some 190 KB a thread
#endif

constexpr int kLongestName = 22;  // capacity of the name that a spare node may hold on to

bool IsWorthKeeping(const ZuPoint& point) {
  return typeid(point) == typeid(ZuPoint) && point.GetName().allocation() <= kLongestName;
}

}  // namespace

struct ZuSparePoints::Store {
  ~Store() { s_bGone = true; }

  // Null once the thread's store is gone: objects of static storage live longer.
  static Store* OfThread() {
    if (s_bGone) return nullptr;
    thread_local Store store;
    return &store;
  }

  Nodes m_nodes;
  int m_iCount = 0;

 private:
  static thread_local bool s_bGone;
};

thread_local bool ZuSparePoints::Store::s_bGone = false;

bool ZuSparePoints::Fetch() {
  if (m_bFetched) return false;
  m_bFetched = true;
  Store* pStore = Store::OfThread();
  if (pStore == nullptr || pStore->m_iCount == 0) return false;
  pStore->m_nodes.MoveTo(&m_nodes);
  std::swap(m_iCount, pStore->m_iCount);
  return true;
}

ZuSparePoints::~ZuSparePoints() {
  Store* pStore = m_iCount == 0 ? nullptr : Store::OfThread();
  if (pStore == nullptr) return;
  m_nodes.MoveTo(&pStore->m_nodes);
  pStore->m_iCount += m_iCount;
}

void ZuSparePoints::Keep(ZuPointList* pList) {
  Store* pStore = pList->IsEmpty() ? nullptr : Store::OfThread();
  if (pStore == nullptr) return;
  Nodes nodes;
  {
    const ZuPointList::NotifyLock lock(pList);
    pList->MoveTo(&nodes);
  }
  while (pStore->m_iCount < kMostSpares && !nodes.IsEmpty()) {
    ZuPoint* p = nodes.TakeFirst();
    if (IsWorthKeeping(*p)) {
      pStore->m_nodes.LinkLast(p);
      ++pStore->m_iCount;
    } else {
      delete p;
    }
  }
}
