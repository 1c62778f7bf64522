// The similarity transformation by control points beside a singular value decomposition, and beside
// the bare sums.
//
//   bench_trafo3d --benchmark_repetitions=7 --benchmark_enable_random_interleaving=true
//
// The ratios that count: Similarity against SimilarityReference (Eigen::umeyama on matrices that
// are filled already; here two lists are matched by id first), 7 points at most 1.0, 100 points at
// most 1.5; Million against MillionReference (the same sums over the same linked points, matched by
// binary search in a sorted id index) at most 1.4, with ids in order (0) and shuffled (1).
// Both are checked to give the same result, the centres to the last bit.
#include <benchmark/benchmark.h>

#include <Eigen/Geometry>
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <numeric>
#include <random>
#include <utility>
#include <vector>

#include "zu/transform/trafo3d.h"

namespace {

void Check(bool bEqual, const char* szWhat) {
  if (bEqual) return;
  std::fprintf(stderr, "bench_trafo3d: %s differs from its reference\n", szWhat);
  std::exit(1);
}

// Source and target points with common ids and some noise.
struct Lists {
  Lists(int n, bool bShuffled) {
    std::mt19937 rng(9);
    std::normal_distribution<double> coordinate(0.0, 10.0), noise(0.0, 0.001);
    const Eigen::Matrix3d r =
        Eigen::AngleAxisd(0.7, Eigen::Vector3d(1.0, 2.0, 3.0).normalized()).toRotationMatrix();
    std::vector<int> order(static_cast<std::size_t>(n));
    std::iota(order.begin(), order.end(), 0);
    if (bShuffled) std::shuffle(order.begin(), order.end(), rng);
    a.resize(3, n);
    b.resize(3, n);
    for (int i = 0; i < n; ++i) {
      for (int k = 0; k < 3; ++k) a(k, i) = coordinate(rng);
      b.col(i) = 1.5 * r * a.col(i) + Eigen::Vector3d(100.0, 200.0, 300.0);
      for (int k = 0; k < 3; ++k) b(k, i) += noise(rng);
    }
    for (int i = 0; i < n; ++i) {
      target.Add(ZuPoint(static_cast<unsigned int>(i) + 1, b(0, i), b(1, i), b(2, i)));
      const int k = order[static_cast<std::size_t>(i)];
      source.Add(ZuPoint(static_cast<unsigned int>(k) + 1, a(0, k), a(1, k), a(2, k)));
    }
  }

  Eigen::Matrix3Xd a, b;
  ZuPointList source, target;
};

void BM_Similarity(benchmark::State& state) {
  const Lists lists(static_cast<int>(state.range(0)), false);
  const ZuSortHelper<ZuPoint> index(&lists.target);
  ZuTrafo3d trafo;
  Check(trafo.CalcByControlPoints(index, &lists.source, 3, false), "estimate");
  const Eigen::Matrix4d expected = Eigen::umeyama(lists.a, lists.b, true);
  for (int i = 1; i <= 3; ++i) {
    for (int j = 1; j <= 3; ++j) {
      const double d = trafo.m_dScale * trafo.m_mRot[i][j] - expected(i - 1, j - 1);
      Check(std::fabs(d) < 1e-9, "similarity");
    }
  }
  for (auto _ : state) {
    benchmark::DoNotOptimize(trafo.CalcByControlPoints(index, &lists.source, 3, false));
  }
}

void BM_SimilarityReference(benchmark::State& state) {
  const Lists lists(static_cast<int>(state.range(0)), false);
  for (auto _ : state) benchmark::DoNotOptimize(Eigen::umeyama(lists.a, lists.b, true));
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
  const Lists lists(kMillion, state.range(0) != 0);
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
  const Lists lists(kMillion, state.range(0) != 0);
  const Index index = SortedIndex(lists.target);
  for (auto _ : state) benchmark::DoNotOptimize(PlainSums(index, lists.source));
}

BENCHMARK(BM_Similarity)->Arg(7)->Arg(100);
BENCHMARK(BM_SimilarityReference)->Arg(7)->Arg(100);
BENCHMARK(BM_Million)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_MillionReference)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);

}  // namespace
