#include "zu/transform/internal/similarity.h"

#include <algorithm>
#include <cmath>

#include "zu/numerics/internal/finite.h"

namespace zu::internal {
namespace {

// Change of the scale that ends the iteration [-], relative to a scale below 1.
constexpr double kConverged = 1e-10;
constexpr int kMaxSteps = 200;

// A target this much smaller than the source counts as one point [-].
constexpr double kLeastScale = 1e-10;

// Determinant over the third power of the length of M's singular values up to which the points
// count as thin [-]: flat, narrow or both.
constexpr double kThin = 1e-6;

// Largest cofactor over the trace of M^T M below which the points count as collinear [-]: they lie
// within 1e-6 of their extent from a line, and what M tells of the turn about it is rounding.
constexpr double kCollinear = 1e-12;

// Largest element of R^T R - 1 of a rotation [-].
constexpr double kOrthogonal = 1e-10;

// The numbers of M that scale and rotation are made of: with the singular values p, q, r of M, the
// last one signed like the determinant, d = p q r, a = p^2 + q^2 + r^2, b = p^2 q^2 + p^2 r^2 +
// q^2 r^2.
struct Invariants {
  double d = 0.0;
  double a = 0.0;
  double b = 0.0;
  double q[3][3];  // Q = M^T M
  double c[3][3];  // the cofactors C, M C^T = d I
  bool bThin = false;
  bool bCollinear = false;
};

// a b - c d to some units in the last place, however much of the products cancels (after W. Kahan;
// C.-P. Jeannerod, N. Louvet, J.-M. Muller, "Further analysis of Kahan's algorithm for the accurate
// computation of 2x2 determinants", 2013).
double Minor(double a, double b, double c, double d) {
  const double w = c * d;
  return std::fma(a, b, -w) + std::fma(-c, d, w);
}

// Thin sets of points: the cofactors as 2x2 minors of M, which hold for singular matrices too. d
// and b are formed from them, since in the sums of products that they are elsewhere the long
// direction leaves nothing of the short ones.
void SetByMinors(const ZuMatrix& m, Invariants* pInvariants) {
  Invariants& v = *pInvariants;
  v.b = 0.0;
  double dLargest = 0.0;
  for (int i = 0; i < 3; ++i) {
    const double* row1 = m[(i + 1) % 3 + 1] + 1;
    const double* row2 = m[(i + 2) % 3 + 1] + 1;
    for (int j = 0; j < 3; ++j) {
      const int j1 = (j + 1) % 3, j2 = (j + 2) % 3;
      const double c = Minor(row1[j1], row2[j2], row1[j2], row2[j1]);
      v.c[i][j] = c;
      v.b += c * c;
      dLargest = std::max(dLargest, std::fabs(c));
    }
  }
  v.d = m[1][1] * v.c[0][0] + m[1][2] * v.c[0][1] + m[1][3] * v.c[0][2];
  v.bCollinear = dLargest <= kCollinear * v.a;
}

Invariants CalcInvariants(const ZuMatrix& m) {
  Invariants v;
  v.d = m.Sarrus();
  auto& q = v.q;
  for (int i = 0; i < 3; ++i) {
    for (int j = 0; j < 3; ++j) {
      q[i][j] = 0.0;
      for (int k = 1; k <= 3; ++k) q[i][j] += m[k][i + 1] * m[k][j + 1];
    }
  }
  v.a = q[0][0] + q[1][1] + q[2][2];
  v.b = q[0][0] * q[1][1] + q[0][0] * q[2][2] + q[1][1] * q[2][2] - q[0][1] * q[0][1] -
        q[0][2] * q[0][2] - q[1][2] * q[1][2];

  ZuMatrix inverse(m);
  int iError = 0;
  v.bThin = std::fabs(v.d) <= kThin * v.a * std::sqrt(v.a);
  if (!v.bThin) inverse.Invert(&iError);
  if (v.bThin || iError != 0) {
    SetByMinors(m, &v);
    return v;
  }
  for (int i = 0; i < 3; ++i) {
    for (int j = 0; j < 3; ++j) v.c[i][j] = v.d * inverse.GetElemZeroIndex(j, i);
  }
  return v;
}

// The trace s = p + q + r, as the fixed point of s = sqrt(2 sqrt(2 s d + b) + a). False where the
// first step has no real value or kMaxSteps steps don't suffice; *pdTrace holds the last value.
bool CalcTrace(const Invariants& v, double* pdTrace) {
  double& s = *pdTrace;
  s = 1.0;
  if (2.0 * v.d + v.b < 0.0) return false;
  if (2.0 * std::sqrt(2.0 * v.d + v.b) + v.a < 0.0) return false;
  double dPrevious = 0.0;
  int iSteps = 0;
  do {
    if (++iSteps > kMaxSteps) return false;
    dPrevious = s;
    const double t = std::sqrt(2.0 * s * v.d + v.b);
    s = std::sqrt(2.0 * t + v.a);
  } while (std::fabs(s - dPrevious) > kConverged * std::min(1.0, s));
  return true;
}

// R = M (M^T M)^(-1/2) for the trace u of the root, by the relation of Cayley and Hamilton:
// c2 u R = M (Q - c1 I) - u C.
void SetPolarFactor(const ZuMatrix& m, const Invariants& v, double u, ZuMatrix* pRotation) {
  const double c1 = (u * u + v.a) / 2.0;
  const double c2 = v.d / u - (u * u - v.a) / 2.0;
  const double dPerC2 = 1.0 / c2, dPerU = 1.0 / u;
  for (int i = 0; i < 3; ++i) {
    const double* row = m[i + 1] + 1;
    for (int j = 0; j < 3; ++j) {
      double dSum = 0.0;
      for (int k = 0; k < 3; ++k) dSum += row[k] * (k == j ? v.q[k][j] - c1 : v.q[k][j]);
      pRotation->SetElem(i + 1, j + 1, (dSum - v.c[i][j] * u) * dPerC2 * dPerU);
    }
  }
}

// Brings a matrix that is a rotation to 1e-4 to the nearest one, to rounding: twice R = R (3 I -
// R^T R) / 2, after A. Bjorck, C. Bowie, "An iterative algorithm for computing the best estimate of
// an orthogonal matrix", 1971. In thin sets the terms of the polar factor cancel. False for a
// matrix that is too far from a rotation, as where a mirrored set has no best one.
bool Orthogonalize(ZuMatrix* pRotation) {
  for (int i = 0; i < 2; ++i) {
    ZuMatrix half(3, 3);
    half.SetIdent();
    half *= 1.5;
    half -= pRotation->Transpose() * *pRotation * 0.5;
    *pRotation *= half;
  }
  ZuMatrix rest(3, 3);
  rest.SetIdent();
  rest -= pRotation->Transpose() * *pRotation;
  return std::all_of(rest.GetData(), rest.GetData() + 9,
                     [](double d) { return std::fabs(d) < kOrthogonal; }) &&
         pRotation->Sarrus() > 0.0;
}

// A rotation that carries the unit vector f onto the unit vector e: about f x e, after half a turn
// about an axis square to f where the two look apart.
ZuMatrix TurnOnto(const ZuVector& e, ZuVector f) {
  ZuMatrix half(3, 3);
  half.SetIdent();
  if (e * f < 0.0) {
    ZuVector p = f % (std::fabs(f[1]) < 0.6 ? ZuVector(1.0, 0.0, 0.0) : ZuVector(0.0, 1.0, 0.0));
    p.Normalize();
    for (int i = 1; i <= 3; ++i) {
      for (int j = 1; j <= 3; ++j) half[i][j] = 2.0 * p[i] * p[j] - half[i][j];
    }
    f *= -1.0;
  }
  const ZuVector v = f % e;
  const double adCross[] = {0.0, -v[3], v[2], v[3], 0.0, -v[1], -v[2], v[1], 0.0};
  const ZuMatrix cross(adCross, 3, 3);
  ZuMatrix turn(3, 3);
  turn.SetIdent();
  turn += cross;
  turn += cross * cross * (1.0 / (1.0 + e * f));
  return turn * half;
}

// Collinear points: M is s e f^T with the directions f and e of the two lines. Any rotation that
// carries the one onto the other fits.
ZuMatrix LineRotation(const ZuMatrix& m) {
  ZuVector e(3), f(3), candidate(3);
  for (int i = 1; i <= 3; ++i) {
    m.GetLine(i, candidate);
    if (candidate.Abs() > f.Abs()) f = candidate;
  }
  f.Normalize();
  e = (m * f).Normalize();
  return TurnOnto(e, f);
}

}  // namespace

bool CalcSimilarity(const ZuMatrix& m, bool bUnitScale, double* pdScale, ZuMatrix* pRotation) {
  const Invariants v = CalcInvariants(m);
  if (v.bCollinear) {
    // d is rounding alone and may have either sign: the fixed point without it.
    *pdScale = std::sqrt(2.0 * std::sqrt(v.b) + v.a);
    // A line that shrinks to a point has no direction.
    if (*pdScale < kLeastScale) return false;
    *pRotation = LineRotation(m);
  } else {
    if (!CalcTrace(v, pdScale)) return false;
    SetPolarFactor(m, v, bUnitScale ? 1.0 : *pdScale, pRotation);
    if (v.bThin && !bUnitScale && !Orthogonalize(pRotation)) return false;
  }
  return std::isfinite(*pdScale) && AreFinite(*pRotation);
}

}  // namespace zu::internal
