#include "zu/foundation/observer.h"

#include "tests/support/test.h"

namespace {

class Notifier : public ZuStandardNotifier {
 public:
  int Size() const { return m_iSize; }
  int Send(ZuObserver* pExcept = nullptr) {
    ZuNotifyEvent event;
    event.m_pSource = this;
    return NotifyObservers(&event, pExcept);
  }
};

class Observer : public ZuObserver {
 public:
  using ZuObserver::ZuObserver;
  void Notify(ZuNotifyEvent* pEvent) override {
    m_aSources.push_back(pEvent->m_pSource);
    if (m_OnNotify) m_OnNotify();
  }
  ZuStandardNotifier* Parent() const { return m_pNotifyParent; }

  std::vector<ZuStandardNotifier*> m_aSources;
  std::function<void()> m_OnNotify;
};

class Handler : public LinkHdl {
 public:
  long On(ZuNotifyEvent* pEvent) { return m_iType = pEvent->m_eType; }
  int m_iType = 0;
};

TEST(Observer, PassesEventsToItsLink) {
  Handler handler;
  ZuObserver observer(Link(&handler, &Handler::On));
  ZuNotifyEvent event;
  event.m_eType = eZuNotifySubtract;
  observer.Notify(&event);
  EXPECT_EQ(handler.m_iType, 3);
  observer.SetLink(Link());
  event.m_eType = eZuNotifyAdd;
  observer.Notify(&event);
  EXPECT_EQ(handler.m_iType, 3);
}

TEST(Observer, StandsOnOneNotifier) {
  Notifier first, second;
  Observer observer(&first);
  EXPECT_FALSE(second.AddObserver(&observer) || first.AddObserver(&observer));
  EXPECT_FALSE(first.AddObserver(nullptr) || second.RemoveObserver(&observer));
  EXPECT_TRUE(observer.Parent() == &first && first.Count() == 1);
  observer.ChangeNotifyParent(&second);
  EXPECT_TRUE(observer.Parent() == &second && first.Count() == 0);
  observer.SetNotifyParent(nullptr);
  EXPECT_EQ(observer.Parent(), &second);
  EXPECT_TRUE(second.RemoveObserver(&observer));
  EXPECT_EQ(observer.Parent(), nullptr);
}

TEST(Observer, NotifiesInOrderAndCountsTheOneLeftOut) {
  Notifier notifier;
  std::string strOrder;
  std::vector<std::unique_ptr<Observer>> aObservers;
  for (int i = 0; i < 4; ++i) {
    aObservers.push_back(std::make_unique<Observer>(&notifier));
    aObservers.back()->m_OnNotify = [&strOrder, i] { strOrder += std::to_string(i); };
  }
  EXPECT_EQ(notifier.Send(aObservers[1].get()), 4);
  aObservers.erase(aObservers.begin() + 2);  // the others keep their order
  EXPECT_ROW("3 023013", notifier.Send(), strOrder);
}

TEST(Observer, MayLeaveOrEnterDuringANotification) {
  Notifier notifier;
  std::vector<std::unique_ptr<Observer>> aObservers(256);
  for (auto& pObserver : aObservers) pObserver = std::make_unique<Observer>(&notifier);
  EXPECT_EQ(notifier.Size(), 256);  // full
  aObservers[0]->m_OnNotify = [&] { aObservers[0]->RemoveFromNotifyParent(); };
  aObservers[5]->m_OnNotify = [&] { aObservers[6].reset(); };
  EXPECT_ROW("256 254", notifier.Send(), notifier.Count());

  std::vector<std::unique_ptr<Observer>> aLate(300);
  aObservers[9]->m_OnNotify = [&] {
    for (auto& pObserver : aLate) pObserver = std::make_unique<Observer>(&notifier);
  };
  EXPECT_ROW("254 554", notifier.Send(), notifier.Count());
  EXPECT_TRUE(aLate[0]->m_aSources.empty());
}

TEST(Observer, CopyNamesTheParentWithoutStandingThere) {
  auto pNotifier = std::make_unique<Notifier>();
  Observer observer(pNotifier.get());
  Observer copy(observer), assigned;
  assigned = observer;
  { Observer goes(pNotifier.get()); }
  EXPECT_TRUE(copy.Parent() == pNotifier.get() && assigned.Parent() == pNotifier.get());
  EXPECT_EQ(pNotifier->Send(), 1);
  EXPECT_TRUE(copy.m_aSources.empty());
  copy.RemoveFromNotifyParent();
  EXPECT_EQ(pNotifier->Count(), 1);
  pNotifier.reset();
  EXPECT_EQ(observer.Parent(), nullptr);
  copy.RemoveFromNotifyParent();  // the parent is gone
  Notifier other;
  EXPECT_TRUE(other.AddObserver(&observer));
}

// Whatever goes first, nothing that is gone is called or touched.
TEST(Observer, AssignedTableSharesObservers) {
  for (int iFirstToGo : {0, 1, 2}) {
    auto pFirst = std::make_unique<Notifier>();
    auto pSecond = std::make_unique<Notifier>();
    auto pShared = std::make_unique<Observer>(pFirst.get());
    auto pFormer = std::make_unique<Observer>(pSecond.get());
    *pSecond = *pFirst;
    EXPECT_EQ(pShared->Parent(), pFirst.get());
    EXPECT_EQ(pFormer->Parent(), pSecond.get());
    EXPECT_ROW("1 1 2", pSecond->Send(), pFirst->Send(), pShared->m_aSources.size());
    EXPECT_TRUE(pFormer->m_aSources.empty());
    if (iFirstToGo == 0) pFirst.reset();
    if (iFirstToGo == 1) pSecond.reset();
    if (iFirstToGo == 2) pShared.reset();
    for (Notifier* pNotifier : {pFirst.get(), pSecond.get()}) {
      EXPECT_TRUE(!pNotifier || pNotifier->Send() == (pShared ? 1 : 0));
    }
  }
}

}  // namespace
