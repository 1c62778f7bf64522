#include "zu/foundation/internal/item_writer.h"

#include <charconv>
#include <cmath>
#include <cstring>
#include <string_view>

#include "zu/foundation/numbers.h"

namespace {

// A text above this has a line of its own: a line of a keyword file is limited.
constexpr int kLongText = 4000;

template <class Value>
void WriteInteger(std::ostream& stream, Value value) {
  char szDigits[16];
  const char* pEnd = std::to_chars(szDigits, szDigits + sizeof(szDigits), value).ptr;
  stream.write(szDigits, pEnd - szDigits);
}

}  // namespace

void zu::internal::WriteValue(std::ostream& stream, const String& text) {
  const bool bOwnLine = text.length() > kLongText;
  if (bOwnLine) stream.put('\n');
  stream.put('"');
  for (const char c : std::string_view(text.chars(), static_cast<std::size_t>(text.length()))) {
    stream.put(c == '"' ? '\'' : c == '\n' || c == '\0' ? ' ' : c);
  }
  stream.put('"');
  if (bOwnLine) stream.put('\n');
}

void zu::internal::WriteValue(std::ostream& stream, double dValue) {
  char szNumber[kZuShortestSize];
  stream.write(szNumber, ZuFormatShortest(szNumber, dValue) - szNumber);
}

void zu::internal::WriteValue(std::ostream& stream, int iValue) { WriteInteger(stream, iValue); }

void zu::internal::WriteValue(std::ostream& stream, unsigned int uValue) {
  WriteInteger(stream, uValue);
}

void zu::internal::ItemWriter::Begin(const char* szKeyword) {
  if (!m_bFirst) m_stream << Zuendl;
  m_bFirst = false;
  m_stream.width(0);
  m_stream.write(szKeyword, static_cast<std::streamsize>(std::strlen(szKeyword)));
  m_stream.put(' ');
}

bool zu::internal::ItemWriter::IsSame(double a, double b) {
  return a == b && std::signbit(a) == std::signbit(b);
}
