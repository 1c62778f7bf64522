#include "project_input.h"

#include <map>

#include "exit_code.h"
#include "project_rules.h"
#include "zu/photo/detect_files.h"

namespace cli {

namespace {

constexpr size_t kWarningsTold = 20;
constexpr size_t kErrorsTold = 2;  // of a message

std::string Line(const std::string& strName, const Finding& finding) {
  std::string strLine = strName;
  if (finding.uLine > 0) strLine += ":" + std::to_string(finding.uLine);
  if (finding.uLine > 0 && finding.uColumn > 0) strLine += ":" + std::to_string(finding.uColumn);
  strLine += ": " + finding.strText;
  return finding.strRight.empty() ? strLine : strLine + "; " + finding.strRight + " would be right";
}

[[noreturn]] void Fail(const std::string& strName, const std::vector<Finding>& findings,
                       size_t uErrors) {
  std::string strText;
  size_t uTold = 0;
  for (const Finding& finding : findings) {
    if (finding.eLevel != eSeverityError || uTold == kErrorsTold) continue;
    strText += (uTold++ > 0 ? "\n" : "") + Line(strName, finding);
  }
  if (uErrors > uTold) strText += "\nand " + Counted(uErrors - uTold, "more fault");
  throw CommandError(kBadInput, strText);
}

void Warn(const std::string& strName, const std::vector<Finding>& findings, size_t uWarnings,
          const Context& context) {
  size_t uTold = 0;
  for (const Finding& finding : findings) {
    if (finding.eLevel != eSeverityWarning || uTold == kWarningsTold) continue;
    ++uTold;
    context.Warn(Line(strName, finding));
  }
  if (uWarnings > uTold) {
    context.Warn(strName + ": " + Counted(uWarnings - uTold, "more warning"));
  }
}

[[noreturn]] void FailForeign(const InputFile& input, const char* szNeeded, const char* szBlocks) {
  const ZuDetectZuvoFiles file(input.Path().c_str());
  const std::string strLooks = file.IsType(eZuvoFileUnknown)
                                   ? ""
                                   : std::string(", but like a ") + GetZuvoFileText(file.GetType());
  throw CommandError(kBadInput, input.Name() + ": does not look like a " + szNeeded + strLooks +
                                    "; " + szBlocks + " would be right");
}

// A misspelt keyword loses a coefficient: no warning, a fault.
std::vector<Finding> WithMisspeltAsErrors(const KeywordText& text, size_t* puErrors) {
  std::vector<Finding> findings = text.Findings();
  for (Finding& finding : findings) {
    if (finding.eLevel != eSeverityWarning || finding.strRight.empty()) continue;
    finding.eLevel = eSeverityError;
    ++*puErrors;
  }
  return findings;
}

void CheckDoubled(const ZuCameraList& cameras, const std::string& strName) {
  std::map<unsigned, int> counts;
  for (const ZuCamera* p = cameras.First(); p != nullptr; p = p->Next()) {
    if (++counts[p->GetId()] < 2) continue;
    throw CommandError(kBadInput, strName + ": camera " + std::to_string(p->GetId()) +
                                      " stands twice; one for each id would be right");
  }
}

}  // namespace

void AddPartialOption(Options& options, bool* pbPartial) {
  options.Flag("--partial", pbPartial, "take what is whole of a project that is cut off");
}

void AddLibraryOption(Options& options, bool* pbLibrary) {
  options.Flag("--library", pbLibrary,
               "convert by the library's quick correction and its inverse table, not exactly");
}

std::unique_ptr<Project> OpenProject(const InputFile& file, bool bPartial) {
  auto pProject = std::make_unique<Project>(file.Path(), bPartial);
  if (pProject->IsForeign()) {
    FailForeign(file, "project file", "blocks PHOTO { ... } and MEASURE { ... }");
  }
  if (pProject->Errors() > 0) Fail(file.Name(), pProject->Findings(), pProject->Errors());
  return pProject;
}

void WarnOf(const Project& project, const InputFile& file, const Context& context) {
  Warn(file.Name(), project.Findings(), project.Warnings(), context);
}

ZuPhoto& FindPhoto(Project& project, unsigned uId, const InputFile& file) {
  ZuPhoto* pPhoto = project.Photos().Find(uId);
  if (pPhoto != nullptr) return *pPhoto;
  std::string strIds;
  for (const ZuPhoto* p = project.Photos().First(); p != nullptr; p = p->Next()) {
    strIds += (strIds.empty() ? "" : ", ") + std::to_string(p->GetId());
  }
  throw CommandError(
      kBadInput, file.Name() + ": no photo " + std::to_string(uId) + "; the file has " + strIds);
}

void CheckNothingLacks(const Project& project, const ZuPhoto& photo, unsigned uNeeds,
                       const InputFile& file) {
  const std::string strLacks = project.Lacks(photo, uNeeds);
  if (strLacks.empty()) return;
  throw CommandError(kUndetermined,
                     file.Name() + ": photo " + std::to_string(photo.GetId()) + " " + strLacks);
}

ZuCameraList ReadCameras(const std::string& strPath, Context& context) {
  const InputFile file(strPath, "a camera file");
  const std::string& strName = file.Name();
  const KeywordText text(file.Path(), CameraFileRules(), false);
  if (text.IsForeign()) {
    FailForeign(file, "camera file",
                "blocks CAMERA { ID 1 C ... } or\n{ id c xh yh a1 a2 r0 \"name\" }");
  }
  size_t uErrors = text.Errors();
  const std::vector<Finding> findings = WithMisspeltAsErrors(text, &uErrors);
  if (uErrors > 0) Fail(strName, findings, uErrors);
  Warn(strName, findings, text.Warnings(), context);
  ZuCameraList cameras(file.Path().c_str());
  if (cameras.GetReadErrorCount() > 0) {
    throw CommandError(kBadInput, strName + ":" + std::to_string(cameras.GetReadErrorLine()) +
                                      ": " + cameras.GetReadErrorText() +
                                      "; numbers, \"names\" and closed blocks would be right");
  }
  CheckDoubled(cameras, strName);
  return cameras;
}

}  // namespace cli
