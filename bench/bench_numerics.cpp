// Small matrices beside the same arithmetic on plain structures and arrays.
//
//   bench_numerics --benchmark_repetitions=7 --benchmark_enable_random_interleaving=true
//
// The ratios that count, ours against the reference of the same name: products of 3x3 and 4x4 at
// most 2.0; inverses, the bordered solution of 8 unknowns and an observation row of 9 at most 1.3.
// The results are checked to be equal to the last bit before anything is timed.
#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <random>
#include <vector>

#include "zu/numerics/matrix.h"

namespace {

constexpr int kCases = 64;  // different inputs, one after the other

void Check(bool bEqual, const char* szWhat) {
  if (bEqual) return;
  std::fprintf(stderr, "bench_numerics: %s differs from its reference\n", szWhat);
  std::exit(1);
}

bool SameBits(const double* a, const double* b, int n) {
  return std::memcmp(a, b, static_cast<std::size_t>(n) * sizeof(double)) == 0;
}

std::vector<ZuMatrix> Matrices(int iRows, int iCols) {
  std::mt19937 rng(7);
  std::uniform_real_distribution<double> element(-1.0, 1.0);
  std::vector<ZuMatrix> result(kCases, ZuMatrix(iRows, iCols));
  for (ZuMatrix& m : result) {
    for (int i = 0; i < iRows * iCols; ++i) m.GetData()[i] = element(rng);
  }
  return result;
}

// A matrix of any shape with inline store and nothing else.
struct PlainMatrix {
  double* p;
  double adInline[16];
  int iRows, iCols;

  PlainMatrix(int r, int c)
      : p(r * c <= 16 ? adInline : new double[static_cast<std::size_t>(r * c)]),
        iRows(r),
        iCols(c) {}
  explicit PlainMatrix(const ZuMatrix& m) : PlainMatrix(m.GetZeilen(), m.GetSpalten()) {
    std::memcpy(p, m.GetData(), static_cast<std::size_t>(iRows * iCols) * sizeof(double));
  }
  PlainMatrix(const PlainMatrix& m) : PlainMatrix(m.iRows, m.iCols) {
    std::memcpy(p, m.p, static_cast<std::size_t>(iRows * iCols) * sizeof(double));
  }
  PlainMatrix& operator=(const PlainMatrix&) = delete;
  ~PlainMatrix() {
    if (p != adInline) delete[] p;
  }
};

template <int n>
void ProductKernel(const double* a, const double* b, double* r) {
  for (int i = 0; i < n; ++i) {
    for (int j = 0; j < n; ++j) {
      double s = 0.0;
      for (int k = 0; k < n; ++k) s += a[i * n + k] * b[k * n + j];
      r[i * n + j] = s;
    }
  }
}

// The kernel is chosen by the size, as it has to be with a dynamic shape.
__attribute__((noinline)) PlainMatrix PlainProduct(const PlainMatrix& a, const PlainMatrix& b) {
  PlainMatrix r(a.iRows, b.iCols);
  if (a.iRows == 3 && a.iCols == 3 && b.iCols == 3) {
    ProductKernel<3>(a.p, b.p, r.p);
  } else if (a.iRows == 4 && a.iCols == 4 && b.iCols == 4) {
    ProductKernel<4>(a.p, b.p, r.p);
  } else {
    for (int i = 0; i < a.iRows; ++i) {
      for (int j = 0; j < b.iCols; ++j) {
        double s = 0.0;
        for (int k = 0; k < a.iCols; ++k) s += a.p[i * a.iCols + k] * b.p[k * b.iCols + j];
        r.p[i * b.iCols + j] = s;
      }
    }
  }
  return r;
}

// Elimination with the pivot that is largest relative to its row, n x n with n right sides.
__attribute__((noinline)) int PlainSolve(double* a, double* b, int n) {
  for (int k = 0; k < n; ++k) {
    int iBest = k;
    double dBest = 0.0;
    for (int i = k; i < n; ++i) {
      double s = 0.0;
      for (int j = k; j < n; ++j) s += std::fabs(a[i * n + j]);
      if (s < 1e-10) return 1;
      const double q = std::fabs(a[i * n + k]) / s;
      if (q > dBest) {
        dBest = q;
        iBest = i;
      }
    }
    if (dBest < 1e-10) return 1;
    if (iBest != k) {
      for (int j = 0; j < n; ++j) std::swap(a[iBest * n + j], a[k * n + j]);
      for (int j = 0; j < n; ++j) std::swap(b[iBest * n + j], b[k * n + j]);
    }
    for (int i = k + 1; i < n; ++i) {
      const double f = -a[i * n + k] / a[k * n + k];
      for (int j = k; j < n; ++j) a[i * n + j] += a[k * n + j] * f;
      for (int j = 0; j < n; ++j) b[i * n + j] += b[k * n + j] * f;
      a[i * n + k] = -f;
    }
  }
  if (std::fabs(a[n * n - 1]) < 1e-10) return 1;
  for (int i = n - 1; i >= 0; --i) {
    for (int c = 0; c < n; ++c) {
      double s = 0.0;
      for (int j = i + 1; j < n; ++j) s += a[i * n + j] * b[j * n + c];
      b[i * n + c] = (b[i * n + c] - s) / a[i * n + i];
    }
  }
  return 0;
}

int PlainInvert(double* a, int n) {
  double adCopy[16];
  std::memcpy(adCopy, a, static_cast<std::size_t>(n * n) * sizeof(double));
  for (int i = 0; i < n * n; ++i) a[i] = 0.0;
  for (int i = 0; i < n; ++i) a[i * n + i] = 1.0;
  return PlainSolve(adCopy, a, n);
}

// Factorisation and solution of a bordered system of u unknowns, c = 2 u + 1 columns.
__attribute__((noinline)) double PlainCholesky(double* a, double* x, int u, int c) {
  for (int k = 0; k < u; ++k) {
    double s = 0.0;
    for (int l = 0; l < k; ++l) s += a[l * c + k] * a[l * c + k];
    const double d = a[k * c + k] - s;
    if (d < 0.0) return 0.0;
    a[k * c + k] = std::sqrt(d);
    for (int j = k + 1; j < c; ++j) {
      double t = 0.0;
      for (int l = 0; l < k; ++l) t += a[l * c + j] * a[l * c + k];
      a[k * c + j] = (a[k * c + j] - t) / a[k * c + k];
    }
  }
  double t = 0.0;
  for (int i = 0; i < u; ++i) {
    double s = 0.0;
    for (int l = 0; l < u; ++l) s += a[l * c + u + 1 + i] * a[l * c + u];
    x[i] = s;
    t += a[i * c + u] * a[i * c + u];
  }
  const double w = a[u * c + u] - t;
  if (w > 0.0) {
    a[u * c + u] = t / w;
    return w;
  }
  return 0.0;
}

// v v^T into the leading block of a 10 x 10 array.
__attribute__((noinline)) void PlainGather(double* a, const double* v, int n, int iStride) {
  for (int i = 0; i < n; ++i) {
    for (int j = 0; j < n; ++j) a[i * iStride + j] += v[i] * v[j];
  }
}

// Normal equations of 8 unknowns with their border.
std::vector<ZuMatrix> BorderedSystems() {
  std::mt19937 rng(8);
  std::uniform_real_distribution<double> element(-1.0, 1.0);
  std::vector<ZuMatrix> result(kCases, ZuMatrix(9, 17));
  for (ZuMatrix& m : result) {
    for (int iRow = 0; iRow < 20; ++iRow) {
      ZuVector v(9);
      for (int i = 1; i <= 9; ++i) v[i] = element(rng);
      m.CalcNGLAN(v);
    }
    for (int i = 1; i <= 8; ++i) m[i][9 + i] = 1.0;
  }
  return result;
}

void BM_Product(benchmark::State& state) {
  const int n = static_cast<int>(state.range(0));
  const std::vector<ZuMatrix> m = Matrices(n, n);
  for (int i = 0; i + 1 < kCases; ++i) {
    const PlainMatrix expected = PlainProduct(PlainMatrix(m[i]), PlainMatrix(m[i + 1]));
    Check(SameBits((m[i] * m[i + 1]).GetData(), expected.p, n * n), "product");
  }
  for (auto _ : state) {
    for (int i = 0; i + 1 < kCases; ++i) benchmark::DoNotOptimize(m[i] * m[i + 1]);
  }
  state.SetItemsProcessed(state.iterations() * (kCases - 1));
}

void BM_ProductReference(benchmark::State& state) {
  const int n = static_cast<int>(state.range(0));
  std::vector<PlainMatrix> m;
  for (const ZuMatrix& source : Matrices(n, n)) m.emplace_back(source);
  for (auto _ : state) {
    for (int i = 0; i + 1 < kCases; ++i) benchmark::DoNotOptimize(PlainProduct(m[i], m[i + 1]));
  }
  state.SetItemsProcessed(state.iterations() * (kCases - 1));
}

void BM_Inverse(benchmark::State& state) {
  const int n = static_cast<int>(state.range(0));
  const std::vector<ZuMatrix> m = Matrices(n, n);
  for (const ZuMatrix& source : m) {
    ZuMatrix inverse(source);
    PlainMatrix expected(source);
    inverse.Invert();
    PlainInvert(expected.p, n);
    Check(SameBits(inverse.GetData(), expected.p, n * n), "inverse");
  }
  for (auto _ : state) {
    for (const ZuMatrix& source : m) {
      ZuMatrix inverse(source);
      benchmark::DoNotOptimize(inverse.Invert());
    }
  }
  state.SetItemsProcessed(state.iterations() * kCases);
}

void BM_InverseReference(benchmark::State& state) {
  const int n = static_cast<int>(state.range(0));
  std::vector<PlainMatrix> m;
  for (const ZuMatrix& source : Matrices(n, n)) m.emplace_back(source);
  for (auto _ : state) {
    for (const PlainMatrix& source : m) {
      PlainMatrix inverse(source);
      benchmark::DoNotOptimize(PlainInvert(inverse.p, n));
      benchmark::DoNotOptimize(inverse);
    }
  }
  state.SetItemsProcessed(state.iterations() * kCases);
}

void BM_Bordered8(benchmark::State& state) {
  const std::vector<ZuMatrix> systems = BorderedSystems();
  for (const ZuMatrix& source : systems) {
    ZuMatrix m(source), expected(source);
    ZuVector x(8), expectedX(8);
    const double w = m.Cholesky(x);
    Check(w == PlainCholesky(expected.GetData(), expectedX.GetData(), 8, 17), "residual sum");
    Check(x == expectedX && SameBits(m.GetData(), expected.GetData(), 9 * 17), "solution");
  }
  ZuMatrix m(9, 17);
  ZuVector x(8);
  for (auto _ : state) {
    for (const ZuMatrix& source : systems) {
      m = source;
      benchmark::DoNotOptimize(m.Cholesky(x));
    }
  }
  state.SetItemsProcessed(state.iterations() * kCases);
}

void BM_Bordered8Reference(benchmark::State& state) {
  const std::vector<ZuMatrix> systems = BorderedSystems();
  double m[9 * 17], x[8];
  for (auto _ : state) {
    for (const ZuMatrix& source : systems) {
      std::memcpy(m, source.GetData(), sizeof(m));
      benchmark::DoNotOptimize(PlainCholesky(m, x, 8, 17));
      benchmark::ClobberMemory();
    }
  }
  state.SetItemsProcessed(state.iterations() * kCases);
}

std::vector<ZuVector> Rows() {
  std::vector<ZuVector> rows;
  for (const ZuMatrix& m : Matrices(1, 9)) {
    rows.emplace_back(9);
    m.GetLine(1, rows.back());
  }
  return rows;
}

void BM_Row9(benchmark::State& state) {
  const std::vector<ZuVector> rows = Rows();
  ZuMatrix sums(10, 10), expected(10, 10);
  for (const ZuVector& v : rows) {
    sums.CalcNGLAN(v);
    PlainGather(expected.GetData(), v.GetData(), 9, 10);
  }
  Check(SameBits(sums.GetData(), expected.GetData(), 100), "normal equations");
  for (auto _ : state) {
    for (const ZuVector& v : rows) sums.CalcNGLAN(v);
    benchmark::DoNotOptimize(sums.GetData());
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(state.iterations() * kCases);
}

void BM_Row9Reference(benchmark::State& state) {
  const std::vector<ZuVector> rows = Rows();
  double sums[100] = {};
  for (auto _ : state) {
    for (const ZuVector& v : rows) PlainGather(sums, v.GetData(), 9, 10);
    benchmark::DoNotOptimize(sums);
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(state.iterations() * kCases);
}

BENCHMARK(BM_Product)->Arg(3)->Arg(4);
BENCHMARK(BM_ProductReference)->Arg(3)->Arg(4);
BENCHMARK(BM_Inverse)->Arg(3)->Arg(4);
BENCHMARK(BM_InverseReference)->Arg(3)->Arg(4);
BENCHMARK(BM_Bordered8);
BENCHMARK(BM_Bordered8Reference);
BENCHMARK(BM_Row9);
BENCHMARK(BM_Row9Reference);

}  // namespace
