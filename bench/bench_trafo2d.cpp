// The projective estimate beside a plain loop over whole rows.
//
//   bench_trafo2d --benchmark_repetitions=7 --benchmark_enable_random_interleaving=true
//
// The ratio that counts: Projectiv against Reference for 100 points (at most 1.2). The reference
// has its points paired in plain arrays, adds two bordered rows a point to the normal equations,
// every element of a row with every other, and solves them by Cholesky's method with the inverse
// beside it; its coefficients are checked to be equal.
#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdlib>
#include <random>
#include <vector>

#include "zu/transform/calc_trafo2d.h"

namespace {

constexpr int kUnknowns = 8, kRows = kUnknowns + 1, kColumns = 2 * kUnknowns + 1;

struct Pair {
  double x, y, X, Y;
};

std::vector<Pair> Pairs(std::int64_t n) {
  std::mt19937 random(3);
  const auto value = [&random](double dRange) {
    return (random() / 4294967295.0 * 2.0 - 1.0) * dRange;
  };
  std::vector<Pair> pairs;
  for (std::int64_t i = 0; i < n; ++i) {
    const double x = value(1.0), y = value(1.0), w = 1.0 + 0.1 * x - 0.05 * y;
    const double X = (0.8 * x - 0.3 * y + 0.2) / w, Y = (0.3 * x + 0.9 * y - 0.1) / w;
    pairs.push_back({x, y, X + value(0.01), Y + value(0.01)});
  }
  return pairs;
}

struct Equations {
  double a[kRows][kColumns];
};

void AddRow(Equations& e, const double (&row)[kRows]) {
  for (int i = 0; i < kRows; ++i) {
    for (int j = 0; j < kRows; ++j) e.a[i][j] += row[i] * row[j];
  }
}

void Solve(Equations& e, double* pdSolution) {
  for (int k = 0; k < kUnknowns; ++k) {
    double dSum = 0.0;
    for (int l = 0; l < k; ++l) dSum += e.a[l][k] * e.a[l][k];
    e.a[k][k] = std::sqrt(e.a[k][k] - dSum);
    for (int j = k + 1; j < kColumns; ++j) {
      double d = 0.0;
      for (int l = 0; l < k; ++l) d += e.a[l][k] * e.a[l][j];
      e.a[k][j] = (e.a[k][j] - d) / e.a[k][k];
    }
  }
  for (int i = 0; i < kUnknowns; ++i) {
    pdSolution[i] = 0.0;
    for (int l = 0; l < kUnknowns; ++l) pdSolution[i] += e.a[l][kRows + i] * e.a[l][kUnknowns];
  }
}

void Reference(const std::vector<Pair>& pairs, double* pdSolution) {
  Equations e = {};
  for (int k = 0; k < kUnknowns; ++k) e.a[k][kRows + k] = 1.0;
  for (const Pair& p : pairs) {
    AddRow(e, {p.x, p.y, 1.0, 0.0, 0.0, 0.0, -p.X * p.x, -p.X * p.y, p.X});
    AddRow(e, {0.0, 0.0, 0.0, p.x, p.y, 1.0, -p.Y * p.x, -p.Y * p.y, p.Y});
  }
  Solve(e, pdSolution);
}

struct Sample {
  explicit Sample(std::int64_t n) : pairs(Pairs(n)) {
    unsigned int uId = 1;
    for (const Pair& p : pairs) {
      source.Add(ZuPoint(uId, p.x, p.y));
      reference.Add(ZuPoint(uId++, p.X, p.Y));
    }
    double adExpected[kUnknowns];
    Reference(pairs, adExpected);
    ZuCalcTrafo2D trafo(&reference);
    if (!trafo.CalcTrafoProjectiv(&source)) std::abort();
    for (int i = 0; i < kUnknowns; ++i) {
      if (trafo.GetCoef(i) != adExpected[i]) std::abort();
    }
  }
  std::vector<Pair> pairs;
  ZuPointList source, reference;
};

void BM_Projectiv(benchmark::State& state) {
  Sample sample(state.range(0));
  ZuCalcTrafo2D trafo(&sample.reference);
  for (auto _ : state) benchmark::DoNotOptimize(trafo.CalcTrafoProjectiv(&sample.source));
}

void BM_Reference(benchmark::State& state) {
  const Sample sample(state.range(0));
  double adSolution[kUnknowns];
  for (auto _ : state) {
    Reference(sample.pairs, adSolution);
    benchmark::DoNotOptimize(adSolution);
  }
}

BENCHMARK(BM_Projectiv)->Arg(100)->Arg(1000);
BENCHMARK(BM_Reference)->Arg(100)->Arg(1000);

}  // namespace
