// Points on a plane from single photos, with the standard deviation of each: from the pixel, and
// from camera and orientation where the project carries what an adjustment knew of them.
#include <zu/adjust/plane_point_accuracy.h>
#include <zu/points/point_list.h>
#include <zu/project/plane_measurement.h>
#include <zu/project/project.h>

#include <cstdio>
#include <numbers>

int main() {
  ZuProject project;
  if (!project.Read("samples/chessboard/left.prj")) return 3;
  const eZuPointRWMask columns[] = {eZuPointRWId, eZuPointRWX, eZuPointRWY, eZuPointRWZ,
                                    eZuPointRWEnd};
  ZuPointList board;
  if (board.ReadFile("samples/chessboard/board.coo", columns) < 3) return 3;

  ZuPlaneMeasurement measured;
  if (!measured.FitPlane(board) || !measured.Measure(project, board, false)) return 4;
  ZuPlanePointOptions options;
  options.dSigma = 0.2;  // of a measured coordinate [px]
  for (const ZuMeasuredPhoto& photo : measured.m_photos) {
    const ZuPlanePointChain chain(project, *photo.m_pPhoto, measured.m_plane, nullptr, options);
    const ZuMeasuredPoint& p = photo.m_points.front();
    ZuPlanePointAccuracy accuracy;
    if (!chain.Of(ZuPoint(p.m_uId, p.m_dPixelX, p.m_dPixelY), &accuracy)) return 4;
    std::printf("photo %2u, point %u: %8.3f %8.3f +- %.3f %.3f mm, %2.0f degrees, off %.3f mm\n",
                photo.m_pPhoto->GetId(), p.m_uId, p.m_dX, p.m_dY, accuracy.Sd(0), accuracy.Sd(1),
                accuracy.dIncidence * 180.0 / std::numbers::pi, p.Length());
  }
  return 0;
}
