#include "zu/exchange/internal/json_finding.h"

#include <algorithm>
#include <cstdint>
#include <iterator>

namespace zu::internal {

ZuFinding JsonFinding(const std::string& strName, const std::string& strText,
                      const std::string& strRight) {
  ZuFinding finding;
  finding.m_strFile = strName;
  finding.m_strText = strText;
  finding.m_strRight = strRight;
  return finding;
}

ZuFinding JsonSyntaxFinding(const std::string& strName, const std::string& strText,
                            std::size_t uByte) {
  ZuFinding finding = JsonFinding(strName, "is no JSON from here on", "");
  const auto pEnd = strText.begin() + static_cast<std::ptrdiff_t>(
                                          std::min(uByte > 0 ? uByte - 1 : 0, strText.size()));
  finding.m_uLine = 1 + static_cast<std::uint64_t>(std::count(strText.begin(), pEnd, '\n'));
  const auto pLine = std::find(std::make_reverse_iterator(pEnd), strText.rend(), '\n').base();
  finding.m_uColumn = 1 + static_cast<std::uint64_t>(pEnd - pLine);
  return finding;
}

}  // namespace zu::internal
