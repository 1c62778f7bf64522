#include "zu/numerics/solver.h"

#include "tests/support/eigen_bridge.h"
#include "tests/support/eigen_solvers.h"
#include "tests/support/test.h"
#include "zu/numerics/matrix.h"
#include "zu/numerics/vector3d.h"
#include "zu/points/point_list.h"

namespace {

ZuMatrix Matrix2(double a, double b, double c, double d) {
  const double values[] = {a, b, c, d};
  return ZuMatrix(values, 2, 2);
}

}  // namespace

TEST(Solver, EliminationAgreesWithQr) {
  std::mt19937_64 rng(41);
  for (int n : {1, 2, 3, 4, 5, 8, 20}) {
    for (int iColumns : {1, n, n + 20}) {
      SCOPED_TRACE(::testing::Message() << n << " x " << iColumns);
      const ZuMatrix a = RandomMatrix(rng, n, n);
      const ZuMatrix b = RandomMatrix(rng, n, iColumns);
      const Eigen::MatrixXd expected = SolveByQr(ToEigen(a), ToEigen(b));
      ZuMatrix reduced(a), x(b);
      ASSERT_EQ(reduced.GaussLoeserRelMax(x), 0);
      const double dScale = 1.0 + expected.cwiseAbs().maxCoeff();
      EXPECT_LT(MaxDifference(ToEigen(x), expected), 1e-10 * dScale);
    }
  }
}

// The kernels of fixed size give the bits of the plain algorithm.
TEST(Solver, SmallSystemsHaveTheBitsOfTheDefinition) {
  std::mt19937_64 rng(42);
  for (int n : {3, 4, 5}) {
    for (int iRound = 0; iRound < 40; ++iRound) {
      ZuMatrix a = RandomMatrix(rng, n, n), b = RandomMatrix(rng, n, n);
      ZuMatrix reduced(a), x(b);
      ASSERT_EQ(GaussLoeserRelMax(reduced, x), 0);

      for (int k = 1; k <= n; ++k) {
        int iBest = k;
        double dBest = 0.0;
        for (int i = k; i <= n; ++i) {
          double s = 0.0;
          for (int j = k; j <= n; ++j) s += std::fabs(a[i][j]);
          if (std::fabs(a[i][k]) / s > dBest) {
            dBest = std::fabs(a[i][k]) / s;
            iBest = i;
          }
        }
        a.SwapLines(k, iBest);
        b.SwapLines(k, iBest);
        for (int i = k + 1; i <= n; ++i) {
          const double f = -a[i][k] / a[k][k];
          a.AddLines(i, k, k, f);
          b.AddLines(i, k, 1, f);
          a[i][k] = -f;
        }
      }
      EXPECT_EQ(ToEigen(reduced), ToEigen(a)) << "multipliers stand in the eliminated places";
      ASSERT_EQ(DreieckLoeserOben(a, b), 0);
      EXPECT_EQ(ToEigen(x), ToEigen(b));
    }
  }
}

TEST(Solver, PivotIsLargestRelativeToItsRow) {
  ZuMatrix a = Matrix2(1000.0, 1e6, 1.0, 1.0);
  ZuMatrix b(2, 1);
  ASSERT_EQ(a.GaussLoeserRelMax(b), 0);
  EXPECT_EQ(a[1][1], 1.0) << "the second row leads, though its element is smaller";
}

TEST(Solver, SingularSystems) {
  const struct {
    const char* szCase;
    ZuMatrix a;
  } cases[] = {{"no rank", Matrix2(1.0, 2.0, 2.0, 4.0)},
               {"a row without magnitude, not the pivot", Matrix2(1.0, 1.0, 1e-11, 0.0)},
               {"no element in the column", Matrix2(0.0, 1.0, 0.0, 2.0)}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.szCase);
    ZuMatrix a(c.a), b(2, 1);
    EXPECT_EQ(a.GaussLoeserRelMax(b), 1);
    int iError = 0;
    ZuMatrix(c.a).Invert(&iError);
    EXPECT_EQ(iError, 1);
  }
}

TEST(Solver, InverseAgreesWithASecondMethod) {
  std::mt19937_64 rng(43);
  for (int n : {1, 2, 3, 4, 6}) {
    SCOPED_TRACE(n);
    const ZuMatrix a = RandomMatrix(rng, n, n);
    ZuMatrix inverse(a);
    int iError = 9;
    EXPECT_EQ(&inverse.Invert(&iError), &inverse);
    EXPECT_EQ(iError, 0);
    const Eigen::MatrixXd expected = InverseByLu(ToEigen(a));
    EXPECT_LT(MaxDifference(ToEigen(inverse), expected), 1e-11 * (1.0 + expected.norm()));
  }
}

// The determinant's pivot search leaves out the last row, unlike the solver's.
TEST(Solver, DeterminantNeverSearchesTheLastRow) {
  EXPECT_EQ(Det(Matrix2(0.0, 1.0, 1.0, 0.0)), 0.0);
  ZuMatrix a = Matrix2(0.0, 1.0, 1.0, 0.0);
  ZuMatrix b(2, 1);
  b[1][1] = 5.0;
  EXPECT_ROW("0 5", a.GaussLoeserRelMax(b), b[2][1]);
}

TEST(Solver, DeterminantsAgreeWithASecondMethod) {
  std::mt19937_64 rng(44);
  for (int n : {1, 2, 3, 4, 7}) {
    SCOPED_TRACE(n);
    const ZuMatrix a = RandomMatrix(rng, n, n);
    EXPECT_NEAR(a.Det(), DeterminantByLu(ToEigen(a)), 1e-12);
  }
  const ZuMatrix three = RandomMatrix(rng, 3, 3);
  EXPECT_NEAR(three.Sarrus(), DeterminantByLu(ToEigen(three)), 1e-14);
  ZuMatrix tiny(1, 1);
  tiny[1][1] = -1e-11;
  EXPECT_EQ(tiny.Det(), 0.0);
  tiny[1][1] = -2.0;
  EXPECT_ROW("-2 0", tiny.Det(), Matrix2(1.0, 2.0, 2.0, 4.0).Det());
}

TEST(Solver, CramersRuleAgreesWithElimination) {
  std::mt19937_64 rng(45);
  const ZuMatrix a = RandomMatrix(rng, 3, 3);
  const ZuVector b = RandomVector(rng, 3);
  const Eigen::VectorXd expected = SolveByQr(ToEigen(a), ToEigen(b));
  EXPECT_LT(MaxDifference(ToEigen(a.Cramer(b)), expected), 1e-11);
  EXPECT_FALSE(std::isfinite(ZuMatrix(3, 3).Cramer(b)[1]));
}

// The bordered system gives solution, sum of squared residuals and cofactors of a least squares
// problem; the second method is QR on the observation equations.
TEST(Cholesky, BorderedSystemAgreesWithQr) {
  std::mt19937_64 rng(46);
  for (int u : {1, 2, 8, 20}) {
    SCOPED_TRACE(u);
    const int iRows = 3 * u + 2;
    ZuMatrix m(u + 1, 2 * u + 1);
    Eigen::MatrixXd a(iRows, u);
    Eigen::VectorXd l(iRows);
    for (int i = 0; i < iRows; ++i) {
      const ZuVector row = RandomVector(rng, u + 1);
      m.CalcNGLAN(row);
      a.row(i) = ToEigen(row).head(u).transpose();
      l(i) = row[u + 1];
    }
    for (int i = 1; i <= u; ++i) m[i][u + 1 + i] = 1.0;
    const double dSquares = m[u + 1][u + 1];

    ZuVector x(u);
    const double w = m.Cholesky(x);
    const Eigen::VectorXd expected = SolveByQr(a, l);
    const double dResiduals = (a * expected - l).squaredNorm();
    EXPECT_LT(MaxDifference(ToEigen(x), expected), 1e-10);
    EXPECT_NEAR(w, dResiduals, 1e-10);
    EXPECT_NEAR(m[u + 1][u + 1], (dSquares - dResiduals) / dResiduals, 1e-8);

    const Eigen::MatrixXd rInverseT = ToEigen(m).block(0, u + 1, u, u);
    const Eigen::MatrixXd n = a.transpose() * a;
    EXPECT_LT(MaxDifference(rInverseT.transpose() * rInverseT * n, Eigen::MatrixXd::Identity(u, u)),
              1e-9);
    const Eigen::MatrixXd r = ToEigen(m).leftCols(u).topRows(u).triangularView<Eigen::Upper>();
    EXPECT_LT(MaxDifference(r.transpose() * r, n), 1e-11 * n.norm());
  }
}

// The result 0.0 has two meanings; only after an exact fit is there a solution.
TEST(Cholesky, ExactFitAndIndefiniteMatrixBothGiveZero) {
  const double exact[] = {4.0, 8.0,  1.0,  //
                          8.0, 16.0, 0.0};
  ZuMatrix m(exact, 2, 3);
  ZuVector x(1);
  EXPECT_ROW("0 2", m.Cholesky(x), x[1]);
  EXPECT_EQ(m[2][2], 16.0) << "the corner stays";

  ZuMatrix indefinite(exact, 2, 3);
  indefinite[1][1] = -4.0;
  x[1] = 77.0;
  EXPECT_ROW("0 77", indefinite.Cholesky(x), x[1]);
}

TEST(Frames, NormalOfAMappedPlane) {
  std::mt19937_64 rng(47);
  const Eigen::Matrix3d r = RandomRotation(rng);
  ZuMatrix m(4, 4);
  for (int i = 1; i <= 3; ++i) {
    for (int j = 1; j <= 3; ++j) m[i][j] = 2.5 * r(i - 1, j - 1);
    m[i][4] = 10.0 * i;
  }
  m[4][4] = 4.0;  // divides out
  ZuVector n(3);
  ASSERT_TRUE(CalcNormVect(&n, m));
  EXPECT_LT(MaxDifference(ToEigen(n), r.col(2)), 1e-14);

  m[4][1] = -4.0;  // sends (1, 0, 0) to infinity
  n.Clear();
  EXPECT_FALSE(CalcNormVect(&n, m));
  EXPECT_EQ(n, ZuVector(3));
}

TEST(Frames, ArbitraryAxesChangeTheirRuleNearZ) {
  for (const auto& [x, y, bNearZ] : Cases<double, double, bool>{
           {0.015, 0.015, true}, {-0.015, 0.0, true}, {0.015625, 0.0, false}, {0.0, -0.5, false}}) {
    SCOPED_TRACE(::testing::Message() << x << ", " << y);
    const ZuVector n(x, y, -std::sqrt(1.0 - x * x - y * y));
    ZuVector u(3), v(3);
    EXPECT_TRUE(CalcArbitaryAlg(&u, &v, n));
    EXPECT_NEAR(u[bNearZ ? 2 : 3], 0.0, 1e-16) << "u lies square to the axis of the rule";
    Eigen::Matrix3d frame;
    frame << ToEigen(u), ToEigen(v), ToEigen(n);
    EXPECT_LT(MaxDifference(frame.transpose() * frame, Eigen::Matrix3d::Identity()), 1e-14);
    EXPECT_NEAR(frame.determinant(), 1.0, 1e-14);

    ZuVector3d u3, v3;
    ArbAxisAlg(ZuVector3d(n[1], n[2], n[3]), u3, v3);
    EXPECT_LT(MaxDifference(Eigen::Vector3d(u3.x, u3.y, u3.z), ToEigen(u)), 1e-15);
    EXPECT_LT(MaxDifference(Eigen::Vector3d(v3.x, v3.y, v3.z), ToEigen(v)), 1e-15);
    EXPECT_ROW("0 0", u3.w, v3.w);
  }
}

TEST(PointMaps, AgreeWithHomogeneousProducts) {
  std::mt19937_64 rng(48);
  const ZuMatrix m3 = RandomMatrix(rng, 3, 3);
  const ZuMatrix m4 = RandomMatrix(rng, 4, 4);
  ZuPoint p(1, 0.3, -0.7, 0.9);
  const Eigen::Vector3d plane = (ToEigen(m3) * Eigen::Vector3d(0.3, -0.7, 1.0)).eval();
  const Eigen::Vector4d space = (ToEigen(m4) * Eigen::Vector4d(0.3, -0.7, 0.9, 1.0)).eval();

  ZuPoint q(p);
  EXPECT_TRUE(m3.PTrans2D(&q));
  EXPECT_NEAR(q.m_dX, plane(0) / plane(2), 1e-13);
  EXPECT_NEAR(q.m_dY, plane(1) / plane(2), 1e-13);
  EXPECT_EQ(q.m_dZ, 0.9);
  ZuVector3d v(0.3, -0.7, 0.9);
  EXPECT_TRUE(m3.PTrans2D(&v));
  EXPECT_EQ(v.x, q.m_dX);
  EXPECT_EQ(v.z, 0.9);

  q = p;
  EXPECT_TRUE(m4.PTrans3D(&q));
  EXPECT_NEAR(q.m_dX, space(0) / space(3), 1e-13);
  EXPECT_NEAR(q.m_dZ, space(2) / space(3), 1e-13);
}

// A point sent to infinity stays, and counts as visited.
TEST(PointMaps, ListsKeepPointsAtInfinity) {
  ZuPointList list;
  for (int i = 0; i < 3; ++i) list.Add(ZuPoint(i + 1, i, 2.0 * i, 3.0 * i));
  ZuMatrix m3(3, 3), m4(4, 4);
  m3.SetIdent();
  m4.SetIdent();
  m3 *= 2.0;
  m4 *= 2.0;
  m3[3][1] = m4[4][1] = -2.0;  // w = 2 - 2 x vanishes at the second point
  EXPECT_ROW("3 3 1 3", Transform3D(&list, m4), Transform2D(&list, m3), list.Get(1)->m_dX,
             list.Get(1)->m_dZ);
  EXPECT_NE(list.Get(2)->m_dX, 2.0);
  EXPECT_ROW("0 0", Transform3D(nullptr, m4), Transform2D(nullptr, m3));
}
