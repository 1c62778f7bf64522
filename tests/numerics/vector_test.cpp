#include "zu/numerics/vector.h"

#include "tests/support/eigen_bridge.h"
#include "tests/support/test.h"
#include "zu/points/point.h"

TEST(Vector, CopiesAreDeepAtEverySize) {
  for (int n : {1, 4, 5, 100}) {
    SCOPED_TRACE(n);
    ZuVector a(n);
    for (int i = 1; i <= n; ++i) a[i] = i;
    ZuVector b(a);
    a[1] = -7.0;
    EXPECT_EQ(b.GetElem(1), 1.0);
    EXPECT_EQ(b.GetElem(n), n);
    EXPECT_EQ(b.SetElem(n, 2.5), 2.5);
    EXPECT_NE(a, b);
  }
}

// Assignment copies into the size that is there, and never beyond what either side holds.
TEST(Vector, AssignmentKeepsTheSize) {
  ZuVector three(1.0, 2.0, 3.0);
  ZuVector six(6);
  for (int i = 1; i <= 6; ++i) six[i] = 10.0 * i;

  ZuVector small(three);
  small = six;
  EXPECT_EQ(small, ZuVector(10.0, 20.0, 30.0));

  six = three;
  ASSERT_EQ(six.GetSize(), 6);
  EXPECT_ROW("3 40", six[3], six[4]);
  six = *&six;
  EXPECT_EQ(six[6], 60.0);
}

TEST(Vector, ArithmeticAgreesWithASecondMethod) {
  std::mt19937_64 rng(31);
  for (int n : {2, 3, 4, 9}) {
    SCOPED_TRACE(n);
    const ZuVector a = RandomVector(rng, n);
    const ZuVector b = RandomVector(rng, n);
    EXPECT_EQ(ToEigen(a + b), ToEigen(a) + ToEigen(b));
    EXPECT_EQ(ToEigen(a - b), ToEigen(a) - ToEigen(b));
    EXPECT_EQ(ToEigen(a * 3.0), ToEigen(a) * 3.0);
    EXPECT_NEAR(a * b, ToEigen(a).dot(ToEigen(b)), 1e-15);
    EXPECT_NEAR(a.Abs(), ToEigen(a).norm(), 1e-15);
    ZuVector c(a);
    EXPECT_NEAR(c.Normalize().Abs(), 1.0, 1e-15);
  }
}

TEST(Vector, DivisionMultipliesByTheReciprocal) {
  const ZuVector v(5.0, 7.0, 11.0);
  const ZuVector q = v / 49.0;
  for (int i = 1; i <= 3; ++i) EXPECT_EQ(q[i], v[i] * (1.0 / 49.0));
  ZuVector r(v);
  r /= 49.0;
  EXPECT_EQ(r, q);
  EXPECT_NE(q[1], 5.0 / 49.0) << "the two ways differ in the last place for this divisor";
}

// The scalar product takes the size of its right side, the cross product three elements.
TEST(Vector, ProductsOfDifferentSizes) {
  const ZuVector four(1.0, 2.0, 3.0, 100.0);
  const ZuVector three(4.0, 5.0, 6.0);
  EXPECT_EQ(four * three, 32.0);
  const ZuVector cross = four % ZuVector(4.0, 5.0, 6.0, -1.0);
  EXPECT_EQ(cross, ZuVector(-3.0, 6.0, -3.0));
}

TEST(Vector, NormalisedIncludesBothBounds) {
  EXPECT_TRUE(ZuVector(0.0, 1.0, 0.0).IsNormalized(0.0));
  EXPECT_TRUE(ZuVector(0.0, 1.5, 0.0).IsNormalized(0.5));
  EXPECT_TRUE(ZuVector(0.0, 0.5, 0.0).IsNormalized(0.5));
  EXPECT_FALSE(ZuVector(0.0, 1.5, 0.0).IsNormalized(0.49));
  ZuVector zero(3);
  EXPECT_TRUE(std::isnan(zero.Normalize()[1]));
}

// The two ways to a vector of four give different fourth elements.
TEST(Vector, TypesOfAPoint) {
  const ZuPoint p(9, 1.0, 2.0, 3.0);
  EXPECT_EQ(ZuVector(p, eZuVectorDirection2d), ZuVector(1.0, 2.0, 0.0));
  EXPECT_EQ(ZuVector(p, eZuVectorPoint2d), ZuVector(1.0, 2.0, 1.0));
  EXPECT_EQ(ZuVector(p, static_cast<eZuVectorType>(17)).GetSize(), 4);
  EXPECT_EQ(ZuVector(p, eZuVectorHomogen), ZuVector(1.0, 2.0, 3.0, 0.0));
  ZuVector v(p, eZuVector3d);
  EXPECT_EQ(v, ZuVector(1.0, 2.0, 3.0));
  v.ChangeType(eZuVectorHomogen);
  EXPECT_EQ(v, ZuVector(1.0, 2.0, 3.0, 1.0));
}

TEST(Vector, ChangeOfType) {
  const struct {
    int iSize;
    eZuVectorType type;
    int iNewSize;
    double dThird;
  } cases[] = {
      {4, eZuVector3d, 3, 3.0},          {4, eZuVectorDirection2d, 3, 0.0},
      {4, eZuVectorPoint2d, 3, 1.0},     {4, eZuVectorHomogen, 4, 3.0},
      {3, eZuVectorDirection2d, 3, 3.0}, {5, eZuVectorHomogen, 5, 3.0},
      {5, eZuVector3d, 5, 3.0},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(::testing::Message() << c.iSize << " to type " << c.type);
    ZuVector v(c.iSize);
    for (int i = 1; i <= c.iSize; ++i) v[i] = i;
    v.ChangeType(c.type);
    EXPECT_EQ(v.GetSize(), c.iNewSize);
    EXPECT_EQ(v[3], c.dThird);
  }
}
