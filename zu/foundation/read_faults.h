// The faults that the reading of one file met, for records that read whole files and are asked
// afterwards.
#pragma once

#include <vector>

#include "zu/export.h"
#include "zu/foundation/link.h"
#include "zu/foundation/parser.h"

class ZuReader;

class ZU_API ZuReadFaults : public LinkHdl {
 public:
  // Of a new reading. Until Follow is called its fault is that no memory was found to begin.
  void Begin();
  // Notes the faults of the reader from here on, each of which ends its items as without a handler.
  // This object must outlive the reader.
  void Follow(ZuReader* pReader);
  // No reading, no fault.
  void Clear() { m_aFaults.clear(), m_bBegun = false; }

  int GetCount() const { return m_bBegun ? 1 : static_cast<int>(m_aFaults.size()); }
  // Of the fault i, from 0: its line and the name of its status; 0 and "ParserStatusOK" where there
  // is none.
  unsigned int GetLine(int i) const { return Get(i).m_uLine; }
  const char* GetText(int i) const { return GetZuParserStatusText(Get(i).m_eStatus); }

 private:
  long Note(ZuReader* pReader);
  ZuParserStatus Get(int i) const;

  std::vector<ZuParserStatus> m_aFaults;
  bool m_bBegun = false;
};
