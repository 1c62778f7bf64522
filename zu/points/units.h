// Units of length and the conversion between them.
#pragma once

#include "zu/export.h"

class ZuPoint;
class ZuRegion;

enum eZuUnit : int {
  eZuUnitNone = 0,
  eZuUnitMillimeter = 1,
  eZuUnitCentimeter = 2,
  eZuUnitMeter = 3,
  eZuUnitMicrometer = 4,
  eZuUnitFoot = 5,
  eZuUnitInch = 6,
};

// The size of a unit in metres; 1 for no unit and for any value without a name.
ZU_API double GetUnitFactor(eZuUnit eUnit);

// Multiplies by GetUnitFactor(eFrom) / GetUnitFactor(eTo). Null is passed over. Of a point the
// coordinate is converted and nothing else: accuracies are kept in a unit of their own.
ZU_API void ConvertUnit(double* pdValue, eZuUnit eFrom, eZuUnit eTo);
ZU_API void ConvertUnit(ZuPoint* pPoint, eZuUnit eFrom, eZuUnit eTo);

// Multiplies the coordinate, as the operator * of the point does. Null is passed over.
ZU_API void MultiplyZuPoint(ZuPoint* pPoint, double dFactor);
