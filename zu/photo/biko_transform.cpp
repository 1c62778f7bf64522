#include "zu/photo/biko_transform.h"

#include <cmath>
#include <limits>

#include "zu/foundation/reader_object.h"
#include "zu/numerics/point3d.h"
#include "zu/photo/photo.h"

namespace {

// Stands for a denominator of exactly 0: the point lies at the height of the projection centre.
constexpr double kNoHeight = 1e-8;
// Distance from the border of the image within which a point counts as outside [pixels].
constexpr double kBorder = 1.0;
// Least length of the sum of two unit vectors at most 120 degrees apart [-].
constexpr double kInView = 1.0;

// Newton's method on a polynomial: most rounds, and the distance accepted [mm].
constexpr int kPolynomialRounds = 50;
constexpr double kPolynomialResidual = 1e-12;

// Derivative of a polynomial transformation, row by row.
void PolynomialSlope(const ZuTrafo2d& trafo, double x, double y, double adSlope[2][2]) {
  for (int i = 0; i < 2; ++i) {
    const auto a = [&](int k) { return trafo.GetCoef(10 * i + k); };
    adSlope[i][0] =
        a(1) + 2.0 * a(3) * x + a(4) * y + 3.0 * a(6) * x * x + 2.0 * a(7) * x * y + a(8) * y * y;
    adSlope[i][1] =
        a(2) + a(4) * x + 2.0 * a(5) * y + a(7) * x * x + 2.0 * a(8) * x * y + 3.0 * a(9) * y * y;
  }
}

ZuMatrix Inverse(ZuMatrix matrix) { return matrix.Invert(nullptr); }

ZuMatrix MatrixOf(const ZuTrafo2d& trafo) {
  ZuMatrix matrix(3, 3);
  trafo.BuildMatrix(&matrix);
  return matrix;
}

}  // namespace

int ZuReseauTrafo::ReadV50(ZuReaderObject* pObject) {
  ZuTrafo2d::ReadV50(pObject);
  SetName(pObject->TakeString());
  return 1;
}

void ZuBikoTransform::Set(const ZuPhoto* pPhoto, eConvertBikoMode eMode, bool bFlipY) {
  m_bPolyTrafo = false;
  m_eMode = eMode;
  m_pPhoto = pPhoto;
  m_bFlipY = bFlipY;
  m_Matrix.SetIdent();
  if (pPhoto == nullptr) return;
  m_dWidth = pPhoto->GetDigiRegion().Width() + 1.0;
  m_dHeight = pPhoto->GetDigiRegion().Height() + 1.0;

  const ZuReseauTrafo& main = pPhoto->GetReseauMainTrafo();
  m_bPolyTrafo = main.GetType() == eZuTrafo2DPolynomial;
  if (m_bPolyTrafo) {
    m_ForwardTrafo = main;
    m_InverseTrafo = pPhoto->GetReseauPolyInv();
  }
  SetMatrix(MatrixOf(pPhoto->GetReseauPreTrafo()), MatrixOf(main));
  if (pPhoto->HasAOR()) {
    m_ViewDirection = pPhoto->GetRotAOR() * ZuVector(0.0, 0.0, 1.0);
    m_ViewDirection.Normalize();
  }
}

void ZuBikoTransform::SetMatrix(const ZuMatrix& pre, const ZuMatrix& main) {
  switch (m_eMode) {
    case eDigiToPre:
      m_Matrix = pre;
      break;
    case eDigiToBiko:
    case eDigiToAdjusted:
      m_Matrix = m_bPolyTrafo ? pre : main * pre;
      break;
    case ePreToBiko:
      m_Matrix = main;
      break;
    case eBikoToDigi:
    case eAdjustedToDigi:
    case eObjectToDigi:
      m_Matrix = Inverse(m_bPolyTrafo ? pre : main * pre);
      break;
    case ePreToDigi:
      m_Matrix = Inverse(pre);
      break;
    case eBikoToPre:
      if (!m_bPolyTrafo) m_Matrix = Inverse(main);
      break;
    default:
      break;
  }
}

bool ZuBikoTransform::Transform(double* x, double* y, double* z) const {
  if (m_pPhoto == nullptr) return false;
  switch (m_eMode) {
    case eDigiToPre:
      m_Matrix.PTrans2D(x, y);
      return true;
    case eDigiToBiko:
      Flip(y);
      m_Matrix.PTrans2D(x, y);
      if (m_bPolyTrafo) m_ForwardTrafo.Transform(x, y);
      return true;
    case ePreToBiko:
      m_bPolyTrafo ? m_ForwardTrafo.Transform(x, y) : m_Matrix.PTrans2D(x, y);
      return true;
    case eDigiToAdjusted:
      Flip(y);
      m_Matrix.PTrans2D(x, y);
      if (m_bPolyTrafo && m_bExact) m_ForwardTrafo.Transform(x, y);
      return Correct(x, y) || !m_bExact;
    case eBikoToAdjusted:
      return Correct(x, y) || !m_bExact;
    case eAdjustedToDigi:
      if (!Uncorrect(x, y) && m_bExact) return false;
      [[fallthrough]];
    case eBikoToDigi:
      if (m_bPolyTrafo && !InvertPolynomial(x, y)) return false;
      m_Matrix.PTrans2D(x, y);
      Flip(y);
      return true;
    case ePreToDigi:
      m_Matrix.PTrans2D(x, y);
      Flip(y);
      return true;
    case eBikoToPre:
      if (m_bPolyTrafo) return InvertPolynomial(x, y);
      m_Matrix.PTrans2D(x, y);
      return true;
    case eAdjustedToBiko:
      return Uncorrect(x, y) || !m_bExact;
    case eObjectToAdjusted:
    case eObjectToBiko:
    case eObjectToDigi:
      return FromObject(x, y, z);
    default:
      return true;
  }
}

bool ZuBikoTransform::Correct(double* x, double* y) const {
  const ZuCamera& camera = m_pPhoto->GetCamera();
  return m_bExact ? camera.AdjustExact(x, y) == eCameraInverseOk : camera.Adjust(x, y);
}

bool ZuBikoTransform::Uncorrect(double* x, double* y) const {
  const ZuCamera& camera = m_pPhoto->GetCamera();
  return m_bExact ? camera.InvAdjustExact(x, y) == eCameraInverseOk : camera.InvAdjust(x, y);
}

bool ZuBikoTransform::InvertPolynomial(double* x, double* y) const {
  if (m_bExact) return SolvePolynomial(x, y);
  m_InverseTrafo.Transform(x, y);
  return true;
}

// Newton's method on the main transformation from where the stored inverse puts the point, as long
// as a step lowers the residual.
bool ZuBikoTransform::SolvePolynomial(double* x, double* y) const {
  const double xTarget = *x, yTarget = *y;
  double p = *x, q = *y;
  m_InverseTrafo.Transform(&p, &q);
  double dBest = std::numeric_limits<double>::infinity(), pBest = p, qBest = q;
  for (int n = 0; n < kPolynomialRounds; ++n) {
    double X = p, Y = q;
    m_ForwardTrafo.Transform(&X, &Y);
    const double eX = X - xTarget, eY = Y - yTarget, dResidual = std::hypot(eX, eY);
    if (!(dResidual < dBest)) break;
    dBest = dResidual;
    pBest = p;
    qBest = q;
    double adSlope[2][2];
    PolynomialSlope(m_ForwardTrafo, p, q, adSlope);
    const double dDet = adSlope[0][0] * adSlope[1][1] - adSlope[0][1] * adSlope[1][0];
    p -= (adSlope[1][1] * eX - adSlope[0][1] * eY) / dDet;
    q -= (adSlope[0][0] * eY - adSlope[1][0] * eX) / dDet;
  }
  if (!(dBest <= kPolynomialResidual)) return false;
  *x = pBest;
  *y = qBest;
  return true;
}

// The collinearity equations: x = -c (r1 . d) / (r3 . d), y = -c (r2 . d) / (r3 . d), with d from
// the projection centre to the point and r1, r2, r3 the columns of the rotation.
bool ZuBikoTransform::ToPlane(double* x, double* y, double* z) const {
  const ZuVector& X0 = m_pPhoto->GetPosAOR();
  const double* R = m_pPhoto->GetRotAOR().GetData();
  const double dConstant = m_pPhoto->GetCamera().m_dC;
  const double c = m_bExact ? std::fabs(dConstant) : dConstant;
  const double dx = *x - X0[1], dy = *y - X0[2], dz = *z - X0[3];
  double dDenominator = R[2] * dx + R[5] * dy + R[8] * dz;
  if (dDenominator == 0.0) {
    if (m_bExact) return false;
    dDenominator = kNoHeight;
  }
  *x = -(R[0] * dx + R[3] * dy + R[6] * dz) * c / dDenominator;
  *y = -(R[1] * dx + R[4] * dy + R[7] * dz) * c / dDenominator;
  *z = 0.0;
  return true;
}

bool ZuBikoTransform::FromObject(double* x, double* y, double* z) const {
  if (m_pPhoto->IsRound() ? !m_pPhoto->ToSurface(x, y, z) : !ToPlane(x, y, z)) return false;

  bool bResult = true;
  if (m_eMode != eObjectToAdjusted && !Uncorrect(x, y)) return false;
  if (m_eMode == eObjectToDigi) {
    if (m_bPolyTrafo && !InvertPolynomial(x, y)) return false;
    bResult = m_Matrix.PTrans2D(x, y);
  }
  if (m_bFlipY) {
    *y = m_dHeight - *y;
    if (*y < kBorder || *x < kBorder || *x >= m_dWidth - kBorder || *y >= m_dHeight - kBorder) {
      return false;
    }
  }
  return bResult;
}

bool ZuBikoTransform::Transform(ZuPoint3d& point) const {
  return Transform(&point.x, &point.y, &point.z);
}

bool ZuBikoTransform::Transform(ZuVector& vector) const {
  return Transform(&vector[1], &vector[2], &vector[3]);
}

bool ZuBikoTransform::Transform(ZuPoint* pPoint) const {
  return Transform(&pPoint->m_dX, &pPoint->m_dY, &pPoint->m_dZ);
}

void ZuBikoTransform::Transform(ZuPointList* pList) const {
  if (pList == nullptr) return;
  for (ZuPoint* p = pList->First(); p != nullptr; p = p->Next()) Transform(p);
}

bool ZuBikoTransform::IsInPhotoView(double x, double y, double z) const {
  if (m_pPhoto == nullptr) return false;
  if (m_pPhoto->IsRound()) return true;
  ZuVector n = m_pPhoto->GetPosAOR() - ZuVector(x, y, z);
  n.Normalize();
  return (m_ViewDirection + n).Abs() >= kInView;
}
