// A GSI file of a total station.
#include "fuzz/points_use.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t uSize) {
  const Input input(pData, uSize);
  ZuPointList list;
  const char* const szPath = input.Path();
  const int iCount = list.ReadGsiFile(szPath);
  Require(iCount == list.Count());
  Require(list.ReadGsiFile(szPath) == 2 * iCount);
  UsePoints(list);
  return 0;
}
