// Puts the stations into a local system: x from station 2 to station 1, the xy plane through
// station 3, and station 2 at (1000, 1000, 0).
#include <zu/zu.h>

#include <cstdio>

int main() {
  const eZuPointRWMask columns[] = {eZuPointRWId, eZuPointRWX, eZuPointRWY, eZuPointRWZ,
                                    eZuPointRWEnd};
  ZuPointList stations;
  stations.ReadFile("samples/datum/local.coo", columns);

  ZuLokalSystem system;
  system.m_iAxisMode = eLokalAxisX;
  system.m_uIdA = 2;
  system.m_uIdB = 1;
  system.m_iPlaneMode = eLokalPlaneXY;
  system.m_uIdC = 3;
  system.m_uIdOrigin = 2;
  system.m_dOffsetX = system.m_dOffsetY = 1000.0;

  ZuTrafo3d trafo;
  if (!trafo.CalcByLocalSystem(system, &stations, 1.0, 0.0)) {
    std::printf("%s\n", GetTrafo3DStatusText(trafo.GetStatus()));
    return 1;
  }
  trafo.InPlaceTransform(&stations);
  for (const ZuPoint* p = stations.First(); p != nullptr; p = p->Next()) {
    std::printf("%2u %12.3f %12.3f %12.3f\n", p->GetId(), p->m_dX, p->m_dY, p->m_dZ);
  }
  return 0;
}
