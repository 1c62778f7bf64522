// A PTS file; what is exported reads back.
#include "fuzz/cloud_use.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t uSize) {
  const Input input(pData, uSize);
  ZuPointCloudContainer clouds;
  ZuPointCloud* pCloud = clouds.ReadPtsFile(input.Path());
  Require(pCloud != nullptr);
  Require(clouds.ExportPtsFile(Input::OutputPath()) == 1);
  ZuPointCloudContainer again;
  const ZuPointCloud* pAgain = again.ReadPtsFile(Input::OutputPath());
  Require(pAgain != nullptr);
  RequireSamePoints(*pCloud, *pAgain);
  UseClouds(clouds);
  return 0;
}
