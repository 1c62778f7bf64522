// Paths, and the folders that a process works in. Texts are UTF-8; std::filesystem does the work.
//
//   const std::string strPhoto = ZuJoinPath(ZuParentPath(strProject), "left01.jpg");
//
// Parts of names are told by both slashes, as in file_name.h, since project files name paths of
// other systems too; what asks the system takes the slashes of the system.
#pragma once

#include <string>

#include "zu/export.h"

// The second behind the first, with a slash between them; the second alone where it is absolute or
// the first is empty, the first where the second is empty.
ZU_API std::string ZuJoinPath(const std::string& strFolder, const std::string& strName);

// "a/b.jpg" gives "a", "b.jpg" an empty text, "/b.jpg" gives "/" and "C:\b.jpg" gives "C:\".
ZU_API std::string ZuParentPath(const std::string& strPath);

// "a/b.c.jpg" gives ".jpg", "a.b/c" and ".profile" an empty text.
ZU_API std::string ZuPathExtension(const std::string& strPath);

// With a root on this system or another one: "/a", "C:\a", "C:/a", "\\host\a".
ZU_API bool ZuIsAbsolutePath(const std::string& strPath);

// From the current folder, without "." and ".."; nothing needs to be there. Empty where the path is
// empty or the current folder is gone.
ZU_API std::string ZuAbsolutePath(const std::string& strPath);

// The way from a folder to a path, by their texts: "../b" from "/x/a" to "/x/b". Both are made
// absolute first. The absolute path where there is no way, such as to another drive.
ZU_API std::string ZuRelativePath(const std::string& strPath, const std::string& strFolder);

ZU_API bool ZuExistFolder(const std::string& strPath);

// The folder for temporary files (TMPDIR, else /tmp); empty where there is none.
ZU_API std::string ZuTempFolder();

// The current folder is that of the whole process: setting it is for one thread at a time, while no
// other one opens files. Get: empty where it is gone. Set: false, nothing changed, where it cannot
// be entered.
ZU_API std::string ZuCurrentFolder();
ZU_API bool ZuSetCurrentFolder(const std::string& strPath);
