#include "zu/adjust/zusp_line_fit.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <numeric>

#include "zu/adjust/internal/dense_cholesky.h"
#include "zu/adjust/internal/line_model.h"
#include "zu/adjust/internal/small_matrix.h"
#include "zu/photo/camera.h"
#include "zu/rectify/zusp_trafo.h"

namespace zu::internal {

namespace {

constexpr double kHalfPi = 1.5707963267948966;
constexpr size_t kMostLines = 300;
constexpr size_t kMostGroups = 30;
constexpr size_t kMostDirections = 6;       // whose vanishing points are tried in pairs
constexpr size_t kMostNormals = 100;        // that come from vanishing points
constexpr size_t kRefined = 6;              // starts that are adjusted
constexpr double kLeastEigenvalue = 1e-10;  // of the scaled normal matrix [-]
constexpr double kLostEigenvalue = 1e-5;    // the same where no step ends [-]
constexpr double kMostTurn = 0.1;           // standard deviation of a tilt that is none [rad]
constexpr double kMostC = 0.2;              // the same of the camera constant, over itself [-]
constexpr double kOther = 0.02;             // turn between two solutions that are not one [rad]
constexpr double kAsWell = 4.0;  // squares of a solution that fits as well, over the least

using Vec = std::array<double, 3>;

// Directions by union-find; a line knows whether it is across the first of its set.
class Directions {
 public:
  explicit Directions(size_t n) : m_parent(n), m_across(n, 0) {
    std::iota(m_parent.begin(), m_parent.end(), size_t{0});
  }
  std::pair<size_t, bool> Find(size_t i) const {
    bool bAcross = false;
    for (; m_parent[i] != i; i = m_parent[i]) bAcross ^= m_across[i] != 0;
    return {i, bAcross};
  }
  // False where the two are tied the other way already.
  bool Tie(size_t i, size_t k, bool bAcross) {
    const auto [a, bA] = Find(i);
    const auto [b, bB] = Find(k);
    if (a == b) return (bA != bB) == bAcross;
    m_parent[std::max(a, b)] = std::min(a, b);
    m_across[std::max(a, b)] = (bA != bB) != bAcross;
    return true;
  }

 private:
  std::vector<size_t> m_parent;
  std::vector<char> m_across;
};

Vec Cross(const Vec& a, const Vec& b) {
  Vec d;
  Cross3(a.data(), b.data(), d.data());
  return d;
}

bool Normalise(Vec* p) {
  const double dLength = std::sqrt(Dot3(p->data(), p->data()));
  for (double& d : *p) d /= dLength;
  return dLength > 1e-12;
}

class Fit {
 public:
  Fit(const ZuZuspTrafo& trafo, const ZuCamera& camera, const ZuZuspLineOptions& options)
      : m_trafo(trafo), m_camera(camera), m_options(options) {}

  ZuZuspLineFit Run() {
    m_model.bEstimateC = m_options.bEstimateC;
    if (Collect() && Tie() && Solve()) Store();
    if (m_result.eStatus != ZuAdjustStatus::Good) {
      const std::string strWhy = m_result.strWhy;
      const auto eStatus = m_result.eStatus;
      const auto lines = m_result.lines;
      m_result = {};
      m_result.eStatus = eStatus;
      m_result.strWhy = strWhy;
      m_result.lines = lines;
    }
    return m_result;
  }

 private:
  bool Refuse(ZuAdjustStatus eStatus, const std::string& strWhy) {
    m_result.eStatus = eStatus;
    m_result.strWhy = strWhy;
    return false;
  }

  // Image points of the lines, corrected.
  bool Collect() {
    std::map<unsigned, size_t> places;
    std::map<unsigned, const ZuPoint*> measured;  // the first of equal ids
    for (const ZuPoint* p = m_trafo.GetBikoList().First(); p != nullptr; p = p->Next()) {
      measured.emplace(p->GetId(), p);
    }
    for (const auto* p = m_trafo.GetParallelDef().GetLines().First(); p != nullptr; p = p->Next()) {
      m_result.lines.push_back({p->GetId()});
      m_sources.push_back(p);
      size_t ends[2];
      bool bThere = p->m_uBikoId1 != p->m_uBikoId2;
      for (const size_t k : {size_t{0}, size_t{1}}) {
        const unsigned uId = k == 0 ? p->m_uBikoId1 : p->m_uBikoId2;
        const auto found = places.find(uId);
        const auto seen = measured.find(uId);
        bThere = bThere && seen != measured.end();
        if (!bThere) break;
        ends[k] = found != places.end() ? found->second : m_model.points.size();
        if (found != places.end()) continue;
        double x = seen->second->m_dX, y = seen->second->m_dY;
        if (!Correct(&x, &y)) {
          return Refuse(ZuAdjustStatus::NotFinite,
                        "point " + std::to_string(uId) +
                            " lies where the camera's model is not one to one, or is not finite");
        }
        places[uId] = m_model.points.size();
        m_model.points.push_back({x, y});
      }
      m_indices.push_back(-1);
      if (!bThere || m_model.points[ends[0]] == m_model.points[ends[1]]) continue;
      m_indices.back() = static_cast<int>(m_model.lines.size());
      m_model.lines.push_back({ends[0], ends[1]});
      if (p->m_dValue > 0.0 && std::isfinite(p->m_dValue))
        m_model.lines.back().dLength = p->m_dValue;
    }
    if (m_model.lines.size() <= kMostLines) return true;
    return Refuse(ZuAdjustStatus::NotConverged, std::to_string(m_model.lines.size()) +
                                                    " lines: " + std::to_string(kMostLines) +
                                                    " and fewer would be right");
  }

  bool Correct(double* x, double* y) const {
    if (!std::isfinite(*x + *y)) return false;
    if (m_trafo.CompensateDistortion()) {
      const eCameraInverse eStatus = m_trafo.GetDistortCameraParam().AdjustExact(x, y);
      return eStatus == eCameraInverseOk;
    }
    *x -= m_camera.m_dXh;
    *y -= m_camera.m_dYh;
    return true;
  }

  // The groups of directions by the constraints; the first is that of the X axis, or the largest.
  bool Tie() {
    auto& lines = m_model.lines;
    std::map<unsigned, size_t> byId;
    Directions directions(lines.size());
    int iXAxis = -1;
    for (size_t i = 0; i < m_sources.size(); ++i) {
      if (m_indices[i] < 0) continue;
      const auto uLine = static_cast<size_t>(m_indices[i]);
      byId.emplace(m_sources[i]->GetId(), uLine);
      if (m_sources[i]->m_iXAxis == 0) continue;
      if (iXAxis < 0) iXAxis = m_indices[i];
      directions.Tie(static_cast<size_t>(iXAxis), uLine, false);
    }
    const auto& constraints = m_trafo.GetParallelDef().GetConstraints();
    for (const auto* p = constraints.First(); p != nullptr; p = p->Next()) {
      const auto first = byId.find(p->m_uLineId1), second = byId.find(p->m_uLineId2);
      if (!p->IsValid() || first == byId.end() || second == byId.end()) continue;
      if (first->second == second->second && p->IsParallel()) continue;
      if (directions.Tie(first->second, second->second, !p->IsParallel())) continue;
      return Refuse(ZuAdjustStatus::NotConverged,
                    "lines " + std::to_string(p->m_uLineId1) + " and " +
                        std::to_string(p->m_uLineId2) +
                        " are parallel by some constraints and perpendicular by others");
    }
    std::map<size_t, std::vector<size_t>> sets;
    for (size_t i = 0; i < lines.size(); ++i) sets[directions.Find(i).first].push_back(i);
    std::vector<std::vector<size_t>> groups;
    for (const auto& [uFirst, members] : sets) {
      const bool bXAxis =
          iXAxis >= 0 && directions.Find(static_cast<size_t>(iXAxis)).first == uFirst;
      if (members.size() < 2 && !bXAxis) continue;
      groups.push_back(members);
      if (bXAxis) m_pXAxis = &lines[static_cast<size_t>(iXAxis)];
    }
    if (groups.size() > kMostGroups) {
      return Refuse(ZuAdjustStatus::NotConverged,
                    std::to_string(groups.size()) +
                        " directions without a right angle between them: " +
                        std::to_string(kMostGroups) + " and fewer would be right");
    }
    const auto rank = [&](const std::vector<size_t>& members) {
      const bool bXAxis = std::any_of(members.begin(), members.end(),
                                      [&](size_t i) { return &lines[i] == m_pXAxis; });
      return bXAxis ? lines.size() + 1 : members.size();
    };
    std::stable_sort(groups.begin(), groups.end(),
                     [&](const auto& a, const auto& b) { return rank(a) > rank(b); });
    m_model.iGroups = static_cast<int>(groups.size());
    for (size_t g = 0; g < groups.size(); ++g) {
      for (const size_t i : groups[g]) {
        lines[i].iGroup = static_cast<int>(g);
        lines[i].bAcross = directions.Find(i).second;
      }
      // X runs along the line that is marked.
      if (g > 0 || m_pXAxis == nullptr || !m_pXAxis->bAcross) continue;
      for (const size_t i : groups[g]) lines[i].bAcross = !lines[i].bAcross;
    }
    return true;
  }

  Vec RayOf(size_t uPoint, double c) const {
    return {m_model.points[uPoint][0], m_model.points[uPoint][1], -c};
  }
  Vec NormalOf(const LineModel::Line& line, double c) const {
    Vec normal = Cross(RayOf(line.uFirst, c), RayOf(line.uSecond, c));
    Normalise(&normal);
    return normal;
  }

  // Directions to the vanishing points of two and more lines, the largest groups first.
  struct Vanishing {
    Vec direction;
    int iGroup;
    bool bAcross;
  };
  std::vector<Vanishing> VanishingPoints(double c) const {
    std::vector<Vanishing> found;
    for (int g = 0; g < m_model.iGroups; ++g) {
      for (const bool bAcross : {false, true}) {
        double adSum[9] = {}, adValues[3], adVectors[9];
        int n = 0;
        for (const LineModel::Line& line : m_model.lines) {
          if (line.iGroup != g || line.bAcross != bAcross) continue;
          const Vec normal = NormalOf(line, c);
          for (size_t k = 0; k < 9; ++k) adSum[k] += normal[k / 3] * normal[k % 3];
          ++n;
        }
        if (n < 2 || found.size() == kMostDirections) continue;
        SymmetricEigen(3, adSum, adValues, adVectors);
        found.push_back({{adVectors[0], adVectors[3], adVectors[6]}, g, bAcross});
      }
    }
    return found;
  }

  // Normals of the plane that may be: across two vanishing directions, or across one and a line at
  // a right angle to it; then a coarse net.
  std::vector<Vec> Normals(double c) const {
    std::vector<Vec> normals;
    const auto vanishing = VanishingPoints(c);
    for (size_t i = 0; i < vanishing.size(); ++i) {
      for (size_t k = 0; k < i; ++k) {
        normals.push_back(Cross(vanishing[i].direction, vanishing[k].direction));
      }
      for (const LineModel::Line& line : m_model.lines) {
        if (line.iGroup != vanishing[i].iGroup || line.bAcross == vanishing[i].bAcross) continue;
        if (normals.size() >= kMostNormals) break;
        Vec across = Cross(NormalOf(line, c), vanishing[i].direction);
        if (Normalise(&across)) normals.push_back(Cross(vanishing[i].direction, across));
      }
    }
    normals.push_back({0.0, 0.0, 1.0});
    for (const double dTilt : {0.25, 0.5, 0.75, 1.0, 1.25}) {
      for (int k = 0; k < 12; ++k) {
        const double a = kHalfPi / 3.0 * k;
        normals.push_back(
            {std::sin(dTilt) * std::cos(a), std::sin(dTilt) * std::sin(a), std::cos(dTilt)});
      }
    }
    return normals;
  }

  std::vector<double> Constants() const {
    std::vector<double> constants;
    const double c = std::fabs(m_camera.m_dC);
    if (c > 0.0 && std::isfinite(c)) constants.push_back(c);
    if (!m_options.bEstimateC) return constants;
    double dExtent = 0.0;
    for (const auto& p : m_model.points) dExtent = std::max(dExtent, std::hypot(p[0], p[1]));
    // Directions (p, q, -c r) at a right angle: c^2 = -(p1 p2 + q1 q2) / (r1 r2).
    const auto vanishing = VanishingPoints(dExtent);
    for (size_t i = 0; i < vanishing.size(); ++i) {
      for (size_t k = 0; k < i; ++k) {
        if (vanishing[i].iGroup != vanishing[k].iGroup) continue;
        const Vec &a = vanishing[i].direction, &b = vanishing[k].direction;
        const double d = -(a[0] * b[0] + a[1] * b[1]) / (a[2] * b[2]) * dExtent * dExtent;
        if (d > 0.0 && std::isfinite(d)) constants.push_back(std::sqrt(d));
      }
    }
    for (const double d : {1.5, 2.5, 4.0}) constants.push_back(d * dExtent);
    return constants;
  }

  std::vector<LineState> Starts() const {
    std::vector<std::pair<double, LineState>> starts;
    for (const double c : Constants()) {
      for (Vec n : Normals(c)) {
        if (!Normalise(&n)) continue;
        double dAlong = 0.0;
        for (size_t i = 0; i < m_model.points.size(); ++i) {
          const Vec ray = RayOf(i, c);
          dAlong += Dot3(n.data(), ray.data());
        }
        if (dAlong > 0.0) n = {-n[0], -n[1], -n[2]};
        Vec x = std::fabs(n[0]) < 0.9 ? Vec{1.0, 0.0, 0.0} : Vec{0.0, 1.0, 0.0};
        const double d = Dot3(n.data(), x.data());
        for (size_t i = 0; i < 3; ++i) x[i] -= d * n[i];
        Normalise(&x);
        const Vec y = Cross(n, x);
        LineState state;
        state.R = {x[0], x[1], x[2], y[0], y[1], y[2], n[0], n[1], n[2]};
        state.c = c;
        if (m_model.Complete(&state)) starts.emplace_back(m_model.Cost(state), state);
      }
    }
    std::stable_sort(starts.begin(), starts.end(),
                     [](const auto& a, const auto& b) { return a.first < b.first; });
    std::vector<LineState> states;
    for (const auto& [dCost, state] : starts) {
      const LineState& at = state;
      const auto same = [&](const LineState& other) { return Turn(at, other) < kOther; };
      if (std::none_of(states.begin(), states.end(), same)) states.push_back(state);
      if (states.size() == kRefined) break;
    }
    return states;
  }

  // Between the normals, and of the constants.
  static double Turn(const LineState& a, const LineState& b) {
    double n[3];
    Cross3(&a.R[6], &b.R[6], n);
    return std::max(std::sqrt(Dot3(n, n)), std::fabs(std::log(a.c / b.c)));
  }

  bool Solve() {
    const auto& lines = m_model.lines;
    if (!m_options.bEstimateC && !(std::fabs(m_camera.m_dC) > 0.0)) {
      return Refuse(ZuAdjustStatus::TooFew,
                    "the camera constant is 0: one, or its estimate, would be right");
    }
    const auto starts = lines.empty() ? std::vector<LineState>() : Starts();
    if (lines.empty() || starts.empty()) {
      return lines.empty() ? Refuse(ZuAdjustStatus::TooFew, "no line has both of its image points")
                           : Refuse(ZuAdjustStatus::NotConverged,
                                    "every plane that may be has its horizon across the lines");
    }
    m_model.Prepare(starts[0]);
    if (m_model.Conditions() < m_model.Unknowns()) {
      return Refuse(ZuAdjustStatus::TooFew,
                    std::to_string(m_model.Conditions()) + " conditions for " +
                        std::to_string(m_model.Unknowns()) +
                        " unknowns: further lines that are parallel or perpendicular to others, or "
                        "of known length, would be right");
    }
    if (HasOneDirection()) return RefuseOpen(LineModel::eTurnX);
    struct Found {
      LineState state;
      LineFitResult fit;
    };
    std::vector<Found> found;
    for (LineState state : starts) {
      const LineFitResult fit = m_model.Adjust(&state);
      if (fit.dLeastEigenvalue < m_fit.dLeastEigenvalue) m_fit = fit;
      if (!fit.bGood) continue;
      const auto same = [&](const Found& other) { return Turn(state, other.state) < kOther; };
      if (std::none_of(found.begin(), found.end(), same)) found.push_back({state, fit});
    }
    if (found.empty()) {
      if (m_fit.dLeastEigenvalue < kLostEigenvalue) return RefuseOpen(OpenByDirection());
      return Refuse(ZuAdjustStatus::NotConverged,
                    "no plane fulfils the constraints: one of them is wrong, or a line's ends are");
    }
    std::stable_sort(found.begin(), found.end(), [](const Found& a, const Found& b) {
      return a.fit.dSquares < b.fit.dSquares;
    });
    m_state = found[0].state;
    m_fit = found[0].fit;
    const int r = m_model.Conditions() - m_model.Unknowns();
    m_result.iRedundancy = r;
    m_result.dSigma0 = r > 0 ? std::sqrt(m_fit.dSquares / r) : 0.0;
    if (!IsDecided()) return false;
    const double dNoise = std::max(1, r) * m_options.dSigma * m_options.dSigma;
    if (found.size() > 1 && found[1].fit.dSquares <= kAsWell * std::max(m_fit.dSquares, dNoise)) {
      return Refuse(ZuAdjustStatus::RankDefect,
                    "two planes fit the lines as well as each other: further lines that are "
                    "parallel or perpendicular to these would be right");
    }
    return true;
  }

  // Whatever their number, lines of one direction leave the turn about it open.
  bool HasOneDirection() const {
    const LineModel::Line* pFirst = nullptr;
    int iLengths = 0;
    for (const LineModel::Line& line : m_model.lines) {
      iLengths += line.dLength > 0.0;
      if (line.iGroup < 0) continue;
      if (pFirst == nullptr) pFirst = &line;
      if (line.iGroup != pFirst->iGroup || line.bAcross != pFirst->bAcross) return false;
    }
    return pFirst != nullptr && iLengths < 2;
  }

  // The camera constant where it takes part, then a tilt: the angles between groups follow it.
  LineModel::Unknown OpenByDirection() const {
    const auto& kinds = m_model.Kinds();
    size_t uLargest = 0;
    for (size_t i = 0; i < kinds.size(); ++i) {
      const double d = std::fabs(m_fit.direction[i]);
      if (kinds[i] == LineModel::eC && d > 0.1) return LineModel::eC;
      if (d > std::fabs(m_fit.direction[uLargest])) uLargest = i;
    }
    return std::min(kinds[uLargest], LineModel::eTurnZ);
  }

  bool RefuseOpen(LineModel::Unknown eOpen) {
    return Refuse(
        ZuAdjustStatus::RankDefect,
        eOpen == LineModel::eC
            ? "the lines do not decide the camera constant: two perpendicular directions that are "
              "both inclined to the image, or a constant that is known, would be right"
            : "the lines do not decide the tilt of the plane: lines of a second direction, or "
              "perpendicular to these, would be right");
  }

  // Refuses what the conditions leave open, or hardly decide.
  bool IsDecided() {
    const auto& kinds = m_model.Kinds();
    if (m_fit.dLeastEigenvalue < kLeastEigenvalue) return RefuseOpen(OpenByDirection());
    const double dSigma = m_result.iRedundancy > 0 ? m_result.dSigma0 : m_options.dSigma;
    for (size_t i = 0; i < kinds.size(); ++i) {
      const double dSd = dSigma * std::sqrt(m_fit.cofactors[i * (kinds.size() + 1)]);
      const bool bTurn = kinds[i] <= LineModel::eTurnY, bC = kinds[i] == LineModel::eC;
      if ((bTurn && !(dSd <= kMostTurn)) || (bC && !(dSd <= kMostC * m_state.c))) {
        return RefuseOpen(bTurn && m_options.bEstimateC ? OpenByDirection() : kinds[i]);
      }
    }
    return true;
  }

  // Quarter turns about the normal: the marked line runs forward; without one the X axis is that of
  // the image as near as it goes.
  void TurnToX() {
    auto& R = m_state.R;
    const auto quarter = [&] {
      for (size_t k = 0; k < 3; ++k) {
        const double x = R[k];
        R[k] = R[3 + k];
        R[3 + k] = -x;
      }
      for (double& d : m_state.angles) d -= kHalfPi;
    };
    if (m_pXAxis != nullptr) {
      if (m_model.InPlane(m_state, *m_pXAxis, true)[0] < 0.0) {
        quarter();
        quarter();
      }
      return;
    }
    for (int k = 0; k < 3 && !(R[0] >= std::fabs(R[3])); ++k) quarter();
  }

  void Store() {
    TurnToX();
    const auto& R = m_state.R;
    const double c = m_state.c, s = std::exp(m_state.dLogScale);
    std::array<double, 2> origin{};
    if (m_pXAxis != nullptr) origin = m_model.PointInPlane(m_state, m_pXAxis->uFirst);
    const double dShift[2] = {m_trafo.CompensateDistortion() ? 0.0 : m_camera.m_dXh,
                              m_trafo.CompensateDistortion() ? 0.0 : m_camera.m_dYh};
    for (int i = 0; i < 3; ++i) {
      double row[3];
      for (int k = 0; k < 3; ++k) {
        const double w = -R[static_cast<size_t>(6 + k)];
        row[k] = i == 2
                     ? w
                     : s * (R[static_cast<size_t>(3 * i + k)] - origin[static_cast<size_t>(i)] * w);
        m_result.rotation[i + 1][k + 1] = R[static_cast<size_t>(3 * i + k)];
      }
      m_result.zusp[i + 1][1] = row[0];
      m_result.zusp[i + 1][2] = row[1];
      m_result.zusp[i + 1][3] = -row[2] * c - row[0] * dShift[0] - row[1] * dShift[1];
    }
    StoreDeviations();
    StoreLines(s);
    m_result.eStatus = ZuAdjustStatus::Good;
    bool bFinite = std::isfinite(m_result.dSigma0 + m_result.dDistance + m_result.dC);
    for (int i = 1; i <= 9; ++i)
      bFinite = bFinite && std::isfinite(m_result.zusp[(i + 2) / 3][(i - 1) % 3 + 1]);
    if (!bFinite) Refuse(ZuAdjustStatus::NotFinite, "the result is not finite");
  }

  void StoreDeviations() {
    const auto& kinds = m_model.Kinds();
    const double dSigma = m_result.iRedundancy > 0 ? m_result.dSigma0 : m_options.dSigma;
    m_result.dC = m_state.c;
    m_result.dDistance = std::exp(m_state.dLogScale);
    for (size_t i = 0; i < kinds.size(); ++i) {
      const double dSd = dSigma * std::sqrt(m_fit.cofactors[i * (kinds.size() + 1)]);
      if (kinds[i] <= LineModel::eTurnZ) m_result.adRotationSd[kinds[i]] = dSd;
      if (kinds[i] == LineModel::eC) m_result.dCSd = dSd;
      if (kinds[i] != LineModel::eScale) continue;
      m_result.bScaled = true;
      m_result.dDistanceSd = dSd * m_result.dDistance;
    }
  }

  void StoreLines(double dScale) {
    for (size_t i = 0; i < m_indices.size(); ++i) {
      if (m_indices[i] < 0) continue;
      const LineModel::Line& line = m_model.lines[static_cast<size_t>(m_indices[i])];
      ZuZuspLineResidual& told = m_result.lines[i];
      told.bUsed = line.iGroup >= 0 || line.dLength > 0.0;
      const auto &p = m_model.points[line.uFirst], &q = m_model.points[line.uSecond];
      const double x = q[0] - p[0], y = q[1] - p[1], dImage = std::hypot(x, y);
      for (const size_t u : {line.uFirst, line.uSecond}) {
        const double d = (x * m_state.moves[2 * u + 1] - y * m_state.moves[2 * u]) / dImage;
        told.dAcross = std::max(told.dAcross, std::fabs(d));
      }
      const auto d = m_model.InPlane(m_state, line, false);
      if (line.dLength > 0.0) told.dLength = dScale * std::hypot(d[0], d[1]) - line.dLength;
      if (line.iGroup < 0) continue;
      const double a = std::atan2(d[1], d[0]) - (line.bAcross ? kHalfPi : 0.0) -
                       m_state.angles[static_cast<size_t>(line.iGroup)];
      told.dAngle = std::remainder(a, 2.0 * kHalfPi);
    }
  }

  const ZuZuspTrafo& m_trafo;
  const ZuCamera& m_camera;
  const ZuZuspLineOptions& m_options;
  std::vector<const ZuZuspDefLine*> m_sources;
  std::vector<int> m_indices;  // of the sources in the model; -1: none
  const LineModel::Line* m_pXAxis = nullptr;
  LineModel m_model;
  LineState m_state;
  LineFitResult m_fit;
  ZuZuspLineFit m_result;
};

}  // namespace

}  // namespace zu::internal

void ZuZuspLineFit::Store(ZuZuspTrafo* pTrafo) const {
  ZuMatrix identity(4, 4);
  identity.SetIdent();
  pTrafo->SetMatrices(zusp, identity);
}

ZuZuspLineFit ZuFitZuspLines(const ZuZuspTrafo& trafo, const ZuCamera& camera,
                             const ZuZuspLineOptions& options) {
  return zu::internal::Fit(trafo, camera, options).Run();
}
