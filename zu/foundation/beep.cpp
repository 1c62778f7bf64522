#include "zu/foundation/beep.h"

#include <cstdio>

#if defined(_WIN32)
#include <io.h>
#else
#include <unistd.h>
#endif

namespace {

bool StandardErrorIsTerminal() {
#if defined(_WIN32)
  return _isatty(_fileno(stderr)) != 0;
#else
  return ::isatty(STDERR_FILENO) != 0;
#endif
}

}  // namespace

void ZuvoBeep(int, int) {
  if (!StandardErrorIsTerminal()) return;
  std::fputc('\a', stderr);
  std::fflush(stderr);
}
