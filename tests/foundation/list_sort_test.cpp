#include "list_records.h"
#include "tests/support/test.h"

namespace {

using Arrivals = std::vector<int>;

template <class T>
Arrivals Order(const TZuBaseListHeader<T>& list) {
  Arrivals aOrder;
  for (T* p = list.First(); p; p = list.NextOf(p)) aOrder.push_back(p->iArrival);
  return aOrder;
}

// The rule that Sort must agree with.
template <class T>
Arrivals OrderOfInsertion(List<T>& list) {
  TZuBaseListHeader<T> sorted;
  while (!list.IsEmpty()) sorted.SortedInsert(list.SubtractFirst());
  return Order(sorted);
}

struct Keys {
  const char* szName;
  std::function<unsigned int(std::mt19937&)> key;
};
const Keys kKeys[] = {
    {"few", [](auto& random) { return random() % 9; }},
    {"many", [](auto& random) { return random() % 100000; }},
    {"around 0", [](auto& random) { return random() % 2000 - 1000; }},
    {"around the half", [](auto& random) { return 0x7fffff00u + random() % 512; }},
    {"half the circle", [](auto& random) { return (random() >> 1) + 12345; }},
    {"half the circle and its ends", [](auto& random) { return random() % 2 << 31; }},
    {"three thirds", [](auto& random) { return random() % 3 * 0x55555555u; }},
    {"the whole circle", [](auto& random) { return static_cast<unsigned int>(random()); }},
    {"one far away", [](auto& random) { return random() % 200 ? random() % 50 : 0x80000010u; }},
};

template <class T>
void ExpectOrderOfInsertion() {
  std::mt19937 random(17);
  for (const Keys& keys : kKeys) {
    for (int n : {0, 1, 2, 3, 10, 31, 32, 33, 34, 47, 64, 100, 333, 1000}) {
      SCOPED_TRACE(::testing::Message() << keys.szName << ", " << n << " nodes");
      List<T> list, copy;
      for (int i = 0; i < n; ++i) list.Append({keys.key(random)});
      list.CopyTo(&copy);
      EXPECT_EQ(list.Sort(), n);
      EXPECT_EQ(Ids(list).size(), static_cast<std::size_t>(n));  // whole in both directions
      ASSERT_EQ(Order(list), OrderOfInsertion(copy));
    }
  }
}

TEST(ListSort, GivesTheOrderOfInsertionById) { ExpectOrderOfInsertion<Record>(); }

// Among them keys whose differences leave 32 bits, so that the comparison runs in circles.
TEST(ListSort, GivesTheOrderOfInsertionByKeyDifference) { ExpectOrderOfInsertion<Keyed>(); }

TEST(ListSort, SortsByIdInTheOtherDirectionAndDropsRepeatedIds) {
  std::mt19937 random(19);
  for (const Keys& keys : kKeys) {
    List<Record> list;
    for (int i = 0; i < 300; ++i) list.Append({keys.key(random)});
    std::vector<std::unique_ptr<Record>> aDropped;
    for (Record* p = list.First(); p; p = p->Next()) {
      if (list.Find(p->GetId()) != p) aDropped.emplace_back(p);
    }
    list.SortById();
    EXPECT_EQ(list.Count(), 300 - static_cast<int>(aDropped.size()));
    for (Record* p = list.First(); p && p->Next(); p = p->Next()) {
      EXPECT_LT(p->GetId(), p->Next()->GetId());
    }
    for (const auto& pRecord : aDropped) {
      EXPECT_EQ(pRecord->Next(), nullptr);
      EXPECT_FALSE(list.Exist(pRecord.get()));
    }
  }
}

// Nodes without ids see each other as greater whatever they hold.
class Bare : public ZuBaseListnode {
 public:
  explicit Bare(int i) : iArrival(i) {}
  int iArrival;
};

TEST(ListSort, TurnsAListOfBareNodesRound) {
  TZuBaseListHeader<Bare> list;
  for (int i = 0; i < 100; ++i) list.Add(new Bare(i));
  EXPECT_EQ(list.Sort(), 100);
  for (int i = 0; i < 100; ++i) EXPECT_EQ(list.Get(i)->iArrival, 99 - i);
}

class Counted : public Record {
 public:
  using Record::Record;
  int Compare(const ZuListnode* pOther) const override {
    return ++lCompared, Record::Compare(pOther);
  }
  static inline long long lCompared = 0;
};

TEST(ListSort, ComparesAboutNLogNTimes) {
  std::mt19937 random(23);
  constexpr int kCount = 1 << 15;
  List<Counted> list;
  for (int i = 0; i < kCount; ++i) list.Append({static_cast<unsigned int>(random())});
  Counted::lCompared = 0;
  list.Sort();
  EXPECT_LT(Counted::lCompared, 25LL * kCount);  // 15 levels and the check of the order
  Counted::lCompared = 0;
  list.Sort();
  EXPECT_LT(Counted::lCompared, 6LL * kCount);  // in order already
}

}  // namespace
