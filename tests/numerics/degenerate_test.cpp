// Directions that coincide, results that stand in an argument, and objects of static storage.
#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <utility>

#include "tests/support/eigen_bridge.h"
#include "tests/support/random_geometry.h"
#include "zu/numerics/frame3d.h"
#include "zu/numerics/line3d.h"
#include "zu/numerics/plane3d.h"
#include "zu/numerics/solver.h"
#include "zu/transform/trafo3d.h"

namespace {

constinit ZuFrame3d g_frame;  // does not compile unless the compiler knows the axes

ZuVector ToVector(const ZuPoint3d& p) { return ZuVector(p.x, p.y, p.z); }

}  // namespace

TEST(Degenerate, FramesOfStaticStorageHaveTheirAxes) {
  EXPECT_EQ(g_frame.v1() * ZuVector3d::XAxis, 1.0);
  EXPECT_EQ(g_frame.v2() * ZuVector3d::YAxis, 1.0);
  EXPECT_EQ(g_frame.v3() * ZuVector3d::ZAxis, 1.0);
}

TEST(Degenerate, CollinearPointsMakeNoFrameInAnyDirection) {
  RandomGeometry random(71);
  ZuMatrix kept(3, 3);
  kept.SetIdent();
  for (int i = 0; i < 1000; ++i) {
    const ZuPoint3d a = random.Point(100.0);
    const ZuVector3d d = random.Direction();
    const ZuVector3d off = Normalized(d % random.Direction());
    const double t = random.Value(50.0) + 60.0;
    bool bOk = true;
    ZuMatrix m(kept);
    m.MakeRotMatrix(ToVector(a), ToVector(a + 10.0 * d), ToVector(a + t * d), &bOk);
    ASSERT_FALSE(bOk) << i;
    ZuTrafo3d::unvect(ToVector(a), ToVector(a + 10.0 * d), ToVector(a + t * d), &m);
    ASSERT_EQ(ToEigen(m), ToEigen(kept)) << i;
    m.MakeRotMatrix(ToVector(a), ToVector(a + 10.0 * d), ToVector(a + t * d + 1e-6 * off), &bOk);
    ASSERT_TRUE(bOk) << i;
  }
}

// Rounding brings the sine beyond 1, and at a right angle about X the other two are one.
TEST(Degenerate, AnglesMakeTheMatrixAgain) {
  RandomGeometry random(72);
  for (int i = 0; i < 2000; ++i) {
    const double dSign = i % 2 == 0 ? 1.0 : -1.0;
    ZuMatrix r(3, 3), again(3, 3);
    r.MakeRotMatrix(random.Value(3.1), dSign * std::numbers::pi / 2.0, random.Value(3.1));
    r[2][3] *= 1.0 + 1e-15 * (i % 3);
    double dX = 0.0, dY = 0.0, dZ = 0.0;
    r.GetRotAngles(&dX, &dY, &dZ);
    again.MakeRotMatrix(dY, dX, dZ);
    ASSERT_LT(MaxDifference(ToEigen(again), ToEigen(r)), 1e-7) << i;
  }
}

// Scaled by whatever factor, so that the normals differ by rounding.
TEST(Degenerate, ParallelPlanesMeetInNoLine) {
  RandomGeometry random(73);
  for (int i = 0; i < 1000; ++i) {
    const ZuVector3d n = random.Direction();
    const double dFactor = (i % 2 == 0 ? 1.0 : -1.0) * (1.0 + std::fabs(random.Value(5.0)));
    ZuLine3d line;
    ASSERT_EQ(ZuPlane3d(n, 1.0).Intersect(ZuPlane3d(n * dFactor, 2.0), line), -1) << i;
    ASSERT_EQ(line.getDirection().Norm(), 0.0) << i;
  }
}

TEST(Degenerate, ResultsMayStandInTheNormal) {
  const ZuVector3d n(0.6, 0.0, 0.8);
  ZuVector3d u, v;
  ArbAxisAlg(n, u, v);
  for (int i = 0; i < 2; ++i) {
    ZuVector3d both[] = {n, n};
    ArbAxisAlg(both[i], both[0], both[1]);
    EXPECT_EQ((both[0] - u).Norm() + (both[1] - v).Norm(), 0.0);
    ZuVector pair[] = {ZuVector(n.x, n.y, n.z), ZuVector(n.x, n.y, n.z)};
    CalcArbitaryAlg(&pair[0], &pair[1], pair[i]);
    EXPECT_EQ(pair[0], ZuVector(u.x, u.y, u.z));
    EXPECT_EQ(pair[1], ZuVector(v.x, v.y, v.z));
  }
}

TEST(Degenerate, MovedMatricesKeepTheirArray) {
  ZuMatrix large(5, 4), small(4, 4);
  large[5][4] = small[4][4] = 7.0;
  const double* pdArray = large.GetData();
  const ZuMatrix movedLarge(std::move(large)), movedSmall(std::move(small));
  EXPECT_EQ(movedLarge.GetData(), pdArray);
  EXPECT_EQ(movedLarge[5][4] + movedSmall[4][4], 14.0);
  EXPECT_EQ(large.GetZeilen() * large.GetSpalten(), 0);  // NOLINT(bugprone-use-after-move)
  large.Set(pdArray, 5, 4);
  EXPECT_EQ(large[5][4], 7.0);

  ZuVector v(5);
  v[5] = 3.0;
  const double* pdElements = v.GetData();
  const ZuVector movedVector(std::move(v));
  EXPECT_EQ(movedVector.GetData(), pdElements);
  EXPECT_EQ(movedVector[5], 3.0);
}

TEST(Degenerate, ExchangedMatricesAndVectorsLoseNothing) {
  for (const int n : {3, 5}) {  // in the inline store and beyond it
    ZuMatrix a(n, n), b(n, n);
    ZuVector v(n), w(n);
    a[n][n] = v[n] = 1.0;
    b[n][n] = w[n] = 2.0;
    std::swap(a, b);
    std::swap(v, w);
    EXPECT_EQ(a[n][n] * 10.0 + b[n][n], 21.0);
    EXPECT_EQ(v[n] * 10.0 + w[n], 21.0);
  }
}
