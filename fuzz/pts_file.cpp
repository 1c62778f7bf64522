// A PTS file; what is exported reads back.
#include "zu/cloud/pts_file.h"

#include "fuzz/cloud_use.h"

// By the strict reader: what it took is written so that it takes all of it again.
static void ReadStrictly(const Input& input) {
  ZuPointCloudContainer clouds, again;
  const ZuCloudReading reading = ZuReadPts(input.Path(), clouds);
  if (reading.m_pCloud == nullptr) return;
  Require(ZuWritePts(Input::OutputPath(), clouds, {eZuPtsAuto, reading.m_eIntensity, true}));
  const ZuCloudReading back = ZuReadPts(Input::OutputPath(), again);
  Require(back.m_Findings.IsWhole());
  RequireSamePositions(*reading.m_pCloud, *back.m_pCloud);
  RequireTolerantGoesOn(ZuReadPts, input, reading);
}

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
  ReadStrictly(input);
  return 0;
}
