#include "zu/adjust/internal/fit_start.h"

#include <Eigen/Dense>
#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>
#include <utility>

#include "zu/adjust/internal/counter_random.h"

namespace zu::internal {
namespace {

constexpr int kAllSamples = 1200;    // samples of few points that are all looked at
constexpr int kDrawn = 400;          // samples drawn; (1 - 2^-4)^400 is 6e-12
constexpr int kScored = 400;         // points that samples are held against
constexpr int kDirections = 150;     // of a cylinder over the half sphere: 7 degrees apart
constexpr int kPairDirections = 60;  // and through two points each
constexpr int kCircles = 16;         // samples for each direction
constexpr size_t kRefined = 16;      // cylinders that are looked at closely
constexpr int kRounds = 30;          // of points and least squares
constexpr double kCut = 2.5;         // times the scale [-]
constexpr double kCutKnown = 3.5;    // times a standard deviation that is known [-]

// The median of the length of c normal components is the standard deviation over this.
double ScaleOfMedian(const FitShape& shape) {
  return shape.ConditionCount() == 2 ? 0.8493 : 1.4826;
}

class Search {
 public:
  Search(FitKind kind, const std::vector<Vector3>& points, const std::vector<double>& sigmas,
         double dRounding, std::uint64_t uSeed)
      : m_kind(kind), m_points(points), m_sigmas(sigmas), m_dRounding(dRounding), m_uSeed(uSeed) {
    const int n = static_cast<int>(points.size());
    const int iScored = std::min(n, kScored);
    const CounterRandom random(uSeed, 0);
    for (int i = 0; i < iScored; ++i) {
      m_scored.push_back(n <= kScored ? i : random.Index(static_cast<std::uint64_t>(i), n));
    }
    m_distances.resize(m_scored.size());
  }

  FitStart Run() {
    MakeCandidates();
    FitStart start{FitShape(m_kind), {}, false};
    if (m_candidates.empty()) return start;
    const double dScale = m_sigmas.empty() ? SmallestScale() : 1.0;
    m_dCut = std::max(m_sigmas.empty() ? kCut * dScale : kCutKnown, m_dRounding);
    std::vector<std::pair<double, const FitShape*>> order;
    for (const FitShape& shape : m_candidates) {
      double dSum = 0.0;
      for (const int i : m_scored) dSum += std::min(1.0, Square(Distance(shape, i) / m_dCut));
      if (std::isfinite(dSum)) order.emplace_back(dSum, &shape);
    }
    const size_t uRefined =
        std::min(order.size(), m_kind == FitKind::kCylinder ? kRefined : size_t{1});
    std::partial_sort(order.begin(), order.begin() + static_cast<std::ptrdiff_t>(uRefined),
                      order.end());
    double dBest = 0.0;
    for (size_t i = 0; i < uRefined; ++i) {
      FitStart refined{*order[i].second, {}, true};
      Agree(&refined);
      const double dMedian = MedianOf(refined.shape, std::numeric_limits<double>::infinity());
      if (start.bFound && !(dMedian < dBest)) continue;
      dBest = dMedian;
      start = std::move(refined);
    }
    return start;
  }

 private:
  static double Square(double d) { return d * d; }

  // In units of the point's standard deviation where it is known.
  double Distance(const FitShape& shape, int i) const {
    const size_t u = static_cast<size_t>(i);
    const double d = shape.Distance(m_points[u]);
    return m_sigmas.empty() ? d : d / m_sigmas[u];
  }

  void Take(const int* piSample, const Vector3& axis) {
    FitShape shape(m_kind);
    Vector3 sample[4];
    const int m = shape.SampleSize();
    for (int a = 0; a < m; ++a) sample[a] = m_points[static_cast<size_t>(piSample[a])];
    if (shape.FromSample({sample, static_cast<size_t>(m)}, axis)) m_candidates.push_back(shape);
  }

  void MakeCandidates() {
    if (m_kind == FitKind::kCylinder) return MakeCylinders();
    const int n = static_cast<int>(m_points.size()), m = FitShape(m_kind).SampleSize();
    if (n < m) return;
    long long iAll = 1;
    for (int a = 0; a < m; ++a) iAll = std::min(iAll * (n - a) / (a + 1), 1LL << 40);
    int aiSample[4];
    if (iAll > kAllSamples) {
      const CounterRandom random(m_uSeed, 1);
      for (int k = 0; k < kDrawn; ++k) {
        random.Sample(static_cast<std::uint64_t>(k), n, m, aiSample);
        Take(aiSample, Vector3::Zero());
      }
      return;
    }
    for (int a = 0; a < m; ++a) aiSample[a] = a;
    for (int a = 0; a >= 0;) {
      Take(aiSample, Vector3::Zero());
      a = m - 1;
      while (a >= 0 && aiSample[a] == n - m + a) --a;
      if (a < 0) break;
      ++aiSample[a];
      for (int b = a + 1; b < m; ++b) aiSample[b] = aiSample[b - 1] + 1;
    }
  }

  void MakeCylinders() {
    const int n = static_cast<int>(m_points.size());
    if (n < 5) return;
    std::vector<Vector3> axes;
    // Even directions: R. Swinbank and J. Purser, "Fibonacci grids", 2006.
    for (int k = 0; k < kDirections; ++k) {
      const double z = (k + 0.5) / kDirections, r = std::sqrt(1.0 - z * z);
      const double dTurn = k * std::numbers::pi * (3.0 - std::sqrt(5.0));
      axes.emplace_back(r * std::cos(dTurn), r * std::sin(dTurn), z);
    }
    const CounterRandom random(m_uSeed, 2);
    int aiSample[4];
    for (int k = 0; k < kPairDirections; ++k) {
      random.Sample(static_cast<std::uint64_t>(k), n, 2, aiSample);
      const Vector3 d =
          m_points[static_cast<size_t>(aiSample[1])] - m_points[static_cast<size_t>(aiSample[0])];
      if (d.norm() > 0.0) axes.push_back(d);
    }
    FitShape line(FitKind::kLine);
    if (line.FromPoints(m_points, Vector3::Zero())) {
      for (const Vector3& d : {line.Direction(), line.E1(), line.E2()}) axes.push_back(d);
    }
    std::uint64_t k = 1000;
    for (const Vector3& axis : axes) {
      for (int iCircle = 0; iCircle < kCircles; ++iCircle) {
        random.Sample(k++, n, 3, aiSample);
        Take(aiSample, axis);
      }
    }
  }

  // Of the distances; the limit where it is no smaller.
  double MedianOf(const FitShape& shape, double dLimit) {
    const int iScored = static_cast<int>(m_scored.size()), p = shape.ParameterCount();
    const size_t uMiddle = static_cast<size_t>(std::clamp((iScored + p + 1) / 2, 1, iScored) - 1);
    size_t uBelow = 0;
    for (size_t u = 0; u < m_scored.size(); ++u) {
      m_distances[u] = std::fabs(shape.Distance(m_points[static_cast<size_t>(m_scored[u])]));
      uBelow += m_distances[u] < dLimit;
    }
    if (uBelow <= uMiddle) return dLimit;
    std::nth_element(m_distances.begin(),
                     m_distances.begin() + static_cast<std::ptrdiff_t>(uMiddle), m_distances.end());
    return m_distances[uMiddle];
  }

  double ScaleOf(double dMedian) const {
    const FitShape& shape = m_candidates.front();
    const int iFree = static_cast<int>(m_scored.size()) - shape.ParameterCount();
    return ScaleOfMedian(shape) * (1.0 + 5.0 / std::max(1, iFree)) * dMedian;
  }

  double SmallestScale() {
    double dSmallest = std::numeric_limits<double>::infinity();
    for (const FitShape& shape : m_candidates) dSmallest = MedianOf(shape, dSmallest);
    return ScaleOf(dSmallest);
  }

  // Least squares of the points that agree, by Newton's way of Gauss.
  bool Refine(const std::vector<char>& agrees, FitShape* pShape) const {
    const int u = pShape->ParameterCount();
    for (int iStep = 0; iStep < 8; ++iStep) {
      Eigen::MatrixXd N = Eigen::MatrixXd::Zero(u, u);
      Eigen::VectorXd g = Eigen::VectorXd::Zero(u);
      FitShape::Row row;
      for (size_t i = 0; i < m_points.size(); ++i) {
        if (!agrees[i] || !pShape->Linearize(m_points[i], &row)) continue;
        const double p = m_sigmas.empty() ? 1.0 : 1.0 / Square(m_sigmas[i]);
        const auto A = row.A.leftCols(u);
        N += p * A.transpose() * A;
        g += p * A.transpose() * row.w;
      }
      const FitShape::Parameters dx = -N.ldlt().solve(g);
      if (!dx.allFinite() || dx.norm() > 1.0) return false;
      pShape->Update(dx);
      if (dx.norm() < 1e-9) break;
    }
    return true;
  }

  bool Mark(const FitShape& shape, double dCut, std::vector<char>* pAgrees) const {
    bool bChanged = false;
    for (size_t i = 0; i < m_points.size(); ++i) {
      const char c = std::fabs(Distance(shape, static_cast<int>(i))) <= dCut;
      bChanged |= c != (*pAgrees)[i];
      (*pAgrees)[i] = c;
    }
    return bChanged;
  }

  // A sample tells the scale no better than its shape is; what is refined tells it better.
  void Agree(FitStart* pStart) {
    pStart->agrees.assign(m_points.size(), 0);
    double dCut = m_dCut;
    Mark(pStart->shape, dCut, &pStart->agrees);
    for (int iRound = 0; iRound < kRounds; ++iRound) {
      FitShape shape = pStart->shape;
      if (!Refine(pStart->agrees, &shape)) break;
      pStart->shape = shape;
      if (m_sigmas.empty()) {
        dCut = std::min(dCut, std::max(kCut * ScaleOf(MedianOf(shape, dCut)), m_dRounding));
      }
      if (!Mark(shape, dCut, &pStart->agrees)) break;
    }
  }

  FitKind m_kind;
  const std::vector<Vector3>& m_points;
  const std::vector<double>& m_sigmas;
  double m_dRounding;
  std::uint64_t m_uSeed;
  std::vector<int> m_scored;
  std::vector<double> m_distances;
  std::vector<FitShape> m_candidates;
  double m_dCut = 0.0;
};

}  // namespace

FitStart FindShape(FitKind kind, const std::vector<Vector3>& points,
                   const std::vector<double>& sigmas, double dRounding, std::uint64_t uSeed) {
  return Search(kind, points, sigmas, dRounding, uSeed).Run();
}

}  // namespace zu::internal
