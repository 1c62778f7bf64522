#include "zu/exchange/internal/text_scan.h"

#include <algorithm>
#include <charconv>

#include "zu/exchange/internal/photo_block.h"
#include "zu/foundation/number_text.h"

namespace zu::internal {

namespace {

constexpr std::string_view kBlanks = " \t\r";

}  // namespace

bool TextScan::Next(std::string_view* pLine) {
  if (m_uAt >= m_text.size()) return false;
  const std::size_t uEnd = std::min(m_text.find('\n', m_uAt), m_text.size());
  *pLine = m_text.substr(m_uAt, uEnd - m_uAt);
  m_uAt = uEnd + 1;
  ++m_uLine;
  return true;
}

bool TextScan::NextFilled(std::string_view* pLine) {
  while (Next(pLine)) {
    const std::size_t uFirst = pLine->find_first_not_of(kBlanks);
    if (uFirst != std::string_view::npos && (*pLine)[uFirst] != '#') return true;
  }
  return false;
}

std::string_view TextScan::Word() {
  do {
    const std::string_view word = TakeWord(&m_words);
    if (!word.empty()) return word;
  } while (Next(&m_words));
  return {};
}

void TextScan::Fail(const std::string& strText, const std::string& strRight) const {
  FailExchange(m_file.strName, m_uLine, strText, strRight);
}

double TextScan::Number(std::string_view word) const {
  double d = 0.0;
  if (word.empty()) Fail("a number is missing", "a number");
  if (!ZuParseNumber(word, &d)) {
    const ZuTextFault fault = ZuWhyNoNumber(word);
    Fail(fault.m_strText, fault.m_strRight);
  }
  return d;
}

std::uint64_t TextScan::Whole(std::string_view word) const {
  std::uint64_t u = 0;
  const auto [p, error] = std::from_chars(word.data(), word.data() + word.size(), u);
  if (word.empty() || error != std::errc() || p != word.data() + word.size()) {
    Fail(ZuQuoted(word) + " is no whole number", "a number such as 1");
  }
  return u;
}

std::string_view TakeWord(std::string_view* pText) {
  const std::size_t uFirst = std::min(pText->find_first_not_of(kBlanks), pText->size());
  const std::size_t uEnd = std::min(pText->find_first_of(kBlanks, uFirst), pText->size());
  const std::string_view word = pText->substr(uFirst, uEnd - uFirst);
  pText->remove_prefix(uEnd);
  return word;
}

void AppendNumber(double d, std::string* pText) {
  char acText[32];
  *pText += ' ';
  pText->append(acText, std::to_chars(acText, acText + sizeof acText, d).ptr);
}

}  // namespace zu::internal
