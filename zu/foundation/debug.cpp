#include "zu/foundation/debug.h"

#include <cstdarg>
#include <cstdio>

#include "zu/foundation/internal/c_format.h"
#include "zu/foundation/unicode.h"

namespace {

#if !defined(NDEBUG)
void WriteToStandardError(void*, char const* szText) { std::fputs(szText, stderr); }
constinit ZuDebugSink theSink = {WriteToStandardError, nullptr};
#else
constinit ZuDebugSink theSink;
#endif

void Send(char const* szText) {
  if (theSink.pfnWrite && szText) theSink.pfnWrite(theSink.pContext, szText);
}

}  // namespace

void dbgprintf(char const* szFormat, ...) {
  if (!theSink.pfnWrite) return;
  char szText[kZuDebugTextSize];
  std::va_list args;
  va_start(args, szFormat);
  zu::internal::FormatInto(szText, kZuDebugTextSize, szFormat, args);
  va_end(args);
  Send(szText);
}

void dbgprintf(wchar_t const* szFormat, ...) {
  if (!theSink.pfnWrite) return;
  wchar_t szText[kZuDebugTextSize];
  std::va_list args;
  va_start(args, szFormat);
  zu::internal::FormatInto(szText, kZuDebugTextSize, szFormat, args);
  va_end(args);
  Send(UniToAnsi(szText)());
}

ZuDebugSink ZuSetDebugSink(ZuDebugSink sink) {
  const ZuDebugSink former = theSink;
  theSink = sink;
  return former;
}
