// Networks with known truth: photos around a small relief, image points with noise of a seed.
#pragma once

#include <random>

#include "tests/support/test.h"
#include "zu/adjust/network.h"

struct MadeNetwork {
  enum Kind { Convergent, Parallel, ParallelFlat, Unrolled };

  // Photos 1 to n, points 101 ..., a CAP camera of 24 mm; sigma of the image points in mm.
  MadeNetwork(Kind eKind, int iPhotos, unsigned uSeed, double dSigma = 0.0005) : m_random(uSeed) {
    ZuNetworkCamera camera;
    camera.camera = ZuCamera(1, 24.0, 0.05, -0.03, -1e-4, 1e-7, 0.0);
    camera.camera.m_iMode = eCameraModeCap;
    camera.camera.m_dC1 = 1e-5;
    if (eKind == Parallel || eKind == ParallelFlat) {  // distortion would tell the principal point
      camera.camera.m_dA1 = camera.camera.m_dA2 = camera.camera.m_dC1 = 0.0;
    }
    network.cameras.push_back(camera);
    for (int i = 0; i < 6; ++i) {
      for (int k = 0; k < 6; ++k) {
        ZuNetworkPoint point;
        point.uId = static_cast<unsigned>(101 + 6 * i + k);
        const double z = eKind == ParallelFlat ? 0.0 : 0.3 * ((3 * i + 5 * k) % 7 - 3.0) / 3.0;
        point.adPosition = {0.4 * i - 1.0, 0.4 * k - 1.0, z};
        network.points.push_back(point);
      }
    }
    for (int i = 0; i < iPhotos; ++i) {
      const double t = 2.0 * std::numbers::pi * i / iPhotos;
      const bool bParallel = eKind == Parallel || eKind == ParallelFlat;
      const double dTilt = bParallel ? 0.0 : 0.6;
      const double dRoll = eKind == Convergent ? 0.5 * std::numbers::pi * (i % 4) : 0.0;
      AddPhoto(static_cast<unsigned>(i + 1), bParallel ? 0.0 : t, dTilt, dRoll,
               bParallel ? std::array<double, 3>{0.5 * std::cos(t), 0.5 * std::sin(t),
                                                 4.0 + 0.02 * (i % 3)}
                         : std::array<double, 3>{});
    }
    Measure(dSigma);
  }

  // Free parameters of the camera.
  void Estimate(std::initializer_list<int> parameters) {
    for (const int k : parameters) network.cameras[0].adSd[static_cast<size_t>(k)] = kZuNetworkFree;
  }
  // Nine points as control; sd 0 is fixed.
  void Control(double dSd) {
    for (const size_t i : {0, 3, 5, 14, 18, 21, 30, 33, 35}) {
      ZuNetworkPoint& point = network.points[i];
      point.iControl = 7;
      for (size_t k = 0; k < 3; ++k) point.adGiven[k] = truth[i][k] + dSd * Noise();
      point.adGivenSd = {dSd, dSd, dSd};
    }
  }
  // Start values off by that share of the distances, and by an angle [rad].
  void Disturb(double dShare, double dAngle) {
    for (ZuNetworkPhoto& photo : network.photos) {
      for (double& d : photo.adPosition) d *= 1.0 + dShare * Noise();
      const double a = dAngle, c = std::cos(a), s = std::sin(a);
      auto& r = photo.adRotation;  // about its x axis
      for (size_t i = 0; i < 9; i += 3) {
        const double y = r[i + 1], z = r[i + 2];
        r[i + 1] = c * y + s * z;
        r[i + 2] = c * z - s * y;
      }
    }
    for (ZuNetworkPoint& point : network.points) {
      for (double& d : point.adPosition) d += 0.3 * dShare * Noise();
    }
  }
  double Noise() { return m_normal(m_random); }

  ZuNetwork network;
  std::vector<std::array<double, 3>> truth;

 private:
  void AddPhoto(unsigned uId, double t, double dTilt, double dRoll,
                std::array<double, 3> position) {
    const double ct = std::cos(t), st = std::sin(t), cp = std::cos(dTilt), sp = std::sin(dTilt);
    const double x[3] = {-st, ct, 0.0}, z[3] = {ct * sp, st * sp, cp};
    const double y[3] = {z[1] * x[2] - z[2] * x[1], z[2] * x[0] - z[0] * x[2],
                         z[0] * x[1] - z[1] * x[0]};
    ZuNetworkPhoto photo;
    photo.uId = uId;
    const double cr = std::cos(dRoll), sr = std::sin(dRoll);
    for (size_t i = 0; i < 3; ++i) {
      photo.adRotation[3 * i] = cr * x[i] + sr * y[i];
      photo.adRotation[3 * i + 1] = cr * y[i] - sr * x[i];
      photo.adRotation[3 * i + 2] = z[i];
      photo.adPosition[i] = dTilt > 0.0 ? 4.0 * z[i] : position[i];
    }
    network.photos.push_back(photo);
  }

  void Measure(double dSigma) {
    const ZuCamera& camera = network.cameras[0].camera;
    for (const ZuNetworkPoint& point : network.points) truth.push_back(point.adPosition);
    for (int i = 0; i < static_cast<int>(network.photos.size()); ++i) {
      const ZuNetworkPhoto& photo = network.photos[static_cast<size_t>(i)];
      for (int k = 0; k < static_cast<int>(network.points.size()); ++k) {
        double v[3] = {};
        for (size_t a = 0; a < 3; ++a) {
          for (size_t b = 0; b < 3; ++b) {
            v[a] += photo.adRotation[3 * b + a] *
                    (truth[static_cast<size_t>(k)][b] - photo.adPosition[b]);
          }
        }
        double x = -camera.m_dC * v[0] / v[2], y = -camera.m_dC * v[1] / v[2];
        if (camera.InvAdjustExact(&x, &y) != eCameraInverseOk) continue;
        ZuNetworkImagePoint image;
        image.iPhoto = i;
        image.iPoint = k;
        image.x = x + dSigma * Noise();
        image.y = y + dSigma * Noise();
        image.sxx = image.syy = dSigma > 0.0 ? dSigma * dSigma : 1e-8;
        network.images.push_back(image);
      }
    }
  }

  std::mt19937 m_random;
  std::normal_distribution<double> m_normal;
};
