// What kind of cloud file some bytes begin, told by their content.
#pragma once

#include <cstddef>
#include <string>

#include "zu/export.h"

enum eZuCloudFile : int {
  eZuCloudFileNone,         // no cloud; the text says what it looks like
  eZuCloudFileBinary,       // read by ZuPointCloudContainer::Read
  eZuCloudFilePly,          // by ZuReadPly
  eZuCloudFilePts,          // by ZuReadPts: x y z first, or a count
  eZuCloudFileCoordinates,  // id or name first, then x y z; or columns between commas
  eZuCloudFileEither,       // whole numbers that may be ids or x coordinates
  eZuCloudFileLas,          // by ZuReadLas, which refuses LAZ
  eZuCloudFileE57           // by ZuReadE57 of zu::exchange
};

// Looks at the first bytes of a file, some thousand of them, or all it has. The text, which may be
// null, becomes what the bytes look like where they are no cloud: "a PCD file", "text: \"root:x\"".
ZU_API eZuCloudFile ZuDetectCloudFile(const char* pHead, std::size_t uSize,
                                      std::string* pstrLooksLike);
