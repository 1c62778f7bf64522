#include "table_decimals.h"

#include <algorithm>
#include <cmath>

#include "text_table.h"

namespace cli {
namespace {

constexpr int kMostTableDecimals = 12;
int g_iToldDecimals = -1;

}  // namespace

void TellTableDecimals(int iDecimals) { g_iToldDecimals = iDecimals; }

int TableDecimals(int iElse) { return g_iToldDecimals < 0 ? iElse : g_iToldDecimals; }

std::string FixedLength(double d, int iElse) { return Fixed(d, TableDecimals(iElse)); }

std::string ShortLength(double d) {
  if (d == 0.0 || !std::isfinite(d)) return FixedLength(d, 0);
  const int iDigits = 2 - static_cast<int>(std::floor(std::log10(std::fabs(d))));
  return FixedLength(d, std::clamp(iDigits, 0, kMostTableDecimals));
}

}  // namespace cli
