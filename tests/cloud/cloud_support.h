// Clouds for the tests of this folder, and comparisons that count every bit of a point.
#pragma once

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <bit>
#include <cstring>
#include <random>
#include <string>
#include <tuple>
#include <vector>

#include "zu/cloud/file_buff.h"
#include "zu/cloud/point_cloud_container.h"

// A container whose protected forms can be called.
class OpenContainer : public ZuPointCloudContainer {
 public:
  using ZuPointCloudContainer::m_uNextIdHint;
  using ZuPointCloudContainer::ObsolteReadPlyFile;
  using ZuPointCloudContainer::Read;
  using ZuPointCloudContainer::ReadPtsFile;
  using ZuPointCloudContainer::Write;
  const ZuStandardNotifier* Parent() const { return m_pNotifyParent; }
};

// A file of these bytes in memory, for tests that need thousands: no disk takes part.
class MemoryFile {
 public:
  explicit MemoryFile(const std::string& strBytes) : m_fd(memfd_create("zu_test", 0)) {
    m_strPath = "/proc/self/fd/" + std::to_string(m_fd);
    if (write(m_fd, strBytes.data(), strBytes.size()) != static_cast<ssize_t>(strBytes.size())) {
      ADD_FAILURE() << "no file in memory";
    }
  }
  ~MemoryFile() { close(m_fd); }
  MemoryFile(const MemoryFile&) = delete;
  MemoryFile& operator=(const MemoryFile&) = delete;
  const char* Path() const { return m_strPath.c_str(); }

 private:
  int m_fd;
  std::string m_strPath;
};

inline std::string SamplePath(const std::string& strName) {
  return std::string(ZU_SOURCE_DIR) + "/samples/clouds/" + strName;
}

inline auto PointBits(const ZuScanPoint3d& p) {
  const auto bits64 = [](double d) { return std::bit_cast<std::uint64_t>(d); };
  const auto bits32 = [](float f) { return std::bit_cast<std::uint32_t>(f); };
  return std::make_tuple(bits64(p.x), bits64(p.y), bits64(p.z), bits64(p.w), bits32(p.m_fDX),
                         bits32(p.m_fDY), bits32(p.m_fDZ), bits32(p.m_fNX), bits32(p.m_fNY),
                         bits32(p.m_fNZ), p.m_sFlags, p.m_uColor);
}

inline ::testing::AssertionResult SamePoints(const std::vector<ZuScanPoint3d>& a,
                                             const std::vector<ZuScanPoint3d>& b) {
  if (a.size() != b.size()) {
    return ::testing::AssertionFailure() << a.size() << " and " << b.size() << " points";
  }
  for (std::size_t i = 0; i < a.size(); ++i) {
    if (PointBits(a[i]) != PointBits(b[i])) {
      return ::testing::AssertionFailure()
             << "point " << i << ": (" << a[i].x << ", " << a[i].y << ", " << a[i].z << ") "
             << a[i].m_uColor << " and (" << b[i].x << ", " << b[i].y << ", " << b[i].z << ") "
             << b[i].m_uColor;
    }
  }
  return ::testing::AssertionSuccess();
}

inline std::vector<double> BoxValues(const ZuBoundingBox3d& box) {
  return {box.Xmin(),
          box.Ymin(),
          box.Zmin(),
          box.Xmax(),
          box.Ymax(),
          box.Zmax(),
          static_cast<double>(box.GetCount())};
}

inline std::vector<double> CenterValues(const ZuCenterPoint3d& center) {
  return {center.x(), center.y(), center.z(), static_cast<double>(center.GetCount())};
}

// Points with every field in use; about a third is selected.
inline std::vector<ZuScanPoint3d> RandomPoints(std::size_t n, unsigned int uSeed) {
  std::mt19937 random(uSeed);
  std::uniform_real_distribution<double> coordinate(-1000.0, 1000.0);
  std::vector<ZuScanPoint3d> points;
  for (std::size_t i = 0; i < n; ++i) {
    ZuScanPoint3d p(coordinate(random), coordinate(random), coordinate(random),
                    static_cast<int>(random()));
    p.m_fDX = static_cast<float>(coordinate(random));
    p.m_fDZ = static_cast<float>(coordinate(random));
    p.m_fNY = static_cast<float>(coordinate(random));
    p.m_sFlags = static_cast<std::uint16_t>(random() & 0xFF);
    p.SetSelected(random() % 3 == 0);
    points.push_back(p);
  }
  return points;
}

inline void AddPoints(ZuPointCloud& cloud, const std::vector<ZuScanPoint3d>& points) {
  for (const ZuScanPoint3d& p : points) cloud.AddPoint(p);
}

// A container of clouds with these numbers of points, with names, flags and headers of their own.
inline void FillContainer(ZuPointCloudContainer& container, const std::vector<std::size_t>& sizes) {
  unsigned int uSeed = 1;
  for (const std::size_t n : sizes) {
    const std::string strName = "cloud " + std::to_string(uSeed);
    ZuPointCloud* pCloud = container.AddCloud(0, strName.c_str());
    pCloud->SetFlag(static_cast<int>(16 * uSeed));
    ZuScanHeader& header = pCloud->GetHeader();
    header.m_uWord = 7 * uSeed;
    header.m_iImportStart = 1111111111;
    header.m_adPairs[3][1] = 0.25 * uSeed;
    header.m_adTriples[2][0] = -3.0;
    std::strcpy(header.m_aszTexts[1], "thirty bytes without an end...");
    std::strcpy(header.m_szText, "scanner");
    header.m_auWords[9] = 99;
    header.m_auLongs[9] = 1234567890123ull;
    AddPoints(*pCloud, RandomPoints(n, uSeed++));
  }
}
