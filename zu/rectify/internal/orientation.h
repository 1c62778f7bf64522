// The orientation of three points, on bare coordinates.
#pragma once

// As ZuCounterClockwise tells.
inline int ZuOrientation(double x0, double y0, double x1, double y1, double x2, double y2) {
  const double dx1 = x1 - x0, dy1 = y1 - y0;
  const double dx2 = x2 - x0, dy2 = y2 - y0;
  const double dLeft = dy2 * dx1, dRight = dx2 * dy1;
  if (dLeft > dRight) return 1;
  if (dLeft == dRight && dx2 * dx1 >= 0.0 && dy2 * dy1 >= 0.0) {
    return dx1 * dx1 + dy1 * dy1 < dx2 * dx2 + dy2 * dy2 ? 1 : 0;
  }
  return -1;
}
