// Cutting lines into tokens at runs of delimiters.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "zu/foundation/numbers.h"

struct ZuTextToken {
  const char* pBegin;
  const char* pEnd;
  std::string_view View() const { return {pBegin, static_cast<std::size_t>(pEnd - pBegin)}; }
  double AsDouble() const { return ZuAtof(pBegin, pEnd); }
  int AsInt() const { return ZuAtoi(pBegin, pEnd); }
  std::uint32_t AsByte() const { return static_cast<std::uint32_t>(AsInt()) & 0xFFu; }
};

// The delimiters of PTS lines, as strtok takes them, and of PLY lines.
struct ZuPtsDelimiter {
  bool operator()(char c) const {
    constexpr std::uint64_t kSet = 1ull << ' ' | 1ull << '\t' | 1ull << '\r' | 1ull << '\n';
    const auto u = static_cast<unsigned char>(c);
    return u <= ' ' && (kSet >> u & 1) != 0;
  }
};
struct ZuPlyDelimiter {
  bool operator()(char c) const { return c == ' ' || c == '\t'; }
};

// Counts the tokens of [pBegin, pEnd) and keeps the first uKeep of them.
template <class Delimiter>
std::size_t ZuSplitTokens(const char* pBegin, const char* pEnd, Delimiter isDelimiter,
                          ZuTextToken* pTokens, std::size_t uKeep) {
  std::size_t uCount = 0;
  for (const char* p = pBegin;;) {
    while (p != pEnd && isDelimiter(*p)) ++p;
    if (p == pEnd) return uCount;
    const char* const pToken = p;
    while (p != pEnd && !isDelimiter(*p)) ++p;
    if (uCount < uKeep) pTokens[uCount] = {pToken, p};
    ++uCount;
  }
}

// Where fgets with a buffer of 1,000 bytes would end the line that starts at pBegin: behind the
// line end, after 999 bytes, or at pEnd.
inline const char* ZuFgetsEnd(const char* pBegin, const char* pEnd) {
  constexpr std::ptrdiff_t kLine = 999;
  const char* const pLimit = pEnd - pBegin > kLine ? pBegin + kLine : pEnd;
  const void* pFound = std::memchr(pBegin, '\n', static_cast<std::size_t>(pLimit - pBegin));
  return pFound ? static_cast<const char*>(pFound) + 1 : pLimit;
}
