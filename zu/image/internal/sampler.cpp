#include "zu/image/internal/sampler.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <type_traits>

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

// The weighted sum over a patch of kTaps x kTaps pixels of C values.
template <class Kernel, int C, class T>
void Sum(const T* p, std::ptrdiff_t nRow, const float* wx, const float* wy, float* pfSum) {
  constexpr int kRow = Kernel::kTaps * C;
  float af[kRow];
  for (int k = 0; k < kRow; ++k) af[k] = wy[0] * static_cast<float>(p[k]);
  for (int j = 1; j < Kernel::kTaps; ++j) {
    p += nRow;
    for (int k = 0; k < kRow; ++k) af[k] += wy[j] * static_cast<float>(p[k]);
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

template <class T, int C, class Kernel>
void AddRow(const Sampler& sampler, const double* pdX, const double* pdY, int n, float* pf) {
  constexpr int kOut = C % 2 == 0 ? C : C + 1;
  constexpr int kTaps = Kernel::kTaps;
  const std::ptrdiff_t nRow = static_cast<std::ptrdiff_t>(sampler.Width()) * C;
  const T* pImage = sampler.Image().GetRow<T>(0);
  for (int i = 0; i < n; ++i, pf += kOut) {
    if (!sampler.IsInside(pdX[i], pdY[i])) continue;
    // Both are at least -0.5.
    const int x = static_cast<int>(pdX[i] + 1.0) - 1, y = static_cast<int>(pdY[i] + 1.0) - 1;
    float wx[kTaps], wy[kTaps], af[C];
    Kernel::Weights(static_cast<float>(pdX[i] - x), wx);
    Kernel::Weights(static_cast<float>(pdY[i] - y), wy);
    const int iLeft = x - Kernel::kBefore, iTop = y - Kernel::kBefore;
    if (C % 2 != 0 && iLeft >= 0 && iTop >= 0 && iLeft + kTaps <= sampler.Width() &&
        iTop + kTaps <= sampler.Height()) {
      Sum<Kernel, C>(pImage + iTop * nRow + static_cast<std::ptrdiff_t>(iLeft) * C, nRow, wx, wy,
                     af);
    } else {
      float afPatch[kTaps * kTaps * C];
      for (int k = 0; k < kTaps * kTaps; ++k) {
        Pixel<T, C>(sampler, iLeft + k % kTaps, iTop + k / kTaps, afPatch + k * C);
      }
      Sum<Kernel, C>(afPatch, kTaps * C, wx, wy, af);
    }
    for (int c = 0; c < C; ++c) pf[c] += af[c];
    if constexpr (kOut != C) pf[C] += 1.0f;
  }
}

constexpr unsigned kFixed = 2048;  // steps of a weight

template <int C>
void QuickRow(const Sampler& sampler, const double* pdX, const double* pdY, int n,
              std::uint8_t* pOut) {
  const std::ptrdiff_t nRow = static_cast<std::ptrdiff_t>(sampler.Width()) * C;
  const std::uint8_t* pImage = sampler.Image().GetRow<std::uint8_t>(0);
  const double dRight = sampler.Width() - 1.0, dBottom = sampler.Height() - 1.0;
  for (int i = 0; i < n; ++i, pOut += C + 1) {
    const double dX = pdX[i], dY = pdY[i];
    if (dX >= 0.0 && dX < dRight && dY >= 0.0 && dY < dBottom) {
      const int x = static_cast<int>(dX), y = static_cast<int>(dY);
      const auto a = static_cast<unsigned>((dX - x) * kFixed + 0.5);
      const auto b = static_cast<unsigned>((dY - y) * kFixed + 0.5);
      const std::uint8_t* p = pImage + y * nRow + static_cast<std::ptrdiff_t>(x) * C;
      const std::uint8_t* q = p + nRow;
      const unsigned w11 = a * b, w10 = kFixed * b - w11, w01 = kFixed * a - w11;
      const unsigned w00 = kFixed * kFixed - kFixed * b - w01;
      for (int c = 0; c < C; ++c) {
        pOut[c] = static_cast<std::uint8_t>(
            (w00 * p[c] + w01 * p[c + C] + w10 * q[c] + w11 * q[c + C] + kFixed * kFixed / 2) /
            (kFixed * kFixed));
      }
      pOut[C] = 255;
      continue;
    }
    float af[C + 1] = {};
    AddRow<std::uint8_t, C, Bilinear>(sampler, &dX, &dY, 1, af);
    for (int c = 0; c < C; ++c) pOut[c] = static_cast<std::uint8_t>(af[c] + 0.5f);
    pOut[C] = af[C] > 0.0f ? 255 : 0;
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
  if (image.GetBits() == 8 && eKernel == eZuInterpolationBilinear) {
    if (iChannels == 1) m_pfnQuick = QuickRow<1>;
    if (iChannels == 3) m_pfnQuick = QuickRow<3>;
  }
}

}  // namespace zu::internal
