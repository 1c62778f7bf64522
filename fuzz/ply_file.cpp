// A PLY file; what is exported reads back.
#include "zu/cloud/ply_file.h"

#include "fuzz/cloud_use.h"

// By the strict reader: what it took comes back from each form that is written.
static void ReadStrictly(const Input& input) {
  ZuPointCloudContainer clouds;
  const ZuCloudReading reading = ZuReadPly(input.Path(), clouds);
  if (reading.m_pCloud == nullptr) return;
  RequireTolerantGoesOn(ZuReadPly, input, reading);
  for (const eZuPlyForm eForm : {eZuPlyAscii, eZuPlyBinaryLittle, eZuPlyBinaryBig}) {
    ZuPointCloudContainer again;
    Require(ZuWritePly(Input::OutputPath(), clouds, eForm, reading.m_eIntensity));
    const ZuCloudReading back = ZuReadPly(Input::OutputPath(), again);
    Require(back.m_Findings.IsWhole());
    const auto &points = reading.m_pCloud->GetPoints(), &copies = back.m_pCloud->GetPoints();
    Require(points.size() == copies.size());
    for (std::size_t i = 0; i < points.size(); ++i) {
      Require(IsSame(points[i].x, copies[i].x) && IsSame(points[i].m_fNZ, copies[i].m_fNZ));
      Require(points[i].m_uColor == copies[i].m_uColor || reading.m_eIntensity == eZuIntensity2000);
    }
  }
}

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
  ReadStrictly(input);
  return 0;
}
