// What readers of JSON tell of a file.
#pragma once

#include <cstddef>
#include <string>

#include "zu/foundation/finding.h"

namespace zu::internal {

// An error in a value.
ZuFinding JsonFinding(const std::string& strName, const std::string& strText,
                      const std::string& strRight);
// Where the JSON library stopped; uByte counts from 1.
ZuFinding JsonSyntaxFinding(const std::string& strName, const std::string& strText,
                            std::size_t uByte);

}  // namespace zu::internal
