// A table of a report. On a narrow screen one of many columns becomes one small card a row, each
// cell with its title, and one of long numbers gets a smaller type.
#pragma once

#include <string>
#include <vector>

namespace cli {

class HtmlTable {
 public:
  struct Column {
    std::string strTitle;
    bool bLeft = false;
  };

  // szId is the table's name in the page.
  HtmlTable(const char* szId, std::vector<Column> columns);

  // One cell a column; missing ones hold "-".
  void AddRow(const std::vector<std::string>& cells, bool bTotal = false);
  std::string Html() const;

 private:
  std::string m_strId;
  std::vector<Column> m_columns;
  std::string m_strRows;
  std::vector<size_t> m_longest;  // cell of each column
};

// The style of all tables, for the page's <style>.
const char* HtmlTableStyle();

}  // namespace cli
