// The table of all rows as text for the terminal and for the page.
#pragma once

#include <string>
#include <vector>

#include "bench/report/results.h"
#include "bench/report/rows.h"

namespace report {

struct Table {
  std::string strText;  // a Markdown table, padded so that it reads well on a terminal
  int iMust = 0;        // rows with a bound, as far as they were measured
  int iMustMet = 0;
  int iAim = 0;
  int iAimMet = 0;
  int iNotMeasured = 0;
};

Table MakeTable(const std::vector<Row>& rows, const Results& results);

// The machine and how the programs were built, in one line.
std::string Machine();

}  // namespace report
