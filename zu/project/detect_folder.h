// What the files of a folder are, and which belong together.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "zu/export.h"
#include "zu/photo/detect_files.h"

// A file of a folder. Paths are UTF-8 and relative to the folder, with '/'.
struct ZuFolderFile {
  std::string m_strPath;
  eZuvoFile m_eKind = eZuvoFileUnknown;
  std::string m_strPicture;  // "JPEG", "PNG" or "TIFF", by its first bytes; empty for no picture
  std::uint64_t m_uSize = 0;
  bool m_bReadable = true;
};

// What a project names: a picture of a photo, or a reseau.
struct ZuFolderNeed {
  std::string m_strName;  // as the project has it
  unsigned m_uPhoto = 0;  // the first photo that names it
  int m_iFile = -1;       // index of the file; -1: it is not in the folder
  bool m_bReseau = false;
};

// A project file and what belongs to it.
struct ZuFolderProject {
  std::size_t m_uFile = 0;  // index of the project file
  int m_iPhotos = 0, m_iOriented = 0, m_iCameras = 0;
  int m_iErrors = 0;                    // of its reading
  std::vector<ZuFolderNeed> m_needs;    // each name once, in the order of the file
  std::vector<std::size_t> m_sameName;  // files of the same folder and name but for the ending
};

struct ZuFolderLimits {
  std::size_t m_uFiles = 100000;  // looked at, folders included
  int m_iDepth = 16;              // of folders within each other; 0: the folder alone
  std::uint64_t m_uProjectSize = std::uint64_t{1} << 30;  // of a project that is read [bytes]
};

struct ZU_API ZuFolder {
  std::vector<ZuFolderFile> m_files;  // by path
  std::vector<ZuFolderProject> m_projects;
  std::vector<std::string> m_unreadable;  // folders without the right to look into
  bool m_bComplete = true;                // false: a limit ended the search
  int m_iLoops = 0;                       // links to folders, which are not followed

  // Files that are of no known kind, and that no project and no name ties to another.
  std::vector<std::size_t> Strangers() const;
};

// Looks through a folder and those below it: the kind of each file by its content (64 KiB), as
// ZuDetectZuvoFiles tells it, pictures beside; projects are read. Of names that projects give, the
// last part counts without regard to case, the nearest file first. Links to files are followed,
// links to folders never; devices and pipes are left aside. False with an empty result where the
// path is no folder or cannot be looked into. Nothing is thrown but std::bad_alloc.
ZU_API bool ZuDetectFolder(const char* szPath, ZuFolder* pFolder,
                           const ZuFolderLimits& limits = {});
