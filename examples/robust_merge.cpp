// Merges two lists some of whose common points are wrong, and tells which.
#include <zu/zu.h>

#include <cstdio>
#include <cstdlib>

int main() {
  const eZuPointRWMask columns[] = {eZuPointRWId, eZuPointRWX, eZuPointRWY, eZuPointRWZ,
                                    eZuPointRWEnd};
  ZuPointList first, second, merged, rejected;
  first.ReadFile("samples/merge/first.coo", columns);
  second.ReadFile("samples/merge/second.coo", columns);

  std::srand(1);  // the samples follow it: the same seed gives the same result
  ZuTrafo3d trafo;
  const eTrafo3DStatus eStatus = trafo.RobustCalcByControlPointsAndTransform(
      &merged, &rejected, nullptr, first, second, 1.0, true, 0.0, 3, false, 1, 0);
  if (eStatus != eTrafo3DOk) {
    std::printf("%s\n", GetTrafo3DStatusText(eStatus));
    return 1;
  }
  std::printf("%d points merged, rms %.4f %.4f %.4f\n", merged.Count(), trafo.GetRmsX(),
              trafo.GetRmsY(), trafo.GetRmsZ());
  for (const ZuPoint* p = rejected.First(); p != nullptr; p = p->Next()) {
    std::printf("rejected %u: off by %.3f %.3f %.3f\n", p->GetId(), p->m_dRedu1, p->m_dRedu2,
                p->m_dRedu3);
  }
  return 0;
}
