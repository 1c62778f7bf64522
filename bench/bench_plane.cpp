// The plane fit beside the same passes over plainly linked points.
//
//   bench_plane --benchmark_repetitions=7 --benchmark_enable_random_interleaving=true
//
// The ratios that count: Fit against Reference, by an object that is kept, and FitOnce against
// ReferenceOnce, by a new object each time, for 100 and for a million points (at most 1.2). Both
// sides keep two copies of every point, of the same record, and compute in the same order; the
// results are checked to be equal to the last bit. The reference makes its copies anew each time.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <forward_list>
#include <random>
#include <vector>

#include "zu/rectify/calc_plane.h"

namespace {

// Points near the plane z = 0.1 x + 0.2 y + 3.
ZuPointList Points(std::int64_t n) {
  std::mt19937 random(5);
  const auto value = [&random](double dRange) { return random() / 4294967295.0 * dRange; };
  ZuPointList list;
  for (std::int64_t i = 1; i <= n; ++i) {
    const double x = value(100.0), y = value(80.0);
    list.Add(ZuPoint(static_cast<unsigned int>(i), x, y, 0.1 * x + 0.2 * y + 3.0 + value(0.01)));
  }
  return list;
}

using Copies = std::forward_list<ZuPoint>;

struct Plane {
  double a = 0.0, b = 0.0, c = 0.0, d = 0.0;
  double dSigma0 = 0.0, dMedium = 0.0;
};

struct Xyz {
  double x, y, z;
};

Xyz Minus(const Xyz& p, const Xyz& q) { return {p.x - q.x, p.y - q.y, p.z - q.z}; }
double Dot(const Xyz& p, const Xyz& q) { return p.x * q.x + p.y * q.y + p.z * q.z; }
Xyz Cross(const Xyz& p, const Xyz& q) {
  return {p.y * q.z - p.z * q.y, p.z * q.x - p.x * q.z, p.x * q.y - p.y * q.x};
}

void Through(const Xyz& p, const Xyz& q, const Xyz& r, Plane* pPlane) {
  const Xyz n = Cross(Minus(q, p), Minus(r, p));
  const double dLength = std::sqrt(Dot(n, n)), d = -Dot(p, n), f = 1.0 / dLength;
  pPlane->a = n.x * f;
  pPlane->b = n.y * f;
  pPlane->c = n.z * f;
  pPlane->d = d / dLength;
}

double Sarrus(const double (&m)[3][3]) {
  return m[0][0] * m[1][1] * m[2][2] + m[0][1] * m[1][2] * m[2][0] + m[0][2] * m[1][0] * m[2][1] -
         m[1][1] * m[2][0] * m[0][2] - m[2][1] * m[1][2] * m[0][0] - m[1][0] * m[2][2] * m[0][1];
}

void Cramer(const double (&m)[3][3], const double (&b)[3], double (&x)[3]) {
  const double dDet = Sarrus(m);
  for (int j = 0; j < 3; ++j) {
    double replaced[3][3];
    for (int i = 0; i < 3; ++i) {
      for (int k = 0; k < 3; ++k) replaced[i][k] = k == j ? b[i] : m[i][k];
    }
    x[j] = Sarrus(replaced) / dDet;
  }
}

// The adjustment of z; these points name no other axis.
void Adjust(const Copies& points, Plane* pPlane) {
  double uMin = points.front().m_dX, uMax = uMin, vMin = points.front().m_dY, vMax = vMin;
  for (const ZuPoint& p : points) {
    uMin = std::min(uMin, p.m_dX);
    uMax = std::max(uMax, p.m_dX);
    vMin = std::min(vMin, p.m_dY);
    vMax = std::max(vMax, p.m_dY);
  }
  const double du = uMax - uMin, dv = vMax - vMin, z1 = points.front().m_dZ;
  double m[3][3] = {}, b[3] = {}, h[3];
  for (const ZuPoint& p : points) {
    const double s = (p.m_dX - uMin) / du, t = (p.m_dY - vMin) / dv, r = 1.0 - s - t;
    m[0][0] += r * r;
    m[0][1] += r * s;
    m[0][2] += r * t;
    m[1][1] += s * s;
    m[1][2] += s * t;
    m[2][2] += t * t;
    b[0] += (p.m_dZ - z1) * r;
    b[1] += (p.m_dZ - z1) * s;
    b[2] += (p.m_dZ - z1) * t;
  }
  m[1][0] = m[0][1];
  m[2][0] = m[0][2];
  m[2][1] = m[1][2];
  Cramer(m, b, h);
  for (double& dHeight : h) dHeight += z1;
  Through({uMin, vMin, h[0]}, {uMax, vMin, h[1]}, {uMin, vMax, h[2]}, pPlane);
}

void Append(Copies* pCopies, Copies::iterator* pLast, const ZuPoint& point) {
  *pLast = pCopies->insert_after(*pLast, point);
}

Plane Reference(ZuPointList* pList, Copies* pKept, Copies* pFeet) {
  pKept->clear();
  auto last = pKept->before_begin();
  std::int64_t n = 0;
  for (ZuPoint* p = pList->First(); p != nullptr; p = p->Next(), ++n) {
    p->m_dDX = p->m_dDY = p->m_dDZ = 0.0;
    Append(pKept, &last, *p);
  }
  Plane plane;
  Adjust(*pKept, &plane);

  pFeet->clear();
  last = pFeet->before_begin();
  double r = 0.0, dSum = 0.0;
  for (ZuPoint& p : *pKept) {
    r = p.m_dX * plane.a + p.m_dY * plane.b + p.m_dZ * plane.c + plane.d;
    p.m_dRedu1 = r;
    p.m_dDX = r * plane.a;
    p.m_dDY = r * plane.b;
    p.m_dDZ = r * plane.c;
    dSum += r * r;
    Append(pFeet, &last, p);
    last->m_dX -= p.m_dDX;
    last->m_dY -= p.m_dDY;
    last->m_dZ -= p.m_dDZ;
  }
  plane.dSigma0 = std::sqrt(r * r / (static_cast<double>(n) + 1.0));
  plane.dMedium = std::sqrt(dSum);
  return plane;
}

void CheckEqual(std::int64_t n) {
  ZuPointList list = Points(n);
  Copies kept, feet;
  const Plane plane = Reference(&list, &kept, &feet);
  ZuCalcPlane calc;
  calc.CalcPlaneFromFilteredPoints(&list, false, false);
  const ZuPlane& own = calc.GetPlane();
  bool bEqual = own.A() == plane.a && own.B() == plane.b && own.C() == plane.c &&
                own.D() == plane.d && calc.GetZuPlaneSigma0() == plane.dSigma0 &&
                calc.GetZuPlaneMediumPointDist() == plane.dMedium;
  const ZuPoint* p = calc.GetPointsInZuPlane()->First();
  for (const ZuPoint& foot : feet) {
    bEqual = bEqual && p != nullptr && *p == foot && p->m_dRedu1 == foot.m_dRedu1;
    if (p != nullptr) p = p->Next();
  }
  if (!bEqual || p != nullptr) std::abort();
}

void BM_Fit(benchmark::State& state) {
  CheckEqual(state.range(0));
  ZuPointList list = Points(state.range(0));
  ZuCalcPlane calc;
  calc.CalcPlaneFromFilteredPoints(&list, false, false);  // what is kept is there from now on
  for (auto _ : state) {
    benchmark::DoNotOptimize(calc.CalcPlaneFromFilteredPoints(&list, false, false));
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}

// A new object each time: nothing can be used again.
void BM_FitOnce(benchmark::State& state) {
  ZuPointList list = Points(state.range(0));
  for (auto _ : state) {
    ZuCalcPlane calc;
    benchmark::DoNotOptimize(calc.CalcPlaneFromFilteredPoints(&list, false, false));
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}

void BM_Reference(benchmark::State& state) {
  ZuPointList list = Points(state.range(0));
  Copies kept, feet;
  Reference(&list, &kept, &feet);
  for (auto _ : state) {
    benchmark::DoNotOptimize(Reference(&list, &kept, &feet).d);
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}

// Lists of its own each time, as the new object has.
void BM_ReferenceOnce(benchmark::State& state) {
  ZuPointList list = Points(state.range(0));
  for (auto _ : state) {
    Copies kept, feet;
    benchmark::DoNotOptimize(Reference(&list, &kept, &feet).d);
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}

BENCHMARK(BM_Fit)->Arg(100)->Arg(1000000)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_FitOnce)->Arg(100)->Arg(1000000)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_Reference)->Arg(100)->Arg(1000000)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_ReferenceOnce)->Arg(100)->Arg(1000000)->Unit(benchmark::kMicrosecond);

}  // namespace
