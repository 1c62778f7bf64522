// Scans for the benchmarks of clouds: the same points as records, as a cloud and as files.
#pragma once

#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <functional>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "bench/cloud_reference.h"
#include "zu/cloud/point_cloud_container.h"

namespace cloud_data {

[[noreturn]] inline void Differ(const char* szWhat) {
  std::fprintf(stderr, "results differ: %s\n", szWhat);
  std::exit(1);
}

inline ZuScanPoint3d AsPoint(const reference::Record& r) {
  ZuScanPoint3d p(r.x, r.y, r.z, static_cast<int>(r.uColor));
  std::memcpy(&p.m_fDX, &r.fDX, 24);
  p.m_sFlags = r.uFlags;
  p.w = r.w;
  return p;
}

inline bool Same(const std::vector<ZuScanPoint3d>& ours,
                 const std::vector<reference::Record>& theirs) {
  return std::equal(ours.begin(), ours.end(), theirs.begin(), theirs.end(),
                    [](const ZuScanPoint3d& p, const reference::Record& r) {
                      return std::memcmp(&p.x, &r.x, 32) == 0 &&
                             std::memcmp(&p.m_fDX, &r.fDX, 24) == 0 && p.m_sFlags == r.uFlags &&
                             p.m_uColor == r.uColor;
                    });
}

inline bool Same(const ZuBoundingBox3d& box, const reference::Box& r) {
  return box.Xmin() == r.dMin[0] && box.Ymin() == r.dMin[1] && box.Zmin() == r.dMin[2] &&
         box.Xmax() == r.dMax[0] && box.Ymax() == r.dMax[1] && box.Zmax() == r.dMax[2] &&
         box.GetCount() == r.uCount;
}

inline bool Same(const ZuCenterPoint3d& center, const reference::Mean& r) {
  return center.x() == r.x && center.y() == r.y && center.z() == r.z && center.GetCount() == r.n;
}

inline void Check(const ZuPointCloud& cloud, const reference::Cloud& theirs, const char* szWhat) {
  if (!Same(cloud.GetPoints(), theirs.points) || !Same(cloud.GetBox(), theirs.box) ||
      !Same(cloud.GetCenter(), theirs.mean)) {
    Differ(szWhat);
  }
}

// A scan of a site, three decimals, a third selected.
inline std::vector<reference::Record> Records(std::size_t n) {
  std::mt19937 random(1);
  std::uniform_int_distribution<int> east(630'000'000, 640'000'000), height(0, 500'000);
  std::vector<reference::Record> records(n);
  for (auto& r : records) {
    r.x = east(random) / 1000.0;
    r.y = east(random) / 1000.0;
    r.z = height(random) / 1000.0;
    r.w = 1.0;
    r.fNZ = 1.0f;
    r.uFlags = random() % 10 < 3 ? 0x100 : 0;
    r.uColor = static_cast<std::uint32_t>(random()) | 0x01000000;
  }
  return records;
}

inline void Fill(ZuPointCloud& cloud, const std::vector<reference::Record>& records) {
  cloud.Reserve(static_cast<unsigned int>(records.size()));
  for (const auto& r : records) cloud.AddPoint(AsPoint(r));
}

// x y z, intensity, red green blue.
inline void MakePts(const char* szPath, std::size_t n) {
  ZuPointCloud cloud;
  Fill(cloud, Records(n));
  std::FILE* fp = std::fopen(szPath, "wb");
  std::fprintf(fp, "%zu\n", n);
  cloud.WritePtsFile(fp, false);
  std::fclose(fp);
}

// x y z, normal, red green blue.
inline void MakePly(const char* szPath, std::size_t n) {
  std::FILE* fp = std::fopen(szPath, "wb");
  std::fprintf(fp, "ply\nformat ascii 1.0\nelement vertex %zu\n", n);
  for (const char* szName : {"x", "y", "z", "nx", "ny", "nz"}) {
    std::fprintf(fp, "property float %s\n", szName);
  }
  for (const char* szName : {"red", "green", "blue"}) {
    std::fprintf(fp, "property uchar %s\n", szName);
  }
  std::fprintf(fp, "end_header\n");
  for (const auto& r : Records(n)) {
    std::fprintf(fp, "%.6f %.6f %.6f %.4f %.4f %.4f %u %u %u\n", r.x / 1e6, r.y / 1e6, r.z / 1e6,
                 0.5, -0.25, 0.8292, r.uColor & 0xFF, (r.uColor >> 8) & 0xFF,
                 (r.uColor >> 16) & 0xFF);
  }
  std::fclose(fp);
}

// A file made when first asked for and removed at the end.
class SharedFile {
 public:
  SharedFile(const char* szEnding, std::function<void(const char*)> make)
      : m_strPath((std::filesystem::temp_directory_path() / "zu_bench_").string() +
                  std::to_string(getpid()) + szEnding),
        m_make(std::move(make)) {}
  ~SharedFile() {
    std::error_code ignored;
    std::filesystem::remove(m_strPath, ignored);
  }
  const char* Path() {
    if (m_make) std::exchange(m_make, nullptr)(m_strPath.c_str());
    return m_strPath.c_str();
  }
  std::int64_t Size() { return static_cast<std::int64_t>(std::filesystem::file_size(Path())); }

 private:
  std::string m_strPath;
  std::function<void(const char*)> m_make;
};

}  // namespace cloud_data
