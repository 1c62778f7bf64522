// Planes, regions and polygons out of keyword files, and plane files; what is written reads back.
#include "fuzz/photo_use.h"
#include "fuzz/there_and_back.h"
#include "zu/rectify/calc_plane.h"
#include "zu/rectify/plane_list.h"
#include "zu/rectify/polygon_tools.h"

namespace {

// The points as they stand in the file: ids, or a third coordinate, may be in no column.
std::string RowsOf(const ZuPolygon& polygon) {
  std::ostringstream os;
  polygon.Export(os);
  return os.str();
}

// Length of a normal; 0 where its square has no place among the numbers.
double NormalLength(const ZuPlane& plane) {
  const double dLength = std::hypot(plane.A(), plane.B(), plane.C());
  return dLength > 1e-100 && dLength < 1e100 ? dLength : 0.0;
}

// The foot point stands in the plane of a unit normal, as far from the point as Dist tells.
void CheckFootPoint(const ZuPlane& plane) {
  const double dLength = NormalLength(plane);
  if (dLength == 0.0 || !(std::fabs(plane.D()) < 1e6 * dLength)) return;
  ZuPlane unit(plane);
  for (double* pd : {&unit.A(), &unit.B(), &unit.C(), &unit.D()}) *pd /= dLength;
  const ZuPoint point(1, 3.0, -2.0, 5.0);
  ZuPoint foot;
  Require(unit.ProjectPoint(&foot, point));
  Require(std::fabs(unit.FastDist(foot)) <= 1e-8);
  Require(std::fabs(std::fabs(unit.Dist(point)) - foot.Distance(point)) <= 1e-8);
  Require(std::fabs(plane.Dist(point) - unit.Dist(point)) <= 1e-8);
}

// The line of two planes runs in both.
void CheckIntersection(const ZuPlane& a, const ZuPlane& b) {
  ZuVector point(3), direction(3);
  const bool bMet = a.CalcIntersection(point, direction, b);
  if (!bMet || NormalLength(a) == 0.0 || NormalLength(b) == 0.0) return;
  Require(!a.IsParallel(b));
  for (const ZuPlane* p : {&a, &b}) {
    const double dCosine = p->A() * direction[1] + p->B() * direction[2] + p->C() * direction[3];
    Require(std::fabs(dCosine) <= 1e-6 * NormalLength(*p));
  }
  Require(std::fabs(std::hypot(direction[1], direction[2], direction[3]) - 1.0) <= 1e-9);
}

// Each plane meets those that stand before it, and the planes of the axes.
void CheckPlanes(const ZuPlaneList& planes) {
  ZuPlane axes[3];
  axes[0].A() = axes[1].B() = axes[2].C() = 1.0;
  int iLeft = 16;
  for (const ZuPlane* p = planes.First(); p != nullptr && iLeft-- > 0; p = p->Next()) {
    CheckFootPoint(*p);
    for (const ZuPlane& axis : axes) CheckIntersection(*p, axis);
    for (const ZuPlane* q = planes.First(); q != p; q = q->Next()) {
      CheckIntersection(*p, *q);
      const double dAngle = p->CalcAngle(*q);
      Require(std::isnan(dAngle) || dAngle == q->CalcAngle(*p));
    }
  }
}

// No point of a good fit is farther off than all of them together.
void CheckFit(const ZuPointList& points) {
  ZuPointList list(points);
  ZuCalcPlane fit;
  Require(fit.GetZuPlaneStatusAsText() != nullptr);
  if (!fit.CalcPlaneFromFilteredPoints(&list, true, false)) return;
  const ZuPlane& plane = fit.GetPlane();
  UsePlane(plane);
  Require(fit.GetZuPlaneStatus() == ZuCalcPlane::StatusOk);
  double dSize = 1.0;
  for (const ZuPoint* p = list.First(); p != nullptr; p = p->Next()) {
    dSize = std::fmax(dSize, std::fmax(std::fabs(p->m_dX), std::fabs(p->m_dY)));
    dSize = std::fmax(dSize, std::fabs(p->m_dZ));
  }
  if (dSize > 1e100) return;  // squares have no room
  Require(std::fabs(std::hypot(plane.A(), plane.B(), plane.C()) - 1.0) <= 1e-9);
  Require(fit.GetPointsInZuPlane()->Count() == list.Count());
  const double dMost = 1.000001 * fit.GetZuPlaneMediumPointDist() + 1e-6 * dSize;
  for (const ZuPoint* p = list.First(); p != nullptr; p = p->Next()) {
    Require(std::fabs(plane.Dist(*p)) <= dMost);
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
  CheckFit(polygon.GetPoints());
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
  for (const ZuPolygon& polygon : polygons) {
    UsePolygon(polygon);
    CheckThereAndBack(polygon, ZuPolygon(polygon.GetMode()), &RowsOf);
  }
  UseRegion(region);
  CheckThereAndBack(region);
  for (const ZuPlane* p = planes.First(); p != nullptr; p = p->Next()) {
    UsePlane(*p);
    CheckThereAndBack(*p);
  }
  CheckPlanes(planes);
  return 0;
}
