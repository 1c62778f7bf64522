#include "zu/points/column_names.h"

#include <algorithm>

#include "zu/points/internal/columns.h"

namespace {

constexpr struct {
  const char* szName;
  eZuPointRWMask eColumn;
} kNames[] = {
    {"id", eZuPointRWId},       {"name", eZuPointRWName},     {"idname", eZuPointRWIdName},
    {"flag", eZuPointRWFlag},   {"code", eZuPointRWCode},     {"codenum", eZuPointRWCodeNum},
    {"photo", eZuPointRWPhoto}, {"camera", eZuPointRWCamera}, {"x", eZuPointRWX},
    {"y", eZuPointRWY},         {"z", eZuPointRWZ},           {"dx", eZuPointRWDX},
    {"dy", eZuPointRWDY},       {"dz", eZuPointRWDZ},         {"red1", eZuPointRWRedu1},
    {"red2", eZuPointRWRedu2},  {"red3", eZuPointRWRedu3},    {"color", eZuPointRWColor},
    {"nimo", eZuPointRWNImo},   {"vx", eZuPointRWVX},         {"vy", eZuPointRWVY},
    {"vz", eZuPointRWVZ},       {"skip", eZuPointRWSkip}};

}  // namespace

const char* GetZuColumnName(eZuPointRWMask eColumn) {
  const auto* const pFound =
      std::find_if(std::begin(kNames), std::end(kNames),
                   [eColumn](const auto& n) { return n.eColumn == eColumn; });
  return pFound == std::end(kNames) ? nullptr : pFound->szName;
}

eZuPointRWMask FindZuColumn(std::string_view name) {
  const auto* const pFound = std::find_if(std::begin(kNames), std::end(kNames),
                                          [name](const auto& n) { return name == n.szName; });
  return pFound == std::end(kNames) ? eZuPointRWEnd : pFound->eColumn;
}

std::string GetZuColumnNames() {
  std::string strNames;
  for (const auto& name : kNames) strNames.append(strNames.empty() ? "" : " ").append(name.szName);
  return strNames;
}

std::string GetZuColumnNames(const TZuFormatTable<eZuPointRWMask>& table) {
  std::string strNames;
  for (int i = 0; table[i] != eZuPointRWEnd; ++i) {
    const char* const szName = GetZuColumnName(table[i]);
    strNames.append(i > 0 ? "," : "").append(szName != nullptr ? szName : "?");
  }
  return strNames;
}

eZuColumnText GetZuColumnText(eZuPointRWMask eColumn) {
  switch (ZuFindColumn(eColumn).eKind) {
    case eZuColumnKind::Id:
      return eZuColumnId;
    case eZuColumnKind::Flag:
    case eZuColumnKind::Short:
    case eZuColumnKind::Int:
    case eZuColumnKind::Key:
      return eZuColumnWhole;
    case eZuColumnKind::Double:
    case eZuColumnKind::Float:
      return eZuColumnNumber;
    default:
      return eZuColumnAny;
  }
}
