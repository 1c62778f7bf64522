// A keyword file with handlers of every kind; the last byte chooses the reader's options.
#include "fuzz/input.h"
#include "tests/foundation/reader_trace.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t uSize) {
  const Input input(pData, uSize);
  Trace trace;
  // Of a line end, the end of a usual file, no option comes.
  trace.RunFile(input.Path(), static_cast<int>((input.Option() ^ '\n') & 31U));
  Require(trace.m_iResult == 1 && trace.m_bAtRest);

  int iValue = 0;
  ZuReaderObject keywords[] = {{"INT", &iValue}};
  ReadKeywords(input.Path(), keywords, true);
  return 0;
}
