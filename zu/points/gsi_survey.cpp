#include "zu/points/gsi_survey.h"

#include <cmath>
#include <new>
#include <numbers>
#include <string_view>

#include "zu/foundation/internal/without_memory.h"
#include "zu/points/internal/gsi_word.h"

namespace {

using std::numbers::pi;

// Degrees, minutes and seconds as 12.34567: 12 degrees, 34 minutes, 56.7 seconds.
std::optional<double> GsiSexagesimal(char cSign, std::string_view data) {
  const std::size_t uMinutes = data.size() - 5;
  const auto degrees = zu::internal::GsiNumber('+', data.substr(0, uMinutes), 0);
  const auto minutes = zu::internal::GsiNumber('+', data.substr(uMinutes, 2), 0);
  const auto seconds = zu::internal::GsiNumber('+', data.substr(uMinutes + 2), 1);
  if (!degrees || !minutes || !seconds || *minutes >= 60.0 || *seconds >= 60.0) return {};
  const double dDegrees = *degrees + (*minutes * 60.0 + *seconds) / 3600.0;
  return cSign == '-' ? -dDegrees : dDegrees;
}

// The value of an angle in radians; none if it is damaged.
std::optional<double> GsiAngle(std::string_view word) {
  const char cSign = word[zu::internal::kGsiSign];
  const std::string_view data = word.substr(zu::internal::kGsiData);
  std::optional<double> value;
  double dHalfCircle = 180.0;
  switch (word[zu::internal::kGsiUnit]) {
    case '2':
      dHalfCircle = 200.0;
      value = zu::internal::GsiNumber(cSign, data, 5);
      break;
    case '3':
      value = zu::internal::GsiNumber(cSign, data, 5);
      break;
    case '4':
      value = GsiSexagesimal(cSign, data);
      break;
    case '5':
      dHalfCircle = 3200.0;
      value = zu::internal::GsiNumber(cSign, data, 4);
      break;
    default:
      break;
  }
  if (value) *value *= pi / dHalfCircle;
  return value;
}

// "0012+034": parts per million, then the constant of the prism in mm.
std::optional<double> GsiPpmAndConstant(std::string_view word) {
  const std::size_t uSign = word.size() - 4;
  const char cSign = word[uSign];
  const std::string_view ppm = word.substr(zu::internal::kGsiData, uSign - zu::internal::kGsiData);
  if (!zu::internal::GsiNumber('+', ppm, 0) || (cSign != '+' && cSign != '-')) return {};
  return zu::internal::GsiNumber(cSign, word.substr(uSign + 1), 3);
}

// 1/10 mm where the unit is not told.
std::optional<double> GsiConstant(std::string_view word) {
  if (word[zu::internal::kGsiUnit] != '.') return zu::internal::GsiLength(word);
  return zu::internal::GsiNumber(word[zu::internal::kGsiSign], word.substr(zu::internal::kGsiData),
                                 4);
}

// A line while it is read.
struct GsiSurveyLine {
  ZuGsiRecord record;
  bool bTold = false;  // any word that counts

  bool Take(std::string_view word);

 private:
  bool Keep(std::optional<double> value, std::optional<double>* pKept) {
    *pKept = value;
    bTold = true;
    return value.has_value();
  }
  bool TakePoint(std::string_view word);
};

bool GsiSurveyLine::TakePoint(std::string_view word) {
  const std::string_view text = zu::internal::GsiTrimmed(word.substr(zu::internal::kGsiData));
  record.m_strPoint = word[zu::internal::kGsiSign] == '-' ? "-" : "";
  record.m_strPoint += text;
  return !text.empty();
}

// False for a damaged word. Words with other indices are passed over.
bool GsiSurveyLine::Take(std::string_view word) {
  if (!zu::internal::IsGsiWord(word)) return false;
  const int iIndex = (word[0] - '0') * 10 + (word[1] - '0');
  switch (iIndex) {
    case 11:
      return TakePoint(word);
    case 21:
      return Keep(GsiAngle(word), &record.m_direction);
    case 22:
      return Keep(GsiAngle(word), &record.m_zenith);
    case 31:
      return Keep(zu::internal::GsiLength(word), &record.m_distance);
    case 51:
      return Keep(GsiPpmAndConstant(word), &record.m_prism);
    case 58:
      return Keep(GsiConstant(word), &record.m_prism);
    case 81:
    case 82:
    case 83:
      return Keep(zu::internal::GsiLength(word), &record.m_target[iIndex - 81]);
    case 84:
    case 85:
    case 86:
      return Keep(zu::internal::GsiLength(word), &record.m_station[iIndex - 84]);
    case 87:
      return Keep(zu::internal::GsiLength(word), &record.m_targetHeight);
    case 88:
      return Keep(zu::internal::GsiLength(word), &record.m_instrumentHeight);
    default:
      return true;
  }
}

class GsiSurveyTelling : public zu::internal::GsiTelling {
 public:
  GsiSurveyTelling(const ZuLineReader& lines, eZuReadMode eMode, ZuReadFindings& findings,
                   std::vector<ZuGsiRecord>& records)
      : GsiTelling(lines, eMode, findings), m_records(records) {}

  bool Good(GsiSurveyLine& line) {
    Count();
    if (!line.bTold) return true;
    line.record.m_uLine = m_uLine;
    m_records.push_back(std::move(line.record));
    return true;
  }

 private:
  std::vector<ZuGsiRecord>& m_records;
};

}  // namespace

bool ZuGsiSurvey::Read(const char* szPath, eZuReadMode eMode) {
  m_Records.clear();
  m_Findings.Clear();
  try {
    const ZuOpenFile pFile = ZuOpenText(szPath);
    if (pFile) {
      ZuLineReader lines(pFile.get());
      GsiSurveyTelling telling(lines, eMode, m_Findings, m_Records);
      zu::internal::ForEachGsiLine<GsiSurveyLine>(
          lines,
          [&](std::string_view line, const char* pDamage) {
            return telling.Damaged(line, pDamage);
          },
          [&](std::string_view, GsiSurveyLine& line) { return telling.Good(line); });
      m_Findings.EndDroppedLines();
      if (std::ferror(pFile.get()) != 0) {
        m_Findings.Add(eZuReadCut, 0, 0, "not all bytes could be read");
      }
    } else {
      m_Findings.Add(eZuReadFault, 0, 0, "cannot be opened");
    }
  } catch (const std::bad_alloc&) {
    m_Findings.AddMemoryEnded();
  }
  return m_Findings.IsWhole();
}

ZuGsiReading ZuReadGsiPoints(const char* szPath, const ZuGsiOptions& options, ZuPointList& points,
                             eZuReadMode eMode) {
  ZuGsiSurvey survey;
  survey.Read(szPath, eMode);
  ZuGsiReading reading = survey.CalcPoints(options, &points);
  try {
    ZuReadFindings findings = survey.GetFindings();
    for (const ZuReadFinding& finding : reading.m_Findings) {
      findings.Add(finding.m_eKind, finding.m_uLine, finding.m_uColumn, finding.m_strText,
                   finding.m_strRight, finding.m_strKeyword);
    }
    findings.m_uDroppedLines += reading.m_Findings.m_uDroppedLines;
    reading.m_Findings = std::move(findings);
  } catch (const std::bad_alloc&) {
    reading.m_Findings.AddMemoryEnded();
  }
  return reading;
}
