// Brings two measured edges of a building to their corner, in plan.
#include <zu/cad/lines_match.h>

#include <cmath>
#include <cstdio>

int main() {
  const double dExtend = 0.0;         // how far each edge runs on past the corner [m]
  const double dParallelAngle = 1.0;  // below it there is no corner [degrees]
  const ZuCad2LinesMatch match(ZuPoint3d(0.0, 0.0, 3.02), ZuPoint3d(5.9, 0.0, 3.01),  // one edge
                               ZuPoint3d(6.0, 0.2, 2.98), ZuPoint3d(6.0, 4.0, 3.00),  // the other
                               dExtend, dExtend, dParallelAngle, eMatchModeXY);
  if (!match.IsValid() || match.IsParallel()) {
    std::fprintf(stderr, "the edges have no corner\n");
    return 1;
  }
  const ZuPoint3d corner = match.MiddlePoint();
  std::printf("corner %.3f %.3f %.3f, gap %.4f (rating %d)\n", corner.x, corner.y, corner.z,
              match.Distance(), match.ValueDistance());
  std::printf("edge 1 from %.3f %.3f, edge 2 from %.3f %.3f\n", match.Keep1().x, match.Keep1().y,
              match.Keep2().x, match.Keep2().y);
  return std::fabs(corner.x - 6.0) < 1e-12 && std::fabs(corner.y) < 1e-12 ? 0 : 1;
}
