// The 8-bit string of all interfaces, and a view on a stretch of one that can be assigned to.
//
//   String str("abcabc");
//   str.before('c')       // "ab"
//   str.after("bc") = ""  // str is now "abc"
//   str.at(1, 1) = "--"   // str is now "a--c"
//
// A String owns its text and never shares it; only empty strings stand on one common block. It is
// two words long, and an empty one takes no heap. Lengths have 16 bits and wrap above 65535.
//
// Positions count from 0. A search takes a start position: from 0 upward it runs forward from
// there, below 0 it runs backward, -1 being the last character. A search that finds nothing gives
// -1, a range that is not in the string gives the empty view on `_nilString`, to which an
// assignment does nothing.
//
// One thread at a time for one String; different strings are independent. Comparison, join, split
// and their like stand in string_functions.h, which this header includes.
#pragma once

#include <concepts>
#include <iosfwd>
#include <utility>

#include "zu/export.h"
#include "zu/foundation/str_rep.h"

class String;

// A stretch of a String. It is good while its parent lives and keeps that range; where the parent
// has become shorter, what is left of the stretch counts.
class ZU_API SubString {
 public:
  SubString(SubString const&) = default;

  // Replaces the stretch in the parent. Nothing happens on the empty view of a failed search.
  //
  // Required: position and length of this view stay as they were, whatever the length of the new
  // text. Callers walk on from the old range.
  SubString& operator=(SubString const& y);
  SubString& operator=(String const& y);
  SubString& operator=(char c);
  SubString& operator=(char const* y);

  int length() const { return len; }
  bool empty() const { return len == 0; }

  // Points into the parent; not terminated at the end of the stretch.
  char const* chars() const;

  // What of the length the parent still holds: so many characters may be read.
  int Rest() const;

  bool contains(SubString const& y) const;
  bool contains(String const& y) const;
  bool contains(char c) const;
  bool contains(char const* y) const;

  // Whether the stretch lies in the parent.
  bool OK() const;

 protected:
  friend class String;

  SubString(String& x, int first, int l);
  bool Holds(char const* t, int tl) const;
  void assign(StrRep const* ysrc, char const* ys, int ylen = -1);

  String& S;          // the string viewed
  std::uint16_t pos;  // start
  std::uint16_t len;  // length
};

class ZU_API String {
 public:
  constexpr String() noexcept : rep(NilRep()) {}
  String(String const& x) : rep(x.empty() ? NilRep() : CopyRep(x.rep)) {}
  String(String&& x) noexcept : rep(std::exchange(x.rep, NilRep())) {}  // x is empty then
  String(SubString const& x);
  String(char c);
  String(char const* t);           // null gives the empty string
  String(char const* t, int len);  // a negative length is that of the terminated text
  String(int i);                   // "%d"
  String(double d);                // "%6.3f", whatever the process locale
  virtual ~String() {
    if (rep != NilRep()) DropRep(rep);
  }

  String& operator=(String const& y) {
    if (rep != y.rep) rep = Scopy(rep, y.rep);
    return *this;
  }
  // Takes the text and leaves y empty. As in a copy, the block stays where the text fits.
  String& operator=(String&& y) noexcept {
    if (this == &y) return *this;
    if (rep != NilRep() && y.rep->len <= rep->sz)
      rep = Scopy(rep, y.rep);
    else
      std::swap(rep, y.rep);
    if (y.rep != NilRep()) DropRep(std::exchange(y.rep, NilRep()));
    return *this;
  }
  String& operator=(SubString const& y);
  String& operator=(char c);
  String& operator=(char const* y);

  // The text appended may be this string or a stretch of it.
  String& operator+=(String const& y);
  String& operator+=(SubString const& y);
  String& operator+=(char c);
  String& operator+=(char const* y);

  void prepend(String const& y);
  void prepend(SubString const& y);
  void prepend(char c);
  void prepend(char const* y);

  int length() const { return rep->len; }
  int allocation() const { return rep->sz; }  // capacity
  bool empty() const { return rep->len == 0; }
  char const* chars() const { return rep->s; }
  operator char const*() const { return rep->s; }

  // One character. On an index outside the text `error` is called and a 0 byte comes back; what is
  // written to that one is lost.
  char firstchar() const { return elem(0); }
  char lastchar() const { return elem(length() - 1); }
  char elem(int i) const {
    if (i >= 0 && i < length()) return rep->s[i];
    error("invalid index");
    return '\0';
  }
  char operator[](int i) const { return elem(i); }
  char& operator[](int i) {
    if (i >= 0 && i < length()) return rep->s[i];
    return InvalidIndex();
  }
  // An index of any other integer type: without these, a long would meet that of `char const*` too.
  template <std::integral Index>
  char operator[](Index i) const {
    return elem(std::in_range<int>(i) ? static_cast<int>(i) : -1);
  }
  template <std::integral Index>
  char& operator[](Index i) {
    return (*this)[std::in_range<int>(i) ? static_cast<int>(i) : -1];
  }

  // Whether length, capacity and terminator fit together.
  bool OK() const;

  // Position of the first match from `start` on (below 0: of the last one that ends there), or -1.
  int index(String const& x, int start = 0) const;
  int index(SubString const& x, int start = 0) const;
  int index(char c, int start = 0) const;
  int index(char const* t, int start = 0) const;

  // Whether it occurs at all.
  bool contains(String const& x) const { return index(x) >= 0; }
  bool contains(SubString const& x) const { return index(x) >= 0; }
  bool contains(char c) const { return index(c) >= 0; }
  bool contains(char const* t) const { return index(t) >= 0; }

  // Whether it stands at `pos` (below 0: whether it ends there).
  bool contains(String const& x, int pos) const;
  bool contains(SubString const& x, int pos) const;
  bool contains(char c, int pos) const;
  bool contains(char const* t, int pos) const;

  // Whether the string from `pos` on (below 0: up to there) is exactly that.
  bool matches(String const& x, int pos = 0) const;
  bool matches(SubString const& x, int pos = 0) const;
  bool matches(char c, int pos = 0) const;
  bool matches(char const* t, int pos = 0) const;

  // Number of positions where it stands; overlapping ones all count.
  int freq(String const& x) const;
  int freq(SubString const& x) const;
  int freq(char c) const;
  int freq(char const* t) const;

  // `l` characters from `first` on, or the stretch that the pattern matches.
  SubString at(int first, int l) { return _substr(first, l); }
  SubString operator()(int first, int l) { return _substr(first, l); }
  SubString at(String const& x, int start = 0) { return Cut(kAt, x, start); }
  SubString at(SubString const& x, int start = 0) { return Cut(kAt, x, start); }
  SubString at(char c, int start = 0) { return Cut(kAt, c, start); }
  SubString at(char const* t, int start = 0) { return Cut(kAt, t, start); }

  // What stands before a position or match.
  SubString before(int pos) { return _substr(0, pos); }
  SubString before(String const& x, int start = 0) { return Cut(kBefore, x, start); }
  SubString before(SubString const& x, int start = 0) { return Cut(kBefore, x, start); }
  SubString before(char c, int start = 0) { return Cut(kBefore, c, start); }
  SubString before(char const* t, int start = 0) { return Cut(kBefore, t, start); }

  // What stands before a position or match, that included.
  SubString through(int pos);
  SubString through(String const& x, int start = 0) { return Cut(kThrough, x, start); }
  SubString through(SubString const& x, int start = 0) { return Cut(kThrough, x, start); }
  SubString through(char c, int start = 0) { return Cut(kThrough, c, start); }
  SubString through(char const* t, int start = 0) { return Cut(kThrough, t, start); }

  // A position or match and what stands behind it.
  SubString from(int pos);
  SubString from(String const& x, int start = 0) { return Cut(kFrom, x, start); }
  SubString from(SubString const& x, int start = 0) { return Cut(kFrom, x, start); }
  SubString from(char c, int start = 0) { return Cut(kFrom, c, start); }
  SubString from(char const* t, int start = 0) { return Cut(kFrom, t, start); }

  // What stands behind a position or match.
  SubString after(int pos);
  SubString after(String const& x, int start = 0) { return Cut(kAfter, x, start); }
  SubString after(SubString const& x, int start = 0) { return Cut(kAfter, x, start); }
  SubString after(char c, int start = 0) { return Cut(kAfter, c, start); }
  SubString after(char const* t, int start = 0) { return Cut(kAfter, t, start); }

  // The same stretches of a string that must not change, to read only.
  const SubString at(int first, int l) const { return Self().at(first, l); }
  const SubString operator()(int first, int l) const { return Self().at(first, l); }
  const SubString at(String const& x, int start = 0) const { return Self().at(x, start); }
  const SubString at(SubString const& x, int start = 0) const { return Self().at(x, start); }
  const SubString at(char c, int start = 0) const { return Self().at(c, start); }
  const SubString at(char const* t, int start = 0) const { return Self().at(t, start); }
  const SubString before(int pos) const { return Self().before(pos); }
  const SubString before(String const& x, int start = 0) const { return Self().before(x, start); }
  const SubString before(SubString const& x, int start = 0) const {
    return Self().before(x, start);
  }
  const SubString before(char c, int start = 0) const { return Self().before(c, start); }
  const SubString before(char const* t, int start = 0) const { return Self().before(t, start); }
  const SubString through(int pos) const { return Self().through(pos); }
  const SubString through(String const& x, int start = 0) const { return Self().through(x, start); }
  const SubString through(SubString const& x, int start = 0) const {
    return Self().through(x, start);
  }
  const SubString through(char c, int start = 0) const { return Self().through(c, start); }
  const SubString through(char const* t, int start = 0) const { return Self().through(t, start); }
  const SubString from(int pos) const { return Self().from(pos); }
  const SubString from(String const& x, int start = 0) const { return Self().from(x, start); }
  const SubString from(SubString const& x, int start = 0) const { return Self().from(x, start); }
  const SubString from(char c, int start = 0) const { return Self().from(c, start); }
  const SubString from(char const* t, int start = 0) const { return Self().from(t, start); }
  const SubString after(int pos) const { return Self().after(pos); }
  const SubString after(String const& x, int start = 0) const { return Self().after(x, start); }
  const SubString after(SubString const& x, int start = 0) const { return Self().after(x, start); }
  const SubString after(char c, int start = 0) const { return Self().after(c, start); }
  const SubString after(char const* t, int start = 0) const { return Self().after(t, start); }

  // Takes characters out. False and nothing changed where the range is not in the string, or empty.
  bool del(int pos, int l);
  bool del(String const& x, int start = 0);
  bool del(SubString const& x, int start = 0);
  bool del(char c, int start = 0);
  bool del(char const* t, int start = 0);

  // Replaces every match of a pattern, from the left; matches do not overlap, and replaced text is
  // not searched again. Returns the number of replacements. Time grows linearly with the text.
  int gsub(String const& pat, String const& repl);
  int gsub(String const& pat, SubString const& repl);
  int gsub(String const& pat, char const* repl);
  int gsub(SubString const& pat, String const& repl);
  int gsub(SubString const& pat, SubString const& repl);
  int gsub(SubString const& pat, char const* repl);
  int gsub(char pat, String const& repl);
  int gsub(char pat, char repl);
  int gsub(char pat, char const* repl);
  int gsub(char const* pat, String const& repl);
  int gsub(char const* pat, SubString const& repl);
  int gsub(char const* pat, char const* repl);

  // Letters by the run-time's locale; `capitalize` as Scapitalize.
  void upcase();
  void downcase();
  void capitalize();
  void reverse();

  // Reserves a capacity of at least n; text and length stay.
  void alloc(int n);

  // Called on an invalid index. It does nothing.
  void error(char const* msg) const;

 protected:
  friend class SubString;
  friend ZU_API String replicate(char c, int n);
  friend ZU_API String replicate(String const& y, int n);
  friend ZU_API int readline(std::istream& stream, String& x, char terminator, int discard);

  // Finds a character or text among the first `sl` characters. A negative tl is the length of t.
  int search(int start, int sl, char c) const;
  int search(int start, int sl, char const* t, int tl = -1) const;

  // Compares t with the string at a position. Returns tl on a full match, else -1.
  int match(int start, int sl, int exact, char const* t, int tl = -1) const;

  // The range as a view, or the empty view on `_nilString` where it is not in the string, a
  // negative length included.
  SubString _substr(int first, int l);

  int _gsub(char const* pat, int pl, char const* r, int rl);

  StrRep* rep;  // never null

 private:
  enum StretchKind { kAt, kBefore, kThrough, kFrom, kAfter };

  SubString Cut(StretchKind eKind, int i, int n);
  SubString Cut(StretchKind eKind, String const& x, int start);
  SubString Cut(StretchKind eKind, SubString const& x, int start);
  SubString Cut(StretchKind eKind, char c, int start);
  SubString Cut(StretchKind eKind, char const* t, int start);
  int Count(char const* t, int tl) const;

  // Records without a name are made and deleted by the million: empty texts take no call.
  static StrRep* CopyRep(StrRep const* p);
  static void DropRep(StrRep* p);

  static constexpr StrRep* NilRep() noexcept { return const_cast<StrRep*>(&_nilStrRep); }
  String& Self() const { return const_cast<String&>(*this); }
  char& InvalidIndex() const;
};

// The empty string that views of failed searches stand on. Not to be changed.
extern ZU_API String _nilString;

#include "zu/foundation/string_functions.h"
