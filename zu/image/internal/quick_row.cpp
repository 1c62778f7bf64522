#include "zu/image/internal/quick_row.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstring>

#include "zu/image/internal/kernels.h"
#include "zu/image/internal/sampler.h"
#include "zu/image/internal/tile_map.h"

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace zu::internal {

namespace {

constexpr int kStepBits = 10;  // of a position behind its pixel
constexpr int kSteps = 1 << kStepBits;
constexpr int kWeightBits = 14;  // of a weight: 1 is a short number still
constexpr int kSumBits = 6;      // of a column's sum behind the point: 255 times 2 fits a short one
constexpr int kColumnShift = kWeightBits - kSumBits;
constexpr int kRowShift = kWeightBits + kSumBits;
constexpr int kColumnHalf = 1 << (kColumnShift - 1);
constexpr int kRowHalf = 1 << (kRowShift - 1);

// The weights of a kernel at all steps. Their sum is 1.
template <class Kernel>
struct WholeWeights {
  static const WholeWeights& Get() {
    static const WholeWeights weights;
    return weights;
  }
  WholeWeights() {
    for (int k = 0; k < kSteps; ++k) {
      float af[Kernel::kTaps];
      Kernel::Weights(static_cast<float>(k) / kSteps, af);
      int iRest = 1 << kWeightBits;
      for (int i = 0; i < Kernel::kTaps; ++i) {
        at[k][i] = static_cast<std::int16_t>(std::lround(af[i] * (1 << kWeightBits)));
        iRest -= at[k][i];
      }
      auto* pLargest = std::max_element(at[k], at[k] + Kernel::kTaps);
      *pLargest = static_cast<std::int16_t>(*pLargest + iRest);
    }
  }

  alignas(16) std::int16_t at[kSteps][Kernel::kTaps];
};

int Pixel(int iPosition) { return iPosition >> kStepBits; }
int Fraction(int iPosition) { return iPosition & (kSteps - 1); }

// The sums of the channels in units of 2^-kRowShift: columns first, then their sums,
// from pixels of the border where the patch reaches beyond it.
template <int C, class Kernel>
void PlainSum(const Sampler& sampler, int iLeft, int iTop, const std::int16_t* wx,
              const std::int16_t* wy, int* piSum) {
  std::fill_n(piSum, C, 0);
  for (int i = 0; i < Kernel::kTaps; ++i) {
    const int x = std::clamp(iLeft + i, 0, sampler.Width() - 1);
    int aiColumn[C] = {};
    for (int j = 0; j < Kernel::kTaps; ++j) {
      const int y = std::clamp(iTop + j, 0, sampler.Height() - 1);
      const std::uint8_t* p =
          sampler.Image().GetRow<std::uint8_t>(y) + static_cast<std::ptrdiff_t>(x) * C;
      for (int c = 0; c < C; ++c) aiColumn[c] += wy[j] * p[c];
    }
    for (int c = 0; c < C; ++c) {
      piSum[c] += wx[i] * ((aiColumn[c] + kColumnHalf) >> kColumnShift);
    }
  }
}

std::uint8_t Rounded(int iSum) {
  return static_cast<std::uint8_t>(std::clamp((iSum + kRowHalf) >> kRowShift, 0, 255));
}

#if defined(__SSE2__)

// Two neighbouring weights over and over: what _mm_madd_epi16 multiplies pairs by.
__m128i Pair(const std::int16_t* w) {
  int iPair;
  std::memcpy(&iPair, w, sizeof(iPair));
  return _mm_set1_epi32(iPair);
}

template <int B>
__m128i LoadBytes(const std::uint8_t* p) {
  if constexpr (B == 8) return _mm_loadl_epi64(reinterpret_cast<const __m128i*>(p));
  int i = 0;
  std::memcpy(&i, p, sizeof(i));
  return _mm_cvtsi32_si128(i);
}

// The sums of eight columns (less where B is less) as short numbers.
template <int B, class Kernel>
__m128i Columns(const std::uint8_t* p, std::ptrdiff_t nRow, const std::int16_t* wy) {
  const __m128i zero = _mm_setzero_si128();
  __m128i low = _mm_set1_epi32(kColumnHalf), high = low;
  for (int j = 0; j < Kernel::kTaps; j += 2, p += 2 * nRow) {
    const __m128i pixels = _mm_unpacklo_epi8(LoadBytes<B>(p), LoadBytes<B>(p + nRow));
    const __m128i w = Pair(wy + j);
    low = _mm_add_epi32(low, _mm_madd_epi16(_mm_unpacklo_epi8(pixels, zero), w));
    if constexpr (B > 4) {
      high = _mm_add_epi32(high, _mm_madd_epi16(_mm_unpackhi_epi8(pixels, zero), w));
    }
  }
  return _mm_packs_epi32(_mm_srai_epi32(low, kColumnShift), _mm_srai_epi32(high, kColumnShift));
}

// The weighted sum of two neighbouring colours, which six short numbers hold.
__m128i TwoColors(__m128i colors, const std::int16_t* wx) {
  return _mm_madd_epi16(_mm_unpacklo_epi16(colors, _mm_srli_si128(colors, 6)), Pair(wx));
}

// The sums of PlainSum, where the patch lies in the image.
template <int C, class Kernel>
__m128i PatchSum(const std::uint8_t* p, std::ptrdiff_t nRow, const std::int16_t* wx,
                 const std::int16_t* wy) {
  constexpr int kTaps = Kernel::kTaps;
  if constexpr (C == 1) {
    const __m128i a = Columns<kTaps, Kernel>(p, nRow, wy);
    const __m128i w = kTaps == 8 ? _mm_loadu_si128(reinterpret_cast<const __m128i*>(wx))
                                 : _mm_loadl_epi64(reinterpret_cast<const __m128i*>(wx));
    __m128i sum = _mm_madd_epi16(a, w);
    if constexpr (kTaps == 8) sum = _mm_add_epi32(sum, _mm_srli_si128(sum, 8));
    return _mm_add_epi32(sum, _mm_srli_si128(sum, 4));
  } else {
    const __m128i a = Columns<8, Kernel>(p, nRow, wy);
    __m128i sum = TwoColors(a, wx);
    if constexpr (kTaps == 2) return sum;
    const __m128i b = Columns<8, Kernel>(p + 8, nRow, wy);
    const __m128i from6 = _mm_or_si128(_mm_srli_si128(a, 12), _mm_slli_si128(b, 4));
    sum = _mm_add_epi32(sum, TwoColors(from6, wx + 2));
    if constexpr (kTaps == 4) return sum;
    const __m128i c = Columns<8, Kernel>(p + 16, nRow, wy);
    const __m128i from12 = _mm_or_si128(_mm_srli_si128(b, 8), _mm_slli_si128(c, 8));
    sum = _mm_add_epi32(sum, TwoColors(from12, wx + 4));
    return _mm_add_epi32(sum, TwoColors(_mm_srli_si128(c, 4), wx + 6));
  }
}

__m128i Shifted(__m128i sum) {
  return _mm_srai_epi32(_mm_add_epi32(sum, _mm_set1_epi32(kRowHalf)), kRowShift);
}

// Rounds sums, of grey values one behind the other, of colours with one place free behind each
// three, and puts alpha behind: by eight and four pixels, those behind the last one too.
template <int C>
void StoreRow(const int* piSum, int n, std::uint8_t* pOut) {
  const auto* p = reinterpret_cast<const __m128i*>(piSum);
  auto* q = reinterpret_cast<__m128i*>(pOut);
  if constexpr (C == 1) {
    const __m128i most = _mm_set1_epi16(255), alpha = _mm_set1_epi16(-256);
    for (int i = 0; i < n; i += 8, p += 2, ++q) {
      const __m128i a = _mm_packs_epi32(Shifted(_mm_load_si128(p)), Shifted(_mm_load_si128(p + 1)));
      const __m128i grey = _mm_min_epi16(_mm_max_epi16(a, _mm_setzero_si128()), most);
      _mm_store_si128(q, _mm_or_si128(grey, alpha));
    }
  } else {
    const __m128i alpha = _mm_set1_epi32(-16777216);
    for (int i = 0; i < n; i += 4, p += 4, ++q) {
      const __m128i a = _mm_packs_epi32(Shifted(_mm_load_si128(p)), Shifted(_mm_load_si128(p + 1)));
      const __m128i b =
          _mm_packs_epi32(Shifted(_mm_load_si128(p + 2)), Shifted(_mm_load_si128(p + 3)));
      _mm_store_si128(q, _mm_or_si128(_mm_packus_epi16(a, b), alpha));
    }
  }
}

// Four grey pixels under the bilinear kernel at a time: first the four pixels of each, as one
// number, then all four sums at once.
void BilinearGrey(const std::uint8_t* pImage, std::ptrdiff_t nRow, const int* x, const int* y,
                  int n, int* piSum) {
  alignas(16) std::uint32_t patches[kTile];
  for (int i = 0; i < n; ++i) {
    const std::uint8_t* p = pImage + Pixel(y[i]) * nRow + Pixel(x[i]);
    std::uint16_t nUpper, nLower;
    std::memcpy(&nUpper, p, 2);
    std::memcpy(&nLower, p + nRow, 2);
    patches[i] = nUpper | static_cast<std::uint32_t>(nLower) << 16;
  }
  const __m128i fraction = _mm_set1_epi32(kSteps - 1), one = _mm_set1_epi32(1 << kWeightBits);
  const __m128i bytes = _mm_set1_epi32(0x00ff00ff), half = _mm_set1_epi32(kColumnHalf);
  const auto pair = [&](const int* p) {
    const __m128i at = _mm_load_si128(reinterpret_cast<const __m128i*>(p));
    const __m128i f = _mm_slli_epi32(_mm_and_si128(at, fraction), kWeightBits - kStepBits);
    return _mm_or_si128(_mm_sub_epi32(one, f), _mm_slli_epi32(f, 16));
  };
  for (int i = 0; i < n; i += 4) {
    const __m128i patch = _mm_load_si128(reinterpret_cast<const __m128i*>(patches + i));
    const __m128i wy = pair(y + i), wx = pair(x + i);
    const auto column = [&](__m128i pixels) {
      return _mm_srai_epi32(_mm_add_epi32(_mm_madd_epi16(_mm_and_si128(pixels, bytes), wy), half),
                            kColumnShift);
    };
    const __m128i columns =
        _mm_or_si128(column(patch), _mm_slli_epi32(column(_mm_srli_epi32(patch, 8)), 16));
    _mm_store_si128(reinterpret_cast<__m128i*>(piSum + i), _mm_madd_epi16(columns, wx));
  }
}

// Rounds positions as MakeRow does. False where one lies outside of the bounds.
bool RoundPositions(const double* pd, int n, int iLowest, int iHighest, int* pi) {
  const __m128d steps = _mm_set1_pd(kSteps), half = _mm_set1_pd(0.5);
  // A position that no number of 32 bits holds, NaN too, gives the lowest one there is.
  const auto rounded = [&](__m128d a) {
    return _mm_cvttpd_epi32(_mm_add_pd(_mm_mul_pd(a, steps), half));
  };
  int i = 0;
  for (; i + 1 < n; i += 2) {
    _mm_storel_epi64(reinterpret_cast<__m128i*>(pi + i), rounded(_mm_loadu_pd(pd + i)));
  }
  if (i < n) pi[i] = _mm_cvtsi128_si32(rounded(_mm_load_sd(pd + i)));
  int nOutside = 0;
  for (i = 0; i < n; ++i) nOutside += (pi[i] < iLowest) + (pi[i] > iHighest);
  return nOutside == 0;
}

// The pixels of a row whose patches all lie in the image. False: they don't, nothing is done.
template <int C, class Kernel>
bool MakeWholeRow(const Sampler& sampler, const double* pdX, const double* pdY, int n,
                  std::uint8_t* pOut) {
  constexpr int kTaps = Kernel::kTaps, kBefore = Kernel::kBefore;
  // Pixels right of a patch that are loaded with it, by eight bytes.
  constexpr int kSpare = C == 1 ? 0 : ((kTaps * C + 7) / 8 * 8 - kTaps * C + C - 1) / C;
  // Above the first position, where a cast rounds down; below the last.
  constexpr int kLowest = kBefore * kSteps + 1;
  const auto last = [](int iSize) { return (iSize - kTaps + 1 + kBefore) * kSteps - 1; };
  alignas(16) int x[kTile], y[kTile];
  if (sampler.Width() < kTaps + kSpare || sampler.Height() < kTaps ||
      !RoundPositions(pdX, n, kLowest, last(sampler.Width() - kSpare), x) ||
      !RoundPositions(pdY, n, kLowest, last(sampler.Height()), y)) {
    return false;
  }
  alignas(16) int aiSum[kTile * (C == 1 ? 1 : 4)];
  alignas(16) std::uint8_t aOut[kTile * (C + 1)];
  const std::ptrdiff_t nRow = static_cast<std::ptrdiff_t>(sampler.Width()) * C;
  const std::uint8_t* pImage = sampler.Image().GetRow<std::uint8_t>(0);
  if constexpr (C == 1 && kTaps == 2) {
    BilinearGrey(pImage, nRow, x, y, n, aiSum);
  } else {
    const auto& weights = WholeWeights<Kernel>::Get();
    for (int i = 0; i < n; ++i) {
      const std::uint8_t* p = pImage + (Pixel(y[i]) - kBefore) * nRow +
                              static_cast<std::ptrdiff_t>(Pixel(x[i]) - kBefore) * C;
      const __m128i sum =
          PatchSum<C, Kernel>(p, nRow, weights.at[Fraction(x[i])], weights.at[Fraction(y[i])]);
      if constexpr (C == 1) {
        aiSum[i] = _mm_cvtsi128_si32(sum);
      } else {
        _mm_store_si128(reinterpret_cast<__m128i*>(aiSum + 4 * i), sum);
      }
    }
  }
  StoreRow<C>(aiSum, n, aOut);
  std::memcpy(pOut, aOut, static_cast<std::size_t>(n) * (C + 1));
  return true;
}

#else

template <int C, class Kernel>
bool MakeWholeRow(const Sampler&, const double*, const double*, int, std::uint8_t*) {
  return false;
}

#endif

template <int C, class Kernel>
int MakeRow(const Sampler& sampler, const double* pdX, const double* pdY, int n,
            std::uint8_t* pOut) {
  if (MakeWholeRow<C, Kernel>(sampler, pdX, pdY, n, pOut)) return n;
  const auto& weights = WholeWeights<Kernel>::Get();
  int nInside = 0;
  for (int i = 0; i < n; ++i, pOut += C + 1) {
    const bool bInside = sampler.IsInside(pdX[i], pdY[i]);
    nInside += bInside;
    int aiSum[C] = {};
    if (bInside) {
      // At least -0.5: a pixel further the cast rounds down.
      const int x = static_cast<int>((pdX[i] + 1.0) * kSteps + 0.5) - kSteps;
      const int y = static_cast<int>((pdY[i] + 1.0) * kSteps + 0.5) - kSteps;
      PlainSum<C, Kernel>(sampler, Pixel(x) - Kernel::kBefore, Pixel(y) - Kernel::kBefore,
                          weights.at[Fraction(x)], weights.at[Fraction(y)], aiSum);
    }
    for (int c = 0; c < C; ++c) pOut[c] = Rounded(aiSum[c]);
    pOut[C] = bInside ? 255 : 0;
  }
  return nInside;
}

template <int C>
QuickRow MakeRowFor(eZuInterpolation eKernel) {
  return eKernel == eZuInterpolationCubic     ? MakeRow<C, Cubic>
         : eKernel == eZuInterpolationLanczos ? MakeRow<C, Lanczos>
                                              : MakeRow<C, Bilinear>;
}

}  // namespace

QuickRow QuickRowFor(int iChannels, eZuInterpolation eKernel) {
  return iChannels == 1 ? MakeRowFor<1>(eKernel) : MakeRowFor<3>(eKernel);
}

}  // namespace zu::internal
