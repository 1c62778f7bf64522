// A point in a ring beside CGAL's polygon with exact predicates.
#include <CGAL/Exact_predicates_inexact_constructions_kernel.h>
#include <CGAL/Polygon_2.h>
#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <vector>

#include "bench/ring_sample.h"

namespace {

using Kernel = CGAL::Exact_predicates_inexact_constructions_kernel;
using Polygon = CGAL::Polygon_2<Kernel>;

Polygon AsCgal(const ring_sample::Ring& ring) {
  Polygon polygon;
  for (std::size_t i = 0; i < ring.x.size(); ++i) {
    polygon.push_back(Kernel::Point_2(ring.x[i], ring.y[i]));
  }
  return polygon;
}

// Without the test for a simple polygon that the member function makes in debug builds.
bool Inside(const Polygon& polygon, const Kernel::Point_2& p) {
  return CGAL::bounded_side_2(polygon.vertices_begin(), polygon.vertices_end(), p, Kernel()) ==
         CGAL::ON_BOUNDED_SIDE;
}

void PointInRing_ours(benchmark::State& state) {
  const ring_sample::Ring ring = ring_sample::Star(state.range(0));
  const ZuPolygon polygon = ring_sample::AsPolygon(ring);
  const Polygon theirs = AsCgal(ring);
  const auto queries = ring_sample::Queries();
  for (const ZuPoint& p : queries) {
    if (polygon.Overlap(p) != Inside(theirs, {p.m_dX, p.m_dY})) {
      std::fprintf(stderr, "bench_cgal: a point lies elsewhere\n");
      std::exit(1);
    }
  }
  for (auto _ : state) {
    for (const ZuPoint& p : queries) benchmark::DoNotOptimize(polygon.Overlap(p));
  }
}

void PointInRing_cgal(benchmark::State& state) {
  const Polygon polygon = AsCgal(ring_sample::Star(state.range(0)));
  std::vector<Kernel::Point_2> queries;
  for (const ZuPoint& p : ring_sample::Queries()) queries.emplace_back(p.m_dX, p.m_dY);
  for (auto _ : state) {
    for (const auto& p : queries) benchmark::DoNotOptimize(Inside(polygon, p));
  }
}

BENCHMARK(PointInRing_ours)->Arg(1000);
BENCHMARK(PointInRing_cgal)->Arg(1000);

}  // namespace
