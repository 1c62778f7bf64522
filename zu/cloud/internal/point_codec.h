// A point as it stands in a cloud file, 58 bytes: magic word, x y z, deviations, normal, flag word,
// colour word.
#pragma once

#include <cstdint>

#include "zu/cloud/file_buff.h"
#include "zu/cloud/internal/little_endian.h"
#include "zu/cloud/scan_point3d.h"

struct ZuPointCodec {
  static constexpr std::uint32_t Magic = 0xBABEBABE;

  static bool HasMagic(const unsigned char* pBytes) {
    return ZuLoadLittle<std::uint32_t>(pBytes) == Magic;
  }

  // The point whose 58 bytes start at pBytes; w keeps its value.
  static void Load(const unsigned char* pBytes, ZuScanPoint3d& p) {
    p.x = ZuLoadLittle<double>(pBytes + 4);
    p.y = ZuLoadLittle<double>(pBytes + 12);
    p.z = ZuLoadLittle<double>(pBytes + 20);
    p.m_fDX = ZuLoadLittle<float>(pBytes + 28);
    p.m_fDY = ZuLoadLittle<float>(pBytes + 32);
    p.m_fDZ = ZuLoadLittle<float>(pBytes + 36);
    p.m_fNX = ZuLoadLittle<float>(pBytes + 40);
    p.m_fNY = ZuLoadLittle<float>(pBytes + 44);
    p.m_fNZ = ZuLoadLittle<float>(pBytes + 48);
    p.m_sFlags = ZuLoadLittle<std::uint16_t>(pBytes + 52);
    p.m_uColor = ZuLoadLittle<std::uint32_t>(pBytes + 54);
  }

  static unsigned char* Store(unsigned char* pBytes, const ZuScanPoint3d& p) {
    pBytes = ZuStoreLittle(pBytes, Magic);
    for (const double dValue : {p.x, p.y, p.z}) pBytes = ZuStoreLittle(pBytes, dValue);
    for (const float fValue : {p.m_fDX, p.m_fDY, p.m_fDZ, p.m_fNX, p.m_fNY, p.m_fNZ}) {
      pBytes = ZuStoreLittle(pBytes, fValue);
    }
    pBytes = ZuStoreLittle(pBytes, p.m_sFlags);
    return ZuStoreLittle(pBytes, p.m_uColor);
  }

  // Reads one point field by field, as the end of a file needs it: a field that is cut there has
  // zeros for what is missing, a field beyond keeps its value. 0: wrong magic word.
  static int Read(ZuFileBuff& buff, ZuScanPoint3d& p);
};
