// A double taken apart.
#pragma once

#include <bit>
#include <cstdint>

namespace zu::internal {

constexpr int kMantissaBits = 52;
constexpr int kExponentBias = 1075;  // of a mantissa taken as a whole number
constexpr std::uint64_t kHiddenBit = std::uint64_t{1} << kMantissaBits;

// |value| = uMantissa 2^iExponent of a normal number.
struct DoubleParts {
  std::uint64_t uMantissa;
  int iExponent;
  bool bMinus;
  bool bNormal;
};

inline DoubleParts Split(double dValue) {
  const auto uBits = std::bit_cast<std::uint64_t>(dValue);
  const int iBiased = static_cast<int>(uBits >> kMantissaBits & 0x7FF);
  return {(uBits & (kHiddenBit - 1)) | kHiddenBit, iBiased - kExponentBias, uBits >> 63 != 0,
          iBiased != 0 && iBiased != 0x7FF};
}

}  // namespace zu::internal
