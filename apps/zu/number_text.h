// Numbers and ids as files and options of the program give them: all of a text, or an error that
// says what would be right. The library itself takes what it can of a text ("12abc" is 12).
#pragma once

#include <string>
#include <string_view>

namespace cli {

// The whole text is a finite decimal number: "12", "-0.5", "+1.5e-3". False, *pdValue untouched,
// for "1m", "nan", "inf", "1e400", "12,5", "0x10" and "".
bool ParseNumber(std::string_view text, double* pdValue);

// The whole text is a whole number from 1 to 4294967295. False, *puId untouched, for "0", "-1",
// "1.5", "12abc" and "".
bool ParseId(std::string_view text, unsigned* puId);

// The text is a number but for its decimal comma: "12,5".
bool HasDecimalComma(std::string_view text);

// What is wrong with a text that ParseNumber or ParseId refused, and what would be right, for
// messages: "\"12,5\" has a decimal comma, 12.5 would be right".
std::string WhyNoNumber(std::string_view text);
std::string WhyNoId(std::string_view text);

}  // namespace cli
