// A camera file of either form, CAMERA { ID 1 C 35.1 ... } or { id c xh yh a1 a2 r0 "name" }, with
// what is wrong in it.
#pragma once

#include <iosfwd>
#include <string>

#include "zu/export.h"
#include "zu/photo/camera_list.h"
#include "zu/project/finding_list.h"

class ZU_API ZuCameraFile {
 public:
  // Reads all that can be read, in place of what was there. True without errors; warnings leave it
  // true. A keyword that was probably meant as another is an error here: the camera would lack a
  // coefficient.
  bool Read(const char* szPath);
  // From the place where the stream stands to its end. strName is the file of the findings.
  bool Read(std::istream& stream, const std::string& strName = "");

  const ZuFindingList& GetFindings() const { return m_Findings; }
  // Another kind of file, of which nothing was read.
  bool IsForeign() const { return m_bForeign; }

  ZuCameraList& CameraList() { return m_Cameras; }
  const ZuCameraList& CameraList() const { return m_Cameras; }

 private:
  bool ReadText(const std::string& strText, const std::string& strName);
  void ReadCameras(const std::string& strText, const std::string& strName);

  ZuCameraList m_Cameras;
  ZuFindingList m_Findings;
  bool m_bForeign = false;
};
