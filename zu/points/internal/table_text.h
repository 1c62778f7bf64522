// The text of a table: bytes to UTF-8, and what its first lines tell.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "zu/points/internal/line_fields.h"
#include "zu/points/table.h"

// Gives the lines of a text, one after the other, without carriage returns before their end.
class ZuTextLines {
 public:
  explicit ZuTextLines(std::string_view text) : m_rest(text) {}

  bool Next(std::string_view* pLine);
  // Of the line given last, from 1.
  std::uint64_t GetNumber() const { return m_uNumber; }

 private:
  std::string_view m_rest;
  std::uint64_t m_uNumber = 0;
};

// Makes UTF-8 of the text, without byte order mark.
void ZuDecodeTable(std::string* pText, ZuTableForm* pForm);

// The fields of a line: between a delimiter, 0 for blanks and tabs.
void ZuSplitTable(char cDelimiter, std::string_view line, ZuLineFields* pFields);

// What the first lines tell: delimiter, titles and columns. False where titles stand in the line
// that the form tells, and do not fit the first line of numbers.
bool ZuFindTableForm(std::string_view text, const ZuTableOptions& options, ZuTableForm* pForm);

// The text starts as a number does.
inline bool ZuIsNumberlike(std::string_view text) {
  const std::size_t u = text.find_first_not_of("+-.,");
  return u < text.size() && u < 3 && text[u] >= '0' && text[u] <= '9';
}
