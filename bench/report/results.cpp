#include "bench/report/results.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <string_view>

namespace report {
namespace {

using Json = nlohmann::json;

double SecondsOf(const std::string& strUnit) {
  if (strUnit == "ns") return 1e-9;
  if (strUnit == "us") return 1e-6;
  if (strUnit == "ms") return 1e-3;
  return 1.0;
}

// The arguments stay part of a name, what was said about the measuring does not.
std::string PlainName(std::string strName) {
  for (const char* szSuffix : {"/real_time", "/manual_time"}) {
    if (strName.ends_with(szSuffix))
      strName.resize(strName.size() - std::string_view(szSuffix).size());
  }
  const std::size_t uIterations = strName.find("/iterations:");
  return strName.substr(0, uIterations);
}

bool IsMeasurement(const Json& entry) {
  return entry.value("run_type", "") == "iteration" && !entry.value("error_occurred", false);
}

}  // namespace

Results::Results(const std::string& strFolder, const std::vector<std::string>& programs) {
  for (const std::string& strProgram : programs) {
    const std::string strPath = strFolder + "/" + strProgram + ".json";
    if (std::filesystem::exists(strPath)) Read(strProgram, strPath);
  }
}

void Results::Read(const std::string& strProgram, const std::string& strPath) {
  Json json;
  try {
    std::ifstream stream(strPath);
    json = Json::parse(stream);
  } catch (const Json::exception& e) {
    throw std::runtime_error(strPath + ": " + e.what());
  }
  const std::string strDay = json["context"].value("date", "").substr(0, 10);
  if (m_strFirstDay.empty() || strDay < m_strFirstDay) m_strFirstDay = strDay;
  m_strLastDay = std::max(m_strLastDay, strDay);

  Benchmarks& benchmarks = m_values[strProgram];
  for (const Json& entry : json["benchmarks"]) {
    if (!IsMeasurement(entry)) continue;
    Quantities& best = benchmarks[PlainName(entry.value("name", ""))];
    const auto keep = [&best](const std::string& strName, double d, bool bLess) {
      const auto [it, bNew] = best.emplace(strName, d);
      if (!bNew) it->second = bLess ? std::min(it->second, d) : std::max(it->second, d);
    };
    keep("time", entry.value("real_time", 0.0) * SecondsOf(entry.value("time_unit", "s")), true);
    for (const auto& [strKey, value] : entry.items()) {
      if (strKey == "bytes_per_second") {
        keep("rate", value.get<double>(), false);
      } else if (value.is_number()) {
        keep(strKey, value.get<double>(), true);
      }
    }
  }
}

double Results::Value(const Row& row, const std::string& strBenchmark) const {
  const Benchmarks& benchmarks = m_values.at(row.strProgram);
  const auto benchmark = benchmarks.find(strBenchmark);
  if (benchmark == benchmarks.end()) {
    throw std::runtime_error("bench_" + row.strProgram + " measured no " + strBenchmark);
  }
  const auto value = benchmark->second.find(row.strQuantity);
  if (value == benchmark->second.end() || !(value->second > 0.0)) {
    throw std::runtime_error(strBenchmark + " has no " + row.strQuantity);
  }
  return value->second;
}

std::optional<Measured> Results::Find(const Row& row) const {
  if (!Has(row.strProgram)) return std::nullopt;
  return Measured{Value(row, row.strOurs), Value(row, row.strReference)};
}

std::string Results::Days() const {
  return m_strFirstDay == m_strLastDay ? m_strLastDay : m_strFirstDay + " to " + m_strLastDay;
}

}  // namespace report
