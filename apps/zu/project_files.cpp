#include "project_files.h"

#include <fstream>
#include <set>
#include <utility>

#include "exit_code.h"
#include "project_input.h"
#include "zu/exchange/project_json.h"

namespace cli {

namespace {

bool EndsWith(const std::string& strText, const std::string& strEnd) {
  return strText.size() >= strEnd.size() &&
         strText.compare(strText.size() - strEnd.size(), strEnd.size(), strEnd) == 0;
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
    if (!ZuReadProjectJson(stream, pProject, &findings)) FailOf(findings, file);
    return;
  }
  ReadProject(file, eZuProjectWhole, pProject);
  const std::set<Place> kept = KeptPlaces(*pProject);
  ZuFindingList findings;
  for (const ZuFinding& finding : pProject->GetFindings()) {
    const Place place(static_cast<unsigned>(finding.m_uLine),
                      static_cast<unsigned>(finding.m_uColumn));
    if (kept.count(place) == 0) findings.Add(finding);
  }
  WarnOf(findings, file, context);
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
