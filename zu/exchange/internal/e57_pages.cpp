#include "zu/exchange/internal/e57_pages.h"

#include <algorithm>
#include <cstring>

namespace zu::internal {

namespace {

using Crc32cTable = std::array<std::uint32_t, 256>;

constexpr Crc32cTable MakeCrc32cTable() {
  Crc32cTable table{};
  for (std::uint32_t i = 0; i < 256; ++i) {
    std::uint32_t u = i;
    for (int iBit = 0; iBit < 8; ++iBit) u = u >> 1 ^ ((u & 1) != 0 ? 0x82F63B78u : 0u);
    table[i] = u;
  }
  return table;
}
constexpr Crc32cTable kCrc32cTable = MakeCrc32cTable();

// The four bytes of a checksum as they stand in a page.
std::array<unsigned char, 4> ChecksumBytes(const unsigned char* pPage) {
  const std::uint32_t u = Crc32c(pPage, kE57PageData);
  return {static_cast<unsigned char>(u >> 24), static_cast<unsigned char>(u >> 16),
          static_cast<unsigned char>(u >> 8), static_cast<unsigned char>(u)};
}

}  // namespace

std::uint32_t Crc32c(const unsigned char* pBytes, std::size_t uSize) {
  std::uint32_t u = 0xFFFFFFFFu;
  for (std::size_t i = 0; i < uSize; ++i) u = u >> 8 ^ kCrc32cTable[(u ^ pBytes[i]) & 0xFF];
  return ~u;
}

E57Reader::E57Reader(const char* szPath, std::uint64_t uPhysical)
    : m_buff(szPath), m_uFirst(static_cast<std::size_t>(uPhysical % kE57Page)) {
  if (m_buff.GetError() != eZuFileBuffGood) return;
  m_uPage = uPhysical / kE57Page;
  m_buff.Skip(m_uPage * kE57Page);
}

bool E57Reader::Load() {
  std::size_t uHave = 0;
  if (m_buff.GetError() != eZuFileBuffGood || m_buff.GetRest() < kE57Page) return false;
  const unsigned char* const p = m_buff.Peek(kE57Page, &uHave);
  if (uHave < kE57Page) return false;
  ++m_uPage;
  m_bDamaged = std::memcmp(ChecksumBytes(p).data(), p + kE57PageData, 4) != 0;
  if (m_bDamaged || m_uFirst > kE57PageData) return false;
  std::memcpy(m_acPage.data(), p, kE57PageData);
  m_buff.Skip(kE57Page);
  m_uAt = m_uFirst;
  m_uFirst = 0;
  return true;
}

bool E57Reader::Read(void* pTarget, std::size_t uSize) {
  auto* pOut = static_cast<unsigned char*>(pTarget);
  while (uSize > 0) {
    if (m_uAt == kE57PageData && !Load()) return false;
    const std::size_t n = std::min<std::size_t>(uSize, kE57PageData - m_uAt);
    std::memcpy(pOut, m_acPage.data() + m_uAt, n);
    m_uAt += n;
    pOut += n;
    uSize -= n;
  }
  return true;
}

bool E57Reader::Skip(std::uint64_t uSize) {
  while (uSize > 0) {
    if (m_uAt == kE57PageData && !Load()) return false;
    const std::uint64_t n = std::min<std::uint64_t>(uSize, kE57PageData - m_uAt);
    m_uAt += static_cast<std::size_t>(n);
    uSize -= n;
  }
  return true;
}

bool E57Writer::Write(const void* pBytes, std::size_t uSize) {
  const auto* p = static_cast<const unsigned char*>(pBytes);
  m_uLogical += uSize;
  while (uSize > 0) {
    const std::size_t n = std::min<std::size_t>(uSize, kE57PageData - m_uAt);
    std::memcpy(m_acPage.data() + m_uAt, p, n);
    m_uAt += n;
    p += n;
    uSize -= n;
    if (m_uAt == kE57PageData && !WritePage()) return false;
  }
  return m_bGood;
}

bool E57Writer::WritePage() {
  std::memcpy(m_acPage.data() + kE57PageData, ChecksumBytes(m_acPage.data()).data(), 4);
  m_bGood = m_bGood && std::fwrite(m_acPage.data(), 1, kE57Page, m_fp) == kE57Page;
  m_acPage.fill(0);
  m_uAt = 0;
  return m_bGood;
}

bool E57Writer::Finish() { return m_uAt == 0 ? m_bGood : WritePage(); }

}  // namespace zu::internal
