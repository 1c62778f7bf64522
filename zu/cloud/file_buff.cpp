#include "zu/cloud/file_buff.h"

#include <algorithm>
#include <cstring>

#include "zu/cloud/internal/file_access.h"
#include "zu/cloud/internal/little_endian.h"
#include "zu/foundation/internal/build_size.h"

namespace {

// Bytes; small enough for the second-level cache.
constexpr std::size_t kWindow = ZuBuildSize(256 * 1024, 4096);

}  // namespace

ZuFileBuff::ZuFileBuff(const char* szPath) : m_hFile(ZuFileAccess::Open(szPath)) { Open(); }

ZuFileBuff::ZuFileBuff(const wchar_t* szPath) : m_hFile(ZuFileAccess::Open(szPath)) { Open(); }

ZuFileBuff::~ZuFileBuff() { Close(); }

void ZuFileBuff::Open() {
  if (m_hFile == -1) {
    m_iError = eZuFileBuffNotOpen;
    return;
  }
  m_uSize = m_uEnd = ZuFileAccess::Size(m_hFile);
  if (m_uSize == 0) {
    m_iError = eZuFileBuffEmpty;
    Close();
    return;
  }
  m_pBase = ZuFileAccess::Map(m_hFile, &m_hMapping);
  if (m_pBase) {
    m_uBaseSize = m_uSize;
    ZuFileAccess::Close(m_hFile);
    m_hFile = -1;
    return;
  }
  try {
    m_spWindow.reset(new unsigned char[kWindow]);
  } catch (...) {
    Close();
    throw;
  }
  m_pBase = m_spWindow.get();
}

void ZuFileBuff::Close() {
  if (m_hMapping != -1) ZuFileAccess::Unmap(m_pBase, m_hMapping);
  if (m_hFile != -1) ZuFileAccess::Close(m_hFile);
  m_hMapping = m_hFile = -1;
  m_spWindow.reset();
  m_pBase = nullptr;
  m_uBaseSize = 0;
}

const unsigned char* ZuFileBuff::Refill(std::size_t* puHave) {
  // What is in view from the position on moves to the front; it may be nothing.
  const std::uint64_t uSeen = std::min(m_uPos - m_uBase, m_uBaseSize);
  std::size_t uHave = static_cast<std::size_t>(m_uBaseSize - uSeen);
  if (!m_spWindow) {
    *puHave = uHave;
    return m_pBase + uSeen;
  }
  unsigned char* const pWindow = m_spWindow.get();
  std::memmove(pWindow, pWindow + uSeen, uHave);
  const std::uint64_t uLeft = m_uEnd - m_uPos - uHave;
  const std::size_t uFill =
      static_cast<std::size_t>(std::min<std::uint64_t>(uLeft, kWindow - uHave));
  const std::size_t uRead = ZuFileAccess::ReadAt(m_hFile, m_uPos + uHave, pWindow + uHave, uFill);
  uHave += uRead;
  if (uRead < uFill) m_uEnd = m_uPos + uHave;  // the file became shorter
  m_uBase = m_uPos;
  m_uBaseSize = uHave;
  *puHave = uHave;
  return pWindow;
}

std::size_t ZuFileBuff::Read(void* pTarget, std::size_t uSize) {
  unsigned char* const pBytes = static_cast<unsigned char*>(pTarget);
  std::size_t uDone = 0;
  while (uDone < uSize && !IsEnd()) {
    std::size_t uHave = 0;
    const unsigned char* pSource = Peek(1, &uHave);
    const std::size_t uPiece = std::min(uHave, uSize - uDone);
    std::memcpy(pBytes + uDone, pSource, uPiece);
    Skip(uPiece);
    uDone += uPiece;
  }
  if (uDone > 0) std::memset(pBytes + uDone, 0, uSize - uDone);
  return uDone;
}

std::uint32_t ZuFileBuff::ReadWord() {
  unsigned char aBytes[4] = {};
  Read(aBytes, sizeof aBytes);
  return ZuLoadLittle<std::uint32_t>(aBytes);
}

void ZuFileBuff::Skip(std::uint64_t uSize) { m_uPos += std::min(uSize, GetRest()); }
