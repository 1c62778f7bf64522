// The look at every line of a coordinate file before the library reads it.
//
// A line is split by ';', by tabs or by commas, whichever it has (in this order), so that a name
// may hold blanks; where that does not fit the columns, by all of these and blanks, as the library
// does. A name of several words between blanks is taken where the line fits in one way only.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "zu/points/format_table.h"

namespace cli {

class PointLines {
 public:
  // `strPath` is the name in messages, `strColumns` the columns as the caller gave them.
  PointLines(std::string strPath, std::string strColumns,
             const std::vector<eZuPointRWMask>& columns);

  // Goes on with the lines of a text and returns those that hold a point, as the library splits
  // them right. Comments (#), empty lines and titles are left out. Throws CommandError (bad input)
  // at the first line whose point would have to be invented: a field missing, no number or no id, a
  // decimal comma, a line above the length that the library takes at once.
  std::string Take(std::string_view text);

  // The line of each point, counted from 1.
  const std::vector<int>& Lines() const { return m_lines; }

 private:
  using Fields = std::vector<std::string_view>;

  void TakeLine(std::string_view line, std::string* pOut);
  bool TakeName(const Fields& words, Fields* pFields) const;
  bool Fits(const Fields& fields) const;
  bool FieldFits(size_t i, std::string_view field) const;
  bool HasGap(const Fields& fields) const;
  bool IsTitle(const Fields& fields) const;
  void CheckTwoReadings(const Fields& divided, const Fields& loose) const;
  void CheckWords(bool bJoined, size_t uFields);
  void CheckDecimalComma(std::string_view line) const;
  [[noreturn]] void FailFields(const Fields& fields) const;
  void Append(const Fields& fields, std::string* pOut);
  [[noreturn]] void Fail(const std::string& strWhat) const;

  std::string m_strPath;
  std::string m_strColumns;
  std::vector<eZuPointRWMask> m_columns;
  int m_iNameColumn = -1;  // its index
  std::vector<int> m_lines;
  int m_iLine = 0;
  int m_iJoined = 0;   // first line with a name of several words between blanks
  int m_iSurplus = 0;  // first line with a number behind the last column, between blanks
};

}  // namespace cli
