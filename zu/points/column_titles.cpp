#include "zu/points/column_titles.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <utility>

#include "zu/points/column_names.h"
#include "zu/points/internal/line_fields.h"

namespace {

struct KnownTitle {
  std::string_view title;  // as ZuFoldedTitle gives it
  eZuPointRWMask eColumn;
};

constexpr KnownTitle kTitles[] = {{"e", eZuPointRWX},
                                  {"east", eZuPointRWX},
                                  {"easting", eZuPointRWX},
                                  {"rechtswert", eZuPointRWX},
                                  {"ostwert", eZuPointRWX},
                                  {"ost", eZuPointRWX},
                                  {"rw", eZuPointRWX},
                                  {"ekoordinate", eZuPointRWX},
                                  {"xcoord", eZuPointRWX},
                                  {"xcoordinate", eZuPointRWX},
                                  {"xkoordinate", eZuPointRWX},
                                  {"n", eZuPointRWY},
                                  {"north", eZuPointRWY},
                                  {"northing", eZuPointRWY},
                                  {"hochwert", eZuPointRWY},
                                  {"nordwert", eZuPointRWY},
                                  {"nord", eZuPointRWY},
                                  {"hw", eZuPointRWY},
                                  {"nkoordinate", eZuPointRWY},
                                  {"ycoord", eZuPointRWY},
                                  {"ycoordinate", eZuPointRWY},
                                  {"ykoordinate", eZuPointRWY},
                                  {"h", eZuPointRWZ},
                                  {"height", eZuPointRWZ},
                                  {"hoehe", eZuPointRWZ},
                                  {"hohe", eZuPointRWZ},
                                  {"hoehenwert", eZuPointRWZ},
                                  {"hkoordinate", eZuPointRWZ},
                                  {"elevation", eZuPointRWZ},
                                  {"elev", eZuPointRWZ},
                                  {"altitude", eZuPointRWZ},
                                  {"alt", eZuPointRWZ},
                                  {"zcoord", eZuPointRWZ},
                                  {"zcoordinate", eZuPointRWZ},
                                  {"zkoordinate", eZuPointRWZ},
                                  {"sx", eZuPointRWDX},
                                  {"se", eZuPointRWDX},
                                  {"sdx", eZuPointRWDX},
                                  {"sigmax", eZuPointRWDX},
                                  {"sy", eZuPointRWDY},
                                  {"sn", eZuPointRWDY},
                                  {"sdy", eZuPointRWDY},
                                  {"sigmay", eZuPointRWDY},
                                  {"sz", eZuPointRWDZ},
                                  {"sh", eZuPointRWDZ},
                                  {"sdz", eZuPointRWDZ},
                                  {"sigmaz", eZuPointRWDZ},
                                  {"nr", eZuPointRWId},
                                  {"no", eZuPointRWId},
                                  {"number", eZuPointRWId},
                                  {"nummer", eZuPointRWId},
                                  {"fid", eZuPointRWId},
                                  {"pointid", eZuPointRWId},
                                  {"pointnumber", eZuPointRWId},
                                  {"pointno", eZuPointRWId},
                                  {"punktnummer", eZuPointRWId},
                                  {"punktnr", eZuPointRWId},
                                  {"pktnr", eZuPointRWId},
                                  {"pnr", eZuPointRWId},
                                  {"ptid", eZuPointRWId},
                                  {"label", eZuPointRWName},
                                  {"point", eZuPointRWName},
                                  {"pointname", eZuPointRWName},
                                  {"pt", eZuPointRWName},
                                  {"target", eZuPointRWName},
                                  {"marker", eZuPointRWName},
                                  {"station", eZuPointRWName},
                                  {"punkt", eZuPointRWName},
                                  {"punktname", eZuPointRWName},
                                  {"pkt", eZuPointRWName},
                                  {"bezeichnung", eZuPointRWName}};

// The umlauts in UTF-8, and how they are written without.
constexpr std::pair<std::string_view, std::string_view> kUmlauts[] = {
    {"\xC3\xA4", "ae"}, {"\xC3\xB6", "oe"}, {"\xC3\xBC", "ue"}, {"\xC3\x9F", "ss"},
    {"\xC3\x84", "ae"}, {"\xC3\x96", "oe"}, {"\xC3\x9C", "ue"}};

// Titles such as "code" stand above texts of other programs, too, which are none of ours.
bool IsPlain(eZuPointRWMask eColumn) {
  return (eColumn >= eZuPointRWId && eColumn <= eZuPointRWIdName) ||
         (eColumn >= eZuPointRWX && eColumn <= eZuPointRWDZ);
}

eZuPointRWMask ColumnOf(const std::string& strFolded) {
  const eZuPointRWMask eColumn = FindZuColumn(strFolded);
  if (IsPlain(eColumn)) return eColumn;
  const auto* const pFound =
      std::find_if(std::begin(kTitles), std::end(kTitles),
                   [&strFolded](const KnownTitle& t) { return t.title == strFolded; });
  return pFound == std::end(kTitles) ? eZuPointRWSkip : pFound->eColumn;
}

bool NamesTwoCoordinates(std::string_view line) {
  constexpr std::string_view kBetween = " \t\r,;|\"#/%";
  int iCoordinates = 0;
  for (std::size_t u = line.find_first_not_of(kBetween); u != line.npos;) {
    const std::size_t uEnd = std::min(line.find_first_of(kBetween, u), line.size());
    const eZuPointRWMask e = FindZuColumnTitle(line.substr(u, uEnd - u)).m_eColumn;
    iCoordinates += e == eZuPointRWX || e == eZuPointRWY || e == eZuPointRWZ ? 1 : 0;
    u = line.find_first_not_of(kBetween, uEnd);
  }
  return iCoordinates > 1;
}

}  // namespace

std::string ZuFoldedTitle(std::string_view title) {
  std::string strFolded;
  for (std::size_t i = 0; i < title.size(); ++i) {
    const char c = title[i];
    if (c >= 'A' && c <= 'Z') strFolded += static_cast<char>(c + ('a' - 'A'));
    if ((c >= 'a' && c <= 'z') || (c >= '0' && c <= '9')) strFolded += c;
    for (const auto& [umlaut, letters] : kUmlauts) {
      if (title.substr(i, umlaut.size()) == umlaut) strFolded += letters;
    }
  }
  return strFolded;
}

bool ZuHasColumnTitles(std::string_view head) {
  std::string strHead(head);
  std::erase(strHead, '\0');  // of UTF-16
  for (std::string_view text = strHead; !text.empty();) {
    const std::size_t uEnd = std::min(text.find('\n'), text.size());
    if (NamesTwoCoordinates(text.substr(0, uEnd))) return true;
    text.remove_prefix(std::min(uEnd + 1, text.size()));
  }
  return false;
}

ZuColumnTitle FindZuColumnTitle(std::string_view title) {
  ZuColumnTitle found;
  const std::size_t uOpen = title.find_first_of("[(");
  if (uOpen != title.npos) {
    const std::size_t uClose = std::min(title.find_first_of("])", uOpen), title.size());
    found.m_strUnit = ZuTrimmed(title.substr(uOpen + 1, uClose - uOpen - 1));
  }
  found.m_eColumn = ColumnOf(ZuFoldedTitle(title.substr(0, uOpen)));
  return found;
}

double GetZuUnitLength(std::string_view unit) {
  constexpr std::pair<std::string_view, double> kLengths[] = {
      {"mm", 1e-3}, {"cm", 1e-2},   {"dm", 1e-1},   {"m", 1.0},         {"km", 1e3},
      {"um", 1e-6}, {"ft", 0.3048}, {"in", 0.0254}, {"\xC2\xB5m", 1e-6}};
  for (const auto& [name, dLength] : kLengths) {
    if (unit == name) return dLength;
  }
  return 0.0;
}
