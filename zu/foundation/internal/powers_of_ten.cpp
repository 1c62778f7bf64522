#include "zu/foundation/internal/powers_of_ten.h"

#include <bit>

namespace zu::internal {
namespace {

constexpr int kLimbs = 36;  // of 32 bits: 5^342 has 795 bits, its reciprocal needs 128 more
using Big = std::array<std::uint32_t, kLimbs>;  // low limb first

constexpr int BitLength(Big const& a) {
  for (int i = kLimbs - 1; i >= 0; --i) {
    const auto uLimb = a[static_cast<unsigned>(i)];
    if (uLimb != 0) return 32 * i + std::bit_width(uLimb);
  }
  return 0;
}

constexpr void MultiplyBy5(Big* p) {
  std::uint64_t uCarry = 0;
  for (auto& uLimb : *p) {
    uCarry += 5 * std::uint64_t{uLimb};
    uLimb = static_cast<std::uint32_t>(uCarry);
    uCarry >>= 32;
  }
}

constexpr void DivideBy5(Big* p) {
  std::uint64_t uRest = 0;
  for (int i = kLimbs - 1; i >= 0; --i) {
    auto& uLimb = (*p)[static_cast<unsigned>(i)];
    uRest = uRest << 32 | uLimb;
    uLimb = static_cast<std::uint32_t>(uRest / 5);
    uRest %= 5;
  }
}

constexpr std::uint64_t Limb(Big const& a, int i) {
  return i >= 0 && i < kLimbs ? a[static_cast<unsigned>(i)] : 0;
}

// 64 bits of a from bit i on; below bit 0 there are zeros.
constexpr std::uint64_t BitsFrom(Big const& a, int i) {
  const int iLimb = i >> 5, iShift = i & 31;
  const std::uint64_t u = Limb(a, iLimb) | Limb(a, iLimb + 1) << 32;
  return iShift == 0 ? u : u >> iShift | Limb(a, iLimb + 2) << (64 - iShift);
}

constexpr PowerOfTen Top128(Big const& a) {
  const int iTop = BitLength(a);
  return {BitsFrom(a, iTop - 64), BitsFrom(a, iTop - 128)};
}

// Fails to compile where the formula of the exponent does not hold.
constexpr void Check(bool bGood) {
  if (!bGood) throw "exponent of a power of ten";
}

// 10^q and 5^q differ by a power of two alone. The negative powers are floor(2^K / 5^n) by repeated
// division, which cuts exactly.
constexpr PowersOfTen MakeTable() {
  PowersOfTen table = {};
  Big a = {1};
  for (int q = 0; q <= kLastPower; ++q) {
    table[static_cast<unsigned>(q - kFirstPower)] = Top128(a);
    Check(BitLength(a) - 128 + q == PowerExponent(q));
    MultiplyBy5(&a);
  }
  constexpr int kOne = 32 * kLimbs - 1;  // K
  a = {};
  a[kLimbs - 1] = 1u << 31;
  for (int q = -1; q >= kFirstPower; --q) {
    DivideBy5(&a);
    table[static_cast<unsigned>(q - kFirstPower)] = Top128(a);
    Check(BitLength(a) - kOne - 128 + q == PowerExponent(q));
  }
  return table;
}

}  // namespace

constexpr PowersOfTen kTable = MakeTable();
const PowersOfTen kPowersOfTen = kTable;

}  // namespace zu::internal
