// Coordinates and lengths in tables, with the decimals that --decimals tells for the whole run.
#pragma once

#include <string>

namespace cli {

// Once, before the command runs; below 0: not told.
void TellTableDecimals(int iDecimals);
// Those that were told, or else.
int TableDecimals(int iElse);

// A coordinate or a length.
std::string FixedLength(double d, int iElse);
// A length by its size, as a standard deviation: three digits, or the decimals that were told. No
// exponent: what is below 12 decimals is 0.
std::string ShortLength(double d);

}  // namespace cli
