#include "bench/report/rows.h"

#include <charconv>
#include <fstream>
#include <stdexcept>
#include <string_view>

namespace report {
namespace {

constexpr std::size_t kFields = 9;

std::string Trimmed(std::string_view text) {
  const std::size_t uFirst = text.find_first_not_of(' ');
  if (uFirst == std::string_view::npos) return {};
  return std::string(text.substr(uFirst, text.find_last_not_of(' ') - uFirst + 1));
}

std::vector<std::string> Fields(std::string_view line) {
  std::vector<std::string> fields;
  for (;;) {
    const std::size_t uEnd = line.find('|');
    fields.push_back(Trimmed(line.substr(0, uEnd)));
    if (uEnd == std::string_view::npos) return fields;
    line.remove_prefix(uEnd + 1);
  }
}

double Bound(const std::string& strField) {
  if (strField == "-") return 0.0;
  double d = 0.0;
  const char* const pEnd = strField.data() + strField.size();
  if (std::from_chars(strField.data(), pEnd, d).ptr != pEnd || !(d > 0.0)) {
    throw std::runtime_error("a bound is a number above 0 or '-', not '" + strField + "'");
  }
  return d;
}

Row AsRow(const std::vector<std::string>& fields) {
  if (fields.size() != kFields) {
    throw std::runtime_error("a row has 9 fields, not " + std::to_string(fields.size()));
  }
  if (fields[5] != "le" && fields[5] != "ge") throw std::runtime_error("'le' or 'ge' is missing");
  return {fields[0],         fields[1],        fields[2],        fields[3], fields[4],
          fields[5] == "le", Bound(fields[6]), Bound(fields[7]), fields[8]};
}

}  // namespace

std::vector<Row> ReadRows(const std::string& strPath) {
  std::ifstream stream(strPath);
  if (!stream) throw std::runtime_error(strPath + ": cannot be read");
  std::vector<Row> rows;
  int iLine = 0;
  for (std::string strLine; std::getline(stream, strLine);) {
    ++iLine;
    if (strLine.empty() || strLine[0] == '#') continue;
    try {
      rows.push_back(AsRow(Fields(strLine)));
    } catch (const std::runtime_error& e) {
      throw std::runtime_error(strPath + ":" + std::to_string(iLine) + ": " + e.what());
    }
  }
  return rows;
}

}  // namespace report
