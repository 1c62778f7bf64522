#include "zu/points/internal/fields.h"

#include <cstring>

#include "zu/foundation/internal/characters.h"
#include "zu/foundation/numbers.h"

using zu::internal::IsDigit;

std::string_view ZuFieldCutter::Text() {
  const char* pBegin = m_pNext;
  if (*pBegin == '"') {
    ++pBegin;
    const auto* pQuote = static_cast<const char*>(
        std::memchr(pBegin, '"', static_cast<std::size_t>(m_pEnd - pBegin)));
    const char* const pStop = pQuote != nullptr ? pQuote : m_pEnd;
    m_pNext = pQuote != nullptr ? pQuote + 1 : m_pEnd;
    return {pBegin, static_cast<std::size_t>(pStop - pBegin)};
  }
  while (m_pNext != m_pEnd && !IsDelimiter(*m_pNext)) ++m_pNext;
  return {pBegin, static_cast<std::size_t>(m_pNext - pBegin)};
}

double ZuFieldCutter::Double() {
  // Where a number runs to the end of its field, its own end is that of the field: one pass.
  const char c = *m_pNext;
  if (IsDigit(c) || c == '-') {
    const char* pStop = m_pNext;
    const double dValue = ZuAtof(m_pNext, m_pEnd, &pStop);
    if (pStop == m_pEnd || IsDelimiter(*pStop)) {
      m_pNext = pStop;
      return dValue;
    }
  }
  const std::string_view text = Text();
  return ZuAtof(text.data(), text.data() + text.size());
}

bool ZuFieldCutter::ShortInt(int* piValue) {
  constexpr int kSafeDigits = 9;
  const char* p = m_pNext;
  int iValue = 0;
  while (p != m_pEnd && p - m_pNext < kSafeDigits && IsDigit(*p))
    iValue = iValue * 10 + (*p++ - '0');
  if (p == m_pNext || (p != m_pEnd && !IsDelimiter(*p))) return false;
  m_pNext = p;
  *piValue = iValue;
  return true;
}

int ZuFieldCutter::Int() {
  int iValue = 0;
  if (ShortInt(&iValue)) return iValue;
  const std::string_view text = Text();
  return ZuAtoi(text.data(), text.data() + text.size());
}

unsigned int ZuFieldCutter::Id() {
  int iValue = 0;
  if (ShortInt(&iValue)) return static_cast<unsigned int>(iValue);
  const std::string_view text = Text();
  return ZuAtou(text.data(), text.data() + text.size());
}
