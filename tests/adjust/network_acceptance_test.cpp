// Networks against a second way to the same figures: plain dense least squares with differences for
// derivatives, and the same network in another datum.
#include "tests/adjust/made_network.h"

namespace {

// Cameras c xh yh, photos centre and rotation, points: all free, by Gauss and Newton.
class PlainAdjustment {
 public:
  explicit PlainAdjustment(const ZuNetwork& network) : m_network(network) {
    m_u = 3 * network.cameras.size() + 6 * network.photos.size() + 3 * network.points.size();
  }

  void Run() {
    for (int i = 0; i < 4; ++i) {
      const std::vector<double> e = Residuals(m_network);
      Invert(e);
      for (size_t k = 0; k < m_u; ++k) {
        double dStep = 0.0;
        for (size_t n = 0; n < m_u; ++n) dStep -= q[m_u * k + n] * m_right[n];
        Shift(k, dStep, &m_network);
      }
    }
    const std::vector<double> e = Residuals(m_network);
    Invert(e);
    for (const double d : e) dSigma0 += d * d;
    dSigma0 = std::sqrt(dSigma0 / static_cast<double>(e.size() - m_u));
  }

  const ZuNetwork& Network() const { return m_network; }
  std::vector<double> q;  // cofactors in the units of kUnit
  double dSigma0 = 0.0;
  static constexpr double kUnit = 1e-5;  // of every unknown, and the step of the differences

 private:
  static std::vector<double> Residuals(const ZuNetwork& n) {
    std::vector<double> e;
    for (const ZuNetworkImagePoint& image : n.images) {
      const ZuNetworkPhoto& photo = n.photos[static_cast<size_t>(image.iPhoto)];
      const auto& p = n.points[static_cast<size_t>(image.iPoint)].adPosition;
      const ZuCamera& camera = n.cameras[static_cast<size_t>(photo.iCamera)].camera;
      double v[3] = {};
      for (size_t a = 0; a < 9; ++a) {
        v[a % 3] += photo.adRotation[a] * (p[a / 3] - photo.adPosition[a / 3]);
      }
      double x = -camera.m_dC * v[0] / v[2], y = -camera.m_dC * v[1] / v[2];
      EXPECT_EQ(camera.InvAdjustExact(&x, &y), eCameraInverseOk);
      e.push_back((x - image.x) / std::sqrt(image.sxx));
      e.push_back((y - image.y) / std::sqrt(image.syy));
    }
    for (const ZuNetworkPoint& point : n.points) {
      for (size_t k = 0; k < 3 && point.iControl == 7; ++k) {
        e.push_back((point.adPosition[k] - point.adGiven[k]) / point.adGivenSd[k]);
      }
    }
    return e;
  }

  static void Shift(size_t k, double d, ZuNetwork* n) {
    d *= kUnit;
    if (k < 3 * n->cameras.size()) {
      ZuCamera& camera = n->cameras[k / 3].camera;
      (k % 3 == 0 ? camera.m_dC : k % 3 == 1 ? camera.m_dXh : camera.m_dYh) += d;
      return;
    }
    k -= 3 * n->cameras.size();
    if (k >= 6 * n->photos.size()) {
      k -= 6 * n->photos.size();
      n->points[k / 3].adPosition[k % 3] += d;
      return;
    }
    ZuNetworkPhoto& photo = n->photos[k / 6];
    if (k % 6 < 3) {
      photo.adPosition[k % 6] += d;
      return;
    }
    const size_t a = (k + 1) % 3, b = (k + 2) % 3;  // R exp[d about one axis]
    for (size_t i = 0; i < 9; i += 3) {
      double &x = photo.adRotation[i + a], &y = photo.adRotation[i + b];
      const double dX = std::cos(d) * x + std::sin(d) * y;
      y = std::cos(d) * y - std::sin(d) * x;
      x = dX;
    }
  }

  // q = (J'J)^-1 by elimination, right = J'e.
  void Invert(const std::vector<double>& e) {
    std::vector<std::vector<double>> j;
    for (size_t k = 0; k < m_u; ++k) {
      ZuNetwork up = m_network, down = m_network;
      Shift(k, 1.0, &up);
      Shift(k, -1.0, &down);
      j.push_back(Residuals(up));
      const std::vector<double> other = Residuals(down);
      for (size_t i = 0; i < e.size(); ++i) j[k][i] = 0.5 * (j[k][i] - other[i]);
    }
    const auto product = [](const std::vector<double>& a, const std::vector<double>& b) {
      return std::inner_product(a.begin(), a.end(), b.begin(), 0.0);
    };
    std::vector<double> n(m_u * m_u);
    q.assign(m_u * m_u, 0.0);
    m_right.clear();
    for (size_t r = 0; r < m_u; ++r) {
      m_right.push_back(product(j[r], e));
      for (size_t c = 0; c < m_u; ++c) n[m_u * r + c] = product(j[r], j[c]);
      q[m_u * r + r] = 1.0;
    }
    for (size_t k = 0; k < m_u; ++k) {
      const double dPivot = n[m_u * k + k];
      for (size_t c = 0; c < m_u; ++c) n[m_u * k + c] /= dPivot, q[m_u * k + c] /= dPivot;
      for (size_t r = 0; r < m_u; ++r) {
        const double f = n[m_u * r + k];
        if (r == k || f == 0.0) continue;
        for (size_t c = 0; c < m_u; ++c) {
          n[m_u * r + c] -= f * n[m_u * k + c];
          q[m_u * r + c] -= f * q[m_u * k + c];
        }
      }
    }
  }

  ZuNetwork m_network;
  size_t m_u = 0;
  std::vector<double> m_right;
};

TEST(NetworkAcceptance, OneCameraAPhotoMeetsPlainLeastSquares) {
  MadeNetwork made(MadeNetwork::Convergent, 6, 21);
  made.Control(0.001);
  made.Estimate({ZuNetworkC, ZuNetworkXh, ZuNetworkYh});
  made.network.cameras.resize(6, made.network.cameras[0]);
  for (int i = 0; i < 6; ++i) made.network.photos[static_cast<size_t>(i)].iCamera = i;
  PlainAdjustment plain(made.network);
  plain.Run();
  const ZuNetworkResult result = made.network.Adjust({});
  ASSERT_EQ(result.status, ZuAdjustStatus::Good) << result.strText;
  EXPECT_NEAR(result.dSigma0, plain.dSigma0, 1e-9);
  std::vector<ZuNetworkUnknown> unknowns;
  for (int i = 0; i < 6; ++i) {
    for (int k = 0; k < 3; ++k) unknowns.push_back({ZuNetworkUnknown::Camera, i, k});
  }
  for (int i = 0; i < 6; ++i) {
    for (int k = 0; k < 6; ++k) unknowns.push_back({ZuNetworkUnknown::Photo, i, k});
  }
  for (int i = 0; i < 36; ++i) {
    for (int k = 0; k < 3; ++k) unknowns.push_back({ZuNetworkUnknown::Point, i, k});
  }
  const std::vector<double> q = result.Covariance(unknowns);
  const size_t u = unknowns.size();
  ASSERT_EQ(q.size(), u * u);
  const auto sd = [&](size_t i) { return std::sqrt(q[u * i + i]); };
  const double s2 = plain.dSigma0 * plain.dSigma0 * plain.kUnit * plain.kUnit;
  for (size_t i = 0; i < u; ++i) {
    for (size_t k = 0; k < u; ++k) {
      ASSERT_NEAR(q[u * i + k], s2 * plain.q[u * i + k], 2e-5 * sd(i) * sd(k)) << i << " " << k;
    }
  }
  for (size_t i = 0; i < 36; ++i) {
    for (size_t k = 0; k < 3; ++k) {
      EXPECT_NEAR(result.points[i][k], plain.Network().points[i].adPosition[k],
                  1e-4 * sd(54 + 3 * i + k));
    }
  }
}

// The frame of 70 photos (more unknowns than one dense matrix takes) by three points, and by inner
// conditions over part of the points with a scale bar: what needs no frame is the same, and the
// datum points stand still in the mean.
TEST(NetworkAcceptance, InnerConditionsOverPartOfThePointsChangeTheFrameAlone) {
  MadeNetwork made(MadeNetwork::Convergent, 70, 22);
  made.Estimate({ZuNetworkC, ZuNetworkXh, ZuNetworkYh});
  made.network.distances = {{0, 35, 2.83, 0.0001}};
  ZuNetwork held = made.network;
  for (const auto& [i, iAxes] : Cases<size_t, int>{{0, 7}, {30, 6}, {5, 4}}) {
    ZuNetworkPoint& point = held.points[i];
    point.iControl = iAxes;
    point.adGiven = point.adPosition;
  }
  for (size_t i = 0; i < 36; ++i) made.network.points[i].bDatum = i % 4 == 1;
  ZuNetworkOptions options;
  const ZuNetworkResult control = held.Adjust(options);
  options.eDatum = ZuNetworkDatum::Inner;
  const ZuNetworkResult inner = made.network.Adjust(options);
  ASSERT_EQ(control.status, ZuAdjustStatus::Good) << control.strText;
  ASSERT_EQ(inner.status, ZuAdjustStatus::Good) << inner.strText;
  EXPECT_EQ(inner.iDefect, 6);
  EXPECT_NEAR(inner.dSigma0, control.dSigma0, 1e-10);
  for (size_t i = 0; i < inner.imageTests.size(); i += 7) {
    EXPECT_NEAR(inner.imageTests[i].adV[0], control.imageTests[i].adV[0], 1e-9);
    EXPECT_NEAR(inner.imageTests[i].adR[1], control.imageTests[i].adR[1], 1e-8);
  }
  EXPECT_NEAR(inner.DistanceSd(3, 32) / control.DistanceSd(3, 32), 1.0, 1e-6);
  EXPECT_NEAR(inner.cameraSd[0][ZuNetworkC] / control.cameraSd[0][ZuNetworkC], 1.0, 1e-6);
  std::vector<ZuNetworkUnknown> x;
  double dMean = 0.0, dVariance = 0.0;
  for (int i = 1; i < 36; i += 4) {
    x.push_back({ZuNetworkUnknown::Point, i, 0});
    dMean += inner.points[static_cast<size_t>(i)][0] - made.truth[static_cast<size_t>(i)][0];
  }
  for (const double d : inner.Covariance(x)) dVariance += d;
  EXPECT_NEAR(dMean, 0.0, 1e-9);
  EXPECT_NEAR(dVariance / inner.pointCovariance[1][0], 0.0, 1e-6);
}

TEST(NetworkAcceptance, NamesThePhotoThatLooksAway) {
  MadeNetwork made(MadeNetwork::Convergent, 8, 4);
  made.Control(0.0);
  for (const size_t k : {0, 2, 3, 5, 6, 8}) made.network.photos[2].adRotation[k] *= -1.0;
  const ZuNetworkResult result = made.network.Adjust({});
  if (result.status == ZuAdjustStatus::Good) {
    EXPECT_NEAR(result.dSigma0, 1.0, 0.1);  // it turned around
  } else {
    EXPECT_NE(result.strText.find("photo 3"), std::string::npos) << result.strText;
  }
}

}  // namespace
