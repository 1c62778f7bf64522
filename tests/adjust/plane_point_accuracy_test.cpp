// Predicted standard deviations of points met with a plane, against those of many measurements with
// errors of known size. ZU_TRIALS=20000 holds them to 3 %, the normal run to what 1,000 trials can.
#include "zu/adjust/plane_point_accuracy.h"

#include <cstdlib>
#include <random>
#include <sstream>

#include "tests/support/test.h"
#include "zu/project/plane_measurement.h"
#include "zu/project/project.h"

namespace {

struct Arrangement {
  const char* szName;
  double dIncidence;  // [deg]
  int iMode;
  const char* szMain;  // MAINRESTRAFO
  double x, y;         // the pixel whose ray meets the plane at the origin
};

constexpr char kAffine[] = "1 -3.168 0.0099 -2.376 0";
constexpr char kPoly[] =
    "4 -3.168 0.0099 0.0001 1e-7 0 -2e-7 0 0 0 0 -2.376 0 0.0099 0 1e-7 0 0 0 0 0";
const Arrangement kArrangements[] = {{"radial, steep", 80.0, 0, kAffine, 320, 240},
                                     {"tangential, in the corner", 45.0, 2, kAffine, 560, 60},
                                     {"pinhole", 30.0, 3, kAffine, 100, 200},
                                     {"polynomial of the image", 20.0, 2, kPoly, 150, 400},
                                     {"radial, flat", 10.0, 0, kAffine, 500, 300},
                                     {"tangential, flat", 10.0, 2, kAffine, 240, 100}};
const std::vector<std::string> kNames[] = {
    {"c", "xh", "yh", "a1", "a2"},
    {},
    {"c", "xh", "yh", "a1", "a2", "a3", "b1", "b2", "c1", "c2"},
    {"c"}};

class Trials {
 public:
  explicit Trials(const Arrangement& arrangement) {
    std::ostringstream text;
    text << "PHOTO { PHOTOID 1 \"p\" DIGITAL 1 STATE 0 ORIENTED 1 DIGIREGION { 0 0 639 479 }\n"
         << "CAMDATA { ID 1 NAME \"c\" MD " << arrangement.iMode
         << " C 4.9 XH 0.2 YH 0.06 A1 -0.0096 A2 -0.0002 A3 1e-5 B1 1e-4 B2 -2e-4 C1 1e-4 C2 2e-4"
         << " R0 2.5 RM 4.4 }\nPRERESTRAFO { 2 0.5 1 0 479.5 0 -1 }\nMAINRESTRAFO { "
         << arrangement.szMain << " }\nAORM { 3 3 1 0 0 0 1 0 0 0 1 }\nAORV { 3 0 0 0 }\n}\n"
         << "MEASURE { PHOTOID 1 POINTS { 7 " << arrangement.x << ' ' << arrangement.y << " } }\n";
    std::istringstream stream(text.str());
    EXPECT_TRUE(project.Read(stream));
    Turn(arrangement);
    for (int n = 0; n < 20; ++n) {
      planePoints.Add(new ZuPoint(static_cast<unsigned>(n + 1), 30.0 * (n % 5) - 40.0,
                                  30.0 * (n / 5) - 60.0, 0.0));
    }
    MakeCovariance(kNames[arrangement.iMode]);
  }

  ZuPhoto& Photo() { return *project.PhotoList().First(); }
  double Noise() { return m_normal(m_random); }

  // One measurement with errors of all kinds; where its point lies.
  ZuPoint Run() {
    const std::vector<double> e = Errors();
    ZuPhoto& photo = Photo();
    const ZuMatrix R = photo.GetRotAOR();
    const ZuVector X0 = photo.GetPosAOR();
    const ZuCamera camera = photo.GetCamera();
    photo.SetPosAOR(X0[1] + e[0], X0[2] + e[1], X0[3] + e[2]);
    photo.SetRotAOR(R * Turned(e[3], e[4], e[5]));
    ZuCamera moved = camera;
    double* const pValues[] = {&moved.m_dC,  &moved.m_dXh, &moved.m_dYh, &moved.m_dA1,
                               &moved.m_dA2, &moved.m_dA3, &moved.m_dB1, &moved.m_dB2,
                               &moved.m_dC1, &moved.m_dC2};
    for (size_t i = 6; i < e.size(); ++i) *pValues[i - 6] += e[i];
    photo.SetCamera(moved);
    ZuPoint& pixel = *project.Measurements(1).First();
    const ZuPoint measured(pixel);
    pixel.m_dX += kPixel * Noise();
    pixel.m_dY += 2.0 * kPixel * Noise();
    ZuPointList noisy(planePoints);
    for (ZuPoint* p = noisy.First(); p != nullptr; p = p->Next()) p->m_dZ += kPlane * Noise();
    ZuPlaneMeasurement measurement;
    measurement.SetPlane(Fitted(noisy).plane);
    EXPECT_TRUE(measurement.Measure(project, {}, false));
    pixel.m_dX = measured.m_dX;
    pixel.m_dY = measured.m_dY;
    photo.SetRotAOR(R);
    photo.SetPosAOR(X0);
    photo.SetCamera(camera);
    const ZuMeasuredPoint& p = measurement.m_photos.at(0).m_points.at(0);
    return ZuPoint(7, p.m_dX, p.m_dY, p.m_dZ);
  }

  ZuPlanePointAccuracy Predicted() {
    const ZuPlaneFit fit = Fitted(planePoints);
    const ZuPlanePointChain chain(project, Photo(), fit.plane, &fit, {});
    ZuPoint pixel(*project.Measurements(1).First());
    pixel.m_dDX = kPixel;
    pixel.m_dDY = 2.0 * kPixel;
    ZuPlanePointAccuracy accuracy;
    EXPECT_TRUE(chain.Of(pixel, &accuracy));
    return accuracy;
  }

  ZuProject project;
  ZuPointList planePoints;

 private:
  static constexpr double kPixel = 0.02, kPlane = 0.02;  // [px], [mm]

  // By all points: three of them alone would be worse.
  static ZuPlaneFit Fitted(const ZuPointList& of) {
    std::vector<ZuFitPoint> points;
    for (const ZuPoint* p = of.First(); p != nullptr; p = p->Next()) {
      points.push_back({p->GetId(), {p->m_dX, p->m_dY, p->m_dZ}, {}});
    }
    ZuFitOptions options;
    options.dSigma = kPlane;
    options.tests.sigmaKind = ZuSigmaKind::APriori;
    options.tests.bSnoop = false;
    return ZuFitPlane(points, options);
  }

  // The least rotation that sends the pixel's ray through the origin, from 400 mm.
  void Turn(const Arrangement& arrangement) {
    ZuPoint adjusted(7, arrangement.x, arrangement.y);
    Photo().ConvertBiko(&adjusted, eDigiToBiko);
    Photo().GetCamera().AdjustExact(&adjusted.m_dX, &adjusted.m_dY);
    const double a = arrangement.dIncidence * std::numbers::pi / 180.0;
    ZuVector v(3), d(3);
    const double dLength = std::hypot(adjusted.m_dX, adjusted.m_dY, 4.9);
    v[1] = adjusted.m_dX / dLength;
    v[2] = adjusted.m_dY / dLength;
    v[3] = -4.9 / dLength;
    d[2] = std::cos(a);
    d[3] = -std::sin(a);
    const double k[3] = {v[2] * d[3] - v[3] * d[2], v[3] * d[1] - v[1] * d[3],
                         v[1] * d[2] - v[2] * d[1]};
    const double dCos = v[1] * d[1] + v[2] * d[2] + v[3] * d[3];
    const ZuMatrix K = Skew(k[0], k[1], k[2]);
    ZuMatrix R = K * K * (1.0 / (1.0 + dCos)) + K;
    for (int i = 1; i <= 3; ++i) R[i][i] += 1.0;
    Photo().SetRotAOR(R);
    Photo().SetPosAOR(0.0, -400.0 * d[2], -400.0 * d[3]);
  }

  static ZuMatrix Skew(double x, double y, double z) {
    ZuMatrix K(3, 3);
    K[1][2] = -z;
    K[1][3] = y;
    K[2][1] = z;
    K[2][3] = -x;
    K[3][1] = -y;
    K[3][2] = x;
    return K;
  }

  static ZuMatrix Turned(double x, double y, double z) {  // exp, to the second order
    const ZuMatrix K = Skew(x, y, z);
    ZuMatrix R = K * K * 0.5 + K;
    for (int i = 1; i <= 3; ++i) R[i][i] += 1.0;
    return R;
  }

  void MakeCovariance(const std::vector<std::string>& names) {
    const double adScale[] = {0.05, 0.05, 0.05, 1e-4, 1e-4, 1e-4, 1e-3, 5e-4,
                              5e-4, 2e-5, 2e-6, 2e-7, 1e-5, 1e-5, 5e-6, 5e-6};
    const int n = 6 + static_cast<int>(names.size());
    for (int i = 0; i < n; ++i) {
      for (int k = 0; k <= i; ++k) m_root.push_back(adScale[i] * (i == k ? 1.0 : 0.3 * Noise()));
    }
    ZuCovariance covariance;
    covariance.m_uPhoto = 1;
    covariance.m_parameters = names;
    covariance.m_iRows = covariance.m_iColumns = n;
    for (int i = 0; i < n; ++i) {
      for (int k = 0; k < n; ++k) {
        double s = 0.0;
        for (int j = 0; j <= std::min(i, k); ++j) s += Root(i, j) * Root(k, j);
        covariance.m_matrix.push_back(s);
      }
    }
    project.Covariances().Set(covariance);
    m_iRows = n;
  }

  double Root(int i, int k) const { return m_root[static_cast<size_t>(i * (i + 1) / 2 + k)]; }

  std::vector<double> Errors() {
    std::vector<double> g, e;
    for (int i = 0; i < m_iRows; ++i) {
      g.push_back(Noise());
      e.push_back(0.0);
      for (int k = 0; k <= i; ++k) e.back() += Root(i, k) * g[static_cast<size_t>(k)];
    }
    return e;
  }

  std::mt19937 m_random{20240607};
  std::normal_distribution<double> m_normal;
  std::vector<double> m_root;
  int m_iRows = 0;
};

TEST(PlanePointAccuracy, PredictsTheErrorsOfMeasurements) {
  const char* const szTrials = std::getenv("ZU_TRIALS");
  const int iTrials = szTrials != nullptr ? std::max(20000, std::atoi(szTrials)) : 1000;
  const double dTolerance = szTrials != nullptr ? 0.03 : 0.08;
  for (const Arrangement& arrangement : kArrangements) {
    SCOPED_TRACE(arrangement.szName);
    Trials trials(arrangement);
    const ZuPlanePointAccuracy predicted = trials.Predicted();
    EXPECT_NEAR(predicted.dIncidence, arrangement.dIncidence * std::numbers::pi / 180.0, 1e-9);
    EXPECT_LT(std::hypot(predicted.adPoint[0], predicted.adPoint[1], predicted.adPoint[2]), 1e-9);
    double adSum[9] = {};  // about the point without errors, where the mean lies to first order
    for (int n = 0; n < iTrials; ++n) {
      const ZuPoint p = trials.Run();
      const double d[3] = {p.m_dX, p.m_dY, p.m_dZ};
      for (int i = 0; i < 9; ++i) adSum[i] += d[i / 3] * d[i % 3] / iTrials;
    }
    for (int i = 0; i < 3; ++i) {
      EXPECT_NEAR(std::sqrt(adSum[4 * i]) / predicted.Sd(i), 1.0, dTolerance) << "axis " << i;
    }
    EXPECT_NEAR(adSum[1], predicted.adCov[1], dTolerance * predicted.Sd(0) * predicted.Sd(1));
    // Every part counts here, none alone.
    for (const double d : {predicted.dPixel, predicted.dPose, predicted.dPlane}) {
      EXPECT_GT(d, 0.02 * std::hypot(predicted.Sd(0), predicted.Sd(1)));
    }
  }
}

}  // namespace
