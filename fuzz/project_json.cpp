// A project as JSON, or a project file that becomes JSON: both ways, to the same file byte for
// byte.
#include "zu/exchange/project_json.h"

#include <nlohmann/json.hpp>

#include "fuzz/there_and_back.h"
#include "tests/support/project_json.h"

namespace {

bool ReadJson(const std::string& strJson, ZuProject* pProject) {
  std::istringstream stream(strJson);
  ZuFindingList findings;
  const bool bGood = ZuReadProjectJson(stream, pProject, &findings);
  Require(bGood == (findings.GetErrorCount() == 0));
  for (const ZuFinding& finding : findings) Require(!GetZuFindingLine(finding).empty());
  return bGood;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t uSize) {
  const Input input(pData, uSize);
  const std::string strInput(input.Text());
  ZuProject project, again;
  if (strInput.find_first_not_of(" \t\r\n") == strInput.find('{')) {
    if (!ReadJson(strInput, &project)) return 0;
  } else {
    std::istringstream stream(strInput);
    if (!project.Read(stream)) return 0;
  }
  const std::string strText = Exported(project), strJson = JsonOf(project);
  Require(nlohmann::json::accept(strJson));
  if (!HasLinesToRead(strText)) return 0;
  Require(ReadJson(strJson, &again));
  Require(Exported(again) == strText);
  Require(JsonOf(again) == strJson);
  return 0;
}
