// Decimal digits as bytes, eight at a time.
#pragma once

#include <cstdint>
#include <cstring>

// The fast ways take bytes as they stand in memory and 128-bit products.
#if defined(__SIZEOF_INT128__) && __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__
#define ZU_FAST_NUMBERS 1
#else
#define ZU_FAST_NUMBERS 0
#endif

namespace zu::internal {

#if ZU_FAST_NUMBERS
__extension__ typedef unsigned __int128 Wide;
#endif

constexpr std::uint64_t kTenTo8 = 100000000;
constexpr std::uint64_t kZeros = 0x3030303030303030;  // "00000000"

// The eight digits of u below 10^8, as bytes 0 to 9, the first digit in the lowest byte. Pairs of
// digits, then digits are divided off in all lanes at a time; the factors are 2^20 / 100 and
// 2^10 / 10 rounded up, exact for four and two digits.
inline std::uint64_t EightDigits(std::uint64_t u) {
  const std::uint64_t uFours = u / 10000 | (u % 10000) << 32;
  const std::uint64_t uHundreds = (uFours * 10486 >> 20) & 0x0000007F0000007F;
  const std::uint64_t uTwos = uHundreds | (uFours - 100 * uHundreds) << 16;
  const std::uint64_t uTens = (uTwos * 103 >> 10) & 0x000F000F000F000F;
  return uTens | (uTwos - 10 * uTens) << 8;
}

// The reverse: eight digits '0' to '9' as a number.
inline std::uint64_t FromEightDigits(std::uint64_t u) {
  u -= kZeros;
  u = u * 10 + (u >> 8);
  constexpr std::uint64_t kEven = 0x000000FF000000FF;
  return ((u & kEven) * 0x000F424000000064 + (u >> 16 & kEven) * 0x0000271000000001) >> 32;
}

// Whether all eight bytes are digits '0' to '9': the upper half of each is 3, and stays 3 with 6
// added.
inline bool AreDigits(std::uint64_t u) {
  constexpr std::uint64_t kUpper = 0xF0F0F0F0F0F0F0F0;
  return ((u & kUpper) | ((u + 0x0606060606060606) & kUpper) >> 4) == 0x3333333333333333;
}

inline void Store8(char* p, std::uint64_t u) { std::memcpy(p, &u, sizeof(u)); }

inline std::uint64_t Load8(char const* p) {
  std::uint64_t u;
  std::memcpy(&u, p, sizeof(u));
  return u;
}

}  // namespace zu::internal
