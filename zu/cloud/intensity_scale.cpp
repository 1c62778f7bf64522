#include "zu/cloud/intensity_scale.h"

#include <cmath>

#include "zu/cloud/internal/pts_line.h"

namespace {

// The nearest whole number from 0 to uMost.
std::uint32_t Rounded(double dValue, std::uint32_t uMost) {
  if (!(dValue > 0.0)) return 0;
  return dValue >= uMost ? uMost : static_cast<std::uint32_t>(std::lround(dValue));
}

}  // namespace

int ZuIntensityOf(const ZuScanPoint3d& p, eZuIntensityScale eScale) {
  const int iByte = static_cast<int>(p.m_uColor >> 24);
  switch (eScale) {
    case eZuIntensity255:
      return iByte;
    case eZuIntensity65535:
      return iByte << 8 | (p.m_sFlags & 0xFF);
    case eZuIntensity2000:
      return ZuPtsIntensityOfByte(iByte);
    default:
      return 0;
  }
}

bool ZuSetIntensity(ZuScanPoint3d& p, double dValue, eZuIntensityScale eScale) {
  switch (eScale) {
    case eZuIntensity255:
      p.SetIntensity(static_cast<unsigned char>(Rounded(dValue, 255)));
      return dValue >= 0.0 && dValue <= 255.0;
    case eZuIntensity65535: {
      const std::uint32_t uValue = Rounded(dValue, 65535);
      p.SetIntensity(static_cast<unsigned char>(uValue >> 8));
      p.m_sFlags = static_cast<std::uint16_t>((p.m_sFlags & 0xFF00u) | (uValue & 0xFFu));
      return dValue >= 0.0 && dValue <= 65535.0;
    }
    case eZuIntensity2000:
      p.SetIntensity(static_cast<unsigned char>(ZuPtsIntensityByte(dValue)));
      return dValue >= -2000.0 && dValue <= 2000.0;
    default:
      return true;
  }
}
