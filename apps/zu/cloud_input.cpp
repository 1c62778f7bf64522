// Reading clouds: what kind of file it is, the reader for it, and what that reader found.
#include <algorithm>
#include <fstream>
#include <sstream>

#include "cloud_files.h"
#include "exit_code.h"
#include "input_file.h"
#include "point_input.h"
#include "progress_line.h"
#include "reading.h"
#include "zu/cloud/cloud_detect.h"
#include "zu/cloud/las_file.h"
#include "zu/cloud/ply_file.h"
#include "zu/cloud/pts_file.h"
#include "zu/foundation/file_name.h"

namespace cli {
namespace {

constexpr std::size_t kHead = 16384;  // bytes that tell a file's kind

const char* const kNeeded =
    "a binary cloud file (.zpc), PTS, PLY, LAS, lines of x y z, or a coordinate file with "
    "--columns";

std::string ReadHead(const InputFile& file) {
  std::ifstream stream(file.Path(), std::ios::binary);
  std::string strHead(kHead, '\0');
  stream.read(strHead.data(), static_cast<std::streamsize>(kHead));
  strHead.resize(static_cast<std::size_t>(stream.gcount()));
  return strHead;
}

std::string EndingOf(const std::string& strPath) {
  const std::size_t uDot = strPath.find_last_of("./");
  if (uDot == std::string::npos || strPath[uDot] == '/') return "";
  std::string strEnding = strPath.substr(uDot);
  for (char& c : strEnding) c = static_cast<char>(c >= 'A' && c <= 'Z' ? c + ('a' - 'A') : c);
  return strEnding;
}

[[noreturn]] void Refuse(const InputFile& file, const std::string& strWhat) {
  throw CommandError(kBadInput, file.Name() + ": " + strWhat + "\n" + kNeeded + " would be right");
}

eZuCloudFile KindOf(const InputFile& file, const std::string& strHead,
                    const CloudOptions& options) {
  std::string strLooksLike;
  const eZuCloudFile eKind = ZuDetectCloudFile(strHead.data(), strHead.size(), &strLooksLike);
  const std::string strEnding = EndingOf(file.Name());
  if (eKind == eZuCloudFileBinary || eKind == eZuCloudFilePly || eKind == eZuCloudFileLas) {
    return eKind;
  }
  const bool bText = strLooksLike.compare(0, 5, "text:") == 0;
  const bool bTable = eKind != eZuCloudFileNone || bText ||
                      strLooksLike.find("GSI") != strLooksLike.npos ||
                      strLooksLike.find("column names") != strLooksLike.npos;
  if (bTable && options.strColumns.empty() && TellsItsColumns(file)) return eZuCloudFileCoordinates;
  if (eKind == eZuCloudFileNone) {
    // Titles may stand above the points of a coordinate file.
    if (bText && !options.strColumns.empty()) return eZuCloudFileCoordinates;
    Refuse(file, "looks like " + strLooksLike + ", not like a point cloud");
  }
  if (strEnding == ".zpc") Refuse(file, "does not start as a binary cloud file");
  if (strEnding == ".ply") Refuse(file, "does not start with \"ply\"");
  if (strEnding == ".las") Refuse(file, "does not start with \"LASF\"");
  if (!options.strColumns.empty()) return eZuCloudFileCoordinates;
  if (strEnding == ".pts" || strEnding == ".xyz") return eZuCloudFilePts;
  if (strEnding == ".csv" || strEnding == ".coo") return eZuCloudFileCoordinates;
  if (eKind == eZuCloudFileEither) {
    throw CommandError(
        kBadInput, file.Name() +
                       ": the first column may be ids or x coordinates; --columns id,x,y,z or "
                       "--columns x,y,z\nsays which, or a name that ends in .pts, .xyz or .coo");
  }
  return eKind;
}

// ---- coordinate files

// The fields of the first line that is no comment.
std::vector<std::string> FirstFields(const std::string& strHead) {
  std::istringstream stream(strHead);
  for (std::string strLine; std::getline(stream, strLine);) {
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

bool IsWholeNumber(const std::string& strText) {
  return !strText.empty() && strText.find_first_not_of("0123456789") == strText.npos;
}

std::string ColumnsByContent(const std::vector<std::string>& fields) {
  if (fields.size() < 4) return "x,y,z";
  if (IsWholeNumber(fields[0])) return "id,x,y,z";
  const bool bNumber = fields[0].find_first_not_of("0123456789+-.eE") == std::string::npos;
  return bNumber ? "x,y,z" : "idname,x,y,z";
}

void ReadCoordinateFile(const InputFile& file, const std::string& strHead, std::string strColumns,
                        Context& context, ZuPointList* pList) {
  if (strColumns.empty() && TellsItsColumns(file)) {
    return ReadPointsOrRows(file, PointFormat(), context, pList);
  }
  if (strColumns.empty()) strColumns = ColumnsByContent(FirstFields(strHead));
  ReadPointsOrRows(file, strColumns, context, pList);
}

void NameClouds(ZuPointCloud* p, const std::string& strPath) {
  for (; p != nullptr; p = p->Next()) {
    if (p->GetName().empty()) p->SetName(ZuGetFilenameNoExt(strPath.c_str()));
  }
}

}  // namespace

eZuIntensityScale ReadClouds(const std::string& strPath, const CloudOptions& options,
                             Context& context, ZuPointCloudContainer* pClouds) {
  const LibraryProgress progress(context.IsQuiet());
  const InputFile file(strPath, "a cloud file");
  const std::string strHead = ReadHead(file);
  const eZuCloudFile eKind = KindOf(file, strHead, options);
  ZuPointCloud* const pLast = pClouds->GetClouds().Last();
  eZuIntensityScale eIntensity = eZuIntensityNone;
  const auto tell = [&](const ZuReadFindings& findings) {
    TellFindings(findings, file.Name(), options.bPartial, "--partial takes what is there", context);
  };
  const auto take = [&](const ZuCloudReading& reading) {
    tell(reading.m_Findings);
    eIntensity = reading.m_eIntensity;
  };
  if (eKind == eZuCloudFileBinary) {
    pClouds->Read(file.Path().c_str());
    tell(pClouds->GetFindings());
  } else if (eKind == eZuCloudFilePly && options.strPly == "library") {
    pClouds->ObsolteReadPlyFile(file.Path().c_str());
  } else if (eKind == eZuCloudFilePly) {
    take(ZuReadPly(file.Path().c_str(), *pClouds, ReadMode(context)));
  } else if (eKind == eZuCloudFileLas) {
    take(ZuReadLas(file.Path().c_str(), *pClouds));
  } else if (eKind == eZuCloudFilePts) {
    take(ZuReadPts(file.Path().c_str(), *pClouds, ReadMode(context)));
  } else {
    ZuPointList list;
    ReadCoordinateFile(file, strHead, options.strColumns, context, &list);
    ZuPointCloud* const pCloud = pClouds->AddCloud(&list);
    if (pCloud != nullptr) pCloud->SetName(String());
  }
  ZuPointCloud* const pFirst = pLast != nullptr ? pLast->Next() : pClouds->First();
  unsigned int uPoints = 0;
  for (const ZuPointCloud* p = pFirst; p != nullptr; p = p->Next()) uPoints += p->GetPointCount();
  // A container without clouds, or of empty ones, is whole; a text without a point is no cloud.
  if (eKind == eZuCloudFileBinary ? pFirst == nullptr : uPoints == 0) {
    Refuse(file, "no point cloud in the file");
  }
  NameClouds(pFirst, file.Name());
  return eIntensity;
}

void AddCloudInput(Options& options, CloudOptions* p) {
  AddColumnsOption(options, &p->strColumns);
  options.Flag("--partial", &p->bPartial, "take the points of a file that ends too early");
}

}  // namespace cli
