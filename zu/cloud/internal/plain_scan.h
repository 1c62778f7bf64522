// Plain numbers and blanks out of a text, eight bytes at a time and nearly without branches: the
// number of digits and blanks changes from column to column, and a mispredicted branch costs as
// much as a whole number does here. What is not plain is left to the general way.
//
// Each function reads at *pp, moves it on and returns true, or returns false with *pp anywhere
// near. None looks at more than 64 bytes behind *pp; the text must be readable for that and hold a
// byte below '0' there, as a text with a line end does.
#pragma once

#include <bit>
#include <cstdint>
#include <cstring>

struct ZuPlainScan {
  static bool IsBlank(char c) { return c == ' ' || c == '\t'; }

  // Moves over blanks and tabs, up to some fifteen of them: the caller looks whether all are
  // passed.
  [[gnu::always_inline]] static void Blanks(const char** pp) {
    const char* p = *pp;
    for (int i = 0; i < 16 && IsBlank(*p); ++i) ++p;
    *pp = p;
  }

  // Moves over a token of up to 32 bytes; false when it is longer.
  [[gnu::always_inline]] static bool Token(const char** pp) {
    const char* p = *pp;
    for (int i = 0; i < 4; ++i, p += 8) {
      // The sign bits of the bytes below '!', exact up to the first of them.
      const std::uint64_t uBytes = Load(p);
      const std::uint64_t uLow = (uBytes - 0x2121212121212121u) & ~uBytes & 0x8080808080808080u;
      if (uLow == 0) continue;
      *pp = p + std::countr_zero(uLow) / 8;
      return true;
    }
    return false;
  }

  // A sign, digits, a point, digits, when they make a double in one rounding: a whole number up to
  // 2^53 divided by a power of ten up to 10^22 (W. D. Clinger, How to read floating point numbers
  // accurately, 1990). The result is that of atof.
  [[gnu::always_inline]] static bool Double(const char** pp, double* pdValue) {
    constexpr std::uint64_t kExact = std::uint64_t{1} << 53;
    const char* p = *pp;
    const bool bNegative = *p == '-';
    p += bNegative ? 1 : 0;
    std::uint64_t uWhole = 0;
    const int iWhole = Digits(&p, &uWhole);
    int iFraction = 0;
    if (*p == '.') {
      ++p;
      iFraction = Digits(&p, &uWhole);
    }
    *pp = p;
    const int iDigits = iWhole + iFraction;
    if (iDigits == 0 || iDigits > kMostDigits || uWhole > kExact) return false;
    const double dValue = static_cast<double>(uWhole) / kTenTo[iFraction];
    *pdValue = bNegative ? -dValue : dValue;
    return true;
  }

  // One to three digits, of which the low byte is given: what atoi gives, masked.
  [[gnu::always_inline]] static bool Byte(const char** pp, std::uint32_t* puByte) {
    const std::uint64_t uDigits = Load(*pp) ^ kZeros;
    const int n = Leading(uDigits);
    // Hundreds, tens and ones meet in the third byte of the product; what the other products add
    // stays below or above it.
    const std::uint32_t u =
        (static_cast<std::uint32_t>(uDigits) << ((24 - 8 * n) & 31)) & 0xFFFFFFu;
    *puByte = (u * 0x640A01u >> 16) & 0xFFu;
    *pp += n;
    return n > 0 && n <= 3;
  }

 private:
  static constexpr std::uint64_t kZeros = 0x3030303030303030u;  // eight times '0'
  static constexpr int kMostDigits = 19;                        // always below 2^64
  static constexpr double kTenTo[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,  1e8,  1e9,
                                      1e10, 1e11, 1e12, 1e13, 1e14, 1e15, 1e16, 1e17, 1e18, 1e19};
  static constexpr std::uint64_t kScale[] = {1,      10,      100,      1000,     10000,
                                             100000, 1000000, 10000000, 100000000};

  // Eight bytes with the first of the text lowest.
  static std::uint64_t Load(const char* p) {
    std::uint64_t uBytes;
    std::memcpy(&uBytes, p, sizeof uBytes);
    if constexpr (std::endian::native != std::endian::little) {
      uBytes = (uBytes & 0x00FF00FF00FF00FFu) << 8 | (uBytes >> 8 & 0x00FF00FF00FF00FFu);
      uBytes = (uBytes & 0x0000FFFF0000FFFFu) << 16 | (uBytes >> 16 & 0x0000FFFF0000FFFFu);
      uBytes = uBytes << 32 | uBytes >> 32;
    }
    return uBytes;
  }

  // How many of eight bytes, from the lowest, are 0 to 9.
  static int Leading(std::uint64_t uDigits) {
    const std::uint64_t uOther = ((uDigits + 0x7676767676767676u) | uDigits) & 0x8080808080808080u;
    return uOther ? std::countr_zero(uOther) / 8 : 8;
  }

  // The number of the n lowest of eight digits: they move up behind zeros, then pairs, fours and
  // all eight are joined (D. Lemire, Number parsing at a gigabyte per second, 2021).
  static std::uint64_t Value(std::uint64_t uDigits, int n) {
    const int iHalf = 32 - 4 * n;  // in two steps, since none of 64 may be taken in one
    std::uint64_t u = uDigits << iHalf << iHalf;
    u = u * 10 + (u >> 8);
    return ((u & 0x000000FF000000FFu) * 0x000F424000000064u +
            ((u >> 16) & 0x000000FF000000FFu) * 0x0000271000000001u) >>
           32;
  }

  // Appends N digits that stand at *pp.
  template <int N>
  [[gnu::always_inline]] static int Take(std::uint64_t uDigits, const char** pp,
                                         std::uint64_t* puWhole) {
    *puWhole = *puWhole * kScale[N] + Value(uDigits, N);
    *pp += N;
    return N;
  }

  // Appends the digits at *pp to a whole number; their number, or more than can be taken. A branch
  // for each number of digits: predicted, it lets the next number begin before this one is read.
  [[gnu::always_inline]] static int Digits(const char** pp, std::uint64_t* puWhole) {
    const std::uint64_t uDigits = Load(*pp) ^ kZeros;
    switch (Leading(uDigits)) {
      case 0:
        return 0;
      case 1:
        return Take<1>(uDigits, pp, puWhole);
      case 2:
        return Take<2>(uDigits, pp, puWhole);
      case 3:
        return Take<3>(uDigits, pp, puWhole);
      case 4:
        return Take<4>(uDigits, pp, puWhole);
      case 5:
        return Take<5>(uDigits, pp, puWhole);
      case 6:
        return Take<6>(uDigits, pp, puWhole);
      case 7:
        return Take<7>(uDigits, pp, puWhole);
      default:
        break;
    }
    int n = Take<8>(uDigits, pp, puWhole);
    for (unsigned int uDigit;
         n <= kMostDigits && (uDigit = static_cast<unsigned char>(**pp) - '0') < 10; ++n) {
      *puWhole = 10 * *puWhole + uDigit;
      ++*pp;
    }
    return n;
  }
};
