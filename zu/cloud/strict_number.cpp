#include "zu/cloud/internal/strict_number.h"

#include "zu/foundation/internal/characters.h"

ZuTextFault ZuWhyNoNumber(const ZuTextToken& token) {
  const std::string_view text = token.View();
  const bool bSeparators = text.find_first_of(",;") != text.npos;
  if (bSeparators && zu::internal::IsDigit(text[0]) && !ZuHasDecimalComma(text)) {
    return {ZuQuoted(text) + " is no number", "blanks between the numbers"};
  }
  return ZuWhyNoNumber(text);
}
