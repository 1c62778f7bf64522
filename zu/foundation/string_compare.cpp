#include <algorithm>
#include <cstring>
#include <string_view>

#include "zu/foundation/string_functions.h"

namespace {

int Difference(char a, char b) { return static_cast<signed char>(a) - static_cast<signed char>(b); }

char UpperAscii(char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; }

int CompareTerminated(char const* x, char const* y) {
  while (*x != '\0' && *x == *y) ++x, ++y;
  return Difference(*x, *y);
}

int CompareStretches(std::string_view x, std::string_view y) {
  const std::size_t n = std::min(x.size(), y.size());
  for (std::size_t i = 0; i < n; ++i) {
    if (x[i] != y[i]) return Difference(x[i], y[i]);
  }
  return static_cast<int>(x.size()) - static_cast<int>(y.size());
}

std::string_view View(String const& x) { return {x.chars(), static_cast<std::size_t>(x.length())}; }

std::string_view View(SubString const& x) {
  return {x.chars(), static_cast<std::size_t>(x.Rest())};
}

}  // namespace

int compare(String const& x, String const& y) { return CompareTerminated(x.chars(), y.chars()); }

int compare(String const& x, char const* y) {
  if (y == nullptr) return x.empty() ? 0 : 1;
  return CompareTerminated(x.chars(), y);
}

int compare(String const& x, SubString const& y) { return CompareStretches(View(x), View(y)); }

int compare(SubString const& x, String const& y) { return CompareStretches(View(x), View(y)); }

int compare(SubString const& x, SubString const& y) { return CompareStretches(View(x), View(y)); }

int compare(SubString const& x, char const* y) {
  return CompareStretches(View(x), std::string_view(y ? y : ""));
}

int fcompare(String const& x, String const& y) {
  const int n = std::min(x.length(), y.length());
  char const* const px = x.chars();
  char const* const py = y.chars();
  for (int i = 0; i < n; ++i) {
    if (px[i] == py[i]) continue;
    const int iDifference = Difference(UpperAscii(px[i]), UpperAscii(py[i]));
    if (iDifference != 0) return iDifference;
  }
  return x.length() - y.length();
}

String common_prefix(String const& x, String const& y, int start) {
  const int n = std::min(x.length(), y.length());
  if (start < 0 || start >= n) return String();
  int i = start;
  while (i < n && x.chars()[i] == y.chars()[i]) ++i;
  return String(x.chars() + start, i - start);
}

String common_suffix(String const& x, String const& y, int start) {
  if (start >= 0) return String();
  char const* const pxEnd = x.chars() + std::max(x.length() + start + 1, 0);
  char const* const pyEnd = y.chars() + std::max(y.length() + start + 1, 0);
  char const* px = pxEnd;
  char const* py = pyEnd;
  while (px > x.chars() && py > y.chars() && px[-1] == py[-1]) --px, --py;
  return String(px, static_cast<int>(pxEnd - px));
}
