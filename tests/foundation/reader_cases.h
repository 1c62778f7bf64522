// Texts and the notes that a run over them gives.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/foundation/reader_trace.h"

struct ReaderCase {
  std::string strText;
  std::string strNotes;
  int nOptions = Trace::kPlain;
};

// Every case ends with result 1 and gives everything back.
inline void ExpectNotes(const std::vector<ReaderCase>& cases) {
  for (const ReaderCase& c : cases) {
    SCOPED_TRACE(c.strText.substr(0, 100));
    Trace trace;
    EXPECT_EQ(trace.Run(c.strText, c.nOptions), c.strNotes);
    EXPECT_EQ(trace.m_iResult, 1);
    EXPECT_TRUE(trace.m_bAtRest);
  }
}
