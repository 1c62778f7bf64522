// Findings as lines that people and editors read.
#include "zu/foundation/finding.h"

#include <gtest/gtest.h>

TEST(Finding, LinesTellAsMuchOfThePlaceAsIsKnown) {
  const struct {
    ZuFinding finding;
    const char* szLine;
  } cases[] = {
      {{"a.pts", 12, 5, eZuSeverityError, "", "2 numbers", "x y z"},
       "a.pts:12:5: error: 2 numbers; x y z would be right"},
      {{"a.pts", 12, 0, eZuSeverityWarning, "", "comment", ""}, "a.pts:12: warning: comment"},
      {{"a.pts", 0, 5, eZuSeverityNote, "", "blanks", ""}, "a.pts: note: blanks"},
      {{"", 3, 4, eZuSeverityError, "", "cut", ""}, "3:4: error: cut"},
      {{"", 0, 0, static_cast<eZuSeverity>(9), "", "cut", ""}, "error: cut"}};
  for (const auto& c : cases) EXPECT_EQ(GetZuFindingLine(c.finding), c.szLine);
}
