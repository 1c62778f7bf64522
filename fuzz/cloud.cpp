// Cloud files of all three kinds out of any bytes.
#include <cstdint>
#include <string_view>

#include "tests/support/temp_file.h"
#include "zu/cloud/point_cloud_container.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t uSize) {
  static const TempFile file;
  file.Write(std::string_view(reinterpret_cast<const char*>(pData), uSize));
  ZuPointCloudContainer clouds;
  clouds.Read(file.Path());
  clouds.ReadPtsFile(file.Path());
  clouds.ObsolteReadPlyFile(file.Path());
  for (ZuPointCloud* p = clouds.GetClouds().First(); p != nullptr; p = p->Next()) {
    p->ZSort(true);
    p->DeleteSelected();
    p->UndoDelete();
    p->CalcEstimatedNormals();
  }
  return 0;
}
