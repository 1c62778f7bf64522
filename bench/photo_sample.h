// A photo, a plane and points for the benchmarks of photos.
#pragma once

#include <cmath>
#include <random>
#include <vector>

#include "tests/support/cameras.h"
#include "zu/photo/photo.h"

namespace photo_sample {

constexpr int kPoints = 4096;

inline ZuPhoto MakePhoto() {
  ZuPhoto photo(1, "a.jpg");
  photo.SetDigiRegion(ZuRegion(0, 0, 639, 479));
  const double pre[9] = {1, 0, 0.5, 0, -1, 479.5, 0, 0, 1};
  const double main[9] = {0.0099, 0, -3.168, 0, 0.0099, -2.376, 0, 0, 1};
  ZuTrafo2d trafo;
  trafo.SetFromMatrix(ZuMatrix(pre, 3, 3), eZuTrafo2DAffin);
  photo.SetReseauPreTrafo(trafo);
  trafo.SetFromMatrix(ZuMatrix(main, 3, 3), eZuTrafo2DHelmert);
  photo.SetReseauMainTrafo(trafo);
  photo.SetCamera(test_cameras::ChessboardRadial());
  photo.SetRotAOR(-0.164, 0.275, -0.0097);
  photo.SetPosAOR(182.94, 83.86, 374.34);
  photo.SetHasAOR(true);
  return photo;
}

inline ZuPlane MakePlane() {
  ZuPlane plane;
  plane.A() = 0.02;
  plane.B() = -0.01;
  plane.C() = std::sqrt(1.0 - 0.0005);
  plane.D() = 1.5;
  return plane;
}

// Points within dHalf of (0, 0), heights within z dHalf.
inline std::vector<ZuPoint> Points(double dHalf, double z) {
  std::mt19937 random(2);
  std::uniform_real_distribution<double> unit(-dHalf, dHalf);
  std::vector<ZuPoint> points;
  for (unsigned int i = 0; i < kPoints; ++i) {
    points.emplace_back(i + 1, unit(random), unit(random), z * unit(random));
  }
  return points;
}

}  // namespace photo_sample
