// Camera: forward map, inverse table and its build, against the formulas and the table written out.
#include <benchmark/benchmark.h>
#include <sched.h>

#include <cmath>
#include <cstdlib>
#include <memory>
#include <random>
#include <vector>

#include "tests/support/cameras.h"
#include "tests/support/plain_camera.h"
#include "zu/photo/camera.h"

namespace {

struct Xy {
  double x, y;
};

std::vector<Xy> RasterPoints(double dHalf, int n) {
  std::vector<Xy> points;
  for (int i = 0; i < n; ++i) {
    for (int j = 0; j < n; ++j) {
      points.push_back({dHalf * (2.0 * i / n - 1.0), dHalf * (2.0 * j / n - 1.0)});
    }
  }
  return points;
}

std::vector<Xy> RandomPoints(double dHalf, int n) {
  std::mt19937 random(5);
  std::uniform_real_distribution<double> image(-dHalf, dHalf);
  std::vector<Xy> points(static_cast<size_t>(n));
  for (Xy& p : points) p = {image(random), image(random)};
  return points;
}

// The same formula for one camera, in a call of its own.
[[gnu::noinline]] void FormulaZuvo(const ZuCamera& c, double* x, double* y) {
  const double xr = *x - c.m_dXh, yr = *y - c.m_dYh;
  const double r = std::sqrt(xr * xr + yr * yr);
  double d = 0.0;
  if (r != 0.0) {
    const double r2 = r * r, r02 = c.m_dR0 * c.m_dR0;
    d = c.m_dA2 * (r2 * r2 - r02 * r02) + c.m_dA1 * (r2 - r02);
  }
  *x = xr - xr * d;
  *y = yr - yr * d;
}

[[gnu::noinline]] void FormulaCap(const ZuCamera& c, double* x, double* y) {
  plain::AdjustCap(c, *x, *y);
}

template <class Map>
void RunMap(benchmark::State& state, const std::vector<Xy>& points, Map map) {
  for (auto _ : state) {
    for (Xy p : points) {
      map(&p.x, &p.y);
      benchmark::DoNotOptimize(p);
    }
  }
  state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(points.size()));
}

// Both must give the same bits; a benchmark of something else would be worth nothing.
template <class A, class B>
void CheckEqual(const std::vector<Xy>& points, A a, B b) {
  for (const Xy& p : points) {
    Xy pa = p, pb = p;
    a(&pa.x, &pa.y);
    b(&pb.x, &pb.y);
    if (pa.x != pb.x || pa.y != pb.y) std::abort();
  }
}

void ForwardZuvo(benchmark::State& state, bool bReference) {
  const ZuCamera camera = test_cameras::ChessboardRadial();
  const auto points = RasterPoints(3.0, 64);
  const auto ours = [&](double* x, double* y) { camera.Adjust(x, y); };
  const auto reference = [&](double* x, double* y) { FormulaZuvo(camera, x, y); };
  CheckEqual(points, ours, reference);
  bReference ? RunMap(state, points, reference) : RunMap(state, points, ours);
}
BENCHMARK_CAPTURE(ForwardZuvo, ours, false);
BENCHMARK_CAPTURE(ForwardZuvo, reference, true);

void ForwardCap(benchmark::State& state, bool bReference) {
  const ZuCamera camera = test_cameras::ChessboardCap();
  const auto points = RasterPoints(3.0, 64);
  const auto ours = [&](double* x, double* y) { camera.Adjust(x, y); };
  const auto reference = [&](double* x, double* y) { FormulaCap(camera, x, y); };
  CheckEqual(points, ours, reference);
  bReference ? RunMap(state, points, reference) : RunMap(state, points, ours);
}
BENCHMARK_CAPTURE(ForwardCap, ours, false);
BENCHMARK_CAPTURE(ForwardCap, reference, true);

// The lens of a 50 mm camera, and that of the chessboard photos: 0.4 and 19 % at the corner.
enum Lens { kNormal, kBent };

void Inverse(benchmark::State& state, Lens eLens, bool bRandom, bool bReference) {
  static const ZuCamera cameras[] = {test_cameras::Calibrations()[1].camera,
                                     test_cameras::ChessboardRadial()};
  static const plain::InverseTable tables[] = {{cameras[kNormal], cameras[kNormal].m_dRMax},
                                               {cameras[kBent], cameras[kBent].m_dRMax}};
  const ZuCamera& camera = cameras[eLens];
  const plain::InverseTable& table = tables[eLens];
  const double dHalf = 0.73 * camera.m_dRMax;
  const auto points = bRandom ? RandomPoints(dHalf, 1 << 18) : RasterPoints(dHalf, 512);
  const auto ours = [&](double* x, double* y) { camera.InvAdjust(x, y); };
  const auto reference = [&](double* x, double* y) { table.LookUp(x, y); };
  CheckEqual(points, ours, reference);
  bReference ? RunMap(state, points, reference) : RunMap(state, points, ours);
}
BENCHMARK_CAPTURE(Inverse, raster_ours, kNormal, false, false);
BENCHMARK_CAPTURE(Inverse, raster_reference, kNormal, false, true);
BENCHMARK_CAPTURE(Inverse, random_ours, kNormal, true, false);
BENCHMARK_CAPTURE(Inverse, random_reference, kNormal, true, true);
BENCHMARK_CAPTURE(Inverse, bent_raster_ours, kBent, false, false);
BENCHMARK_CAPTURE(Inverse, bent_raster_reference, kBent, false, true);
BENCHMARK_CAPTURE(Inverse, bent_random_ours, kBent, true, false);
BENCHMARK_CAPTURE(Inverse, bent_random_reference, kBent, true, true);

// 609,961 forward calls into a fresh block.
void TableBuildReference(benchmark::State& state) {
  const ZuCamera camera = test_cameras::ChessboardCap();
  constexpr int kNodes = 781;
  for (auto _ : state) {
    std::unique_ptr<Xy[]> pNodes(new Xy[kNodes * kNodes]);
    for (int i = 0; i < kNodes; ++i) {
      for (int j = 0; j < kNodes; ++j) {
        Xy p{4.4 * (i / 390.0 - 1.0), 4.4 * (j / 390.0 - 1.0)};
        FormulaCap(camera, &p.x, &p.y);
        pNodes[i * kNodes + j] = p;
      }
    }
    benchmark::DoNotOptimize(pNodes.get());
  }
}
BENCHMARK(TableBuildReference)->Unit(benchmark::kMillisecond)->UseRealTime();

// Lets this thread, and those of a table that it starts, run on n processors.
class OnProcessors {
 public:
  explicit OnProcessors(int n) {
    if (sched_getaffinity(0, sizeof m_all, &m_all) != 0) std::abort();
    cpu_set_t some;
    CPU_ZERO(&some);
    for (int i = 0; i < CPU_SETSIZE && n > 0; ++i) {
      if (!CPU_ISSET(i, &m_all)) continue;
      CPU_SET(i, &some);
      --n;
    }
    m_bEnough = n == 0;
    sched_setaffinity(0, sizeof some, &some);
  }
  OnProcessors(const OnProcessors&) = delete;
  OnProcessors& operator=(const OnProcessors&) = delete;
  ~OnProcessors() { sched_setaffinity(0, sizeof m_all, &m_all); }
  bool AreEnough() const { return m_bEnough; }

 private:
  cpu_set_t m_all = {};
  bool m_bEnough = false;
};

// The table with its matrix and all else that belongs to it; a table takes as many threads as it
// has processors.
void TableBuild(benchmark::State& state) {
  const ZuCamera camera = test_cameras::ChessboardCap();
  static const plain::InverseTable table(camera, camera.m_dRMax);
  ZuCamera::DeleteInvAdjustTables();
  const OnProcessors processors(static_cast<int>(state.range(0)));
  if (!processors.AreEnough()) state.SkipWithError("too few processors");
  CheckEqual(
      RandomPoints(3.2, 1 << 16), [&](double* x, double* y) { camera.InvAdjust(x, y); },
      [&](double* x, double* y) { table.LookUp(x, y); });
  for (auto _ : state) {
    ZuCamera::DeleteInvAdjustTables();
    double x = 0.1, y = 0.1;
    benchmark::DoNotOptimize(camera.InvAdjust(&x, &y));
  }
}
BENCHMARK(TableBuild)->Arg(1)->Arg(2)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace
