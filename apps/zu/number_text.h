// Numbers and ids of which the whole text must be one, as the program's own readers call them.
#pragma once

#include "zu/foundation/number_text.h"

namespace cli {

inline bool ParseNumber(std::string_view text, double* pdValue) {
  return ZuParseNumber(text, pdValue);
}
inline bool ParseId(std::string_view text, unsigned* puId) { return ZuParseId(text, puId); }

}  // namespace cli
