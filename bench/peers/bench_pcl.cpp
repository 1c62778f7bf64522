// Point clouds beside PCL. It keeps coordinates as floats, 16 bytes a point or 48 with colour and
// normal; a scan point here has doubles and 64 bytes, and its cloud keeps box and centre.
#include <pcl/common/transforms.h>
#include <pcl/console/print.h>
#include <pcl/features/normal_3d.h>
#include <pcl/io/ascii_io.h>
#include <pcl/io/ply_io.h>
#include <pcl/point_types.h>

#include <Eigen/Geometry>

#include "bench/peers/cloud_peer.h"

namespace {

using namespace cloud_peer;

// Files here have no curvature; that need not be said each time.
const bool kQuiet = (pcl::console::setVerbosityLevel(pcl::console::L_ERROR), true);

void PlyRead_ours(benchmark::State& state) {
  ZuPointCloudContainer container;
  pcl::PointCloud<pcl::PointXYZRGBNormal> theirs;
  pcl::io::loadPLYFile(PlyFile().Path(), theirs);
  Check(
      container.ObsolteReadPlyFile(PlyFile().Path())->GetPoints(), theirs.size(),
      [&](std::size_t i) { return theirs[i].data; }, 0.0, "PLY reading");
  ReadPly(state);
}

void PlyRead_pcl(benchmark::State& state) {
  for (auto _ : state) {
    pcl::PointCloud<pcl::PointXYZRGBNormal> cloud;
    benchmark::DoNotOptimize(pcl::io::loadPLYFile(PlyFile().Path(), cloud));
  }
  state.SetBytesProcessed(state.iterations() * PlyFile().Size());
}

// PCL has no reader of its own for PTS; this is its reader of numbers in columns.
std::size_t ReadColumns(const char* szPath, pcl::PCLPointCloud2& blob) {
  pcl::ASCIIReader reader;
  reader.setExtension(".pts");
  reader.setSepChars(" ");
  reader.setInputFields<pcl::PointXYZ>();
  reader.read(szPath, blob);
  return static_cast<std::size_t>(blob.width) * blob.height;
}

void PtsRead_ours(benchmark::State& state) { ReadPts(state); }

void PtsRead_pcl(benchmark::State& state) {
  for (auto _ : state) {
    pcl::PCLPointCloud2 blob;
    if (ReadColumns(PtsFile().Path(), blob) < kPoints) cloud_data::Differ("PTS reading");
  }
  state.SetBytesProcessed(state.iterations() * PtsFile().Size());
}

pcl::PointCloud<pcl::PointXYZ> FloatCloud() {
  pcl::PointCloud<pcl::PointXYZ> cloud;
  for (const auto& r : cloud_data::Records(kPoints)) {
    cloud.push_back({static_cast<float>(r.x), static_cast<float>(r.y), static_cast<float>(r.z)});
  }
  return cloud;
}

Eigen::Affine3f TheirMap() {
  Eigen::Affine3f map = Eigen::Affine3f::Identity();
  for (int i = 0; i < 12; ++i) {
    map(i / 4, i % 4) = static_cast<float>(cloud_peer::Map().asDblArray()[i]);
  }
  return map;
}

void Transform_ours(benchmark::State& state) {
  ZuPointCloud cloud;
  cloud_data::Fill(cloud, cloud_data::Records(kPoints));
  cloud.Transform(cloud_peer::Map());
  pcl::PointCloud<pcl::PointXYZ> theirs = FloatCloud();
  pcl::transformPointCloud(theirs, theirs, TheirMap());
  Check(
      cloud.GetPoints(), theirs.size(), [&](std::size_t i) { return theirs[i].data; }, 0.5,
      "transformation");
  Transform(state);
}

void Transform_pcl(benchmark::State& state) {
  pcl::PointCloud<pcl::PointXYZ> cloud = FloatCloud();
  const Eigen::Affine3f map = TheirMap();
  for (auto _ : state) {
    pcl::transformPointCloud(cloud, cloud, map);
    benchmark::ClobberMemory();
  }
}

void PlaneFit_ours(benchmark::State& state) { PlaneFit(state); }

void PlaneFit_pcl(benchmark::State& state) {
  pcl::PointCloud<pcl::PointXYZ> cloud;
  for (const ZuPoint& p : PlanePoints()) {
    cloud.push_back(
        {static_cast<float>(p.m_dX), static_cast<float>(p.m_dY), static_cast<float>(p.m_dZ)});
  }
  Eigen::Vector4f plane;
  float fCurvature = 0.0f;
  for (auto _ : state) {
    benchmark::DoNotOptimize(pcl::computePointNormal(cloud, plane, fCurvature));
  }
  CheckPlane(plane[0], plane[1], plane[2], 1e-3);
}

BENCHMARK(PlyRead_ours)->Unit(benchmark::kMillisecond);
BENCHMARK(PlyRead_pcl)->Unit(benchmark::kMillisecond);
BENCHMARK(PtsRead_ours)->Unit(benchmark::kMillisecond);
BENCHMARK(PtsRead_pcl)->Unit(benchmark::kMillisecond);
BENCHMARK(Transform_ours)->Unit(benchmark::kMillisecond);
BENCHMARK(Transform_pcl)->Unit(benchmark::kMillisecond);
BENCHMARK(PlaneFit_ours)->Unit(benchmark::kMillisecond);
BENCHMARK(PlaneFit_pcl)->Unit(benchmark::kMillisecond);

}  // namespace
