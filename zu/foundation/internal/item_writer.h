// Writes the items of keyword files so that they read back as they were: numbers in the shortest
// form that gives the same double, whatever locale and layout the stream has.
#pragma once

#include <iosfwd>
#include <ostream>

#include "zu/foundation/string.h"
#include "zu/foundation/writer.h"

namespace zu::internal {

// A text in quotes. A quote of its own becomes ' and a line end a blank, which no text in a keyword
// file can hold.
void WriteValue(std::ostream& stream, const String& text);
void WriteValue(std::ostream& stream, double dValue);
void WriteValue(std::ostream& stream, int iValue);
void WriteValue(std::ostream& stream, unsigned int uValue);
inline void WriteValue(std::ostream& stream, bool bValue) { WriteValue(stream, bValue ? 1 : 0); }

// Values with blanks between them, none in front or behind.
template <class First, class... Rest>
void WriteValues(std::ostream& stream, const First& first, const Rest&... rest) {
  WriteValue(stream, first);
  ((stream.put(' '), WriteValue(stream, rest)), ...);
}

// Items, each on a line of its own; none in front of the first, none behind the last.
class ItemWriter {
 public:
  explicit ItemWriter(std::ostream& stream) : m_stream(stream) {}

  // KEYWORD values
  template <class... Values>
  void Item(const char* szKeyword, const Values&... values) {
    Begin(szKeyword);
    WriteValues(m_stream, values...);
  }
  // The same unless the value is the one that the reader takes where the keyword is absent.
  template <class Value>
  void ItemUnless(const Value& usual, const char* szKeyword, const Value& value) {
    if (!IsSame(usual, value)) Item(szKeyword, value);
  }

  // KEYWORD { what write() writes } on one line, or over several.
  template <class Write>
  void Block(const char* szKeyword, Write&& write) {
    Begin(szKeyword);
    m_stream.write("{ ", 2);
    write(m_stream);
    m_stream.write(" }", 2);
  }
  template <class Write>
  void Lines(const char* szKeyword, Write&& write) {
    Begin(szKeyword);
    m_stream << ZuBeginBlockNL;
    write(m_stream);
    m_stream << ZuEndBlockNL;
  }

 private:
  void Begin(const char* szKeyword);
  static bool IsSame(double a, double b);  // 0.0 and -0.0 are two
  template <class Value>
  static bool IsSame(const Value& a, const Value& b) {
    return a == b;
  }

  std::ostream& m_stream;
  bool m_bFirst = true;
};

}  // namespace zu::internal
