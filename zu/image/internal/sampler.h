// Grey values between the pixels of an image.
#pragma once

#include <cstddef>
#include <cstdint>

#include "zu/image/image.h"
#include "zu/image/internal/quick_row.h"
#include "zu/image/resample.h"

namespace zu::internal {

// One image under one kernel.
class Sampler {
 public:
  Sampler(const ZuImage& image, eZuInterpolation eKernel);

  // Colours and alpha at n positions, kTile at most, 2 or 4 values each: the colours times alpha,
  // and alpha from 0 to 1. A position that is NaN or outside the image gives zeros. Adds to what
  // stands in pf.
  void Add(const double* pdX, const double* pdY, int n, float* pf) const {
    m_pfnAdd(*this, pdX, pdY, n, pf);
  }

  // The quick way to the same, rounded, of an image of 8 bits without alpha; see quick_row.h.
  bool HasQuick() const { return m_pfnQuick != nullptr; }
  int Quick(const double* pdX, const double* pdY, int n, std::uint8_t* pOut) const {
    return m_pfnQuick(*this, pdX, pdY, n, pOut);
  }

  const ZuImage& Image() const { return *m_pImage; }
  int Width() const { return m_iWidth; }
  int Height() const { return m_iHeight; }
  bool IsInside(double x, double y) const {
    return x >= -0.5 && x <= m_iWidth - 0.5 && y >= -0.5 && y <= m_iHeight - 0.5;
  }

 private:
  const ZuImage* m_pImage;
  int m_iWidth, m_iHeight;
  void (*m_pfnAdd)(const Sampler&, const double*, const double*, int, float*) = nullptr;
  QuickRow m_pfnQuick = nullptr;
};

}  // namespace zu::internal
