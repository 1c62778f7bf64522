// A binary cloud file; what is written reads back and is written the same again.
#include "fuzz/cloud_use.h"

namespace {

std::string Written(ZuPointCloudContainer& clouds) {
  static const TempFile file;
  Require(clouds.Write(file.Path()) == 1 && clouds.GetDirty() == 0);
  return file.Read();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t uSize) {
  const Input input(pData, uSize);
  ZuPointCloudContainer clouds;
  Require(clouds.Read(input.Path()) == clouds.GetClouds().Count());
  const std::string strFirst = Written(clouds);
  ZuPointCloudContainer again;
  Require(again.Read(Input::Path(strFirst)) == clouds.GetClouds().Count());
  Require(Written(again) == strFirst && again.Size() == clouds.Size());
  UseClouds(clouds);
  return 0;
}
