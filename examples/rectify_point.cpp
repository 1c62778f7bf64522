// Carries a measured image point through a rectification of a plane, and back.
#include <zu/rectify/zusp_trafo.h>

#include <cmath>
#include <cstdio>

int main() {
  const double plane[9] = {0.5, 0.02, 2.5, -0.01, 0.5, 1.25, 0.002, 0.001, 1.0};
  const double space[16] = {1, 0, 0, 100, 0, 0, -1, 200, 0, 1, 0, 50, 0, 0, 0, 1};
  ZuZuspTrafo facade;
  facade.SetZuspMat(ZuMatrix(plane, 3, 3));   // image to facade
  facade.SetTransMat(ZuMatrix(space, 4, 4));  // facade to object

  ZuPoint point(1, 3.0, -2.0);  // mm in the image
  facade.Transform(&point, &point);
  std::printf("object %.4f %.4f %.4f\n", point.m_dX, point.m_dY, point.m_dZ);
  facade.InvTransform(&point);
  std::printf("image  %.4f %.4f\n", point.m_dX, point.m_dY);
  return std::hypot(point.m_dX - 3.0, point.m_dY + 2.0) < 1e-9 ? 0 : 1;
}
