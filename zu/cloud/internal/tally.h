// How often something was met in a file, and where first.
#pragma once

#include <cstdint>
#include <string>

#include "zu/foundation/read_findings.h"

struct ZuTally {
  std::uint64_t uCount = 0;
  std::uint64_t uLine = 0;
  std::uint64_t uColumn = 0;

  void Add(std::uint64_t uAtLine, std::uint64_t uAtColumn = 0) {
    if (uCount++ > 0) return;
    uLine = uAtLine;
    uColumn = uAtColumn;
  }

  // "comment lines passed over: 17", unless there is none.
  void Tell(eZuReadKind eKind, const char* szWhat, ZuReadFindings& findings) const {
    if (uCount > 0) findings.Add(eKind, uLine, uColumn, szWhat + (": " + std::to_string(uCount)));
  }
};
