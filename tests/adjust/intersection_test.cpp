// Intersection: planted points, wrong rays, and rays that meet nowhere.
#include "zu/adjust/intersection.h"

#include <gtest/gtest.h>

#include <cmath>
#include <iomanip>
#include <random>
#include <sstream>

#include "tests/support/cameras.h"
#include "zu/adjust/internal/image_ray.h"
#include "zu/adjust/intersection_project.h"
#include "zu/project/project.h"

namespace {

constexpr double kSd = 0.0005;  // of an image coordinate [mm]

// Rays to P from photos side by side, all looking down from a height of 10.
std::vector<ZuIntersectionRay> RaysTo(const ZuCamera& camera, const double P[3], int n,
                                      double dBase, double dNoise, std::mt19937* pRandom) {
  std::normal_distribution<double> noise(0.0, dNoise > 0.0 ? dNoise : 1.0);
  std::vector<ZuIntersectionRay> rays;
  for (int i = 0; i < n; ++i) {
    zu::internal::Pose pose;
    const double a = 2.4 * i;
    pose.X0 = {dBase * std::cos(a), dBase * std::sin(a), 10.0};
    ZuIntersectionRay ray;
    ray.pCamera = &camera;
    double m[2] = {};
    EXPECT_TRUE(zu::internal::Project(camera, pose, P, m, nullptr));
    ray.image.uId = static_cast<unsigned>(i + 1);
    ray.image.x = m[0] + (dNoise > 0.0 ? noise(*pRandom) : 0.0);
    ray.image.y = m[1] + (dNoise > 0.0 ? noise(*pRandom) : 0.0);
    ray.pose.rotation.SetIdent();
    for (int k = 0; k < 3; ++k) ray.pose.position[k + 1] = pose.X0[static_cast<size_t>(k)];
    rays.push_back(ray);
  }
  return rays;
}

ZuIntersectionOptions Known() {
  ZuIntersectionOptions options;
  options.dSigma = kSd;
  options.bSigmaGiven = true;
  return options;
}

TEST(Intersection, MeetsThePointWithTheAccuracyTold) {
  const ZuCamera camera = test_cameras::ChessboardCap();
  std::mt19937 random(5);
  double adSquares[3] = {}, adVariance[3] = {};
  constexpr int kRuns = 2000;
  for (int iRun = 0; iRun < kRuns; ++iRun) {
    const double P[3] = {0.5, -0.3, 0.2};
    const auto result = ZuIntersectRays(RaysTo(camera, P, 3, 2.0, kSd, &random), Known());
    ASSERT_EQ(result.status, ZuAdjustStatus::Good) << result.strWhy;
    EXPECT_EQ(result.iRedundancy, 3);
    for (int i = 0; i < 3; ++i) {
      adSquares[i] += std::pow(result.position[i + 1] - P[i], 2) / kRuns;
      adVariance[i] += result.covariance[static_cast<size_t>(4 * i)] / kRuns;
    }
  }
  for (int i = 0; i < 3; ++i) EXPECT_NEAR(adSquares[i] / adVariance[i], 1.0, 0.13);
}

// The covariance of an orientation comes in: a photo whose place along the base is unsure by s
// leaves a height unsure by s over the ratio of base and distance.
TEST(Intersection, CarriesTheCovarianceOfAnOrientation) {
  const ZuCamera camera = test_cameras::ChessboardRadial();
  const double P[3] = {0.0, 0.0, 0.0};
  std::mt19937 random(1);
  auto rays = RaysTo(camera, P, 2, 1.0, 0.0, &random);
  auto options = Known();
  options.dSigma = 1e-7;
  rays[1].pose.position[1] = -1.0;
  rays[1].pose.position[2] = 0.0;
  rays[1].image.x = 2.0 * camera.m_dXh - rays[0].image.x;
  rays[1].image.y = rays[0].image.y;
  rays[1].pose.covariance[21] = 0.01 * 0.01;  // of its X
  const auto result = ZuIntersectRays(rays, options);
  ASSERT_EQ(result.status, ZuAdjustStatus::Good) << result.strWhy;
  EXPECT_NEAR(std::sqrt(result.covariance[8]), 0.01 * 10.0 / 2.0, 1e-4);
  EXPECT_NEAR(result.dAngle, 2.0 * std::atan(0.1), 1e-9);
}

TEST(Intersection, SetsAWrongRayAside) {
  const ZuCamera camera = test_cameras::ChessboardCap();
  std::mt19937 random(9);
  const double P[3] = {0.5, -0.3, 0.2};
  auto rays = RaysTo(camera, P, 6, 2.0, kSd, &random);
  rays[4].image.x += 40.0 * kSd;
  auto options = Known();
  options.tests.bSnoop = true;
  const auto result = ZuIntersectRays(rays, options);
  ASSERT_EQ(result.status, ZuAdjustStatus::Good) << result.strWhy;
  EXPECT_EQ(result.iRays, 5);
  EXPECT_FALSE(result.tests[4].bUsed);
  const std::vector<ZuIntersectionRay> other = {rays[5], rays[1], rays[4],
                                                rays[3], rays[0], rays[2]};
  EXPECT_EQ(ZuIntersectRays(other, options).position[3], result.position[3]);
}

TEST(Intersection, RefusesWithAReason) {
  const ZuCamera camera = test_cameras::ChessboardRadial();
  std::mt19937 random(2);
  const double P[3] = {0.1, 0.2, 0.0};
  auto rays = RaysTo(camera, P, 2, 2.0, 0.0, &random);
  const auto status = [](const std::vector<ZuIntersectionRay>& of) {
    const auto result = ZuIntersectRays(of);
    EXPECT_EQ(result.strWhy.empty(), result.status == ZuAdjustStatus::Good);
    return result.status;
  };
  EXPECT_EQ(status(rays), ZuAdjustStatus::Good);
  EXPECT_EQ(status({rays[0]}), ZuAdjustStatus::TooFew);
  EXPECT_EQ(status({}), ZuAdjustStatus::TooFew);
  EXPECT_EQ(status({rays[0], rays[0]}), ZuAdjustStatus::RankDefect);
  auto apart = rays;
  std::swap(apart[0].image, apart[1].image);  // the rays part and meet behind the photos
  EXPECT_EQ(status(apart), ZuAdjustStatus::NotConverged);
  rays[1].image.x = std::nan("");
  EXPECT_EQ(status(rays), ZuAdjustStatus::TooFew);
}

// Three photos of one camera in a project, and how their 18 + 3 unknowns are unsure: each photo
// moves with the camera, and with two errors of its own; the first of them is the same for all.
class UnsurePhotos {
 public:
  explicit UnsurePhotos(bool bCommon) {
    std::ostringstream text;
    const ZuCamera lens = test_cameras::ChessboardRadial();
    for (int i = 1; i <= 3; ++i) {
      zu::internal::Pose pose;
      pose.X0 = {2.0 * i - 4.0, i % 2 - 0.5, 10.0};
      const double P[3] = {0.3, 0.1, 0.0};
      double m[2];
      EXPECT_TRUE(zu::internal::Project(lens, pose, P, m, nullptr));
      text << "PHOTO { PHOTOID " << i
           << " \"p\" STATE 0 DIGITAL 1 ORIENTED 1 DIGIREGION { 0 0 999 999 } "
           << "PRERESTRAFO { 1 0 1 0 0 } MAINRESTRAFO { 1 -5 0.01 -5 0 } AORM { 3 3 1 0 0 0 1 0 0 "
           << "0 1 } AORV { 3 " << pose.X0[0] << ' ' << pose.X0[1] << " 10 } }\nMEASURE { PHOTOID "
           << i << " POINTS { 7 " << std::setprecision(17) << 100.0 * m[0] + 500.0 << ' '
           << 100.0 * m[1] + 500.0 << " } }\n";
    }
    std::istringstream stream(text.str());
    EXPECT_TRUE(project.Read(stream));
    for (ZuPhoto* p = project.PhotoList().First(); p != nullptr; p = p->Next()) {
      p->SetCamera(lens);
    }
    std::mt19937 random(3);
    std::normal_distribution<double> normal(0.0, 1e-3);
    for (int j = 0; j < 3; ++j) m_root[18 + j][j] = 1e-3 * (j + 1);
    for (int u = 0; u < 18; ++u) {
      for (int j = 0; j < 3; ++j) m_root[u][j] = normal(random);
      m_root[u][bCommon ? 3 : 3 + u / 6] = normal(random);
      m_root[u][6 + u] = normal(random);
    }
    for (int i = 0; i < 3; ++i) {
      for (int k = i; k < 3; ++k) Tell(i, k);
    }
    ZuCovariance camera;
    camera.m_uCamera = lens.GetId();
    camera.m_parameters = kNames;
    Fill({18, 19, 20}, {18, 19, 20}, &camera);
  }

  // Of the point, by differences: J C J' with the photos' covariances, and that of the pixels.
  std::array<double, 9> Differences() {
    ZuCovarianceList told = project.Covariances();
    project.Covariances().Clear();
    std::array<double, 9> cov = Point().covariance;
    double adJ[21][3];
    for (int u = 0; u < 21; ++u) {
      constexpr double kStep = 1e-6;
      const auto moved = [&](double dStep) {
        Move(u, dStep);
        const auto position = Point().position;
        Move(u, -dStep);
        return position;
      };
      const auto up = moved(kStep), down = moved(-kStep);
      for (size_t k = 0; k < 3; ++k) adJ[u][k] = (up[k] - down[k]) / (2.0 * kStep);
    }
    for (int j = 0; j < kErrors; ++j) {
      double d[3] = {};
      for (int u = 0; u < 21; ++u) {
        for (int k = 0; k < 3; ++k) d[k] += adJ[u][k] * m_root[u][j];
      }
      for (size_t k = 0; k < 9; ++k) cov[k] += d[k / 3] * d[k % 3];
    }
    project.Covariances() = told;
    return cov;
  }

  ZuIntersectedPoint Point() const {
    ZuProjectIntersectionOptions options;
    options.bSigmaGiven = true;
    return ZuIntersectProject(project, options).points.at(0);
  }

  ZuProject project;

 private:
  static constexpr int kErrors = 24;
  const std::vector<std::string> kNames = {"c", "xh", "a1"};

  void Fill(const std::vector<int>& rows, const std::vector<int>& columns, ZuCovariance* p) {
    p->m_iRows = static_cast<int>(rows.size());
    p->m_iColumns = static_cast<int>(columns.size());
    for (const int u : rows) {
      for (const int v : columns) {
        double c = 0.0;
        for (int j = 0; j < kErrors; ++j) c += m_root[u][j] * m_root[v][j];
        p->m_matrix.push_back(c);
      }
    }
    project.Covariances().Set(*p);
  }

  void Tell(int i, int k) {
    ZuCovariance covariance;
    covariance.m_uPhoto = static_cast<unsigned>(i + 1);
    if (i == k) covariance.m_parameters = kNames;
    if (i != k) covariance.m_uWith = static_cast<unsigned>(k + 1);
    const auto unknowns = [&](int n) {
      std::vector<int> of;
      for (int u = 0; u < 6; ++u) of.push_back(6 * n + u);
      for (int u = 18; i == k && u < 21; ++u) of.push_back(u);
      return of;
    };
    Fill(unknowns(i), unknowns(k), &covariance);
  }

  void Move(int u, double d) {
    for (ZuPhoto* p = project.PhotoList().First(); p != nullptr; p = p->Next()) {
      ZuCamera camera = p->GetCamera();
      double* const pValues[] = {&camera.m_dC, &camera.m_dXh, &camera.m_dA1};
      if (u >= 18) *pValues[u - 18] += d;
      p->SetCamera(camera);
      if (u / 6 + 1 != static_cast<int>(p->GetId())) continue;
      zu::internal::Pose pose;
      double adStep[6] = {};
      adStep[u % 6 < 3 ? 3 + u % 6 : u % 6 - 3] = d;
      for (int i = 0; i < 9; ++i)
        pose.R[static_cast<size_t>(i)] = p->GetRotAOR()[i / 3 + 1][i % 3 + 1];
      zu::internal::MovePose(adStep, &pose);
      p->SetRotAOR(ZuMatrix(3, 3).Set(pose.R.data(), 3, 3));
      const ZuVector X0 = p->GetPosAOR();
      p->SetPosAOR(X0[1] + pose.X0[0], X0[2] + pose.X0[1], X0[3] + pose.X0[2]);
    }
  }

  double m_root[21][kErrors] = {};
};

TEST(Intersection, CarriesTheCovariancesOfAProject) {
  for (const bool bCommon : {true, false}) {
    UnsurePhotos photos(bCommon);
    const auto expected = photos.Differences();
    const auto near = [&](double dTolerance) {
      const ZuIntersectedPoint point = photos.Point();
      ASSERT_TRUE(point.IsGood()) << point.strWhy;
      for (size_t i = 0; i < 9; ++i) {
        EXPECT_NEAR(point.covariance[i], expected[i], dTolerance * expected[8]) << i;
      }
    };
    near(1e-5);
    // What the photos have in common by their camera alone needs no block of two photos.
    photos.project.Covariances().Erase({1, 2, 0});
    if (!bCommon) near(1e-5);
  }
}

}  // namespace
