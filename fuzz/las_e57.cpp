// A LAS file; what is exported reads back.
#include <algorithm>
#include <cmath>

#include "fuzz/cloud_use.h"
#include "zu/cloud/las_file.h"

namespace {

// The coordinates, within half a step and the rounding of doubles, of the points that were kept.
void RequireNear(const ZuPointCloud& from, const ZuPointCloud& to, const ZuLasWriting& las) {
  std::size_t i = 0;
  for (const ZuScanPoint3d& p : from.GetPoints()) {
    const double ad[] = {p.x, p.y, p.z};
    if (!std::all_of(ad, ad + 3, [](double d) { return std::fabs(d) < 1e300; })) continue;
    Require(i < to.GetPoints().size());
    const ZuScanPoint3d& q = to.GetPoints()[i++];
    const double adBack[] = {q.x, q.y, q.z};
    for (std::size_t k = 0; k < 3; ++k) {
      const double dLargest = std::max(std::fabs(ad[k]), std::fabs(las.m_adOffset[k]));
      Require(std::fabs(ad[k] - adBack[k]) <= 0.5 * las.m_adResolution[k] + 1e-15 * dLargest);
    }
    Require(p.GetColor() == q.GetColor());
  }
  Require(i == to.GetPoints().size());
}

void ReadLas(const Input& input) {
  ZuPointCloudContainer clouds;
  const ZuCloudReading reading = ZuReadLas(input.Path(), clouds);
  if (reading.m_pCloud == nullptr) return Require(!reading.m_Findings.IsWhole());
  for (const int iMinor : {2, 4}) {
    ZuPointCloudContainer again;
    const ZuLasWriting las =
        ZuWriteLas(Input::OutputPath(), clouds, {0.0, reading.m_eIntensity, iMinor});
    Require(las.m_bGood);
    const ZuCloudReading back = ZuReadLas(Input::OutputPath(), again);
    Require(back.m_pCloud != nullptr && back.m_Findings.IsEmpty());
    RequireNear(*reading.m_pCloud, *back.m_pCloud, las);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t uSize) {
  const Input input(pData, uSize);
  ReadLas(input);
  return 0;
}
