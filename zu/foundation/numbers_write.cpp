// Numbers to text.
#include <charconv>

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
