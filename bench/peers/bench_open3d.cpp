// Point clouds beside Open3D, which keeps coordinates, normals and colours as doubles in arrays of
// their own.
#include <open3d/geometry/PointCloud.h>
#include <open3d/io/PointCloudIO.h>

#include <Eigen/Eigenvalues>

#include "bench/peers/cloud_peer.h"

namespace {

using namespace cloud_peer;
using open3d::geometry::PointCloud;

PointCloud ReadTheirs(const char* szPath, const char* szFormat) {
  PointCloud cloud;
  if (!open3d::io::ReadPointCloud(szPath, cloud, {szFormat, false, false})) {
    cloud_data::Differ("reading");
  }
  return cloud;
}

void PlyRead_ours(benchmark::State& state) {
  ZuPointCloudContainer container;
  const PointCloud theirs = ReadTheirs(PlyFile().Path(), "ply");
  // Ours rounds to float.
  Check(
      container.ObsolteReadPlyFile(PlyFile().Path())->GetPoints(), theirs.points_.size(),
      [&](std::size_t i) { return theirs.points_[i]; }, 1e-6, "PLY reading");
  ReadPly(state);
}

void PlyRead_open3d(benchmark::State& state) {
  for (auto _ : state) benchmark::DoNotOptimize(ReadTheirs(PlyFile().Path(), "ply"));
  state.SetBytesProcessed(state.iterations() * PlyFile().Size());
}

void PtsRead_ours(benchmark::State& state) {
  ZuPointCloudContainer container;
  const PointCloud theirs = ReadTheirs(PtsFile().Path(), "pts");
  Check(
      container.ReadPtsFile(PtsFile().Path())->GetPoints(), theirs.points_.size(),
      [&](std::size_t i) { return theirs.points_[i]; }, 0.0, "PTS reading");
  ReadPts(state);
}

void PtsRead_open3d(benchmark::State& state) {
  for (auto _ : state) benchmark::DoNotOptimize(ReadTheirs(PtsFile().Path(), "pts"));
  state.SetBytesProcessed(state.iterations() * PtsFile().Size());
}

PointCloud DoubleCloud() {
  PointCloud cloud;
  for (const auto& r : cloud_data::Records(kPoints)) cloud.points_.emplace_back(r.x, r.y, r.z);
  return cloud;
}

Eigen::Matrix4d TheirMap() {
  Eigen::Matrix4d map = Eigen::Matrix4d::Identity();
  for (int i = 0; i < 12; ++i) map(i / 4, i % 4) = cloud_peer::Map().asDblArray()[i];
  return map;
}

void Transform_ours(benchmark::State& state) {
  ZuPointCloud cloud;
  cloud_data::Fill(cloud, cloud_data::Records(kPoints));
  cloud.Transform(cloud_peer::Map());
  PointCloud theirs = DoubleCloud();
  theirs.Transform(TheirMap());
  Check(
      cloud.GetPoints(), theirs.points_.size(), [&](std::size_t i) { return theirs.points_[i]; },
      1e-8, "transformation");
  Transform(state);
}

void Transform_open3d(benchmark::State& state) {
  PointCloud cloud = DoubleCloud();
  const Eigen::Matrix4d map = TheirMap();
  for (auto _ : state) {
    cloud.Transform(map);
    benchmark::ClobberMemory();
  }
}

void PlaneFit_ours(benchmark::State& state) { PlaneFit(state); }

// It has no plane by least squares of its own; the eigenvector of the covariance is one.
void PlaneFit_open3d(benchmark::State& state) {
  PointCloud cloud;
  for (const ZuPoint& p : PlanePoints()) cloud.points_.emplace_back(p.m_dX, p.m_dY, p.m_dZ);
  Eigen::Vector3d normal;
  for (auto _ : state) {
    const auto [mean, covariance] = cloud.ComputeMeanAndCovariance();
    normal = Eigen::SelfAdjointEigenSolver<Eigen::Matrix3d>(covariance).eigenvectors().col(0);
    benchmark::DoNotOptimize(normal);
  }
  CheckPlane(normal[0], normal[1], normal[2], 1e-6);
}

BENCHMARK(PlyRead_ours)->Unit(benchmark::kMillisecond);
BENCHMARK(PlyRead_open3d)->Unit(benchmark::kMillisecond);
BENCHMARK(PtsRead_ours)->Unit(benchmark::kMillisecond);
BENCHMARK(PtsRead_open3d)->Unit(benchmark::kMillisecond);
BENCHMARK(Transform_ours)->Unit(benchmark::kMillisecond);
BENCHMARK(Transform_open3d)->Unit(benchmark::kMillisecond);
BENCHMARK(PlaneFit_ours)->Unit(benchmark::kMillisecond);
BENCHMARK(PlaneFit_open3d)->Unit(benchmark::kMillisecond);

}  // namespace
