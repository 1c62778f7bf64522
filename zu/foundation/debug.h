// Debug output, independent of logging: one formatted text, handed to a sink.
//
// The formats are those of printf, whatever the process locale; in the wide form %ls is a wide text
// and %s an 8-bit one. The text is cut at kZuDebugTextSize - 1 characters. Nothing is added to it.
#pragma once

#include "zu/export.h"

constexpr int kZuDebugTextSize = 2048;  // [characters, terminator included]

[[gnu::format(printf, 1, 2)]] ZU_API void dbgprintf(char const* szFormat, ...);
ZU_API void dbgprintf(wchar_t const* szFormat, ...);

// Where debug output goes: a function and the context it is called with. The text is UTF-8 and
// holds for the call alone.
struct ZuDebugSink {
  void (*pfnWrite)(void* pContext, char const* szText) = nullptr;
  void* pContext = nullptr;
};

// Replaces the sink and returns the former one; a null function makes debug output silent. At the
// start it is silent, in builds with assertions standard error. One thread at a time.
ZU_API ZuDebugSink ZuSetDebugSink(ZuDebugSink sink);
