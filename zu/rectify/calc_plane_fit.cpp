// The computation of ZuCalcPlane: an exact plane through three points, then one adjustment.
#include <algorithm>
#include <cmath>

#include "zu/numerics/internal/finite.h"
#include "zu/numerics/matrix.h"
#include "zu/numerics/vector3d.h"
#include "zu/rectify/calc_plane.h"
#include "zu/rectify/internal/point_refill.h"

using zu::internal::AreFinite;

namespace {

// Coordinate differences, products of lengths and components of the normal below this vanish.
constexpr double kVanishing = 1e-10;
// Three points whose directions from the first have a larger cosine stand in a line [-].
constexpr double kMaxCos = 0.9999996;

// Columns for the axis of adjustment 0, 1, 2: u and v span the coordinate plane, w is the height
// over it. Cyclic, so that u, v, w keep the handedness of x, y, z.
struct Columns {
  int u, v, w;
};
constexpr Columns kColumns[] = {{2, 3, 1}, {3, 1, 2}, {1, 2, 3}};

// Elements 1 to 4 of row i.
double* Row(ZuMatrix& matrix, int i) {
  return matrix.GetData() + 4 * static_cast<std::ptrdiff_t>(i - 1);
}

ZuVector3d RowPoint(ZuMatrix& matrix, int i) {
  const double* row = Row(matrix, i);
  return ZuVector3d(row[0], row[1], row[2]);
}

// Cosine between two directions; 1 when one of them vanishes.
double Cosine(const ZuVector3d& a, const ZuVector3d& b) {
  const double dLengths = a.Norm() * b.Norm();
  return dLengths > kVanishing ? a * b / dLengths : 1.0;
}

// Rows 1 to 3 of the working matrix, put back at the end.
class RowsSaved {
 public:
  explicit RowsSaved(ZuMatrix* pMatrix) : m_pMatrix(pMatrix) {
    std::copy_n(pMatrix->GetData(), 12, m_ad);
  }
  RowsSaved(const RowsSaved&) = delete;
  RowsSaved& operator=(const RowsSaved&) = delete;
  ~RowsSaved() { std::copy_n(m_ad, 12, m_pMatrix->GetData()); }

 private:
  ZuMatrix* m_pMatrix;
  double m_ad[12];
};

// Heights of the three corners for which the sum of the squared residuals along w is least: with
// a = (u - u1) / (u2 - u1), b = (v - v1) / (v3 - v1) the height of a point is (1 - a - b) h1 + a h2
// + b h3. Heights are taken from that of row 1, since the sums of large ones would keep less than
// their differences need; the weights (1 - a - b), a, b sum to 1.
ZuVector AdjustHeights(ZuMatrix& matrix, const Columns& columns, const ZuVector& us,
                       const ZuVector& vs) {
  const double u1 = us[1], du = us[2] - us[1];
  const double v1 = vs[1], dv = vs[3] - vs[1];
  double n11 = 0.0, n12 = 0.0, n13 = 0.0, n22 = 0.0, n23 = 0.0, n33 = 0.0;
  double r1 = 0.0, r2 = 0.0, r3 = 0.0;
  const double w1 = Row(matrix, 1)[columns.w - 1];
  const int n = matrix.GetZeilen();
  const double* row = matrix.GetData();
  for (int i = 0; i < n; ++i, row += 4) {
    const double w = row[columns.w - 1] - w1;
    const double a = (row[columns.u - 1] - u1) / du;
    const double b = (row[columns.v - 1] - v1) / dv;
    const double c = 1.0 - a - b;
    n11 += c * c;
    n12 += c * a;
    n13 += c * b;
    n22 += a * a;
    n23 += a * b;
    n33 += b * b;
    r1 += w * c;
    r2 += w * a;
    r3 += w * b;
  }
  const double adNormal[] = {n11, n12, n13, n12, n22, n23, n13, n23, n33};
  ZuMatrix normal(adNormal, 3, 3);
  return normal.Cramer(ZuVector(r1, r2, r3)) + ZuVector(w1, w1, w1);
}

}  // namespace

bool ZuCalcPlane::CalcZuPlane(ZuPointList* pPoints) {
  return CalcZuPlane(pPoints, pPoints == nullptr ? 0 : pPoints->Count());
}

// n is the number of points, so that a long list needs no walk for it.
bool ZuCalcPlane::CalcZuPlane(ZuPointList* pPoints, int n) {
  m_dMediumPointDist = 0.0;
  m_dSigma0 = 0.0;
  if (n < 3) {
    m_eStatus = TooLessPoints;
    return false;
  }
  ZuMatrix matrix(ZuMatrix::Unset(), n, 4);
  double* row = matrix.GetData();
  bool bFinite = true;
  for (const ZuPoint* p = pPoints->First(); p != nullptr; p = p->Next(), row += 4) {
    row[0] = p->m_dX;
    row[1] = p->m_dY;
    row[2] = p->m_dZ;
    bFinite = bFinite && AreFinite(row, 3);
  }
  if (!bFinite) {
    m_eStatus = BadPointDistrib;
    return false;
  }

  if (!Approximate(matrix)) return false;
  if (n == 3) {
    KeepExactPoints(pPoints);
  } else {
    Adjust(matrix);
    m_dSigma0 = CalcSigma(matrix);
    KeepFootPoints(pPoints, matrix);
  }
  // Required: the status is good also when the plane through the adjusted corners was refused; the
  // approximate plane then stands, with the residuals that belong to it.
  m_eStatus = StatusOk;
  return true;
}

void ZuCalcPlane::KeepExactPoints(ZuPointList* pPoints) {
  ZuPointRefill refill(&m_pointsInPlane);
  for (ZuPoint* p = pPoints->First(); p != nullptr; p = p->Next()) {
    p->m_dRedu1 = p->m_dDX = p->m_dDY = p->m_dDZ = 0.0;
    refill.Append(*p);
  }
  refill.Finish();
}

void ZuCalcPlane::KeepFootPoints(ZuPointList* pPoints, const ZuMatrix& matrix) {
  const double a = m_plane.A(), b = m_plane.B(), c = m_plane.C();
  double dSum = 0.0;
  ZuPointRefill refill(&m_pointsInPlane);
  const double* row = matrix.GetData();
  for (ZuPoint* p = pPoints->First(); p != nullptr; p = p->Next(), row += 4) {
    const double r = row[3];
    p->m_dRedu1 = r;
    p->m_dDX = r * a;
    p->m_dDY = r * b;
    p->m_dDZ = r * c;
    dSum += r * r;
    ZuPoint* pFoot = refill.Append(*p);
    pFoot->m_dX -= p->m_dDX;
    pFoot->m_dY -= p->m_dDY;
    pFoot->m_dZ -= p->m_dDZ;
  }
  refill.Finish();
  m_dMediumPointDist = std::sqrt(dSum);
}

bool ZuCalcPlane::Approximate(ZuMatrix& matrix) {
  const int n = matrix.GetZeilen();
  m_iEdgePoint1 = 0;
  const ZuVector3d p = RowPoint(matrix, 1);

  int j = 2;
  while (j <= n && (RowPoint(matrix, j) - p).IsDegenerate(kVanishing)) ++j;
  if (j >= n) {
    m_eStatus = BadPointDistrib;
    return false;
  }
  m_iEdgePoint2 = j;
  const ZuVector3d a = RowPoint(matrix, j) - p;

  // A cosine that is not a number, from coordinates that are none, never fits.
  ZuVector3d b;
  bool bFits = false;
  int k = j;
  while (!bFits && k < n) {
    b = RowPoint(matrix, ++k) - p;
    bFits = !b.IsDegenerate(kVanishing) && std::fabs(Cosine(a, b)) <= kMaxCos;
  }
  m_iEdgePoint3 = k;

  const ZuVector3d normal = a % b;
  const double dLength = normal.Norm();
  const double d = -(p * normal);
  // Finite coordinates can still be too large for the product.
  bFits = bFits && std::isfinite(dLength) && dLength > 0.0 && std::isfinite(d);
  if (!bFits && !m_bForcePlane) {
    m_eStatus = BadPointDistrib;
    return false;
  }
  const double dScale = 1.0 / dLength;
  m_plane.A() = normal.x * dScale;
  m_plane.B() = normal.y * dScale;
  m_plane.C() = normal.z * dScale;
  m_plane.D() = d / dLength;
  return true;
}

int ZuCalcPlane::NormComp() {
  const double a = std::fabs(m_plane.A()), b = std::fabs(m_plane.B()), c = std::fabs(m_plane.C());
  if (a > b && a > c) return 0;
  if (b > a && b > c) return 1;
  return 2;
}

bool ZuCalcPlane::Adjust(ZuMatrix& matrix) {
  // Collinear points that were forced through have no axis; heights would come from rounding alone.
  if (!std::isfinite(m_plane.A()) || !std::isfinite(m_plane.B()) || !std::isfinite(m_plane.C())) {
    return false;
  }
  int iDominant = NormComp();
  // A tie of the two others names an axis along the plane, such as z for a wall at 45 degrees.
  // Heights over the first axis of the tie can be adjusted.
  const double adNormal[] = {m_plane.A(), m_plane.B(), m_plane.C()};
  if (std::fabs(adNormal[iDominant]) < kVanishing) iDominant = 0;
  const Columns& columns = kColumns[iDominant];

  ZuVector us(3), vs(3), ws(3);
  FindEdgePoints(columns.u, columns.v, matrix, iDominant, us, vs, ws);
  const ZuVector heights = AdjustHeights(matrix, columns, us, vs);

  const int aiEdgePoints[] = {m_iEdgePoint1, m_iEdgePoint2, m_iEdgePoint3};
  {
    const RowsSaved saved(&matrix);
    for (int i = 1; i <= 3; ++i) {
      double* row = Row(matrix, i);
      row[columns.u - 1] = us[i];
      row[columns.v - 1] = vs[i];
      row[columns.w - 1] = heights[i];
    }
    Approximate(matrix);
  }
  m_iEdgePoint1 = aiEdgePoints[0];
  m_iEdgePoint2 = aiEdgePoints[1];
  m_iEdgePoint3 = aiEdgePoints[2];
  return true;
}

bool ZuCalcPlane::FindEdgePoints(int u, int v, ZuMatrix& matrix, int iDominant, ZuVector& us,
                                 ZuVector& vs, ZuVector& ws) {
  const int n = matrix.GetZeilen();
  const double* row = matrix.GetData();
  double uMin = row[u - 1], uMax = uMin;
  double vMin = row[v - 1], vMax = vMin;
  for (int i = 0; i < n; ++i, row += 4) {
    uMin = std::min(uMin, row[u - 1]);
    uMax = std::max(uMax, row[u - 1]);
    vMin = std::min(vMin, row[v - 1]);
    vMax = std::max(vMax, row[v - 1]);
  }
  us = ZuVector(uMin, uMax, uMin);
  vs = ZuVector(vMin, vMin, vMax);

  const double adNormal[] = {m_plane.A(), m_plane.B(), m_plane.C()};
  for (int i = 1; i <= 3; ++i) {
    ws[i] =
        -(adNormal[u - 1] * us[i] + adNormal[v - 1] * vs[i] + m_plane.D()) / adNormal[iDominant];
  }
  return true;
}

double ZuCalcPlane::CalcSigma(ZuMatrix& matrix) {
  const double a = m_plane.A(), b = m_plane.B(), c = m_plane.C(), d = m_plane.D();
  const int n = matrix.GetZeilen();
  double* row = matrix.GetData();
  for (int i = 0; i < n; ++i, row += 4) row[3] = row[0] * a + row[1] * b + row[2] * c + d;
  const double dLast = row[-1];
  return std::sqrt(dLast * dLast / (n + 1.0));
}
