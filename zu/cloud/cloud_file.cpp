#include "zu/cloud/cloud_file.h"

#include <algorithm>
#include <fstream>
#include <new>
#include <vector>

#include "zu/cloud/internal/table_cloud.h"
#include "zu/cloud/las_file.h"
#include "zu/cloud/ply_file.h"
#include "zu/cloud/point_cloud_container.h"
#include "zu/cloud/pts_file.h"
#include "zu/foundation/file_name.h"
#include "zu/photo/detect_files.h"
#include "zu/points/gsi_survey.h"

namespace {

constexpr std::size_t kHead = 16384;  // bytes that tell a file's kind

std::string ReadFileHead(const char* szPath) {
  std::ifstream stream(szPath, std::ios::binary);
  std::string strHead(kHead, '\0');
  stream.read(strHead.data(), static_cast<std::streamsize>(kHead));
  strHead.resize(static_cast<std::size_t>(stream.gcount()));
  return strHead;
}

std::string EndingOf(const char* szPath, const ZuCloudFileOptions& options) {
  return ZuGetFileEnding(options.m_strName.empty() ? szPath : options.m_strName);
}

bool IsGsi(const char* szPath) { return ZuDetectZuvoFiles(szPath).IsType(eZuvoFileGsi); }

eZuCloudFile KindOf(const char* szPath, const std::string& strHead,
                    const ZuCloudFileOptions& options, std::string* pstrWhy) {
  std::string strLooksLike;
  const eZuCloudFile eKind = ZuDetectCloudFile(strHead.data(), strHead.size(), &strLooksLike);
  if (eKind == eZuCloudFileBinary || eKind == eZuCloudFilePly || eKind == eZuCloudFileLas ||
      eKind == eZuCloudFileE57) {
    return eKind;
  }
  const bool bTold = !options.m_Table.m_aColumns.empty();
  const bool bText = strLooksLike.starts_with("text:");
  const bool bTable = eKind != eZuCloudFileNone || bText ||
                      strLooksLike.find("GSI") != strLooksLike.npos ||
                      strLooksLike.find("column names") != strLooksLike.npos;
  if (bTable && !bTold && (ZuHasColumnTitles(strHead) || IsGsi(szPath))) {
    return eZuCloudFileCoordinates;
  }
  const auto refuse = [pstrWhy](const std::string& strWhy) {
    *pstrWhy = strWhy;
    return eZuCloudFileNone;
  };
  if (eKind == eZuCloudFileNone) {
    // Titles may stand above the points of a coordinate file.
    if (bText && bTold) return eZuCloudFileCoordinates;
    return refuse("looks like " + strLooksLike + ", not like a point cloud");
  }
  const std::string strEnding = EndingOf(szPath, options);
  if (strEnding == ".zpc") return refuse("does not start as a binary cloud file");
  if (strEnding == ".ply") return refuse("does not start with \"ply\"");
  if (strEnding == ".las") return refuse("does not start with \"LASF\"");
  if (strEnding == ".e57") return refuse("does not start with \"ASTM-E57\"");
  if (bTold) return eZuCloudFileCoordinates;
  if (strEnding == ".pts" || strEnding == ".xyz") return eZuCloudFilePts;
  if (strEnding == ".csv" || strEnding == ".coo") return eZuCloudFileCoordinates;
  if (eKind == eZuCloudFileEither) *pstrWhy = "the first column may be ids or x coordinates";
  return eKind;
}

// The fields of the first line that is no comment.
std::vector<std::string> FirstFields(const std::string& strHead) {
  for (std::size_t uLine = 0; uLine < strHead.size();) {
    const std::size_t uLineEnd = std::min(strHead.find('\n', uLine), strHead.size());
    const std::string strLine = strHead.substr(uLine, uLineEnd - uLine);
    uLine = uLineEnd + 1;
    std::vector<std::string> fields;
    const char* const szDelimiters = " \t\r,;\"";
    for (std::size_t u = strLine.find_first_not_of(szDelimiters); u != strLine.npos;) {
      const std::size_t uEnd = std::min(strLine.find_first_of(szDelimiters, u), strLine.size());
      fields.push_back(strLine.substr(u, uEnd - u));
      u = strLine.find_first_not_of(szDelimiters, uEnd);
    }
    if (!fields.empty() && fields[0][0] != '#') return fields;
  }
  return {};
}

// Of a coordinate file without titles.
std::vector<eZuPointRWMask> ColumnsByContent(const std::vector<std::string>& fields) {
  std::vector<eZuPointRWMask> columns = {eZuPointRWX, eZuPointRWY, eZuPointRWZ};
  if (fields.size() < 4) return columns;
  const auto consistsOf = [&fields](const char* szCharacters) {
    return fields[0].find_first_not_of(szCharacters) == std::string::npos;
  };
  if (consistsOf("0123456789")) {
    columns.insert(columns.begin(), eZuPointRWId);
  } else if (!consistsOf("0123456789+-.eE")) {
    columns.insert(columns.begin(), eZuPointRWIdName);
  }
  return columns;
}

void ReadTable(const char* szPath, const std::string& strHead, ZuPointCloudContainer& clouds,
               const ZuCloudFileOptions& options, eZuReadMode eMode, ZuCloudFileReading* pReading) {
  ZuTableOptions table = options.m_Table;
  if (table.m_aColumns.empty() && IsGsi(szPath)) {
    ZuPointList points;
    pReading->m_Findings = ZuReadGsiPoints(szPath, ZuGsiOptions(), points, eMode).m_Findings;
    ZuPointCloud* const pCloud = clouds.AddCloud(&points);
    if (pCloud != nullptr) pCloud->SetName(String());
    return;
  }
  if (table.m_aColumns.empty() && !ZuHasColumnTitles(strHead)) {
    table.m_aColumns = ColumnsByContent(FirstFields(strHead));
  }
  ZuReadTableCloud(szPath, table, clouds, eMode, *pReading);
}

void ReadKind(const char* szPath, const std::string& strHead, ZuPointCloudContainer& clouds,
              const ZuCloudFileOptions& options, eZuReadMode eMode, ZuCloudFileReading* pReading) {
  const auto take = [pReading](ZuCloudReading reading) {
    pReading->m_Findings = std::move(reading.m_Findings);
    pReading->m_eIntensity = reading.m_eIntensity;
  };
  switch (pReading->m_eKind) {
    case eZuCloudFileBinary:
      clouds.Read(szPath);
      pReading->m_Findings = clouds.GetFindings();
      break;
    case eZuCloudFilePly:
      if (options.m_bPlyByPlaces) {
        clouds.ObsolteReadPlyFile(szPath);
      } else {
        take(ZuReadPly(szPath, clouds, eMode));
      }
      break;
    case eZuCloudFileLas:
      take(ZuReadLas(szPath, clouds));
      break;
    case eZuCloudFileE57:
      pReading->m_Findings.Add(eZuReadFault, 0, 0, "is an E57 file",
                               "ZuReadE57 of the component exchange");
      break;
    case eZuCloudFilePts:
      take(ZuReadPts(szPath, clouds, eMode));
      break;
    default:
      ReadTable(szPath, strHead, clouds, options, eMode, pReading);
  }
}

}  // namespace

eZuCloudFile ZuFindCloudFileKind(const char* szPath, const ZuCloudFileOptions& options,
                                 std::string* pstrWhy) {
  return KindOf(szPath, ReadFileHead(szPath), options, pstrWhy);
}

bool ZuIsTitledScan(const char* szPath) {
  const std::string strHead = ReadFileHead(szPath);
  std::string strWhy;
  if (KindOf(szPath, strHead, {}, &strWhy) != eZuCloudFileCoordinates) return false;
  return ZuHasScanTitles(strHead);
}

ZuCloudFileReading ZuReadClouds(const char* szPath, ZuPointCloudContainer& clouds,
                                const ZuCloudFileOptions& options, eZuReadMode eMode) {
  ZuCloudFileReading reading;
  try {
    const std::string strHead = ReadFileHead(szPath);
    std::string strWhy;
    reading.m_eKind = KindOf(szPath, strHead, options, &strWhy);
    if (!strWhy.empty()) {
      reading.m_Findings.Add(eZuReadFault, 0, 0, strWhy);
      return reading;
    }
    const ZuPointCloud* const pLast = clouds.GetClouds().Last();
    ReadKind(szPath, strHead, clouds, options, eMode, &reading);
    const ZuPointCloud* const pFirst = pLast != nullptr ? pLast->Next() : clouds.First();
    std::uint64_t uPoints = 0;
    for (const ZuPointCloud* p = pFirst; p != nullptr; p = p->Next()) uPoints += p->GetPointCount();
    const bool bEmpty = reading.m_eKind == eZuCloudFileBinary ? pFirst == nullptr : uPoints == 0;
    // Of a file that is cut off the cut is told.
    if (bEmpty && reading.m_Findings.First(eZuReadFault) == nullptr &&
        reading.m_Findings.First(eZuReadCut) == nullptr) {
      reading.m_Findings.Add(eZuReadFault, 0, 0, "no point cloud in the file");
    }
  } catch (const std::bad_alloc&) {
    reading.m_Findings.AddMemoryEnded();
  }
  return reading;
}
