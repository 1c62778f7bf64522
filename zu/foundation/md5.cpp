#include "zu/foundation/md5.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace {

// floor(2^32 |sin(i)|), i from 1
constexpr std::uint32_t kSines[64] = {
    0xd76aa478, 0xe8c7b756, 0x242070db, 0xc1bdceee, 0xf57c0faf, 0x4787c62a, 0xa8304613, 0xfd469501,
    0x698098d8, 0x8b44f7af, 0xffff5bb1, 0x895cd7be, 0x6b901122, 0xfd987193, 0xa679438e, 0x49b40821,
    0xf61e2562, 0xc040b340, 0x265e5a51, 0xe9b6c7aa, 0xd62f105d, 0x02441453, 0xd8a1e681, 0xe7d3fbc8,
    0x21e1cde6, 0xc33707d6, 0xf4d50d87, 0x455a14ed, 0xa9e3e905, 0xfcefa3f8, 0x676f02d9, 0x8d2a4c8a,
    0xfffa3942, 0x8771f681, 0x6d9d6122, 0xfde5380c, 0xa4beea44, 0x4bdecfa9, 0xf6bb4b60, 0xbebfbc70,
    0x289b7ec6, 0xeaa127fa, 0xd4ef3085, 0x04881d05, 0xd9d4d039, 0xe6db99e5, 0x1fa27cf8, 0xc4ac5665,
    0xf4292244, 0x432aff97, 0xab9423a7, 0xfc93a039, 0x655b59c3, 0x8f0ccc92, 0xffeff47d, 0x85845dd1,
    0x6fa87e4f, 0xfe2ce6e0, 0xa3014314, 0x4e0811a1, 0xf7537e82, 0xbd3af235, 0x2ad7d2bb, 0xeb86d391};
constexpr int kTurns[4][4] = {{7, 12, 17, 22}, {5, 9, 14, 20}, {4, 11, 16, 23}, {6, 10, 15, 21}};

std::uint32_t LittleEndian(std::uint8_t const* p) {
  return p[0] | std::uint32_t{p[1]} << 8U | std::uint32_t{p[2]} << 16U | std::uint32_t{p[3]} << 24U;
}

}  // namespace

void ZuMD5::TakeBlock(std::uint8_t const* pBlock) {
  auto [a, b, c, d] = m_state;
  for (unsigned i = 0; i < 64; ++i) {
    std::uint32_t f = 0;
    unsigned uWord = 0;
    switch (i / 16) {
      case 0:
        f = (b & c) | (~b & d);
        uWord = i;
        break;
      case 1:
        f = (d & b) | (~d & c);
        uWord = 5 * i + 1;
        break;
      case 2:
        f = b ^ c ^ d;
        uWord = 3 * i + 5;
        break;
      default:
        f = c ^ (b | ~d);
        uWord = 7 * i;
        break;
    }
    f += a + kSines[i] + LittleEndian(pBlock + std::size_t{uWord % 16} * 4);
    a = d;
    d = c;
    c = b;
    b += std::rotl(f, kTurns[i / 16][i % 4]);
  }
  m_state = {m_state[0] + a, m_state[1] + b, m_state[2] + c, m_state[3] + d};
}

void ZuMD5::Add(void const* pData, std::size_t nBytes) {
  auto const* p = static_cast<std::uint8_t const*>(pData);
  while (nBytes > 0) {
    const std::size_t nBegun = m_nBytes % m_block.size();
    const std::size_t n = std::min(nBytes, m_block.size() - nBegun);
    std::memcpy(m_block.data() + nBegun, p, n);
    m_nBytes += n;
    p += n;
    nBytes -= n;
    if (m_nBytes % m_block.size() == 0) TakeBlock(m_block.data());
  }
}

std::array<std::uint8_t, 16> ZuMD5::GetDigest() const {
  constexpr std::uint8_t kPadding[64] = {0x80};
  ZuMD5 end = *this;
  end.Add(kPadding, (119 - m_nBytes % 64) % 64 + 1);  // up to 8 bytes before the end of a block
  std::uint8_t length[8];
  for (unsigned i = 0; i < 8; ++i) length[i] = static_cast<std::uint8_t>(m_nBytes * 8 >> 8 * i);
  end.Add(length, sizeof(length));
  std::array<std::uint8_t, 16> digest;
  for (unsigned i = 0; i < 16; ++i) {
    digest[i] = static_cast<std::uint8_t>(end.m_state[i / 4] >> 8 * (i % 4));
  }
  return digest;
}

std::string ZuCalcMD5(void const* pData, std::size_t nBytes) {
  constexpr char kDigits[] = "0123456789abcdef";
  ZuMD5 md5;
  md5.Add(pData, nBytes);
  std::string str;
  for (const std::uint8_t u : md5.GetDigest()) str += {kDigits[u >> 4U], kDigits[u & 15U]};
  return str;
}
