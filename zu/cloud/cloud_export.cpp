// Text files of clouds for other programs: PTS with the count on a line of its own, ASCII PLY.
#include <charconv>
#include <cstdint>

#include "zu/cloud/internal/cloud_text.h"
#include "zu/cloud/internal/pts_line.h"
#include "zu/cloud/internal/stdio_file.h"
#include "zu/cloud/point_cloud_container.h"
#include "zu/foundation/internal/without_memory.h"
#include "zu/foundation/progress.h"

namespace {

bool WritePts(const ZuCloudRun& run, std::FILE* fp, ZuProgress& progress) {
  const std::uint32_t uColors = run.UsedColors();
  const bool bIntensity = (uColors >> 24) != 0, bColor = (uColors & 0x00FFFFFFu) != 0;

  const std::uint64_t uCount = run.Count();
  ZuStreamWriter writer(fp);
  char* pOut = writer.Room(32);
  pOut = std::to_chars(pOut, pOut + 20, uCount).ptr;
  *pOut++ = '\n';
  writer.Filled(pOut);
  return ZuWriteLines(run, uCount, writer, progress, [=](char* p, const ZuScanPoint3d& point) {
    p = ZuAppendPosition(p, point);
    if (bIntensity)
      p = ZuAppendAll(p, ZuPtsIntensityOfByte(static_cast<int>(point.m_uColor >> 24)));
    if (bColor) p = ZuAppendAll(p, point.GetRed(), point.GetGreen(), point.GetBlue());
    return p;
  });
}

bool WritePly(const ZuCloudRun& run, std::FILE* fp, ZuProgress& progress) {
  const std::uint64_t uCount = run.Count();
  ZuStreamWriter writer(fp);
  char* const pOut = writer.Room(kZuCloudLine);
  const int n = std::snprintf(pOut, kZuCloudLine,
                              "ply\nformat ascii 1.0\nelement vertex %llu\n"
                              "property double x\nproperty double y\nproperty double z\n"
                              "property double nx\nproperty double ny\nproperty double nz\n"
                              "property uchar red\nproperty uchar green\nproperty uchar blue\n"
                              "end_header\n",
                              static_cast<unsigned long long>(uCount));
  writer.Filled(pOut + n);
  return ZuWriteLines(run, uCount, writer, progress, [](char* p, const ZuScanPoint3d& point) {
    const double dNX = point.m_fNX, dNY = point.m_fNY, dNZ = point.m_fNZ;
    return ZuAppendAll(ZuAppendPosition(p, point), dNX, dNY, dNZ, point.GetRed(), point.GetGreen(),
                       point.GetBlue());
  });
}

using WriteRun = bool (*)(const ZuCloudRun&, std::FILE*, ZuProgress&);

unsigned int ExportCloud(const ZuPointCloud& cloud, std::FILE* fp, WriteRun pfnWrite) {
  if (!fp) return 0;
  ZuProgress progress("Writing point cloud");
  pfnWrite(ZuCloudRun(&cloud, cloud.Next()), fp, progress);
  return cloud.GetPointCount();
}

int ExportFile(const ZuPointCloudContainer& container, const char* szPath, WriteRun pfnWrite,
               bool* pbStopped) {
  *pbStopped = false;
  const auto write = [&] {
    ZuStdioFile file(szPath, "wb");
    if (!file.Get()) return 0;
    ZuProgress progress("Writing point clouds");
    const bool bGood = pfnWrite(ZuCloudRun(container.First(), nullptr), file.Get(), progress);
    *pbStopped = progress.IsStopped();
    return file.Close() && bGood ? 1 : 0;
  };
  return zu::internal::OrWithoutMemory(write, 0);
}

}  // namespace

unsigned int ZuPointCloud::ExportPts(std::FILE* fp) const {
  return ExportCloud(*this, fp, WritePts);
}

unsigned int ZuPointCloud::ExportPly(std::FILE* fp) const {
  return ExportCloud(*this, fp, WritePly);
}

int ZuPointCloudContainer::ExportPtsFile(const char* szPath) const {
  return ExportFile(*this, szPath, WritePts, &m_bStopped);
}

int ZuPointCloudContainer::ExportPlyFile(const char* szPath) const {
  return ExportFile(*this, szPath, WritePly, &m_bStopped);
}
