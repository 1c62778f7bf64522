// Lines of text that name points, as breaklines and conditions do:
//
//   right 1 2 1 "north corner"   # comment
//
// Words stand between blanks, tabs and commas. One that holds such a character or # stands in
// quotes; no word holds a quote itself. What follows a # is left out.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "zu/export.h"

// The words of a line, none of an empty one. False, *pWords as far as it was read, for a quote that
// is not closed.
ZU_API bool ZuParseNameLine(std::string_view line, std::vector<std::string>* pWords);

// The line that is read as these words; a quote and a line end within a word become a blank.
ZU_API std::string ZuNameLine(const std::vector<std::string>& words);
