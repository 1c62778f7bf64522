// Corrects a measured image point for lens distortion and restores it.
#include <zu/photo/camera_list.h>

#include <cmath>
#include <cstdio>

int main(int argc, char** argv) {
  const ZuCameraList cameras(argc > 1 ? argv[1] : "samples/chessboard/cameras.cam");
  const ZuCamera* pCamera = cameras.Find(1u);
  if (pCamera == nullptr) {
    std::fprintf(stderr, "no camera 1 in the file\n");
    return 3;
  }

  double x = 2.5, y = -1.8;  // measured, mm from the image centre
  if (!pCamera->Adjust(&x, &y)) return 4;
  std::printf("corrected  %.6f %.6f mm\n", x, y);

  double xTable = x, yTable = y;  // by table: fast, to a fraction of a pixel
  pCamera->InvAdjust(&xTable, &yTable);
  std::printf("by table   %.6f %.6f mm\n", xTable, yTable);

  const eCameraInverse eStatus = pCamera->InvAdjustExact(&x, &y);
  std::printf("exact      %.6f %.6f mm (%s)\n", x, y, GetCameraInverseText(eStatus));
  return std::hypot(x - 2.5, y + 1.8) < 1e-9 ? 0 : 1;
}
