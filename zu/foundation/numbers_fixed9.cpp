// "%.9f", exact by 128-bit integers; std::to_chars has the values from 2^52 on.
#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>

#include "zu/foundation/internal/digits.h"
#include "zu/foundation/internal/double_parts.h"
#include "zu/foundation/numbers.h"

namespace {

// The general way.
char* PutFixed9(char* pOut, double dValue, int iWidth) {
  char* const pEnd = ZuFormatFixed(pOut, dValue, 9);
  const std::ptrdiff_t nText = pEnd - pOut;
  const std::ptrdiff_t nPad = iWidth - nText;
  if (nPad <= 0) return pEnd;
  std::memmove(pOut + nPad, pOut, static_cast<std::size_t>(nText));
  std::fill_n(pOut, nPad, ' ');
  return pEnd + nPad;
}

}  // namespace

#if ZU_FAST_NUMBERS

namespace {

using namespace zu::internal;

// The nine digits behind the point of |value| below 2^53, rounded exactly, ties to even; the whole
// part goes to *puWhole.
std::uint64_t NineDigits(DoubleParts const& parts, std::uint64_t* puWhole) {
  constexpr std::uint64_t kTenTo9 = 1000000000;
  const int iShift = -parts.iExponent;  // above 0
  if (iShift > 96) {                    // below 2^-43, so below half of the last digit
    *puWhole = 0;
    return 0;
  }
  const Wide mask = (Wide{1} << iShift) - 1;
  const Wide scaled = (Wide{parts.uMantissa} & mask) * kTenTo9;
  const Wide half = Wide{1} << (iShift - 1);
  const Wide fraction = scaled & mask;
  std::uint64_t uNine = static_cast<std::uint64_t>(scaled >> iShift);
  uNine += fraction > half || (fraction == half && (uNine & 1));
  *puWhole = iShift < 64 ? parts.uMantissa >> iShift : 0;
  if (uNine < kTenTo9) return uNine;
  ++*puWhole;
  return 0;
}

// Digits 0 to 9 in bytes, without the zeros in front but for the last one.
struct Trimmed {
  std::uint64_t uText;
  int nDigits;
};

Trimmed Trim(std::uint64_t u) {
  const std::uint64_t uDigits = EightDigits(u);
  const int nZeros = std::countr_zero(uDigits | std::uint64_t{1} << 56) / 8;
  return {(uDigits | kZeros) >> (8 * nZeros), 8 - nZeros};
}

}  // namespace

// Whole blocks are written, up to 40 bytes.
char* ZuFormatFixed9(char* pOut, double dValue, int iWidth) {
  constexpr int kBlanks = 24;  // written at once
  const DoubleParts parts = Split(dValue);
  if (!parts.bNormal || parts.iExponent >= 0 || iWidth > kBlanks) {
    return PutFixed9(pOut, dValue, iWidth);
  }
  std::uint64_t uWhole;
  const std::uint64_t uNine = NineDigits(parts, &uWhole);
  const bool bLong = uWhole >= kTenTo8;
  const Trimmed front = Trim(bLong ? uWhole / kTenTo8 : uWhole);

  std::memset(pOut, ' ', kBlanks);
  pOut += std::max(0, iWidth - (parts.bMinus + front.nDigits + (bLong ? 8 : 0) + 10));
  *pOut = '-';
  pOut += parts.bMinus;
  Store8(pOut, front.uText);
  pOut += front.nDigits;
  if (bLong) {
    Store8(pOut, EightDigits(uWhole % kTenTo8) | kZeros);
    pOut += 8;
  }
  pOut[0] = '.';
  pOut[1] = static_cast<char>('0' + uNine / kTenTo8);
  Store8(pOut + 2, EightDigits(uNine % kTenTo8) | kZeros);
  return pOut + 10;
}

#else

char* ZuFormatFixed9(char* pOut, double dValue, int iWidth) {
  return PutFixed9(pOut, dValue, iWidth);
}

#endif
