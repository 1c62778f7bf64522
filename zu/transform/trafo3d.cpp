#include "zu/transform/trafo3d.h"

namespace {

constexpr double kCoincidentScale = 1e-10;  // scale of a pair of points that coincide [-]

ZuVector Difference(const ZuVector& b, const ZuVector& a) {
  return ZuVector(b[1] - a[1], b[2] - a[2], b[3] - a[3]);
}

}  // namespace

const char* GetTrafo3DStatusText(eTrafo3DStatus eStatus) {
  static const char* const aszText[] = {
      "ok",
      "too few common points",
      "a point of the definition is missing",
      "definition incomplete or contradictory",
      "no solution",
      "scales disagree",
      "scale undefined",
  };
  constexpr int n = static_cast<int>(sizeof(aszText) / sizeof(aszText[0]));
  return eStatus >= 0 && eStatus < n ? aszText[eStatus] : "unknown status";
}

double ZuTrafo3d::CalcScale(const ZuVector& a, const ZuVector& b, double dDistance) {
  const double dLength = Difference(a, b).Abs();
  return dLength == 0.0 ? kCoincidentScale : dDistance / dLength;
}

void ZuTrafo3d::unvect(const ZuVector& a, const ZuVector& b, const ZuVector& c, ZuMatrix* m) {
  m->MakeRotMatrix(a, b, c, nullptr);
}

void ZuTrafo3d::GetCommonIds(ZuIdTable& ids, ZuPointList* pTarget, ZuPointList* pSource) {
  ids.Clear();
  if (pSource == nullptr) return;
  const ZuSortHelper<ZuPoint> target(pTarget);
  for (const ZuPoint* p = pSource->First(); p != nullptr; p = p->Next()) {
    if (p->GetId() != 0 && target.Find(p->GetId()) != nullptr) ids.Add(p->GetId());
  }
}
