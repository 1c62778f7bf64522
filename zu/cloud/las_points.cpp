#include "zu/cloud/internal/las_points.h"

#include <algorithm>
#include <string>

#include "zu/cloud/file_buff.h"
#include "zu/cloud/internal/little_endian.h"

namespace {

// What a point may have beside coordinates, intensity and colour; the order of m_uOther's bits.
constexpr const char* kOthersOfLas[] = {"returns",       "classes",          "scan angles",
                                        "user data",     "point source ids", "GPS times",
                                        "near infrared", "waveforms",        "extra bytes"};

std::uint16_t Word16(const unsigned char* p) { return ZuLoadLittle<std::uint16_t>(p); }

}  // namespace

std::uint64_t ZuLasPoints::Room() const { return m_buff.GetRest() / m_header.uRecordSize; }

std::size_t ZuLasPoints::Next(std::span<ZuScanPoint3d> block) {
  const auto nRead = static_cast<std::int64_t>(m_buff.GetPosition());
  if (!m_progress.SetPosition(nRead, static_cast<std::int64_t>(m_buff.GetSize()))) return 0;
  const std::size_t uSize = m_header.uRecordSize;
  const std::size_t uNeeded = m_header.Format().uSize;
  const std::uint64_t uLeft = std::min(m_header.uPoints - m_uRead, Room());
  const auto n = static_cast<std::size_t>(std::min<std::uint64_t>(block.size(), uLeft));
  std::size_t i = 0;
  while (i < n) {
    std::size_t uHave = 0;
    const unsigned char* p = m_buff.Peek(uNeeded, &uHave);
    if (uHave < uNeeded) break;  // the file became shorter
    const std::size_t uTaken = std::clamp<std::size_t>(uHave / uSize, 1, n - i);
    for (std::size_t k = 0; k < uTaken; ++k, p += uSize) block[i++] = Load(p);
    m_buff.Skip(uTaken * uSize);
  }
  m_uRead += i;
  return i;
}

ZuScanPoint3d ZuLasPoints::Load(const unsigned char* p) {
  double ad[3];
  for (std::size_t i = 0; i < 3; ++i) {
    ad[i] = m_header.grids[i].ValueOf(ZuLoadLittle<std::int32_t>(p + 4 * i));
  }
  ZuScanPoint3d point(ad[0], ad[1], ad[2], 0);
  m_intensities.Put(point, Word16(p + 12), 0, 0);
  if (const unsigned int uColor = m_header.Format().uColor) LoadColor(p + uColor, point);
  Note(p);
  return point;
}

void ZuLasPoints::LoadColor(const unsigned char* pColor, ZuScanPoint3d& p) {
  float* const apf[] = {&p.m_fDX, &p.m_fDY, &p.m_fDZ};
  for (int i = 0; i < 3; ++i) {
    const unsigned int u = Word16(pColor + 2 * i);
    *apf[i] = static_cast<float>(u);
    m_uMostColor = std::max(m_uMostColor, u);
    m_bLowColor = m_bLowColor || ((u & 0xFF) != 0 && (u & 0xFF) != u >> 8);
  }
}

void ZuLasPoints::Note(const unsigned char* p) {
  const ZuLasFormat& format = m_header.Format();
  const bool bExtended = format.bExtended;
  const unsigned int uReturns = bExtended ? p[14] >> 4 : p[14] >> 3 & 7;
  const unsigned int uClass = bExtended ? p[16] : p[15] & 0x1F;
  const unsigned int uAngle = bExtended ? Word16(p + 18) : p[16];
  const unsigned int uSource = Word16(p + (bExtended ? 20 : 18));
  const auto any = [p](unsigned int uAt, unsigned int uSize) {
    return uAt != 0 && std::any_of(p + uAt, p + uAt + uSize, [](unsigned char c) { return c; });
  };
  const bool abHas[] = {uReturns > 1,
                        uClass > 1,  // 0: never classified, 1: of no class
                        uAngle != 0,
                        p[17] != 0,
                        uSource != 0,
                        any(format.uTime, 8),
                        any(format.uNir, 2),
                        any(format.uWave, 1),
                        m_header.uRecordSize > format.uSize};
  unsigned int uBit = 1;
  for (const bool bHas : abHas) {
    m_uOther |= bHas ? uBit : 0;
    uBit <<= 1;
  }
  m_uWithheld += (bExtended ? p[15] >> 2 & 1 : p[15] >> 7);
}

void ZuLasPoints::Finish(ZuReadFindings& findings) const {
  if (m_progress.IsStopped()) {
    findings.Add(eZuReadCut, 0, 0, "reading was stopped here");
  } else if (m_uRead < m_header.uPoints) {
    findings.Add(eZuReadCut, 0, 0,
                 std::to_string(m_header.uPoints) + " points are announced, " +
                     std::to_string(m_uRead) + " are there");
  }
  std::string strOther;
  for (std::size_t i = 0; i < std::size(kOthersOfLas); ++i) {
    if ((m_uOther >> i & 1) != 0)
      strOther += (strOther.empty() ? "" : ", ") + std::string(kOthersOfLas[i]);
  }
  if (!strOther.empty()) {
    findings.Add(eZuReadDropped, 0, 0, "what a cloud does not keep: " + strOther);
  }
  if (m_uMostColor > 255 && m_bLowColor) {
    findings.Add(eZuReadAssumed, 0, 0, "colours of 0 to 65535 are taken as 0 to 255");
  }
  if (m_uWithheld > 0) {
    findings.Add(
        eZuReadAssumed, 0, 0,
        "points marked as withheld, taken like the others: " + std::to_string(m_uWithheld));
  }
}

void ZuLasPoints::Settle(std::span<ZuScanPoint3d> points) const {
  m_intensities.Settle(points, Scale());
  if (m_header.Format().uColor == 0) return;
  const int iShift = m_uMostColor > 255 ? 8 : 0;
  for (ZuScanPoint3d& p : points) {
    std::uint32_t uColor = 0;
    int iTo = 0;
    for (float* pf : {&p.m_fDX, &p.m_fDY, &p.m_fDZ}) {
      uColor |= static_cast<std::uint32_t>(*pf) >> iShift << iTo;
      *pf = 0.0f;
      iTo += 8;
    }
    p.SetColor(uColor);
  }
}
