// Files and the parts of their names. 8-bit paths are UTF-8; both slashes separate folders, since
// project files name paths of other systems too.
#pragma once

#include <string>
#include <string_view>

#include "zu/export.h"
#include "zu/foundation/string.h"

// Whether there is a file, other than a folder. False for null and for an empty path.
ZU_API bool ZuExistFile(char const* szPath);
ZU_API bool ZuExistFile(wchar_t const* szPath);

// "a/b.c.jpg" gives "b.c.jpg", and without extension "b.c". A dot at the start belongs to the name.
ZU_API String ZuGetFilename(char const* szPath);
ZU_API std::wstring ZuGetFilename(wchar_t const* szPath);
ZU_API String ZuGetFilenameNoExt(char const* szPath);
ZU_API std::wstring ZuGetFilenameNoExt(wchar_t const* szPath);

// "a/b.c.JPG" gives ".jpg": the last dot of the name and what is behind it, in small letters; empty
// where there is none.
ZU_API std::string ZuGetFileEnding(std::string_view path);
