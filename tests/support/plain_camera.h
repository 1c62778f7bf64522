// The camera's forward iteration and inverse table as a plain second method: every step written
// out, nothing carried over, one thread. Tests and benchmarks compare the library with it.
#pragma once

#include <algorithm>
#include <cmath>
#include <vector>

#include "zu/photo/camera.h"

namespace plain {

// The correction of the full model at (x, y); returns its squared length.
inline double Correction(const ZuCamera& c, double x, double y, double& dx, double& dy) {
  const double r = std::sqrt(x * x + y * y);
  double tx, ty;
  c.CalcTanDistort(tx, ty, x, y, r);
  const double d = c.CalcdrA1A2A3(r), f = c.CalcdrAffin(x, y), q = r == 0.0 ? 1.0 : r;
  dx = -(x * f / q + x * d + tx);
  dy = -(y * f / q + y * d + ty);
  return dx * dx + dy * dy;
}

// The forward map of mode 2.
inline void AdjustCap(const ZuCamera& c, double& x, double& y) {
  const double xr = x - c.m_dXh, yr = y - c.m_dYh;
  double DX, DY, cx, cy, ux, uy;
  double fPrev = Correction(c, xr, yr, DX, DY), delta0 = 0.0;
  for (int n = 0;;) {
    const double f1 = Correction(c, xr + DX, yr + DY, cx, cy);
    const double delta = std::fabs(std::fabs(fPrev) - std::fabs(f1));
    if (delta0 == 0.0) delta0 = delta;
    double j = 1.0;
    for (;;) {
      const double f2 =
          Correction(c, xr + (j * DX + cx) / (j + 1.0), yr + (j * DY + cy) / (j + 1.0), ux, uy);
      if (delta > std::fabs(std::fabs(f2) - std::fabs(f1))) break;
      j = j + 1.0;
      if (!(j < 10.0)) break;
    }
    DX = (j * DX + cx) / (j + 1.0);
    DY = (j * DY + cy) / (j + 1.0);
    fPrev = f1;
    ++n;
    if (std::fabs(delta) <= 0.0001 || n >= 40) break;
    if (!(std::fabs(2.0 * delta0) > std::fabs(delta))) break;
  }
  x = xr + DX;
  y = yr + DY;
}

class InverseTable {
 public:
  static constexpr int kNodes = 781;

  InverseTable(const ZuCamera& camera, double dLimit)
      : m_dLimit(dLimit), m_dStep(2.0 * dLimit / 780.0), m_nodes(kNodes * kNodes) {
    for (int i = 0; i < kNodes; ++i) {
      for (int j = 0; j < kNodes; ++j) {
        double x = Measured(i), y = Measured(j);
        camera.Adjust(&x, &y);
        m_nodes[static_cast<size_t>(i * kNodes + j)] = {x, y};
      }
    }
  }

  bool LookUp(double* x, double* y) const {
    const double X = *x, Y = *y;
    if (std::fabs(X) >= m_dLimit || std::fabs(Y) >= m_dLimit) return false;
    int iLow = 1, iHigh = 780, jLow = 1, jHigh = 780, i = 0, j = 0;
    bool inI = false, inJ = false;
    while (iLow <= iHigh && jLow <= jHigh && !(inI && inJ)) {
      i = (iLow + iHigh) >> 1;
      j = (jLow + jHigh) >> 1;
      i = std::clamp(i, 1, 780);
      inI = inJ = false;
      if (At(i - 1, j).x > X) {
        iHigh = i - 1;
      } else if (X > At(i, j).x) {
        iLow = i + 1;
      } else {
        inI = true;
      }
      j = std::clamp(j, 1, 780);
      if (At(i, j - 1).y > Y) {
        jHigh = j - 1;
      } else if (Y > At(i, j).y) {
        jLow = j + 1;
      } else {
        inJ = true;
      }
    }
    for (int n = 0; n < 60; ++n) {
      const bool left = At(i - 1, j).x > X, right = X > At(i, j).x;
      if (!left && !right && !(At(i, j - 1).y > Y) && !(Y > At(i, j).y)) break;
      i = std::clamp(left ? i - 1 : right ? i + 1 : i, 1, 780);
      if (At(i, j - 1).y > Y) {
        j = std::clamp(j - 1, 1, 780);
      } else if (Y > At(i, j).y) {
        j = std::clamp(j + 1, 1, 780);
      }
    }
    const double u = (X - At(i - 1, j).x) / (At(i, j).x - At(i - 1, j).x);
    const double v = (Y - At(i, j - 1).y) / (At(i, j).y - At(i, j - 1).y);
    *x = Measured((i - 1) + u);
    *y = Measured((j - 1) + v);
    return true;
  }

 private:
  struct Node {
    double x, y;
  };

  // The product of scale and shift, applied to an index.
  double Measured(double i) const { return m_dStep * i + m_dStep * -390.0; }
  const Node& At(int i, int j) const { return m_nodes[static_cast<size_t>(i * kNodes + j)]; }

  double m_dLimit, m_dStep;
  std::vector<Node> m_nodes;
};

}  // namespace plain
