// Cutting lines into tokens at runs of delimiters, and numbers out of tokens.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "zu/foundation/numbers.h"

struct ZuTextToken {
  const char* pBegin;
  const char* pEnd;
  double AsDouble() const { return ZuAtof(pBegin, pEnd); }
  int AsInt() const { return ZuAtoi(pBegin, pEnd); }
};

// The delimiters of PTS lines, as strtok takes them, and of PLY lines.
struct ZuPtsDelimiter {
  bool operator()(char c) const { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; }
};
struct ZuPlyDelimiter {
  bool operator()(char c) const { return c == ' ' || c == '\t'; }
};

// Counts the tokens of [pBegin, pEnd) and keeps the first uKeep of them.
template <class Delimiter>
std::size_t ZuSplitTokens(const char* pBegin, const char* pEnd, Delimiter isDelimiter,
                          ZuTextToken* pTokens, std::size_t uKeep) {
  std::size_t uCount = 0;
  for (const char* p = pBegin;;) {
    while (p != pEnd && isDelimiter(*p)) ++p;
    if (p == pEnd) return uCount;
    const char* const pToken = p;
    while (p != pEnd && !isDelimiter(*p)) ++p;
    if (uCount < uKeep) pTokens[uCount] = {pToken, p};
    ++uCount;
  }
}

// Where fgets with a buffer of 1,000 bytes would end the line that starts at pBegin: behind the
// line end, after 999 bytes, or at pEnd.
inline const char* ZuFgetsEnd(const char* pBegin, const char* pEnd) {
  constexpr std::ptrdiff_t kLine = 999;
  const char* const pLimit = pEnd - pBegin > kLine ? pBegin + kLine : pEnd;
  const void* pFound = std::memchr(pBegin, '\n', static_cast<std::size_t>(pLimit - pBegin));
  return pFound ? static_cast<const char*>(pFound) + 1 : pLimit;
}

// Reads digits, a point and digits with a sign at *pp when they make a double in one rounding, by
// D. Gay's observation (Correctly rounded binary-decimal and decimal-binary conversions, 1990): a
// whole number up to 2^53, divided by a power of ten up to 10^22, rounds once. Then true, and *pp
// is behind the number. Everything else is left to ZuAtof. Up to 16 bytes behind the number are
// looked at.
bool ZuReadPlainDouble(const char** pp, double* pdValue);

// Reads up to nine digits at *pp; otherwise as above, and ZuAtoi has the rest.
inline bool ZuReadPlainInt(const char** pp, int* piValue) {
  const char* p = *pp;
  unsigned int uValue = 0;
  for (; static_cast<unsigned char>(*p - '0') < 10; ++p) {
    uValue = 10 * uValue + static_cast<unsigned int>(*p - '0');
    if (p - *pp == 9) return false;
  }
  if (p == *pp) return false;
  *piValue = static_cast<int>(uValue);
  *pp = p;
  return true;
}

namespace zu_token_detail {

// The number of leading digits among the eight bytes, and those digits as a number, all bytes at a
// time (D. Lemire, Number parsing at a gigabyte per second, 2021).
inline int LeadingDigits(std::uint64_t uBytes) {
  const std::uint64_t uOff = uBytes ^ 0x3030303030303030u;  // a digit becomes 0 to 9
  const std::uint64_t uOther = ((uOff + 0x7676767676767676u) | uOff) & 0x8080808080808080u;
  return uOther ? std::countr_zero(uOther) / 8 : 8;
}

inline std::uint64_t EightDigits(std::uint64_t uBytes) {
  uBytes -= 0x3030303030303030u;
  uBytes = uBytes * 10 + (uBytes >> 8);
  return (((uBytes & 0x000000FF000000FFu) * 0x000F424000000064u) +
          (((uBytes >> 16) & 0x000000FF000000FFu) * 0x0000271000000001u)) >>
         32;
}

constexpr std::uint64_t kTenTo[9] = {1, 10, 100, 1000, 10000, 100000, 1000000, 10000000, 100000000};

// Appends the digits at p to uMantissa, up to 24 of them; returns the position behind.
inline const char* Digits(const char* p, std::uint64_t* puMantissa, int* piDigits) {
  for (int iRound = 0; iRound < 3; ++iRound) {
    std::uint64_t uBytes;
    std::memcpy(&uBytes, p, 8);
    const int n = LeadingDigits(uBytes);
    if (n == 8) {
      *puMantissa = *puMantissa * 100000000u + EightDigits(uBytes);
    } else if (n > 0) {
      // Zeros in front: the digits move to the high bytes.
      const int iShift = 8 * (8 - n);
      const std::uint64_t uPadded = (uBytes << iShift) | (0x3030303030303030u >> (64 - iShift));
      *puMantissa = *puMantissa * kTenTo[n] + EightDigits(uPadded);
    }
    *piDigits += n;
    p += n;
    if (n < 8) break;
  }
  return p;
}

constexpr double kPowers[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                              1e8,  1e9,  1e10, 1e11, 1e12, 1e13, 1e14, 1e15,
                              1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};

}  // namespace zu_token_detail

inline bool ZuReadPlainDouble(const char** pp, double* pdValue) {
  using namespace zu_token_detail;
  if constexpr (std::endian::native != std::endian::little) return false;  // bytes in their order
  constexpr std::uint64_t kExact = std::uint64_t{1} << 53;
  const char* p = *pp;
  const bool bNegative = *p == '-';
  if (bNegative) ++p;
  std::uint64_t uMantissa = 0;
  int iDigits = 0;
  p = Digits(p, &uMantissa, &iDigits);
  const int iWhole = iDigits;
  if (*p == '.') p = Digits(p + 1, &uMantissa, &iDigits);
  if (iDigits == 0 || iDigits > 19 || uMantissa > kExact) return false;
  const double dValue = static_cast<double>(uMantissa) / kPowers[iDigits - iWhole];
  *pdValue = bNegative ? -dValue : dValue;
  *pp = p;
  return true;
}
