// Coordinates in a plane: where a picture of it has its x and y.
#pragma once

#include "zu/export.h"
#include "zu/numerics/matrix.h"

class ZuPlane;

// The 4 x 4 map from (x, y, z, 1), x and y in the plane and z along its normal, to object space.
//
// A plane that lies within a degree of the horizontal is a map plane: x and y are those of object
// space, so that a picture of it is a map, and z is the height over it. In any other one x runs
// horizontally and y upwards, for who looks against the normal, both in the unit of object space;
// y = 0 where Z = 0 (in a vertical plane y is Z), and x = 0 below or above the foot of the origin.
//
// False, *pToObject untouched: a plane without normal, or not finite.
ZU_API bool ZuMakePlaneFrame(const ZuPlane& plane, ZuMatrix* pToObject);

// The plane lies within a degree of the horizontal.
ZU_API bool ZuIsMapPlane(const ZuPlane& plane);
