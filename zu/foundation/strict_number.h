// Numbers and ids of which the whole text must be one, for checks that tell the user what is wrong.
// The readers of records take what they can of a text: "12abc" is 12 there.
#pragma once

#include <string_view>

#include "zu/export.h"

// The whole text is a finite decimal number: "12", "-0.5", "+1.5e-3". False, *pdValue untouched,
// for "1m", "nan", "inf", "1e400", "12,5", "0x10" and "".
ZU_API bool ZuParseNumber(std::string_view text, double* pdValue);

// The whole text is a whole number from 1 to 4294967295. False, *puId untouched, for "0", "-1",
// "1.5", "12abc" and "".
ZU_API bool ZuParseId(std::string_view text, unsigned* puId);

// The whole text is a whole number of 32 bits. False for "1.5", "12abc" and "".
ZU_API bool ZuParseWhole(std::string_view text, int* piValue);
