#include "zu/foundation/strict_number.h"

#include <charconv>
#include <cmath>

namespace {

// A sign before a number without one.
std::string_view WithoutPlus(std::string_view text) {
  if (!text.empty() && text[0] == '+' && (text.size() < 2 || text[1] != '-')) text.remove_prefix(1);
  return text;
}

}  // namespace

bool ZuParseNumber(std::string_view text, double* pdValue) {
  text = WithoutPlus(text);
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

bool ZuParseId(std::string_view text, unsigned* puId) {
  unsigned uId = 0;
  const char* const pEnd = text.data() + text.size();
  const auto result = std::from_chars(text.data(), pEnd, uId);
  if (result.ec != std::errc() || result.ptr != pEnd || uId == 0) return false;
  *puId = uId;
  return true;
}

bool ZuParseWhole(std::string_view text, int* piValue) {
  text = WithoutPlus(text);
  int iValue = 0;
  const char* const pEnd = text.data() + text.size();
  const auto result = std::from_chars(text.data(), pEnd, iValue);
  if (result.ec != std::errc() || result.ptr != pEnd) return false;
  *piValue = iValue;
  return true;
}
