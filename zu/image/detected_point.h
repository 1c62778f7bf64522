// A point found in a picture.
#pragma once

#include <cmath>

// What print, optics and sensor add to each coordinate of a point, whatever the noise of its
// picture [pixel]: centres and corners repeat to 0.02 to 0.05 pixel in real pictures (T. Luhmann et
// al.: Close-Range Photogrammetry and 3D Imaging, 2014, chapter 5); the upper end, since a
// deviation told too small makes an adjustment reject good points.
constexpr double kZuSigmaFloor = 0.05;

struct ZuDetectedPoint {
  unsigned m_uId = 0;
  // Place [pixel]: whole numbers are pixel centres, (0, 0) the first pixel, y counts down.
  double m_dX = 0.0;
  double m_dY = 0.0;
  // Standard deviations [pixel]: from the picture itself, by the residuals of the fit against its
  // gradients, and in quadrature the floor that the caller of the detection gives. Neighbouring
  // pixels of a camera are not independent, so that the first part alone orders points better than
  // it tells absolute accuracy. 0: not known.
  double m_dDX = 0.0;
  double m_dDY = 0.0;

  // Adds a deviation of both coordinates that is independent of theirs, in quadrature.
  void AddDeviation(double d) {
    m_dDX = std::hypot(m_dDX, d);
    m_dDY = std::hypot(m_dDY, d);
  }
};
