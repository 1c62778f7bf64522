// Fits a plane to five points of a wall and measures how far a chimney stands off it.
#include <zu/rectify/calc_plane.h>

#include <cmath>
#include <cstdio>

int main() {
  ZuPointList wall;  // metres
  wall.Add(ZuPoint(1, 0.00, 10.002, 0.0));
  wall.Add(ZuPoint(2, 4.00, 10.398, 0.1));
  wall.Add(ZuPoint(3, 8.00, 10.801, 0.0));
  wall.Add(ZuPoint(4, 0.10, 10.008, 6.0));
  wall.Add(ZuPoint(5, 7.90, 10.791, 6.1));

  ZuCalcPlane calc;
  if (!calc.CalcPlaneFromFilteredPoints(&wall, true, false)) {
    std::fprintf(stderr, "%s\n", calc.GetZuPlaneStatusAsText());
    return 1;
  }
  const ZuPlane& plane = calc.GetPlane();
  std::printf("%.6f x %+.6f y %+.6f z %+.6f = 0\n", plane.A(), plane.B(), plane.C(), plane.D());
  for (const ZuPoint* p = wall.First(); p != nullptr; p = p->Next()) {
    std::printf("point %u: %+.4f m\n", p->GetId(), plane.Dist(*p));
  }

  const ZuPoint chimney(6, 3.0, 8.5, 9.0);
  ZuPoint foot;
  plane.ProjectPoint(&foot, chimney);
  std::printf("chimney: %+.4f m, foot point %.3f %.3f %.3f\n", plane.Dist(chimney), foot.m_dX,
              foot.m_dY, foot.m_dZ);
  return std::fabs(plane.Dist(foot)) < 1e-9 ? 0 : 1;
}
