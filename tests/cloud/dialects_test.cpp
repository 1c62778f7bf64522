// The table of docs/files/dialects.md: every line is read and told again.
#include <fstream>
#include <sstream>

#include "cloud_support.h"
#include "tests/support/temp_file.h"
#include "zu/cloud/ply_file.h"
#include "zu/cloud/pts_file.h"
#include "zu/points/column_names.h"
#include "zu/points/read_coordinates.h"

namespace {

void Replace(std::string* pstr, const std::string& strFrom, const std::string& strTo) {
  for (std::size_t u = 0; (u = pstr->find(strFrom, u)) != pstr->npos; u += strTo.size()) {
    pstr->replace(u, strFrom.size(), strTo);
  }
}

// The bytes of a file of the table.
std::string Bytes(std::string strFile) {
  if (strFile.compare(1, 1, "(") == 0) {
    std::string strHead = "ply\nformat ascii 1.0\nelement vertex " + strFile.substr(2, 1) +
                          "\nproperty double x\nproperty double y\nproperty double z\n";
    for (const char* szColor : {"red", "green", "blue"}) {
      if (strFile[0] == 'C') strHead += std::string("property uchar ") + szColor + "\n";
    }
    strFile = strHead + "end_header\n" + strFile.substr(4);
  }
  Replace(&strFile, "BOM", "\xEF\xBB\xBF");
  Replace(&strFile, "\\n", "\n");
  Replace(&strFile, "\\r", "\r");
  Replace(&strFile, "\\t", "\t");
  return strFile;
}

struct Result {
  ZuReadFindings findings;
  std::string strPoints;
};

Result ReadAs(const std::string& strReader, const std::string& strBytes, eZuReadMode eMode) {
  const MemoryFile file(strBytes);
  std::ostringstream points;
  int iPoints = 0;
  if (strReader == "PTS" || strReader == "PLY") {
    ZuPointCloudContainer clouds;
    const auto read = strReader == "PTS" ? ZuReadPts(file.Path(), clouds, eMode)
                                         : ZuReadPly(file.Path(), clouds, eMode);
    if (read.m_pCloud) iPoints = static_cast<int>(read.m_pCloud->GetPointCount());
    return {read.m_Findings, std::to_string(iPoints)};
  }
  ZuPointList list;
  if (strReader == "GSI") {
    const auto read = ZuReadGsi(file.Path(), list, eMode);
    return {read.m_Findings, std::to_string(list.Count())};
  }
  std::vector<eZuPointRWMask> columns;
  std::istringstream names(strReader);
  for (std::string strName; std::getline(names, strName, ',');) {
    columns.push_back(FindZuColumn(strName));
  }
  columns.push_back(eZuPointRWEnd);
  const auto read = ZuReadCoordinates(file.Path(), columns.data(), list, eMode);
  EXPECT_EQ(read.m_aLines.size(), static_cast<std::size_t>(list.Count()));
  return {read.m_Findings, std::to_string(list.Count())};
}

std::string Told(const ZuReadFinding& finding) {
  static const char* const kKinds[] = {"note", "assumed", "dropped", "clamped", "cut", "fault"};
  const std::string strPlace = GetZuFindingPlace(finding);
  return std::string(kKinds[finding.m_eKind]) + (strPlace.empty() ? "" : " " + strPlace) + ": " +
         GetZuFindingText(finding);
}

// The line of the table for a reader and a file, as they are.
std::string TableRow(const std::string& strReader, const std::string& strFile) {
  const Result strict = ReadAs(strReader, Bytes(strFile), eZuReadStrict);
  const Result tolerant = ReadAs(strReader, Bytes(strFile), eZuReadTolerant);
  std::string strFindings;
  for (const ZuReadFinding& f : tolerant.findings) {
    strFindings += (strFindings.empty() ? "" : "; ") + Told(f);
  }
  // Both readings say the same about the line where the strict one ends.
  if (const ZuReadFinding* pFault = strict.findings.First(eZuReadFault)) {
    const bool bSame = strFindings.find(GetZuFindingText(*pFault)) != strFindings.npos;
    const bool bCommas = tolerant.findings.m_Dialect.m_cDecimal == ',';
    EXPECT_TRUE(bSame || bCommas) << strFile;
  }
  const std::string strPoints = strict.strPoints == tolerant.strPoints
                                    ? strict.strPoints
                                    : strict.strPoints + ", tolerant " + tolerant.strPoints;
  return "| " + strReader + " | `" + strFile + "` | " + tolerant.findings.m_Dialect.GetText() +
         " | " + strPoints + " | " + strFindings + " |";
}

}  // namespace

TEST(Dialects, AreReadAsTheirPageSays) {
  std::ifstream page(ZU_SOURCE_DIR "/docs/files/dialects.md");
  int iRows = 0;
  for (std::string strLine; std::getline(page, strLine);) {
    const std::size_t uFile = strLine.find(" | `");
    if (strLine.substr(0, 2) != "| " || uFile == strLine.npos) continue;
    const std::string strFile = strLine.substr(uFile + 4, strLine.find("` |", uFile) - uFile - 4);
    EXPECT_EQ(TableRow(strLine.substr(2, uFile - 2), strFile), strLine);
    ++iRows;
  }
  EXPECT_GE(iRows, 24);
}
