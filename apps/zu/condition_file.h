// Files of conditions between points (zu/transform/condition_line.h).
#pragma once

#include <string>
#include <vector>

#include "zu/transform/condition_line.h"

namespace cli {

struct ConditionOfFile {
  ZuConditionLine condition;
  std::string strPlace;  // "file:12"
};

// Throws CommandError (bad input) naming the line that is none.
std::vector<ConditionOfFile> ReadConditions(const std::string& strPath);

}  // namespace cli
