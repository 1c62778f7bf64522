// Resection: planted poses, the chessboard photos, wrong points, and sets that decide nothing.
#include "zu/adjust/resection.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <set>

#include "tests/support/cameras.h"
#include "tests/support/trials.h"
#include "zu/adjust/internal/five_point.h"
#include "zu/adjust/internal/image_ray.h"
#include "zu/adjust/internal/three_point.h"
#include "zu/photo/biko_transform.h"
#include "zu/project/project.h"

namespace {

using zu::internal::Pose;

constexpr double kSd = 0.0004;  // of the planted image noise [mm]

Pose RandomPose(std::mt19937* pRandom) {
  std::uniform_real_distribution<double> angle(-0.4, 0.4), shift(-0.5, 0.5);
  Pose pose;
  const double step[6] = {angle(*pRandom), angle(*pRandom), 4.0 * angle(*pRandom),
                          shift(*pRandom), shift(*pRandom), 6.0 + shift(*pRandom)};
  zu::internal::MovePose(step, &pose);
  return pose;
}

// Points of a flat or deep object, seen with noise.
std::vector<ZuResectionPoint> Seen(const ZuCamera& camera, const Pose& pose, int n, double dDepth,
                                   double dNoise, std::mt19937* pRandom) {
  std::uniform_real_distribution<double> place(-1.5, 1.5);
  std::normal_distribution<double> noise(0.0, 1.0);
  std::vector<ZuResectionPoint> points;
  for (int i = 1; i <= n; ++i) {
    ZuResectionPoint p;
    p.image.uId = static_cast<unsigned>(i);
    p.X = place(*pRandom);
    p.Y = place(*pRandom);
    p.Z = dDepth * place(*pRandom);
    const double P[3] = {p.X, p.Y, p.Z};
    double m[2] = {};
    EXPECT_TRUE(zu::internal::Project(camera, pose, P, m, nullptr));
    p.image.x = m[0] + dNoise * noise(*pRandom);
    p.image.y = m[1] + dNoise * noise(*pRandom);
    points.push_back(p);
  }
  return points;
}

ZuResectionOptions Known(double dSigma) {
  ZuResectionOptions options;
  options.dSigma = dSigma;
  options.bSigmaGiven = true;
  return options;
}

TEST(ThreePoints, GiveEverySolutionAndOnlySolutions) {
  std::mt19937 random(1);
  std::uniform_real_distribution<double> place(-1.0, 1.0);
  int iMost = 0;
  for (int iRun = 0; iRun < 2000; ++iRun) {
    const Pose truth = RandomPose(&random);
    double P[3][3], v[3][3];
    for (int i = 0; i < 3; ++i) {
      for (double& d : P[i]) d = place(random);
      const auto image = zu::internal::ToImage(truth, P[i]);
      for (int k = 0; k < 3; ++k)
        v[i][k] = image[size_t(k)] / std::hypot(image[0], image[1], image[2]);
    }
    const auto poses = zu::internal::SolveThreePoints(v, P);
    iMost = std::max(iMost, static_cast<int>(poses.size()));
    double dNearest = 1.0;
    for (const Pose& pose : poses) {
      double dDistance = 0.0;
      for (size_t k = 0; k < 9; ++k)
        dDistance = std::max(dDistance, std::fabs(pose.R[k] - truth.R[k]));
      dNearest = std::min(dNearest, dDistance);
      for (int i = 0; i < 3; ++i) {
        const auto image = zu::internal::ToImage(pose, P[i]);
        const double dLength = std::hypot(image[0], image[1], image[2]);
        for (int k = 0; k < 3; ++k) EXPECT_NEAR(image[size_t(k)] / dLength, v[i][k], 1e-9);
      }
    }
    EXPECT_LT(dNearest, 1e-6) << iRun;
  }
  EXPECT_EQ(iMost, 4);
}

// Every photo of the board from its own points: at least as close as the orientation that comes
// with it, and at the same place.
// Of a relief and of a plane: the planted pose is among those found, and each of these has the rays
// in one plane with the base.
TEST(FivePoints, GiveThePlantedPoseAndOnlySolutions) {
  std::mt19937 random(11);
  std::uniform_real_distribution<double> place(-1.0, 1.0);
  for (int n = 0; n < 400; ++n) {
    Pose planted;
    const double step[6] = {place(random), place(random), place(random),
                            place(random), place(random), place(random)};
    zu::internal::MovePose(step, &planted);
    const double dBase = std::hypot(planted.X0[0], planted.X0[1], planted.X0[2]);
    for (double& d : planted.X0) d /= dBase;
    double first[5][3], second[5][3];
    for (size_t k = 0; k < 5; ++k) {
      const double P[3] = {3.0 * place(random), 3.0 * place(random),
                           n % 2 == 0 ? -6.0 : -6.0 + place(random)};
      const auto v = zu::internal::ToImage(planted, P);
      for (size_t i = 0; i < 3; ++i) {
        first[k][i] = P[i] / std::hypot(P[0], P[1], P[2]);
        second[k][i] = v[i] / std::hypot(v[0], v[1], v[2]);
      }
    }
    double dNearest = 1.0;
    for (const Pose& pose : zu::internal::SolveFivePoints(first, second)) {
      double dOff = 0.0;
      for (size_t i = 0; i < 9; ++i) dOff = std::max(dOff, std::fabs(pose.R[i] - planted.R[i]));
      dNearest = std::min(dNearest, dOff);
      for (size_t k = 0; k < 5; ++k) {
        const auto d = zu::internal::Direction(pose, second[k]);
        const auto& t = pose.X0;
        const double* const a = first[k];
        EXPECT_NEAR(a[0] * (t[1] * d[2] - t[2] * d[1]) + a[1] * (t[2] * d[0] - t[0] * d[2]) +
                        a[2] * (t[0] * d[1] - t[1] * d[0]),
                    0.0, 1e-7);
      }
    }
    EXPECT_LT(dNearest, 1e-5) << n;
  }
}

TEST(Resection, OrientsThePhotosOfTheBoard) {
  for (const char* szFile : {"left.prj", "left_cap.prj"}) {
    ZuProject project;
    ASSERT_TRUE(project.Read((std::string(ZU_SOURCE_DIR "/samples/chessboard/") + szFile).c_str()));
    for (ZuPhoto* p = project.PhotoList().First(); p != nullptr; p = p->Next()) {
      std::vector<ZuResectionPoint> points;
      ZuBikoTransform toBiko(p, eDigiToBiko, false), project2(p, eObjectToBiko, false);
      project2.SetExact(true);
      double dGiven = 0.0;
      for (const ZuPoint* q = project.Measurements(p->GetId()).First(); q; q = q->Next()) {
        ZuResectionPoint point;
        const int k = static_cast<int>(q->GetId()) - 1;
        ZuPoint image(*q), seen(0, 25.0 * (k % 9), 25.0 * (5 - k / 9), 0.0);
        point.X = seen.m_dX;
        point.Y = seen.m_dY;
        toBiko.Transform(&image);
        project2.Transform(&seen);
        point.image = {q->GetId(), image.m_dX, image.m_dY};
        dGiven += std::pow(seen.m_dX - image.m_dX, 2) + std::pow(seen.m_dY - image.m_dY, 2);
        points.push_back(point);
      }
      const ZuResectionResult result = ZuResect(p->GetCamera(), points);
      ASSERT_EQ(result.status, ZuAdjustStatus::Good) << result.strWhy;
      EXPECT_GE(result.iRedundancy, 2 * 53 - 6);
      EXPECT_LE(result.dRms, std::sqrt(dGiven / 54.0) * (1.0 + 1e-9));
      for (int i = 0; i < 3; ++i) {
        EXPECT_NEAR(result.pose.position[i + 1], p->GetPosAOR()[i + 1],
                    4.0 * std::sqrt(result.pose.covariance[size_t(7 * (i + 3))]));
      }
      EXPECT_TRUE(result.alternatives.empty());
    }
  }
}

// Wrong points are left out, all of them and no other, in any order of the points.
TEST(Resection, FindsWrongPoints) {
  const ZuCamera camera = test_cameras::ChessboardCap();
  for (int iSeed = 1; iSeed <= Runs(20); ++iSeed) {
    std::mt19937 random(static_cast<unsigned>(iSeed));
    auto points = Seen(camera, RandomPose(&random), 30, 0.5, kSd, &random);
    std::set<unsigned> wrong;
    while (wrong.size() < 10) wrong.insert(1 + static_cast<unsigned>(random() % 30));
    for (const unsigned u : wrong) points[u - 1].image.x += u % 2 == 0 ? 0.05 : -0.3;
    const ZuResectionResult result = ZuResect(camera, points, Known(kSd));
    ASSERT_EQ(result.status, ZuAdjustStatus::Good) << result.strWhy;
    for (const ZuPointTest& test : result.tests) {
      EXPECT_EQ(test.bUsed, wrong.count(test.uId) == 0) << test.uId;
      EXPECT_TRUE(test.bUsed || test.dTest > test.dLimit);
    }
    std::shuffle(points.begin(), points.end(), random);
    const ZuResectionResult again = ZuResect(camera, points, Known(kSd));
    EXPECT_EQ(again.pose.covariance, result.pose.covariance);
    EXPECT_EQ(again.pose.position[3], result.pose.position[3]);
  }
}

// Errors of the pose against the covariance told: their quadratic form is chi square of 6.
TEST(Resection, CovarianceIsThatOfTheErrors) {
  const ZuCamera camera = test_cameras::ChessboardRadial();
  double dSum = 0.0;
  constexpr int kRuns = Runs(250);
  for (int iRun = 0; iRun < kRuns; ++iRun) {
    std::mt19937 random(static_cast<unsigned>(iRun));
    const Pose truth = RandomPose(&random);
    const ZuResectionResult result =
        ZuResect(camera, Seen(camera, truth, 12, 0.5, kSd, &random), Known(kSd));
    ASSERT_EQ(result.status, ZuAdjustStatus::Good) << result.strWhy;
    double e[6], C[36];
    std::copy(result.pose.covariance.begin(), result.pose.covariance.end(), C);
    double D[9] = {};  // R' R found: a small rotation
    for (size_t k = 0; k < 27; ++k) {
      const size_t i = k / 9, j = k / 3 % 3, l = k % 3;
      D[3 * i + j] += truth.R[3 * l + i] * result.pose.rotation[int(l) + 1][int(j) + 1];
    }
    e[0] = 0.5 * (D[7] - D[5]);
    e[1] = 0.5 * (D[2] - D[6]);
    e[2] = 0.5 * (D[3] - D[1]);
    for (size_t i = 0; i < 3; ++i) e[3 + i] = result.pose.position[int(i) + 1] - truth.X0[i];
    for (int k = 0; k < 6; ++k) {  // elimination: the squares of e in turn
      dSum += e[k] * e[k] / C[7 * k];
      for (int i = k + 1; i < 6; ++i) {
        const double f = C[6 * i + k] / C[7 * k];
        for (int j = k; j < 6; ++j) C[6 * i + j] -= f * C[6 * k + j];
        e[i] -= f * e[k];
      }
    }
  }
  EXPECT_NEAR(dSum / kRuns / 6.0, 1.0,
              TrialTolerance(0.15, 250));  // 4 of its own standard deviations
}

// A small flat object far off tilts one way or the other: the true tilt is among those told.
TEST(Resection, TellsTheSecondSolutionOfAPlane) {
  const ZuCamera camera = test_cameras::ChessboardRadial();
  int iTwo = 0, iMissed = 0;
  for (unsigned uSeed = 1; uSeed <= 40; ++uSeed) {
    std::mt19937 random(uSeed);
    Pose truth;  // oblique, 200 from the centre of the object
    const double turn[6] = {0.8 + 0.005 * uSeed, 0.1, 0.3, 0.0, 0.0, 0.0};
    zu::internal::MovePose(turn, &truth);
    for (size_t i = 0; i < 3; ++i) truth.X0[i] = 200.0 * truth.R[3 * i + 2];
    const ZuResectionResult result =
        ZuResect(camera, Seen(camera, truth, 8, 0.0, kSd, &random), Known(kSd));
    ASSERT_EQ(result.status == ZuAdjustStatus::Good, result.strWhy.empty());
    if (result.status != ZuAdjustStatus::Good) continue;
    const auto error = [&](const ZuPose& pose) {  // of the axis of sight
      double dError = 0.0;
      for (int i = 0; i < 3; ++i) {
        dError += std::pow(pose.rotation[i + 1][3] - truth.R[static_cast<size_t>(3 * i + 2)], 2);
      }
      return std::sqrt(dError);
    };
    double dBest = error(result.pose);
    for (const ZuPose& other : result.alternatives) dBest = std::min(dBest, error(other));
    iTwo += !result.alternatives.empty();
    iMissed += !(dBest < 0.2);
  }
  EXPECT_GT(iTwo, 20);
  EXPECT_LE(iMissed, 5);  // the test is one of 5 %
}

// On a cylinder with the photo, on one line, or too few: refused, with and without noise.
TEST(Resection, RefusesWhatDecidesNothing) {
  const ZuCamera camera = test_cameras::ChessboardRadial();
  Pose pose;  // at (0, 0, 5), on the axis of sight: the cylinder of radius 5 about (0, y, 0)
  pose.X0 = {0.0, 0.0, 5.0};
  for (const double dNoise : {0.0, 1e-7, 1e-4}) {
    for (const bool bLine : {false, true}) {
      std::vector<ZuResectionPoint> points;
      for (int i = 0; i < 3 * (bLine ? 3 : 1); ++i) {
        const double a = 3.0 + 0.3 * i;
        ZuResectionPoint p;
        p.X = bLine ? 0.2 * i - 1.0 : 5.0 * std::sin(a);
        p.Z = bLine ? 0.3 * i - 1.0 : 5.0 * std::cos(a);
        p.Y = bLine ? 0.4 * i - 1.0 : 0.5 * (i % 2) - 0.7 * (i == 2);
        const double P[3] = {p.X, p.Y, p.Z};
        double m[2] = {};
        ASSERT_TRUE(zu::internal::Project(camera, pose, P, m, nullptr));
        p.image = {unsigned(i + 1), m[0] + dNoise * (i % 3 - 1), m[1] - dNoise * (i % 2)};
        points.push_back(p);
      }
      if (!bLine) {  // three points whose circle the photo's foot lies on
        const double P[3][3] = {{-2.0, 0.5, 0.0}, {2.0, 0.5, 0.0}, {0.0, -1.5, 0.0}};
        // The circle about (0, cy) through the three; the photo above the point opposite.
        const double cy = (4.0 + 0.25 - 2.25) / (2.0 * (0.5 + 1.5)), r = cy + 1.5;
        pose.X0 = {r * std::sin(0.3), cy + r * std::cos(0.3), 5.0};
        for (int i = 0; i < 3; ++i) {
          double m[2] = {};
          ASSERT_TRUE(zu::internal::Project(camera, pose, P[i], m, nullptr));
          points[size_t(i)] = {
              {unsigned(i + 1), m[0] + dNoise, m[1]}, P[i][0], P[i][1], P[i][2], {}};
        }
      }
      const ZuResectionResult result = ZuResect(camera, points, Known(std::max(dNoise, 1e-6)));
      EXPECT_NE(result.status, ZuAdjustStatus::Good) << dNoise << bLine;
      EXPECT_FALSE(result.strWhy.empty());
      points.resize(2);
      EXPECT_EQ(ZuResect(camera, points).status, ZuAdjustStatus::TooFew);
    }
  }
}

}  // namespace
