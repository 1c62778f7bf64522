// Ids as a user writes them: 1,4,7-9.
#pragma once

#include <set>
#include <string>

#include "zu/project/project.h"

namespace cli {

// Throws CommandError (usage) where the text is no such list. A range has at most a million ids.
std::set<unsigned> ParseIds(const std::string& strIds, const std::string& strOption);

// The photos of these ids; of all with an empty text. Throws CommandError (bad input) for an id
// that is no photo.
std::set<unsigned> PhotosOf(const ZuProject& project, const std::string& strIds,
                            const std::string& strOption);

}  // namespace cli
