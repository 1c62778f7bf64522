// A LAS file; or behind an 'e' the bytes of an E57 file without its checksums, which are added
// here. What is exported reads back.
#include <algorithm>
#include <cmath>
#include <string>

#include "fuzz/cloud_use.h"
#include "zu/cloud/las_file.h"
#include "zu/exchange/e57_file.h"

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

// Pages of 1,020 bytes, each with its CRC-32C.
std::string Paged(std::string_view text) {
  std::string strPaged;
  for (std::size_t u = 0; u < text.size(); u += 1020) {
    std::string strPage(text.substr(u, 1020));
    strPage.resize(1020);
    std::uint32_t uSum = ~0u;
    for (const char c : strPage) {
      uSum ^= static_cast<unsigned char>(c);
      for (int i = 0; i < 8; ++i) uSum = uSum >> 1 ^ ((uSum & 1) != 0 ? 0x82F63B78u : 0u);
    }
    for (const int iShift : {24, 16, 8, 0}) strPage += static_cast<char>(~uSum >> iShift);
    strPaged += strPage;
  }
  return strPaged;
}

void ReadE57(std::string_view text) {
  const std::string strPaged = Paged(text);
  const Input input(reinterpret_cast<const std::uint8_t*>(strPaged.data()), strPaged.size());
  ZuPointCloudContainer clouds, again;
  const ZuE57Reading reading = ZuReadE57(input.Path(), clouds);
  for (const ZuReadFinding& finding : reading.m_Findings) Require(!finding.m_strText.empty());
  if (reading.m_pCloud == nullptr) return Require(!reading.m_Findings.IsEmpty() || text.empty());
  Require(ZuWriteE57(Input::OutputPath(), clouds, {0.0, reading.m_eIntensity, {}}).m_bGood);
  const ZuE57Reading back = ZuReadE57(Input::OutputPath(), again);
  Require(back.m_Findings.IsWhole());
  const ZuPointCloud* q = again.First();
  for (const ZuPointCloud* p = clouds.First(); p != nullptr; p = p->Next(), q = q->Next()) {
    Require(q != nullptr);
    RequireSamePositions(*p, *q);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t uSize) {
  if (uSize > 0 && pData[0] == 'e') {
    ReadE57({reinterpret_cast<const char*>(pData) + 1, uSize - 1});
    return 0;
  }
  const Input input(pData, uSize);
  ReadLas(input);
  return 0;
}
