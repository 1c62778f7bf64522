#include "bench/report/table.h"

#include <algorithm>
#include <array>
#include <cstdio>

namespace report {
namespace {

constexpr std::size_t kColumns = 8;
using Line = std::array<std::string, kColumns>;

constexpr const char* kHeads[kColumns] = {"Topic", "Ours", "Reference", "Ratio",
                                          "Must",  "Aim",  "",          "Compared with"};

std::string Formatted(const char* szFormat, double d) {
  char ac[40];
  std::snprintf(ac, sizeof ac, szFormat, d);
  return ac;
}

struct Unit {
  double dFrom, dDivisor;
  const char* szName;
};

std::string WithUnit(double d, const Unit* pUnits) {
  while (d < pUnits->dFrom) ++pUnits;
  const double dShown = d / pUnits->dDivisor;
  return Formatted(dShown < 9.995   ? "%.2f"
                   : dShown < 99.95 ? "%.1f"
                                    : "%.0f",
                   dShown) +
         " " + pUnits->szName;
}

std::string Quantity(const Row& row, double d) {
  static constexpr Unit kTimes[] = {
      {1.0, 1.0, "s"}, {1e-3, 1e-3, "ms"}, {1e-6, 1e-6, "us"}, {0.0, 1e-9, "ns"}};
  static constexpr Unit kRates[] = {{1e9, 1e9, "GB/s"}, {0.0, 1e6, "MB/s"}};
  if (row.strQuantity == "time") return WithUnit(d, kTimes);
  if (row.strQuantity == "rate") return WithUnit(d, kRates);
  return Formatted("%.0f MiB", d);
}

std::string Bound(const Row& row, double d) {
  return d == 0.0 ? "" : (row.bAtMost ? "<= " : ">= ") + Formatted("%.4g", d);
}

// Compared as it is printed, with two decimals.
bool Meets(const Row& row, double dRatio, double dBound) {
  const double dPrinted = std::stod(Formatted("%.2f", dRatio));
  return row.bAtMost ? dPrinted <= dBound : dPrinted >= dBound;
}

std::string Verdict(const Row& row, double dRatio, Table& table) {
  if (row.dMust == 0.0) return "";
  ++table.iMust;
  table.iAim += row.dAim != 0.0;
  if (!Meets(row, dRatio, row.dMust)) return "**missed**";
  ++table.iMustMet;
  if (row.dAim == 0.0 || !Meets(row, dRatio, row.dAim)) return "met";
  ++table.iAimMet;
  return "met, aim too";
}

Line AsLine(const Row& row, const Results& results, Table& table) {
  Line line = {row.strTopic,   "",         "", "", Bound(row, row.dMust), Bound(row, row.dAim),
               "not measured", row.strWhat};
  if (const auto measured = results.Find(row)) {
    line[1] = Quantity(row, measured->dOurs);
    line[2] = Quantity(row, measured->dReference);
    line[3] = Formatted("%.2f", measured->Ratio());
    line[6] = Verdict(row, measured->Ratio(), table);
  } else {
    ++table.iNotMeasured;
  }
  return line;
}

void Append(std::string& strText, const Line& line,
            const std::array<std::size_t, kColumns>& widths) {
  for (std::size_t i = 0; i < kColumns; ++i) {
    std::string strCell = line[i];
    if (i + 1 < kColumns) strCell.resize(std::max(strCell.size(), widths[i]), ' ');
    strText += "| " + strCell + " ";
  }
  strText += "|\n";
}

}  // namespace

Table MakeTable(const std::vector<Row>& rows, const Results& results) {
  Table table;
  std::vector<Line> lines(1);
  for (std::size_t i = 0; i < kColumns; ++i) lines[0][i] = kHeads[i];
  for (const Row& row : rows) lines.push_back(AsLine(row, results, table));

  std::array<std::size_t, kColumns> widths = {};
  for (const Line& line : lines) {
    for (std::size_t i = 0; i < kColumns; ++i) widths[i] = std::max(widths[i], line[i].size());
  }
  Append(table.strText, lines[0], widths);
  table.strText += "|---|---:|---:|---:|---|---|---|---|\n";
  for (std::size_t i = 1; i < lines.size(); ++i) Append(table.strText, lines[i], widths);
  return table;
}

}  // namespace report
