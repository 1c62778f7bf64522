// The road of one measurement: a pixel of an oriented photo becomes a point of a fitted plane.
#include <zu/points/point_list.h>
#include <zu/project/project.h>
#include <zu/rectify/calc_plane.h>

#include <cstdio>

int main() {
  // The photos of the project, with camera, image transformations and exterior orientation.
  ZuProject project;
  if (!project.Read("samples/chessboard/left.prj")) return 3;
  ZuPhoto* pPhoto = project.PhotoList().Find(1u);

  // The plane of the board, fitted to its points.
  const eZuPointRWMask columns[] = {eZuPointRWId, eZuPointRWX, eZuPointRWY, eZuPointRWZ,
                                    eZuPointRWEnd};
  ZuPointList board;
  board.ReadFile("samples/chessboard/board.coo", columns);
  ZuCalcPlane fit;
  if (!fit.CalcPlaneFromFilteredPoints(&board, false, false)) return 4;

  // A pixel, its ray, and where that meets the plane.
  ZuPoint pixel(1, 244.4274, 94.1646);
  pPhoto->ConvertBiko(&pixel, eDigiToAdjusted);
  ZuPoint object(1, 0.0, 0.0);
  if (!pPhoto->CalcSip(&object, fit.GetPlane(), &pixel)) return 4;

  const ZuPoint& truth = *board.Find(1u);
  std::printf("met   %9.4f %9.4f %9.4f mm\n", object.m_dX, object.m_dY, object.m_dZ);
  std::printf("board %9.4f %9.4f %9.4f mm\n", truth.m_dX, truth.m_dY, truth.m_dZ);
  std::printf("apart %9.4f mm\n", object.Distance(truth));
  return object.Distance(truth) < 0.5 ? 0 : 1;
}
