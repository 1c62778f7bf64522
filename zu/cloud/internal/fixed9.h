// "%18.9f" for the coordinates of a text file, at the speed of the disk.
#pragma once

#include <array>
#include <bit>
#include <cstdint>
#include <cstring>

#include "zu/foundation/numbers.h"

// Writes the text of "%18.9f" and returns the position behind it; room for kZuFixed9Size
// characters.
//
// A double is m 2^-s with a whole m below 2^53. Its nine decimals are the whole number next to
// m 10^9 2^-s, which 128 bits hold exactly, halves going to the even number as printf has it. Where
// the text is wider than 18 characters the general function writes it.
inline char* ZuFormatFixed18_9(char* pOut, double dValue) {
  __extension__ typedef unsigned __int128 Wide;
  constexpr std::uint64_t kScale = 1000000000;
  constexpr double kWidest = 9999999.0;  // of both signs

  if (!(dValue < kWidest && dValue > -kWidest)) return ZuFormatFixed9(pOut, dValue, 18);
  const auto uBits = std::bit_cast<std::uint64_t>(dValue);
  const int iExponent = static_cast<int>(uBits >> 52 & 0x7FF);
  const std::uint64_t uMantissa = (uBits & 0xFFFFFFFFFFFFFu) | std::uint64_t{1} << 52;
  const int s = 1075 - iExponent;  // at least 29, since the value is below 2^24

  std::uint64_t uNine = 0;  // for a value too small to show, denormal ones among them
  if (s < 84) {
    const Wide product = Wide{uMantissa} * kScale;
    const Wide half = Wide{1} << (s - 1);
    const Wide rest = product & ((half << 1) - 1);
    uNine = static_cast<std::uint64_t>(product >> s);
    if (rest > half || (rest == half && (uNine & 1) != 0)) ++uNine;
  }

  struct Pairs {
    char ac[200];
    constexpr Pairs() : ac() {
      for (int i = 0; i < 200; ++i) ac[i] = static_cast<char>('0' + (i % 2 ? i / 2 % 10 : i / 20));
    }
  };
  static constexpr Pairs pairs;
  const auto put2 = [](char* p, std::uint32_t u) { std::memcpy(p, pairs.ac + 2 * u, 2); };

  std::memset(pOut, ' ', 18);
  auto uWhole = static_cast<std::uint32_t>(uNine / kScale);
  const auto uPart = static_cast<std::uint32_t>(uNine % kScale);
  const std::uint32_t uHigh = uPart / 10000, uLow = uPart % 10000;  // five digits and four
  put2(pOut + 16, uLow % 100);
  put2(pOut + 14, uLow / 100);
  put2(pOut + 12, uHigh % 100);
  put2(pOut + 10, uHigh / 100 % 100);
  pOut[9] = static_cast<char>('0' + uHigh / 10000);
  pOut[8] = '.';
  char* p = pOut + 8;
  for (; uWhole >= 10; uWhole /= 100) put2(p -= 2, uWhole % 100);
  if (uWhole > 0 || p == pOut + 8) *--p = static_cast<char>('0' + uWhole);
  if ((uBits >> 63) != 0) *--p = '-';
  return pOut + 18;
}
