// Joins what the benchmark programs measured into one table.
//
//   bench_report ROWS RESULTS [PAGE]     prints the rows of the programs that have results; with
//                                        PAGE, prints all rows and writes them into that page
//
// RESULTS is a folder of <program>.json. Exit code 1 where a row names a benchmark that its program
// does not have, 0 otherwise: whether bounds are met depends on the machine.
#include <algorithm>
#include <cstdio>
#include <exception>
#include <stdexcept>
#include <string>
#include <vector>

#include "bench/report/results.h"
#include "bench/report/rows.h"
#include "bench/report/section.h"
#include "bench/report/table.h"

namespace {

std::string Summary(const report::Table& table) {
  return std::to_string(table.iMustMet) + " of " + std::to_string(table.iMust) +
         " bounds met, the aim too in " + std::to_string(table.iAimMet) + " of " +
         std::to_string(table.iAim) +
         (table.iNotMeasured == 0 ? "" : "; not measured: " + std::to_string(table.iNotMeasured)) +
         ".\n";
}

void Report(const std::string& strRows, const std::string& strFolder, const char* szPage) {
  std::vector<report::Row> rows = report::ReadRows(strRows);
  std::vector<std::string> programs;
  for (const report::Row& row : rows) programs.push_back(row.strProgram);
  std::sort(programs.begin(), programs.end());
  programs.erase(std::unique(programs.begin(), programs.end()), programs.end());
  const report::Results results(strFolder, programs);
  if (szPage == nullptr) {
    std::erase_if(rows, [&](const auto& row) { return !results.Has(row.strProgram); });
  }
  const report::Table table = report::MakeTable(rows, results);
  if (table.iNotMeasured == static_cast<int>(rows.size())) {
    throw std::runtime_error(strFolder + ": no results");
  }
  const std::string strHead = "Measured " + results.Days() + " on " + report::Machine() + ".\n\n";
  std::printf("%s%s\n%s", strHead.c_str(), table.strText.c_str(), Summary(table).c_str());
  if (szPage != nullptr) {
    report::ReplaceSection(szPage, "table", strHead + Summary(table) + "\n" + table.strText);
  }
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3 && argc != 4) {
    std::fprintf(stderr, "usage: bench_report ROWS RESULTS [PAGE]\n");
    return 2;
  }
  try {
    Report(argv[1], argv[2], argc == 4 ? argv[3] : nullptr);
  } catch (const std::exception& e) {
    std::fprintf(stderr, "bench_report: %s\n", e.what());
    return 1;
  }
  return 0;
}
