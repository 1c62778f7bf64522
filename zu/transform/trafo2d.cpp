#include "zu/transform/trafo2d.h"

#include <algorithm>

#include "zu/foundation/debug.h"
#include "zu/numerics/matrix.h"
#include "zu/points/point.h"
#include "zu/transform/internal/polynomial_terms.h"

void ZuTrafo2d::Init() {
  m_eType = eZuTrafo2DNone;
  std::fill(std::begin(m_adCoef), std::end(m_adCoef), 0.0);
}

void ZuTrafo2d::SetIdent() {
  m_eType = eZuTrafo2DHelmert;
  m_adCoef[0] = m_adCoef[2] = m_adCoef[3] = 0.0;
  m_adCoef[1] = 1.0;
}

void ZuTrafo2d::Set(const ZuTrafo2d& other) {
  m_eType = other.m_eType;
  std::copy(std::begin(other.m_adCoef), std::end(other.m_adCoef), m_adCoef);
}

bool ZuTrafo2d::Transform(double* x, double* y) const {
  const double* a = m_adCoef;
  const double u = *x, v = *y;
  switch (m_eType) {
    case eZuTrafo2DHelmert:
      *x = a[0] + a[1] * u - a[3] * v;
      *y = a[2] + a[3] * u + a[1] * v;
      return true;
    case eZuTrafo2DAffin:
      *x = a[0] + a[1] * u + a[2] * v;
      *y = a[3] + a[4] * u + a[5] * v;
      return true;
    case eZuTrafo2DProjektiv: {
      const double w = a[6] * u + a[7] * v + 1.0;
      *x = (a[0] * u + a[1] * v + a[2]) / w;
      *y = (a[3] * u + a[4] * v + a[5]) / w;
      return true;
    }
    case eZuTrafo2DPolynomial: {
      double terms[kPolynomialTerms];
      PolynomialTerms(u, v, terms);
      double X = 0.0, Y = 0.0;
      for (int i = 0; i < kPolynomialTerms; ++i) {
        X += a[i] * terms[i];
        Y += a[kPolynomialTerms + i] * terms[i];
      }
      *x = X;
      *y = Y;
      return true;
    }
    default:
      return false;
  }
}

bool ZuTrafo2d::Transform(ZuPoint* pPoint) const { return Transform(&pPoint->m_dX, &pPoint->m_dY); }

bool ZuTrafo2d::TransInvHelmert(double* x, double* y) const {
  const double a0 = m_adCoef[0], a1 = m_adCoef[1], a2 = m_adCoef[2], a3 = m_adCoef[3];
  const double D = a1 * a1 + a3 * a3;
  if (D == 0.0) return false;
  const double u = *x, v = *y;
  *x = ((a1 * u + a3 * v) - (a0 * a1 + a2 * a3)) / D;
  *y = ((a0 * a3 - a2 * a1) + (a1 * v - a3 * u)) / D;
  return true;
}

bool ZuTrafo2d::TransInvHelmert(ZuPoint* pPoint) const {
  return TransInvHelmert(&pPoint->m_dX, &pPoint->m_dY);
}

void ZuTrafo2d::BuildMatrix(ZuMatrix* pMatrix) const {
  const double* a = m_adCoef;
  const double aIdent[9] = {1.0, 0.0, 0.0, 0.0, 1.0, 0.0, 0.0, 0.0, 1.0};
  const double aHelmert[9] = {a[1], -a[3], a[0], a[3], a[1], a[2], 0.0, 0.0, 1.0};
  const double aAffin[9] = {a[1], a[2], a[0], a[4], a[5], a[3], 0.0, 0.0, 1.0};
  const double aProjektiv[9] = {a[0], a[1], a[2], a[3], a[4], a[5], a[6], a[7], 1.0};
  const double* pValues = m_eType == eZuTrafo2DHelmert     ? aHelmert
                          : m_eType == eZuTrafo2DAffin     ? aAffin
                          : m_eType == eZuTrafo2DProjektiv ? aProjektiv
                                                           : aIdent;
  for (int i = 0; i < 9; ++i) pMatrix->SetElem(i / 3 + 1, i % 3 + 1, pValues[i]);
}

void ZuTrafo2d::SetFromMatrix(const ZuMatrix& m, eZuTrafo2DType eType) {
  m_eType = eType;
  double* a = m_adCoef;
  switch (eType) {
    case eZuTrafo2DHelmert:
      a[1] = m[1][1];
      a[0] = m[1][3];
      a[3] = m[2][1];
      a[2] = m[2][3];
      break;
    case eZuTrafo2DAffin:
      a[1] = m[1][1];
      a[2] = m[1][2];
      a[0] = m[1][3];
      a[4] = m[2][1];
      a[5] = m[2][2];
      a[3] = m[2][3];
      break;
    case eZuTrafo2DProjektiv:
      a[0] = m[1][1];
      a[1] = m[1][2];
      a[2] = m[1][3];
      a[3] = m[2][1];
      a[4] = m[2][2];
      a[5] = m[2][2];
      a[6] = m[2][1];
      a[7] = m[3][2];
      break;
    default:
      break;
  }
}

const char* ZuTrafo2d::GetTrafoName(eZuTrafo2DType eType) {
  static const char* const names[] = {"None",      "Helmert",    "Affin",
                                      "Projektiv", "Polynomial", "Inv. Helmert"};
  const int i = eType;
  return i >= 0 && i < static_cast<int>(std::size(names)) ? names[i] : names[0];
}

void ZuTrafo2d::DbgPrintf(const char* szPrefix) const {
  if (szPrefix == nullptr) szPrefix = "";
  const double* a = m_adCoef;
  switch (m_eType) {
    case eZuTrafo2DHelmert:
      dbgprintf("%sHelmert %f %f %f %f", szPrefix, a[0], a[1], a[2], a[3]);
      break;
    case eZuTrafo2DAffin:
      dbgprintf("%sAffin   %f %f %f %f %f %f", szPrefix, a[0], a[1], a[2], a[3], a[4], a[5]);
      break;
    case eZuTrafo2DProjektiv:
      dbgprintf("%sProjektiv  %f %f %f %f %f %f %f %f", szPrefix, a[0], a[1], a[2], a[3], a[4],
                a[5], a[6], a[7]);
      break;
    case eZuTrafo2DPolynomial:
      dbgprintf("%sPolynom", szPrefix);
      break;
    default:
      break;
  }
}
