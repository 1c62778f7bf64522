// Plane transformations in both forms and local systems; what is written reads back.
#include "fuzz/photo_use.h"
#include "fuzz/points_use.h"
#include "zu/transform/lokal_system.h"
#include "zu/transform/trafo3d.h"

namespace {

bool IsKept(const ZuTrafo2d& trafo) {
  for (int i = 0; i < ZuTrafo2d::kCoefficients; ++i) {
    if (!::IsKept(trafo.GetCoef(i))) return false;
  }
  return true;
}

bool IsKept(const ZuLokalSystem& s) {
  for (const unsigned int uId :
       {s.m_uIdA, s.m_uIdB, s.m_uIdC, s.m_uIdOrigin, s.m_uScale1IdA, s.m_uScale1IdB, s.m_uScale2IdA,
        s.m_uScale2IdB, s.m_uScale3IdA, s.m_uScale3IdB}) {
    if (!::IsKept(uId)) return false;
  }
  for (const double d : {s.m_dOffsetX, s.m_dOffsetY, s.m_dOffsetZ, s.m_dScale1Dist, s.m_dScale2Dist,
                         s.m_dScale3Dist}) {
    if (!::IsKept(d)) return false;
  }
  return true;
}

void CheckTrafo(const ZuTrafo2d& trafo) {
  UseTrafo2d(trafo);
  if (!IsKept(trafo)) return;
  std::ostringstream os;
  trafo.Write(os << "T ") << '\n';
  ZuTrafo2d again;
  ZuReaderObject keywords[] = {{"T", Link(&again, &ZuTrafo2d::Read)}};
  ReadKeywords(Input::Path(os.str()), keywords, false);
  Require(again.GetType() == trafo.GetType());
  if (trafo.GetType() < eZuTrafo2DHelmert || trafo.GetType() > eZuTrafo2DPolynomial) return;
  const int iCount = trafo.GetType() == eZuTrafo2DPolynomial ? 20 : 2 + 2 * trafo.GetType();
  for (int i = 0; i < iCount; ++i) Require(IsClose(again.GetCoef(i), trafo.GetCoef(i)));
}

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

void CheckSystem(const ZuLokalSystem& system) {
  UseSystem(system);
  if (!IsKept(system)) return;
  std::ostringstream os;
  system.Write(os << "LOKAL {\n") << "\n}\n";
  ZuLokalSystem again;
  ZuReaderObject keywords[] = {{"LOKAL", Link(&again, &ZuLokalSystem::Read)}};
  ReadKeywords(Input::Path(os.str()), keywords, false);
  Require(again.m_iAxisMode == system.m_iAxisMode && again.m_uIdC == system.m_uIdC);
  Require(IsClose(again.m_dOffsetZ, system.m_dOffsetZ));
  Require(again.m_uScale3IdB == system.m_uScale3IdB);
  Require(IsClose(again.m_dScale3Dist, system.m_dScale3Dist));
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
  CheckTrafo(trafo);
  CheckTrafo(older);
  CheckSystem(system);
  return 0;
}
