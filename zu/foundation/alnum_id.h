#pragma once

#include "zu/export.h"

// The id of a record that only has a name, such as "P12a": the same for the same text in every run
// and on every machine. It lies in 2^30 to 2^31 - 1, above the numbers that people give and within
// what files hold as an integer; so it is never 0. Different names may meet in one id.
ZU_API unsigned int GetIdFromAlphaNumericString(char const* szText);
