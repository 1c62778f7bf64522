#include "zu/project/detect_folder.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <map>
#include <memory>
#include <set>
#include <system_error>

#include "zu/foundation/file_name.h"
#include "zu/project/project.h"

namespace {

namespace fs = std::filesystem;

std::string LowerCase(std::string strText) {
  for (char& c : strText) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  }
  return strText;
}

std::string LastPart(const std::string& strPath) {
  return LowerCase(ZuGetFilename(strPath.c_str()).chars());
}

// The folder, and the name without its ending.
std::string Stem(const std::string& strPath) {
  const fs::path path(strPath);
  return (path.parent_path() / path.stem()).string();
}

const char* PictureKind(const char* szPath, bool* pbReadable) {
  std::FILE* fp = std::fopen(szPath, "rb");
  *pbReadable = fp != nullptr;
  if (fp == nullptr) return "";
  unsigned char head[8] = {};
  const size_t uRead = std::fread(head, 1, sizeof head, fp);
  *pbReadable = std::ferror(fp) == 0;
  std::fclose(fp);
  const struct {
    const char* szKind;
    size_t uLength;
    const char* szMagic;
  } kinds[] = {{"JPEG", 3, "\xFF\xD8\xFF"},
               {"PNG", 8, "\x89PNG\r\n\x1A\n"},
               {"TIFF", 4, "II*\0"},
               {"TIFF", 4, "MM\0*"}};
  for (const auto& kind : kinds) {
    if (uRead >= kind.uLength && std::memcmp(head, kind.szMagic, kind.uLength) == 0) {
      return kind.szKind;
    }
  }
  return "";
}

class FolderWalk {
 public:
  FolderWalk(const fs::path& root, const ZuFolderLimits& limits, ZuFolder* pFolder)
      : m_root(root), m_limits(limits), m_pFolder(pFolder) {}

  // False where the folder cannot be looked into.
  bool Walk(const fs::path& folder, int iDepth) {
    std::error_code error;
    fs::directory_iterator it(folder, error);
    if (error) return false;
    std::vector<fs::path> below;
    for (; it != fs::directory_iterator(); it.increment(error)) {
      if (++m_uSeen > m_limits.m_uFiles) {
        m_pFolder->m_bComplete = false;
        break;
      }
      LookAt(*it, &below);
    }
    std::sort(below.begin(), below.end());
    for (const fs::path& path : below) {
      if (m_uSeen > m_limits.m_uFiles) break;
      if (iDepth >= m_limits.m_iDepth) {
        m_pFolder->m_bComplete = false;
      } else if (!Walk(path, iDepth + 1)) {
        m_pFolder->m_unreadable.push_back(Relative(path));
      }
    }
    return true;
  }

 private:
  std::string Relative(const fs::path& path) const {
    return path.lexically_relative(m_root).generic_string();
  }

  void LookAt(const fs::directory_entry& entry, std::vector<fs::path>* pBelow) {
    std::error_code error;
    const bool bFolder = entry.is_directory(error);
    if (bFolder && entry.is_symlink(error)) {
      ++m_pFolder->m_iLoops;
    } else if (bFolder) {
      pBelow->push_back(entry.path());
    } else if (entry.is_regular_file(error)) {
      ZuFolderFile file;
      file.m_strPath = Relative(entry.path());
      file.m_uSize = entry.file_size(error);
      if (error) file.m_uSize = 0;
      file.m_strPicture = PictureKind(entry.path().c_str(), &file.m_bReadable);
      if (file.m_bReadable && file.m_strPicture.empty()) {
        file.m_eKind = ZuDetectZuvoFiles(entry.path().c_str()).GetType();
      }
      m_pFolder->m_files.push_back(std::move(file));
    }
  }

  fs::path m_root;
  const ZuFolderLimits& m_limits;
  ZuFolder* m_pFolder;
  size_t m_uSeen = 0;
};

// Parts of a path that two paths have in common from the front.
int CommonParts(const std::string& a, const std::string& b) {
  int iParts = 0;
  for (size_t i = 0; i < a.size() && i < b.size() && a[i] == b[i]; ++i) iParts += a[i] == '/';
  return iParts;
}

int PartsOf(const std::string& strPath) {
  return static_cast<int>(std::count(strPath.begin(), strPath.end(), '/'));
}

class Ties {
 public:
  explicit Ties(ZuFolder* pFolder) : m_pFolder(pFolder) {
    for (size_t i = 0; i < pFolder->m_files.size(); ++i) {
      m_byName.emplace(LastPart(pFolder->m_files[i].m_strPath), i);
      m_byStem.emplace(Stem(pFolder->m_files[i].m_strPath), i);
    }
  }

  void Tie(const fs::path& root, size_t uFile) {
    ZuFolderProject result;
    result.m_uFile = uFile;
    const std::string& strPath = m_pFolder->m_files[uFile].m_strPath;
    auto pProject = std::make_unique<ZuProject>();
    pProject->Read((root / strPath).c_str(), eZuProjectPartial);
    result.m_iErrors = static_cast<int>(pProject->GetFindings().GetErrorCount());
    result.m_iCameras = pProject->CameraList().Count();
    std::set<std::string> named;
    for (const ZuPhoto* p = pProject->PhotoList().First(); p != nullptr; p = p->Next()) {
      ++result.m_iPhotos;
      result.m_iOriented += p->HasAOR() ? 1 : 0;
      Need(strPath, *p, p->GetName().chars(), false, &named, &result);
      Need(strPath, *p, p->GetReseauData().GetName().chars(), true, &named, &result);
    }
    for (const ZuOrthoPhoto* p = pProject->OrthoPhotoList().First(); p != nullptr; p = p->Next()) {
      Need(strPath, *p, p->GetName().chars(), false, &named, &result);
    }
    const auto range = m_byStem.equal_range(Stem(strPath));
    for (auto it = range.first; it != range.second; ++it) {
      if (it->second != uFile) result.m_sameName.push_back(it->second);
    }
    m_pFolder->m_projects.push_back(std::move(result));
  }

 private:
  void Need(const std::string& strProject, const ZuPhoto& photo, const std::string& strName,
            bool bReseau, std::set<std::string>* pNamed, ZuFolderProject* pResult) const {
    if (strName.empty() || !pNamed->insert((bReseau ? "r" : "p") + strName).second) return;
    const int iFile = Nearest(strProject, strName, bReseau);
    // The key of a reseau may be a camera type, which is no file.
    if (bReseau && iFile < 0) return;
    pResult->m_needs.push_back({strName, photo.GetId(), iFile, bReseau});
  }

  // The file of that name with the fewest steps from the project; -1: none.
  int Nearest(const std::string& strProject, const std::string& strName, bool bReseau) const {
    const auto range = m_byName.equal_range(LastPart(strName));
    int iBest = -1, iBestSteps = 0;
    for (auto it = range.first; it != range.second; ++it) {
      const ZuFolderFile& file = m_pFolder->m_files[it->second];
      const bool bKind = file.m_eKind == eZuvoFileReseau || file.m_eKind == eZuvoFileDigitalCamera;
      if (bReseau && !bKind) continue;
      const int iSteps = PartsOf(strProject) + PartsOf(file.m_strPath) -
                         2 * CommonParts(strProject, file.m_strPath);
      if (iBest >= 0 && iSteps >= iBestSteps) continue;
      iBest = static_cast<int>(it->second);
      iBestSteps = iSteps;
    }
    return iBest;
  }

  ZuFolder* m_pFolder;
  std::multimap<std::string, size_t> m_byName, m_byStem;
};

}  // namespace

std::vector<std::size_t> ZuFolder::Strangers() const {
  std::vector<bool> tied(m_files.size(), false);
  for (const ZuFolderProject& project : m_projects) {
    for (const ZuFolderNeed& need : project.m_needs) {
      if (need.m_iFile >= 0) tied[static_cast<size_t>(need.m_iFile)] = true;
    }
    for (const size_t u : project.m_sameName) tied[u] = true;
  }
  std::vector<std::size_t> strangers;
  for (size_t i = 0; i < m_files.size(); ++i) {
    const ZuFolderFile& file = m_files[i];
    if (!tied[i] && file.m_eKind == eZuvoFileUnknown && file.m_strPicture.empty()) {
      strangers.push_back(i);
    }
  }
  return strangers;
}

bool ZuDetectFolder(const char* szPath, ZuFolder* pFolder, const ZuFolderLimits& limits) {
  *pFolder = ZuFolder();
  std::error_code error;
  const fs::path root(szPath != nullptr ? szPath : "");
  if (!fs::is_directory(root, error) || !FolderWalk(root, limits, pFolder).Walk(root, 0)) {
    return false;
  }
  std::sort(pFolder->m_files.begin(), pFolder->m_files.end(),
            [](const ZuFolderFile& a, const ZuFolderFile& b) { return a.m_strPath < b.m_strPath; });
  Ties ties(pFolder);
  for (size_t i = 0; i < pFolder->m_files.size(); ++i) {
    const ZuFolderFile& file = pFolder->m_files[i];
    if (file.m_eKind != eZuvoFileProject) continue;
    if (file.m_uSize > limits.m_uProjectSize) {
      pFolder->m_bComplete = false;
    } else {
      ties.Tie(root, i);
    }
  }
  return true;
}
