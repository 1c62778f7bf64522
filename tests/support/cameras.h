// Cameras for tests: those of the chessboard photos, and calibrations from mild to strong.
#pragma once

#include <string>
#include <vector>

#include "zu/photo/camera.h"

namespace test_cameras {

struct NamedCamera {
  std::string strName;
  ZuCamera camera;
};

inline ZuCamera Make(unsigned int uId, int iMode, double c, double xh, double yh, double a1,
                     double a2, double r0, double dRMax) {
  ZuCamera camera(uId, c, xh, yh, a1, a2, r0, "");
  camera.m_iMode = iMode;
  camera.m_dRMax = dRMax;
  return camera;
}

// The radial and the CAP camera of samples/chessboard.
inline ZuCamera ChessboardRadial() {
  return Make(1, eCameraModeZuvo, 4.915686, 0.227808, 0.065727, -0.00966481955, -0.000198009113,
              2.5, 4.4);
}

inline ZuCamera ChessboardCap() {
  ZuCamera camera = Make(2, eCameraModeCap, 4.914537, 0.216378, 0.058658, -0.0124320151,
                         2.98725294e-05, 2.5, 4.4);
  camera.m_dA3 = 1.32013802e-05;
  camera.m_dB1 = -0.000495546107;
  camera.m_dB2 = 7.53850806e-05;
  camera.m_dC1 = 3.58640912e-05;
  camera.m_dC2 = -0.000285451769;
  return camera;
}

// A total-station camera: the correction is reduced to a second principal point.
inline ZuCamera Viva() {
  ZuCamera camera = Make(3, eCameraModeViva, 21.0, 0.02, -0.03, -2.1e-4, 3.0e-7, 2.4, 4.0);
  camera.m_dXhViva = 0.35;
  camera.m_dYhViva = -0.18;
  return camera;
}

// Lenses from a metric camera to a wide angle, each with the half-width of its image as domain.
inline std::vector<NamedCamera> Calibrations() {
  std::vector<NamedCamera> cameras = {
      {"metric, 150 mm", Make(11, 0, 152.7, 0.004, -0.011, -1.1e-8, 4.0e-13, 80.0, 115.0)},
      {"normal, 50 mm on 36 x 24", Make(12, 0, 50.2, 0.12, -0.07, -2.9e-5, 2.0e-8, 12.0, 18.5)},
      {"wide, 24 mm on 36 x 24", Make(13, 0, 24.6, -0.05, 0.11, -1.6e-4, 1.7e-7, 12.0, 18.5)},
      {"wide, 20 mm, barrel and moustache",
       Make(14, 0, 20.4, 0.08, 0.02, -2.4e-4, 3.9e-7, 13.0, 18.5)},
      {"pincushion zoom", Make(15, 0, 70.0, 0.2, 0.1, 2.2e-5, -1.1e-8, 10.0, 18.5)},
      {"chessboard, radial", ChessboardRadial()},
      {"total station", Viva()},
      {"chessboard, CAP", ChessboardCap()},
  };
  ZuCamera cap = Make(16, eCameraModeCap, 35.2, 0.15, -0.12, -9.0e-5, 8.0e-8, 12.0, 18.5);
  cap.m_dA3 = -2.0e-11;
  cap.m_dB1 = -4.0e-5;
  cap.m_dB2 = 2.0e-5;
  cap.m_dC1 = 6.0e-6;
  cap.m_dC2 = -4.0e-6;
  cameras.push_back({"CAP, 35 mm", cap});
  ZuCamera mild = Make(17, eCameraModeCap, 85.0, 0.02, 0.03, -3.0e-6, 1.0e-9, 12.0, 18.5);
  mild.m_dC1 = 1.0e-6;
  cameras.push_back({"CAP, 85 mm", mild});
  return cameras;
}

}  // namespace test_cameras
