// Text files of clouds for other programs: PTS with the count on a line of its own, ASCII PLY.
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstring>

#include "zu/cloud/internal/pts_line.h"
#include "zu/cloud/internal/stdio_file.h"
#include "zu/cloud/internal/stream_writer.h"
#include "zu/cloud/point_cloud_container.h"
#include "zu/foundation/internal/without_memory.h"
#include "zu/foundation/progress.h"

namespace {

constexpr std::size_t kLineSize = 512;  // bytes; nine numbers of at most 26 and the blanks between

// The shortest text that reads back to the same double, without exponent where that is short.
char* Append(char* pOut, double dValue) {
  const double dSize = std::fabs(dValue);
  const bool bFixed = dSize == 0.0 || (dSize >= 1e-7 && dSize < 1e16);
  const auto format = bFixed ? std::chars_format::fixed : std::chars_format::scientific;
  return std::to_chars(pOut, pOut + 32, dValue, format).ptr;
}

char* Append(char* pOut, int iValue) { return std::to_chars(pOut, pOut + 12, iValue).ptr; }

char* AppendAll(char* pOut) { return pOut; }
template <class First, class... Rest>
char* AppendAll(char* pOut, First first, Rest... rest) {
  *pOut++ = ' ';
  return AppendAll(Append(pOut, first), rest...);
}

char* AppendPosition(char* pOut, const ZuScanPoint3d& p) {
  return AppendAll(Append(pOut, p.x), p.y, p.z);
}

// A run over the points of one cloud, or of a cloud and those behind it in its list.
class CloudRun {
 public:
  CloudRun(const ZuPointCloud* pFirst, const ZuPointCloud* pEnd) : m_pFirst(pFirst), m_pEnd(pEnd) {}

  template <class Visit>  // bool Visit(const ZuScanPoint3d&): false ends the run
  void ForEach(Visit visit) const {
    for (const ZuPointCloud* p = m_pFirst; p != m_pEnd; p = p->Next()) {
      for (const ZuScanPoint3d& point : p->GetPoints()) {
        if (!visit(point)) return;
      }
    }
  }

  std::uint64_t Count() const {
    std::uint64_t uCount = 0;
    for (const ZuPointCloud* p = m_pFirst; p != m_pEnd; p = p->Next())
      uCount += p->GetPoints().size();
    return uCount;
  }

 private:
  const ZuPointCloud* m_pFirst;
  const ZuPointCloud* m_pEnd;
};

// Writes one line for each point; false when a write failed or the handler wanted no more.
template <class Format>  // char* Format(char*, const ZuScanPoint3d&)
bool WriteLines(const CloudRun& run, std::uint64_t uCount, ZuStreamWriter& writer,
                ZuProgress& progress, Format format) {
  std::int64_t nDone = 0;
  run.ForEach([&](const ZuScanPoint3d& p) {
    char* pEnd = format(writer.Room(kLineSize), p);
    *pEnd++ = '\n';
    writer.Filled(pEnd);
    return writer.IsGood() && progress.SetPosition(++nDone, static_cast<std::int64_t>(uCount));
  });
  return writer.Flush() && !progress.IsStopped();
}

bool WritePts(const CloudRun& run, std::FILE* fp, ZuProgress& progress) {
  std::uint32_t uColors = 0;
  run.ForEach([&uColors](const ZuScanPoint3d& p) {
    uColors |= p.m_uColor;
    return true;
  });
  const bool bIntensity = (uColors >> 24) != 0, bColor = (uColors & 0x00FFFFFFu) != 0;

  const std::uint64_t uCount = run.Count();
  ZuStreamWriter writer(fp);
  char* pOut = writer.Room(32);
  pOut = std::to_chars(pOut, pOut + 20, uCount).ptr;
  *pOut++ = '\n';
  writer.Filled(pOut);
  return WriteLines(run, uCount, writer, progress, [=](char* p, const ZuScanPoint3d& point) {
    p = AppendPosition(p, point);
    if (bIntensity) p = AppendAll(p, ZuPtsIntensityOfByte(static_cast<int>(point.m_uColor >> 24)));
    if (bColor) p = AppendAll(p, point.GetRed(), point.GetGreen(), point.GetBlue());
    return p;
  });
}

bool WritePly(const CloudRun& run, std::FILE* fp, ZuProgress& progress) {
  const std::uint64_t uCount = run.Count();
  ZuStreamWriter writer(fp);
  char* const pOut = writer.Room(kLineSize);
  const int n = std::snprintf(pOut, kLineSize,
                              "ply\nformat ascii 1.0\nelement vertex %llu\n"
                              "property double x\nproperty double y\nproperty double z\n"
                              "property double nx\nproperty double ny\nproperty double nz\n"
                              "property uchar red\nproperty uchar green\nproperty uchar blue\n"
                              "end_header\n",
                              static_cast<unsigned long long>(uCount));
  writer.Filled(pOut + n);
  return WriteLines(run, uCount, writer, progress, [](char* p, const ZuScanPoint3d& point) {
    const double dNX = point.m_fNX, dNY = point.m_fNY, dNZ = point.m_fNZ;
    return AppendAll(AppendPosition(p, point), dNX, dNY, dNZ, point.GetRed(), point.GetGreen(),
                     point.GetBlue());
  });
}

using WriteRun = bool (*)(const CloudRun&, std::FILE*, ZuProgress&);

unsigned int ExportCloud(const ZuPointCloud& cloud, std::FILE* fp, WriteRun pfnWrite) {
  if (!fp) return 0;
  ZuProgress progress("Writing point cloud");
  pfnWrite(CloudRun(&cloud, cloud.Next()), fp, progress);
  return cloud.GetPointCount();
}

int ExportFile(const ZuPointCloudContainer& container, const char* szPath, WriteRun pfnWrite,
               bool* pbStopped) {
  *pbStopped = false;
  const auto write = [&] {
    ZuStdioFile file(szPath, "wb");
    if (!file.Get()) return 0;
    ZuProgress progress("Writing point clouds");
    const bool bGood = pfnWrite(CloudRun(container.First(), nullptr), file.Get(), progress);
    *pbStopped = progress.IsStopped();
    return file.Close() && bGood ? 1 : 0;
  };
  return zu_internal::OrWithoutMemory(write, 0);
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
