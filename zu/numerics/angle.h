// Units of angles. Inside the library every angle is in radians.
#pragma once

#include "zu/export.h"

// Every value but degrees and gon counts as radians.
enum eZuAngleUnit : int {
  eZuAngleUnitRadian = 1,
  eZuAngleUnitDegree = 2,
  eZuAngleUnitGon = 3,
};

ZU_API double ConvertAngle(const double& a, eZuAngleUnit from, eZuAngleUnit to);

// The angle brought to 0 to 2 pi by whole turns; 2 pi itself and -0.0 stay. Infinities and NaN come
// back as they are.
ZU_API double NormAngle(const double& a);
