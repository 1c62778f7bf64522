#include <charconv>

#include "zu/cloud/internal/cloud_text.h"
#include "zu/cloud/internal/stdio_file.h"
#include "zu/cloud/point_cloud_container.h"
#include "zu/cloud/pts_file.h"
#include "zu/foundation/internal/without_memory.h"

namespace {

// The columns that hold something, where the caller leaves them open.
eZuPtsDialect DialectOf(const ZuCloudRun& run, eZuPtsDialect eDialect, eZuIntensityScale eScale) {
  if (eDialect != eZuPtsAuto) return eDialect;
  const std::uint32_t uColors = run.UsedColors();
  if ((uColors & 0x00FFFFFFu) != 0) return eZuPtsRgb;
  return run.HasIntensities(eScale) ? eZuPtsIntensity : eZuPtsPlain;
}

}  // namespace

bool ZuWritePts(std::FILE* fp, const ZuPointCloudContainer& clouds, const ZuPtsOptions& options) {
  if (!fp) return false;
  ZuProgress progress("Writing PTS file");
  const ZuCloudRun run(clouds.First(), nullptr);
  const eZuIntensityScale eScale =
      options.m_eIntensity == eZuIntensityNone ? eZuIntensity255 : options.m_eIntensity;
  const eZuPtsDialect eDialect = DialectOf(run, options.m_eDialect, eScale);
  const std::uint64_t uCount = run.Count();
  ZuStreamWriter writer(fp);
  if (options.m_bWithCount) {
    char* pOut = writer.Room(32);
    pOut = std::to_chars(pOut, pOut + 20, uCount).ptr;
    *pOut++ = '\n';
    writer.Filled(pOut);
  }
  return ZuWriteLines(run, uCount, writer, progress, [=](char* p, const ZuScanPoint3d& point) {
    p = ZuAppendPosition(p, point);
    if (eDialect != eZuPtsPlain) p = ZuAppendAll(p, ZuIntensityOf(point, eScale));
    if (eDialect == eZuPtsRgb) {
      p = ZuAppendAll(p, point.GetRed(), point.GetGreen(), point.GetBlue());
    }
    return p;
  });
}

bool ZuWritePts(const char* szPath, const ZuPointCloudContainer& clouds,
                const ZuPtsOptions& options) {
  const auto write = [&] {
    ZuStdioFile file(szPath, "wb");
    const bool bGood = ZuWritePts(file.Get(), clouds, options);
    return file.Close() && bGood;
  };
  return zu::internal::OrWithoutMemory(write, false);
}
