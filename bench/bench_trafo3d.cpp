// The similarity transformation of a million control points beside the bare sums over the same
// linked points, matched by binary search in a sorted id index, with ids in order (0) and shuffled
// (1). The centres are checked to be equal to the last bit. Small sets: peers/bench_eigen.cpp.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <utility>
#include <vector>

#include "bench/similarity_lists.h"
#include "zu/transform/trafo3d.h"

namespace {

void Check(bool bEqual, const char* szWhat) {
  if (bEqual) return;
  std::fprintf(stderr, "bench_trafo3d: %s differs from its reference\n", szWhat);
  std::exit(1);
}

using Index = std::vector<std::pair<unsigned int, const ZuPoint*>>;

Index SortedIndex(const ZuPointList& list) {
  Index index;
  for (const ZuPoint* p = list.First(); p != nullptr; p = p->Next()) {
    index.emplace_back(p->GetId(), p);
  }
  std::sort(index.begin(), index.end());
  return index;
}

const ZuPoint* Find(const Index& index, unsigned int uId) {
  const auto found =
      std::lower_bound(index.begin(), index.end(), uId,
                       [](const auto& entry, unsigned int u) { return entry.first < u; });
  return found != index.end() && found->first == uId ? found->second : nullptr;
}

struct Sums {
  double adSource[3] = {}, adTarget[3] = {};  // centres
  double q = 0.0;
  double adProducts[9] = {};
};

double Centred(double dValue, double dCentre) {
  const double d = dValue - dCentre;
  return std::fabs(d) < 1e-10 ? 1e-10 : d;
}

Sums PlainSums(const Index& target, const ZuPointList& source) {
  std::vector<std::pair<const ZuPoint*, const ZuPoint*>> pairs;
  pairs.reserve(target.size());
  Sums s;
  for (const ZuPoint* p = source.First(); p != nullptr; p = p->Next()) {
    const ZuPoint* t = Find(target, p->GetId());
    if (t == nullptr) continue;
    pairs.emplace_back(p, t);
    s.adSource[0] += p->m_dX;
    s.adSource[1] += p->m_dY;
    s.adSource[2] += p->m_dZ;
    s.adTarget[0] += t->m_dX;
    s.adTarget[1] += t->m_dY;
    s.adTarget[2] += t->m_dZ;
  }
  for (int k = 0; k < 3; ++k) {
    s.adSource[k] /= static_cast<double>(pairs.size());
    s.adTarget[k] /= static_cast<double>(pairs.size());
  }
  for (const auto& [p, t] : pairs) {
    const double a[] = {Centred(p->m_dX, s.adSource[0]), Centred(p->m_dY, s.adSource[1]),
                        Centred(p->m_dZ, s.adSource[2])};
    const double b[] = {Centred(t->m_dX, s.adTarget[0]), Centred(t->m_dY, s.adTarget[1]),
                        Centred(t->m_dZ, s.adTarget[2])};
    for (int i = 0; i < 3; ++i) {
      s.q += a[i] * a[i];
      for (int j = 0; j < 3; ++j) s.adProducts[3 * i + j] += b[i] * a[j];
    }
  }
  return s;
}

constexpr int kMillion = 1000000;

void BM_Million(benchmark::State& state) {
  const SimilarityLists lists(kMillion, state.range(0) != 0);
  const ZuSortHelper<ZuPoint> index(&lists.target);
  ZuTrafo3d trafo;
  Check(trafo.CalcByControlPoints(index, &lists.source, 3, false), "estimate");
  const Sums sums = PlainSums(SortedIndex(lists.target), lists.source);
  for (int k = 0; k < 3; ++k) {
    Check(trafo.m_vSource[k + 1] == sums.adSource[k], "source centre");
    Check(trafo.m_vTarget[k + 1] == sums.adTarget[k], "target centre");
  }
  // Not stored by the estimate: tr(R^T B A^T) / q is its scale.
  double dTrace = 0.0;
  for (int i = 0; i < 9; ++i) dTrace += trafo.m_mRot.GetData()[i] * sums.adProducts[i];
  Check(std::fabs(dTrace / sums.q - trafo.m_dScale) < 1e-9, "scale");
  for (auto _ : state) {
    benchmark::DoNotOptimize(trafo.CalcByControlPoints(index, &lists.source, 3, false));
  }
}

void BM_MillionReference(benchmark::State& state) {
  const SimilarityLists lists(kMillion, state.range(0) != 0);
  const Index index = SortedIndex(lists.target);
  for (auto _ : state) benchmark::DoNotOptimize(PlainSums(index, lists.source));
}

BENCHMARK(BM_Million)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_MillionReference)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);

}  // namespace
