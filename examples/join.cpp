// Joins two coordinate files by the ids they have in common, and shows what is left at each point.
#include <zu/zu.h>

#include <cstdio>

int main() {
  const eZuPointRWMask columns[] = {eZuPointRWId, eZuPointRWX, eZuPointRWY, eZuPointRWZ,
                                    eZuPointRWEnd};
  ZuPointList source, control, joined;
  source.ReadFile("samples/datum/local.coo", columns);
  control.ReadFile("samples/datum/wgs84.coo", columns);

  ZuTrafo3d trafo;
  if (!trafo.CalcByControlPoints(&control, &source, 3, false)) {
    std::printf("%s\n", GetTrafo3DStatusText(trafo.GetStatus()));
    return 1;
  }
  trafo.Transform(joined, source, &control, false);
  std::printf("scale %.11f\n", trafo.m_dScale);
  for (const ZuPoint* p = joined.First(); p != nullptr; p = p->Next()) {
    std::printf("%2u %8.4f %8.4f %8.4f\n", p->GetId(), p->m_dRedu1, p->m_dRedu2, p->m_dRedu3);
  }
  return 0;
}
