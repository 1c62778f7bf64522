#include "zu/foundation/string.h"

#include <charconv>
#include <string>

#include "zu/foundation/internal/c_format.h"
#include "zu/foundation/internal/str_block.h"

using zu::internal::IsNil;

constinit String _nilString;

namespace {

// The form of String(double). Nothing writes to it after start-up. It outlives all other statics.
String const& DoubleForm() {
  static const String* const pForm = new String("%6.3f");
  return *pForm;
}

// An empty text takes no block.
StrRep* MakeRep(char const* t, int n) {
  if (zu::internal::TextLength(t, n) == 0) return zu::internal::NilRep();
  return Salloc(nullptr, t, n, -1);
}

StrRep* AssignText(StrRep* rep, char const* t, int n) {
  if (IsNil(rep)) return MakeRep(t, n);
  return Salloc(rep, t, n, -1);
}

StrRep* AppendText(StrRep* rep, char const* t, int n) {
  if (IsNil(rep)) return MakeRep(t, n);
  return Scat(rep, rep->s, rep->len, t, n);
}

StrRep* PrependText(StrRep* rep, char const* t, int n) {
  if (IsNil(rep)) return MakeRep(t, n);
  return Sprepend(rep, t, n);
}

}  // namespace

StrRep* String::CopyRep(StrRep const* p) { return MakeRep(p->s, p->len); }

void String::DropRep(StrRep* p) { zu::internal::FreeRep(p); }

String::String(SubString const& x) : rep(MakeRep(x.chars(), x.Rest())) {}

String::String(char c) : rep(MakeRep(&c, 1)) {}

String::String(char const* t) : rep(MakeRep(t, -1)) {}

String::String(char const* t, int len) : rep(MakeRep(t, t ? len : 0)) {}

String::String(int i) : rep(NilRep()) {
  char szText[16];
  const auto result = std::to_chars(szText, szText + sizeof(szText), i);
  rep = MakeRep(szText, static_cast<int>(result.ptr - szText));
}

String::String(double d) : rep(NilRep()) {
  const std::string strText = zu::internal::FormatDouble(DoubleForm().chars(), d);
  rep = MakeRep(strText.data(), static_cast<int>(strText.size()));
}

String& String::operator=(SubString const& y) {
  rep = AssignText(rep, y.chars(), y.Rest());
  return *this;
}

String& String::operator=(char c) {
  rep = AssignText(rep, &c, 1);
  return *this;
}

String& String::operator=(char const* y) {
  rep = AssignText(rep, y, -1);
  return *this;
}

String& String::operator+=(String const& y) {
  rep = AppendText(rep, y.rep->s, y.rep->len);
  return *this;
}

String& String::operator+=(SubString const& y) {
  rep = AppendText(rep, y.chars(), y.Rest());
  return *this;
}

String& String::operator+=(char c) {
  rep = AppendText(rep, &c, 1);
  return *this;
}

String& String::operator+=(char const* y) {
  rep = AppendText(rep, y, -1);
  return *this;
}

void String::prepend(String const& y) { rep = PrependText(rep, y.rep->s, y.rep->len); }

void String::prepend(SubString const& y) { rep = PrependText(rep, y.chars(), y.Rest()); }

void String::prepend(char c) { rep = PrependText(rep, &c, 1); }

void String::prepend(char const* y) { rep = PrependText(rep, y, -1); }

bool String::OK() const {
  return rep != nullptr && (rep->len <= rep->sz || rep->sz == zu::internal::kStrTop) &&
         rep->s[rep->len] == '\0';
}

char& String::InvalidIndex() const {
  error("invalid index");
  thread_local char c;
  c = '\0';
  return c;
}

void String::upcase() { rep = Supcase(rep, rep); }

void String::downcase() { rep = Sdowncase(rep, rep); }

void String::capitalize() { rep = Scapitalize(rep, rep); }

void String::reverse() { rep = Sreverse(rep, rep); }

void String::alloc(int n) {
  const int nLength = length();
  rep = Sresize(rep, n);
  zu::internal::SetLength(rep, static_cast<std::size_t>(nLength));
}

void String::error(char const*) const {}
