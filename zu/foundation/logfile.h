// A plain text stream for reports. It is opened for appending and starts each report with a header.
//
//   ZuLogfile log("planes.log");
//   plane.WriteLogfile(log);
#pragma once

#include <fstream>

#include "zu/export.h"
#include "zu/foundation/object.h"

class ZU_API ZuLogfile : public std::ofstream, public ZuObject {
 public:
  ZuLogfile();
  // Opens the file (path in UTF-8). Numbers are written as in "C". The mode is kept for callers
  // that name one; reports are always appended.
  explicit ZuLogfile(char const* szName, int iMode = 1);

  // Writes a line of 132 slashes, "//  ", the time as ctime has it with its line end, and "//  ".
  void WriteSmallHeader();

 protected:
  // Opens for appending, then writes the header. A file that does not open leaves the fail bit.
  void OpenFile(char const* szName);
};
