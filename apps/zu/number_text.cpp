#include "number_text.h"

#include <charconv>
#include <cmath>

namespace cli {
namespace {

constexpr size_t kShown = 40;  // characters of a text in a message

std::string Quoted(std::string_view text) {
  std::string strText = "\"";
  for (const char c : text.substr(0, kShown)) {
    strText += static_cast<unsigned char>(c) < ' ' ? '?' : c;
  }
  return strText + (text.size() > kShown ? "...\"" : "\"");
}

}  // namespace

bool ParseNumber(std::string_view text, double* pdValue) {
  if (!text.empty() && text[0] == '+' && (text.size() < 2 || text[1] != '-')) text.remove_prefix(1);
  double dValue = 0.0;
  const char* const pEnd = text.data() + text.size();
  const auto result = std::from_chars(text.data(), pEnd, dValue);
  if (result.ptr != pEnd || text.empty()) return false;
  // Too small to be told from 0, or too large: only the latter is no number to work with.
  if (result.ec == std::errc::result_out_of_range) {
    const size_t uExponent = text.find_first_of("eE");
    if (uExponent == text.npos || text.substr(uExponent + 1, 1) != "-") return false;
    dValue = 0.0;
  } else if (result.ec != std::errc() || !std::isfinite(dValue)) {
    return false;
  }
  *pdValue = dValue;
  return true;
}

bool ParseId(std::string_view text, unsigned* puId) {
  unsigned uId = 0;
  const char* const pEnd = text.data() + text.size();
  const auto result = std::from_chars(text.data(), pEnd, uId);
  if (result.ec != std::errc() || result.ptr != pEnd || uId == 0) return false;
  *puId = uId;
  return true;
}

bool HasDecimalComma(std::string_view text) {
  const size_t uComma = text.find(',');
  if (uComma == text.npos || uComma == 0 || uComma + 1 == text.size()) return false;
  if (text.find('.') != text.npos) return false;
  std::string strPoint(text);
  strPoint[uComma] = '.';
  double dValue = 0.0;
  return ParseNumber(strPoint, &dValue);
}

std::string WhyNoNumber(std::string_view text) {
  if (HasDecimalComma(text)) {
    std::string strPoint(text);
    strPoint[strPoint.find(',')] = '.';
    return Quoted(text) + " has a decimal comma, " + strPoint + " would be right";
  }
  return Quoted(text) + " is no number, one such as 12.345 would be right";
}

std::string WhyNoId(std::string_view text) {
  return Quoted(text) + " is no id, a whole number from 1 to 4294967295 would be right";
}

}  // namespace cli
