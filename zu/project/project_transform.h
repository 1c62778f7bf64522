// A project in another object system.
#pragma once

#include "zu/export.h"

class ZuProject;
class ZuTrafo3dData;

// Carries all that stands in object space over in place: object points, orientations with their
// covariances, planes (the length of a normal stays), and the maps to object space of
// rectifications and orthophotos, whose size grows by the scale. Measurements, cameras, local
// systems, which name points, and what no record holds stay. Covariances are those of the project,
// turned and scaled; what is unsure in the transformation is the same for all and not added.
//
// False, nothing changed, unless the scale is above 0, R orthogonal to 1e-6 with determinant 1, and
// the centres finite.
ZU_API bool ZuTransformProject(ZuProject* pProject, const ZuTrafo3dData& trafo);
