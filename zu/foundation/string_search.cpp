// Search, match and the stretches cut out by them.
#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "zu/foundation/internal/str_block.h"
#include "zu/foundation/string.h"

using zu::internal::TextLength;

int String::search(int start, int sl, char c) const {
  sl = std::min(sl, length());
  const std::string_view text(rep->s, static_cast<std::size_t>(std::max(sl, 0)));
  std::size_t iFound = std::string_view::npos;
  if (start >= 0) {
    iFound = text.find(c, static_cast<std::size_t>(start));
  } else if (sl + start >= 0) {
    iFound = text.rfind(c, static_cast<std::size_t>(sl + start));
  }
  return iFound == std::string_view::npos ? -1 : static_cast<int>(iFound);
}

int String::search(int start, int sl, char const* t, int tl) const {
  sl = std::min(sl, length());
  const std::string_view pattern(t ? t : "", TextLength(t, tl));
  if (sl < 1 || pattern.empty() || pattern.size() > static_cast<std::size_t>(sl)) return -1;

  const std::string_view text(rep->s, static_cast<std::size_t>(sl));
  std::size_t iFound = std::string_view::npos;
  if (start >= 0) {
    iFound = text.find(pattern, static_cast<std::size_t>(start));
  } else {
    const int iLast = sl + start + 1 - static_cast<int>(pattern.size());
    if (iLast >= 0) iFound = text.rfind(pattern, static_cast<std::size_t>(iLast));
  }
  return iFound == std::string_view::npos ? -1 : static_cast<int>(iFound);
}

int String::match(int start, int sl, int exact, char const* t, int tl) const {
  sl = std::min(sl, length());
  const std::int64_t n = static_cast<std::int64_t>(TextLength(t, tl));
  std::int64_t iFirst = start;
  if (start < 0) {
    iFirst = std::int64_t{sl} + start + 1 - n;
    if (iFirst < 0 || (exact && iFirst != 0)) return -1;
  } else if (exact && std::int64_t{sl} - start != n) {
    return -1;
  }
  if (sl < 1 || n < 1 || iFirst >= sl || n > sl - iFirst) return -1;
  if (std::memcmp(rep->s + iFirst, t, static_cast<std::size_t>(n)) != 0) return -1;
  return static_cast<int>(n);
}

int String::index(String const& x, int start) const {
  return search(start, length(), x.chars(), x.length());
}

int String::index(SubString const& x, int start) const {
  return search(start, length(), x.chars(), x.Rest());
}

int String::index(char c, int start) const { return search(start, length(), c); }

int String::index(char const* t, int start) const { return search(start, length(), t); }

bool String::contains(String const& x, int pos) const {
  return match(pos, length(), 0, x.chars(), x.length()) >= 0;
}

bool String::contains(SubString const& x, int pos) const {
  return match(pos, length(), 0, x.chars(), x.Rest()) >= 0;
}

bool String::contains(char c, int pos) const { return match(pos, length(), 0, &c, 1) >= 0; }

bool String::contains(char const* t, int pos) const { return match(pos, length(), 0, t) >= 0; }

bool String::matches(String const& x, int pos) const {
  return match(pos, length(), 1, x.chars(), x.length()) >= 0;
}

bool String::matches(SubString const& x, int pos) const {
  return match(pos, length(), 1, x.chars(), x.Rest()) >= 0;
}

bool String::matches(char c, int pos) const { return match(pos, length(), 1, &c, 1) >= 0; }

bool String::matches(char const* t, int pos) const { return match(pos, length(), 1, t) >= 0; }

int String::Count(char const* t, int tl) const {
  const int n = static_cast<int>(std::min<std::size_t>(TextLength(t, tl), 0x10000));
  int nFound = 0;
  for (int i = 0; i + n <= length(); ++i) nFound += match(i, length(), 0, t, n) >= 0;
  return nFound;
}

int String::freq(String const& x) const { return Count(x.chars(), x.length()); }

int String::freq(SubString const& x) const { return Count(x.chars(), x.Rest()); }

int String::freq(char c) const { return Count(&c, 1); }

int String::freq(char const* t) const { return Count(t, -1); }

SubString String::_substr(int first, int l) {
  if (first < 0 || l < 0 || l > length() - first) return SubString(_nilString, 0, 0);
  return SubString(*this, first, l);
}

// One family of stretches: where it starts and how long it is, by the match [i, i + n). A match
// that was not found gives the empty view.
SubString String::Cut(StretchKind eKind, int i, int n) {
  if (i < 0) return _substr(0, -1);
  switch (eKind) {
    case kAt:
      return _substr(i, n);
    case kBefore:
      return _substr(0, i);
    case kThrough:
      return _substr(0, i + n);
    case kFrom:
      return _substr(i, length() - i);
    case kAfter:
      return _substr(i + n, length() - i - n);
  }
  return _substr(0, -1);
}

SubString String::Cut(StretchKind eKind, String const& x, int start) {
  return Cut(eKind, index(x, start), x.length());
}

SubString String::Cut(StretchKind eKind, SubString const& x, int start) {
  return Cut(eKind, index(x, start), x.Rest());
}

SubString String::Cut(StretchKind eKind, char c, int start) {
  return Cut(eKind, index(c, start), 1);
}

SubString String::Cut(StretchKind eKind, char const* t, int start) {
  const int i = index(t, start);
  return Cut(eKind, i, i < 0 ? 0 : static_cast<int>(TextLength(t, -1)));
}

SubString String::through(int pos) { return pos < length() ? _substr(0, pos + 1) : _substr(0, -1); }

SubString String::from(int pos) { return pos < 0 ? _substr(0, -1) : _substr(pos, length() - pos); }

SubString String::after(int pos) {
  if (pos < -1 || pos >= length()) return _substr(0, -1);
  return _substr(pos + 1, length() - pos - 1);
}
