// The test program's allocator counts, to show what never allocates.
#include <gtest/gtest.h>

#include <cstdlib>
#include <new>

#include "zu/numerics/matrix.h"

namespace {

long g_iAllocations = 0;

void* Allocate(std::size_t uSize) {
  ++g_iAllocations;
  void* p = std::malloc(uSize == 0 ? 1 : uSize);
  if (p == nullptr) throw std::bad_alloc();
  return p;
}

}  // namespace

void* operator new(std::size_t uSize) { return Allocate(uSize); }
void* operator new[](std::size_t uSize) { return Allocate(uSize); }
void operator delete(void* p) noexcept { std::free(p); }
void operator delete[](void* p) noexcept { std::free(p); }
void operator delete(void* p, std::size_t) noexcept { std::free(p); }
void operator delete[](void* p, std::size_t) noexcept { std::free(p); }

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
    const long iBefore = g_iAllocations;
    const double dResult = UseAll(n);
    const long iAfter = g_iAllocations;
    EXPECT_EQ(iAfter - iBefore, 0) << dResult;
  }
  const long iBefore = g_iAllocations;
  {
    ZuMatrix r(3, 3);
    ZuVector x(1.0, 0.0, 0.0), y(0.0, 1.0, 0.0), o(3);
    double a = 0.0, b = 0.0, c = 0.0;
    bool bOk = false;
    r.MakeRotMatrix(0.1, 0.2, 0.3).GetRotAngles(&a, &b, &c);
    r.MakeRotMatrix(o, x, y, &bOk);
    r.CalcAngle(r);
    r.Cramer(x);
    ZuMatrix(4, 4).PTrans3D(&a, &b, &c);
    ZuMatrix bordered(2, 3);
    bordered.Cholesky(x);
  }
  EXPECT_EQ(g_iAllocations - iBefore, 0);
  const long iBeforeHeap = g_iAllocations;
  { ZuMatrix m(4, 5); }
  EXPECT_EQ(g_iAllocations - iBeforeHeap, 1) << "the counter sees the library's allocations";
}
