// Powers of ten in 128 bits, for conversion between binary and decimal numbers.
#pragma once

#include <array>
#include <cstdint>

namespace zu::internal {

// 10^q = (g + d) 2^(PowerExponent(q)), g = uHigh 2^64 + uLow, 2^127 <= g < 2^128, 0 <= d < 1. From
// q = 0 to kLastExactPower, d is 0.
struct PowerOfTen {
  std::uint64_t uHigh;
  std::uint64_t uLow;
};

constexpr int kFirstPower = -342;  // less than half the smallest double with 19 digits in front
constexpr int kLastPower = 339;    // takes the smallest double to 16 digits
constexpr int kLastExactPower = 55;

using PowersOfTen = std::array<PowerOfTen, kLastPower - kFirstPower + 1>;

extern const PowersOfTen kPowersOfTen;

inline PowerOfTen const& GetPowerOfTen(int q) {
  return kPowersOfTen[static_cast<unsigned>(q - kFirstPower)];
}

constexpr int PowerExponent(int q) { return (q * 217706 >> 16) - 127; }

// 10^0 to 10^22: all that doubles hold exactly.
constexpr int kLastExactDouble = 22;
constexpr double kExactDoubles[kLastExactDouble + 1] = {
    1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,  1e8,  1e9,  1e10, 1e11,
    1e12, 1e13, 1e14, 1e15, 1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};

}  // namespace zu::internal
