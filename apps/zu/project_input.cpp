#include "project_input.h"

#include <utility>

#include "exit_code.h"
#include "reading.h"
#include "zu/photo/detect_files.h"
#include "zu/project/camera_file.h"

namespace cli {

namespace {

constexpr size_t kErrorsTold = 2;  // of a message

constexpr char kWholeFile[] = "the whole file";  // what the library says is right for a cut one

std::string Line(const std::string& strName, ZuFinding finding, const char* szForWhole) {
  if (finding.m_strRight == kWholeFile) finding.m_strRight += szForWhole;
  return Placed(std::move(finding), strName);
}

[[noreturn]] void FailForeign(const InputFile& input, const char* szNeeded, const char* szBlocks) {
  const ZuDetectZuvoFiles file(input.Path().c_str());
  const std::string strLooks = file.IsType(eZuvoFileUnknown)
                                   ? ""
                                   : std::string(", but like a ") + GetZuvoFileText(file.GetType());
  throw CommandError(kBadInput, input.Name() + ": does not look like a " + szNeeded + strLooks +
                                    "; " + szBlocks + " would be right");
}

}  // namespace

void AddPartialOption(Options& options, bool* pbPartial) {
  options.Flag("--partial", pbPartial, "take what is whole of a project that is cut off");
}

void AddLibraryOption(Options& options, bool* pbLibrary) {
  options.Flag("--library", pbLibrary,
               "convert by the library's quick correction and its inverse table, not exactly");
}

void FailOf(const ZuFindingList& findings, const InputFile& file, const char* szForWhole) {
  std::string strText;
  size_t uTold = 0;
  for (const ZuFinding& finding : findings) {
    if (finding.m_eSeverity != eZuSeverityError || uTold == kErrorsTold) continue;
    strText += (uTold++ > 0 ? "\n" : "") + Line(file.Name(), finding, szForWhole);
  }
  if (findings.GetErrorCount() > uTold) {
    strText += "\nand " + Counted(findings.GetErrorCount() - uTold, "more fault");
  }
  throw CommandError(kBadInput, strText);
}

void ReadProject(const InputFile& file, eZuProjectPart ePart, ZuProject* pProject,
                 const char* szForWhole) {
  if (pProject->Read(file.Path().c_str(), ePart)) return;
  if (pProject->IsForeign()) {
    FailForeign(file, "project file", "blocks PHOTO { ... } and MEASURE { ... }");
  }
  FailOf(pProject->GetFindings(), file, szForWhole);
}

std::unique_ptr<ZuProject> OpenProject(const InputFile& file, bool bPartial) {
  auto pProject = std::make_unique<ZuProject>();
  ReadProject(file, bPartial ? eZuProjectPartial : eZuProjectWhole, pProject.get(),
              ", or --partial for what is there");
  return pProject;
}

void WarnOf(const ZuFindingList& findings, const InputFile& file, const Context& context) {
  size_t uTold = 0;
  for (const ZuFinding& finding : findings) {
    if (finding.m_eSeverity != eZuSeverityWarning || uTold == kWarningsTold) continue;
    const std::string strText = Placed(finding, file.Name());
    if (context.IsStrict()) throw CommandError(kBadInput, strText + '\n' + kWithoutStrict);
    ++uTold;
    context.Warn(strText);
  }
  if (findings.GetWarningCount() > uTold) {
    context.Warn(file.Name() + ": " + Counted(findings.GetWarningCount() - uTold, "more warning"));
  }
}

void WarnOf(const ZuProject& project, const InputFile& file, const Context& context) {
  WarnOf(project.GetFindings(), file, context);
}

ZuPhoto& FindPhoto(ZuProject& project, unsigned uId, const InputFile& file) {
  ZuPhoto* pPhoto = project.PhotoList().Find(uId);
  if (pPhoto != nullptr) return *pPhoto;
  std::string strIds;
  for (const ZuPhoto* p = project.PhotoList().First(); p != nullptr; p = p->Next()) {
    strIds += (strIds.empty() ? "" : ", ") + std::to_string(p->GetId());
  }
  throw CommandError(
      kBadInput, file.Name() + ": no photo " + std::to_string(uId) + "; the file has " + strIds);
}

void CheckNothingLacks(const ZuProject& project, const ZuPhoto& photo, unsigned uNeeds,
                       const InputFile& file) {
  const std::string strLacks = project.Lacks(photo, uNeeds);
  if (strLacks.empty()) return;
  throw CommandError(kUndetermined,
                     file.Name() + ": photo " + std::to_string(photo.GetId()) + " " + strLacks);
}

namespace {

// Those of its own and of its photos, one of each id.
ZuCameraList CamerasOf(const ZuProject& project) {
  ZuCameraList cameras;
  const auto take = [&cameras](const ZuCamera& camera) {
    if (cameras.Find(camera.GetId()) == nullptr) cameras.Add(new ZuCamera(camera));
  };
  for (const ZuCamera* p = project.CameraList().First(); p != nullptr; p = p->Next()) take(*p);
  for (const ZuPhoto* p = project.PhotoList().First(); p != nullptr; p = p->Next()) {
    take(p->GetCamera());
  }
  return cameras;
}

}  // namespace

ZuCameraList ReadCameras(const std::string& strPath, Context& context) {
  const InputFile file(strPath, "a camera file");
  if (ZuDetectZuvoFiles(file.Path().c_str()).IsType(eZuvoFileProject)) {
    const auto pProject = OpenProject(file, false);
    WarnOf(*pProject, file, context);
    return CamerasOf(*pProject);
  }
  ZuCameraFile cameras;
  const bool bGood = cameras.Read(file.Path().c_str());
  if (cameras.IsForeign()) {
    FailForeign(file, "camera file",
                "blocks CAMERA { ID 1 C ... } or\n{ id c xh yh a1 a2 r0 \"name\" }");
  }
  if (!bGood) FailOf(cameras.GetFindings(), file);
  WarnOf(cameras.GetFindings(), file, context);
  return cameras.CameraList();
}

}  // namespace cli
