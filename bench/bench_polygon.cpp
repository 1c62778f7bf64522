// A point in a ring beside the same crossing count on arrays.
//
//   bench_polygon --benchmark_repetitions=7 --benchmark_enable_random_interleaving=true
//
// The ratio that counts: Overlap against Reference for a ring of 1000 (at most 1.0). The reference
// tests every edge of two plain arrays by the orientation of three points, four times an edge at
// most, and its answers are checked to be equal. ClosedPath shows that ordering grows with n log n.
#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdlib>
#include <random>
#include <utility>
#include <vector>

#include "bench/ring_sample.h"
#include "zu/rectify/polygon.h"
#include "zu/rectify/polygon_tools.h"

namespace {

using namespace ring_sample;

int Orientation(double x0, double y0, double x1, double y1, double x2, double y2) {
  const double dx1 = x1 - x0, dy1 = y1 - y0, dx2 = x2 - x0, dy2 = y2 - y0;
  if (dy2 * dx1 > dx2 * dy1) return 1;
  if (dy2 * dx1 == dx2 * dy1 && dx2 * dx1 >= 0.0 && dy2 * dy1 >= 0.0) {
    return dx1 * dx1 + dy1 * dy1 < dx2 * dx2 + dy2 * dy2 ? 1 : 0;
  }
  return -1;
}

bool Meet(double ax1, double ay1, double ax2, double ay2, double bx1, double by1, double bx2,
          double by2) {
  if (bx1 > bx2 || by1 > by2) {
    std::swap(bx1, bx2);
    std::swap(by1, by2);
  }
  return Orientation(ax1, ay1, ax2, ay2, bx1, by1) * Orientation(ax1, ay1, ax2, ay2, bx2, by2) <
             1 &&
         Orientation(bx1, by1, bx2, by2, ax1, ay1) * Orientation(bx1, by1, bx2, by2, ax2, ay2) < 1;
}

struct Box {
  double dXMin, dXMax, dYMin, dYMax;
};

bool Reference(const Ring& ring, const Box& box, double x, double y) {
  if (x < box.dXMin || x > box.dXMax || y < box.dYMin || y > box.dYMax) return false;
  const double dReach = std::fabs((box.dXMax - box.dXMin) * 2.0) + std::fabs(box.dXMax);
  int iCount = 0;
  std::size_t j = ring.x.size() - 1;
  for (std::size_t i = 0; i < ring.x.size(); j = i++) {
    iCount += Meet(x, y, dReach, y, ring.x[j], ring.y[j], ring.x[i], ring.y[i]);
  }
  return iCount % 2 == 1;
}

struct Sample {
  explicit Sample(std::int64_t n) : ring(Star(n)), polygon(AsPolygon(ring)), queries(Queries()) {
    box = {polygon.GetMin().m_dX, polygon.GetMax().m_dX, polygon.GetMin().m_dY,
           polygon.GetMax().m_dY};
    for (const ZuPoint& p : queries) {
      if (polygon.Overlap(p) != Reference(ring, box, p.m_dX, p.m_dY)) std::abort();
    }
  }
  Ring ring;
  ZuPolygon polygon;
  std::vector<ZuPoint> queries;
  Box box;
};

void BM_Overlap(benchmark::State& state) {
  const Sample sample(state.range(0));
  for (auto _ : state) {
    for (const ZuPoint& p : sample.queries) benchmark::DoNotOptimize(sample.polygon.Overlap(p));
  }
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(sample.queries.size()));
}

void BM_Reference(benchmark::State& state) {
  const Sample sample(state.range(0));
  for (auto _ : state) {
    for (const ZuPoint& p : sample.queries) {
      benchmark::DoNotOptimize(Reference(sample.ring, sample.box, p.m_dX, p.m_dY));
    }
  }
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(sample.queries.size()));
}

void BM_ClosedPath(benchmark::State& state) {
  std::mt19937 random(11);
  ZuPointList in, out;
  for (std::int64_t i = 0; i < state.range(0); ++i) {
    const double x = random(), y = random();
    in.Add(ZuPoint(static_cast<unsigned int>(i + 1), x, y));
  }
  for (auto _ : state) benchmark::DoNotOptimize(ZuSimpleClosedPath(in, &out));
  state.SetComplexityN(state.range(0));
}

BENCHMARK(BM_Overlap)->Arg(1000)->Arg(10);
BENCHMARK(BM_Reference)->Arg(1000)->Arg(10);
BENCHMARK(BM_ClosedPath)->RangeMultiplier(8)->Range(1 << 9, 1 << 18)->Complexity(benchmark::oNLogN);

}  // namespace
