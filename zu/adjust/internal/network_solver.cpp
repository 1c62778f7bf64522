#include "zu/adjust/internal/network_solver.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "zu/adjust/internal/dense_cholesky.h"
#include "zu/adjust/internal/network_step.h"

namespace zu::internal {

namespace {

constexpr double kConverged = 1e-6;     // a step against the standard deviations [-]
constexpr double kExact = 1e-7;         // the same of observations that fit exactly, against
                                        // their own standard deviations [-]
constexpr double kFree = 1e-12;         // resistance of a motion that counts as none [-]
constexpr double kLeastScaled = 1e-13;  // least scaled eigenvalue [-]
constexpr double kUnknown = 0.01;       // sd of c, xh, yh against c, sigma0 a priori [-]
constexpr double kDampingStart = 1e-4;  // of the normal matrix's diagonal [-]
constexpr double kDampingLeast = 1e-9;  // below it there is none
constexpr double kDampingMost = 1e16;
constexpr double kRounding = 1e-13;  // of a sum of squares, relative
constexpr double kMoved = 1e-12;     // of the object's size: at the datum
constexpr int kDatumRounds = 20;

constexpr int kGenerators = NetworkModel::kGenerators;

// The rounding of a sum of squares over its root: residuals are differences of measured
// coordinates, which may be many of their standard deviations.
double RootRounding(const NetworkModel& model) {
  double dSum = 0.0, n = 1.0;
  for (const NetworkObservation& o : model.Observations()) {
    if (!o.bUsed || o.eKind != ZuNetworkKind::Image) continue;
    const ZuNetworkImagePoint& image = model.Network().images[static_cast<size_t>(o.iIndex)];
    dSum += image.x * image.x / image.sxx + image.y * image.y / image.syy;
    n += 2.0;
  }
  return 8.0 * std::numeric_limits<double>::epsilon() * std::sqrt(dSum / n);
}

}  // namespace

NetworkSolver::NetworkSolver(const NetworkModel& model, const ZuNetworkOptions& options,
                             NetworkNormals* pNormals)
    : m_model(model), m_options(options), m_normals(*pNormals) {}

ZuAdjustStatus NetworkSolver::End(ZuAdjustStatus status, const std::string& strText) {
  m_strText = strText;
  return status;
}

// A step is small where it saves less than the square of this; every parameter's step over its
// standard deviation is at most the root of what the step saves (Cauchy and Schwarz).
double NetworkSolver::Tolerance(double dCost) const {
  const int r = m_model.CountObservations() - m_model.CountUnknowns() + m_freedom.k;
  const double dSigma0 = r > 0 ? std::sqrt(dCost / r) : 1.0;
  // The sum of squares itself is known to its rounding alone.
  return std::max(kConverged * dSigma0, kExact);
}

ZuAdjustStatus NetworkSolver::FindFreedom(const NetworkState& state) {
  const auto resistance = m_model.Resistance(state);
  double values[kGenerators], vectors[kGenerators * kGenerators];
  SymmetricEigen(kGenerators, resistance.data(), values, vectors);
  m_freedom = {};
  while (m_freedom.k < kGenerators && values[m_freedom.k] <= kFree * (1.0 + values[6])) {
    ++m_freedom.k;
  }
  for (int g = 0; g < kGenerators; ++g) {
    for (int k = 0; k < m_freedom.k; ++k) {
      m_freedom.basis.push_back(vectors[kGenerators * g + k]);
    }
  }
  if (m_freedom.k == 0) return ZuAdjustStatus::Good;
  if (m_options.eDatum == ZuNetworkDatum::Control) {
    return End(ZuAdjustStatus::RankDefect,
               "rank defect " + std::to_string(m_freedom.k) + ": control leaves free the " +
                   FreedomText(m_model, state, m_freedom) +
                   "; more control, or inner conditions as datum, would decide it");
  }
  double dScale = 0.0;
  for (int k = 0; k < m_freedom.k; ++k) {
    dScale = std::hypot(dScale, m_freedom.basis[static_cast<size_t>(6 * m_freedom.k + k)]);
  }
  if (!m_options.bInnerScale && dScale > 1e-6) {
    return End(ZuAdjustStatus::RankDefect,
               "rank defect 1: nothing given decides the scale; a distance, or inner conditions "
               "with scale, would");
  }
  return ZuAdjustStatus::Good;
}

ZuAdjustStatus NetworkSolver::CheckStart(const NetworkState& state) {
  if (m_model.Reduced() == 0) {
    return End(ZuAdjustStatus::TooFew, "no photo with three or more points that can be used");
  }
  NetworkGroup group;
  for (const NetworkObservation& o : m_model.Observations()) {
    if (!o.bUsed || m_model.Linearise(o, state, &group)) continue;
    return End(ZuAdjustStatus::NotConverged,
               m_model.Name(o) + ": the start values give no image of it; better ones are needed");
  }
  const int n = m_model.CountObservations(), u = m_model.CountUnknowns();
  if (n - u + m_freedom.k < 0) {
    return End(ZuAdjustStatus::TooFew,
               std::to_string(n) + " observations for " + std::to_string(u) + " unknowns");
  }
  return ZuAdjustStatus::Good;
}

// One run of Levenberg and Marquardt; damping by the gain of each step (H. B. Nielsen, "Damping
// parameter in Marquardt's method", 1999).
bool NetworkSolver::Descend(NetworkState* pState) {
  double dDamping = m_iSteps == 0 ? kDampingStart : 0.0, dRaise = 2.0;
  double dCost = m_model.Cost(*pState), dBlind = std::numeric_limits<double>::infinity();
  const double dRounding = RootRounding(m_model);
  std::vector<double> reduced;
  std::vector<Vec3> points;
  while (m_iSteps < m_options.iMaxSteps) {
    double dDecrement = 0.0, dPredicted = 0.0;
    const bool bSolved =
        m_normals.Build(*pState, dDamping) && m_normals.Factorise(*pState, m_freedom);
    if (bSolved) {
      ++m_iSteps;
      m_normals.Solve(&reduced, &points, &dDecrement, &dPredicted);
      NetworkState trial = *pState;
      TakeStep(m_model, reduced, points, &trial);
      const double dNext = m_model.Cost(trial);
      const double dGain = (dCost - dNext) / dPredicted;
      // What a step saves may be less than the rounding of the sums; it is then taken as it is, and
      // the steps go on until they are small or shrink no more.
      const double dNoise = std::max(kRounding * dCost, dRounding * std::sqrt(dCost));
      const bool bBlind = dPredicted <= dNoise && dNext <= dCost + dNoise;
      const bool bStalled = bBlind && dDecrement > 0.5 * dBlind;
      dBlind = bBlind ? dDecrement : std::numeric_limits<double>::infinity();
      const bool bSmall = dDecrement <= Tolerance(dCost) || bStalled;
      const bool bLast = bSmall && dDamping == 0.0;
      if (bLast || (std::isfinite(dNext) && (dGain > 0.0 || bSmall || bBlind))) {
        *pState = std::move(trial);
        dCost = dNext;
        const int r = m_model.CountObservations() - m_model.CountUnknowns() + m_freedom.k;
        if (m_options.pfnProgress != nullptr &&
            !m_options.pfnProgress(m_options.pProgressContext, m_iSteps,
                                   r > 0 ? std::sqrt(dCost / r) : 1.0)) {
          m_bStopped = true;
          return false;
        }
        if (bLast) return std::isfinite(dCost);
        if (bSmall || bBlind || !std::isfinite(dGain)) {
          dDamping = 0.0;
        } else {
          dDamping *= std::clamp(1.0 - std::pow(2.0 * dGain - 1.0, 3.0), 0.01, 2.0);
          if (dDamping < kDampingLeast) dDamping = 0.0;
        }
        dRaise = 2.0;
        continue;
      }
    } else if (m_normals.UndecidedPoint() >= 0) {
      m_iUndecided = m_normals.UndecidedPoint();
      if (dDamping > 1.0) return false;
    }
    dDamping = std::max(dDamping, kDampingStart) * dRaise;
    dRaise *= 2.0;
    if (dDamping > kDampingMost) return false;
  }
  return false;
}

// Moves the network to where its datum points lie closest to their start. True where that was no
// move worth telling.
bool NetworkSolver::MoveToDatum(NetworkState* pState) const {
  const size_t uFree = static_cast<size_t>(m_freedom.k);
  double dFirst = 0.0;
  for (int iRound = 0; iRound < kDatumRounds; ++iRound) {
    std::vector<double> normal(uFree * uFree, 0.0), right(uFree, 0.0), inverse(uFree * uFree);
    for (size_t i = 0; i < pState->points.size(); ++i) {
      const int iPoint = static_cast<int>(i);
      if (!m_model.IsPointUsed(iPoint) || !m_model.Network().points[i].bDatum) continue;
      double rows[3][kGenerators];
      m_model.PointMotion(*pState, iPoint, rows);
      for (size_t axis = 0; axis < 3; ++axis) {
        std::vector<double> e(uFree, 0.0);
        for (size_t k = 0; k < uFree; ++k) {
          for (size_t g = 0; g < kGenerators; ++g) {
            e[k] += rows[axis][g] * m_freedom.basis[g * uFree + k];
          }
        }
        const double d = m_model.Start().points[i][axis] - pState->points[i][axis];
        for (size_t k = 0; k < uFree; ++k) {
          right[k] += e[k] * d;
          for (size_t l = 0; l < uFree; ++l) normal[uFree * k + l] += e[k] * e[l];
        }
      }
    }
    if (!InvertSquare(m_freedom.k, normal.data(), inverse.data())) return true;
    double motion[kGenerators] = {}, dLength = 0.0;
    for (size_t k = 0; k < uFree; ++k) {
      double t = 0.0;
      for (size_t l = 0; l < uFree; ++l) t += inverse[uFree * k + l] * right[l];
      dLength = std::hypot(dLength, t);
      for (size_t g = 0; g < kGenerators; ++g) motion[g] += m_freedom.basis[g * uFree + k] * t;
    }
    // A scale that would turn the object inside out is reached in several rounds.
    motion[6] = std::clamp(motion[6], -0.5, 2.0);
    if (iRound == 0) dFirst = dLength;
    m_model.Move(motion, pState);
    if (dLength <= 1e-15) break;
  }
  return dFirst <= kMoved;
}

// At a state, undamped: the least eigenvalue, and what the image points would tell of c, xh and yh.
ZuAdjustStatus NetworkSolver::CheckCondition(const NetworkState& state) {
  std::vector<double> vector;
  if (!m_normals.Build(state, 0.0)) return ZuAdjustStatus::Good;  // a point's own trouble
  if (!m_normals.Factorise(state, m_freedom)) {
    m_dLeast = 0.0;
    std::string strText = "rank defect 1: the observations don't decide all unknowns";
    if (m_normals.Build(state, kDampingLeast) && m_normals.Factorise(state, m_freedom)) {
      m_normals.LeastEigenvalue(&vector);
      strText = WeaknessText(m_model, vector);
    }
    return End(ZuAdjustStatus::RankDefect, strText);
  }
  m_dLeast = m_normals.LeastEigenvalue(&vector);
  if (!(m_dLeast > kLeastScaled)) {
    return End(ZuAdjustStatus::RankDefect, WeaknessText(m_model, vector));
  }
  for (size_t i = 0; i < state.cameras.size(); ++i) {
    const std::vector<int>& parameters = m_model.CameraParameters(static_cast<int>(i));
    for (size_t k = 0; k < parameters.size() && parameters[k] <= ZuNetworkYh; ++k) {
      std::vector<double> unit(vector.size(), 0.0);
      std::vector<Vec3> points(state.points.size(), Vec3{});
      const size_t u = static_cast<size_t>(m_model.CameraOffset(static_cast<int>(i))) + k;
      unit[u] = 1.0;
      m_normals.SolveFor(&unit, &points);
      if (std::sqrt(unit[u]) <= kUnknown * std::fabs(state.cameras[i].m_dC)) continue;
      std::fill(vector.begin(), vector.end(), 0.0);
      vector[u] = 1.0;
      return End(ZuAdjustStatus::RankDefect, WeaknessText(m_model, vector));
    }
  }
  return ZuAdjustStatus::Good;
}

ZuAdjustStatus NetworkSolver::CheckEnd(const NetworkState& state) {
  const ZuAdjustStatus condition = CheckCondition(state);
  if (condition != ZuAdjustStatus::Good) return condition;
  for (const NetworkObservation& o : m_model.Observations()) {
    if (!o.bUsed || o.eKind != ZuNetworkKind::Image) continue;
    const ZuNetworkImagePoint& image = m_model.Network().images[static_cast<size_t>(o.iIndex)];
    const NetworkState::Photo& photo = state.photos[static_cast<size_t>(image.iPhoto)];
    const Vec3& p = state.points[static_cast<size_t>(image.iPoint)];
    double z = 0.0;
    for (size_t k = 0; k < 3; ++k) z += photo.r[3 * k + 2] * (p[k] - photo.x0[k]);
    const double c = state
                         .cameras[static_cast<size_t>(
                             m_model.Network().photos[static_cast<size_t>(image.iPhoto)].iCamera)]
                         .m_dC;
    if (z * (c > 0.0 ? 1.0 : -1.0) < 0.0) continue;
    return End(ZuAdjustStatus::NotConverged,
               m_model.Name(o) +
                   ": the point came to lie behind the camera; the start orientation "
                   "of the photo, or the number of the point, is wrong");
  }
  return ZuAdjustStatus::Good;
}

ZuAdjustStatus NetworkSolver::Run(NetworkState* pState) {
  m_iSteps = 0;
  if (m_model.Reduced() > 0) {
    const ZuAdjustStatus status = FindFreedom(*pState);
    if (status != ZuAdjustStatus::Good) return status;
  }
  const ZuAdjustStatus first = CheckStart(*pState);
  if (first != ZuAdjustStatus::Good) return first;
  const NetworkState start = *pState;
  for (bool bAtDatum = false; !bAtDatum;) {
    if (!Descend(pState)) {
      if (m_bStopped) return End(ZuAdjustStatus::NotConverged, "stopped");
      // Steps that wander along a valley: what stays free there is the reason.
      for (const NetworkState* pAt : {&start, static_cast<const NetworkState*>(pState)}) {
        const ZuAdjustStatus weak = CheckCondition(*pAt);
        if (weak != ZuAdjustStatus::Good) return weak;
      }
      return End(ZuAdjustStatus::NotConverged,
                 "no solution within " + std::to_string(m_iSteps) +
                     " steps; the start values are too far off, or the network is too weak");
    }
    m_iUndecided = -1;
    bAtDatum = m_freedom.k == 0 || MoveToDatum(pState);
    if (FindFreedom(*pState) != ZuAdjustStatus::Good) return ZuAdjustStatus::RankDefect;
  }
  if (!m_normals.Build(*pState, 0.0)) {
    m_iUndecided = m_normals.UndecidedPoint();
    return End(ZuAdjustStatus::RankDefect, "a point is not decided by its rays");
  }
  return CheckEnd(*pState);
}

std::string FreedomText(const NetworkModel& model, const NetworkState& state,
                        const NetworkFreedom& freedom) {
  if (freedom.k == 1) {
    const double* b = freedom.basis.data();
    const double dTurn = std::sqrt(b[3] * b[3] + b[4] * b[4] + b[5] * b[5]);
    if (std::fabs(b[6]) > 0.99) return "scale";
    if (dTurn > 0.1 && std::fabs(b[6]) < 1e-6) {
      // The control points that stand still under the motion span its axis.
      std::string strPoints;
      for (size_t i = 0; i < state.points.size(); ++i) {
        if (model.Network().points[i].iControl == 0 || !model.IsPointUsed(static_cast<int>(i))) {
          continue;
        }
        strPoints +=
            (strPoints.empty() ? "" : ", ") + std::to_string(model.Network().points[i].uId);
        if (strPoints.size() > 60) break;
      }
      return "rotation about the line through points " + strPoints;
    }
  }
  double shift = 0.0, turn = 0.0, scale = 0.0;
  for (int k = 0; k < freedom.k; ++k) {
    for (int g = 0; g < kGenerators; ++g) {
      const double d = freedom.basis[static_cast<size_t>(g * freedom.k + k)];
      (g < 3 ? shift : g < 6 ? turn : scale) += d * d;
    }
  }
  std::string strText;
  const auto add = [&strText](const char* szWord) {
    strText += (strText.empty() ? "" : ", ") + std::string(szWord);
  };
  if (shift > 0.1) add("shift");
  if (turn > 0.1) add("rotation");
  if (scale > 0.1) add("scale");
  const size_t uComma = strText.rfind(", ");
  if (uComma != std::string::npos) strText.replace(uComma, 2, " and ");
  return strText;
}

std::string WeaknessText(const NetworkModel& model, const std::vector<double>& vector) {
  std::string strParameters;
  bool bConstant = false, bCentre = false;
  for (size_t i = 0; i < model.Network().cameras.size(); ++i) {
    const std::vector<int>& parameters = model.CameraParameters(static_cast<int>(i));
    for (size_t k = 0; k < parameters.size(); ++k) {
      const size_t u = static_cast<size_t>(model.CameraOffset(static_cast<int>(i))) + k;
      if (std::fabs(vector[u]) < 0.05) continue;
      bConstant |= parameters[k] == ZuNetworkC;
      bCentre |= parameters[k] == ZuNetworkXh || parameters[k] == ZuNetworkYh;
      strParameters += (strParameters.empty() ? "" : ", ") +
                       std::string(ZuNetworkParameterName(parameters[k])) + " of camera " +
                       std::to_string(model.Network().cameras[i].camera.GetId());
    }
  }
  if (bConstant) {
    return "rank defect 1: camera constant against distance (" + strParameters +
           "): photos taken at an angle to each other, or control of different depth, decide it; "
           "else keep c";
  }
  if (bCentre) {
    return "rank defect 1: principal point against the direction of view (" + strParameters +
           "): photos rolled by 90 degrees decide it; else keep xh and yh";
  }
  if (!strParameters.empty()) {
    return "rank defect 1: the parameters " + strParameters +
           " can't be told apart in this network; keep one of them";
  }
  size_t uWorst = 0;
  for (size_t i = 1; i < vector.size(); ++i) {
    if (std::fabs(vector[i]) > std::fabs(vector[uWorst])) uWorst = i;
  }
  for (size_t i = 0; i < model.Network().photos.size(); ++i) {
    const int iOffset = model.PhotoOffset(static_cast<int>(i));
    if (iOffset < 0 || static_cast<int>(uWorst) < iOffset ||
        static_cast<int>(uWorst) >= iOffset + 6) {
      continue;
    }
    return "rank defect 1: the orientation of photo " +
           std::to_string(model.Network().photos[i].uId) +
           " is not decided by its points; more of them, better spread, would";
  }
  return "rank defect 1: the observations don't decide all unknowns";
}

}  // namespace zu::internal
