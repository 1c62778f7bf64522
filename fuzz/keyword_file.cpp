// A keyword file with handlers of every kind; the first byte chooses the reader's options.
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "tests/foundation/reader_trace.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t uSize) {
  if (uSize == 0) return 0;
  static const TempFile file;
  file.Write(std::string_view(reinterpret_cast<const char*>(pData) + 1, uSize - 1));
  Trace trace;
  trace.RunFile(file.Path(), pData[0] & 31);
  if (trace.m_iResult != 1 || !trace.m_bAtRest) std::abort();
  return 0;
}
