#include "zu/foundation/alnum_id.h"

#include <cstdint>

// Fowler, Noll, Vo: FNV-1a hash, 32 bits.
unsigned int GetIdFromAlphaNumericString(char const* szText) {
  constexpr std::uint32_t kOffset = 2166136261u;
  constexpr std::uint32_t kPrime = 16777619u;
  constexpr std::uint32_t kIdBase = 1u << 30;
  std::uint32_t uHash = kOffset;
  for (; szText && *szText != '\0'; ++szText) {
    uHash = (uHash ^ static_cast<unsigned char>(*szText)) * kPrime;
  }
  return kIdBase | ((uHash ^ (uHash >> 30)) & (kIdBase - 1));  // the top bits are folded in
}
