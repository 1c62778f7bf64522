// The MD5 message digest (Rivest, The MD5 Message-Digest Algorithm, RFC 1321, 1992), which tells
// files apart. It protects from no forger.
//
//   ZuCalcMD5("abc", 3)  // "900150983cd24fb0d6963f7d28e17f72"
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>

#include "zu/export.h"

// Takes a message in pieces of any length, and allocates nothing.
class ZU_API ZuMD5 {
 public:
  void Add(void const* pData, std::size_t nBytes);
  // The digest of what was added; more may be added after it.
  std::array<std::uint8_t, 16> GetDigest() const;

 private:
  void TakeBlock(std::uint8_t const* pBlock);

  std::array<std::uint32_t, 4> m_state = {0x67452301, 0xefcdab89, 0x98badcfe, 0x10325476};
  std::array<std::uint8_t, 64> m_block = {};  // begun, not full
  std::uint64_t m_nBytes = 0;
};

// The digest as 32 hexadecimal digits in lower case.
ZU_API std::string ZuCalcMD5(void const* pData, std::size_t nBytes);
