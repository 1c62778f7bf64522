// Our side of the comparisons of point clouds with other libraries: files, a transformation and a
// plane through a million points.
#pragma once

#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <vector>

#include "bench/cloud_data.h"
#include "zu/numerics/affin_map3d.h"
#include "zu/rectify/calc_plane.h"

namespace cloud_peer {

constexpr std::size_t kPoints = 1'000'000;

inline cloud_data::SharedFile& PtsFile() {
  static cloud_data::SharedFile file(
      ".pts", [](const char* szPath) { cloud_data::MakePts(szPath, kPoints); });
  return file;
}

inline cloud_data::SharedFile& PlyFile() {
  static cloud_data::SharedFile file(
      ".ply", [](const char* szPath) { cloud_data::MakePly(szPath, kPoints); });
  return file;
}

// Coordinates agree to dTolerance: PCL keeps floats. Ends the program where they do not.
template <class Get>  // Get(i) gives something with elements 0 to 2
void Check(const std::vector<ZuScanPoint3d>& ours, std::size_t uTheirs, Get get, double dTolerance,
           const char* szWhat) {
  bool bSame = ours.size() == uTheirs;
  for (std::size_t i = 0; bSame && i < ours.size(); ++i) {
    const auto p = get(i);
    bSame = std::fabs(ours[i].x - static_cast<double>(p[0])) <= dTolerance &&
            std::fabs(ours[i].y - static_cast<double>(p[1])) <= dTolerance &&
            std::fabs(ours[i].z - static_cast<double>(p[2])) <= dTolerance;
  }
  if (!bSame) cloud_data::Differ(szWhat);
}

inline void ReadPts(benchmark::State& state) {
  for (auto _ : state) {
    ZuPointCloudContainer container;
    benchmark::DoNotOptimize(container.ReadPtsFile(PtsFile().Path()));
  }
  state.SetBytesProcessed(state.iterations() * PtsFile().Size());
}

inline void ReadPly(benchmark::State& state) {
  for (auto _ : state) {
    ZuPointCloudContainer container;
    benchmark::DoNotOptimize(container.ObsolteReadPlyFile(PlyFile().Path()));
  }
  state.SetBytesProcessed(state.iterations() * PlyFile().Size());
}

inline const ZuAffinMap3d& Map() {
  static const ZuAffinMap3d map =
      ZuAffinMap3d::Translate(1.0, 2.0, 3.0) * ZuAffinMap3d::RotXYZ(0.01, 0.02, 0.03);
  return map;
}

inline void Transform(benchmark::State& state) {
  ZuPointCloud cloud;
  cloud_data::Fill(cloud, cloud_data::Records(kPoints));
  for (auto _ : state) cloud.Transform(Map());
}

// Points on the plane z = 0.1 x + 0.2 y + 3.
inline std::vector<ZuPoint> PlanePoints() {
  std::mt19937 random(5);
  std::uniform_real_distribution<double> value(-50.0, 50.0);
  std::vector<ZuPoint> points;
  for (unsigned int i = 1; i <= kPoints; ++i) {
    const double x = value(random), y = value(random);
    points.emplace_back(i, x, y, 0.1 * x + 0.2 * y + 3.0);
  }
  return points;
}

inline void CheckPlane(double a, double b, double c, double dTolerance) {
  const double f = 1.0 / std::sqrt(1.0 + 0.01 + 0.04);
  if (std::fabs(std::fabs(a) - 0.1 * f) > dTolerance ||
      std::fabs(std::fabs(b) - 0.2 * f) > dTolerance || std::fabs(std::fabs(c) - f) > dTolerance) {
    cloud_data::Differ("plane");
  }
}

// With the residuals of all points and their feet on the plane, which the others do not give.
inline void PlaneFit(benchmark::State& state) {
  ZuPointList list;
  for (const ZuPoint& p : PlanePoints()) list.Add(p);
  ZuCalcPlane calc;
  calc.CalcPlaneFromFilteredPoints(&list, false, false);  // its copies are kept from now on
  for (auto _ : state) {
    benchmark::DoNotOptimize(calc.CalcPlaneFromFilteredPoints(&list, false, false));
  }
  CheckPlane(calc.GetPlane().A(), calc.GetPlane().B(), calc.GetPlane().C(), 1e-9);
}

}  // namespace cloud_peer
