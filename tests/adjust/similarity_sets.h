// Common points of two systems with normal errors of known size.
#pragma once

#include "tests/support/random_geometry.h"
#include "tests/support/test.h"
#include "tests/support/trials.h"
#include "zu/adjust/similarity.h"
#include "zu/transform/trafo3d_data.h"

struct SimilaritySet {
  ZuPointList source, target;
  ZuTrafo3dData truth;
};

// Standard normal, the same numbers on every machine (G. E. P. Box, M. E. Muller, 1958).
inline double Normal(RandomGeometry& random) {
  const double u = 0.5 * (random.Value(1.0) + 1.0) + 1e-17;
  return std::sqrt(-2.0 * std::log(u)) * std::cos(std::numbers::pi * random.Value(1.0));
}

inline ZuPoint Transformed(const ZuTrafo3dData& t, const ZuPoint& p) {
  const ZuVector x(p.m_dX, p.m_dY, p.m_dZ);
  const ZuVector y = t.m_mRot * (x - t.m_vSource) * t.m_dScale + t.m_vTarget;
  return ZuPoint(p.GetId(), y[1], y[2], y[3]);
}

inline ZuTrafo3dData Truth(RandomGeometry& random, double dScale, double dShift) {
  ZuTrafo3dData truth;
  const double a = random.Value(3.0), b = random.Value(1.4), c = random.Value(3.0);
  truth.m_mRot.MakeRotMatrix(a, b, c);
  truth.m_dScale = dScale;
  truth.m_vTarget = ZuVector(random.Value(dShift), random.Value(dShift), random.Value(dShift));
  return truth;
}

// Both lists with the error-free points and no accuracies.
inline SimilaritySet ExactSet(RandomGeometry& random, int n, double dX, double dY, double dZ,
                              double dScale, double dFar) {
  SimilaritySet set;
  set.truth = Truth(random, dScale, dFar);
  const double x0 = random.Value(dFar), y0 = random.Value(dFar), z0 = random.Value(dFar);
  set.truth.m_vSource = ZuVector(x0, y0, z0);
  for (int i = 1; i <= n; ++i) {
    const double x = random.Value(dX), y = random.Value(dY), z = random.Value(dZ);
    const ZuPoint p(static_cast<unsigned>(i), x0 + x, y0 + y, z0 + z);
    set.source.Add(p);
    set.target.Add(Transformed(set.truth, p));
  }
  return set;
}

inline void Disturb(RandomGeometry& random, double dX, double dY, double dZ, ZuPoint* p) {
  p->m_dX += dX * Normal(random);
  p->m_dY += dY * Normal(random);
  p->m_dZ += dZ * Normal(random);
}

// Largest distance, by axis, between what the two make of the points.
inline double Apart(const ZuTrafo3dData& a, const ZuTrafo3dData& b, const ZuPointList& points) {
  double dApart = 0.0;
  for (const ZuPoint* p = points.First(); p != nullptr; p = p->Next()) {
    const ZuPoint d = Transformed(a, *p) - Transformed(b, *p);
    dApart = std::max({dApart, std::fabs(d.m_dX), std::fabs(d.m_dY), std::fabs(d.m_dZ)});
  }
  return dApart;
}

inline double OffOrthogonal(const ZuMatrix& m) {
  const ZuMatrix product = m.Transpose() * m;
  double dOff = 0.0;
  for (int i = 1; i <= 3; ++i) {
    for (int j = 1; j <= 3; ++j) dOff = std::max(dOff, std::fabs(product[i][j] - (i == j)));
  }
  return dOff;
}
