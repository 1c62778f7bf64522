// Text to numbers.
#include <bit>
#include <charconv>
#include <cstdint>
#include <limits>
#include <string>
#include <string_view>

#include "zu/foundation/internal/c_format.h"
#include "zu/foundation/internal/characters.h"
#include "zu/foundation/internal/digits.h"
#include "zu/foundation/internal/double_parts.h"
#include "zu/foundation/internal/powers_of_ten.h"
#include "zu/foundation/numbers.h"

namespace {

using namespace zu::internal;

// Whether a character can stand in a hexadecimal number, an infinity or a "nan(...)".
bool IsSpecial(char c) {
  constexpr std::string_view kOthers = ".+-_()";
  return IsDigit(c) || IsLetter(c) || kOthers.find(c) != kOthers.npos;
}

// A text with an end, and one with a terminator, which no number holds.
struct Bounded {
  char const* pEnd;
  bool AtEnd(char const* p) const { return p == pEnd; }
  bool HasEight(char const* p) const { return pEnd - p >= 8; }
};
struct Terminated {
  static bool AtEnd(char const*) { return false; }
  static bool HasEight(char const*) { return false; }
};

template <class End>
char const* SkipBlanks(char const* p, End end) {
  while (!end.AtEnd(p) && IsBlank(*p)) ++p;
  return p;
}

// Takes a sign; true for a minus.
template <class End>
bool TakeSign(char const*& p, End end) {
  if (end.AtEnd(p)) return false;
  const bool bMinus = *p == '-';
  p += bMinus | (*p == '+');
  return bMinus;
}

template <class End, class Accept>
char const* Stretch(char const* p, End end, Accept accept) {
  while (!end.AtEnd(p) && accept(*p)) ++p;
  return p;
}

// The rare forms, left to the run-time: hexadecimal numbers, infinities, NaNs, and decimal numbers
// outside the range of doubles.
double ReadByRuntime(char const* p, char const* pEnd, char const** ppStop) {
  const std::string strText(p, pEnd);
  char const* pStop = nullptr;
  const double dValue = StringToDouble(strText.c_str(), &pStop);
  *ppStop = p + (pStop - strText.c_str());
  return dValue;
}

// u 10^iExponent, rounded to the next double; false where 128 bits of the power of ten do not
// decide, and outside the range of normal numbers.
bool NearestByProduct(std::uint64_t u, std::int64_t iExponent, double* pdValue) {
#if ZU_FAST_NUMBERS
  if (u == 0 || iExponent < kFirstPower || iExponent > kLastPower) return false;
  const int q = static_cast<int>(iExponent);
  PowerOfTen const& power = GetPowerOfTen(q);
  const int nShift = std::countl_zero(u);
  const std::uint64_t uLeft = u << nShift;
  const Wide low = Wide{uLeft} * power.uLow;
  const Wide product = Wide{uLeft} * power.uHigh + static_cast<std::uint64_t>(low >> 64);

  const int nBits = 127 + static_cast<int>(product >> 127);
  const int nRest = nBits - (kMantissaBits + 1);
  const Wide half = Wide{1} << (nRest - 1);
  const Wide rest = product & (2 * half - 1);
  auto uMantissa = static_cast<std::uint64_t>(product >> nRest);
  if (q >= 0 && q <= kLastExactPower) {
    const bool bTail = static_cast<std::uint64_t>(low) != 0;
    uMantissa += rest > half || (rest == half && (bTail || (uMantissa & 1)));
  } else {
    if (rest == half - 1) return false;
    uMantissa += rest >= half;
  }

  int iBiased = nRest + 64 + PowerExponent(q) - nShift + kExponentBias;
  if (uMantissa == 2 * kHiddenBit) {
    uMantissa = kHiddenBit;
    ++iBiased;
  }
  if (iBiased < 1 || iBiased > 2046) return false;
  const std::uint64_t uExponent = static_cast<std::uint64_t>(iBiased) << kMantissaBits;
  *pdValue = std::bit_cast<double>(uExponent | (uMantissa - kHiddenBit));
  return true;
#else
  static_cast<void>(u), static_cast<void>(iExponent), static_cast<void>(pdValue);
  return false;
#endif
}

// A decimal number as it stands: uDigits 10^iExponent, where bExact says that all digits are there.
struct Decimal {
  std::uint64_t uDigits = 0;
  std::int64_t iExponent = 0;
  bool bExact = false;
};

constexpr int kSafeDigits = 19;  // more may not fit 64 bits

template <class End>
char const* TakeDigits(char const* p, End end, std::uint64_t* puDigits) {
  std::uint64_t u = *puDigits;
  for (; !end.AtEnd(p) && IsDigit(*p); ++p) u = 10 * u + static_cast<unsigned>(*p - '0');
  *puDigits = u;
  return p;
}

// As TakeDigits for a run that may be long: eight at a time where the text has a known end.
template <class End>
char const* TakeManyDigits(char const* p, End end, std::uint64_t* puDigits) {
#if ZU_FAST_NUMBERS
  while (end.HasEight(p)) {
    const std::uint64_t uBytes = Load8(p);
    if (!AreDigits(uBytes)) break;
    *puDigits = *puDigits * kTenTo8 + FromEightDigits(uBytes);
    p += 8;
  }
#endif
  return TakeDigits(p, end, puDigits);
}

// Takes an exponent that stands whole behind e or E; without digits nothing is taken.
template <class End>
char const* TakeExponent(char const* pBegin, End end, std::int64_t* piExponent) {
  constexpr std::int64_t kEnough = 1000000000;
  char const* p = pBegin;
  if (end.AtEnd(p) || (*p != 'e' && *p != 'E')) return pBegin;
  ++p;
  const bool bMinus = TakeSign(p, end);
  if (end.AtEnd(p) || !IsDigit(*p)) return pBegin;
  std::int64_t i = 0;
  for (; !end.AtEnd(p) && IsDigit(*p); ++p) {
    if (i < kEnough) i = 10 * i + (*p - '0');
  }
  *piExponent += bMinus ? -i : i;
  return p;
}

// Digits from the first one on that is not 0.
std::ptrdiff_t SignificantDigits(char const* p, char const* pEnd) {
  std::ptrdiff_t n = 0;
  for (; p != pEnd && (*p == '0' || *p == '.'); ++p) {
  }
  for (; p != pEnd && (IsDigit(*p) || *p == '.'); ++p) n += *p != '.';
  return n;
}

// Takes a decimal number without sign; pBegin comes back where there is none.
template <class End>
char const* TakeDecimal(char const* pBegin, End end, Decimal* pDecimal) {
  char const* p = TakeDigits(pBegin, end, &pDecimal->uDigits);
  std::ptrdiff_t nDigits = p - pBegin;
  if (!end.AtEnd(p) && *p == '.') {
    char const* const pFraction = p + 1;
    p = TakeManyDigits(pFraction, end, &pDecimal->uDigits);
    pDecimal->iExponent = pFraction - p;
    nDigits += p - pFraction;
  }
  if (nDigits == 0) return pBegin;
  pDecimal->bExact = nDigits <= kSafeDigits || SignificantDigits(pBegin, p) <= kSafeDigits;
  return TakeExponent(p, end, &pDecimal->iExponent);
}

// The double next to a decimal number. False where this way does not decide.
//
// Up to 2^53 and 10^22 one multiplication or division rounds once (W. Clinger, How to read floating
// point numbers accurately, 1990). Else one product with a power of ten in 128 bits (D. Lemire,
// Number parsing at a gigabyte per second, 2021), unless its cut tail could turn the rounding.
bool Nearest(Decimal const& decimal, double* pdValue) {
  constexpr std::uint64_t kExact = std::uint64_t{1} << 53;
  if (!decimal.bExact) return false;
  const std::uint64_t u = decimal.uDigits;
  if (u <= kExact && decimal.iExponent >= -kLastExactDouble &&
      decimal.iExponent <= kLastExactDouble) {
    const int q = static_cast<int>(decimal.iExponent);
    const double d = static_cast<double>(u);
    *pdValue = q < 0 ? d / kExactDoubles[-q] : d * kExactDoubles[q];
    return true;
  }
  return NearestByProduct(u, decimal.iExponent, pdValue);
}

template <class End>
double ReadDouble(char const* pBegin, End end, char const** ppStop) {
  *ppStop = pBegin;
  char const* const pSign = SkipBlanks(pBegin, end);
  char const* p = pSign;
  const bool bMinus = TakeSign(p, end);
  Decimal decimal;
  char const* const pStop = TakeDecimal(p, end, &decimal);
  const bool bHex =
      pStop == p + 1 && *p == '0' && !end.AtEnd(pStop) && (*pStop == 'x' || *pStop == 'X');
  if (pStop == p || bHex) {
    char const* const pSpecial = Stretch(p, end, IsSpecial);
    if (pSpecial == p || (!bHex && !IsLetter(*p))) return 0.0;
    const double dValue = ReadByRuntime(pSign, pSpecial, ppStop);
    if (*ppStop == pSign) *ppStop = pBegin;
    return dValue;
  }
  *ppStop = pStop;
  double dValue = 0.0;
  if (!Nearest(decimal, &dValue)) {
    const auto result = std::from_chars(p, pStop, dValue);
    if (result.ec != std::errc()) return ReadByRuntime(pSign, pStop, ppStop);
  }
  // Signs come as they please: no branch.
  return std::bit_cast<double>(std::bit_cast<std::uint64_t>(dValue) ^ std::uint64_t{bMinus} << 63);
}

// An integer, or a number beyond all that are told apart.
template <class End>
long long ReadInteger(char const* pBegin, End end) {
  constexpr long long kAbove = 1LL << 32;  // any more digits change nothing
  char const* p = SkipBlanks(pBegin, end);
  const bool bMinus = TakeSign(p, end);
  long long n = 0;
  for (; !end.AtEnd(p) && IsDigit(*p); ++p) {
    if (n < kAbove) n = 10 * n + (*p - '0');
  }
  return bMinus ? -n : n;
}

template <class T>
T Limited(long long n, T least, T most) {
  if (n < static_cast<long long>(least)) return least;
  return n > static_cast<long long>(most) ? most : static_cast<T>(n);
}

template <class End>
int ReadInt(char const* pBegin, End end) {
  return Limited(ReadInteger(pBegin, end), std::numeric_limits<int>::min(),
                 std::numeric_limits<int>::max());
}

}  // namespace

double ZuAtof(char const* szText) {
  char const* pStop;
  return ReadDouble(szText, Terminated(), &pStop);
}

double ZuAtof(char const* pBegin, char const* pEnd) {
  char const* pStop;
  return ReadDouble(pBegin, Bounded{pEnd}, &pStop);
}

double ZuAtof(char const* pBegin, char const* pEnd, char const** ppStop) {
  return ReadDouble(pBegin, Bounded{pEnd}, ppStop);
}

int ZuAtoi(char const* szText) { return ReadInt(szText, Terminated()); }

int ZuAtoi(char const* pBegin, char const* pEnd) { return ReadInt(pBegin, Bounded{pEnd}); }

unsigned int ZuAtou(char const* pBegin, char const* pEnd) {
  const long long n = ReadInteger(pBegin, Bounded{pEnd});
  if (n < 0)
    return static_cast<unsigned int>(Limited<long long>(n, std::numeric_limits<int>::min(), 0));
  return Limited(n, 0u, std::numeric_limits<unsigned int>::max());
}
