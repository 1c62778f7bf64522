// The pages of an E57 file: 1,020 bytes and the CRC-32C of them, the highest byte first. Places are
// physical, with checksums, or logical, without.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdio>

#include "zu/cloud/file_buff.h"

namespace zu::internal {

constexpr std::uint64_t kE57Page = 1024, kE57PageData = 1020;

// The checksum of G. Castagnoli et al. (1993), polynomial 0x1EDC6F41, bits reversed.
std::uint32_t Crc32c(const unsigned char* pBytes, std::size_t uSize);

inline std::uint64_t E57Physical(std::uint64_t uLogical) {
  return uLogical / kE57PageData * kE57Page + uLogical % kE57PageData;
}

inline std::uint64_t E57Logical(std::uint64_t uPhysical) {
  return uPhysical / kE57Page * kE57PageData + uPhysical % kE57Page;
}

// Reads forward from a physical place; each reader has the file to itself.
class E57Reader {
 public:
  E57Reader(const char* szPath, std::uint64_t uPhysical);

  // False at the end of the file, or at a page that does not match its checksum: IsDamaged.
  bool Read(void* pTarget, std::size_t uSize);
  bool Skip(std::uint64_t uSize);

  bool IsDamaged() const { return m_bDamaged; }
  std::uint64_t Page() const { return m_uPage; }  // from 1, of the last byte
  std::uint64_t FileSize() const { return m_buff.GetSize(); }

 private:
  bool Load();

  ZuFileBuff m_buff;
  std::array<unsigned char, kE57PageData> m_acPage{};
  std::size_t m_uAt = kE57PageData;  // in the page
  std::size_t m_uFirst = 0;          // where reading starts in the first page
  std::uint64_t m_uPage = 0;
  bool m_bDamaged = false;
};

class E57Writer {
 public:
  explicit E57Writer(std::FILE* fp) : m_fp(fp) {}

  bool Write(const void* pBytes, std::size_t uSize);
  // Fills the last page with zeros.
  bool Finish();
  std::uint64_t Logical() const { return m_uLogical; }

 private:
  bool WritePage();

  std::FILE* m_fp;
  std::array<unsigned char, kE57Page> m_acPage{};
  std::size_t m_uAt = 0;
  std::uint64_t m_uLogical = 0;
  bool m_bGood = true;
};

}  // namespace zu::internal
