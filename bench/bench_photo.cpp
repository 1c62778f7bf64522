// Photos: rays met with a plane, object points to image points, lists along the chain, against the
// bare formulas on the same data.
#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdlib>
#include <vector>

#include "bench/photo_sample.h"

namespace {

struct Xyz {
  double x, y, z;
};

// t = (w . n) / (v . n) with v = R (x, y, -c).
[[gnu::noinline]] Xyz BareSip(const double* R, const double* X0, double c, const double* n,
                              double d, double x, double y) {
  const double v0 = R[0] * x + R[1] * y - R[2] * c, v1 = R[3] * x + R[4] * y - R[5] * c,
               v2 = R[6] * x + R[7] * y - R[8] * c;
  const double t =
      -(d + n[0] * X0[0] + n[1] * X0[1] + n[2] * X0[2]) / (v0 * n[0] + v1 * n[1] + v2 * n[2]);
  return {X0[0] + t * v0, X0[1] + t * v1, X0[2] + t * v2};
}

struct Bare {
  explicit Bare(const ZuPhoto& photo, const ZuPlane& plane)
      : c(std::fabs(photo.GetCamera().m_dC)), d(plane.D()), n{plane.A(), plane.B(), plane.C()} {
    for (int i = 0; i < 9; ++i) R[i] = photo.GetRotAOR().GetData()[i];
    for (int i = 0; i < 3; ++i) X0[i] = photo.GetPosAOR()[i + 1];
  }
  Xyz Sip(double x, double y) const { return BareSip(R, X0, c, n, d, x, y); }

  double R[9], X0[3], c, d, n[3];
};

void CheckNear(double a, double b) {
  if (!(std::fabs(a - b) <= 1e-9 * std::max(1.0, std::fabs(b)))) std::abort();
}

void RayMeetsPlane(benchmark::State& state, bool bReference) {
  ZuPhoto photo = photo_sample::MakePhoto();
  const ZuPlane plane = photo_sample::MakePlane();
  const Bare bare(photo, plane);
  const auto points = photo_sample::Points(2.0, 0.0);
  ZuPoint result;
  for (const ZuPoint& p : points) {
    photo.CalcSip(&result, plane, &p);
    CheckNear(result.m_dX, bare.Sip(p.m_dX, p.m_dY).x);
  }
  for (auto _ : state) {
    for (const ZuPoint& p : points) {
      if (bReference) {
        benchmark::DoNotOptimize(bare.Sip(p.m_dX, p.m_dY));
      } else {
        photo.CalcSip(&result, plane, &p);
        benchmark::DoNotOptimize(result.m_dX);
      }
    }
  }
  state.SetItemsProcessed(state.iterations() * photo_sample::kPoints);
}
BENCHMARK_CAPTURE(RayMeetsPlane, ours, false);
BENCHMARK_CAPTURE(RayMeetsPlane, reference, true);

// Pixel to object point in one call for a list, against the formulas a point.
struct Pixels {
  static constexpr int kCount = 1000000;

  Pixels() : bare(photo, plane) {
    for (int i = 0; i < kCount; ++i) list.Add(ZuPoint(1, 0.0, 0.0));
    for (ZuPoint* p = list.First(); p != nullptr; p = p->Next()) nodes.push_back(p);
    Restore();
    Ours();
    std::vector<Xyz> ours;
    for (const ZuPoint* p : nodes) ours.push_back({p->m_dX, p->m_dY, p->m_dZ});
    Restore();
    Formulas();
    for (std::size_t i = 0; i < kCount; ++i) {
      CheckNear(ours[i].x, nodes[i]->m_dX);
      CheckNear(ours[i].y, nodes[i]->m_dY);
      CheckNear(ours[i].z, nodes[i]->m_dZ);
    }
  }

  void Restore() {
    int i = 0;
    for (ZuPoint* p : nodes) {
      p->m_dX = i % 640;
      p->m_dY = (i / 640) % 480;
      ++i;
    }
  }

  void Ours() { photo.CalcSipList(&list, plane, eDigiToAdjusted); }

  void Formulas() {
    const ZuCamera& camera = photo.GetCamera();
    const double r02 = camera.m_dR0 * camera.m_dR0;
    for (ZuPoint* p = list.First(); p != nullptr; p = p->Next()) {
      const double u = p->m_dX + 0.5, v = 479.5 - p->m_dY;
      const double xr = -3.168 + 0.0099 * u - camera.m_dXh, yr = -2.376 + 0.0099 * v - camera.m_dYh;
      const double r2 = xr * xr + yr * yr;
      const double d = camera.m_dA2 * (r2 * r2 - r02 * r02) + camera.m_dA1 * (r2 - r02);
      const Xyz q = bare.Sip(xr - xr * d, yr - yr * d);
      p->m_dX = q.x;
      p->m_dY = q.y;
      p->m_dZ = q.z;
    }
  }

  ZuPhoto photo = photo_sample::MakePhoto();
  ZuPlane plane = photo_sample::MakePlane();
  Bare bare;
  ZuPointList list;
  std::vector<ZuPoint*> nodes;
};

void PixelToObject(benchmark::State& state, bool bReference) {
  static Pixels pixels;
  for (auto _ : state) {
    state.PauseTiming();
    pixels.Restore();
    state.ResumeTiming();
    bReference ? pixels.Formulas() : pixels.Ours();
  }
  state.SetItemsProcessed(state.iterations() * Pixels::kCount);
}
BENCHMARK_CAPTURE(PixelToObject, ours, false)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(PixelToObject, reference, true)->Unit(benchmark::kMillisecond);

[[gnu::noinline]] Xyz BareCollinearity(const Bare& b, double x, double y, double z) {
  const double dx = x - b.X0[0], dy = y - b.X0[1], dz = z - b.X0[2];
  const double w = b.R[2] * dx + b.R[5] * dy + b.R[8] * dz;
  return {-(b.R[0] * dx + b.R[3] * dy + b.R[6] * dz) * b.c / w,
          -(b.R[1] * dx + b.R[4] * dy + b.R[7] * dz) * b.c / w, 0.0};
}

void ObjectToAdjusted(benchmark::State& state, bool bReference) {
  const ZuPhoto photo = photo_sample::MakePhoto();
  const Bare bare(photo, photo_sample::MakePlane());
  const ZuBikoTransform transform(&photo, eObjectToAdjusted, false);
  const auto points = photo_sample::Points(100.0, 0.1);
  for (const ZuPoint& p : points) {
    Xyz q{p.m_dX, p.m_dY, p.m_dZ};
    transform.Transform(&q.x, &q.y, &q.z);
    const Xyz expected = BareCollinearity(bare, p.m_dX, p.m_dY, p.m_dZ);
    CheckNear(q.x, expected.x);
    CheckNear(q.y, expected.y);
  }
  for (auto _ : state) {
    for (const ZuPoint& p : points) {
      Xyz q{p.m_dX, p.m_dY, p.m_dZ};
      if (bReference) {
        q = BareCollinearity(bare, q.x, q.y, q.z);
      } else {
        transform.Transform(&q.x, &q.y, &q.z);
      }
      benchmark::DoNotOptimize(q);
    }
  }
  state.SetItemsProcessed(state.iterations() * photo_sample::kPoints);
}
BENCHMARK_CAPTURE(ObjectToAdjusted, ours, false);
BENCHMARK_CAPTURE(ObjectToAdjusted, reference, true);

// Lists in the modes of one matrix, against a 3x3 product with division a point.
void ByMatrix(ZuPointList* pList, const double* m) {
  for (ZuPoint* p = pList->First(); p != nullptr; p = p->Next()) {
    const double x = p->m_dX, y = p->m_dY;
    const double w = m[6] * x + m[7] * y + m[8];
    p->m_dX = (m[0] * x + m[1] * y + m[2]) / w;
    p->m_dY = (m[3] * x + m[4] * y + m[5]) / w;
  }
}

void ListByMatrix(benchmark::State& state, bool bReference) {
  const ZuPhoto photo = photo_sample::MakePhoto();
  const ZuBikoTransform transform(&photo, eDigiToBiko, false);
  const ZuMatrix m = photo.GetReseauTrafoMat();
  ZuPointList list, expected;
  for (const ZuPoint& p : photo_sample::Points(200.0, 0.0)) {
    list.Add(p);
    expected.Add(p);
  }
  transform.Transform(&list);
  ByMatrix(&expected, m.GetData());
  const ZuPoint* q = expected.First();
  for (const ZuPoint* p = list.First(); p != nullptr; p = p->Next(), q = q->Next()) {
    CheckNear(p->m_dX, q->m_dX);
    CheckNear(p->m_dY, q->m_dY);
  }
  for (auto _ : state) {
    if (bReference) {
      ByMatrix(&list, m.GetData());
    } else {
      transform.Transform(&list);
    }
  }
  state.SetItemsProcessed(state.iterations() * photo_sample::kPoints);
}
BENCHMARK_CAPTURE(ListByMatrix, ours, false);
BENCHMARK_CAPTURE(ListByMatrix, reference, true);

}  // namespace
