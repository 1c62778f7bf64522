// Numbers to text.
#include <algorithm>
#include <charconv>
#include <cmath>

#include "zu/foundation/internal/characters.h"
#include "zu/foundation/numbers.h"

namespace {

using zu::internal::IsDigit;

constexpr double kMaxInteger = 2147483647.0;  // integers of keyword files saturate there

constexpr int kDefaultPrecision = 6;
constexpr int kGeneralExtra = 8;  // sign, point, exponent or zeros in front
constexpr int kFixedExtra = 311;  // sign, 309 digits, point

}  // namespace

char* ZuFormatShortest(char* pOut, double dValue) {
  char* pEnd = std::to_chars(pOut, pOut + kZuShortestSize, dValue).ptr;
  const bool bWhole = std::all_of(pOut, pEnd, [](char c) { return c == '-' || IsDigit(c); });
  const bool bInteger =
      std::fabs(dValue) <= kMaxInteger && !(dValue == 0.0 && std::signbit(dValue));
  if (bWhole && !bInteger) pEnd = std::copy_n(".0", 2, pEnd);
  return pEnd;
}

char* ZuFormatGeneral(char* pOut, double dValue, int iPrecision) {
  if (iPrecision < 0) iPrecision = kDefaultPrecision;
  if (iPrecision == 0) iPrecision = 1;
  return std::to_chars(pOut, pOut + iPrecision + kGeneralExtra, dValue, std::chars_format::general,
                       iPrecision)
      .ptr;
}

char* ZuFormatFixed(char* pOut, double dValue, int iPrecision) {
  if (iPrecision < 0) iPrecision = kDefaultPrecision;
  return std::to_chars(pOut, pOut + iPrecision + kFixedExtra, dValue, std::chars_format::fixed,
                       iPrecision)
      .ptr;
}
