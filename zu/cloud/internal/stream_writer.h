// Bytes on their way to a stream, gathered to blocks: one call of the run-time for hundreds of
// records instead of one for each field. The block stands on the stack: a writer needs no memory
// that could be missing.
#pragma once

#include <cstddef>
#include <cstdio>

#include "zu/foundation/internal/build_size.h"

class ZuStreamWriter {
 public:
  explicit ZuStreamWriter(std::FILE* fp) : m_fp(fp) {}
  ZuStreamWriter(const ZuStreamWriter&) = delete;
  ZuStreamWriter& operator=(const ZuStreamWriter&) = delete;

  // Room for uSize bytes, at most 4,096, to be filled from the pointer on; Filled tells the
  // position behind what was filled.
  char* Room(std::size_t uSize) {
    if (m_uUsed + uSize > kBlock) Flush();
    return m_acBlock + m_uUsed;
  }
  void Filled(const char* pEnd) { m_uUsed = static_cast<std::size_t>(pEnd - m_acBlock); }

  // The same for bytes that are no text.
  unsigned char* ByteRoom(std::size_t uSize) {
    return reinterpret_cast<unsigned char*>(Room(uSize));
  }
  void Filled(const unsigned char* pEnd) { Filled(reinterpret_cast<const char*>(pEnd)); }

  // Hands over what has gathered. False when the stream took less than all so far.
  bool Flush() {
    if (m_bGood) m_bGood = std::fwrite(m_acBlock, 1, m_uUsed, m_fp) == m_uUsed;
    m_uUsed = 0;
    return m_bGood;
  }
  bool IsGood() const { return m_bGood; }

 private:
  static constexpr std::size_t kBlock = ZuBuildSize(32 * 1024, 4096);  // bytes

  std::FILE* m_fp;
  std::size_t m_uUsed = 0;
  bool m_bGood = true;
  char m_acBlock[kBlock];
};
