// The adjusted similarity transformation with all it tells, beside the closed form alone and
// Eigen's umeyama; and a million points against one pass that reads both lists.
#include <benchmark/benchmark.h>

#include <Eigen/Geometry>

#include "bench/similarity_lists.h"
#include "zu/adjust/consensus.h"
#include "zu/adjust/similarity.h"
#include "zu/transform/trafo3d.h"

namespace {

void BM_Adjusted(benchmark::State& state) {
  const SimilarityLists lists(static_cast<int>(state.range(0)), false);
  const ZuSortHelper<ZuPoint> target(&lists.target);
  for (auto _ : state) {
    benchmark::DoNotOptimize(ZuAdjustSimilarity(target, lists.source, {}));
  }
}
BENCHMARK(BM_Adjusted)->Arg(1000)->Arg(1000000)->Unit(benchmark::kMicrosecond);

void BM_ClosedForm(benchmark::State& state) {
  const SimilarityLists lists(static_cast<int>(state.range(0)), false);
  const ZuSortHelper<ZuPoint> target(&lists.target);
  for (auto _ : state) {
    ZuTrafo3d trafo;
    benchmark::DoNotOptimize(trafo.CalcByControlPoints(target, &lists.source, 3, false));
  }
}
BENCHMARK(BM_ClosedForm)->Arg(1000)->Arg(1000000)->Unit(benchmark::kMicrosecond);

void BM_Umeyama(benchmark::State& state) {
  const SimilarityLists lists(static_cast<int>(state.range(0)), false);
  Eigen::Matrix3Xd a(3, lists.a.size()), b(3, lists.b.size());
  for (std::size_t i = 0; i < lists.a.size(); ++i) {
    for (int k = 0; k < 3; ++k) {
      a(k, static_cast<Eigen::Index>(i)) = lists.a[i][static_cast<std::size_t>(k)];
      b(k, static_cast<Eigen::Index>(i)) = lists.b[i][static_cast<std::size_t>(k)];
    }
  }
  for (auto _ : state) benchmark::DoNotOptimize(Eigen::umeyama(a, b, true).eval());
}
BENCHMARK(BM_Umeyama)->Arg(1000)->Arg(1000000)->Unit(benchmark::kMicrosecond);

void BM_Consensus(benchmark::State& state) {
  const SimilarityLists lists(static_cast<int>(state.range(0)), false);
  ZuConsensusOptions options;
  options.dTolerance = 0.01;
  for (auto _ : state) {
    benchmark::DoNotOptimize(ZuFindConsensus(lists.target, lists.source, options));
  }
}
BENCHMARK(BM_Consensus)->Arg(12)->Arg(1000)->Unit(benchmark::kMicrosecond);

}  // namespace
