// A project as JSON, or a project file that becomes JSON: both ways, to the same file byte for
// byte. The same bytes as a saved transformation or a matrix.
#include "zu/exchange/project_json.h"

#include <nlohmann/json.hpp>

#include "fuzz/there_and_back.h"
#include "tests/support/project_json.h"
#include "zu/exchange/transformation.h"

namespace {

bool ReadJson(const std::string& strJson, ZuProject* pProject) {
  std::istringstream stream(strJson);
  ZuFindingList findings;
  const bool bGood = ZuReadProjectJson(stream, pProject, &findings);
  Require(bGood == (findings.GetErrorCount() == 0));
  for (const ZuFinding& finding : findings) Require(!GetZuFindingLine(finding).empty());
  return bGood;
}

bool ReadTransformation(const std::string& strText, ZuTransformation* p) {
  std::istringstream stream(strText);
  ZuFindingList findings;
  const bool bGood = ZuReadTransformation(stream, p, &findings);
  Require(bGood == (findings.GetErrorCount() == 0));
  return bGood;
}

std::string TextOf(const ZuTransformation& transformation) {
  std::ostringstream os;
  ZuExportTransformation(os, transformation);
  return os.str();
}

// What is read is written and read again as the same; it carries any point, and back.
void CheckTransformation(const std::string& strInput) {
  ZuTransformation transformation, again;
  if (!ReadTransformation(strInput, &transformation)) return;
  const std::string strText = TextOf(transformation);
  Require(ReadTransformation(strText, &again));
  Require(TextOf(again) == strText);
  ZuPointList points;
  points.Add(ZuPoint(1, 3.0, -4.0, 5.0));
  transformation.Carry(&points);
  if (!transformation.Invert()) return;
  transformation.Carry(&points);
  Require(points.Count() == 1);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t uSize) {
  const Input input(pData, uSize);
  const std::string strInput(input.Text());
  CheckTransformation(strInput);
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
