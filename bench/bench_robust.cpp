// The robust merge beside the same trials on plain arrays.
//
//   bench_robust --benchmark_repetitions=7 --benchmark_enable_random_interleaving=true
//
// The ratio that counts: Merge against Reference for 30, 100 and 1000 common points, 30 % of them
// wrong (at most 2.5). The reference draws the same samples from the same generator, estimates by
// the same closed form with the same order of sums, and keeps points as four numbers each in arrays
// that are paired already; its rejected points and coordinates are checked to be equal.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <random>
#include <set>
#include <vector>

#include "zu/transform/trafo3d.h"

namespace {

constexpr double kTolerance = 0.01;
constexpr double kVanishing = 1e-10;
constexpr int kSample = 4, kMinPoints = 3;

struct Point {
  unsigned int uId;
  double d[3];
};
using Points = std::vector<Point>;
using Indices = std::vector<int>;

struct Lists {
  Points a, b;  // a[i] and b[i] are the same point
};

Lists Planted(std::int64_t n) {
  std::mt19937 random(5);
  const auto value = [&random](double dRange) {
    return (random() / 4294967295.0 * 2.0 - 1.0) * dRange;
  };
  Lists lists;
  for (std::int64_t i = 0; i < n; ++i) {
    const double x = value(10.0), y = value(10.0), z = value(10.0);
    const double dError = random() % 10 < 3 ? 100.0 * kTolerance : 0.1 * kTolerance;
    const auto uId = static_cast<unsigned int>(3 * i + 7);
    lists.b.push_back({uId, {x, y, z}});
    lists.a.push_back(
        {uId, {5.0 - 2.0 * y + value(dError), 2.0 * x + value(dError), 2.0 * z + value(dError)}});
  }
  return lists;
}

// The map y = r x + t.
struct Map {
  double r[3][3], t[3];
  double Square(const Point& b, const Point& a, double* pdResidual = nullptr) const {
    double dSum = 0.0;
    for (int i = 0; i < 3; ++i) {
      const double d = a.d[i] - (r[i][0] * b.d[0] + r[i][1] * b.d[1] + r[i][2] * b.d[2] + t[i]);
      if (pdResidual != nullptr) pdResidual[i] = d;
      dSum += d * d;
    }
    return dSum;
  }
};

double Centred(double dValue, double dCentre) {
  const double d = dValue - dCentre;
  return std::fabs(d) < kVanishing ? kVanishing : d;
}

// The closed form for y = s R (x - xs) + xt from m = sum y x^T / sum x^T x.
bool Similarity(const double (&m)[3][3], const double* xs, const double* xt, Map* pMap) {
  double q[3][3], c[3][3];
  for (int i = 0; i < 3; ++i) {
    for (int j = 0; j < 3; ++j) {
      q[i][j] = m[0][i] * m[0][j] + m[1][i] * m[1][j] + m[2][i] * m[2][j];
      const int i1 = (i + 1) % 3, i2 = (i + 2) % 3, j1 = (j + 1) % 3, j2 = (j + 2) % 3;
      c[i][j] = m[i1][j1] * m[i2][j2] - m[i1][j2] * m[i2][j1];
    }
  }
  const double d = m[0][0] * c[0][0] + m[0][1] * c[0][1] + m[0][2] * c[0][2];
  const double a = q[0][0] + q[1][1] + q[2][2];
  const double b = q[0][0] * q[1][1] + q[0][0] * q[2][2] + q[1][1] * q[2][2] - q[0][1] * q[0][1] -
                   q[0][2] * q[0][2] - q[1][2] * q[1][2];
  if (2.0 * d + b < 0.0 || 2.0 * std::sqrt(2.0 * d + b) + a < 0.0) return false;
  double s = 1.0, dLast = 0.0;
  int iCount = 0;
  do {
    if (++iCount > 200) return false;
    dLast = s;
    s = std::sqrt(2.0 * std::sqrt(2.0 * s * d + b) + a);
  } while (std::fabs(s - dLast) > 1e-10);
  const double c1 = (s * s + a) / 2.0, c2 = d / s - (s * s - a) / 2.0;
  for (int i = 0; i < 3; ++i) {
    pMap->t[i] = xt[i];
    for (int j = 0; j < 3; ++j) {
      const double mq = m[i][0] * q[0][j] + m[i][1] * q[1][j] + m[i][2] * q[2][j] - c1 * m[i][j];
      pMap->r[i][j] = (mq - s * c[i][j]) / c2;  // s R
      pMap->t[i] -= pMap->r[i][j] * xs[j];
    }
  }
  return std::isfinite(pMap->r[0][0]);
}

bool Estimate(const Lists& lists, const Indices& indices, Map* pMap) {
  if (indices.size() < kMinPoints) return false;
  const auto n = static_cast<double>(indices.size());
  double xs[3] = {}, xt[3] = {}, m[3][3] = {}, q = 0.0;
  for (const int k : indices) {
    for (int i = 0; i < 3; ++i) {
      xs[i] += lists.b[static_cast<std::size_t>(k)].d[i];
      xt[i] += lists.a[static_cast<std::size_t>(k)].d[i];
    }
  }
  for (int i = 0; i < 3; ++i) {
    xs[i] /= n;
    xt[i] /= n;
  }
  for (const int k : indices) {
    const Point &pb = lists.b[static_cast<std::size_t>(k)],
                &pa = lists.a[static_cast<std::size_t>(k)];
    double x[3], y[3];
    for (int i = 0; i < 3; ++i) {
      x[i] = Centred(pb.d[i], xs[i]);
      y[i] = Centred(pa.d[i], xt[i]);
    }
    for (int i = 0; i < 3; ++i) {
      q += x[i] * x[i];
      for (int j = 0; j < 3; ++j) m[i][j] += y[i] * x[j];
    }
  }
  if (std::fabs(q) < kVanishing) return false;
  for (auto& row : m) {
    for (double& dElement : row) dElement /= q;
  }
  return Similarity(m, xs, xt, pMap);
}

bool EstimateAndCheck(const Lists& lists, const Indices& indices, Map* pMap) {
  if (!Estimate(lists, indices, pMap)) return false;
  double adSum[3] = {}, dMax = 0.0;
  for (const int k : indices) {
    double d[3];
    dMax = std::max(dMax, pMap->Square(lists.b[static_cast<std::size_t>(k)],
                                       lists.a[static_cast<std::size_t>(k)], d));
    for (int i = 0; i < 3; ++i) adSum[i] += d[i] * d[i];
  }
  const double dMean = (adSum[0] + adSum[1] + adSum[2]) / static_cast<double>(indices.size());
  return dMean <= kTolerance * kTolerance && dMax <= kTolerance * kTolerance;
}

// A sample not drawn before, ascending. All combinations are many more than are drawn.
void Draw(int n, std::set<std::uint64_t>* pSeen, Indices* pDrawn) {
  for (int i = 0; i <= 40; ++i) {
    pDrawn->clear();
    while (pDrawn->size() < kSample) {
      double r = 0.0;
      for (int j = 0; j < 3; ++j) r += std::rand() & 32767;
      const int k = std::min(static_cast<int>(r / 98301.0 * n), n - 1);
      if (std::find(pDrawn->begin(), pDrawn->end(), k) == pDrawn->end()) pDrawn->push_back(k);
    }
    std::sort(pDrawn->begin(), pDrawn->end());
    std::uint64_t uKey = 0;
    for (const int k : *pDrawn) uKey = uKey << 16 | static_cast<unsigned>(k);
    if (pSeen->insert(uKey).second) return;
  }
}

struct Marks {
  std::vector<char> marks;
  bool operator()(int k) const { return marks[static_cast<std::size_t>(k)] != 0; }
};

void MoveMarked(const Marks& marked, Indices* pFrom, Indices* pTo) {
  std::copy_if(pFrom->begin(), pFrom->end(), std::back_inserter(*pTo), marked);
  pFrom->erase(std::remove_if(pFrom->begin(), pFrom->end(), marked), pFrom->end());
}

struct Result {
  Points good, bad;
};

Result Reference(const Lists& lists) {
  const int n = static_cast<int>(lists.b.size());
  Indices pool(lists.b.size()), sample, drawn;
  for (int i = 0; i < n; ++i) pool[static_cast<std::size_t>(i)] = i;
  Map map;
  if (!EstimateAndCheck(lists, pool, &map)) {
    std::set<std::uint64_t> seen;
    Marks best{std::vector<char>(lists.b.size())}, marked = best;
    std::size_t uBest = 0;
    const int iTrials = std::clamp(2 * n, 12, 50);
    for (int i = 0; i < iTrials; ++i) {
      Draw(n, &seen, &drawn);
      std::fill(marked.marks.begin(), marked.marks.end(), 0);
      for (const int k : drawn) marked.marks[static_cast<std::size_t>(k)] = 1;
      sample.clear();
      MoveMarked(marked, &pool, &sample);
      sample = drawn;
      if (EstimateAndCheck(lists, sample, &map)) {
        for (const int k : pool) {
          const auto u = static_cast<std::size_t>(k);
          marked.marks[u] = map.Square(lists.b[u], lists.a[u]) <= kTolerance * kTolerance;
        }
        MoveMarked(marked, &pool, &sample);
        if (Estimate(lists, sample, &map) && sample.size() > uBest) {
          uBest = sample.size();
          best = marked;
        }
      }
      pool.insert(pool.end(), sample.begin(), sample.end());
      if (static_cast<double>(uBest) > 0.8 * n) break;
    }
    sample.clear();
    MoveMarked(best, &pool, &sample);
    Estimate(lists, sample, &map);
    pool.insert(pool.end(), sample.begin(), sample.end());
  }
  Result result;
  for (const int k : pool) {
    const auto u = static_cast<std::size_t>(k);
    double d[3];
    const bool bGood = map.Square(lists.b[u], lists.a[u], d) <= kTolerance * kTolerance;
    Points& points = bGood ? result.good : result.bad;
    points.push_back(lists.a[u]);
    for (int i = 0; i < 3; ++i) points.back().d[i] -= d[i];
  }
  return result;
}

struct MergeLists {
  ZuPointList a, b, result, bad;
};

void Merge(MergeLists* pLists) {
  ZuTrafo3d trafo;
  pLists->result.Destroy();
  pLists->bad.Destroy();
  const eTrafo3DStatus eStatus = trafo.RobustCalcByControlPointsAndTransform(
      &pLists->result, &pLists->bad, nullptr, pLists->a, pLists->b, kTolerance, true, 0.0,
      kMinPoints, false, 1, 0);
  if (eStatus != eTrafo3DOk) std::abort();
}

void Compare(const ZuPointList& list, const Points& points) {
  const ZuPoint* p = list.First();
  for (const Point& q : points) {
    if (p == nullptr || p->GetId() != q.uId) std::abort();
    const double dOff =
        std::fabs(p->m_dX - q.d[0]) + std::fabs(p->m_dY - q.d[1]) + std::fabs(p->m_dZ - q.d[2]);
    if (!(dOff < 1e-9)) std::abort();
    p = p->Next();
  }
  if (p != nullptr) std::abort();
}

struct Sample {
  explicit Sample(std::int64_t n) : lists(Planted(n)) {
    for (const Point& p : lists.a) merge.a.Add(ZuPoint(p.uId, p.d[0], p.d[1], p.d[2]));
    for (const Point& p : lists.b) merge.b.Add(ZuPoint(p.uId, p.d[0], p.d[1], p.d[2]));
    std::srand(1);
    const Result expected = Reference(lists);
    std::srand(1);
    Merge(&merge);
    Compare(merge.result, expected.good);
    Compare(merge.bad, expected.bad);
  }
  Lists lists;
  MergeLists merge;
};

void BM_Merge(benchmark::State& state) {
  Sample sample(state.range(0));
  for (auto _ : state) {
    std::srand(1);
    Merge(&sample.merge);
  }
}

void BM_Reference(benchmark::State& state) {
  const Sample sample(state.range(0));
  for (auto _ : state) {
    std::srand(1);
    benchmark::DoNotOptimize(Reference(sample.lists));
  }
}

BENCHMARK(BM_Merge)->Arg(30)->Arg(100)->Arg(1000);
BENCHMARK(BM_Reference)->Arg(30)->Arg(100)->Arg(1000);

}  // namespace
