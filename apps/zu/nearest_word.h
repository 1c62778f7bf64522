// "Did you mean": the word that somebody had in mind.
#pragma once

#include <string>
#include <vector>

namespace cli {

// The word that is reached by the fewest changes of one character or exchanges of two neighbours,
// two at most and fewer than half of its length; empty where there is none, or several.
std::string NearestWord(const std::string& strText, const std::vector<std::string>& words);

}  // namespace cli
