// The adjusted similarity transformation with all it tells beside the closed form, Eigen's umeyama
// and plain loops for the same figures; and a million points against passes that read both lists.
#include <benchmark/benchmark.h>

#include <Eigen/Dense>
#include <cmath>
#include <vector>

#include "bench/similarity_lists.h"
#include "zu/adjust/consensus.h"
#include "zu/adjust/similarity.h"
#include "zu/transform/trafo3d.h"

namespace {

void BM_Adjusted(benchmark::State& state) {
  const SimilarityLists lists(static_cast<int>(state.range(0)), false);
  const ZuSortHelper<ZuPoint> target(&lists.target);
  for (auto _ : state) {
    benchmark::DoNotOptimize(ZuAdjustSimilarity(target, lists.source, {}));
  }
}
BENCHMARK(BM_Adjusted)->Arg(1000)->Arg(1000000)->Unit(benchmark::kMicrosecond);

void BM_ClosedForm(benchmark::State& state) {
  const SimilarityLists lists(static_cast<int>(state.range(0)), false);
  const ZuSortHelper<ZuPoint> target(&lists.target);
  for (auto _ : state) {
    ZuTrafo3d trafo;
    benchmark::DoNotOptimize(trafo.CalcByControlPoints(target, &lists.source, 3, false));
  }
}
BENCHMARK(BM_ClosedForm)->Arg(1000)->Arg(1000000)->Unit(benchmark::kMicrosecond);

// The closed form three times, and the output: the records of the adjustment filled from given
// ones.
void BM_ThreeClosedForms(benchmark::State& state) {
  const SimilarityLists lists(static_cast<int>(state.range(0)), false);
  const ZuSortHelper<ZuPoint> target(&lists.target);
  const std::vector<ZuSimilarityPoint> given = ZuAdjustSimilarity(target, lists.source, {}).points;
  for (auto _ : state) {
    for (int i = 0; i < 3; ++i) {
      ZuTrafo3d trafo;
      benchmark::DoNotOptimize(trafo.CalcByControlPoints(target, &lists.source, 3, false));
    }
    const std::vector<ZuSimilarityPoint> points(given);
    benchmark::DoNotOptimize(points.data());
  }
}
BENCHMARK(BM_ThreeClosedForms)->Arg(1000)->Unit(benchmark::kMicrosecond);

// Eight passes that read the coordinates and accuracies of both lists, and the records written.
void BM_EightPasses(benchmark::State& state) {
  const SimilarityLists lists(static_cast<int>(state.range(0)), false);
  for (auto _ : state) {
    double dSum = 0.0;
    for (int i = 0; i < 8; ++i) {
      for (const ZuPoint *p = lists.source.First(), *q = lists.target.First(); p != nullptr;
           p = p->Next(), q = q->Next()) {
        dSum += p->m_dX + p->m_dY + p->m_dZ + p->m_dDX + p->m_dDY + p->m_dDZ;
        dSum += q->m_dX + q->m_dY + q->m_dZ + q->m_dDX + q->m_dDY + q->m_dDZ;
      }
    }
    benchmark::DoNotOptimize(dSum);
    std::vector<ZuSimilarityPoint> points(lists.a.size());
    benchmark::DoNotOptimize(points.data());
  }
}
BENCHMARK(BM_EightPasses)->Arg(1000000)->Unit(benchmark::kMicrosecond);

// The figures of the adjustment by plain loops over paired points: umeyama, normal equations,
// their inverse, and matrices of each point.
using Vector3 = Eigen::Vector3d;
using Matrix3 = Eigen::Matrix3d;
using Rows3 = Eigen::Matrix<double, 3, 3, Eigen::RowMajor>;

struct PlainPairs {
  explicit PlainPairs(const SimilarityLists& lists) : a(3, lists.a.size()), b(3, lists.b.size()) {
    for (std::size_t i = 0; i < lists.a.size(); ++i) {
      a.col(static_cast<Eigen::Index>(i)) = Vector3(lists.a[i].data());
      b.col(static_cast<Eigen::Index>(i)) = Vector3(lists.b[i].data());
    }
  }
  Eigen::Matrix3Xd a, b;
};

Eigen::Matrix<double, 3, 7> Derivatives(const Vector3& z) {
  Eigen::Matrix<double, 3, 7> A;
  A << -Matrix3::Identity(), -z, Vector3(0.0, z[2], -z[1]), Vector3(-z[2], 0.0, z[0]),
      Vector3(z[1], -z[0], 0.0);
  return A;
}

std::vector<ZuSimilarityPoint> PlainAdjustment(const PlainPairs& pairs, double dLimit,
                                               double dLeastError) {
  const Eigen::Index n = pairs.a.cols();
  const Eigen::Matrix4d form = Eigen::umeyama(pairs.a, pairs.b, true);
  const Matrix3 sR = form.topLeftCorner<3, 3>();
  const Vector3 center = sR * pairs.a.rowwise().mean(), shift = form.topRightCorner<3, 1>();
  Eigen::Matrix<double, 7, 7> N = Eigen::Matrix<double, 7, 7>::Zero();
  double dSquares = 0.0;
  for (Eigen::Index i = 0; i < n; ++i) {
    const Vector3 z = sR * pairs.a.col(i), e = pairs.b.col(i) - z - shift;
    const Eigen::Matrix<double, 3, 7> A = Derivatives(z - center);
    N += A.transpose() * A;
    dSquares += e.squaredNorm();
  }
  const Eigen::Matrix<double, 7, 7> Q = N.inverse();
  const double dSigma0 = std::sqrt(dSquares / static_cast<double>(3 * n - 7));
  std::vector<ZuSimilarityPoint> points(static_cast<std::size_t>(n));
  for (Eigen::Index i = 0; i < n; ++i) {
    const Vector3 z = sR * pairs.a.col(i), e = pairs.b.col(i) - z - shift;
    const Eigen::Matrix<double, 3, 7> A = Derivatives(z - center);
    const Matrix3 AQA = A * Q * A.transpose(), Qee = Matrix3::Identity() - AQA;
    const Vector3 x = Qee.inverse() * e;
    ZuSimilarityPoint& p = points[static_cast<std::size_t>(i)];
    p.uId = static_cast<unsigned>(i) + 1;
    p.iDimension = 3;
    p.bControlled = true;
    for (int k = 0; k < 3; ++k) {
      const double r = Qee(k, k);
      p.adResidual[k] = e[k];
      p.adResidualSd[k] = dSigma0 * std::sqrt(r);
      p.adRedundancy[k] = r;
      p.adW[k] = e[k] / p.adResidualSd[k];
      p.adNabla[k] = dLeastError * dSigma0 / std::sqrt(r);
      p.adEffect[k] = dLeastError * std::sqrt((1.0 - r) / r);
      p.adLeaveOneOut[k] = x[k];
      p.adTargetResidual[k] = -e[k];
      p.bControlled = p.bControlled && r >= 0.01;
    }
    p.dTest = e.dot(x) / (3.0 * dSigma0 * dSigma0);
    p.dLimit = dLimit;
    Eigen::Map<Rows3>(p.adCarried) = dSigma0 * dSigma0 * AQA;
  }
  return points;
}

void BM_AdjustedReference(benchmark::State& state) {
  const SimilarityLists lists(static_cast<int>(state.range(0)), false);
  const PlainPairs pairs(lists);
  const ZuSimilarityResult ours = ZuAdjustSimilarity(lists.target, lists.source, {});
  const double dLimit = ours.points[0].dLimit, dLeastError = ZuLeastError(0.001, 0.8);
  const auto points = PlainAdjustment(pairs, dLimit, dLeastError);
  for (std::size_t i = 0; i < points.size(); ++i) {
    for (std::size_t k = 0; k < 3; ++k) {
      if (std::fabs(points[i].adW[k] - ours.points[i].adW[k]) > 1e-6 ||
          std::fabs(points[i].adLeaveOneOut[k] - ours.points[i].adLeaveOneOut[k]) > 1e-9) {
        return state.SkipWithError("the figures differ");
      }
    }
  }
  for (auto _ : state) {
    benchmark::DoNotOptimize(PlainAdjustment(pairs, dLimit, dLeastError).data());
  }
}
BENCHMARK(BM_AdjustedReference)->Arg(1000)->Unit(benchmark::kMicrosecond);

void BM_Umeyama(benchmark::State& state) {
  const SimilarityLists lists(static_cast<int>(state.range(0)), false);
  Eigen::Matrix3Xd a(3, lists.a.size()), b(3, lists.b.size());
  for (std::size_t i = 0; i < lists.a.size(); ++i) {
    for (int k = 0; k < 3; ++k) {
      a(k, static_cast<Eigen::Index>(i)) = lists.a[i][static_cast<std::size_t>(k)];
      b(k, static_cast<Eigen::Index>(i)) = lists.b[i][static_cast<std::size_t>(k)];
    }
  }
  for (auto _ : state) benchmark::DoNotOptimize(Eigen::umeyama(a, b, true).eval());
}
BENCHMARK(BM_Umeyama)->Arg(1000)->Arg(1000000)->Unit(benchmark::kMicrosecond);

void BM_Consensus(benchmark::State& state) {
  const SimilarityLists lists(static_cast<int>(state.range(0)), false);
  ZuConsensusOptions options;
  options.dTolerance = 0.01;
  for (auto _ : state) {
    benchmark::DoNotOptimize(ZuFindConsensus(lists.target, lists.source, options));
  }
}
BENCHMARK(BM_Consensus)->Arg(12)->Arg(1000)->Unit(benchmark::kMicrosecond);

}  // namespace
