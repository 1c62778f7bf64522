#include "zu/points/internal/line_fields.h"

#include <algorithm>
#include <cstddef>

std::string_view ZuTrimmed(std::string_view text) {
  constexpr std::string_view kBlanks = " \t";
  const std::size_t uFirst = text.find_first_not_of(kBlanks);
  if (uFirst == text.npos) return text.substr(0, 0);
  return text.substr(uFirst, text.find_last_not_of(kBlanks) + 1 - uFirst);
}

void ZuSplitLoosely(std::string_view line, std::string_view delimiters, ZuLineFields* pFields) {
  pFields->clear();
  for (std::size_t u = line.find_first_not_of(delimiters); u < line.size();
       u = line.find_first_not_of(delimiters, u)) {
    const bool bQuoted = line[u] == '"';
    if (bQuoted) ++u;
    const std::size_t uEnd =
        std::min(bQuoted ? line.find('"', u) : line.find_first_of(delimiters, u), line.size());
    pFields->push_back(line.substr(u, uEnd - u));
    u = bQuoted ? uEnd + 1 : uEnd;
    if (u >= line.size()) break;
  }
}

void ZuSplitBy(char cDelimiter, std::string_view line, ZuLineFields* pFields) {
  pFields->clear();
  for (std::size_t u = 0; u <= line.size();) {
    const std::size_t uFirst = std::min(line.find_first_not_of(' ', u), line.size());
    const bool bQuoted = uFirst < line.size() && line[uFirst] == '"';
    const std::size_t uClosed =
        bQuoted ? std::min(line.find('"', uFirst + 1), line.size()) : uFirst;
    std::size_t uEnd = std::min(line.find(cDelimiter, uClosed), line.size());
    pFields->push_back(bQuoted ? line.substr(uFirst + 1, uClosed - uFirst - 1)
                               : ZuTrimmed(line.substr(u, uEnd - u)));
    while (cDelimiter == '\t' && uEnd + 1 < line.size() && line[uEnd + 1] == '\t') ++uEnd;
    u = uEnd + 1;
  }
}

char ZuDividerOf(std::string_view line) {
  for (const char c : {';', '\t', ','}) {
    if (line.find(c) != line.npos) return c;
  }
  return '\0';
}
