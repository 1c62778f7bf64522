// List of planes, which it owns.
#pragma once

#include "zu/export.h"
#include "zu/foundation/link.h"
#include "zu/foundation/list.h"
#include "zu/foundation/read_faults.h"
#include "zu/foundation/string.h"
#include "zu/rectify/plane.h"

ZU_DECLARE_LIST(ZuPlane);

class ZU_API ZuPlaneList : public TZuListHeader<ZuPlane>, public LinkHdl {
 public:
  using TZuListHeader<ZuPlane>::operator=;
  ZuPlaneList() = default;
  ZuPlaneList(const ZuPlaneList& list) = default;
  ZuPlaneList& operator=(const ZuPlaneList& list) = default;
  // Reads a file, see ReadFile.
  explicit ZuPlaneList(const String& strFileName);

  // Appends the plane that stands at the token in hand; the handler of a plane keyword. A cut
  // record leaves by the parser's exception and enters no plane.
  ZuPlane* AddPlane(ZuReaderObject* pObject);

  // The same for a row in a block of its own, { id "name" A B C D }: moves over the brace first.
  int Read50Plane(ZuReaderObject* pObject);

  // Appends the planes of a file of such blocks. Always 1; what stands before damage is kept.
  int ReadFile(const String& strFileName);
  // Faults met by the last ReadFile, memory that ended among them, and the line and text of the
  // fault i; 0 and "ParserStatusOK" where there is none.
  int GetReadErrorCount() const { return m_ReadFaults.GetCount(); }
  unsigned int GetReadErrorLine(int i = 0) const { return m_ReadFaults.GetLine(i); }
  const char* GetReadErrorText(int i = 0) const { return m_ReadFaults.GetText(i); }

  // The first active plane, or null.
  ZuPlane* GetActivePlane() const;
  int CountActivePlanes() const;

 private:
  ZuReadFaults m_ReadFaults;
};
