#include "zu/adjust/lokal_deviation.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace {

using Vec = std::array<double, 3>;

Vec operator-(const Vec& a, const Vec& b) { return {a[0] - b[0], a[1] - b[1], a[2] - b[2]}; }
Vec operator*(double s, const Vec& a) { return {s * a[0], s * a[1], s * a[2]}; }
double Dot(const Vec& a, const Vec& b) { return a[0] * b[0] + a[1] * b[1] + a[2] * b[2]; }
Vec Cross(const Vec& a, const Vec& b) {
  return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}
double Length(const Vec& a) { return std::sqrt(Dot(a, a)); }
Vec Place(const ZuPoint& p) { return {p.m_dX, p.m_dY, p.m_dZ}; }

Vec Rotated(const ZuMatrix& R, const Vec& a) {
  Vec b;
  for (int i = 0; i < 3; ++i) {
    b[static_cast<size_t>(i)] = R[i + 1][1] * a[0] + R[i + 1][2] * a[1] + R[i + 1][3] * a[2];
  }
  return b;
}

// The row e' R: what a displacement in the system of the points is along e in the local one.
Vec Along(const ZuMatrix& R, const Vec& e) {
  return {e[0] * R[1][1] + e[1] * R[2][1] + e[2] * R[3][1],
          e[0] * R[1][2] + e[1] * R[2][2] + e[2] * R[3][2],
          e[0] * R[1][3] + e[1] * R[2][3] + e[2] * R[3][3]};
}

// Adds J V J' to n x n, J being n x 3 by rows.
void AddVariance(const double* J, const double* pdVariance, int n, double* pdTo) {
  for (int i = 0; i < n; ++i) {
    for (int j = 0; j < n; ++j) {
      for (int k = 0; k < 3; ++k) pdTo[n * i + j] += J[3 * i + k] * pdVariance[k] * J[3 * j + k];
    }
  }
}

bool IsFinite(const double* pd, int n) {
  return std::all_of(pd, pd + n, [](double d) { return std::isfinite(d); });
}

}  // namespace

void ZuLokalDeviation::FillAccuracies(const ZuPointList& points, const ZuLokalAccuracy& accuracy) {
  double dSquares = 0.0;
  int iTold = 0, iMissing = 0;
  for (const ZuPoint* p = points.First(); p != nullptr; p = p->Next()) {
    for (const double d : {p->m_dDX, p->m_dDY, p->m_dDZ}) {
      dSquares += d * d;
      ++(d != 0.0 ? iTold : iMissing);
    }
  }
  m_dFillIn = accuracy.dSigma;
  m_iFilledIn = 0;
  if (accuracy.dSigma > 0.0 || iTold == 0) return;
  m_dFillIn = std::sqrt(dSquares / iTold);
  m_iFilledIn = iMissing;
}

void ZuLokalDeviation::Variances(const ZuPoint& point, double* pdVariance) const {
  const double ad[] = {point.m_dDX, point.m_dDY, point.m_dDZ};
  for (int i = 0; i < 3; ++i) pdVariance[i] = std::pow(ad[i] != 0.0 ? ad[i] : m_dFillIn, 2);
}

ZuLokalDeviation::Influence& ZuLokalDeviation::Of(const ZuPoint& point) {
  const auto [place, bNew] = m_influences.try_emplace(point.GetId());
  if (bNew) Variances(point, place->second.adVariance);
  return place->second;
}

// With e1 along the axis and e2 in the plane, in the local system, and L, c1, c2 the lengths of the
// axis and of c along e1 and e2: displacements g of b against a, and h of c against a, turn by
//   w3 = -g2 / L    w2 = g3 / L    w1 = (w2 c1 - h3) / c2.
bool ZuLokalDeviation::Turn(const ZuPoint& a, const ZuPoint& b, const ZuPoint& c) {
  const ZuMatrix& R = m_trafo.m_mRot;
  const Vec ab = Rotated(R, Place(b) - Place(a)), ac = Rotated(R, Place(c) - Place(a));
  const double dAxis = Length(ab);
  const Vec e1 = (1.0 / dAxis) * ab;
  const double c1 = Dot(ac, e1);
  const Vec aside = ac - c1 * e1;
  const double c2 = Length(aside);
  if (!(dAxis > 0.0) || !(c2 > 0.0)) return false;
  const Vec e2 = (1.0 / c2) * aside, e3 = Cross(e1, e2);
  const Vec g2 = Along(R, e2), g3 = Along(R, e3);
  const auto add = [&](const ZuPoint& point, double dOfAxis, double dOfPlane) {
    Influence& influence = Of(point);
    for (size_t i = 0; i < 3; ++i) {
      for (size_t k = 0; k < 3; ++k) {
        const double w3 = -dOfAxis / dAxis * g2[k], w2 = dOfAxis / dAxis * g3[k];
        const double w1 = (w2 * c1 - dOfPlane * g3[k]) / c2;
        influence.adTurn[3 * i + k] += w1 * e1[i] + w2 * e2[i] + w3 * e3[i];
      }
    }
  };
  add(a, -1.0, -1.0);
  add(b, 1.0, 0.0);
  add(c, 0.0, 1.0);
  return true;
}

bool ZuLokalDeviation::Scale(const ZuLokalSystem& s, const ZuPointList& points,
                             double dSigmaDistance) {
  struct Pair {
    const ZuPoint *pA, *pB;
    Vec row;  // of its scale by the coordinates of B; by those of A the negative
    double dByDistance;
  };
  std::vector<Pair> pairs;
  const struct {
    unsigned int uIdA, uIdB;
    double dDistance;
  } told[] = {{s.m_uScale1IdA, s.m_uScale1IdB, s.m_dScale1Dist},
              {s.m_uScale2IdA, s.m_uScale2IdB, s.m_dScale2Dist},
              {s.m_uScale3IdA, s.m_uScale3IdB, s.m_dScale3Dist}};
  for (const auto& pair : told) {
    const ZuPoint* const pA = pair.uIdA != 0 ? points.Find(pair.uIdA) : nullptr;
    const ZuPoint* const pB = pair.uIdB != 0 ? points.Find(pair.uIdB) : nullptr;
    if (pA == nullptr || pB == nullptr) continue;
    const Vec d = Place(*pB) - Place(*pA);
    const double dLength = Length(d);
    if (!(dLength > 0.0)) return false;
    pairs.push_back({pA, pB, (-pair.dDistance / std::pow(dLength, 3)) * d, 1.0 / dLength});
    Of(*pA), Of(*pB);
  }
  const double dShare = pairs.empty() ? 0.0 : 1.0 / static_cast<double>(pairs.size());
  double dOfAll = 0.0;  // variance of the mean by the distances
  for (const Pair& pair : pairs) dOfAll += std::pow(dShare * dSigmaDistance * pair.dByDistance, 2);
  m_dScaleVariance = dOfAll;
  for (const Pair& pair : pairs) {
    for (size_t k = 0; k < 3; ++k) {
      Of(*pair.pB).adScale[k] += dShare * pair.row[k];
      Of(*pair.pA).adScale[k] -= dShare * pair.row[k];
    }
  }
  for (const Pair& pair : pairs) {
    const double dOwn = std::pow(dSigmaDistance * pair.dByDistance, 2);
    double dAlone = dOwn, dDifference = dOwn * (1.0 - 2.0 * dShare) + dOfAll;
    for (const auto& [uId, influence] : m_influences) {
      const double dSign =
          (uId == pair.pB->GetId() ? 1.0 : 0.0) - (uId == pair.pA->GetId() ? 1.0 : 0.0);
      for (size_t k = 0; k < 3; ++k) {
        const double d = dSign * pair.row[k];
        dAlone += d * d * influence.adVariance[k];
        dDifference += std::pow(d - influence.adScale[k], 2) * influence.adVariance[k];
      }
    }
    m_scales.push_back({pair.pA->GetId(), pair.pB->GetId(), std::sqrt(dAlone),
                        std::sqrt(std::max(0.0, dDifference))});
  }
  return true;
}

void ZuLokalDeviation::ByDefinition(const Influence& influence, const double* pdFrom,
                                    double* pd) const {
  const Vec from = {pdFrom[0], pdFrom[1], pdFrom[2]};
  for (size_t k = 0; k < 3; ++k) {
    const Vec turned =
        Cross({influence.adTurn[k], influence.adTurn[3 + k], influence.adTurn[6 + k]}, from);
    for (size_t i = 0; i < 3; ++i) {
      double d = turned[i] + influence.adScale[k] / m_trafo.m_dScale * from[i];
      if (influence.bOrigin) {
        d -= m_trafo.m_dScale * m_trafo.m_mRot[static_cast<int>(i) + 1][static_cast<int>(k) + 1];
      }
      pd[3 * i + k] = d;
    }
  }
}

void ZuLokalDeviation::Parameters() {
  const ZuMatrix& R = m_trafo.m_mRot;
  const Vec centre = {m_trafo.m_vSource[1], m_trafo.m_vSource[2], m_trafo.m_vSource[3]};
  const Vec from = m_trafo.m_dScale * Rotated(R, centre - Place(m_origin));
  std::fill_n(m_adCovariance, 49, 0.0);
  for (const auto& [uId, influence] : m_influences) {
    double J[21];
    ByDefinition(influence, from.data(), J);
    for (int k = 0; k < 3; ++k) {
      J[9 + k] = influence.adScale[k];
      const Vec w =
          Along(R, {influence.adTurn[k], influence.adTurn[3 + k], influence.adTurn[6 + k]});
      for (int i = 0; i < 3; ++i) J[12 + 3 * i + k] = w[static_cast<size_t>(i)];
    }
    AddVariance(J, influence.adVariance, 7, m_adCovariance);
  }
  const double s = m_trafo.m_dScale;
  const double ad[] = {from[0] / s, from[1] / s, from[2] / s, 1.0};
  for (int i = 0; i < 4; ++i) {
    for (int j = 0; j < 4; ++j) m_adCovariance[7 * i + j] += m_dScaleVariance * ad[i] * ad[j];
  }
}

bool ZuLokalDeviation::Calc(const ZuLokalSystem& system, const ZuPointList& points,
                            const ZuTrafo3dData& trafo, const ZuLokalAccuracy& accuracy) {
  m_influences.clear();
  m_scales.clear();
  m_trafo = trafo;
  FillAccuracies(points, accuracy);
  if (!(m_dFillIn > 0.0)) return false;
  const ZuPoint* const pOrigin = points.Find(system.m_uIdOrigin);
  const ZuPoint* const pA = points.Find(system.m_uIdA);
  const ZuPoint* const pB = points.Find(system.m_uIdB);
  const ZuPoint* const pC = points.Find(system.m_uIdC);
  if (pOrigin == nullptr || pA == nullptr || pB == nullptr || pC == nullptr) return false;
  m_origin = *pOrigin;
  Of(*pOrigin).bOrigin = true;
  if (!Turn(*pA, *pB, *pC) || !Scale(system, points, accuracy.dSigmaDistance)) return false;
  Parameters();
  return IsFinite(m_adCovariance, 49);
}

void ZuLokalDeviation::PointCovariance(const ZuPoint& point, double* pdCovariance) const {
  const double s = m_trafo.m_dScale;
  const Vec from = s * Rotated(m_trafo.m_mRot, Place(point) - Place(m_origin));
  std::fill_n(pdCovariance, 9, 0.0);
  bool bOwn = false;
  const auto own = [&](double* J) {
    for (int i = 0; i < 9; ++i) J[i] += s * m_trafo.m_mRot[i / 3 + 1][i % 3 + 1];
  };
  for (const auto& [uId, influence] : m_influences) {
    double J[9];
    ByDefinition(influence, from.data(), J);
    if (uId == point.GetId()) {
      own(J);
      bOwn = true;
    }
    AddVariance(J, influence.adVariance, 3, pdCovariance);
  }
  if (!bOwn) {
    double J[9] = {}, adVariance[3];
    own(J);
    Variances(point, adVariance);
    AddVariance(J, adVariance, 3, pdCovariance);
  }
  for (int i = 0; i < 9; ++i) {
    pdCovariance[i] += m_dScaleVariance / (s * s) * from[static_cast<size_t>(i / 3)] *
                       from[static_cast<size_t>(i % 3)];
  }
}
