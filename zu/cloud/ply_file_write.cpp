#include <bit>
#include <charconv>
#include <cstring>

#include "zu/cloud/internal/cloud_text.h"
#include "zu/cloud/internal/little_endian.h"
#include "zu/cloud/internal/stdio_file.h"
#include "zu/cloud/ply_file.h"
#include "zu/cloud/point_cloud_container.h"
#include "zu/foundation/internal/without_memory.h"

namespace {

// The properties that are written.
struct Columns {
  bool bNormals = false, bColors = false, bIntensities = false;
  eZuIntensityScale eScale = eZuIntensity255;

  Columns(const ZuCloudRun& run, eZuIntensityScale eWanted) {
    if (eWanted == eZuIntensity65535) eScale = eZuIntensity65535;
    bColors = (run.UsedColors() & 0x00FFFFFFu) != 0;
    bIntensities = run.HasIntensities(eScale);
    run.ForEach([this](const ZuScanPoint3d& p) {
      bNormals = p.HasNormVector();
      return !bNormals;
    });
  }
};

char* AppendHeader(char* pOut, const Columns& columns, eZuPlyForm eForm, std::uint64_t uCount) {
  static const char* const kForms[] = {"ascii", "binary_little_endian", "binary_big_endian"};
  const auto text = [&pOut](const char* szText) {
    const std::size_t n = std::strlen(szText);
    std::memcpy(pOut, szText, n);
    pOut += n;
  };
  text("ply\nformat ");
  text(kForms[eForm]);
  text(" 1.0\nelement vertex ");
  pOut = std::to_chars(pOut, pOut + 20, uCount).ptr;
  text("\nproperty double x\nproperty double y\nproperty double z\n");
  if (columns.bNormals) text("property float nx\nproperty float ny\nproperty float nz\n");
  if (columns.bColors) text("property uchar red\nproperty uchar green\nproperty uchar blue\n");
  if (columns.bIntensities) {
    text(columns.eScale == eZuIntensity65535 ? "property ushort intensity\n"
                                             : "property uchar intensity\n");
  }
  text("end_header\n");
  return pOut;
}

char* AppendRow(char* pOut, const ZuScanPoint3d& p, const Columns& columns) {
  pOut = ZuAppendPosition(pOut, p);
  if (columns.bNormals) pOut = ZuAppendAll(pOut, p.m_fNX, p.m_fNY, p.m_fNZ);
  if (columns.bColors) pOut = ZuAppendAll(pOut, p.GetRed(), p.GetGreen(), p.GetBlue());
  if (columns.bIntensities) pOut = ZuAppendAll(pOut, ZuIntensityOf(p, columns.eScale));
  return pOut;
}

template <bool bBig, class T>
unsigned char* Store(unsigned char* pOut, T value) {
  unsigned char* const pEnd = ZuStoreLittle(pOut, value);
  if constexpr (bBig) std::reverse(pOut, pEnd);
  return pEnd;
}

template <bool bBig>
unsigned char* StoreRow(unsigned char* p, const ZuScanPoint3d& point, const Columns& columns) {
  for (const double dValue : {point.x, point.y, point.z}) p = Store<bBig>(p, dValue);
  if (columns.bNormals) {
    for (const float fValue : {point.m_fNX, point.m_fNY, point.m_fNZ}) p = Store<bBig>(p, fValue);
  }
  if (columns.bColors) {
    for (const int iByte : {point.GetRed(), point.GetGreen(), point.GetBlue()}) {
      *p++ = static_cast<unsigned char>(iByte);
    }
  }
  if (!columns.bIntensities) return p;
  const int iIntensity = ZuIntensityOf(point, columns.eScale);
  if (columns.eScale == eZuIntensity65535) {
    return Store<bBig>(p, static_cast<std::uint16_t>(iIntensity));
  }
  *p++ = static_cast<unsigned char>(iIntensity);
  return p;
}

template <bool bBig>
bool WriteRows(const ZuCloudRun& run, std::uint64_t uCount, ZuStreamWriter& writer,
               ZuProgress& progress, const Columns& columns) {
  std::int64_t nDone = 0;
  run.ForEach([&](const ZuScanPoint3d& p) {
    writer.Filled(StoreRow<bBig>(writer.ByteRoom(kZuCloudLine), p, columns));
    return writer.IsGood() && progress.SetPosition(++nDone, static_cast<std::int64_t>(uCount));
  });
  return writer.Flush() && !progress.IsStopped();
}

}  // namespace

bool ZuWritePly(std::FILE* fp, const ZuPointCloudContainer& clouds, eZuPlyForm eForm,
                eZuIntensityScale eIntensity) {
  if (!fp) return false;
  ZuProgress progress("Writing PLY file");
  const ZuCloudRun run(clouds.First(), nullptr);
  const std::uint64_t uCount = run.Count();
  const Columns columns(run, eIntensity);
  ZuStreamWriter writer(fp);
  writer.Filled(AppendHeader(writer.Room(kZuCloudLine), columns, eForm, uCount));
  switch (eForm) {
    case eZuPlyBinaryLittle:
      return WriteRows<false>(run, uCount, writer, progress, columns);
    case eZuPlyBinaryBig:
      return WriteRows<true>(run, uCount, writer, progress, columns);
    default:
      return ZuWriteLines(run, uCount, writer, progress, [&](char* p, const ZuScanPoint3d& point) {
        return AppendRow(p, point, columns);
      });
  }
}

bool ZuWritePly(const char* szPath, const ZuPointCloudContainer& clouds, eZuPlyForm eForm,
                eZuIntensityScale eIntensity) {
  const auto write = [&] {
    ZuStdioFile file(szPath, "wb");
    const bool bGood = ZuWritePly(file.Get(), clouds, eForm, eIntensity);
    return file.Close() && bGood;
  };
  return zu::internal::OrWithoutMemory(write, false);
}
