// "%.16g" by one product with a power of ten in 128 bits, in the manner of D. Lemire, Number
// parsing at a gigabyte per second, 2021, turned round; std::to_chars has the rest.
#include <bit>
#include <cstdint>
#include <cstring>

#include "zu/foundation/internal/digits.h"
#include "zu/foundation/internal/double_parts.h"
#include "zu/foundation/internal/powers_of_ten.h"
#include "zu/foundation/numbers.h"

#if ZU_FAST_NUMBERS

namespace {

using namespace zu::internal;

constexpr std::uint64_t kTenTo15 = 1000000000000000;
constexpr std::uint64_t kTenTo16 = 10 * kTenTo15;

// floor(log10(value)). The power of ten next above the binade's lower end decides, where it lies in
// that binade.
int DecimalExponent(DoubleParts const& parts) {
  const int iBinary = parts.iExponent + kMantissaBits;
  const int iLow = iBinary * 78913 >> 18;  // floor(iBinary log10(2))
  PowerOfTen const& next = GetPowerOfTen(iLow + 1);
  const bool bSameBinade = PowerExponent(iLow + 1) + 127 == iBinary;
  return iLow + (bSameBinade & (parts.uMantissa << 11 >= next.uHigh + (next.uLow != 0)));
}

// value 10^q, rounded to a whole number below 2^54, ties to even; 0 where 128 bits of the power of
// ten do not decide. The product is cut by less than 1 in the bits that are looked at.
std::uint64_t Scale(DoubleParts const& parts, int q) {
  PowerOfTen const& power = GetPowerOfTen(q);
  const Wide low = Wide{parts.uMantissa} * power.uLow;
  const Wide product = Wide{parts.uMantissa} * power.uHigh + static_cast<std::uint64_t>(low >> 64);
  const bool bRest = static_cast<std::uint64_t>(low) != 0;

  const int iShift = -(parts.iExponent + PowerExponent(q)) - 64;  // 62 to 67
  const Wide half = Wide{1} << (iShift - 1);
  const Wide fraction = product & (2 * half - 1);
  const auto uWhole = static_cast<std::uint64_t>(product >> iShift);
  if (q >= 0 && q <= kLastExactPower) {
    return uWhole + (fraction > half || (fraction == half && (bRest || (uWhole & 1))));
  }
  if (fraction == half - 1) return 0;
  return uWhole + (fraction >= half);
}

// d.ddde+XX of 16 digits, trailing zeros left out.
char* PutScientific(char* pOut, char const* pDigits, int nDigits, int iExponent) {
  *pOut++ = pDigits[0];
  if (nDigits > 1) *pOut++ = '.';
  std::memcpy(pOut, pDigits + 1, static_cast<std::size_t>(nDigits - 1));
  pOut += nDigits - 1;
  *pOut++ = 'e';
  *pOut++ = iExponent < 0 ? '-' : '+';
  iExponent = iExponent < 0 ? -iExponent : iExponent;
  if (iExponent >= 100) *pOut++ = static_cast<char>('0' + iExponent / 100);
  *pOut++ = static_cast<char>('0' + iExponent / 10 % 10);
  *pOut++ = static_cast<char>('0' + iExponent % 10);
  return pOut;
}

// Sixteen digits with a point behind the first iWhole of them (1 to 16), or none where nothing but
// zeros would follow. Whole blocks are written, up to 34 bytes.
char* PutWithPoint(char* pOut, Wide digits, int nDigits, int iWhole) {
  std::memcpy(pOut, &digits, 16);
  if (nDigits <= iWhole) return pOut + iWhole;
  const Wide behind = digits >> (8 * (iWhole - 1)) >> 8;
  pOut[iWhole] = '.';
  std::memcpy(pOut + iWhole + 1, &behind, 16);
  return pOut + nDigits + 1;
}

}  // namespace

char* ZuFormatGeneral16(char* pOut, double dValue) {
  const DoubleParts parts = Split(dValue);
  *pOut = '-';
  if (!parts.bNormal) {
    if (dValue != 0.0) return ZuFormatGeneral(pOut, dValue, 16);
    pOut += parts.bMinus;
    *pOut = '0';
    return pOut + 1;
  }
  int iExponent = DecimalExponent(parts);
  std::uint64_t uDigits = Scale(parts, 15 - iExponent);
  if (uDigits == 0) return ZuFormatGeneral(pOut, dValue, 16);
  if (uDigits == kTenTo16) {
    uDigits = kTenTo15;
    ++iExponent;
  }
  pOut += parts.bMinus;

  const std::uint64_t uFirst = EightDigits(uDigits / kTenTo8);
  const std::uint64_t uLast = EightDigits(uDigits % kTenTo8);
  const int nDigits = 16 - (uLast ? std::countl_zero(uLast) / 8 : 8 + std::countl_zero(uFirst) / 8);
  const Wide digits = Wide{uLast | kZeros} << 64 | (uFirst | kZeros);
  if (iExponent >= 0 && iExponent < 16) return PutWithPoint(pOut, digits, nDigits, iExponent + 1);
  if (iExponent < 0 && iExponent >= -4) {
    std::memcpy(pOut, "0.000", 5);
    std::memcpy(pOut + 1 - iExponent, &digits, 16);
    return pOut + 1 - iExponent + nDigits;
  }
  char acDigits[16];
  std::memcpy(acDigits, &digits, 16);
  return PutScientific(pOut, acDigits, nDigits, iExponent);
}

#else

char* ZuFormatGeneral16(char* pOut, double dValue) { return ZuFormatGeneral(pOut, dValue, 16); }

#endif
