#include "zu/numerics/matrix.h"

#include "tests/support/eigen_bridge.h"
#include "tests/support/test.h"

namespace {

// Elements 1, 2, 3, ... row by row.
ZuMatrix Counting(int iRows, int iCols) {
  std::vector<double> values(static_cast<std::size_t>(iRows * iCols));
  for (std::size_t i = 0; i < values.size(); ++i) values[i] = static_cast<double>(i + 1);
  return ZuMatrix(values.data(), iRows, iCols);
}

// Whether the elements stand inside the object.
bool IsInline(const ZuMatrix& m) {
  const char* pData = reinterpret_cast<const char*>(m.GetData());
  const char* pObject = reinterpret_cast<const char*>(&m);
  return pData >= pObject && pData < pObject + sizeof(m);
}

}  // namespace

TEST(Matrix, ElementsAreOneBasedAndRowByRow) {
  ZuMatrix m = Counting(3, 5);
  EXPECT_ROW("6 15 15 -1 -1", m[2][1], m.GetElem(3, 5), m.GetElemZeroIndex(2, 4),
             m.SetElem(2, 3, -1.0), m.GetData()[7]);
  const ZuMatrix& constant = m;
  EXPECT_EQ(constant[2][3], -1.0);
}

TEST(Matrix, StoreFollowsTheElementCount) {
  EXPECT_TRUE(IsInline(ZuMatrix(4, 4)) && IsInline(ZuMatrix(1, 16)) && !IsInline(ZuMatrix(4, 5)));
  const ZuMatrix big = Counting(4, 5);
  ZuMatrix copy(big);
  copy[4][5] = 0.0;
  EXPECT_EQ(big.GetElem(4, 5), 20.0);
  const ZuMatrix small = Counting(4, 4);
  const ZuMatrix smallCopy(small);
  EXPECT_TRUE(IsInline(smallCopy)) << "a copy points into itself, not into its source";
}

// Set takes a new shape that fits into the present number of elements.
TEST(Matrix, SetShrinksAndMovesBetweenTheStores) {
  ZuMatrix m = Counting(4, 6);
  const ZuMatrix source = Counting(2, 3);
  EXPECT_EQ(&m.Set(source.GetData(), 2, 3), &m);
  EXPECT_EQ(ToEigen(m), ToEigen(source));
  EXPECT_TRUE(IsInline(m));

  ZuMatrix own = Counting(5, 5);
  own.Set(&own[2][1], 3, 4);  // values out of the array that is given up
  EXPECT_ROW("6 17", own[1][1], own[3][4]);
}

// A matrix that would have to grow keeps shape and array and takes what the array holds.
TEST(Matrix, SetNeverGrows) {
  const ZuMatrix source = Counting(5, 6);
  ZuMatrix m(2, 2);
  m.Set(source.GetData(), 5, 6);
  EXPECT_ROW("2 2", m.GetZeilen(), m.GetSpalten());
  EXPECT_EQ(m.GetData()[15], 16.0) << "the inline store is filled, and not passed";

  ZuMatrix heap(4, 5);
  heap.Set(source.GetData(), 5, 6);
  EXPECT_ROW("4 20", heap.GetZeilen(), heap[4][5]);
}

// The destination decides how much an assignment copies, the source how much there is.
TEST(Matrix, AssignmentKeepsTheShape) {
  ZuMatrix a(2, 2);
  a = Counting(3, 3);
  EXPECT_EQ(a.GetSpalten(), 2);
  EXPECT_EQ(ToEigen(a), ToEigen(Counting(2, 2)));

  ZuMatrix b(5, 5);
  b = Counting(2, 2);
  EXPECT_ROW("5 4 0", b.GetZeilen(), b[1][4], b[1][5]);
}

// Line is a row and Row is a column, and the vector's size decides.
TEST(Matrix, LinesAreRowsAndRowsAreColumns) {
  ZuMatrix m = Counting(3, 3);
  ZuVector v(3);
  m.GetLine(2, v);
  EXPECT_EQ(v, ZuVector(4.0, 5.0, 6.0));
  m.GetRow(2, v);
  EXPECT_EQ(v, ZuVector(2.0, 5.0, 8.0));

  ZuVector two(2);
  m.GetLine(3, two);
  EXPECT_EQ(two[2], 8.0);
  m.SetRow(3, two);
  EXPECT_ROW("7 8 9", m[1][3], m[2][3], m[3][3]);
  m.SetLine(1, ZuVector(-1.0, -2.0, -3.0));
  EXPECT_EQ(m[1][2], -2.0);
}

TEST(Matrix, RowOperations) {
  ZuMatrix m = Counting(3, 4);
  m.SwapLines(1, 3);
  EXPECT_ROW("9 4", m[1][1], m[3][4]);
  m.AddLines(1, 2, 2, 10.0, 3);
  EXPECT_EQ(m[1][1], 9.0);
  EXPECT_EQ(m[1][2], 10.0 + 60.0);
  EXPECT_EQ(m[1][3], 11.0 + 70.0);
  EXPECT_EQ(m[1][4], 12.0);
  m.AddLines(2, 3, 4, -1.0);
  EXPECT_EQ(m[2][4], 8.0 - 4.0);
  m.MultLine(3, 3, 2.0);
  EXPECT_ROW("2 8", m[3][2], m[3][4]);
}

TEST(Matrix, ArithmeticAgreesWithASecondMethod) {
  std::mt19937_64 rng(32);
  for (const auto& [n, k, m] :
       Cases<int, int, int>{{3, 3, 3}, {4, 4, 4}, {2, 3, 4}, {1, 5, 1}, {7, 4, 9}, {3, 3, 1}}) {
    SCOPED_TRACE(::testing::Message() << n << "x" << k << "x" << m);
    const ZuMatrix a = RandomMatrix(rng, n, k);
    const ZuMatrix b = RandomMatrix(rng, k, m);
    const ZuVector v = RandomVector(rng, k);
    EXPECT_LT(MaxDifference(ToEigen(a * b), ToEigen(a) * ToEigen(b)), 1e-14);
    EXPECT_LT(MaxDifference(ToEigen(a * v), ToEigen(a) * ToEigen(v)), 1e-14);
    EXPECT_EQ(ToEigen(a.Transpose()), ToEigen(a).transpose());
    EXPECT_EQ(ToEigen(a + a), 2.0 * ToEigen(a));
    EXPECT_EQ(ToEigen(a * 3.0 - a), 3.0 * ToEigen(a) - ToEigen(a));
    EXPECT_EQ(ToEigen(a / 49.0), ToEigen(a) * (1.0 / 49.0));
  }
}

// The kernels for small sizes sum in the order of the general product.
TEST(Matrix, SmallProductsHaveTheBitsOfTheDefinition) {
  std::mt19937_64 rng(33);
  for (int n : {3, 4, 5}) {
    for (int iRound = 0; iRound < 50; ++iRound) {
      const ZuMatrix a = RandomMatrix(rng, n, n);
      const ZuMatrix b = RandomMatrix(rng, n, n);
      const ZuMatrix product = a * b;
      for (int i = 1; i <= n; ++i) {
        for (int j = 1; j <= n; ++j) {
          double dSum = 0.0;
          for (int k = 1; k <= n; ++k) dSum += a[i][k] * b[k][j];
          ASSERT_EQ(product[i][j], dSum) << n << ": " << i << ", " << j;
        }
      }
    }
  }
}

// The product goes back into the shape that was there, with a copy taken before.
TEST(Matrix, ProductInPlaceKeepsTheShape) {
  ZuMatrix a = Counting(2, 2);
  a *= a;
  EXPECT_EQ(ToEigen(a), ToEigen(Counting(2, 2)) * ToEigen(Counting(2, 2)));
  ZuMatrix b = Counting(2, 3);
  b *= Counting(3, 1);
  EXPECT_ROW("3 14 32 3", b.GetSpalten(), b[1][1], b[1][2], b[1][3]);
}

// The accumulator of normal equations adds to both triangles and to the leading block alone.
TEST(Matrix, ObservationRowsGatherInTheWholeSquare) {
  std::mt19937_64 rng(34);
  for (int n : {1, 2, 3, 6, 9, 17, 20}) {
    SCOPED_TRACE(n);
    ZuMatrix m(n + 1, 2 * n + 1);
    Eigen::MatrixXd expected = Eigen::MatrixXd::Zero(n + 1, 2 * n + 1);
    for (int iRow = 0; iRow < 5; ++iRow) {
      const ZuVector v = RandomVector(rng, n);
      m.CalcNGLAN(v);
      for (int i = 1; i <= n; ++i) {
        for (int j = 1; j <= n; ++j) expected(i - 1, j - 1) += v[i] * v[j];
      }
    }
    EXPECT_EQ(ToEigen(m), expected);
  }
}
