// Checks of single files by their kinds.
#include <cmath>
#include <fstream>
#include <unordered_map>
#include <vector>

#include "zu/photo/detect_files.h"
#include "zu/points/table.h"
#include "zu/project/camera_file.h"
#include "zu/project/check.h"
#include "zu/project/internal/check_kinds.h"
#include "zu/project/internal/plausible.h"
#include "zu/project/internal/text_reader.h"
#include "zu/project/project.h"

namespace {

using Columns = TZuFormatTable<eZuPointRWMask>;

// Length of the UTF-8 character at the place, 0 for none.
std::size_t CharacterLength(std::string_view text, std::size_t u) {
  const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
  const unsigned uFirst = byte(u);
  const std::size_t uLength = uFirst < 0x80   ? 1
                              : uFirst < 0xC2 ? 0
                              : uFirst < 0xE0 ? 2
                              : uFirst < 0xF0 ? 3
                              : uFirst < 0xF5 ? 4
                                              : 0;
  if (u + uLength > text.size()) return 0;
  for (std::size_t i = 1; i < uLength; ++i) {
    if ((byte(u + i) & 0xC0U) != 0x80) return 0;
  }
  return uLength;
}

// A plane, { id "name" A B C D }, looks like a camera of the simple form but for its second value.
bool IsPlaneFile(const char* szPath) {
  const ZuPlaneList planes{String(szPath)};
  return planes.GetReadErrorCount() == 0 && !planes.IsEmpty();
}

bool HasColumn(const Columns& columns, eZuPointRWMask eColumn) {
  for (int i = 0; columns[i] != eZuPointRWEnd; ++i) {
    if (columns[i] == eColumn) return true;
  }
  return false;
}

// As told, or by its titles.
ZuCoordinateReading ReadRows(const char* szPath, const Columns* pTold, Columns* pColumns,
                             ZuPointList* pPoints) {
  constexpr eZuPointRWMask kColumns[] = {eZuPointRWId, eZuPointRWX, eZuPointRWY, eZuPointRWZ,
                                         eZuPointRWEnd};
  if (pTold == nullptr) {
    ZuTableOptions options;
    options.m_bIds = options.m_bHeights = false;
    ZuTableReading reading = ZuReadTable(szPath, options, *pPoints, eZuReadTolerant);
    if (reading.m_Form.m_uTitleLine > 0) {
      reading.m_Form.m_aColumns.push_back(eZuPointRWEnd);
      *pColumns = Columns(reading.m_Form.m_aColumns.data());
      return reading;
    }
    pPoints->Destroy();
  }
  *pColumns = pTold != nullptr ? *pTold : Columns(kColumns);
  return ZuReadCoordinates(szPath, *pColumns, *pPoints, eZuReadTolerant);
}

std::string LabelOf(const ZuPoint& point) {
  return point.GetName().empty() ? std::to_string(point.GetId()) : point.GetName().chars();
}

void CheckCoordinates(const char* szPath, const Columns* pTold, ZuFindingList* pFindings) {
  ZuPointList points;
  Columns columns;
  const ZuCoordinateReading reading = ReadRows(szPath, pTold, &columns, &points);
  for (ZuFinding finding : reading.m_Findings) {
    finding.m_strFile = szPath;
    if (finding.m_eSeverity != eZuSeverityNote) pFindings->Add(std::move(finding));
  }
  std::vector<zu::internal::PlacedPoint> placed;
  std::vector<ZuFinding> doubled;
  std::unordered_map<unsigned, unsigned> lines;
  const bool bIds = (HasColumn(columns, eZuPointRWId) || HasColumn(columns, eZuPointRWIdName)) &&
                    !HasColumn(columns, eZuPointRWPhoto);
  for (const ZuPoint* p = points.First(); p != nullptr; p = p->Next()) {
    const auto uLine = static_cast<unsigned>(reading.m_aLines[placed.size()]);
    placed.push_back({p, {uLine, 1}});
    if (!bIds) continue;
    const auto [place, bFirst] = lines.emplace(p->GetId(), uLine);
    if (bFirst) continue;
    doubled.push_back(
        {szPath, uLine, 1, eZuSeverityWarning, "id",
         "point " + LabelOf(*p) + " stands twice, first in line " + std::to_string(place->second),
         "one line for each id"});
  }
  // Where most stand twice, the first column is another: the photo of each measurement.
  if (2 * doubled.size() < placed.size()) {
    for (ZuFinding& finding : doubled) pFindings->Add(std::move(finding));
  }
  zu::internal::CheckUnits(placed, szPath, "point", pFindings);
}

// Empty for a pipe, beside which nothing lies.
std::string FolderOf(const std::string& strPath) {
  if (strPath.rfind("/proc/", 0) == 0 || strPath.rfind("/dev/", 0) == 0) return "";
  const std::size_t uSlash = strPath.find_last_of('/');
  return uSlash == strPath.npos ? "." : strPath.substr(0, uSlash + 1);
}

bool CheckFile(const char* szPath, const Columns* pTold, ZuFindingList* pFindings);

}  // namespace

void ZuCheckEncoding(std::string_view text, const std::string& strFile, ZuFindingList* pFindings) {
  if (text.substr(0, 2) == "\xFF\xFE" || text.substr(0, 2) == "\xFE\xFF") {
    pFindings->Add({strFile, 1, 1, eZuSeverityError, "", "the text is UTF-16", "UTF-8"});
    return;
  }
  unsigned uLine = 1;
  std::size_t uStart = text.substr(0, 3) == "\xEF\xBB\xBF" ? 3 : 0;
  for (std::size_t u = uStart; u < text.size();) {
    const std::size_t uLength = CharacterLength(text, u);
    if (uLength == 0 || text[u] == 0) {
      pFindings->Add({strFile, uLine, u - uStart + 1, eZuSeverityWarning, "",
                      uLength == 0 ? "a byte that is no UTF-8" : "a NUL byte, which ends the line",
                      "UTF-8 text"});
      return;
    }
    if (text[u] == '\n') {
      ++uLine;
      uStart = u + 1;
    }
    u += uLength;
  }
}

bool ZuCheckFile(const char* szPath, ZuFindingList* pFindings) {
  return CheckFile(szPath, nullptr, pFindings);
}

bool ZuCheckFile(const char* szPath, const Columns& columns, ZuFindingList* pFindings) {
  return CheckFile(szPath, &columns, pFindings);
}

namespace {

bool CheckFile(const char* szPath, const Columns* pTold, ZuFindingList* pFindings) {
  std::string strText;
  std::ifstream stream(szPath, std::ios::in | std::ios::binary);
  if (!zu::internal::ReadWhole(stream, &strText)) {
    pFindings->Add(zu::internal::NotReadable(szPath));
    return true;
  }
  const eZuvoFile eKind = ZuDetectZuvoFiles(szPath).GetType();
  if (eKind == eZuvoFileProject) {
    ZuProject project;
    project.Read(szPath);
    ZuCheckProject(project, szPath, FolderOf(szPath), pFindings);
  } else if (eKind == eZuvoFileSimpleCamera && IsPlaneFile(szPath)) {
    // nothing that could be wrong
  } else if (eKind == eZuvoFileCamera || eKind == eZuvoFileSimpleCamera) {
    ZuCameraFile cameras;
    cameras.Read(szPath);
    for (const ZuFinding& finding : cameras.GetFindings()) pFindings->Add(finding);
  } else if (eKind == eZuvoFileReseau || eKind == eZuvoFileDigitalCamera) {
    zu::internal::CheckReseau(strText, szPath, eKind == eZuvoFileDigitalCamera, pFindings);
  } else if (eKind == eZuvoFileGsi) {
    zu::internal::CheckGsi(szPath, strText, pFindings);
  } else if (eKind == eZuvoFileCoordinate || eKind == eZuvoFileUnknown) {
    CheckCoordinates(szPath, pTold, pFindings);
  } else {
    return false;
  }
  ZuCheckEncoding(strText, szPath, pFindings);
  pFindings->Sort();
  return true;
}

}  // namespace
