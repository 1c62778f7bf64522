// Synthetic networks of a size, the same for every program that adjusts them.
#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>
#include <random>
#include <utility>
#include <vector>

#include "zu/adjust/network.h"

namespace network_problem {

// Photos that look at a place from a position, rolled about their axis.
inline ZuNetworkPhoto LookAt(unsigned uId, const std::array<double, 3>& from, double dAtX,
                             double dAtY, double dRoll) {
  ZuNetworkPhoto photo;
  photo.uId = uId;
  photo.adPosition = from;
  std::array<double, 3> z{from[0] - dAtX, from[1] - dAtY, from[2]};
  const double d = std::sqrt(z[0] * z[0] + z[1] * z[1] + z[2] * z[2]);
  for (double& c : z) c /= d;
  const double e = std::hypot(z[0], z[2]);
  const std::array<double, 3> u{z[2] / e, 0.0, -z[0] / e};
  const std::array<double, 3> v{z[1] * u[2] - z[2] * u[1], z[2] * u[0] - z[0] * u[2],
                                z[0] * u[1] - z[1] * u[0]};
  for (size_t i = 0; i < 3; ++i) {
    photo.adRotation[3 * i] = std::cos(dRoll) * u[i] + std::sin(dRoll) * v[i];
    photo.adRotation[3 * i + 1] = std::cos(dRoll) * v[i] - std::sin(dRoll) * u[i];
    photo.adRotation[3 * i + 2] = z[i];
  }
  return photo;
}

class Maker {
 public:
  // Photos around an object, each with some of its points, as for close-range calibration.
  static ZuNetwork Ring(int iPhotos, int iPoints, double dShare) {
    Maker m;
    for (int i = 0; i < iPhotos; ++i) {
      const double t = 2.0 * std::numbers::pi * i / iPhotos;
      m.AddPhoto({3.0 * std::cos(t) + 0.3 * m.Noise(), 3.0 * std::sin(t) + 0.3 * m.Noise(), 3.0},
                 0.0, 0.0);
    }
    for (int k = 0; k < iPoints; ++k) {
      m.AddPoint({2.0 * m.Even() - 1.0, 2.0 * m.Even() - 1.0, 0.6 * m.Even()});
      for (int i = 0; i < iPhotos; ++i) {
        if (m.Even() < dShare) m.Measure(i, k);
      }
    }
    return m.Finish();
  }

  // Rows of photos over ground, points in the six photos next to each.
  static ZuNetwork Block(int iPhotos, int iPoints) {
    const int iColumns = std::max(5, static_cast<int>(std::sqrt(1.25 * iPhotos)));
    Maker m;
    for (int i = 0; i < iPhotos; ++i) {
      const double x = i % iColumns, y = i / iColumns;
      m.AddPhoto({x + 0.6 * (i % 3 - 1), y + 0.3 * (i % 5 - 2), 3.0}, x, y);
    }
    const int iRows = (iPhotos - 1) / iColumns;
    for (int k = 0; k < iPoints; ++k) {
      const double x = m.Even() * (iColumns - 1), y = m.Even() * iRows;
      m.AddPoint({x, y, 0.3 * m.Even()});
      std::vector<std::pair<double, int>> near;
      for (int i = std::max(0, static_cast<int>(y) - 3) * iColumns;
           i < std::min(iPhotos, static_cast<int>(y + 4.0) * iColumns); ++i) {
        const double d = std::hypot(i % iColumns - x, i / iColumns - y);
        if (d < 3.0) near.emplace_back(d, i);
      }
      std::sort(near.begin(), near.end());
      if (near.size() > 6) near.resize(6);
      for (const auto& photo : near) m.Measure(photo.second, k);
    }
    return m.Finish();
  }

 private:
  Maker() {
    ZuNetworkCamera camera;
    camera.camera = ZuCamera(1, 24.0, 0.05, -0.03, -1e-4, 1e-7, 0.0);
    camera.camera.m_iMode = eCameraModeCap;
    camera.camera.m_dC1 = 1e-5;
    for (const int k : {ZuNetworkC, ZuNetworkXh, ZuNetworkYh, ZuNetworkA1, ZuNetworkA2, ZuNetworkC1,
                        ZuNetworkC2}) {
      camera.adSd[static_cast<size_t>(k)] = kZuNetworkFree;
    }
    m_network.cameras.push_back(camera);
  }

  double Noise() { return m_normal(m_random); }
  double Even() { return m_even(m_random); }

  void AddPhoto(const std::array<double, 3>& from, double dAtX, double dAtY) {
    const unsigned n = static_cast<unsigned>(m_network.photos.size());
    m_network.photos.push_back(LookAt(n + 1, from, dAtX, dAtY, 0.5 * std::numbers::pi * (n % 4)));
  }

  void AddPoint(const std::array<double, 3>& at) {
    ZuNetworkPoint point;
    point.uId = static_cast<unsigned>(m_network.points.size()) + 1;
    point.adPosition = at;
    m_network.points.push_back(point);
  }

  void Measure(int iPhoto, int iPoint) {
    const ZuNetworkPhoto& photo = m_network.photos[static_cast<size_t>(iPhoto)];
    const auto& p = m_network.points[static_cast<size_t>(iPoint)].adPosition;
    double v[3] = {};
    for (size_t a = 0; a < 3; ++a) {
      for (size_t b = 0; b < 3; ++b) {
        v[a] += photo.adRotation[3 * b + a] * (p[b] - photo.adPosition[b]);
      }
    }
    const ZuCamera& camera = m_network.cameras[0].camera;
    ZuNetworkImagePoint image;
    image.x = -camera.m_dC * v[0] / v[2];
    image.y = -camera.m_dC * v[1] / v[2];
    if (camera.InvAdjustExact(&image.x, &image.y) != eCameraInverseOk) return;
    image.iPhoto = iPhoto;
    image.iPoint = iPoint;
    image.x += 5e-4 * Noise();
    image.y += 5e-4 * Noise();
    image.sxx = image.syy = 2.5e-7;
    m_network.images.push_back(image);
  }

  // One point of twenty is control; the others and the photos start beside the truth.
  ZuNetwork Finish() {
    const size_t uStep = std::max<size_t>(1, m_network.points.size() / 20);
    for (size_t i = 0; i < m_network.points.size(); ++i) {
      ZuNetworkPoint& point = m_network.points[i];
      for (double& d : point.adPosition) d += 0.01 * Noise();
      if (i % uStep != 0) continue;
      point.iControl = 7;
      point.adGiven = point.adPosition;
      point.adGivenSd = {0.02, 0.02, 0.02};
    }
    for (ZuNetworkPhoto& photo : m_network.photos) {
      for (double& d : photo.adPosition) d += 0.01 * Noise();
    }
    return std::move(m_network);
  }

  std::mt19937 m_random{1};
  std::normal_distribution<double> m_normal;
  std::uniform_real_distribution<double> m_even{0.0, 1.0};
  ZuNetwork m_network;
};

}  // namespace network_problem
