// Tells the kind of a file by its content; the name and its ending are not looked at.
#pragma once

#include "zu/export.h"

class String;

// Values 9 and 10 are known to applications; the others are this library's.
enum eZuvoFile : int {
  eZuvoFileUnknown = 0,         // missing, empty, or of no known kind
  eZuvoFileCoordinate = 1,      // rows of id or name and coordinates
  eZuvoFileGsi = 2,             // total station, GSI-8 or GSI-16
  eZuvoFileProject = 3,         // PHOTO, ORTHOPHOTO, MEASURE, PLANE or LOKAL blocks
  eZuvoFileCamera = 4,          // CAMERA blocks
  eZuvoFileSimpleCamera = 5,    // { id c xh yh a1 a2 r0 "name" }
  eZuvoFileCloud = 6,           // binary point cloud
  eZuvoFilePts = 7,             // text cloud: rows of x y z and more
  eZuvoFilePly = 8,             // PLY, text or binary
  eZuvoFileReseau = 9,          // a string, then two blocks
  eZuvoFileDigitalCamera = 10,  // blocks that start with a string
  eZuvoFileLas = 11,            // point cloud of LAS or LAZ
  eZuvoFileE57 = 12             // point clouds of E57
};

// "coordinate file", "project file", ...; "unknown file" for other values.
ZU_API const char* GetZuvoFileText(eZuvoFile eType);

class ZU_API ZuDetectZuvoFiles {
 public:
  // Reads the first 64 KiB.
  explicit ZuDetectZuvoFiles(const String& path);
  explicit ZuDetectZuvoFiles(const char* szPath);

  eZuvoFile GetType() const { return m_eType; }
  bool IsType(eZuvoFile eType) const { return m_eType == eType; }

 private:
  eZuvoFile m_eType = eZuvoFileUnknown;
};
