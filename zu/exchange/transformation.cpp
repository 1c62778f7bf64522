#include "zu/exchange/transformation.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "zu/exchange/internal/plane_map.h"
#include "zu/transform/trafo3d.h"

namespace {

constexpr double kSingular = 1e-12;     // determinant over the product of the columns' lengths [-]
constexpr double kNearRotation = 1e-5;  // off a similarity, over its scale [-]
constexpr int kParameters = 7;          // of a similarity
constexpr double kPolarConverged = 1e-15;  // [-]

using Block = std::array<double, 9>;  // 3 x 3 by rows

double Det3(const Block& m) {
  return m[0] * (m[4] * m[8] - m[5] * m[7]) - m[1] * (m[3] * m[8] - m[5] * m[6]) +
         m[2] * (m[3] * m[7] - m[4] * m[6]);
}

double ColumnLength(const Block& m, int j) {
  const std::size_t u = static_cast<std::size_t>(j);
  return std::hypot(m[u], m[u + 3], m[u + 6]);
}

bool IsSingular3(const Block& m) {
  const double dSize = ColumnLength(m, 0) * ColumnLength(m, 1) * ColumnLength(m, 2);
  return !(std::fabs(Det3(m)) > kSingular * dSize);
}

// Inverse transposed times the determinant.
Block Cofactors(const Block& m) {
  return {m[4] * m[8] - m[5] * m[7], m[5] * m[6] - m[3] * m[8], m[3] * m[7] - m[4] * m[6],
          m[2] * m[7] - m[1] * m[8], m[0] * m[8] - m[2] * m[6], m[1] * m[6] - m[0] * m[7],
          m[1] * m[5] - m[2] * m[4], m[2] * m[3] - m[0] * m[5], m[0] * m[4] - m[1] * m[3]};
}

Block BlockOf(const ZuAffinMap3d& map) {
  return {map[0][0], map[0][1], map[0][2], map[1][0], map[1][1],
          map[1][2], map[2][0], map[2][1], map[2][2]};
}

Block RotationOf(const ZuTrafo3dData& trafo) {
  Block m;
  for (int i = 0; i < 9; ++i) m[static_cast<std::size_t>(i)] = trafo.m_mRot[i / 3 + 1][i % 3 + 1];
  return m;
}

// The nearest rotation of a block with det > 0: R becomes the mean of R and its inverse transposed
// until it rests (N. J. Higham, "Computing the polar decomposition", 1986).
Block NearestRotation(Block m) {
  for (int i = 0; i < 50; ++i) {
    const Block cofactors = Cofactors(m);
    const double dDet = Det3(m);
    double dStep = 0.0;
    for (std::size_t k = 0; k < 9; ++k) {
      const double d = 0.5 * (cofactors[k] / dDet - m[k]);
      m[k] += d;
      dStep = std::max(dStep, std::fabs(d));
    }
    if (dStep <= kPolarConverged) break;
  }
  return m;
}

// pd (n x n) becomes J C J^T of J (n x m) and C (m x m), all by rows.
void Propagate(const double* J, const double* C, int n, int m, double* pd) {
  std::vector<double> half(static_cast<std::size_t>(n * m), 0.0);
  for (int i = 0; i < n * m; ++i) {
    for (int k = 0; k < m; ++k) {
      half[static_cast<std::size_t>(i)] += J[i / m * m + k] * C[k * m + i % m];
    }
  }
  for (int i = 0; i < n * n; ++i) {
    pd[i] = 0.0;
    for (int k = 0; k < m; ++k) {
      pd[i] += half[static_cast<std::size_t>(i / n * m + k)] * J[i % n * m + k];
    }
  }
}

// Shift, scale and small rotations of the way back by those of the way there.
void InvertSimilarity(ZuTrafo3dData* p, std::vector<double>* pCovariance) {
  const Block R = RotationOf(*p);
  const double s = p->m_dScale;
  double J[kParameters * kParameters] = {};
  for (int i = 0; i < 3; ++i) {
    for (int j = 0; j < 3; ++j) {
      const std::size_t ij = static_cast<std::size_t>(3 * i + j);
      const std::size_t ji = static_cast<std::size_t>(3 * j + i);
      J[kParameters * i + j] = -R[ji] / s;
      J[kParameters * (4 + i) + 4 + j] = -R[ij];
      p->m_mRot[i + 1][j + 1] = R[ji];
    }
  }
  J[kParameters * 3 + 3] = -1.0 / (s * s);
  std::swap(p->m_vSource, p->m_vTarget);
  p->m_dScale = 1.0 / s;
  if (pCovariance->empty()) return;
  std::vector<double> inverse(pCovariance->size());
  Propagate(J, pCovariance->data(), kParameters, kParameters, inverse.data());
  *pCovariance = std::move(inverse);
}

double VarianceOf(double dSd, double dDefault) { return dSd != 0.0 ? dSd * dSd : dDefault; }

// Standard deviations of a point carried by a map of space with this linear part.
void CarryAccuracy(const ZuTransformation& t, const Block& linear, ZuPoint* p) {
  const double dOwn = t.dAccuracyFactor * t.dAccuracyFactor, dDefault = t.dSourceSd * t.dSourceSd;
  const double adVariance[] = {VarianceOf(p->m_dDX, dDefault), VarianceOf(p->m_dDY, dDefault),
                               VarianceOf(p->m_dDZ, dDefault)};
  double ad[9] = {};
  if (!t.covariance.empty()) {
    // z = R (x - xs): by shift I, by scale z, by the small rotation k: s r_k x z.
    const Block R = RotationOf(t.similarity);
    const double x[] = {p->m_dX - t.similarity.m_vSource[1], p->m_dY - t.similarity.m_vSource[2],
                        p->m_dZ - t.similarity.m_vSource[3]};
    double z[3];
    for (std::size_t i = 0; i < 3; ++i) {
      z[i] = R[3 * i] * x[0] + R[3 * i + 1] * x[1] + R[3 * i + 2] * x[2];
    }
    double J[3 * kParameters] = {};
    for (std::size_t i = 0; i < 3; ++i) {
      const std::size_t j = (i + 1) % 3, l = (i + 2) % 3;
      J[kParameters * i + i] = 1.0;
      J[kParameters * i + 3] = z[i];
      for (std::size_t k = 0; k < 3; ++k) {
        J[kParameters * i + 4 + k] =
            t.similarity.m_dScale * (R[3 * j + k] * z[l] - R[3 * l + k] * z[j]);
      }
    }
    Propagate(J, t.covariance.data(), 3, kParameters, ad);
  }
  double* const apd[] = {&p->m_dDX, &p->m_dDY, &p->m_dDZ};
  for (std::size_t i = 0; i < 3; ++i) {
    double d = ad[4 * i];
    for (std::size_t k = 0; k < 3; ++k) {
      d += dOwn * linear[3 * i + k] * linear[3 * i + k] * adVariance[k];
    }
    *apd[i] = std::sqrt(std::max(0.0, d));
  }
}

// False, point as it was, without an image.
bool CarryInPlane(const ZuTransformation& t, ZuPoint* p) {
  const double* const a = t.coefficients.data();
  const double* const adFrom = t.bInverse ? t.adTargetCentre : t.adSourceCentre;
  const double* const adTo = t.bInverse ? t.adSourceCentre : t.adTargetCentre;
  const double x = p->m_dX - adFrom[0], y = p->m_dY - adFrom[1];
  double ad[2] = {x, y};
  if (t.bInverse && !zu::internal::InvMapPlane(t.ePlane, a, x, y, &ad[0], &ad[1])) return false;
  const zu::internal::PlaneImage image = zu::internal::MapPlane(t.ePlane, a, ad[0], ad[1]);
  if (!t.bInverse) std::copy_n(image.ad, 2, ad);
  if (!std::isfinite(ad[0]) || !std::isfinite(ad[1])) return false;

  const double dOwn = t.dAccuracyFactor * t.dAccuracyFactor, dDefault = t.dSourceSd * t.dSourceSd;
  const double adVariance[] = {dOwn * VarianceOf(p->m_dDX, dDefault), 0.0, 0.0,
                               dOwn * VarianceOf(p->m_dDY, dDefault)};
  double adOwn[4], adParameters[4] = {}, adSum[4];
  if (!t.covariance.empty()) {
    const int n = static_cast<int>(t.coefficients.size());
    std::vector<double> J(image.adByCoef[0], image.adByCoef[0] + n);
    J.insert(J.end(), image.adByCoef[1], image.adByCoef[1] + n);
    Propagate(J.data(), t.covariance.data(), 2, n, adParameters);
  }
  if (t.bInverse) {
    const double* const m = image.adBy;
    const double dDet = m[0] * m[3] - m[1] * m[2];
    const double adBack[] = {m[3] / dDet, -m[1] / dDet, -m[2] / dDet, m[0] / dDet};
    for (int i = 0; i < 4; ++i) adParameters[i] += adVariance[i];
    Propagate(adBack, adParameters, 2, 2, adSum);
  } else {
    Propagate(image.adBy, adVariance, 2, 2, adOwn);
    for (int i = 0; i < 4; ++i) adSum[i] = adOwn[i] + adParameters[i];
  }
  p->m_dX = ad[0] + adTo[0];
  p->m_dY = ad[1] + adTo[1];
  p->m_dDX = std::sqrt(std::max(0.0, adSum[0]));
  p->m_dDY = std::sqrt(std::max(0.0, adSum[3]));
  return true;
}

}  // namespace

bool ZuTransformation::Invert() {
  if (kind == ZuTransformationKind::Affine) {
    ZuAffinMap3d map = affine;
    if (IsSingular3(BlockOf(map)) || map.Invert() != 0) return false;
    for (int i = 0; i < 12; ++i) {
      if (!std::isfinite(map.asDblArray()[i])) return false;
    }
    affine = map;
  } else if (kind == ZuTransformationKind::Similarity) {
    if (!(similarity.m_dScale > 0.0) || !std::isfinite(1.0 / similarity.m_dScale)) return false;
    InvertSimilarity(&similarity, &covariance);
  } else {
    const auto image = zu::internal::MapPlane(ePlane, coefficients.data(), 0.0, 0.0);
    const double* const m = image.adBy;
    const double dSize = std::hypot(m[0], m[2]) * std::hypot(m[1], m[3]);
    if (!(std::fabs(m[0] * m[3] - m[1] * m[2]) > kSingular * dSize)) return false;
    bInverse = !bInverse;
  }
  dSourceSd = 0.0;
  return true;
}

std::vector<unsigned> ZuTransformation::Carry(ZuPointList* pPoints) const {
  std::vector<unsigned> refused;
  if (kind == ZuTransformationKind::Plane) {
    for (ZuPoint* p = pPoints->First(); p != nullptr; p = p->Next()) {
      if (!CarryInPlane(*this, p)) refused.push_back(p->GetId());
    }
    return refused;
  }
  Block linear = BlockOf(affine);
  if (kind == ZuTransformationKind::Similarity) {
    linear = RotationOf(similarity);
    for (double& d : linear) d *= similarity.m_dScale;
  }
  for (ZuPoint* p = pPoints->First(); p != nullptr; p = p->Next()) CarryAccuracy(*this, linear, p);
  if (kind == ZuTransformationKind::Similarity) {
    ZuTrafo3d trafo;
    static_cast<ZuTrafo3dData&>(trafo) = similarity;
    trafo.Transform(*pPoints, *pPoints, static_cast<const ZuPointList*>(nullptr), false);
    return refused;
  }
  for (ZuPoint* p = pPoints->First(); p != nullptr; p = p->Next()) {
    const ZuPoint3d image = affine.Transform(ZuPoint3d(p->m_dX, p->m_dY, p->m_dZ));
    p->m_dX = image.x;
    p->m_dY = image.y;
    p->m_dZ = image.z;
  }
  return refused;
}

bool ZuTransformation::AsMap(ZuAffinMap3d* pMap) const {
  if (kind == ZuTransformationKind::Plane) return false;
  *pMap = affine;
  if (kind == ZuTransformationKind::Affine) return true;
  const ZuMatrix matrix = similarity.GetAsMatrix();
  for (int i = 0; i < 12; ++i) pMap->asDblArray()[i] = matrix[i / 4 + 1][i % 4 + 1];
  return true;
}

bool ZuTransformation::AsSimilarity(ZuTrafo3dData* pSimilarity, double* pdOff) const {
  if (kind == ZuTransformationKind::Similarity) {
    *pSimilarity = similarity;
    *pdOff = 0.0;
    return true;
  }
  if (kind == ZuTransformationKind::Plane) return false;
  Block block = BlockOf(affine);
  const double dDet = Det3(block);
  if (!(dDet > 0.0) || IsSingular3(block)) return false;
  const double dScale = std::cbrt(dDet);
  for (double& d : block) d /= dScale;
  const Block rotation = NearestRotation(block);
  double dOff = 0.0;
  for (std::size_t i = 0; i < 9; ++i) dOff = std::max(dOff, std::fabs(block[i] - rotation[i]));
  if (!(dOff <= kNearRotation)) return false;
  *pdOff = dOff;
  *pSimilarity = ZuTrafo3dData();
  pSimilarity->m_dScale = dScale;
  for (int i = 0; i < 3; ++i) {
    pSimilarity->m_vSource[i + 1] = 0.0;
    pSimilarity->m_vTarget[i + 1] = affine[i][3];
    for (int j = 0; j < 3; ++j) {
      pSimilarity->m_mRot[i + 1][j + 1] = rotation[static_cast<std::size_t>(3 * i + j)];
    }
  }
  return true;
}
