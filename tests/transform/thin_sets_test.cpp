// Sets of common points that are thin: flat, narrow or both. M^T M holds the squares of extents, so
// that a thousandth of the length is 1e-12 there.
#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "tests/support/eigen_bridge.h"
#include "zu/transform/trafo3d.h"

namespace {

struct Fit {
  bool bGood = false;
  double dOrthogonal = 0.0;  // largest element of R'R - 1
  double dScale = 0.0;       // relative error
  double dBeside = 0.0;      // error of a point beside the set, less the scale
};

// Thirty exact points of the extents, turned, carried over by scale s; the point of dBeside stands
// off the long direction.
Fit Estimate(std::mt19937_64& rng, const Eigen::Vector3d& extents, double s, double dBeside) {
  std::uniform_real_distribution<double> half(-0.5, 0.5);
  const Eigen::Matrix3d turn = RandomRotation(rng), r = RandomRotation(rng);
  const Eigen::Vector3d v(100.0, -200.0, 50.0);
  ZuPointList source, target;
  for (int i = 1; i <= 30; ++i) {
    const Eigen::Vector3d a =
        turn * Eigen::Vector3d(half(rng), half(rng), half(rng)).cwiseProduct(extents);
    const Eigen::Vector3d b = s * r * a + v;
    source.Add(ZuPoint(i, a.x(), a.y(), a.z()));
    target.Add(ZuPoint(i, b.x(), b.y(), b.z()));
  }
  ZuTrafo3d trafo;
  Fit fit;
  fit.bGood = trafo.CalcByControlPoints(&target, &source, 3, false);
  const Eigen::Matrix3d R = ToEigen(trafo.m_mRot);
  fit.dOrthogonal = MaxDifference(R.transpose() * R, Eigen::Matrix3d::Identity());
  fit.dScale = std::fabs(trafo.m_dScale / s - 1.0);
  const Eigen::Vector3d p = turn * Eigen::Vector3d(0.0, dBeside, dBeside);
  const Eigen::Vector4d q = ToEigen(trafo.GetAsMatrix()) * p.homogeneous();
  fit.dBeside = (q.head<3>() - (s * r * p + v)).norm() / s;
  return fit;
}

}  // namespace

TEST(ThinSets, RotationIsOneInEveryShapeUnitAndScale) {
  const struct {
    const char* szSet;
    Eigen::Vector3d extents;
    double s;
    double dBeside;  // error of a point ten units beside
  } sets[] = {
      {"rod, a thousandth", {1e2, 1e-1, 1e-1}, 1.5, 1e-7},
      {"rod in millimetres", {1e5, 1e2, 1e2}, 1.5, 1e-5},
      {"ribbon", {1e2, 1e-1, 1e-4}, 1.5, 1e-7},
      {"strip with relief", {1e2, 1.0, 1e-3}, 1.0, 1e-8},
      {"near a line", {1e2, 3e-3, 3e-3}, 1.0, 1e-4},
      {"near a line, m to mm", {1e2, 3e-3, 3e-3}, 1e3, 1e-4},
      {"flat, m to mm", {1e1, 3.0, 0.0}, 1e3, 1e-8},
      {"flat, narrow", {1e1, 3e-2, 0.0}, 1.5, 1e-7},
      {"flat, scale 1e7", {1e1, 3.0, 0.0}, 1e7, 1e-8},
      {"cube, um to m", {1e6, 1e6, 1e6}, 1e-6, 1e-4},
      {"cube, m to nm", {1.0, 1.0, 1.0}, 1e9, 1e-7},
  };
  std::mt19937_64 rng(61);
  for (const auto& set : sets) {
    for (int i = 0; i < 100; ++i) {
      SCOPED_TRACE(::testing::Message() << set.szSet << ", round " << i);
      const Fit fit = Estimate(rng, set.extents, set.s, 10.0);
      ASSERT_TRUE(fit.bGood);
      ASSERT_LT(fit.dOrthogonal, 2e-10);
      ASSERT_LT(fit.dScale, 1e-10);
      ASSERT_LT(fit.dBeside, set.dBeside);
    }
  }
}

// A rod of four sides that are alike has no best rotation onto its mirror image.
TEST(ThinSets, MirroredRodHasNoSolution) {
  std::mt19937_64 rng(63);
  for (int iRound = 0; iRound < 100; ++iRound) {
    const Eigen::Matrix3d turn = RandomRotation(rng), r = RandomRotation(rng);
    ZuPointList source, target;
    for (int i = 0; i < 8; ++i) {
      const Eigen::Vector3d p(i & 1 ? 1.0 : -1.0, i & 2 ? 1e-5 : -1e-5, i & 4 ? 1e-5 : -1e-5);
      const Eigen::Vector3d a = turn * p, b = r * Eigen::Vector3d(p.x(), p.y(), -p.z());
      source.Add(ZuPoint(i + 1, a.x(), a.y(), a.z()));
      target.Add(ZuPoint(i + 1, b.x(), b.y(), b.z()));
    }
    ZuTrafo3d trafo;
    ASSERT_FALSE(trafo.CalcByControlPoints(&target, &source, 3, false)) << iRound;
    ASSERT_EQ(trafo.GetStatus(), eTrafo3DNoSolution);
  }
}

// Rounding alone must not decide between a line and no solution.
TEST(ThinSets, LinesInEveryDirectionGiveARotation) {
  std::mt19937_64 rng(62);
  for (const double dWidth : {0.0, 1e-8, 1e-6, 1e-5}) {
    for (int i = 0; i < 300; ++i) {
      const Fit fit = Estimate(rng, {10.0, 10.0 * dWidth, 10.0 * dWidth}, 1.5, 0.0);
      ASSERT_TRUE(fit.bGood) << dWidth << ", round " << i;
      ASSERT_LT(fit.dOrthogonal, 2e-10) << dWidth << ", round " << i;
    }
  }
}
