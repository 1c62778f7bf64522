// zu project detect: what the files of a folder are, and which belong together.
#include <memory>
#include <utility>

#include "commands.h"
#include "text_table.h"
#include "zu/project/detect_folder.h"

namespace cli {
namespace {

struct Values {
  std::string strFolder;
  int iDepth = ZuFolderLimits().m_iDepth;
};

std::string KindOf(const ZuFolderFile& file) {
  if (!file.m_bReadable) return "not readable";
  return file.m_strPicture.empty() ? GetZuvoFileText(file.m_eKind) : file.m_strPicture + " picture";
}

int MissingOf(const ZuFolderProject& project) {
  int iMissing = 0;
  for (const ZuFolderNeed& need : project.m_needs) iMissing += need.m_iFile < 0 ? 1 : 0;
  return iMissing;
}

void WriteProject(const ZuFolder& folder, const ZuFolderProject& project, std::ostream& text) {
  text << '\n'
       << folder.m_files[project.m_uFile].m_strPath << ": " << Counted(project.m_iPhotos, "photo")
       << ", " << project.m_iOriented << " oriented";
  if (project.m_iErrors > 0) text << ", " << Counted(project.m_iErrors, "error");
  text << '\n';
  for (const ZuFolderNeed& need : project.m_needs) {
    text << "  " << (need.m_bReseau ? "reseau " : "picture ") << need.m_strName << " of photo "
         << need.m_uPhoto << ": "
         << (need.m_iFile < 0 ? "missing"
                              : folder.m_files[static_cast<size_t>(need.m_iFile)].m_strPath)
         << '\n';
  }
  for (const size_t u : project.m_sameName) {
    text << "  of the same name: " << folder.m_files[u].m_strPath << " ("
         << KindOf(folder.m_files[u]) << ")\n";
  }
}

Json ProjectJson(const ZuFolder& folder, const ZuFolderProject& project) {
  Json json{{"file", folder.m_files[project.m_uFile].m_strPath},
            {"photos", project.m_iPhotos},
            {"oriented", project.m_iOriented},
            {"cameras", project.m_iCameras},
            {"errors", project.m_iErrors},
            {"needs", Json::array()},
            {"same_name", Json::array()}};
  for (const ZuFolderNeed& need : project.m_needs) {
    json["needs"].push_back(
        {{"name", need.m_strName},
         {"what", need.m_bReseau ? "reseau" : "picture"},
         {"photo", need.m_uPhoto},
         {"file", need.m_iFile < 0
                      ? Json()
                      : Json(folder.m_files[static_cast<size_t>(need.m_iFile)].m_strPath)}});
  }
  for (const size_t u : project.m_sameName) {
    json["same_name"].push_back(folder.m_files[u].m_strPath);
  }
  return json;
}

ExitCode Run(const Values& values, Context& context) {
  ZuFolderLimits limits;
  limits.m_iDepth = values.iDepth;
  ZuFolder folder;
  if (!ZuDetectFolder(values.strFolder.c_str(), &folder, limits)) {
    throw CommandError(kBadInput, values.strFolder +
                                      ": no folder, or not readable; the folder of a project would "
                                      "be right");
  }
  Json& root = context.Root();
  root["files"] = Json::array();
  TextTable table;
  table.AddColumn("file", TextTable::eLeft);
  table.AddColumn("bytes");
  table.AddColumn("kind", TextTable::eLeft);
  for (const ZuFolderFile& file : folder.m_files) {
    table.AddRow({file.m_strPath, std::to_string(file.m_uSize), KindOf(file)});
    root["files"].push_back({{"path", file.m_strPath},
                             {"bytes", file.m_uSize},
                             {"kind", KindOf(file)},
                             {"readable", file.m_bReadable}});
  }
  table.Write(context.Text());
  int iMissing = 0;
  root["projects"] = Json::array();
  for (const ZuFolderProject& project : folder.m_projects) {
    WriteProject(folder, project, context.Text());
    root["projects"].push_back(ProjectJson(folder, project));
    iMissing += MissingOf(project);
  }
  root["missing"] = iMissing;
  root["complete"] = folder.m_bComplete;
  root["unreadable_folders"] = folder.m_unreadable;
  root["linked_folders"] = folder.m_iLoops;
  root["strangers"] = Json::array();
  for (const size_t u : folder.Strangers()) {
    root["strangers"].push_back(folder.m_files[u].m_strPath);
  }
  if (!folder.m_bComplete) context.WarnAlways(values.strFolder + ": not all was looked at");
  for (const std::string& strPath : folder.m_unreadable) {
    context.Warn(strPath + ": a folder that cannot be looked into");
  }
  return iMissing > 0 ? kNotAcceptable : kGood;
}

}  // namespace

Runner DefineProjectDetect(Options& options) {
  auto pValues = std::make_shared<Values>();
  options.Positional("FOLDER", &pValues->strFolder,
                     "the folder; those below it are looked through");
  options.Option("--depth", "N", &pValues->iDepth, "folders within each other at most, 16");
  options.AtLeast(0);
  return [pValues](Context& context) { return Run(*pValues, context); };
}

}  // namespace cli
