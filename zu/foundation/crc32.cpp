#include "zu/foundation/crc32.h"

#include <array>

namespace {

// The remainder of each byte, bits from low to high.
constexpr std::array<std::uint32_t, 256> kRemainders = [] {
  constexpr std::uint32_t kPolynomial = 0xEDB88320;
  std::array<std::uint32_t, 256> remainders = {};
  for (std::uint32_t uByte = 0; uByte < 256; ++uByte) {
    std::uint32_t u = uByte;
    for (int i = 0; i < 8; ++i) u = (u & 1) ? (u >> 1) ^ kPolynomial : u >> 1;
    remainders[uByte] = u;
  }
  return remainders;
}();

}  // namespace

std::uint32_t ZuCalcCRC32(void const* pData, std::size_t nBytes, std::uint32_t uCrc) {
  auto const* p = static_cast<unsigned char const*>(pData);
  std::uint32_t u = ~uCrc;
  for (std::size_t i = 0; i < nBytes; ++i) u = kRemainders[(u ^ p[i]) & 0xFF] ^ (u >> 8);
  return ~u;
}
