// Sorting and searching of lists beside plain loops over the same nodes.
//
//   bench_list --benchmark_min_time=2 --benchmark_repetitions=5
//
// The ratios that count: Sort against StableSortOfPointers (at most 3), SortHelperBuild and
// SortHelperFind against the sorted vector, FindById against the bare walk (at most 1.1).
#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <random>
#include <utility>
#include <vector>

#include "zu/foundation/list.h"
#include "zu/foundation/sort_helper.h"

namespace {

class Record : public ZuListnode {
 public:
  using ZuListnode::ZuListnode;
  Record* Next() const { return static_cast<Record*>(m_pNext); }
};

// Compared by the difference of 32-bit keys, as points are.
class Keyed : public ZuListnode {
 public:
  using ZuListnode::ZuListnode;
  virtual int Compare(ZuListnode* pOther) const {
    return static_cast<int>(m_uId - pOther->GetId());
  }
  Keyed* Next() const { return static_cast<Keyed*>(m_pNext); }
};

enum Order { kShuffled, kSorted };

// A list whose nodes lie in memory as they were added, and the nodes in that order.
template <class T>
struct Sample {
  Sample(std::int64_t iCount, Order eOrder) {
    for (std::int64_t i = 0; i < iCount; ++i) {
      aNodes.push_back(new T(static_cast<unsigned int>(iCount - i)));
    }
    if (eOrder == kShuffled) {
      std::mt19937 random(1);
      std::vector<unsigned int> aIds;
      for (T* p : aNodes) aIds.push_back(p->GetId());
      std::shuffle(aIds.begin(), aIds.end(), random);
      for (std::size_t i = 0; i < aIds.size(); ++i) aNodes[i]->SetId(aIds[i]);
    }
    for (T* p : aNodes) list.Add(p);
  }
  // The list in the order of its making.
  void Restore() {
    list.SubtractAll();
    for (T* p : aNodes) list.Add(p);
  }

  TZuListHeader<T> list;
  std::vector<T*> aNodes;
};

template <class Work>
double Seconds(Work&& work) {
  const auto start = std::chrono::steady_clock::now();
  work();
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

template <class T, Order eOrder>
void BM_Sort(benchmark::State& state) {
  Sample<T> sample(state.range(0), eOrder);
  for (auto _ : state) {
    state.SetIterationTime(Seconds([&] { sample.list.Sort(); }));
    state.PauseTiming();
    sample.Restore();
    state.ResumeTiming();
  }
}

// The reference: walks the list, sorts pointers by the ids, and says whether Sort agrees.
template <class T, Order eOrder>
void BM_StableSortOfPointers(benchmark::State& state) {
  const bool bDescending = std::is_same_v<T, Record>;
  Sample<T> sample(state.range(0), eOrder);
  std::vector<T*> aSorted;
  for (auto _ : state) {
    aSorted.clear();
    state.SetIterationTime(Seconds([&] {
      for (T* p = sample.list.First(); p; p = p->Next()) aSorted.push_back(p);
      std::stable_sort(aSorted.begin(), aSorted.end(), [=](const T* a, const T* b) {
        return bDescending ? a->GetId() > b->GetId() : a->GetId() < b->GetId();
      });
    }));
  }
  sample.list.Sort();
  T* pNode = sample.list.First();
  for (T* p : aSorted) {
    if (p != std::exchange(pNode, pNode->Next())) state.SkipWithError("the orders differ");
  }
}

#define ZU_SORT_BENCH(T, eOrder)                \
  BENCHMARK(BM_Sort<T, eOrder>)                 \
      ->Arg(1000)                               \
      ->Arg(1000000)                            \
      ->UseManualTime()                         \
      ->Unit(benchmark::kMicrosecond);          \
  BENCHMARK(BM_StableSortOfPointers<T, eOrder>) \
      ->Arg(1000)                               \
      ->Arg(1000000)                            \
      ->UseManualTime()                         \
      ->Unit(benchmark::kMicrosecond)
ZU_SORT_BENCH(Record, kShuffled);
ZU_SORT_BENCH(Keyed, kShuffled);
ZU_SORT_BENCH(Record, kSorted);

void BM_FindById(benchmark::State& state) {
  Sample<Record> sample(state.range(0), kShuffled);
  const unsigned int uLast = sample.aNodes.back()->GetId();
  if (sample.list.Find(uLast) != sample.aNodes.back()) state.SkipWithError("another node");
  for (auto _ : state) benchmark::DoNotOptimize(sample.list.Find(uLast));
}
BENCHMARK(BM_FindById)->Arg(1000)->Arg(100000);

void BM_BareWalk(benchmark::State& state) {
  Sample<Record> sample(state.range(0), kShuffled);
  unsigned int uLast = sample.aNodes.back()->GetId();
  for (auto _ : state) {
    benchmark::DoNotOptimize(uLast);
    Record* p = sample.list.First();
    while (p && p->GetId() != uLast) p = p->Next();
    benchmark::DoNotOptimize(p);
  }
}
BENCHMARK(BM_BareWalk)->Arg(1000)->Arg(100000);

using Entry = std::pair<unsigned int, Record*>;

std::vector<Entry> SortedVector(const TZuListHeader<Record>& list) {
  std::vector<Entry> aEntries;
  for (Record* p = list.First(); p; p = p->Next()) aEntries.emplace_back(p->GetId(), p);
  std::stable_sort(aEntries.begin(), aEntries.end(),
                   [](const Entry& a, const Entry& b) { return a.first < b.first; });
  return aEntries;
}

void BM_SortHelperBuild(benchmark::State& state) {
  Sample<Record> sample(state.range(0), kShuffled);
  for (auto _ : state) benchmark::DoNotOptimize(ZuSortHelper<Record>(&sample.list).Count());
}
BENCHMARK(BM_SortHelperBuild)->Arg(1000)->Arg(1000000)->Unit(benchmark::kMicrosecond);

void BM_SortedVectorBuild(benchmark::State& state) {
  Sample<Record> sample(state.range(0), kShuffled);
  for (auto _ : state) benchmark::DoNotOptimize(SortedVector(sample.list).size());
}
BENCHMARK(BM_SortedVectorBuild)->Arg(1000)->Arg(1000000)->Unit(benchmark::kMicrosecond);

// Ids in the order of the list; with iGap ids of every iGap + 1 are missing at random.
template <int iGap>
void Thin(Sample<Record>& sample) {
  std::mt19937 random(2);
  for (Record* p : sample.aNodes) {
    p->SetId(p->GetId() * (iGap + 1) + static_cast<unsigned int>(random() % (iGap + 1)));
  }
}

template <int iGap>
void BM_SortHelperFind(benchmark::State& state) {
  Sample<Record> sample(state.range(0), kShuffled);
  Thin<iGap>(sample);
  const ZuSortHelper<Record> helper(&sample.list);
  for (Record* p : sample.aNodes) {
    if (helper.Find(p->GetId()) != p) state.SkipWithError("another node");
  }
  for (auto _ : state) {
    for (Record* p : sample.aNodes) benchmark::DoNotOptimize(helper.Find(p->GetId()));
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_SortHelperFind<0>)->Arg(1000)->Arg(1000000)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_SortHelperFind<3>)->Arg(1000)->Arg(1000000)->Unit(benchmark::kMicrosecond);

template <int iGap>
void BM_SortedVectorFind(benchmark::State& state) {
  Sample<Record> sample(state.range(0), kShuffled);
  Thin<iGap>(sample);
  const std::vector<Entry> aEntries = SortedVector(sample.list);
  for (auto _ : state) {
    for (Record* p : sample.aNodes) {
      benchmark::DoNotOptimize(*std::lower_bound(
          aEntries.begin(), aEntries.end(), p->GetId(),
          [](const Entry& entry, unsigned int uId) { return entry.first < uId; }));
    }
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_SortedVectorFind<0>)->Arg(1000)->Arg(1000000)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_SortedVectorFind<3>)->Arg(1000)->Arg(1000000)->Unit(benchmark::kMicrosecond);

}  // namespace
