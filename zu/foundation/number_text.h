// What is wrong with texts that are no numbers or ids, and what would be right.
#pragma once

#include <string>
#include <string_view>

#include "zu/export.h"
#include "zu/foundation/strict_number.h"

// The text is a number but for its decimal comma: "12,5". The second form gives that number.
ZU_API bool ZuHasDecimalComma(std::string_view text);
ZU_API bool ZuParseCommaNumber(std::string_view text, double* pdValue);

// A text for a message: in quotes, cut at 40 bytes, '?' for control characters.
ZU_API std::string ZuQuoted(std::string_view text);

// What is wrong with a text, and what would be right.
struct ZuTextFault {
  std::string m_strText;   // "\"12,5\" has a decimal comma"
  std::string m_strRight;  // "12.5"
};

// Of a text that ZuParseNumber or ZuParseId refused.
ZU_API ZuTextFault ZuWhyNoNumber(std::string_view text);
ZU_API ZuTextFault ZuWhyNoId(std::string_view text);
// Of a number with a decimal point among numbers with decimal commas.
ZU_API ZuTextFault ZuWhyNoCommaNumber(std::string_view text);
