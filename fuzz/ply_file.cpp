// A PLY file; what is exported reads back.
#include "fuzz/cloud_use.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t uSize) {
  const Input input(pData, uSize);
  ZuPointCloudContainer clouds;
  ZuPointCloud* pCloud = clouds.ObsolteReadPlyFile(input.Path());
  Require(pCloud != nullptr);
  Require(clouds.ExportPlyFile(Input::OutputPath()) == 1);
  ZuPointCloudContainer again;
  const ZuPointCloud* pAgain = again.ObsolteReadPlyFile(Input::OutputPath());
  Require(pAgain != nullptr);
  RequireSamePoints(*pCloud, *pAgain);
  UseClouds(clouds);
  return 0;
}
