#include "zu/image/internal/sampler.h"

#include <algorithm>
#include <cstring>
#include <limits>

#include "zu/image/internal/kernels.h"
#include "zu/image/internal/tile_map.h"

namespace zu::internal {

namespace {

// Four neighbouring samples as numbers, in vectors of the compiler: left to itself it takes the
// samples one by one.
using Four = float __attribute__((vector_size(16)));
using FourWhole = int __attribute__((vector_size(16)));
using FourBytes = std::uint8_t __attribute__((vector_size(4)));
using FourShorts = std::uint16_t __attribute__((vector_size(8)));

template <class Samples>
Four Loaded(const void* p) {
  Samples samples;
  std::memcpy(&samples, p, sizeof(samples));
  return __builtin_convertvector(__builtin_convertvector(samples, FourWhole), Four);
}

Four LoadFour(const std::uint8_t* p) { return Loaded<FourBytes>(p); }
Four LoadFour(const std::uint16_t* p) { return Loaded<FourShorts>(p); }
Four LoadFour(const float* p) {
  Four samples;
  std::memcpy(&samples, p, sizeof(samples));
  return samples;
}

// The weighted sum over a patch of kTaps x kTaps pixels of C values.
template <class Kernel, int C, class T>
void Sum(const T* p, std::ptrdiff_t nRow, const float* wx, const float* wy, float* pfSum) {
  constexpr int kRow = Kernel::kTaps * C, kFours = kRow / 4;
  alignas(16) float af[kRow];
  if constexpr (kRow % 4 == 0) {
    Four aSum[kFours] = {};
    for (int j = 0; j < Kernel::kTaps; ++j, p += nRow) {
      for (int k = 0; k < kFours; ++k) aSum[k] += wy[j] * LoadFour(p + 4 * k);
    }
    std::memcpy(af, aSum, sizeof(af));
  } else {
    for (int k = 0; k < kRow; ++k) af[k] = 0.0f;
    for (int j = 0; j < Kernel::kTaps; ++j, p += nRow) {
      for (int k = 0; k < kRow; ++k) af[k] += wy[j] * static_cast<float>(p[k]);
    }
  }
  for (int c = 0; c < C; ++c) {
    float fSum = 0.0f;
    for (int i = 0; i < Kernel::kTaps; ++i) fSum += wx[i] * af[i * C + c];
    pfSum[c] = fSum;
  }
}

// A pixel of the image or of its border, colours times alpha where it has one.
template <class T, int C>
void Pixel(const Sampler& sampler, int x, int y, float* pf) {
  x = std::clamp(x, 0, sampler.Width() - 1);
  y = std::clamp(y, 0, sampler.Height() - 1);
  const T* p = sampler.Image().GetRow<T>(y) + static_cast<std::ptrdiff_t>(x) * C;
  for (int c = 0; c < C; ++c) pf[c] = static_cast<float>(p[c]);
  if constexpr (C % 2 == 0) {
    const float fAlpha = pf[C - 1] / static_cast<float>(std::numeric_limits<T>::max());
    for (int c = 0; c < C - 1; ++c) pf[c] *= fAlpha;
    pf[C - 1] = fAlpha;
  }
}

// Places of up to kTile positions and the weights there.
template <class Kernel>
struct Places {
  Places(const Sampler& sampler, const double* pdX, const double* pdY, int n) {
    for (int i = 0; i < n; ++i) {
      inside[i] = sampler.IsInside(pdX[i], pdY[i]);
      const double dX = inside[i] ? pdX[i] + 1.0 : 1.0, dY = inside[i] ? pdY[i] + 1.0 : 1.0;
      x[i] = static_cast<int>(dX);  // at least 0.5
      y[i] = static_cast<int>(dY);
      fx[i] = static_cast<float>(dX - x[i]);
      fy[i] = static_cast<float>(dY - y[i]);
      x[i] -= 1 + Kernel::kBefore;
      y[i] -= 1 + Kernel::kBefore;
    }
    for (int i = 0; i < n; ++i) Kernel::Weights(fx[i], wx[i]);
    for (int i = 0; i < n; ++i) Kernel::Weights(fy[i], wy[i]);
  }

  bool inside[kTile];
  int x[kTile], y[kTile];  // the first pixel under the kernel
  float fx[kTile], fy[kTile];
  float wx[kTile][Kernel::kTaps], wy[kTile][Kernel::kTaps];
};

// The sum at place i, from the image or, where the kernel reaches beyond it, from a patch.
template <class T, int C, class Kernel>
void SumAt(const Sampler& sampler, const Places<Kernel>& places, int i, float* pf) {
  constexpr int kTaps = Kernel::kTaps;
  const std::ptrdiff_t nRow = static_cast<std::ptrdiff_t>(sampler.Width()) * C;
  const int iLeft = places.x[i], iTop = places.y[i];
  if (C % 2 != 0 && iLeft >= 0 && iTop >= 0 && iLeft + kTaps <= sampler.Width() &&
      iTop + kTaps <= sampler.Height()) {
    const T* p =
        sampler.Image().GetRow<T>(0) + iTop * nRow + static_cast<std::ptrdiff_t>(iLeft) * C;
    Sum<Kernel, C>(p, nRow, places.wx[i], places.wy[i], pf);
    return;
  }
  float afPatch[kTaps * kTaps * C];
  for (int k = 0; k < kTaps * kTaps; ++k) {
    Pixel<T, C>(sampler, iLeft + k % kTaps, iTop + k / kTaps, afPatch + k * C);
  }
  Sum<Kernel, C>(afPatch, kTaps * C, places.wx[i], places.wy[i], pf);
}

template <class T, int C, class Kernel>
void AddRow(const Sampler& sampler, const double* pdX, const double* pdY, int n, float* pf) {
  constexpr int kOut = C % 2 == 0 ? C : C + 1;
  const Places<Kernel> places(sampler, pdX, pdY, n);
  for (int i = 0; i < n; ++i, pf += kOut) {
    if (!places.inside[i]) continue;
    float af[C];
    SumAt<T, C>(sampler, places, i, af);
    for (int c = 0; c < C; ++c) pf[c] += af[c];
    if constexpr (kOut != C) pf[C] += 1.0f;
  }
}

using AddFunction = void (*)(const Sampler&, const double*, const double*, int, float*);

template <class T, int C>
AddFunction AddFor(eZuInterpolation eKernel) {
  switch (eKernel) {
    case eZuInterpolationCubic:
      return AddRow<T, C, Cubic>;
    case eZuInterpolationLanczos:
      return AddRow<T, C, Lanczos>;
    default:
      return AddRow<T, C, Bilinear>;
  }
}

template <class T>
AddFunction AddFor(int iChannels, eZuInterpolation eKernel) {
  switch (iChannels) {
    case 1:
      return AddFor<T, 1>(eKernel);
    case 2:
      return AddFor<T, 2>(eKernel);
    case 3:
      return AddFor<T, 3>(eKernel);
    default:
      return AddFor<T, 4>(eKernel);
  }
}

}  // namespace

Sampler::Sampler(const ZuImage& image, eZuInterpolation eKernel)
    : m_pImage(&image), m_iWidth(image.GetWidth()), m_iHeight(image.GetHeight()) {
  const int iChannels = image.GetChannels();
  m_pfnAdd = image.GetBits() == 8 ? AddFor<std::uint8_t>(iChannels, eKernel)
                                  : AddFor<std::uint16_t>(iChannels, eKernel);
  if (image.GetBits() == 8 && iChannels % 2 == 1) m_pfnQuick = QuickRowFor(iChannels, eKernel);
}

}  // namespace zu::internal
