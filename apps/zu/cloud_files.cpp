#include "cloud_files.h"

#include <algorithm>
#include <cctype>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <vector>

#include "exit_code.h"
#include "point_input.h"
#include "progress_line.h"
#include "zu/foundation/file_name.h"

namespace cli {
namespace {

enum eKind { eBinary, ePts, ePly, eCoordinates };

constexpr std::size_t kHead = 4096;  // bytes that tell a file's kind
constexpr char kMagic[] = {'\x0D', '\xF0', '\xBE', '\xBA'};

std::string ReadHead(const std::string& strPath) {
  if (!ZuExistFile(strPath.c_str())) {
    throw CommandError(kBadInput, strPath + ": no such file; a cloud file is needed");
  }
  std::ifstream stream(strPath, std::ios::binary);
  std::string strHead(kHead, '\0');
  stream.read(strHead.data(), static_cast<std::streamsize>(kHead));
  strHead.resize(static_cast<std::size_t>(stream.gcount()));
  if (strHead.empty()) throw CommandError(kBadInput, strPath + ": empty or not readable");
  return strHead;
}

// The fields of each line but the last, which may be cut.
std::vector<std::vector<std::string>> Fields(const std::string& strHead) {
  std::vector<std::vector<std::string>> lines;
  std::istringstream stream(strHead);
  for (std::string strLine; std::getline(stream, strLine) && !(stream.eof() && !lines.empty());) {
    std::istringstream line(strLine);
    std::vector<std::string> fields;
    for (std::string strField; line >> strField;) fields.push_back(strField);
    if (!fields.empty()) lines.push_back(fields);
  }
  return lines;
}

// A whole number without sign, or text that starts no number.
bool IsIdOrName(const std::string& strField) {
  const auto isDigit = [](unsigned char c) { return std::isdigit(c) != 0; };
  if (std::all_of(strField.begin(), strField.end(), isDigit)) return true;
  return !isDigit(static_cast<unsigned char>(strField[0])) &&
         std::strchr("+-.", strField[0]) == nullptr;
}

eKind KindOf(const std::string& strHead) {
  if (strHead.compare(0, sizeof kMagic, kMagic, sizeof kMagic) == 0) return eBinary;
  const auto lines = Fields(strHead);
  if (lines.empty()) return ePts;
  if (lines[0][0] == "ply") return ePly;
  bool bIds = lines[0].size() > 1;
  for (const auto& fields : lines) {
    if (fields[0][0] == '#') return eCoordinates;
    bIds = bIds && fields.size() == 4 && IsIdOrName(fields[0]);
  }
  return bIds ? eCoordinates : ePts;
}

std::string EndingOf(const std::string& strPath) {
  std::string strEnding = std::filesystem::path(strPath).extension().string();
  std::transform(strEnding.begin(), strEnding.end(), strEnding.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  return strEnding;
}

void NameClouds(ZuPointCloud* p, const std::string& strPath) {
  for (; p != nullptr; p = p->Next()) {
    if (p->GetName().empty()) p->SetName(ZuGetFilenameNoExt(strPath.c_str()));
  }
}

void WriteCoordinates(const ZuPointCloudContainer& clouds, OutputFile* pOutput) {
  ZuPointList list;
  unsigned int uId = 0;
  for (const ZuPointCloud* pCloud = clouds.First(); pCloud != nullptr; pCloud = pCloud->Next()) {
    for (const ZuScanPoint3d& p : pCloud->GetPoints()) list.Add(ZuPoint(++uId, p.x, p.y, p.z));
  }
  WritePoints(&list, "id,x,y,z", pOutput);
}

}  // namespace

void ReadClouds(const std::string& strPath, const std::string& strColumns, Context& context,
                ZuPointCloudContainer* pClouds) {
  const LibraryProgress progress(context.IsQuiet());
  const eKind kind = KindOf(ReadHead(strPath));
  ZuPointCloud* const pLast = pClouds->GetClouds().Last();
  switch (kind) {
    case eBinary:
      pClouds->Read(strPath.c_str());
      break;
    case ePts:
      pClouds->ReadPtsFile(strPath.c_str());
      break;
    case ePly:
      pClouds->ObsolteReadPlyFile(strPath.c_str());
      break;
    case eCoordinates: {
      ZuPointList list;
      ReadPoints(strPath, strColumns, context, &list);
      ZuPointCloud* const pCloud = pClouds->AddCloud(&list);
      if (pCloud != nullptr) pCloud->SetName(String());
      break;
    }
  }
  ZuPointCloud* const pFirst = pLast != nullptr ? pLast->Next() : pClouds->First();
  unsigned int uPoints = 0;
  for (const ZuPointCloud* p = pFirst; p != nullptr; p = p->Next()) uPoints += p->GetPointCount();
  // A container without clouds, or of empty ones, is whole; a text without a point is no cloud.
  if (kind == eBinary ? pFirst == nullptr : uPoints == 0) {
    throw CommandError(kBadInput,
                       strPath +
                           ": no point cloud in the file; a binary cloud file of version 2, PTS,\n"
                           "ASCII PLY with nine or more properties, or id x y z would be right");
  }
  NameClouds(pFirst, strPath);
}

void WriteClouds(ZuPointCloudContainer* pClouds, const std::string& strPath, Context& context) {
  const LibraryProgress progress(context.IsQuiet());
  OutputFile& output = context.NewOutput(strPath);
  const std::string strEnding = EndingOf(strPath);
  const char* const szTemp = output.TempPath().c_str();
  int iGood = 1;
  if (strEnding == ".zpc") {
    iGood = pClouds->Write(szTemp);
  } else if (strEnding == ".pts" || strEnding == ".xyz") {
    iGood = pClouds->ExportPtsFile(szTemp);
  } else if (strEnding == ".ply") {
    iGood = pClouds->ExportPlyFile(szTemp);
  } else {
    WriteCoordinates(*pClouds, &output);
  }
  if (iGood == 0) {
    throw CommandError(kCannotWrite, strPath + ": not all bytes could be written");
  }
}

}  // namespace cli
