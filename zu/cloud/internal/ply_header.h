// The header of a PLY file.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "zu/cloud/internal/line_source.h"
#include "zu/cloud/internal/stdio_file.h"
#include "zu/cloud/ply_file.h"
#include "zu/foundation/read_findings.h"

enum eZuPlyType : int {
  eZuPlyInt8,
  eZuPlyUint8,
  eZuPlyInt16,
  eZuPlyUint16,
  eZuPlyInt32,
  eZuPlyUint32,
  eZuPlyFloat32,
  eZuPlyFloat64,
  eZuPlyNoType
};

// Bytes of a value in a binary file.
inline unsigned int ZuPlySize(eZuPlyType eType) {
  constexpr unsigned char kSizes[] = {1, 1, 2, 2, 4, 4, 4, 8, 0};
  return kSizes[eType];
}

struct ZuPlyProperty {
  std::string strName;  // lower case
  eZuPlyType eType = eZuPlyNoType;
  eZuPlyType eCountType = eZuPlyNoType;  // of a list; none: a single value
  bool IsList() const { return eCountType != eZuPlyNoType; }
};

struct ZuPlyElement {
  std::string strName;  // lower case
  std::uint64_t uRows = 0;
  std::vector<ZuPlyProperty> properties;

  // Bytes of a row in a binary file; of a list its count alone.
  std::uint64_t RowSize() const;
  bool HasLists() const;
};

struct ZuPlyHeader {
  eZuPlyForm eForm = eZuPlyAscii;
  std::vector<ZuPlyElement> elements;
  std::uint64_t uLines = 0;  // that have been read
};

using ZuPlySource = ZuLineSource<ZuStdioInput>;

constexpr std::size_t kZuPlyLongestLine = 1024 * 1024;  // bytes

// Reads the header; the source stands behind it then. False, with a fault or a cut among the
// findings, where it is none.
bool ZuReadPlyHeader(ZuPlySource& source, ZuProgress& progress, ZuPlyHeader& header,
                     ZuReadFindings& findings);
