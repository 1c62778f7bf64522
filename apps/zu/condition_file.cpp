#include "condition_file.h"

#include <sstream>

#include "exit_code.h"
#include "point_input.h"

namespace cli {

std::vector<ConditionOfFile> ReadConditions(const std::string& strPath) {
  std::vector<ConditionOfFile> conditions;
  std::istringstream text(ReadWholeFile(strPath));
  int iLine = 0;
  for (std::string strLine; std::getline(text, strLine);) {
    ConditionOfFile read;
    read.strPlace = NameInMessages(strPath) + ":" + std::to_string(++iLine);
    if (!ZuParseConditionLine(strLine, &read.condition)) {
      throw CommandError(kBadInput, read.strPlace +
                                        ": no condition; parallel, right or equal A B C D, ratio A "
                                        "B C D R, length A B L or xaxis A B would be right");
    }
    if (read.condition.kind != ZuConditionLine::eNone) conditions.push_back(read);
  }
  return conditions;
}

}  // namespace cli
