#include "zu/points/units.h"

#include "zu/points/point.h"

double GetUnitFactor(eZuUnit eUnit) {
  switch (eUnit) {
    case eZuUnitMillimeter:
      return 0.001;
    case eZuUnitCentimeter:
      return 0.01;
    case eZuUnitMicrometer:
      return 1e-06;
    case eZuUnitFoot:
      return 0.3048;
    case eZuUnitInch:
      return 0.0254;
    case eZuUnitNone:
    case eZuUnitMeter:
      break;
  }
  return 1.0;
}

void ConvertUnit(double* pdValue, eZuUnit eFrom, eZuUnit eTo) {
  if (pdValue != nullptr) *pdValue *= GetUnitFactor(eFrom) / GetUnitFactor(eTo);
}

void ConvertUnit(ZuPoint* pPoint, eZuUnit eFrom, eZuUnit eTo) {
  MultiplyZuPoint(pPoint, GetUnitFactor(eFrom) / GetUnitFactor(eTo));
}

void MultiplyZuPoint(ZuPoint* pPoint, double dFactor) {
  if (pPoint == nullptr) return;
  pPoint->m_dX *= dFactor;
  pPoint->m_dY *= dFactor;
  pPoint->m_dZ *= dFactor;
}
