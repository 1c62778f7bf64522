// Directions and distances between known points and one that is sought, as observations.
#pragma once

#include <vector>

#include "zu/cad/internal/cad_numbers.h"
#include "zu/cad/sight_intersection.h"

namespace zu::internal {

// Unknowns: x, y less the centre of the known points, in extents; with bResection the zero of the
// circle, whose directions run from the point.
class PositionModel {
 public:
  PositionModel(const std::vector<ZuCadSight>& sights, bool bResection)
      : m_sights(sights), m_bResection(bResection) {
    std::vector<ZuPoint2d> known;
    for (const ZuCadSight& s : sights) known.push_back(s.ptKnown);
    const CadReduction reduction(known);
    m_centre = reduction.centre;
    m_dExtent = reduction.dExtent;
    for (const ZuCadSight& s : sights) {
      if (s.kind == ZuCadSight::eDistance) m_dExtent = std::max(m_dExtent, s.dValue);
    }
    if (!(m_dExtent > 0.0)) m_dExtent = 1.0;
    SetSigmas();
  }

  bool IsSigmaTold() const { return m_bTold; }
  double Extent() const { return m_dExtent; }
  double Sigma(size_t i) const {
    const ZuCadSight& s = m_sights[i];
    return s.dSigma > 0.0 ? s.dSigma : m_adSigma[s.kind];
  }
  void Reduce(const ZuPoint2d& p, double* x) const {
    x[0] = (p.x - m_centre.x) / m_dExtent;
    x[1] = (p.y - m_centre.y) / m_dExtent;
  }
  ZuPoint2d PointOf(const double* x) const { return m_centre + m_dExtent * ZuVector2d(x[0], x[1]); }

  // Computed less measured.
  double Residual(size_t i, const ZuPoint2d& p, double dZero) const {
    const ZuCadSight& s = m_sights[i];
    if (s.kind == ZuCadSight::eDistance) return p.Distance(s.ptKnown) - s.dValue;
    const ZuVector2d v = m_bResection ? s.ptKnown - p : p - s.ptKnown;
    return std::remainder(v.Direction() - dZero - s.dValue, kTurn);
  }

  double SquaresAt(const ZuPoint2d& p) const {
    double dSquares = 0.0;
    for (size_t i = 0; i < m_sights.size(); ++i) {
      const double v = Residual(i, p, 0.0) / Sigma(i);
      dSquares += v * v;
    }
    return dSquares;
  }

  template <int U>
  double operator()(const double* x, SmallNormals<U>* pNormals) const {
    const ZuPoint2d p = PointOf(x);
    const double dZero = U > 2 ? x[U - 1] : 0.0;
    double dSquares = 0.0;
    for (size_t i = 0; i < m_sights.size(); ++i) {
      const ZuCadSight& s = m_sights[i];
      const double dSigma = Sigma(i), v = Residual(i, p, dZero) / dSigma;
      dSquares += v * v;
      const ZuVector2d way = p - s.ptKnown;
      const double dLength = way.Norm();
      if (pNormals == nullptr || !(dLength > 0.0)) continue;
      ZuVector2d change = way / dLength;  // of the distance, or of the direction either way
      if (s.kind == ZuCadSight::eDirection) change = change.Normal() / dLength;
      double a[U] = {change.x * m_dExtent / dSigma, change.y * m_dExtent / dSigma};
      if constexpr (U > 2) a[U - 1] = -1.0 / dSigma;
      pNormals->Add(a, -v);
    }
    return dSquares;
  }

 private:
  // What sights without a standard deviation take.
  void SetSigmas() {
    double adSum[2] = {}, adTold[2] = {}, adCount[2] = {};
    double dDistances = 0.0;
    for (const ZuCadSight& s : m_sights) {
      ++adCount[s.kind];
      if (s.kind == ZuCadSight::eDistance) dDistances += s.dValue;
      if (!(s.dSigma > 0.0)) continue;
      adSum[s.kind] += s.dSigma;
      ++adTold[s.kind];
      m_bTold = true;
    }
    const double dMean = adCount[1] > 0.0 && dDistances > 0.0 ? dDistances / adCount[1] : 1.0;
    const bool bMixed = adCount[0] > 0.0 && adCount[1] > 0.0;
    for (int k = 0; k < 2; ++k) m_adSigma[k] = adTold[k] > 0.0 ? adSum[k] / adTold[k] : 1.0;
    if (!bMixed) return;
    if (adTold[0] == 0.0) m_adSigma[0] = m_adSigma[1] / dMean;
    if (adTold[0] > 0.0 && adTold[1] == 0.0) m_adSigma[1] = m_adSigma[0] * dMean;
  }

  const std::vector<ZuCadSight>& m_sights;
  bool m_bResection;
  bool m_bTold = false;
  ZuPoint2d m_centre;
  double m_dExtent = 1.0;
  double m_adSigma[2] = {1.0, 1.0};
};

}  // namespace zu::internal
