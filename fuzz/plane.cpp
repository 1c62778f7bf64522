// Planes, regions and polygons out of keyword files, and plane files; a plane written reads back.
#include "fuzz/photo_use.h"
#include "fuzz/points_use.h"
#include "zu/rectify/calc_plane.h"
#include "zu/rectify/plane_list.h"
#include "zu/rectify/polygon_tools.h"

namespace {

bool IsKept(const ZuPlane& plane) {
  return ::IsKept(plane.GetId()) && ::IsKept(plane.A()) && ::IsKept(plane.B()) &&
         ::IsKept(plane.C()) && ::IsKept(plane.D());
}

void CheckRoundTrip(const ZuPlaneList& list) {
  ZuPlaneList planes;
  for (const ZuPlane* p = list.First(); p != nullptr; p = p->Next()) {
    if (IsKept(*p)) planes.Add(*p);
  }
  std::ostringstream os;
  for (const ZuPlane* p = planes.First(); p != nullptr; p = p->Next())
    p->Write(os << "P {") << "}\n";
  ZuPlaneList again;
  ZuReaderObject keywords[] = {{"P", Link(&again, &ZuPlaneList::AddPlane)}};
  ReadKeywords(Input::Path(os.str()), keywords, false);
  Require(again.Count() == planes.Count());
  const ZuPlane* q = again.First();
  for (const ZuPlane* p = planes.First(); p != nullptr; p = p->Next(), q = q->Next()) {
    Require(p->GetId() == q->GetId() && p->GetName() == q->GetName());
    Require(IsClose(p->A(), q->A()) && IsClose(p->B(), q->B()));
    Require(IsClose(p->C(), q->C()) && IsClose(p->D(), q->D()));
  }
}

void UsePolygon(const ZuPolygon& polygon) {
  for (const ZuPoint* p = polygon.First(); p != nullptr; p = p->Next()) {
    polygon.Overlap(p);
    if (polygon.Count() > 1000) break;  // each test walks the ring
  }
  polygon.Area(true);
  polygon.Length(true);
  polygon.GetRegion().Area();
  polygon.Center();
  ZuPointList path, flat;
  Require(ZuSimpleClosedPath(polygon.GetPoints(), &path) == polygon.Count());
  ZuProjectPointListTo2d(&flat, polygon.GetPoints());
  ZuPointList points(polygon.GetPoints());
  ZuCalcPlane fit;
  if (fit.CalcPlaneFromFilteredPoints(&points, true, false)) UsePlane(fit.GetPlane());
  Require(fit.GetZuPlaneStatusAsText() != nullptr);
}

void UseRegion(const ZuRegion& region) {
  const ZuRegion other(-1.0, -2.0, 3.0, 4.0);
  ZuRegion both = region.Union(other);
  both.Sort();
  region.Intersect(other).Overlap(region);
  region.GetCenter();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t uSize) {
  const Input input(pData, uSize);
  const char* const szPath = input.Path();
  ZuPlaneList planes;
  Require(planes.ReadFile(String(szPath)) == 1);
  Require(planes.CountActivePlanes() >= (planes.GetActivePlane() != nullptr ? 1 : 0));

  ZuRegion region;
  ZuPolygon polygons[] = {ZuPolygon(eLPolygonXY), ZuPolygon(eLPolygonIdXYZ),
                          ZuPolygon(static_cast<ELPolygonMode>(7))};
  ZuReaderObject keywords[] = {{"PLANE", Link(&planes, &ZuPlaneList::AddPlane)},
                               {"REGION", Link(&region, &ZuRegion::Read)},
                               {"RING", Link(&polygons[0], &ZuPolygon::Read)},
                               {"SPACE", Link(&polygons[1], &ZuPolygon::Read)},
                               {"OTHER", Link(&polygons[2], &ZuPolygon::Read)}};
  ReadKeywords(szPath, keywords, (input.Option() & 4U) != 0);
  for (const ZuPolygon& polygon : polygons) UsePolygon(polygon);
  UseRegion(region);
  for (const ZuPlane* p = planes.First(); p != nullptr; p = p->Next()) UsePlane(*p);
  CheckRoundTrip(planes);
  return 0;
}
