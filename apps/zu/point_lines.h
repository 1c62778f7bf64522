// The look at every line of a coordinate file before the library reads it.
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

  // Goes on with the lines from pBegin to pEnd. Throws CommandError (bad input) at the first whose
  // point would have to be invented: a field missing or no number, a decimal comma, a line above
  // the length that the library takes at once. Lines that start with '#' become blank.
  void Check(char* pBegin, char* pEnd);

  // Lines with numbers but without an id, which the library passes over, and the first of them.
  int SkippedLines() const { return m_iSkipped; }
  int FirstSkippedLine() const { return m_iFirstSkipped; }

 private:
  void CheckLine(std::string_view line);
  void Split(std::string_view line);
  bool HasId() const;
  void CheckFields() const;
  void CheckDecimalComma(std::string_view line) const;
  [[noreturn]] void Fail(const std::string& strWhat) const;

  std::string m_strPath;
  std::string m_strColumns;
  std::vector<eZuPointRWMask> m_columns;
  std::vector<std::string_view> m_fields;  // of the line in hand, those beyond the columns counted
  int m_iLine = 0;
  int m_iSkipped = 0;
  int m_iFirstSkipped = 0;
};

}  // namespace cli
