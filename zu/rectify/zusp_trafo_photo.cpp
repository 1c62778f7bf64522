// What a rectification asks of its photo.
#include "zu/photo/photo.h"
#include "zu/rectify/zusp_trafo.h"

namespace {

constexpr int kSegments = 9;  // of an image edge that distortion bends

}  // namespace

double ZuZuspTrafo::GetOriginalPixelArea(const ZuPhoto* pPhoto) const {
  if (pPhoto == nullptr || !pPhoto->IsDigital() || !pPhoto->IsActive()) return 0.0;
  ZuPolygon region(m_polyRegion);
  pPhoto->ConvertList(&region.GetPoints(), eBikoToDigi);
  return region.Area(true);
}

int ZuGetZuspBikoPoints(ZuPointList& out, ZuPhoto* pPhoto, ZuZuspTrafo* pTrafo) {
  if (pTrafo == nullptr) return out.Count();
  if (pTrafo->HasRegion()) {
    const ZuPointList& region = pTrafo->GetRegion().GetPoints();
    if (&out == &region) return out.Count();
    out.Destroy();
    region.CopyTo(&out);
    return out.Count();
  }
  if (pPhoto == nullptr) return out.Count();
  out.Destroy();
  ZuPointList corners(ZuPolygon(pPhoto->GetDigiRegion()).GetPoints());
  if (!pTrafo->CompensateDistortion()) {
    corners.CopyTo(&out);
    pPhoto->ConvertList(&out, eDigiToBiko);
    return out.Count();
  }
  for (ZuPoint* p = corners.First(); p != nullptr; p = p->Next()) {
    pPhoto->ConvertBiko(p, eDigiToBiko);
  }
  for (const ZuPoint* p = corners.First(); p != nullptr; p = p->Next()) {
    const ZuPoint* pNext = p->Next() != nullptr ? p->Next() : corners.First();
    const ZuPoint step = (*pNext - *p) / kSegments;
    for (int i = 0; i < kSegments; ++i) out.Add(*p + step * i);
  }
  out.Renumber(1, nullptr, 1);
  return out.Count();
}
