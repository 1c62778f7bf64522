#include "zu/points/internal/line_reader.h"

#include <cstring>

bool ZuLineReader::Next(std::string_view* pLine) {
  if (m_uEnd - m_uNext <= kMaxLine && !m_bEnd) FillBlock();
  const char* const pBegin = m_pBlock.get() + m_uNext;
  const std::size_t uRest = m_uEnd - m_uNext;
  if (uRest == 0) return false;

  // A line end right behind the longest piece belongs to it.
  const std::size_t uSearch = uRest <= kMaxLine ? uRest : kMaxLine + 1;
  const void* const pFound = std::memchr(pBegin, '\n', uSearch);
  const bool bCut = pFound == nullptr && uRest > kMaxLine;
  std::size_t uLength = bCut ? kMaxLine : uRest;
  if (pFound != nullptr) {
    uLength = static_cast<std::size_t>(static_cast<const char*>(pFound) - pBegin);
  }
  m_uNext += pFound != nullptr ? uLength + 1 : uLength;
  m_bPiece = bCut || m_bMorePieces;
  m_bMorePieces = bCut;

  m_bEnds = pFound != nullptr;
  m_bCarriageReturn = uLength > 0 && pBegin[uLength - 1] == '\r';
  while (uLength > 0 && pBegin[uLength - 1] == '\r') --uLength;
  const void* const pNul = std::memchr(pBegin, '\0', uLength);
  if (pNul != nullptr) {
    uLength = static_cast<std::size_t>(static_cast<const char*>(pNul) - pBegin);
  }
  *pLine = std::string_view(pBegin, uLength);
  return true;
}

void ZuLineReader::FillBlock() {
  char* const pBlock = m_pBlock.get();
  std::memmove(pBlock, pBlock + m_uNext, m_uEnd - m_uNext);
  m_uEnd -= m_uNext;
  m_uNext = 0;
  while (m_uEnd < kBlock && !m_bEnd) {
    const std::size_t n = std::fread(pBlock + m_uEnd, 1, kBlock - m_uEnd, m_pFile);
    m_bEnd = n == 0;
    m_uEnd += n;
  }
  if (m_bEnd && std::ferror(m_pFile) != 0) {
    while (m_uEnd > 0 && pBlock[m_uEnd - 1] != '\n') --m_uEnd;
  }
  if (m_bStart && m_uEnd >= 3 && std::memcmp(pBlock, "\xEF\xBB\xBF", 3) == 0) m_uNext = 3;
  if (m_bStart) m_bByteOrderMark = m_uNext == 3;
  m_bStart = false;
}

ZuOpenFile ZuOpenText(const char* szPath) {
  return ZuOpenFile(szPath != nullptr ? std::fopen(szPath, "r") : nullptr);
}
