// Points from GSI files of total stations.
//
//   110001+0000A110 81..00+00012345 82..00-00067890 83..00+00000100
//
// A line is a row of words of 16 bytes, or of 24 where a '*' stands before the first: word index
// (2), information (4, the last of it the unit), sign, data (8 or 16), a blank.
#include <algorithm>
#include <array>
#include <cstddef>
#include <new>
#include <optional>
#include <string_view>

#include "zu/foundation/internal/characters.h"
#include "zu/foundation/internal/without_memory.h"
#include "zu/foundation/numbers.h"
#include "zu/foundation/unicode.h"
#include "zu/points/internal/line_reader.h"
#include "zu/points/point_list.h"

namespace {

using zu::internal::IsDigit;

constexpr std::size_t kUnit = 5;  // places in a word
constexpr std::size_t kSign = 6;
constexpr std::size_t kData = 7;

struct GsiUnit {
  char cCode;
  std::size_t uDecimals;  // of the data
  eZuUnit eUnit;
};

constexpr GsiUnit kUnits[] = {{'0', 3, eZuUnitMeter},
                              {'1', 3, eZuUnitFoot},
                              {'6', 4, eZuUnitMeter},
                              {'7', 4, eZuUnitFoot},
                              {'8', 5, eZuUnitMeter}};

// A word has its sign in place, and an index.
bool IsWord(std::string_view word) {
  return IsDigit(word[0]) && IsDigit(word[1]) && (word[kSign] == '+' || word[kSign] == '-');
}

// The value of a coordinate word in metres; none if it is damaged.
std::optional<double> Coordinate(std::string_view word) {
  const auto* const pUnit = std::find_if(std::begin(kUnits), std::end(kUnits),
                                         [&](const GsiUnit& u) { return u.cCode == word[kUnit]; });
  const std::string_view data = word.substr(kData);
  if (pUnit == std::end(kUnits) || !std::all_of(data.begin(), data.end(), IsDigit)) return {};

  // With its decimal point the text is the nearest double to what the instrument shows.
  std::array<char, 20> acText;  // sign, 16 digits, point
  char* p = acText.data();
  *p++ = word[kSign];
  const std::size_t uWhole = data.size() - pUnit->uDecimals;
  p = std::copy_n(data.begin(), uWhole, p);
  *p++ = '.';
  p = std::copy(data.begin() + static_cast<std::ptrdiff_t>(uWhole), data.end(), p);
  double dValue = ZuAtof(acText.data(), p);
  ConvertUnit(&dValue, pUnit->eUnit, eZuUnitMeter);
  return dValue;
}

// What stands in a text field of a word without what fills it up: zeros on the left, blanks.
std::string_view Trimmed(std::string_view data) {
  while (!data.empty() && data.back() == ' ') data.remove_suffix(1);
  while (data.size() > 1 && (data.front() == '0' || data.front() == ' ')) data.remove_prefix(1);
  return data;
}

// What the words of a line tell about a point.
struct GsiPoint {
  char acText[24] = "";  // sign and number, or name
  std::size_t uText = 0;
  bool bCoordinate = false;
  double adCoordinate[3] = {};

  bool Take(std::string_view word);
  bool IsComplete() const { return uText > 0 && bCoordinate; }
};

// False for a damaged word. Words with other indices are passed over.
bool GsiPoint::Take(std::string_view word) {
  if (!IsWord(word)) return false;
  if (word.substr(0, 2) == "11") {
    const std::string_view text = Trimmed(word.substr(kData));
    uText = 0;
    if (word[kSign] == '-') acText[uText++] = '-';
    uText = static_cast<std::size_t>(std::copy(text.begin(), text.end(), acText + uText) - acText);
    return !text.empty();
  }
  if (word[0] == '8' && word[1] >= '1' && word[1] <= '3') {
    const std::optional<double> value = Coordinate(word);
    adCoordinate[word[1] - '1'] = value.value_or(0.0);
    bCoordinate = true;
    return value.has_value();
  }
  return true;
}

// Takes all words of a line; false if it is damaged.
bool TakeLine(std::string_view line, GsiPoint* pPoint) {
  const bool b16 = !line.empty() && line.front() == '*';
  if (b16) line.remove_prefix(1);
  while (!line.empty() && line.back() == ' ') line.remove_suffix(1);

  const std::size_t uWord = b16 ? kData + 16 : kData + 8;
  while (!line.empty()) {
    if (line.size() < uWord || !pPoint->Take(line.substr(0, uWord))) return false;
    line.remove_prefix(uWord);
    if (!line.empty() && line.front() != ' ') return false;
    if (!line.empty()) line.remove_prefix(1);
  }
  return true;
}

}  // namespace

int ZuPointList::ReadGsiFile(const char* szPath) {
  // More digits than every Id may have make a name.
  constexpr std::size_t kIdDigits = 9;

  const ZuOpenFile pFile = ZuOpenText(szPath);
  if (!pFile) return 0;
  try {
    ZuLineReader lines(pFile.get());
    std::string_view line;
    while (lines.Next(&line)) {
      GsiPoint gsi;
      if (lines.IsPiece() || !TakeLine(line, &gsi) || !gsi.IsComplete()) continue;
      ZuPoint point(0, gsi.adCoordinate[0], gsi.adCoordinate[1], gsi.adCoordinate[2]);
      const std::string_view text(gsi.acText, gsi.uText);
      if (text.size() <= kIdDigits) {
        point.SetIdOrName(text, true);
      } else {
        point.SetNameAndId(text);
      }
      zu::internal::Taken(Add(point));
    }
  } catch (const std::bad_alloc&) {
    // The points that found room stay.
  }
  return Count();
}

int ZuPointList::ReadGsiFile(const wchar_t* wszPath) {
  const auto read = [&] { return ReadGsiFile(UniToAnsi(wszPath)()); };
  return zu::internal::OrWithoutMemory(read, 0);
}
