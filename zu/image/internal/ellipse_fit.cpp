#include "zu/image/internal/ellipse_fit.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <vector>

#include "zu/image/internal/value_at.h"

namespace {

constexpr int kUnknowns = 5;    // centre, axes, angle
constexpr int kSteps = 8;       // of the adjustment
constexpr double kMove = 1e-3;  // of the centre, after which it stands [pixel]
constexpr double kStep = 0.25;  // between the samples of a profile [pixel]
constexpr double kReach = 6.0;  // of a profile to either side, at most [pixel]
constexpr double kLeastReach = 1.5;
constexpr double kBorder = 1.0;     // at the end of the picture, where nothing is read [pixel]
constexpr double kLeastPart = 0.8;  // of the profiles that must have an edge
// Residuals beyond so many of their median size take part with less weight.
constexpr double kTrusted = 2.5;

using Row = cv::Vec<double, kUnknowns>;
using Normal = cv::Matx<double, kUnknowns, kUnknowns>;

// Grey values across the edge, from inside to outside.
struct Profile {
  Row row;  // how the edge moves outwards with the unknowns
  std::vector<double> values;
  double dEdge = 0.0;    // from the middle [pixel]
  double dWeight = 0.0;  // 0: no edge
};

double Median(std::vector<double> values) {
  const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
  std::nth_element(values.begin(), middle, values.end());
  return *middle;
}

class Fit {
 public:
  Fit(const cv::Mat& values, const ZuTarget& start) : m_values(values), m_target(start) {}

  bool Run() {
    for (int i = 0; i < kSteps; ++i) {
      if (!TakeProfiles() || !FindEdges()) return false;
      const double dMove = Adjust();
      if (!(dMove < m_target.m_dB)) return false;
      if (dMove < kMove) return true;
    }
    return true;
  }

  const ZuTarget& Target() const { return m_target; }

 private:
  // From the ellipse to the border of the picture; below 0 or not finite where it does not lie in
  // it.
  double Margin() const {
    const double dCos = std::cos(m_target.m_dAngle), dSin = std::sin(m_target.m_dAngle);
    const double dX = std::hypot(m_target.m_dA * dCos, m_target.m_dB * dSin);
    const double dY = std::hypot(m_target.m_dA * dSin, m_target.m_dB * dCos);
    return std::min({m_target.m_dX - dX, m_values.cols - 1 - m_target.m_dX - dX, m_target.m_dY - dY,
                     m_values.rows - 1 - m_target.m_dY - dY}) -
           kBorder;
  }

  // One profile a pixel of the circumference, so that neighbours tell something of their own.
  bool TakeProfiles() {
    const double dA = m_target.m_dA, dB = m_target.m_dB;
    const double dReach = std::min({kReach, 0.8 * dB, Margin()});
    if (!(dReach >= kLeastReach)) return false;
    const int n = std::clamp(static_cast<int>(std::numbers::pi * (dA + dB)), 24, 400);
    const double dCos = std::cos(m_target.m_dAngle), dSin = std::sin(m_target.m_dAngle);
    m_nSide = static_cast<int>(dReach / kStep);
    m_profiles.resize(static_cast<std::size_t>(n));
    for (int k = 0; k < n; ++k) {
      const double t = 2 * std::numbers::pi * k / n, c = std::cos(t), s = std::sin(t);
      double nx = c / dA, ny = s / dB;  // outwards, in the system of the axes
      const double dLength = std::hypot(nx, ny);
      nx /= dLength, ny /= dLength;
      Profile& profile = m_profiles[static_cast<std::size_t>(k)];
      profile.row = {nx * dCos - ny * dSin, nx * dSin + ny * dCos, nx * c, ny * s,
                     ny * dA * c - nx * dB * s};
      const double x = m_target.m_dX + dA * c * dCos - dB * s * dSin;
      const double y = m_target.m_dY + dA * c * dSin + dB * s * dCos;
      profile.values.clear();
      for (int i = -m_nSide; i <= m_nSide; ++i) {
        profile.values.push_back(
            ZuValueAt(m_values, x + i * kStep * profile.row[0], y + i * kStep * profile.row[1]));
      }
    }
    return true;
  }

  // Edges at one level for all: under a reflection that crosses the disk, the grey of disk and
  // ground on either side of a place of the edge tells less of it.
  bool FindEdges() {
    std::vector<double> inside, outside;
    for (const Profile& profile : m_profiles) {
      inside.push_back(profile.values[0]);
      outside.push_back(profile.values.back());
    }
    const double dInside = Median(inside), dOutside = Median(outside);
    m_target.m_dContrast = dOutside - dInside;
    const double dLevel = (dInside + dOutside) / 2;
    int nEdges = 0;
    for (Profile& profile : m_profiles) {
      profile.dWeight = 0.0;
      double dNearest = 1e9;
      for (int i = -m_nSide; i < m_nSide; ++i) {
        const double d0 = profile.values[static_cast<std::size_t>(i + m_nSide)] - dLevel;
        const double d1 = profile.values[static_cast<std::size_t>(i + m_nSide + 1)] - dLevel;
        if (d0 * d1 > 0.0 || (d1 - d0) * m_target.m_dContrast <= 0.0) continue;
        const double dEdge = kStep * (i + d0 / (d0 - d1));
        if (std::fabs(dEdge) >= dNearest) continue;
        dNearest = std::fabs(dEdge);
        profile.dEdge = dEdge;
        profile.dWeight = (d1 - d0) * (d1 - d0);
      }
      if (profile.dWeight > 0.0) ++nEdges;
    }
    return nEdges >= kLeastPart * static_cast<double>(m_profiles.size());
  }

  // One step of least squares; how far the centre went. Residuals are lengths along the normal.
  double Adjust() {
    const Row solution = Solve({});
    // Again with less trust in what does not fit.
    const Row robust = Solve(Residuals(solution));
    m_target.m_dX += robust[0];
    m_target.m_dY += robust[1];
    m_target.m_dA += robust[2];
    m_target.m_dB += robust[3];
    m_target.m_dAngle += robust[4];
    return std::hypot(robust[0], robust[1]) + std::fabs(robust[2]) + std::fabs(robust[3]);
  }

  std::vector<double> Residuals(const Row& solution) const {
    std::vector<double> residuals;
    for (const Profile& profile : m_profiles) {
      residuals.push_back(profile.row.dot(solution) - profile.dEdge);
    }
    return residuals;
  }

  Row Solve(const std::vector<double>& residuals) {
    double dTrusted = 1e9;
    if (!residuals.empty()) {
      std::vector<double> sizes;
      for (const double d : residuals) sizes.push_back(std::fabs(d));
      dTrusted = std::max(kTrusted * Median(sizes), 1e-6);
    }
    Normal normal = Normal::zeros();
    Row right = Row::all(0.0);
    double dWeights = 0.0, dSum = 0.0;
    int n = 0;
    for (std::size_t k = 0; k < m_profiles.size(); ++k) {
      const Profile& profile = m_profiles[k];
      if (profile.dWeight <= 0.0) continue;
      double dWeight = profile.dWeight;
      if (!residuals.empty()) {
        dWeight *= std::min(1.0, dTrusted / std::max(std::fabs(residuals[k]), 1e-12));
        dSum += dWeight * residuals[k] * residuals[k];
      }
      const Row& row = profile.row;
      normal += dWeight * (row * row.t());
      right += dWeight * profile.dEdge * row;
      dWeights += dWeight;
      ++n;
    }
    // A circle has no angle: the part that is not decided stays.
    const Normal inverse = normal.inv(cv::DECOMP_SVD);
    const double dVariance = dSum / std::max(n - kUnknowns, 1);
    m_target.m_dDX = std::sqrt(std::max(0.0, dVariance * inverse(0, 0)));
    m_target.m_dDY = std::sqrt(std::max(0.0, dVariance * inverse(1, 1)));
    m_dRms = std::sqrt(dSum / std::max(dWeights, 1e-12));
    return inverse * right;
  }

 public:
  double m_dRms = 0.0;  // weighted, of the edges [pixel]

 private:
  const cv::Mat& m_values;
  ZuTarget m_target;
  std::vector<Profile> m_profiles;
  int m_nSide = 0;
};

// Edges lie on the ellipse within this, and within this part of its shorter axis [pixel].
constexpr double kMostRms = 0.35, kMostPart = 0.05;

}  // namespace

bool ZuFitEllipse(const cv::Mat& values, ZuTarget* pTarget) {
  Fit fit(values, *pTarget);
  if (!fit.Run()) return false;
  ZuTarget target = fit.Target();
  if (!(target.m_dB > 0.0) || !(fit.m_dRms < std::max(kMostRms, kMostPart * target.m_dB)))
    return false;
  if (target.m_dA < target.m_dB) {
    std::swap(target.m_dA, target.m_dB);
    target.m_dAngle += std::numbers::pi / 2;
  }
  target.m_dAngle = std::remainder(target.m_dAngle, std::numbers::pi);
  *pTarget = target;
  return true;
}
