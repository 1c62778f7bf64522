// What a reader has to tell about one place of a file. It prints nothing: the caller decides what
// becomes of it.
#pragma once

#include <string>

namespace cli {

enum eSeverity {
  eSeverityWarning,  // read all the same; the user should know
  eSeverityError     // the file does not say what it was meant to say
};

struct Finding {
  eSeverity eLevel = eSeverityError;
  unsigned uLine = 0;      // from 1; 0: the file as a whole
  unsigned uColumn = 0;    // from 1, in bytes; 0: the line as a whole
  std::string strKeyword;  // the keyword it belongs to; may be empty
  std::string strText;     // what is wrong
  std::string strRight;    // what would be right; may be empty
};

}  // namespace cli
