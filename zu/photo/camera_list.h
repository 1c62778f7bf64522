// The cameras of a project and their files. Owns its cameras.
//
// Three text forms: simple, one positional block a camera, { id c xh yh a1 a2 r0 "name" }; full,
// CAMERA { ID 1 C 35.1 ... }; and the adjustment program's lines. The first two are read; of the
// parameters only the last is written.
#pragma once

#include <iosfwd>

#include "zu/export.h"
#include "zu/foundation/list.h"
#include "zu/foundation/read_faults.h"
#include "zu/foundation/string.h"
#include "zu/photo/camera.h"

class ZU_API ZuCameraList : public TZuListHeader<ZuCamera>, public LinkHdl {
 public:
  using TZuListHeader<ZuCamera>::operator=;
  ZuCameraList() = default;
  ZuCameraList(const ZuCameraList& other);
  explicit ZuCameraList(const char* szPath) { Read(szPath); }
  ZuCameraList& operator=(const ZuCameraList& other);

  // Appends the cameras of a file: as full form, and when that gives none as simple form; then
  // TestForMultipleCameras. Always 1, also for a file that cannot be read. Faults of the last
  // file read are counted by GetReadErrorCount.
  int Read(const char* szPath);
  int ReadFileFormatFull(const char* szPath);
  int ReadFileFormatSimple(const char* szPath);
  // Block handlers of a reader: one camera from the block in hand. Always 1.
  int ReadFormatFull(ZuReaderObject* pObject);
  int ReadFormatSimple(ZuReaderObject* pObject);
  // Makes a camera from the reader and appends it, without a look at its id. A simple block that
  // is cut leaves no camera behind: the parser's exception passes on.
  ZuCamera* AddCamera(ZuReaderObject* pObject, bool bFullData);

  // Number of ids held by more than two cameras; each is told on the debug output with a beep.
  // Required: an id that occurs exactly twice passes; a project and its camera file overlap so.
  int TestForMultipleCameras();
  // True when every camera has mode 0, so for an empty list.
  bool ContainsOnlyGentriCams() const;

  // With bGentri the adjustment program's lines; otherwise the simple form when all cameras have
  // mode 0, else the full form. Always 1; a path that does not open is not reported.
  // All forms begin at indent level 0 and put back the level of a writer that was at work.
  // Required: the simple and the full form carry header and empty blocks only.
  int WriteFile(const String& path, bool bGentri) const;
  std::ostream& WriteFile(std::ostream& stream, const bool& bGentri) const;
  int WriteFileFormatFull(const String& path) const;
  std::ostream& WriteSimpleHeaderComment(std::ostream& stream) const;
  std::ostream& WriteSimpleFormat(std::ostream& stream) const;

  // Faults met by the last file read, memory that ended among them, and the line and text of the
  // fault i; 0 and "ParserStatusOK" where there is none.
  int GetReadErrorCount() const { return m_ReadFaults.GetCount(); }
  unsigned int GetReadErrorLine(int i = 0) const { return m_ReadFaults.GetLine(i); }
  const char* GetReadErrorText(int i = 0) const { return m_ReadFaults.GetText(i); }

 private:
  void ReadItems(const char* szPath, ZuReaderObject* pItem);

  ZuReadFaults m_ReadFaults;
};
