// What benchmark programs measured: the JSON files of Google Benchmark in one folder.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "bench/report/rows.h"

namespace report {

struct Measured {
  double dOurs = 0.0, dReference = 0.0;  // seconds, bytes a second, or the counter
  double Ratio() const { return dOurs / dReference; }
};

class Results {
 public:
  // Reads <folder>/<program>.json of each program named, as far as it is there.
  Results(const std::string& strFolder, const std::vector<std::string>& programs);

  bool Has(const std::string& strProgram) const { return m_values.count(strProgram) != 0; }

  // The best of all repetitions: the shortest time, the highest rate, the smallest counter. What
  // disturbs a run only ever makes it slower, so the best one is the nearest to the work itself.
  // Throws std::runtime_error where the program ran but has no such benchmark or quantity.
  std::optional<Measured> Find(const Row& row) const;

  // First and last day of the measurements, "2026-01-31"; empty without any.
  std::string Days() const;

 private:
  using Quantities = std::map<std::string, double>;
  using Benchmarks = std::map<std::string, Quantities>;

  void Read(const std::string& strProgram, const std::string& strPath);
  double Value(const Row& row, const std::string& strBenchmark) const;

  std::map<std::string, Benchmarks> m_values;
  std::string m_strFirstDay, m_strLastDay;
};

}  // namespace report
