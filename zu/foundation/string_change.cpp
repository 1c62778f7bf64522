// Changes inside a text: views assigned to, deletion, replacement of patterns.
#include <algorithm>
#include <string_view>

#include "zu/foundation/internal/str_block.h"
#include "zu/foundation/string.h"

using zu::internal::FreeRep;
using zu::internal::IsNil;
using zu::internal::LiesIn;
using zu::internal::NewRep;
using zu::internal::SetLength;
using zu::internal::TextLength;

SubString::SubString(String& x, int first, int l)
    : S(x), pos(static_cast<std::uint16_t>(first)), len(static_cast<std::uint16_t>(l)) {}

int SubString::Rest() const { return std::clamp(S.length() - pos, 0, static_cast<int>(len)); }

char const* SubString::chars() const { return S.chars() + std::min<int>(pos, S.length()); }

bool SubString::OK() const { return S.OK() && pos + len <= S.length(); }

SubString& SubString::operator=(SubString const& y) {
  assign(y.S.rep, y.chars(), y.Rest());
  return *this;
}

SubString& SubString::operator=(String const& y) {
  assign(y.rep, y.rep->s, y.rep->len);
  return *this;
}

SubString& SubString::operator=(char c) {
  assign(nullptr, &c, 1);
  return *this;
}

SubString& SubString::operator=(char const* y) {
  assign(nullptr, y);
  return *this;
}

bool SubString::Holds(char const* t, int tl) const {
  const std::string_view pattern(t ? t : "", TextLength(t, tl));
  const std::string_view text(chars(), static_cast<std::size_t>(Rest()));
  return !pattern.empty() && text.find(pattern) != text.npos;
}

bool SubString::contains(SubString const& y) const { return Holds(y.chars(), y.Rest()); }

bool SubString::contains(String const& y) const { return Holds(y.chars(), y.length()); }

bool SubString::contains(char c) const { return Holds(&c, 1); }

bool SubString::contains(char const* y) const { return Holds(y, -1); }

void SubString::assign(StrRep const* ysrc, char const* ys, int ylen) {
  if (&S == &_nilString) return;
  StrRep* const old = S.rep;
  const std::size_t nNew = TextLength(ys, ylen);
  const std::size_t nStretch = static_cast<std::size_t>(Rest());
  const std::size_t nHead = std::min<std::size_t>(pos, old->len);
  const std::size_t nTail = old->len - nHead - nStretch;
  const std::size_t n = nHead + nNew + nTail;
  if (IsNil(old) && n == 0) return;

  if (ysrc != old && !LiesIn(old, ys) && n < old->sz) {
    std::memmove(old->s + nHead + nNew, old->s + nHead + nStretch, nTail);
    if (nNew > 0) std::memcpy(old->s + nHead, ys, nNew);
    SetLength(old, n);
    return;
  }
  StrRep* const p = NewRep(n);
  std::memcpy(p->s, old->s, nHead);
  if (nNew > 0) std::memcpy(p->s + nHead, ys, nNew);
  std::memcpy(p->s + nHead + nNew, old->s + nHead + nStretch, nTail);
  SetLength(p, n);
  S.rep = p;
  FreeRep(old);
}

bool String::del(int pos, int l) {
  if (pos < 0 || l <= 0 || l > length() - pos) return false;
  std::memmove(rep->s + pos, rep->s + pos + l, static_cast<std::size_t>(length() - pos - l));
  zu::internal::SetLength(rep, static_cast<std::size_t>(length() - l));
  return true;
}

bool String::del(String const& x, int start) { return del(index(x, start), x.length()); }

bool String::del(SubString const& x, int start) { return del(index(x, start), x.Rest()); }

bool String::del(char c, int start) { return del(index(c, start), 1); }

bool String::del(char const* t, int start) {
  const int i = index(t, start);
  return i >= 0 && del(i, static_cast<int>(TextLength(t, -1)));
}

// The result is made in a block of its own, since pattern and replacement may lie in this text, and
// is copied back where the present block holds it.
int String::_gsub(char const* pat, int pl, char const* r, int rl) {
  const std::string_view pattern(pat ? pat : "", TextLength(pat, pl));
  const std::string_view replacement(r ? r : "", TextLength(r, rl));
  const std::string_view text(rep->s, rep->len);
  if (text.empty() || pattern.empty() || pattern.size() > text.size()) return 0;

  std::size_t nFound = 0;
  for (std::size_t i = 0; (i = text.find(pattern, i)) != text.npos; i += pattern.size()) ++nFound;
  if (nFound == 0) return 0;

  const std::size_t n = text.size() - nFound * pattern.size() + nFound * replacement.size();
  StrRep* const p = NewRep(n);
  char* pTarget = p->s;
  std::size_t iRest = 0;
  for (std::size_t k = 0; k < nFound; ++k) {
    const std::size_t i = text.find(pattern, iRest);
    pTarget += text.copy(pTarget, i - iRest, iRest);
    pTarget += replacement.copy(pTarget, replacement.size());
    iRest = i + pattern.size();
  }
  text.copy(pTarget, text.size() - iRest, iRest);

  if (n <= rep->sz) {
    std::memcpy(rep->s, p->s, n);
    SetLength(rep, n);
    FreeRep(p);
  } else {
    SetLength(p, n);
    FreeRep(rep);
    rep = p;
  }
  return static_cast<int>(nFound);
}

int String::gsub(String const& pat, String const& repl) {
  return _gsub(pat.chars(), pat.length(), repl.chars(), repl.length());
}

int String::gsub(String const& pat, SubString const& repl) {
  return _gsub(pat.chars(), pat.length(), repl.chars(), repl.Rest());
}

int String::gsub(String const& pat, char const* repl) {
  return _gsub(pat.chars(), pat.length(), repl, -1);
}

int String::gsub(SubString const& pat, String const& repl) {
  return _gsub(pat.chars(), pat.Rest(), repl.chars(), repl.length());
}

int String::gsub(SubString const& pat, SubString const& repl) {
  return _gsub(pat.chars(), pat.Rest(), repl.chars(), repl.Rest());
}

int String::gsub(SubString const& pat, char const* repl) {
  return _gsub(pat.chars(), pat.Rest(), repl, -1);
}

int String::gsub(char pat, String const& repl) {
  return _gsub(&pat, 1, repl.chars(), repl.length());
}

int String::gsub(char pat, char repl) { return _gsub(&pat, 1, &repl, 1); }

int String::gsub(char pat, char const* repl) { return _gsub(&pat, 1, repl, -1); }

int String::gsub(char const* pat, String const& repl) {
  return _gsub(pat, -1, repl.chars(), repl.length());
}

int String::gsub(char const* pat, SubString const& repl) {
  return _gsub(pat, -1, repl.chars(), repl.Rest());
}

int String::gsub(char const* pat, char const* repl) { return _gsub(pat, -1, repl, -1); }
