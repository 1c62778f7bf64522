// Numbers and lines of the text files of clouds, and the run over the clouds of a container.
#pragma once

#include <charconv>
#include <cmath>
#include <cstdint>

#include "zu/cloud/intensity_scale.h"
#include "zu/cloud/internal/stream_writer.h"
#include "zu/cloud/point_cloud.h"
#include "zu/foundation/progress.h"

// Room for one line.
constexpr std::size_t kZuCloudLine =
    512;  // bytes; nine numbers of at most 26 and the blanks between

// The shortest text that reads back to the same number, without exponent where that is short.
template <class Float>
char* ZuAppendFloat(char* pOut, Float dValue) {
  const Float dSize = std::fabs(dValue);
  const bool bFixed = dSize == 0 || (dSize >= Float(1e-7) && dSize < Float(1e16));
  const auto format = bFixed ? std::chars_format::fixed : std::chars_format::scientific;
  return std::to_chars(pOut, pOut + 32, dValue, format).ptr;
}

inline char* ZuAppend(char* pOut, double dValue) { return ZuAppendFloat(pOut, dValue); }
inline char* ZuAppend(char* pOut, float fValue) { return ZuAppendFloat(pOut, fValue); }
inline char* ZuAppend(char* pOut, int iValue) { return std::to_chars(pOut, pOut + 12, iValue).ptr; }

inline char* ZuAppendAll(char* pOut) { return pOut; }
template <class First, class... Rest>
char* ZuAppendAll(char* pOut, First first, Rest... rest) {
  *pOut++ = ' ';
  return ZuAppendAll(ZuAppend(pOut, first), rest...);
}

inline char* ZuAppendPosition(char* pOut, const ZuScanPoint3d& p) {
  return ZuAppendAll(ZuAppend(pOut, p.x), p.y, p.z);
}

// A run over the points of one cloud, or of a cloud and those behind it in its list.
class ZuCloudRun {
 public:
  ZuCloudRun(const ZuPointCloud* pFirst, const ZuPointCloud* pEnd)
      : m_pFirst(pFirst), m_pEnd(pEnd) {}

  template <class Visit>  // bool Visit(const ZuScanPoint3d&): false ends the run
  void ForEach(Visit visit) const {
    for (const ZuPointCloud* p = m_pFirst; p != m_pEnd; p = p->Next()) {
      for (const ZuScanPoint3d& point : p->GetPoints()) {
        if (!visit(point)) return;
      }
    }
  }

  // The bits of all colour words: which bytes hold something at any point.
  std::uint32_t UsedColors() const {
    std::uint32_t uColors = 0;
    ForEach([&uColors](const ZuScanPoint3d& p) {
      uColors |= p.m_uColor;
      return true;
    });
    return uColors;
  }

  // Whether any point has an intensity; on the scale of 65,536 levels it may be in the lower half.
  bool HasIntensities(eZuIntensityScale eScale) const {
    bool bAny = false;
    ForEach([&](const ZuScanPoint3d& p) {
      bAny = p.m_uColor >> 24 != 0 || (eScale == eZuIntensity65535 && (p.m_sFlags & 0xFF) != 0);
      return !bAny;
    });
    return bAny;
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
bool ZuWriteLines(const ZuCloudRun& run, std::uint64_t uCount, ZuStreamWriter& writer,
                  ZuProgress& progress, Format format) {
  std::int64_t nDone = 0;
  run.ForEach([&](const ZuScanPoint3d& p) {
    char* pEnd = format(writer.Room(kZuCloudLine), p);
    *pEnd++ = '\n';
    writer.Filled(pEnd);
    return writer.IsGood() && progress.SetPosition(++nDone, static_cast<std::int64_t>(uCount));
  });
  return writer.Flush() && !progress.IsStopped();
}
