// The intensity column of PTS files and the line that ZuScanPoint3d::WritePTS writes.
#pragma once

#include <cmath>
#include <cstdint>

#include "zu/cloud/scan_point3d.h"
#include "zu/foundation/numbers.h"

// Room for one line.
constexpr int kZuPtsLineSize = 3 * (kZuFixed9Size + 1) + 32;

// Writes the line of a point, line end included, and returns the position behind it.
char* ZuFormatPtsLine(char* pOut, const ZuScanPoint3d& p);

// The byte kept of a PTS intensity of -2000 to 2000: the integer part of (v + 2000) 256 / 4000,
// limited to 0 to 255; NaN is 0.
inline std::uint32_t ZuPtsIntensityByte(double dValue) {
  const double dByte = ((dValue + 2000.0) * 256.0) / 4000.0;
  if (!(dByte > 0.0)) return 0;
  return dByte >= 255.0 ? 255 : static_cast<std::uint32_t>(dByte);
}

// The smallest whole PTS intensity that gives this byte back.
inline int ZuPtsIntensityOfByte(int iByte) {
  return static_cast<int>(std::ceil(iByte * 15.625 - 2000.0));
}
