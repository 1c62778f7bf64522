#include "zu/foundation/list.h"

#include "list_records.h"
#include "tests/support/test.h"

namespace {

using Numbers = std::vector<unsigned int>;
using Events = std::vector<Event>;

const Event kChanged{eZuNotifyChanged, 0};

TEST(Object, ComparesTheOtherIdWithItsOwn) {
  const Record small(3), large(4000000000u);
  const ZuObject& object = small;
  EXPECT_ROW("-1 0 1 1 -1 1", object.Compare(2u), object.Compare(3u),
             object.Compare(&static_cast<const ZuObject&>(large)), small.Compare(&large),
             large.Compare(&small), small.Compare(static_cast<const ZuBaseListnode*>(&small)));
}

TEST(List, CopiedNodeHoldsItsSourcesNeighboursUntilAdded) {
  List<Record> list({1, 2, 3});
  auto* pCopy = new Record(*list.Get(1));
  EXPECT_EQ(pCopy->Next(), list.Last());
  *pCopy = Record(9);
  EXPECT_EQ(pCopy->Next(), list.Last());
  list.Add(pCopy);
  EXPECT_EQ(Ids(list), (Numbers{1, 2, 3, 9}));
}

// Every way in and out, against a plain array.
TEST(List, KeepsItsChainThroughRandomChanges) {
  std::mt19937 random(3);
  List<Record> list;
  Numbers aModel;
  for (unsigned int uId = 1; uId < 3000; ++uId) {
    const auto n = static_cast<unsigned int>(aModel.size());
    const unsigned int at = random() % (n + 1);
    const auto place = aModel.begin() + at;
    Record* pAt = list.Get(static_cast<int>(at));
    std::unique_ptr<Record> pTaken;
    const bool bThere = at < n;
    switch (random() % 8) {
      case 0:
        list.Push(new Record(uId));
        aModel.push_back(uId);
        break;
      case 1:
        list.InsertFirst(new Record(uId));
        aModel.insert(aModel.begin(), uId);
        break;
      case 2:
        list.Insert(pAt, new Record(uId));
        aModel.insert(place, uId);
        break;
      case 3:
        list.Add(Record(uId));
        aModel.push_back(uId);
        break;
      case 4:
        pTaken.reset(list.SubtractFirst());
        if (n > 0) aModel.erase(aModel.begin());
        break;
      case 5:
        pTaken.reset(list.Pop());
        if (n > 0) aModel.pop_back();
        break;
      default:
        pTaken.reset(uId % 2  ? list.Subtract(static_cast<int>(at))
                     : bThere ? list.Subtract(*place)
                              : nullptr);
        if (bThere) aModel.erase(place);
    }
    ASSERT_EQ(Ids(list), aModel);
    ASSERT_TRUE(!pTaken || (!pTaken->Next() && !pTaken->Previous()));
  }
  EXPECT_EQ(Record::iAlive, list.Count());
  list.Destroy();
  EXPECT_EQ(Record::iAlive, 0);
}

TEST(List, AnswersPlacesAsItsCallersExpect) {
  List<Record> list({5, 5, 7});
  Record foreign(5);
  EXPECT_ROW("0 -1", list.Index(list.Last()), list.Index(&foreign));
  EXPECT_TRUE(list.Exist(list.First()) && !list.IsPtrInList(&foreign));
  EXPECT_EQ(list.Find(foreign), list.Last());  // the first unequal one
  EXPECT_EQ(List<Record>({5, 5}).Find(foreign), nullptr);
  EXPECT_TRUE(list.Get(-1) == nullptr && list.Get(3) == nullptr);
  EXPECT_ROW("1 1 0", list.CountMoreThan(-1), list.CountMoreThan(2), list.CountMoreThan(3));
}

TEST(List, FindsNamesWithAndWithoutCase) {
  List<Record> list;
  list.Add(Record(1, "Tower"));
  list.Add(Record(2, "tower"));
  EXPECT_ROW("2 1", list.Find("tower", true)->GetId(), list.Find("TOWER")->GetId());
  EXPECT_EQ(list.Find("TOWER", true), nullptr);
  delete list.Subtract("toWER");
  EXPECT_EQ(Ids(list), (Numbers{2}));
}

TEST(List, GivesTheIdAWalkWouldFind) {
  EXPECT_ROW("1 8 2", List<Record>().GetFreeId(0), List<Record>({3, 7}).GetFreeId(0),
             List<Record>({UINT_MAX, 1, 0}).GetFreeId(UINT_MAX));
  std::mt19937 random(5);
  const auto draw = [&](unsigned int uEnd) { return static_cast<unsigned int>(random() % uEnd); };
  for (int i = 0; i < 200; ++i) {
    List<Record> list;
    for (unsigned int n = draw(40); n > 0; --n) list.Append({1 + draw(50)});
    const unsigned int uHint = 1 + draw(50);
    unsigned int uFree = uHint;
    while (list.Find(uFree)) ++uFree;
    EXPECT_EQ(list.GetFreeId(uHint), uFree);
  }
}

TEST(List, RenumbersToItsEnd) {
  List<Record> list({1, 2, 3, 4});
  EXPECT_EQ(list.Renumber(10, list.Get(2), 5), 2);
  EXPECT_EQ(Ids(list), (Numbers{1, 2, 10, 15}));
  EXPECT_EQ(list.Renumber(7, nullptr, 1), 4);
  EXPECT_EQ(Ids(list), (Numbers{7, 8, 9, 10}));
}

TEST(List, TellsAdditionsAndSubtractions) {
  List<Record> list;
  Recorder recorder(&list);
  EXPECT_EQ(list.Add(static_cast<Record*>(nullptr)), nullptr);
  EXPECT_EQ(list.SortedInsert(nullptr), nullptr);
  list.Append({2});
  list.SortedInsert(new Record(3));
  EXPECT_EQ(Ids(list), (Numbers{3, 2}));
  delete list.Subtract(3u);
  EXPECT_EQ(list.Subtract(static_cast<Record*>(nullptr)), nullptr);
  list.NotifyChanged(list.First(), &recorder);
  list.NotifyChanged(list.First(), nullptr);
  EXPECT_EQ(recorder.Take(), (Events{{eZuNotifyAdd, 2},
                                     {eZuNotifyAdd, 3},
                                     {eZuNotifySubtract, 3},
                                     {eZuNotifySubtract, 0},
                                     {eZuNotifyChanged, 2}}));
}

TEST(List, NestsItsNotificationLock) {
  List<Record> list({1});
  Recorder recorder(&list);
  list.SetNotify(true);
  EXPECT_TRUE(list.IsNotifyEnabled());
  for (bool b : {false, false, true}) list.SetNotify(b);
  list.Append({2});
  EXPECT_FALSE(list.IsNotifyEnabled());
  list.ForceNotify();
  EXPECT_EQ(recorder.Take(), Events{});  // what was held back is not remembered
  EXPECT_EQ(List<Record>(list).GetLock(), 0);
}

TEST(List, TellsWholeListOperationsOnce) {
  List<Record> list, other({9});
  Recorder recorder(&list), otherRecorder(&other);
  const auto expectTold = [&](bool bList, bool bOther) {
    EXPECT_EQ(recorder.Take(), bList ? Events{kChanged} : Events{});
    EXPECT_EQ(otherRecorder.Take(), bOther ? Events{kChanged} : Events{});
  };
  list.Destroy();
  expectTold(true, false);
  EXPECT_EQ(list.CopyTo(&other), 0);
  list.MoveTo(&other);
  list.MoveTo(nullptr);
  list.SetNotify(false);
  list.Append({1, 3, 2});
  list.SetNotify(true);
  expectTold(false, false);
  EXPECT_EQ(list.CopyTo(&other), 3);
  EXPECT_EQ(Ids(other), (Numbers{9, 1, 3, 2}));
  expectTold(false, true);
  list.MoveTo(&other);
  EXPECT_EQ(Ids(other), (Numbers{9, 1, 3, 2, 1, 3, 2}));
  expectTold(true, true);
  list.Swap(&other);
  EXPECT_TRUE(other.IsEmpty());
  expectTold(true, true);
  EXPECT_EQ(list.Sort(), 7);
  EXPECT_EQ(Ids(list), (Numbers{9, 3, 3, 2, 2, 1, 1}));
  expectTold(true, false);
  other.Append({2, 1, 3});
  otherRecorder.Take();
  EXPECT_TRUE(other.SortById());
  EXPECT_EQ(Ids(other), (Numbers{1, 2, 3}));
  expectTold(false, true);
  EXPECT_EQ(list.GetLock() + other.GetLock(), 0);
}

TEST(List, MovesNodesToItselfAndWhileWalking) {
  List<Record> list({1, 2}), odd;
  list.MoveTo(&list);
  EXPECT_EQ(Ids(list), (Numbers{1, 2}));
  EXPECT_EQ(list.CopyTo(&list), 2);
  list += list;
  list.Swap(&list);
  EXPECT_EQ(Ids(list), (Numbers{1, 2, 1, 2, 1, 2, 1, 2}));
  for (Record* p = list.First(); p;) p = p->GetId() % 2 ? list.Move(p, odd) : p->Next();
  EXPECT_EQ(Ids(list), (Numbers{2, 2, 2, 2}));
  EXPECT_EQ(Ids(odd), (Numbers{1, 1, 1, 1}));
}

TEST(List, ReplaceTellsAfterwardsAndSortedReplaceMeanwhile) {
  List<Record> list({4, 7, 4});
  Recorder recorder(&list);
  Record* p = list.Replace(Record(4, "new"));
  EXPECT_EQ(p, list.First());
  EXPECT_EQ(recorder.Take(), (Events{{eZuNotifySubtract, 0}, {eZuNotifyAdd, 4}}));
  list.SortedReplace(Record(4, "newer"));
  EXPECT_EQ(recorder.Take(), (Events{{eZuNotifyAdd, 4}, {eZuNotifySubtract, 4}}));
  list.Replace(Record(8));
  list.SortedReplace(Record(6));
  EXPECT_EQ(recorder.Take(), (Events{{eZuNotifyAdd, 8}, {eZuNotifyAdd, 6}}));
  EXPECT_EQ(Ids(list), (Numbers{6, 4, 7, 4, 8}));
  EXPECT_EQ(list.Replace(list.First()), list.First());
  EXPECT_EQ(list.Get(1)->GetName(), String("newer"));
}

TEST(List, AssignmentTakesTheObserverTableAndCopyDoesNot) {
  auto pSource = std::make_unique<List<Record>>(Numbers{1, 2});
  List<Record> list({7});
  Recorder recorder(pSource.get()), former(&list);
  List<Record> copy(*pSource);
  EXPECT_EQ(copy.ObserverCount(), 0);
  list = *pSource;
  EXPECT_EQ(Ids(list), (Numbers{1, 2}));
  EXPECT_EQ(former.Take(), Events{kChanged});
  EXPECT_EQ(recorder.Parent(), pSource.get());
  list.Append({3});
  EXPECT_EQ(recorder.Take(), (Events{{eZuNotifyAdd, 3}}));
  EXPECT_EQ(former.Take(), Events{});

  TZuBaseListHeader<Record>& base = copy;
  base = *pSource;
  EXPECT_EQ(copy.ObserverCount(), 1);
  pSource.reset();
  EXPECT_EQ(recorder.Take(), (Events{kChanged, {eZuNotifyDestroyed, 0}}));
  EXPECT_EQ(recorder.Parent(), nullptr);
}

TEST(List, EndsWithItsLastEventWhateverTheLock) {
  auto pList = std::make_unique<List<Record>>(Numbers{1});
  Recorder recorder(pList.get());
  pList->SetNotify(false);
  pList.reset();
  EXPECT_EQ(recorder.Take(), (Events{{eZuNotifyDestroyed, 0}}));
  EXPECT_EQ(recorder.Parent(), nullptr);
}

TEST(List, StaysInOrderWithoutMemory) {
  List<Record> list({1, 2}), target({5});
  const Record record(1);
  Record::bNoMemory = true;
  EXPECT_TRUE(!list.Add(record) && !list.Replace(record) && !list.SortedReplace(record));
  EXPECT_EQ(list.CopyTo(&target), 0);
  Record::bNoMemory = false;
  EXPECT_EQ(Ids(list), (Numbers{1, 2}));
  EXPECT_EQ(Ids(target), (Numbers{5}));
  EXPECT_EQ(target.GetLock(), 0);
}

}  // namespace
