// Functions on strings: comparison, common ends, join and split, lines, placeholders.
#pragma once

#include <compare>
#include <iosfwd>
#include <type_traits>
#include <vector>

#include "zu/export.h"
#include "zu/foundation/string.h"

// Compares bytes as signed characters. Returns the first difference a - b, or 0. Strings are
// compared up to their terminators; a null text is equal to an empty string and below any other.
ZU_API int compare(String const& x, String const& y);
ZU_API int compare(String const& x, char const* y);
// With a SubString the shorter length is compared, then the difference in length comes back.
ZU_API int compare(String const& x, SubString const& y);
ZU_API int compare(SubString const& x, String const& y);
ZU_API int compare(SubString const& x, SubString const& y);
ZU_API int compare(SubString const& x, char const* y);

// As compare over the shorter length, the ASCII letters a to z counting as upper case; then the
// difference in length.
ZU_API int fcompare(String const& x, String const& y);

inline bool operator==(String const& x, String const& y) { return compare(x, y) == 0; }
inline bool operator==(String const& x, char const* y) { return compare(x, y) == 0; }
inline bool operator==(String const& x, SubString const& y) { return compare(x, y) == 0; }
inline bool operator==(SubString const& x, SubString const& y) { return compare(x, y) == 0; }
inline bool operator==(SubString const& x, char const* y) { return compare(x, y) == 0; }
inline std::strong_ordering operator<=>(String const& x, String const& y) {
  return compare(x, y) <=> 0;
}
inline std::strong_ordering operator<=>(String const& x, char const* y) {
  return compare(x, y) <=> 0;
}

// A text that joins a String by +. Numbers do not: `str + 1` is a position in the text, by way of
// `operator char const*`.
template <class T>
concept ZuStringOperand = std::is_same_v<T, String> || std::is_same_v<T, SubString> ||
    std::is_same_v<T, char> || std::is_convertible_v<T const&, char const*>;

template <ZuStringOperand T>
String operator+(String const& x, T const& y) {
  String result(x);
  result += y;
  return result;
}

inline String operator+(char const* x, String const& y) {
  String result(x);
  result += y;
  return result;
}

// Writes the text, padded to the stream's width.
ZU_API std::ostream& operator<<(std::ostream& stream, String const& x);
ZU_API std::ostream& operator<<(std::ostream& stream, SubString const& x);

// The stretch from `start` on in which both are equal.
ZU_API String common_prefix(String const& x, String const& y, int start = 0);

// The stretch before and with the character `start`, counted from the end of both (-1: the last
// one), in which both are equal.
ZU_API String common_suffix(String const& x, String const& y, int start = -1);

// Joins n strings (n at least 1) with sep between them.
ZU_API String join(String const src[], int n, String const& sep);

// Cuts src at each sep into at most n fields; returns their number. Two separators in a row make an
// empty field, one at the very end makes none. src may be one of the results.
ZU_API int split(String const& src, String results[], int n, String const& sep);

// Cuts src at runs of the characters in delims. Stores at most n tokens; returns the tokens stored.
ZU_API int tokenize(String const& src, String results[], int n, String const& delims);
// Appends every token; returns the size of the vector, earlier contents included.
ZU_API int tokenize(String const& src, std::vector<String>& results, String const& delims);

// n copies, one behind the other; empty for n of 0 and below.
ZU_API String replicate(char c, int n);
ZU_API String replicate(String const& y, int n);

// Reads a line into x up to the terminator, which is stored only where discard is 0, or to the end
// of the file, which sets the stream's end-of-file state. Returns the number of characters stored.
ZU_API int readline(std::istream& stream, String& x, char terminator = '\n', int discard = 1);

// Replaces %1 to %5 in format by the arguments, each wherever it stands; returns the number of
// replacements. Never give it text from outside as format or argument.
//
// Required: after each replacement the search starts again at position 0, so that placeholders of
// higher numbers inside an argument are replaced too. An argument that holds its own placeholder
// never finishes.
ZU_API int Sprintf(String& out, String const& format, String const& a1 = _nilString,
                   String const& a2 = _nilString, String const& a3 = _nilString,
                   String const& a4 = _nilString, String const& a5 = _nilString);
