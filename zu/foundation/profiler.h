// A timer for a stretch of code.
//
//   ZuProfiler profiler("ReadPTS");  // reports at the end of the block
//
// Without a sink it reads no clock.
#pragma once

#include <cstdint>

#include "zu/export.h"

// Gets the name and the time that a stretch took [ns]. Called on the thread that ran it.
struct ZuProfilerSink {
  void (*pfnReport)(void* pContext, char const* szName, std::int64_t iNanoseconds) = nullptr;
  void* pContext = nullptr;
};

// Replaces the sink, which is null at the start, and returns the former one. Not while others run.
ZU_API ZuProfilerSink ZuSetProfilerSink(ZuProfilerSink sink);

class ZU_API ZuProfiler {
 public:
  // The name is not copied.
  explicit ZuProfiler(char const* szName);
  ~ZuProfiler();
  ZuProfiler(ZuProfiler const&) = delete;
  ZuProfiler& operator=(ZuProfiler const&) = delete;

 protected:
  char const* m_szName;   // null without a sink
  std::int64_t m_iStart;  // [ns]
};
