// Points to be fitted: random ones from a seed, the same on every machine.
#pragma once

#include <Eigen/Dense>
#include <cmath>
#include <random>
#include <vector>

#include "zu/adjust/fit_primitives.h"

class FitPoints {
 public:
  explicit FitPoints(unsigned long long uSeed) : m_engine(uSeed) {}

  double Uniform(double dLow, double dHigh) {
    return dLow + static_cast<double>(m_engine() >> 11) * 0x1p-53 * (dHigh - dLow);
  }
  double Normal() {
    const double r = std::sqrt(-2.0 * std::log(Uniform(1e-300, 1.0)));
    return r * std::cos(Uniform(0.0, 6.283185307179586));
  }
  Eigen::Vector3d NormalVector() {
    const double x = Normal(), y = Normal(), z = Normal();
    return {x, y, z};
  }
  Eigen::Matrix3d Rotation() {
    const double w = Normal();
    const Eigen::Vector3d v = NormalVector();
    return Eigen::Quaterniond(w, v[0], v[1], v[2]).normalized().toRotationMatrix();
  }
  static ZuFitPoint Point(unsigned uId, const Eigen::Vector3d& x) {
    ZuFitPoint p;
    p.uId = uId;
    for (int a = 0; a < 3; ++a) p.adX[a] = x[a];
    return p;
  }
  // Spread over dLength x dWidth of a turned plane, with noise along its normal.
  std::vector<ZuFitPoint> Wall(int n, double dLength, double dWidth, double dNoise,
                               double dOffset) {
    const Eigen::Matrix3d turn = Rotation();
    std::vector<ZuFitPoint> points;
    for (int i = 0; i < n; ++i) {
      const double x = Uniform(-0.5, 0.5) * dLength, y = Uniform(-0.5, 0.5) * dWidth;
      points.push_back(Point(
          static_cast<unsigned>(i + 1),
          turn * Eigen::Vector3d(x, y, dNoise * Normal()) + Eigen::Vector3d::Constant(dOffset)));
    }
    return points;
  }

 private:
  std::mt19937_64 m_engine;
};
