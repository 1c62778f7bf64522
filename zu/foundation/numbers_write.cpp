// Numbers to text.
#include <algorithm>
#include <charconv>
#include <cstring>

#include "zu/foundation/numbers.h"

namespace {

constexpr int kDefaultPrecision = 6;
constexpr int kGeneralExtra = 8;  // sign, point, exponent or zeros in front
constexpr int kFixedExtra = 311;  // sign, 309 digits, point

}  // namespace

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

char* ZuFormatGeneral16(char* pOut, double dValue) { return ZuFormatGeneral(pOut, dValue, 16); }

char* ZuFormatFixed9(char* pOut, double dValue, int iWidth) {
  char* const pEnd = ZuFormatFixed(pOut, dValue, 9);
  const std::ptrdiff_t nText = pEnd - pOut;
  if (nText >= iWidth) return pEnd;
  const std::ptrdiff_t nPad = iWidth - nText;
  std::memmove(pOut + nPad, pOut, static_cast<std::size_t>(nText));
  std::fill_n(pOut, nPad, ' ');
  return pEnd + nPad;
}
