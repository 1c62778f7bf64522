// The rows of the table: which benchmark is compared with which, and what is wanted of it.
#pragma once

#include <string>
#include <vector>

namespace report {

struct Row {
  std::string strTopic;
  std::string strProgram;  // bench_<program>
  std::string strOurs;     // names of benchmarks in it
  std::string strReference;
  std::string strQuantity;  // "time" per iteration, "rate" in bytes, or the name of a counter
  bool bAtMost = true;      // ours / reference at most (le), or at least (ge)
  double dMust = 0.0;       // 0.0 where nothing is demanded
  double dAim = 0.0;
  std::string strWhat;  // what the reference is
};

// Reads a file of rows, nine fields between '|' a line; lines with '#' and empty ones are skipped.
// Throws std::runtime_error that names file and line.
std::vector<Row> ReadRows(const std::string& strPath);

}  // namespace report
