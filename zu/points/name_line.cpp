#include "zu/points/name_line.h"

namespace {

constexpr std::string_view kNameDividers = " \t\r\n,";

}  // namespace

bool ZuParseNameLine(std::string_view line, std::vector<std::string>* pWords) {
  pWords->clear();
  for (size_t u = 0; u < line.size();) {
    if (kNameDividers.find(line[u]) != std::string_view::npos) {
      ++u;
      continue;
    }
    if (line[u] == '#') break;
    const bool bQuoted = line[u] == '"';
    if (bQuoted) ++u;
    size_t uEnd = u;
    while (uEnd < line.size() &&
           (bQuoted ? line[uEnd] != '"'
                    : line[uEnd] != '"' && line[uEnd] != '#' &&
                          kNameDividers.find(line[uEnd]) == std::string_view::npos)) {
      ++uEnd;
    }
    if (bQuoted && uEnd == line.size()) return false;
    pWords->emplace_back(line.substr(u, uEnd - u));
    u = uEnd + (bQuoted ? 1 : 0);
  }
  return true;
}

std::string ZuNameLine(const std::vector<std::string>& words) {
  std::string strLine;
  for (std::string strWord : words) {
    for (char& c : strWord) c = c == '"' || c == '\n' ? ' ' : c;
    const bool bQuoted = strWord.empty() || strWord.find_first_of(" \t\r,#") != std::string::npos;
    if (!strLine.empty()) strLine += ' ';
    strLine += bQuoted ? '"' + strWord + '"' : strWord;
  }
  return strLine;
}
