// A point found in a picture.
#pragma once

struct ZuDetectedPoint {
  unsigned m_uId = 0;
  // Place [pixel]: whole numbers are pixel centres, (0, 0) the first pixel, y counts down.
  double m_dX = 0.0;
  double m_dY = 0.0;
  // Standard deviations from the picture itself: the residuals of the fit against its gradients.
  // Neighbouring pixels of a camera are not independent, so that they order points better than they
  // tell absolute accuracy.
  double m_dDX = 0.0;
  double m_dDY = 0.0;
};
