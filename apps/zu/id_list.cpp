#include "id_list.h"

#include <sstream>

#include "exit_code.h"
#include "zu/foundation/strict_number.h"

namespace cli {

std::set<unsigned> ParseIds(const std::string& strIds, const std::string& strOption) {
  constexpr unsigned kLongest = 1'000'000;
  std::set<unsigned> ids;
  std::istringstream parts(strIds);
  for (std::string strPart; std::getline(parts, strPart, ',');) {
    const size_t uDash = strPart.find('-');
    unsigned uFirst = 0, uLast = 0;
    const bool bGood = ZuParseId(strPart.substr(0, uDash), &uFirst) &&
                       (uDash == std::string::npos || ZuParseId(strPart.substr(uDash + 1), &uLast));
    if (uDash == std::string::npos) uLast = uFirst;
    if (!bGood || uLast < uFirst || uLast - uFirst >= kLongest) {
      throw CommandError(kUsage,
                         strOption + ": \"" + strPart + "\" is no id; 1,4,7-9 would be right");
    }
    for (unsigned u = uFirst;; ++u) {
      ids.insert(u);
      if (u == uLast) break;
    }
  }
  return ids;
}

std::set<unsigned> PhotosOf(const ZuProject& project, const std::string& strIds,
                            const std::string& strOption) {
  std::set<unsigned> all;
  for (const ZuPhoto* p = project.PhotoList().First(); p != nullptr; p = p->Next()) {
    all.insert(p->GetId());
  }
  if (strIds.empty()) return all;
  std::set<unsigned> ids = ParseIds(strIds, strOption);
  for (const unsigned uId : ids) {
    if (all.count(uId) != 0) continue;
    throw CommandError(kBadInput, strOption + ": the project has no photo " + std::to_string(uId) +
                                      "; zu project info lists its photos");
  }
  return ids;
}

}  // namespace cli
