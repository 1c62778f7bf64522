// zu project: projects as wholes: what is in one, joining, dividing, new numbers.
#include <map>
#include <memory>
#include <sstream>

#include "commands.h"
#include "id_list.h"
#include "project_files.h"
#include "text_table.h"
#include "zu/project/project_edit.h"

namespace cli {

namespace {

long long Measured(const ZuProject& project) {
  long long iCount = 0;
  for (const auto& [uPhoto, rows] : project.GetMeasurements()) iCount += rows.Count();
  return iCount;
}

long long Oriented(const ZuProject& project) {
  long long iCount = 0;
  for (const ZuPhoto* p = project.PhotoList().First(); p != nullptr; p = p->Next()) {
    iCount += p->HasAOR() ? 1 : 0;
  }
  return iCount;
}

// What a project holds, as a line a kind and as JSON.
void Tell(const ZuProject& project, Context& context) {
  Json unknown = Json::array();
  for (const ZuProjectItem& item : project.GetItems()) {
    if (item.m_pUnknown != nullptr) unknown.push_back(item.m_pUnknown->m_strWritten);
  }
  const struct {
    const char* szKey;
    const char* szName;
    long long iCount;
  } rows[] = {
      {"photos", "photo", project.PhotoList().Count()},
      {"oriented", "oriented photo", Oriented(project)},
      {"measurements", "measurement", Measured(project)},
      {"orthophotos", "orthophoto", project.OrthoPhotoList().Count()},
      {"cameras", "camera", project.CameraList().Count()},
      {"planes", "plane", project.PlaneList().Count()},
      {"local_systems", "local system", static_cast<long long>(project.LocalSystems().size())},
      {"object_points", "object point", project.ObjectPoints().Count()},
      {"unknown", "unknown keyword", static_cast<long long>(unknown.size())}};
  for (const auto& row : rows) {
    context.Root()[row.szKey] = row.iCount;
    if (row.iCount > 0) context.Text() << Counted(row.iCount, row.szName) << '\n';
  }
  context.Root()["unknown"] = unknown;
}

struct Values {
  std::string strProject, strOther, strOut, strRest, strPhotos;
  int iOffset = 0, iPointOffset = 0;
  unsigned uStart = 0;
};

// New ids of all photos: each moved by an offset, or counted from a start.
void Renumber(ZuProject* pProject, int iOffset, unsigned uStart, const char* szOption) {
  std::map<unsigned, unsigned> ids;
  long long iNext = uStart;
  bool bGood = true;
  for (const ZuPhoto* p = pProject->PhotoList().First(); p != nullptr; p = p->Next()) {
    const long long iNew = uStart > 0 ? iNext++ : static_cast<long long>(p->GetId()) + iOffset;
    bGood = bGood && iNew >= 1 && iNew <= 4294967295LL;
    ids[p->GetId()] = static_cast<unsigned>(iNew);
  }
  if (bGood && ZuRenumberPhotos(pProject, ids)) return;
  throw CommandError(kUsage, std::string(szOption) + ": ids from 1 to 4294967295 would be right");
}

ExitCode RunInfo(const Values& values, Context& context) {
  ZuProject project;
  ReadProjectFile(values.strProject, context, &project);
  Tell(project, context);
  return kGood;
}

ExitCode RunMerge(const Values& values, Context& context) {
  CheckProjectEnding(values.strOut);
  ZuProject first, second, joined;
  ReadProjectFile(values.strProject, context, &first);
  ReadProjectFile(values.strOther, context, &second);
  if (values.iOffset != 0) Renumber(&second, values.iOffset, 0, "--offset");
  const std::vector<std::string> different = ZuDropCommonRecords(&second, first);
  if (!different.empty()) {
    const auto iMore = static_cast<long long>(different.size()) - 1;
    const std::string strMore = iMore > 0 ? ", nor " + Counted(iMore, "more record") : "";
    throw CommandError(kBadInput, different.front() + " is not the same in both projects" +
                                      strMore +
                                      "\n--offset N, which is added to the ids of the second one's "
                                      "photos, would do for photos");
  }
  ZuJoinProjects(first, second, &joined);
  Tell(joined, context);
  WriteProjectFile(values.strOut, context, joined);
  return kGood;
}

ExitCode RunSplit(const Values& values, Context& context) {
  CheckProjectEnding(values.strOut);
  if (!values.strRest.empty()) CheckProjectEnding(values.strRest);
  ZuProject project;
  ReadProjectFile(values.strProject, context, &project);
  const std::set<unsigned> kept = PhotosOf(project, values.strPhotos, "--photos");
  if (!values.strRest.empty()) {
    ZuProject rest;
    std::set<unsigned> others = PhotosOf(project, "", "");
    for (const unsigned uId : kept) others.erase(uId);
    if (others.empty()) throw CommandError(kUsage, "--rest: no photo is left for it");
    std::stringstream text;
    project.Export(text);
    rest.Read(text);
    ZuKeepPhotos(&rest, others);
    WriteProjectFile(values.strRest, context, rest);
  }
  ZuKeepPhotos(&project, kept);
  Tell(project, context);
  WriteProjectFile(values.strOut, context, project);
  return kGood;
}

ExitCode RunRenumber(const Values& values, Context& context) {
  CheckProjectEnding(values.strOut);
  if (values.uStart != 0 && values.iOffset != 0) {
    throw CommandError(kUsage, "--start and --offset exclude each other");
  }
  ZuProject project;
  ReadProjectFile(values.strProject, context, &project);
  const bool bStart = values.uStart != 0;
  if (bStart || values.iOffset != 0) {
    Renumber(&project, values.iOffset, values.uStart, bStart ? "--start" : "--offset");
  }
  if (!ZuOffsetPointIds(&project, values.iPointOffset)) {
    throw CommandError(kUsage, "--points-offset: ids from 1 to 4294967295 would be right");
  }
  Tell(project, context);
  WriteProjectFile(values.strOut, context, project);
  return kGood;
}

void AddProject(Options& options, std::string* pstrProject) {
  options.Positional("PROJECT", pstrProject, "project file, or its JSON");
}

void AddOutput(Options& options, std::string* pstrOut) {
  options.Output("-o,--output", "FILE", pstrOut, "the result as .prj or .json");
  options.Required();
}

}  // namespace

Runner DefineProjectInfo(Options& options) {
  auto pValues = std::make_shared<Values>();
  AddProject(options, &pValues->strProject);
  return [pValues](Context& context) { return RunInfo(*pValues, context); };
}

Runner DefineProjectMerge(Options& options) {
  auto pValues = std::make_shared<Values>();
  AddProject(options, &pValues->strProject);
  options.Positional("SECOND", &pValues->strOther, "project whose records are added");
  options.Option("--offset", "N", &pValues->iOffset, "added to the ids of the second one's photos");
  AddOutput(options, &pValues->strOut);
  return [pValues](Context& context) { return RunMerge(*pValues, context); };
}

Runner DefineProjectSplit(Options& options) {
  auto pValues = std::make_shared<Values>();
  AddProject(options, &pValues->strProject);
  options.Option("--photos", "IDS", &pValues->strPhotos, "photos that are kept: 1,4,7-9");
  options.Required();
  options.Output("--rest", "FILE", &pValues->strRest, "a project of the other photos");
  AddOutput(options, &pValues->strOut);
  return [pValues](Context& context) { return RunSplit(*pValues, context); };
}

Runner DefineProjectRenumber(Options& options) {
  auto pValues = std::make_shared<Values>();
  AddProject(options, &pValues->strProject);
  options.Option("--start", "N", &pValues->uStart, "photos get N, N + 1, ... in their order");
  options.Option("--offset", "N", &pValues->iOffset, "added to the ids of photos");
  options.Option("--points-offset", "N", &pValues->iPointOffset, "added to the ids of points");
  AddOutput(options, &pValues->strOut);
  return [pValues](Context& context) { return RunRenumber(*pValues, context); };
}

}  // namespace cli
