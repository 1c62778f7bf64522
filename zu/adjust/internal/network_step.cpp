#include "zu/adjust/internal/network_step.h"

#include "zu/adjust/internal/dense_cholesky.h"

namespace zu::internal {

namespace {

constexpr double kHeld = 1e-12;       // resistance of a motion that fixed coordinates allow [-]
constexpr double kLeastScale = -0.5;  // change of scale that is taken at once
constexpr int kGenerators = NetworkModel::kGenerators;

using Motion = std::array<double, kGenerators>;

double Dot(const double* a, const double* b) {
  double s = 0.0;
  for (int g = 0; g < kGenerators; ++g) s += a[g] * b[g];
  return s;
}

// Motions that leave fixed coordinates where they are.
std::vector<Motion> AllowedMotions(const NetworkModel& model, const NetworkState& state) {
  const auto resistance = model.FixedResistance(state);
  double values[kGenerators], vectors[kGenerators * kGenerators];
  SymmetricEigen(kGenerators, resistance.data(), values, vectors);
  std::vector<Motion> motions;
  for (int k = 0; k < kGenerators && values[k] <= kHeld * (1.0 + values[6]); ++k) {
    Motion& motion = motions.emplace_back();
    for (int g = 0; g < kGenerators; ++g) {
      motion[static_cast<size_t>(g)] = vectors[kGenerators * g + k];
    }
  }
  return motions;
}

// The steps of all points, tied ones from their reduced rows.
std::vector<Vec3> PointSteps(const NetworkModel& model, const std::vector<double>& reduced,
                             const std::vector<Vec3>& points) {
  std::vector<Vec3> steps(points.size(), Vec3{});
  for (int i = 0; i < static_cast<int>(points.size()); ++i) {
    if (!model.IsPointUsed(i)) continue;
    int iRow = model.PointOffset(i);
    for (int axis = 0; axis < 3; ++axis) {
      if (!model.IsFree(i, axis)) continue;
      steps[static_cast<size_t>(i)][static_cast<size_t>(axis)] =
          model.IsEliminated(i) ? points[static_cast<size_t>(i)][static_cast<size_t>(axis)]
                                : reduced[static_cast<size_t>(iRow++)];
    }
  }
  return steps;
}

// The motion closest to the steps of the points; false where they decide none.
bool ClosestMotion(const NetworkModel& model, const NetworkState& state,
                   const std::vector<Vec3>& steps, Motion* pMotion) {
  const std::vector<Motion> allowed = AllowedMotions(model, state);
  const size_t k = allowed.size();
  std::vector<double> normal(k * k, 0.0), right(k, 0.0), inverse(k * k), row(k);
  for (size_t i = 0; i < steps.size(); ++i) {
    if (!model.IsPointUsed(static_cast<int>(i))) continue;
    double rows[3][kGenerators];
    model.PointMotion(state, static_cast<int>(i), rows);
    for (size_t axis = 0; axis < 3; ++axis) {
      for (size_t a = 0; a < k; ++a) row[a] = Dot(rows[axis], allowed[a].data());
      for (size_t a = 0; a < k; ++a) {
        right[a] += row[a] * steps[i][axis];
        for (size_t b = 0; b < k; ++b) normal[k * a + b] += row[a] * row[b];
      }
    }
  }
  if (k == 0 || !InvertSquare(static_cast<int>(k), normal.data(), inverse.data())) return false;
  *pMotion = {};
  for (size_t a = 0; a < k; ++a) {
    double t = 0.0;
    for (size_t b = 0; b < k; ++b) t += inverse[k * a + b] * right[b];
    for (size_t g = 0; g < kGenerators; ++g) (*pMotion)[g] += t * allowed[a][g];
  }
  return (*pMotion)[6] > kLeastScale;
}

}  // namespace

void TakeStep(const NetworkModel& model, const std::vector<double>& reduced,
              const std::vector<Vec3>& points, NetworkState* pState) {
  Motion motion;
  if (!ClosestMotion(model, *pState, PointSteps(model, reduced, points), &motion)) {
    model.Add(reduced, points, pState);
    return;
  }
  std::vector<double> rest = reduced;
  std::vector<Vec3> pointRest = points;
  const auto rows = model.ReducedMotion(*pState);
  for (size_t i = 0; i < rest.size(); ++i) rest[i] -= Dot(rows[i].data(), motion.data());
  for (size_t i = 0; i < points.size(); ++i) {
    double byPoint[3][kGenerators];
    model.PointMotion(*pState, static_cast<int>(i), byPoint);
    for (size_t axis = 0; axis < 3; ++axis) {
      pointRest[i][axis] -= Dot(byPoint[axis], motion.data());
    }
  }
  model.Add(rest, pointRest, pState);
  model.Move(motion.data(), pState);
}

}  // namespace zu::internal
