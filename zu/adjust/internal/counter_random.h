// Random numbers by place: number k of a stream depends on seed, stream and k alone, never on which
// thread asks or what was asked before. The mixing is the finaliser of G. Steele, D. Lea and
// C. Flood, "Fast splittable pseudorandom number generators", 2014; the idea of counting J. Salmon
// et al., "Parallel random numbers: as easy as 1, 2, 3", 2011.
#pragma once

#include <cstdint>

namespace zu::internal {

class CounterRandom {
 public:
  CounterRandom(std::uint64_t uSeed, std::uint64_t uStream)
      : m_uKey(Mix(uSeed + kStep) ^ Mix(uStream * kStep + 1)) {}

  // 64 random bits, number k.
  std::uint64_t Bits(std::uint64_t k) const { return Mix(m_uKey + k * kStep); }
  // From 0 to below 1.
  double Unit(std::uint64_t k) const { return static_cast<double>(Bits(k) >> 11) * 0x1p-53; }
  // From 0 to n - 1; n from 1 to 2^31.
  int Index(std::uint64_t k, int n) const {
    return static_cast<int>((Bits(k) >> 32) * static_cast<std::uint64_t>(n) >> 32);
  }

  // m different indices below n, m at most n: what sample k draws (R. Floyd's way, as told by
  // J. Bentley, "Programming pearls: a sample of brilliance", 1987). Ascending.
  void Sample(std::uint64_t k, int n, int m, int* piSample) const {
    const CounterRandom draws(m_uKey, k);
    for (int j = n - m, iCount = 0; j < n; ++j, ++iCount) {
      int i = draws.Index(static_cast<std::uint64_t>(iCount), j + 1);
      for (int a = 0; a < iCount; ++a) {
        if (piSample[a] == i) i = j;
      }
      int iPlace = iCount;
      for (; iPlace > 0 && piSample[iPlace - 1] > i; --iPlace) {
        piSample[iPlace] = piSample[iPlace - 1];
      }
      piSample[iPlace] = i;
    }
  }

 private:
  static constexpr std::uint64_t kStep = 0x9E3779B97F4A7C15u;

  static std::uint64_t Mix(std::uint64_t u) {
    u = (u ^ (u >> 30)) * 0xBF58476D1CE4E5B9u;
    u = (u ^ (u >> 27)) * 0x94D049BB133111EBu;
    return u ^ (u >> 31);
  }

  std::uint64_t m_uKey;
};

}  // namespace zu::internal
