#include "zu/foundation/profiler.h"

#include <chrono>

namespace {

constinit ZuProfilerSink theSink;

std::int64_t Now() {
  const auto now = std::chrono::steady_clock::now().time_since_epoch();
  return std::chrono::duration_cast<std::chrono::nanoseconds>(now).count();
}

}  // namespace

ZuProfilerSink ZuSetProfilerSink(ZuProfilerSink sink) {
  const ZuProfilerSink former = theSink;
  theSink = sink;
  return former;
}

ZuProfiler::ZuProfiler(char const* szName)
    : m_szName(theSink.pfnReport ? szName : nullptr), m_iStart(m_szName ? Now() : 0) {}

ZuProfiler::~ZuProfiler() {
  if (m_szName && theSink.pfnReport) {
    theSink.pfnReport(theSink.pContext, m_szName, Now() - m_iStart);
  }
}
