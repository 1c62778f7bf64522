// Aligned tables and numbers for results as text. No locale takes part.
#pragma once

#include <ostream>
#include <string>
#include <vector>

namespace cli {

// dValue with iDecimals digits behind the point; "-" for one that is not finite. What rounds to 0
// has no sign.
std::string Fixed(double dValue, int iDecimals);
// Decimals that show four digits of the largest value of a column: 4 to 12.
int DecimalsFor(double dLargest);
// A number of things: "1 point", "2 points"; for words that take another ending the second form.
std::string Counted(long long iCount, const std::string& strOne);
std::string Counted(long long iCount, const std::string& strOne, const std::string& strMany);
// All digits that tell dValue from its neighbours, and no more; never with an exponent.
std::string Shortest(double dValue);
// An angle in radians as "12.3456789 gon  11.1111110 deg".
std::string Angle(double dRadians);

class TextTable {
 public:
  enum eAlign { eLeft, eRight };

  void AddColumn(const std::string& strTitle, eAlign align = eRight);
  // One cell a column; missing ones stay empty.
  void AddRow(std::vector<std::string> cells);

  // A title line, then the rows; two blanks between columns, none at the end of a line.
  void Write(std::ostream& stream) const;

 private:
  struct Column {
    std::string strTitle;
    eAlign align;
  };
  void WriteRow(const std::vector<std::string>& cells, const std::vector<size_t>& widths,
                std::ostream& stream) const;

  std::vector<Column> m_columns;
  std::vector<std::vector<std::string>> m_rows;
};

}  // namespace cli
