// Point clouds in memory against plain loops over arrays of the same records: compare "ours" with
// "reference" in one run.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <tuple>
#include <utility>
#include <vector>

#include "bench/cloud_data.h"
#include "zu/numerics/affin_map3d.h"
#include "zu/numerics/select_volume3d.h"

namespace {

using namespace cloud_data;

constexpr std::size_t kArrayPoints = 2'000'000;  // 128 MB, beyond the caches

const ZuAffinMap3d& Map() {
  static const ZuAffinMap3d map =
      ZuAffinMap3d::Translate(1.0, 2.0, 3.0) * ZuAffinMap3d::RotXYZ(0.01, 0.02, 0.03);
  return map;
}
const double (&MapValues())[12] {
  static double ad[12];
  std::copy_n(Map().asDblArray(), 12, ad);
  return ad;
}

constexpr double kEye[3] = {635000.0, 635000.0, -1000.0};
constexpr double kSides[4][4] = {
    {0.9, 0.0, 0.4, 0.0}, {-0.9, 0.0, 0.4, 0.0}, {0.0, 0.9, 0.4, 0.0}, {0.0, -0.9, 0.4, 0.0}};

Zu3dSelectVolume Volume() {
  Zu3dSelectVolume volume;
  for (int i = 0; i < 4; ++i) {
    ZuPlane& plane = volume.GetPlane(i);
    plane.A() = kSides[i][0];
    plane.B() = kSides[i][1];
    plane.C() = kSides[i][2];
    plane.D() = kSides[i][3];
  }
  volume.SetEye(ZuPoint3d(kEye[0], kEye[1], kEye[2]));
  volume.StartPyramid();
  return volume;
}

struct Pair {
  ZuPointCloud ours;
  reference::Cloud theirs;
  Pair() {
    theirs.points = Records(kArrayPoints);
    Fill(ours, theirs.points);
  }
};

void BM_Transform_ours(benchmark::State& state) {
  Pair pair;
  pair.ours.Transform(Map());
  reference::Transform(pair.theirs, MapValues());
  Check(pair.ours, pair.theirs, "transformation");
  for (auto _ : state) pair.ours.Transform(Map());
}

void BM_Transform_reference(benchmark::State& state) {
  reference::Cloud cloud;
  cloud.points = Records(kArrayPoints);
  for (auto _ : state) {
    reference::Transform(cloud, MapValues());
    benchmark::DoNotOptimize(cloud.mean);  // also what nobody reads must be computed
    benchmark::DoNotOptimize(cloud.box);
  }
}

void BM_Boxes_ours(benchmark::State& state) {
  Pair pair;
  {
    ZuBoundingBox3d all, selected;
    pair.ours.UpdateBoundingBoxes(all, selected, Map());
    reference::Box theirAll, theirSelected;
    reference::Boxes(pair.theirs.points, MapValues(), theirAll, theirSelected);
    if (!Same(all, theirAll) || !Same(selected, theirSelected)) Differ("boxes");
  }
  for (auto _ : state) {
    ZuBoundingBox3d all, selected;
    benchmark::DoNotOptimize(pair.ours.UpdateBoundingBoxes(all, selected, Map()));
    benchmark::DoNotOptimize(all);
  }
}

void BM_Boxes_reference(benchmark::State& state) {
  const auto points = Records(kArrayPoints);
  for (auto _ : state) {
    reference::Box all, selected;
    reference::Boxes(points, MapValues(), all, selected);
    benchmark::DoNotOptimize(all);
    benchmark::DoNotOptimize(selected);
  }
}

void BM_Select_ours(benchmark::State& state) {
  Pair pair;
  const Zu3dSelectVolume volume = Volume();
  reference::Box box;
  if (pair.ours.Select(volume) != reference::Select(pair.theirs.points, kSides, kEye, box) ||
      !Same(pair.ours.GetSelBox(), box) || !Same(pair.ours.GetPoints(), pair.theirs.points)) {
    Differ("selection");
  }
  for (auto _ : state) benchmark::DoNotOptimize(pair.ours.Select(volume));
}

void BM_Select_reference(benchmark::State& state) {
  auto points = Records(kArrayPoints);
  for (auto _ : state) {
    reference::Box box;
    benchmark::DoNotOptimize(reference::Select(points, kSides, kEye, box));
    benchmark::DoNotOptimize(box);
  }
}

void BM_EyeNormals_ours(benchmark::State& state) {
  Pair pair;
  const ZuPoint3d eye(kEye[0], kEye[1], kEye[2]);
  pair.ours.EstimateNormals(eye);
  reference::EyeNormals(pair.theirs.points, kEye);
  if (!Same(pair.ours.GetPoints(), pair.theirs.points)) Differ("eye normals");
  for (auto _ : state) pair.ours.EstimateNormals(eye);
}

void BM_EyeNormals_reference(benchmark::State& state) {
  auto points = Records(kArrayPoints);
  for (auto _ : state) reference::EyeNormals(points, kEye);
}

void CheckDeletion(const Pair& pair) {
  ZuPointCloud cloud(pair.ours);
  auto points = pair.theirs.points;
  auto deleted = reference::DeleteSelected(points);
  if (cloud.DeleteSelected() != deleted.size() || !Same(cloud.GetPoints(), points)) {
    Differ("deletion");
  }
  for (auto& r : deleted) r.uFlags &= 0xFF;
  points.insert(points.end(), deleted.begin(), deleted.end());
  if (!cloud.UndoDelete() || !Same(cloud.GetPoints(), points)) Differ("undo");
}

void BM_Delete30_ours(benchmark::State& state) {
  Pair pair;
  if (static bool bFirst = true; std::exchange(bFirst, false)) CheckDeletion(pair);
  for (auto _ : state) {
    state.PauseTiming();
    ZuPointCloud cloud(pair.ours);
    state.ResumeTiming();
    benchmark::DoNotOptimize(cloud.DeleteSelected());
    state.PauseTiming();
    cloud = ZuPointCloud();
    state.ResumeTiming();
  }
}

void BM_Delete30_reference(benchmark::State& state) {
  const auto points = Records(kArrayPoints);
  for (auto _ : state) {
    state.PauseTiming();
    auto copy = points;
    state.ResumeTiming();
    auto undo = reference::DeleteSelected(copy);
    benchmark::DoNotOptimize(undo.data());
    state.PauseTiming();
    undo = {};
    copy = {};
    state.ResumeTiming();
  }
}

bool Lower(const reference::Record& a, const reference::Record& b) { return a.z < b.z; }

void CheckSort(const Pair& pair) {
  ZuPointCloud cloud(pair.ours);
  cloud.ZSort(true);
  std::vector<reference::Record> ours;
  for (const ZuScanPoint3d& p : cloud.GetPoints()) {
    ours.push_back({p.x, p.y, p.z, p.w, 0, 0, 0, 0, 0, 0, p.m_sFlags, p.m_uColor});
  }
  if (!std::is_sorted(ours.begin(), ours.end(), Lower)) Differ("order of sorting");
  // The same points: neither side says which of two with the same z comes first.
  auto theirs = pair.theirs.points;
  const auto all = [](const reference::Record& r) {
    return std::make_tuple(r.z, r.x, r.y, r.uColor, r.uFlags);
  };
  const auto less = [&](const auto& a, const auto& b) { return all(a) < all(b); };
  std::sort(ours.begin(), ours.end(), less);
  std::sort(theirs.begin(), theirs.end(), less);
  if (!std::equal(ours.begin(), ours.end(), theirs.begin(), theirs.end(),
                  [&](const auto& a, const auto& b) { return all(a) == all(b); })) {
    Differ("sorting");
  }
}

void BM_ZSort_ours(benchmark::State& state) {
  Pair pair;
  if (static bool bFirst = true; std::exchange(bFirst, false)) CheckSort(pair);
  for (auto _ : state) {
    state.PauseTiming();
    ZuPointCloud cloud(pair.ours);
    state.ResumeTiming();
    cloud.ZSort(true);
    state.PauseTiming();
    cloud = ZuPointCloud();
    state.ResumeTiming();
  }
}

void BM_ZSort_reference(benchmark::State& state) {
  const auto points = Records(kArrayPoints);
  for (auto _ : state) {
    state.PauseTiming();
    auto copy = points;
    state.ResumeTiming();
    std::sort(copy.begin(), copy.end(), Lower);
    state.PauseTiming();
    benchmark::DoNotOptimize(copy.data());
    copy = {};
    state.ResumeTiming();
  }
}

#define ZU_BENCH_PAIR(name)                                   \
  BENCHMARK(BM_##name##_ours)->Unit(benchmark::kMillisecond); \
  BENCHMARK(BM_##name##_reference)->Unit(benchmark::kMillisecond)

ZU_BENCH_PAIR(Transform);
ZU_BENCH_PAIR(Boxes);
ZU_BENCH_PAIR(Select);
ZU_BENCH_PAIR(EyeNormals);
ZU_BENCH_PAIR(Delete30);
ZU_BENCH_PAIR(ZSort);

}  // namespace
