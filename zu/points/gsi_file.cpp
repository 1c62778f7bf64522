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
#include <string>
#include <string_view>
#include <utility>

#include "zu/foundation/alnum_id.h"
#include "zu/foundation/internal/characters.h"
#include "zu/foundation/internal/without_memory.h"
#include "zu/foundation/number_text.h"
#include "zu/foundation/numbers.h"
#include "zu/foundation/unicode.h"
#include "zu/points/internal/line_reader.h"
#include "zu/points/read_coordinates.h"

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

// Takes all words of a line; the first damaged one, empty at its place in the line, or null if
// there is none.
const char* TakeLine(std::string_view line, GsiPoint* pPoint) {
  const bool b16 = !line.empty() && line.front() == '*';
  if (b16) line.remove_prefix(1);
  while (!line.empty() && line.back() == ' ') line.remove_suffix(1);

  const std::size_t uWord = b16 ? kData + 16 : kData + 8;
  while (!line.empty()) {
    if (line.size() < uWord || !pPoint->Take(line.substr(0, uWord))) return line.data();
    line.remove_prefix(uWord);
    if (!line.empty() && line.front() != ' ') return line.data();
    if (!line.empty()) line.remove_prefix(1);
  }
  return nullptr;
}

ZuPoint PointOf(const GsiPoint& gsi) {
  // More digits than every Id may have make a name.
  constexpr std::size_t kIdDigits = 9;

  ZuPoint point(0, gsi.adCoordinate[0], gsi.adCoordinate[1], gsi.adCoordinate[2]);
  const char* const pEnd = gsi.acText + gsi.uText;
  if (gsi.uText <= kIdDigits && std::all_of(gsi.acText, pEnd, IsDigit)) {
    point.SetId(ZuAtou(gsi.acText, pEnd));
  }
  if (point.GetId() != 0) return point;
  point.SetName(String(gsi.acText, static_cast<int>(gsi.uText)));
  point.SetId(GetIdFromAlphaNumericString(point.GetName()));
  return point;
}

// Calls Damaged(line, pDamage) for each line that is damaged, null where it is too long, and
// Point(gsi) for each other one that holds any word; false ends the run.
template <class Damaged, class Point>
void ForEachLine(ZuLineReader& lines, Damaged damaged, Point point) {
  std::string_view line;
  while (lines.Next(&line)) {
    GsiPoint gsi;
    const char* const pDamage = lines.IsPiece() ? nullptr : TakeLine(line, &gsi);
    const bool bGood = !lines.IsPiece() && pDamage == nullptr;
    if (!(bGood ? point(line, gsi) : damaged(line, pDamage))) return;
  }
}

// What becomes of the lines of a file that is held to its format.
class Telling {
 public:
  Telling(ZuLineReader& lines, ZuPointList& points, eZuReadMode eMode, ZuCoordinateReading& reading)
      : m_lines(lines), m_points(points), m_reading(reading), m_eMode(eMode) {
    Findings().m_Dialect.m_strForm = "GSI";
  }

  // Those below are false where the reading ends.
  bool Damaged(std::string_view line, const char* pDamage) {
    if (m_lines.HasMorePieces()) return true;
    Count();
    if (pDamage == nullptr) return Wrong(0, "the line is too long", "at most 1999 bytes");
    const auto uAt = static_cast<std::size_t>(pDamage - line.data());
    std::string strRight = "a word such as 81..00+00012345";
    return Wrong(uAt + 1, ZuQuoted(line.substr(uAt, 24)) + " is no word", std::move(strRight));
  }
  bool Point(std::string_view line, const GsiPoint& gsi) {
    Count();
    if (gsi.IsComplete()) {
      zu::internal::Taken(m_points.Add(PointOf(gsi)));
      m_reading.m_aLines.push_back(m_uLine);
    } else if (!line.empty() && m_uIncomplete++ == 0) {
      m_uFirstIncomplete = m_uLine;
    }
    return true;
  }

  // At the end of the file.
  void Finish() {
    Findings().EndDroppedLines();
    if (m_uIncomplete == 0) return;
    Findings().Add(eZuReadNote, m_uFirstIncomplete, 0,
                   "lines without point number (word 11) or coordinates (81 to 83) passed over: " +
                       std::to_string(m_uIncomplete));
  }

 private:
  ZuReadFindings& Findings() { return m_reading.m_Findings; }
  void Count() {
    ++m_uLine;
    ZuReadDialect& dialect = Findings().m_Dialect;
    if (m_lines.HasEnd()) dialect.AddLineEnd(m_lines.HasCarriageReturn());
    dialect.m_bByteOrderMark = m_lines.HasByteOrderMark();
  }
  bool Wrong(std::uint64_t uColumn, std::string strText, std::string strRight) {
    if (m_eMode == eZuReadStrict) {
      Findings().Add(eZuReadFault, m_uLine, uColumn, std::move(strText), std::move(strRight));
      return false;
    }
    Findings().AddDroppedLine(m_uLine, uColumn, std::move(strText), std::move(strRight));
    return true;
  }

  ZuLineReader& m_lines;
  ZuPointList& m_points;
  ZuCoordinateReading& m_reading;
  eZuReadMode m_eMode;
  std::uint64_t m_uLine = 0;
  std::uint64_t m_uIncomplete = 0, m_uFirstIncomplete = 0;
};

}  // namespace

ZuCoordinateReading ZuReadGsi(const char* szPath, ZuPointList& points, eZuReadMode eMode) {
  ZuCoordinateReading reading;
  try {
    const ZuOpenFile pFile = ZuOpenText(szPath);
    if (pFile) {
      ZuLineReader lines(pFile.get());
      Telling telling(lines, points, eMode, reading);
      ForEachLine(
          lines,
          [&](std::string_view line, const char* pDamage) {
            return telling.Damaged(line, pDamage);
          },
          [&](std::string_view line, const GsiPoint& gsi) { return telling.Point(line, gsi); });
      telling.Finish();
    } else {
      reading.m_Findings.Add(eZuReadFault, 0, 0, "cannot be opened");
    }
    if (pFile && std::ferror(pFile.get()) != 0) {
      reading.m_Findings.Add(eZuReadCut, 0, 0, "not all bytes could be read");
    }
  } catch (const std::bad_alloc&) {
    reading.m_Findings.AddMemoryEnded();
  }
  return reading;
}

int ZuPointList::ReadGsiFile(const char* szPath) {
  const ZuOpenFile pFile = ZuOpenText(szPath);
  if (!pFile) return 0;
  try {
    ZuLineReader lines(pFile.get());
    ForEachLine(
        lines, [](std::string_view, const char*) { return true; },
        [this](std::string_view, const GsiPoint& gsi) {
          if (gsi.IsComplete()) zu::internal::Taken(Add(PointOf(gsi)));
          return true;
        });
  } catch (const std::bad_alloc&) {
    // The points that found room stay.
  }
  return Count();
}

int ZuPointList::ReadGsiFile(const wchar_t* wszPath) {
  const auto read = [&] { return ReadGsiFile(UniToAnsi(wszPath)()); };
  return zu::internal::OrWithoutMemory(read, 0);
}
