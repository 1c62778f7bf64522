// zu check: what is wrong or not plausible in files, one finding a line.
#include <algorithm>
#include <cctype>
#include <fstream>
#include <memory>

#include "commands.h"
#include "point_columns.h"
#include "point_input.h"
#include "text_table.h"
#include "zu/cloud/las_file.h"
#include "zu/cloud/ply_file.h"
#include "zu/cloud/point_cloud_container.h"
#include "zu/cloud/pts_file.h"
#include "zu/exchange/e57_file.h"
#include "zu/exchange/project_json.h"
#include "zu/exchange/transformation.h"
#include "zu/photo/detect_files.h"
#include "zu/project/check.h"
#include "zu/project/project.h"

namespace cli {
namespace {

constexpr size_t kJsonHead = 4096;  // bytes in which a file says what it is

struct Values {
  std::vector<std::string> files;
  std::string strColumns;  // empty: found
};

// A text cloud or a binary one; other files have nothing that could be told.
void CheckCloud(const char* szPath, ZuFindingList* pFindings) {
  ZuPointCloudContainer clouds;
  ZuReadFindings findings;
  const eZuvoFile eKind = ZuDetectZuvoFiles(szPath).GetType();
  if (eKind == eZuvoFilePly) {
    findings = ZuReadPly(szPath, clouds, eZuReadTolerant).m_Findings;
  } else if (eKind == eZuvoFilePts) {
    findings = ZuReadPts(szPath, clouds, eZuReadTolerant).m_Findings;
  } else if (eKind == eZuvoFileLas) {
    findings = ZuReadLas(szPath, clouds).m_Findings;
  } else if (eKind == eZuvoFileE57) {
    findings = ZuReadE57(szPath, clouds).m_Findings;
  } else if (eKind == eZuvoFileCloud) {
    clouds.Read(szPath);
    findings = clouds.GetFindings();
  }
  for (const ZuReadFinding& finding : findings) {
    // What the reader chose where the format leaves the choice is nothing to mend.
    if (finding.m_eKind > eZuReadAssumed) pFindings->Add(finding);
  }
}

// A project as JSON, or a saved transformation. False for any other file.
bool CheckJson(const char* szPath, ZuFindingList* pFindings) {
  std::ifstream stream(szPath, std::ios::in | std::ios::binary);
  std::string strHead(kJsonHead, '\0');
  stream.read(strHead.data(), static_cast<std::streamsize>(kJsonHead));
  strHead.resize(static_cast<size_t>(stream.gcount()));
  const size_t uFirst = strHead.find_first_not_of(" \t\r\n");
  if (uFirst == std::string::npos || strHead[uFirst] != '{') return false;
  const bool bProject = strHead.find("\"zu-project\"") != std::string::npos;
  if (!bProject && strHead.find("\"zu-transformation\"") == std::string::npos) return false;
  stream.clear();
  stream.seekg(0);
  if (bProject) {
    ZuProject project;
    ZuReadProjectJson(stream, &project, pFindings);
  } else {
    ZuTransformation transformation;
    ZuReadTransformation(stream, &transformation, pFindings);
  }
  return true;
}

// Appends the findings of one file, under the name that the caller gave.
void CheckInput(const std::string& strPath, const Values& values, ZuFindingList* pFindings) {
  ZuFindingList found;
  std::string strName = strPath, strRead = strPath;
  try {
    const InputFile file(strPath, "a file to check");
    strName = file.Name();
    strRead = file.Path();
    const char* const szPath = file.Path().c_str();
    const bool bKnown =
        CheckJson(szPath, &found) ||
        (values.strColumns.empty() ? ZuCheckFile(szPath, &found)
                                   : ZuCheckFile(szPath, ParseColumns(values.strColumns), &found));
    if (!bKnown) CheckCloud(szPath, &found);
  } catch (const CommandError& error) {
    if (error.Code() != kBadInput) throw;
    std::string strText = error.what();
    if (strText.rfind(strName + ": ", 0) == 0) strText.erase(0, strName.size() + 2);
    found.Add({strName, 0, 0, eZuSeverityError, "", strText, ""});
  }
  for (ZuFinding finding : found) {
    if (finding.m_strFile.empty() || finding.m_strFile == strRead) finding.m_strFile = strName;
    pFindings->Add(std::move(finding));
  }
}

Json FindingJson(const ZuFinding& finding) {
  const auto number = [](std::uint64_t u) { return u > 0 ? Json(u) : Json(); };
  return Json{
      {"file", finding.m_strFile},           {"line", number(finding.m_uLine)},
      {"column", number(finding.m_uColumn)}, {"severity", GetZuSeverityText(finding.m_eSeverity)},
      {"keyword", finding.m_strKeyword},     {"text", finding.m_strText},
      {"right", finding.m_strRight}};
}

ExitCode Run(const Values& values, Context& context) {
  Json& root = context.Root();
  root["files"] = values.files.size();
  root["findings"] = Json::array();
  std::size_t uErrors = 0, uWarnings = 0;
  for (const std::string& strPath : values.files) {
    ZuFindingList findings;
    CheckInput(strPath, values, &findings);
    for (const ZuFinding& finding : findings) {
      context.Text() << GetZuFindingLine(finding) << '\n';
      if (context.WantsRoot()) root["findings"].push_back(FindingJson(finding));
    }
    uErrors += findings.GetErrorCount();
    uWarnings += findings.GetWarningCount();
  }
  root["errors"] = uErrors;
  root["warnings_found"] = uWarnings;
  if (uErrors + uWarnings > 0) {
    context.Text() << Counted(uErrors, "error") << ", " << Counted(uWarnings, "warning") << '\n';
  }
  return uErrors > 0 ? kBadInput : uWarnings > 0 ? kNotAcceptable : kGood;
}

}  // namespace

Runner DefineCheck(Options& options) {
  auto pValues = std::make_shared<Values>();
  AddColumnsOption(options, &pValues->strColumns);
  options.Positionals(
      "FILE", &pValues->files,
      "project, camera, reseau, plane, coordinate or cloud files, projects as JSON");
  return [pValues](Context& context) { return Run(*pValues, context); };
}

}  // namespace cli
