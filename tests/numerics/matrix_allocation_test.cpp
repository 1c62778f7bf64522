// What never allocates.
#include "tests/support/count_allocations.h"
#include "tests/support/test.h"
#include "zu/numerics/matrix.h"

namespace {

// Everything a kernel does with a matrix of n x n and a vector of n.
double UseAll(int n) {
  ZuMatrix a(n, n);
  a.SetIdent();
  for (int i = 1; i <= n; ++i) a[i][1] += 1.0 / (1 + i);
  ZuMatrix b(a);
  b = a * b + a.Transpose() - a * 2.0;
  b *= a;
  b /= 3.0;
  ZuMatrix c(b.GetData(), n, n);
  c.Set(a.GetData(), n, n);
  int iError = 0;
  c.Invert(&iError);
  ZuMatrix lhs(a);
  lhs.GaussLoeserRelMax(b);
  ZuVector v(n);
  a.GetRow(1, v);
  ZuVector w = (a * v + v - v * 0.5) / 3.0;
  w.Normalize();
  c.CalcNGLAN(w);
  return c.Det() + w * v + w.Abs();
}

}  // namespace

TEST(MatrixAllocation, SixteenElementsAndFewerNeverAllocate) {
  for (int n = 1; n <= 4; ++n) {
    SCOPED_TRACE(n);
    const std::size_t uBefore = CountAllocations();
    const double dResult = UseAll(n);
    const std::size_t uAfter = CountAllocations();
    EXPECT_EQ(uAfter - uBefore, 0U) << dResult;
  }
  const std::size_t uBeforeHeap = CountAllocations();
  { ZuMatrix m(4, 5); }
  EXPECT_EQ(CountAllocations() - uBeforeHeap, 1U) << "the counter sees the library's allocations";
}
