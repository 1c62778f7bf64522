#include "zu/cloud/internal/las_header.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <string>
#include <utility>

#include "zu/cloud/file_buff.h"
#include "zu/cloud/internal/little_endian.h"

// size, GPS time, colour, near infrared, waveform, extended
const ZuLasFormat kZuLasFormat[kZuLasFormats] = {
    {20, 0, 0, 0, 0, false},   {28, 20, 0, 0, 0, false},  {26, 0, 20, 0, 0, false},
    {34, 20, 28, 0, 0, false}, {57, 20, 0, 0, 28, false}, {63, 20, 28, 0, 34, false},
    {30, 22, 0, 0, 0, true},   {36, 22, 30, 0, 0, true},  {38, 22, 30, 36, 0, true},
    {59, 22, 0, 0, 30, true},  {67, 22, 30, 36, 38, true}};

namespace {

bool LasFault(ZuReadFindings& findings, std::string strText, std::string strRight = {}) {
  findings.Add(eZuReadFault, 0, 0, std::move(strText), std::move(strRight));
  return false;
}

bool LasPacked(ZuReadFindings& findings) {
  return LasFault(findings, "is packed as LAZ",
                  "the LAS file of `laszip -i FILE -o OUT.las` or `pdal translate FILE OUT.las`");
}

std::string Number(std::uint64_t u) { return std::to_string(u); }

// The records of coordinate systems, by the user's name and number that mark them.
bool IsCoordinateSystem(const char* szUser, unsigned int uRecord) {
  return std::strcmp(szUser, "LASF_Projection") == 0 &&
         (uRecord == 2111 || uRecord == 2112 || (uRecord >= 34735 && uRecord <= 34737));
}

}  // namespace

void ZuLasGrid::Set(double dScale, double dOffset) {
  constexpr double kWhole = 4503599627370496.0;  // 2^52: sums below twice that are exact
  m_dScale = dScale;
  m_dOffset = dOffset;
  m_dSteps = std::nearbyint(1.0 / dScale);
  m_dWhole = std::nearbyint(dOffset * m_dSteps);
  const bool bDecimal = m_dSteps >= 1.0 && m_dSteps <= kWhole && 1.0 / m_dSteps == dScale;
  if (!bDecimal || !(std::fabs(m_dWhole) <= kWhole) || m_dWhole / m_dSteps != dOffset) {
    m_dSteps = 0.0;
  }
}

std::int32_t ZuLasGrid::NumberOf(double dValue) const {
  // Rounding alone can touch the limits.
  const double dNumber = std::nearbyint((dValue - m_dOffset) / m_dScale);
  return static_cast<std::int32_t>(std::clamp(dNumber, -2147483647.0, 2147483647.0));
}

bool ZuLasHeader::Read(ZuFileBuff& buff, ZuReadFindings& findings) {
  unsigned char aBytes[Size14] = {};
  std::size_t uHave = 0;
  const unsigned char* const pBytes = buff.Peek(Size14, &uHave);
  std::memcpy(aBytes, pBytes, std::min(uHave, Size14));
  if (uHave < 4 || std::memcmp(aBytes, "LASF", 4) != 0) {
    return LasFault(findings, "does not start with \"LASF\"");
  }
  if (!Take(aBytes, std::min(uHave, Size14), findings)) return false;
  if (uOffset < uHeaderSize || uOffset > buff.GetSize()) {
    return LasFault(findings, "the points are said to begin at byte " + Number(uOffset) +
                                  ", behind a header of " + Number(uHeaderSize) +
                                  " bytes, in a file of " + Number(buff.GetSize()));
  }
  buff.Skip(uHeaderSize);
  if (!SkipRecords(buff, findings)) return false;
  buff.Skip(uOffset - buff.GetPosition());
  return true;
}

bool ZuLasHeader::Take(const unsigned char* p, std::size_t uHave, ZuReadFindings& findings) {
  const auto word = [p](std::size_t uAt) { return ZuLoadLittle<std::uint32_t>(p + uAt); };
  uMinor = p[25];
  uHeaderSize = ZuLoadLittle<std::uint16_t>(p + 94);
  const std::size_t uLeast = uMinor >= 4 ? Size14 : uMinor == 3 ? Size13 : Size12;
  if (uHave < Size12) return LasFault(findings, "ends within its header");
  if (p[24] != 1 || uMinor > 4) {
    return LasFault(findings, "is of LAS version " + Number(p[24]) + "." + Number(uMinor),
                    "LAS 1.0 to 1.4");
  }
  if (uHeaderSize < uLeast) {
    return LasFault(findings, "says that its header has " + Number(uHeaderSize) + " bytes",
                    Number(uLeast) + " bytes, those of LAS 1." + Number(uMinor));
  }
  if (uHave < uLeast) return LasFault(findings, "ends within its header");
  uOffset = word(96);
  uRecords = word(100);
  if ((p[104] & 0xC0) != 0) return LasPacked(findings);
  uFormat = p[104];
  if (uFormat >= kZuLasFormats) {
    return LasFault(findings, "has points of format " + Number(uFormat), "a format from 0 to 10");
  }
  uRecordSize = ZuLoadLittle<std::uint16_t>(p + 105);
  if (uRecordSize < Format().uSize) {
    return LasFault(findings, "has points of " + Number(uRecordSize) + " bytes",
                    Number(Format().uSize) + " bytes or more for point format " + Number(uFormat));
  }
  uPoints = word(107);
  const std::uint64_t uLong = uMinor >= 4 ? ZuLoadLittle<std::uint64_t>(p + 247) : 0;
  if (uLong != 0 && uPoints != 0 && uLong != uPoints) {
    findings.Add(eZuReadAssumed, 0, 0,
                 "two numbers of points stand in the header, " + Number(uPoints) + " and " +
                     Number(uLong) + "; the latter, of 64 bits, is taken");
  }
  if (uLong != 0) uPoints = uLong;
  for (std::size_t i = 0; i < 3; ++i) {
    const double dScale = ZuLoadLittle<double>(p + 131 + 8 * i);
    const double dOffset = ZuLoadLittle<double>(p + 155 + 8 * i);
    grids[i].Set(dScale, dOffset);
    if (std::isfinite(dScale) && dScale != 0.0 && std::isfinite(dOffset)) continue;
    return LasFault(findings,
                    std::string("the scale or offset of ") + "xyz"[i] + " is 0 or not finite",
                    "a scale such as 0.001");
  }
  return true;
}

bool ZuLasHeader::SkipRecords(ZuFileBuff& buff, ZuReadFindings& findings) const {
  bool bSystem = false;
  std::uint32_t i = 0;
  for (; i < uRecords && uOffset - buff.GetPosition() >= RecordHeader; ++i) {
    unsigned char aBytes[RecordHeader];
    buff.Read(aBytes, RecordHeader);
    char acUser[17] = {};
    std::memcpy(acUser, aBytes + 2, 16);
    const unsigned int uRecord = ZuLoadLittle<std::uint16_t>(aBytes + 18);
    if (std::strcmp(acUser, "laszip encoded") == 0) return LasPacked(findings);
    bSystem = bSystem || IsCoordinateSystem(acUser, uRecord);
    const std::uint64_t uLength = ZuLoadLittle<std::uint16_t>(aBytes + 20);
    if (uLength > uOffset - buff.GetPosition()) break;
    buff.Skip(uLength);
  }
  if (i < uRecords) {
    findings.Add(eZuReadAssumed, 0, 0,
                 "variable length record " + Number(i + 1ull) + " of " + Number(uRecords) +
                     " reaches into the points; passed over");
  }
  if (bSystem) {
    findings.Add(eZuReadDropped, 0, 0,
                 "the coordinate system of the file, which a cloud does not keep");
  }
  return true;
}
