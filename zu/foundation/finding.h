// What a reader or a check has to tell about one place of a file. Those who find something print
// nothing: they hand out findings, and the caller decides what becomes of them.
#pragma once

#include <cstdint>
#include <string>

#include "zu/export.h"

// In order of weight. The values are given out: append, never renumber.
enum eZuSeverity : int {
  eZuSeverityNote,     // nothing is wrong: what the reader took the file for
  eZuSeverityWarning,  // read all the same; the user should know
  eZuSeverityError     // the file does not say what it was meant to say
};

// "note", "warning", "error"; "error" for any other value.
ZU_API const char* GetZuSeverityText(eZuSeverity eSeverity);

struct ZuFinding {
  std::string m_strFile;        // its path or name; empty where the caller knows it
  std::uint64_t m_uLine = 0;    // from 1; 0: the file as a whole
  std::uint64_t m_uColumn = 0;  // from 1, in bytes; 0: the line as a whole
  eZuSeverity m_eSeverity = eZuSeverityError;
  std::string m_strKeyword;  // the keyword or the column it belongs to; may be empty
  std::string m_strText;     // what is wrong; no line end
  std::string m_strRight;    // what would be right: "x y z"; may be empty
};

// "house.prj:12:5", as far as file, line and column are known.
ZU_API std::string GetZuFindingPlace(const ZuFinding& finding);

// What is wrong and what would be right: "2 numbers; x y z would be right".
ZU_API std::string GetZuFindingText(const ZuFinding& finding);

// One line, in the form that editors jump to: "house.prj:12:5: error: 2 numbers; x y z would be
// right".
ZU_API std::string GetZuFindingLine(const ZuFinding& finding);
