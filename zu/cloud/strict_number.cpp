#include "zu/cloud/internal/strict_number.h"

#include <algorithm>

#include "zu/foundation/internal/characters.h"

namespace {

using zu::internal::IsDigit;

constexpr std::ptrdiff_t kLongest = 40;  // bytes of a token that a message shows

// Digits on both sides of its only comma, and otherwise a number.
bool HasDecimalComma(const std::string& strText) {
  const std::size_t u = strText.find(',');
  if (u == strText.npos || u == 0 || u + 1 == strText.size()) return false;
  std::string strPoint = strText;
  strPoint[u] = '.';
  const ZuTextToken token = {strPoint.data(), strPoint.data() + strPoint.size()};
  const char* pStop = nullptr;
  ZuAtof(token.pBegin, token.pEnd, &pStop);
  return pStop == token.pEnd && IsDigit(strText[u - 1]) && IsDigit(strText[u + 1]);
}

}  // namespace

std::string ZuQuoted(const char* pBegin, const char* pEnd) {
  std::string strText(pBegin, pEnd - pBegin > kLongest ? pBegin + kLongest : pEnd);
  std::replace_if(
      strText.begin(), strText.end(),
      [](char c) { return static_cast<unsigned char>(c) < ' ' || c == '\x7F'; }, '?');
  return '"' + strText + (pEnd - pBegin > kLongest ? "...\"" : "\"");
}

std::string ZuWhyNoNumber(const ZuTextToken& token) {
  const std::string strQuoted = ZuQuoted(token.pBegin, token.pEnd);
  std::string strText(token.pBegin, token.pEnd);
  if (strText.size() < kLongest && HasDecimalComma(strText)) {
    strText[strText.find(',')] = '.';
    return strQuoted + " has a decimal comma, " + strText + " would be right";
  }
  if (strText.find_first_of(",;") != strText.npos && IsDigit(strText[0])) {
    return strQuoted + " is no number; blanks between the numbers would be right";
  }
  return strQuoted + " is no number, one such as 12.345 would be right";
}
