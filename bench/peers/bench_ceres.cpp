// Bundle adjustment beside Ceres, on the same observations and start values.
#include <benchmark/benchmark.h>
#include <ceres/ceres.h>
#include <ceres/rotation.h>

#include "bench/network_problem.h"

namespace {

using network_problem::Maker;

// Residuals of a measured point, over its standard deviation; camera c xh yh a1 a2 c1 c2, photo
// rotation vector of R' and centre.
struct Image {
  double x, y, dWeight, dR0;

  template <typename T>
  bool operator()(const T* camera, const T* photo, const T* point, T* residual) const {
    const T d[3] = {point[0] - photo[3], point[1] - photo[4], point[2] - photo[5]};
    T v[3];
    ceres::AngleAxisRotatePoint(photo, d, v);
    const T u = -camera[0] * v[0] / v[2], w = -camera[0] * v[1] / v[2], s = u * u + w * w;
    const double s0 = dR0 * dR0;
    const T k = 1.0 + camera[3] * (s - s0) + camera[4] * (s * s - s0 * s0);
    const T dTangential[2] = {camera[5] * (s + 2.0 * u * u) + 2.0 * camera[6] * u * w,
                              camera[6] * (s + 2.0 * w * w) + 2.0 * camera[5] * u * w};
    residual[0] = (camera[1] + u * k + dTangential[0] - x) * dWeight;
    residual[1] = (camera[2] + w * k + dTangential[1] - y) * dWeight;
    return true;
  }
};

struct Given {
  std::array<double, 3> at, sd;
  template <typename T>
  bool operator()(const T* point, T* residual) const {
    for (size_t k = 0; k < 3; ++k) residual[k] = (point[k] - at[k]) / sd[k];
    return true;
  }
};

class CeresProblem {
 public:
  explicit CeresProblem(const ZuNetwork& network) : m_network(network) {
    const ZuCamera& c = network.cameras[0].camera;
    m_camera = {c.m_dC, c.m_dXh, c.m_dYh, c.m_dA1, c.m_dA2, c.m_dC1, c.m_dC2};
    for (const ZuNetworkPhoto& photo : network.photos) {
      std::array<double, 6>& at = m_photos.emplace_back();
      // R by rows is R' by columns.
      ceres::RotationMatrixToAngleAxis(photo.adRotation.data(), at.data());
      std::copy(photo.adPosition.begin(), photo.adPosition.end(), at.begin() + 3);
    }
    for (const ZuNetworkPoint& point : network.points) m_points.push_back(point.adPosition);
  }

  ceres::Solver::Summary Solve(ceres::LinearSolverType eSolver) {
    ceres::Problem problem;
    for (const ZuNetworkImagePoint& image : m_network.images) {
      problem.AddResidualBlock(
          new ceres::AutoDiffCostFunction<Image, 2, 7, 6, 3>(new Image{
              image.x, image.y, 1.0 / std::sqrt(image.sxx), m_network.cameras[0].camera.m_dR0}),
          nullptr, m_camera.data(), m_photos[static_cast<size_t>(image.iPhoto)].data(),
          m_points[static_cast<size_t>(image.iPoint)].data());
    }
    for (size_t i = 0; i < m_points.size(); ++i) {
      const ZuNetworkPoint& point = m_network.points[i];
      if (point.iControl != 7) continue;
      problem.AddResidualBlock(
          new ceres::AutoDiffCostFunction<Given, 3, 3>(new Given{point.adGiven, point.adGivenSd}),
          nullptr, m_points[i].data());
    }
    ceres::Solver::Options options;
    options.linear_solver_type = eSolver;
    options.linear_solver_ordering = std::make_shared<ceres::ParameterBlockOrdering>();
    for (auto& point : m_points) options.linear_solver_ordering->AddElementToGroup(point.data(), 0);
    for (auto& photo : m_photos) options.linear_solver_ordering->AddElementToGroup(photo.data(), 1);
    options.linear_solver_ordering->AddElementToGroup(m_camera.data(), 1);
    options.num_threads = 1;
    options.max_num_iterations = 200;
    options.function_tolerance = 1e-12;
    options.logging_type = ceres::SILENT;
    ceres::Solver::Summary summary;
    ceres::Solve(options, &problem, &summary);
    return summary;
  }

 private:
  const ZuNetwork& m_network;
  std::array<double, 7> m_camera{};
  std::vector<std::array<double, 6>> m_photos;
  std::vector<std::array<double, 3>> m_points;
};

void Adjust(benchmark::State& state, const ZuNetwork& network, bool bStatistics) {
  ZuNetworkOptions options;
  options.bStatistics = bStatistics;
  ZuNetworkResult result;
  for (auto _ : state) result = network.Adjust(options);
  if (result.status != ZuAdjustStatus::Good) state.SkipWithError(result.strText.c_str());
  state.counters["steps"] = result.iSteps;
  state.counters["cost"] = result.dSigma0 * result.dSigma0 * result.iRedundancy;
}

void Ceres(benchmark::State& state, const ZuNetwork& network, ceres::LinearSolverType eSolver) {
  ceres::Solver::Summary summary;
  for (auto _ : state) summary = CeresProblem(network).Solve(eSolver);
  if (!summary.IsSolutionUsable()) state.SkipWithError(summary.message.c_str());
  state.counters["steps"] = static_cast<double>(summary.iterations.size()) - 1.0;
  state.counters["cost"] = 2.0 * summary.final_cost;
}

const ZuNetwork& Ring() {
  static const ZuNetwork network = Maker::Ring(115, 160, 0.5435);
  return network;
}
const ZuNetwork& Block() {
  static const ZuNetwork network = Maker::Block(500, 50000);
  return network;
}

void Ring_ours(benchmark::State& state) { Adjust(state, Ring(), true); }
void Ring_ceres(benchmark::State& state) { Ceres(state, Ring(), ceres::DENSE_SCHUR); }
void Block_ours(benchmark::State& state) { Adjust(state, Block(), false); }
void Block_statistics(benchmark::State& state) { Adjust(state, Block(), true); }
void Block_ceres(benchmark::State& state) { Ceres(state, Block(), ceres::SPARSE_SCHUR); }
BENCHMARK(Ring_ours)->Unit(benchmark::kMillisecond);
BENCHMARK(Ring_ceres)->Unit(benchmark::kMillisecond);
BENCHMARK(Block_ours)->Unit(benchmark::kMillisecond);
BENCHMARK(Block_statistics)->Unit(benchmark::kMillisecond);
BENCHMARK(Block_ceres)->Unit(benchmark::kMillisecond);

}  // namespace
