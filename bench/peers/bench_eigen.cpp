// Small problems beside Eigen's own solutions of them: the similarity transformation of few points,
// a ray met with a plane, and products and inverses of small matrices.
#include <benchmark/benchmark.h>

#include <Eigen/Geometry>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <vector>

#include "bench/photo_sample.h"
#include "bench/similarity_lists.h"
#include "zu/numerics/matrix.h"
#include "zu/transform/trafo3d.h"

namespace {

void CheckNear(double a, double b, const char* szWhat) {
  if (std::fabs(a - b) <= 1e-9 * std::max(1.0, std::fabs(b))) return;
  std::fprintf(stderr, "bench_eigen: %s differs\n", szWhat);
  std::exit(1);
}

// --- Similarity transformation ------------------------------------------------------------------

Eigen::Matrix3Xd Columns(const std::vector<std::array<double, 3>>& points) {
  return Eigen::Map<const Eigen::Matrix3Xd>(points[0].data(), 3,
                                            static_cast<Eigen::Index>(points.size()));
}

// Two lists are matched by id and then estimated from; Eigen finds its matrices filled already.
void Similarity_ours(benchmark::State& state) {
  const SimilarityLists lists(static_cast<int>(state.range(0)), false);
  const ZuSortHelper<ZuPoint> index(&lists.target);
  ZuTrafo3d trafo;
  if (!trafo.CalcByControlPoints(index, &lists.source, 3, false)) std::exit(1);
  const Eigen::Matrix4d expected = Eigen::umeyama(Columns(lists.a), Columns(lists.b), true);
  for (int i = 1; i <= 3; ++i) {
    for (int j = 1; j <= 3; ++j) {
      CheckNear(trafo.m_dScale * trafo.m_mRot[i][j], expected(i - 1, j - 1), "similarity");
    }
  }
  for (auto _ : state) {
    benchmark::DoNotOptimize(trafo.CalcByControlPoints(index, &lists.source, 3, false));
  }
}

void Similarity_eigen(benchmark::State& state) {
  const SimilarityLists lists(static_cast<int>(state.range(0)), false);
  const Eigen::Matrix3Xd a = Columns(lists.a), b = Columns(lists.b);
  for (auto _ : state) benchmark::DoNotOptimize(Eigen::umeyama(a, b, true));
}

// --- A ray met with a plane ---------------------------------------------------------------------

struct Ray {
  explicit Ray(const ZuPhoto& photo)
      : rotation(Eigen::Map<const Eigen::Matrix<double, 3, 3, Eigen::RowMajor>>(
            photo.GetRotAOR().GetData())),
        eye(photo.GetPosAOR()[1], photo.GetPosAOR()[2], photo.GetPosAOR()[3]),
        c(std::fabs(photo.GetCamera().m_dC)) {}
  [[gnu::noinline]] Eigen::Vector3d Meet(const Eigen::Hyperplane<double, 3>& plane, double x,
                                         double y) const {
    const Eigen::ParametrizedLine<double, 3> line(eye, rotation * Eigen::Vector3d(x, y, -c));
    return line.intersectionPoint(plane);
  }
  Eigen::Matrix3d rotation;
  Eigen::Vector3d eye;
  double c;
};

void RayMeetsPlane_ours(benchmark::State& state) {
  ZuPhoto photo = photo_sample::MakePhoto();
  const ZuPlane plane = photo_sample::MakePlane();
  const Ray ray(photo);
  const Eigen::Hyperplane<double, 3> theirs(Eigen::Vector3d(plane.A(), plane.B(), plane.C()),
                                            plane.D());
  const auto points = photo_sample::Points(2.0, 0.0);
  ZuPoint result;
  for (const ZuPoint& p : points) {
    photo.CalcSip(&result, plane, &p);
    const Eigen::Vector3d expected = ray.Meet(theirs, p.m_dX, p.m_dY);
    CheckNear(result.m_dX, expected.x(), "ray and plane");
    CheckNear(result.m_dZ, expected.z(), "ray and plane");
  }
  for (auto _ : state) {
    for (const ZuPoint& p : points) {
      photo.CalcSip(&result, plane, &p);
      benchmark::DoNotOptimize(result.m_dX);
    }
  }
}

void RayMeetsPlane_eigen(benchmark::State& state) {
  const Ray ray(photo_sample::MakePhoto());
  const ZuPlane ours = photo_sample::MakePlane();
  const Eigen::Hyperplane<double, 3> plane(Eigen::Vector3d(ours.A(), ours.B(), ours.C()), ours.D());
  const auto points = photo_sample::Points(2.0, 0.0);
  for (auto _ : state) {
    for (const ZuPoint& p : points) benchmark::DoNotOptimize(ray.Meet(plane, p.m_dX, p.m_dY));
  }
}

// --- Small matrices -----------------------------------------------------------------------------

constexpr int kCases = 64;

template <int n>
using Fixed = Eigen::Matrix<double, n, n, Eigen::RowMajor>;

std::vector<ZuMatrix> Matrices(int n) {
  std::mt19937 rng(7);
  std::uniform_real_distribution<double> element(-1.0, 1.0);
  std::vector<ZuMatrix> result(kCases, ZuMatrix(n, n));
  for (ZuMatrix& m : result) {
    for (int i = 0; i < n * n; ++i) m.GetData()[i] = element(rng);
  }
  return result;
}

template <int n>
std::vector<Fixed<n>> FixedMatrices() {
  std::vector<Fixed<n>> result;
  for (const ZuMatrix& m : Matrices(n)) result.emplace_back(m.GetData());
  return result;
}

template <int n>
void CheckMatrix(const ZuMatrix& m, const Fixed<n>& expected, const char* szWhat) {
  for (int i = 0; i < n * n; ++i) CheckNear(m.GetData()[i], expected.data()[i], szWhat);
}

template <int n>
void Product_ours(benchmark::State& state) {
  const auto m = Matrices(n);
  CheckMatrix<n>(m[0] * m[1], FixedMatrices<n>()[0] * FixedMatrices<n>()[1], "product");
  for (auto _ : state) {
    for (std::size_t i = 0; i + 1 < kCases; ++i) benchmark::DoNotOptimize(m[i] * m[i + 1]);
  }
}

template <int n>
void Product_eigen(benchmark::State& state) {
  const auto m = FixedMatrices<n>();
  for (auto _ : state) {
    for (std::size_t i = 0; i + 1 < kCases; ++i) {
      Fixed<n> product = m[i] * m[i + 1];
      benchmark::DoNotOptimize(product);
    }
  }
}

template <int n>
void Inverse_ours(benchmark::State& state) {
  const auto m = Matrices(n);
  ZuMatrix inverse(m[0]);
  inverse.Invert();
  CheckMatrix<n>(inverse, FixedMatrices<n>()[0].inverse(), "inverse");
  for (auto _ : state) {
    for (const ZuMatrix& source : m) {
      ZuMatrix copy(source);
      benchmark::DoNotOptimize(copy.Invert());
    }
  }
}

template <int n>
void Inverse_eigen(benchmark::State& state) {
  const auto m = FixedMatrices<n>();
  for (auto _ : state) {
    for (const Fixed<n>& source : m) {
      Fixed<n> inverse = source.inverse();
      benchmark::DoNotOptimize(inverse);
    }
  }
}

BENCHMARK(Similarity_ours)->Arg(7)->Arg(100);
BENCHMARK(Similarity_eigen)->Arg(7)->Arg(100);
BENCHMARK(RayMeetsPlane_ours);
BENCHMARK(RayMeetsPlane_eigen);
BENCHMARK(Product_ours<3>);
BENCHMARK(Product_eigen<3>);
BENCHMARK(Product_ours<4>);
BENCHMARK(Product_eigen<4>);
BENCHMARK(Inverse_ours<3>);
BENCHMARK(Inverse_eigen<3>);
BENCHMARK(Inverse_ours<4>);
BENCHMARK(Inverse_eigen<4>);

}  // namespace
