#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>

#include "zu/cloud/internal/cloud_text.h"
#include "zu/cloud/internal/las_writer.h"
#include "zu/cloud/internal/little_endian.h"
#include "zu/cloud/internal/stdio_file.h"
#include "zu/cloud/point_cloud_container.h"
#include "zu/foundation/internal/without_memory.h"

namespace {

constexpr double kMostNumber = 2147483646.0;  // of a coordinate; half a step is left for rounding
constexpr double kBeyond = 1e300;             // of a coordinate; NaN is beyond, too
constexpr std::uint64_t kMostOfLas12 = 0xFFFFFFFF;  // points

// Steps of coordinates as they are written by people and programs.
constexpr double kSteps[] = {1e-3, 1e-4, 1e-5, 1e-6, 1e-7, 1e-8, 1e-9};
constexpr std::size_t kStepCount = std::size(kSteps);

// Whether a value is a whole number of steps, but for the rounding of a double.
bool IsMultiple(double dValue, double dStep) {
  constexpr double kRounding = 4.0 * std::numeric_limits<double>::epsilon();
  const double dNumber = dValue / dStep;
  return std::fabs(dNumber - std::nearbyint(dNumber)) <= kRounding * std::fabs(dNumber);
}

// A whole number times a power of ten: the double next to it, up to the 22nd power either way.
double TimesPower(double dNumber, double dExponent) {
  return dExponent < 0.0 ? dNumber / std::pow(10.0, -dExponent)
                         : dNumber * std::pow(10.0, dExponent);
}

// The power of ten at or above a positive number.
double PowerAbove(double d) { return TimesPower(1.0, std::ceil(std::log10(d))); }

// A value rounded to the power of ten at or below a positive number.
double RoundedTo(double d, double dValue) {
  const double dExponent = std::floor(std::log10(d));
  return TimesPower(std::nearbyint(dValue / TimesPower(1.0, dExponent)), dExponent);
}

std::string Shortest(double dValue) {
  char ac[40];
  return std::string(ac, ZuAppend(ac, dValue));
}

}  // namespace

bool ZuLasSurvey::IsKept(const ZuScanPoint3d& p) {
  return std::fabs(p.x) < kBeyond && std::fabs(p.y) < kBeyond && std::fabs(p.z) < kBeyond;
}

void ZuLasSurvey::Add(const ZuScanPoint3d& p) {
  if (!IsKept(p)) {
    ++m_uLeftOut;
    return;
  }
  const double ad[] = {p.x, p.y, p.z};
  for (std::size_t i = 0; i < 3; ++i) {
    Axis& axis = m_aAxes[i];
    axis.dLeast = m_uCount == 0 ? ad[i] : std::min(axis.dLeast, ad[i]);
    axis.dMost = m_uCount == 0 ? ad[i] : std::max(axis.dMost, ad[i]);
    while (axis.uDecimals < kStepCount && !IsMultiple(ad[i], kSteps[axis.uDecimals])) {
      ++axis.uDecimals;
    }
  }
  m_bColors = m_bColors || p.GetColor() != 0;
  ++m_uCount;
}

bool ZuLasSurvey::Choose(double dResolution, std::array<ZuLasGrid, 3>* pGrids,
                         double* pdFinest) const {
  *pdFinest = 0.0;
  for (std::size_t i = 0; i < 3; ++i) {
    const Axis& axis = m_aAxes[i];
    const double dLargest = std::max(std::fabs(axis.dLeast), std::fabs(axis.dMost));
    // Halves first: the extent itself may be beyond all doubles.
    const double dHalf = axis.dMost / 2.0 - axis.dLeast / 2.0;
    const double dMiddle = axis.dLeast / 2.0 + axis.dMost / 2.0;
    // A round offset near the middle leaves at most three quarters of the extent on either side. A
    // flat cloud counts as if it had the extent of some roundings of its coordinate.
    const double dReach = std::max({1.5 * dHalf, 1e-6 * dLargest, 1e-9});
    const double dFinest = PowerAbove(dReach / kMostNumber);
    const double dScale = dResolution > 0.0             ? dResolution
                          : axis.uDecimals < kStepCount ? std::max(kSteps[axis.uDecimals], dFinest)
                                                        : dFinest;
    *pdFinest = std::max(*pdFinest, dFinest);
    const bool bReaches = dLargest / dScale <= kMostNumber;
    const double dOffset = bReaches ? 0.0 : RoundedTo(dReach / 1.5, dMiddle);
    (*pGrids)[i].Set(dScale, dOffset);
    const double dFar = std::max(std::fabs(axis.dLeast - dOffset), std::fabs(axis.dMost - dOffset));
    if (!(dFar / dScale <= kMostNumber)) return false;
  }
  return true;
}

ZuLasWriter::ZuLasWriter(std::FILE* fp, const ZuLasSurvey& survey,
                         const std::array<ZuLasGrid, 3>& grids, int iMinor,
                         eZuIntensityScale eIntensity)
    : m_writer(fp),
      m_grids(grids),
      m_bLong(iMinor >= 4),
      m_bColors(survey.HasColors()),
      m_eIntensity(eIntensity == eZuIntensity65535 ? eZuIntensity65535 : eZuIntensity255) {
  WriteHeader(survey);
}

void ZuLasWriter::WriteHeader(const ZuLasSurvey& survey) {
  const std::size_t uSize = m_bLong ? ZuLasHeader::Size14 : ZuLasHeader::Size12;
  const unsigned int uFormat = (m_bLong ? 6u : 0u) + (m_bColors ? (m_bLong ? 1u : 2u) : 0u);
  const std::uint64_t uCount = survey.Count();
  unsigned char* const p = m_writer.ByteRoom(uSize);
  std::memset(p, 0, uSize);
  std::memcpy(p, "LASF", 4);
  // Points of format 6 and above have their coordinate system, if any, as well known text.
  ZuStoreLittle<std::uint16_t>(p + 6, m_bLong ? 0x10 : 0);
  p[24] = 1;
  p[25] = m_bLong ? 4 : 2;
  std::memcpy(p + 26, "OTHER", 5);
  std::memcpy(p + 58, "zu", 2);
  ZuStoreLittle<std::uint16_t>(p + 94, static_cast<std::uint16_t>(uSize));
  ZuStoreLittle<std::uint32_t>(p + 96, static_cast<std::uint32_t>(uSize));
  p[104] = static_cast<unsigned char>(uFormat);
  ZuStoreLittle<std::uint16_t>(p + 105, kZuLasFormat[uFormat].uSize);
  if (m_bLong) {
    ZuStoreLittle<std::uint64_t>(p + 247, uCount);
    ZuStoreLittle<std::uint64_t>(p + 255, uCount);  // all are first returns
  } else {
    ZuStoreLittle<std::uint32_t>(p + 107, static_cast<std::uint32_t>(uCount));
    ZuStoreLittle<std::uint32_t>(p + 111, static_cast<std::uint32_t>(uCount));
  }
  for (std::size_t i = 0; i < 3; ++i) {
    const ZuLasGrid& grid = m_grids[i];
    ZuStoreLittle(p + 131 + 8 * i, grid.Scale());
    ZuStoreLittle(p + 155 + 8 * i, grid.Offset());
    if (uCount == 0) continue;
    ZuStoreLittle(p + 179 + 16 * i, grid.ValueOf(grid.NumberOf(survey.Most(i))));
    ZuStoreLittle(p + 187 + 16 * i, grid.ValueOf(grid.NumberOf(survey.Least(i))));
  }
  m_writer.Filled(p + uSize);
}

bool ZuLasWriter::Add(const ZuScanPoint3d& p) {
  constexpr std::size_t kLargest = 36;  // bytes, of format 7
  unsigned char* const pRecord = m_writer.ByteRoom(kLargest);
  std::memset(pRecord, 0, kLargest);
  const double ad[] = {p.x, p.y, p.z};
  for (std::size_t i = 0; i < 3; ++i) ZuStoreLittle(pRecord + 4 * i, m_grids[i].NumberOf(ad[i]));
  ZuStoreLittle(pRecord + 12, static_cast<std::uint16_t>(ZuIntensityOf(p, m_eIntensity)));
  pRecord[14] = m_bLong ? 0x11 : 0x09;  // return 1 of 1
  unsigned char* pEnd = pRecord + (m_bLong ? 30 : 20);
  if (m_bColors) {
    for (const int iByte : {p.GetRed(), p.GetGreen(), p.GetBlue()}) {
      pEnd = ZuStoreLittle(pEnd, static_cast<std::uint16_t>(iByte << 8));
    }
  }
  m_writer.Filled(pEnd);
  return m_writer.IsGood();
}

ZuLasWriting ZuWriteLas(std::FILE* fp, const ZuPointCloudContainer& clouds,
                        const ZuLasOptions& options) {
  ZuLasWriting writing;
  if (!fp) return writing;
  ZuProgress progress("Writing LAS file");
  const ZuCloudRun run(clouds.First(), nullptr);
  ZuLasSurvey survey;
  run.ForEach([&survey](const ZuScanPoint3d& p) {
    survey.Add(p);
    return true;
  });
  std::array<ZuLasGrid, 3> grids;
  double dFinest = 0.0;
  const bool bFits = survey.Choose(options.m_dResolution, &grids, &dFinest);
  for (std::size_t i = 0; i < 3; ++i) {
    writing.m_adResolution[i] = grids[i].Scale();
    writing.m_adOffset[i] = grids[i].Offset();
  }
  writing.m_uLeftOut = survey.LeftOut();
  const int iMinor = options.m_iMinorVersion != 0    ? options.m_iMinorVersion
                     : survey.Count() > kMostOfLas12 ? 4
                                                     : 2;
  if (!bFits) {
    writing.m_strFault =
        "whole numbers of 32 bits are too few for this extent at a resolution of " +
        Shortest(options.m_dResolution) + "; " + Shortest(dFinest) + " would be possible";
    return writing;
  }
  if (iMinor == 2 && survey.Count() > kMostOfLas12) {
    writing.m_strFault = "LAS 1.2 counts 4294967295 points at most; LAS 1.4 would be possible";
    return writing;
  }
  ZuLasWriter writer(fp, survey, grids, iMinor, options.m_eIntensity);
  const auto nAll = static_cast<std::int64_t>(survey.Count());
  std::int64_t nDone = 0;
  run.ForEach([&](const ZuScanPoint3d& p) {
    if (!ZuLasSurvey::IsKept(p)) return true;
    return writer.Add(p) && progress.SetPosition(++nDone, nAll);
  });
  writing.m_bGood = writer.Finish() && !progress.IsStopped();
  return writing;
}

ZuLasWriting ZuWriteLas(const char* szPath, const ZuPointCloudContainer& clouds,
                        const ZuLasOptions& options) {
  const auto write = [&] {
    ZuStdioFile file(szPath, "wb");
    ZuLasWriting writing = ZuWriteLas(file.Get(), clouds, options);
    writing.m_bGood = file.Close() && writing.m_bGood;
    return writing;
  };
  return zu::internal::OrWithoutMemory(write, ZuLasWriting());
}
