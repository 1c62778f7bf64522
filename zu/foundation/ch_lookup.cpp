#include <algorithm>

#include "zu/foundation/parser.h"

ZuChLookup::ZuChLookup() {
  std::fill(std::begin(m_aiFlags), std::end(m_aiFlags), 0);
  SetFlags(" \t\n", eZuChSeparator);
  SetFlags(";!", eZuChComment);
  SetFlags('"', eZuChString);
  SetFlags('{', eZuChBlockOpen);
  SetFlags('}', eZuChBlockClose);
}

void ZuChLookup::SetFlags(char const* szBytes, int nFlags) {
  for (; *szBytes != 0; ++szBytes) SetFlags(*szBytes, nFlags);
}

void ZuChLookup::ClearFlags(char const* szBytes, int nFlags) {
  for (; *szBytes != 0; ++szBytes) ClearFlags(*szBytes, nFlags);
}

void ZuParser::SetCommentChar(char c, bool bOn) {
  m_Lookup.ClearFlags(c, bOn ? eZuChSeparator : eZuChComment);
  if (bOn) m_Lookup.SetFlags(c, eZuChComment);
}

void ZuParser::SetTokenseperator(char c, bool bOn) {
  m_Lookup.ClearFlags(c, bOn ? eZuChComment : eZuChSeparator);
  if (bOn) m_Lookup.SetFlags(c, eZuChSeparator);
}

void ZuParser::SetDecPoint(char c) {
  m_Lookup.ClearFlags(c, eZuChSeparator | eZuChComment);
  m_cDecPoint = c;
}
