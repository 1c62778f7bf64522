// Points with coordinates from GSI files of total stations.
#include <algorithm>
#include <cstddef>
#include <new>
#include <optional>
#include <string>
#include <string_view>

#include "zu/foundation/internal/without_memory.h"
#include "zu/foundation/unicode.h"
#include "zu/points/internal/gsi_word.h"

namespace {

// What the words of a line tell about a point.
struct GsiPoint {
  char acText[24] = "";  // sign and number, or name
  std::size_t uText = 0;
  bool bCoordinate = false;
  double adCoordinate[3] = {};

  bool Take(std::string_view word);
  bool IsComplete() const { return uText > 0 && bCoordinate; }
  ZuPoint Point() const { return zu::internal::GsiPointOf({acText, uText}, adCoordinate); }
};

// False for a damaged word. Words with other indices are passed over.
bool GsiPoint::Take(std::string_view word) {
  if (!zu::internal::IsGsiWord(word)) return false;
  if (word.substr(0, 2) == "11") {
    const std::string_view text = zu::internal::GsiTrimmed(word.substr(zu::internal::kGsiData));
    uText = 0;
    if (word[zu::internal::kGsiSign] == '-') acText[uText++] = '-';
    uText = static_cast<std::size_t>(std::copy(text.begin(), text.end(), acText + uText) - acText);
    return !text.empty();
  }
  if (word[0] == '8' && word[1] >= '1' && word[1] <= '3') {
    const std::optional<double> value = zu::internal::GsiLength(word);
    adCoordinate[word[1] - '1'] = value.value_or(0.0);
    bCoordinate = true;
    return value.has_value();
  }
  return true;
}

// What becomes of the lines of a file that is held to its format.
class GsiPointTelling : public zu::internal::GsiTelling {
 public:
  GsiPointTelling(const ZuLineReader& lines, ZuPointList& points, eZuReadMode eMode,
                  ZuCoordinateReading& reading)
      : GsiTelling(lines, eMode, reading.m_Findings), m_points(points), m_reading(reading) {}

  bool Point(std::string_view line, const GsiPoint& gsi) {
    Count();
    if (gsi.IsComplete()) {
      zu::internal::Taken(m_points.Add(gsi.Point()));
      m_reading.m_aLines.push_back(m_uLine);
    } else if (!line.empty() && m_uIncomplete++ == 0) {
      m_uFirstIncomplete = m_uLine;
    }
    return true;
  }

  // At the end of the file.
  void Finish() {
    m_findings.EndDroppedLines();
    if (m_uIncomplete == 0) return;
    m_findings.Add(eZuReadNote, m_uFirstIncomplete, 0,
                   "lines without point number (word 11) or coordinates (81 to 83) passed over: " +
                       std::to_string(m_uIncomplete));
  }

 private:
  ZuPointList& m_points;
  ZuCoordinateReading& m_reading;
  std::uint64_t m_uIncomplete = 0, m_uFirstIncomplete = 0;
};

}  // namespace

ZuCoordinateReading ZuReadGsi(const char* szPath, ZuPointList& points, eZuReadMode eMode) {
  ZuCoordinateReading reading;
  try {
    const ZuOpenFile pFile = ZuOpenText(szPath);
    if (pFile) {
      ZuLineReader lines(pFile.get());
      GsiPointTelling telling(lines, points, eMode, reading);
      zu::internal::ForEachGsiLine<GsiPoint>(
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
    zu::internal::ForEachGsiLine<GsiPoint>(
        lines, [](std::string_view, const char*) { return true; },
        [this](std::string_view, const GsiPoint& gsi) {
          if (gsi.IsComplete()) zu::internal::Taken(Add(gsi.Point()));
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
