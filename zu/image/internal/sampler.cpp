#include "zu/image/internal/sampler.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <limits>
#include <type_traits>

#include "zu/image/internal/tile_map.h"

namespace zu::internal {

namespace {

// Kernels: the weights of their kTaps pixels at the fraction f behind the pixel kBefore.

struct Bilinear {
  static constexpr int kTaps = 2, kBefore = 0;
  static void Weights(float f, float* w) {
    w[0] = 1.0f - f;
    w[1] = f;
  }
};

struct Cubic {
  static constexpr int kTaps = 4, kBefore = 1;
  static void Weights(float f, float* w) {
    w[0] = ((1.0f - 0.5f * f) * f - 0.5f) * f;
    w[1] = (1.5f * f - 2.5f) * f * f + 1.0f;
    w[2] = ((2.0f - 1.5f * f) * f + 0.5f) * f;
    w[3] = (0.5f * f - 0.5f) * f * f;
  }
};

struct Lanczos {
  static constexpr int kTaps = 8, kBefore = 3;
  static constexpr int kSteps = 1024;  // of the table, which is interpolated: good to 1e-6
  using Table = std::array<std::array<float, kTaps>, kSteps + 1>;

  static double Sinc(double x) {
    constexpr double kPi = 3.14159265358979323846;
    return x == 0.0 ? 1.0 : std::sin(kPi * x) / (kPi * x);
  }
  static Table MakeTable() {
    Table table;
    for (int k = 0; k <= kSteps; ++k) {
      double adWeight[kTaps], dSum = 0.0;
      for (int i = 0; i < kTaps; ++i) {
        const double x = i - kBefore - static_cast<double>(k) / kSteps;
        adWeight[i] = std::fabs(x) < kTaps / 2 ? Sinc(x) * Sinc(x / (kTaps / 2)) : 0.0;
        dSum += adWeight[i];
      }
      for (int i = 0; i < kTaps; ++i) {
        table[static_cast<size_t>(k)][static_cast<size_t>(i)] =
            static_cast<float>(adWeight[i] / dSum);
      }
    }
    return table;
  }
  static void Weights(float f, float* w) {
    static const Table table = MakeTable();
    const float s = f * kSteps;
    const int k = std::min(static_cast<int>(s), kSteps - 1);
    const float g = s - static_cast<float>(k);
    const float* a = table[static_cast<size_t>(k)].data();
    const float* b = table[static_cast<size_t>(k) + 1].data();
    for (int i = 0; i < kTaps; ++i) w[i] = a[i] + g * (b[i] - a[i]);
  }
};

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

// The same, rounded, of 8 bits without alpha.
template <int C, class Kernel>
void RoundRow(const Sampler& sampler, const double* pdX, const double* pdY, int n,
              std::uint8_t* pOut) {
  const Places<Kernel> places(sampler, pdX, pdY, n);
  for (int i = 0; i < n; ++i, pOut += C + 1) {
    float af[C] = {};
    if (places.inside[i]) SumAt<std::uint8_t, C>(sampler, places, i, af);
    for (int c = 0; c < C; ++c) {
      pOut[c] = static_cast<std::uint8_t>(std::clamp(af[c] + 0.5f, 0.0f, 255.0f));
    }
    pOut[C] = places.inside[i] ? 255 : 0;
  }
}

constexpr int kFixedBits = 11;  // of a weight
constexpr int kFixed = 1 << kFixedBits;

// One pixel at (x, y) in units of 1 / kFixed, which the pixels right and below belong to.
template <int C>
void QuickPixel(const std::uint8_t* pImage, std::ptrdiff_t nRow, int x, int y, std::uint8_t* pOut) {
  const int a = x & (kFixed - 1), b = y & (kFixed - 1);
  const std::uint8_t* p =
      pImage + (y >> kFixedBits) * nRow + static_cast<std::ptrdiff_t>(x >> kFixedBits) * C;
  const std::uint8_t* q = p + nRow;
  for (int c = 0; c < C; ++c) {
    const int iUpper = p[c] * kFixed + a * (p[c + C] - p[c]);
    const int iLower = q[c] * kFixed + a * (q[c + C] - q[c]);
    pOut[c] = static_cast<std::uint8_t>(
        (iUpper * kFixed + b * (iLower - iUpper) + kFixed * kFixed / 2) >> (2 * kFixedBits));
  }
  pOut[C] = 255;
}

template <int C>
void QuickRow(const Sampler& sampler, const double* pdX, const double* pdY, int n,
              std::uint8_t* pOut) {
  const std::ptrdiff_t nRow = static_cast<std::ptrdiff_t>(sampler.Width()) * C;
  const std::uint8_t* pImage = sampler.Image().GetRow<std::uint8_t>(0);
  // Rounded up to the next weight they still have a neighbour.
  constexpr double kLast = 1.0 + 1.0 / kFixed;
  const double dRight = sampler.Width() - kLast, dBottom = sampler.Height() - kLast;
  for (int i = 0; i < n; ++i, pOut += C + 1) {
    const double dX = pdX[i], dY = pdY[i];
    if (dX >= 0.0 && dX <= dRight && dY >= 0.0 && dY <= dBottom) {
      QuickPixel<C>(pImage, nRow, static_cast<int>(dX * kFixed + 0.5),
                    static_cast<int>(dY * kFixed + 0.5), pOut);
      continue;
    }
    RoundRow<C, Bilinear>(sampler, &dX, &dY, 1, pOut);
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

template <int C>
auto QuickFor(eZuInterpolation eKernel) {
  return eKernel == eZuInterpolationCubic     ? RoundRow<C, Cubic>
         : eKernel == eZuInterpolationLanczos ? RoundRow<C, Lanczos>
                                              : QuickRow<C>;
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
  if (image.GetBits() != 8) return;
  if (iChannels == 1) m_pfnQuick = QuickFor<1>(eKernel);
  if (iChannels == 3) m_pfnQuick = QuickFor<3>(eKernel);
}

}  // namespace zu::internal
