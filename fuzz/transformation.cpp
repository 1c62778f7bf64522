// Plane transformations in both forms and local systems; what is written reads back.
#include "fuzz/photo_use.h"
#include "fuzz/there_and_back.h"
#include "zu/transform/lokal_system.h"
#include "zu/transform/trafo3d.h"

namespace {

void UseSystem(const ZuLokalSystem& system) {
  ZuPointList points;
  for (unsigned int uId = 1; uId <= 5; ++uId) {
    points.Add(ZuPoint(uId, 0.5 * uId, uId % 2 == 0 ? 1.0 : 0.0, 3.0 - uId));
  }
  eTrafo3DStatus eStatus = eTrafo3DOk;
  system.IsValid(eStatus, &points, true);
  ZuLokalSystem adjusted(system);
  adjusted.AdjustPlanebyAxisMode();
  ZuTrafo3d trafo;
  const bool bGood = trafo.CalcByLocalSystem(adjusted, &points, 0.0, 0.01);
  Require(!bGood || trafo.GetStatus() == eTrafo3DOk);
  Require(GetTrafo3DStatusText(trafo.GetStatus()) != nullptr);
  trafo.InPlaceTransform(&points);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t uSize) {
  const Input input(pData, uSize);
  ZuTrafo2d trafo, older;
  ZuLokalSystem system;
  ZuReaderObject keywords[] = {{"TRAFO2D", Link(&trafo, &ZuTrafo2d::Read)},
                               {"PRERESTRAFO", Link(&trafo, &ZuTrafo2d::Read)},
                               {"PRERESEAU", Link(&older, &ZuTrafo2d::ReadV50)},
                               {"LOKAL", Link(&system, &ZuLokalSystem::Read)}};
  ReadKeywords(input.Path(), keywords, (input.Option() & 4U) != 0);
  for (const ZuTrafo2d& t : {trafo, older}) {
    UseTrafo2d(t);
    CheckThereAndBack(t);
  }
  UseSystem(system);
  CheckThereAndBack(system);
  return 0;
}
