// Words and lines of GSI files of total stations.
//
//   110001+0000A110 81..00+00012345 82..00-00067890 83..00+00000100
//
// A line is a row of words of 16 bytes, or of 24 where a '*' stands before the first: word index
// (2), information (4, the last of it the unit), sign, data (8 or 16), a blank.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "zu/foundation/internal/characters.h"
#include "zu/points/internal/line_reader.h"
#include "zu/points/read_coordinates.h"

namespace zu::internal {

constexpr std::size_t kGsiUnit = 5;  // places in a word
constexpr std::size_t kGsiSign = 6;
constexpr std::size_t kGsiData = 7;

// A word has its sign in place, and an index.
inline bool IsGsiWord(std::string_view word) {
  return IsDigit(word[0]) && IsDigit(word[1]) && (word[kGsiSign] == '+' || word[kGsiSign] == '-');
}

// The digits of data with its sign and a decimal point before the last uDecimals of them: the
// nearest double to what the instrument shows. None where anything but digits is there.
std::optional<double> GsiNumber(char cSign, std::string_view data, std::size_t uDecimals);

// The value of a word of length in metres; none if it is damaged.
std::optional<double> GsiLength(std::string_view word);

// What stands in a text field of a word without what fills it up: zeros on the left, blanks.
std::string_view GsiTrimmed(std::string_view data);

// A point of that number or name: up to nine digits are the Id, anything else is the name.
ZuPoint GsiPointOf(std::string_view text, const double (&adCoordinate)[3]);

// Hands all words of a line to `take`; the first damaged one, empty at its place in the line, or
// null if there is none.
template <class Take>
const char* TakeGsiLine(std::string_view line, Take take) {
  const bool b16 = !line.empty() && line.front() == '*';
  if (b16) line.remove_prefix(1);
  while (!line.empty() && line.back() == ' ') line.remove_suffix(1);

  const std::size_t uWord = b16 ? kGsiData + 16 : kGsiData + 8;
  while (!line.empty()) {
    if (line.size() < uWord || !take(line.substr(0, uWord))) return line.data();
    line.remove_prefix(uWord);
    if (!line.empty() && line.front() != ' ') return line.data();
    if (!line.empty()) line.remove_prefix(1);
  }
  return nullptr;
}

// Calls damaged(line, pDamage) for each line that is damaged, null where it is too long, and
// good(line, record) for each other one; false ends the run. A Record takes words by Take.
template <class Record, class Damaged, class Good>
void ForEachGsiLine(ZuLineReader& lines, Damaged damaged, Good good) {
  std::string_view line;
  while (lines.Next(&line)) {
    Record record;
    const char* const pDamage =
        lines.IsPiece()
            ? nullptr
            : TakeGsiLine(line, [&](std::string_view word) { return record.Take(word); });
    const bool bGood = !lines.IsPiece() && pDamage == nullptr;
    if (!(bGood ? good(line, record) : damaged(line, pDamage))) return;
  }
}

// Counts the lines of a file that is held to its format, and tells the damaged ones.
class GsiTelling {
 public:
  GsiTelling(const ZuLineReader& lines, eZuReadMode eMode, ZuReadFindings& findings)
      : m_lines(lines), m_findings(findings), m_eMode(eMode) {
    m_findings.m_Dialect.m_strForm = "GSI";
  }

  // False where the reading ends.
  bool Damaged(std::string_view line, const char* pDamage);

 protected:
  void Count();

  const ZuLineReader& m_lines;
  ZuReadFindings& m_findings;
  std::uint64_t m_uLine = 0;

 private:
  bool Wrong(std::uint64_t uColumn, std::string strText, std::string strRight);

  eZuReadMode m_eMode;
};

}  // namespace zu::internal
