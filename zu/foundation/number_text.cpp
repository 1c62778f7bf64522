#include "zu/foundation/number_text.h"

#include <algorithm>

#include "zu/foundation/internal/characters.h"

using zu::internal::IsDigit;

bool ZuParseCommaNumber(std::string_view text, double* pdValue) {
  const std::size_t uComma = text.find(',');
  if (uComma == text.npos || uComma == 0 || uComma + 1 == text.size()) return false;
  if (!IsDigit(text[uComma - 1]) || !IsDigit(text[uComma + 1])) return false;
  if (text.find('.') != text.npos) return false;
  std::string strPoint(text);
  strPoint[uComma] = '.';
  return ZuParseNumber(strPoint, pdValue);
}

bool ZuHasDecimalComma(std::string_view text) {
  double dValue = 0.0;
  return ZuParseCommaNumber(text, &dValue);
}

std::string ZuQuoted(std::string_view text) {
  constexpr std::size_t kShown = 40;  // bytes
  std::string strText = '"' + std::string(text.substr(0, kShown));
  std::replace_if(
      strText.begin(), strText.end(),
      [](char c) { return static_cast<unsigned char>(c) < ' ' || c == '\x7F'; }, '?');
  return strText + (text.size() > kShown ? "...\"" : "\"");
}

ZuTextFault ZuWhyNoNumber(std::string_view text) {
  if (!ZuHasDecimalComma(text)) {
    return {ZuQuoted(text) + " is no number", "one such as 12.345"};
  }
  std::string strPoint(text);
  strPoint[strPoint.find(',')] = '.';
  return {ZuQuoted(text) + " has a decimal comma", strPoint};
}

ZuTextFault ZuWhyNoId(std::string_view text) {
  return {ZuQuoted(text) + " is no id", "a whole number from 1 to 4294967295"};
}

ZuTextFault ZuWhyNoCommaNumber(std::string_view text) {
  std::string strComma(text);
  std::replace(strComma.begin(), strComma.end(), '.', ',');
  return {ZuQuoted(text) + " has a decimal point, the numbers before have commas", strComma};
}
