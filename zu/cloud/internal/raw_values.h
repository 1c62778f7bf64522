// Intensities and colours whose scale only the whole file tells. Until its end they stand as they
// were read in the points themselves: an intensity in place of w, a colour in place of the
// deviations, none of which a text file has.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <span>

#include "zu/cloud/intensity_scale.h"
#include "zu/cloud/internal/tally.h"

class ZuRawIntensities {
 public:
  // The place in the file is that of the value.
  void Put(ZuScanPoint3d& p, double dValue, std::uint64_t uLine, std::uint64_t uColumn) {
    p.w = dValue;
    m_bAny = true;
    if (!(dValue >= 0.0 && dValue <= 255.0)) NotePlace(dValue, uLine, uColumn);
    if (std::isnan(dValue)) return;
    m_dLeast = std::min(m_dLeast, dValue);
    m_dMost = std::max(m_dMost, dValue);
    m_bFractions = m_bFractions || dValue != std::floor(dValue);
  }

  // The first scale that holds all values; those of 0 to 1 are to be multiplied by 65535.
  eZuIntensityScale Scale() const {
    if (!m_bAny) return eZuIntensityNone;
    if (m_dLeast < 0.0) return eZuIntensity2000;
    if (IsUnit()) return eZuIntensity65535;
    return m_dMost <= 255.0 ? eZuIntensity255 : eZuIntensity65535;
  }
  bool IsUnit() const { return m_dMost <= 1.0 && m_bFractions; }

  // Gives the points their intensities on the scale; returns how many had to be limited, and where
  // the first of them stands.
  ZuTally Settle(std::span<ZuScanPoint3d> points, eZuIntensityScale eScale) const {
    ZuTally limited = m_aBeyond[eScale];
    limited.uCount = 0;
    if (!m_bAny) return limited;
    const double dFactor = eScale == eZuIntensity65535 && IsUnit() ? 65535.0 : 1.0;
    for (ZuScanPoint3d& p : points) {
      const double dValue = p.w * dFactor;
      p.w = 1.0;
      limited.uCount += ZuSetIntensity(p, dValue, eScale) ? 0 : 1;
    }
    return limited;
  }

 private:
  // NaN is beyond every scale.
  void NotePlace(double dValue, std::uint64_t uLine, std::uint64_t uColumn) {
    const auto note = [&](eZuIntensityScale eScale, double dLeast, double dMost) {
      if (!(dValue >= dLeast && dValue <= dMost)) m_aBeyond[eScale].Add(uLine, uColumn);
    };
    note(eZuIntensity255, 0.0, 255.0);
    note(eZuIntensity65535, 0.0, 65535.0);
    note(eZuIntensity2000, -2000.0, 2000.0);
  }

  ZuTally m_aBeyond[4];  // by the scale: values outside it
  double m_dLeast = 0.0, m_dMost = 0.0;
  bool m_bFractions = false;
  bool m_bAny = false;
};

class ZuRawColors {
 public:
  void Put(ZuScanPoint3d& p, double dRed, double dGreen, double dBlue) {
    p.m_fDX = static_cast<float>(dRed);
    p.m_fDY = static_cast<float>(dGreen);
    p.m_fDZ = static_cast<float>(dBlue);
    m_bAny = true;
    m_fMost = std::max({m_fMost, p.m_fDX, p.m_fDY, p.m_fDZ});
  }

  // Colours of 0 to 1 where none is above, of 0 to 255 otherwise.
  bool IsUnit() const { return m_fMost <= 1.0f; }

  std::uint64_t Settle(std::span<ZuScanPoint3d> points) const {
    if (!m_bAny) return 0;
    const double dFactor = IsUnit() ? 255.0 : 1.0;
    std::uint64_t uLimited = 0;
    for (ZuScanPoint3d& p : points) {
      std::uint32_t uColor = 0;
      int iShift = 0;
      for (float* pf : {&p.m_fDX, &p.m_fDY, &p.m_fDZ}) {
        uColor |= Byte(dFactor * *pf, &uLimited) << iShift;
        *pf = 0.0f;
        iShift += 8;
      }
      p.SetColor(uColor);
    }
    return uLimited;
  }

  // The nearest byte; counts those that had to be limited, NaN among them.
  static std::uint32_t Byte(double dValue, std::uint64_t* puLimited) {
    if (dValue >= 0.0 && dValue <= 255.0) return static_cast<std::uint32_t>(dValue + 0.5);
    ++*puLimited;
    return dValue > 255.0 ? 255 : 0;
  }

 private:
  float m_fMost = 0.0f;
  bool m_bAny = false;
};
