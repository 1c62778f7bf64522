// Intersection: planted points, wrong rays, and rays that meet nowhere.
#include "zu/adjust/intersection.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "tests/support/cameras.h"
#include "zu/adjust/internal/image_ray.h"

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

}  // namespace
