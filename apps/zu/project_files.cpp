#include "project_files.h"

#include <fstream>
#include <set>
#include <utility>

#include "exit_code.h"
#include "input_file.h"
#include "text_table.h"
#include "zu/exchange/project_json.h"

namespace cli {

namespace {

constexpr size_t kErrorsTold = 2;

bool EndsWith(const std::string& strText, const std::string& strEnd) {
  return strText.size() >= strEnd.size() &&
         strText.compare(strText.size() - strEnd.size(), strEnd.size(), strEnd) == 0;
}

std::string Line(ZuFinding finding, const std::string& strName) {
  finding.m_strFile = strName;
  return GetZuFindingPlace(finding) + ": " + GetZuFindingText(finding);
}

[[noreturn]] void Fail(const std::string& strName, const ZuFindingList& findings) {
  std::string strText;
  size_t uTold = 0;
  for (const ZuFinding& finding : findings) {
    if (finding.m_eSeverity != eZuSeverityError || uTold == kErrorsTold) continue;
    strText += (uTold++ > 0 ? "\n" : "") + Line(finding, strName);
  }
  if (findings.GetErrorCount() > uTold) {
    const auto iMore = static_cast<long long>(findings.GetErrorCount() - uTold);
    strText += "\nand " + Counted(iMore, "more fault");
  }
  throw CommandError(kBadInput, strText);
}

using Place = std::pair<unsigned, unsigned>;

// Unknown keywords are kept and written: nothing to warn of, unless they were meant as others.
void AddKept(const ZuUnknownKeyword& word, std::set<Place>* pKept) {
  if (word.m_strMeant.empty()) pKept->insert({word.m_uLine, word.m_uColumn});
}

void AddKept(const ZuKeywordBlock& block, std::set<Place>* pKept) {
  for (const ZuUnknownKeyword& word : block.m_unknown) AddKept(word, pKept);
  for (const ZuKeywordBlock& inner : block.m_blocks) AddKept(inner, pKept);
}

std::set<Place> KeptPlaces(const ZuProject& project) {
  std::set<Place> kept;
  for (const ZuProjectItem& item : project.GetItems()) {
    if (item.m_pUnknown != nullptr) AddKept(*item.m_pUnknown, &kept);
    if (item.m_pBlock != nullptr) AddKept(*item.m_pBlock, &kept);
  }
  return kept;
}

// The first byte that is no blank is {, which no project file begins with.
bool IsJson(const std::string& strPath) {
  std::ifstream stream(strPath, std::ios::in | std::ios::binary);
  char c = 0;
  return stream >> c && (c == '{' || c == '[');
}

}  // namespace

void ReadProjectFile(const std::string& strPath, Context& context, ZuProject* pProject) {
  const InputFile file(strPath, "a project file or its JSON");
  if (IsJson(file.Path())) {
    ZuFindingList findings;
    std::ifstream stream(file.Path(), std::ios::in | std::ios::binary);
    if (!ZuReadProjectJson(stream, pProject, &findings)) Fail(file.Name(), findings);
    return;
  }
  if (!pProject->Read(file.Path().c_str())) Fail(file.Name(), pProject->GetFindings());
  const std::set<Place> kept = KeptPlaces(*pProject);
  for (const ZuFinding& finding : pProject->GetFindings()) {
    const Place place(static_cast<unsigned>(finding.m_uLine),
                      static_cast<unsigned>(finding.m_uColumn));
    if (finding.m_eSeverity != eZuSeverityWarning || kept.count(place) != 0) continue;
    context.Warn(Line(finding, file.Name()));
  }
}

bool IsJsonName(const std::string& strPath) { return EndsWith(strPath, ".json"); }

void CheckProjectEnding(const std::string& strPath) {
  if (strPath == "-" || IsJsonName(strPath) || EndsWith(strPath, ".prj")) return;
  throw CommandError(kUsage, strPath + ": a project is written as .prj or .json");
}

void WriteProjectFile(const std::string& strPath, Context& context, const ZuProject& project) {
  std::ostream& stream = context.NewOutput(strPath).Stream();
  if (IsJsonName(strPath)) {
    ZuExportProjectJson(stream, project);
  } else {
    project.Export(stream);
  }
}

}  // namespace cli
