// The "C" locale for a stretch of code.
//
//   { ZuCLocale locale;  ... }  // numbers have a point here, whatever the application has set
//
// The library's own numbers do not depend on it (zu/foundation/numbers.h); it is for code that goes
// through the run-time's formatting. The locale is that of the process: one thread at a time.
#pragma once

#include "zu/export.h"
#include "zu/foundation/string.h"

class ZU_API ZuCLocale {
 public:
  // Stores the present locale and sets the given one for all categories.
  explicit ZuCLocale(char const* szLocale = "C");
  // Puts the stored locale back, unless it is empty.
  ~ZuCLocale();

  ZuCLocale(ZuCLocale const&) = delete;
  ZuCLocale& operator=(ZuCLocale const&) = delete;

 protected:
  String m_strOldLocale;
};
