// The log file of last resort: "ZuvoProtokoll.log" in the user's state folder ($XDG_STATE_HOME,
// else .local/state of the home folder; without either, nothing is written).
#pragma once

#include "zu/export.h"
#include "zu/foundation/logger.h"

class ZU_API ZuZuvoDebugLogger : public ZuLogger {
 public:
  // Appends one line, the file being opened and closed for it: the level, " : ", and the address of
  // the text. A link at its place is not followed. Returns 0.
  //
  // Required: the address and not the message. The file may be handed on, and names of projects and
  // points stay out of it; lines are matched with a debugger's view of the process.
  int Log(int iLevel, wchar_t const* szText) override;
};

// Adds the one debug logger of the process to the registered master, and takes it off again; each
// logs its own name at level 4. Nothing happens without a master, or where that is done already.
ZU_API void InstallZuvoDebugLogger();
ZU_API void UninstallZuvoDebugLogger();
ZU_API bool IsZuvoDebugLoggerInstalled();
