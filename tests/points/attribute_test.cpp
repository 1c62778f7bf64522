#include "zu/points/attribute.h"

#include "tests/support/test.h"

namespace {

std::vector<std::string> g_aLog;

class TracedAttribute : public ZuAttribute {
 public:
  using ZuAttribute::ZuAttribute;
  int OnAdd() override { return Log("add"); }
  int OnSubtract() override { return Log(m_pParent != nullptr ? "subtract" : "orphan"); }
  int OnPreMove() override { return Log("premove"); }
  int OnMove(ZuObject* pParent) override {
    ZuAttribute::OnMove(pParent);
    return Log("move");
  }

 private:
  int Log(const char* szEvent) {
    g_aLog.push_back(std::string(szEvent) + std::to_string(GetId()));
    return 1;
  }
};

class Watcher : public LinkHdl {
 public:
  explicit Watcher(const char* szName, ZuStandardNotifier* p)
      : m_strName(szName), m_Observer(p, Link(this, &Watcher::OnEvent)) {}
  long OnEvent(ZuNotifyEvent* pEvent) {
    g_aLog.push_back(m_strName + std::to_string(pEvent->m_eType));
    return 0;
  }

 private:
  std::string m_strName;
  ZuObserver m_Observer;
};

}  // namespace

TEST(AttributeList, AddSetsTheParentAndSubtractClearsIt) {
  g_aLog.clear();
  ZuObject owner(9u);
  ZuAttributeList list;
  auto* p = new TracedAttribute(1u);
  EXPECT_EQ(list.Add(p, &owner), p);
  EXPECT_EQ(p->GetParent(), &owner);
  auto* q = new TracedAttribute(2u);
  list.Add2(q);
  EXPECT_EQ(q->GetParent(), nullptr);
  EXPECT_EQ(list.Subtract(p), p);
  EXPECT_EQ(p->GetParent(), nullptr);
  EXPECT_EQ(g_aLog, (std::vector<std::string>{"add1", "subtract1"}));
  EXPECT_EQ(list.Add(nullptr, &owner), nullptr);
  EXPECT_EQ(list.Subtract(static_cast<ZuAttribute*>(nullptr)), nullptr);
  EXPECT_EQ(list.Count(), 1);
  delete p;
}

TEST(AttributeList, MoveHandsEveryNodeOverInTurn) {
  ZuObject from(1u), to(2u);
  ZuAttributeList list, dest;
  for (unsigned int u : {1u, 2u}) list.Add(new TracedAttribute(u), &from);
  dest.Add(new TracedAttribute(7u), &to);
  Watcher source("source", &list), target("target", &dest);
  g_aLog.clear();
  list.MoveAttributes(&dest, &to);
  EXPECT_EQ(g_aLog, (std::vector<std::string>{"premove1", "target2", "move1", "premove2", "target2",
                                              "move2"}));
  EXPECT_TRUE(list.IsEmpty());
  std::vector<unsigned int> ids;
  for (auto* p = dest.First(); p != nullptr; p = p->Next()) {
    ids.push_back(p->GetId());
    EXPECT_EQ(p->GetParent(), &to);
  }
  EXPECT_EQ(ids, (std::vector<unsigned int>{7, 1, 2}));

  dest.MoveAttributes(nullptr, &from);
  dest.MoveAttributes(&dest, &from);  // ends, with every node moved once
  EXPECT_ROW("3 7", dest.Count(), dest.First()->GetId());
  EXPECT_EQ(dest.First()->GetParent(), &from);
}
